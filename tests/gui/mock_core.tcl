# mock_core.tcl - runs the user-interface scripts in plain wish, without the
# modeller's core.  It stands in for what the core provides before the
# scripts run: the `vesk` command (here it records each call and answers
# from ::mock::answers, else ""), the linked variables with their default
# values, and the three Togl callbacks (no-ops).  Then it evaluates the six
# scripts in the core's order, recording any error, and can play the
# core's part after them (the standard palette, the initial modes).
#
# Sourced by the GUI tests; run on its own (wish mock_core.tcl) it shows
# the main window as the modeller would, e.g. for a screenshot.
# Variables that already exist when it is sourced keep their values, so a
# test can set up e.g. VESK_HOME first.

namespace eval ::mock {
    variable calls {}
    variable answers
    array set answers {}
    # {script error} for every script that failed to load.
    variable script_errors {}
    variable here [file dirname [file normalize [info script]]]
    variable tcl_dir [file normalize [file join $here .. .. tcl]]
    if {[info exists ::env(VESK_TCL_DIR)]} { set tcl_dir $::env(VESK_TCL_DIR) }
    variable scripts {veskops.tcl veskpalette.tcl veskprefs.tcl veskview.tcl vesk.tcl veskplugins.tcl}
    # The fifteen standard palette colours.
    variable standard_colours {
        #000000 #ffffff #a04040 #ff0000 #ff7700 #ffff00 #00ff00 #458674
        #a0c0e0 #0000ff #82004b #ee80ee #444444 #888888 #cccccc
    }
}

# The core's command: records the words, answers like the core would.
proc vesk {args} {
    lappend ::mock::calls $args
    set name [lindex $args 0]
    if {[info exists ::mock::answers($name)]} {
        return [uplevel #0 $::mock::answers($name)]
    }
    return ""
}

proc vesk_togl_create {args} {}
proc vesk_togl_display {args} {}
proc vesk_togl_reshape {args} {}

# Every call since the last reset, one command line per element.
proc ::mock::reset_calls {} {
    variable calls
    set calls {}
}

proc ::mock::called {pattern} {
    variable calls
    foreach call $calls {
        if {[string match $pattern $call]} { return 1 }
    }
    return 0
}

proc ::mock::set_default {name value} {
    if {![info exists ::$name]} { set ::$name $value }
}

# The draw modes as the core publishes them, {number label ...}, read from
# the core's one table of their names (src/view/interaction.cpp).
proc ::mock::core_draw_modes {} {
    variable here
    set f [open [file join $here .. .. src view interaction.cpp] r]
    set text [read $f]
    close $f
    if {![regexp {draw_mode_names\[DRAW_MODE_COUNT\] = \{([^\}]*)\}} $text -> names]} {
        error "mock_core: no draw mode table in interaction.cpp"
    }
    set modes {}
    foreach name [regexp -all -inline {"[^"]*"} $names] {
        set name [string trim $name \"]
        lappend modes [expr {[llength $modes] / 2}] [string totitle $name 0 0]
    }
    return $modes
}

# The linked variables, with the defaults of the preferences.
proc ::mock::link_variables {} {
    set render "vesk write_POV veskpovfile.pov ; vesk execute {\"C:Program FilesPOV-Ray for Windows\binpvengine.exe\"  /RENDER veskpovfile.pov }"
    foreach {name value} [list \
        VESK_HOME [file join /tmp vesk_mock_home_[pid]] \
        undo_count 0 numselected 0 numselectedobjects 0 objects_are_hidden 0 \
        show_objectcentres 0 show_vertices 1 show_selected_vertices 1 show_grid 1 gridsnap 0 \
        prefs_num_surface_div 12 prefs_revolve_degs 360 prefs_extrude_num 1 \
        prefs_grid 0.1 prefs_drawgrid 1.0 prefs_meshx 8 prefs_meshy 8 prefs_cp_x 0 prefs_cp_y 0 \
        prefs_realtimecolour 1 prefs_vert_size 3 prefs_handle_size 8 prefs_hollow_handles 0 \
        prefs_independent_scaling 0 prefs_axis_size 1.0 prefs_show_axis 0 \
        prefs_output_vrml_normals 0 prefs_output_vrml_textures 1 prefs_sphere_triangles 0 \
        prefs_mesh_triangles 1 prefs_hole_percent 50 hide_objects_in_3d 1 \
        prefs_font_main "{arial} 9 {bold}" prefs_font_menu "{arial} 9 {bold italic}" \
        prefs_fix_view_after_load 1 prefs_view3dmode 0 prefs_view3dtextures 1 \
        prefs_show_3d_grid 1 prefs_spike_factor 0.2 prefs_draw_moving_vertices 1 \
        person_walk_vehicle 0 vesk_version_string "VESK v2.0" prefs_render_command $render \
        vesk_draw_modes [::mock::core_draw_modes] \
        prefs_bevel_size 0.05 prefs_wireframe_move 1 prefs_balloon_help 1 prefs_headlight 1 \
        prefs_fov 50 prefs_output_rib_header 1 prefs_fontpath font.vk prefs_pov_file_header "" \
        prefs_pov_use_object_data 0 prefs_window_label_xy "Front (XY)" \
        prefs_window_label_zy "Side (ZY) " prefs_window_label_xz "Plan (XZ)" \
        prefs_window_label_xyz "3D (XYZ)" prefs_use_textures_for_background_images 0 \
        prefs_tk_strictmotif 1 prefs_recalc_normals 1 prefs_rotate_about_object_centre 0 \
        prefs_show_window_labels 1 prefs_window_3d_width_percent 50 \
        prefs_window_3d_height_percent 50 viewsetting all tcl_socket_port 1655 \
        prefs_rib_use_object_data 0 prefs_plugin_dir {$VESK_HOME/plugins} \
        vesk_version_number 2.0 prefs_doublebuffer_orth 1 prefs_pick_pixel_range 4 \
        unsaved_changes 0 prefs_backup_on_save 1 prefs_autosave_seconds 60 current_file_name ""] {
        set_default $name $value
    }
}

# Evaluates the scripts in the core's order; stops at the first failure
# as the core does.  Returns 1 when all loaded.
proc ::mock::load_scripts {} {
    variable scripts
    variable tcl_dir
    variable script_errors
    foreach script $scripts {
        if {[catch {uplevel #0 [list source [file join $tcl_dir $script]]} error]} {
            lappend script_errors [list $script $::errorInfo]
            return 0
        }
    }
    return 1
}

# What the core does after the scripts: the palette and the modes.
proc ::mock::after_scripts {} {
    variable standard_colours
    set index 0
    foreach colour $standard_colours {
        add_palette_button $colour $index
        incr index
    }
    set_select_mode_ui tree
    set ::draw_mode_name select
    set ::drag_mode_name move
    sync_ui
}

proc ::mock::start {} {
    wm geometry . 1230x944+0+0
    link_variables
    return [load_scripts]
}

if {[info exists argv0] && [file normalize $argv0] eq [file normalize [info script]]} {
    if {![::mock::start]} {
        puts stderr [join $::mock::script_errors \n]
        exit 1
    }
    ::mock::after_scripts
    set ::coors "X 1.250  Y 0.500  Z 0.000"
    set ::size "W 2.000  H 1.000  D 1.000"
    display_message "loaded examples/house.vk"
    set_undo_string "move"
}
