# veskview.tcl - the view area: the frame .views with the four drawing
# windows (Togl widgets) that the core binds to its views, their labels,
# the layout chosen by the linked variable viewsetting ("all" for the 2x2
# grid, or "xy", "zy", "xz", "xyz" for one view alone), and the 3D view's
# menu, which the core pops up with "popup_3d_menu x y".
#
# Widget paths are fixed by the core: .views.<ident>frame.f.win with
# ident xy (front), zy (side), xz (plan) and xyz (3D).

namespace eval ::vesk::view {
    # In view-number order.
    variable idents {xy zy xz xyz}
    # Grid cells in the 2x2 layout: row and column of each view.
    variable cells {xy {0 0} zy {0 1} xz {1 0} xyz {1 1}}
    variable have_togl 0
    variable fallback_labels {xy "Front (XY)" zy "Side (ZY)" xz "Plan (XZ)" xyz "3D (XYZ)"}
}

proc ::vesk::view::frame_of {ident} { return .views.${ident}frame }
proc ::vesk::view::window_of {ident} { return .views.${ident}frame.f.win }

# ---- building ----

proc ::vesk::view::build {} {
    variable idents
    variable have_togl
    variable fallback_labels
    set have_togl [expr {![catch {package require Togl}]}]
    if {!$have_togl} {
        ::vesk::ops::message "the OpenGL widget (Togl) is not available - the views can't be drawn"
    }
    foreach ident $idents {
        set variable ::prefs_window_label_$ident
        if {![info exists $variable]} { set $variable [dict get $fallback_labels $ident] }
    }
    foreach name {viewsetting prefs_show_window_labels prefs_window_3d_width_percent
                  prefs_window_3d_height_percent prefs_doublebuffer_orth} default {all 1 50 50 1} {
        if {![info exists ::$name]} { set ::$name $default }
    }
    ttk::style configure ViewLabel.TLabel -padding {6 1} -font TkSmallCaptionFont
    ttk::frame .views
    foreach ident $idents {
        build_view $ident
    }
    menu .views.popup3d -tearoff 0
    fill_popup_picks .views.popup3d
    fill_3d_menu .views.popup3d
    apply_layout
    foreach name {viewsetting prefs_show_window_labels prefs_window_3d_width_percent
                  prefs_window_3d_height_percent} {
        trace add variable ::$name write ::vesk::view::layout_changed
    }
}

proc ::vesk::view::build_view {ident} {
    set f [ttk::frame [frame_of $ident]]
    ttk::label $f.label -textvariable ::prefs_window_label_$ident -style ViewLabel.TLabel -anchor w
    frame $f.f -borderwidth 1 -relief solid -background #808080
    set double [expr {$ident eq "xyz" ? "true" : ([string is true -strict $::prefs_doublebuffer_orth] ? "true" : "false")}]
    create_drawing_window [window_of $ident] $ident $double
    pack [window_of $ident] -fill both -expand 1
    grid $f.label -row 0 -column 0 -sticky ew
    grid $f.f -row 1 -column 0 -sticky nsew
    grid rowconfigure $f 1 -weight 1
    grid columnconfigure $f 0 -weight 1
    bind $f.label <Double-Button-1> [list ::vesk::view::toggle_single $ident]
}

# A Togl widget, or a plain black frame when Togl is missing, so that the
# rest of the interface still comes up.
proc ::vesk::view::create_drawing_window {path ident double} {
    variable have_togl
    if {$have_togl} {
        # Togl can't recover from a display without a fitting visual, so
        # that is found out first; without one the modeller can't work.
        if {[info commands vesk_gl_visual_ok] ne "" && ![vesk_gl_visual_ok $double]} {
            error "this display ([winfo screen .]) has no OpenGL visual with RGB colour and a depth\
                buffer - the views can't be drawn (try a 24-bit colour display)"
        }
        set options [list -rgba true -double $double -depth true -ident $ident -width 400 -height 300]
        if {[info commands vesk_togl_display] ne ""} {
            lappend options -createcommand vesk_togl_create -displaycommand vesk_togl_display \
                -reshapecommand vesk_togl_reshape
        }
        if {![catch {togl $path {*}$options} error]} { return }
        ::vesk::ops::message "can't open the $ident view: $error"
    }
    frame $path -width 400 -height 300 -background black
}

# ---- layout ----

proc ::vesk::view::percent {name} {
    set value [expr {[info exists ::$name] ? [set ::$name] : 50}]
    if {![string is integer -strict $value]} { return 50 }
    return [expr {max(10, min(90, $value))}]
}

proc ::vesk::view::layout_changed {args} {
    apply_layout
}

# Shows all four views or one, as viewsetting says, then has the core
# redraw them.
proc ::vesk::view::apply_layout {} {
    variable idents
    variable cells
    set setting $::viewsetting
    if {$setting ni [list all {*}$idents]} {
        ::vesk::ops::message "unknown view layout \"$setting\" - showing all views"
        set ::viewsetting all
        set setting all
    }
    set width [percent prefs_window_3d_width_percent]
    set height [percent prefs_window_3d_height_percent]
    grid columnconfigure .views 0 -weight [expr {100 - $width}] -uniform viewcolumns
    grid columnconfigure .views 1 -weight $width -uniform viewcolumns
    grid rowconfigure .views 0 -weight [expr {100 - $height}] -uniform viewrows
    grid rowconfigure .views 1 -weight $height -uniform viewrows
    set labels [expr {[info exists ::prefs_show_window_labels] && [string is true -strict $::prefs_show_window_labels]}]
    foreach ident $idents {
        set f [frame_of $ident]
        if {$labels} { grid $f.label } else { grid remove $f.label }
        if {$setting eq "all"} {
            lassign [dict get $cells $ident] row column
            grid $f -row $row -column $column -rowspan 1 -columnspan 1 -sticky nsew -padx 1 -pady 1
        } elseif {$setting eq $ident} {
            grid $f -row 0 -column 0 -rowspan 2 -columnspan 2 -sticky nsew -padx 1 -pady 1
        } else {
            grid remove $f
        }
    }
    if {[info commands ::vesk] ne ""} { vesk redraw_all }
}

# Between one view alone and all four.
proc ::vesk::view::toggle_single {ident} {
    if {$::viewsetting eq "all"} {
        set ::viewsetting $ident
    } else {
        set ::viewsetting all
    }
}

# ---- the 3D view's menu ----

# The 3D entries, shared by the pop-up menu and the View menu.  The
# accelerators are the 3D view's own keys (they act with the pointer in it).
# The 3D view's keys mean other things in the flat views, so each
# accelerator names its view.
proc ::vesk::view::fill_3d_menu {m} {
    $m add command -label "Reset view" -accelerator "Space (3D view)" -command ::vesk::view::reset_3d
    $m add command -label "Fit model" -accelerator "h (3D view)" -command {vesk fit_3d}
    $m add separator
    $m add radiobutton -label "Spin mode" -accelerator "1 (3D view)" -variable ::person_walk_vehicle -value 0 \
        -command {vesk set_spin_viewer}
    $m add radiobutton -label "Walk mode" -accelerator "2 (3D view)" -variable ::person_walk_vehicle -value 1 \
        -command {vesk set_walk_viewer}
    $m add separator
    $m add radiobutton -label "Filled" -accelerator "f (3D view)" -variable ::prefs_view3dmode -value 0 \
        -command {vesk redraw_3d}
    $m add radiobutton -label "Wireframe" -accelerator "w (3D view)" -variable ::prefs_view3dmode -value 1 \
        -command {vesk redraw_3d}
    $m add radiobutton -label "Points" -accelerator "v (3D view)" -variable ::prefs_view3dmode -value 2 \
        -command {vesk redraw_3d}
    $m add separator
    $m add checkbutton -label "Textures" -accelerator "t (3D view)" -variable ::prefs_view3dtextures \
        -command {vesk redraw_3d}
    $m add checkbutton -label "Show axes" -accelerator "a (3D view)" -variable ::prefs_show_axis \
        -command {vesk redraw_3d}
    $m add checkbutton -label "Show grid" -accelerator "g (3D view)" -variable ::prefs_show_3d_grid \
        -command {vesk redraw_3d}
    $m add checkbutton -label "Headlight" -accelerator "l (3D view)" -variable ::prefs_headlight \
        -command {vesk redraw_3d}
    $m add separator
    $m add command -label "Centre on selection" -command {vesk set_view_3d_selection}
    $m add command -label "Centre on 3D cursor" -command {vesk set_view_3d_cursor}
    $m add command -label "Centre on origin" -command {vesk set_view_3d_origin}
    $m add separator
    $m add command -label "Field of view..." \
        -command {::vesk::ops::ask_setting prefs_fov "Field of view" "Degrees" int do_perspective}
}

# Back to the start position of the current mode.
proc ::vesk::view::reset_3d {} {
    if {[info exists ::person_walk_vehicle] && [string is true -strict $::person_walk_vehicle]} {
        vesk set_walk_viewer
    } else {
        vesk set_spin_viewer
    }
}

# The 3D view's menu starts with what can be done to what is under the
# pointer where it was opened: the core is asked what is there
# ("pick_3d_query"), which leaves the selection alone, so opening the menu
# selects nothing.  Over an object: its name and what can be done to it;
# over empty space: what applies to the whole model.  An entry whose
# command this build lacks is shown disabled.
proc ::vesk::view::fill_popup_picks {m} {
    fill_popup_for $m ""
}

proc ::vesk::view::fill_popup_for {m hit} {
    variable popup_hit
    set popup_hit $hit
    if {$hit eq ""} {
        popup_entry $m "Paste" clipboard_paste {vesk clipboard_paste}
        popup_entry $m "Select all" select_all {vesk select_all}
        popup_entry $m "Clear selection" clear_selection {vesk clear_selection}
        popup_entry $m "Show hidden objects" unhide {vesk unhide}
        $m add separator
        return
    }
    set name [dict get $hit name]
    if {$name eq ""} { set name "Unnamed object" }
    $m add command -label $name -state disabled
    popup_entry $m "Select it" pick_3d {::vesk::view::pick_here 0}
    if {[dict get $hit selected]} {
        popup_entry $m "Remove it from the selection" pick_3d {::vesk::view::pick_here 2}
    } else {
        popup_entry $m "Add it to the selection" pick_3d {::vesk::view::pick_here 1}
    }
    popup_entry $m "Fit to it" fit_3d {::vesk::view::on_hit fit_3d}
    popup_entry $m "Hide" hide_selected {::vesk::view::on_hit hide_selected}
    popup_entry $m "Delete" delete {::vesk::view::on_hit delete}
    popup_entry $m "Texture..." load_and_set_new_texture {
        if {[::vesk::view::select_hit]} {
            ::vesk::ops::with_open_file "Load and apply a texture" image load_and_set_new_texture
        }
    }
    $m add separator
}

proc ::vesk::view::popup_entry {m label command script} {
    set state normal
    if {[catch {vesk command_available $command} ok] || $ok ne "1"} { set state disabled }
    $m add command -label $label -command $script -state $state
}

# Makes the object under the pointer the whole selection (its own
# vertices in vertex mode); 0 when it is gone since the menu opened.
proc ::vesk::view::select_hit {} {
    variable popup_hit
    if {$popup_hit eq ""} { return 0 }
    set id [dict get $popup_hit object]
    vesk clear_selection
    vesk object_select $id
    return [expr {$::numselectedobjects > 0 || $::numselected > 0}]
}

proc ::vesk::view::on_hit {command} {
    if {[select_hit]} { vesk $command }
}

proc ::vesk::view::pick_here {how} {
    variable popup_at
    if {![info exists popup_at]} { return }
    vesk pick_3d {*}$popup_at $how
}

# What is under window point x y of the 3D view, as pick_3d_query tells
# it, or "" for nothing.
proc ::vesk::view::query_at {x y} {
    if {[catch {vesk pick_3d_query $x $y} hit]} { return "" }
    if {[catch {dict exists $hit object} has] || !$has} { return "" }
    return $hit
}

proc ::vesk::view::rebuild_popup {m hit} {
    $m delete 0 end
    fill_popup_for $m $hit
    fill_3d_menu $m
}

proc ::popup_3d_menu {x y} {
    if {![string is integer -strict $x] || ![string is integer -strict $y]} { return }
    set ::vesk::view::popup_at [list $x $y]
    set win [::vesk::view::window_of xyz]
    # A layout change may still be waiting to be laid out.
    update idletasks
    if {![winfo ismapped $win]} { return }
    ::vesk::view::rebuild_popup .views.popup3d [::vesk::view::query_at $x $y]
    tk_popup .views.popup3d [expr {[winfo rootx $win] + $x}] [expr {[winfo rooty $win] + $y}]
}

::vesk::view::build
