# test_svg_import.tcl - "import_vector" reads SVG drawings: every path
# command absolute and relative, the basic shapes, groups as child
# objects, nested transforms, the viewBox, fill and stroke colours, a
# letter with a hole, drawings written by python3's xml.etree, one undo
# step per import, and bad files (truncated XML, deep nesting, bad path
# data, huge numbers, entity expansion, external entities) refused or
# cut short with a message, the model left as it was.
# Curves are cut by the default "spline_steps" of 4.

source [file join [file dirname [info script]] harness.tcl]

set steps 4
set pi [expr {acos(-1)}]
set svg_ns {xmlns="http://www.w3.org/2000/svg"}

proc quiet_new_model {} { quietly { vesk new_model } }

# Writes an SVG file of the body (inside a plain svg element unless it
# is a whole document or empty) into the scratch directory.
proc svg_file {name body} {
    set file [file join $::scratch $name.svg]
    if {$body ne "" && ![string match "<?xml*" $body] && ![string match "<svg *" $body] && ![string match "<html*" $body]} {
        set body "<svg $::svg_ns>$body</svg>"
    }
    set f [open $file w]
    puts -nonewline $f $body
    close $f
    return $file
}

# Imports the body into an empty model; the command's result and its
# console output in ::output.
proc import_svg {name body} {
    quiet_new_model
    set file [svg_file $name $body]
    set ::output [capture_console { set result [vesk import_vector $file] }]
    return $result
}

proc all_objects {{id {}}} {
    if {$id eq ""} { set id [vesk get_world] }
    set result {}
    foreach kid [vesk object_get_children $id] { lappend result $kid {*}[all_objects $kid] }
    return $result
}

# Every surface of the model, depth first: {kind mat {x y} {x y} ...}.
proc surfaces {} {
    set result {}
    foreach id [all_objects] {
        set vertices [vesk object_get_vertices $id]
        foreach s [vesk object_get_surfaces $id] {
            set points {}
            foreach ref [lrange $s 4 end] {
                lassign [lindex $vertices [lindex $ref 0]] x y z
                if {$z != 0} { error "a point off the z = 0 plane" }
                lappend points [list $x $y]
            }
            lappend result [list [lindex $s 0] [lindex $s 1] {*}$points]
        }
    }
    return $result
}

proc area {points} {
    set a 0.0
    set n [llength $points]
    for {set i 0} {$i < $n} {incr i} {
        lassign [lindex $points $i] x1 y1
        lassign [lindex $points [expr {($i + 1) % $n}]] x2 y2
        set a [expr {$a + $x1 * $y2 - $x2 * $y1}]
    }
    return [expr {$a / 2}]
}

# SVG points to model points (y turned upward).
proc flip {points} { return [lmap p $points { list [lindex $p 0] [expr {-[lindex $p 1]}] }] }

# A closed outline started at its smallest point, counter-clockwise.
proc canonical {points} {
    if {[area $points] < 0} { set points [lreverse $points] }
    set keys [lmap p $points { format "%.3f %.3f" {*}$p }]
    set first [lsearch -exact $keys [lindex [lsort $keys] 0]]
    return [concat [lrange $points $first end] [lrange $points 0 [expr {$first - 1}]]]
}

# 1 when the two point lists match within 1e-4.
proc same_points {a b} {
    if {[llength $a] != [llength $b]} { return 0 }
    foreach p $a q $b {
        foreach u $p v $q {
            if {abs($u - $v) > 1e-4} { return 0 }
        }
    }
    return 1
}

# Checks that surface i is a polygon with the given SVG points (any start).
proc check_polygon {name i svg_points} {
    set s [lindex [surfaces] $i]
    check "$name: a polygon" [lindex $s 0] 0
    set actual [lrange $s 2 end]
    check_true "$name: counter-clockwise" [expr {[area $actual] > 0}]
    set expected [flip $svg_points]
    # A mismatch shows the points the surface has.
    set ok [same_points [canonical $actual] [canonical $expected]]
    check "$name: points" [expr {$ok ? $expected : $actual}] $expected
}

# Checks that surface i is a line of the kind with exactly these SVG points.
proc check_line {name i kind svg_points} {
    set s [lindex [surfaces] $i]
    check "$name: kind" [lindex $s 0] $kind
    set actual [lrange $s 2 end]
    set expected [flip $svg_points]
    check "$name: points" [expr {[same_points $actual $expected] ? $expected : $actual}] $expected
}

proc cubic {p0 p1 p2 p3 t} {
    set u [expr {1 - $t}]
    lmap a $p0 b $p1 c $p2 d $p3 {
        expr {$u * $u * $u * $a + 3 * $u * $u * $t * $b + 3 * $u * $t * $t * $c + $t * $t * $t * $d}
    }
}
proc quadratic {p0 p1 p2 t} {
    set u [expr {1 - $t}]
    lmap a $p0 b $p1 c $p2 { expr {$u * $u * $a + 2 * $u * $t * $b + $t * $t * $c} }
}
proc cubic_points {p0 p1 p2 p3} {
    set out {}
    for {set i 1} {$i <= $::steps} {incr i} { lappend out [cubic $p0 $p1 $p2 $p3 [expr {double($i) / $::steps}]] }
    return $out
}
proc quadratic_points {p0 p1 p2} {
    set out {}
    for {set i 1} {$i <= $::steps} {incr i} { lappend out [quadratic $p0 $p1 $p2 [expr {double($i) / $::steps}]] }
    return $out
}

proc edit_colour_ui {args} { set ::edited $args }
proc palette_rgb {index} {
    quietly { vesk edit_palette_entry $index }
    return [format "%.2f %.2f %.2f" {*}[lrange $::edited 1 3]]
}
proc colour_of {i} { return [palette_rgb [lindex [surfaces] $i 1]] }

# ---- path commands ----

set square {{10 10} {20 10} {30 10} {30 20} {10 20}}
tcltest::test svg-1.1 {straight path commands: absolute, relative, implicit, run together} -body {
    check "M L H V Z" [import_svg abs {<path fill="red" d="M10 10 L20 10 H30 V20 L10 20 Z"/>}] 1
    check "one polygon" [llength [surfaces]] 1
    check_polygon "absolute" 0 $square
    import_svg rel {<path fill="red" d="m10 10 l10 0 h10 v10 l-20 0 z"/>}
    check_polygon "relative" 0 $square
    import_svg implicit {<path fill="red" d="M10,10 20,10 30,10 30,20 10,20z"/>}
    check_polygon "implicit lineto after moveto" 0 $square
    import_svg implicit_rel {<path fill="red" d="m10,10 10,0 10,0 0,10 -20,0z"/>}
    check_polygon "implicit relative lineto" 0 $square
    import_svg packed {<path fill="red" d="M10-10L20-10.5.5.5z"/>}
    check_polygon "numbers run together" 0 {{10 -10} {20 -10.5} {0.5 0.5}}
    mismatches
} -result {}

# Curves, stroked only: open lines.
tcltest::test svg-1.2 {cubic and quadratic curves, smooth and relative} -body {
    set c [concat {{0 0}} [cubic_points {0 0} {0 10} {10 10} {10 0}]]
    import_svg cubic {<path fill="none" stroke="black" d="M0 0 C0 10 10 10 10 0"/>}
    check_line "C" 0 2 $c
    import_svg cubic_rel {<path fill="none" stroke="black" d="M0 0 c0 10 10 10 10 0"/>}
    check_line "c" 0 2 $c
    set s [concat $c [cubic_points {10 0} {10 -10} {20 -10} {20 0}]]
    import_svg smooth {<path fill="none" stroke="black" d="M0 0 C0 10 10 10 10 0 S20 -10 20 0"/>}
    check_line "S reflects the last control point" 0 2 $s
    import_svg smooth_rel {<path fill="none" stroke="black" d="M0 0 c0 10 10 10 10 0 s10 -10 10 0"/>}
    check_line "s" 0 2 $s
    set s0 [concat {{0 0}} [cubic_points {0 0} {0 0} {10 10} {10 0}]]
    import_svg smooth_first {<path fill="none" stroke="black" d="M0 0 S10 10 10 0"/>}
    check_line "S without a curve before: first control at the current point" 0 2 $s0
    set q [concat {{0 0}} [quadratic_points {0 0} {5 10} {10 0}] [quadratic_points {10 0} {15 -10} {20 0}]]
    import_svg quad {<path fill="none" stroke="black" d="M0 0 Q5 10 10 0 T20 0"/>}
    check_line "Q T" 0 2 $q
    import_svg quad_rel {<path fill="none" stroke="black" d="M0 0 q5 10 10 0 t10 0"/>}
    check_line "q t" 0 2 $q
    mismatches
} -result {}

# A half circle of radius 10 about (10, 0): steps points per quarter.
tcltest::test svg-1.3 {elliptical arcs: relative, packed flags, radii scaled up, rotated} -body {
    set arc {{0 0}}
    for {set i 1} {$i <= 2 * $steps} {incr i} {
        set a [expr {$pi + $pi * $i / (2 * $steps)}]
        lappend arc [list [expr {10 + 10 * cos($a)}] [expr {10 * sin($a)}]]
    }
    import_svg arc {<path fill="none" stroke="black" d="M0 0 A10 10 0 0 1 20 0"/>}
    check_line "A" 0 2 $arc
    import_svg arc_rel {<path fill="none" stroke="black" d="M0 0 a10 10 0 0 1 20 0"/>}
    check_line "a" 0 2 $arc
    import_svg arc_flags {<path fill="none" stroke="black" d="M0 0 a10 10 0 0120 0"/>}
    check_line "arc flags without separators" 0 2 $arc
    # Radii too small are scaled up to reach the end point.
    import_svg arc_small {<path fill="none" stroke="black" d="M0 0 A1 1 0 0 1 20 0"/>}
    check_line "A with radii scaled up" 0 2 $arc
    # A quarter of an ellipse turned 90 degrees: every point on it.
    import_svg arc_rotated {<path fill="none" stroke="black" d="M0 0 A20 10 90 0 0 10 20"/>}
    set pts [lrange [lindex [surfaces] 0] 2 end]
    check "a quarter turn has steps segments" [llength $pts] [expr {$steps + 1}]
    set on 1
    foreach p $pts {
        lassign $p x y
        # Centre (10, 0) in SVG, y radius 20 along x after the turn: (x-10)^2/100 + y^2/400 = 1 (y flipped).
        if {abs(($x - 10) ** 2 / 100.0 + $y ** 2 / 400.0 - 1) > 1e-4} { set on 0 }
    }
    check "A with rotation: the points lie on the turned ellipse" $on 1
    mismatches
} -result {}

# Several subpaths: each its own surface.
tcltest::test svg-1.4 {subpaths and closepath} -body {
    import_svg subpaths {<path fill="none" stroke="black" d="M0 0 L10 0 M20 0 L30 0 Z"/>}
    check "subpaths become surfaces" [llength [surfaces]] 2
    check_line "first subpath" 0 2 {{0 0} {10 0}}
    check_line "a closed two-point subpath stays a line" 1 2 {{20 0} {30 0}}
    import_svg after_close {<path fill="none" stroke="black" d="M0 0 L10 0 L10 10 Z L0 10"/>}
    check_line "closepath" 0 1 {{0 0} {10 0} {10 10}}
    check_line "drawing after closepath starts at the subpath's start" 1 2 {{0 0} {0 10}}
    mismatches
} -result {}

# ---- a letter with a hole ----
tcltest::test svg-2.1 {a letter with a hole} -body {
    import_svg letter {<path id="O" fill="black" d="M0 0 H10 V10 H0 Z M3 3 V7 H7 V3 Z"/>}
    check "the O: outer polygon and hole" [llength [surfaces]] 2
    check_polygon "the O's outline" 0 {{0 0} {10 0} {10 10} {0 10}}
    check_polygon "the O's hole" 1 {{3 3} {7 3} {7 7} {3 7}}
    check "the O is one object" [llength [all_objects]] 1
    mismatches
} -result {}

# ---- basic shapes ----
tcltest::test svg-3.1 {rectangles, square and rounded} -body {
    import_svg rect {<rect x="10" y="20" width="30" height="40"/>}
    check_polygon "rect" 0 {{10 20} {40 20} {40 60} {10 60}}
    import_svg rect_round {<rect x="0" y="0" width="20" height="10" rx="2"/>}
    set pts [lrange [lindex [surfaces] 0] 2 end]
    check "rounded rect: a corner point and steps segments per corner" [llength $pts] [expr {4 * ($steps + 1)}]
    set xs [lmap p $pts { lindex $p 0 }]
    set ys [lmap p $pts { lindex $p 1 }]
    check "rounded rect spans its box" [format "%.4f %.4f %.4f %.4f" [tcl::mathfunc::min {*}$xs] [tcl::mathfunc::max {*}$xs] \
        [tcl::mathfunc::min {*}$ys] [tcl::mathfunc::max {*}$ys]] "0.0000 20.0000 -10.0000 0.0000"
    check "rounded rect: (2, 0) is a corner's end" [expr {[lsearch -exact [lmap p $pts { format "%.4f %.4f" {*}$p }] "2.0000 0.0000"] >= 0}] 1
    mismatches
} -result {}
tcltest::test svg-3.2 {circles and ellipses} -body {
    import_svg circle {<circle cx="50" cy="40" r="10"/>}
    set pts [lrange [lindex [surfaces] 0] 2 end]
    check "circle: steps points per quarter" [llength $pts] [expr {4 * $steps}]
    set on 1
    foreach p $pts {
        if {abs(hypot([lindex $p 0] - 50, [lindex $p 1] + 40) - 10) > 1e-4} { set on 0 }
    }
    check "circle: every point at the radius" $on 1
    check_true "circle: counter-clockwise" [expr {[area $pts] > 0}]
    import_svg ellipse {<ellipse cx="0" cy="0" rx="20" ry="5"/>}
    set pts [lrange [lindex [surfaces] 0] 2 end]
    set on 1
    foreach p $pts {
        if {abs(([lindex $p 0] / 20.0) ** 2 + ([lindex $p 1] / 5.0) ** 2 - 1) > 1e-4} { set on 0 }
    }
    check "ellipse: every point on it" $on 1
    check "ellipse: (20, 0) is a point" [expr {[lsearch -exact [lmap p $pts { format "%.4f %.4f" {*}$p }] "20.0000 0.0000"] >= 0}] 1
    mismatches
} -result {}
tcltest::test svg-3.3 {lines, polylines, polygons and absolute units} -body {
    import_svg line {<line x1="1" y1="2" x2="3" y2="4" stroke="black"/>}
    check_line "line" 0 2 {{1 2} {3 4}}
    import_svg line_unstroked {<line x1="1" y1="2" x2="3" y2="4"/><rect width="1" height="1"/>}
    check "a line without stroke draws nothing" [llength [surfaces]] 1
    import_svg polyline {<polyline points="0,0 10,0 10,10" fill="none" stroke="black"/>}
    check_line "polyline" 0 2 {{0 0} {10 0} {10 10}}
    import_svg polygon_stroked {<polygon points="0,0 10,0 10,10" fill="none" stroke="black"/>}
    check_line "stroked polygon: a closed line" 0 1 {{0 0} {10 0} {10 10}}
    import_svg polygon {<polygon points="0 0 10 0 10 10 0 10"/>}
    check_polygon "polygon" 0 {{0 0} {10 0} {10 10} {0 10}}
    import_svg units {<rect x="0" y="0" width="1in" height="2.54cm"/>}
    check_polygon "absolute units in lengths" 0 {{0 0} {96 0} {96 96} {0 96}}
    mismatches
} -result {}

# ---- groups and transforms ----
tcltest::test svg-4.1 {groups become child objects with their transforms} -body {
    set body {<g id="outer" transform="translate(10,20)"><g id="inner" transform="scale(2)">
        <polygon points="0,0 1,0 1,1" transform="rotate(90)"/></g>
        <rect width="1" height="1"/></g>}
    import_svg nested $body
    check "groups: drawing, outer, inner" [lmap o [all_objects] { vesk object_get_name $o }] "nested outer inner"
    check "groups: the drawing is the one new top object" [llength [vesk object_get_children [vesk get_world]]] 1
    check_polygon "outer rect translated" 0 {{10 20} {11 20} {11 21} {10 21}}
    check_polygon "nested translate, scale, rotate" 1 {{10 20} {10 22} {8 22}}
    mismatches
} -result {}
tcltest::test svg-4.2 {matrix, skew, rotate about a centre, transform lists, bad transforms} -body {
    import_svg matrix {<polygon points="0,0 1,0 1,1" transform="matrix(1 2 3 4 5 6)"/>}
    check_polygon "matrix" 0 {{5 6} {6 8} {9 12}}
    import_svg skewx {<polygon points="0,0 0,10 10,10" transform="skewX(45)"/>}
    check_polygon "skewX" 0 {{0 0} {10 10} {20 10}}
    import_svg skewy {<polygon points="0,0 10,0 10,10" transform="skewY(45)"/>}
    check_polygon "skewY" 0 {{0 0} {10 10} {10 20}}
    import_svg rotate_centre {<polygon points="5,5 10,5 10,10" transform="rotate(90 5 5)"/>}
    check_polygon "rotate about a centre" 0 {{5 5} {5 10} {0 10}}
    import_svg list {<polygon points="0,0 1,0 1,1" transform="translate(10) scale(2,3)"/>}
    check_polygon "a transform list applies right to left" 0 {{10 0} {12 0} {12 3}}
    import_svg bad_transform {<polygon points="0,0 1,0 1,1" transform="wobble(3)"/><rect width="1" height="1"/>}
    check "an unreadable transform skips its element" [llength [surfaces]] 1
    check_match "and says so" $::output "*unknown transform \"wobble\"*"
    mismatches
} -result {}

# ---- the viewBox ----
tcltest::test svg-5.1 {the viewBox: scale, origin, aspect ratio, units, nested transforms} -body {
    import_svg viewbox "<svg $svg_ns width=\"200\" height=\"100\" viewBox=\"0 0 20 10\"><rect x=\"1\" y=\"1\" width=\"2\" height=\"3\"/></svg>"
    check_polygon "viewBox scales" 0 {{10 10} {30 10} {30 40} {10 40}}
    import_svg viewbox_min "<svg $svg_ns viewBox=\"10 20 20 10\"><rect x=\"10\" y=\"20\" width=\"2\" height=\"3\"/></svg>"
    check_polygon "viewBox origin" 0 {{0 0} {2 0} {2 3} {0 3}}
    import_svg viewbox_meet "<svg $svg_ns width=\"100\" height=\"100\" viewBox=\"0 0 20 10\"><rect width=\"20\" height=\"10\"/></svg>"
    check_polygon "viewBox meets, centred" 0 {{0 25} {100 25} {100 75} {0 75}}
    import_svg viewbox_none "<svg $svg_ns width=\"100\" height=\"100\" viewBox=\"0 0 20 10\" preserveAspectRatio=\"none\"><rect width=\"20\" height=\"10\"/></svg>"
    check_polygon "viewBox stretched" 0 {{0 0} {100 0} {100 100} {0 100}}
    import_svg viewbox_units "<svg $svg_ns width=\"10mm\" height=\"10mm\" viewBox=\"0 0 10 10\"><rect width=\"10\" height=\"10\"/></svg>"
    set mm [expr {96 / 25.4 * 10}]
    check_polygon "viewBox with millimetres" 0 [list {0 0} [list $mm 0] [list $mm $mm] [list 0 $mm]]
    import_svg viewbox_nested "<svg $svg_ns width=\"20\" height=\"20\" viewBox=\"0 0 10 10\"><g transform=\"translate(1,1)\"><rect width=\"1\" height=\"1\" transform=\"scale(2)\"/></g></svg>"
    check_polygon "viewBox and nested transforms" 0 {{2 2} {6 2} {6 6} {2 6}}
    mismatches
} -result {}

# ---- colours ----
tcltest::test svg-6.1 {fill and stroke colours in every notation} -body {
    set body {<rect width="1" height="1" fill="#f00"/>
        <rect width="1" height="1" fill="#00ff00"/>
        <rect width="1" height="1" fill="rgb(0, 0, 255)"/>
        <rect width="1" height="1" fill="rgb(100%, 100%, 0%)"/>
        <rect width="1" height="1" style="fill: aqua; stroke: none"/>
        <rect width="1" height="1" fill="red" style="fill:white"/>
        <g fill="navy"><g><rect width="1" height="1"/></g></g>
        <line x2="1" y2="1" style="stroke:#808080"/>
        <rect width="1" height="1" fill="none" stroke="lime"/>
        <rect width="1" height="1" fill="url(#gradient) maroon"/>
        <rect width="1" height="1" fill="purple"/>}
    import_svg colours $body
    # The drawing's own surfaces come first, then those of its groups.
    set expected {"1.00 0.00 0.00" "0.00 1.00 0.00" "0.00 0.00 1.00" "1.00 1.00 0.00" "0.00 1.00 1.00" "1.00 1.00 1.00"
        "0.50 0.50 0.50" "0.00 1.00 0.00" "0.50 0.00 0.00" "0.50 0.00 0.50" "0.00 0.00 0.50"}
    set names {"#rgb" "#rrggbb" "rgb()" "rgb() in percent" "style" "style over attribute"
        "stroke in a style" "stroke of an unfilled shape" "url with a fallback" "named colour" "inherited from groups"}
    for {set i 0} {$i < [llength $expected]} {incr i} {
        check "colour: [lindex $names $i]" [colour_of $i] [lindex $expected $i]
    }
    check "the stroke-only rect is a closed line" [lindex [surfaces] 7 0] 1
    mismatches
} -result {}
tcltest::test svg-6.2 {display none hides} -body {
    import_svg hidden {<rect width="1" height="1" display="none"/><g style="display:none"><rect width="1" height="1"/></g><rect width="2" height="2"/>}
    check "display none hides" [llength [surfaces]] 1
    mismatches
} -result {}

# ---- a drawing written by python3's xml.etree ----
set python [auto_execok python3]
tcltest::test svg-7.1 {a drawing written by python3's xml.etree} -constraints {python3} -body {
    set generated [file join $::scratch generated.svg]
    set script {
import sys, xml.etree.ElementTree as ET
ET.register_namespace("", "http://www.w3.org/2000/svg")
svg = ET.Element("{http://www.w3.org/2000/svg}svg", width="300", height="150", viewBox="0 0 200 100")
g = ET.SubElement(svg, "{http://www.w3.org/2000/svg}g", id="logo", transform="translate(20 10)")
ET.SubElement(g, "{http://www.w3.org/2000/svg}path", d="M0,0 h50 v50 h-50 z m10,10 v30 h30 v-30 z", fill="#336699")
ET.SubElement(g, "{http://www.w3.org/2000/svg}circle", cx="100", cy="25", r="25", fill="#cc3300")
ET.SubElement(svg, "{http://www.w3.org/2000/svg}polyline", points="0,90 200,90", fill="none", stroke="black")
ET.ElementTree(svg).write(sys.argv[1], xml_declaration=True, encoding="UTF-8")
}
    exec $python -c $script $generated
    quiet_new_model
    set output [capture_console { set result [vesk import_vector $generated] }]
    check "generated drawing imported" $result 1
    check "generated: objects" [lmap o [all_objects] { vesk object_get_name $o }] "generated logo"
    check "generated: surfaces" [lmap s [surfaces] { list [lindex $s 0] [expr {[llength $s] - 2}] }] \
        [list {2 2} {0 4} {0 4} [list 0 [expr {4 * $steps}]]]
    # viewBox 200 x 100 into 300 x 150: everything times 1.5.
    check_polygon "generated: outline" 1 {{30 15} {105 15} {105 90} {30 90}}
    check_polygon "generated: hole" 2 {{45 30} {90 30} {90 75} {45 75}}
    check_line "generated: the stroke" 0 2 {{0 135} {300 135}}
    check "generated: colours" [list [colour_of 1] [colour_of 3] [colour_of 0]] {{0.20 0.40 0.60} {0.80 0.20 0.00} {0.00 0.00 0.00}}
    mismatches
} -result {}

# ---- the logo among the test files (also the fuzz target's seed) ----
tcltest::test svg-7.2 {the logo among the test files} -body {
    quiet_new_model
    set output [capture_console { set result [vesk import_vector [file join $::tests_dir data formats logo.svg]] }]
    check "logo imported" $result 1
    check "logo: no notes" [string match "*import_vector:*" $output] 0
    check "logo: objects (a group without an id has no name)" [lmap o [all_objects] { vesk object_get_name $o }] {logo letters ring {}}
    check "logo: surface kinds, the drawing's own first" [lmap s [surfaces] { lindex $s 0 }] {2 2 2 1 2 0 2 0 0 1 0 0}
    mismatches
} -result {}

# ---- undo and the status ----
tcltest::test svg-8.1 {an import is one undo step} -body {
    quiet_new_model
    quietly { vesk import_vector [svg_file twice {<rect width="1" height="1"/>}] }
    set history [vesk undo_history]
    set before [llength [vesk object_get_children [vesk get_world]]]
    quietly { vesk import_vector [svg_file twice {<rect width="1" height="1"/>}] }
    check "import is one undo step" [llength [vesk undo_history]] [expr {[llength $history] + 1}]
    check "the step is named" [lindex [vesk undo_history] end] import
    quietly { vesk undo }
    check "undo takes the import out again" [llength [vesk object_get_children [vesk get_world]]] $before
    mismatches
} -result {}

# ---- bad input: refused, the model unchanged ----
proc model_state {} { return [list [all_objects] [surfaces]] }
# Each refusal a case of its own.
set ::case_number 0
proc refused {name body pattern} {
    tcltest::test svg-9.[incr ::case_number] "$name: refused, the model unchanged" \
        -body [list refused_checks $name $body $pattern] -result {}
}
proc refused_checks {name body pattern} {
    quiet_new_model
    quietly { vesk import_vector [svg_file keep {<rect width="1" height="1"/>}] }
    set before [model_state]
    set history [vesk undo_history]
    set file [svg_file $name $body]
    set start [clock milliseconds]
    set output [capture_console { set result [vesk import_vector $file] }]
    check "$name: refused" $result 0
    check_true "$name: quickly" [expr {[clock milliseconds] - $start < 5000}]
    check_match "$name: message" $output "*import_vector: *$pattern*"
    check "$name: model unchanged" [model_state] $before
    check "$name: no undo step" [vesk undo_history] $history
    mismatches
}

refused truncated "<svg $svg_ns><rect width=\"1\" height=\"1\"/><g>" "XML error at line 1*"
refused not_svg "<html><rect width=\"1\" height=\"1\"/></html>" "not an SVG drawing*<html>*"
refused empty "" "XML error*"
refused nothing "<svg $svg_ns><text>hello</text></svg>" "no shapes*"
refused deep "<svg $svg_ns>[string repeat <g> 200]<rect width=\"1\" height=\"1\"/>[string repeat </g> 200]</svg>" \
    "nested deeper than 128*"
refused very_deep "<svg $svg_ns>[string repeat <g> 100000]</svg>" "XML error*"
refused huge_transform "<svg $svg_ns><rect width=\"1e300\" height=\"1\" transform=\"scale(1e300)\"/></svg>" "out of range*"
set laughs "<?xml version=\"1.0\"?>\n<!DOCTYPE svg \[\n<!ENTITY lol \"lol\">\n"
set prev lol
for {set i 1} {$i < 10} {incr i} {
    append laughs "<!ENTITY lol$i \"[string repeat "&$prev;" 10]\">\n"
    set prev lol$i
}
append laughs "\]>\n<svg $svg_ns><desc>&lol9;</desc><rect width=\"1\" height=\"1\" id=\"&lol9;\"/></svg>\n"
refused laughs $laughs "XML error*"
set secret [file join $::scratch secret.txt]
set f [open $secret w]; puts $f "SECRET-CONTENT"; close $f
refused external "<?xml version=\"1.0\"?>\n<!DOCTYPE svg \[<!ENTITY x SYSTEM \"file://$secret\">\]>\n<svg $svg_ns><rect width=\"1\" height=\"1\" id=\"&x;\"/></svg>" "XML error*"
# An external entity in text is not loaded either (and text is not read).
tcltest::test svg-9.[incr ::case_number] {an external entity in text is never read} -body {
    import_svg external_text "<?xml version=\"1.0\"?>\n<!DOCTYPE svg \[<!ENTITY x SYSTEM \"file://$secret\">\]>\n<svg $svg_ns><desc>&x;</desc><rect width=\"1\" height=\"1\"/></svg>"
    check "external entity in text: never read" [string match "*SECRET*" $::output] 0
    check "external entity in text: names not taken from it" [string match "*SECRET*" [lmap o [all_objects] { vesk object_get_name $o }]] 0
    mismatches
} -result {}
tcltest::test svg-9.[incr ::case_number] {a missing file and no file name are refused} -body {
    quiet_new_model
    set output [capture_console { set result [vesk import_vector [file join $::scratch no_such_file.svg]] }]
    check "missing file refused" $result 0
    check_match "missing file message" $output "*import_vector: *can't open*"
    quietly { set result [vesk import_vector ""] }
    check "no file name" $result 0
    mismatches
} -result {}

# Bad path data: the path stops at the bad token, what came before stays.
tcltest::test svg-10.1 {bad path data: the path stops at the bad token, what came before stays} -body {
    import_svg bad_path {<path fill="none" stroke="black" d="M0 0 L10 0 L10 x L20 20"/>}
    check "bad path data: the import goes on" [llength [surfaces]] 1
    check_line "bad path data: the points before it" 0 2 {{0 0} {10 0}}
    check_match "bad path data: a message at the token" $::output "*path data: bad or missing number at offset 15*"
    import_svg nan_path {<path fill="none" stroke="black" d="M0 0 L10 0 L1e999 0 L NaN 5"/>}
    check_line "huge number in path data: stops there" 0 2 {{0 0} {10 0}}
    mismatches
} -result {}
tcltest::test svg-10.2 {bad lengths, a path without a moveto, unknown colours and elements are reported} -body {
    import_svg nan_attr {<rect width="NaN" height="1"/><rect width="2" height="2"/>}
    check "NaN length: the element is skipped" [llength [surfaces]] 1
    check_match "NaN length: said so" $::output "*width \"NaN\" cannot be read*"
    import_svg no_moveto {<path fill="none" stroke="black" d="L10 0"/><rect width="1" height="1"/>}
    check_match "path data must start with a moveto" $::output "*unexpected \"L\" at offset 0*"
    import_svg bad_colour {<rect width="1" height="1" fill="blurple"/>}
    check "unknown colour: inherited (black)" [colour_of 0] "0.00 0.00 0.00"
    check_match "unknown colour: said so" $::output "*\"blurple\" is not a colour*"
    import_svg unknown {<text>a</text><image/><use/><foo/><rect width="1" height="1"/>}
    check_match "unread elements are counted" $::output "*1 <image> element was not read*"
    mismatches
} -result {}

finish
