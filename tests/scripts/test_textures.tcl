# Textures in the headless shell: loading into the table (the same file
# twice, a reload, names without a suffix or a loader), giving textures to
# the selection and taking them away, repeats with undo, a model whose
# texture file is missing keeping its texture name when saved, and
# background images loaded and cleared without a display.
source [file join [lindex $argv 0] scripts harness.tcl]

proc read_file {name} {
    set fd [open $name r]
    set text [read $fd]
    close $fd
    return $text
}

# Images written by ImageMagick.
set gif [file join $::scratch wood.gif]
set bmp [file join $::scratch stone.BMP]
set rgb [file join $::scratch sky.rgb]
if {[tcltest::testConstraint convert]} {
    exec convert -size 8x4 gradient:red-blue -colors 16 $gif
    exec convert -size 5x3 xc:gray50 BMP3:$bmp
    exec convert -size 4x4 xc:teal -depth 8 sgi:$rgb
}

tcltest::test textures-1.1 {images enter the table once each, by suffix} -constraints convert -body {
    check "first texture" [vesk add_new_texture $gif] 1
    check "same file again" [vesk add_new_texture $gif] 1
    check "an upper-case suffix" [vesk add_new_texture $bmp] 2
    check "SGI" [vesk add_new_texture $rgb] 3
    check "no suffix" [vesk add_new_texture [file join $::scratch wood]] 0
    check_match "no loader lists the loaders" [capture_console {vesk add_new_texture x.tga}] \
    "*I can load these files as textures:*.gif (GIF image files)*"
    mismatches
} -result {}

tcltest::test textures-1.2 {a missing file loads nothing} -body {
    vesk add_new_texture [file join $::scratch none.gif]
} -result 0

# A model of two objects in a group, one naming a texture that is not
# there.
set model [file join $::scratch model.vk]
set fd [open $model w]
puts $fd {VESKb
MATERIAL "white" rgb 1 1 1 amb 0.2 0.2 0.2 emis 0 0 0 spec 0 0 0 shi 10 trans 0
OBJECT world
kids 1
OBJECT group
name "pair"
kids 2
OBJECT poly
name "left"
texture "textures/missing wood.gif"
texrep 2 3
numvert 3
0 0 0
1 0 0
0 1 0
numsurf 1
SURF 0
mat 0
refs 3
0 0 0
1 1 0
2 0 1
kids 0
OBJECT poly
name "right"
numvert 3
2 0 0
3 0 0
2 1 0
numsurf 1
SURF 0
mat 0
refs 3
0 0 0
1 1 0
2 0 1
kids 0}
close $fd
set saved [file join $::scratch saved.vk]

tcltest::test textures-2.1 {a missing texture keeps its name when saved} -setup {
    capture_console { vesk load_vk $model }
} -body {
    check "save" [vesk save_vk $saved] 1
    set text [read_file $saved]
    check_match "the missing texture's name is kept" $text "*texture \"textures/missing wood.gif\"*texrep 2 3*"
    mismatches
} -result {}

# Set on the group: both objects; off on the group: the children keep it.
tcltest::test textures-2.2 {textures given to a group and taken off it} -constraints convert -body {
    vesk select_all
    check "load and set" [vesk load_and_set_new_texture $gif] 1
    vesk save_vk $saved
    set text [read_file $saved]
    check "every object textured" [regexp -all "texture \"[string map {. \\.} $gif]\"" $text] 3
    vesk selected_texture_off
    vesk save_vk $saved
    check "off leaves the children" [regexp -all "texture \"[string map {. \\.} $gif]\"" [read_file $saved]] 2
    vesk set_texture 2
    vesk save_vk $saved
    check "set_texture gives texture 2" [regexp -all "texture \"[string map {. \\.} $bmp]\"" [read_file $saved]] 3
    mismatches
} -result {}

# Repeats, then undo.
tcltest::test textures-2.3 {texture repeats, then undo} -constraints convert -body {
    vesk set_texture_repeats 4 0.5
    vesk save_vk $saved
    check "repeats on all three" [regexp -all {texrep 4 0.5} [read_file $saved]] 3
    vesk undo
    vesk save_vk $saved
    check "undo restores the repeats" [regexp -all {texrep 4 0.5} [read_file $saved]] 0
    mismatches
} -result {}

# Background images need no display to load.
tcltest::test textures-3.1 {background images without a display} -constraints convert -body {
    check "load background" [vesk load_background_image $gif 0] ""
    check "clear background" [vesk clear_background_image 0] ""
    check_match "no such view" [capture_console {vesk load_background_image $gif 5}] "*"
    check "dialog cancelled loads nothing" [vesk file_select_texture] ""
    mismatches
} -result {}

finish
