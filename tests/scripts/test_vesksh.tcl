# The headless shell: the vesk command, the linked variables, the palette
# and preference commands, object queries on the empty model, and the
# shell's own exit status and standard input.
source [file join [lindex $argv 0] scripts harness.tcl]

# --- the vesk command never raises a Tcl error ---
tcltest::test vesksh-1.1 {the vesk command never raises a Tcl error} -body {
    check "no words" [catch {vesk} r] 0
    check "no words result" $r ""
    check "unknown command result" [vesk no_such_command] "command not found"
    check_match "wrong count result" [vesk move 1 2] "incorrect number of args for move (should be 3, got 2) - usage:*<float x> <float y> <float z>"
    check_match "too many words" [capture_console {vesk a b c d e f g h i j k l m n o p q r s t u}] "*max number of command parameters exceeded*"
    mismatches
} -result {}
# A command of the table that this build does not have yet, if any is left.
tcltest::test vesksh-1.2 {a command not available yet says so} -body {
    foreach stub {import_dxf import_lightwave} {
        if {![vesk command_available $stub]} {
            check_match "stub says not available" [capture_console {vesk $stub x.vec}] "*command '$stub' is not available yet*"
            break
        }
    }
    mismatches
} -result {}

# --- command listing ---
tcltest::test vesksh-2.1 {the command listing: added, plug-ins', then the table} -body {
    set listing [vesk list]
    set lines [split [string trimright $listing "\n"] "\n"]
    # The program's added commands come first, then those of the plug-ins it
    # loaded at start (the plug-ins built beside it, in name order), then the 142
    # rows of the built-in table.
    set added [list new_model open_vk merge_vk revert_vk open_backup_vk autosave_now recovery_files \
                   recover_file discard_recovery_file redo undo_history command_available fit_3d pick_3d pick_3d_query \
                   undo_to plugin_load_all]
    check "added commands first" [lmap line [lrange $lines 0 [llength $added]-1] {lindex $line 0}] $added
    set plugin_commands [lmap line [lrange $lines [llength $added] end-142] {lindex $line 0}]
    check "then the plug-ins' commands" $plugin_commands {import_model export_model import_model_dialog export_model_dialog model_statistics}
    set builtins [lrange $lines end-141 end]
    check "first row" [lindex $builtins 0] "add_text <string text> "
    check "group row" [lindex $builtins 30] "group group group selected objects"
    check "last row" [lindex $builtins end] "zoom_out  "
    check "added command usage" [lindex $lines 1] "open_vk <filename> open a VESK model file in place of the model, once it has been read whole"
    mismatches
} -result {}

# --- world and object queries ---
tcltest::test vesksh-3.1 {world and object queries on the empty model} -body {
    set w [vesk get_world]
    check_match "world handle is a number" $w {[1-9]*}
    check "world handle stable" [vesk get_world] $w
    check "world has no children" [vesk object_get_children $w] ""
    check "world name" [vesk object_get_name $w] ""
    check "world vertices" [vesk object_get_vertices $w] ""
    check "world centre" [vesk object_get_centre $w] "0 0 0"
    check "world not hidden" [vesk object_is_hidden $w] 0
    check_match "unknown handle message" [capture_console {set r [vesk object_get_name 999999]}] "*no object with id 999999*"
    check "unknown handle result" $r ""
    check "negative handle" [vesk object_get_children -5] ""
    check "text handle" [vesk object_get_url abc] ""
    check "current object none" [vesk set_current_object_name fred] ""
    set info [vesk get_info]
    check "info objects" [dict get $info objects] 0
    check "info palette" [dict get $info palette] 15
    mismatches
} -result {}

# --- objects built by loading a model, read back through their ids ---
tcltest::test vesksh-3.2 {objects of a loaded model read back through their ids} -body {
    vesk load_vk [file join $::tests_dir data vk model.vk]
    set table [lindex [vesk object_get_children $w] 0]
    check "group name with quotes and backslash" [vesk object_get_name $table] {table "oak" \ set}
    check "url" [vesk object_get_url $table] {http://example.com/table?x="1"}
    check "data keeps its line breaks" [vesk object_get_data $table] "Four legs.\n  A top.\n"
    set top [lindex [vesk object_get_children $table] 0]
    check "vertices as x y z triples" [llength [vesk object_get_vertices $top]] 4
    check "first surface: kind mat shading twosided, then i u v" [lindex [vesk object_get_surfaces $top] 0] \
        [list 0 [lindex [lindex [vesk object_get_surfaces $top] 0] 1] 1 1 {0 0 0} {1 1 0} {2 1 1} {3 0 1}]
    check "hide" [list [vesk object_hide $table] [vesk object_is_hidden $table] [vesk object_is_hidden $top]] [list "" 1 1]
    check "hidden flag linked" $objects_are_hidden 1
    vesk object_unhide $table
    check "unhide" [vesk object_is_hidden $top] 0
    vesk clear_selection
    vesk object_select $table
    vesk set_current_object_name "renamed \[not evaluated\]"
    check "current object renamed" [vesk object_get_name $table] {renamed [not evaluated]}
    vesk set_current_object_url ""
    check "url cleared" [vesk object_get_url $table] ""
    check "info counts the loaded objects" [dict get [vesk get_info] objects] 4
    check "unsaved flag after an edit" $unsaved_changes 1
    vesk clear_selection
    check_match "stale id after the objects are gone" [capture_console {vesk object_get_name 987654}] "*no object with id 987654*"
    mismatches
} -result {}

# --- palette commands ---
tcltest::test vesksh-4.1 {palette commands and the colour editor} -body {
    set buttons {}
    proc add_palette_button {colour index} { lappend ::buttons [list $colour $index] }
    set size [dict get [vesk get_info] palette]
    check "new entry returns count" [vesk new_palette_entry 7] [expr {$size + 1}]
    check "button for new entry" [lindex $buttons 0] [list #458674 $size]
    check "palette grew" [dict get [vesk get_info] palette] [expr {$size + 1}]
    set edited {}
    proc edit_colour_ui {args} { set ::edited $args }
    vesk set_palette_entry $size 1 0.5 0 0.1 0.2 0.3 0.4 0.5 0.6 0.7 0.8 0.9 42 0.25
    vesk edit_palette_entry $size
    check_numbers "editor shows the entry" [lrange $edited 0 3] [list $size 1 0.5 0]
    check_numbers "editor emissive before specular" [lrange $edited 7 12] {0.4 0.5 0.6 0.7 0.8 0.9}
    check_numbers "editor scalars" [lrange $edited 13 14] {42 0.25}
    check_match "edit of a missing entry" [capture_console {vesk edit_palette_entry 300}] "*no palette entry 300*"
    mismatches
} -result {}

# --- linked variables share storage with the preferences ---
tcltest::test vesksh-5.1 {linked variables share storage with the preferences} -body {
    check_true "the grid starts as a positive step" [expr {$prefs_grid > 0}]
    set prefs_grid 0.25
    check "version string" $vesk_version_string "VESK v2.0"
    check "version number" $vesk_version_number 2.0
    check "read-only count" [catch {set numselected 5}] 1
    check "viewsetting" $viewsetting all
    check "selected count" $numselected 0
    mismatches
} -result {}

# --- save_settings writes the preferences file in HOME ---
tcltest::test vesksh-5.2 {save_settings writes the preferences file in HOME} -body {
    set prefs_file [file join $env(HOME) veskprefs.txt]
    file delete $prefs_file
    set out [capture_console {vesk save_settings}]
    check "prefs file written" [file exists $prefs_file] 1
    set fd [open $prefs_file]; set text [read $fd]; close $fd
    # The next shell with the same home starts with the grid saved.
    set child [file join $::scratch read_grid.tcl]
    write_bytes $child {puts "GRID $prefs_grid"}
    regexp {GRID (\S+)} [exec [info nameofexecutable] $child 2>@1] -> grid
    check_numbers "saved grid read back by the next shell" $grid 0.25
    check_match "saved magic" $text "VKPR 12\n*"
    mismatches
} -result {}

# --- execute runs a shell command in the background ---
tcltest::test vesksh-6.1 {execute runs a shell command in the background} -body {
    set marker [file join $::scratch executed.txt]
    vesk execute "echo ran > [list $marker]"
    for {set i 0} {$i < 100 && ![file exists $marker]} {incr i} { after 50 }
    check "execute ran the command" [file exists $marker] 1
    mismatches
} -result {}

# --- the shell's exit status and standard input ---
tcltest::test vesksh-7.1 {the shell's exit status, arguments and standard input} -body {
    set shell [info nameofexecutable]
    set script [file join $::scratch exit3.tcl]
    set fd [open $script w]; puts $fd "exit 3"; close $fd
    check "exit status of a script" [catch {exec $shell $script} msg opts] 1
    check "exit code 3" [lindex [dict get $opts -errorcode] 2] 3
    set script [file join $::scratch error.tcl]
    set fd [open $script w]; puts $fd "error boom"; close $fd
    check "script error exits 1" [catch {exec $shell $script 2>@1} msg opts] 1
    check "argv as tclsh" [exec $shell [file join $::tests_dir scripts print_argv.tcl] a "b c" 2>/dev/null] "2 {a {b c}}"
    check_match "reads stdin" [exec $shell << "puts \[vesk get_world\]\n" 2>/dev/null] "*1*"
    mismatches
} -result {}

finish
