# Drawing with real X input: choosing a draw tool puts how to go on on
# the status line; Escape drops a polygon in progress (no object, no undo
# record, nothing left to redo) and a second Escape goes back to Select;
# clicking the first point closes a polygon; with "Keep the draw tool" on
# the tool stays after each shape; a drawn box says where its depth came
# from; the tool buttons' tooltips give their key and how to use them.
source [file join [file dirname [info script]] gui_lib.tcl]

start_vesk_empty
remote {vesk reset_views}
settle

proc view_point {view x y} {
    lassign [view_rect $view] vx vy vw vh
    return [list [expr {$vx + int(100 * $x + $vw * 0.5 + 0.5)}] [expr {$vy + int($vh * 0.5 - 100 * $y + 0.5)}]]
}
proc click_at {xy {button 1}} {
    exec xdotool mousemove {*}$xy
    wait_idle
    exec xdotool click $button
    wait_idle
}
proc key_at {xy key} {
    exec xdotool mousemove {*}$xy
    wait_idle
    exec xdotool key $key
    wait_idle
}
proc drag {from to} {
    exec xdotool mousemove {*}$from mousedown 1
    wait_idle
    lassign $from x0 y0
    lassign $to x1 y1
    foreach f {1 2 3 4} {
        exec xdotool mousemove [expr {$x0 + ($x1 - $x0) * $f / 4}] [expr {$y0 + ($y1 - $y0) * $f / 4}]
        wait_idle
    }
    exec xdotool mouseup 1
    wait_idle
}
proc status {} { remote {set ::vesk::main::message} }
proc objects {} { dict get [remote {vesk get_info}] objects }
proc draw_mode {} { remote {set ::draw_mode_name} }

# ---- the hint of a line tool ----
click_widget .tools.draw.m3
wait_idle
check "polygon tool chosen" [draw_mode] polygon
check "polygon hint" [status] \
    "polygon: click to add points; click the first point or press the right button to finish; Escape cancels"

# ---- Escape drops a polygon in progress ----
set records [remote {set undo_count}]
click_at [view_point 0 -1 -1]
click_at [view_point 0 0 -1]
click_at [view_point 0 0 0]
check "points drawn" [dict get [remote {vesk get_info}] vertices] 3
key_at [view_point 0 1 1] Escape
# (get_info writes its counts on the status line: the status first.)
check "Escape: says so" [status] "polygon cancelled"
check "Escape: no object left" [objects] 0
check "Escape: no vertex left" [dict get [remote {vesk get_info}] vertices] 0
check "Escape: no undo record" [remote {set undo_count}] $records
check "Escape: nothing to redo" [remote {set redo_count}] 0
check "Escape: the tool stays" [draw_mode] polygon
key_at [view_point 0 1 1] Escape
check "second Escape: back to Select" [draw_mode] select
check "second Escape: says so" [status] "back to Select"

# ---- clicking the first point closes the polygon ----
click_widget .tools.draw.m3
wait_idle
click_at [view_point 0 -1 -1]
click_at [view_point 0 0 -1]
click_at [view_point 0 0 0]
click_at [view_point 0 -1 -1]
check "first point closes: one object" [objects] 1
check "first point closes: three vertices, no repeat" [dict get [remote {vesk get_info}] vertices] 3
check "first point closes: one undo record" [remote {set undo_count}] [expr {$records + 1}]
check "tool given up after the shape" [draw_mode] select

# ---- Keep the draw tool ----
set m .mbar.tools.menu
click_widget .mbar.tools
wait_remote "\[winfo ismapped $m\]"
set index [remote [list $m index "Keep the draw tool after each shape"]]
lassign [remote "list \[winfo rootx $m\] \[winfo rooty $m\] \[$m yposition $index\]"] mx my top
exec xdotool mousemove [expr {$mx + 30}] [expr {$my + $top + 6}]
wait_idle
exec xdotool mousemove [expr {$mx + 40}] [expr {$my + $top + 8}] click 1
check "keep the draw tool: on" [wait_remote_value {set ::keep_draw_tool} 1] 1
set fd [open [file join $::scratch home veskui.txt]]
check "the setting is kept for the next start" [string trim [read $fd]] "keep_draw_tool 1"
close $fd
remote {vesk clear_selection}
click_widget .tools.draw.m7
wait_idle
check "box hint" [string match "box: drag to draw one*" [status]] 1
drag [view_point 0 1 1] [view_point 0 1.5 1.5]
check_true "box: the depth's source on the status line" [string match "add cube done - depth z * centred on the 3D cursor" [status]]
check "box drawn" [objects] 2
check "box: the tool stays" [draw_mode] box
drag [view_point 0 -2 1] [view_point 0 -1.5 1.4]
check_true "second box: depth from the selection" [string match "add cube done - depth z * from the selection" [status]]
check "second box with the same tool" [objects] 3
key_at [view_point 0 2 -1.5] Escape
check "Escape leaves the kept tool" [draw_mode] select

# ---- the setting comes back at the next start ----
stop_vesk
start_vesk_empty
check "keep the draw tool: still on after a restart" [remote {set ::keep_draw_tool}] 1
set fd [open [file join $::scratch home veskui.txt] w]
puts $fd "keep_draw_tool banana\nunknown_name 1\n\{broken"
close $fd
stop_vesk
start_vesk_empty
check "a broken settings file is ignored" [remote {set ::keep_draw_tool}] 0

# ---- tooltips ----
remote {set ::prefs_balloon_help 1}
lassign [remote {list [winfo rootx .tools.drag.m101] [winfo rooty .tools.drag.m101]}] bx by
exec xdotool mousemove [expr {$bx + 3}] [expr {$by + 3}]
wait_idle
exec xdotool mousemove [expr {$bx + 6}] [expr {$by + 5}]
check "tooltip shows" [wait_remote {[winfo exists .tip] && [winfo ismapped .tip]}] 1
check_true "tooltip: how and the key" [string match "Resize: drag a handle*(key i in the flat views)" [remote {.tip.text cget -text}]]

finish
