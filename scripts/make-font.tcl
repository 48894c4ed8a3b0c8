#!/usr/bin/env tclsh
# make-font.tcl - writes font.vk, the vector font that "add_text" builds
# text from, out of a Hershey font in the JHF format.
#
# usage: tclsh scripts/make-font.tcl ?input.jhf? ?output.vk?
#   input   default /usr/share/hershey-fonts/futural.jhf (Debian package
#           hershey-fonts-data; only needed to regenerate the font)
#   output  default font.vk at the top of the repository
#
# The font file is a model file: a world block whose children are one
# object per character, named by the character.  Each stroke of a glyph is
# a line surface.  Glyphs are scaled so that capitals are 1 unit high,
# stand on the baseline y = 0, and start at their left bearing x = 0.
# Two vertices no surface uses mark the left and right bearings on the
# baseline, so the x extent of a glyph's vertices is its advance width (the
# space character holds only these two).
#
# Acknowledgements, which the Hershey fonts' licence asks to be
# distributed with the font data:
#   - The Hershey Fonts were originally created by Dr. A. V. Hershey while
#     working at the U. S. National Bureau of Standards.
#   - The format of the Font data in this distribution was originally
#     created by James Hurt, Cognition, Inc., 900 Technology Park Drive,
#     Billerica, MA 01821 (mit-eddie!ci-dandelion!hurt).
# The licence allows the data to be converted into any other format except
# the one distributed by the U.S. NTIS.
#
# JHF: each glyph starts with a five-column number and a three-column count
# of coordinate pairs, then the pairs as characters whose code minus the
# code of "R" is the coordinate (y grows downwards).  The first pair holds
# the left and right bearings; " R" lifts the pen.  Long glyphs may
# continue on the next lines.

set here [file dirname [file normalize [info script]]]
set input [expr {[llength $argv] > 0 ? [lindex $argv 0] : "/usr/share/hershey-fonts/futural.jhf"}]
set output [expr {[llength $argv] > 1 ? [lindex $argv 1] : [file join $here .. font.vk]}]

# Units per capital height and the baseline, in Hershey coordinates.
set units 21.0
set baseline 9

proc coordinate {c} { return [expr {[scan $c %c] - [scan R %c]}] }

# Reads the glyphs as a list of {pairs-text} in file order.
proc read_glyphs {path} {
    set f [open $path r]
    set lines [split [read $f] \n]
    close $f
    set glyphs {}
    set i 0
    while {$i < [llength $lines]} {
        set line [lindex $lines $i]
        incr i
        if {[string trim $line] eq ""} continue
        set count [string trim [string range $line 5 7]]
        set need [expr {8 + 2 * $count}]
        while {[string length $line] < $need && $i < [llength $lines]} {
            append line [lindex $lines $i]
            incr i
        }
        lappend glyphs [string range $line 8 [expr {$need - 1}]]
    }
    return $glyphs
}

proc fmt {x} { return [format %.6g $x] }

# Writes one glyph block: its strokes as lines over shared points.
proc write_glyph {out name pairs} {
    global units baseline
    set left [coordinate [string index $pairs 0]]
    set right [coordinate [string index $pairs 1]]
    set points {}
    set index [dict create]
    set strokes {}
    set stroke {}
    for {set k 2} {$k + 1 < [string length $pairs]} {incr k 2} {
        set pair [string range $pairs $k [expr {$k + 1}]]
        if {$pair eq " R"} {
            if {[llength $stroke] > 1} { lappend strokes $stroke }
            set stroke {}
            continue
        }
        set x [fmt [expr {([coordinate [string index $pair 0]] - $left) / $units}]]
        set y [fmt [expr {($baseline - [coordinate [string index $pair 1]]) / $units}]]
        set key "$x $y"
        if {![dict exists $index $key]} {
            dict set index $key [llength $points]
            lappend points $key
        }
        lappend stroke [dict get $index $key]
    }
    if {[llength $stroke] > 1} { lappend strokes $stroke }
    # The bearing marks.
    lappend points "0 0" "[fmt [expr {($right - $left) / $units}]] 0"
    set quoted [string map {\\ \\\\ \" \\\"} $name]
    puts $out "OBJECT poly"
    puts $out "name \"$quoted\""
    puts $out "numvert [llength $points]"
    foreach p $points { puts $out "$p 0" }
    puts $out "numsurf [llength $strokes]"
    foreach s $strokes {
        puts $out "SURF 2"
        puts $out "refs [llength $s]"
        foreach v $s { puts $out "$v 0 0" }
    }
    puts $out "kids 0"
}

set glyphs [read_glyphs $input]
# The glyphs stand for the printable ASCII characters from the space on;
# the one for DEL (a filled block) is left out.
set count [expr {min([llength $glyphs], 95)}]
set out [open $output w]
fconfigure $out -translation lf
puts $out "VESKb"
puts $out "OBJECT world"
puts $out "kids $count"
for {set i 0} {$i < $count} {incr i} {
    write_glyph $out [format %c [expr {32 + $i}]] [lindex $glyphs $i]
}
close $out
puts "wrote $count glyphs from $input to $output"
