# gui_lib.tcl - the library of the GUI tests.  A test runs in tclsh under
# run_with_xvfb.sh with the arguments: the vesk program, the source
# directory, a scratch directory and the fault plug-in.  It starts the
# real vesk with a fresh home directory whose preferences point the
# plug-in directory at tests/gui/plugins (which opens the scripting
# socket), drives it through the socket and with real X input (xdotool),
# and checks screenshots (ImageMagick).

source [file join [file dirname [info script]] .. files.tcl]

set ::vesk_bin [lindex $argv 0]
set ::src [lindex $argv 1]
set ::scratch [lindex $argv 2]
set ::fault_plugin [lindex $argv 3]
set ::passed 0
set ::failed 0
file delete -force $::scratch
file mkdir $::scratch

proc check {name actual expected} {
    if {$actual eq $expected} {
        incr ::passed
    } else {
        incr ::failed
        puts "FAIL: $name\n    expected: $expected\n    actual:   $actual"
    }
}

proc check_true {name condition} {
    check $name [expr {$condition ? 1 : 0}] 1
}

proc finish {} {
    catch {stop_vesk}
    puts "$::passed passed, $::failed failed"
    exit [expr {$::failed > 0}]
}

# Starts vesk on a model; returns when its scripting socket answers.
proc start_vesk {model} {
    launch_vesk $model
    connect_vesk
}

# Starts vesk on a model with a fresh home directory, without waiting.
proc launch_vesk {model} {
    set home [file join $::scratch home]
    file mkdir $home
    set ::port [expr {20000 + [pid] % 20000}]
    set fd [open [file join $home veskprefs.txt] w]
    puts $fd "VKPR 12"
    puts $fd "plugin_dir \"[file join $::src tests gui plugins]\""
    puts $fd "tcl_socket_port $::port"
    puts $fd "cpwin_width 1200"
    puts $fd "cpwin_height 900"
    close $fd
    set ::log [file join $::scratch vesk.log]
    set ::vesk_pid [exec env HOME=$home VESK_HOME=$::src sh -c "cd [list $::src] && exec [list $::vesk_bin] [list $model]" >& $::log &]
}

# Waits for the scripting socket of the vesk started last and opens it.
proc connect_vesk {} {
    set token_file [file join $::scratch home vesk-socket-token]
    set open {[file exists $token_file] && ![catch {socket 127.0.0.1 $::port} ::sock]}
    if {![poll $open 20000]} {
        puts [read_log]
        error "vesk did not open its scripting socket within 20 s"
    }
    fconfigure $::sock -buffering line -translation lf -encoding utf-8
    set fd [open $token_file r]
    set token [string trim [read $fd]]
    close $fd
    puts $::sock $token
    if {[gets $::sock] ne "ok"} { error "vesk refused the token" }
    wait_idle
}

# Starts vesk on a model with nothing in it.
proc start_vesk_empty {} {
    set model [file join $::scratch empty.vk]
    set fd [open $model w]
    puts $fd "VESKb\nOBJECT world\nkids 0"
    close $fd
    start_vesk $model
}

proc read_log {} {
    set fd [open $::log r]
    set text [read $fd]
    close $fd
    return $text
}

# Evaluates a script inside vesk and returns its result.
proc remote {script} {
    puts $::sock [string map [list \n " ; "] $script]
    set answer [gets $::sock]
    set answer [string map [list \\n \n \\r \r \\\\ \\] $answer]
    if {[string match "error: *" $answer]} { error [string range $answer 7 end] }
    return $answer
}

# Sends a script without waiting for its answer (for commands that open a
# modal dialog); collect the answer later with remote_answer.
proc remote_send {script} { puts $::sock $script }
proc remote_answer {} { return [gets $::sock] }

# ---- waiting for conditions ----
# The tests never sleep for a fixed time: each waits for the thing its
# next step depends on, looking again every poll_ms until a timeout.

set ::poll_ms 20

# Evaluates a condition (an expression) in the caller's scope until it is
# true or timeout_ms have passed; returns whether it came true.  Every
# wait below polls through here.
proc poll {condition timeout_ms} {
    set end [expr {[clock milliseconds] + $timeout_ms}]
    while {1} {
        if {[uplevel 1 [list expr $condition]]} { return 1 }
        if {[clock milliseconds] >= $end} { return 0 }
        after $::poll_ms
    }
}

# Waits for a condition the next steps need; a timeout is a failure that
# names what was waited for.  Returns whether the condition came true.
proc wait_until {description condition {timeout_ms 5000}} {
    if {[uplevel 1 [list poll $condition $timeout_ms]]} { return 1 }
    incr ::failed
    puts "FAIL: waited $timeout_ms ms for $description"
    return 0
}

# Waits until vesk has handled every event it has been sent: the round
# trip returns after vesk's "update", which first syncs with the X server
# (so the input xdotool sent, which the server took before xdotool
# exited, has arrived) and then handles all events and idle work,
# redraws included.  For the checks that something did NOT happen too.
# Not while vesk has work pending that opens a modal box (a dropped file
# is opened when idle): the box would wait for a user inside the round
# trip; wait for the box instead.
proc wait_idle {} {
    set answer [remote {update; update idletasks; return ok}]
    if {$answer ne "ok"} { error "vesk answered \"$answer\" to the idle round trip" }
}

# Waits for a script evaluated inside vesk to give the expected value;
# returns the last value it gave, for the caller to check.
proc wait_remote_value {script expected {timeout_ms 5000}} {
    set ::last_remote_value ""
    set got [poll {[set ::last_remote_value [remote $script]] eq $expected} $timeout_ms]
    if {!$got} { puts "TIMEOUT: waited $timeout_ms ms for `$script` to give \"$expected\", last \"$::last_remote_value\"" }
    return $::last_remote_value
}

# Waits for a window whose title matches an xdotool search pattern to be
# mapped; returns its id, or "" when none came.
proc wait_window_mapped {pattern {timeout_ms 5000}} {
    set found ""
    if {![poll {![catch {exec xdotool search --onlyvisible --name $pattern} found] && $found ne ""} $timeout_ms]} {
        puts "TIMEOUT: waited $timeout_ms ms for a window named \"$pattern\""
        return ""
    }
    return [lindex $found end]
}

# Waits for the windows whose title matches a pattern to be gone.
proc wait_window_gone {pattern {timeout_ms 5000}} {
    return [wait_until "the window \"$pattern\" to close" \
        {[catch {exec xdotool search --onlyvisible --name $pattern} found] || $found eq ""} $timeout_ms]
}

# Waits for a file to exist.
proc wait_file {path {timeout_ms 5000}} {
    return [wait_until "the file $path" {[file exists $path]} $timeout_ms]
}

# Waits for a view's pixels to differ from a region_signature taken
# before; returns the new signature (the old one after a timeout).
proc wait_pixel_change {view before {timeout_ms 5000}} {
    lassign [view_rect $view] x y w h
    set now $before
    set changed [poll {[set now [region_signature [shot wait_view$view] $x $y $w $h]] ne $before} $timeout_ms]
    if {!$changed} { puts "TIMEOUT: waited $timeout_ms ms for view $view to change" }
    return $now
}

proc stop_vesk {} {
    catch {remote_send {after 10 exit}}
    catch {close $::sock}
    if {![wait_exit $::vesk_pid 5000]} { catch {exec kill $::vesk_pid} }
}

# Whether a process is gone; waits up to timeout_ms for it to end.
proc wait_exit {pid {timeout_ms 5000}} {
    return [poll {[catch {exec kill -0 $pid}]} $timeout_ms]
}

# Redraws everything and returns once the views have drawn: the round trip
# of wait_idle comes back only after the redraws, which run when idle, and
# after the X server has taken their pictures.
proc settle {} {
    remote {update; vesk redraw_all; update}
    wait_idle
}

proc shot {name} {
    set file [file join $::scratch $name.png]
    exec import -window root $file
    return $file
}

# The colour of one screen pixel as a list of three bytes.
proc pixel {file x y} {
    set text [exec convert $file -format "%\[pixel:p{$x,$y}\]" info:]
    if {[regexp {\((\d+),(\d+),(\d+)} $text -> r g b]} { return [list $r $g $b] }
    if {$text eq "black"} { return {0 0 0} }
    if {$text eq "white"} { return {255 255 255} }
    if {$text eq "red"} { return {255 0 0} }
    if {$text eq "lime"} { return {0 255 0} }
    return $text
}

# Number of different colours in a rectangle of the screen.
proc colour_count {file x y w h} {
    return [exec convert $file -crop ${w}x${h}+${x}+${y} +repage -format %k info:]
}

# A rectangle's pixels, for comparing two screenshots.
proc region_signature {file x y w h} {
    return [exec convert $file -crop ${w}x${h}+${x}+${y} +repage -format %# info:]
}

# Screen position and size of a view's drawing window.
proc view_rect {view} {
    set path [lindex {.views.xyframe.f.win .views.zyframe.f.win .views.xzframe.f.win .views.xyzframe.f.win} $view]
    return [remote "list \[winfo rootx $path\] \[winfo rooty $path\] \[winfo width $path\] \[winfo height $path\]"]
}

# Whether a colour is within a few steps of another.
proc near_colour {actual expected} {
    if {[llength $actual] != 3} { return 0 }
    foreach a $actual e $expected {
        if {abs($a - $e) > 8} { return 0 }
    }
    return 1
}

# Checks that a screen pixel (or one of its eight neighbours, to allow for
# rasterisation) has the expected colour.
proc check_pixel {name file x y expected} {
    set seen {}
    foreach dy {0 -1 1} {
        foreach dx {0 -1 1} {
            set c [pixel $file [expr {$x + $dx}] [expr {$y + $dy}]]
            if {[near_colour $c $expected]} {
                incr ::passed
                return
            }
            lappend seen $c
        }
    }
    incr ::failed
    puts "FAIL: $name\n    expected colour $expected at ($x, $y) in $file\n    saw: $seen"
}

proc hex_colour {value} {
    return [list [expr {($value >> 16) & 255}] [expr {($value >> 8) & 255}] [expr {$value & 255}]]
}

# Waits up to five seconds for a "VESK Message" box; returns its window id,
# or "" when none came.
proc wait_for_message_box {} {
    return [wait_window_mapped "VESK Message"]
}

# Presses the OK button at the bottom of a message box with a real click
# and waits for the box to go.
proc press_message_box_ok {dialog} {
    set geometry [exec xdotool getwindowgeometry --shell $dialog]
    regexp {X=(\d+)} $geometry -> x
    regexp {Y=(\d+)} $geometry -> y
    regexp {WIDTH=(\d+)} $geometry -> w
    regexp {HEIGHT=(\d+)} $geometry -> h
    exec xdotool mousemove [expr {$x + $w / 2}] [expr {$y + $h - 20}] click 1
    wait_window_gone "VESK Message"
}

# Waits up to five seconds for a condition, an expression evaluated inside
# vesk; returns whether it came true.
proc wait_remote {condition {tenths 50}} {
    return [poll {[remote [list expr $condition]]} [expr {$tenths * 100}]]
}

# Clicks the middle of one of vesk's widgets with a real click.
proc click_widget {path {button 1}} {
    lassign [remote "list \[winfo rootx $path\] \[winfo rooty $path\] \[winfo width $path\] \[winfo height $path\]"] x y w h
    exec xdotool mousemove [expr {$x + $w / 2}] [expr {$y + $h / 2}] click $button
}

# Chooses a menu entry by its label with real clicks: the menu button of
# the menu bar, then the entry.
proc pick_menu {button label} {
    set menu .mbar.$button.menu
    click_widget .mbar.$button
    if {![wait_remote "\[winfo ismapped $menu\]"]} { error "menu $button did not open" }
    set index [remote [list $menu index $label]]
    lassign [remote "list \[winfo rootx $menu\] \[winfo rooty $menu\] \[$menu yposition $index\]"] x y top
    exec xdotool mousemove [expr {$x + 40}] [expr {$y + $top + 8}] click 1
}

# Clicks an entry of a posted pop-up menu by its label, moving the
# pointer onto it first as a hand would, and lets the command run.
proc click_popup_entry {menu label} {
    set index [remote [list $menu index $label]]
    lassign [remote "list \[winfo rootx $menu\] \[winfo rooty $menu\] \[$menu yposition $index\]"] x y top
    exec xdotool mousemove [expr {$x + 30}] [expr {$y + $top + 6}]
    wait_idle
    exec xdotool mousemove [expr {$x + 40}] [expr {$y + $top + 8}]
    wait_until "the entry \"$label\" of $menu to be active" {[remote [list $menu index active]] == $index}
    exec xdotool click 1
    wait_idle
}

# Waits for a message box of tk_messageBox (given its parent) and clicks
# one of its buttons (ok, cancel, yes or no).  Returns the message it
# showed, or "" when none came.
proc answer_message_box {button {parent .}} {
    set w [expr {$parent eq "." ? ".__tk__messagebox" : "$parent.__tk__messagebox"}]
    if {![wait_remote "\[winfo exists $w.$button\] && \[winfo ismapped $w.$button\]"]} { return "" }
    set text [remote [list $w.msg cget -text]]
    if {[remote [list winfo exists $w.dtl]]} { append text " " [remote [list $w.dtl cget -text]] }
    click_widget $w.$button
    wait_remote "!\[winfo exists $w\] || !\[winfo ismapped $w\]"
    return $text
}

# Types a path into the open-file dialog and presses Return, as a user
# can.  Returns 0 when no dialog came.
proc choose_file_in_dialog {path} {
    set w .__tk_filedialog
    if {![wait_remote "\[winfo exists $w\] && \[winfo ismapped $w\]"]} { return 0 }
    set entry [remote {set ::tk::dialog::file::__tk_filedialog(ent)}]
    click_widget $entry
    exec xdotool type --delay 2 $path
    exec xdotool key Return
    return 1
}

# Whether the open-file dialog is showing.
proc file_dialog_open {} {
    return [remote {expr {[winfo exists .__tk_filedialog] && [winfo ismapped .__tk_filedialog]}}]
}

# Presses keys with the pointer over the main window's status line, where
# the main window's own bindings take them.
proc main_window_keys {args} {
    lassign [remote {list [winfo rootx .status] [winfo rooty .status]}] x y
    exec xdotool mousemove [expr {$x + 5}] [expr {$y + 5}]
    wait_idle
    exec xdotool key {*}$args
}

# Every vertex of vesk's model, for comparing models.
proc model_vertices {} {
    return [remote {
        set all {}
        foreach id [vesk object_get_children [vesk get_world]] { lappend all [vesk object_get_vertices $id] }
        set all
    }]
}
