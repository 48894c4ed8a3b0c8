# The selection as the scripts see it: the selection commands, the mode
# word sent to the interface, the linked count variables, status messages
# and bad object ids.
source [file join [lindex $argv 0] scripts harness.tcl]

# A small model: object "a" with two vertices, group "g" holding "b".
set model [file join $::scratch selection.vk]
set f [open $model w]
puts $f {VESKb
OBJECT world
kids 2
OBJECT poly
name "a"
numvert 2
0 0 0
2 4 6
numsurf 0
kids 0
OBJECT group
name "g"
kids 1
OBJECT poly
name "b"
numvert 1
-2 0 0
numsurf 0
kids 0}
close $f
tcltest::test selection-1.1 {the model of a group and an object loads} -body {
    capture_console { vesk load_vk $model }
    lassign [vesk object_get_children [vesk get_world]] a g
    set b [vesk object_get_children $g]
    llength [list $a $g $b]
} -result 3

# The mode words sent to the interface from here on.
set ::ui_words {}
proc set_select_mode_ui {word} { lappend ::ui_words $word }

# --- tree mode ---
tcltest::test selection-2.1 {tree mode: nothing selected, then everything} -body {
    vesk set_select_mode 0
    check "same mode still tells the interface" $::ui_words tree
    vesk clear_selection
    check "nothing selected: size" [vesk get_selection_size] "0 0 0"
    check "nothing selected: centre" [vesk get_selection_centre] "0 0 0"

    set text [capture_console { vesk select_all }]
    check_match "select all status" $text "select all...*select all done*"
    check "select all: objects" [vesk get_selected_objects] [list $a $g]
    check "numselectedobjects follows" $numselectedobjects 2
    check "size of everything" [vesk get_selection_size] "4 4 6"
    check "centre of everything" [vesk get_selection_centre] "0 2 3"
    mismatches
} -result {}

tcltest::test selection-2.2 {tree mode: clearing, by name and by object} -body {

    vesk clear_selection
    check "cleared" [vesk get_selected_objects] ""
    check "numselectedobjects cleared" $numselectedobjects 0

    vesk select_by_name b
    check "nested name selects its tree" [vesk get_selected_objects] $g
    check "group is selected" [vesk object_is_selected $g] 1
    check "a is not" [vesk object_is_selected $a] 0
    vesk unselect_by_name b
    check "unselect by name" [vesk get_selected_objects] ""

    vesk object_select $a
    check "object_select" [vesk get_selected_objects] $a
    check "one object: size" [vesk get_selection_size] "2 4 6"
    vesk object_deselect $a
    check "object_deselect" $numselectedobjects 0
    mismatches
} -result {}

# --- bad input ---
tcltest::test selection-3.1 {bad ids and modes are refused with a message} -body {
    set text [capture_console { set r [vesk object_select 99999] }]
    check_match "unknown id" $text "*object_select: no object with id 99999*"
    check "unknown id: no result" $r ""
    set text [capture_console { vesk object_is_selected abc }]
    check_match "non-number id" $text "*no object with id 0*"
    set text [capture_console { vesk set_select_mode 5 }]
    check_match "bad mode refused" $text "*not a select mode*"
    check "bad mode sends no word" $::ui_words tree
    mismatches
} -result {}

# --- object and vertex modes ---
tcltest::test selection-4.1 {the selection carried from mode to mode} -body {
    vesk select_all
    vesk set_select_mode 1
    check "tree to object: leaves" [vesk get_selected_objects] [list $a $b]
    vesk set_select_mode 2
    check "mode words" $::ui_words {tree object vertex}
    check "object to vertex: all vertices" $numselected 3
    check "no objects in vertex mode" [vesk get_selected_objects] ""
    check "part selected counts as selected" [vesk object_is_selected $b] 1
    vesk clear_selection
    check "numselected cleared" $numselected 0
    set text [capture_console { vesk select_part_selected_surfaces }]
    check_match "no part selected surfaces" $text "*selecting surfaces...*no vertices selected*"
    vesk object_select $g
    check "vertex mode: group's vertices" $numselected 1
    vesk set_select_mode 0
    check "vertex to tree" [vesk get_selected_objects] $g
    mismatches
} -result {}

finish
