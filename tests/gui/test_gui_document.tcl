# Open, New, Clear all, Revert, Open backup and Save driven as a user
# would, with keys, menus and the file dialog: a file that is not a model,
# a cut-short model and a missing file leave the model, its object count,
# the window title and the unsaved state as they were, and the next save
# writes the good model and keeps the previous file as name~.
source [file join [file dirname [info script]] gui_lib.tcl]

# What the user sees of the model and what a failed open must not change.
proc state {} {
    return [list [dict get [remote {vesk get_info}] objects] [remote {wm title .}] [remote {set unsaved_changes}]]
}

set good [file join $::scratch good.vk]
file copy [file join $::src examples sample.vk] $good
set original_bytes [read_bytes $good]
set junk [file join $::scratch notes.vk]
write_bytes $junk "Shopping list\n- eggs\n- bread\n"
set cut [file join $::scratch download.vk]
write_bytes $cut [string range $original_bytes 0 [expr {[string length $original_bytes] * 2 / 3}]]
set missing [file join $::scratch gone.vk]

start_vesk $good
# The test driver turns the questions off for the other tests; here they
# are the point.
remote {set ::vesk_no_questions 0}
set objects [dict get [remote {vesk get_info}] objects]
check_true "the sample has objects" [expr {$objects > 0}]
check "opened: title" [remote {wm title .}] "VESK - good.vk"
check "opened: nothing unsaved" [remote {set unsaved_changes}] 0

# An edit the user has not saved.
remote {vesk select_all; vesk move 0.5 0 0}
set edited [state]
set edited_vertices [model_vertices]
check "edit: title marks it" [lindex $edited 1] "VESK - good.vk *"

# ---- Open with unsaved changes asks; Cancel changes nothing ----
main_window_keys ctrl+o
check_true "open asks about the unsaved changes" [string match "*unsaved changes*" [answer_message_box cancel]]
check "cancel: no file dialog" [file_dialog_open] 0
check "cancel: nothing changed" [state] $edited

# ---- Open of a file that is not a model, a cut one, a missing one ----
foreach {name file expect} [list "not a model" $junk "*not a valid VESK file*" \
                                 "cut short" $cut "*ends before the model in it is complete*"] {
    main_window_keys ctrl+o
    check_true "$name: the question" [string match "*unsaved changes*" [answer_message_box no]]
    check "$name: file dialog" [choose_file_in_dialog $file] 1
    check_true "$name: says why" [string match $expect [answer_message_box ok]]
    check "$name: model, count, title and unsaved state kept" [state] $edited
    check "$name: vertices kept" [model_vertices] $edited_vertices
}
# The file dialog itself refuses a missing file; the user cancels.
main_window_keys ctrl+o
answer_message_box no
choose_file_in_dialog $missing
check_true "missing: the dialog says so" [string match "*does not exist*" [answer_message_box ok .__tk_filedialog]]
click_widget [remote {set ::tk::dialog::file::__tk_filedialog(cancelBtn)}]
wait_remote {![winfo ismapped .__tk_filedialog]}
check "missing: nothing changed" [state] $edited
# A file that goes missing after it was chosen (the core's own check).
remote_send [list vesk open_vk $missing]
check_true "missing after choosing: says so" [string match "*can't open file*" [answer_message_box ok]]
remote_answer
check "missing after choosing: nothing changed" [state] $edited

# ---- Save writes the good model and keeps the previous file ----
main_window_keys ctrl+s
wait_remote {!$unsaved_changes}
check "save: title unmarked" [remote {wm title .}] "VESK - good.vk"
check "save: the previous bytes kept as good.vk~" [read_bytes $good~] $original_bytes
set saved_bytes [read_bytes $good]
check_true "save: the file changed" [expr {$saved_bytes ne $original_bytes}]

# ---- Revert to saved ----
remote {vesk select_all; vesk move 0 3 0}
pick_menu file "Revert to saved"
check_true "revert asks" [string match "*Discard your changes*" [answer_message_box ok]]
wait_remote {!$unsaved_changes}
check "revert: back to the saved model" [model_vertices] $edited_vertices
check "revert: title" [remote {wm title .}] "VESK - good.vk"

# ---- Open backup ----
pick_menu file "Open backup"
wait_remote {$unsaved_changes}
check "backup: the model before the save" [dict get [remote {vesk get_info}] objects] $objects
set backup_vertices [model_vertices]
check_true "backup: differs from the saved model" [expr {$backup_vertices ne $edited_vertices}]
check "backup: under the model's name, unsaved" [remote {wm title .}] "VESK - good.vk *"

# ---- Open with unsaved changes: Yes saves first, then opens ----
set other [file join $::scratch other.vk]
file copy [file join $::src tests data vk model.vk] $other
main_window_keys ctrl+o
answer_message_box yes
wait_remote {!$unsaved_changes}
check "yes: the save kept the file it replaced" [read_bytes $good~] $saved_bytes
check "yes: file dialog" [choose_file_in_dialog $other] 1
# Its texture file is not there: the reader says so, and the model opens.
check_true "yes: the missing texture is reported" [string match "*gif load failed*" [answer_message_box ok]]
wait_remote {[string match "*other.vk" $current_file_name]}
check "yes: the other model opened" [state] [list 4 "VESK - other.vk" 0]

# ---- New, then Quit asks nothing ----
main_window_keys ctrl+n
wait_remote {[dict get [vesk get_info] objects] == 0}
check "new: empty, untitled, nothing unsaved" [state] [list 0 "VESK - untitled" 0]
pick_menu file "Revert to saved"
check_true "revert of a model never saved says so" [string match "*never been saved*" [answer_message_box ok]]

# ---- Clear all with unsaved changes asks the save question ----
remote [list vesk open_vk $good]
check "yes: the backup's model was saved" [model_vertices] $backup_vertices
remote {vesk select_all; vesk move 1 1 1}
pick_menu edit "Clear all"
check_true "clear all asks about the changes" [string match "*unsaved changes*" [answer_message_box cancel]]
check "clear all cancelled" [dict get [remote {vesk get_info}] objects] $objects
remote {set unsaved_changes 0}
remote {vesk new_model}

main_window_keys ctrl+q
check "quit after new asks nothing and exits" [wait_exit $::vesk_pid] 1
check "no fault reported" [string match "*xception*" [read_log]] 0

finish
