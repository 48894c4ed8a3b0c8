/*
 * edit/surface_ops_helpers.cpp - small surface helpers: references,
 * properties, positions in an outline, and unit vectors.
 */
#include "edit/surface_ops.h"
#include "edit/primitive_append.h"

#include <cmath>

void surface_add_tri_refs(Surface *surface, Vertex *a, Vertex *b, Vertex *c)
{
    RefAppender refs = ref_appender_start(surface);
    ref_append(&refs, a, 0.0f, 0.0f);
    ref_append(&refs, b, 0.0f, 0.0f);
    ref_append(&refs, c, 0.0f, 0.0f);
}

void surface_copy_properties(Surface *source, Surface *destination)
{
    destination->mat = source->mat;
    for (int i = 0; i < 3; i++) destination->normal[i] = source->normal[i];
    destination->surface_kind = source->surface_kind;
    destination->shading = source->shading;
    destination->twosided = source->twosided;
}

void normalize_point(float *vector)
{
    double x = vector[0], y = vector[1], z = vector[2];
    double length = sqrt(x * x + y * y + z * z);
    if (length == 0.0 || length != length) {
        console_printf("zero length vector!\n");
        vector[0] = 1.0f, vector[1] = 0.0f, vector[2] = 0.0f;
        return;
    }
    for (int i = 0; i < 3; i++) vector[i] = (float)(vector[i] / length);
}

int point_in_surface(Vertex *vertex, Surface *surface)
{
    return surface_contains_vertex(surface, vertex);
}

unsigned int surface_vertex_index(Surface *surface, Vertex *vertex)
{
    unsigned int i = 0;
    for (List *r = surface->vertrefs; r; r = r->next, i++) {
        if (((SVertex *)r->item)->vertex == vertex) return i;
    }
    return LIST_NOT_FOUND;
}

int surface_points_are_linked(Surface *surface, Vertex *a, Vertex *b)
{
    unsigned int ia = surface_vertex_index(surface, a), ib = surface_vertex_index(surface, b);
    if (ia == LIST_NOT_FOUND || ib == LIST_NOT_FOUND) return 0;
    unsigned int d = ia > ib ? ia - ib : ib - ia;
    if (d == 1) return 1;
    /* The closing edge, from the last reference back to the first, exists
     * except in an open line. */
    return surface->surface_kind != SURFACE_LINE && surface->num_vertrefs > 0 && d == surface->num_vertrefs - 1;
}
