/*
 * planarity_plugin.c - a surface filter, "Mark non-planar surfaces": each
 * selected polygon whose corners do not lie in one plane gets a magenta
 * material, so that the surfaces a renderer or exporter would have to
 * split (and may draw wrongly) stand out.  Planar polygons, lines and
 * closed lines are left as they are.  Written against vesk.h only.
 */
#include "vesk.h"

#include <math.h>

/* How far out of its plane a corner may lie, as a part of the polygon's
 * size: float positions carry about seven digits. */
#define PLANARITY_TOLERANCE 1e-4
#define MARK_COLOUR 0xFF00FFL

/* The polygon's centre and its Newell normal (not normalised). */
static void surface_plane(Surface *surface, double centre[3], double normal[3])
{
    for (int i = 0; i < 3; i++) centre[i] = normal[i] = 0.0;
    for (List *l = surface->vertrefs; l; l = l->next) {
        const float *p = ((SVertex *)l->item)->vertex->point;
        const float *q = ((SVertex *)(l->next ? l->next : surface->vertrefs)->item)->vertex->point;
        normal[0] += ((double)p[1] - q[1]) * ((double)p[2] + q[2]);
        normal[1] += ((double)p[2] - q[2]) * ((double)p[0] + q[0]);
        normal[2] += ((double)p[0] - q[0]) * ((double)p[1] + q[1]);
        for (int i = 0; i < 3; i++) centre[i] += p[i];
    }
    for (int i = 0; i < 3; i++) centre[i] /= surface->num_vertrefs;
}

/* 1 when some corner lies further from the plane than the tolerance;
 * degenerate polygons (no area) count as planar: they have no plane to
 * leave. */
static int surface_is_non_planar(Surface *surface)
{
    if (surface->surface_kind != SURFACE_POLYGON || surface->num_vertrefs < 4) return 0;
    double centre[3], normal[3];
    surface_plane(surface, centre, normal);
    double length = sqrt(normal[0] * normal[0] + normal[1] * normal[1] + normal[2] * normal[2]);
    if (!(length > 0.0) || !isfinite(length)) return 0;
    double worst = 0.0, size = 0.0;
    for (List *l = surface->vertrefs; l; l = l->next) {
        const float *p = ((SVertex *)l->item)->vertex->point;
        double d[3] = {p[0] - centre[0], p[1] - centre[1], p[2] - centre[2]};
        double off = fabs(d[0] * normal[0] + d[1] * normal[1] + d[2] * normal[2]) / length;
        double reach = sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        if (off > worst) worst = off;
        if (reach > size) size = reach;
    }
    return worst > PLANARITY_TOLERANCE * size;
}

static void mark_non_planar(Object *object, Surface *surface)
{
    (void)object;
    if (!surface_is_non_planar(surface)) return;
    int mat = rgb_to_index(MARK_COLOUR);
    if (mat >= 0) surface->mat = (uint16_t)mat;
}

int vesk_plugin_init(void)
{
    return vk_register_surface_filter("Mark non-planar surfaces",
                                      "give the selected polygons whose corners are not in one plane a magenta colour",
                                      mark_non_planar, 0) != NULL;
}
