# A soak of random commands: for about forty seconds, random commands of
# the whole table with random arguments (good and bad) on random models,
# the model checked after every command (vesk_check_tree); at the end the
# model is saved, opened again and compared.  The seed and the number of
# commands are printed; VESK_SOAK_SEED with VESK_SOAK_COMMANDS repeats a
# run exactly, VESK_SOAK_SECONDS changes its length.  Everything runs in the scratch directory, on
# copies of the test models, so that no file a command writes lands
# anywhere else.
source [file join [lindex $argv 0] scripts harness.tcl]

set seed [expr {[info exists env(VESK_SOAK_SEED)] ? $env(VESK_SOAK_SEED) : [clock clicks] & 0x7fffffff}]
set seconds [expr {[info exists env(VESK_SOAK_SECONDS)] ? $env(VESK_SOAK_SECONDS) : 40}]
set most [expr {[info exists env(VESK_SOAK_COMMANDS)] ? $env(VESK_SOAK_COMMANDS) : 1000000000}]
puts "soak seed $seed, $seconds seconds"
expr {srand($seed)}
set models {}
foreach model [glob -directory [file join $::tests_dir data vk] *.vk] {
    file copy $model $::scratch
    lappend models [file join $::scratch [file tail $model]]
}
cd $::scratch

# Commands that would reach outside the test: other programs and code.
set excluded {execute plugin_load plugin_load_all}

proc pick {list} { return [lindex $list [expr {int(rand() * [llength $list])}]] }

proc random_int {} {
    return [pick [list 0 1 2 3 -1 [expr {int(rand() * 20)}] 99999 -2147483648 abc ""]]
}

proc random_float {} {
    return [pick [list 0 1 -1 0.5 2 90 -45 [expr {rand() * 20 - 10}] [expr {rand() * 2}] 1e-3 x ""]]
}

# Names and urls longer than a line of the model file or with line breaks
# are cut or changed by a save (and the user is told so): the soak keeps
# to those a save keeps.
proc random_string {} {
    return [pick [list "" word "two words" [file join $::scratch out.vk] [file join $::scratch out.wrl] \
        [pick $::models] [file join $::scratch missing.vk] "\"quoted\"" "back\\slash" [string repeat x 200]]]
}

# The argument kinds of each command from its usage text.
proc argument_kinds {usage} {
    set kinds {}
    foreach {all word} [regexp -all -inline {<([^>]*)>} $usage] {
        if {[string match int* $word]} {
            lappend kinds int
        } elseif {[string match float* $word]} {
            lappend kinds float
        } else {
            lappend kinds string
        }
    }
    return $kinds
}

set commands {}
foreach line [split [string trimright [vesk list] \n] \n] {
    set name [lindex [split $line " "] 0]
    if {$name in $excluded} continue
    set usage [string range $line [string length $name] end]
    lappend commands $name [argument_kinds $usage]
}

proc random_words {kinds} {
    set words {}
    foreach kind $kinds {
        switch $kind {
            int { lappend words [random_int] }
            float { lappend words [random_float] }
            default { lappend words [random_string] }
        }
    }
    # Now and then a word too many or too few.
    if {rand() < 0.03} { lappend words 1 }
    if {rand() < 0.03 && [llength $words] > 0} { set words [lrange $words 1 end] }
    return $words
}

proc fresh_model {} {
    vesk new_model
    vesk load_vk [pick $::models]
    vesk new_cube
}

# Everything of the model that a save keeps, for the final comparison.
# Smooth shading and two-sidedness are kept as on or off (a flag bit of
# the file), whatever number set them.
proc saved_part {id} {
    set text "[vesk object_get_name $id]|[vesk object_get_url $id]|[vesk object_get_data $id]|"
    set surfaces [lmap s [vesk object_get_surfaces $id] {
        lreplace $s 2 3 [expr {[lindex $s 2] != 0}] [expr {[lindex $s 3] != 0}]
    }]
    append text "[vesk object_get_vertices $id]|$surfaces\n"
    foreach kid [vesk object_get_children $id] { append text [saved_part $kid] }
    return $text
}

tcltest::test soak-1.1 {random commands, good and bad, leave the model whole} -body {
    set count 0
    set broken ""
    set out [capture_all {
        fresh_model
        set until [expr {[clock milliseconds] + 1000 * $seconds}]
        while {[clock milliseconds] < $until && $count < $most} {
            set name [pick [dict keys $commands]]
            if {rand() < 0.1} { set name [pick {undo select_all clear_selection new_cube set_select_mode}] }
            set words [random_words [dict get $commands $name]]
            if {$name eq "set_select_mode" && rand() < 0.8} { set words [list [expr {int(rand() * 3)}]] }
            vesk $name {*}$words
            incr count
            lassign [vesk_check_tree] problems report
            if {$problems != 0} {
                set broken "after command $count: vesk $name $words\n$report"
                break
            }
            # Keep the model small enough that every command stays quick.
            if {[dict get [vesk get_info] vertices] > 30000} { fresh_model }
        }
    }]
    check "no command broke the model (seed $seed)" $broken ""
    check_true "hundreds of commands ran" [expr {$count > 200}]
    puts "soak: $count commands (VESK_SOAK_SEED=$seed VESK_SOAK_COMMANDS=$count repeats this run)"
    mismatches
} -result {}

# The model as it ended, saved and opened again.
tcltest::test soak-1.2 {the model the commands left saves and opens again the same} -body {
    set file [file join $::scratch soak_end.vk]
    capture_all { set saved [vesk save_vk $file] }
    set before [saved_part [vesk get_world]]
    capture_all { set opened [vesk open_vk $file] }
    check "saved (seed $seed)" $saved 1
    check "opened again (seed $seed)" $opened 1
    set after [saved_part [vesk get_world]]
    check "the same model after a save and open (seed $seed)" [expr {$after eq $before}] 1
    if {$after ne $before} {
        foreach a [split $before \n] b [split $after \n] {
            if {$a eq $b} continue
            foreach x [split $a |] y [split $b |] {
                if {$x eq $y} continue
                foreach p $x q $y {
                    if {$p ne $q} { puts "first difference in [lindex [split $a |] 0]:\n  saved:  $p\n  opened: $q"; break }
                }
                break
            }
            break
        }
    }
    mismatches
} -result {}

finish
