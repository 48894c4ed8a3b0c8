/*
 * prefs_table.cpp - the preference table and the built-in defaults.  The
 * table's order is the order of the preferences file; the defaults are an
 * image of the whole settings record copied over it at start-up.  String
 * settings are null in the image and allocated by prefs_set_defaults.
 */
#include "app/prefs.h"

Prefs prefs;

const Prefs prefs_defaults = {
    12, /* rot_segments */
    0, /* sphere_from_triangles */
    1, /* extrude_segments */
    0.1, /* grid */
    1.0, /* drawgrid */
    1.0, /* grid3d_square */
    20.0, /* grid3d_size */
    1, /* grid3d_show */
    1, /* show_vertices */
    1, /* show_drawgrid */
    0, /* show_object_centres */
    0, /* gridlock */
    0, /* view_3d_mode */
    1, /* wireframe_move */
    8, /* mesh_x */
    8, /* mesh_y */
    1, /* mesh_from_triangles */
    1, /* show_palette_changes */
    183, /* frontwin_x */
    23, /* frontwin_y */
    430, /* frontwin_width */
    353, /* frontwin_height */
    620, /* sidewin_x */
    23, /* sidewin_y */
    400, /* sidewin_width */
    353, /* sidewin_height */
    183, /* planwin_x */
    402, /* planwin_y */
    431, /* planwin_width */
    334, /* planwin_height */
    620, /* 3dwin_x */
    402, /* 3dwin_y */
    400, /* 3dwin_width */
    334, /* 3dwin_height */
    0, /* cpwin_x */
    0, /* cpwin_y */
    0, /* cpwin_width */
    0, /* cpwin_height */
    3, /* vert_size */
    8, /* handle_size */
    0, /* independent_window_zoom */
    1.0, /* axis_size */
    0, /* show_3d_axis */
    0, /* vrml_output_normals */
    1, /* vrml_output_textures */
    0, /* handles_hollow */
    50, /* hole_percent */
    20, /* undo_levels */
    1, /* hide_objects_in_3d */
    1, /* fit_view_after_load */
    0.8, /* fit_view_factor */
    0.0, /* init3d_x */
    0.0, /* init3d_y */
    5.0, /* init3d_z */
    nullptr, /* font_main */
    nullptr, /* font_menu */
    0x0, /* col_background */
    0xFFFFFF, /* col_foreground */
    0xAAAAAA, /* col_line */
    0xFFFFFF, /* col_selline */
    0xFF4444, /* col_vert */
    0xFF00, /* col_selvert */
    0xFF00, /* col_box */
    0x454545, /* col_grid */
    0x777777, /* col_axis */
    0xAAAAAA, /* col_3dgrid */
    0x0, /* col_3dbackground */
    't', /* key_mode_tree */
    'o', /* key_mode_object */
    'v', /* key_mode_vertex */
    'm', /* key_submode_move */
    'i', /* key_submode_resize */
    'r', /* key_submode_rotate */
    'e', /* key_submode_extrude */
    'h', /* key_selection_hide */
    'a', /* key_select_all */
    'n', /* key_selection_clear */
    'u', /* key_undo */
    '?', /* key_info */
    ' ', /* key_reset */
    'c', /* key_centre */
    'g', /* key_goto */
    'G', /* key_goto_all */
    'f', /* key_selected_fit */
    'F', /* key_selected_fit_all */
    's', /* key_snap_together */
    'z', /* key_zoom_in */
    'x', /* key_zoom_out */
    0.2, /* spike_factor */
    1, /* draw_moving_vertices */
    360, /* revolve_degs */
    nullptr, /* render_command */
    -100.0, /* lightx */
    10.0, /* lighty */
    100.0, /* lightz */
    0.0, /* lightw */
    0.05, /* bevel_size */
    0.05, /* font_char_offset */
    nullptr, /* fontpath */
    20, /* sgi_anim_frames */
    1, /* headlighton */
    1, /* balloon_help */
    50, /* fov_3d */
    -1, /* orth_xcursor */
    nullptr, /* XYwindowlabel */
    nullptr, /* ZYwindowlabel */
    nullptr, /* XZwindowlabel */
    nullptr, /* XYZwindowlabel */
    1, /* gl_concave */
    1, /* allow_3d_spin */
    4, /* spline_steps */
    1, /* output_rib_header */
    0, /* rib_textures */
    5, /* object_centre_size */
    100, /* ui_timer_msecs */
    1, /* pov_object_data */
    nullptr, /* pov_file_header */
    0, /* pov_use_object_data */
    1, /* pov_active_pointer */
    0, /* use_textures_for_background_images */
    0, /* show_vertices_3d */
    1, /* tk_strictmotif */
    1, /* recalc_normals */
    0, /* rotate_about_object_centre */
    1, /* show_window_labels */
    50, /* window_3d_width_percent */
    50, /* window_3d_height_percent */
    1, /* doublebuffer_orth */
    1655, /* tcl_socket_port */
    0, /* rib_use_object_data */
    nullptr, /* plugin_dir */
    1.2, /* zoom_factor_3d */
    1, /* memory_checks */
    4, /* pick_pixel_range */
    0.01, /* walk_move_speed */
    0.2, /* walk_turn_speed */
    5, /* mouse_rotate_degs */
    10, /* key_rotate_degs_3d */
    1, /* show_selected_vertices_3d */
    1e-05, /* convexhull_precision */
    1, /* show_selected_vertices */
    0, /* cylinder_has_ends */
    1, /* backup_on_save */
    60, /* autosave_seconds */
};

PrefSpec prefs_table[] = {
    {"rot_segments", PREF_INT, &prefs.rot_segments},
    {"sphere_from_triangles", PREF_BOOLEAN, &prefs.sphere_from_triangles},
    {"extrude_segments", PREF_INT, &prefs.extrude_segments},
    {"grid", PREF_DOUBLE, &prefs.grid},
    {"drawgrid", PREF_DOUBLE, &prefs.drawgrid},
    {"grid3d_square", PREF_DOUBLE, &prefs.grid3d_square},
    {"grid3d_size", PREF_DOUBLE, &prefs.grid3d_size},
    {"grid3d_show", PREF_BOOLEAN, &prefs.grid3d_show},
    {"show_vertices", PREF_BOOLEAN, &prefs.show_vertices},
    {"show_drawgrid", PREF_BOOLEAN, &prefs.show_drawgrid},
    {"show_object_centres", PREF_BOOLEAN, &prefs.show_object_centres},
    {"gridlock", PREF_BOOLEAN, &prefs.gridlock},
    {"view_3d_mode", PREF_INT, &prefs.view_3d_mode},
    {"wireframe_move", PREF_BOOLEAN, &prefs.wireframe_move},
    {"mesh_x", PREF_INT, &prefs.mesh_x},
    {"mesh_y", PREF_INT, &prefs.mesh_y},
    {"mesh_from_triangles", PREF_BOOLEAN, &prefs.mesh_from_triangles},
    {"show_palette_changes", PREF_BOOLEAN, &prefs.show_palette_changes},
    {"frontwin_x", PREF_INT, &prefs.frontwin_x},
    {"frontwin_y", PREF_INT, &prefs.frontwin_y},
    {"frontwin_width", PREF_INT, &prefs.frontwin_width},
    {"frontwin_height", PREF_INT, &prefs.frontwin_height},
    {"sidewin_x", PREF_INT, &prefs.sidewin_x},
    {"sidewin_y", PREF_INT, &prefs.sidewin_y},
    {"sidewin_width", PREF_INT, &prefs.sidewin_width},
    {"sidewin_height", PREF_INT, &prefs.sidewin_height},
    {"planwin_x", PREF_INT, &prefs.planwin_x},
    {"planwin_y", PREF_INT, &prefs.planwin_y},
    {"planwin_width", PREF_INT, &prefs.planwin_width},
    {"planwin_height", PREF_INT, &prefs.planwin_height},
    {"3dwin_x", PREF_INT, &prefs.win3d_x},
    {"3dwin_y", PREF_INT, &prefs.win3d_y},
    {"3dwin_width", PREF_INT, &prefs.win3d_width},
    {"3dwin_height", PREF_INT, &prefs.win3d_height},
    {"cpwin_x", PREF_INT, &prefs.cpwin_x},
    {"cpwin_y", PREF_INT, &prefs.cpwin_y},
    {"cpwin_width", PREF_INT, &prefs.cpwin_width},
    {"cpwin_height", PREF_INT, &prefs.cpwin_height},
    {"vert_size", PREF_INT, &prefs.vert_size},
    {"handle_size", PREF_INT, &prefs.handle_size},
    {"independent_window_zoom", PREF_BOOLEAN, &prefs.independent_window_zoom},
    {"axis_size", PREF_DOUBLE, &prefs.axis_size},
    {"show_3d_axis", PREF_BOOLEAN, &prefs.show_3d_axis},
    {"vrml_output_normals", PREF_BOOLEAN, &prefs.vrml_output_normals},
    {"vrml_output_textures", PREF_BOOLEAN, &prefs.vrml_output_textures},
    {"handles_hollow", PREF_BOOLEAN, &prefs.handles_hollow},
    {"hole_percent", PREF_INT, &prefs.hole_percent},
    {"undo_levels", PREF_INT, &prefs.undo_levels},
    {"hide_objects_in_3d", PREF_BOOLEAN, &prefs.hide_objects_in_3d},
    {"fit_view_after_load", PREF_BOOLEAN, &prefs.fit_view_after_load},
    {"fit_view_factor", PREF_DOUBLE, &prefs.fit_view_factor},
    {"init3d_x", PREF_DOUBLE, &prefs.init3d_x},
    {"init3d_y", PREF_DOUBLE, &prefs.init3d_y},
    {"init3d_z", PREF_DOUBLE, &prefs.init3d_z},
    {"font_main", PREF_STRING, &prefs.font_main},
    {"font_menu", PREF_STRING, &prefs.font_menu},
    {"col_background", PREF_HEX, &prefs.col_background},
    {"col_foreground", PREF_HEX, &prefs.col_foreground},
    {"col_line", PREF_HEX, &prefs.col_line},
    {"col_selline", PREF_HEX, &prefs.col_selline},
    {"col_vert", PREF_HEX, &prefs.col_vert},
    {"col_selvert", PREF_HEX, &prefs.col_selvert},
    {"col_box", PREF_HEX, &prefs.col_box},
    {"col_grid", PREF_HEX, &prefs.col_grid},
    {"col_axis", PREF_HEX, &prefs.col_axis},
    {"col_3dgrid", PREF_HEX, &prefs.col_3dgrid},
    {"col_3dbackground", PREF_HEX, &prefs.col_3dbackground},
    {"key_mode_tree", PREF_KEY, &prefs.key_mode_tree},
    {"key_mode_object", PREF_KEY, &prefs.key_mode_object},
    {"key_mode_vertex", PREF_KEY, &prefs.key_mode_vertex},
    {"key_submode_move", PREF_KEY, &prefs.key_submode_move},
    {"key_submode_resize", PREF_KEY, &prefs.key_submode_resize},
    {"key_submode_rotate", PREF_KEY, &prefs.key_submode_rotate},
    {"key_submode_extrude", PREF_KEY, &prefs.key_submode_extrude},
    {"key_selection_hide", PREF_KEY, &prefs.key_selection_hide},
    {"key_select_all", PREF_KEY, &prefs.key_select_all},
    {"key_selection_clear", PREF_KEY, &prefs.key_selection_clear},
    {"key_undo", PREF_KEY, &prefs.key_undo},
    {"key_info", PREF_KEY, &prefs.key_info},
    {"key_reset", PREF_KEY, &prefs.key_reset},
    {"key_centre", PREF_KEY, &prefs.key_centre},
    {"key_goto", PREF_KEY, &prefs.key_goto},
    {"key_goto_all", PREF_KEY, &prefs.key_goto_all},
    {"key_selected_fit", PREF_KEY, &prefs.key_selected_fit},
    {"key_selected_fit_all", PREF_KEY, &prefs.key_selected_fit_all},
    {"key_snap_together", PREF_KEY, &prefs.key_snap_together},
    {"key_zoom_in", PREF_KEY, &prefs.key_zoom_in},
    {"key_zoom_out", PREF_KEY, &prefs.key_zoom_out},
    {"spike_factor", PREF_DOUBLE, &prefs.spike_factor},
    {"draw_moving_vertices", PREF_DOUBLE, &prefs.draw_moving_vertices},
    {"revolve_degs", PREF_INT, &prefs.revolve_degs},
    {"render_command", PREF_STRING, &prefs.render_command},
    {"lightx", PREF_DOUBLE, &prefs.lightx},
    {"lighty", PREF_DOUBLE, &prefs.lighty},
    {"lightz", PREF_DOUBLE, &prefs.lightz},
    {"lightw", PREF_DOUBLE, &prefs.lightw},
    {"bevel_size", PREF_DOUBLE, &prefs.bevel_size},
    {"font_char_offset", PREF_DOUBLE, &prefs.font_char_offset},
    {"fontpath", PREF_STRING, &prefs.fontpath},
    {"sgi_anim_frames", PREF_INT, &prefs.sgi_anim_frames},
    {"headlighton", PREF_BOOLEAN, &prefs.headlighton},
    {"balloon_help", PREF_BOOLEAN, &prefs.balloon_help},
    {"fov_3d", PREF_INT, &prefs.fov_3d},
    {"orth_xcursor", PREF_INT, &prefs.orth_xcursor},
    {"XYwindowlabel", PREF_STRING, &prefs.XYwindowlabel},
    {"ZYwindowlabel", PREF_STRING, &prefs.ZYwindowlabel},
    {"XZwindowlabel", PREF_STRING, &prefs.XZwindowlabel},
    {"XYZwindowlabel", PREF_STRING, &prefs.XYZwindowlabel},
    {"gl_concave", PREF_BOOLEAN, &prefs.gl_concave},
    {"allow_3d_spin", PREF_BOOLEAN, &prefs.allow_3d_spin},
    {"spline_steps", PREF_INT, &prefs.spline_steps},
    {"output_rib_header", PREF_BOOLEAN, &prefs.output_rib_header},
    {"rib_textures", PREF_BOOLEAN, &prefs.rib_textures},
    {"object_centre_size", PREF_INT, &prefs.object_centre_size},
    {"ui_timer_msecs", PREF_INT, &prefs.ui_timer_msecs},
    {"pov_object_data", PREF_BOOLEAN, &prefs.pov_object_data},
    {"pov_file_header", PREF_STRING, &prefs.pov_file_header},
    {"pov_use_object_data", PREF_BOOLEAN, &prefs.pov_use_object_data},
    {"pov_active_pointer", PREF_BOOLEAN, &prefs.pov_active_pointer},
    {"use_textures_for_background_images", PREF_BOOLEAN, &prefs.use_textures_for_background_images},
    {"show_vertices_3d", PREF_BOOLEAN, &prefs.show_vertices_3d},
    {"tk_strictmotif", PREF_BOOLEAN, &prefs.tk_strictmotif},
    {"recalc_normals", PREF_BOOLEAN, &prefs.recalc_normals},
    {"rotate_about_object_centre", PREF_BOOLEAN, &prefs.rotate_about_object_centre},
    {"show_window_labels", PREF_BOOLEAN, &prefs.show_window_labels},
    {"window_3d_width_percent", PREF_INT, &prefs.window_3d_width_percent},
    {"window_3d_height_percent", PREF_INT, &prefs.window_3d_height_percent},
    {"doublebuffer_orth", PREF_BOOLEAN, &prefs.doublebuffer_orth},
    {"tcl_socket_port", PREF_INT, &prefs.tcl_socket_port},
    {"rib_use_object_data", PREF_BOOLEAN, &prefs.rib_use_object_data},
    {"plugin_dir", PREF_STRING, &prefs.plugin_dir},
    {"zoom_factor_3d", PREF_DOUBLE, &prefs.zoom_factor_3d},
    {"memory_checks", PREF_BOOLEAN, &prefs.memory_checks},
    {"pick_pixel_range", PREF_INT, &prefs.pick_pixel_range},
    {"walk_move_speed", PREF_DOUBLE, &prefs.walk_move_speed},
    {"walk_turn_speed", PREF_DOUBLE, &prefs.walk_turn_speed},
    {"mouse_rotate_degs", PREF_INT, &prefs.mouse_rotate_degs},
    {"key_rotate_degs_3d", PREF_INT, &prefs.key_rotate_degs_3d},
    {"show_selected_vertices_3d", PREF_BOOLEAN, &prefs.show_selected_vertices_3d},
    {"convexhull_precision", PREF_DOUBLE, &prefs.convexhull_precision},
    {"show_selected_vertices", PREF_BOOLEAN, &prefs.show_selected_vertices},
    {"cylinder_has_ends", PREF_BOOLEAN, &prefs.cylinder_has_ends},
    {"backup_on_save", PREF_BOOLEAN, &prefs.backup_on_save},
    {"autosave_seconds", PREF_INT, &prefs.autosave_seconds},
};

int num_prefs = (int)(sizeof prefs_table / sizeof prefs_table[0]);
