/*
 * edit/selection.cpp - the global selection and the object rule that
 * decides, per select mode, what selecting or unselecting an object puts
 * into it or takes out; the selection box.
 */
#include "edit/selection.h"
#include "core/internal.h"
#include "view/redraw.h"

Selection selection = {SELECT_TREE, nullptr, nullptr, nullptr, 0, 0, 0, 0, nullptr, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}};

Object *get_current_object(void) { return selection.current_object; }

void clear_selection(void)
{
    list_free(&selection.selected_vertices);
    list_free(&selection.selected_objects);
    list_free(&selection.part_selected_objects);
    selection.current_object = nullptr;
    selection.num_selected_vertices = 0;
    selection.num_selected_objects = 0;
    selection.num_part_selected_objects = 0;
    selection.selection_has_extent = 0;
}


void clear_selection_refresh(void)
{
    clear_selection();
    display_status();
    redraw_orth();
}

static void add_unique(List **list, int *count, void *item)
{
    if (list_add_item_unique(list, item)) (*count)++;
}

static void remove_counted(List **list, int *count, void *item)
{
    if (list_remove_item(list, item)) (*count)--;
}

static void update_current_object(void)
{
    selection.current_object =
        selection.num_selected_objects == 1 ? (Object *)list_get_item(selection.selected_objects, 0) : nullptr;
}

static void select_rule(Object *o)
{
    switch (selection.select_mode) {
    case SELECT_VERTEX:
        if (o->visible) {
            for (List *v = o->vertices; v; v = v->next) {
                add_unique(&selection.selected_vertices, &selection.num_selected_vertices, v->item);
            }
            add_unique(&selection.part_selected_objects, &selection.num_part_selected_objects, o);
        }
        for (List *k = o->kids; k; k = k->next) select_rule((Object *)k->item);
        break;
    case SELECT_OBJECT:
        if (!o->visible) break;
        if (o->kids) {
            for (List *k = o->kids; k; k = k->next) select_rule((Object *)k->item);
        } else {
            add_unique(&selection.selected_objects, &selection.num_selected_objects, o);
        }
        break;
    default: {
        if (!o->visible) break;
        Object *top = object_top_ancestor(o);
        if (top) add_unique(&selection.selected_objects, &selection.num_selected_objects, top);
        break;
    }
    }
}

static void unselect_rule(Object *o)
{
    switch (selection.select_mode) {
    case SELECT_VERTEX:
        if (o->visible) {
            for (List *v = o->vertices; v; v = v->next) {
                remove_counted(&selection.selected_vertices, &selection.num_selected_vertices, v->item);
            }
            remove_counted(&selection.part_selected_objects, &selection.num_part_selected_objects, o);
        }
        for (List *k = o->kids; k; k = k->next) unselect_rule((Object *)k->item);
        break;
    case SELECT_OBJECT:
        if (o->visible) remove_counted(&selection.selected_objects, &selection.num_selected_objects, o);
        break;
    default:
        if (o->visible) {
            remove_counted(&selection.selected_objects, &selection.num_selected_objects,
                           object_top_ancestor(o));
        }
        break;
    }
}

void select_object(Object *object)
{
    select_rule(object);
    update_current_object();
    find_bounding_box();
}

void unselect_object(Object *object)
{
    unselect_rule(object);
    update_current_object();
    find_bounding_box();
}

void select_objectlist(List *objects)
{
    for (List *l = objects; l; l = l->next) select_rule((Object *)l->item);
    update_current_object();
    find_bounding_box();
}

void unselect_objectlist(List *objects)
{
    for (List *l = objects; l; l = l->next) unselect_rule((Object *)l->item);
    update_current_object();
    find_bounding_box();
}

int object_is_selected(Object *object)
{
    return list_index(selection.selected_objects, object) != LIST_NOT_FOUND ||
           list_index(selection.part_selected_objects, object) != LIST_NOT_FOUND;
}

int nothing_is_selected(void)
{
    return !selection.selected_vertices && !selection.selected_objects;
}

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
    float big = bbox_start_value();
    float min[3] = {big, big, big}, max[3] = {-big, -big, -big};
    if (nothing_is_selected()) {
        selection.selection_has_extent = 0;
        return;
    }
    for (List *v = selection.selected_vertices; v; v = v->next) extend_box(((Vertex *)v->item)->point, min, max);
    for (List *o = selection.selected_objects; o; o = o->next) extend_box_by_object((Object *)o->item, min, max);
    int extent = 0;
    for (int i = 0; i < 3; i++) {
        if (min[i] == big || min[i] == -big) min[i] = 0.0f;
        if (max[i] == big || max[i] == -big) max[i] = 0.0f;
        selection.box_min[i] = min[i];
        selection.box_max[i] = max[i];
        if (min[i] != 0.0f || max[i] != 0.0f) extent = 1;
    }
    selection.selection_has_extent = extent;
    float size[3] = {max[0] - min[0], max[1] - min[1], max[2] - min[2]};
    selection.view_has_extent[0] = !(size[0] == 0 && size[1] == 0);
    selection.view_has_extent[1] = !(size[2] == 0 && size[1] == 0);
    selection.view_has_extent[2] = !(size[0] == 0 && size[2] == 0);
}

int set_new_select_mode(int mode)
{
    /* Placeholder until the mode conversion exists: the selection is
     * dropped and the mode set. */
    clear_selection();
    selection.select_mode = mode;
    return 1;
}
