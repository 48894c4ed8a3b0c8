# A crash loses at most the last autosave interval of work: vesk autosaves
# unsaved changes on its own, is killed outright, and on the next start
# offers the work back; Recover gives the edited model exactly, under the
# model's name and unsaved, with the original file untouched.  Discard
# after a second crash starts from the file as saved.
source [file join [file dirname [info script]] gui_lib.tcl]

# Edits the model and waits for the autosave that follows by itself.
proc edit_and_wait_for_autosave {dx} {
    remote {set prefs_autosave_seconds 1}
    remote "vesk select_all; vesk move $dx 0 0"
    set edited [model_vertices]
    check_true "the autosave came by itself" [wait_remote {[string match "autosaved *" $::vesk::main::message]} 100]
    return $edited
}

proc kill_vesk {} {
    catch {close $::sock}
    exec kill -9 $::vesk_pid
    wait_until "the killed vesk to be gone" {[catch {exec kill -0 $::vesk_pid}]}
}

# Starts vesk again on the model and waits for the recovery question.
proc restart_to_question {model} {
    launch_vesk $model
    connect_vesk
    return [wait_remote {[winfo exists .recovery] && [winfo ismapped .recovery]} 100]
}

set good [file join $::scratch good.vk]
file copy [file join $::src examples sample.vk] $good
set original [read_bytes $good]

start_vesk $good
set edited [edit_and_wait_for_autosave 0.75]
check_true "the work was edited" [expr {$edited ne ""}]
kill_vesk

check "the question comes at the next start" [restart_to_question $good] 1
set detail [remote {.recovery.f.detail cget -text}]
check_true "it names the model and says what each choice does" \
    [string match "*good.vk were autosaved at*Recover*Open original*Discard*" $detail]
shot recovery_question
click_widget .recovery.f.buttons.recover
check "the question goes" [wait_remote {![winfo exists .recovery]}] 1
check "recovered: the edited model exactly" [model_vertices] $edited
check "recovered: under the model's name, unsaved" [remote {wm title .}] "VESK - good.vk *"
check "the original file untouched" [read_bytes $good] $original

# A second crash, and this time the work is discarded.
set edited [edit_and_wait_for_autosave 2]
kill_vesk
check "asked again after the second crash" [restart_to_question $good] 1
click_widget .recovery.f.buttons.discard
wait_remote {![winfo exists .recovery]}
check "discarded: the file as saved" [remote {wm title .}] "VESK - good.vk"
check_true "discarded: not the edited model" [expr {[model_vertices] ne $edited}]
check "discarded: nothing left to offer" [remote {vesk recovery_files}] ""
check "no fault reported" [string match "*xception*" [read_log]] 0

finish
