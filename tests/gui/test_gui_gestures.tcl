# Bad input with real X input: picks and box selections in an empty
# model; keys with the pointer over no view; a second button pressed
# during a rubber band, a move and a 3D spin; resize, rotate and extrude
# gestures released where they were pressed; drags that leave the view
# and end outside it; a line whose object is deleted, or whose draw tool
# is changed, while it is drawn; press-and-release without motion in
# every draw mode; and a Control+click in the 3D view over hundreds of
# stacked objects, which must grow the selection buffer and still pick
# the nearest.  After every step: no fault, no Tcl error, no mode left
# behind, and the next gesture behaves normally.
source [file join [file dirname [info script]] gui_lib.tcl]

start_vesk_empty
# Background errors of the scripts are collected instead of shown.
remote {set ::gesture_errors {}; interp bgerror {} [list apply {{msg opts} {lappend ::gesture_errors $msg}}]}
remote {vesk reset_views}
settle

foreach v {0 1 2 3} { set rect($v) [view_rect $v] }
lassign [remote {list [winfo rootx .tools] [winfo rooty .tools] [winfo width .tools] [winfo height .tools]}] px py pw ph
lassign [remote {list [winfo rootx .status] [winfo rooty .status] [winfo width .status] [winfo height .status]}] stx sty stw sth
# A spot over the tool panel's empty lower part and one over the status
# line: no view lies under either.
set over_panel [list [expr {$px + $pw / 2}] [expr {$py + $ph - 20}]]
set over_status [list [expr {$stx + $stw / 2}] [expr {$sty + $sth / 2}]]

# ---- helpers ----

set ::log_seen 0
proc new_log {} {
    set text [read_log]
    set new [string range $text $::log_seen end]
    set ::log_seen [string length $text]
    return $new
}

# No fault report or Tcl error since the last look, no message box up,
# and the program still answers.
proc healthy {step} {
    set new [new_log]
    set bad {}
    foreach pattern {"TCL ERROR" "Exception occured" "tell Orlo" "ERROR!" "Segmentation" "Aborted" "panic"} {
        if {[string first $pattern $new] >= 0} { lappend bad $pattern }
    }
    check "$step: no fault or Tcl error on the console" $bad {}
    if {$bad ne {}} { puts $new }
    check "$step: no background Tcl error" [remote {set ::gesture_errors}] {}
    remote {set ::gesture_errors {}}
    set box [remote {winfo exists .__tk__messagebox}]
    check "$step: no message box" $box 0
    if {$box} { remote {destroy .__tk__messagebox} }
}

# Waits until vesk has taken every X event sent so far: update syncs with
# the server before it handles what is queued.
proc sync {} { remote {update} }

# Screen pixel of a model point in a view at scale 100 with no pan; h and
# v are the view's horizontal and upward coordinates.
proc at {view h v} {
    lassign $::rect($view) vx vy vw vh
    return [list [expr {$vx + int(100 * $h + $vw * 0.5 + 0.5)}] [expr {$vy + int($vh * 0.5 - 100 * $v + 0.5)}]]
}
proc press {xy {button 1}} {
    exec xdotool mousemove {*}$xy
    exec xdotool mousedown $button
    sync
}
proc move_to {xy} {
    exec xdotool mousemove {*}$xy
    sync
}
proc release {{button 1}} {
    exec xdotool mouseup $button
    sync
}
# A drag through a few motion events.
proc drag {from to {button 1}} {
    press $from $button
    lassign $from x0 y0
    lassign $to x1 y1
    foreach f {0.25 0.5 0.75 1.0} {
        exec xdotool mousemove [expr {int($x0 + ($x1 - $x0) * $f)}] [expr {int($y0 + ($y1 - $y0) * $f)}]
    }
    sync
    release $button
}
proc click {xy {button 1}} {
    press $xy $button
    release $button
}
proc with_key {key script} {
    exec xdotool keydown $key
    try { uplevel 1 $script } finally { exec xdotool keyup $key }
}
proc objects {} { return [dict get [remote {vesk get_info}] objects] }
proc selected {} { return [remote {vesk get_selected_objects}] }
proc names {} {
    set out {}
    foreach id [selected] { lappend out [remote "vesk object_get_name $id"] }
    return [lsort $out]
}
proc modes {} { return [remote {list $::draw_mode_name $::drag_mode_name}] }
proc vertices {id} { return [remote "vesk object_get_vertices $id"] }
proc object_named {name} {
    foreach id [remote {vesk object_get_children [vesk get_world]}] {
        if {[remote "vesk object_get_name $id"] eq $name} { return $id }
    }
    return ""
}
proc last_object {} { return [lindex [remote {vesk object_get_children [vesk get_world]}] end] }

# Whether two points (or lists of points) agree to 0.011 in every
# coordinate: a pixel is 0.01 at scale 100.
proc close_to {a b {tolerance 0.011}} {
    if {[llength $a] != [llength $b]} { return 0 }
    foreach x [concat {*}$a] y [concat {*}$b] {
        if {![string is double -strict $x] || abs($x - $y) > $tolerance} { return 0 }
    }
    return 1
}
# check of close_to that shows both sides when they differ.
proc check_close {name actual expected {tolerance 0.011}} {
    if {[close_to $actual $expected $tolerance]} {
        incr ::passed
        return
    }
    incr ::failed
    puts "FAIL: $name\n    expected: $expected\n    actual:   $actual"
}
proc shifted {points d} {
    set out {}
    foreach p $points {
        set q {}
        foreach c $p e $d { lappend q [expr {$c + $e}] }
        lappend out $q
    }
    return $out
}
# Bounds of a list of points: min x y z, max x y z.  Every coordinate must
# be a finite number.
proc bounds {points} {
    set mn {1e30 1e30 1e30}
    set mx {-1e30 -1e30 -1e30}
    if {![all_finite $points]} { return {} }
    foreach p $points {
        foreach i {0 1 2} {
            set c [lindex $p $i]
            lset mn $i [expr {min([lindex $mn $i], $c)}]
            lset mx $i [expr {max([lindex $mx $i], $c)}]
        }
    }
    return [concat $mn $mx]
}
proc all_finite {points} {
    foreach c [concat {*}$points] {
        if {![string is double -strict $c] || [string match -nocase *nan* $c] || [string match -nocase *inf* $c]} { return 0 }
    }
    return 1
}

# Model point under a pixel of an orthographic view (scale 100, no pan),
# depth from the 3D cursor.
proc model_at {view xy} {
    lassign $::rect($view) vx vy vw vh
    lassign $xy x y
    set h [expr {($x - $vx - $vw * 0.5) / 100.0}]
    set v [expr {($vh * 0.5 - ($y - $vy)) / 100.0}]
    set p [remote {vesk get_3d_cursor}]
    switch $view {
        0 { lset p 0 $h; lset p 1 $v }
        1 { lset p 2 $h; lset p 1 $v }
        2 { lset p 0 $h; lset p 2 [expr {-$v}] }
    }
    return $p
}

# Where an Alt+click puts the 3D cursor: the view's mapping at that pixel.
proc cursor_after_alt_click {xy} {
    with_key alt { click $xy }
    return [remote {vesk get_3d_cursor}]
}

# Screen pixel of a model point in the 3D view (spin mode, eye at z = 5).
proc at_3d {x y z} {
    lassign $::rect(3) tx ty tw th
    set aspect [expr {double($tw) / $th}]
    set fovy [expr {int([remote {set prefs_fov}] / $aspect * 10) * 0.1}]
    set f [expr {1.0 / tan($fovy * 3.14159265358979 / 360.0)}]
    set ndc_x [expr {$x / (5.0 - $z) * $f / $aspect}]
    set ndc_y [expr {$y / (5.0 - $z) * $f}]
    return [list [expr {$tx + int(($ndc_x + 1) * 0.5 * $tw)}] [expr {$ty + int((1 - $ndc_y) * 0.5 * $th)}]]
}
# Centre of the tool panel's button for a draw mode.
proc tool_button {mode} {
    set w .tools.draw.m$mode
    lassign [remote "list \[winfo rootx $w\] \[winfo rooty $w\] \[winfo width $w\] \[winfo height $w\]"] x y width height
    return [list [expr {$x + $width / 2}] [expr {$y + $height / 2}]]
}
proc ctrl_click_3d {xy {button 1}} {
    with_key ctrl { click $xy $button }
}

healthy "start-up"

# ======== picks and box selections in an empty model ========
set corner_3d [list [expr {[lindex $rect(3) 0] + 5}] [expr {[lindex $rect(3) 1] + 5}]]
set centre_3d [list [expr {[lindex $rect(3) 0] + [lindex $rect(3) 2] / 2}] [expr {[lindex $rect(3) 1] + [lindex $rect(3) 3] / 2}]]
foreach {mode word} {0 tree 1 object 2 vertex} {
    remote "vesk set_select_mode $mode"
    ctrl_click_3d $centre_3d
    check "empty model, $word mode: Control+click in 3D selects nothing" [remote {list $numselected $numselectedobjects}] {0 0}
    check "empty model, $word mode: selection read-out" [remote {set ::vesk::main::selection_text}] "Selected: 0 vertices, 0 objects"
    foreach view {0 1 2} {
        click [at $view 0.3 0.2]
        check "empty model, $word mode: click in view $view selects nothing" [remote {list $numselected $numselectedobjects}] {0 0}
        check "empty model, $word mode: click in view $view records the selection undo" [remote {set ::vesk::main::undo_text}] "Undo: selection"
        drag [at $view -1 1] [at $view 1 -1]
        check "empty model, $word mode: box select in view $view selects nothing" [remote {list $numselected $numselectedobjects}] {0 0}
    }
    check "empty model, $word mode: still empty" [objects] 0
    check "empty model, $word mode: modes unchanged" [modes] {select move}
    healthy "empty model, $word mode"
}
# Undoing the recorded selections of an empty model changes nothing.
exec xdotool mousemove {*}[at 0 0 0]
exec xdotool key u
sync
remote {vesk undo}
check "empty model: undo after empty picks" [list [objects] [remote {set numselected}]] {0 0}
healthy "empty model undo"
remote {vesk set_select_mode 1}

# ======== keys with the pointer over no view ========
# Makes the two boxes: A around (-1, 1, 0) and B around (1, -1, 0).
proc make_boxes {} {
    global A B
    foreach {name dx dy} {A -1 1 B 1 -1} {
        remote {vesk new_cube; vesk clear_selection}
        set id [last_object]
        remote "vesk object_select $id; vesk move $dx $dy 0; vesk set_current_object_name $name; vesk clear_selection"
        set $name $id
    }
}
make_boxes
check "two boxes made" [list [remote "vesk object_get_name $A"] [remote "vesk object_get_name $B"]] {A B}
set A0 [vertices $A]
set B0 [vertices $B]
settle

# The views' mapping, seen through where an Alt+click puts the cursor.
set probe(0) [at 0 0.5 0.5]
set probe(1) [at 1 0.5 0.5]
set probe(2) [at 2 0.5 0.5]
# The two coordinates a view shows of a point.
proc in_view {view p} {
    lassign $p x y z
    return [lindex [list [list $x $y] [list $z $y] [list $x $z]] $view]
}
proc mapping {} {
    set out {}
    foreach v {0 1 2} { lappend out [in_view $v [cursor_after_alt_click $::probe($v)]] }
    return $out
}
set map0 [mapping]
check_close "Alt+click maps the probes" $map0 {{0.5 0.5} {0.5 0.5} {0.5 -0.5}}
remote "vesk object_select $A"
foreach spot [list $over_panel $over_status] where {"tool panel" "status line"} {
    # Entering a view gives it the focus; leave for a spot with no view.
    move_to [at 0 0 0]
    move_to $spot
    exec xdotool key Left Right Up Down shift+Left ctrl+Up ctrl+Down percent parenleft g f
    sync
    check_close "keys over the $where: arrows, their characters and goto/fit keys do not pan or zoom" [mapping] $map0
    # mapping moved the pointer into the views: back to the spot.
    move_to [at 0 0 0]
    move_to $spot
    exec xdotool key m i r e m
    sync
    check "keys over the $where: submode keys still act" [modes] {select move}
    check "keys over the $where: the selection stays" [selected] $A
    check_close "keys over the $where: nothing moved" [vertices $A] $A0
    healthy "keys over the $where"
}
# The zoom key zooms all three orthographic views even with no view under
# the pointer.
move_to [at 0 0 0]
move_to $over_panel
exec xdotool key z
sync
set zoomed [mapping]
set third [expr {0.5 / 1.5}]
check_close "z over the tool panel zooms the front view" [lindex $zoomed 0] [list $third $third]
check_close "z over the tool panel zooms the side view" [lindex $zoomed 1] [list $third $third]
check_close "z over the tool panel zooms the plan view" [lindex $zoomed 2] [list $third -$third]
move_to $over_panel
exec xdotool key x
sync
check_close "x over the tool panel zooms back" [mapping] $map0
healthy "zoom keys over no view"
# Alt+clicks moved the cursor's depth: bring it back to 0 through the
# side view's origin.
cursor_after_alt_click [at 1 0 0]
cursor_after_alt_click [at 0 0 0]
check_close "cursor back at the origin" [remote {vesk get_3d_cursor}] {0 0 0}
remote {vesk reset_views; vesk clear_selection}
settle

# ======== a second button during a drag ========
# Rubber band; button 3 pressed and released inside it: ignored.
press [at 0 -1.8 1.8]
move_to [at 0 -1.2 1.2]
exec xdotool mousedown 3
sync
move_to [at 0 0.5 -0.5]
exec xdotool mouseup 3
sync
move_to [at 0 -0.7 0.7]
release 1
check "rubber band with a second button selects by the first button's band" [names] A
check "rubber band with a second button: modes" [modes] {select move}
remote {vesk undo}
check "undo restores the selection before the band" [selected] {}
healthy "second button in a rubber band"

# The first button released before the second: the band ends there and
# the second release does nothing.
press [at 0 1.8 -1.8]
move_to [at 0 0.7 -0.7]
exec xdotool mousedown 3
sync
move_to [at 0 0.8 -0.8]
release 1
check "band ended by the first button" [names] B
move_to [at 0 -0.7 0.7]
release 3
check "the second button's release changes nothing" [names] B
click [at 0 -1.5 1]
check "the next click picks normally" [names] A
healthy "second button released last"

# Move drag (drag submode move) with button 3 pressed and released in it.
remote "vesk clear_selection; vesk object_select $A"
settle
set from [at 0 -1 1]
press $from
move_to [at 0 -0.5 1]
exec xdotool mousedown 3
sync
move_to [at 0 -0.2 1.3]
exec xdotool mouseup 3
sync
move_to [at 0 0 1.5]
release 1
set d [list [expr {([lindex [at 0 0 1.5] 0] - [lindex $from 0]) / 100.0}] [expr {-([lindex [at 0 0 1.5] 1] - [lindex $from 1]) / 100.0}] 0]
check_close "move with a second button moves by the first button's drag" [vertices $A] [shifted $A0 $d]
check_close "move with a second button: box B untouched" [vertices $B] $B0
check "move with a second button: modes" [modes] {select move}
exec xdotool mousemove {*}[at 0 1.5 1.5]
exec xdotool key u
sync
check_close "undo key restores the move" [vertices $A] $A0
# A band now selects (mode 0 again), it does not move the selection.
drag [at 0 1.8 -1.8] [at 0 0.7 -0.7]
check "after the move a drag selects again" [names] B
check_close "after the move nothing else moved" [list {*}[vertices $A] {*}[vertices $B]] [list {*}$A0 {*}$B0]
healthy "second button in a move"

# The first button released first during a move; then button 2 comes up.
remote "vesk clear_selection; vesk object_select $A"
settle
press [at 0 -1 1]
move_to [at 0 -0.9 1]
exec xdotool mousedown 2
sync
move_to [at 0 -0.5 1]
release 1
move_to [at 0 -0.2 1]
release 2
check_close "move ended by the first button" [vertices $A] [shifted $A0 {0.5 0 0}]
remote {vesk undo}
check_close "undo restores it" [vertices $A] $A0
healthy "move, second button released last"

# ---- resize and rotate gestures without motion ----
# Button 2 in the box resizes by the bottom right corner, button 3
# rotates; released where they were pressed, the corner goes to that
# point and the angle is 0, whatever an earlier drag left behind.
remote "vesk clear_selection; vesk object_select $A"
settle
drag [at 0 -1 1] [at 0 -0.6 0.8] 2
check_true "a resize drag changes box A" [expr {![close_to [vertices $A] $A0]}]
remote {vesk undo}
check_close "undo restores the resize" [vertices $A] $A0
set p [at 0 -0.8 1.2]
click $p 2
set q [model_at 0 $p]
check_close "button 2 click: the bottom right corner goes to the click" [bounds [vertices $A]] [list -1.5 [lindex $q 1] -0.5 [lindex $q 0] 1.5 0.5]
remote {vesk undo}
check_close "undo restores it" [vertices $A] $A0
drag [at 0 -1 1] [list [expr {[lindex [at 0 -1 1] 0] + 12}] [lindex [at 0 -1 1] 1]] 3
check_true "a rotate drag turns box A" [expr {![close_to [vertices $A] $A0 0.001]}]
remote {vesk undo}
set undo_before [remote {set ::vesk::main::undo_text}]
click [at 0 -1 1] 3
check_close "button 3 click turns nothing" [vertices $A] $A0 0.0001
check "button 3 click records no rotation" [remote {set ::vesk::main::undo_text}] $undo_before
# A click on the bottom right handle, after a resize drag that left its
# box behind.
drag [at 0 -1 1] [at 0 -0.6 0.8] 2
remote {vesk undo}
settle
set hs [remote {set prefs_handle_size}]
lassign [at 0 -0.5 0.5] hx hy
set p [list [expr {$hx + 13 - $hs / 2}] [expr {$hy + 13 - $hs / 2}]]
click $p
set q [model_at 0 $p]
check_close "click on a corner handle: the corner goes to the click" [bounds [vertices $A]] [list -1.5 [lindex $q 1] -0.5 [lindex $q 0] 1.5 0.5]
check "click on a corner handle: modes" [modes] {select move}
remote {vesk undo}
check_close "undo restores it" [vertices $A] $A0
# An extrusion by a click: the drag submode goes back to move, and undo
# takes the extrusion away.
set s0 [dict get [remote {vesk get_info}] surfaces]
remote {vesk set_drag_mode 103}
settle
click [at 0 -1 1]
check "extrude click: back to the move submode" [modes] {select move}
check "extrude click: extruded by nothing, with its undo" [remote {set ::vesk::main::undo_text}] "Undo: extrude"
check_true "extrude click: the extrusion's surfaces are there" [expr {[dict get [remote {vesk get_info}] surfaces] > $s0}]
remote {vesk undo}
check "undo of the extrude click" [dict get [remote {vesk get_info}] surfaces] $s0
# That undo put back a snapshot: the boxes are new records now.
set A [object_named A]
set B [object_named B]
check_close "the snapshot holds both boxes unchanged" [list {*}[vertices $A] {*}[vertices $B]] [list {*}$A0 {*}$B0]
remote {vesk clear_selection}
healthy "resize, rotate and extrude without motion"

# A spin drag in the 3D view with button 3 pressed and released in it;
# then a Control+click picks.
set mode3d [remote {set prefs_view3dmode}]
press $centre_3d
move_to [list [expr {[lindex $centre_3d 0] + 20}] [lindex $centre_3d 1]]
exec xdotool mousedown 3
sync
move_to [list [expr {[lindex $centre_3d 0] + 30}] [expr {[lindex $centre_3d 1] + 10}]]
exec xdotool mouseup 3
sync
move_to [list [expr {[lindex $centre_3d 0] + 40}] [lindex $centre_3d 1]]
release 1
check "3D drag with a second button: the drawing mode comes back" [remote {set prefs_view3dmode}] $mode3d
exec xdotool key space
sync
remote {vesk clear_selection}
ctrl_click_3d [at_3d -1 1 0.5]
check "3D: Control+click after the drag picks box A" [names] A
healthy "second button in a 3D drag"

# ======== drags that leave the view ========
# A move released over the tool panel, left of the front view: the move
# uses the release position outside the view.
remote "vesk clear_selection; vesk object_select $A"
settle
set from [at 0 -1 1]
set outside [list [expr {[lindex $rect(0) 0] - 30}] [lindex $from 1]]
drag $from $outside
set d [list [expr {([lindex $outside 0] - [lindex $from 0]) / 100.0}] 0 0]
check_close "move released over the tool panel moves by the full drag" [vertices $A] [shifted $A0 $d]
remote {vesk undo}
check_close "undo restores it" [vertices $A] $A0
healthy "move released outside"

# A move released over the side view: the front view keeps the drag.
set over_side [list [expr {[lindex $rect(1) 0] + 50}] [expr {[lindex $from 1] + 40}]]
drag $from $over_side
set d [list [expr {([lindex $over_side 0] - [lindex $from 0]) / 100.0}] -0.4 0]
check_close "move released over the side view moves by the full drag" [vertices $A] [shifted $A0 $d]
check "the side view did not take the release" [modes] {select move}
# Keys now act on the side view, where the pointer is.
exec xdotool key Left
sync
check_close "Left after it pans the side view" [in_view 1 [cursor_after_alt_click $probe(1)]] {0.3 0.5}
move_to $probe(1)
exec xdotool key Right
sync
check_close "Right pans it back" [in_view 1 [cursor_after_alt_click $probe(1)]] {0.5 0.5}
cursor_after_alt_click [at 1 0 0]
cursor_after_alt_click [at 0 0 0]
remote {vesk undo}
# The next gesture, in the side view, works normally: a click on nothing
# clears the selection.
click [at 1 1.8 -1.8]
check "a click in the side view after it clears the selection" [selected] {}
healthy "move released over another view"

# A rubber band that leaves the view upwards and comes back.
lassign [at 0 -1.8 1.8] bx by
press [list $bx $by]
move_to [list $bx [expr {[lindex $rect(0) 1] - 15}]]
move_to [list [expr {[lindex $rect(0) 0] - 20}] [expr {[lindex $rect(0) 1] - 15}]]
move_to [at 0 -0.7 0.7]
release 1
check "band that left the view and came back" [names] A
# A rubber band released outside, beyond the top left corner: it reaches
# over both boxes.
remote {vesk clear_selection}
drag [at 0 1.8 -1.8] [list [expr {[lindex $rect(0) 0] - 20}] [expr {[lindex $rect(0) 1] - 10}]]
check "band released outside the view selects what it covers" [names] {A B}
healthy "rubber bands leaving the view"

# A box drawn out past the bottom of the front view, released over the
# plan view.
remote {vesk clear_selection; vesk set_draw_mode 7}
set n [objects]
set from [at 0 -0.4 -0.4]
set to [list [lindex $from 0] [expr {[lindex $rect(2) 1] + 40}]]
drag [at 0 -0.4 -0.4] $to
check "box drawn out of the view is made" [objects] [expr {$n + 1}]
set b [bounds [vertices [last_object]]]
set ymin [expr {-([lindex $to 1] - [lindex $rect(0) 1] - [lindex $rect(0) 3] * 0.5) / 100.0}]
check_close "the box reaches the release point outside the view" [lindex $b 1] $ymin
check "box drawn out of the view: back to select" [modes] {select move}
exec xdotool mousemove {*}[at 0 1.5 1.5]
exec xdotool key u
sync
check "undo key removes it" [objects] $n
healthy "box drawn out of the view"

# A spin drag that leaves the 3D view and ends over the plan view.
press $centre_3d
move_to [list [expr {[lindex $centre_3d 0] + 60}] [lindex $centre_3d 1]]
move_to [list [expr {[lindex $rect(2) 0] + 100}] [lindex $centre_3d 1]]
release 1
check "3D drag released outside: the drawing mode comes back" [remote {set prefs_view3dmode}] $mode3d
move_to $centre_3d
exec xdotool key space
sync
remote {vesk clear_selection}
ctrl_click_3d [at_3d 1 -1 0.5]
check "3D: Control+click after it picks box B" [names] B
# A Control+click pressed on box A and released outside the 3D view picks
# at the release point, where nothing is: the selection is cleared.
exec xdotool keydown ctrl
press [at_3d -1 1 0.5]
move_to [list [expr {[lindex $rect(3) 0] + [lindex $rect(3) 2] + 30}] [lindex $centre_3d 1]]
release 1
exec xdotool keyup ctrl
sync
check "3D: Control+click released outside selects nothing" [selected] {}
# A pick on nothing clears the selection, even with Shift (add).
remote "vesk object_select $A"
exec xdotool keydown ctrl keydown shift
click $corner_3d
exec xdotool keyup shift keyup ctrl
sync
check "3D: Control+Shift+click on nothing clears the selection" [selected] {}
healthy "3D drag released outside"

# Line mode: a press in the view dragged out and released outside places
# the vertex at the release point; button 3 finishes.
remote {vesk clear_selection; vesk set_draw_mode 1}
set n [objects]
click [at 0 0.2 0.2]
drag [at 0 0.3 0.2] [list [expr {[lindex $rect(0) 0] - 25}] [lindex [at 0 0 0.2] 1]]
click [at 0 0 0] 3
set line [last_object]
check "line drawn out of the view is made" [objects] [expr {$n + 1}]
set lv [vertices $line]
check "line has the two placed vertices" [llength $lv] 2
check_close "second vertex at the release point outside" [lindex $lv 1 0] [expr {(-25 - [lindex $rect(0) 2] * 0.5) / 100.0}]
check "finished line is selected" [selected] $line
remote {vesk undo; vesk set_draw_mode 0}
healthy "line vertex placed outside"

# ======== a line whose object goes while it is drawn ========
# Select all and Delete with the pointer over the tool panel remove the
# line being drawn; the next click starts a new one.
remote {vesk clear_selection; vesk set_select_mode 1; vesk set_draw_mode 1}
set n [objects]
click [at 0 0.5 0.5]
check "line started" [objects] [expr {$n + 1}]
move_to $over_panel
exec xdotool key a Delete
sync
check "select all and Delete over the tool panel remove it" [objects] 0
move_to [at 0 0.6 0.4]
move_to [at 0 0.7 0.3]
set p [model_at 0 [at 0 0.7 0.3]]
click [at 0 0.7 0.3]
check "the next click starts a new line" [objects] 1
set o [last_object]
check_close "  ... with the clicked vertex" [vertices $o] [list $p]
click [at 0 0.7 0.3]
check "  ... and finishes it" [selected] $o
check_close "  ... with only that vertex" [vertices $o] [list $p]
exec xdotool mousemove {*}[at 0 1.5 1.5]
exec xdotool key u
sync
check "undo removes the new line" [objects] 0
healthy "line deleted while drawn"

# Vertex selection mode and Delete take every vertex of a polygon being
# drawn; hovering and clicking go on safely.
remote {vesk set_draw_mode 3}
click [at 0 0.5 0.5]
click [at 0 0.5 0.9]
move_to $over_panel
exec xdotool key v a Delete
sync
check "the polygon's vertices are deleted" [dict get [remote {vesk get_info}] vertices] 0
move_to [at 0 0.3 0.3]
move_to [at 0 0.2 0.3]
click [at 0 0.2 0.3]
set o [last_object]
check_close "a click after it places a vertex of a new polygon" [vertices $o] [list [model_at 0 [at 0 0.2 0.3]]]
click [at 0 -1.5 -1.5] 3
check "button 3 finishes it, its vertex selected" [remote {set numselected}] 1
check "  ... in the move submode" [modes] {select move}
remote {vesk set_select_mode 1; vesk clear_all}
healthy "vertices deleted while drawn"

# Choosing another draw tool in the tool panel ends the polygon being
# drawn: it is kept, selected, with its undo record.
remote {vesk set_draw_mode 3}
click [at 0 0.5 0.5]
click [at 0 0.5 0.9]
set poly [last_object]
click [tool_button 7]
check "the box tool is chosen" [lindex [modes] 0] box
check "the polygon is selected" [selected] $poly
check "the polygon has its undo record" [remote {set ::vesk::main::undo_text}] "Undo: new object"
check "the polygon keeps its two vertices" [llength [vertices $poly]] 2
remote {vesk set_draw_mode 3}
click [at 0 -0.5 -0.5]
check "back in polygon mode a click starts a new object" [objects] 2
check "the old polygon is not continued" [llength [vertices $poly]] 2
click [at 0 -0.5 -0.5] 3
remote {vesk undo; vesk undo}
check "undo removes both" [objects] 0
remote {vesk set_draw_mode 0}
healthy "draw tool changed while drawing"

# Put the two boxes back for what follows.
make_boxes

# ======== press and release without motion in every draw mode ========
set segments [remote {set prefs_num_surface_div}]
set mesh_x [remote {set prefs_meshx}]
set mesh_y [remote {set prefs_meshy}]
set lights0 [llength [remote {vesk get_lights}]]
foreach mode {1 2 3 4 5 6 7 8 9 10 11 12 13} {
    set view [expr {$mode % 3}]
    set xy [at $view 0.7 -0.6]
    set p [model_at $view $xy]
    set name [lindex {- line "closed line" polygon rectangle ellipse disk box sphere cylinder mesh grid icosahedron light} $mode]
    # The mode comes from the tool panel's button.
    remote {vesk clear_selection}
    click [tool_button $mode]
    check "$name chosen in the tool panel" [lindex [modes] 0] $name
    set n [objects]
    click $xy
    set step "zero drag in $name mode (view $view)"
    check "$step: one object" [objects] [expr {$n + 1}]
    set o [last_object]
    set vs [vertices $o]
    check_true "$step: coordinates are numbers" [all_finite $vs]
    if {$mode <= 3} {
        check_close "$step: first vertex placed" $vs [list $p]
        check "$step: the mode stays" [lindex [modes] 0] $name
        # A click on the last vertex (mode 1, 3) or button 3 (mode 2)
        # finishes the object.
        if {$mode == 2} { click [at $view -1.5 -1.5] 3 } else { click $xy }
        check_close "$step: finished with its one vertex" [vertices $o] [list $p]
        check "$step: finished object selected" [selected] $o
        check "$step: finished object's undo" [remote {set ::vesk::main::undo_text}] "Undo: new object"
        check "$step: back to the move submode" [modes] {select move}
        # The mode returned to move: the next drag moves the new object.
        set from [at $view -1.5 1.5]
        set to [at $view -1.0 1.5]
        drag $from $to
        set moved [shifted [list $p] [expr {$view == 1 ? {0 0 0.5} : {0.5 0 0}}]]
        check_close "$step: the next drag moves the new object" [vertices $o] $moved
        remote {vesk undo}
        check_close "$step: undo restores the move" [vertices $o] [list $p]
        remote {vesk undo}
        check "$step: undo removes the new object" [objects] $n
    } else {
        check "$step: back to select" [modes] {select move}
        check "$step: the new object is selected" [selected] $o
        set b [bounds $vs]
        switch $mode {
            4 - 10 - 11 {
                switch $mode {
                    4 { set count 4 }
                    10 { set count [expr {($mesh_x + 1) * ($mesh_y + 1)}] }
                    11 { set count [expr {2 * ($mesh_x + 1 + $mesh_y + 1)}] }
                }
                check "$step: vertex count" [llength $vs] $count
                check_close "$step: every vertex at the click" $b [concat $p $p]
            }
            5 - 6 - 7 - 8 - 9 {
                set lo [shifted [list $p] {-0.5 -0.5 -0.5}]
                set hi [shifted [list $p] {0.5 0.5 0.5}]
                # Flat shapes keep the click's depth.
                if {$mode == 5 || $mode == 6} {
                    set depth [lindex {2 0 1} $view]
                    lset lo 0 $depth [lindex $p $depth]
                    lset hi 0 $depth [lindex $p $depth]
                }
                check_close "$step: regular shape around the click" $b [concat {*}$lo {*}$hi] 0.02
                if {$mode == 5} { check "$step: ellipse segments" [llength $vs] $segments }
                if {$mode == 6} { check "$step: disk rim and centre" [llength $vs] [expr {$segments + 1}] }
                if {$mode == 7} { check "$step: box corners" [llength $vs] 8 }
            }
            12 {
                check_close "$step: unit icosahedron at the origin" $b {-0.8507 -0.8507 -0.8507 0.8507 0.8507 0.8507} 0.001
            }
            13 {
                check "$step: a light" [llength [remote {vesk get_lights}]] [expr {$lights0 + 1}]
                check_close "$step: light at the click" [remote "vesk object_get_centre $o"] $p
            }
        }
        exec xdotool key u
        sync
        check "$step: undo key removes it" [objects] $n
        if {$mode == 13} { check "$step: undo removes the light" [llength [remote {vesk get_lights}]] $lights0 }
    }
    # The following gesture is an ordinary selection.
    drag [at $view 1.8 1.8] [at $view 1.2 1.2]
    check "$step: a following drag makes nothing" [objects] $n
    check "$step: a following drag selects (nothing there)" [selected] {}
    check "$step: modes after the following drag" [modes] {select move}
    healthy $step
}
check_close "the two boxes came through unchanged" [list {*}[vertices $A] {*}[vertices $B]] [list {*}$A0 {*}$B0]

# ======== a crowded pick ========
# 400 unit squares stacked behind one another on the view axis and, in
# the middle of the file, a square named "nearest" in front of all.
set crowd [file join $::scratch crowd.vk]
set fd [open $crowd w]
puts $fd "VESKb\nOBJECT world\nkids 401"
proc square {name z} {
    set text "OBJECT poly\nname \"$name\"\nnumvert 4\n"
    foreach {x y} {-0.5 -0.5 0.5 -0.5 0.5 0.5 -0.5 0.5} { append text "$x $y $z\n" }
    append text "numsurf 1\nSURF 0x20\nmat 0\nrefs 4\n0 0 0\n1 0 0\n2 0 0\n3 0 0\nkids 0\n"
    return $text
}
for {set i 0} {$i < 400} {incr i} {
    if {$i == 200} { puts -nonewline $fd [square nearest 1.0] }
    puts -nonewline $fd [square s$i [expr {-3.0 + $i * 0.005}]]
}
close $fd
remote "vesk clear_all; vesk load_vk [list $crowd]; vesk clear_selection; vesk set_select_mode 1"
check "crowd loaded" [objects] 401
settle
ctrl_click_3d $centre_3d
check "crowded Control+click picks the nearest" [names] nearest
remote {vesk clear_selection}
ctrl_click_3d $centre_3d
check "a second crowded pick with the grown buffer" [names] nearest
exec xdotool keydown ctrl keydown shift
click $centre_3d 3
exec xdotool keyup shift keyup ctrl
sync
check "Control+Shift+button 3 removes the nearest" [selected] {}
remote {vesk set_select_mode 2}
ctrl_click_3d $centre_3d
check "crowded pick in vertex mode selects the nearest surface" [remote {set numselected}] 4
check_close "  ... of the nearest square" [lindex [remote {vesk get_selection_centre}] 2] 1.0
remote {vesk set_select_mode 0; vesk clear_selection}
# A rubber band over the crowd in the front view selects all of it.
drag [at 0 -1 1] [at 0 1 -1]
check "band over the crowd selects every object" [remote {set numselectedobjects}] 401
healthy "crowded pick"

finish
