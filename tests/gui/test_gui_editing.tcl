# Drawing and dragging with real X input: primitives drawn by dragging in
# each orthographic view (and the regular shape for a click), moving,
# resizing by a corner handle, rotating by 12 pixels (10 degrees in steps
# of 5) and extruding by drag, each undone with the undo key; Control
# keeps a drag on its first axis.
source [file join [file dirname [info script]] gui_lib.tcl]

start_vesk_empty
remote {vesk reset_views}
settle

proc view_point {view x y} {
    lassign [view_rect $view] vx vy vw vh
    return [list [expr {$vx + int(100 * $x + $vw * 0.5 + 0.5)}] [expr {$vy + int($vh * 0.5 - 100 * $y + 0.5)}]]
}
proc drag {from to {button 1} {steps 4}} {
    exec xdotool mousemove {*}$from mousedown $button
    wait_idle
    lassign $from x0 y0
    lassign $to x1 y1
    for {set i 1} {$i <= $steps} {incr i} {
        exec xdotool mousemove [expr {$x0 + ($x1 - $x0) * $i / $steps}] [expr {$y0 + ($y1 - $y0) * $i / $steps}]
        wait_idle
    }
    exec xdotool mouseup $button
    wait_idle
}
proc click_at {xy} {
    exec xdotool mousemove {*}$xy click 1
    wait_idle
}
proc objects {} { return [dict get [remote {vesk get_info}] objects] }
proc surfaces {} { return [dict get [remote {vesk get_info}] surfaces] }
proc vertices_of_selection {} {
    set id [lindex [remote {vesk get_selected_objects}] 0]
    return [remote "vesk object_get_vertices $id"]
}
proc press_undo {xy} {
    exec xdotool mousemove {*}$xy
    wait_idle
    exec xdotool key u
    wait_idle
}

# ---- primitives by dragging, in each view ----
set n 0
foreach {mode name view} {7 box 0 8 sphere 1 10 mesh 2 5 ellipse 0} {
    remote "vesk set_draw_mode $mode"
    drag [view_point $view -0.5 -0.5] [view_point $view 0.5 0.5]
    incr n
    check "$name drawn in view $view" [objects] $n
    check "$name is selected" [llength [remote {vesk get_selected_objects}]] 1
}
remote {vesk set_draw_mode 7}
click_at [view_point 0 1.2 1.2]
incr n
check "a click in box mode makes the regular box" [objects] $n
check "regular box has 8 vertices" [llength [vertices_of_selection]] 8

# ---- move, resize, rotate, extrude; each undone by the undo key ----
remote {vesk clear_selection}
remote {vesk set_draw_mode 7}
drag [view_point 0 -1.8 -1.8] [view_point 0 -1.2 -1.2]
set box [lindex [remote {vesk get_selected_objects}] 0]
set before [remote "vesk object_get_vertices $box"]
remote {vesk set_draw_mode 0}
settle

drag [view_point 0 -1.5 -1.5] [view_point 0 -1.0 -1.5]
set moved [remote "vesk object_get_vertices $box"]
check_true "move by drag changes the box" [expr {$moved ne $before}]
press_undo [view_point 0 0 0]
check "undo restores the move" [remote "vesk object_get_vertices $box"] $before

# Resize by the bottom-right corner handle of the front view.
settle
lassign [view_point 0 -1.2 -1.8] hx hy
set hs [remote {set prefs_handle_size}]
drag [list [expr {$hx + 13 - $hs / 2}] [expr {$hy + 13 - $hs / 2}]] [list [expr {$hx + 60}] [expr {$hy + 13}]]
set resized [remote "vesk object_get_vertices $box"]
check_true "resize by a corner handle changes the box" [expr {$resized ne $before}]
press_undo [view_point 0 0 0]
check "undo restores the resize" [remote "vesk object_get_vertices $box"] $before

# Rotate: drag submode rotate, 12 pixels to the right = 10 degrees.
remote {vesk set_drag_mode 102}
set p [view_point 0 -1.5 -1.5]
drag $p [list [expr {[lindex $p 0] + 12}] [lindex $p 1]]
set rotated [remote "vesk object_get_vertices $box"]
check_true "rotate drag turns the box" [expr {$rotated ne $before}]
# A 10 degree turn of the box about the down point keeps edge lengths;
# the first vertex's x and y move as cos 10 / sin 10 predict.
press_undo [view_point 0 0 0]
# A rotation's inverse is not exact in floating point: compare closely.
set close 1
foreach v0 $before v1 [remote "vesk object_get_vertices $box"] {
    foreach a $v0 b $v1 { if {abs($a - $b) > 1e-5} { set close 0 } }
}
check "undo restores the rotation" $close 1

# Extrude by drag.
remote {vesk set_drag_mode 103}
set s0 [surfaces]
drag $p [list [lindex $p 0] [expr {[lindex $p 1] - 30}]]
check_true "extrude by drag adds surfaces" [expr {[surfaces] > $s0}]
press_undo [view_point 0 0 0]
check "undo removes the extrusion" [surfaces] $s0
remote {vesk set_drag_mode 100}

# ---- Control keeps a move on its first axis ----
# Undoing the extrusion put back a snapshot of the model: the box is a new
# object now, the last child of the world.
set box [lindex [remote {vesk object_get_children [vesk get_world]}] end]
check "the snapshot holds the box" [llength [remote "vesk object_get_vertices $box"]] 8
set before [remote "vesk object_get_vertices $box"]
remote "vesk clear_selection; vesk object_select $box"
settle
set p [view_point 0 -1.5 -1.5]
exec xdotool keydown ctrl
drag $p [list [expr {[lindex $p 0] + 40}] [expr {[lindex $p 1] + 3}]] 1 8
exec xdotool keyup ctrl
set after [remote "vesk object_get_vertices $box"]
set same_y 1
foreach v0 $before v1 $after {
    if {[lindex $v0 1] != [lindex $v1 1]} { set same_y 0 }
}
check "Control-drag stays horizontal" $same_y 1
if {!$same_y} { puts "before: $before\nafter:  $after" }
check_true "Control-drag moved the box" [expr {$after ne $before}]

finish
