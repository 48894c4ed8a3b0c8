# The model file commands from a script: load_vk, save_vk and
# save_selection_vk on the sample files of tests/data/vk; a saved model
# loads back as the same trees; the reader's messages for odd lines; old
# and bad files; saves that fail keep the previous file.
source [file join [lindex $argv 0] scripts harness.tcl]

set data [file join $::tests_dir data vk]

proc dump_all {ids} {
    set text ""
    foreach id $ids { append text [dump $id] }
    return $text
}

proc top_objects {} { return [vesk object_get_children [vesk get_world]] }

# --- load a sample ---
tcltest::test vkfile-1.1 {a sample loads with its escaped strings, frames and surfaces} -body {
    set out [capture_console { set r [vesk load_vk [file join $data model.vk]] }]
    check "load model" $r 1
    set first [top_objects]
    check "two top-level objects" [llength $first] 2
    set table [lindex $first 0]
    check "escaped name" [vesk object_get_name $table] {table "oak" \ set}
    check "escaped url" [vesk object_get_url $table] {http://example.com/table?x="1"}
    check "data with line breaks and blanks" [vesk object_get_data $table] "Four legs.\n  A top.\n"
    check "group centre" [vesk object_get_centre $table] "10 0.5 -3"
    set top [lindex [vesk object_get_children $table] 0]
    check "child placed in the parent's frame" [vesk object_get_centre $top] "10 1.25 -3"
    check "child vertices are global" [lindex [vesk object_get_vertices $top] 0] "9 1.25 -4"
    check_match "surface flags and material" [lindex [vesk object_get_surfaces $top] 0] "0 * 1 1 {0 0 0} *"
    check "unsaved flag after loading into an empty model" $::unsaved_changes 0
    # The file announces a data block of 20 bytes: all of them are read,
    # line breaks included.
    check "data block read to its announced length" [string length [vesk object_get_data $table]] 20
    mismatches
} -result {}

# --- save, load again beside it: the same trees ---
tcltest::test vkfile-1.2 {a saved model loads back as the same trees} -body {
    set saved [file join $::scratch saved.vk]
    check "save" [vesk save_vk $saved] 1
    check "unsaved flag after saving" $::unsaved_changes 0
    capture_console { set r [vesk load_vk $saved] }
    check "load saved" $r 1
    set all [top_objects]
    check "four top-level objects" [llength $all] 4
    check "saved model reads back the same" [dump_all [lrange $all 2 3]] [dump_all $first]
    check "merged load leaves changes unsaved" $::unsaved_changes 1
    mismatches
} -result {}

tcltest::test vkfile-1.3 {a saved file starts with the header} -body {
    set f [open $saved rb]; set text [read $f]; close $f
    check_match "header" $text "VESKb\n*"
    mismatches
} -result {}

# --- save the selection: the last load selected its two objects ---
tcltest::test vkfile-1.4 {the selection saved alone loads back as the selected trees} -body {
    set part [file join $::scratch part.vk]
    check "save selection" [vesk save_selection_vk $part] 1
    capture_console { vesk load_vk $part }
    set all [top_objects]
    check "selection file holds the selected trees" [dump_all [lrange $all 4 5]] [dump_all $first]
    mismatches
} -result {}

# --- the reader's messages ---
tcltest::test vkfile-2.1 {odd lines load with a message for each} -body {
    set out [capture_console { set r [vesk load_vk [file join $data odd_lines.vk]] }]
    check "odd lines still load" $r 1
    check_match "short MATERIAL" $out {*expected 21 params after "MATERIAL" - line 3*}
    check_match "missing vertex" $out "*ERROR in file line 21 - surface's vertex index invalid (7)*"
    check_match "unknown keyword" $out "*ignoring frobnicate*"
    check_match "material out of range" $out {*Surface material index (1) out of range \[palette is 0->0\]*}
    check_match "legacy usage" $out "*expected 'ellipse <float> <float>' at line 35*"
    mismatches
} -result {}
tcltest::test vkfile-2.2 {what odd lines leave in the object} -body {
    set odd [lindex [top_objects] end]
    check "odd object name" [vesk object_get_name $odd] odd
    check "data of five bytes" [vesk object_get_data $odd] "ab\ncd"
    set surfaces [vesk object_get_surfaces $odd]
    proc flags {surface} { return [list [lindex $surface 0] [lindex $surface 2] [lindex $surface 3]] }
    check "SURF 0x30" [flags [lindex $surfaces 0]] "0 1 1"
    check "refs without the bad one" [llength [lindex $surfaces 0]] 6
    check "SURF 20" [flags [lindex $surfaces 1]] "4 1 0"
    check "SURF 010" [lindex [lindex $surfaces 2] 0] 8
    # The six read vertices, then a sphere, a cube and a cylinder built by the
    # legacy keywords, each with its surfaces after the three read ones.
    check "legacy shapes add vertices" [expr {[llength [vesk object_get_vertices $odd]] > 6 + 8}] 1
    check "legacy shapes add surfaces" [expr {[llength $surfaces] > 3 + 6}] 1
    mismatches
} -result {}

tcltest::test vkfile-2.3 {an old version loads, scaled} -body {
    set out [capture_console { set r [vesk load_vk [file join $data old_version.vk]] }]
    check "old version" $r 1
    check_match "old version read" $out "*read file *old_version.vk OK*"
    check "old version scale" [lindex [vesk object_get_vertices [lindex [top_objects] end]] 1] "2 0 0"
    mismatches
} -result {}

# --- files that are refused ---
tcltest::test vkfile-3.1 {files that are refused add nothing} -body {
    set n [llength [top_objects]]
    check "missing file" [vesk load_vk [file join $::scratch missing.vk]] 0
    set bad [file join $::scratch bad.vk]
    set f [open $bad w]; puts $f "VRSKb\nOBJECT world\nkids 0"; close $f
    check "not a model file" [vesk load_vk $bad] 0
    set f [open $bad w]; puts $f "VESKc\nOBJECT world\nkids 0"; close $f
    check "newer version" [vesk load_vk $bad] 0
    check "refused files add nothing" [llength [top_objects]] $n
    check "no file name" [vesk load_vk ""] 0
    mismatches
} -result {}

# --- a failed save keeps the previous file ---
tcltest::test vkfile-3.2 {a failed save keeps the previous file} -body {
    set before [file size $saved]
    check "save into a missing directory" [vesk save_vk [file join $::scratch nodir x.vk]] 0
    check "save to a directory" [vesk save_vk $::scratch] 0
    check "save below a file" [vesk save_vk [file join $saved inner.vk]] 0
    check "previous file kept" [file size $saved] $before
    check "no temporary files left" [llength [glob -nocomplain -directory $::scratch *.tmp*]] 0
    mismatches
} -result {}

finish
