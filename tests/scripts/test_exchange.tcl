# test_exchange.tcl - the model exchange plug-in (libassimp) in vesksh:
# every export format read back by the assimp command-line tool with the
# same counts, files that assimp itself wrote imported with their names
# and hierarchy, another tool's OBJ conventions, export-then-import round
# trips, one undo step per import, and bad files refused with the model
# left as it was.

source [file join [file dirname [info script]] harness.tcl]

set data [file join $::tests_dir data exchange]
set formats_dir [file join $::tests_dir data formats]
set assimp [auto_execok assimp]

# The plug-in as the program finds it: in "plugins" beside the program.
set plugin [file join [file dirname [info nameofexecutable]] plugins vesk_exchange.so]
tcltest::test exchange-1.1 {the plug-in adds its commands} -body {
    quietly { vesk plugin_load $plugin }
    check "plug-in adds import_model" [vesk command_available import_model] 1
    check "plug-in adds export_model" [vesk command_available export_model] 1
    mismatches
} -result {}

# ---- helpers ----

# Console output of a command, and its result in ::last_result (the
# harness's run returns the result instead).
proc run {args} {
    return [capture_console { set ::last_result [vesk {*}$args] }]
}


# The counts `assimp info -r` reports for a file: meshes vertices faces.
proc assimp_counts {file} {
    set out [exec $::assimp info $file -r 2>@1]
    foreach key {Meshes Vertices Faces} {
        if {![regexp "\n$key:\\s+(\\d+)" "\n$out" -> n]} { set n ? }
        lappend result $n
    }
    return $result
}

# The counts an export reported on the status line.
proc export_counts {output} {
    if {![regexp {(\d+) objects, (\d+) meshes, (\d+) vertices, (\d+) faces} $output -> o m v f]} { return {} }
    return [list $o $m $v $f]
}

# The model's tree: one line per object, "depth name vertices surfaces".
proc tree {{id {}} {depth 0}} {
    if {$id eq ""} { set id [vesk get_world] }
    set text ""
    foreach kid [vesk object_get_children $id] {
        append text "$depth [vesk object_get_name $kid] [llength [vesk object_get_vertices $kid]]"
        append text " [llength [vesk object_get_surfaces $kid]]\n"
        append text [tree $kid [expr {$depth + 1}]]
    }
    return $text
}

# Every object id under the world, depth first.
proc all_objects {{id {}}} {
    if {$id eq ""} { set id [vesk get_world] }
    set result {}
    foreach kid [vesk object_get_children $id] { lappend result $kid {*}[all_objects $kid] }
    return $result
}

proc object_named {name} {
    foreach id [all_objects] {
        if {[vesk object_get_name $id] eq $name} { return $id }
    }
    return ""
}

# What the model's surfaces make in a file: polygon corner counts, line
# segments (an open line of n points has n-1, a closed one n).
proc surface_shape {} {
    set polygons {}
    set segments 0
    foreach id [all_objects] {
        foreach s [vesk object_get_surfaces $id] {
            set kind [lindex $s 0]
            set n [expr {[llength $s] - 4}]
            if {$kind == 0 && $n >= 3} {
                lappend polygons $n
            } elseif {$n >= 2} {
                incr segments [expr {$kind == 1 && $n > 2 ? $n : $n - 1}]
            }
        }
    }
    return [list $polygons $segments]
}

proc sum {list} { return [tcl::mathop::+ 0 {*}$list] }

# Each polygon as its corners "x y z u v" (rounded to the float precision
# files keep), started at its smallest corner but in its own order, so
# that a changed winding shows; the list sorted.  With triangles 1 only
# the number of corners is kept of each polygon.
proc polygon_signature {{corners_only 0}} {
    set result {}
    foreach id [all_objects] {
        set vertices [vesk object_get_vertices $id]
        foreach s [vesk object_get_surfaces $id] {
            if {[lindex $s 0] != 0 || [llength $s] < 7} { continue }
            set corners {}
            foreach ref [lrange $s 4 end] {
                lassign $ref index u v
                lassign [lindex $vertices $index] x y z
                lappend corners [format "%.4f %.4f %.4f %.4f %.4f" $x $y $z $u $v]
            }
            set first [lsearch -exact $corners [lindex [lsort $corners] 0]]
            set corners [concat [lrange $corners $first end] [lrange $corners 0 [expr {$first - 1}]]]
            lappend result $corners
        }
    }
    return [lsort $result]
}

# Every distinct polygon corner "x y z u v", sorted.
proc corner_set {} {
    return [lsort -unique [concat {*}[polygon_signature]]]
}

# Each line as its kind and corner positions, the list sorted.
proc line_signature {} {
    set result {}
    foreach id [all_objects] {
        set vertices [vesk object_get_vertices $id]
        foreach s [vesk object_get_surfaces $id] {
            if {[lindex $s 0] == 0} { continue }
            set corners [lmap ref [lrange $s 4 end] { format "%.4f %.4f %.4f" {*}[lindex $vertices [lindex $ref 0]] }]
            lappend result [list [lindex $s 0] $corners]
        }
    }
    return [lsort $result]
}

# The set of vertex positions, rounded to the given decimals.
proc position_set {{decimals 5}} {
    set result {}
    set f "%.${decimals}f"
    foreach id [all_objects] {
        foreach p [vesk object_get_vertices $id] { lappend result [format "$f $f $f" {*}$p] }
    }
    return [lsort -unique $result]
}

# The diffuse colour of a palette entry, as the colour editor gets it (to
# two decimals: colours arrive through the palette as 8-bit components).
proc edit_colour_ui {args} { set ::edited $args }
proc palette_rgb {index} {
    quietly { vesk edit_palette_entry $index }
    return [format "%.2f %.2f %.2f" {*}[lrange $::edited 1 3]]
}

# The colours of the model's polygons, sorted.
proc polygon_colours {} {
    set result {}
    foreach id [all_objects] {
        foreach s [vesk object_get_surfaces $id] {
            if {[lindex $s 0] == 0} { lappend result [palette_rgb [lindex $s 1]] }
        }
    }
    return [lsort $result]
}

# A model of polygons of three to six corners with texture coordinates,
# two colours, a child object and a line, written as a model file.
proc write_generated_model {file} {
    set text "VESKb\nMATERIAL \"red\" rgb 1 0 0 amb 0.2 0.2 0.2 emis 0 0 0 spec 0.5 0.5 0.5 shi 10 trans 0\n"
    append text "MATERIAL \"green\" rgb 0 0.5 0 amb 0.2 0.2 0.2 emis 0 0 0 spec 0.5 0.5 0.5 shi 10 trans 0\n"
    append text "OBJECT world\nkids 1\nOBJECT poly\nname \"grid\"\n"
    # A 4 x 4 grid of quads, then a hexagon and a pentagon beside it.
    set n 4
    set vertices {}
    for {set j 0} {$j <= $n} {incr j} {
        for {set i 0} {$i <= $n} {incr i} { lappend vertices [list $i [expr {$j * 0.5}] [expr {-0.25 * $i}]] }
    }
    set ring [llength $vertices]
    for {set k 0} {$k < 6} {incr k} {
        set a [expr {$k * acos(-1) / 3}]
        lappend vertices [list [expr {7 + cos($a)}] [expr {sin($a)}] 0]
    }
    set penta [llength $vertices]
    for {set k 0} {$k < 5} {incr k} {
        set a [expr {$k * 2 * acos(-1) / 5}]
        lappend vertices [list [expr {10 + cos($a)}] [expr {sin($a)}] 1]
    }
    append text "numvert [llength $vertices]\n"
    foreach v $vertices { append text [join $v " "] "\n" }
    set surfaces {}
    for {set j 0} {$j < $n} {incr j} {
        for {set i 0} {$i < $n} {incr i} {
            set a [expr {$j * ($n + 1) + $i}]
            set quad {}
            foreach c [list $a [expr {$a + 1}] [expr {$a + $n + 2}] [expr {$a + $n + 1}]] {
                set ci [expr {$c % ($n + 1)}]
                set cj [expr {$c / ($n + 1)}]
                lappend quad [list $c [expr {$ci / double($n)}] [expr {$cj / double($n)}]]
            }
            lappend surfaces [list [expr {($i + $j) % 2}] $quad]
        }
    }
    set hexagon {}
    for {set k 0} {$k < 6} {incr k} { lappend hexagon [list [expr {$ring + $k}] [expr {$k / 8.0}] 0.5] }
    lappend surfaces [list 0 $hexagon]
    set pentagon {}
    for {set k 0} {$k < 5} {incr k} { lappend pentagon [list [expr {$penta + $k}] 0.25 [expr {$k / 8.0}]] }
    lappend surfaces [list 1 $pentagon]
    append text "numsurf [llength $surfaces]\n"
    foreach s $surfaces {
        lassign $s mat refs
        append text "SURF 0\nmat $mat\nrefs [llength $refs]\n"
        foreach r $refs { append text [join $r " "] "\n" }
    }
    append text "kids 1\nOBJECT poly\nname \"handle\"\nnumvert 4\n0 3 0\n1 3 0\n1 4 0\n0 4 0.5\n"
    append text "numsurf 4\nSURF 0\nmat 1\nrefs 3\n0 0 0\n1 1 0\n2 1 1\nSURF 0\nmat 0\nrefs 3\n0 0 0\n2 1 1\n3 0 1\n"
    # A closed line round the handle and an open one along it.
    append text "SURF 1\nmat 0\nrefs 4\n0 0 0\n1 0 0\n2 0 0\n3 0 0\nSURF 2\nmat 1\nrefs 3\n3 0 0\n1 0 0\n2 0 0\n"
    append text "kids 0\n"
    set fd [open $file w]
    puts -nonewline $fd $text
    close $fd
}

set generated [file join $::scratch generated.vk]
write_generated_model $generated

# Loads one of the test models into an empty model.
proc load_model {which} {
    reset_model
    switch -- $which {
        model.vk { quietly { vesk open_vk [file join $::tests_dir data vk model.vk] } }
        cube_assimp.3ds { quietly { vesk import_model [file join $::formats_dir cube_assimp.3ds] } }
        generated { quietly { vesk open_vk $::generated } }
    }
}

# ---- (a) every export format, read back by assimp ----

# Format id, suffix, whether the file holds triangles only, and how the
# exporter groups meshes: "ours" (one per object and material), "one"
# (everything in one mesh).
set export_formats {
    obj obj 0 ours
    stlb stl 1 one
    stl stl 1 one
    ply ply 0 one
    gltf2 gltf 1 ours
    glb2 glb 1 ours
    collada dae 0 ours
    3mf 3mf 1 ours
}

set ::case_number 0
foreach model {model.vk cube_assimp.3ds generated} {
    foreach {format suffix triangles meshes_rule} $export_formats {
        tcltest::test exchange-2.[incr ::case_number] "$model as $format: assimp reads back the counts" -constraints {assimp} -body {
            load_model $model
            lassign [surface_shape] polygons segments
            set file [file join $::scratch a_[file rootname $model]_$format.$suffix]
            set output [run export_model $file $format]
            set name "$model as $format"
            check "$name: written" $::last_result 1
            lassign [export_counts $output] objects meshes vertices faces
            lassign [assimp_counts $file] file_meshes file_vertices file_faces
            set triangle_count [sum [lmap n $polygons { expr {$n - 2} }]]
            if {$triangles} {
                check "$name: faces" $file_faces $triangle_count
            } else {
                check "$name: faces" $file_faces [expr {[llength $polygons] + $segments}]
                check "$name: faces reported" $faces [expr {[llength $polygons] + $segments}]
            }
            if {$meshes_rule eq "one"} {
                check "$name: meshes" $file_meshes 1
            } else {
                check "$name: meshes" $file_meshes $meshes
            }
            switch -- $format {
                stl - stlb { check "$name: vertices" $file_vertices [expr {3 * $triangle_count}] }
                obj - collada {
                    # Each corner of each face is a vertex of its own when read raw.
                    check "$name: vertices" $file_vertices [expr {[sum $polygons] + 2 * $segments}]
                }
                default { check "$name: vertices" $file_vertices $vertices }
            }
            mismatches
        } -result {}
    }
}

# ---- (b) files that assimp wrote ----

set ::case_number 0
set cube [file join $formats_dir cube_assimp.3ds]
set cube_tree "0 cube.obj 0 0\n1 defaultobject 0 0\n2 defaultobject_defaultobject_0 8 4\n2 defaultobject_blue_1 6 4\n"
# FBX as text: assimp 5.2 can't read back the binary FBX it writes.
foreach suffix {dae gltf glb fbx} {
    tcltest::test exchange-3.[incr ::case_number] "assimp's $suffix: imported with names and hierarchy" -constraints {assimp} -body {
        set file [file join $::scratch b_cube.$suffix]
        set options [expr {$suffix eq "fbx" ? "-ffbxa" : ""}]
        exec $assimp export $cube $file {*}$options >/dev/null 2>@1
        reset_model
        run import_model $file
        check "assimp's $suffix: imported" $::last_result 1
        check "assimp's $suffix: names and hierarchy" [tree] $cube_tree
        mismatches
    } -result {}
}
foreach suffix {obj ply stl} {
    tcltest::test exchange-3.[incr ::case_number] "assimp's $suffix: imported with its counts" -constraints {assimp} -body {
        set file [file join $::scratch b_cube.$suffix]
        exec $assimp export $cube $file >/dev/null 2>@1
        reset_model
        run import_model $file
        check "assimp's $suffix: imported" $::last_result 1
        set counts {0 0}
        foreach id [all_objects] {
            lset counts 0 [expr {[lindex $counts 0] + [llength [vesk object_get_vertices $id]]}]
            lset counts 1 [expr {[lindex $counts 1] + [llength [vesk object_get_surfaces $id]]}]
        }
        # Positions are shared within an object: the cube's two parts
        # have 8 and 6 corners, one object of both has 8.
        set expected [expr {$suffix eq "obj" ? {14 8} : {8 8}}]
        check "assimp's $suffix: vertices and surfaces" $counts $expected
        mismatches
    } -result {}
}
# The same positions whichever way the cube came.  (The program's own
# 3DS reader mirrors z and the winding against assimp's; both agree
# on which way the faces look.)
tcltest::test exchange-3.[incr ::case_number] "assimp's glTF has the 3DS file's positions" -constraints {assimp} -body {
    reset_model
    run import_model $cube
    set direct [position_set]
    reset_model
    run import_model [file join $::scratch b_cube.gltf]
    check "assimp's glTF: the positions of the 3DS file" [position_set] $direct
    mismatches
} -result {}

# ---- (c) another tool's OBJ ----

tcltest::test exchange-4.1 {another tool's OBJ: groups, indices, texture coordinates, materials} -body {
    reset_model
    set output [run import_model [file join $data other_tool.obj]]
    check "other tool's OBJ: imported" $::last_result 1
    check "other tool's OBJ: objects named by groups, empty markers left out" [tree] \
        "0 front 5 1\n0 roof_left 6 1\n0 roof_edge 3 1\n"
    set front [object_named front]
    check "negative indices name the object's own vertices" [vesk object_get_vertices $front] \
        {{0 0 0} {2 0 0} {2 2 0} {1 3 0} {0 2 0}}
    set s [lindex [vesk object_get_surfaces $front] 0]
    check "five corners stay one polygon" [llength [lrange $s 4 end]] 5
    # The file's 0.66, as near as a float holds it.
    check_numbers "texture coordinates of the corners" [concat {*}[lmap r [lrange $s 4 end] { lrange $r 1 2 }]] \
        {0 0 1 0 1 0.66 0.5 1 0 0.66} 1e-6
    check "usemtl colour from the .mtl (brick)" [palette_rgb [lindex $s 1]] "0.80 0.20 0.10"
    set roof [lindex [vesk object_get_surfaces [object_named roof_left]] 0]
    check "six corners stay one polygon" [expr {[llength $roof] - 4}] 6
    check "usemtl colour from the .mtl (tiles)" [palette_rgb [lindex $roof 1]] "0.10 0.30 0.90"
    set edge [lindex [vesk object_get_surfaces [object_named roof_edge]] 0]
    check "relative indices after a second object" [vesk object_get_vertices [object_named roof_edge]] \
        {{0 2 0} {1 3 0} {2 2 0}}
    check "same material shared by name" [lindex $edge 1] [lindex $s 1]
    mismatches
} -result {}

# ---- node transforms ----

tcltest::test exchange-4.2 {node transforms place and mirror the objects} -body {
    reset_model
    run import_model [file join $data transforms.gltf]
    check "transforms: imported" $::last_result 1
    # The root's transform places its children, which become the top objects.
    check "transforms: the nodes under the root" [tree] "0 moved 3 1\n0 mirrored 3 1\n"
    check "transforms: translation and scale of the node and its parent" \
        [vesk object_get_vertices [object_named moved]] {{10 5 0} {12 5 0} {10 7 0}}
    check "transforms: a mirroring node" [vesk object_get_vertices [object_named mirrored]] {{10 0 0} {9 0 0} {10 1 0}}
    # Mirrored, the triangle would face away; its corners are taken backwards.
    check "transforms: the mirrored face keeps facing out" \
        [lmap r [lrange [lindex [vesk object_get_surfaces [object_named mirrored]] 0] 4 end] { lindex $r 0 }] {2 1 0}
    check "transforms: the plain one in the file's order" \
        [lmap r [lrange [lindex [vesk object_get_surfaces [object_named moved]] 0] 4 end] { lindex $r 0 }] {0 1 2}
    mismatches
} -result {}

# ---- lines and points ----

tcltest::test exchange-4.3 {lines and points} -body {
    reset_model
    set output [run import_model [file join $data lines_points.obj]]
    check "lines and points: imported" $::last_result 1
    check_match "a single point is left out and said so" $output "*1 objects, 4 vertices, 2 surfaces, 1 single points left out*"
    set wire [lindex [vesk object_get_children [vesk get_world]] 0]
    check "a polyline's segments make one line again" [lmap s [vesk object_get_surfaces $wire] { lindex $s 0 }] {2 0}
    check "the line's corners" [lmap r [lrange [lindex [vesk object_get_surfaces $wire] 0] 4 end] { lindex $r 0 }] {0 1 2 3}
    mismatches
} -result {}

# ---- diffuse textures ----

proc write_file {file text} {
    set fd [open $file w]
    puts -nonewline $fd $text
    close $fd
}
proc read_file {file} {
    set fd [open $file r]
    set text [read $fd]
    close $fd
    return $text
}

tcltest::test exchange-4.4 {diffuse textures in and out} -body {
    set texdir [file join $::scratch textured]
    file mkdir $texdir [file join $texdir out]
    file copy [file join $::tests_dir data images plain.gif] $texdir
    write_file [file join $texdir t.obj] "mtllib t.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nusemtl pic\nf 1/1 2/2 3/3\n"
    write_file [file join $texdir t.mtl] "newmtl pic\nKd 1 1 1\nmap_Kd plain.gif\n"
    reset_model
    run import_model [file join $texdir t.obj]
    check "textured OBJ imported" $::last_result 1
    run export_model [file join $texdir back.obj]
    check_match "the texture goes out by its name beside the file" [read_file [file join $texdir back.mtl]] \
        "*\nmap_Kd plain.gif\n*"
    run export_model [file join $texdir out back.obj]
    check_match "and by its full name elsewhere" [read_file [file join $texdir out back.mtl]] \
        "*\nmap_Kd [file join $texdir plain.gif]\n*"
    write_file [file join $texdir t.mtl] "newmtl pic\nKd 1 1 1\nmap_Kd missing.gif\n"
    reset_model
    set output [run import_model [file join $texdir t.obj]]
    check "a missing texture does not stop the import" $::last_result 1
    check_match "a missing texture is reported" $output "*texture*missing.gif*not found*"
    mismatches
} -result {}

# ---- the menu entries' dialogs ----

# The dialogs answer with a chosen file and keep the filters they got.
proc get_opentexturename {title filters} {
    set ::dialog [list $title $filters]
    return $::next_file
}
proc get_savefilename {title filters} {
    set ::dialog [list $title $filters]
    return $::next_file
}
tcltest::test exchange-5.1 {the menu entries' dialogs} -body {
    reset_model
    set ::next_file [file join $data other_tool.obj]
    run import_model_dialog
    check "import dialog: imported" $::last_result 1
    check "import dialog: the objects" [llength [vesk object_get_children [vesk get_world]]] 3
    set filters [lindex $::dialog 1]
    foreach suffix {.obj .ply .stl .gltf .glb .dae .fbx .3mf .3ds} {
        check_true "import dialog offers $suffix" [expr {[lsearch -exact [lindex $filters 0 1] $suffix] >= 0}]
    }
    check "import dialog: all files too" [string trim [lindex $filters 1 1]] "*"
    set ::next_file ""
    run import_model_dialog
    check "import dialog: cancel does nothing" $::last_result 0
    set ::next_file [file join $::scratch from_dialog]
    run export_model_dialog glb2
    check "export dialog: written" $::last_result 1
    check "export dialog: the format's suffix added" [file exists [file join $::scratch from_dialog.glb]] 1
    check "export dialog: filtered by the suffix" [string trim [lindex $::dialog 1 0 1]] .glb
    check_match "export dialog: unknown format" [run export_model_dialog nope] "*unknown format 'nope'*"
    mismatches
} -result {}

# ---- (d) round trips ----

set ::case_number 0
foreach {format suffix triangles meshes_rule} $export_formats {
    tcltest::test exchange-6.[incr ::case_number] "round trip through $format" -body {
        load_model generated
        set positions [position_set]
        set signature [polygon_signature]
        set lines [line_signature]
        set corners [corner_set]
        set shape [surface_shape]
        set colours [polygon_colours]
        set names [lsort [lmap id [all_objects] { vesk object_get_name $id }]]
        set file [file join $::scratch d_generated.$suffix]
        run export_model $file $format
        reset_model
        run import_model $file
        set name "round trip through $format"
        check "$name: imported" $::last_result 1
        if {$format eq "3mf"} {
            # assimp's 3MF writer keeps six significant digits.
            check "$name: positions" [position_set 3] [lsort -unique [lmap p $positions { format "%.3f %.3f %.3f" {*}$p }]]
        } else {
            check "$name: positions" [position_set] $positions
        }
        if {!$triangles} {
            check "$name: polygons with their corners, winding and texture coordinates" \
                [polygon_signature] $signature
            check "$name: open and closed lines" [line_signature] $lines
        } else {
            set tris [sum [lmap n [lindex $shape 0] { expr {$n - 2} }]]
            check "$name: triangles" [llength [polygon_signature]] $tris
            if {$format in {gltf2 glb2}} {
                check "$name: corners with their texture coordinates" [corner_set] $corners
            }
        }
        if {$format in {obj collada gltf2 glb2}} {
            check "$name: colours" [llength [lsort -unique [polygon_colours]]] [llength [lsort -unique $colours]]
            check "$name: colour of each polygon" [lsort -unique [polygon_colours]] [lsort -unique $colours]
        }
        if {$format in {gltf2 glb2 collada}} {
            check "$name: names" [lsort [lmap id [all_objects] { vesk object_get_name $id }]] $names
            check "$name: hierarchy" [vesk object_get_name [lindex [vesk object_get_children [object_named grid]] 0]] handle
        }
        mismatches
    } -result {}
}

# Every polygon comes back the way it faced (glTF with its own reader too).
tcltest::test exchange-6.[incr ::case_number] {every polygon comes back the way it faced} -body {
    load_model generated
    set signature [polygon_signature]
    run export_model [file join $::scratch winding.ply] ply
    reset_model
    run import_model [file join $::scratch winding.ply]
    check "winding kept through PLY" [polygon_signature] $signature
    mismatches
} -result {}

# ---- one undo step, selection ----

tcltest::test exchange-7.1 {an import is one undo step and selects what it added} -body {
    load_model generated
    set before [dump [vesk get_world]]
    set history [vesk undo_history]
    run import_model [file join $data other_tool.obj]
    check "import is one undo step" [llength [vesk undo_history]] [expr {[llength $history] + 1}]
    check "the step is named" [lindex [vesk undo_history] end] import
    check "the imported objects are selected" \
        [lmap name {front roof_left roof_edge} { vesk object_is_selected [object_named $name] }] {1 1 1}
    quietly { vesk undo }
    check "undo takes the import out again" [dump [vesk get_world]] $before
    mismatches
} -result {}

# ---- (e) bad files ----

load_model generated
set before [dump [vesk get_world]]
set history [vesk undo_history]
set ::case_number 0
foreach {file expected} {
    bad_truncated.stl "*can't import*bad_truncated.stl: the file is damaged*STL*"
    bad_header.ply "*can't import*bad_header.ply: the file is damaged*out of range*"
    bad_indices.obj "*can't import*bad_indices.obj: the file is damaged*index out of range*"
    missing_buffer.gltf "*can't import*missing_buffer.gltf: it needs the file nowhere.bin, which is missing*"
    bad_json.gltf "*can't import*bad_json.gltf: it is not a model in a format that can be imported, or it is damaged*"
    not_a_model.glb "*can't import*not_a_model.glb: it is not a model*"
    no_such_file.obj "*can't import*no_such_file.obj: no such file*"
    bad_endless_header.ply "*can't import*bad_endless_header.ply: the file is damaged (its PLY header has no end)*"
    bad_huge_counts.ply "*can't import*bad_huge_counts.ply: the file is damaged (its PLY header promises more than the file holds)*"
    bad_huge_counts_binary.ply "*can't import*bad_huge_counts_binary.ply: the file is damaged (its PLY header promises more*"
} {
    tcltest::test exchange-8.[incr ::case_number] "$file is refused, the model unchanged" -body {
        set output [run import_model [file join $data $file]]
        check "$file: refused" $::last_result 0
        check_match "$file: says why" $output "$expected- the model is unchanged*"
        check "$file: model unchanged" [dump [vesk get_world]] $before
        check "$file: no undo step" [vesk undo_history] $history
        mismatches
    } -result {}
}
tcltest::test exchange-8.[incr ::case_number] {an empty file and no file name are refused} -body {
    set empty [file join $::scratch empty.obj]
    close [open $empty w]
    run import_model $empty
    check "an empty file is refused" $::last_result 0
    check "usage without a file name" [run import_model ""] "import_model: no file name given - usage: import_model <file>\n"
    check "model unchanged after all of them" [dump [vesk get_world]] $before
    mismatches
} -result {}

# ---- export failures leave the earlier file ----

tcltest::test exchange-9.1 {export failures leave the earlier file} -body {
    set target [file join $::scratch keep.obj]
    run export_model $target
    check "first export" $::last_result 1
    set fd [open $target r]; set original [read $fd]; close $fd
    set output [run export_model $target nope]
    check "unknown format refused" $::last_result 0
    check_match "unknown format named with the known ones" $output "*unknown format 'nope' (known: *obj*stlb*gltf2*)*"
    set output [run export_model [file join $::scratch noformat.xyz]]
    check "suffix without a format refused" $::last_result 0
    check_match "suffix without a format says so" $output "*no format for its suffix*"
    file mkdir [file join $::scratch adir.obj]
    set output [run export_model [file join $::scratch adir.obj]]
    check "export over a directory fails" $::last_result 0
    check_match "and says so" $output "*can't write*adir.obj*earlier file is left as it was*"
    set output [run export_model [file join $::scratch no_dir keep.obj]]
    check "export into a missing directory fails" $::last_result 0
    reset_model
    set output [run export_model $target]
    check "an empty model is not written" $::last_result 0
    check_match "and says so" $output "*no surfaces to write*"
    set fd [open $target r]; set now [read $fd]; close $fd
    check "the earlier file is intact" $now $original
    mismatches
} -result {}

# An exporter that fails half-way (assimp's FBX text writer gives up on a
# name with a double quote in it) leaves the earlier file as it was.
tcltest::test exchange-9.2 {an exporter that fails half-way leaves the earlier file} -body {
    set fbx [file join $::scratch keep.fbx]
    load_model cube_assimp.3ds
    run export_model $fbx fbxa
    check "FBX text written" $::last_result 1
    set fd [open $fbx r]; set original [read $fd]; close $fd
    load_model model.vk
    set output [run export_model $fbx fbxa]
    check "a failing exporter is reported" $::last_result 0
    check_match "with what happened" $output "*can't export *keep.fbx: assimp's exporter gave up*earlier file is left as it was*"
    set fd [open $fbx r]; set now [read $fd]; close $fd
    check "the earlier FBX file is intact" $now $original
    check "no temporary files are left" [glob -nocomplain -directory $::scratch -types {f hidden} .*vesk-part*] {}
    check "export usage" [string trim [run export_model "" ""]] \
        "export_model: no file name given - usage: export_model <file> ?format?"
    mismatches
} -result {}

finish
