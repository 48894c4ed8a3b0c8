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

# Runs body with standard output captured; returns what it printed.
# Console output of the core goes straight to the process's stdout, so
# the capture redirects the file descriptor through a temporary file.
proc capture_console {body} {
    set f [file join $::scratch capture_[incr ::capture_count].txt]
    set saved [vesk_redirect_stdout $f]
    set code [catch {uplevel 1 $body} result]
    vesk_restore_stdout $saved
    set fd [open $f r]
    set text [read $fd]
    close $fd
    if {$code == 1} { return -code error $result }
    return $text
}

# Like capture_console, with standard error too (where message boxes go
# without a display): what went to standard output, then what went to
# standard error.
proc capture_all {body} {
    set f [file join $::scratch capture_[incr ::capture_count].txt]
    set saved_out [vesk_redirect_stdout $f]
    set saved_err [vesk_redirect_stderr $f.err]
    set code [catch {uplevel 1 $body} result]
    vesk_restore_stderr $saved_err
    vesk_restore_stdout $saved_out
    set text ""
    foreach part [list $f $f.err] {
        set fd [open $part r]
        append text [read $fd]
        close $fd
    }
    if {$code == 1} { return -code error $result }
    return $text
}

# Runs body with everything it prints captured (see capture_all); returns
# what it printed.
proc quietly {body} { return [capture_all [list uplevel 1 $body]] }

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
