/*
 * edit/extrude.h - solids from profiles: extruding the selected objects
 * and vertices by a drag, revolving the selected objects about an axis,
 * and extruding an object along a path line.
 *
 * All of them copy an object's vertices, copy its surfaces onto the
 * copies, and join every edge of a surface to the same edge on the next
 * copy with a link surface.  While `remove_extruded_lines` is on (it
 * always is), line and closed-line surfaces are treated as profiles: they
 * make walls but are removed themselves.
 */
#ifndef VESK_EDIT_EXTRUDE_H
#define VESK_EDIT_EXTRUDE_H

#include "vesk.h"

/* Largest number of vertices one extrusion or revolve may create, and of
 * copies it may make (an object without vertices makes none, but each
 * copy still costs a step). */
enum { EXTRUDE_MAX_NEW_VERTICES = 1 << 25, EXTRUDE_MAX_COPIES = 1 << 16 };

extern int remove_extruded_lines;

/* New vertices, copies of the list's (all fields) at p - d, in order. */
List *copy_pointlist(List *points, const float *d);
/* New vertices, copies of the list's turned by the global matrix. */
List *copy_pointlist_rotate(List *points);
/* New surfaces like the given ones, each reference moved from its vertex
 * in `from` to the vertex at the same index in `to` (texture 0, 0). */
List *copy_surfacelist(List *surfaces, List *from, List *to);
/* One link surface per edge of each surface, joining the edge in `from`
 * to the same edge in `to`; an end that does not move is left out, so a
 * fixed edge gives two references and an edge with one fixed end a
 * triangle. */
List *create_link_surfaces(List *surfaces, List *from, List *to);
/* One quadrilateral per edge, from the edge in `base` to the same edge in
 * `to` (indices taken in `from`). */
List *create_link_surfaces2(List *surfaces, List *from, List *base, List *to);
/* 1 when every vertex of the list is in the object owning the first one
 * (and for an empty list). */
int vertices_owned_by_same_object(List *points);
/* 1 when a surface of the first selected object (or of the owner of the
 * first selected vertex) links the two vertices. */
int points_are_joined(Vertex *a, Vertex *b);

/* Extrudes the object and its descendants by d in n copies; the copies
 * are turned by rotation (degrees about x, y, z) when it is not zero. */
void extrude_object(Object *object, const float *d, int n, const float *rotation);
/* Extrudes the selection by the drag from start to end; returns the new
 * object made for vertices of several objects, else none. */
Object *extrude_selected(const float *start, const float *end);
/* Command "revolve": each selected object swept about an axis (0 x, 1 y,
 * 2 z) through the origin. */
int rotate_form_selected_objects(int axis);
/* The commands "define_extrude_path" (vk_define_path_object) and
 * "extrude_along_path" (vk_extrude_along_path) are declared in vesk.h. */

#endif
