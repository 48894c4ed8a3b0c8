/*
 * edit/primitive_texture.cpp - texture coordinates from positions: the
 * planar mapping over an object's box or the selection's box in one view,
 * and the cylindrical mapping around the Y axis.
 */
#include "edit/primitives.h"
#include "edit/selection.h"
#include "app/shared_state.h"
#include "core/internal.h"
#include "view/redraw.h"

#include <cmath>
#include <vector>

static const double PI = 3.14159265358979323846;

/* Extends min and max by the vertices of the object and its descendants;
 * returns 1 when any vertex was found. */
static int object_bounds(Object *object, float *min, float *max)
{
    int found = 0;
    std::vector<Object *> pending(1, object);
    while (!pending.empty()) {
        Object *o = pending.back();
        pending.pop_back();
        for (List *v = o->vertices; v; v = v->next, found = 1) {
            const float *p = ((Vertex *)v->item)->point;
            for (int i = 0; i < 3; i++) {
                if (p[i] < min[i]) min[i] = p[i];
                if (p[i] > max[i]) max[i] = p[i];
            }
        }
        for (List *k = o->kids; k; k = k->next) pending.push_back((Object *)k->item);
    }
    return found;
}

/* The object's minimum corner and size; zero for an object without
 * vertices. */
static void object_box(Object *object, float *min, float *size)
{
    float big = bbox_start_value();
    float max[3] = {-big, -big, -big};
    for (int i = 0; i < 3; i++) min[i] = big;
    if (!object_bounds(object, min, max)) {
        for (int i = 0; i < 3; i++) min[i] = size[i] = 0.0f;
        return;
    }
    for (int i = 0; i < 3; i++) size[i] = max[i] - min[i];
}

/* (p - m) / s, computed as 1 / (s / (p - m)), and 0 on the minimum or for
 * a size of 0. */
static float box_fraction(float p, float m, float s)
{
    float d = p - m;
    if (d == 0.0f) return 0.0f;
    float q = s / d;
    if (q == 0.0f) return 0.0f;
    return 1.0f / q;
}

static void map_reference(SVertex *ref, int view, const float *min, const float *size)
{
    const float *p = ref->vertex->point;
    float t[3];
    for (int i = 0; i < 3; i++) t[i] = box_fraction(p[i], min[i], size[i]);
    ref->u = ref->v = 0.0f;
    switch (view) {
    case 1: ref->u = t[2], ref->v = t[1]; break;
    case 2: ref->u = t[0], ref->v = t[2]; break;
    default: ref->u = t[0], ref->v = t[1]; break;
    }
}

static void map_surface(Surface *surface, int view, const float *min, const float *size)
{
    for (List *r = surface->vertrefs; r; r = r->next) {
        SVertex *ref = (SVertex *)r->item;
        if (ref->vertex) map_reference(ref, view, min, size);
    }
}

void calc_texture_coors(Object *object, int view)
{
    debugf("calc_texture_coors\n");
    if (!object) return;
    float min[3], size[3];
    object_box(object, min, size);
    for (List *s = object->surfaces; s; s = s->next) map_surface((Surface *)s->item, view, min, size);
    for (List *k = object->kids; k; k = k->next) calc_texture_coors((Object *)k->item, view);
}

void surfaces_calc_texture_coors(List *surfaces, int view)
{
    debugf("surfaces_calc_texture_coors\n");
    float size[3];
    for (int i = 0; i < 3; i++) size[i] = fabsf(selection.box_max[i] - selection.box_min[i]);
    for (List *s = surfaces; s; s = s->next) map_surface((Surface *)s->item, view, selection.box_min, size);
}

void crap_calc_texture_coors(Object *object)
{
    if (!object) return;
    float min[3], size[3];
    object_box(object, min, size);
    float sy = size[1];
    for (List *s = object->surfaces; s; s = s->next) {
        for (List *r = ((Surface *)s->item)->vertrefs; r; r = r->next) {
            SVertex *ref = (SVertex *)r->item;
            if (!ref->vertex) continue;
            const float *p = ref->vertex->point;
            console_printf("vertex %f %f %f\n", p[0], p[1], p[2]);
            ref->u = (float)(atan2(p[2], p[0]) / (2.0 * PI));
            /* Divided by the height twice: kept as it has always been. */
            ref->v = sy != 0.0f ? p[1] / sy / sy : 0.0f;
            console_printf("u %f, v %f\n", ref->u, ref->v);
        }
    }
}

int selected_calc_texture_coors(int view)
{
    if (nothing_is_selected()) {
        display_message("remap textures - nothing selected");
        return 0;
    }
    display_message("calculating texture coordinates...");
    int objects = 0;
    for (List *l = selection.selected_objects; l; l = l->next, objects++) {
        calc_texture_coors((Object *)l->item, view);
    }
    List *surfaces = find_selected_whole_surfaces();
    surfaces_calc_texture_coors(surfaces, view);
    int count = (int)list_count(surfaces);
    list_free(&surfaces);
    unsaved_changes = 1;
    redraw_3d();
    if (objects > 0) display_message("texture coordinates calculated for %d objects", objects);
    else display_message("texture coordinates calculated for %d surfaces", count);
    return 1;
}
