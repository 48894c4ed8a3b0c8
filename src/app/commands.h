/*
 * app/commands.h - the command registry and dispatcher, and the command
 * functions that live in the application shell.
 */
#ifndef VESK_APP_COMMANDS_H
#define VESK_APP_COMMANDS_H

#include "vesk.h"

extern Command builtin_commands[];
extern int num_builtin_commands;
extern List *added_commands;
/* Name of the command being run, for the stubs' message. */
extern const char *command_running_name;

Command *find_command(const char *name);

/* Leaves "1" (done) or "0" (not done) as the command result; returns ok. */
int command_finish(int ok);
/* 1, after a status-line message naming the command, when no file name
 * was given. */
int command_lacks_filename(const char *filename, const char *command);

/* Stubs for commands whose operation this build does not have yet. */
int not_available_none(void);
/* Command "command_available": 1 when the named command exists and does
 * its work in this build (not a stand-in), else 0. */
int command_available(char *name);
int not_available_d(int);
int not_available_f(float);
int not_available_s(char *);
int not_available_sd(char *, int);
int not_available_ff(float, float);
int not_available_fff(float, float, float);
int not_available_ffffff(float, float, float, float, float, float);

/* Commands answered from the model (model_commands.cpp). */
int tcl_get_world(void);
int tcl_object_get_children(int id);
int tcl_object_get_name(int id);
int command_object_get_surfaces(int id);
int command_object_get_vertices(int id);
int command_object_get_centre(int id);
int command_object_get_url(int id);
int command_object_get_data(int id);
int command_object_is_hidden(int id);
int command_object_hide(int id);
int command_object_unhide(int id);
int set_current_object_name(char *text);
int set_current_object_url(char *text);
int set_current_object_data(char *text);
int command_get_info(void);
int command_list(void);
int system_execute(char *command);
int command_new_palette_entry(int index);
int command_set_palette_entry(int index, float r, float g, float b, float ar, float ag, float ab,
                              float er, float eg, float eb, float sr, float sg, float sb,
                              float shininess, float transparency);

/* Selection commands (selection_commands.cpp). */
int command_select_object(int id);
int command_unselect_object(int id);
int command_object_is_selected(int id);
int command_get_selected_objects(void);
int tcl_get_selection_size(void);
int tcl_get_selection_centre(void);

/* Looks up an object handle given by a script; prints a console message
 * naming the command and returns null when it names no live object. */
Object *object_from_script_id(int id);

/* View and camera commands (view/view_commands.cpp). */
int command_do_perspective(void);
int tcl_get_3d_cursor(void);
int command_get_lights(void);
int set_3d_view_selection(void);
int set_3d_view_cursor(void);
int set_3d_view_origin(void);
int command_set_walk_viewer(void);
int command_set_spin_viewer(void);
int about_menu(void);

/* Plug-ins (plugins.cpp). */
int command_plugin_load(char *filename);

/* Transform commands (edit/transform_commands.cpp); "move", "move_to",
 * "rotate", "rotate_about" and "size_to" are declared in
 * edit/transform.h. */
int command_scale(float sx, float sy, float sz);
int command_mirror(int axis);

/* Snapping (edit/snap.cpp). */
int selected_snap_to_grid(void);
int selected_snap_together(void);
int snap_2_objects_vertices_together(void);
int allign_objects_using_2_vert(void);

/* The clipboard (edit/clipboard.cpp). */
int clipboard_copy(void);
int clipboard_cut(void);
int clipboard_paste(void);
/* Objects held by the clipboard. */
int clipboard_count(void);

/* Modelling commands (edit/primitives, surface_ops, extrude, hull, text). */
int add_text(char *text);
int make_convex_hull(void);
int create_surface(void);
int execute_surface_filter(char *id);
int selected_insert_vertex(void);
int command_new_cube(void);
int selected_calc_texture_coors(int view);
int remove_surface(void);
int rotate_form_selected_objects(int axis);
int set_selected_surfaces_col_index(int index);
int set_selected_surface_type(int type);
int selected_surfaces_bevel(void);
int selected_surface_change_vertex_order(void);
int selected_surfaces_create_object(void);
int flip_selected_surface_normals(void);
int selected_surfaces_make_hole(void);
int set_selected_surface_shading(int flag);
int set_selected_surfaces_twosided(int flag);
int selected_spike_surfaces(void);
int spline_selected(void);
int selected_subdivide_surfaces(void);
int selected_surface_triangulate(void);

/* Model file commands (fileio/vk_commands.cpp). */
int command_load_vk_object(char *filename);
int command_save_vk(char *filename);
int command_save_selection_vk(char *filename);

#endif
