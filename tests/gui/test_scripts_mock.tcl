# test_scripts_mock.tcl - the user-interface scripts in wish with the mock
# core (mock_core.tcl): they load, every internal command is reachable
# from a menu, the widgets the core addresses exist, and the procedures
# the core calls do what it expects.
#
# usage: wish test_scripts_mock.tcl TESTS_SOURCE_DIR SCRATCH_DIR
# (needs a display; run_with_xvfb.sh provides one).

set here [file dirname [file normalize [info script]]]
if {[llength $argv] == 0} { set argv [list [file dirname $here]] }
source [file join $here .. scripts harness.tcl]

source [file join $here mock_core.tcl]

# ---- loading ----

set loaded [::mock::start]
check "all six scripts load" $loaded 1
check "no script errors" $::mock::script_errors {}
if {!$loaded} {
    finish
}
::mock::after_scripts
update

# ---- plug-ins ----

# The core finds and loads them (tests/plugins checks that in vesksh).
check "plug-ins loaded by the core at start-up" [::mock::called plugin_load_all] 1



foreach ns {ops palette prefs view main plugins} {
    check "namespace ::vesk::$ns exists" [namespace exists ::vesk::$ns] 1
}
foreach proc {display_message sync_ui add_palette_button set_progress_bar set_undo_string
              edit_colour_ui popup_3d_menu set_select_mode_ui get_opentexturename get_savefilename
              add_import_menu_item add_export_menu_item add_tools_menu_item add_surface_menu_item} {
    check "global procedure $proc" [llength [info procs ::$proc]] 1
}

# ---- widget paths the core uses ----

foreach path {.mbar .mbar.file .mbar.edit .mbar.select .mbar.object .mbar.surface .mbar.view
              .mbar.tools .mbar.plugins .mbar.help} {
    check "$path is a ttk widget" [winfo class $path] [expr {$path eq ".mbar" ? "TFrame" : "TMenubutton"}]
    if {$path ne ".mbar"} {
        check "$path.menu is its menu" [$path cget -menu] $path.menu
        check "$path.menu exists" [winfo class $path.menu] Menu
    }
}
check "texture cascade" [winfo class .mbar.object.menu.texture] Menu
check "views frame" [winfo class .views] TFrame
foreach ident {xy zy xz xyz} {
    check "view $ident frame" [winfo exists .views.${ident}frame] 1
    check "view $ident label" [winfo exists .views.${ident}frame.label] 1
    check "view $ident drawing window is Togl" [winfo class .views.${ident}frame.f.win] Togl
    check "view $ident ident" [.views.${ident}frame.f.win cget -ident] $ident
}
check "3D view double-buffered" [.views.xyzframe.f.win cget -double] 1
check "status line coors" [.status.coors cget -textvariable] ::coors
check "status line size" [.status.size cget -textvariable] ::size
check "status progress bar" [winfo class .status.progress] TProgressbar
check "mode names initialised" [list $::select_mode_name $::drag_mode_name] {tree move}

# ---- menus ----

# Every entry of a menu and its cascades: {menu index}.
proc menu_entries {m} {
    set result {}
    set last [$m index end]
    if {$last eq "none"} { return {} }
    for {set i 0} {$i <= $last} {incr i} {
        set type [$m type $i]
        if {$type eq "cascade"} {
            lappend result {*}[menu_entries [$m entrycget $i -menu]]
        } elseif {$type ni {separator tearoff}} {
            lappend result [list $m $i]
        }
    }
    return $result
}

proc all_menu_entries {} {
    set result {}
    foreach b [winfo children .mbar] {
        if {[winfo class $b] eq "TMenubutton"} { lappend result {*}[menu_entries [$b cget -menu]] }
    }
    return $result
}

# The words of a menu entry's command (a script, not always a list).
proc command_words {m i} {
    return [regexp -all -inline {[A-Za-z0-9_:+.-]+} [$m entrycget $i -command]]
}

# The entry whose command holds all these words, or "".
proc find_entry {words} {
    foreach entry [all_menu_entries] {
        lassign $entry m i
        set command [command_words $m $i]
        set ok 1
        foreach word $words {
            if {[lsearch -exact $command $word] < 0} { set ok 0; break }
        }
        if {$ok} { return $entry }
    }
    return ""
}

proc builtin_command_names {} {
    set f [open [file join $::tests_dir .. src app command_table.cpp] r]
    set text [read $f]
    close $f
    # Rows are COMMAND_ROW("name", function, ...).
    return [regexp -all -inline -line {^\s*COMMAND_ROW\("([^"]+)",} $text]
}

set names {}
foreach {match name} [builtin_command_names] { lappend names $name }
check "142 built-in commands read from the table" [llength $names] 142
set commands_words {}
foreach entry [all_menu_entries] {
    lappend commands_words {*}[command_words {*}$entry]
}
# Built-ins whose work a menu reaches through an added command that does
# it more safely: merging a file reads it whole first (merge_vk).
set superseded {load_vk merge_vk}
set missing {}
foreach name $names {
    if {[dict exists $superseded $name]} { set name [dict get $superseded $name] }
    if {[lsearch -exact $commands_words $name] < 0} { lappend missing $name }
}
check "every built-in command is in a menu entry" $missing {}

# Keys shown as accelerators: {words of the command} accelerator.
foreach {words accelerator} {
    {vesk undo} u
    {vesk delete} Del
    {vesk duplicate} d
    {set_select_mode 0} {t (flat views)}
    {set_select_mode 1} o
    {set_select_mode 2} {v (flat views)}
    {vesk select_all} {a (flat views)}
    {vesk clear_selection} n
    {vesk hide_selected} h
    {vesk snaptogether} s
    {vesk zoom_in} z
    {vesk zoom_out} x
    {vesk fit_selected_all} Shift+F
    {vesk goto_selected_all} Shift+G
    {vesk reset_views} {Space (flat views)}
    {set_drag_mode 100} m
    {set_drag_mode 101} i
    {set_drag_mode 102} r
    {set_drag_mode 103} e
    {vesk set_spin_viewer} {1 (3D view)}
    {vesk set_walk_viewer} {2 (3D view)}
    {vesk clipboard_cut} Ctrl+X
    {vesk clipboard_copy} Ctrl+C
    {vesk clipboard_paste} Ctrl+V
    ::vesk::ops::new_model Ctrl+N
    ::vesk::ops::open_model Ctrl+O
    ::vesk::ops::save_model Ctrl+S
    ::vesk::ops::save_model_as Ctrl+Shift+S
    ::vesk::ops::quit Ctrl+Q
} {
    set entry [find_entry $words]
    if {$entry eq ""} {
        check "menu entry for '$words'" missing found
        continue
    }
    lassign $entry m i
    check "accelerator of '$words'" [$m entrycget $i -accelerator] $accelerator
}

foreach key {<Control-n> <Control-o> <Control-s> <Control-S> <Control-q> <Control-z>} {
    check "binding $key on ." [expr {[bind . $key] ne ""}] 1
}
set plain {}
foreach sequence [bind .] {
    if {[regexp {^<(Key-)?[a-zA-Z0-9]>$} $sequence]} { lappend plain $sequence }
}
check "no plain letter keys bound in Tk" $plain {}

# Menu entries reach the core with the right words.
::mock::reset_calls
lassign [find_entry {set_select_mode 2}] m i
$m invoke $i
check "vertex mode entry" [::mock::called {set_select_mode 2}] 1
check "vertex mode entry sets the radio variable" $::vesk::main::select_mode vertex
lassign [find_entry {vesk mirror 1}] m i
$m invoke $i
check "mirror Y entry" [::mock::called {mirror 1}] 1
lassign [find_entry {vesk set_surface_type 1}] m i
$m invoke $i
check "closed line type entry" [::mock::called {set_surface_type 1}] 1
lassign [find_entry {vesk surface_set_twosided 0}] m i
$m invoke $i
check "one-sided entry" [::mock::called {surface_set_twosided 0}] 1
.mbar.tools.menu invoke [.mbar.tools.menu index "Draw: Sphere"]
check "sphere draw mode" [::mock::called {set_draw_mode 8}] 1

# ---- palette ----

check "fifteen palette swatches" [llength [.palette.c find withtag swatch]] 15
add_palette_button #123456 15
check "add_palette_button adds a swatch" [llength [.palette.c find withtag swatch]] 16
check "swatch colour" [.palette.c itemcget entry15 -fill] #123456
add_palette_button #654321 15
check "same index recolours, adds nothing" [llength [.palette.c find withtag swatch]] 16
check "recoloured" [.palette.c itemcget entry15 -fill] #654321
add_palette_button {[exit 3]} 16
add_palette_button #ffffff {1 2}
check "bad palette messages add nothing" [llength [.palette.c find withtag swatch]] 16
for {set i 16} {$i < 255} {incr i} {
    add_palette_button [format #%02x%02x%02x $i $i $i] $i
}
update
check "a full palette scrolls" [winfo ismapped .palette.y] 1
check "255 swatches" [llength [.palette.c find withtag swatch]] 255
::mock::reset_calls
::vesk::palette::click 7
check "click gives the colour to the selection" [::mock::called {set_col 7}] 1
check "click makes it current" $::vesk::palette::current 7
::vesk::palette::edit 7
check "edit asks the core for the editor" [::mock::called {edit_palette_entry 7}] 1

# The colour editor: OK sends the fifteen values in the message's order.
::mock::reset_calls
set ::prefs_realtimecolour 0
edit_colour_ui 7 0.27 0.525 0.455  0.2 0.2 0.2  0 0 0  0.5 0.5 0.5  10 0
check "colour editor opens" [winfo exists .colour_editor] 1
set ::vesk::palette::ed(rgb.r) 1.0
set ::vesk::palette::ed(emi.g) 0.25
set ::vesk::palette::ed(spe.b) 0.75
::vesk::palette::editor_ok
check "colour editor closes on OK" [winfo exists .colour_editor] 0
check "OK sends set_palette_entry" [lindex $::mock::calls end] \
    {set_palette_entry 7 1.0000 0.5250 0.4550 0.2000 0.2000 0.2000 0.0000 0.2500 0.0000 0.5000 0.5000 0.7500 10.0000 0.0000}
check "OK recolours the swatch (truncating like the core)" [.palette.c itemcget entry7 -fill] #ff8574
::mock::reset_calls
edit_colour_ui 7 0.5 0.5 0.5  0.2 0.2 0.2  0 0 0  0.5 0.5 0.5  10 0
set ::vesk::palette::ed(rgb.r) 0.0
::vesk::palette::editor_cancel
check "cancel without live changes sends nothing" $::mock::calls {}
set ::prefs_realtimecolour 1
edit_colour_ui 7 0.5 0.5 0.5  0.2 0.2 0.2  0 0 0  0.5 0.5 0.5  10 0
set ::vesk::palette::ed(rgb.g) 1.0
::vesk::palette::slider_moved rgb.g
::vesk::palette::slider_moved rgb.g
update
check "live changes are sent once per idle moment" [llength $::mock::calls] 1
::vesk::palette::editor_cancel
check "cancel puts the opening values back" [lrange [lindex $::mock::calls end] 0 3] \
    {set_palette_entry 7 0.5000 0.5000}
::mock::reset_calls
edit_colour_ui 7 0.5 0.5
edit_colour_ui x 0 0 0 0 0 0 0 0 0 0 0 0 0 0
edit_colour_ui 7 0 0 0 0 0 0 0 0 0 0 0 0 0 {[exit 4]}
check "bad editor requests open nothing" [winfo exists .colour_editor] 0
::mock::reset_calls
.mbar.surface.menu invoke [.mbar.surface.menu index "Default material for colour"]
check "default material for the current colour" [lindex $::mock::calls end] \
    {set_palette_entry 7 0.4980 0.4980 0.4980 0.2 0.2 0.2 0 0 0 0.5 0.5 0.5 10 0}

# ---- status line and the procedures the core calls ----

set_select_mode_ui vertex
check "set_select_mode_ui vertex" $::vesk::main::select_mode vertex
set_select_mode_ui object
check "set_select_mode_ui object" $::vesk::main::select_mode object
set_select_mode_ui bogus
check "unknown select mode keeps the radio" $::vesk::main::select_mode object
check_match "unknown select mode is reported" $::vesk::main::message "*unknown select mode*"
set ::select_mode_name tree
set ::draw_mode_name "closed line"
set ::drag_mode_name rotate
check "core's mode names move the radios" \
    [list $::vesk::main::select_mode $::vesk::main::draw_mode $::vesk::main::drag_mode] {tree 2 102}
check_match "status shows the modes" $::vesk::main::modes_text "tree*closed line*rotate"

display_message {odd [text] with $dollar and "quotes"}
check "display_message shows text as it is" $::vesk::main::message {odd [text] with $dollar and "quotes"}

set_progress_bar 40
update
check "progress shown" [list [winfo ismapped .status.progress] [expr {[.status.progress cget -value] == 40}]] {1 1}
set_progress_bar 250
check "progress clamped" [expr {[.status.progress cget -value] == 100}] 1
set_progress_bar nonsense
update
check "bad progress resets and hides" [list [winfo ismapped .status.progress] [expr {[.status.progress cget -value] == 0}]] {0 1}
set_progress_bar 0
check "zero progress hidden" [winfo ismapped .status.progress] 0

set_undo_string "move"
check "undo label in Edit menu" [.mbar.edit.menu entrycget 0 -label] "Undo move"
check "undo label on the status line" $::vesk::main::undo_text "Undo: move"
set_undo_string ""
check "empty undo label" [.mbar.edit.menu entrycget 0 -label] "Undo"

set ::numselected 12
set ::numselectedobjects 3
set ::current_file_name /tmp/models/house.vk
set ::unsaved_changes 1
sync_ui
check "title with file and unsaved marker" [wm title .] "VESK - house.vk *"
check "selection counts" $::vesk::main::selection_text "Selected: 12 vertices, 3 objects"
set ::unsaved_changes 0
check "title follows unsaved_changes" [wm title .] "VESK - house.vk"
set ::current_file_name ""
sync_ui
check "untitled" [wm title .] "VESK - untitled"

# Menu items from plug-ins.
add_import_menu_item "Foo format..." {set ::imported foo}
add_export_menu_item "Bar format..." {set ::exported bar}
add_tools_menu_item "Frobnicate" {set ::tooled 1} "frobnicates the selection"
add_surface_menu_item "Smooth more" {set ::surfaced 1} ""
.mbar.file.menu.import invoke [.mbar.file.menu.import index "Foo format..."]
.mbar.file.menu.export invoke [.mbar.file.menu.export index "Bar format..."]
.mbar.tools.menu invoke [.mbar.tools.menu index "Frobnicate"]
.mbar.surface.menu invoke [.mbar.surface.menu index "Smooth more"]
check "plug-in menu items run their commands" [list $::imported $::exported $::tooled $::surfaced] {foo bar 1 1}
.mbar.tools.menu activate [.mbar.tools.menu index "Frobnicate"]
::vesk::main::menu_select .mbar.tools.menu
check "plug-in help on the status line" $::vesk::main::message "frobnicates the selection"

# The core's texture entries go into the cascade.
.mbar.object.menu.texture add separator
.mbar.object.menu.texture add command -label "brick.gif" -command "vesk set_texture 1"
check "texture entry added" [.mbar.object.menu.texture entrycget end -label] brick.gif

# ---- file dialogs ----

check "filter conversion" [::vesk::ops::filters_to_filetypes \
    "{ { Texture files} { .bmp .rgb .gif } } { { All files} { *} } "] \
    {{{Texture files} {.bmp .rgb .gif}} {{All files} *}}
check "unreadable filter gives all files" [::vesk::ops::filters_to_filetypes "{ { broken"] {{{All files} *}}
check "empty filter gives all files" [::vesk::ops::filters_to_filetypes ""] {{{All files} *}}

rename tk_getSaveFile real_tk_getSaveFile
proc tk_getSaveFile {args} {
    set ::save_dialog_args $args
    return $::save_dialog_answer
}
set ::save_dialog_answer /tmp/out.wrl
set chosen [get_savefilename "Save VRML" "{ { VRML files} { .wrl } } { { All files} { *} } "]
check "get_savefilename returns the choice" $chosen /tmp/out.wrl
set options [lrange $::save_dialog_args 0 end]
check "get_savefilename title" [dict get $options -title] "Save VRML"
check "get_savefilename filetypes" [dict get $options -filetypes] {{{VRML files} .wrl} {{All files} *}}
set ::save_dialog_answer ""
check "cancel gives empty" [get_savefilename "Save" "{ { All files} { *} } "] ""

# Save as: the file chosen becomes the current file only when the core saved.
::mock::reset_calls
set ::save_dialog_answer /tmp/new.vk
set ::mock::answers(save_vk) {return 0}
::vesk::ops::save_model_as
check "failed save keeps no file name" $::current_file_name ""
set ::mock::answers(save_vk) {return 1}
::vesk::ops::save_model_as
check "saved file becomes current" $::current_file_name /tmp/new.vk
check "save_vk called with the file" [lindex $::mock::calls end] {save_vk /tmp/new.vk}
::mock::reset_calls
::vesk::ops::save_model
check "Save uses the current file" [lindex $::mock::calls end] {save_vk /tmp/new.vk}
::mock::reset_calls
::vesk::ops::with_save_file "Export VRML" wrl write_vrml2
check "export writes the chosen file" [lindex $::mock::calls end] {write_vrml2 /tmp/new.vk}
rename tk_getSaveFile ""
rename real_tk_getSaveFile tk_getSaveFile
unset ::mock::answers(save_vk)

# Open hands the file to the core, which replaces the model and names the
# file only once it has read it whole; nothing is cleared beforehand.
rename tk_getOpenFile real_tk_getOpenFile
proc tk_getOpenFile {args} { return /tmp/house.vk }
set ::vesk_no_questions 1
set ::mock::answers(open_vk) {set ::current_file_name /tmp/house.vk; return 1}
::mock::reset_calls
set ::unsaved_changes 0
::vesk::ops::open_model
check "open asks the core to open the file" $::mock::calls {{open_vk /tmp/house.vk}}
check "opened file becomes current" $::current_file_name /tmp/house.vk
check_match "title names the opened file" [wm title .] "VESK - house.vk"
set ::current_file_name /tmp/old.vk
set ::mock::answers(open_vk) {return 0}
::vesk::ops::open_model
check "failed open keeps the old name" $::current_file_name /tmp/old.vk
::mock::reset_calls
::vesk::ops::merge_model
check "merge reads through merge_vk" $::mock::calls {{merge_vk /tmp/house.vk}}
rename tk_getOpenFile ""
rename real_tk_getOpenFile tk_getOpenFile
unset ::mock::answers(open_vk)

# Revert, open backup and clear all: each a core command.
::mock::reset_calls
::vesk::ops::revert_model
::vesk::ops::open_backup
::vesk::ops::discard_and_run "Clear all" "Delete the whole model?" clear_all
check "revert, backup and clear all" $::mock::calls {revert_vk open_backup_vk clear_all}
set ::vesk_no_questions 0
set ::unsaved_changes 0

# ---- layout ----

proc mapped_views {} {
    update
    set result {}
    foreach ident {xy zy xz xyz} {
        if {[winfo ismapped .views.${ident}frame.f.win]} { lappend result $ident }
    }
    return $result
}
check "all four views" [mapped_views] {xy zy xz xyz}
::mock::reset_calls
set ::viewsetting xy
check "only the front view" [mapped_views] {xy}
check "layout change redraws" [::mock::called redraw_all] 1
set ::viewsetting xyz
check "only the 3D view" [mapped_views] {xyz}
set wide [winfo width .views.xyzframe]
check "single view fills the area" [expr {$wide > [winfo width .views] * 0.9}] 1
set ::viewsetting XY
check "unknown layout falls back to all" [list $::viewsetting [mapped_views]] {all {xy zy xz xyz}}
set ::prefs_window_3d_width_percent 70
update
set ratio [expr {double([winfo width .views.xyzframe]) / [winfo width .views]}]
check "3D width follows the percentage" [expr {$ratio > 0.6 && $ratio < 0.8}] 1
set ::prefs_window_3d_width_percent 50
set ::prefs_show_window_labels 0
update
check "labels hidden" [winfo ismapped .views.xyframe.label] 0
set ::prefs_show_window_labels 1
update
check "labels shown" [winfo ismapped .views.xyframe.label] 1
check "label text from the preference" [.views.zyframe.label cget -textvariable] ::prefs_window_label_zy
::vesk::view::toggle_single zy
check "double-click label shows one view" [mapped_views] {zy}
::vesk::view::toggle_single zy
check "and back to all" [mapped_views] {xy zy xz xyz}

# The 3D menu pops up over the 3D view and reaches the core.
popup_3d_menu 20 30
update
check "3D pop-up menu posted" [winfo ismapped .views.popup3d] 1
.views.popup3d unpost
update
popup_3d_menu x {[exit 5]}
::mock::reset_calls
.views.popup3d invoke [.views.popup3d index "Walk mode"]
check "walk mode entry" [list [::mock::called set_walk_viewer] $::person_walk_vehicle] {1 1}
.views.popup3d invoke [.views.popup3d index "Reset view"]
check "reset in walk mode" [lindex $::mock::calls end] set_walk_viewer
.views.popup3d invoke [.views.popup3d index "Wireframe"]
check "wireframe entry" [list $::prefs_view3dmode [lindex $::mock::calls end]] {1 redraw_3d}
set ::person_walk_vehicle 0

# ---- dialogs asking for values ----

::mock::reset_calls
set w [::vesk::ops::ask_for move]
set ::vesk::ops::ask_value(move,0) 1
set ::vesk::ops::ask_value(move,1) -2.5
set ::vesk::ops::ask_value(move,2) abc
$w.f.buttons.ok invoke
check "bad number keeps the dialog" [winfo exists $w] 1
check "bad number calls nothing" $::mock::calls {}
check_match "bad number is reported" $::vesk::main::message "Z:*not a number*"
set ::vesk::ops::ask_value(move,2) " 3 "
$w.f.buttons.ok invoke
check "move sent" [lindex $::mock::calls end] {move 1 -2.5 3}
check "dialog closed" [winfo exists $w] 0

set ::mock::answers(get_selection_centre) {return "1.5 2 -3"}
set w [::vesk::ops::ask_for rotate_about]
check "rotate about defaults to the selection centre" \
    [list $::vesk::ops::ask_value(rotate_about,3) $::vesk::ops::ask_value(rotate_about,4) \
          $::vesk::ops::ask_value(rotate_about,5)] {1.5 2 -3}
destroy $w
set ::mock::answers(get_selection_size) {return "garbage"}
set w [::vesk::ops::ask_for size_to]
check "bad size answer falls back" $::vesk::ops::ask_value(size_to,0) 1
destroy $w

::mock::reset_calls
set w [::vesk::ops::ask_for select_by_name]
set ::vesk::ops::ask_value(select_by_name,0) {door [1] "left"}
$w.f.buttons.ok invoke
check "names are passed as one word" [lindex $::mock::calls end] [list select_by_name {door [1] "left"}]

set ::mock::answers(get_selected_objects) {return "42 43"}
set ::mock::answers(object_get_name) {return "roof"}
set w [::vesk::ops::ask_for set_current_object_name]
check "name dialog shows the current name" $::vesk::ops::ask_value(set_current_object_name,0) roof
destroy $w
::mock::reset_calls
set w [::vesk::ops::ask_object object_get_centre "Centre of object" 1]
check "object id defaults to the first selected" $::vesk::ops::ask_value(object_get_centre,0) 42
$w.f.buttons.ok invoke
check "object query sent" [lindex $::mock::calls end] {object_get_centre 42}
foreach child [winfo children .] {
    if {[string match .text* $child]} { destroy $child }
}

set ::prefs_fov 50
set w [::vesk::ops::ask_setting prefs_fov "Perspective" "Field of view" int do_perspective]
set ::vesk::ops::ask_value(do_perspective,0) 2.5
$w.f.buttons.ok invoke
check "setting dialog refuses a fraction for int" $::prefs_fov 50
set ::vesk::ops::ask_value(do_perspective,0) 70
::mock::reset_calls
$w.f.buttons.ok invoke
check "setting stored and core told" [list $::prefs_fov [lindex $::mock::calls end]] {70 do_perspective}

# ---- preferences dialog ----

set ::prefs_hole_percent 50
set ::prefs_grid 0.1
set w [::vesk::prefs::open_dialog]
check "preferences dialog opens" [winfo class $w.f.nb] TNotebook
check "preference pages" [llength [$w.f.nb tabs]] 6
set ::vesk::prefs::value(prefs_hole_percent) 75
set ::vesk::prefs::value(prefs_grid) 0.25
check "apply stores the values" [list [::vesk::prefs::apply] $::prefs_hole_percent $::prefs_grid] {1 75 0.25}
set ::vesk::prefs::value(prefs_hole_percent) 30
set ::vesk::prefs::value(prefs_grid) nonsense
check "a bad value applies nothing" [list [::vesk::prefs::apply] $::prefs_hole_percent $::prefs_grid] {0 75 0.25}
set ::vesk::prefs::value(prefs_grid) 0.5
set ::vesk::prefs::value(tcl_socket_port) 70000
check "out of range refused" [list [::vesk::prefs::apply] $::tcl_socket_port] {0 1655}
set ::vesk::prefs::value(tcl_socket_port) 1655
::vesk::prefs::cancel
check "cancel restores the opening values" [list $::prefs_hole_percent $::prefs_grid [winfo exists $w]] {50 0.1 0}
set w [::vesk::prefs::open_dialog]
set ::vesk::prefs::value(prefs_spike_factor) 0.4
::mock::reset_calls
::vesk::prefs::save
check "save settings applies and saves" [list $::prefs_spike_factor [::mock::called save_settings]] {0.4 1}
::vesk::prefs::cancel
check "cancel after save keeps the saved values" $::prefs_spike_factor 0.4

# ---- fonts and look ----

check "theme" [ttk::style theme use] clam
check "unavailable font leaves the default" [::vesk::ops::usable_font "{arial} 9 {bold}"] \
    [expr {[lsearch -nocase [font families] arial] >= 0 ? "{arial} 9 {bold}" : ""}]
check "empty font" [::vesk::ops::usable_font ""] ""
check "unbalanced font" [::vesk::ops::usable_font "{DejaVu"] ""

# ---- render, quit ----

set ::prefs_render_command {set ::rendered yes}
::vesk::ops::render
check "render evaluates the command" $::rendered yes
set ::prefs_render_command {error "no renderer"}
::vesk::ops::render
check_match "render failure reported" $::vesk::main::message "*no renderer*"

check "window close is quit" [wm protocol . WM_DELETE_WINDOW] ::vesk::ops::quit
rename exit real_exit
proc exit {args} { set ::exited 1 }
set ::vesk_no_questions 1
set ::unsaved_changes 1
set ::exited 0
::vesk::ops::quit
check "quit without questions exits" $::exited 1
::mock::reset_calls
::vesk::ops::new_model
check "new without questions starts a new model" [::mock::called new_model] 1
rename exit ""
rename real_exit exit
set ::unsaved_changes 0

# ---- scripting socket ----

set ::env(HOME) [file join $::scratch socket_home]
file mkdir $::env(HOME)
check "socket off by default" [list $::vesk::ops::socket_on $::vesk::ops::server] {0 {}}

# A free port: let the system pick one, then free it.
set probe [socket -server {apply {args {}}} -myaddr 127.0.0.1 0]
set port [lindex [fconfigure $probe -sockname] 2]
close $probe
set ::tcl_socket_port $port
set ::vesk::ops::socket_on 1
::vesk::ops::socket_toggle
check "socket on" [expr {$::vesk::ops::server ne ""}] 1
check "socket address reported" $::vesk::main::message "scripting socket listening on 127.0.0.1:$port"
check "socket on loopback only" [lindex [fconfigure $::vesk::ops::server -sockname] 0] 127.0.0.1

# Sends a line to the scripting socket and waits for the answer line, or
# for three seconds at most (the answer is then "timeout").
proc socket_ask {client line} {
    puts $client $line
    flush $client
    set ::answer ""
    set timer [after 3000 {set ::answer timeout}]
    fileevent $client readable [list apply {{client} {
        if {[gets $client line] >= 0} { set ::answer $line } elseif {[eof $client]} { set ::answer eof }
    }} $client]
    vwait ::answer
    after cancel $timer
    fileevent $client readable {}
    return $::answer
}
proc socket_connect {port} {
    set client [socket 127.0.0.1 $port]
    fconfigure $client -blocking 0 -buffering line
    return $client
}

# The token: made anew, in a file only the user can read.
set token_file [file join $::env(HOME) vesk-socket-token]
check "token file written" [file exists $token_file] 1
check "token file readable by the user alone" [file attributes $token_file -permissions] 00600
set fd [open $token_file r]
set token [string trim [read $fd]]
close $fd
check "the file holds the token" $token $::vesk::ops::socket_token
check_match "a long random token" $token {[0-9a-f]*}
check "32 hex digits" [string length $token] 32

# No token, a wrong token, a web page: refused.
set client [socket_connect $port]
check "a command before the token is refused" [socket_ask $client {vesk get_info}] \
    "error: not authorised - send the token of Tools > Scripting socket settings first"
check "and the connection closed" [socket_ask $client {vesk get_info}] eof
close $client
set client [socket_connect $port]
check "a wrong token is refused" [string match "error: not authorised*" [socket_ask $client [string reverse $token]]] 1
close $client
::mock::reset_calls
set client [socket_connect $port]
puts $client "POST /vesk HTTP/1.1"
check "an HTTP request is closed without an answer" [socket_ask $client "Host: localhost"] eof
close $client
set client [socket_connect $port]
check "an HTTP GET too" [socket_ask $client "GET / HTTP/1.0"] eof
close $client
check "nothing reached the core" [::mock::called get_info] 0

set client [socket_connect $port]
check "the token is answered ok" [socket_ask $client $token] ok
check "socket evaluates a command" [socket_ask $client {expr {6 * 7}}] 42
check "socket reports errors" [socket_ask $client {error "bad thing"}] "error: bad thing"
check "multi-line answer on one line" [socket_ask $client {return "a\nb"}] {a\nb}
puts $client "set ::multi \{"
check "incomplete command waits for more" [socket_ask $client "x y\}"] {\nx y}
::mock::reset_calls
check "socket reaches the core" [socket_ask $client {vesk get_info}] ""
check "core called through the socket" [::mock::called get_info] 1

# The safe interpreter: no programs, files, sockets or exit.
foreach {command pattern} {
    {exec ls} {error: invalid command name "exec"}
    {open /etc/passwd} {error: invalid command name "open"}
    {socket localhost 80} {error: invalid command name "socket"}
    {file delete x} {error: invalid command name "file"}
    {source x.tcl} {error: invalid command name "source"}
    {exit} {error: invalid command name "exit"}
    {load x.so} {error: invalid command name "load"}
} {
    check "safe: $command refused" [socket_ask $client $command] $pattern
}
::mock::reset_calls
check_match "safe: vesk execute refused" [socket_ask $client {vesk execute {rm -rf /tmp/x}}] \
    "error: \"execute\" is refused over the scripting socket*"
check_match "safe: vesk plugin_load refused" [socket_ask $client {vesk plugin_load /tmp/x.so}] "error: *refused*"
check_match "safe: vesk plugin_load_all refused" [socket_ask $client {vesk plugin_load_all}] "error: *refused*"
check "safe: neither reached the core" [expr {[::mock::called execute*] || [::mock::called plugin_load*]}] 0
check "safe: globals of the program out of reach" [socket_ask $client {info exists ::vesk::ops::socket_token}] 0
set ::vesk::ops::socket_time_limit 1
check_match "safe: a runaway command is stopped" [socket_ask $client {while 1 {}}] "error: time limit exceeded"
set ::vesk::ops::socket_time_limit 30
check "safe: still answering after it" [socket_ask $client {expr {1 + 1}}] 2

# Full access, chosen by the user: Tcl at global level, execute passes.
set ::vesk::ops::socket_full_access 1
check "full: global Tcl" [socket_ask $client {set ::vesk::ops::socket_on}] 1
::mock::reset_calls
socket_ask $client {vesk execute true}
check "full: execute reaches the core" [::mock::called {execute true}] 1
set ::vesk::ops::socket_full_access 0
close $client

set busy [socket -server {apply {args {}}} -myaddr 127.0.0.1 0]
set busy_port [lindex [fconfigure $busy -sockname] 2]
::vesk::ops::socket_stop
check "socket off" [list $::vesk::ops::socket_on $::vesk::ops::server $::vesk::main::message] \
    {0 {} {scripting socket off}}
check "socket off: the token is gone" [list [file exists $token_file] $::vesk::ops::socket_token] {0 {}}
set ::tcl_socket_port $busy_port
set ::vesk::ops::socket_on 1
::vesk::ops::socket_toggle
check "port in use leaves it off" $::vesk::ops::socket_on 0
check_match "port in use reported" $::vesk::main::message "*port $busy_port is already in use*"
close $busy
set ::tcl_socket_port nonsense
set ::vesk::ops::socket_on 1
::vesk::ops::socket_toggle
check "bad port leaves it off" $::vesk::ops::socket_on 0

# ---- console, text windows, about ----

::vesk::ops::console
if {[winfo exists .console]} {
    set ::vesk::ops::console_line {set ::from_console 5}
    ::vesk::ops::console_eval
    check "console evaluates" $::from_console 5
    destroy .console
}
set w [::vesk::ops::show_text "List" "line 1\nline 2"]
check "text window read-only" [$w.f.t cget -state] disabled
destroy $w
::mock::reset_calls
.mbar.help.menu invoke 0
check "about tells the core" [::mock::called menu_about] 1
check_match "about shows the version" [.about.f.name cget -text] "VESK v2.0"
destroy .about

finish
