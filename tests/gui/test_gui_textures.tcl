# Textures on screen: a quad carrying a 2 x 2 checker shows its red and
# blue squares where the texture coordinates put them in the 3D view; the
# "t" key switches texturing off and on again; the Texture menu gains a
# separator and one entry per new texture (none for the same file twice);
# a background image appears behind the grid of the front view, in the
# same place drawn as pixels or as a texture, and moves with a pan.
source [file join [file dirname [info script]] gui_lib.tcl]

# A 24-bit BMP of w x h pixels; colour is a command giving "r g b" for x y.
proc write_bmp {file w h colour} {
    set stride [expr {($w * 3 + 3) / 4 * 4}]
    set fd [open $file wb]
    puts -nonewline $fd [binary format a2issi BM [expr {54 + $stride * $h}] 0 0 54]
    puts -nonewline $fd [binary format iiissiiiiii 40 $w $h 1 24 0 [expr {$stride * $h}] 2835 2835 0 0]
    for {set y 0} {$y < $h} {incr y} {
        set row ""
        for {set x 0} {$x < $w} {incr x} {
            lassign [{*}$colour $x $y] r g b
            append row [binary format ccc $b $g $r]
        }
        append row [string repeat \0 [expr {$stride - 3 * $w}]]
        puts -nonewline $fd $row
    }
    close $fd
}

proc checker {x y} { expr {($x + $y) % 2 == 0 ? {255 0 0} : {0 0 255}} }
proc halves {x y} { expr {$x < 20 ? {0 200 0} : {230 200 0}} }

set checker_file [file join $::scratch checker.bmp]
set halves_file [file join $::scratch halves.bmp]
write_bmp $checker_file 2 2 checker
write_bmp $halves_file 40 20 halves

# A white, two-sided unit quad facing the 3D view's camera, textured with
# the checker: texture (0, 0) at its bottom-left corner.
set model [file join $::scratch quad.vk]
set fd [open $model w]
puts $fd "VESKb
MATERIAL \"white\" rgb 1 1 1 amb 1 1 1 emis 0 0 0 spec 0 0 0 shi 10 trans 0
OBJECT world
kids 1
OBJECT poly
name \"quad\"
texture \"$checker_file\"
numvert 4
-1 -1 0
1 -1 0
1 1 0
-1 1 0
numsurf 1
SURF 32
mat 0
refs 4
0 0 0
1 1 0
2 1 1
3 0 1
kids 0"
close $fd

start_vesk $model
remote {vesk clear_selection}
settle

# ---- the texture menu ----
set menu .mbar.object.menu.texture
set entries [remote "$menu index end"]
check "texture menu ends with the model's texture" [remote "$menu entrycget end -label"] $checker_file
check "a separator before the first texture" [remote "$menu type [expr {$entries - 1}]"] separator
check "the entry sets texture 1" [remote "$menu entrycget end -command"] "vesk set_texture 1"
check "the same file again gives the same id" [remote "vesk add_new_texture [list $checker_file]"] 1
check "and no new menu entry" [remote "$menu index end"] $entries

# ---- the checker in the 3D view ----
lassign [view_rect 3] tx ty tw th

# The bounding box of the strongly coloured pixels of the 3D view (the
# grid and the background are grey or black): x y w h.
proc coloured_box {file tx ty tw th} {
    # An empty box comes with a warning on standard error.
    catch {exec convert $file -crop ${tw}x${th}+${tx}+${ty} +repage -colorspace HSL \
        -channel G -separate +channel -threshold 50% -format %@ info:} geometry
    if {![regexp {(\d+)x(\d+)\+(\d+)\+(\d+)} $geometry -> w h x y]} { return {} }
    if {$w == 0 || $h == 0} { return {} }
    return [list [expr {$tx + $x}] [expr {$ty + $y}] $w $h]
}

proc dominant {rgb} {
    lassign $rgb r g b
    if {$r > 2 * $b && $r > 60} { return red }
    if {$b > 2 * $r && $b > 60} { return blue }
    return other
}

proc check_checker {name file tx ty tw th} {
    set box [coloured_box $file $tx $ty $tw $th]
    if {[llength $box] != 4 || [lindex $box 2] < 20 || [lindex $box 3] < 20} {
        check "$name: the textured quad is on screen" $box "a box"
        return
    }
    lassign $box x y w h
    # Texel centres: a quarter of the way in from each side.
    set left [expr {$x + $w / 4}]
    set right [expr {$x + 3 * $w / 4}]
    set top [expr {$y + $h / 4}]
    set bottom [expr {$y + 3 * $h / 4}]
    check "$name: bottom-left square red" [dominant [pixel $file $left $bottom]] red
    check "$name: bottom-right square blue" [dominant [pixel $file $right $bottom]] blue
    check "$name: top-left square blue" [dominant [pixel $file $left $top]] blue
    check "$name: top-right square red" [dominant [pixel $file $right $top]] red
}

set s [shot textured]
check_checker "textured" $s $tx $ty $tw $th

# ---- "t" over the 3D view switches texturing off, then on ----
exec xdotool mousemove [expr {$tx + 10}] [expr {$ty + 10}]
wait_idle
exec xdotool key t
settle
set s [shot untextured]
check "t switches textures off" [remote {set ::prefs_view3dtextures}] 0
check "no coloured pixels without the texture" [coloured_box $s $tx $ty $tw $th] {}
exec xdotool key t
settle
set s [shot textured_again]
check "t switches textures on" [remote {set ::prefs_view3dtextures}] 1
check_checker "textured again" $s $tx $ty $tw $th

# ---- texture off on the selection, then set again ----
remote {vesk select_all}
remote {vesk selected_texture_off}
remote {vesk clear_selection}
settle
check "selected_texture_off leaves the quad white" [coloured_box [shot off] $tx $ty $tw $th] {}
remote {vesk select_all}
remote {vesk texture_set 1}
remote {vesk clear_selection}
settle
check_checker "texture_set" [shot set_again] $tx $ty $tw $th

# ---- a background image in the front view ----
lassign [view_rect 0] fx fy fw fh
set cx [expr {$fx + $fw / 2}]
set cy [expr {$fy + $fh / 2}]
set green {0 200 0}
set yellow {230 200 0}
set col_grid [hex_colour 0x454545]
remote {vesk reset_views}
check "load_background_image" [remote "vesk load_background_image [list $halves_file] 0"] ""
settle
# The image fills the view's width (40 x 20 in a wider-than-half-high
# view), centred: its left half left of the centre.  Points are chosen off
# the grid lines, which lie every 100 pixels from the centre.
proc background_checks {name} {
    upvar cx cx cy cy green green yellow yellow col_grid col_grid
    set s [shot $name]
    check_pixel "$name: left half" $s [expr {$cx - 143}] [expr {$cy + 37}] $green
    check_pixel "$name: right half" $s [expr {$cx + 57}] [expr {$cy + 37}] $yellow
    check_pixel "$name: grid drawn over the image" $s [expr {$cx - 200}] [expr {$cy + 37}] $col_grid
    check_pixel "$name: no image above it" $s [expr {$cx + 57}] [expr {$cy - 150}] {0 0 0}
    return $s
}
background_checks pixels
remote {set ::prefs_use_textures_for_background_images 1}
settle
background_checks texture
remote {set ::prefs_use_textures_for_background_images 0}
settle

# A pan of 100 pixels to the right (Shift+Left twice over the front view)
# carries the image with it.
exec xdotool mousemove [expr {$fx + 10}] [expr {$fy + 10}]
wait_idle
exec xdotool key shift+Left shift+Left
settle
set s [shot panned]
check_pixel "panned: the centre now shows the left half" $s [expr {$cx + 57}] [expr {$cy + 37}] $green
check_pixel "panned: the right half moved right" $s [expr {$cx + 157}] [expr {$cy + 37}] $yellow

remote {vesk clear_background_image 0}
settle
set s [shot cleared]
check_pixel "cleared: no image" $s [expr {$cx + 57}] [expr {$cy + 37}] {0 0 0}

check "no Tcl error" [string match "*TCL ERROR*" [read_log]] 0
finish
