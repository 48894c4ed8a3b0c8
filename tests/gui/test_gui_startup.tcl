# Start-up that goes wrong: no display, a missing or broken script, a
# display without a fitting OpenGL visual, a model file that does not
# exist; and views pushed to extremes: huge and tiny zoom factors and a
# main window too small to show them.  Each failure gives a clear message
# and an exit status of 1 in good time; the rest keep the program running.
source [file join [file dirname [info script]] gui_lib.tcl]

# Runs vesk in directory dir with extra environment settings until it
# exits (30 s at most); returns its exit status and its output.
proc run_to_exit {dir environment args} {
    set home [file join $::scratch home_exit]
    file mkdir $home
    set command [list env {*}$environment HOME=$home timeout 30 $::vesk_bin {*}$args]
    set status 0
    if {[catch {exec sh -c "cd [list $dir] && exec [join [lmap w $command {list $w}]] 2>&1"} output options]} {
        set code [dict get $options -errorcode]
        set status [expr {[lindex $code 0] eq "CHILDSTATUS" ? [lindex $code 2] : -1}]
    }
    return [list $status $output]
}

# A directory with a copy of the scripts, for breaking them.
proc scripts_copy {name} {
    set dir [file join $::scratch $name]
    file mkdir $dir
    file copy -force [file join $::src tcl] $dir
    return $dir
}

# ---- no display ----
lassign [run_to_exit $::src {-u DISPLAY VESK_HOME=/nonexistent}] status output
check "no display: exit status" $status 1
check_true "no display: says so" [string match "*no display name*" $output]
check_true "no display: says it stops" [string match "*failed to start TCL/TK - exiting*" $output]

# ---- the scripts missing: none in the directory, none under VESK_HOME ----
set empty [file join $::scratch empty_dir]
file mkdir $empty
lassign [run_to_exit $empty [list VESK_HOME=$empty]] status output
check "missing scripts: exit status" $status 1
check_true "missing scripts: names the script" [string match "*couldn't read file \"./tcl/veskops.tcl\"*" $output]

# ---- one script missing ----
set dir [scripts_copy one_missing]
file delete [file join $dir tcl vesk.tcl]
lassign [run_to_exit $dir [list VESK_HOME=$empty]] status output
check "one script missing: exit status" $status 1
check_true "one script missing: names it" [string match "*couldn't read file \"./tcl/vesk.tcl\"*" $output]

# ---- a broken script ----
set dir [scripts_copy broken]
set fd [open [file join $dir tcl veskpalette.tcl] a]
puts $fd "proc unfinished \{"
close $fd
lassign [run_to_exit $dir [list VESK_HOME=$empty]] status output
check "broken script: exit status" $status 1
check_true "broken script: names it and the fault" \
    [string match "*TCL ERROR IN VESK in ./tcl/veskpalette.tcl*missing close-brace*" $output]

# ---- a display without an OpenGL visual fit for the views (8-bit colour) ----
set display ""
foreach n {80 81 82 83 84 85 86 87 88 89} {
    if {[file exists /tmp/.X$n-lock] || [file exists /tmp/.X11-unix/X$n]} continue
    set xvfb [exec Xvfb :$n -screen 0 640x480x8 -nolisten tcp >& /dev/null &]
    wait_file /tmp/.X11-unix/X$n
    set display :$n
    break
}
if {$display ne ""} {
    lassign [run_to_exit $::src [list DISPLAY=$display VESK_HOME=$::src]] status output
    exec kill $xvfb
    check "8-bit display: exit status" $status 1
    check_true "8-bit display: says why the views can't be drawn" \
        [string match "*has no OpenGL visual with RGB colour and a depth*buffer*" $output]
    check_true "8-bit display: no X protocol error" [expr {![string match "*X Error*" $output]}]
}

# ---- a model file that does not exist: a message box, then an empty model ----
launch_vesk [file join $::scratch no_such_model.vk]
connect_vesk
set dialog [wait_for_message_box]
check_true "missing model: a message box" [expr {$dialog ne ""}]
check_true "missing model: the log says why" [string match "*no_such_model.vk*No such file*" [read_log]]
shot missing_model
press_message_box_ok $dialog
check "missing model: the program runs on with an empty model" [dict get [remote {vesk get_info}] objects] 0

# ---- huge and tiny zoom factors, and views squeezed to nothing ----
remote "vesk load_vk [list [file join $::src examples sample.vk]]"
set objects [dict get [remote {vesk get_info}] objects]
check_true "extremes: a model to draw" [expr {$objects > 0}]
# The scale overflows to infinity going in and underflows to zero going out.
for {set i 0} {$i < 250} {incr i} { remote {vesk zoom_in} }
settle
remote {vesk reset_views}
for {set i 0} {$i < 250} {incr i} { remote {vesk zoom_out} }
settle
lassign [view_rect 0] fx fy fw fh
exec xdotool mousemove [expr {$fx + $fw / 3}] [expr {$fy + $fh / 3}] click 1 keydown alt click 1 keyup alt
settle
remote {vesk fit_all}
remote {wm geometry . 40x30}
settle
remote {set viewsetting xyz}
settle
remote {set viewsetting all; wm geometry . {}}
remote {vesk reset_views}
settle
check "extremes: the program still answers with the model intact" [dict get [remote {vesk get_info}] objects] $objects
check "extremes: no fault reported" [string match "*xception*" [read_log]] 0

finish
