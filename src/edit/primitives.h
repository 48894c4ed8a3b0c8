/*
 * edit/primitives.h - the shapes the user drags out in an orthographic
 * view or drops with a click, and planar and cylindrical texture mapping.
 *
 * Every drag builder takes the view the shape was drawn in, which names
 * the two axes that span it: 0 x and y (depth z), 1 z and y (depth x),
 * 2 x and z (depth y); "horizontal" and "vertical" below are the view's
 * first and second axis.  A and B are the drag's start and end points.
 * Builders return a new object of type 0 that is in no tree yet: the
 * caller records the undo, adds it to the world and selects it.
 *
 * Segment and division counts come from the preferences (rot_segments,
 * mesh_x, mesh_y); a count below the smallest workable value or above the
 * largest sensible one is reported on the console and clamped, so a bad
 * setting never divides by zero, loops for ever or exhausts memory.
 */
#ifndef VESK_EDIT_PRIMITIVES_H
#define VESK_EDIT_PRIMITIVES_H

#include "vesk.h"

/* Largest counts the builders accept. */
enum {
    PRIMITIVE_MAX_SEGMENTS = 1 << 16,      /* vertices around a circle */
    PRIMITIVE_MAX_SPHERE_SEGMENTS = 2048,  /* a sphere has about n squared vertices */
    PRIMITIVE_MAX_MESH_CELLS = 1 << 22,    /* mesh_x times mesh_y */
};

/* Adds a vertex or a surface straight to the world object. */
void add_new_vertex(Vertex *vertex);
void add_surface(Surface *surface);
/* Appends four references with texture a (0, 0), b (1, 0), c (1, 1),
 * d (0, 1). */
void surface_add_quad_refs(Surface *surface, Vertex *a, Vertex *b, Vertex *c, Vertex *d);

/* Flat shapes. */
Object *add_rect(int view, const float *a, const float *b);
Object *add_grid(int view, const float *a, const float *b);
Object *add_mesh(int view, const float *a, const float *b);
/* A closed-line ellipse of the given radii around the origin. */
Object *new_circle(int view, float radius_h, float radius_v, int segments);
Object *add_circle(int view, const float *a, const float *b, int unused);
Object *create_regular_elipse(int view);
/* An open line along a circle from start to end (degrees). */
Object *new_arc(int view, float radius, float start, float end, int segments);
/* A fan of triangles around a centre vertex. */
Object *new_disk(int view, float radius_h, float radius_v, int segments);
Object *add_disk(int view, const float *a, const float *b, int unused);
Object *create_regular_disk(int view);

/* Solids. */
Object *add_cube(int view, const float *a, const float *b);
void object_add_cube_view(Object *object, float size_x, float size_y, float size_z);
Object *create_regular_cube(const float *position);
Object *add_sphere(int view, const float *a, const float *b);
/* A sphere of the given radius around the origin, added to the object. */
void object_add_sphere_view(Object *object, float radius);
Object *create_regular_sphere(const float *position);
Object *new_cone(int view, float radius_h, float radius_v, float height, int segments);
Object *create_cone(int view, const float *a, const float *b);
void object_add_cylinder_view(Object *object, int view, float scale, int top, int bottom);
Object *new_cylinder(int view);
/* The unit icosahedron; both arguments are ignored. */
Object *create_ico(int unused_a, int unused_b);

/* Texture coordinates. */
void calc_texture_coors(Object *object, int view);
void surfaces_calc_texture_coors(List *surfaces, int view);
void crap_calc_texture_coors(Object *object);
/* Planar mapping of the selection in a view (command "remap_textures"). */
int selected_calc_texture_coors(int view);

/* Command "new_cube": a unit cube at the origin, added and selected. */
int command_new_cube(void);
/* Records the undo of a new object (kind add object, with the label),
 * adds the object to the world and makes it the selection. */
void add_new_object_selected(Object *object, const char *undo_label);

/* Helpers shared by the builders. */
/* rot_segments (or another count) checked against [minimum, maximum]. */
int primitive_segments(int value, int minimum, int maximum, const char *name);
/* Axis indices of a view: horizontal, vertical, depth.  Views other than
 * 1 and 2 are treated as the front view. */
void view_axes(int view, int *h, int *v, int *depth);
/* Maps a point given in the view's (horizontal, vertical, depth) axes to
 * x, y, z. */
void view_point(int view, float h, float v, float depth, float *out);

#endif
