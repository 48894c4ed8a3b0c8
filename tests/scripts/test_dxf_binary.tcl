# test_dxf_binary.tcl - "import_dxf" of binary DXF files in vesksh: the
# drawings of the ASCII test, written by a third-party writer
# (python3-ezdxf) both as ASCII and as binary DXF (R12 with one-byte
# group codes, R2018 with two-byte ones), load to exactly the same model;
# hand-made binary files exercise every value type and the escaped codes
# of extended data; damaged binary files are refused with a message that
# names the offset and leave the model as it was.

source [file join [file dirname [info script]] harness.tcl]

set python /usr/bin/python3
set samples [file join $::tests_dir scripts dxf_samples.py]
set ascii_dir [file join $::scratch ascii]
set binary_dir [file join $::scratch binary]
file mkdir $ascii_dir $binary_dir
if {[catch {exec $python $samples $ascii_dir $binary_dir} error]} {
    check "ezdxf writes the sample drawings (python3-ezdxf installed?)" $error ""
    finish
}

# A build without libdxflib says so and reads nothing.
set output [capture_console { set probed [vesk import_dxf [file join $::scratch probe.dxf]] }]
if {[string match "*without libdxflib*" $output]} {
    check "built without libdxflib: refused" $probed 0
    finish
}

set ::prefs_num_surface_div 16


# Writes data to a file of the scratch directory; returns its path.
proc scratch_bytes {name data} {
    set path [file join $::scratch $name]
    write_bytes $path $data
    return $path
}

# The whole model as text, and the colour of every palette entry its
# surfaces use.
proc edit_colour_ui {args} { set ::edited $args }
proc materials {id} {
    set used [lmap s [vesk object_get_surfaces $id] { lindex $s 1 }]
    foreach kid [vesk object_get_children $id] { lappend used {*}[materials $kid] }
    return $used
}
proc model_text {} {
    set text ""
    foreach id [vesk object_get_children [vesk get_world]] { append text [dump $id] }
    foreach index [lsort -unique -integer [materials [vesk get_world]]] {
        quietly { vesk edit_palette_entry $index }
        append text "colour $index: [lrange $::edited 1 3]\n"
    }
    return $text
}

# Imports a file into an empty model; the model text, the command's
# result and its console output with the file's directory taken out.
proc import_alone {path} {
    reset_model
    set result [run import_dxf $path]
    set output [string map [list [file dirname $path]/ ""] $::output]
    return [list $result $output [model_text]]
}

# ---- ezdxf's drawings: binary loads to what ASCII loads

foreach name {all_r12 all_r2018} {
    set ascii [file join $ascii_dir $name.dxf]
    set binary [file join $binary_dir $name.dxf]
    set bytes [read_bytes $binary]
    check "$name: ezdxf wrote a binary file" [string range $bytes 0 17] "AutoCAD Binary DXF"
    # One-byte codes in R12 ("\0SECTION"), two-byte ones later ("\0\0SECTION").
    set wide [expr {$name eq "all_r12" ? 0 : 1}]
    check "$name: group code width" [string equal [string range $bytes 22 [expr {23 + $wide}]] \
        "[string repeat \0 [expr {1 + $wide}]]S"] 1
    if {!$wide} {
        # Extended data: 255, then code 1000 in two bytes.
        check_true "$name: escaped two-byte codes" [expr {[string first "\xff\xe8\x03" $bytes] > 0}]
    }
    lassign [import_alone $ascii] ascii_result ascii_output ascii_model
    lassign [import_alone $binary] binary_result binary_output binary_model
    check "$name: ASCII read" $ascii_result 1
    check "$name: binary read" $binary_result 1
    check_true "$name: a model was made" [expr {[string length $ascii_model] > 1000}]
    check "$name: binary gives exactly the ASCII model" $binary_model $ascii_model
    check "$name: the same console report" $binary_output $ascii_output
    # One undo takes the whole import out again.
    quietly { vesk undo }
    check "$name: binary import undone in one step" [vesk object_get_children [vesk get_world]] {}
}

# Both read after each other: the second reuses the first one's colours.
reset_model
run import_dxf [file join $ascii_dir all_r2018.dxf]
run import_dxf [file join $binary_dir all_r2018.dxf]
lassign [vesk object_get_children [vesk get_world]] first second
check "ASCII then binary: two equal drawings" [dump $second] [dump $first]

# The self-inserting block is refused the same way from both.
lassign [import_alone [file join $ascii_dir self_insert.dxf]] ascii_result ascii_output
lassign [import_alone [file join $binary_dir self_insert.dxf]] binary_result binary_output
check "self insert: refused from binary too" [list $ascii_result $binary_result] {0 0}
check "self insert: the same message" $binary_output $ascii_output

# ---- hand-made binary files

# One group: its code (1 or 2 bytes wide, 255 escaping a two-byte code in
# one-byte files) and its value of the given type.
proc group {wide code type value} {
    if {$wide} {
        set bytes [binary format s $code]
    } elseif {$code >= 255} {
        set bytes [binary format cs 255 $code]
    } else {
        set bytes [binary format c $code]
    }
    switch -- $type {
        s { append bytes [encoding convertto utf-8 $value] \0 }
        d { append bytes [binary format q $value] }
        i16 { append bytes [binary format s $value] }
        i32 { append bytes [binary format i $value] }
        i64 { append bytes [binary format w $value] }
        b { append bytes [binary format c $value] }
        h { append bytes [binary format c [expr {[string length $value] / 2}]] [binary format H* $value] }
    }
    return $bytes
}

# A binary file from {code type value} triples; the ASCII text of the
# same groups.
proc binary_dxf {wide groups} {
    set bytes "AutoCAD Binary DXF\r\n\x1a\x00"
    foreach {code type value} $groups { append bytes [group $wide $code $type $value] }
    return $bytes
}
proc ascii_dxf {groups} {
    set text ""
    foreach {code type value} $groups { append text "$code\n$value\n" }
    return $text
}

# A layer with a true colour, and lines carrying extended data of every
# type, 64-bit and boolean values and binary chunks, which the reader
# passes over.
set drawing {
    0 s SECTION 2 s TABLES 0 s TABLE 2 s LAYER 70 i16 1
    0 s LAYER 2 s HAND 70 i16 0 62 i16 -3 420 i32 1193046 6 s CONTINUOUS 290 b 1
    0 s ENDTAB 0 s ENDSEC
    0 s SECTION 2 s ENTITIES
    0 s LINE 8 s HAND 160 i64 123456789012 10 d 0.1 20 d -2.5e-7 30 d 1e10 11 d 3 21 d 4 31 d 5
    310 h 00FF7F80
    1001 s ACAD 1000 s note 1002 s \{ 1040 d 0.30000000000000004 1070 i16 -7 1071 i32 -100000 1004 h DEADBEEF
    1010 d 1 1020 d 2 1030 d 3 1002 s \}
    0 s LINE 8 s HAND 62 i16 5 10 d 1 20 d 1 30 d 1 11 d 2 21 d 2 31 d 2
    0 s ENDSEC 0 s EOF
}
file mkdir [file join $::scratch 0] [file join $::scratch 1]
set ascii_path [scratch_bytes [file join ascii hand.dxf] [ascii_dxf $drawing]]
foreach wide {0 1} {
    set label [expr {$wide ? "two-byte codes" : "one-byte codes"}]
    lassign [import_alone $ascii_path] ascii_result ascii_output ascii_model
    lassign [import_alone [scratch_bytes [file join $wide hand.dxf] [binary_dxf $wide $drawing]]] \
        binary_result binary_output binary_model
    check "hand-made, $label: read" [list $ascii_result $binary_result] {1 1}
    check "hand-made, $label: the ASCII model" $binary_model $ascii_model
    set layer [lindex [vesk object_get_children [lindex [vesk object_get_children [vesk get_world]] 0]] 0]
    check "hand-made, $label: both lines" [llength [vesk object_get_surfaces $layer]] 2
    lassign [lindex [vesk object_get_vertices $layer] 0] x y z
    check_true "hand-made, $label: the first point" \
        [expr {abs($x - 0.1) < 1e-7 && abs($y + 2.5e-7) < 1e-12 && abs($z - 1e10) < 1e3}]
}

# A string value may hold a line break: it becomes a space rather than
# ending the value.
set broken {0 s SECTION 2 s ENTITIES 0 s LINE 8 s "A\nB" 10 d 0 20 d 0 30 d 0 11 d 1 21 d 0 31 d 0 0 s ENDSEC 0 s EOF}
check "line break in a string: read" [run import_dxf [scratch_bytes broken.dxf [binary_dxf 1 $broken]]] 1
set top [lindex [vesk object_get_children [vesk get_world]] end]
check "line break in a string: the layer's name" [vesk object_get_name [vesk object_get_children $top]] "A B"

# ---- damaged binary files: refused, naming the offset, model unchanged

reset_model
run import_dxf [file join $ascii_dir all_r12.dxf]
set before [model_text]
proc refused {what path pattern} {
    check "$what: refused" [run import_dxf $path] 0
    check_match "$what: message" $::output "*import_dxf: *$pattern*"
    check "$what: model unchanged" [model_text] $::before
}

set whole [read_bytes [file join $binary_dir all_r2018.dxf]]
set size [string length $whole]
foreach cut [list 22 23 30 [expr {$size / 3}] [expr {$size / 2}] [expr {$size - 5}] [expr {$size - 1}]] {
    refused "cut at $cut of $size" [scratch_bytes cut.dxf [string range $whole 0 [expr {$cut - 1}]]] "offset *"
}
set small [binary_dxf 0 {0 s SECTION 2 s ENTITIES 0 s LINE 10 d 1.5}]
refused "cut inside a double" [scratch_bytes cut_double.dxf [string range $small 0 end-3]] \
    "binary DXF: the group at offset 47 is cut short (the file ends at offset 53)"
refused "ends before EOF" [scratch_bytes no_eof.dxf [binary_dxf 1 {0 s SECTION 2 s ENTITIES 0 s ENDSEC}]] \
    "ends at offset * before its EOF group*"
refused "no SECTION first" [scratch_bytes no_section.dxf [binary_dxf 1 {0 s HEADER 0 s EOF}]] \
    "no SECTION group follows the sentinel (offset 22)"
refused "sentinel only" [scratch_bytes sentinel.dxf "AutoCAD Binary DXF\r\n\x1a\x00"] "offset 22"
refused "group code beyond DXF's" \
    [scratch_bytes bad_code.dxf [binary_dxf 1 {0 s SECTION 2 s ENTITIES 5000 s x 0 s ENDSEC 0 s EOF}]] \
    "group code 5000 at offset 43 is not a DXF group code"
refused "negative group code" \
    [scratch_bytes neg_code.dxf [binary_dxf 1 {0 s SECTION 2 s ENTITIES -1 s x 0 s ENDSEC 0 s EOF}]] \
    "group code -1 at offset 43 is not a DXF group code"
set endless "[binary_dxf 1 {0 s SECTION 2 s ENTITIES}][binary format s 1][string repeat x 100000]"
refused "a string without its end" [scratch_bytes endless.dxf $endless] "string at offset 45 has no end*"
set long [binary_dxf 1 [list 0 s SECTION 2 s ENTITIES 1 s [string repeat x 5000] 0 s ENDSEC 0 s EOF]]
refused "an overlong string" [scratch_bytes long.dxf $long] "string at offset 45 is longer than 4096 bytes"
set chunk "[binary_dxf 1 {0 s SECTION 2 s ENTITIES}][binary format sc 310 200][string repeat x 50]"
refused "a binary chunk cut short" [scratch_bytes chunk.dxf $chunk] "group at offset 43 is cut short*"

finish
