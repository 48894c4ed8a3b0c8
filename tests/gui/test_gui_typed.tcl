# Numbers typed during a drag, with real X input: during a move drag,
# "0.75" and Enter move the selection exactly 0.75 along the drag's axis
# (bit for bit what adding 0.75 in single precision gives) and end the
# drag; during a rotate drag, "30" turns every edge by 30 degrees; during
# a resize drag, "2" doubles the size along the drag's axis.  Text that is
# no number, NaN, infinities and huge values are refused with a message
# and change nothing; the status line shows the current amount.
source [file join [file dirname [info script]] gui_lib.tcl]

set model [file join $::scratch box.vk]
set fd [open $model w]
puts -nonewline $fd "VESKb\nOBJECT world\nkids 1\nOBJECT poly\nname \"box\"\nnumvert 8\n"
foreach z {-0.3 0.3} {
    foreach {x y} {-1.1 -0.9 -0.3 -0.9 -0.3 -0.1 -1.1 -0.1} { puts $fd "$x $y $z" }
}
puts $fd "numsurf 6"
foreach face {{0 3 2 1} {4 5 6 7} {0 1 5 4} {3 7 6 2} {0 4 7 3} {1 2 6 5}} {
    puts $fd "SURF 0\nrefs 4"
    foreach i $face { puts $fd "$i 0 0" }
}
puts $fd "kids 0"
close $fd
start_vesk $model
remote {vesk reset_views}
settle

proc view_point {view x y} {
    lassign [view_rect $view] vx vy vw vh
    return [list [expr {$vx + int(100 * $x + $vw * 0.5 + 0.5)}] [expr {$vy + int($vh * 0.5 - 100 * $y + 0.5)}]]
}
proc box {} { lindex [remote {vesk object_get_children [vesk get_world]}] 0 }
proc vertices {} { remote "vesk object_get_vertices [box]" }
proc status {} { remote {set ::vesk::main::message} }
proc f32 {x} {
    binary scan [binary format f $x] f y
    return $y
}
proc press_at {xy} {
    exec xdotool mousemove {*}$xy
    wait_idle
    exec xdotool mousedown 1
    wait_idle
}
proc move_to {xy} {
    exec xdotool mousemove {*}$xy
    wait_idle
}
proc type_keys {args} {
    exec xdotool key --delay 30 {*}$args
    wait_idle
}
proc release {} {
    exec xdotool mouseup 1
    wait_idle
}
proc key_over {xy key} {
    exec xdotool mousemove {*}$xy
    wait_idle
    exec xdotool key $key
    wait_idle
}

remote {vesk clear_selection}
set here [view_point 0 1.5 1.5]
exec xdotool mousemove {*}[view_point 0 -1.1 -0.5]
wait_idle
exec xdotool click 1
wait_idle
check "the box selected" [llength [remote {vesk get_selected_objects}]] 1
set start [vertices]

# ---- move: exactly 0.75 along x ----
press_at [view_point 0 -0.7 -0.5]
move_to [view_point 0 -0.6 -0.5]
move_to [view_point 0 -0.5 -0.48]
check_true "the status line shows the current move" [string match "move 0.2* - or type a distance and Enter" [status]]
type_keys 0 period 7 5
check "the typed number on the status line" [status] "move by along x: 0.75 - Enter applies it, Escape clears it"
type_keys Return
check "status after the typed move" [status] "moved 0.75 along x"
set expected {}
foreach v $start {
    lassign $v x y z
    lappend expected [list [f32 [expr {[f32 $x] + 0.75}]] $y $z]
}
set moved [vertices]
set exact 1
foreach a $moved b $expected {
    foreach p $a q $b { if {[f32 $p] != [f32 $q]} { set exact 0 } }
}
check "moved exactly 0.75 along x, nothing else" $exact 1
release
check "the release after the typed move changes nothing" [vertices] $moved
check "one undo step" [remote {lindex [vesk undo_history] end}] move

# ---- refused input: nothing changes, the drag goes on ----
set before [vertices]
press_at [view_point 0 0.0 -0.5]
move_to [view_point 0 0.1 -0.5]
foreach {keys shown} {
    {a b c} abc
    {n a n} nan
    {i n f} inf
    {minus i n f} -inf
    {1 e 4 0 0} 1e400
    {1 e 9} 1e9
} {
    type_keys {*}$keys
    type_keys Return
    check_true "\"$shown\" refused with a message" [string match "\"$shown\" is not a usable number*" [status]]
    check "\"$shown\" changes nothing" [vertices] $before
}
type_keys Return
check "Enter with nothing typed" [status] "type a number first, then Enter"
type_keys 5 Escape
check "Escape clears the typed number" [status] "typed number cleared"
move_to [view_point 0 0.0 -0.5]
release
check "the drag itself still ends normally" [vertices] $before

# ---- rotate: 30 degrees ----
proc edge_angle {verts} {
    lassign [lindex $verts 0] x0 y0
    lassign [lindex $verts 1] x1 y1
    return [expr {atan2($y1 - $y0, $x1 - $x0) * 180 / acos(-1)}]
}
set before [vertices]
key_over $here r
press_at [view_point 0 0.0 -0.5]
move_to [view_point 0 0.05 -0.5]
check_true "the status line shows the current angle" [string match "rotate * degrees - or type degrees and Enter" [status]]
type_keys 3 0 Return
release
set turned [expr {[edge_angle [vertices]] - [edge_angle $before]}]
# The same sense as a drag to the right (clockwise in the front view).
check "rotated by 30 degrees" [format %.3f $turned] -30.000
check "status after the typed rotation" [status] "rotated 30 degrees"

# ---- resize: factor 2 along the drag's axis ----
proc extent_x {verts} {
    set xs [lmap v $verts {lindex $v 0}]
    return [expr {[tcl::mathfunc::max {*}$xs] - [tcl::mathfunc::min {*}$xs]}]
}
remote {vesk undo}
set before [vertices]
key_over $here i
lassign [remote {vesk get_selection_centre}] cx cy
press_at [view_point 0 $cx $cy]
move_to [view_point 0 [expr {$cx + 0.05}] $cy]
type_keys 0 Return
check_true "factor 0 refused" [string match "resize: \"0\" is not a factor above 0*" [status]]
type_keys 2 Return
release
check "resize doubles the size along x" [format %.4f [expr {[extent_x [vertices]] / [extent_x $before]}]] 2.0000
key_over $here m

finish
