# Editing as the scripts drive it: transforms, object operations,
# snapping and the clipboard through `vesk`, each undone; the undo label
# sent to the interface and the linked undo_count; refused input with its
# status message; and after each step a model whose counts agree.
source [file join [lindex $argv 0] scripts harness.tcl]

set ::labels {}
proc set_undo_string {text} { lappend ::labels $text }
proc last_label {} { lindex $::labels end }

# Status messages of one command (display_message prints them).
proc status_of {body} { uplevel 1 [list capture_console $body] }

# Walks the tree through the commands and compares with get_info: the
# counts of the model agree with what its lists hold (1), or what
# differs.
proc count_tree {id} {
    set n [list 1 [llength [vesk object_get_surfaces $id]] [llength [vesk object_get_vertices $id]]]
    foreach kid [vesk object_get_children $id] {
        lassign [count_tree $kid] o s v
        lset n 0 [expr {[lindex $n 0] + $o}]
        lset n 1 [expr {[lindex $n 1] + $s}]
        lset n 2 [expr {[lindex $n 2] + $v}]
    }
    return $n
}
proc model_ok {} {
    set o 0; set s 0; set v 0
    foreach kid [vesk object_get_children [vesk get_world]] {
        lassign [count_tree $kid] ko ks kv
        incr o $ko; incr s $ks; incr v $kv
    }
    set info [vesk get_info]
    set counted [list $o $s $v]
    set told [list [dict get $info objects] [dict get $info surfaces] [dict get $info vertices]]
    if {$told == $counted} { return 1 }
    # What disagrees, for the failure report.
    return "get_info says objects, surfaces, vertices $told; the lists hold $counted"
}
proc info_of {key} { dict get [vesk get_info] $key }

# A cube with shared corners and a group of two squares.
set model [file join $::scratch editing.vk]
set f [open $model w]
puts $f {VESKb
OBJECT world
kids 2
OBJECT poly
name "cube"
numvert 8
-1 -1 -1
1 -1 -1
1 1 -1
-1 1 -1
-1 -1 1
1 -1 1
1 1 1
-1 1 1
numsurf 6
SURF 0
refs 4
0 0 0
3 0 0
2 0 0
1 0 0
SURF 0
refs 4
4 0 0
5 0 0
6 0 0
7 0 0
SURF 0
refs 4
0 0 0
1 0 0
5 0 0
4 0 0
SURF 0
refs 4
3 0 0
7 0 0
6 0 0
2 0 0
SURF 0
refs 4
0 0 0
4 0 0
7 0 0
3 0 0
SURF 0
refs 4
1 0 0
2 0 0
6 0 0
5 0 0
kids 0
OBJECT group
name "pair"
kids 2
OBJECT poly
name "a"
numvert 4
4 0 0
5 0 0
5 1 0
4 1 0
numsurf 1
SURF 0
refs 4
0 0 0
1 0 0
2 0 0
3 0 0
kids 0
OBJECT poly
name "b"
numvert 4
5 0 0
6 0 0
6 1 0
5 1 0
numsurf 1
SURF 0
refs 4
0 0 0
1 0 0
2 0 0
3 0 0
kids 0}
close $f
tcltest::test editing-1.1 {the model loads with consistent counts and no history} -body {
    capture_console { vesk load_vk $model }
    lassign [vesk object_get_children [vesk get_world]] cube pair
    check "loaded" [info_of objects] 4
    check "load into an empty world: no history" $undo_count 0
    check "model consistent after load" [model_ok] 1
    mismatches
} -result {}

# --- undo with nothing to undo, paste with an empty clipboard ---
tcltest::test editing-1.2 {undo with nothing to undo, paste with an empty clipboard} -body {
    check "empty history" [capture_console { vesk undo }] "nothing to UNDO!\n"
    check_match "empty clipboard" [status_of { vesk clipboard_paste }] "*paste: the clipboard is empty*"
    mismatches
} -result {}

# --- move and its undo ---
tcltest::test editing-2.1 {move and move_to, undone} -body {
    vesk clear_selection
    vesk object_select $cube
    vesk move 1 2 3
    check "moved" [vesk get_selection_centre] "1 2 3"
    check "one record" $undo_count 1
    check "label move" [last_label] move
    vesk undo
    check "undo move" [vesk get_selection_centre] "0 0 0"
    check "undo leaves no record" $undo_count 0
    check "empty label after last undo" [last_label] ""
    vesk move_to 10 0 0
    check "move_to" [vesk get_selection_centre] "10 0 0"
    vesk undo
    check "undo move_to" [vesk get_selection_centre] "0 0 0"
    mismatches
} -result {}

# --- refused input ---
tcltest::test editing-2.2 {refused input leaves the model and the history} -body {
    check_match "nan refused" [status_of { vesk move nan 0 0 }] "*move: the numbers must be finite*"
    check_match "infinity refused" [status_of { vesk size_to 1e39 1 1 }] "*size_to: the numbers must be finite*"
    check_match "bad axis" [status_of { vesk mirror 7 }] "*mirror: axis must be 0 (x), 1 (y) or 2 (z), not 7*"
    check_match "no angle" [status_of { vesk rotate 0 0 0 }] "*rotate: no angle given*"
    check "unchanged by refusals" [vesk get_selection_size] "2 2 2"
    check "no records from refusals" $undo_count 0
    vesk clear_selection
    check_match "nothing selected" [status_of { vesk move 1 0 0 }] "*move: nothing selected*"
    check_match "nothing to scale" [status_of { vesk scale 2 2 2 }] "*scale: nothing selected*"
    check_match "nothing to duplicate" [status_of { vesk duplicate }] "*duplicate: select something first*"
    check_match "nothing to delete" [status_of { vesk delete }] "*delete: nothing selected*"
    check_match "nothing to snap" [status_of { vesk snaptogrid }] "*snap to grid: select vertices first*"
    check_match "wrong selection for object snap" [status_of { vesk snap_object_vertex_pairs }] \
        "*select vertices in exactly two objects*"
    check_match "wrong template" [capture_console { vesk move 1 2 }] "*incorrect number of args for move*"
    check "model consistent after refusals" [model_ok] 1
    mismatches
} -result {}

# --- hidden objects only ---
tcltest::test editing-2.3 {hidden objects are not edited} -body {
    vesk object_select $cube
    vesk hide_selected
    vesk select_all
    check "hidden cube not selected" [vesk object_is_selected $cube] 0
    vesk clear_selection
    vesk object_select $cube
    check_match "hidden only: nothing selected" [status_of { vesk move 1 0 0 }] "*move: nothing selected*"
    vesk unhide
    check "unhide" [vesk object_is_hidden $cube] 0
    mismatches
} -result {}

# --- rotate, scale, size_to, mirror ---
tcltest::test editing-2.4 {rotate, scale, size_to and mirror, undone} -body {
    vesk clear_selection
    vesk object_select $cube
    vesk rotate 0 0 90
    check "rotate label" [last_label] rotate
    vesk undo
    vesk scale 2 1 1
    check "scaled" [vesk get_selection_size] "4 2 2"
    vesk undo
    check "scale undone" [vesk get_selection_size] "2 2 2"
    vesk size_to 0 4 -1
    check "size_to flattens x, ignores negative z" [vesk get_selection_size] "0 4 2"
    vesk undo
    # A flattened axis cannot be stretched back: the undo restores a copy of
    # the model, with new objects.
    lassign [vesk object_get_children [vesk get_world]] cube pair
    vesk object_select $cube
    check "size_to undone" [vesk get_selection_size] "2 2 2"
    vesk mirror 1
    vesk mirror 1
    check "mirror twice" [vesk get_selection_centre] "0 0 0"
    vesk undo
    vesk undo
    check "model consistent after transforms" [model_ok] 1
    mismatches
} -result {}

# --- select mode changes are undoable ---
tcltest::test editing-2.5 {select mode changes are undoable} -body {
    set ::ui_words {}
    proc set_select_mode_ui {word} { lappend ::ui_words $word }
    vesk set_select_mode 2
    check "mode change recorded" [last_label] selection
    check "vertex mode: cube's corners" $numselected 8
    vesk undo
    check "mode back" [lindex $::ui_words end] tree
    check "selection back" [vesk get_selected_objects] $cube
    mismatches
} -result {}

# --- object operations ---
tcltest::test editing-3.1 {fragment, undone by a snapshot} -body {
    vesk object_fragment
    check "fragment: six objects and the pair" [info_of objects] 9
    vesk undo
    check "fragment undone" [info_of objects] 4
    check "snapshot undo wipes the history" $undo_count 0
    check "second undo: nothing" [capture_console { vesk undo }] "nothing to UNDO!\n"
    lassign [vesk object_get_children [vesk get_world]] cube pair
    mismatches
} -result {}

tcltest::test editing-3.2 {merge and optimize, undone} -body {
    vesk select_all
    vesk object_merge
    check "merge: one object" [info_of objects] 1
    check "merge: all vertices" [info_of vertices] 16
    vesk undo
    check "merge undone" [info_of objects] 4
    vesk select_all
    vesk object_merge
    vesk select_all
    set text [capture_console { vesk optimize }]
    check_match "optimize: the squares' shared corners" $text "*\n2 duplicate vertices removed from object cube\n*"
    check "optimized" [info_of vertices] 14
    vesk undo
    check "optimize undone" [info_of vertices] 16
    capture_console { vesk clear_all; vesk load_vk $model }
    lassign [vesk object_get_children [vesk get_world]] cube pair
    mismatches
} -result {}

tcltest::test editing-3.3 {group and ungroup, undone} -body {
    vesk select_all
    check_match "group" [status_of { vesk group }] "*group created*"
    check "group of two trees" [llength [vesk object_get_children [vesk get_world]]] 1
    vesk undo
    check "group undone" [llength [vesk object_get_children [vesk get_world]]] 2
    lassign [vesk object_get_children [vesk get_world]] cube pair
    vesk object_select $pair
    vesk ungroup
    check "ungroup" [llength [vesk object_get_children [vesk get_world]]] 3
    vesk undo
    check "model consistent after object operations" [model_ok] 1
    mismatches
} -result {}

# --- delete and its undo in tree mode ---
tcltest::test editing-3.4 {delete in tree mode gives the same object back on undo} -body {
    lassign [vesk object_get_children [vesk get_world]] cube pair
    vesk object_select $pair
    vesk delete
    check "deleted" [llength [vesk object_get_children [vesk get_world]]] 1
    vesk undo
    check "same object back" [lindex [vesk object_get_children [vesk get_world]] end] $pair
    mismatches
} -result {}

# --- clipboard ---
tcltest::test editing-4.1 {the clipboard: copy, paste, cut, undone} -body {
    vesk clear_selection
    vesk object_select $cube
    vesk clipboard_copy
    vesk move 5 0 0
    vesk clipboard_paste
    vesk clipboard_paste
    set kids [vesk object_get_children [vesk get_world]]
    check "two pastes" [llength $kids] 4
    check "paste selects it" [vesk get_selected_objects] [lindex $kids end]
    check "paste is the copy, not the moved original" [vesk get_selection_centre] "0 0 0"
    check "paste label" [last_label] paste
    vesk undo
    check "paste undone" [llength [vesk object_get_children [vesk get_world]]] 3
    vesk clear_selection
    vesk object_select $cube
    vesk clipboard_cut
    check "cut label" [last_label] cut
    check "cut removes" [vesk object_is_selected $cube] 0
    vesk undo
    check "cut undone" [llength [vesk object_get_children [vesk get_world]]] 3
    mismatches
} -result {}

# --- snapping ---
tcltest::test editing-5.1 {snapping to the grid and together, undone} -body {
    vesk clear_selection
    vesk set_select_mode 2
    vesk object_select $cube
    set prefs_grid 2
    vesk snaptogrid
    check "snap to grid label" [last_label] "snap to grid"
    check "corners on the grid" [vesk get_selection_size] "2 4 4"
    vesk undo
    vesk snaptogether
    check "snapped together" [vesk get_selection_size] "0 0 0"
    check "snap together label" [last_label] "snap vertices together"
    vesk undo
    check "snap undone" [vesk get_selection_size] "2 2 2"
    vesk set_select_mode 0
    check "model consistent after snapping" [model_ok] 1
    mismatches
} -result {}

# --- clear all, and a load into the emptied world ---
tcltest::test editing-6.1 {clear all, and a load into the emptied world} -body {
    vesk select_all
    vesk move 1 0 0
    vesk clear_all
    check "clear all: empty" [info_of objects] 0
    check "clear all: no history" $undo_count 0
    check "clear all: nothing selected" $numselectedobjects 0
    vesk clipboard_paste
    vesk select_all
    vesk delete
    check "emptied by edits" [info_of objects] 0
    check "edits recorded" $undo_count 2
    capture_console { vesk load_vk $model }
    check "reloaded" [info_of objects] 4
    check "a load into an empty world clears the history" $undo_count 0
    check "model consistent at the end" [model_ok] 1
    mismatches
} -result {}

finish
