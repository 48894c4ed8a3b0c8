/*
 * app/prefs.h - the preference settings.  Every setting is a field of the
 * one global record `prefs`; the rest of the core reads the fields
 * directly, the scripts reach many of them through linked Tcl variables,
 * and the table in prefs_table.cpp names each field for the preferences
 * file and the typed getters.
 */
#ifndef VESK_APP_PREFS_H
#define VESK_APP_PREFS_H

#include "vesk.h"

/* Fields in the order of the preferences file.  String settings are
 * allocated with Tcl's allocator because Tcl frees and replaces a linked
 * string variable when a script writes it. */
struct Prefs {
    int rot_segments;
    int sphere_from_triangles;
    int extrude_segments;
    double grid;
    double drawgrid;
    double grid3d_square;
    double grid3d_size;
    int grid3d_show;
    int show_vertices;
    int show_drawgrid;
    int show_object_centres;
    int gridlock;
    int view_3d_mode;
    int wireframe_move;
    int mesh_x;
    int mesh_y;
    int mesh_from_triangles;
    int show_palette_changes;
    int frontwin_x;
    int frontwin_y;
    int frontwin_width;
    int frontwin_height;
    int sidewin_x;
    int sidewin_y;
    int sidewin_width;
    int sidewin_height;
    int planwin_x;
    int planwin_y;
    int planwin_width;
    int planwin_height;
    int win3d_x;
    int win3d_y;
    int win3d_width;
    int win3d_height;
    int cpwin_x;
    int cpwin_y;
    int cpwin_width;
    int cpwin_height;
    int vert_size;
    int handle_size;
    int independent_window_zoom;
    double axis_size;
    int show_3d_axis;
    int vrml_output_normals;
    int vrml_output_textures;
    int handles_hollow;
    int hole_percent;
    int undo_levels;
    int hide_objects_in_3d;
    int fit_view_after_load;
    double fit_view_factor;
    double init3d_x;
    double init3d_y;
    double init3d_z;
    char *font_main;
    char *font_menu;
    int col_background;
    int col_foreground;
    int col_line;
    int col_selline;
    int col_vert;
    int col_selvert;
    int col_box;
    int col_grid;
    int col_axis;
    int col_3dgrid;
    int col_3dbackground;
    char key_mode_tree;
    char key_mode_object;
    char key_mode_vertex;
    char key_submode_move;
    char key_submode_resize;
    char key_submode_rotate;
    char key_submode_extrude;
    char key_selection_hide;
    char key_select_all;
    char key_selection_clear;
    char key_undo;
    char key_info;
    char key_reset;
    char key_centre;
    char key_goto;
    char key_goto_all;
    char key_selected_fit;
    char key_selected_fit_all;
    char key_snap_together;
    char key_zoom_in;
    char key_zoom_out;
    double spike_factor;
    int draw_moving_vertices;
    int revolve_degs;
    char *render_command;
    double lightx;
    double lighty;
    double lightz;
    double lightw;
    double bevel_size;
    double font_char_offset;
    char *fontpath;
    int sgi_anim_frames;
    int headlighton;
    int balloon_help;
    int fov_3d;
    int orth_xcursor;
    char *XYwindowlabel;
    char *ZYwindowlabel;
    char *XZwindowlabel;
    char *XYZwindowlabel;
    int gl_concave;
    int allow_3d_spin;
    int spline_steps;
    int output_rib_header;
    int rib_textures;
    int object_centre_size;
    int ui_timer_msecs;
    int pov_object_data;
    char *pov_file_header;
    int pov_use_object_data;
    int pov_active_pointer;
    int use_textures_for_background_images;
    int show_vertices_3d;
    int tk_strictmotif;
    int recalc_normals;
    int rotate_about_object_centre;
    int show_window_labels;
    int window_3d_width_percent;
    int window_3d_height_percent;
    int doublebuffer_orth;
    int tcl_socket_port;
    int rib_use_object_data;
    char *plugin_dir;
    double zoom_factor_3d;
    int memory_checks;
    int pick_pixel_range;
    double walk_move_speed;
    double walk_turn_speed;
    int mouse_rotate_degs;
    int key_rotate_degs_3d;
    int show_selected_vertices_3d;
    double convexhull_precision;
    int show_selected_vertices;
    int cylinder_has_ends;
    /* Settings added since; the file lists them after the ones above. */
    int backup_on_save;          /* keep the replaced model file as name~ */
    int autosave_seconds;        /* autosave interval of unsaved work, 0 off */
};

extern Prefs prefs;
extern const Prefs prefs_defaults;
extern PrefSpec prefs_table[];
extern int num_prefs;

/* draw_moving_vertices is stored as a double in the file, so its 32-bit
 * flag and the following revolve_degs are written and read as one 64-bit
 * value; the two must stay adjacent. */
static_assert(offsetof(Prefs, revolve_degs) == offsetof(Prefs, draw_moving_vertices) + 4,
              "draw_moving_vertices must be followed by revolve_degs");

void init_prefs(void);
int save_prefs(void);
const char *prefs_get_prefs_filename(void);
/* Loads settings from one file over the current values; used by init_prefs. */
void prefs_load_file(const char *path);
/* Puts the built-in defaults back (string settings freshly allocated). */
void prefs_set_defaults(void);
/* Key-name conversions of PREF_KEY values. */
char prefs_key_from_name(const char *name);
const char *prefs_key_to_name(char key);
/* Stores a copy of text in a string setting, freeing the old value. */
void prefs_set_string(char **slot, const char *text);

#endif
