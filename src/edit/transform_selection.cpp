/*
 * edit/transform_selection.cpp - moving, rotating, scaling, resizing and
 * mirroring what is selected: every selected vertex and every selected
 * object with its subtree.  These functions change the model only; the
 * commands that record undo and check their input are in
 * transform_commands.cpp, and the undo of a move, rotation or resize calls
 * them backwards.
 *
 * Each operation is one pass over the selection (a point is moved to its
 * final place at once), so a selection of a million vertices costs a
 * million steps.
 */
#include "edit/transform.h"
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "view/redraw.h"
#include "core/internal.h"

#include <cmath>
#include <cstring>
#include <vector>

/* Calls move on every selected vertex's point, on every vertex of the
 * selected subtrees and, with locations set, on their objects' centres. */
template <typename Move> static void for_selected_points(bool locations, Move move)
{
    for (List *v = selection.selected_vertices; v; v = v->next) move(((Vertex *)v->item)->point);
    for (List *l = selection.selected_objects; l; l = l->next) {
        for (Object *o : subtree_objects((Object *)l->item)) {
            if (locations) move(o->centre);
            for (List *v = o->vertices; v; v = v->next) move(((Vertex *)v->item)->point);
        }
    }
}

static void extend_box(const float *p, float *min, float *max)
{
    for (int i = 0; i < 3; i++) {
        if (p[i] < min[i]) min[i] = p[i];
        if (p[i] > max[i]) max[i] = p[i];
    }
}

int selection_bounds_with_locations(float *box_min, float *box_max)
{
    if (nothing_is_selected()) return 0;
    float big = bbox_start_value();
    float min[3] = {big, big, big}, max[3] = {-big, -big, -big};
    for_selected_points(true, [&](float *p) { extend_box(p, min, max); });
    for (int i = 0; i < 3; i++) {
        box_min[i] = fabsf(min[i]) == big ? 0.0f : min[i];
        box_max[i] = fabsf(max[i]) == big ? 0.0f : max[i];
    }
    return 1;
}

void selection_rotation_centre(float *centre)
{
    for (int i = 0; i < 3; i++) {
        float half = (selection.box_max[i] - selection.box_min[i]) * 0.5f;
        centre[i] = selection.box_min[i] + fabsf(half);
    }
}

/* ---- moving ---- */

void translate_all_selected(const float *d)
{
    for (List *v = selection.selected_vertices; v; v = v->next) {
        float *p = ((Vertex *)v->item)->point;
        for (int i = 0; i < 3; i++) p[i] += d[i];
    }
    for (List *l = selection.selected_objects; l; l = l->next) translate_object((Object *)l->item, d);
}

void subtract_point_from_all_selected(const float *d)
{
    const float minus[3] = {-d[0], -d[1], -d[2]};
    translate_all_selected(minus);
}

void move_selection(const float *d)
{
    translate_all_selected(d);
    /* The box moves with the selection instead of being searched again. */
    for (int i = 0; i < 3; i++) {
        selection.box_min[i] += d[i];
        selection.box_max[i] += d[i];
    }
    if (!selection.selected_objects) selected_calc_normals();
    if (selection_box_changed) selection_box_changed();
    display_status();
}

void multiply_all_selected(const float *s)
{
    for (List *v = selection.selected_vertices; v; v = v->next) {
        float *p = ((Vertex *)v->item)->point;
        for (int i = 0; i < 3; i++) p[i] *= s[i];
    }
    for (List *l = selection.selected_objects; l; l = l->next) multiply_object((Object *)l->item, s);
}

void scale_all_selected(const float *s)
{
    for (List *v = selection.selected_vertices; v; v = v->next) {
        float *p = ((Vertex *)v->item)->point;
        for (int i = 0; i < 3; i++) p[i] *= s[i];
    }
    for (List *l = selection.selected_objects; l; l = l->next) scale_object((Object *)l->item, s);
}

void translate_multiply_selected(const float *t1, const float *s, const float *t2)
{
    for (List *v = selection.selected_vertices; v; v = v->next) {
        float *p = ((Vertex *)v->item)->point;
        for (int i = 0; i < 3; i++) p[i] = (p[i] + t1[i]) * s[i] + t2[i];
    }
    for (List *l = selection.selected_objects; l; l = l->next) {
        translate_multiply_object((Object *)l->item, t1, s, t2);
    }
}

/* ---- rotating ---- */

void rotate_selected_with_global_matrix(const float *centre)
{
    float c[3];
    if (centre) memcpy(c, centre, sizeof c);
    else selection_rotation_centre(c);
    /* Each point goes to c + G * (p - c) in one step, rounding as the
     * three separate passes (translate, rotate, translate back) would. */
    for_selected_points(true, [&c](float *p) {
        float q[3] = {p[0] - c[0], p[1] - c[1], p[2] - c[2]};
        rotate_point_3d(q);
        for (int i = 0; i < 3; i++) p[i] = q[i] + c[i];
    });
}

/* The rotation a view turns by: view 0 (x and y) about -z, view 1 (z and
 * y) about x, view 2 (x and z) about -y.  0 for any other view. */
static int view_rotation(float radians, int view, float *m)
{
    switch (view) {
    case 0: matrix_set_rotate(m, 0.0f, 0.0f, -radians); return 1;
    case 1: matrix_set_rotate(m, radians, 0.0f, 0.0f); return 1;
    case 2: matrix_set_rotate(m, 0.0f, -radians, 0.0f); return 1;
    default: return 0;
    }
}

void rotate_selected(float angle, int view, const float *centre)
{
    display_message("rotating...");
    float a = (float)DEGREES_TO_RADIANS(angle);
    float m[9];
    /* Another view leaves the global matrix as it was. */
    if (view_rotation(a, view, m)) matrix_copy(m, global_matrix);
    rotate_selected_with_global_matrix(centre);
    display_message("rotation done");
}

void rotate_selection_about(const float *degrees, const float *centre)
{
    set_global_matrix_rotate((float)DEGREES_TO_RADIANS(degrees[0]), (float)DEGREES_TO_RADIANS(degrees[1]),
                             (float)DEGREES_TO_RADIANS(degrees[2]));
    rotate_selected_with_global_matrix(centre);
    selected_calc_normals();
    find_bounding_box();
    display_status();
}

void rotate_selection(const float *degrees)
{
    float c[3];
    selection_rotation_centre(c);
    rotate_selection_about(degrees, c);
}

/* ---- scaling, resizing, mirroring ---- */

int scale_selected(float sx, float sy, float sz)
{
    if (!selection.selection_has_extent) return 0;
    const float s[3] = {sx, sy, sz};
    float c[3];
    find_box_centre(selection.box_max, selection.box_min, c);
    for_selected_points(true, [&](float *p) {
        for (int i = 0; i < 3; i++) p[i] = (p[i] - c[i]) * s[i] + c[i];
    });
    for (List *l = selection.selected_objects; l; l = l->next) {
        for (Object *o : subtree_objects((Object *)l->item)) {
            for (int i = 0; i < 3; i++) o->scale[i] *= s[i];
        }
    }
    find_bounding_box();
    redraw_all();
    return 1;
}

/* The factors that size the selection to target: target / size on an axis
 * with size and a target of at least 0, else 1. */
void selection_size_factors(const float *target, float *factor)
{
    float size[3];
    find_box_size(selection.box_max, selection.box_min, size);
    for (int i = 0; i < 3; i++) factor[i] = size[i] > 0.0f && target[i] >= 0.0f ? target[i] / size[i] : 1.0f;
}

void selection_size_to(const float *target)
{
    float f[3];
    selection_size_factors(target, f);
    scale_selected(f[0], f[1], f[2]);
}

void resize_selected_to_bounding_box(const float *a, const float *b, const float *c, const float *d)
{
    float s[3];
    for (int i = 0; i < 3; i++) {
        float extent = a[i] - b[i];
        /* A flat source axis collapses onto the target minimum. */
        s[i] = extent != 0.0f ? (c[i] - d[i]) / extent : 0.0f;
    }
    for_selected_points(true, [&](float *p) {
        for (int i = 0; i < 3; i++) p[i] = d[i] + (p[i] - b[i]) * s[i];
    });
    for (List *l = selection.selected_objects; l; l = l->next) {
        for (Object *o : subtree_objects((Object *)l->item)) {
            for (int i = 0; i < 3; i++) o->scale[i] *= s[i];
        }
    }
}

int mirror_selected(int axis)
{
    if (axis < 0 || axis > 2) return 0;
    float m = selection.box_min[axis], big = selection.box_max[axis];
    /* Every coordinate c on the axis becomes M + m - c, formed as
     * (c - m) * -1 + M; object locations stay where they are. */
    for_selected_points(false, [&](float *p) { p[axis] = (p[axis] + -m) * -1.0f + big; });
    selected_calc_normals();
    find_bounding_box();
    redraw_all();
    return 1;
}

void selected_calc_normals(void)
{
    for (List *l = selection.selected_objects; l; l = l->next) object_calc_normals((Object *)l->item);
    if (!selection.selected_vertices) return;
    if (selection.part_selected_objects) {
        for (List *l = selection.part_selected_objects; l; l = l->next) object_calc_normals((Object *)l->item);
        return;
    }
    /* After an undo the owners are not listed: find them. */
    List *owners = owners_of_vertices(selection.selected_vertices);
    for (List *l = owners; l; l = l->next) object_calc_normals((Object *)l->item);
    list_free(&owners);
}

int vk_get_selection(List **vertices, List **objects)
{
    if (vertices) *vertices = selection.selected_vertices;
    if (objects) *objects = selection.selected_objects;
    return selection.select_mode;
}
