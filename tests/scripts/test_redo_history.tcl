# Redo keeps the history: after any step is undone and redone, the older
# records still undo, bit for bit, back to the model as it was before
# them.  Each case does an older step that keeps pointers into the model
# (saved vertex positions, an added surface, inserted vertices), then the
# step under test; undoes it, redoes it, and undoes everything back to the
# start.  The steps whose undo wipes the history (snapshots, tree delete,
# ungroup) are checked the other way round: as the older step, with an
# in-place step redone on top of their redone copy.
source [file join [lindex $argv 0] scripts harness.tcl]
source [file join [lindex $argv 0] scripts redo_support.tcl]

proc set_undo_string {text} {}
proc set_redo_string {text} {}

# Undoing a move, resize or rotate computes the old positions back
# (subtracting, scaling and turning the other way), which is exact only
# to rounding; for those the comparison allows a few units in the last
# place.  Everything else must match exactly.
proc near {a b} {
    set a [string map {\{ " " \} " "} $a]
    set b [string map {\{ " " \} " "} $b]
    if {[llength $a] != [llength $b]} { return 0 }
    foreach x $a y $b {
        if {$x eq $y} continue
        if {![string is double -strict $x] || ![string is double -strict $y]} { return 0 }
        if {abs($x - $y) > 1e-5 * (1 + abs($x))} { return 0 }
    }
    return 1
}
proc same {name actual expected exact} {
    if {$exact} {
        check $name $actual $expected
    } else {
        # What differed is shown whole.
        check $name [expr {[near $actual $expected] ? $expected : $actual}] $expected
    }
}

proc undo_back_to {count} {
    set guard 0
    while {$::undo_count > $count && [incr guard] < 100} { capture_console { vesk undo } }
}
proc redo_all {} {
    set guard 0
    while {$::redo_count > 0 && [incr guard] < 100} { capture_console { vesk redo } }
}

# Older steps whose records point into the model.
set older {
    "snap to grid" {vesk set_select_mode 2; vesk object_select [box]; set ::prefs_grid 0.7; vesk snaptogrid}
    "add surface" {vesk set_select_mode 2; vesk object_select [box]; vesk createsurface}
    "insert vertex" {vesk set_select_mode 2; vesk object_select [flat]; vesk insert_vertex}
}
# Steps whose undo leaves the older records in place.
set keeping {
    selection {vesk set_select_mode 0; vesk object_select [box]} {vesk set_select_mode 2}
    move {vesk set_select_mode 0; vesk object_select [box]} {vesk move 0.1 0.2 0.3}
    "add surface" {vesk set_select_mode 2; vesk object_select [flat]} {vesk createsurface}
    "insert vertex" {vesk set_select_mode 2; vesk object_select [flat]} {vesk insert_vertex}
    "add object" {vesk set_select_mode 0; vesk object_select [flat]} {vesk new_cube}
    resize {vesk set_select_mode 0; vesk object_select [box]} {vesk scale 1.3 0.7 2.1}
    rotate {vesk set_select_mode 0; vesk object_select [box]} {vesk rotate 0 0 33}
    "snap to grid" {vesk set_select_mode 2; vesk object_select [flat]; set ::prefs_grid 0.3} {vesk snaptogrid}
    paste {vesk set_select_mode 0; vesk object_select [box]; vesk clipboard_copy; vesk object_select [flat]}
        {vesk clipboard_paste}
}
set labels {selection selection move move "add surface" "add surface" "insert vertex" "insert vertex"
    "add object" "add cube" resize scale rotate rotate "snap to grid" "snap to grid" paste paste}
# Steps whose undo wipes the history.
set wiping {
    "tree delete" {vesk set_select_mode 0; vesk object_select [flat]} {vesk delete}
    "delete in object mode" {vesk set_select_mode 1; vesk object_select [flat]} {vesk delete}
    group {vesk set_select_mode 0; vesk select_all} {vesk group}
    ungroup {vesk set_select_mode 0; vesk select_all; vesk group} {vesk ungroup}
    "remove surface" {vesk set_select_mode 2; vesk object_select [flat]} {vesk removesurface}
    subdivide {vesk set_select_mode 0; vesk object_select [box]} {vesk surface_subdivide}
    cut {vesk set_select_mode 0; vesk object_select [flat]} {vesk clipboard_cut}
}

# --- an older step, then a step that keeps the history: undo, redo, undo
# --- everything ---
set ::case_number 0
foreach {older_name older_step} $older {
    foreach {name setup step} $keeping {
        set case "$older_name, then $name"
        set exact [expr {$name ni {move resize rotate}}]
        tcltest::test history-1.[incr ::case_number] "$case: undo, redo, and the older step still undoes" -setup {
            reload
        } -body {
            set start [model_print]
            set n0 $undo_count
            capture_console { uplevel #0 $older_step }
            set after_older [model_print]
            check "$case: the older step changed the model" [expr {$after_older ne $start}] 1
            capture_console { vesk clear_selection; uplevel #0 $setup }
            set n1 $undo_count
            capture_console { uplevel #0 $step }
            set done [model_print]
            set n2 $undo_count
            check "$case: the step kept a record" [expr {$n2 > $n1}] 1
            check "$case: the step's own record" [lindex [vesk undo_history] end] [dict get $labels $name]
            capture_console { vesk undo }
            same "$case: undone" [model_print] $after_older $exact
            capture_console { vesk redo }
            check "$case: redone" [model_print] $done
            check "$case: the history kept its length" $undo_count $n2
            capture_console { vesk undo }
            same "$case: undone again" [model_print] $after_older $exact
            undo_back_to $n1
            same "$case: back before the step" [model_print] $after_older $exact
            undo_back_to $n0
            same "$case: the older step still undoes" [model_print] $start $exact
            # And forward again through everything.
            redo_all
            check "$case: everything redone" [model_print] $done
            undo_back_to $n0
            same "$case: everything undone again" [model_print] $start $exact
            mismatches
        } -result {}
    }
}

# --- a wiping step undone and redone: the undo empties the history as it
# --- always did; the redone step undoes to the model before it ---
set ::case_number 0
foreach {name setup step} $wiping {
    tcltest::test history-2.[incr ::case_number] "$name: the undo wipes the history, the redone step undoes" -setup {
        reload
    } -body {
        capture_console { vesk set_select_mode 0; vesk object_select [box]; vesk move 0.5 0 0 }
        capture_console { uplevel #0 $setup }
        set before [model_print]
        capture_console { uplevel #0 $step }
        set done [model_print]
        check "$name: the step changed the model" [expr {$done ne $before}] 1
        capture_console { vesk undo }
        check "$name: undone" [model_print] $before
        check "$name: the undo wiped the history" $undo_count 0
        capture_console { vesk redo }
        check "$name: redone" [model_print] $done
        check "$name: one record" $undo_count 1
        capture_console { vesk undo }
        check "$name: the redone step undoes" [model_print] $before
        mismatches
    } -result {}
}

# --- a wiping step as the older one, with a step on top that is redone
# --- in place on the wiping step's redone copy ---
set ::case_number 0
foreach {name setup step} $wiping {
    foreach {top_name top_setup top_step} {
        "add surface" {vesk set_select_mode 2; vesk select_all} {vesk createsurface}
        "insert vertex" {vesk set_select_mode 2; vesk select_all} {vesk insert_vertex}
        move {vesk set_select_mode 0; vesk select_all} {vesk move 0 0.25 0}
    } {
        set case "$name, then $top_name"
        tcltest::test history-3.[incr ::case_number] "$case: redone in place on the wiping step's redone copy" -setup {
            reload
        } -body {
            capture_console { uplevel #0 $setup }
            set start [model_print]
            set n0 $undo_count
            capture_console { uplevel #0 $step }
            set after_wipe [model_print]
            capture_console { uplevel #0 $top_setup }
            capture_console { uplevel #0 $top_step }
            set done [model_print]
            if {$done eq $after_wipe} {
                # Nothing to do on this model (no vertices left to join, say).
                return [mismatches]
            }
            undo_back_to 0
            check "$case: all undone" [model_print] $start
            redo_all
            check "$case: all redone" [model_print] $done
            capture_console { vesk undo }
            check "$case: top step undone" [expr {[model_print] ne $done}] 1
            undo_back_to 0
            check "$case: the redone wiping step undoes too" [model_print] $start
            check "$case: nothing left" [capture_console { vesk undo }] "nothing to UNDO!\n"
            mismatches
        } -result {}
    }
}

# --- three in-place steps undone and redone in a row ---
tcltest::test history-4.1 {three in-place steps undone and redone in a row} -setup {
    reload
} -body {
    set start [model_print]
    set states {}
    foreach step {
        {vesk set_select_mode 2; vesk object_select [flat]; vesk insert_vertex}
        {vesk set_select_mode 2; vesk select_all; vesk createsurface}
        {vesk set_select_mode 2; vesk object_select [box]; vesk insert_vertex}
    } {
        capture_console { uplevel #0 $step }
        lappend states [model_print]
    }
    undo_back_to 0
    check "chain: all undone" [model_print] $start
    redo_all
    check "chain: all redone" [model_print] [lindex $states end]
    undo_back_to 0
    check "chain: all undone after the redo" [model_print] $start
    mismatches
} -result {}

# --- a redone tree delete takes out the very objects its undo put back,
# --- and its undo selects them again, as the original's did ---
tcltest::test history-4.2 {a redone tree delete takes out the objects its undo put back} -setup {
    reload
} -body {
    set flat_id [flat]
    capture_console { vesk set_select_mode 0; vesk clear_selection; vesk object_select $flat_id; vesk delete }
    set deleted [model_print]
    capture_console { vesk undo }
    check "tree delete: the undo gives the same object back" [flat] $flat_id
    capture_console { vesk redo }
    check "tree delete: redone" [model_print] $deleted
    check "tree delete: a tree-delete record" [lindex [vesk undo_history] end] delete
    capture_console { vesk undo }
    check "tree delete: undone again, still the same object" [flat] $flat_id
    check "tree delete: and it is selected" [vesk get_selected_objects] $flat_id
    capture_console { vesk redo; vesk undo; vesk redo; vesk undo }
    check "tree delete: back and forth" [list [flat] [vesk get_selected_objects]] [list $flat_id $flat_id]
    mismatches
} -result {}

# --- a new edit clears what could be redone ---
tcltest::test history-4.3 {a new edit clears what could be redone} -setup {
    reload
} -body {
    capture_console { vesk set_select_mode 2; vesk object_select [flat]; vesk createsurface }
    capture_console { vesk undo }
    check "one to redo" $redo_count 1
    capture_console { vesk set_select_mode 0; vesk object_select [box]; vesk move 1 0 0 }
    check "a new edit clears redo" $redo_count 0
    check "nothing to redo" [capture_all { vesk redo }] "nothing to REDO!\nnothing to redo\n"
    mismatches
} -result {}

finish
