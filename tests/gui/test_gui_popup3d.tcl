# The 3D view's menu (third button) is built from what is under the
# pointer, and opening it leaves the selection alone: over an object it
# starts with the object's name and what can be done to it, over empty
# space with what applies to the whole model.  The query behind it
# ("pick_3d_query") tells object, surface and vertex without selecting;
# bad positions are refused with a message; an entry whose command the
# build lacks is disabled.
source [file join [file dirname [info script]] gui_lib.tcl]

start_vesk [file join $::src examples sample.vk]
remote {set ::prefs_show_3d_grid 0; set ::prefs_show_axis 0}
settle
# Fitted to the first object, which then fills the middle of the view.
remote {vesk clear_selection; vesk object_select [lindex [vesk object_get_children [vesk get_world]] 0]; vesk fit_3d; vesk clear_selection}
settle
lassign [view_rect 3] vx vy vw vh
set mid [list [expr {$vw / 2}] [expr {$vh / 2}]]
set corner {3 3}
set m .views.popup3d

proc redraw_3d {} {
    remote {update; .views.xyzframe.f.win postredisplay; update}
    wait_idle
}
redraw_3d

# ---- the query ----
set hit [remote "vesk pick_3d_query $mid"]
check_true "the middle of the fitted view has an object: $hit" [string match "object * name * surface * vertex * selected 0" $hit]
set id [dict get $hit object]
check_true "the object is one of the model's" [expr {[dict get [remote {vesk get_info}] objects] > 0 && $id > 0}]
check "its name, as the core has it" [dict get $hit name] [remote "vesk object_get_name $id"]
check_true "a surface of it" [expr {[dict get $hit surface] >= 0}]
check "the query selects nothing" [remote {vesk get_selected_objects}] ""
check "over empty space: nothing" [remote "vesk pick_3d_query $corner"] ""
check "outside the view: refused" [remote {vesk pick_3d_query -4 10; set ::vesk::main::message}] \
    "pick_3d_query: -4 10 lies outside the 3D view"
check "not a number: refused" [remote {vesk pick_3d_query 1e30 10; set ::vesk::main::message}] \
    "pick_3d_query: the numbers must be finite window positions"

# In vertex mode the query still names the object, its surface and a vertex.
remote {vesk set_select_mode 2}
set vhit [remote "vesk pick_3d_query $mid"]
check "vertex mode: the same object" [dict get $vhit object] $id
check_true "vertex mode: a surface" [expr {[dict get $vhit surface] >= 0}]
check_true "vertex mode: a vertex index or -1" [expr {[dict get $vhit vertex] >= -1}]
check "vertex mode: nothing selected" [remote {list $::numselected $::numselectedobjects}] {0 0}
remote {vesk set_select_mode 0}

# ---- opening the menu with the real third button ----
# Something else is selected, so that a change would show.
set others [lsearch -all -inline -not [remote {vesk object_get_children [vesk get_world]}] $id]
set other [lindex $others 0]
remote "vesk object_select $other"
set selected_before [remote {vesk get_selected_objects}]

proc open_menu_at {x y} {
    exec xdotool mousemove [expr {$::vx + $x}] [expr {$::vy + $y}]
    wait_idle
    exec xdotool click 3
    return [wait_remote {[winfo ismapped .views.popup3d]}]
}
proc close_menu {} {
    exec xdotool key Escape
    wait_idle
    if {[remote {winfo ismapped .views.popup3d}]} {
        remote {.views.popup3d unpost; update}
    }
}
proc labels {} {
    set m .views.popup3d
    set out {}
    set last [remote "$m index end"]
    for {set i 0} {$i <= $last} {incr i} {
        if {[remote "$m type $i"] eq "separator"} continue
        lappend out [remote "$m entrycget $i -label"]
    }
    return $out
}
proc state_of {label} {
    set m .views.popup3d
    return [remote "$m entrycget \[$m index [list $label]\] -state"]
}

check "over an object: the menu opens" [open_menu_at {*}$mid] 1
set shown [labels]
check "over an object: the selection is unchanged" [remote {vesk get_selected_objects}] $selected_before
set name [dict get $hit name]
if {$name eq ""} { set name "Unnamed object" }
check "over an object: first its name" [lindex $shown 0] $name
check "over an object: the name is a heading" [remote "$m entrycget 0 -state"] disabled
foreach label {"Select it" "Add it to the selection" "Fit to it" "Hide" "Delete" "Texture..."} {
    check "over an object: $label" [expr {$label in $shown}] 1
    check "over an object: $label is enabled" [state_of $label] normal
}
check "over an object: nothing to remove, it is not selected" [expr {"Remove it from the selection" in $shown}] 0
check "over an object: the view entries follow" [expr {"Reset view" in $shown && "Wireframe" in $shown}] 1
close_menu
check "closing the menu changes nothing" [remote {vesk get_selected_objects}] $selected_before

check "over empty space: the menu opens" [open_menu_at {*}$corner] 1
set shown [labels]
check "over empty space: the selection is unchanged" [remote {vesk get_selected_objects}] $selected_before
foreach label {"Paste" "Select all" "Clear selection" "Show hidden objects" "Reset view" "Fit model"} {
    check "over empty space: $label" [expr {$label in $shown}] 1
}
foreach label [list "Select it" "Delete" "Fit to it" $name] {
    check "over empty space: no $label" [expr {$label in $shown}] 0
}
close_menu

# ---- choosing entries ----
proc choose {x y label} {
    open_menu_at $x $y
    click_popup_entry .views.popup3d $label
}
choose {*}$mid "Select it"
check "Select it: the object under the pointer is the selection" [remote {vesk get_selected_objects}] $id
open_menu_at {*}$mid
check "a selected object offers Remove" [expr {"Remove it from the selection" in [labels]}] 1
close_menu
remote {vesk clear_selection}
set count [dict get [remote {vesk get_info}] objects]
choose {*}$mid "Delete"
check "Delete: the object under the pointer is gone" [dict get [remote {vesk get_info}] objects] [expr {$count - 1}]
remote {vesk undo}
check "and undo brings it back" [dict get [remote {vesk get_info}] objects] $count

# ---- an entry whose command the build lacks ----
remote {menu .probe -tearoff 0; ::vesk::view::popup_entry .probe "Nothing" no_such_command {}}
check "a missing command: disabled entry" [remote {.probe entrycget 0 -state}] disabled
remote {destroy .probe}

finish
