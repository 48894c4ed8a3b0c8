# The model as a document, from a script: open_vk, merge_vk, new_model,
# revert_vk and open_backup_vk, and the backup a save keeps.  A file that
# is not a model, is cut short anywhere, is missing or is from a newer
# version leaves the model, its palette, its file name, its unsaved state
# and its undo history as they were, and a following save writes the good
# model.
source [file join [lindex $argv 0] scripts harness.tcl]

set data [file join $::tests_dir data vk]

# Everything a failed open must leave alone.
proc state {} {
    set w [vesk get_world]
    return [list [dump $w] [vesk get_info] $::current_file_name $::unsaved_changes $::undo_count]
}

# --- a good model opens, with nothing unsaved and no history ---
tcltest::test document-1.1 {a good model opens, with nothing unsaved and no history} -body {
    set good [file join $::scratch good.vk]
    file copy [file join $data model.vk] $good
    set out [quietly { set r [vesk open_vk $good] }]
    check "open good" $r 1
    check "file name" $current_file_name $good
    check "nothing unsaved" $unsaved_changes 0
    check "no history" $undo_count 0
    check "objects" [dict get [vesk get_info] objects] 4
    check_match "status says opened" $out "*opened $good*"
    set opened [state]
    mismatches
} -result {}

# --- an edit, then every kind of bad file ---
tcltest::test document-1.2 {an edit leaves the model unsaved} -body {
    quietly { vesk select_all; vesk move 1 2 3 }
    check "the edit is unsaved" $unsaved_changes 1
    set edited [state]
    set palette_before [dict get [vesk get_info] palette]
    mismatches
} -result {}

set text [read_bytes $good]
set bad {}
write_bytes [file join $::scratch text.vk] "This is a shopping list, not a model.\neggs\nmilk\n"
lappend bad text.vk
write_bytes [file join $::scratch empty.vk] ""
lappend bad empty.vk
write_bytes [file join $::scratch binary.vk] [binary format c* {0 1 2 255 254 86 69 83 75}]
lappend bad binary.vk
write_bytes [file join $::scratch newer.vk] "VESKc\nOBJECT world\nkids 0\n"
lappend bad newer.vk
write_bytes [file join $::scratch header_only.vk] "VESKb\n"
lappend bad header_only.vk
# A different model with a material of its own, cut short at several
# places: in its materials, in a vertex list, in a surface, between the
# children announced by "kids".
set other "VESKb\nMATERIAL \"mauve\" rgb 0.7 0.4 0.6 amb 0.1 0.1 0.1 emis 0 0 0 spec 0 0 0 shi 3 trans 0\n"
append other "OBJECT world\nkids 2\nOBJECT poly\nname \"a\"\nnumvert 3\n0 0 0\n1 0 0\n0 1 0\nnumsurf 1\nSURF 0\nmat 0\nrefs 3\n0 0 0\n1 0 0\n2 0 0\nkids 0\n"
append other "OBJECT poly\nname \"b\"\nnumvert 1\n5 5 5\nkids 0\n"
write_bytes [file join $::scratch other.vk] $other
foreach cut {after_material mid_vertices mid_surface between_kids last_kids} \
        marker {"OBJECT world" "1 0 0\n0 1 0" "1 0 0\n2 0 0" "OBJECT poly\nname \"b\"" "kids 0\n"} {
    set at [string last $marker $other]
    if {$cut eq "last_kids"} { set at [expr {[string length $other] - 7}] }
    write_bytes [file join $::scratch cut_$cut.vk] [string range $other 0 $at-1]
    lappend bad cut_$cut.vk
}
# The good model itself cut in the middle, as an interrupted download.
write_bytes [file join $::scratch half.vk] [string range $text 0 [expr {[string length $text] / 2}]]
lappend bad half.vk
lappend bad missing.vk
file mkdir [file join $::scratch directory.vk]
lappend bad directory.vk

set case 0
foreach name $bad {
    tcltest::test document-2.1.[incr case] "open $name is refused and changes nothing" -body {
        set path [file join $::scratch $name]
        set out [quietly { set r [vesk open_vk $path] }]
        check "open $name refused" $r 0
        check "open $name leaves the model" [state] $edited
        check "open $name leaves the palette" [dict get [vesk get_info] palette] $palette_before
        check_match "open $name says the model is unchanged" $out "*was not read - the model is unchanged*"
        mismatches
    } -result {}
}
tcltest::test document-2.2 {a cut file and a text file get their own messages} -body {
    set out [quietly { vesk open_vk [file join $::scratch cut_mid_surface.vk] }]
    check_match "a cut file is named as such" $out "*ends before the model in it is complete*"
    check_match "a text file gets the reader's message" [quietly { vesk open_vk [file join $::scratch text.vk] }] \
        "*is not a valid VESK file*"
    mismatches
} -result {}

# The whole other file does open (it was only ever cut).
tcltest::test document-2.3 {the whole of the file that was cut opens} -body {
    set out [quietly { set r [vesk open_vk [file join $::scratch other.vk]] }]
    check "the whole other file opens" $r 1
    check "its two objects" [dict get [vesk get_info] objects] 2
    check "its material joined the palette" [dict get [vesk get_info] palette] [expr {$palette_before + 1}]
    quietly { vesk open_vk $good; vesk select_all; vesk move 1 2 3 }
    check "back to the edited model" [lindex [state] 0] [lindex $edited 0]
    mismatches
} -result {}

# --- the next save writes the good model, and keeps the old file ---
tcltest::test document-3.1 {the next save writes the good model and keeps the old file} -body {
    set before_save [read_bytes $good]
    set out [quietly { set r [vesk save_vk $good] }]
    check "save after failed opens" $r 1
    check "nothing unsaved after the save" $unsaved_changes 0
    check "backup holds the previous bytes" [read_bytes $good~] $before_save
    set saved [read_bytes $good]
    check "backup differs from the new file" [expr {$saved ne $before_save}] 1
    quietly { vesk open_vk $good }
    check "the saved file is the edited model" [lindex [state] 0] [lindex $edited 0]
    mismatches
} -result {}

# A second save keeps the first save's bytes as the backup.
tcltest::test document-3.2 {a second save keeps the first save's bytes as the backup} -body {
    quietly { vesk select_all; vesk move 0 0 1; vesk save_vk $good }
    check "second backup holds the first save" [read_bytes $good~] $saved
    mismatches
} -result {}

# With the preference off no backup is written.
tcltest::test document-3.3 {with the preference off no backup is written} -cleanup {
    set prefs_backup_on_save 1
} -body {
    file delete $good~
    set prefs_backup_on_save 0
    quietly { vesk save_vk $good }
    check "no backup when turned off" [file exists $good~] 0
    mismatches
} -result {}

# A new file has nothing to keep.
tcltest::test document-3.4 {a new file has nothing to keep} -body {
    set fresh [file join $::scratch fresh.vk]
    quietly { vesk save_vk $fresh }
    check "no backup of a new file" [file exists $fresh~] 0
    mismatches
} -result {}

# A backup that can't be written is reported; the save still happens.
tcltest::test document-3.5 {a backup that can't be written is reported; the save still happens} -body {
    file mkdir $fresh~
    file mkdir [file join $fresh~ inside]
    quietly { vesk select_all; vesk move 1 0 0 }
    set out [quietly { set r [vesk save_vk $fresh] }]
    check "save goes ahead without its backup" $r 1
    check_match "the missing backup is reported" $out "*no backup could be kept*"
    check "nothing unsaved" $unsaved_changes 0
    set after [state]
    quietly { vesk open_vk $fresh }
    check "the model was saved" [lindex [state] 0] [lindex $after 0]
    file delete -force $fresh~
    mismatches
} -result {}

# --- revert and the backup ---
tcltest::test document-4.1 {revert, and opening the backup} -body {
    quietly { vesk open_vk $good }
    set on_disk [state]
    quietly { vesk select_all; vesk move 9 9 9 }
    set out [quietly { set r [vesk revert_vk] }]
    check "revert" $r 1
    check "revert restores the file's model" [state] $on_disk
    quietly { vesk select_all; vesk move 0 1 0; vesk save_vk $good }
    set out [quietly { set r [vesk open_backup_vk] }]
    check "open backup" $r 1
    check "the backup is the model before the save" [lindex [state] 0] [lindex $on_disk 0]
    check "the backup opens under the model's name" $current_file_name $good
    check "the backup is unsaved in the model's file" $unsaved_changes 1
    check_match "open backup says how to keep it" $out "*save to make it*"
    mismatches
} -result {}

# A damaged backup is refused with the reader's messages; the model stays.
tcltest::test document-4.2 {a damaged or missing backup is refused; the model stays} -body {
    write_bytes $good~ [string range [read_bytes $good] 0 200]
    set before [state]
    set out [quietly { set r [vesk open_backup_vk] }]
    check "damaged backup refused" $r 0
    check "damaged backup leaves the model" [state] $before
    check_match "damaged backup message" $out "*ends before the model in it is complete*"
    file delete $good~
    set out [quietly { set r [vesk open_backup_vk] }]
    check "no backup to open" $r 0
    check_match "no backup message" $out "*There is no backup of*"
    mismatches
} -result {}

# --- merge: read whole, added as one undoable step ---
tcltest::test document-5.1 {merge: read whole, added as one undoable step} -body {
    quietly { vesk open_vk $good }
    set model [state]
    set out [quietly { set r [vesk merge_vk [file join $::scratch cut_mid_surface.vk]] }]
    check "merge of a cut file refused" $r 0
    check "merge of a cut file adds nothing" [state] $model
    set out [quietly { set r [vesk merge_vk [file join $::scratch other.vk]] }]
    check "merge" $r 1
    check "merged objects added" [dict get [vesk get_info] objects] 6
    check "merge is unsaved" $unsaved_changes 1
    check "merged objects selected" [dict get [vesk get_info] selected_objects] 2
    check_match "merge message" $out "*merged*2 objects added*"
    quietly { vesk undo }
    check "undo takes the merge back" [lindex [state] 0] [lindex $model 0]
    mismatches
} -result {}

# A file whose world holds geometry of its own merges it as an object.
tcltest::test document-5.2 {a world with geometry of its own merges as an object} -body {
    write_bytes [file join $::scratch world_geometry.vk] "VESKb\nOBJECT world\nnumvert 1\n1 2 3\nkids 0\n"
    quietly { set r [vesk merge_vk [file join $::scratch world_geometry.vk]] }
    check "world geometry merged" $r 1
    check "as an object of its own" [dict get [vesk get_info] objects] 5
    check "named after the file" [vesk object_get_name [lindex [vesk object_get_children [vesk get_world]] end]] world_geometry.vk
    quietly { vesk undo }
    check "and undone" [lindex [state] 0] [lindex $model 0]
    mismatches
} -result {}

# --- new ---
tcltest::test document-6.1 {new model: empty, no file, no history} -body {
    set out [quietly { set r [vesk new_model] }]
    check "new" $r 1
    check "new is empty" [dict get [vesk get_info] objects] 0
    check "new has no file" $current_file_name ""
    check "new has nothing unsaved" $unsaved_changes 0
    check "new has no history" $undo_count 0
    set out [quietly { set r [vesk revert_vk] }]
    check "revert of a model never saved" $r 0
    check_match "revert says why" $out "*never been saved*"
    set out [quietly { set r [vesk open_backup_vk] }]
    check "backup of a model never saved" $r 0
    check_match "backup says why" $out "*never been saved*"
    mismatches
} -result {}

# --- no file name ---
tcltest::test document-6.2 {open and merge without a name} -body {
    check "open without a name" [vesk open_vk ""] 0
    check "merge without a name" [vesk merge_vk ""] 0
    mismatches
} -result {}

finish
