# vesk.tcl - the main window: the menu bar (.mbar with one ttk
# menubutton per menu), the tool panel with the select modes, drag
# submodes, draw modes and the palette, the view area from veskview.tcl,
# the status line, the window title, the Control shortcuts, and the
# procedures by which the core keeps all of it up to date: display_message,
# sync_ui, set_progress_bar, set_undo_string, set_select_mode_ui and the
# add_*_menu_item procedures used by plug-ins.
#
# Plain letter keys are the core's: it reads them in the views.  The menus
# only show them as accelerators.

namespace eval ::vesk::main {
    variable message ""
    variable undo_text ""
    variable redo_text ""
    variable selection_text ""
    variable modes_text ""
    variable select_mode tree
    variable draw_mode 0
    variable drag_mode 100
    # Help texts of menu entries added by plug-ins, by "menu|label".
    variable menu_help
    array set menu_help {}

    # word, label, key, mode number
    variable select_modes {
        tree Tree t 0
        object Object o 1
        vertex Vertex v 2
    }
    # number, label: the core publishes its draw modes as ::vesk_draw_modes
    variable draw_modes $::vesk_draw_modes
    # number, label, key
    variable drag_modes {
        100 Move m
        101 Resize i
        102 Rotate r
        103 Extrude e
    }
}

# ---- state shown by the interface ----

# Status values the core sets later; defaults so that labels show at once.
proc ::vesk::main::init_variables {} {
    foreach {name value} {
        coors "" size "" select_mode_name tree draw_mode_name none drag_mode_name move
        current_file_name "" unsaved_changes 0 numselected 0 numselectedobjects 0
        undo_count 0 redo_count 0 keep_draw_tool 0 tcl_socket_port 1655 person_walk_vehicle 0
    } {
        if {![info exists ::$name]} { set ::$name $value }
    }
}

proc ::vesk::main::update_title {} {
    set file [::vesk::ops::current_file]
    set name [expr {$file eq "" ? "untitled" : [file tail $file]}]
    set title "VESK - $name"
    if {[::vesk::ops::unsaved]} { append title " *" }
    wm title . $title
}

proc ::vesk::main::update_selection_text {} {
    variable selection_text
    set vertices [expr {[info exists ::numselected] ? $::numselected : 0}]
    set objects [expr {[info exists ::numselectedobjects] ? $::numselectedobjects : 0}]
    set selection_text "Selected: $vertices vertices, $objects objects"
}

proc ::vesk::main::update_modes_text {args} {
    variable modes_text
    variable select_mode
    variable draw_mode
    variable drag_mode
    variable draw_modes
    variable drag_modes
    # Follow the core's names of the current modes in the radio buttons.
    if {$::select_mode_name in {tree object vertex}} { set select_mode $::select_mode_name }
    foreach {number label} $draw_modes {
        if {[string equal -nocase $label $::draw_mode_name]} { set draw_mode $number }
    }
    foreach {number label key} $drag_modes {
        if {[string equal -nocase $label $::drag_mode_name]} { set drag_mode $number }
    }
    set modes_text "$::select_mode_name  \u00b7  $::draw_mode_name  \u00b7  $::drag_mode_name"
}

# ---- menus ----

proc ::vesk::main::add_menubutton {name label} {
    ttk::menubutton .mbar.$name -text $label -menu .mbar.$name.menu -style Menubar.TMenubutton \
        -takefocus 0
    set m [menu .mbar.$name.menu -tearoff 0 -postcommand [list ::vesk::main::update_menu_states .mbar.$name.menu]]
    bind $m <<MenuSelect>> {::vesk::main::menu_select %W}
    pack .mbar.$name -side left
    return $m
}

proc ::vesk::main::add_cascade {m name label} {
    set sub [menu $m.$name -tearoff 0]
    bind $sub <<MenuSelect>> {::vesk::main::menu_select %W}
    $m add cascade -label $label -menu $sub
    return $sub
}

# Shows the help of a plug-in's menu entry while it is highlighted.
proc ::vesk::main::menu_select {m} {
    variable menu_help
    if {![info exists ::prefs_balloon_help] || ![string is true -strict $::prefs_balloon_help]} { return }
    set index [$m index active]
    if {$index eq "none" || [$m type $index] in {separator tearoff}} { return }
    set key "$m|[$m entrycget $index -label]"
    if {[info exists menu_help($key)]} { display_message $menu_help($key) }
}

proc ::vesk::main::build_menubar {} {
    ttk::style configure Menubar.TMenubutton -padding {10 4} -relief flat -width 0
    ttk::style layout Menubar.TMenubutton {
        Menubutton.border -sticky nswe -children {
            Menubutton.padding -sticky nswe -children {Menubutton.label -sticky nswe}
        }
    }
    ttk::style map Menubar.TMenubutton \
        -background [list pressed [ttk::style lookup . -selectbackground focus] active #c8c6c0] \
        -foreground [list pressed white]
    ttk::frame .mbar
    build_file_menu [add_menubutton file File]
    build_edit_menu [add_menubutton edit Edit]
    build_select_menu [add_menubutton select Select]
    build_object_menu [add_menubutton object Object]
    build_surface_menu [add_menubutton surface Surface]
    build_view_menu [add_menubutton view View]
    build_tools_menu [add_menubutton tools Tools]
    add_menubutton plugins Plugins
    build_help_menu [add_menubutton help Help]
}

# Imports a file chosen in a dialog.  The triangle readers clear the
# status line when they are done, so it is told here what was read.
proc ::vesk::main::import_file {title kind command} {
    set file [::vesk::ops::choose_open_file $title $::vesk::ops::filetypes($kind)]
    if {$file eq ""} { return "" }
    set result [::vesk::ops::run $command $file]
    if {$command in {import_tri import_alias_tri} && $result eq "1"} {
        display_message "imported [file tail $file]"
    }
    return $result
}

# Menu entries "label kind command" that choose a file of the kind and
# run the command on it through action; each dialog's title is the verb
# and the label.
proc ::vesk::main::add_file_entries {menu verb action entries} {
    foreach {label kind command} $entries {
        $menu add command -label $label \
            -command [list $action "$verb [string trimright $label .]" $kind $command]
    }
}

proc ::vesk::main::build_file_menu {m} {
    $m add command -label "New" -accelerator Ctrl+N -command ::vesk::ops::new_model
    $m add command -label "Open..." -accelerator Ctrl+O -command ::vesk::ops::open_model
    set recent [add_cascade $m recent "Open recent"]
    $recent configure -postcommand [list ::vesk::ops::recent_fill $recent]
    $m add command -label "Merge model..." -command {::vesk::ops::with_open_file "Merge a VESK model" vk merge_vk}
    $m add command -label "Revert to saved" -command ::vesk::ops::revert_model
    $m add command -label "Open backup" -command ::vesk::ops::open_backup
    add_file_entries [add_cascade $m import "Import"] Import ::vesk::main::import_file {
        "3D Studio..." 3ds import_3ds
        "DXF..." dxf import_dxf
        "Alias triangle..." tri import_alias_tri
        "Triangle..." tri import_tri
        "Lightwave..." lwo import_lightwave
        "Vector drawing (SVG)..." svg import_vector
        "VRML 1..." wrl import_vrml
        "Inventor..." iv import_inventor
    }
    $m add separator
    $m add command -label "Save" -accelerator Ctrl+S -command ::vesk::ops::save_model
    $m add command -label "Save as..." -accelerator Ctrl+Shift+S -command ::vesk::ops::save_model_as
    $m add command -label "Save a copy..." -command {::vesk::ops::with_save_file "Save a copy of the model" vk save_vk}
    $m add command -label "Save selection..." \
        -command {::vesk::ops::with_save_file "Save the selection as" vk save_selection_vk}
    add_file_entries [add_cascade $m export "Export"] Export ::vesk::ops::with_save_file {
        "VRML 2.0..." wrl write_vrml2
        "VRML 1.0..." wrl write_vrml
        "Inventor..." iv write_inventor
        "POV-Ray..." pov write_POV
        "RenderMan..." rib write_rib
        "DIVE..." dive write_dive
        "Massive..." massive write_massive
        "DVS..." dvs write_dvs
        "Triangle..." tri write_tri
    }
    $m add separator
    $m add command -label "Render" -command ::vesk::ops::render
    $m add separator
    $m add command -label "Preferences..." -command ::vesk::prefs::open_dialog
    $m add command -label "Save settings" -command {vesk save_settings}
    $m add separator
    $m add command -label "Quit" -accelerator Ctrl+Q -command ::vesk::ops::quit
}

# A key of the flat views that means something else in the 3D view is
# shown with the views it works in.
proc ::vesk::main::flat_key {key} {
    if {$key in {t v a Space f g w l 1 2}} { return "$key (flat views)" }
    return $key
}

proc ::vesk::main::build_edit_menu {m} {
    $m add command -label "Undo" -accelerator u -command {vesk undo}
    $m add command -label "Redo" -accelerator Ctrl+Shift+Z -command {vesk redo}
    $m add command -label "History..." -command ::vesk::main::show_history
    $m add separator
    $m add command -label "Cut" -accelerator Ctrl+X -command {vesk clipboard_cut}
    $m add command -label "Copy" -accelerator Ctrl+C -command {vesk clipboard_copy}
    $m add command -label "Paste" -accelerator Ctrl+V -command {vesk clipboard_paste}
    $m add command -label "Delete" -accelerator Del -command {vesk delete}
    $m add separator
    $m add command -label "Duplicate" -accelerator d -command {vesk duplicate}
    $m add command -label "Clone selection" -command {vesk clone_selection}
    $m add separator
    $m add command -label "Clear all" \
        -command {::vesk::ops::discard_and_run "Clear all" "Delete the whole model?" clear_all}
}

proc ::vesk::main::build_select_menu {m} {
    variable select_modes
    foreach {word label key number} $select_modes {
        $m add radiobutton -label "$label mode" -accelerator [flat_key $key] -value $word \
            -variable ::vesk::main::select_mode -command [list vesk set_select_mode $number]
    }
    $m add separator
    $m add command -label "Select all" -accelerator [flat_key a] -command {vesk select_all}
    $m add command -label "Clear selection" -accelerator n -command {vesk clear_selection}
    $m add command -label "Select by name..." -command {::vesk::ops::ask_for select_by_name}
    $m add command -label "Unselect by name..." -command {::vesk::ops::ask_for unselect_by_name}
    $m add command -label "Select part-selected surfaces" -command {vesk select_part_selected_surfaces}
    $m add separator
    $m add command -label "Hide selected" -accelerator h -command {vesk hide_selected}
    $m add command -label "Hide unselected" -command {vesk hide_unselected}
    $m add command -label "Unhide all" -command {vesk unhide}
    $m add separator
    set o [add_cascade $m byid "Object by id"]
    $o add command -label "Select object..." -command {::vesk::ops::ask_object object_select "Select object"}
    $o add command -label "Deselect object..." -command {::vesk::ops::ask_object object_deselect "Deselect object"}
    $o add command -label "Hide object..." -command {::vesk::ops::ask_object object_hide "Hide object"}
    $o add command -label "Unhide object..." -command {::vesk::ops::ask_object object_unhide "Unhide object"}
}

proc ::vesk::main::build_object_menu {m} {
    $m add command -label "Group" -command {vesk group}
    $m add command -label "Ungroup" -command {vesk ungroup}
    $m add command -label "Merge" -command {vesk object_merge}
    $m add command -label "Fragment" -command {vesk object_fragment}
    $m add command -label "Explode..." -command {::vesk::ops::ask_for object_explode}
    $m add separator
    $m add command -label "Recentre" -command {vesk object_recentre}
    $m add command -label "Min-centre" -command {vesk object_mincentre}
    $m add command -label "Optimize" -command {vesk optimize}
    $m add command -label "Optimize surfaces" -command {vesk optimize_surfaces}
    $m add separator
    $m add command -label "Snap to grid" -command {vesk snaptogrid}
    $m add command -label "Snap together" -accelerator s -command {vesk snaptogether}
    $m add command -label "Snap object vertex pairs" -command {vesk snap_object_vertex_pairs}
    $m add command -label "Snap objects by vertices" -command {vesk object_snap_together_by_vertices}
    $m add separator
    $m add command -label "Move..." -command {::vesk::ops::ask_for move}
    $m add command -label "Move to..." -command {::vesk::ops::ask_for move_to}
    $m add command -label "Rotate..." -command {::vesk::ops::ask_for rotate}
    $m add command -label "Rotate about..." -command {::vesk::ops::ask_for rotate_about}
    $m add command -label "Scale..." -command {::vesk::ops::ask_for scale}
    $m add command -label "Size to..." -command {::vesk::ops::ask_for size_to}
    set mirror [add_cascade $m mirror "Mirror"]
    foreach {label axis} {X 0 Y 1 Z 2} {
        $mirror add command -label "Along $label" -command [list vesk mirror $axis]
    }
    $m add separator
    $m add command -label "Set name..." -command {::vesk::ops::ask_for set_current_object_name}
    $m add command -label "Set URL..." -command {::vesk::ops::ask_for set_current_object_url}
    $m add command -label "Set data..." -command {::vesk::ops::ask_for set_current_object_data}
    $m add separator
    set t [add_cascade $m texture "Texture"]
    $t add command -label "Load texture..." -command {vesk file_select_texture}
    $t add command -label "Load and apply texture file..." \
        -command {::vesk::ops::with_open_file "Load and apply a texture" image load_and_set_new_texture}
    $t add command -label "Add texture file..." \
        -command {::vesk::ops::with_open_file "Add a texture" image add_new_texture}
    $t add command -label "Set texture by number..." -command {::vesk::ops::ask_for set_texture}
    $t add command -label "No texture" -command {vesk set_no_texture}
    $m add command -label "Texture repeats..." -command {::vesk::ops::ask_for set_texture_repeats}
    set remap [add_cascade $m remap "Remap textures"]
    foreach {label view} {"From front view" 0 "From side view" 1 "From plan view" 2} {
        $remap add command -label $label -command [list vesk remap_textures $view]
    }
    $m add command -label "Apply texture to selected objects..." -command {::vesk::ops::ask_for texture_set}
    $m add command -label "Remove texture from selected objects" -command {vesk selected_texture_off}
    $m add separator
    set new [add_cascade $m new "New"]
    $new add command -label "Cube" -command {vesk new_cube}
    $new add command -label "Text object..." -command {::vesk::ops::ask_for create_text}
    $m add command -label "Add text..." -command {::vesk::ops::ask_for add_text}
    $m add command -label "Convex hull" -command {vesk convexhull}
    set revolve [add_cascade $m revolve "Revolve"]
    foreach {label axis} {X 0 Y 1 Z 2} {
        $revolve add command -label "About $label axis" -command [list vesk revolve $axis]
    }
    $m add command -label "Define extrude path" -command {vesk define_extrude_path}
    $m add command -label "Extrude along path" -command {vesk extrude_along_path}
    $m add separator
    $m add command -label "Recalculate normals" -command {vesk recalc_normals_all}
}

proc ::vesk::main::build_surface_menu {m} {
    foreach {label command} {
        Subdivide surface_subdivide
        Spike surface_spike
        "Flip normals" surface_flip_normals
        Triangulate surface_triangulate
        Bevel surface_bevel
        "Make hole" surface_make_hole
        Spline surface_spline
    } {
        $m add command -label $label -command [list vesk $command]
    }
    $m add separator
    foreach {label command} {
        "Create surface" createsurface
        "Remove surface" removesurface
        "Insert vertex" insert_vertex
        "Change vertex order" surface_change_vertex_order
        "Surface to new object" surface_create_object
    } {
        $m add command -label $label -command [list vesk $command]
    }
    $m add separator
    set type [add_cascade $m type "Type"]
    foreach {label kind} {Polygon 0 "Closed line" 1 Line 2} {
        $type add command -label $label -command [list vesk set_surface_type $kind]
    }
    $m add command -label "Smooth" -command {vesk surface_set_shaded 1}
    $m add command -label "Flat" -command {vesk surface_set_shaded 0}
    $m add command -label "Two-sided" -command {vesk surface_set_twosided 1}
    $m add command -label "One-sided" -command {vesk surface_set_twosided 0}
    $m add separator
    $m add command -label "Set colour" -command {vesk set_col $::vesk::palette::current}
    $m add command -label "Edit colour..." -command {vesk edit_palette_entry $::vesk::palette::current}
    $m add command -label "New colour from current" -command {vesk new_palette_entry $::vesk::palette::current}
    $m add command -label "Default material for colour" \
        -command {vesk set_palette_entry {*}[::vesk::palette::default_material]}
    $m add separator
    $m add command -label "Run surface filter..." -command {::vesk::ops::ask_for execute_surface_filter}
}

proc ::vesk::main::build_view_menu {m} {
    $m add command -label "Zoom in" -accelerator z -command {vesk zoom_in}
    $m add command -label "Zoom out" -accelerator x -command {vesk zoom_out}
    $m add command -label "Fit model" -command {vesk fit_all}
    $m add command -label "Fit selection" -accelerator Shift+F -command {vesk fit_selected_all}
    $m add command -label "Go to selection" -accelerator Shift+G -command {vesk goto_selected_all}
    $m add command -label "Reset views" -accelerator [flat_key Space] -command {vesk reset_views}
    $m add separator
    $m add command -label "Redraw" -command {vesk redraw_all}
    $m add command -label "Redraw flat views" -command {vesk redraw_orth}
    $m add command -label "Redraw 3D view" -command {vesk redraw_3d}
    $m add separator
    foreach {label value} {"All views" all "Front view" xy "Side view" zy "Plan view" xz "3D view" xyz} {
        $m add radiobutton -label $label -variable ::viewsetting -value $value
    }
    $m add separator
    foreach {label variable} {
        "Show grid" show_grid
        "Snap to grid" gridsnap
        "Show vertices" show_vertices
        "Show selected vertices" show_selected_vertices
        "Show object centres" show_objectcentres
        "Show view labels" prefs_show_window_labels
    } {
        $m add checkbutton -label $label -variable ::$variable -command {vesk redraw_orth}
    }
    $m add separator
    ::vesk::view::fill_3d_menu [add_cascade $m view3d "3D view"]
    set b [add_cascade $m background "Background image"]
    foreach {label view} {Front 0 Side 1 Plan 2} {
        set sub [add_cascade $b v$view "$label view"]
        $sub add command -label "Load image..." -command [list vesk file_select_background_image $view]
        $sub add command -label "Load any image file..." -command [list ::vesk::ops::with_open_file \
            "Background image for the [string tolower $label] view" any load_background_image $view]
        $sub add command -label "Clear" -command [list vesk clear_background_image $view]
    }
    $m add command -label "Perspective settings..." \
        -command {::vesk::ops::ask_setting prefs_fov "Perspective" "Field of view (degrees)" int do_perspective}
}

proc ::vesk::main::build_tools_menu {m} {
    variable draw_modes
    variable drag_modes
    foreach {number label} $draw_modes {
        $m add radiobutton -label "Draw: $label" -value $number \
            -variable ::vesk::main::draw_mode -command [list vesk set_draw_mode $number]
    }
    $m add separator
    foreach {number label key} $drag_modes {
        $m add radiobutton -label "Drag: $label" -accelerator $key -value $number \
            -variable ::vesk::main::drag_mode -command [list vesk set_drag_mode $number]
    }
    $m add separator
    $m add checkbutton -label "Keep the draw tool after each shape" -variable ::keep_draw_tool
    $m add separator
    $m add command -label "Render with POV-Ray" -command ::vesk::ops::render_povray
    $m add separator
    $m add command -label "Console..." -command ::vesk::ops::console
    $m add checkbutton -label "Scripting socket" -variable ::vesk::ops::socket_on \
        -command ::vesk::ops::socket_toggle
    $m add command -label "Scripting socket settings..." -command ::vesk::ops::socket_dialog
    $m add command -label "List commands" -command {::vesk::ops::show_result "VESK commands" list}
    $m add command -label "Run system command..." -command {::vesk::ops::ask_for execute}
    set i [add_cascade $m inspect "Inspect"]
    foreach {label command} {
        "Model info" get_info
        "World object id" get_world
        "Selected object ids" get_selected_objects
        "Lights" get_lights
        "3D cursor" get_3d_cursor
        "Selection size" get_selection_size
        "Selection centre" get_selection_centre
    } {
        $i add command -label $label -command [list ::vesk::ops::show_result $label $command]
    }
    $i add separator
    foreach {label command} {
        "Children of object..." object_get_children
        "Name of object..." object_get_name
        "Surfaces of object..." object_get_surfaces
        "Vertices of object..." object_get_vertices
        "Centre of object..." object_get_centre
        "URL of object..." object_get_url
        "Data of object..." object_get_data
        "Is object selected..." object_is_selected
        "Is object hidden..." object_is_hidden
    } {
        $i add command -label $label \
            -command [list ::vesk::ops::ask_object $command [string trimright $label .] 1]
    }
    $m add separator
}

proc ::vesk::main::build_help_menu {m} {
    $m add command -label "About VESK" -command {vesk menu_about; ::vesk::ops::about}
    $m add command -label "List of commands" -command {::vesk::ops::show_result "VESK commands" list}
    $m add command -label "Keys" -command ::vesk::main::show_keys
}

proc ::vesk::main::show_keys {} {
    ::vesk::ops::show_text "VESK keys" [join {
        "Keys act on the view under the mouse pointer."
        ""
        "Front, side and plan views"
        "  t o v       tree / object / vertex select mode"
        "  m i r e     drag moves / resizes / rotates / extrudes"
        "  a n         select all / clear selection"
        "  h           hide the selection"
        "  u           undo"
        "  d           duplicate"
        "  s           snap selected vertices together"
        "  z x         zoom in / out"
        "  f F         fit the selection in this view / in all views"
        "  g G         centre on the selection in this view / in all views"
        "  c           centre the views on the origin"
        "  Space       reset the views"
        "  Arrows      pan (Shift: faster); Ctrl+Up/Down zoom"
        "  Delete      delete the selection"
        ""
        "3D view"
        "  1 2         spin / walk mode"
        "  f w v       filled / wireframe / points"
        "  a g t l     axes / grid / textures / headlight"
        "  Space       reset the view"
        "  Arrows      turn (Ctrl: zoom or look up and down; Alt: move)"
        ""
        "Everywhere"
        "  Ctrl+N Ctrl+O Ctrl+S Ctrl+Shift+S   new, open, save, save as"
        "  Ctrl+Z Ctrl+X Ctrl+C Ctrl+V          undo, cut, copy, paste"
        "  Ctrl+Shift+Z Ctrl+Y                  redo"
        "  Ctrl+Q                               quit"
    } "\n"]
}

# ---- menu entry states ----

# The name of the core command a menu entry's script runs, or "".
proc ::vesk::main::entry_command_name {script} {
    if {[catch {lindex $script 0} first]} { return "" }
    switch -- $first {
        vesk - ::vesk::ops::ask_for { return [lindex $script 1] }
        ::vesk::ops::with_open_file - ::vesk::ops::with_save_file { return [lindex $script 3] }
        ::vesk::ops::ask_object { return [lindex $script 1] }
    }
    return ""
}

# Before a menu opens: entries whose command this build lacks, and undo,
# redo and the history when there is nothing to take back or redo, are
# shown disabled instead of doing nothing when chosen.
proc ::vesk::main::update_menu_states {m} {
    if {![winfo exists $m]} { return }
    set last [$m index end]
    if {$last eq "none"} { return }
    for {set i 0} {$i <= $last} {incr i} {
        switch -- [$m type $i] {
            cascade { update_menu_states [$m entrycget $i -menu] }
            command {
                set name [entry_command_name [$m entrycget $i -command]]
                if {$name eq ""} { continue }
                set available [vesk command_available $name]
                $m entryconfigure $i -state [expr {$available eq "0" ? "disabled" : "normal"}]
            }
        }
    }
    if {$m eq ".mbar.edit.menu"} {
        set undo [expr {[info exists ::undo_count] && $::undo_count > 0}]
        set redo [expr {[info exists ::redo_count] && $::redo_count > 0}]
        $m entryconfigure 0 -state [expr {$undo ? "normal" : "disabled"}]
        $m entryconfigure 1 -state [expr {$redo ? "normal" : "disabled"}]
        $m entryconfigure 2 -state [expr {$undo ? "normal" : "disabled"}]
    }
}

# Undo from a key: with nothing to undo the status line says so.
proc ::vesk::main::undo {} {
    if {[info exists ::undo_count] && $::undo_count == 0} {
        display_message "nothing to undo"
    }
    vesk undo
}

# ---- undo history ----

# Lists the steps of the undo history, newest first; choosing one and
# pressing Undo to here takes back that step and every later one.
proc ::vesk::main::show_history {} {
    set w .history
    if {[winfo exists $w]} { destroy $w }
    set labels [vesk undo_history]
    if {[llength $labels] == 0} {
        display_message "nothing to undo"
        return
    }
    toplevel $w
    wm title $w "Undo history"
    wm transient $w .
    set f [ttk::frame $w.f -padding 8]
    ttk::label $f.text -text "Choose a step to take back, with every step after it:"
    listbox $f.list -height [expr {min(15, [llength $labels])}] -width 36 -exportselection 0
    set step [llength $labels]
    foreach label [lreverse $labels] {
        incr step -1
        $f.list insert end "[expr {$step + 1}]. [expr {$label eq "" ? "(unnamed)" : $label}]"
    }
    $f.list selection set 0
    ttk::frame $f.buttons
    ttk::button $f.buttons.undo -text "Undo to here" -command [list ::vesk::main::history_chosen $w]
    ttk::button $f.buttons.close -text "Close" -command [list destroy $w]
    pack $f.buttons.close $f.buttons.undo -side right -padx {6 0}
    pack $f.text -anchor w
    pack $f.list -fill both -expand 1 -pady 6
    pack $f.buttons -fill x
    pack $f -fill both -expand 1
    bind $f.list <Double-1> [list ::vesk::main::history_chosen $w]
    bind $w <Return> [list ::vesk::main::history_chosen $w]
    bind $w <Escape> [list destroy $w]
    focus $f.list
}

proc ::vesk::main::history_chosen {w} {
    set chosen [$w.f.list curselection]
    if {$chosen eq ""} { return }
    set count [$w.f.list size]
    destroy $w
    vesk undo_to [expr {$count - 1 - [lindex $chosen 0]}]
}

# ---- tool panel ----

proc ::vesk::main::build_tools {} {
    variable select_modes
    variable draw_modes
    variable drag_modes
    # What each tool does and how it is used, for its tooltip.
    set drag_help {
        100 "Move: drag the selection in a flat view; Control keeps the first axis;\nduring the drag type a distance and Enter for an exact move"
        101 "Resize: drag a handle of the selection box;\nduring the drag type a factor and Enter"
        102 "Rotate: drag sideways in a flat view, one degree per pixel in steps;\nduring the drag type degrees and Enter"
        103 "Extrude: drag the selected surfaces out of their plane"
    }
    set lines "click to add points; click the first point or the right button finishes;\nEscape cancels"
    set shapes "drag to draw, or click for a regular one; Escape goes back to Select"
    set draw_help [list \
        0 "Select: click or drag a band; Shift adds, Shift with the right button removes" \
        1 "Line: $lines" 2 "Closed line: $lines" 3 "Polygon: $lines" \
        4 "Rectangle: $shapes" 5 "Ellipse: $shapes" 6 "Disk: $shapes" \
        7 "Box: $shapes;\nits depth is the selection's, else as deep as wide at the 3D cursor" \
        8 "Sphere: $shapes;\nits depth is the selection's, else as deep as wide at the 3D cursor" \
        9 "Cylinder: $shapes" 10 "Mesh: $shapes" 11 "Grid: $shapes" 12 "Icosahedron: click where it goes" \
        13 "Light: click where the light goes"]
    ttk::frame .tools -padding {6 6 6 6}
    set s [ttk::labelframe .tools.select -text "Select" -padding 4]
    set column 0
    foreach {word label key number} $select_modes {
        ttk::radiobutton $s.$word -text $label -style Toolbutton -value $word \
            -variable ::vesk::main::select_mode -command [list vesk set_select_mode $number]
        tip $s.$word "[dict get {tree {Select whole hierarchies} object {Select single objects} vertex {Select vertices}} $word] ($key)"
        grid $s.$word -row 0 -column $column -sticky ew
        grid columnconfigure $s $column -weight 1 -uniform select
        incr column
    }
    set d [ttk::labelframe .tools.drag -text "Drag" -padding 4]
    set index 0
    foreach {number label key} $drag_modes {
        ttk::radiobutton $d.m$number -text $label -style Toolbutton -value $number \
            -variable ::vesk::main::drag_mode -command [list vesk set_drag_mode $number]
        tip $d.m$number "[dict get $drag_help $number] (key $key in the flat views)"
        grid $d.m$number -row [expr {$index / 2}] -column [expr {$index % 2}] -sticky ew
        incr index
    }
    grid columnconfigure $d {0 1} -weight 1 -uniform drag
    set w [ttk::labelframe .tools.draw -text "Draw" -padding 4]
    set index 0
    foreach {number label} $draw_modes {
        ttk::radiobutton $w.m$number -text $label -style Toolbutton -value $number \
            -variable ::vesk::main::draw_mode -command [list vesk set_draw_mode $number]
        tip $w.m$number [dict get $draw_help $number]
        grid $w.m$number -row [expr {$index / 2}] -column [expr {$index % 2}] -sticky ew
        incr index
    }
    grid columnconfigure $w {0 1} -weight 1 -uniform draw
    grid $s -row 0 -column 0 -sticky ew
    grid $d -row 1 -column 0 -sticky ew -pady {8 0}
    grid $w -row 2 -column 0 -sticky ew -pady {8 0}
    grid .palette -in .tools -row 3 -column 0 -sticky ew -pady {8 0}
    raise .palette
    grid columnconfigure .tools 0 -weight 1
    grid rowconfigure .tools 4 -weight 1
}

# ---- tool tips ----

# A short help text shown after the pointer rests on a widget, when the
# balloon help preference is on.
proc ::vesk::main::tip {widget text} {
    bind $widget <Enter> +[list ::vesk::main::tip_schedule $widget $text]
    bind $widget <Leave> +::vesk::main::tip_hide
    bind $widget <ButtonPress> +::vesk::main::tip_hide
}

proc ::vesk::main::tip_schedule {widget text} {
    variable tip_timer
    tip_hide
    if {![info exists ::prefs_balloon_help] || ![string is true -strict $::prefs_balloon_help]} { return }
    set tip_timer [after 700 [list ::vesk::main::tip_show $widget $text]]
}

proc ::vesk::main::tip_show {widget text} {
    if {![winfo exists $widget] || [winfo containing {*}[winfo pointerxy .]] ne $widget} { return }
    if {![winfo exists .tip]} {
        toplevel .tip -borderwidth 0
        wm overrideredirect .tip 1
        wm withdraw .tip
        label .tip.text -background #ffffe1 -foreground black -relief solid -borderwidth 1 \
            -padx 5 -pady 2 -justify left
        pack .tip.text
    }
    .tip.text configure -text $text
    wm geometry .tip +[winfo rootx $widget]+[expr {[winfo rooty $widget] + [winfo height $widget] + 2}]
    wm deiconify .tip
    raise .tip
}

proc ::vesk::main::tip_hide {} {
    variable tip_timer
    if {[info exists tip_timer]} { after cancel $tip_timer }
    if {[winfo exists .tip]} { wm withdraw .tip }
}

# ---- status line ----

proc ::vesk::main::build_status {} {
    set f [ttk::frame .status -padding {6 2}]
    ttk::label $f.msg -textvariable ::vesk::main::message -anchor w -width 20
    ttk::label $f.sel -textvariable ::vesk::main::selection_text -anchor w
    ttk::label $f.coors -textvariable ::coors -anchor w -width 28 -font TkFixedFont
    ttk::label $f.size -textvariable ::size -anchor w -width 28 -font TkFixedFont
    ttk::label $f.modes -textvariable ::vesk::main::modes_text -anchor w
    ttk::label $f.undo -textvariable ::vesk::main::undo_text -anchor w
    ttk::label $f.redo -textvariable ::vesk::main::redo_text -anchor w
    ttk::progressbar $f.progress -orient horizontal -length 120 -maximum 100 -mode determinate
    set column 0
    foreach widget [list $f.msg $f.sel $f.coors $f.size $f.modes $f.undo $f.redo] {
        if {$column > 0} {
            grid [ttk::separator $f.sep$column -orient vertical] -row 0 -column $column -sticky ns -padx 6
            incr column
        }
        grid $widget -row 0 -column $column -sticky ew
        incr column
    }
    grid $f.progress -row 0 -column $column -padx {8 0}
    grid remove $f.progress
    grid columnconfigure $f 0 -weight 1
}

# ---- the window ----

proc ::vesk::main::bind_keys {} {
    bind . <Control-n> ::vesk::ops::new_model
    bind . <Control-o> ::vesk::ops::open_model
    bind . <Control-s> ::vesk::ops::save_model
    bind . <Control-S> ::vesk::ops::save_model_as
    bind . <Control-q> ::vesk::ops::quit
    bind . <Control-z> ::vesk::main::undo
    bind . <Control-Z> {vesk redo}
    bind . <Control-y> {vesk redo}
    bind . <Control-x> {vesk clipboard_cut}
    bind . <Control-c> {vesk clipboard_copy}
    bind . <Control-v> {vesk clipboard_paste}
}

proc ::vesk::main::build {} {
    init_variables
    build_menubar
    build_tools
    build_status
    ttk::separator .mbarline -orient horizontal
    ttk::separator .statusline -orient horizontal
    grid .mbar -row 0 -column 0 -columnspan 2 -sticky ew
    grid .mbarline -row 1 -column 0 -columnspan 2 -sticky ew
    grid .tools -row 2 -column 0 -sticky ns
    grid .views -row 2 -column 1 -sticky nsew -padx {0 4} -pady 4
    grid .statusline -row 3 -column 0 -columnspan 2 -sticky ew
    grid .status -row 4 -column 0 -columnspan 2 -sticky ew
    grid rowconfigure . 2 -weight 1
    grid columnconfigure . 1 -weight 1
    raise .views
    wm protocol . WM_DELETE_WINDOW ::vesk::ops::quit
    wm minsize . 640 480
    bind_keys
    foreach name {select_mode_name draw_mode_name drag_mode_name} {
        trace add variable ::$name write ::vesk::main::update_modes_text
    }
    trace add variable ::unsaved_changes write {apply {args {::vesk::main::update_title}}}
    trace add variable ::current_file_name write {apply {args {::vesk::main::update_title}}}
    trace add variable ::current_file_name write ::vesk::ops::recent_note
    ::vesk::ops::recent_note
    ::vesk::ops::enable_drop
    ::vesk::ops::ui_settings_load
    update_modes_text
    update_selection_text
    update_title
}

# ---- procedures the core calls ----

proc ::display_message {text} {
    set ::vesk::main::message $text
}

# Everything that shows core state.
proc ::sync_ui {} {
    ::vesk::main::update_selection_text
    ::vesk::main::update_modes_text
    ::vesk::main::update_title
}

proc ::set_progress_bar {percent} {
    set bar .status.progress
    if {![winfo exists $bar]} { return }
    if {![string is double -strict $percent]} { set percent 0 }
    set percent [expr {max(0, min(100, int($percent)))}]
    if {$percent == 0} {
        $bar configure -value 0
        grid remove $bar
    } else {
        grid $bar
        $bar configure -value $percent
    }
}

proc ::set_undo_string {text} {
    set label [expr {$text eq "" ? "Undo" : "Undo $text"}]
    set ::vesk::main::undo_text [expr {$text eq "" ? "" : "Undo: $text"}]
    if {[winfo exists .mbar.edit.menu]} { .mbar.edit.menu entryconfigure 0 -label $label }
}

proc ::set_redo_string {text} {
    set label [expr {$text eq "" ? "Redo" : "Redo $text"}]
    set ::vesk::main::redo_text [expr {$text eq "" ? "" : "Redo: $text"}]
    if {[winfo exists .mbar.edit.menu]} { .mbar.edit.menu entryconfigure 1 -label $label }
}

proc ::set_select_mode_ui {word} {
    if {$word ni {tree object vertex}} {
        display_message "unknown select mode \"$word\""
        return
    }
    set ::vesk::main::select_mode $word
    set ::select_mode_name $word
}

proc ::vesk::main::add_menu_item {m label command {help ""}} {
    variable menu_help
    if {![winfo exists $m]} { return }
    $m add command -label $label -command $command
    if {$help ne ""} { set menu_help($m|$label) $help }
}

proc ::add_import_menu_item {label command} {
    ::vesk::main::add_menu_item .mbar.file.menu.import $label $command
}

proc ::add_export_menu_item {label command} {
    ::vesk::main::add_menu_item .mbar.file.menu.export $label $command
}

proc ::add_tools_menu_item {label command {help ""}} {
    ::vesk::main::add_menu_item .mbar.tools.menu $label $command $help
}

proc ::add_surface_menu_item {label command {help ""}} {
    ::vesk::main::add_menu_item .mbar.surface.menu $label $command $help
}

::vesk::main::build
