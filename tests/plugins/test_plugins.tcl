# Plug-ins in vesksh: the sample plug-ins loaded at start; the SDK plug-in
# (built against the installed header and vesk.pc) with its command, menu
# entry, surface filter and texture loader; a fault in each of the last
# three reported with the model intact; loading a directory in name order
# with every kind of failing plug-in, each reported without stopping the
# rest; and the preference getters' messages.
#
# usage: vesksh test_plugins.tcl TESTS_DIR SCRATCH SDK_PLUGIN BAD_PLUGIN_DIR
source [file join [lindex $argv 0] scripts harness.tcl]
set sdk_plugin [lindex $argv 2]
set bad_dir [lindex $argv 3]

proc write_file {path text} {
    set f [open $path w]
    puts -nonewline $f $text
    close $f
}

# The interface's menu procedures record what plug-ins add.
set ::menu_items {}
proc add_tools_menu_item {label command help} { lappend ::menu_items [list tools $label $command] }
proc add_surface_menu_item {label command help} { lappend ::menu_items [list surface $label $command] }

# A model: one object with a bent quadrilateral, a flat one, a triangle
# and a line.
set model [file join $::scratch plugins.vk]
write_file $model {VESKb
OBJECT world
kids 1
OBJECT poly
name "shapes"
numvert 9
0 0 0
1 0 0
1 1 0.5
0 1 0
2 0 0
3 0 0
3 1 0
2 1 0
4 0 0
numsurf 4
SURF 0
refs 4
0 0 0
1 0 0
2 0 0
3 0 0
SURF 0
refs 4
4 0 0
5 0 0
6 0 0
7 0 0
SURF 0
refs 3
4 0 0
5 0 0
8 0 0
SURF 2
refs 2
0 0 0
8 0 0
kids 0
}
capture_console { vesk load_vk $model }
# The object's id is asked each time: an undo puts back copies.
proc surfaces {} { vesk object_get_surfaces [lindex [vesk object_get_children [vesk get_world]] 0] }
proc materials {} { lmap s [surfaces] { lindex $s 1 } }

# ---- the sample plug-ins, loaded at start from beside the program ----

check "model statistics command" [capture_all { set ::stats [vesk model_statistics] }] \
    "Model statistics\n\nobjects: 1 (groups 0, lights 0, textured 0)\nvertices: 9\nsurfaces: 4\n  polygons: 3 (triangles 1)\n  closed lines: 0\n  lines: 1\n"
check "model statistics result" $::stats \
    "objects 1 groups 0 lights 0 textured 0 vertices 9 surfaces 4 polygons 3 triangles 1 closed_lines 0 lines 1"

# The planarity filter is the first filter registered: the sample
# plug-ins load in name order and only it registers a filter.
set before [materials]
vesk select_all
capture_console { vesk execute_surface_filter surface_filter_1 }
set after [materials]
check "only the bent quadrilateral is marked" [lrange $after 1 end] [lrange $before 1 end]
check_true "the bent quadrilateral has the marking colour" [expr {[lindex $after 0] != [lindex $before 0]}]
capture_console { vesk undo }
check "undo takes the marking back" [materials] $before

# Its edge cases: a corner off the plane by far less than the tolerance,
# a polygon with no area, a closed line and a triangle stay as they are;
# a bent pentagon is marked.
capture_all { vesk new_model }
set edges [file join $::scratch edges.vk]
write_file $edges {VESKb
OBJECT world
kids 1
OBJECT poly
name "edges"
numvert 14
0 0 0
1 0 0
1 1 0.000001
0 1 0
0 0 1
1 0 1
2 0 1
3 0 1
0 0 2
1 0 2
1 1 2.5
0 1 2
0 2 2
0.5 3 3
numsurf 5
SURF 0
refs 4
0 0 0
1 0 0
2 0 0
3 0 0
SURF 0
refs 4
4 0 0
5 0 0
6 0 0
7 0 0
SURF 1
refs 4
8 0 0
9 0 0
10 0 0
11 0 0
SURF 0
refs 3
8 0 0
9 0 0
10 0 0
SURF 0
refs 5
8 0 0
9 0 0
10 0 0
12 0 0
13 0 0
kids 0
}
capture_console { vesk load_vk $edges }
set unmarked [materials]
vesk select_all
capture_console { vesk execute_surface_filter surface_filter_1 }
set marked [materials]
check "only the bent pentagon is marked" [lrange $marked 0 3] [lrange $unmarked 0 3]
check_true "the bent pentagon is" [expr {[lindex $marked 4] != [lindex $unmarked 4]}]
capture_all { vesk new_model }
capture_console { vesk load_vk $model }

# ---- the SDK plug-in ----

check "SDK plug-in loads" [capture_all { set ::ok [vesk plugin_load $sdk_plugin] }] ""
check "SDK plug-in started" $::ok 1
check "its command" [vesk sdk_echo hello 21] "hello:42"
check_match "its command's template is checked" [capture_console { vesk sdk_echo hello }] \
    "*sdk_echo (should be 2, got 1)*<text> <int n>*"
check_match "model read through the accessors" [vesk sdk_world_summary] "children 1 total 1 lights 0 palette * walk 0"
set tools [lsearch -inline -index 1 $::menu_items "SDK plug-in entry"]
check "its Tools menu entry" $tools {tools {SDK plug-in entry} {vesk sdk_menu_hit}}
capture_console { eval [lindex $tools 2] }
check "the menu entry runs its command" $::sdk_menu_hits 1
set entry [lsearch -inline -index 1 $::menu_items "SDK reverse"]
check_match "its surface menu entry" $entry {surface {SDK reverse} {vesk execute_surface_filter surface_filter_*}}

set before [surfaces]
vesk select_all
capture_console { eval [lindex $entry 2] }
set reversed [surfaces]
check "the filter ran on every surface" [lmap s $reversed { lindex $s 1 }] {5 5 5 5}
check "the filter reversed the winding" [lrange [lindex $reversed 2] 4 end] [lreverse [lrange [lindex $before 2] 4 end]]
capture_console { vesk undo }
check "undo of the filter" [surfaces] $before

set image [file join $::scratch red.sdkimg]
write_file $image "sdkimg 4 2 255 0 0\n"
set id [capture_console { set ::tex [vesk add_new_texture $image] }]
check_true "its texture loader reads its file" [expr {$::tex > 0}]
write_file [file join $::scratch bad.sdkimg] "sdkimg 0 0 0 0 0\n"
check_match "its loader's refusal" [capture_all { set ::tex2 [vesk add_new_texture [file join $::scratch bad.sdkimg]] }] \
    "*bad.sdkimg is not an sdkimg file*"
check "a refused image gives no texture" $::tex2 0

# ---- faults inside the plug-in: reported, the program goes on ----

set model_before [dump [vesk get_world]]
set text [capture_all { set ::r [vesk sdk_fault] }]
check_match "a fault in a command is reported" $text \
    "*Exception occured whilst executing internal command 'sdk_fault'*Exception code 11*"
check "model intact after the command's fault" [dump [vesk get_world]] $model_before

vesk sdk_arm_filter_fault 1
vesk select_all
set text [capture_all { eval [lindex $entry 2] }]
check "a fault in a surface filter is reported" $text \
    "SDK reverse...\nThe surface filter 'SDK reverse' crashed (signal 11) and was stopped.\nUndo takes back what it changed.\n"
check "model intact after the filter's fault" [dump [vesk get_world]] $model_before
vesk sdk_arm_filter_fault 0
vesk clear_selection

write_file [file join $::scratch crash.sdkimg] "crash\n"
set text [capture_all { vesk add_new_texture [file join $::scratch crash.sdkimg] }]
check_match "a fault in a texture loader is reported" $text \
    "*The texture loader for .sdkimg files crashed reading [file join $::scratch crash.sdkimg] (signal 11).\n*"
check "model intact after the loader's fault" [dump [vesk get_world]] $model_before
check "the program goes on: its command" [vesk sdk_echo again 1] "again:2"
check "the program goes on: a texture" [capture_console { set ::tex3 [vesk add_new_texture $image] }] ""
check "the same file gives the same texture" $::tex3 $::tex
check_true "the program goes on: the model" [string is integer -strict [vesk get_world]]

# ---- loading one file that is not a working plug-in ----

proc load_report {file} { capture_all { vesk plugin_load $file } }
check "a missing file" [load_report [file join $::scratch none.so]] \
    "can't load plugin [file join $::scratch none.so]: no such file\n"
check "a directory" [load_report $::scratch] "can't load plugin $::scratch: not a file\n"
write_file [file join $::scratch text.so] "this is not a library\n"
check_match "a text file named .so" [load_report [file join $::scratch text.so]] \
    "can't load plugin [file join $::scratch text.so]: *"
check "the result says it failed" [vesk plugin_load [file join $::scratch text.so]] 0
check "no entry point" [load_report [file join $bad_dir bad_plugin_no_entry.so]] \
    "plugin [file join $bad_dir bad_plugin_no_entry.so] has no vesk_plugin_init function\n"
check "a failing init" [load_report [file join $bad_dir bad_plugin_fails.so]] \
    "plugin [file join $bad_dir bad_plugin_fails.so] failed to start\n"
check "a fault during init (a message box)" [load_report [file join $bad_dir bad_plugin_faults.so]] \
    "The plugin [file join $bad_dir bad_plugin_faults.so] crashed while starting (signal 11).\n"
check "a taken command name" [load_report [file join $bad_dir bad_plugin_taken.so]] \
    "plugin [file join $bad_dir bad_plugin_taken.so]: the command name 'bad_taken' is already taken; the command added first keeps the name\n"
check "the command added first answers" [vesk bad_taken] "first"
check "a library loaded again" [load_report $sdk_plugin] "plugin $sdk_plugin is already loaded\n"
check "no file named" [load_report ""] "can't load plugin: no file named\n"
write_file [file join $::scratch broken.tcl] "error {plug-in trouble}\n"
check "a broken Tcl plug-in" [load_report [file join $::scratch broken.tcl]] \
    "plug-in [file join $::scratch broken.tcl] failed: plug-in trouble\n"
check "the program still answers" [vesk sdk_echo x 0] "x:0"

# ---- a directory of plug-ins: name order, every failure reported ----

set dir [file join $::scratch plugdir]
file mkdir $dir
write_file [file join $dir a_first.tcl] {lappend ::plugin_order a_first.tcl}
write_file [file join $dir c_broken.tcl] {error "plug-in trouble"}
write_file [file join $dir e_text.so] "not a library\n"
write_file [file join $dir h_last.tcl] {lappend ::plugin_order h_last.tcl}
write_file [file join $dir readme.txt] "not a plug-in\n"
foreach {name variant} {b_fails.so fails d_no_entry.so no_entry f_faults.so faults g_taken.so taken} {
    file copy [file join $bad_dir bad_plugin_$variant.so] [file join $dir $name]
}
set ::plugin_order {}
set ::prefs_plugin_dir $dir
set text [capture_all { set ::tried [vesk plugin_load_all] }]
check "every plug-in tried, in name order, failures not stopping the rest" $::plugin_order \
    {a_first.tcl fails faults taken h_last.tcl}
check_true "the count includes the directory's eight" [expr {$::tried >= 8}]
foreach pattern [list "*[file join $dir b_fails.so] failed to start*" \
                      "*[file join $dir c_broken.tcl] failed: plug-in trouble*" \
                      "*[file join $dir d_no_entry.so] has no vesk_plugin_init function*" \
                      "*can't load plugin [file join $dir e_text.so]:*" \
                      "*[file join $dir f_faults.so] crashed while starting*" \
                      "*[file join $dir g_taken.so]: the command name 'bad_taken' is already taken*"] {
    check_match "reported: $pattern" $text $pattern
}
check "model intact after all that" [dump [vesk get_world]] $model_before

# The $VESK_HOME form of the preference.
set ::prefs_plugin_dir {$VESK_HOME/none}
check_true "a missing plug-in directory is no failure" [string is integer -strict [vesk plugin_load_all]]

# A plug-in's command of a built-in command's name hides the built-in.
check "a built-in command's name" [load_report [file join $bad_dir bad_plugin_hides.so]] \
    "plugin [file join $bad_dir bad_plugin_hides.so]: the command name 'zoom_out' is already taken; the plug-in's command hides the built-in one\n"
check "the plug-in's command answers" [vesk zoom_out] "second"

# ---- the preference getters' messages, as a plug-in sees them ----

foreach {getter number value} {int 0 -1 boolean 1 -1 double 2 -1 hex 3 ffffffff string 4 (none)} {
    check "the $getter getter of a missing preference" \
        [capture_all { set ::value [vesk sdk_prefs nope $number] }] "vk_prefs_get_$getter: nope not found in preferences\n"
    check "its answer" $::value $value
}
check "the key getter reports in the string getter's words" [capture_all { set ::value [vesk sdk_prefs nope 5] }] \
    "vk_prefs_get_string: nope not found in preferences\n"
check "its answer" $::value (none)
check "a setting of the asked type" [capture_all { set ::value [vesk sdk_prefs extrude_segments 0] }] ""
check "its value" $::value 1
check "a setting of another type" [capture_all { set ::value [vesk sdk_prefs extrude_segments 4] }] \
    "vk_prefs_get_string: pref extrude_segments is not type 'string' (actually type 0)\n"
check "its answer" $::value (none)
finish
