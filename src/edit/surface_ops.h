/*
 * edit/surface_ops.h - operations on the selected surfaces: subdividing
 * and spiking, flipping, the surface settings (type, shading, sides,
 * colour), the vertex order, holes, bevels, splines, triangulation,
 * making and removing surfaces, inserting vertices on edges, and moving
 * surfaces into a new object.
 *
 * "The selected surfaces" are, in vertex mode, the wholly selected ones
 * (every referenced vertex selected) and, in tree and object mode, the
 * surfaces of the selected objects (their own, or their whole subtree,
 * as each operation says).  The selection-level functions are commands:
 * they report progress on the status line and return 1 when they did
 * their work, 0 when they refused.
 */
#ifndef VESK_EDIT_SURFACE_OPS_H
#define VESK_EDIT_SURFACE_OPS_H

#include "vesk.h"

/* Largest spline_steps used (a finer curve gains nothing over 1024
 * fixed-point steps), and most points one splined surface may get. */
enum { SPLINE_MAX_STEPS = 1024, SPLINE_MAX_POINTS = 1 << 25 };

/* ---- small helpers ---- */

void surface_add_tri_refs(Surface *surface, Vertex *a, Vertex *b, Vertex *c);
/* Material, normal, kind, shading and sidedness. */
void surface_copy_properties(Surface *source, Surface *destination);
/* Scales to length 1; a zero vector says so on the console and becomes
 * (1, 0, 0). */
void normalize_point(float *vector);
int point_in_surface(Vertex *vertex, Surface *surface);
/* Zero-based position of the vertex's first reference, or LIST_NOT_FOUND. */
unsigned int surface_vertex_index(Surface *surface, Vertex *vertex);
/* 1 when a and b are next to each other in the surface's outline. */
int surface_points_are_linked(Surface *surface, Vertex *a, Vertex *b);

/* ---- subdivide and spike ---- */

/* A triangle or quadrilateral is replaced by smaller ones (factor 0) or by
 * a spike raised by factor along the surface normal.  Returns 1 when the
 * surface was replaced, 0 when it was left alone. */
int surface_subdivide(Object *object, Surface *surface, float factor);
/* surface_subdivide on every surface of the object and its descendants;
 * returns how many were replaced. */
int object_subdivide_surfaces(Object *object, float factor);
int selected_subdivide_surfaces(void);
int selected_spike_surfaces(void);

/* ---- settings ---- */

int flip_selected_surface_normals(void);
int set_selected_surface_type(int type);
int set_selected_surface_shading(int flag);
int set_selected_surfaces_twosided(int flag);
int set_selected_surfaces_col_index(int index);
/* Moves the first reference to the end and recomputes the normal. */
void surface_change_vertex_order(Surface *surface);
int object_change_vertex_order(Object *object);
int selected_surface_change_vertex_order(void);

/* ---- holes and bevels ---- */

/* Shrinks a copy of the polygon's outline by factor about its centre and
 * joins the two outlines with a ring of quadrilaterals; the old surface
 * goes.  Returns the inner surface, or none when no_cap is set or nothing
 * was done. */
Surface *surface_make_hole(Object *object, Surface *surface, float factor, int no_cap);
int selected_surfaces_make_hole(void);
/* Raises an inset copy of the outline by the bevel size and joins it to
 * the old outline; returns the new top surface, or none. */
Surface *surface_bevel(Object *object, Surface *surface);
int selected_surfaces_bevel(void);

/* ---- splines ---- */

/* Replaces the outline by a quadratic B-spline through it (the object
 * argument is not used: the owner is searched from the world). */
void surface_spline(Surface *surface, Object *unused);
int spline_selected(void);

/* ---- triangulation ---- */

/* Counters of a triangulation run. */
struct TriangulateCounts {
    int lines_ignored;
    int polys_failed;
    int polys_triangulated;
};

/* A new list of triangles covering the surface (the surface is not
 * changed), or none when it has fewer than 4 references or the
 * tessellator failed. */
List *surface_get_triangulations(Surface *surface);
/* Replaces the surface by its triangles; returns 1 on success (a surface
 * of fewer than 4 references counts as done), 0 when it could not be
 * triangulated. */
int surface_triangulate(Object *object, Surface *surface);
void object_triangulate_surfaces(Object *object, TriangulateCounts *counts);
int selected_surface_triangulate(void);

/* ---- making and removing surfaces and vertices ---- */

/* A surface over the selected vertices in selection order, in their
 * object, or in a new object of copies when they belong to several. */
Surface *create_surface_from_selected(void);
/* Command "createsurface": the above with its undo and redraw. */
int create_surface(void);
/* Command "removesurface": the whole selected surfaces are deleted, their
 * vertices stay. */
int remove_surface(void);
/* Puts a new vertex halfway along the edge from a to b. */
Vertex *surface_insert_vertex(Surface *surface, Vertex *a, Vertex *b);
int selected_insert_vertex(void);
/* Moves the selected surfaces into a new object (command
 * "surface_create_object"). */
int selected_surfaces_create_object(void);

/* ---- surface filters ---- */

/* SurfaceFilter and vk_register_surface_filter are declared in vesk.h. */
/* Runs the filter whose id is given (command "execute_surface_filter"). */
int execute_surface_filter(char *id);
int selected_surfaces_do_filter(SurfaceFilter *filter);

#endif
