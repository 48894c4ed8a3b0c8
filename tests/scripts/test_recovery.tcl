# Unsaved work survives the program: an autosave left by a process killed
# outright is found by the next one and recovered exactly, with the
# original file untouched; SIGTERM keeps the unsaved work in an emergency
# file; work saved since, a damaged recovery file and a normal exit are
# handled.  The crashing programs are child shells sharing this test's
# home directory.
source [file join [lindex $argv 0] scripts harness.tcl]

set data [file join $::tests_dir data vk]
set vesksh [info nameofexecutable]

# Runs a script in a child shell; returns {exit-status output}.
proc run_child {script} {
    set file [file join $::scratch child_[incr ::children].tcl]
    set fd [open $file w]
    puts $fd $script
    close $fd
    set status 0
    if {[catch {exec $::vesksh $file 2>@1} out options]} {
        set code [dict get $options -errorcode]
        set status [expr {[lindex $code 0] in {CHILDSTATUS CHILDKILLED} ? [lindex $code 2] : [lindex $code 0]}]
    }
    return [list $status $out]
}

proc recovery_paths {} { return [lmap f [vesk recovery_files] {lindex $f 0}] }

set model [file join $::scratch model.vk]
file copy [file join $data model.vk] $model
set original [read_bytes $model]

# --- killed outright after an autosave ---
tcltest::test recovery-1.1 {an autosave left by a killed process is recovered exactly} -body {
    lassign [run_child [string map [list @MODEL@ $model] {
        vesk open_vk {@MODEL@}
        vesk select_all
        vesk move 1.5 -2 0.25
        set fd [open [file join [file dirname {@MODEL@}] edited.txt] w]
        set all {}
        foreach id [vesk object_get_children [vesk get_world]] { lappend all [vesk object_get_vertices $id] }
        puts $fd $all
        close $fd
        puts "AUTOSAVE [vesk autosave_now]"
        exec kill -9 [pid]
    }]] status out
    check_match "the child autosaved" $out "*AUTOSAVE 1*"
    check "the child was killed" $status SIGKILL
    set edited [string trim [read_bytes [file join $::scratch edited.txt]]]
    set found [vesk recovery_files]
    check "one piece of unsaved work found" [llength $found] 1
    lassign [lindex $found 0] path owner seconds kind
    check "it belongs to the model" $owner $model
    check "an autosave" $kind autosave
    check_match "named for the process" [file tail $path] "vesk-autosave-*.vk"
    set out [quietly { set r [vesk recover_file $path] }]
    check "recovered" $r 1
    check "the edited model exactly" [model_vertices] $edited
    check "under the model's name" $current_file_name $model
    check "and unsaved" $unsaved_changes 1
    check "the original file untouched" [read_bytes $model] $original
    check "nothing left to offer" [vesk recovery_files] ""
    mismatches
} -result {}
tcltest::test recovery-1.2 {the recovered work saves into the model's file} -body {
    quietly { vesk save_vk $model }
    check "saving it keeps it in the model's file" [expr {[read_bytes $model] ne $original}] 1
    quietly { vesk open_vk $model }
    check "the saved file is the recovered work" [model_vertices] $edited
    mismatches
} -result {}

# --- an untitled model ---
tcltest::test recovery-1.3 {untitled work is recovered without a file name} -body {
    run_child {
        vesk new_model
        vesk new_cube
        vesk autosave_now
        exec kill -9 [pid]
    }
    set found [vesk recovery_files]
    check "untitled work found" [llength $found] 1
    check "it has no model file" [lindex $found 0 1] ""
    quietly { set r [vesk recover_file [lindex $found 0 0]] }
    check "untitled recovered" [list $r [dict get [vesk get_info] objects] $current_file_name] {1 1 {}}
    quietly { vesk new_model }
    mismatches
} -result {}

# --- SIGTERM keeps unsaved work; with nothing unsaved it keeps nothing ---
tcltest::test recovery-2.1 {SIGTERM keeps the unsaved work in an emergency file} -body {
    lassign [run_child [string map [list @MODEL@ $model] {
        vesk open_vk {@MODEL@}
        vesk new_cube
        exec kill -TERM [pid]
        after 2000
        puts "STILL RUNNING"
    }]] status out
    check "SIGTERM: the child stopped" $status 143
    check_match "SIGTERM: it says where the work is" $out "*the unsaved work was kept in*vesk-emergency-*"
    set found [vesk recovery_files]
    check "SIGTERM: an emergency file" [lmap f $found {lindex $f 3}] emergency
    quietly { set r [vesk recover_file [lindex $found 0 0]] }
    check "SIGTERM: recovered with the added cube" [list $r [dict get [vesk get_info] objects]] {1 5}
    mismatches
} -result {}
tcltest::test recovery-2.2 {SIGTERM with nothing unsaved keeps nothing} -body {
    quietly { vesk open_vk $model }
    lassign [run_child [string map [list @MODEL@ $model] {
        vesk open_vk {@MODEL@}
        exec kill -TERM [pid]
        after 2000
    }]] status out
    check "SIGTERM with nothing unsaved: stops" $status 143
    check "SIGTERM with nothing unsaved: keeps nothing" [vesk recovery_files] ""
    mismatches
} -result {}

# --- work saved since is not offered, and is removed ---
tcltest::test recovery-3.1 {work saved since is not offered, and is removed} -body {
    run_child [string map [list @MODEL@ $model] {
        vesk open_vk {@MODEL@}
        vesk new_cube
        vesk autosave_now
        exec kill -9 [pid]
    }]
    after 20
    set fd [open $model a]
    puts -nonewline $fd ""
    close $fd
    file mtime $model [clock seconds]
    exec touch $model
    check "saved since: nothing offered" [vesk recovery_files] ""
    check "saved since: removed" [glob -nocomplain -directory $env(HOME) vesk-autosave-*] ""
    mismatches
} -result {}

# --- a damaged recovery file is refused; discarding ---
tcltest::test recovery-3.2 {a damaged recovery file is refused; discarding} -body {
    run_child [string map [list @MODEL@ $model] {
        vesk open_vk {@MODEL@}
        vesk new_cube
        vesk autosave_now
        exec kill -9 [pid]
    }]
    set path [lindex [vesk recovery_files] 0 0]
    set bytes [read_bytes $path]
    set fd [open $path wb]
    puts -nonewline $fd [string range $bytes 0 [expr {[string length $bytes] / 2}]]
    close $fd
    set before [model_vertices]
    set out [quietly { set r [vesk recover_file $path] }]
    check "damaged: refused" $r 0
    check_match "damaged: says so" $out "*ends before the model in it is complete*"
    check "damaged: the model is unchanged" [model_vertices] $before
    check "discard" [quietly { vesk discard_recovery_file $path }] ""
    check "discarded" [vesk recovery_files] ""
    check "not a recovery file" [vesk recover_file $model] 0
    check "nothing to discard" [vesk discard_recovery_file $model] 0
    mismatches
} -result {}

# --- a normal exit leaves nothing behind ---
tcltest::test recovery-3.3 {a normal exit leaves nothing behind} -body {
    run_child {
        vesk new_cube
        vesk autosave_now
        exit 0
    }
    check "normal exit: nothing left" [glob -nocomplain -directory $env(HOME) vesk-*] ""
    mismatches
} -result {}

finish
