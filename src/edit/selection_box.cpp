/*
 * edit/selection_box.cpp - the selection box and selection by box: the
 * bounding box of everything selected with its per-view extent flags, the
 * strict point-in-box test of one orthographic view, box selection with
 * its add and remove modifiers, and selection of the surfaces around a
 * point.
 */
#include "edit/selection_internal.h"
#include "core/internal.h"
#include "view/redraw.h"

#include <cmath>

void (*selection_box_changed)(void) = nullptr;

void find_box_centre(const float *box_max, const float *box_min, float *result)
{
    for (int i = 0; i < 3; i++) result[i] = box_min[i] + (box_max[i] - box_min[i]) * 0.5f;
}

void find_box_size(const float *corner_a, const float *corner_b, float *result)
{
    for (int i = 0; i < 3; i++) result[i] = fabsf(corner_a[i] - corner_b[i]);
}

/* The two axes an orthographic view shows; 0 when view is no such view. */
static int view_axes(int view, int *horizontal, int *vertical)
{
    static const int axes[3][2] = {{0, 1}, {2, 1}, {0, 2}};
    if (view < 0 || view > 2) return 0;
    *horizontal = axes[view][0];
    *vertical = axes[view][1];
    return 1;
}

int point_inside_box2(int view, const float *point, const float *box_max, const float *box_min)
{
    int h, v;
    if (!view_axes(view, &h, &v)) return 0;
    return box_min[h] < point[h] && point[h] < box_max[h] && box_min[v] < point[v] && point[v] < box_max[v];
}

/* ---- the bounding box ---- */

static void extend_box(const float *p, float *min, float *max)
{
    for (int i = 0; i < 3; i++) {
        if (p[i] < min[i]) min[i] = p[i];
        if (p[i] > max[i]) max[i] = p[i];
    }
}

static void extend_box_by_object(Object *o, float *min, float *max)
{
    for (List *v = o->vertices; v; v = v->next) extend_box(((Vertex *)v->item)->point, min, max);
    for (List *k = o->kids; k; k = k->next) extend_box_by_object((Object *)k->item, min, max);
}

void find_bounding_box(void)
{
    if (nothing_is_selected()) {
        selection.selection_has_extent = 0;
        return;
    }
    float big = bbox_start_value();
    float min[3] = {big, big, big}, max[3] = {-big, -big, -big};
    for (List *v = selection.selected_vertices; v; v = v->next) extend_box(((Vertex *)v->item)->point, min, max);
    for (List *o = selection.selected_objects; o; o = o->next) extend_box_by_object((Object *)o->item, min, max);
    int extent = 0;
    for (int i = 0; i < 3; i++) {
        /* A component nothing reached is reported as 0. */
        if (fabsf(min[i]) == big) min[i] = 0.0f;
        if (fabsf(max[i]) == big) max[i] = 0.0f;
        selection.box_min[i] = min[i];
        selection.box_max[i] = max[i];
        if (min[i] != 0.0f || max[i] != 0.0f) extent = 1;
    }
    selection.selection_has_extent = extent;
    float size[3] = {max[0] - min[0], max[1] - min[1], max[2] - min[2]};
    selection.view_has_extent[0] = !(size[0] == 0.0f && size[1] == 0.0f);
    selection.view_has_extent[1] = !(size[2] == 0.0f && size[1] == 0.0f);
    selection.view_has_extent[2] = !(size[0] == 0.0f && size[2] == 0.0f);
    if (selection_box_changed) selection_box_changed();
}

/* ---- box selection ---- */

/* What a box finds: the vertices inside (vertex mode, each once) and the
 * objects with something inside, in model order. */
struct FoundInBox {
    List *vertices = nullptr;
    ListIndex vertex_index;
    unsigned int num_vertices = 0;
    List *objects = nullptr;
    List *objects_tail = nullptr;
    unsigned int num_objects = 0;
};

static void found_add_object(FoundInBox *found, Object *o)
{
    found->objects_tail = list_add_item_fast(&found->objects, found->objects_tail, o);
    found->num_objects++;
}

static void collect_inside(Object *o, const float *box_max, const float *box_min, int view, FoundInBox *found)
{
    if (o->type == OBJECT_LIGHT) {
        /* A light has no vertices to test: its location stands for it. */
        if (o->visible && point_inside_box2(view, o->centre, box_max, box_min)) found_add_object(found, o);
    } else if (o->visible) {
        int object_found = 0;
        ListLookahead ahead = lookahead_start(o->vertices);
        for (List *l = o->vertices; l; l = l->next) {
            lookahead_step(&ahead, &found->vertex_index.counts);
            Vertex *v = (Vertex *)l->item;
            if (!point_inside_box2(view, v->point, box_max, box_min)) continue;
            if (!object_found) {
                found_add_object(found, o);
                object_found = 1;
            }
            /* Outside vertex mode one vertex inside is enough. */
            if (selection.select_mode != SELECT_VERTEX) break;
            if (ilist_add_unique(&found->vertices, &found->vertex_index, v)) found->num_vertices++;
        }
    }
    for (List *k = o->kids; k; k = k->next) collect_inside((Object *)k->item, box_max, box_min, view, found);
}

void find_points_inside(Object *object, const float *box_max, const float *box_min, int view,
                        List **vertices, List **objects)
{
    if (!object || !vertices || !objects) return;
    FoundInBox found;
    found.vertices = *vertices;
    ilist_rebuild(found.vertices, &found.vertex_index);
    found.objects = *objects;
    found.objects_tail = *objects ? list_end(*objects) : nullptr;
    collect_inside(object, box_max, box_min, view, &found);
    *vertices = found.vertices;
    *objects = found.objects;
}

static void box_select_objects(FoundInBox *found, int add, int remove)
{
    for (List *l = found->objects; l; l = l->next) {
        Object *o = (Object *)l->item;
        Object *target = selection.select_mode == SELECT_TREE ? tree_top(o) : o;
        if (!target) continue;
        if (add || !remove) add_selected_object(target);
        else request_unselect_object(target);
    }
    sweep_selection_removals();
}

static void box_select_vertices(FoundInBox *found, int add, int remove)
{
    if (!add && !remove) {
        /* The selection was cleared: what the box found becomes it. */
        ilist_swap(&selection.selected_vertices, &selected_vertex_index, &found->vertices, &found->vertex_index);
        selection.num_selected_vertices = (int)found->num_vertices;
        ilist_reset(&selection.part_selected_objects, &part_selected_index);
        selection.part_selected_objects = found->objects;
        ilist_rebuild(found->objects, &part_selected_index);
        selection.num_part_selected_objects = (int)found->num_objects;
        found->objects = found->objects_tail = nullptr;
        return;
    }
    if (add) {
        ListLookahead ahead = lookahead_start(found->vertices);
        for (List *v = found->vertices; v; v = v->next) {
            lookahead_step(&ahead, &selected_vertex_index.counts);
            add_selected_vertex((Vertex *)v->item);
        }
        for (List *o = found->objects; o; o = o->next) add_part_selected_object((Object *)o->item);
        return;
    }
    unselect_vertices(found->vertices);
    /* The part-selected objects are those that still own a selected
     * vertex. */
    ilist_reset(&selection.part_selected_objects, &part_selected_index);
    selection.part_selected_objects = selected_vertex_owners();
    ilist_rebuild(selection.part_selected_objects, &part_selected_index);
    selection.num_part_selected_objects = (int)list_count(selection.part_selected_objects);
}

void select_all_inside(const float *corner_a, const float *corner_b, int view, int add, int remove)
{
    float box_max[3], box_min[3];
    for (int i = 0; i < 3; i++) {
        box_max[i] = corner_a[i] > corner_b[i] ? corner_a[i] : corner_b[i];
        box_min[i] = corner_a[i] > corner_b[i] ? corner_b[i] : corner_a[i];
    }
    if (!add && !remove) clear_selection();
    FoundInBox found;
    if (world) collect_inside(world, box_max, box_min, view, &found);
    if (selection.select_mode == SELECT_VERTEX) box_select_vertices(&found, add, remove);
    else box_select_objects(&found, add, remove);
    ilist_reset(&found.vertices, &found.vertex_index);
    list_free(&found.objects);
    update_current_object();
    debugf("number of vertices selected = %d\n", selection.num_selected_vertices);
    debugf("number of selected objects = %d\n", selection.num_selected_objects);
    debugf("number of part selected objects = %d\n", selection.num_part_selected_objects);
    find_bounding_box();
    redraw_orth();
    selection_publish_counts();
}

/* ---- surfaces around a point ---- */

static int surface_surrounds_point(Surface *s, const float *point, int h, int v)
{
    if (!s->vertrefs) return 0;
    float min_h = 0, max_h = 0, min_v = 0, max_v = 0;
    int first = 1;
    for (List *r = s->vertrefs; r; r = r->next) {
        Vertex *vx = ((SVertex *)r->item)->vertex;
        if (!vx) continue;
        const float *p = vx->point;
        if (first) {
            min_h = max_h = p[h];
            min_v = max_v = p[v];
            first = 0;
            continue;
        }
        min_h = fminf(min_h, p[h]);
        max_h = fmaxf(max_h, p[h]);
        min_v = fminf(min_v, p[v]);
        max_v = fmaxf(max_v, p[v]);
    }
    if (first) return 0;
    return min_h < point[h] && point[h] < max_h && min_v < point[v] && point[v] < max_v;
}

static void collect_surfaces_around(Object *o, const float *point, int h, int v, List **found, List **tail)
{
    for (List *s = o->surfaces; s; s = s->next) {
        if (surface_surrounds_point((Surface *)s->item, point, h, v)) *tail = list_add_item_fast(found, *tail, s->item);
    }
    for (List *k = o->kids; k; k = k->next) collect_surfaces_around((Object *)k->item, point, h, v, found, tail);
}

void select_surfaces_from_point(const float *point, int view)
{
    List *found = nullptr, *tail = nullptr;
    int h, v;
    if (world && view_axes(view, &h, &v)) collect_surfaces_around(world, point, h, v, &found, &tail);
    /* The vertex list is replaced; its count is deliberately left as it
     * was. */
    ilist_reset(&selection.selected_vertices, &selected_vertex_index);
    for (List *s = found; s; s = s->next) {
        for (List *r = ((Surface *)s->item)->vertrefs; r; r = r->next) {
            Vertex *vx = ((SVertex *)r->item)->vertex;
            if (vx) ilist_add_unique(&selection.selected_vertices, &selected_vertex_index, vx);
        }
    }
    list_free(&found);
    find_bounding_box();
    redraw_orth();
}
