# veskpalette.tcl - the palette of materials: a strip of colour swatches
# (the frame .palette, placed in the tool panel by vesk.tcl) and the
# colour editor for one palette entry.
#
# The core sends "add_palette_button #rrggbb index" for every entry it
# adds and "edit_colour_ui index r g b  ar ag ab  er eg eb  sr sg sb
# shininess transparency" to edit one.  A click on a swatch makes it the
# current colour and gives it to the selected surfaces ("vesk set_col");
# a double click or a right click opens the editor.

namespace eval ::vesk::palette {
    variable cell 18         ;# swatch size in pixels
    variable gap 3
    variable columns 8
    variable current 0       ;# current palette index
    variable colour          ;# index -> #rrggbb
    array set colour {}
    # The editor's values (ed) and the values it opened with (original).
    variable ed
    variable original
    variable editing -1
    variable live_pending 0
    variable live_applied 0
}

# ---- the strip ----

proc ::vesk::palette::build {} {
    variable cell
    variable gap
    variable columns
    set f [ttk::labelframe .palette -text Palette -padding 4]
    set width [expr {$columns * ($cell + $gap) + $gap}]
    canvas $f.c -width $width -height [expr {2 * ($cell + $gap) + $gap}] \
        -yscrollcommand [list $f.y set] -borderwidth 0
    ttk::scrollbar $f.y -orient vertical -command [list $f.c yview]
    ttk::frame $f.row
    frame $f.row.swatch -width 28 -height 18 -relief solid -borderwidth 1 -background black
    ttk::label $f.row.text -textvariable ::vesk::palette::current_text -width 14
    ttk::button $f.row.edit -text "Edit..." -width 6 -command ::vesk::palette::edit_current
    pack $f.row.swatch -side left -padx {0 6}
    pack $f.row.text -side left -fill x -expand 1
    pack $f.row.edit -side right
    grid $f.c -row 0 -column 0 -sticky nsew
    grid $f.row -row 1 -column 0 -columnspan 2 -sticky ew -pady {4 0}
    grid columnconfigure $f 0 -weight 1
    grid rowconfigure $f 0 -weight 1

    $f.c bind swatch <Button-1> {::vesk::palette::click [::vesk::palette::index_at %W]}
    $f.c bind swatch <Double-Button-1> {::vesk::palette::edit [::vesk::palette::index_at %W]}
    $f.c bind swatch <Button-3> {::vesk::palette::edit [::vesk::palette::index_at %W]}
    bind $f.c <MouseWheel> {%W yview scroll [expr {-%D / 120}] units}
    bind $f.c <Button-4> {%W yview scroll -1 units}
    bind $f.c <Button-5> {%W yview scroll 1 units}
    show_current
}

# The palette index of the swatch under the pointer, or -1.
proc ::vesk::palette::index_at {c} {
    foreach tag [$c gettags current] {
        if {[regexp {^entry(\d+)$} $tag -> index]} { return $index }
    }
    return -1
}

proc ::vesk::palette::count {} {
    variable colour
    return [array size colour]
}

proc ::vesk::palette::valid_colour {text} {
    return [regexp {^#[0-9a-fA-F]{6}$} $text]
}

# Number of swatch rows shown before the strip scrolls.
proc ::vesk::palette::visible_rows {} { return 6 }

# Adds (or recolours) the swatch of one palette entry.
proc ::vesk::palette::add_button {rgb index} {
    variable colour
    variable cell
    variable gap
    variable columns
    if {![valid_colour $rgb] || ![string is integer -strict $index] || $index < 0} {
        ::vesk::ops::message "add_palette_button: bad colour \"$rgb\" or index \"$index\""
        return
    }
    set c .palette.c
    set colour($index) $rgb
    if {[llength [$c find withtag entry$index]] > 0} {
        $c itemconfigure entry$index -fill $rgb
    } else {
        set x [expr {$gap + ($index % $columns) * ($cell + $gap)}]
        set y [expr {$gap + ($index / $columns) * ($cell + $gap)}]
        $c create rectangle $x $y [expr {$x + $cell}] [expr {$y + $cell}] \
            -fill $rgb -outline #6e6e6e -width 1 -tags [list swatch entry$index]
    }
    fit_height
    show_current
}

# Drops the swatches of the entries from first on (the core dropped them).
proc ::vesk::palette::remove_buttons_from {first} {
    variable colour
    variable current
    if {![string is integer -strict $first] || $first < 0} { return }
    set c .palette.c
    foreach index [array names colour] {
        if {$index < $first} { continue }
        unset colour($index)
        $c delete entry$index
    }
    if {$current >= $first} { set current 0 }
    fit_height
    show_current
}

# Grows the strip with the rows in use, up to visible_rows, then scrolls.
proc ::vesk::palette::fit_height {} {
    variable cell
    variable gap
    set c .palette.c
    set box [$c bbox swatch]
    if {$box eq ""} { return }
    set bottom [expr {[lindex $box 3] + $gap}]
    $c configure -scrollregion [list 0 0 [$c cget -width] $bottom]
    set limit [expr {[visible_rows] * ($cell + $gap) + $gap}]
    $c configure -height [expr {min($bottom, $limit)}]
    if {$bottom > $limit} {
        grid .palette.y -row 0 -column 1 -sticky ns
    } else {
        grid remove .palette.y
    }
}

# Marks the current swatch and shows its colour below the strip.
proc ::vesk::palette::show_current {} {
    variable current
    variable colour
    set c .palette.c
    $c itemconfigure swatch -outline #6e6e6e -width 1
    if {![info exists colour($current)]} {
        set ::vesk::palette::current_text "colour $current"
        return
    }
    $c itemconfigure entry$current -outline black -width 3
    $c raise entry$current
    .palette.row.swatch configure -background $colour($current)
    set ::vesk::palette::current_text "$current  $colour($current)"
}

# Makes an entry current and gives it to the selected surfaces.
proc ::vesk::palette::click {index} {
    variable current
    if {$index < 0} { return }
    set current $index
    show_current
    vesk set_col $index
}

proc ::vesk::palette::edit {index} {
    if {$index < 0} { return }
    vesk edit_palette_entry $index
}

proc ::vesk::palette::edit_current {} {
    variable current
    edit $current
}

# Copies the current entry into a new one, which becomes current.
proc ::vesk::palette::new_from_current {} {
    variable current
    set size [vesk new_palette_entry $current]
    if {[string is integer -strict $size] && $size > 0} {
        set current [expr {$size - 1}]
        show_current
    }
}

# The "set_palette_entry" arguments that give the current entry the default
# material of its diffuse colour (ambient 0.2, emissive 0, specular 0.5,
# shininess 10, opaque).
proc ::vesk::palette::default_material {} {
    variable current
    variable colour
    set rgb [expr {[info exists colour($current)] ? $colour($current) : "#000000"}]
    return [list $current {*}[hex_to_floats $rgb] 0.2 0.2 0.2 0 0 0 0.5 0.5 0.5 10 0]
}

# ---- colour conversion ----

proc ::vesk::palette::hex_to_floats {rgb} {
    scan [string range $rgb 1 end] %2x%2x%2x r g b
    return [list [format %.4f [expr {$r / 255.0}]] [format %.4f [expr {$g / 255.0}]] \
        [format %.4f [expr {$b / 255.0}]]]
}

# Same truncation as the core uses for packed colours.
proc ::vesk::palette::floats_to_hex {r g b} {
    set bytes {}
    foreach v [list $r $g $b] {
        lappend bytes [expr {max(0, min(255, int($v * 255)))}]
    }
    return [format #%02x%02x%02x {*}$bytes]
}

# ---- the colour editor ----

namespace eval ::vesk::palette {
    # The four colours of a material: key prefix and label.
    variable groups {rgb Diffuse amb Ambient emi Emissive spe Specular}
}

# Opens the editor on one entry; the values are in the message's order.
proc ::vesk::palette::edit_colour {index args} {
    variable ed
    variable original
    variable editing
    variable live_applied
    if {![string is integer -strict $index] || [llength $args] != 14} {
        ::vesk::ops::message "edit_colour_ui: expected an index and 14 numbers"
        return
    }
    foreach v $args {
        if {![string is double -strict $v]} {
            ::vesk::ops::message "edit_colour_ui: \"$v\" is not a number"
            return
        }
    }
    set keys {rgb.r rgb.g rgb.b amb.r amb.g amb.b emi.r emi.g emi.b spe.r spe.g spe.b shininess transparency}
    foreach key $keys v $args {
        set ed($key) [expr {double($v)}]
    }
    array set original [array get ed]
    set editing $index
    set live_applied 0
    build_editor $index
    update_swatches
}

proc ::vesk::palette::build_editor {index} {
    variable groups
    set w .colour_editor
    destroy $w
    toplevel $w
    wm title $w "Colour $index"
    wm transient $w .
    wm resizable $w 0 0
    wm protocol $w WM_DELETE_WINDOW ::vesk::palette::editor_cancel
    set f [ttk::frame $w.f -padding 12]
    pack $f -fill both -expand 1

    frame $f.preview -height 36 -relief solid -borderwidth 1
    grid $f.preview -row 0 -column 0 -columnspan 5 -sticky ew -pady {0 10}
    set row 1
    foreach column {Red Green Blue} i {2 3 4} {
        grid [ttk::label $f.h$i -text $column -style Hint.TLabel] -row $row -column $i
    }
    incr row
    foreach {group label} $groups {
        ttk::label $f.l$group -text $label
        frame $f.s$group -width 22 -height 16 -relief solid -borderwidth 1
        grid $f.l$group -row $row -column 0 -sticky w -padx {0 8}
        grid $f.s$group -row $row -column 1 -padx {0 8}
        set column 2
        foreach component {r g b} {
            slider $f.$group$component $group.$component 0.0 1.0
            grid $f.$group$component -row $row -column $column -padx 3 -pady 2
            incr column
        }
        incr row
    }
    foreach {key label limit} {shininess Shininess 128.0 transparency Transparency 1.0} {
        ttk::label $f.l$key -text $label
        slider $f.$key $key 0.0 $limit 1
        grid $f.l$key -row $row -column 0 -columnspan 2 -sticky w
        grid $f.$key -row $row -column 2 -columnspan 3 -sticky ew -padx 3 -pady 2
        incr row
    }
    ttk::checkbutton $f.live -text "Show changes while dragging" -variable ::prefs_realtimecolour
    grid $f.live -row $row -column 0 -columnspan 5 -sticky w -pady {8 0}
    incr row
    set b [ttk::frame $f.buttons]
    grid $b -row $row -column 0 -columnspan 5 -sticky ew -pady {12 0}
    ttk::button $b.pick -text "Pick diffuse..." -command ::vesk::palette::pick_diffuse
    ttk::button $b.ok -text OK -default active -command ::vesk::palette::editor_ok
    ttk::button $b.apply -text Apply -command ::vesk::palette::editor_apply
    ttk::button $b.cancel -text Cancel -command ::vesk::palette::editor_cancel
    pack $b.pick -side left
    pack $b.cancel $b.apply $b.ok -side right -padx {6 0}
    bind $w <Return> [list $b.ok invoke]
    bind $w <Escape> [list $b.cancel invoke]
    ::vesk::ops::place_dialog $w
}

# A scale with its value beside it.
proc ::vesk::palette::slider {path key from to {wide 0}} {
    ttk::frame $path
    ttk::scale $path.s -from $from -to $to -length [expr {$wide ? 260 : 90}] \
        -variable ::vesk::palette::ed($key) -command [list ::vesk::palette::slider_moved $key]
    ttk::label $path.v -width 5 -anchor e
    pack $path.s -side left -fill x -expand 1
    pack $path.v -side left
    show_value $path $key
}

proc ::vesk::palette::show_value {path key} {
    variable ed
    set format [expr {$key eq "shininess" ? "%.0f" : "%.2f"}]
    $path.v configure -text [format $format $ed($key)]
}

proc ::vesk::palette::slider_moved {key args} {
    set f .colour_editor.f
    set path $f.[string map {. ""} $key]
    if {[winfo exists $path]} { show_value $path $key }
    update_swatches
    if {[info exists ::prefs_realtimecolour] && [string is true -strict $::prefs_realtimecolour]} {
        schedule_live_apply
    }
}

# Dragging a slider sends many events; the entry is sent once per idle
# moment so that a large model is not redrawn for every pixel.
proc ::vesk::palette::schedule_live_apply {} {
    variable live_pending
    if {$live_pending} { return }
    set live_pending 1
    after idle ::vesk::palette::live_apply
}

proc ::vesk::palette::live_apply {} {
    variable live_pending
    variable live_applied
    set live_pending 0
    if {![winfo exists .colour_editor]} { return }
    set live_applied 1
    send_entry
}

proc ::vesk::palette::update_swatches {} {
    variable ed
    variable groups
    set f .colour_editor.f
    if {![winfo exists $f]} { return }
    foreach {group label} $groups {
        $f.s$group configure -background [floats_to_hex $ed($group.r) $ed($group.g) $ed($group.b)]
    }
    $f.preview configure -background [floats_to_hex $ed(rgb.r) $ed(rgb.g) $ed(rgb.b)]
}

# The fifteen arguments of set_palette_entry from the editor's values.
proc ::vesk::palette::entry_arguments {} {
    variable ed
    variable editing
    set values [list $editing]
    foreach key {rgb.r rgb.g rgb.b amb.r amb.g amb.b emi.r emi.g emi.b spe.r spe.g spe.b shininess transparency} {
        lappend values [format %.4f $ed($key)]
    }
    return $values
}

proc ::vesk::palette::send_entry {} {
    variable ed
    variable editing
    vesk set_palette_entry {*}[entry_arguments]
    add_button [floats_to_hex $ed(rgb.r) $ed(rgb.g) $ed(rgb.b)] $editing
}

proc ::vesk::palette::pick_diffuse {} {
    variable ed
    set initial [floats_to_hex $ed(rgb.r) $ed(rgb.g) $ed(rgb.b)]
    set chosen [tk_chooseColor -parent .colour_editor -initialcolor $initial -title "Diffuse colour"]
    if {$chosen eq ""} { return }
    lassign [winfo rgb . $chosen] r g b
    set ed(rgb.r) [expr {$r / 65535.0}]
    set ed(rgb.g) [expr {$g / 65535.0}]
    set ed(rgb.b) [expr {$b / 65535.0}]
    foreach c {r g b} { slider_moved rgb.$c }
}

proc ::vesk::palette::editor_apply {} {
    variable original
    variable ed
    send_entry
    array set original [array get ed]
}

proc ::vesk::palette::editor_ok {} {
    send_entry
    destroy .colour_editor
}

# Puts back the values the editor opened with, if any were sent.
proc ::vesk::palette::editor_cancel {} {
    variable ed
    variable original
    variable live_applied
    destroy .colour_editor
    if {!$live_applied} { return }
    array set ed [array get original]
    send_entry
}

# ---- procedures the core calls ----

proc ::add_palette_button {colour index} {
    ::vesk::palette::add_button $colour $index
}

proc ::remove_palette_buttons_from {first} {
    ::vesk::palette::remove_buttons_from $first
}

proc ::edit_colour_ui {index args} {
    ::vesk::palette::edit_colour $index {*}$args
}

::vesk::palette::build
