# Undo and redo with real X input: a move and a rotation dragged in the
# front view, a delete by the Delete key, a group and a subdivide from the
# menus; each undone with the undo key and redone with Control+Shift+Z,
# Control+Y or Edit > Redo, which must give back the model exactly, bit
# for bit.  A new edit clears redo (Edit > Redo greys out); undo with an
# empty history and redo with nothing to redo say so on the status line;
# Edit > History undoes back to a chosen step; a refused command's message
# box has the error icon.
source [file join [file dirname [info script]] gui_lib.tcl]

# Two boxes, one around (-1.5, -1.5, 0) and one around (1, 0.8, 0).
proc box_text {name x0 y0 x1 y1} {
    set text "OBJECT poly\nname \"$name\"\nnumvert 8\n"
    foreach z {-0.3 0.3} {
        foreach {x y} [list $x0 $y0 $x1 $y0 $x1 $y1 $x0 $y1] { append text "$x $y $z\n" }
    }
    append text "numsurf 6\n"
    foreach face {{0 3 2 1} {4 5 6 7} {0 1 5 4} {3 7 6 2} {0 4 7 3} {1 2 6 5}} {
        append text "SURF 0\nrefs 4\n"
        foreach i $face { append text "$i 0 0\n" }
    }
    append text "kids 0\n"
}
set model [file join $::scratch boxes.vk]
set fd [open $model w]
puts -nonewline $fd "VESKb\nOBJECT world\nkids 2\n[box_text left -1.8 -1.8 -1.13 -1.21][box_text right 0.7 0.4 1.33 1.17]"
close $fd
start_vesk $model
remote {vesk reset_views}
settle

proc view_point {view x y} {
    lassign [view_rect $view] vx vy vw vh
    return [list [expr {$vx + int(100 * $x + $vw * 0.5 + 0.5)}] [expr {$vy + int($vh * 0.5 - 100 * $y + 0.5)}]]
}
proc drag {from to {steps 4}} {
    exec xdotool mousemove {*}$from mousedown 1
    wait_idle
    lassign $from x0 y0
    lassign $to x1 y1
    for {set i 1} {$i <= $steps} {incr i} {
        exec xdotool mousemove [expr {$x0 + ($x1 - $x0) * $i / $steps}] [expr {$y0 + ($y1 - $y0) * $i / $steps}]
        wait_idle
    }
    exec xdotool mouseup 1
    wait_idle
}
proc key_over {xy args} {
    exec xdotool mousemove {*}$xy
    wait_idle
    exec xdotool key {*}$args
    wait_idle
}
proc main_keys {args} {
    main_window_keys {*}$args
    wait_idle
}
proc status {} { remote {set ::vesk::main::message} }
proc edit_state {index} { remote [list .mbar.edit.menu entrycget $index -state] }
proc open_edit_menu {} {
    click_widget .mbar.edit
    wait_until "the Edit menu to open" {[remote {winfo ismapped .mbar.edit.menu}]}
}
proc close_menus {} {
    exec xdotool key Escape
    wait_until "the Edit menu to close" {![remote {winfo ismapped .mbar.edit.menu}]}
}

# The whole model without object ids, nine digits per number (exact).
remote {
    proc ::tree_print {id} {
        set kids {}
        foreach kid [vesk object_get_children $id] { lappend kids [::tree_print $kid] }
        list [vesk object_get_name $id] [vesk object_get_centre $id] [vesk object_get_vertices $id] [vesk object_get_surfaces $id] $kids
    }
}
proc model {} { remote {::tree_print [vesk get_world]} }

check "two boxes" [dict get [remote {vesk get_info}] objects] 2
# A spot in the front view away from both boxes, where keys are pressed.
set here [view_point 0 1.0 -0.9]


# ---- undo with an empty history says so ----
check "a loaded model has no history" [remote {set undo_count}] 0
remote {set ::vesk::main::message ""}
key_over $here u
check "undo key with nothing to undo: status line" [status] "nothing to undo"
remote {set ::vesk::main::message ""}
main_keys ctrl+z
check "Control+Z with nothing to undo: status line" [status] "nothing to undo"
main_keys ctrl+y
check "redo with nothing to redo: status line" [status] "nothing to redo"
open_edit_menu
check "Edit > Undo disabled with an empty history" [edit_state 0] disabled
check "Edit > Redo disabled with nothing to redo" [edit_state 1] disabled
check "Edit > History disabled with an empty history" [edit_state 2] disabled
close_menus
check "nothing changed" [dict get [remote {vesk get_info}] objects] 2

# ---- each step: undo by key, redo by key or menu, exact ----
proc step_case {name do redo_how} {
    set before [model]
    uplevel #0 $do
    set done [model]
    check_true "$name: the step changed the model" [expr {$done ne $before}]
    key_over $::here u
    check_true "$name: undone" [expr {[model] ne $done}]
    check "$name: one to redo" [remote {set redo_count}] 1
    check "$name: redo label on the status line" [string match "Redo: *" [remote {set ::vesk::main::redo_text}]] 1
    switch -- $redo_how {
        shift_z { main_keys ctrl+shift+z }
        y { main_keys ctrl+y }
        menu {
            pick_menu edit [remote {.mbar.edit.menu entrycget 1 -label}]
            wait_idle
        }
    }
    check "$name: redo gives back the model exactly" [model] $done
    check "$name: nothing more to redo" [remote {set redo_count}] 0
}

# Move: drag the first box 0.5 to the right.
key_over $here n
exec xdotool mousemove {*}[view_point 0 -1.8 -1.5]
wait_idle
exec xdotool click 1
wait_idle
check "the left box selected by a click" [llength [remote {vesk get_selected_objects}]] 1
step_case move {
    drag [view_point 0 -1.5 -1.5] [view_point 0 -0.97 -1.5]
} shift_z
# Rotate: drag submode rotate, 12 pixels = 10 degrees.
step_case rotate {
    key_over [view_point 0 -1.0 -1.5] r
    set p [view_point 0 -1.0 -1.5]
    drag $p [list [expr {[lindex $p 0] + 12}] [lindex $p 1]]
    key_over [view_point 0 -1.0 -1.5] m
} y
# Group both boxes from the menu.
step_case group {
    key_over $::here a
    pick_menu object Group
    wait_idle
} menu
# Subdivide the group's surfaces from the menu.
step_case subdivide {
    pick_menu surface Subdivide
    wait_idle
} shift_z
# Delete by the Delete key over the front view.
key_over $here a
step_case delete {
    key_over $::here Delete
} y

# ---- a new edit clears redo ----
key_over $here u
check "undo of the delete: one to redo" [remote {set redo_count}] 1
key_over $here a
drag [view_point 0 -1.0 -1.5] [view_point 0 -0.5 -1.5]
check "a new move clears redo" [remote {set redo_count}] 0
check "no redo label" [remote {set ::vesk::main::redo_text}] ""
open_edit_menu
check "Edit > Redo disabled after a new edit" [edit_state 1] disabled
check "Edit > Undo enabled" [edit_state 0] normal
close_menus

# ---- Edit > History undoes back to a chosen step ----
set start [model]
drag [view_point 0 -0.5 -1.5] [view_point 0 0.0 -1.5]
set one [model]
drag [view_point 0 0.0 -1.5] [view_point 0 0.5 -1.5]
set count [remote {set undo_count}]
pick_menu edit History...
check "history window opens" [wait_remote {[winfo exists .history] && [winfo ismapped .history]}] 1
check "newest step listed first" [remote {.history.f.list get 0}] "$count. move"
# Choose the second line (the step before the last) and press the button.
lassign [remote {.history.f.list bbox 1}] lx ly
lassign [remote {list [winfo rootx .history.f.list] [winfo rooty .history.f.list]}] rx ry
exec xdotool mousemove [expr {$rx + $lx + 5}] [expr {$ry + $ly + 3}] click 1
wait_until "the second line of the history to be chosen" {[remote {.history.f.list curselection}] eq "1"}
click_widget .history.f.buttons.undo
wait_idle
check "two steps undone" [remote {set undo_count}] [expr {$count - 2}]
check "two to redo" [remote {set redo_count}] 2
main_keys ctrl+shift+z
check "redo the first of them" [model] $one

# ---- a refused command says why, in a box with the error icon ----
key_over $here n
set before [model]
pick_menu object Group
check "the message box comes" [wait_remote {[winfo exists .__tk__messagebox.bitmap]}] 1
check "it has the error icon" [remote {.__tk__messagebox.bitmap cget -image}] ::tk::icons::error
check_true "it says why" [string match "*select two or more*" [answer_message_box ok]]
check "nothing changed" [model] $before

finish
