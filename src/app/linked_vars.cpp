/*
 * app/linked_vars.cpp - the Tcl variables that share storage with the
 * core: preferences edited by the scripts' dialogs, and status values the
 * scripts display.  Linked in table order at start-up; the core calls
 * ui_update_linked_var after changing one so that the scripts' traces see
 * the change.
 */
#include "app/linked_vars.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "app/tcl_bridge.h"
#include "edit/redo.h"
#include "edit/selection.h"
#include "view/interaction.h"

#include <tcl.h>

static const LinkedVar linked_vars[] = {
    {"VESK_HOME", &vesk_home, TCL_LINK_STRING},
    {"undo_count", &undo_count, TCL_LINK_INT | TCL_LINK_READ_ONLY},
    {"redo_count", &redo_count, TCL_LINK_INT | TCL_LINK_READ_ONLY},
    {"keep_draw_tool", &keep_draw_tool, TCL_LINK_BOOLEAN},
    {"numselected", &selection.num_selected_vertices, TCL_LINK_INT | TCL_LINK_READ_ONLY},
    {"numselectedobjects", &selection.num_selected_objects, TCL_LINK_INT | TCL_LINK_READ_ONLY},
    {"objects_are_hidden", &objects_are_hidden, TCL_LINK_BOOLEAN | TCL_LINK_READ_ONLY},
    {"show_objectcentres", &prefs.show_object_centres, TCL_LINK_BOOLEAN},
    {"show_vertices", &prefs.show_vertices, TCL_LINK_BOOLEAN},
    {"show_selected_vertices", &prefs.show_selected_vertices, TCL_LINK_BOOLEAN},
    {"show_grid", &prefs.show_drawgrid, TCL_LINK_BOOLEAN},
    {"gridsnap", &prefs.gridlock, TCL_LINK_BOOLEAN},
    {"prefs_num_surface_div", &prefs.rot_segments, TCL_LINK_INT},
    {"prefs_revolve_degs", &prefs.revolve_degs, TCL_LINK_INT},
    {"prefs_extrude_num", &prefs.extrude_segments, TCL_LINK_INT},
    {"prefs_grid", &prefs.grid, TCL_LINK_DOUBLE},
    {"prefs_drawgrid", &prefs.drawgrid, TCL_LINK_DOUBLE},
    {"prefs_meshx", &prefs.mesh_x, TCL_LINK_INT},
    {"prefs_meshy", &prefs.mesh_y, TCL_LINK_INT},
    {"prefs_cp_x", &prefs.cpwin_x, TCL_LINK_INT},
    {"prefs_cp_y", &prefs.cpwin_y, TCL_LINK_INT},
    {"prefs_realtimecolour", &prefs.show_palette_changes, TCL_LINK_BOOLEAN},
    {"prefs_vert_size", &prefs.vert_size, TCL_LINK_INT},
    {"prefs_handle_size", &prefs.handle_size, TCL_LINK_INT},
    {"prefs_hollow_handles", &prefs.handles_hollow, TCL_LINK_BOOLEAN},
    {"prefs_independent_scaling", &prefs.independent_window_zoom, TCL_LINK_BOOLEAN},
    {"prefs_axis_size", &prefs.axis_size, TCL_LINK_DOUBLE},
    {"prefs_show_axis", &prefs.show_3d_axis, TCL_LINK_BOOLEAN},
    {"prefs_output_vrml_normals", &prefs.vrml_output_normals, TCL_LINK_BOOLEAN},
    {"prefs_output_vrml_textures", &prefs.vrml_output_textures, TCL_LINK_BOOLEAN},
    {"prefs_sphere_triangles", &prefs.sphere_from_triangles, TCL_LINK_BOOLEAN},
    {"prefs_mesh_triangles", &prefs.mesh_from_triangles, TCL_LINK_BOOLEAN},
    {"prefs_hole_percent", &prefs.hole_percent, TCL_LINK_INT},
    {"hide_objects_in_3d", &prefs.hide_objects_in_3d, TCL_LINK_BOOLEAN},
    {"prefs_font_main", &prefs.font_main, TCL_LINK_STRING},
    {"prefs_font_menu", &prefs.font_menu, TCL_LINK_STRING},
    {"prefs_fix_view_after_load", &prefs.fit_view_after_load, TCL_LINK_BOOLEAN},
    {"prefs_view3dmode", &prefs.view_3d_mode, TCL_LINK_INT},
    {"prefs_view3dtextures", &view_3d_textures, TCL_LINK_INT},
    {"prefs_show_3d_grid", &prefs.grid3d_show, TCL_LINK_INT},
    {"prefs_spike_factor", &prefs.spike_factor, TCL_LINK_DOUBLE},
    {"prefs_draw_moving_vertices", &prefs.draw_moving_vertices, TCL_LINK_BOOLEAN},
    {"person_walk_vehicle", &person_walk_vehicle, TCL_LINK_BOOLEAN},
    {"vesk_version_string", &vesk_version_string, TCL_LINK_STRING | TCL_LINK_READ_ONLY},
    {"prefs_render_command", &prefs.render_command, TCL_LINK_STRING},
    {"prefs_bevel_size", &prefs.bevel_size, TCL_LINK_DOUBLE},
    {"prefs_wireframe_move", &prefs.wireframe_move, TCL_LINK_BOOLEAN},
    {"prefs_balloon_help", &prefs.balloon_help, TCL_LINK_BOOLEAN},
    {"prefs_headlight", &prefs.headlighton, TCL_LINK_BOOLEAN},
    {"prefs_fov", &prefs.fov_3d, TCL_LINK_INT},
    {"prefs_output_rib_header", &prefs.output_rib_header, TCL_LINK_BOOLEAN},
    {"prefs_fontpath", &prefs.fontpath, TCL_LINK_STRING},
    {"prefs_pov_file_header", &prefs.pov_file_header, TCL_LINK_STRING},
    {"prefs_pov_use_object_data", &prefs.pov_use_object_data, TCL_LINK_BOOLEAN},
    {"prefs_window_label_xy", &prefs.XYwindowlabel, TCL_LINK_STRING},
    {"prefs_window_label_zy", &prefs.ZYwindowlabel, TCL_LINK_STRING},
    {"prefs_window_label_xz", &prefs.XZwindowlabel, TCL_LINK_STRING},
    {"prefs_window_label_xyz", &prefs.XYZwindowlabel, TCL_LINK_STRING},
    {"prefs_use_textures_for_background_images", &prefs.use_textures_for_background_images, TCL_LINK_BOOLEAN},
    {"prefs_tk_strictmotif", &prefs.tk_strictmotif, TCL_LINK_BOOLEAN},
    {"prefs_recalc_normals", &prefs.recalc_normals, TCL_LINK_BOOLEAN},
    {"prefs_rotate_about_object_centre", &prefs.rotate_about_object_centre, TCL_LINK_BOOLEAN},
    {"prefs_show_window_labels", &prefs.show_window_labels, TCL_LINK_BOOLEAN},
    {"prefs_window_3d_width_percent", &prefs.window_3d_width_percent, TCL_LINK_INT},
    {"prefs_window_3d_height_percent", &prefs.window_3d_height_percent, TCL_LINK_INT},
    {"viewsetting", &viewsetting, TCL_LINK_STRING},
    {"tcl_socket_port", &prefs.tcl_socket_port, TCL_LINK_INT},
    {"prefs_rib_use_object_data", &prefs.rib_use_object_data, TCL_LINK_BOOLEAN},
    {"prefs_plugin_dir", &prefs.plugin_dir, TCL_LINK_STRING},
    {"vesk_version_number", &vesk_version_number, TCL_LINK_DOUBLE | TCL_LINK_READ_ONLY},
    {"prefs_doublebuffer_orth", &prefs.doublebuffer_orth, TCL_LINK_BOOLEAN},
    {"prefs_pick_pixel_range", &prefs.pick_pixel_range, TCL_LINK_INT},
    {"unsaved_changes", &unsaved_changes, TCL_LINK_BOOLEAN},
    {"prefs_backup_on_save", &prefs.backup_on_save, TCL_LINK_BOOLEAN},
    {"prefs_autosave_seconds", &prefs.autosave_seconds, TCL_LINK_INT},
    {"current_file_name", &current_file_name, TCL_LINK_STRING},
    {nullptr, nullptr, 0},
};

int link_tcl_variables(Tcl_Interp *interp)
{
    for (const LinkedVar *v = linked_vars; v->name; v++) {
        if (Tcl_LinkVar(interp, v->name, (char *)v->address, v->type) != TCL_OK) {
            tcl_trace_error(v->name);
            return 0;
        }
    }
    return 1;
}

void ui_update_linked_var(void *address)
{
    if (!tcl_interp) return;
    for (const LinkedVar *v = linked_vars; v->name; v++) {
        if (v->address == address) Tcl_UpdateLinkedVar(tcl_interp, v->name);
    }
}

void ui_update_linked_vars(void)
{
    if (!tcl_interp) return;
    for (const LinkedVar *v = linked_vars; v->name; v++) {
        console_printf("%s\n", v->name);
        Tcl_UpdateLinkedVar(tcl_interp, v->name);
    }
}
