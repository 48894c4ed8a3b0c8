# Redo: for every kind of undo record, do the step, undo it, redo it, and
# compare the model bit for bit (nine significant digits reproduce every
# float) with the model as the step left it; then undo and redo again.
# Also: a new edit clears the redo list, the depth limit, redo after the
# history was wiped, the labels and counts the interface shows, and the
# undo history commands.
source [file join [lindex $argv 0] scripts harness.tcl]
source [file join [lindex $argv 0] scripts redo_support.tcl]

set ::undo_labels {}
set ::redo_labels {}
proc set_undo_string {text} { lappend ::undo_labels $text }
proc set_redo_string {text} { lappend ::redo_labels $text }
proc status_of {body} { uplevel 1 [list capture_console $body] }

proc selection_print {} {
    list $::numselected $::numselectedobjects [vesk get_selection_centre] [vesk get_selection_size]
}

# Does the step, undoes it, redoes it: the redone model and selection are
# exactly those the step left; then once more undo and redo.  One case for
# each kind of step.
proc redo_case {name setup step label} {
    tcltest::test redo-1.[incr ::kind_case] "undo and redo of $name" -setup reload \
        -body [list redo_steps $name $setup $step $label] -result {}
}
proc redo_steps {name setup step label} {
    uplevel #0 $setup
    set before [list [model_print] [selection_print]]
    capture_console { uplevel #0 $step }
    set done [model_print]
    set done_selection [selection_print]
    check "$name: the step changed the model" [expr {[list $done $done_selection] ne $before}] 1
    check "$name: undo label" [lindex $::undo_labels end] $label
    capture_console { vesk undo }
    check "$name: undone" [expr {[list [model_print] [selection_print]] ne [list $done $done_selection]}] 1
    check "$name: one redo entry" $::redo_count 1
    check "$name: redo label" [lindex $::redo_labels end] $label
    set out [status_of { vesk redo }]
    check_match "$name: redo status" $out "*redo done*"
    check "$name: redo gives the done model" [model_print] $done
    check "$name: redo gives the done selection" [selection_print] $done_selection
    check "$name: redo list empty" $::redo_count 0
    check "$name: redone step can be undone" [expr {$::undo_count >= 1}] 1
    check "$name: undo label after redo" [lindex $::undo_labels end] $label
    capture_console { vesk undo }
    capture_console { vesk redo }
    check "$name: second redo gives the done model" [model_print] $done
    mismatches
}

# --- every kind ---
redo_case "selection" {vesk object_select [box]} {vesk set_select_mode 2} selection
redo_case "move" {vesk object_select [box]} {vesk move 0.1 0.2 0.3} move
redo_case "add surface" {vesk set_select_mode 2; vesk object_select [flat]} {vesk createsurface} "add surface"
redo_case "insert vertex" {vesk set_select_mode 2; vesk object_select [flat]} {vesk insert_vertex} "insert vertex"
redo_case "tree delete" {vesk object_select [flat]} {vesk delete} delete
redo_case "delete in object mode" {vesk set_select_mode 1; vesk object_select [flat]} {vesk delete} delete
redo_case "group" {vesk select_all} {vesk group} group
redo_case "ungroup" {vesk select_all; vesk group} {vesk ungroup} ungroup
redo_case "remove surface" {vesk set_select_mode 2; vesk object_select [flat]} {vesk removesurface} "remove surface"
redo_case "subdivide" {vesk object_select [box]} {vesk surface_subdivide} subdivide
redo_case "add object" {vesk object_select [flat]} {vesk new_cube} "add cube"
redo_case "resize" {vesk object_select [box]} {vesk scale 1.3 0.7 2.1} scale
redo_case "rotate" {vesk object_select [box]} {vesk rotate 0 0 33} rotate
redo_case "snap to grid" {vesk set_select_mode 2; vesk object_select [box]; set ::prefs_grid 0.7} \
    {vesk snaptogrid} "snap to grid"
redo_case "mirror" {vesk object_select [flat]} {vesk mirror 1} mirror
redo_case "paste" {vesk object_select [box]; vesk clipboard_copy; vesk object_select [flat]} \
    {vesk clipboard_paste} paste
redo_case "paste twice" {vesk object_select [box]; vesk clipboard_copy; vesk clipboard_paste} \
    {vesk clipboard_paste} paste
redo_case "cut" {vesk object_select [box]} {vesk clipboard_cut} cut

# --- a command that can't run on this selection says why ---
tcltest::test redo-2.1 {a command that can't run on this selection says why} -setup {
    reload
} -body {
    check_match "insert vertex with nothing selected" [status_of { vesk insert_vertex }] \
        "*insert vertex - select two neighbouring vertices of a surface first*"
    mismatches
} -result {}

# --- a new edit clears the redo list ---
tcltest::test redo-2.2 {a new edit clears the redo list} -setup {
    reload
} -body {
    vesk object_select [box]
    vesk move 1 0 0
    vesk undo
    check "one to redo" $redo_count 1
    vesk move 0 1 0
    check "a new edit clears redo" $redo_count 0
    check "redo label cleared" [lindex $::redo_labels end] ""
    check "nothing to redo: console" [capture_all { vesk redo }] "nothing to REDO!\nnothing to redo\n"
    mismatches
} -result {}

# --- undo and redo alternate through a chain of steps ---
tcltest::test redo-2.3 {undo and redo alternate through a chain of steps} -setup {
    reload
} -body {
    vesk object_select [box]
    set states [list [model_print]]
    foreach step {{vesk move 0.1 0 0} {vesk rotate 1 0 17} {vesk surface_subdivide; vesk select_all}
                  {vesk scale 1.1 1.2 1.3} {vesk move 0 0.3 0}} {
        eval $step
        lappend states [model_print]
    }
    # The subdivide's undo wipes the records before it; redo still goes all
    # the way up.  Each redo gives back the model as it was just before the
    # matching undo.
    set seen {}
    foreach i {1 2 3} {
        lappend seen [model_print]
        capture_console { vesk undo }
    }
    check "three undone" $redo_count 3
    check "history wiped by the snapshot undo" $undo_count 0
    check "nothing more to undo" [capture_console { vesk undo }] "nothing to UNDO!\n"
    capture_console { vesk redo }
    check "redo subdivide" [model_print] [lindex $seen 2]
    capture_console { vesk redo }
    check "redo scale" [model_print] [lindex $seen 1]
    capture_console { vesk undo }
    check "undo the redone scale" $redo_count 2
    capture_console { vesk redo; vesk redo }
    check "redo to the end" [model_print] [lindex $seen 0]
    check "redo to the last step taken" [model_print] [lindex $states 5]
    check "all redone" $redo_count 0
    check "records of the redone steps" $undo_count 3
    mismatches
} -result {}

# --- the depth limit: 20 records, 20 redos ---
tcltest::test redo-2.4 {the depth limit: 20 records, 20 redos} -setup {
    reload
} -body {
    vesk object_select [box]
    set first [model_print]
    for {set i 0} {$i < 21} {incr i} { vesk move 0.25 0 0 }
    set last [model_print]
    check "depth limit" $undo_count 20
    for {set i 0} {$i < 21} {incr i} { capture_console { vesk undo } }
    check "twenty undone" $redo_count 20
    for {set i 0} {$i < 20} {incr i} { capture_console { vesk redo } }
    check "twenty redone" [model_print] $last
    check "redo past the limit" [capture_console { vesk redo }] "nothing to REDO!\nnothing to redo\n"
    check "redo list empty" $redo_count 0
    mismatches
} -result {}

# --- a cleared or reloaded model has nothing to redo ---
tcltest::test redo-2.5 {a cleared or reloaded model has nothing to redo} -body {
    vesk undo
    check "one to redo before clear all" $redo_count 1
    capture_console { vesk clear_all }
    check "clear all drops redo" $redo_count 0
    check "redo after clear all" [capture_console { vesk redo }] "nothing to REDO!\nnothing to redo\n"
    check "model still empty" [dict get [vesk get_info] objects] 0
    reload
    vesk object_select [box]
    vesk move 1 0 0
    vesk undo
    capture_console { vesk load_vk $model }
    check "load drops redo" $redo_count 0
    mismatches
} -result {}

# --- the undo history ---
tcltest::test redo-3.1 {the undo history} -setup {
    reload
} -body {
    vesk object_select [box]
    set start [model_print]
    capture_console { vesk move 1 0 0; vesk rotate 0 0 10; vesk scale 2 2 2 }
    set history [vesk undo_history]
    check "history labels, oldest first" [lrange $history end-2 end] {move rotate scale}
    set n [llength $history]
    capture_console { vesk undo_to [expr {$n - 2}] }
    check "undo back to the rotate" $undo_count [expr {$n - 2}]
    check "two redo entries" $redo_count 2
    check "labels left" [lrange [vesk undo_history] end-0 end] move
    check_match "no such step" [status_of { vesk undo_to 99 }] "*the history has no such step*"
    check_match "negative step" [status_of { vesk undo_to -1 }] "*the history has no such step*"
    check "bad steps change nothing" $redo_count 2
    capture_console { vesk redo; vesk redo }
    check "redo both" [lrange [vesk undo_history] end-2 end] {move rotate scale}
    mismatches
} -result {}

finish
