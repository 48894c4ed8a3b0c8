# harness.tcl - the test harness for scripts run by vesksh, on tcltest.
#
# A test script sources this file and writes its cases with
# tcltest::test (an id such as "dxf-1.3", a short description, -setup
# and -cleanup where a case needs a fresh model, -constraints for the
# optional checker tools); it ends with `finish`, which prints tcltest's
# summary and exits non-zero when any case failed, so that ctest sees it.
#
# Inside a case, `check`, `check_true` and `check_match` record what
# differed instead of failing at once; the case body ends with
# `mismatches`, which returns the list of differences (empty when all
# held), and the case expects -result {}.  Called outside any case, each
# of them is a tcltest case of its own, named after its name, so scripts
# written as a plain list of checks report through tcltest too.
# `check_numbers` compares numbers within a tolerance, for values that
# are computed rather than copied; `tool_constraint` defines a constraint
# that holds where a checker program is installed.
# The script's arguments are the tests source directory and a scratch
# directory that the script may fill (created here, emptied first).

source [file join [file dirname [info script]] .. files.tcl]

set ::tests_dir [lindex $argv 0]
set ::scratch [lindex $argv 1]
if {$::scratch eq ""} { set ::scratch [file join /tmp vesk_scratch_[pid]] }
file delete -force $::scratch
file mkdir $::scratch

package require tcltest 2.5
# A failing case prints its id, description, body, and the result it
# gave against the one expected; passing and skipped cases print one
# line each, so the log shows what ran.  Configuring here (more than one
# option) also stops tcltest from reading the script's own arguments as
# its options.  Its temporary directory, whose new files it reports as
# left behind, is one the scripts do not write in.
file mkdir [file join $::scratch tcltest]
tcltest::configure -verbose {body pass skip error} -singleproc 1 \
    -tmpdir [file join $::scratch tcltest]

# A constraint for an optional program: true when it is on the PATH.
proc tool_constraint {name program} {
    tcltest::testConstraint $name [expr {[auto_execok $program] ne ""}]
}
tool_constraint convert convert
tool_constraint povray povray
tool_constraint assimp assimp
tool_constraint view3dscene view3dscene
tool_constraint tovrmlx3d tovrmlx3d
tool_constraint python3 python3

# The case being run (depth, as a case may call a helper that runs
# checks) and what its checks found different so far.
set ::case_depth 0
set ::case_mismatches {}
set ::checks_run 0
set ::checks_at_enter 0
set ::skipped_at_enter 0
set ::unreported 0
proc harness_case_enter {args} {
    if {[incr ::case_depth] == 1} {
        set ::case_mismatches {}
        set ::checks_at_enter $::checks_run
        set ::skipped_at_enter $tcltest::numTests(Skipped)
    }
}
proc harness_case_leave {cmd code result op} {
    if {[incr ::case_depth -1] > 0} { return }
    # A case that compares its own result is one check; a skipped case
    # checks nothing.
    if {$::checks_run == $::checks_at_enter && $tcltest::numTests(Skipped) == $::skipped_at_enter} {
        incr ::checks_run
    }
    # Differences the case body did not hand back with `mismatches` would
    # otherwise be lost: they fail the run all the same.
    if {[llength $::case_mismatches]} {
        incr ::unreported
        puts "==== [lindex $cmd 1] left unreported differences:\n[join $::case_mismatches \n]"
        set ::case_mismatches {}
    }
}
trace add execution ::tcltest::test enter harness_case_enter
trace add execution ::tcltest::test leave harness_case_leave

# The differences found by the case's checks so far, one line each;
# empty when every check held.  Clears them.
proc mismatches {} {
    set found [join $::case_mismatches \n]
    set ::case_mismatches {}
    return $found
}

proc harness_value {value} { return $value }

# One expectation: recorded into the enclosing case, or run as a case of
# its own when there is none.
proc harness_expect {name actual expected match} {
    if {$::case_depth == 0} {
        tcltest::test $name {} -body [list harness_value $actual] -match $match -result $expected
        return
    }
    incr ::checks_run
    set held [expr {$match eq "glob" ? [string match $expected $actual] : $actual eq $expected}]
    if {!$held} {
        set word [expr {$match eq "glob" ? "pattern" : "expected"}]
        lappend ::case_mismatches "$name: $word {$expected}, actual {$actual}"
    }
}

proc check {name actual expected} { harness_expect $name $actual $expected exact }
proc check_true {name condition} { harness_expect $name [expr {$condition ? 1 : 0}] 1 exact }
proc check_match {name actual pattern} { harness_expect $name $actual $pattern glob }

# Numbers compared as numbers, each within tolerance of the one expected,
# so that a check says what a value is, not how the code prints it.
proc check_numbers {name actual expected {tolerance 1e-9}} {
    set held [expr {[llength $actual] == [llength $expected]}]
    foreach a $actual e $expected {
        if {!$held} break
        set held [expr {[string is double -strict $a] && abs($a - $e) <= $tolerance}]
    }
    harness_expect $name [expr {$held ? $expected : $actual}] $expected exact
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

# ---- the model as the importers' tests read it ----

# Runs a vesk command, keeping its console output in ::output and its
# result in ::last_result; returns the result.
proc run {args} {
    set ::output [capture_console { set ::last_result [vesk {*}$args] }]
    return $::last_result
}

proc reset_model {} { quietly { vesk new_model } }

proc kids {id} { return [vesk object_get_children $id] }

proc names {id} { return [lmap k [kids $id] { vesk object_get_name $k }] }

proc child_named {id name} {
    foreach k [kids $id] {
        if {[vesk object_get_name $k] eq $name} { return $k }
    }
    return ""
}

# Each surface of an object as "kind corners".
proc shapes {id} {
    return [lmap s [vesk object_get_surfaces $id] { list [lindex $s 0] [expr {[llength $s] - 4}] }]
}

# Prints tcltest's summary and leaves with the run's verdict.
proc finish {} {
    set failed [expr {$tcltest::numTests(Failed) + $::unreported}]
    puts "$::checks_run checks in $tcltest::numTests(Total) cases"
    # cleanupTests would exit (with success) when Tk is loaded; the
    # verdict is ours to give.
    tcltest::testConstraint interactive 1
    tcltest::cleanupTests
    exit [expr {$failed > 0}]
}
