# The 3D view frames the model: after start-up on the sample model every
# object's pixels lie inside the 3D view (its border rows and columns show
# only the background) and the model is drawn; zoomed in until the model
# spills over the border, the "h" key and Fit model in the menu the third
# button opens frame it again; with one object selected the fit frames that object; an empty
# model says so and leaves the camera alone.
source [file join [file dirname [info script]] gui_lib.tcl]

start_vesk [file join $::src examples sample.vk]
# No grid or axes, whose lines reach the border whatever the fit.
remote {set ::prefs_show_3d_grid 0; set ::prefs_show_axis 0}
settle
lassign [view_rect 3] vx vy vw vh
set centre [list [expr {$vx + $vw / 2}] [expr {$vy + $vh / 2}]]

proc check_match_bad {actual expected} { check "refused: $expected" $actual $expected }
proc redraw_3d {} {
    remote {update; .views.xyzframe.f.win postredisplay; update}
    wait_idle
}
# Colours on each of the four edges of the 3D view, two pixels in.
proc edge_colours {file} {
    global vx vy vw vh
    set out {}
    lappend out [colour_count $file [expr {$vx + 2}] [expr {$vy + 2}] [expr {$vw - 4}] 1]
    lappend out [colour_count $file [expr {$vx + 2}] [expr {$vy + $vh - 3}] [expr {$vw - 4}] 1]
    lappend out [colour_count $file [expr {$vx + 2}] [expr {$vy + 2}] 1 [expr {$vh - 4}]]
    lappend out [colour_count $file [expr {$vx + $vw - 3}] [expr {$vy + 2}] 1 [expr {$vh - 4}]]
    return $out
}
proc inner_colours {file} {
    global vx vy vw vh
    return [colour_count $file [expr {$vx + 4}] [expr {$vy + 4}] [expr {$vw - 8}] [expr {$vh - 8}]]
}
proc key_in_3d {args} {
    exec xdotool mousemove {*}$::centre
    wait_idle
    exec xdotool key {*}$args
    wait_idle
    redraw_3d
}

check_true "the sample has several objects" [expr {[dict get [remote {vesk get_info}] objects] > 1}]

# ---- at start-up ----
redraw_3d
set file [shot startup]
check "start-up: nothing touches the 3D view's border" [edge_colours $file] {1 1 1 1}
check_true "start-up: the model is drawn" [expr {[inner_colours $file] > 1}]

# ---- zoomed in, then fitted by the key ----
key_in_3d ctrl+Up ctrl+Up ctrl+Up ctrl+Up ctrl+Up ctrl+Up ctrl+Up ctrl+Up ctrl+Up ctrl+Up
set file [shot zoomed]
check_true "zoomed in: the model spills over the border" [expr {[lsort -unique [edge_colours $file]] ne {1}}]
remote {vesk clear_selection}
key_in_3d h
set file [shot fitted_key]
check "h key: nothing touches the border" [edge_colours $file] {1 1 1 1}
check_true "h key: the model is drawn" [expr {[inner_colours $file] > 1}]
check "h key: the status line says what was framed" [remote {set ::vesk::main::message}] "3D view fitted to the model"

# ---- zoomed in, then fitted from the menu ----
key_in_3d ctrl+Up ctrl+Up ctrl+Up ctrl+Up ctrl+Up ctrl+Up ctrl+Up ctrl+Up ctrl+Up ctrl+Up
# The third button, clicked without moving, opens the 3D view's menu at
# the pointer.
exec xdotool mousemove {*}$centre
wait_idle
exec xdotool click 3
check "third button: the 3D view's menu opens" [wait_remote {[winfo ismapped .views.popup3d]}] 1
set m .views.popup3d
check "the menu shows the key with its view" [remote [list $m entrycget [remote [list $m index "Fit model"]] -accelerator]] "h (3D view)"
check "View > 3D view has it too" [remote {.mbar.view.menu.view3d entrycget [.mbar.view.menu.view3d index "Fit model"] -accelerator}] "h (3D view)"
set index [remote [list $m index "Fit model"]]
lassign [remote "list \[winfo rootx $m\] \[winfo rooty $m\] \[$m yposition $index\]"] mx my top
exec xdotool mousemove [expr {$mx + 30}] [expr {$my + $top + 6}]
wait_idle
exec xdotool mousemove [expr {$mx + 40}] [expr {$my + $top + 8}]
wait_until "Fit model to be the active entry" {[remote [list $m index active]] == $index}
exec xdotool click 1
wait_idle
redraw_3d
check "the menu is gone" [remote {winfo ismapped .views.popup3d}] 0
set file [shot fitted_menu]
check "menu: nothing touches the border" [edge_colours $file] {1 1 1 1}
check_true "menu: the model is drawn" [expr {[inner_colours $file] > 1}]

# ---- the selection ----
set first [lindex [remote {vesk object_get_children [vesk get_world]}] 0]
remote "vesk object_select $first"
key_in_3d h
check "selection: the status line says so" [remote {set ::vesk::main::message}] "3D view fitted to the selection"
set file [shot fitted_selection]
check_true "selection: something is drawn" [expr {[inner_colours $file] > 1}]

# ---- the 3D view's menu picks what is under the pointer ----
# The fitted object fills the middle of the view.
remote {vesk clear_selection}
proc popup_choose {label} {
    exec xdotool mousemove {*}$::centre
    wait_idle
    exec xdotool click 3
    wait_remote {[winfo ismapped .views.popup3d]}
    click_popup_entry .views.popup3d $label
}
popup_choose "Select it"
check "the menu's Select picks the object under the pointer" [remote {vesk get_selected_objects}] $first
popup_choose "Remove it from the selection"
check "the menu's Remove takes it out again" [remote {vesk get_selected_objects}] ""
check_match_bad [remote {vesk pick_3d -5 10 0; set ::vesk::main::message}] "pick_3d: -5 10 lies outside the 3D view"
check_match_bad [remote {vesk pick_3d 5 10 7; set ::vesk::main::message}] "pick_3d: the third number is 0 (select), 1 (add) or 2 (remove), not 7"

# ---- an empty model ----
remote {set ::vesk_no_questions 1; vesk clear_all}
key_in_3d h
check "empty model: the status line says so" [remote {set ::vesk::main::message}] "fit 3D view - the model is empty"

finish
