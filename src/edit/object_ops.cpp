/*
 * edit/object_ops.cpp - hiding and showing objects, deleting the
 * selection, clearing the whole model, recalculating normals and moving
 * object centres (their locations) to the middle or the minimum corner of
 * their bounds.
 */
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "core/internal.h"
#include "core/lights.h"
#include "view/redraw.h"

#include <cstring>
#include <vector>

/* ---- hiding and showing ---- */

int hide_selected(void)
{
    if (!nothing_is_selected()) objects_are_hidden = 1;
    int hidden = selection.num_selected_objects + selection.num_part_selected_objects;
    for (List *l = selection.selected_objects; l; l = l->next) object_set_visible((Object *)l->item, 0);
    for (List *l = selection.part_selected_objects; l; l = l->next) object_set_visible((Object *)l->item, 0);
    clear_selection();
    selection_publish_counts();
    redraw_all();
    display_message("objects hidden: %d", hidden);
    return 1;
}

/* Every visible object below o with vertices that is not selected. */
static void collect_unselected(Object *o, std::vector<Object *> *found)
{
    for (Object *x : subtree_objects(o)) {
        if (x != world && x->visible && x->vertices && !object_is_selected(x)) found->push_back(x);
    }
}

int hide_unselected(void)
{
    std::vector<Object *> found;
    /* Only object and vertex mode name the objects that stay. */
    if (selection.select_mode == SELECT_OBJECT || selection.select_mode == SELECT_VERTEX) {
        collect_unselected(world, &found);
    }
    for (Object *o : found) object_set_visible(o, 0);
    if (!found.empty()) objects_are_hidden = 1;
    redraw_all();
    display_message("objects hidden: %d", (int)found.size());
    return 1;
}

int show_all(void)
{
    object_set_visible(world, 1);
    objects_are_hidden = 0;
    redraw_all();
    display_status();
    return 1;
}

/* ---- deleting ---- */

/* Deletes the selection itself (object and vertex mode), after the undo
 * record has kept a copy of the model. */
static void delete_selection_contents(void)
{
    std::vector<uint32_t> objects = handles_of_topmost(selection.selected_objects);
    if (selection.selected_vertices) delete_vertices(selection.selected_vertices, nullptr);
    for (Object *o : detach_objects(objects, 1)) object_free(o);
}

int delete_selection_as(const char *verb)
{
    if (nothing_is_selected()) {
        display_message("%s: nothing selected", verb);
        return 0;
    }
    display_message("%s - setting up undo", verb);
    new_undo(UNDO_DELETE_TREE, verb);
    /* Tree mode takes the objects out and keeps them in the record;
     * otherwise the record has a copy of the model and the selection is
     * deleted here. */
    if (!set_undo_delete_selection()) delete_selection_contents();
    clear_selection();
    selection_publish_counts();
    edit_mark_changed();
    redraw_all();
    display_status();
    display_message("%s done", verb);
    return 1;
}

int delete_all_selected(void)
{
    return delete_selection_as("delete");
}

/* ---- clearing everything ---- */

void clear_world_contents(void)
{
    clear_selection();
    clear_all_undos();
    /* The world record stays, so that a script's handle for it still
     * works; everything it holds goes. */
    List *kids = world->kids;
    world->kids = nullptr;
    world->num_kids = 0;
    for (List *k = kids; k; k = k->next) {
        ((Object *)k->item)->parent = nullptr;
        object_free((Object *)k->item);
    }
    list_free(&kids);
    for (List *s = world->surfaces; s; s = s->next) surface_free((Surface *)s->item);
    list_free(&world->surfaces);
    list_free_all(&world->vertices);
    world->num_surf = world->num_vert = 0;
    objects_are_hidden = 0;
    scan_lights();
}

int command_clear_all(void)
{
    clear_world_contents();
    selection_publish_counts();
    edit_mark_changed();
    redraw_all();
    display_status();
    display_message("model cleared");
    return 1;
}

/* ---- normals and centres ---- */

int recalc_normals_all(void)
{
    display_message("recalculating normals...");
    object_calc_normals_force(world);
    redraw_all();
    display_message("normals recalculated");
    return 1;
}

/* The objects a centre command works on: the selected objects, or in
 * vertex mode the owners of the selected vertices. */
static std::vector<Object *> centre_targets(void)
{
    std::vector<Object *> targets;
    List *from = selection.selected_objects ? selection.selected_objects : selection.part_selected_objects;
    for (List *l = from; l; l = l->next) targets.push_back((Object *)l->item);
    return targets;
}

/* The bounds of the object's vertices and its descendants'; 0 when it
 * has none. */
static int subtree_bounds(Object *object, float *min, float *max)
{
    float big = bbox_start_value();
    for (int i = 0; i < 3; i++) {
        min[i] = big;
        max[i] = -big;
    }
    int any = 0;
    for (Object *o : subtree_objects(object)) {
        for (List *v = o->vertices; v; v = v->next, any = 1) {
            const float *p = ((Vertex *)v->item)->point;
            for (int i = 0; i < 3; i++) {
                if (p[i] < min[i]) min[i] = p[i];
                if (p[i] > max[i]) max[i] = p[i];
            }
        }
    }
    return any;
}

/* Sets each target's centre from its bounds: the middle, or the minimum
 * corner.  Only the centres change, not the geometry. */
static int set_centres(const char *verb, int to_minimum)
{
    std::vector<Object *> targets = centre_targets();
    if (targets.empty()) {
        display_message("%s: select objects first", verb);
        return 0;
    }
    display_message("%s - setting up undo", verb);
    new_undo(UNDO_SNAPSHOT, verb);
    set_undo_all();
    int changed = 0;
    for (Object *o : targets) {
        float min[3], max[3];
        if (!subtree_bounds(o, min, max)) continue;
        if (to_minimum) memcpy(o->centre, min, sizeof o->centre);
        else find_box_centre(max, min, o->centre);
        changed++;
    }
    edit_mark_changed();
    redraw_all();
    display_message("%s: %d centres set", verb, changed);
    return 1;
}

int selected_recentre(void)
{
    return set_centres("recentre", 0);
}

int selected_mincentre(void)
{
    return set_centres("mincentre", 1);
}
