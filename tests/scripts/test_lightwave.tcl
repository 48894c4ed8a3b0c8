# test_lightwave.tcl - "import_lightwave" in vesksh: LWOB and LWO2 objects
# and LWSC scenes built by lightwave_samples.py from the public chunk
# layouts give the expected objects, layers, surfaces, colours, texture
# coordinates, positions, facing and parenting, as one undo step; counts
# agree with assimp's reading of the LWO2 files and scenes, and every
# point of two placed scenes with where assimp places it (when assimp is
# installed); damaged and hostile files are refused with a message and
# the model left as it was.

source [file join [file dirname [info script]] harness.tcl]

set samples [file join $::tests_dir scripts lightwave_samples.py]
if {[catch {exec /usr/bin/python3 $samples $::scratch} error]} {
    check "python3 writes the LightWave samples" $error ""
    finish
}
set objects [file join $::scratch Objects]
set scenes [file join $::scratch Scenes]
set bad [file join $::scratch bad]

# Follows a path of names down from the world.
proc find {args} {
    set id [vesk get_world]
    foreach name $args { set id [child_named $id $name] }
    return $id
}
proc corners {id surface} {
    set vertices [vesk object_get_vertices $id]
    set s [lindex [vesk object_get_surfaces $id] $surface]
    return [lmap ref [lrange $s 4 end] { format "%.4f %.4f %.4f" {*}[lindex $vertices [lindex $ref 0]] }]
}
proc uvs {id surface} {
    set s [lindex [vesk object_get_surfaces $id] $surface]
    return [lmap ref [lrange $s 4 end] { format "%.2f %.2f" {*}[lrange $ref 1 2] }]
}
# The unit normal of a surface from its corners (Newell's method), which
# faces the side from which the corners run anticlockwise.
proc normal {id surface} {
    set vertices [vesk object_get_vertices $id]
    set s [lindex [vesk object_get_surfaces $id] $surface]
    set points [lmap ref [lrange $s 4 end] { lindex $vertices [lindex $ref 0] }]
    lassign {0 0 0} nx ny nz
    set n [llength $points]
    for {set i 0} {$i < $n} {incr i} {
        lassign [lindex $points $i] ax ay az
        lassign [lindex $points [expr {($i + 1) % $n}]] bx by bz
        set nx [expr {$nx + ($ay - $by) * ($az + $bz)}]
        set ny [expr {$ny + ($az - $bz) * ($ax + $bx)}]
        set nz [expr {$nz + ($ax - $bx) * ($ay + $by)}]
    }
    set l [expr {sqrt($nx * $nx + $ny * $ny + $nz * $nz)}]
    return [format "%.3f %.3f %.3f" [expr {$nx / $l + 0.0}] [expr {$ny / $l + 0.0}] [expr {$nz / $l + 0.0}]]
}
proc has_point {id x y z} {
    foreach p [vesk object_get_vertices $id] {
        lassign $p px py pz
        if {abs($px - $x) < 1e-4 && abs($py - $y) < 1e-4 && abs($pz - $z) < 1e-4} { return 1 }
    }
    return 0
}
proc centre {id} { return [lmap c [vesk object_get_centre $id] { format %.3f [expr {$c + 0.0}] }] }
proc edit_colour_ui {args} { set ::edited $args }
proc palette_rgb {index} {
    quietly { vesk edit_palette_entry $index }
    return [format "%.2f %.2f %.2f" {*}[lrange $::edited 1 3]]
}
proc colours {id} { return [lmap s [vesk object_get_surfaces $id] { palette_rgb [lindex $s 1] }] }
# Surfaces and polygon corners of an object and all below it.
proc totals {id} {
    set faces [llength [vesk object_get_surfaces $id]]
    set corners 0
    foreach s [vesk object_get_surfaces $id] { incr corners [expr {[llength $s] - 4}] }
    foreach k [kids $id] {
        lassign [totals $k] f c
        incr faces $f
        incr corners $c
    }
    return [list $faces $corners]
}

set red "1.00 0.00 0.00"
set green "0.00 1.00 0.00"
set blue "0.00 0.00 1.00"
set yellow "1.00 1.00 0.00"
set grey "0.50 0.50 0.50"
set default_grey "0.78 0.78 0.78"

# ---- LWOB: a box with two surfaces and a detail polygon

reset_model
check "LWOB read" [run import_lightwave [file join $objects box.lwob]] 1
check_match "closing message" $::output "*imported *box.lwob: 7 polygons and lines in 1 objects*"
check "one group named after the file, one layer" [list [names [vesk get_world]] [names [find box]]] \
    {box {{layer 1}}}
set box [find box {layer 1}]
check "six quadrilaterals and the detail triangle" [shapes $box] [concat [lrepeat 6 {0 4}] {{0 3}}]
check "points shared" [llength [vesk object_get_vertices $box]] 8
check "surface colours, the detail polygon its own" [colours $box] \
    [list $blue $red $blue $blue $blue $blue $red]
# LightWave's front face is at z = -0.5, towards the viewer of its front
# view; here it comes to z = +0.5, towards the viewer of the Front view,
# and faces that viewer.
check "front face nearest the Front view's viewer" [lsort -unique [lmap c [corners $box 1] { lindex $c 2 }]] 0.5000
check "front face faces the front" [normal $box 1] "0.000 0.000 1.000"
check "bottom face faces down" [normal $box 0] "0.000 -1.000 0.000"
check "right face faces right" [normal $box 2] "1.000 0.000 0.000"
check "top face faces up" [normal $box 5] "0.000 1.000 0.000"
check "the detail triangle faces up too" [normal $box 6] "0.000 1.000 0.000"

# ---- LWO2: layers, tags, texture maps, long indices, patches and curves

reset_model
check "LWO2 read" [run import_lightwave [file join $objects layers.lwo]] 1
check_match "curves counted as skipped" $::output "*10 polygons and lines in 3 objects, 1 curve*skipped*"
check "layers as children, the child layer under its parent" \
    [list [names [find layers]] [names [find layers base]]] {{base big} top}
set base [find layers base]
check "cube faces" [shapes $base] [lrepeat 6 {0 4}]
check "tagged colours" [colours $base] [list $green $red $green $green $green $green]
check "texture coordinates from the map, one corner from the per-polygon map" [uvs $base 1] \
    {{1.00 0.00} {1.00 1.00} {0.00 1.00} {0.25 0.75}}
check "the per-polygon map leaves other polygons alone" [uvs $base 0] \
    {{0.00 0.00} {1.00 0.00} {1.00 0.00} {0.00 0.00}}
set top [find layers base top]
check "triangle, line and patch; the one-point polygon and the curve skipped" [shapes $top] {{0 3} {2 2} {0 4}}
check "surfaces without a colour are LightWave grey" [colours $top] [list $grey $grey $default_grey]
check "layer pivot as the centre, z mirrored" [centre $top] {1.000 2.000 -3.000}
check "point (1 3 0)" [has_point $top 1 3 0] 1
set big [find layers big]
check "indices past 0xFF00" [list [shapes $big] [has_point $big 5 0 0] [has_point $big 6 0 0] [has_point $big 5 1 0]] \
    {{{0 3}} 1 1 1}
check "its colour" [colours $big] [list $red]

# ---- scenes

proc check_pair {what top} {
    set box [child_named $top box]
    check "$what: the box placed" [centre $box] {10.000 0.000 0.000}
    check "$what: its points moved" [has_point [child_named $box {layer 1}] 10.5 0.5 0.5] 1
    set tri [child_named $box triangle]
    check "$what: the triangle parented to the box" [expr {$tri ne ""}] 1
    check "$what: triangle placed in the box's frame" [centre $tri] {10.000 0.000 -5.000}
    set layer [child_named $tri {layer 1}]
    # LightWave (1 0 0) headed 90 degrees is (0 0 -1); moved by (0 0 5)
    # and the parent's (10 0 0): (10 0 4), here (10 0 -4).
    check "$what: triangle points turned and moved" \
        [list [has_point $layer 10 0 -5] [has_point $layer 10 0 -4] [has_point $layer 10 1 -5]] {1 1 1}
    check "$what: the triangle faced the front, now turned to face -x" [normal $layer 0] "-1.000 0.000 0.000"
    check "$what: colours" [list [lsort -unique [colours $layer]] [lindex [colours [child_named $box {layer 1}]] 1]] \
        [list [list $::yellow] $::red]
}

reset_model
check "new-form scene read" [run import_lightwave [file join $scenes new.lws]] 1
check "one group for the scene" [names [vesk get_world]] new
check_pair "new form" [find new]
set saved [file join $::scratch new.vk]
quietly { vesk save_vk $saved }
set f [open $saved r]
set text [read $f]
close $f
check_match "the rotation kept: heading 90 about y" $text "*name \"triangle\"\nrot * 0 1 0 1 0 -1 0 *"

reset_model
check "old-form scene read" [run import_lightwave [file join $scenes old.lws]] 1
check_match "the missing object is reported" $::output "*object file not found: Objects/missing.lwo*"
check_match "and counted in the closing message" $::output "*1 problems*"
check_pair "old form" [find old]

reset_model
check "scene with a null and a picked layer" [run import_lightwave [file join $objects nulls.lws]] 1
set top [find nulls {Pivot Null} layers top]
check "the null holds the object, which holds only the picked layer" \
    [list [names [find nulls]] [names [find nulls {Pivot Null}]] [names [find nulls {Pivot Null} layers]]] \
    {{{Pivot Null}} layers top}
check "placed by the null" [list [has_point $top 0 102 0] [has_point $top 1 103 0] [centre $top]] \
    {1 1 {1.000 102.000 -3.000}}

reset_model
check "scale and bank" [run import_lightwave [file join $scenes pair.lws]] 1
set cube [find pair cube {layer 1}]
check "cube scaled 2 and moved" [list [has_point $cube 1 4 -1] [has_point $cube -1 2 1]] {1 1}
set tri [find pair cube triangle {layer 1}]
check "triangle banked 90 in the scaled frame" \
    [list [has_point $tri 2 3 0] [has_point $tri 2 5 0] [has_point $tri 0 3 0]] {1 1 1}

reset_model
check "a parenting cycle is broken" [run import_lightwave [file join $bad cycle.lws]] 1
check_match "and reported" $::output "*own ancestor*"

# ---- counts against assimp's reading

set assimp [auto_execok assimp]
if {$assimp ne ""} {
    # assimp's raw reading: faces, and vertices as polygon corners.
    proc assimp_counts {file} {
        set text [exec {*}$::assimp info $file -r 2>@1]
        regexp -line {^Vertices:\s+(\d+)} $text -> vertices
        regexp -line {^Faces:\s+(\d+)} $text -> faces
        return [list $faces $vertices]
    }
    foreach {file path} [list cube.lwo [file join $objects cube.lwo] triangle.lwo [file join $objects triangle.lwo] \
                             pair.lws [file join $scenes pair.lws]] {
        reset_model
        run import_lightwave $path
        check "$file: faces and corners as assimp reads them" [totals [vesk get_world]] [assimp_counts $path]
    }
    # Positions: assimp places a scene's objects (turned by heading, pitch
    # and bank, scaled, parented) and mirrors z as this reader does; its
    # OBJ export holds every point where it placed it.
    proc all_points {id} {
        set out [lmap p [vesk object_get_vertices $id] { format "%.3f %.3f %.3f" {*}$p }]
        foreach k [kids $id] { lappend out {*}[all_points $k] }
        return $out
    }
    proc tidy {points} { return [lsort [string map {-0.000 0.000} $points]] }
    foreach scene {turned pair} {
        set obj [file join $::scratch $scene.obj]
        exec {*}$assimp export [file join $scenes $scene.lws] $obj 2>@1
        set f [open $obj r]
        set theirs {}
        foreach line [split [read $f] \n] {
            if {[lindex $line 0] eq "v"} { lappend theirs [format "%.3f %.3f %.3f" {*}[lrange $line 1 3]] }
        }
        close $f
        reset_model
        run import_lightwave [file join $scenes $scene.lws]
        check "$scene.lws: every point where assimp places it" [tidy [all_points [vesk get_world]]] [tidy $theirs]
    }
} else {
    puts "assimp not installed: its comparison skipped"
}

# ---- one undo step

reset_model
run import_lightwave [file join $objects box.lwob]
run import_lightwave [file join $scenes new.lws]
check "two imports" [names [vesk get_world]] {box new}
quietly { vesk undo }
check "undo takes the scene out" [names [vesk get_world]] box
quietly { vesk undo }
check "and the object" [names [vesk get_world]] {}

# ---- bad input: refused with a message, the model unchanged

reset_model
run import_lightwave [file join $objects triangle.lwo]
proc world_text {} { return [dump [vesk get_world]] }
set before [world_text]
proc refused {what file pattern} {
    check "$what: refused" [run import_lightwave $file] 0
    check_match "$what: message" $::output "*import_lightwave: *$pattern*"
    check "$what: model unchanged" [world_text] $::before
}
foreach cut [lsort [glob [file join $bad cut_*.lwo]]] {
    refused "truncated [file tail $cut]" $cut "runs past the end of the file"
}
refused "FORM size past the end" [file join $bad form_size.lwo] "FORM size"
refused "chunk size past the end" [file join $bad chunk_size.lwo] "PNTS chunk (268435456 bytes) runs past"
refused "point index out of range" [file join $bad point_index.lwo] "names point 7 of 3"
refused "LWOB point index out of range" [file join $bad lwob_point_index.lwo] "names point 9 of 3"
refused "1023 corners announced" [file join $bad count_1023.lwo] "ends inside a polygon"
refused "LWOB count past the chunk" [file join $bad lwob_count.lwo] "ends inside a polygon"
refused "tag for a polygon not there" [file join $bad ptag_index.lwo] "names polygon 5 of 1"
refused "points only" [file join $bad no_polygons.lwo] "no polygons or lines"
refused "not LightWave" [file join $bad not_lightwave.lwo] "not a LightWave object*or scene"
refused "another IFF" [file join $bad ilbm.lwo] "of type ILBM"
set t0 [clock milliseconds]
refused "100000 objects in a scene" [file join $bad many.lws] "more than 2000 objects"
check_true "refused quickly" [expr {[clock milliseconds] - $t0 < 5000}]
refused "a scene whose objects are all missing" [file join $bad only_missing.lws] "places no object"
refused "missing file" [file join $::scratch nonesuch.lwo] "can't open"
refused "a folder" $::scratch "not a regular file"
set empty [file join $::scratch empty.lwo]
close [open $empty w]
refused "empty file" $empty "not a LightWave"

finish
