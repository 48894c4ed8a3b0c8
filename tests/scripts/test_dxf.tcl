# test_dxf.tcl - "import_dxf" in vesksh: drawings written by a third-party
# writer (python3-ezdxf, versions R12 and R2018) with every entity the
# reader knows, layers with index and true colours, blocks inserted with
# rotation, scale and nesting, give the expected objects, surfaces, closed
# flags, positions and colours as one undo step; damaged and hostile files
# are refused with a message and the model left as it was.

source [file join [file dirname [info script]] harness.tcl]

set python /usr/bin/python3
set samples [file join $::tests_dir scripts dxf_samples.py]
# The sample drawings, written by ezdxf (python3-ezdxf) where it is
# installed.
tcltest::testConstraint ezdxf [expr {![catch {exec $python $samples $::scratch} error]}]
if {![tcltest::testConstraint ezdxf]} { puts "ezdxf did not write the sample drawings: $error" }

# A build without libdxflib says so and reads nothing.
set probe [file join $::scratch probe.dxf]
set output [capture_console { set probed [vesk import_dxf $probe] }]
tcltest::testConstraint dxflib [expr {![string match "*without libdxflib*" $output]}]
tcltest::testConstraint nodxflib [expr {![tcltest::testConstraint dxflib]}]
tcltest::test dxf-0.1 {a build without libdxflib refuses, saying so} -constraints nodxflib -body {
    set probed
} -result 0

# Sixteen segments to a full circle.
set ::prefs_num_surface_div 16


# The corners of one surface as rounded positions.
proc corners {id surface} {
    set vertices [vesk object_get_vertices $id]
    set s [lindex [vesk object_get_surfaces $id] $surface]
    return [lmap ref [lrange $s 4 end] { format "%.4f %.4f %.4f" {*}[lindex $vertices [lindex $ref 0]] }]
}

# 1 when the object has a vertex within 1e-4 of (x, y, z).
proc has_point {id x y z} {
    foreach p [vesk object_get_vertices $id] {
        lassign $p px py pz
        if {abs($px - $x) < 1e-4 && abs($py - $y) < 1e-4 && abs($pz - $z) < 1e-4} { return 1 }
    }
    return 0
}

proc edit_colour_ui {args} { set ::edited $args }
proc palette_rgb {index} {
    quietly { vesk edit_palette_entry $index }
    return [format "%.2f %.2f %.2f" {*}[lrange $::edited 1 3]]
}

# The colour of each surface of an object.
proc colours {id} {
    return [lmap s [vesk object_get_surfaces $id] { palette_rgb [lindex $s 1] }]
}

set red "1.00 0.00 0.00"
set yellow "1.00 1.00 0.00"
set green "0.00 1.00 0.00"
set cyan "0.00 1.00 1.00"
set blue "0.00 0.00 1.00"
set magenta "1.00 0.00 1.00"

# ---- the drawing in both versions

foreach version {r12 r2018} {
    set v [dict get {r12 1 r2018 2} $version]
    tcltest::test dxf-$v.1 "$version: the drawing reads as one object per layer" -constraints {ezdxf dxflib} -setup {
        reset_model
    } -body {
        set file [file join $::scratch all_$version.dxf]
        check "$version: read" [run import_dxf $file] 1
        check_match "$version: the closing message counts the skipped texts" $::output "*skipped*"
        set world [vesk get_world]
        check "$version: one object named after the file" [names $world] [list all_$version]
        set top [lindex [kids $world] 0]
        set layers [expr {$version eq "r12" ? {FACES MESH LINES CURVES INS} : {FACES MESH LINES TRUE CURVES INS}}]
        check "$version: one object per layer" [names $top] $layers
        mismatches
    } -result {}

    tcltest::test dxf-$v.2 "$version: 3DFACE, SOLID and TRACE" -constraints {ezdxf dxflib} -body {
        set faces [child_named $top FACES]
        check "$version: 3DFACE, SOLID, TRACE" [shapes $faces] {{0 3} {0 4} {0 4} {0 4}}
        check "$version: faces by layer, the solid its own colour" [colours $faces] [list $red $red $yellow $red]
        check "$version: a solid's corners go 1-2-4-3" [corners $faces 2] \
            {{0.0000 0.0000 0.0000} {1.0000 0.0000 0.0000} {1.0000 1.0000 0.0000} {0.0000 1.0000 0.0000}}
        check "$version: a 3D face keeps its corners" [corners $faces 1] \
            {{0.0000 0.0000 1.0000} {1.0000 0.0000 1.0000} {1.0000 1.0000 1.0000} {0.0000 1.0000 1.0000}}
        mismatches
    } -result {}

    tcltest::test dxf-$v.3 "$version: polyface and polygon meshes" -constraints {ezdxf dxflib} -body {
        set mesh [child_named $top MESH]
        check "$version: polyface cube and 3 x 4 polygon mesh" [shapes $mesh] [lrepeat 12 {0 4}]
        check "$version: meshes share their vertices" [llength [vesk object_get_vertices $mesh]] 20
        check "$version: meshes cyan" [lsort -unique [colours $mesh]] [list $cyan]
        check "$version: polygon mesh corner" [has_point $mesh 23 2 3] 1
        mismatches
    } -result {}

    tcltest::test dxf-$v.4 "$version: lines, polylines and block lines" -constraints {ezdxf dxflib} -body {
        set lines [child_named $top LINES]
        check "$version: line, 3D polyline, closed 2D polyline and the block lines" [shapes $lines] \
            {{2 2} {2 3} {1 4} {2 2} {2 2}}
        check "$version: lines green" [lsort -unique [colours $lines]] [list $green]
        check "$version: 3D polyline point" [has_point $lines 1 2 3] 1
        check "$version: block line placed, rotated and scaled" [corners $lines 3] \
            {{10.0000 0.0000 0.0000} {10.0000 2.0000 0.0000}}
        check "$version: nested block line" [corners $lines 4] {{0.0000 20.0000 0.0000} {1.0000 20.0000 0.0000}}
        mismatches
    } -result {}

    tcltest::test dxf-$v.5 "$version: circles, arcs, bulges, ellipses and true colour" -constraints {ezdxf dxflib} -body {
        set curves [child_named $top CURVES]
        set expected {{1 16} {2 5} {1 11}}
        if {$version eq "r2018"} { lappend expected {1 16} }
        check "$version: circle, arc, bulged outline (and ellipse)" [shapes $curves] $expected
        check "$version: curves blue" [lsort -unique [colours $curves]] [list $blue]
        check "$version: circle point" [has_point $curves 42 0 0] 1
        check "$version: arc ends" [list [has_point $curves 51 0 0] [has_point $curves 50 1 0]] {1 1}
        check "$version: the bulge bulges outwards" [has_point $curves 63 1 0] 1
        if {$version eq "r2018"} {
            check "$version: ellipse axes" [list [has_point $curves 73 0 0] [has_point $curves 70 1.5 0]] {1 1}
            set true [child_named $top TRUE]
            check "$version: true colour" [colours $true] [list "0.07 0.20 0.34"]
        }
        mismatches
    } -result {}

    tcltest::test dxf-$v.6 "$version: inserted blocks" -constraints {ezdxf dxflib} -body {
        set ins [child_named $top INS]
        check "$version: two inserted faces" [shapes $ins] {{0 3} {0 3}}
        check "$version: insert rotated 90 degrees and scaled 2" [corners $ins 0] \
            {{10.0000 0.0000 0.0000} {10.0000 2.0000 0.0000} {8.0000 0.0000 0.0000}}
        check "$version: nested insert with base point" [corners $ins 1] \
            {{0.0000 20.0000 0.0000} {1.0000 20.0000 0.0000} {0.0000 21.0000 0.0000}}
        check "$version: by block takes the insert's colour, layer 0 its layer's" [colours $ins] [list $magenta $red]
        mismatches
    } -result {}
}

# ---- one undo step

tcltest::test dxf-3.1 {each import is one undo step} -constraints {ezdxf dxflib} -setup {
    reset_model
} -body {
    run import_dxf [file join $::scratch all_r12.dxf]
    run import_dxf [file join $::scratch all_r2018.dxf]
    check "two imports, two objects" [names [vesk get_world]] {all_r12 all_r2018}
    quietly { vesk undo }
    check "undo takes the last import out" [names [vesk get_world]] {all_r12}
    quietly { vesk undo }
    check "and the first" [names [vesk get_world]] {}
    mismatches
} -result {}

# ---- bad input: each refused with a message, the model unchanged

proc write_file {name text {binary 0}} {
    set path [file join $::scratch $name]
    set f [open $path w]
    if {$binary} { fconfigure $f -translation binary }
    puts -nonewline $f $text
    close $f
    return $path
}

# A DXF text from group code / value pairs.
proc dxf {pairs} { return "[join $pairs \n]\n" }
proc entities {pairs} { return [dxf [concat {0 SECTION 2 ENTITIES} $pairs {0 ENDSEC 0 EOF}]] }
proc blocks {blocks entities} {
    return [dxf [concat {0 SECTION 2 BLOCKS} $blocks {0 ENDSEC 0 SECTION 2 ENTITIES} $entities {0 ENDSEC 0 EOF}]]
}

set ::case_number 0
reset_model
run import_dxf [file join $::scratch all_r12.dxf]
set before [names [lindex [kids [vesk get_world]] 0]]
proc unchanged {what} {
    check "$what: model unchanged" [list [names [vesk get_world]] [names [lindex [kids [vesk get_world]] 0]]] \
        [list all_r12 $::before]
}
# Each refusal a case of its own.
proc refused {what file pattern} {
    tcltest::test dxf-4.[incr ::case_number] "$what: refused with a message, the model unchanged" \
        -constraints {ezdxf dxflib} -body [list refused_checks $what $file $pattern] -result {}
}
proc refused_checks {what file pattern} {
    check "$what: refused" [run import_dxf $file] 0
    check_match "$what: message" $::output "*import_dxf: *$pattern*"
    unchanged $what
    mismatches
}

set whole [read [set f [open [file join $::scratch all_r2018.dxf] r]]][close $f]
refused "truncated" [write_file cut.dxf [string range $whole 0 [expr {[string length $whole] / 2}]]] "cut short"
refused "cut in a group" [write_file cut2.dxf "0\nSECTION\n2\n"] "cut short"
refused "not DXF" [write_file text.dxf "hello world\nthis is text\n"] "not a DXF file"
refused "binary DXF" [write_file binary.dxf "AutoCAD Binary DXF\r\n\x1a\x00\x00\x00garbage" 1] "binary DXF"
refused "empty file" [write_file empty.dxf ""] "not a DXF file"
refused "missing file" [file join $::scratch nonesuch.dxf] "can't open"
refused "self-inserting block" [file join $::scratch self_insert.dxf] "block \"SELF\" inserts itself"
refused "nothing drawable" [write_file texts.dxf [entities {0 TEXT 8 L 1 hello 0 POINT 8 L}]] "holds nothing"

# Blocks nested deeper than the reader follows.
set chain {}
for {set i 0} {$i < 40} {incr i} {
    lappend chain 0 BLOCK 2 N$i 10 0 20 0 30 0 0 INSERT 8 0 2 N[expr {$i + 1}] 10 1 20 0 30 0 0 ENDBLK
}
lappend chain 0 BLOCK 2 N40 10 0 20 0 30 0 0 LINE 8 0 10 0 20 0 30 0 11 1 21 0 31 0 0 ENDBLK
refused "deep nesting" [write_file deep.dxf [blocks $chain {0 INSERT 8 0 2 N0 10 0 20 0 30 0}]] "nested more than"

# Inserts that multiply: 10 arrays of 10 x 10 deep would be 10^20 lines.
set fan {}
for {set i 0} {$i < 10} {incr i} {
    lappend fan 0 BLOCK 2 F$i 10 0 20 0 30 0 0 INSERT 8 0 2 F[expr {$i + 1}] 10 0 20 0 30 0 70 10 71 10 44 1 45 1 0 ENDBLK
}
lappend fan 0 BLOCK 2 F10 10 0 20 0 30 0 0 LINE 8 0 10 0 20 0 30 0 11 1 21 0 31 0 0 ENDBLK
refused "multiplying inserts" [write_file fan.dxf [blocks $fan {0 INSERT 8 0 2 F0 10 0 20 0 30 0}]] "more than"

# A block of inserts of a block that does not exist, inserted many times:
# work without output, stopped all the same.
set missing {0 BLOCK 2 M 10 0 20 0 30 0}
for {set i 0} {$i < 2000} {incr i} { lappend missing 0 INSERT 8 0 2 NONE 10 0 20 0 30 0 }
lappend missing 0 ENDBLK
set many {}
for {set i 0} {$i < 3000} {incr i} { lappend many 0 INSERT 8 0 2 M 10 0 20 0 30 0 }
set t [time { refused "inserts of a missing block" [write_file missing.dxf [blocks $missing $many]] "more than" }]
tcltest::test dxf-4.[incr ::case_number] {inserts of a missing block are stopped quickly} -constraints {ezdxf dxflib} -body {
    check_true "inserts of a missing block: stopped quickly ($t)" [expr {[lindex $t 0] < 20000000}]
    mismatches
} -result {}

# Huge counts and indices that name nothing: the entities are read as far
# as they make sense.
set huge [entities {
    0 LWPOLYLINE 8 A 90 2000000000 70 1 10 0 20 0 10 1 20 0 10 1 20 1
    0 POLYLINE 8 B 66 1 70 16 71 100000 72 100000
    0 VERTEX 8 B 70 64 10 0 20 0 30 0 0 VERTEX 8 B 70 64 10 1 20 0 30 0 0 SEQEND 8 B
    0 POLYLINE 8 C 66 1 70 64 71 3 72 2
    0 VERTEX 8 C 70 192 10 0 20 0 30 0 0 VERTEX 8 C 70 192 10 1 20 0 30 0 0 VERTEX 8 C 70 192 10 0 20 1 30 0
    0 VERTEX 8 C 70 128 71 1 72 2 73 3 0 VERTEX 8 C 70 128 71 1 72 99999 73 -2000000000
    0 SEQEND 8 C
    0 FOOBAR 8 D 10 1 20 2
    0 ARC 8 E 10 0 20 0 30 0 40 1 50 1e308 51 nan
    0 LINE 8 F 10 1e400 20 0 30 0 11 1 21 0 31 0
}]
tcltest::test dxf-5.1 {huge counts and indices that name nothing: what makes sense is read} -constraints {dxflib} -setup {
    reset_model
} -body {
    check "huge counts: read" [run import_dxf [write_file huge.dxf $huge]] 1
    set top [lindex [kids [vesk get_world]] 0]
    # The arc's angle and the line's coordinate overflow: both are left out.
    check "huge counts: what makes sense is read" [names $top] {A C}
    check "huge counts: the outline has its three points" [shapes [child_named $top A]] {{1 3}}
    check "huge counts: the face naming nothing is left out" [shapes [child_named $top C]] {{0 3}}
    check_match "huge counts: the unknown entity is counted" $::output "*skipped*"
    mismatches
} -result {}

# Paper space and windows line ends.
set crlf [string map [list \n \r\n] [entities {
    0 LINE 8 W 10 0 20 0 30 0 11 1 21 2 31 3 0 LINE 8 P 67 1 10 0 20 0 30 0 11 1 21 0 31 0
    0 POLYLINE 8 Q 67 1 66 1 70 0 0 VERTEX 8 Q 67 1 10 0 20 0 30 0 0 VERTEX 8 Q 67 1 10 1 20 0 30 0 0 SEQEND 8 Q 67 1
    0 POLYLINE 8 W 66 1 70 0 0 VERTEX 8 W 10 0 20 0 30 0 0 VERTEX 8 W 10 1 20 0 30 0 0 SEQEND 8 W
    0 LWPOLYLINE 8 Q 67 1 90 2 70 0 10 0 20 0 10 1 20 0
}]]
tcltest::test dxf-5.2 {paper space left out, Windows line ends read} -constraints {dxflib} -setup {
    reset_model
} -body {
    check "CRLF: read" [run import_dxf [write_file crlf.dxf $crlf 1]] 1
    set top [lindex [kids [vesk get_world]] 0]
    check "CRLF: paper space left out" [names $top] {W}
    check "CRLF: the model space polyline kept" [shapes [child_named $top W]] {{2 2} {2 2}}
    check "CRLF: the line" [corners [child_named $top W] 0] {{0.0000 0.0000 0.0000} {1.0000 2.0000 3.0000}}
    mismatches
} -result {}

# Entities in their own coordinate systems, arrays of inserts and a
# bulge the other way.
set ocs [blocks {0 BLOCK 2 Q 10 0 20 0 30 0 0 LINE 8 0 10 0 20 0 30 0 11 1 21 0 31 0 0 ENDBLK} {
    0 CIRCLE 8 O 10 5 20 0 30 0 40 1 210 0 220 0 230 -1
    0 LWPOLYLINE 8 X 90 2 70 0 38 5 10 1 20 2 10 3 20 4 210 1 220 0 230 0
    0 LWPOLYLINE 8 NEG 90 2 70 0 10 0 20 0 42 -1 10 2 20 0
    0 INSERT 8 ARR 2 Q 10 0 20 0 30 0 70 2 71 2 44 10 45 20
}]
tcltest::test dxf-5.3 {entities in their own coordinate systems, insert arrays, a clockwise bulge} -constraints {dxflib} -setup {
    reset_model
} -body {
    check "OCS: read" [run import_dxf [write_file ocs.dxf $ocs]] 1
    set top [lindex [kids [vesk get_world]] 0]
    check "OCS: circle seen from below" \
        [list [has_point [child_named $top O] -4 0 0] [has_point [child_named $top O] -6 0 0]] {1 1}
    check "OCS: outline on the YZ plane at its elevation" [corners [child_named $top X] 0] \
        {{5.0000 1.0000 2.0000} {5.0000 3.0000 4.0000}}
    check "negative bulge bulges clockwise" [has_point [child_named $top NEG] 1 1 0] 1
    check "insert array: 2 x 2" [lsort [lmap i {0 1 2 3} { lindex [corners [child_named $top ARR] $i] 0 }]] \
        [lsort {{0.0000 0.0000 0.0000} {10.0000 0.0000 0.0000} {0.0000 20.0000 0.0000} {10.0000 20.0000 0.0000}}]
    mismatches
} -result {}

tcltest::test dxf-5.4 {no file name} -constraints {dxflib} -body {
    check "no file name" [run import_dxf ""] 0
    mismatches
} -result {}

finish
