/*
 * edit/extrude_internal.h - the sweep shared by extrusion, revolving and
 * extruding along a path: given the copies of an object's vertices, make
 * the link surfaces between consecutive copies and, optionally, the end
 * cap, and add it all to the object.
 */
#ifndef VESK_EDIT_EXTRUDE_INTERNAL_H
#define VESK_EDIT_EXTRUDE_INTERNAL_H

#include "edit/extrude.h"

#include <vector>

struct Sweep {
    std::vector<List *> copies;   /* P[i]: copies of the object's vertices */
    std::vector<List *> links;    /* L[i]: links from copy i-1 (or the object) to copy i */
    List *end_cap;                /* the surfaces copied onto the last copy */
};

/* Fills links (and end_cap when keep_end_cap) from copies.  With
 * close_on_source the last link goes from the second-last copy back to
 * the object's own vertices. */
void sweep_make_links(Object *object, Sweep *sweep, int keep_end_cap, int close_on_source);
/* Removes (and frees) the object's line and closed-line surfaces. */
void remove_line_surfaces(Object *object);
/* Adds each copy, the end cap (references reversed, lines dropped) after
 * the last copy, and each copy's links to the object; the sweep's lists
 * are handed over or freed. */
void sweep_add_to_object(Object *object, Sweep *sweep);
/* Frees the records and nodes of a surface list. */
void free_surface_list(List **surfaces);
/* 1 when n copies of the object's vertices are within the limit; else a
 * console message and 0. */
int sweep_size_ok(Object *object, long copies, const char *what);

#endif
