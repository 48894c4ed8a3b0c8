# Direct manipulation in the views with real X input: picking by click in
# each select mode, Shift to add and Shift with another button to remove,
# rubber band and brush selection, the 3D cursor with Alt (also with
# NumLock on, while NumLock alone is no Alt), panning and zooming keys,
# and Control+click picking in the 3D view.
source [file join [file dirname [info script]] gui_lib.tcl]

# A box at x -1..-0.5 and a group of two boxes at x 0.5..1, all 0.5 deep.
proc box_block {name x0 y0} {
    set x1 [expr {$x0 + 0.5}]
    set y1 [expr {$y0 + 0.5}]
    set text "OBJECT poly\nname \"$name\"\nnumvert 8\n"
    foreach z {0 0.5} {
        foreach y [list $y0 $y1] {
            foreach x [list $x0 $x1] { append text "$x $y $z\n" }
        }
    }
    append text "numsurf 6\n"
    foreach face {{0 1 3 2} {4 6 7 5} {0 4 5 1} {2 3 7 6} {0 2 6 4} {1 5 7 3}} {
        append text "SURF 0x20\nmat 0\nrefs 4\n"
        foreach i $face { append text "$i 0 0\n" }
    }
    append text "kids 0\n"
    return $text
}
set model [file join $::scratch boxes.vk]
set fd [open $model w]
puts -nonewline $fd "VESKb\nMATERIAL \"m\" rgb 0.8 0.2 0.2 amb 0.2 0.2 0.2 emis 0 0 0 spec 0.5 0.5 0.5 shi 10 trans 0\n"
puts -nonewline $fd "OBJECT world\nkids 2\n[box_block left -1 0]OBJECT group\nname \"pair\"\nkids 2\n"
puts -nonewline $fd "[box_block right1 0.5 0][box_block right2 0.5 1]"
close $fd

start_vesk $model
remote {vesk clear_selection; vesk reset_views}
settle
lassign [view_rect 0] fx fy fw fh

# Screen position of a model point (x, y) in the front view at scale 100.
proc front {x y} {
    global fx fy fw fh
    return [list [expr {$fx + int(100 * $x + $fw * 0.5 + 0.5)}] [expr {$fy + int($fh * 0.5 - 100 * $y + 0.5)}]]
}
proc names {} {
    set out {}
    foreach id [remote {vesk get_selected_objects}] { lappend out [remote "vesk object_get_name $id"] }
    return [lsort $out]
}
proc click_at {xy {button 1}} {
    exec xdotool mousemove {*}$xy
    wait_idle
    exec xdotool click $button
    wait_idle
}
proc drag {from to {button 1} {steps {0.3 0.6 1.0}}} {
    exec xdotool mousemove {*}$from mousedown $button
    wait_idle
    foreach f $steps {
        lassign $from x0 y0
        lassign $to x1 y1
        exec xdotool mousemove [expr {int($x0 + ($x1 - $x0) * $f)}] [expr {int($y0 + ($y1 - $y0) * $f)}]
        wait_idle
    }
    exec xdotool mouseup $button
    wait_idle
}

# ---- clicks in tree mode pick the top ancestor ----
click_at [front -1 0.25]
check "tree click on the left box" [names] left
click_at [front 1 1.25]
check "tree click on a grouped box selects the group" [names] pair
click_at [front -2 1.5]
check "click on nothing clears" [names] {}

# ---- object mode: the box itself; Shift adds, Shift with button 3 removes ----
remote {vesk set_select_mode 1; vesk clear_selection}
click_at [front 1 1.25]
check "object click selects the box" [names] right2
exec xdotool keydown shift
click_at [front 1 0.25]
exec xdotool keyup shift
check "Shift click adds" [names] {right1 right2}
exec xdotool keydown shift
click_at [front 1 1.25] 3
exec xdotool keyup shift
check "Shift with button 3 removes" [names] right1

# ---- rubber band ----
remote {vesk clear_selection}
drag [front -1.5 1.8] [front 1.5 -0.5]
check "rubber band selects all boxes" [names] {left right1 right2}

# ---- vertex mode: rubber band and brush ----
remote {vesk set_select_mode 2}
remote {vesk clear_selection}
drag [front -1.2 0.7] [front -0.3 -0.2]
check "rubber band selects the left box's vertices" [remote {set numselected}] 8
exec xdotool keydown ctrl keydown shift
drag [front 1 -0.1] [front 1 0.6] 1 {0.1 0.2 0.3 0.4 0.5 0.6 0.7 0.8 0.9 1.0}
exec xdotool keyup shift keyup ctrl
check_true "brush adds vertices" [expr {[remote {set numselected}] > 8}]
remote {vesk set_select_mode 0; vesk clear_selection}

# ---- Alt places the 3D cursor; NumLock does not count as Alt ----
exec xdotool keydown alt
click_at [front 0.3 0.4]
exec xdotool keyup alt
lassign [remote {vesk get_3d_cursor}] cx cy cz
check_true "Alt click moves the 3D cursor" [expr {abs($cx - 0.3) < 0.02 && abs($cy - 0.4) < 0.02}]
exec xdotool key Num_Lock
exec xdotool keydown alt
click_at [front -0.2 0.1]
exec xdotool keyup alt
lassign [remote {vesk get_3d_cursor}] cx cy cz
check_true "Alt with NumLock on still places the cursor" [expr {abs($cx + 0.2) < 0.02 && abs($cy - 0.1) < 0.02}]
click_at [front -1 0.25]
lassign [remote {vesk get_3d_cursor}] cx2 cy2 cz2
check "NumLock alone is no Alt" [list $cx2 $cy2] [list $cx $cy]
check "NumLock click still selects" [names] left
exec xdotool key Num_Lock
remote {vesk clear_selection}

# ---- keys: arrows pan, z zooms (pointer over the front view) ----
settle
set col_vert [hex_colour 0xFF4444]
lassign [front -1 0.5] mx my
set s [shot keys_before]
check_pixel "corner marker before panning" $s $mx $my $col_vert
exec xdotool mousemove [expr {$fx + 20}] [expr {$fy + 20}]
wait_idle
exec xdotool key Left
settle
check_pixel "Left pans the front view 20 pixels right" [shot keys_left] [expr {$mx + 20}] $my $col_vert
exec xdotool key Right
exec xdotool key z
settle
lassign [list [expr {$fx + int(150 * -1 + $fw * 0.5 + 0.5)}] [expr {$fy + int($fh * 0.5 - 150 * 0.5 + 0.5)}]] zx zy
check_pixel "z zooms in by 1.5" [shot keys_zoom] $zx $zy $col_vert
exec xdotool key x
settle
check_pixel "x zooms back out" [shot keys_unzoom] $mx $my $col_vert

# ---- Control+click in the 3D view picks the nearest object ----
lassign [view_rect 3] tx ty tw th
# The load framed the model in the 3D view; Space puts the viewer back at
# its reset place, which the projection below assumes.
exec xdotool mousemove [expr {$tx + $tw / 2}] [expr {$ty + $th / 2}]
wait_idle
exec xdotool key space
settle
set aspect [expr {double($tw) / $th}]
set fovy [expr {int(50 / $aspect * 10) * 0.1}]
set f [expr {1.0 / tan($fovy * 3.14159265358979 / 360.0)}]
# The left box's front face centre (-0.75, 0.25, 0.5), seen from z = 5.
set ndc_x [expr {-0.75 / 4.5 * $f / $aspect}]
set ndc_y [expr {0.25 / 4.5 * $f}]
set px [expr {$tx + int(($ndc_x + 1) * 0.5 * $tw)}]
set py [expr {$ty + int((1 - $ndc_y) * 0.5 * $th)}]
exec xdotool keydown ctrl
click_at [list $px $py]
exec xdotool keyup ctrl
check "Control click in 3D picks the box" [names] left
exec xdotool keydown ctrl
click_at [list [expr {$tx + 5}] [expr {$ty + 5}]]
exec xdotool keyup ctrl
check "Control click on nothing clears" [names] {}

finish
