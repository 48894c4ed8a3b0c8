# harness.tcl - a small test harness for scripts run by vesksh.
#
# A test script sources this file, calls `check` and `check_match` for
# each expectation, and ends with `finish`, which prints the summary line
# "N passed, N failed" and exits non-zero when anything failed.
# The script's arguments are the tests source directory and a scratch
# directory that the script may fill (created here, emptied first).

source [file join [file dirname [info script]] .. files.tcl]

set ::passed 0
set ::failed 0
set ::tests_dir [lindex $argv 0]
set ::scratch [lindex $argv 1]
if {$::scratch eq ""} { set ::scratch [file join /tmp vesk_scratch_[pid]] }
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

proc check_match {name actual pattern} {
    if {[string match $pattern $actual]} {
        incr ::passed
    } else {
        incr ::failed
        puts "FAIL: $name\n    pattern: $pattern\n    actual:  $actual"
    }
}

# Runs body (in the caller's frame) with the given streams captured;
# returns what went to them, stream by stream.  Console output of the
# core goes straight to the process's file descriptors, so the capture
# redirects them through temporary files.
proc capture_streams {streams body} {
    set f [file join $::scratch capture_[incr ::capture_count]]
    set saved {}
    foreach stream $streams { lappend saved $stream [vesk_redirect_$stream $f.$stream] }
    set code [catch {uplevel 2 $body} result]
    # Restored in the opposite order: lreverse turns {stream token ...}
    # into {token stream ...}.
    foreach {token stream} [lreverse $saved] { vesk_restore_$stream $token }
    set text ""
    foreach stream $streams {
        set fd [open $f.$stream r]
        append text [read $fd]
        close $fd
    }
    if {$code == 1} { return -code error $result }
    return $text
}

# Runs body with standard output captured; returns what it printed.
proc capture_console {body} { return [capture_streams stdout $body] }

# The same with standard error too (where message boxes go without a
# display): what went to standard output, then what went to standard
# error.
proc capture_all {body} { return [capture_streams {stdout stderr} $body] }
interp alias {} quietly {} capture_all

# Every vertex of the model, for comparing models.
proc model_vertices {} {
    set all {}
    foreach id [vesk object_get_children [vesk get_world]] { lappend all [vesk object_get_vertices $id] }
    return $all
}

# An object's subtree as text: names, strings, centres, vertices and
# surfaces (numbers as the core prints them, exactly).
proc dump {id} {
    set text "[vesk object_get_name $id]|[vesk object_get_url $id]|[vesk object_get_data $id]|"
    append text "[vesk object_get_centre $id]|[vesk object_get_vertices $id]|[vesk object_get_surfaces $id]\n"
    foreach kid [vesk object_get_children $id] { append text [dump $kid] }
    return $text
}

proc finish {} {
    puts "$::passed passed, $::failed failed"
    exit [expr {$::failed > 0}]
}
