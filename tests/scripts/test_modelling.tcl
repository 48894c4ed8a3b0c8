# The modelling commands as the scripts use them: primitives, the surface
# operations with their status texts, extrusion commands, hulls and text,
# undo of the snapshot operations, and bad input given through `vesk`.
source [file join [lindex $argv 0] scripts harness.tcl]

proc world_objects {} { return [vesk object_get_children [vesk get_world]] }
proc last_object {} { return [lindex [world_objects] end] }
proc nsurf {id} { return [llength [vesk object_get_surfaces $id]] }
proc nvert {id} { return [llength [vesk object_get_vertices $id]] }
proc fresh {} {
    capture_console { vesk clear_all }
    vesk set_select_mode 0
}

# A model file of one polygon with the given points (a list of x y z).
proc polygon_file {name points {kind 0}} {
    set path [file join $::scratch $name.vk]
    set f [open $path w]
    puts $f "VESKb\nOBJECT world\nkids 1\nOBJECT poly\nname \"$name\"\nnumvert [llength $points]"
    foreach p $points { puts $f $p }
    puts $f "numsurf 1\nSURF $kind\nrefs [llength $points]"
    for {set i 0} {$i < [llength $points]} {incr i} { puts $f "$i 0 0" }
    puts $f "kids 0"
    close $f
    return $path
}

proc load_polygon {name points {kind 0}} {
    capture_console { vesk load_vk [polygon_file $name $points $kind] }
    return [last_object]
}

set square {{0 0 0} {1 0 0} {1 1 0} {0 1 0}}

# --- primitives ---
tcltest::test modelling-1.1 {a new cube: status, shape, selection, undo} -setup {
    fresh
} -body {
    set text [capture_console { vesk new_cube }]
    check_match "new cube status" $text "*cube added*"
    set cube [last_object]
    check "cube vertices" [nvert $cube] 8
    check "cube surfaces" [nsurf $cube] 6
    check "cube is selected" [vesk get_selected_objects] $cube
    check "cube centred at the origin" [vesk object_get_centre $cube] "0 0 0"
    vesk undo
    check "undo add cube" [world_objects] ""
    mismatches
} -result {}

# --- subdivide, with its status texts and undo ---
tcltest::test modelling-2.1 {subdivide, with its status texts and undo} -setup {
    fresh
} -body {
    set q [load_polygon sq $square]
    vesk object_select $q
    set text [capture_console { vesk surface_subdivide }]
    check_match "subdivide status" $text "subdividing...*surfaces subdivided: 1*"
    check "subdivided into four" [nsurf $q] 4
    check "nine vertices" [nvert $q] 9
    check "selection cleared" [vesk get_selected_objects] ""
    vesk undo
    set q [last_object]
    check "undo subdivide" [list [nsurf $q] [nvert $q]] {1 4}
    set text [capture_console { vesk surface_subdivide }]
    check_match "nothing selected" $text "*no surfaces selected*"
    mismatches
} -result {}

# --- spike ---
tcltest::test modelling-2.2 {spike} -body {
    vesk object_select $q
    set text [capture_console { vesk surface_spike }]
    check_match "spike status" $text "spike...*surfaces spiked: 1*"
    check "spike: four triangles" [nsurf $q] 4
    check "spike: five vertices added" [nvert $q] 9
    mismatches
} -result {}

# --- settings ---
tcltest::test modelling-3.1 {surface settings and their status texts} -setup {
    fresh
} -body {
    set q [load_polygon sq $square]
    vesk object_select $q
    set text [capture_console { vesk set_col 0 }]
    check_match "set col status" $text "setting surfaces col...*col set on surfaces: 1*"
    check "material set" [lindex [vesk object_get_surfaces $q] 0 1] 0
    set text [capture_console { vesk set_col 9999 }]
    check_match "bad col refused" $text "*no palette entry 9999*"
    check "material kept" [lindex [vesk object_get_surfaces $q] 0 1] 0
    set text [capture_console { vesk surface_set_shaded 2 }]
    check_match "shaded status" $text "setting shading...*surfaces set to shaded: 1*"
    check "shading stored as given" [lindex [vesk object_get_surfaces $q] 0 2] 2
    set text [capture_console { vesk surface_set_twosided 0 }]
    check_match "one sided status" $text "*1 surfaces set to one sided*"
    set text [capture_console { vesk set_surface_type 1 }]
    check_match "type status" $text "setting surface type...*surface type set: 1*"
    check "closed line" [lindex [vesk object_get_surfaces $q] 0 0] 1
    set text [capture_console { vesk surface_flip_normals }]
    check_match "flip status" $text "flip normals...*flip normals done*"
    set text [capture_console { vesk surface_change_vertex_order }]
    check_match "vertex order status" $text "changing vertex order...*vertex order changed in 1 objects*"
    vesk clear_selection
    set text [capture_console { vesk surface_set_shaded 1 }]
    check_match "shading needs a selection" $text "*surface set shading - no surfaces selected*"
    set text [capture_console { vesk surface_flip_normals }]
    check_match "flip needs a selection" $text "*flip normals - no surfaces selected*"
    set text [capture_console { vesk set_col notanumber }]
    check_match "a word that is no number is index 0" $text "*col set on surfaces: 0*"
    mismatches
} -result {}

# --- hole, bevel, spline, triangulate ---
tcltest::test modelling-4.1 {hole and bevel} -setup {
    fresh
} -body {
    set q [load_polygon sq $square]
    vesk object_select $q
    set text [capture_console { vesk surface_make_hole }]
    check_match "hole status" $text "make hole...*make hole - done*"
    check "hole ring" [nsurf $q] 4
    vesk object_select $q
    set text [capture_console { vesk surface_bevel }]
    check_match "bevel status" $text "bevel...*surfaces beveled: 4*"
    check "bevel: a top and four sides per ring quad" [nsurf $q] 20
    mismatches
} -result {}

tcltest::test modelling-4.2 {spline of a triangle} -setup {
    fresh
} -body {
    set t [load_polygon tri {{0 0 0} {2 0 0} {0 2 0}}]
    vesk object_select $t
    set text [capture_console { vesk surface_spline }]
    check_match "spline status" $text "setting up undo for spline...*splining surfaces...*surfaces splined: 1*"
    check "spline of a triangle" [expr {[llength [lindex [vesk object_get_surfaces $t] 0]] - 4}] 12
    mismatches
} -result {}

tcltest::test modelling-4.3 {triangulate an L and undo} -setup {
    fresh
} -body {
    set l [load_polygon ell {{0 0 0} {2 0 0} {2 1 0} {1 1 0} {1 2 0} {0 2 0}}]
    vesk object_select $l
    set text [capture_console { vesk surface_triangulate }]
    check_match "triangulate status" $text "*polygons triangulated: 1*"
    check "L in four triangles" [nsurf $l] 4
    vesk undo
    check "undo triangulate" [nsurf [last_object]] 1
    mismatches
} -result {}

# --- vertex-mode operations ---
tcltest::test modelling-5.1 {vertex-mode operations} -setup {
    fresh
} -body {
    set q [load_polygon sq $square]
    vesk set_select_mode 2
    vesk object_select $q
    capture_console { vesk insert_vertex }
    check "insert vertex on four edges" [nvert $q] 8
    check "eight selected" $numselected 8
    vesk undo
    check "undo insert vertex" [nvert $q] 4
    set text [capture_console { vesk removesurface }]
    check "remove surface" [nsurf $q] 0
    check "vertices remain" [nvert $q] 4
    capture_console { vesk createsurface }
    check "create surface from the selection" [nsurf $q] 1
    capture_console { vesk surface_create_object }
    check "surface moved to a new object" [llength [world_objects]] 1
    check "new object holds it" [list [nvert [last_object]] [nsurf [last_object]]] {4 1}
    mismatches
} -result {}

# --- extrusion commands ---
tcltest::test modelling-6.1 {revolve a profile} -setup {
    fresh
} -body {
    set line [load_polygon profile {{1 0 0} {1 1 0}} 2]
    vesk object_select $line
    set saved $prefs_num_surface_div
    set prefs_num_surface_div 4
    capture_console { vesk revolve 1 }
    check "revolve: 2 + 4 x 2 vertices" [nvert $line] 10
    check "revolve: four walls" [nsurf $line] 4
    set prefs_num_surface_div $saved
    mismatches
} -result {}

tcltest::test modelling-6.2 {extrude along a path} -setup {
    fresh
} -body {
    set line [load_polygon profile {{1 0 0} {1 1 0}} 2]
    vesk object_select $line
    set text [capture_console { vesk define_extrude_path }]
    check_match "path defined" $text "*Path object defined OK*"
    set q [load_polygon sq $square]
    vesk clear_selection
    vesk object_select $q
    capture_console { vesk extrude_along_path }
    check "extruded along the two-point path" [nvert $q] 12
    check "no cap, links only" [nsurf $q] 9
    vesk undo
    capture_console { vesk clear_all }
    set out [capture_console { vesk extrude_along_path }]
    check_match "the deleted path is reported" $out "*extrude along path*"
    mismatches
} -result {}

# --- hull and text ---
tcltest::test modelling-7.1 {convex hull and undo} -setup {
    fresh
} -body {
    capture_console { vesk new_cube }
    set text [capture_console { vesk convexhull }]
    check_match "hull status" $text "convex hull...*convex hull done: 8 vertices, 12 surfaces*"
    check "hull object" [vesk object_get_name [last_object]] "convex hull"
    vesk undo
    check "undo hull" [llength [world_objects]] 1
    mismatches
} -result {}

tcltest::test modelling-7.2 {text objects} -setup {
    fresh
} -body {
    set text [capture_console { vesk add_text "VESK 2.0" }]
    check_match "add text status" $text "*add text done*"
    set txt [last_object]
    check "text object named by the text" [vesk object_get_name $txt] "VESK 2.0"
    set kinds {}
    foreach s [vesk object_get_surfaces $txt] { lappend kinds [lindex $s 0] }
    check "text is lines" [lsort -unique $kinds] 2
    capture_console { vesk create_text "ab" }
    check "create_text too" [vesk object_get_name [last_object]] "ab"
    set text [capture_console { vesk add_text "" }]
    check_match "empty text" $text "*no text given*"
    mismatches
} -result {}

# --- bad arguments through the dispatcher ---
tcltest::test modelling-8.1 {bad arguments through the dispatcher} -body {
    check "execute_surface_filter of an unknown id changes nothing" [vesk execute_surface_filter nosuch] ""
    check "revolve wants its axis" [string match "incorrect number of args*" [vesk revolve]] 1
    mismatches
} -result {}
finish
