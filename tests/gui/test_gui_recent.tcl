# File > Open recent with real input: the files opened are listed newest
# first and kept in veskrecent.txt in the home directory; choosing one
# opens it; a listed file that no longer exists is said so in a box with
# the error icon, dropped from the list, and the model stays; a list file
# with junk in it gives what of it makes sense.  Files dropped on the
# window: a model file opens, anything else is refused with a message.
source [file join [file dirname [info script]] gui_lib.tcl]

foreach name {first second third} {
    file copy [file join $::src examples sample.vk] [file join $::scratch $name.vk]
}
set first [file join $::scratch first.vk]
set second [file join $::scratch second.vk]
set third [file join $::scratch third.vk]
set list_file [file join $::scratch home veskrecent.txt]

proc read_list {} {
    if {![file exists $::list_file]} { return {} }
    set fd [open $::list_file r]
    set text [read $fd]
    close $fd
    return [split [string trimright $text \n] \n]
}
proc title {} { remote {wm title .} }
# Opens File > Open recent with the keyboard and chooses entry n (from 1).
# With a box to come, nothing more is asked of vesk until it is answered.
proc choose_recent {n {box_follows 0}} {
    click_widget .mbar.file
    wait_until "the File menu to open" {[remote {winfo ismapped .mbar.file.menu}]}
    # New, Open..., Open recent.
    exec xdotool key Down Down Down Right
    wait_until "Open recent to open" {[remote {winfo ismapped .mbar.file.menu.recent}]}
    for {set i 1} {$i < $n} {incr i} { exec xdotool key Down }
    wait_until "entry $n of Open recent to be active" {[remote {.mbar.file.menu.recent index active}] == $n - 1}
    exec xdotool key Return
    if {!$box_follows} { wait_idle }
}
proc open_by_dialog {path} {
    main_window_keys ctrl+o
    choose_file_in_dialog $path
    wait_until "the file dialog to close" {![file_dialog_open]}
    wait_idle
}

start_vesk $first
remote {set ::vesk_no_questions 0}
check "start-up file listed" [read_list] [list $first]
open_by_dialog $second
open_by_dialog $third
check "title after opening the third" [title] "VESK - third.vk"
check "newest first" [read_list] [list $third $second $first]

# ---- the menu lists them; choosing one opens it ----
choose_recent 3
check "the first file opened again" [title] "VESK - first.vk"
check "it heads the list now" [read_list] [list $first $third $second]
remote {::vesk::ops::recent_fill .mbar.file.menu.recent}
check "the menu shows name and folder" [remote {.mbar.file.menu.recent entrycget 0 -label}] \
    "1 first.vk  \u2014  $::scratch"

# ---- a file that is gone ----
file delete $third
set objects [dict get [remote {vesk get_info}] objects]
choose_recent 2 1
check "a box with the error icon" [wait_remote {[winfo exists .__tk__messagebox.bitmap]}] 1
check "error icon" [remote {.__tk__messagebox.bitmap cget -image}] ::tk::icons::error
check_true "it says the file is gone" [string match "*no longer exists*" [answer_message_box ok]]
check "the model stays" [title] "VESK - first.vk"
check "the model's objects stay" [dict get [remote {vesk get_info}] objects] $objects
check "the gone file left the list" [read_list] [list $first $second]

# ---- a list file with junk in it ----
set fd [open $list_file w]
puts $fd "relative/path.vk\n\n$second\n\x01\x02 junk\n$second\n$first"
close $fd
remote {set ::vesk::ops::recent_loaded 0}
check "junk lines skipped, repeats once" [remote {::vesk::ops::recent_list}] [list $second $first]

# ---- dropped files ----
set notes [file join $::scratch notes.txt]
set fd [open $notes w]; puts $fd "not a model"; close $fd
# The drop runs from the event loop, as a drop would; its box comes later.
remote [list after 10 [list ::vesk::ops::drop_files [list $notes]]]
check_true "a dropped text file is refused" [string match "*Only VESK model files*" [answer_message_box ok]]
check "the model stays after the refused drop" [title] "VESK - first.vk"
remote [list ::vesk::ops::drop_files [list $notes $second]]
wait_idle
check "a dropped model file opens" [title] "VESK - second.vk"

finish
