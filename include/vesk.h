/*
 * vesk.h - the public interface of the VESK core.
 *
 * This header declares the model records (lists, objects, vertices,
 * surfaces, materials, lights) and the flat C functions that the front ends
 * and plug-ins call: list and memory helpers, the object model, the palette,
 * the command registry, preferences and the message outlets.  Everything is
 * plain data and free functions on process-wide state; every call must be
 * made on the user-interface thread.
 */
#ifndef VESK_H
#define VESK_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define VK_PRINTF(fmt, first) __attribute__((format(printf, fmt, first)))
#else
#define VK_PRINTF(fmt, first)
#endif

/* ------------------------------------------------------------------ */
/* Lists and tracked memory                                            */
/* ------------------------------------------------------------------ */

/* One node of a singly linked list of untyped items.  A list is a pointer
 * to its first node; the empty list is NULL. */
typedef struct List {
    void *item;
    struct List *next;
} List;

#define LIST_NOT_FOUND 0xFFFFFFFFu

typedef int (*list_compare_function)(void *a, void *b);

List *list_add_item(List **slot, void *item);
List *list_add_item_fast(List **slot, List *last, void *item);
List *list_add_item_head(List **slot, void *item);
List *list_add_item_unique(List **slot, void *item);
int list_insert_item(List **slot, void *existing, void *item);
int list_remove_item(List **slot, void *item);
unsigned int list_count(List *head);
unsigned int list_index(List *head, void *item);
void *list_get_item(List *head, unsigned int index);
List *list_seekto(List *head, unsigned int index);
void *list_last_item(List *head);
List *list_end(List *head);
int list_replace_item(List *head, void *old_item, void *new_item);
int list_replace_item_all(List *head, void *old_item, void *new_item);
List *list_append_list(List **slot, List *second);
List *list_append_list_unique(List **slot, List *second);
List *list_clone(List *head);
List *list_clone_all(List *head, unsigned int element_size);
void list_reverse(List **slot);
void list_sort(List *head, list_compare_function compare);
void list_free(List **slot);
void list_free_all(List **slot);
void list_print(List *head);
int list_check_for_duplicates(List *head);
void list_prepare_fast(List *head, unsigned int count);
void *list_get_item_fast(List *head, unsigned int index);

void *myalloc(unsigned int size);
void myfree(void *pointer);
/* A private copy of a string made with myalloc; NULL for NULL. */
char *mystrdup(const char *text);

/* ------------------------------------------------------------------ */
/* Object model                                                        */
/* ------------------------------------------------------------------ */

#define OBJECT_NORMAL 0
#define OBJECT_GROUP 1
#define OBJECT_LIGHT 2
#define OBJECT_CUBE 3
#define OBJECT_SPHERE 4
#define OBJECT_WORLD 999

#define SURFACE_POLYGON 0
#define SURFACE_CLOSED_LINE 1
#define SURFACE_LINE 2

typedef struct Vertex {
    float point[3];
    float normal[3];
    /* Working fields: the vertex's window position in the view being
     * drawn or picked. */
    int16_t win_x, win_y;
    /* Scratch number for algorithms that index an object's vertices
     * (normals, file writing); meaningless between calls. */
    uint32_t mark;
} Vertex;

typedef struct SVertex {
    Vertex *vertex;
    float u, v;
} SVertex;

typedef struct Surface {
    List *vertrefs;          /* SVertex, in boundary order */
    uint32_t num_vertrefs;
    uint16_t mat;            /* palette index */
    float normal[3];
    uint8_t surface_kind;    /* SURFACE_POLYGON, _CLOSED_LINE, _LINE */
    int32_t shading;         /* 0 flat, 1 smooth */
    int32_t twosided;        /* 1 two-sided, 0 one-sided */
} Surface;

typedef struct Object {
    char *name;
    /* Counts are kept beside their lists and must move with them.  They
     * are 32-bit so that one object can hold more than 65535 vertices. */
    uint32_t num_vert;
    uint32_t num_surf;
    uint32_t num_kids;
    List *vertices;          /* Vertex, owned */
    List *surfaces;          /* Surface, owned */
    List *kids;              /* Object, owned */
    struct Object *parent;
    char *data;
    char *url;
    int32_t user_value;      /* copied by object_copy_data */
    uint8_t texture;         /* texture index, 0 = none */
    float texture_repeat_x, texture_repeat_y;
    float centre[3];
    float rotation[9];       /* Matrix3, column by column */
    float scratch[3];        /* not initialised, not copied */
    uint16_t type;
    int32_t deleted;
    int32_t is_sphere;
    float scale[3];
    int32_t visible;
    int32_t reserved_one;    /* 1 at creation */
    int32_t reserved_zero;   /* 0 at creation */
    /* Handle given out to scripts in place of the record's address;
     * 0 until one is asked for (see object_handle). */
    uint32_t handle;
} Object;

/* A light is an object followed by its light parameters. */
typedef struct Light {
    Object object;
    int32_t light_type;      /* 1 infinite, 2 point, 3 spot */
    float ambient[4];
    float diffuse[4];
    float specular[4];
    float direction[3];
    float spot_exponent;     /* must follow direction: see the renderer */
    float spot_cutoff;
} Light;

extern Object *world;
extern int objects_are_hidden;

Object *new_object(int type);
Object *new_group(void);
Object *new_sphere(void);
Object *new_world(void);
Vertex *new_vertex(void);
Vertex *new_vertex_set(float x, float y, float z);
Vertex *vertex_clone(Vertex *vertex);
void vertex_set_point(Vertex *vertex, const float *point);
Surface *new_surface(void);
SVertex *new_svertex(Vertex *vertex, float u, float v);
const char *object_type_name(int type);
int object_type_from_name(const char *name);

void object_add_vertex(Object *object, Vertex *vertex);
Vertex *object_add_new_vertex(Object *object, const float *point);
Vertex *object_add_new_vertex_reuse(Object *object, const float *point);
void object_add_vertices(Object *object, List *vertices);
void vk_object_add_vertices_from_float_array(Object *object, const float *floats, unsigned int n);
void object_add_surface(Object *object, Surface *surface);
void object_add_surfaces(Object *object, List *surfaces);
void object_add_child(Object *parent, Object *child);
void object_add_children(Object *parent, List *children);
int object_reparent(Object *child, Object *new_parent);
void surface_add_vertref(Surface *surface, SVertex *ref);

int object_remove_vertex(Object *object, Vertex *vertex);
int object_remove_surface(Object *object, Surface *surface);
void object_remove_child(Object *parent, Object *child);
void object_remove_child_nocleanup(Object *parent, Object *child);
void object_delete(Object *object);
void object_free(Object *object);
void objectlist_delete(List *objects);
int object_delete_vertex(Object *object, Vertex *vertex);
void object_delete_surface(Object *object, Surface *surface);
void object_delete_surface_points(Object *object, Surface *surface);
void object_delete_surface_and_points(Object *object, Surface *surface);
void surface_free(Surface *surface);

Object *vk_get_world(void);
/* What an object holds: stores its vertex list (Vertex), surface list
 * (Surface) and child list (Object) through the pointers that are not
 * NULL, and returns the number of entries in the three lists together.
 * A NULL object stores empty lists and returns 0.  The lists belong to
 * the object: read them, don't free them. */
unsigned int vk_object_get_contents(Object *object, List **vertices, List **surfaces,
                                    List **children);
const char *vk_object_get_name(Object *object);
List *vk_object_get_childrenlist(Object *object);
List *vk_object_get_vertexlist(Object *object);
List *vk_object_get_surfacelist(Object *object);
unsigned int vk_object_get_num_vertices(Object *object);
unsigned int vk_object_get_num_surfaces(Object *object);
unsigned int vk_object_get_num_children(Object *object);
int vk_object_get_type(Object *object);
int vk_object_get_texture_index(Object *object);
int vk_object_has_texture(Object *object);
float vk_object_get_texture_repeat_x(Object *object);
float vk_object_get_texture_repeat_y(Object *object);
float *vk_object_get_centre(Object *object);
const char *vk_object_get_data(Object *object);
const char *vk_object_get_url(Object *object);
unsigned int vk_object_get_vertex_index(Object *object, Vertex *vertex);
Vertex *vk_object_get_vertex_at_index(Object *object, unsigned int index);
void vk_surface_set_normal(Surface *surface, const float *normal);
Object *object_parent(Object *object);
Object *object_of_vertex(Object *root, Vertex *vertex);
Object *object_of_surface(Object *root, Surface *surface);
List *surfaces_of_object_vertex(Object *object, Vertex *vertex);
Object *object_top_ancestor(Object *object);
int object_exists(Object *object);
int object_point_index(Object *object, const float *point);
Vertex *object_find_vertex_point(Object *object, const float *point);
int surface_contains_vertex(Surface *surface, Vertex *vertex);

void object_set_name(Object *object, const char *name);
void object_set_url(Object *object, const char *url);
void object_set_userdata(Object *object, const char *data);
void object_copy_data(Object *from, Object *to);
Object *object_clone(Object *object);
Surface *surface_clone_into(Surface *surface, Object *new_owner);
int object_set_col_index(Object *object, int mat);
int object_set_surface_type(Object *object, int kind);
int object_set_surface_shading(Object *object, int flag);
int object_set_twosided_faces(Object *object, int flag);
void surface_set_shading(Surface *surface, int flag);
void object_reverse_normals(Object *object);
void object_set_texture_repeat(Object *object, float x, float y);
void object_set_visible(Object *object, int flag);
void object_show(Object *object);
void object_replace_surfaceref(Object *object, Vertex *old_vertex, Vertex *new_vertex);
void object_ungroup(Object *group);

void surface_calc_normal(Surface *surface);
void object_calc_normals(Object *object);
void object_calc_normals_force(Object *object);
void object_calc_vertex_normals(Object *object);
void object_calculate_centre(Object *object);
void object_calculate_centre_recurse(Object *object);
void list_objects(void);

/* Handles: 32-bit ids that stand for objects outside the core (scripts,
 * GL selection names).  0 is never a valid handle. */
uint32_t object_handle(Object *object);
Object *object_from_handle(uint32_t handle);

/* ------------------------------------------------------------------ */
/* Materials palette                                                   */
/* ------------------------------------------------------------------ */

typedef struct Material {
    float rgb[4];
    float ambient[4];
    float specular[4];
    float emissive[4];
    float shininess;
    float transparency;
} Material;

#define PALETTE_CAPACITY 255

extern int num_palette;

void long_rgb_to_floats(long colour, float *r, float *g, float *b);
void long_rgb_to_floatv(long colour, float *v);
long rgb_floats_to_long(float r, float g, float b);
long rgb_floatv_to_long(const float *v);
long rgb_float255v_to_long(const float *v);
long rgb_floatv_to_long_sgi(const float *v);

int vk_get_num_palette(void);
Material *index_to_material(int index);
Material *vk_material_get(int index);
long index_to_rgb(int index);
long vk_material_index_to_rgb(int index);
void index_to_3f(int index, float *r, float *g, float *b);
char *index_to_string(int index);
int rgb_to_index(long colour);
void init_palette_entry(int index, long colour);
void create_palette(void);
int find_material(Material *material);
int append_material(Material *material);
int material_get_index(Material *material);
int material_compare(Material *a, Material *b);
int new_palette_entry(int index);
int set_palette_entry(int index, float r, float g, float b, float ar, float ag, float ab,
                      float er, float eg, float eb, float sr, float sg, float sb,
                      float shininess, float transparency);
int edit_palette_entry(int index);
Material *new_material(void);
Material *new_material_copy(Material *material);
Material *material_add(Material *dst, Material *src);
Material *material_divide(Material *material, int n);
void print_material(Material *material);

/* ------------------------------------------------------------------ */
/* Commands                                                            */
/* ------------------------------------------------------------------ */

/* A command function.  The dispatcher calls it with the arguments its
 * template names: "d" int, "f" float, "s" char *, and a last "o" a
 * char * that may be left out (null then); so a function for the
 * template "sd" is int f(char *, int), cast to this type when it is
 * registered.  The return value is ignored. */
typedef void (*vk_command_function)(void);

typedef struct Command {
    const char *name;
    vk_command_function function;
    int numargs;
    const char *template_;
    const char *usage;
    const char *description;
} Command;

int do_command(int argc, char **argv);
char *command_result_get(void);
char *command_result_set(const char *text);
void command_result_append_string(const char *text);
void command_result_append_int(int value);
void command_result_appendf(const char *format, ...) VK_PRINTF(1, 2);
void vk_add_command(const char *name, vk_command_function function);
List *vk_add_command_full(const char *name, vk_command_function function, int numargs,
                          const char *template_, const char *usage, const char *description);
int vk_replace_command_function(const char *name, vk_command_function function);

/* Typed registration, one call per template: the compiler checks that the
 * function takes exactly the arguments the template names, where a cast
 * to vk_command_function would hide a mismatch.  Each is
 * vk_add_command_full with the template filled in. */
#define VK_TYPED_COMMAND(suffix, numargs, template_, ...)                                                      \
    static inline List *vk_add_command_##suffix(const char *name, int (*function)(__VA_ARGS__), const char *usage, \
                                                const char *description)                                       \
    {                                                                                                          \
        return vk_add_command_full(name, (vk_command_function)function, numargs, template_, usage, description);  \
    }
VK_TYPED_COMMAND(none, 0, NULL, void)
VK_TYPED_COMMAND(d, 1, "d", int)
VK_TYPED_COMMAND(f, 1, "f", float)
VK_TYPED_COMMAND(s, 1, "s", char *)
VK_TYPED_COMMAND(sd, 2, "sd", char *, int)
/* A string and an optional string: null when the word is left out. */
VK_TYPED_COMMAND(so, 2, "so", char *, char *)
VK_TYPED_COMMAND(ff, 2, "ff", float, float)
VK_TYPED_COMMAND(fff, 3, "fff", float, float, float)
VK_TYPED_COMMAND(ffffff, 6, "ffffff", float, float, float, float, float, float)
#undef VK_TYPED_COMMAND

/* ------------------------------------------------------------------ */
/* Preferences                                                         */
/* ------------------------------------------------------------------ */

#define PREF_INT 0
#define PREF_DOUBLE 1
#define PREF_HEX 2
#define PREF_STRING 3
#define PREF_KEY 4
#define PREF_BOOLEAN 5

typedef struct PrefSpec {
    const char *name;
    int type;
    void *address;
} PrefSpec;

PrefSpec *vk_prefs_get_spec(const char *name);
int vk_prefs_list(void);
int vk_prefs_get_int(const char *name);
int vk_prefs_get_boolean(const char *name);
double vk_prefs_get_double(const char *name);
int vk_prefs_get_hex(const char *name);
char *vk_prefs_get_string(const char *name);
const char *vk_prefs_get_key(const char *name);

/* ------------------------------------------------------------------ */
/* Messages and the scripting bridge                                   */
/* ------------------------------------------------------------------ */

const char *tcl_command(const char *format, ...) VK_PRINTF(1, 2);
void display_message(const char *format, ...) VK_PRINTF(1, 2);
void display_status(void);
void set_progress_bar(int percent);
void set_undo_string(const char *text);
void console_printf(const char *format, ...) VK_PRINTF(1, 2);
void debugf(const char *format, ...) VK_PRINTF(1, 2);
int windows_message_dialog(const char *format, ...) VK_PRINTF(1, 2);
char *tcl_get_string(const char *name);
void tcl_set_string(const char *name, const char *value);
void tcl_set_int(const char *name, int value);
double vk_get_version_number(void);

/* Surface filters: a per-surface operation added by a plug-in, called once
 * per selected surface with the object that owns it. */
typedef void (*vk_surface_filter_function)(Object *object, Surface *surface);

enum {
    SURFACE_FILTER_NO_UNDO = 1, /* the run records no undo */
    SURFACE_FILTER_NO_MENU = 2  /* no menu entry is added */
};

typedef struct SurfaceFilter {
    char *name;        /* menu label, status text and undo label */
    char *description;
    vk_surface_filter_function function;
    int flags;
    char *id;          /* "surface_filter_<n>", n from 1 */
} SurfaceFilter;

/* Registers a filter and, unless flagged otherwise, adds its entry to the
 * surface menu.  Returns the record, or none. */
SurfaceFilter *vk_register_surface_filter(const char *name, const char *description,
                                          vk_surface_filter_function function, int flags);

/* The selection: stores the lists of selected vertices and objects and
 * returns the select mode (0 tree, 1 object, 2 vertex). */
int vk_get_selection(List **vertices, List **objects);
/* Rotations of the selection in degrees, about its centre or a point. */
int rotate_selection_f(float rx, float ry, float rz);
int rotate_selection_about_f(float rx, float ry, float rz, float x, float y, float z);

/* Paths: "define_extrude_path" makes the current object (one holding a
 * single line surface) the path, 1 on success; "extrude_along_path"
 * extrudes the current object along it. */
int vk_define_path_object(void);
int vk_extrude_along_path(void);

/* The light objects (Light records) the 3D view lights the model with,
 * as found at the last scan of the model; the list belongs to the core. */
List *vk_get_lights_list(void);

/* The viewer of the 3D view: 1 in walk mode, 0 in spin mode; the spin
 * mode's turn of the model (degrees about x, y, z) set or added to; its
 * zoom multiplied or divided by a factor. */
int vk_person_is_walk_vehicle(void);
void vk_person_set_rotation(const float angles[3]);
void vk_person_add_rotation(const float angles[3]);
void vk_person_scale_mult(float factor);
void vk_person_scale_div(float factor);

/* Ordinary functions that plug-ins commonly call: select an object as a
 * click would, and redraw every view. */
void select_object(Object *object);
int redraw_all(void);

/* Plug-ins: a plug-in library exports int vesk_plugin_init(void), called
 * once after the library is loaded (at start-up from the plug-in
 * directories, or by "plugin_load"); it registers what the plug-in adds
 * and returns nonzero on success.  Menu entries and file dialogs go
 * through the user-interface scripts.  A filter array holds pairs of
 * texts (description, pattern) ended by a null description. */
const char *vk_add_menu_item(const char *menu, const char *label, const char *command);
const char *vk_add_import_menu_item(const char *label, const char *command);
const char *vk_add_export_menu_item(const char *label, const char *command);
const char *vk_add_tools_menu_item(const char *label, const char *command, const char *help);
const char *vk_add_surface_menu_item(const char *label, const char *command, const char *help);
char *vk_filter_array_to_string(const char **filters);
const char *vk_get_open_filename(const char *title, const char **filters);
const char *vk_get_save_filename(const char *title, const char **filters);
long vk_get_filesize(const char *filename);

/* ------------------------------------------------------------------ */
/* Textures                                                            */
/* ------------------------------------------------------------------ */

/* One loaded image.  Texture ids start at 1; 0 means no texture. */
typedef struct vkimage {
    uint16_t width;             /* pixels per row */
    uint16_t height;            /* rows */
    uint16_t depth;             /* bytes per pixel: 1 grey, 2 grey + alpha, 3 RGB, 4 RGBA */
    unsigned char *data;        /* rows from the bottom up, tightly packed, from myalloc */
    uint32_t texture_handle;    /* OpenGL texture (or display list) once built, 0 before */
    char *name;                 /* the file the image was read from */
    int32_t alpha_flags;        /* 1 some alpha 255, 2 some alpha 0, 16 some alpha between */
} vkimage;

/* A texture loader reads one file and returns a new image, or NULL with
 * its own message when it can't. */
typedef vkimage *(*vk_texture_load_function)(const char *filename);

typedef struct TextureLoader {
    char *suffix;               /* with its dot, such as ".gif" */
    char *description;
    vk_texture_load_function load;
} TextureLoader;

/* Registers a loader in front of all others (matched by suffix, case
 * ignored); NULL when memory is short. */
TextureLoader *vk_register_texture_loader(const char *suffix, const char *description,
                                          vk_texture_load_function function);
/* A new image with all numbers 0, no data and a copy of name. */
vkimage *new_vkimage(const char *name);
void vk_image_set_dim(vkimage *image, int width, int height, int depth);
/* Hands the pixel array (allocated with myalloc) to the image. */
void vk_image_set_data(vkimage *image, unsigned char *data);
void free_vkimage(vkimage *image);
/* Reads an image with the loader registered for its suffix; NULL when
 * none can (the user has been told why). */
vkimage *texture_read(const char *filename);
/* The id of the texture read from exactly this file name, or -1. */
int texture_find_by_name(const char *filename);
/* The file name of a texture id; NULL for an id without an image. */
const char *texture_id_to_name(int id);
/* Loads (or reloads) a texture into the table; its id, or 0. */
int add_new_texture(const char *filename);

/* Empty hooks kept for plug-ins and call sites. */
void init_ui(void);
void set_busy_cursor(void);
void win_set_submode_cursor(void);
void print_time(void);
void cache_material(void);
void create_texture_menu(void);
void set_undo_surface_colour(void);
void vk_register_internal_surface_filters(void);

/* ------------------------------------------------------------------ */
/* Whole-model import and export                                       */
/* ------------------------------------------------------------------ */

/* What a plug-in that reads or writes whole models needs besides the
 * calls above: recording an import as one undoable step, selecting and
 * showing what arrived, marking the model changed, the command result
 * and texture names kept without an image. */
struct UndoRecord;
/* The undo kind that takes added objects out again. */
#define VK_UNDO_ADDED_OBJECTS 131072
struct UndoRecord *new_undo(int kind, const char *label);
void set_undo_objectlist(List *objects);
void clear_selection(void);
void select_objectlist(List *objects);
int fit_selected_all(void);
void edit_mark_changed(void);
/* Leaves "1" or "0" as the command result; returns ok. */
int command_finish(int ok);
/* The id of a texture file name kept in the table without reading it. */
int texture_register_name(const char *filename);

#ifdef __cplusplus
}
#endif

#endif /* VESK_H */
