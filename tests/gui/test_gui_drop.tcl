# Files dropped on the main window.  With Debian's tkdnd the main window
# and the view area are drop targets for files (the X server sees the
# window as XDND-aware); the handler bound for the drop is run the way
# tkdnd runs it (its script with %D and %A filled in, at global level):
# it answers the action at once and then opens a model file through the
# same road as File > Open, unsaved-changes question included; a file
# that is not a model, or a damaged model file, leaves the model as it
# was, with a message.
source [file join [file dirname [info script]] gui_lib.tcl]

set first [file join $::scratch first.vk]
set second [file join $::scratch "second model.vk"]
file copy [file join $::src examples sample.vk] $first
file copy [file join $::src examples sample.vk] $second
set notes [file join $::scratch notes.txt]
set fd [open $notes w]; puts $fd "not a model"; close $fd
set damaged [file join $::scratch damaged.vk]
set fd [open $damaged w]; puts $fd "VESKb\nOBJECT world\nkids 7\nOBJECT"; close $fd

start_vesk $first
settle
# Questions and message boxes are shown, as to a user.
remote {set ::vesk_no_questions 0}
proc title {} { remote {wm title .} }
proc objects {} { dict get [remote {vesk get_info}] objects }
check "started on the first model" [title] "VESK - first.vk"
set count [objects]

# ---- registered as a drop target ----
check "tkdnd is there" [remote {expr {![catch {package require tkdnd}]}}] 1
check "the drop was enabled" [remote {set ::vesk::ops::drop_enabled}] 1
foreach w {. .views .views.xyzframe.f.win .views.xyframe.f.win} {
    # tkdnd keeps the X type that DND_Files stands for.
    check_true "$w takes files" [string match "*text/uri-list*" [remote [list bind $w <<DropTargetTypes>>]]]
    check "$w has the drop handler" [remote [list bind $w <<Drop:DND_Files>>]] {::vesk::ops::on_drop %D %A}
}
# tkdnd marks the toplevel's wrapper, the X parent of the main window.
regexp {Parent window id: (0x[0-9a-f]+)} [exec xwininfo -tree -id [remote {winfo id .}]] -> wrapper
check_true "the X server sees the main window as a drop target" \
    [string match "XdndAware(ATOM)*" [exec xprop -id $wrapper XdndAware]]

# Runs the handler of a window as tkdnd does on a drop; returns its answer.
proc drop_on {w files} {
    set script [remote [list bind $w <<Drop:DND_Files>>]]
    set script [string map [list %D [list $files] %A copy %W $w] $script]
    return [remote [list uplevel #0 $script]]
}

# ---- a model file ----
check "the handler answers the action at once" [drop_on . [list $second]] copy
check "the dropped model opens" [wait_remote {[wm title .] eq "VESK - second model.vk"}] 1
check "its objects" [objects] $count
check "nothing unsaved after opening" [remote {set ::unsaved_changes}] 0

# ---- not a model ----
set before [title]
drop_on .views.xyzframe.f.win [list $notes]
check_true "a text file is refused" [string match "*Only VESK model files (.vk) can be dropped here.*notes.txt*" \
    [answer_message_box ok]]
check "the model stays" [title] $before
check "its objects stay" [objects] $count
drop_on . [list $::scratch]
check_true "a folder is refused" [string match "*Only VESK model files*" [answer_message_box ok]]
check "the model stays after the folder" [title] $before

# ---- a damaged model file ----
# The handler opens the file when vesk is next idle; the load says what
# is wrong in a message box.
drop_on . [list $damaged]
check_true "a damaged model file: a box says why" [string match "*damaged.vk*not opened*" [answer_message_box ok]]
check "a damaged model file opens nothing" [title] $before
check "the objects are untouched" [objects] $count
check_true "and says so" [expr {[remote {set ::vesk::main::message}] ne ""}]

# ---- unsaved changes: the same question as File > Open ----
remote {vesk select_all; vesk move 1 0 0}
check "the model has unsaved changes" [remote {set ::unsaved_changes}] 1
set moved [remote {vesk object_get_vertices [lindex [vesk object_get_children [vesk get_world]] 0]}]
drop_on . [list $first]
check_true "the question comes" [string match "*unsaved changes*" [answer_message_box cancel]]
check "Cancel keeps the model" [title] "VESK - second model.vk *"
check "and its changes" [remote {vesk object_get_vertices [lindex [vesk object_get_children [vesk get_world]] 0]}] $moved
drop_on . [list $notes $first]
check_true "the question comes again" [string match "*unsaved changes*" [answer_message_box no]]
check "No opens the dropped model file, the first of the list that is one" \
    [wait_remote {[wm title .] eq "VESK - first.vk"}] 1

finish
