# veskprefs.tcl - the preferences dialog.  It edits copies of the linked
# prefs_ variables (and the few other linked settings) grouped on the pages
# of a notebook; Apply checks every value and then writes them to the
# linked variables, which are the core's own storage, so a change takes
# effect at once.  Cancel puts back the values the dialog opened with.
# "Save settings" applies and asks the core to write the preferences file.

namespace eval ::vesk::prefs {
    # One page per group: a list of {variable kind label ?options?}.
    # Kinds: bool, int, double, string, choice; options are a range
    # {min max} for numbers and {value label ...} for a choice.
    variable pages {
        General {
            {prefs_font_main string "Main font"}
            {prefs_font_menu string "Menu font"}
            {prefs_balloon_help bool "Show help for menu entries on the status line"}
            {prefs_realtimecolour bool "Show colour changes while editing"}
            {prefs_plugin_dir string "Plug-in directory"}
            {tcl_socket_port int "Scripting socket port" {1 65535}}
            {prefs_cp_x int "Main window x (at start)" {-10000 10000}}
            {prefs_cp_y int "Main window y (at start)" {-10000 10000}}
        }
        Views {
            {prefs_grid double "Snap grid spacing" {0.000001 1e9}}
            {gridsnap bool "Snap to grid"}
            {prefs_drawgrid double "Drawn grid spacing" {0.000001 1e9}}
            {show_grid bool "Show the grid"}
            {show_vertices bool "Show vertices"}
            {show_selected_vertices bool "Show selected vertices"}
            {show_objectcentres bool "Show object centres"}
            {prefs_vert_size int "Vertex size (pixels)" {1 50}}
            {prefs_handle_size int "Handle size (pixels)" {1 50}}
            {prefs_hollow_handles bool "Hollow vertex markers"}
            {prefs_pick_pixel_range int "Pick range (pixels)" {1 100}}
            {prefs_independent_scaling bool "Zoom views independently"}
            {prefs_fix_view_after_load bool "Fit the views after loading"}
            {prefs_draw_moving_vertices bool "Draw vertices while dragging"}
            {prefs_use_textures_for_background_images bool "Draw background images as textures"}
            {prefs_doublebuffer_orth bool "Double-buffer the flat views (on next start)"}
        }
        Layout {
            {prefs_show_window_labels bool "Show view labels"}
            {prefs_window_label_xy string "Front view label"}
            {prefs_window_label_zy string "Side view label"}
            {prefs_window_label_xz string "Plan view label"}
            {prefs_window_label_xyz string "3D view label"}
            {prefs_window_3d_width_percent int "3D view width (% of the area)" {10 90}}
            {prefs_window_3d_height_percent int "3D view height (% of the area)" {10 90}}
        }
        3D {
            {prefs_view3dmode choice "Drawing" {0 Filled 1 Wireframe 2 Points}}
            {prefs_view3dtextures bool "Show textures"}
            {prefs_show_3d_grid bool "Show the grid"}
            {prefs_show_axis bool "Show the axes"}
            {prefs_axis_size double "Axis size" {0 1e9}}
            {prefs_headlight bool "Headlight"}
            {prefs_fov int "Field of view (degrees)" {1 179}}
            {hide_objects_in_3d bool "Hidden objects are hidden in 3D too"}
            {prefs_wireframe_move bool "Wireframe while turning the view"}
        }
        Modelling {
            {prefs_num_surface_div int "Segments of round shapes" {3 10000}}
            {prefs_revolve_degs int "Revolve angle (degrees)" {-360 360}}
            {prefs_extrude_num int "Extrude segments" {1 10000}}
            {prefs_meshx int "Mesh divisions across" {1 10000}}
            {prefs_meshy int "Mesh divisions down" {1 10000}}
            {prefs_sphere_triangles bool "Spheres made of triangles"}
            {prefs_mesh_triangles bool "Meshes made of triangles"}
            {prefs_hole_percent int "Hole size (%)" {1 99}}
            {prefs_spike_factor double "Spike height factor"}
            {prefs_bevel_size double "Bevel size"}
            {prefs_recalc_normals bool "Recalculate normals after edits"}
            {prefs_rotate_about_object_centre bool "Rotate about the object centre"}
            {prefs_fontpath string "Font model for text"}
        }
        Output {
            {prefs_backup_on_save bool "Keep the previous file as name.vk~ when saving"}
            {prefs_autosave_seconds int "Autosave unsaved work every (seconds, 0 = never)" {0 86400}}
            {prefs_output_vrml_normals bool "VRML: write normals"}
            {prefs_output_vrml_textures bool "VRML: write textures"}
            {prefs_output_rib_header bool "RenderMan: write the header"}
            {prefs_rib_use_object_data bool "RenderMan: use object data"}
            {prefs_pov_use_object_data bool "POV-Ray: use object data"}
            {prefs_pov_file_header string "POV-Ray file header"}
            {prefs_render_command string "Render command (Tcl)"}
        }
    }
    # The dialog's values and the values it opened with, by variable name.
    variable value
    variable opened
    array set value {}
    array set opened {}
}

# Every setting the dialog edits that exists as a variable.
proc ::vesk::prefs::settings {} {
    variable pages
    set result {}
    foreach {page entries} $pages {
        foreach entry $entries {
            if {[info exists ::[lindex $entry 0]]} { lappend result $entry }
        }
    }
    return $result
}

proc ::vesk::prefs::open_dialog {} {
    variable pages
    variable value
    variable opened
    set w .prefs
    if {[winfo exists $w]} {
        wm deiconify $w
        raise $w
        return $w
    }
    array unset value
    array unset opened
    foreach entry [settings] {
        set name [lindex $entry 0]
        set value($name) [set ::$name]
        set opened($name) [set ::$name]
    }
    toplevel $w
    wm title $w "VESK Preferences"
    wm transient $w .
    wm protocol $w WM_DELETE_WINDOW ::vesk::prefs::cancel
    set f [ttk::frame $w.f -padding 10]
    pack $f -fill both -expand 1
    ttk::notebook $f.nb
    grid $f.nb -row 0 -column 0 -sticky nsew
    set page_number 0
    foreach {page entries} $pages {
        set p [ttk::frame $f.nb.p[incr page_number] -padding 12]
        $f.nb add $p -text $page
        build_page $p $entries
    }
    ttk::notebook::enableTraversal $f.nb
    set b [ttk::frame $f.buttons]
    grid $b -row 1 -column 0 -sticky ew -pady {10 0}
    ttk::button $b.save -text "Save settings" -command ::vesk::prefs::save
    ttk::button $b.ok -text OK -default active -command ::vesk::prefs::ok
    ttk::button $b.apply -text Apply -command ::vesk::prefs::apply
    ttk::button $b.cancel -text Cancel -command ::vesk::prefs::cancel
    pack $b.save -side left
    pack $b.cancel $b.apply $b.ok -side right -padx {6 0}
    grid rowconfigure $f 0 -weight 1
    grid columnconfigure $f 0 -weight 1
    bind $w <Escape> ::vesk::prefs::cancel
    ::vesk::ops::place_dialog $w
    return $w
}

proc ::vesk::prefs::build_page {p entries} {
    set row 0
    foreach entry $entries {
        lassign $entry name kind label options
        if {![info exists ::$name]} { continue }
        set var ::vesk::prefs::value($name)
        set widget $p.w$row
        switch -- $kind {
            bool {
                ttk::checkbutton $widget -text $label -variable $var
                grid $widget -row $row -column 0 -columnspan 2 -sticky w -pady 2
            }
            choice {
                ttk::label $p.l$row -text $label
                ttk::frame $widget
                foreach {choice text} $options {
                    ttk::radiobutton $widget.r$choice -text $text -value $choice -variable $var
                    pack $widget.r$choice -side left -padx {0 10}
                }
                grid $p.l$row -row $row -column 0 -sticky w -padx {0 12} -pady 2
                grid $widget -row $row -column 1 -sticky w -pady 2
            }
            default {
                ttk::label $p.l$row -text $label
                set width [expr {$kind eq "string" ? 40 : 12}]
                ttk::entry $widget -textvariable $var -width $width
                grid $p.l$row -row $row -column 0 -sticky w -padx {0 12} -pady 2
                grid $widget -row $row -column 1 -sticky [expr {$kind eq "string" ? "ew" : "w"}] -pady 2
            }
        }
        incr row
    }
    grid columnconfigure $p 1 -weight 1
}

# The error text for one value, or "" when it is good.
proc ::vesk::prefs::check {kind label text options} {
    switch -- $kind {
        int {
            if {![string is integer -strict $text]} { return "$label: \"$text\" is not a whole number" }
        }
        double {
            if {![string is double -strict $text]} { return "$label: \"$text\" is not a number" }
        }
        bool {
            if {![string is boolean -strict $text]} { return "$label: \"$text\" is not on or off" }
            return ""
        }
        choice {
            if {[lsearch -exact [dict keys $options] $text] < 0} { return "$label: \"$text\" is not a choice" }
            return ""
        }
        default { return "" }
    }
    if {[llength $options] == 2} {
        lassign $options low high
        if {$text < $low || $text > $high} { return "$label: $text is outside $low to $high" }
    }
    return ""
}

# Writes the dialog's values to the linked variables; returns 1 when every
# value was good (nothing is written otherwise).
proc ::vesk::prefs::apply {} {
    variable value
    set changed {}
    foreach entry [settings] {
        lassign $entry name kind label options
        if {![info exists value($name)]} { continue }
        set text [string trim $value($name)]
        if {$kind eq "string"} { set text $value($name) }
        set error [check $kind $label $text $options]
        if {$error ne ""} {
            ::vesk::ops::message $error
            return 0
        }
        if {$text ne [set ::$name]} { lappend changed $name $text }
    }
    return [store $changed]
}

# Sets variables from a name/value list and lets the user interface and
# the core follow the changes.
proc ::vesk::prefs::store {changes} {
    set ok 1
    foreach {name text} $changes {
        if {[catch {set ::$name $text} error]} {
            ::vesk::ops::message "can't set $name: $error"
            set ok 0
        }
    }
    if {[llength $changes] == 0} { return $ok }
    if {[dict exists $changes prefs_fov]} { vesk do_perspective }
    if {[dict exists $changes prefs_font_main] || [dict exists $changes prefs_font_menu]} {
        ::vesk::ops::apply_fonts
    }
    vesk redraw_all
    return $ok
}

proc ::vesk::prefs::ok {} {
    if {[apply]} { destroy .prefs }
}

# Puts back what the dialog opened with, then closes.
proc ::vesk::prefs::cancel {} {
    variable opened
    set changed {}
    foreach name [array names opened] {
        if {[info exists ::$name] && [set ::$name] ne $opened($name)} {
            lappend changed $name $opened($name)
        }
    }
    store $changed
    destroy .prefs
}

proc ::vesk::prefs::save {} {
    variable opened
    if {![apply]} { return }
    foreach entry [settings] {
        set name [lindex $entry 0]
        set opened($name) [set ::$name]
    }
    vesk save_settings
}
