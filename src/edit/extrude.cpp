/*
 * edit/extrude.cpp - extruding by a drag: the selected objects (each copy
 * made from the previous copy, so the copies lie at 1, 3, 6, 10 ... steps,
 * the triangular numbers; with the usual single segment it does not show)
 * and the selected vertices (one moved copy, joined to the originals along
 * every edge of the wholly selected surfaces).
 */
#include "edit/extrude_internal.h"
#include "edit/primitive_append.h"
#include "edit/primitives.h"
#include "edit/selection.h"
#include "edit/transform.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "view/redraw.h"

/* Degrees to radians with the double constant for 1/180. */
static float radians(float degrees)
{
    return (float)(degrees * 3.14159265358979323846 * 0.005555555555555556);
}

void extrude_object(Object *object, const float *d, int n, const float *rotation)
{
    if (!object || n < 1) return;
    if (sweep_size_ok(object, n, "extrude")) {
        float step[3] = {d[0] / n, d[1] / n, d[2] / n};
        int rotate = rotation && (rotation[0] != 0.0f || rotation[1] != 0.0f || rotation[2] != 0.0f);
        if (rotate) set_global_matrix_rotate(radians(rotation[0]), radians(rotation[1]), radians(rotation[2]));
        Sweep sweep;
        for (int i = 1; i <= n; i++) {
            float t[3] = {step[0] * i, step[1] * i, step[2] * i};
            List *source = i == 1 ? object->vertices : sweep.copies.back();
            sweep.copies.push_back(copy_pointlist(source, t));
            if (rotate) rotate_pointlist_3d(sweep.copies.back());
        }
        sweep_make_links(object, &sweep, 1, 0);
        if (remove_extruded_lines) remove_line_surfaces(object);
        sweep_add_to_object(object, &sweep);
    }
    for (List *k = object->kids; k; k = k->next) extrude_object((Object *)k->item, d, n, rotation);
}

/* Extrudes the selected vertices by d; returns the new object made when
 * they belong to several objects. */
static Object *extrude_vertices(const float *d)
{
    static const float zero[3] = {0, 0, 0};
    List *selected = selection.selected_vertices;
    List *whole = find_selected_whole_surfaces();
    int one_owner = vertices_owned_by_same_object(selected);
    console_printf(one_owner ? "one owner\n" : "> one owner\n");
    Object *target = one_owner ? object_of_vertex(world, (Vertex *)selected->item) : nullptr;
    List *base = nullptr;
    if (!target) {
        /* Vertices cannot be shared between objects: the new object gets
         * exact copies to stand for the originals. */
        target = new_object(OBJECT_NORMAL);
        base = copy_pointlist(selected, zero);
        one_owner = 0;
    }
    List *moved = copy_pointlist(selected, d);
    List *copies = copy_surfacelist(whole, selected, moved);
    List *links = one_owner ? create_link_surfaces(whole, selected, moved)
                            : create_link_surfaces2(whole, selected, base, moved);
    ObjectAppender append;
    appender_start(&append, target);
    appender_add_vertices(&append, base);
    appender_add_vertices(&append, moved);
    for (List *s = copies; s; s = s->next) appender_add_surface(&append, (Surface *)s->item);
    for (List *s = links; s; s = s->next) appender_add_surface(&append, (Surface *)s->item);
    if (!one_owner) object_add_child(world, target);
    list_free(&whole);
    list_free(&base);
    list_free(&moved);
    list_free(&copies);
    list_free(&links);
    object_calc_normals_force(target);
    if (one_owner) return nullptr;
    console_printf("a new object was created because selected vertices were in >1 object and vertices cannot be "
                   "shared\n");
    return target;
}

Object *extrude_selected(const float *start, const float *end)
{
    display_message("extruding...");
    float d[3] = {start[0] - end[0], start[1] - end[1], start[2] - end[2]};
    Object *made = nullptr;
    if (selection.selected_vertices) {
        made = extrude_vertices(d);
        if (made) {
            console_printf("a new object was created because selected vertices were in >1 object and vertices "
                           "cannot be shared\n");
        }
    }
    if (selection.selected_objects) {
        static const float no_rotation[3] = {0, 0, 0};
        int n = primitive_segments(prefs.extrude_segments, 1, EXTRUDE_MAX_COPIES, "extrude_segments");
        for (List *l = selection.selected_objects; l; l = l->next) {
            Object *o = (Object *)l->item;
            extrude_object(o, d, n, no_rotation);
            object_calc_normals_force(o);
        }
    }
    if (!nothing_is_selected()) {
        unsaved_changes = 1;
        find_bounding_box();
        redraw_all();
    }
    display_message("extrude done");
    return made;
}
