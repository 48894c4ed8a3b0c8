# The modeller on screen: start-up with a model, the four views drawn in
# the palette's colours with grid and axes, a lit 3D view, zoom, fit and
# reset moving the drawing where the mapping puts it, single-view layout,
# the 3D view's spin and walk keys, and a fault inside a command reported
# while the program goes on.
source [file join [file dirname [info script]] gui_lib.tcl]

start_vesk [file join $::src examples sample.vk]
check "no Tcl error at start-up" [string match "*TCL ERROR*" [read_log]] 0
check "model loaded" [dict get [remote {vesk get_info}] objects] 5

remote {vesk clear_selection}
remote {vesk reset_views}
settle
set s [shot start]

# Waits for the redraws a command asked for, without asking for more: the
# views must draw the change themselves.
proc settle_views {} {
    wait_idle
}

# ---- the front view at scale 100 with no pan ----
lassign [view_rect 0] fx fy fw fh
set col_vert [hex_colour 0xFF4444]
set col_grid [hex_colour 0x454545]
set col_axis [hex_colour 0x777777]

# Window position of a model point in the front view (the mapping: x right,
# y up, centre at half the window, rounded by trunc(v + 0.5)).
proc front_xy {x y scale w h {px 0} {py 0}} {
    set sx [expr {int($scale * $x + $w * 0.5 + $px + 0.5)}]
    set sy [expr {int($h * 0.5 - $scale * $y + $py + 0.5)}]
    return [list $sx $sy]
}

# A corner of the hexagonal prism, (0.6, 1.5, 0), and the grid and axis
# below the model.
lassign [front_xy 0.6 1.5 100 $fw $fh] vx vy
check_pixel "prism corner marker at the mapped pixel" $s [expr {$fx + $vx}] [expr {$fy + $vy}] $col_vert
lassign [front_xy 1 -1.5 100 $fw $fh] gx gy
check_pixel "grid line one unit right of the origin" $s [expr {$fx + $gx}] [expr {$fy + $gy}] $col_grid
lassign [front_xy 0 -1.5 100 $fw $fh] ax ay
check_pixel "vertical axis through the origin" $s [expr {$fx + $ax}] [expr {$fy + $ay}] $col_axis

# ---- the 3D view is lit and shaded in the palette's colours ----
lassign [view_rect 3] tx ty tw th
check_true "3D view has shaded colours" [expr {[colour_count $s $tx $ty $tw $th] > 20}]

# ---- zoom_in scales by 1.5 about the window centre ----
remote {vesk zoom_in}
settle_views
set s [shot zoomed]
lassign [front_xy 0.6 0.0 150 $fw $fh] vx vy
check_pixel "zoom_in moves the corner as mapped" $s [expr {$fx + $vx}] [expr {$fy + $vy}] $col_vert

# ---- reset_views brings scale 100 back ----
remote {vesk reset_views}
settle_views
set s [shot reset]
lassign [front_xy 0.6 1.5 100 $fw $fh] vx vy
check_pixel "reset_views restores the mapping" $s [expr {$fx + $vx}] [expr {$fy + $vy}] $col_vert

# ---- fit_all: the model's extent fills 80 % of the tightest view ----
# Model bounds: x -4..4, y 0..2.7, z -3..3.  Each view's ratio is the
# smaller of width/extent and height/extent at scale 100.
lassign [view_rect 1] sx sy sw sh
lassign [view_rect 2] px py pw ph
set ratios [list \
    [expr {min($fw / 800.0, $fh / 270.0)}] \
    [expr {min($pw / 800.0, $ph / 600.0)}] \
    [expr {min($sw / 600.0, $sh / 270.0)}]]
set scale [expr {[tcl::mathfunc::min {*}$ratios] * 100 * 0.8}]
remote {vesk fit_all}
settle_views
set s [shot fitted]
# The view is centred on the model's centre (0, 1.35, 0): pan = (0, s*1.35).
lassign [front_xy -4 0 $scale $fw $fh 0 [expr {$scale * 1.35}]] vx vy
check_pixel "fit_all puts the floor corner where the mapping predicts" $s [expr {$fx + $vx}] [expr {$fy + $vy}] $col_vert

# ---- an Alt+click puts the 3D cursor where it is clicked ----
# Near the top left of the front view, clear of the model; the cursor snaps
# to the grid, so its arm is looked for where the mapping puts the cursor.
lassign [front_xy -4.5 2.5 $scale $fw $fh 0 [expr {$scale * 1.35}]] cx cy
exec xdotool mousemove [expr {$fx + $cx}] [expr {$fy + $cy}] keydown alt click 1 keyup alt
settle_views
lassign [remote {vesk get_3d_cursor}] kx ky
lassign [front_xy $kx $ky $scale $fw $fh 0 [expr {$scale * 1.35}]] cx cy
set arm_x [expr {$fx + $cx + 10}]
set arm_y [expr {$fy + $cy}]
set after_cursor [pixel [shot cursor_moved] $arm_x $arm_y]
check "the cursor is drawn where it was put" [near_colour $after_cursor [pixel $s $arm_x $arm_y]] 0

# ---- one view only ----
remote {set viewsetting xy}
settle
check "front view shown" [remote {winfo ismapped .views.xyframe.f.win}] 1
check "3D view hidden" [remote {winfo ismapped .views.xyzframe.f.win}] 0
check "side view hidden" [remote {winfo ismapped .views.zyframe.f.win}] 0
remote {set viewsetting all}
settle

# ---- the 3D view's keys: spin, then walk ----
lassign [view_rect 3] tx ty tw th
exec xdotool mousemove [expr {$tx + $tw / 2}] [expr {$ty + $th / 2}]
settle
set before [region_signature [shot before_spin] $tx $ty $tw $th]
exec xdotool key Left
set after [wait_pixel_change 3 $before]
check "Left turns the model in spin mode" [expr {$before ne $after}] 1
exec xdotool key 2
settle
check "2 switches to walk mode" [remote {set person_walk_vehicle}] 1
set before [region_signature [shot before_walk] $tx $ty $tw $th]
exec xdotool key Up
set after [wait_pixel_change 3 $before]
check "Up walks forward" [expr {$before ne $after}] 1
exec xdotool key 1
settle
check "1 returns to spin mode" [remote {set person_walk_vehicle}] 0

# ---- the 3D view puts back its kept picture only while nothing changed ----
# A redraw that changes nothing, as when the view is uncovered, shows the
# same picture; a setting changed with no change to the model (the axes
# turned off) is drawn at the next redraw all the same.
proc redraw_3d_only {} {
    remote {update; .views.xyzframe.f.win postredisplay; update}
    wait_idle
}
set before [region_signature [shot before_cover] $tx $ty $tw $th]
remote "toplevel .cover; wm geometry .cover ${tw}x${th}+${tx}+${ty}; update; destroy .cover; update"
redraw_3d_only
check "uncovered 3D view shows the same picture" [region_signature [shot after_cover] $tx $ty $tw $th] $before
remote {set prefs_show_axis [expr {!$prefs_show_axis}]}
redraw_3d_only
set changed [region_signature [shot axes_toggled] $tx $ty $tw $th]
check "a setting changed without a model change is drawn" [expr {$changed ne $before}] 1
remote {set prefs_show_axis [expr {!$prefs_show_axis}]}
redraw_3d_only
check "turning it back gives the first picture" [region_signature [shot axes_back] $tx $ty $tw $th] $before

# ---- a fault inside a command: reported, and the program goes on ----
check "fault plug-in loads" [remote "vesk plugin_load [list $::fault_plugin]"] 1
remote_send {vesk test_fault}
set dialog [wait_for_message_box]
check_true "the fault is shown in a message box" [expr {$dialog ne ""}]
shot fault_dialog
press_message_box_ok $dialog
exec xdotool key Return
remote_answer
check_true "program still answers after the fault" [string is integer -strict [remote {vesk get_world}]]
check "model intact after the fault" [dict get [remote {vesk get_info}] objects] 5

finish
