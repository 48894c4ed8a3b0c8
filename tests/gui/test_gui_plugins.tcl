# Plug-ins in the modeller, driven with real clicks: the sample plug-ins
# are loaded at start-up and the Tools menu's "Model statistics" shows the
# counts in a message box; the plug-in built against the installed header
# (VESK_SDK_PLUGIN) adds a Tools entry that runs its command, a Surface
# entry that runs its filter, and a texture loader; a fault in its filter
# and in its loader is shown in a message box and the program goes on
# with the model intact.
source [file join [file dirname [info script]] gui_lib.tcl]

set sdk_plugin [expr {[info exists ::env(VESK_SDK_PLUGIN)] ? $::env(VESK_SDK_PLUGIN) : ""}]
if {$sdk_plugin eq "" || ![file exists $sdk_plugin]} {
    puts "FAIL: the SDK plug-in was not built (VESK_SDK_PLUGIN '$sdk_plugin')"
    exit 1
}

# A quadrilateral and a triangle.
set model [file join $::scratch shapes.vk]
set fd [open $model w]
puts $fd {VESKb
OBJECT world
kids 1
OBJECT poly
name "shapes"
numvert 5
0 0 0
1 0 0
1 1 0
0 1 0
2 0 0
numsurf 2
SURF 0
refs 4
0 0 0
1 0 0
2 0 0
3 0 0
SURF 0
refs 3
1 0 0
4 0 0
2 0 0
kids 0}
close $fd
start_vesk $model

proc surfaces {} { remote {vesk object_get_surfaces [lindex [vesk object_get_children [vesk get_world]] 0]} }
proc materials {} { lmap s [surfaces] { lindex $s 1 } }

# ---- a sample plug-in's menu entry, loaded at start-up ----

check_true "the sample plug-in's Tools entry is there" \
    [expr {[remote {.mbar.tools.menu index "Model statistics"}] ne "none"}]
pick_menu tools "Model statistics"
set dialog [wait_for_message_box]
check_true "model statistics shown in a message box" [expr {$dialog ne ""}]
if {$dialog ne ""} { press_message_box_ok $dialog }
check_true "the message box is gone" [wait_remote {![winfo exists .__tk__messagebox] || ![winfo ismapped .__tk__messagebox]}]

# ---- the SDK plug-in ----

check "the SDK plug-in loads" [remote [list vesk plugin_load $sdk_plugin]] 1
pick_menu tools "SDK plug-in entry"
check_true "its Tools entry runs its command" [wait_remote {[info exists ::sdk_menu_hits] && $::sdk_menu_hits == 1}]

set before [surfaces]
remote {vesk select_all}
pick_menu surface "SDK reverse"
check_true "its Surface entry runs its filter" [wait_remote {[lmap s [vesk object_get_surfaces [lindex [vesk object_get_children [vesk get_world]] 0]] { lindex $s 1 }] eq {5 5}}]
remote {vesk undo}
check "undo of the filter" [surfaces] $before

set image [file join $::scratch green.sdkimg]
set fd [open $image w]
puts $fd "sdkimg 8 8 0 255 0"
close $fd
check_true "its texture loader" [expr {[remote [list vesk add_new_texture $image]] > 0}]

# ---- faults inside the plug-in ----

set model_before [model_vertices]
set surfaces_before [surfaces]
remote {vesk sdk_arm_filter_fault 1}
remote {vesk select_all}
pick_menu surface "SDK reverse"
set dialog [wait_for_message_box]
check_true "a fault in the filter is shown in a message box" [expr {$dialog ne ""}]
if {$dialog ne ""} { press_message_box_ok $dialog }
remote {vesk sdk_arm_filter_fault 0}
check "model intact after the filter's fault" [list [model_vertices] [surfaces]] [list $model_before $surfaces_before]

set crash [file join $::scratch crash.sdkimg]
set fd [open $crash w]
puts $fd "crash"
close $fd
remote_send [list vesk add_new_texture $crash]
set dialog [wait_for_message_box]
check_true "a fault in the loader is shown in a message box" [expr {$dialog ne ""}]
if {$dialog ne ""} { press_message_box_ok $dialog }
remote_answer
check "model intact after the loader's fault" [list [model_vertices] [surfaces]] [list $model_before $surfaces_before]
check "the program goes on" [remote {vesk sdk_echo again 2}] "again:4"

finish
