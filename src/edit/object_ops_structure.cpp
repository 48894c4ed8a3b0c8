/*
 * edit/object_ops_structure.cpp - operations that rebuild the object
 * tree: grouping, ungrouping, fragmenting and exploding objects into one
 * object per surface, and merging objects into one.  Each keeps a copy of
 * the model for undo; each works with one sweep of the lists it changes,
 * so that thousands of objects or a million vertices stay fast.
 */
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "view/redraw.h"

#include <vector>

/* Starts an undo step that restores the whole model. */
static void record_snapshot(int kind, const char *label)
{
    display_message("%s - setting up undo", label);
    new_undo(kind, label);
    set_undo_all();
}

/* ---- grouping ---- */

/* Copies of the selected vertices (each once) as the group's own loose
 * vertices; the originals are then deleted from their objects. */
static void move_selected_vertices_into(Object *group)
{
    PointerTable seen;
    List *tail = nullptr;
    for (List *v = selection.selected_vertices; v; v = v->next) {
        if (!ptable_set_if_absent(&seen, v->item, 1)) continue;
        tail = list_add_item_fast(&group->vertices, tail, vertex_clone((Vertex *)v->item));
        group->num_vert++;
    }
    delete_vertices(selection.selected_vertices, nullptr);
}

int group_selected_objects(void)
{
    int vertices = selection.num_selected_vertices, objects = selection.num_selected_objects;
    if ((vertices == 0 && objects < 2) || (vertices == 1 && objects == 0)) {
        windows_message_dialog("Group - select two or more objects");
        return 0;
    }
    record_snapshot(UNDO_SNAPSHOT, "group");
    Object *group = new_group();
    object_set_name(group, "group");
    /* Handles first: deleting vertices may delete an emptied selected
     * object, and moving objects may delete their emptied parents. */
    std::vector<uint32_t> handles = handles_of(selection.selected_objects);
    move_selected_vertices_into(group);
    std::vector<Object *> members = detach_objects(handles, 1);
    ChildAppender kids = child_appender(group);
    for (Object *o : members) append_child(&kids, o);
    object_add_child(world, group);
    object_calculate_centre(group);
    clear_selection();
    select_object(group);
    selection_publish_counts();
    edit_mark_changed();
    redraw_all();
    display_status();
    display_message("group created");
    return 1;
}

/* object_ungroup with one walk of the world's children: the children go
 * to the world and the group goes when it holds no vertices. */
static void ungroup_into_world(Object *group, ChildAppender *world_kids)
{
    if (group == world || !group->kids) return;
    List *kids = group->kids;
    group->kids = nullptr;
    group->num_kids = 0;
    for (List *k = kids; k; k = k->next) append_child(world_kids, (Object *)k->item);
    list_free(&kids);
    if (!group->vertices) object_delete(group);
}

int ungroup_selected_objects(void)
{
    if (!selection.selected_objects) {
        display_message("ungroup - select a group first");
        return 0;
    }
    record_snapshot(UNDO_UNGROUP, "ungroup");
    std::vector<uint32_t> handles = handles_of(selection.selected_objects);
    clear_selection();
    for (uint32_t h : handles) {
        Object *group = object_from_handle(h);
        if (!group) continue;
        /* A deletion can change the world's list end: look it up anew. */
        ChildAppender world_kids = child_appender(world);
        ungroup_into_world(group, &world_kids);
    }
    selection_publish_counts();
    edit_mark_changed();
    redraw_all();
    display_status();
    display_message("ungroup done");
    return 1;
}

/* ---- fragmenting ---- */

/* One new object holding a copy of the surface with its own copies of
 * the vertices, moved along the surface normal by distance. */
static Object *fragment_surface(Object *source, Surface *s, float distance)
{
    Object *o = new_object(OBJECT_NORMAL);
    Surface *copy = new_surface();
    copy->mat = s->mat;
    copy->surface_kind = s->surface_kind;
    copy->shading = s->shading;
    copy->twosided = s->twosided;
    for (int i = 0; i < 3; i++) copy->normal[i] = s->normal[i];
    List *vtail = nullptr, *rtail = nullptr;
    for (List *r = s->vertrefs; r; r = r->next) {
        SVertex *ref = (SVertex *)r->item;
        Vertex *v = vertex_clone(ref->vertex);
        if (distance != 0.0f) {
            for (int i = 0; i < 3; i++) v->point[i] += s->normal[i] * distance;
        }
        vtail = list_add_item_fast(&o->vertices, vtail, v);
        o->num_vert++;
        rtail = list_add_item_fast(&copy->vertrefs, rtail, new_svertex(v, ref->u, ref->v));
        copy->num_vertrefs++;
    }
    object_add_surface(o, copy);
    object_copy_data(source, o);
    if (o->type == OBJECT_LIGHT) o->type = OBJECT_NORMAL; /* a plain record */
    return o;
}

/* Makes the fragments of the object and its subtree and adds them to the
 * world; the sources are left for the caller to delete.  Returns the
 * number of surfaces made. */
static int fragment_subtree(Object *object, float distance, ChildAppender *world_kids)
{
    int made = 0;
    for (Object *o : subtree_objects(object)) {
        for (List *s = o->surfaces; s; s = s->next, made++) {
            Object *piece = fragment_surface(o, (Surface *)s->item, distance);
            append_child(world_kids, piece);
            object_calc_normals(piece);
        }
    }
    return made;
}

int object_fragment(Object *object, float distance)
{
    if (!object || object == world) return 0;
    ChildAppender world_kids = child_appender(world);
    uint32_t h = object_handle(object);
    int made = fragment_subtree(object, distance, &world_kids);
    object = object_from_handle(h);
    if (object) object_delete(object);
    return made;
}

/* Fragments every selected object (an object below another selected one
 * goes with its ancestor), then deletes the sources in one sweep. */
static int fragment_selection(float distance)
{
    std::vector<uint32_t> sources = handles_of_topmost(selection.selected_objects);
    ChildAppender world_kids = child_appender(world);
    int made = 0;
    for (uint32_t h : sources) made += fragment_subtree(object_from_handle(h), distance, &world_kids);
    for (Object *o : detach_objects(sources, 1)) object_free(o);
    return made;
}

static int fragment_selected_with(float distance, const char *running, const char *done)
{
    if (!selection.selected_objects) {
        display_message("%s - select objects first", running);
        return 0;
    }
    record_snapshot(UNDO_SNAPSHOT, distance != 0.0f ? "explode" : "fragment");
    display_message("%s", running);
    set_progress_bar(20);
    int made = fragment_selection(distance);
    set_progress_bar(60);
    clear_selection();
    selection_publish_counts();
    set_progress_bar(70);
    edit_mark_changed();
    redraw_all();
    set_progress_bar(100);
    set_progress_bar(0);
    display_message(done, made);
    return 1;
}

int selected_object_fragment(void)
{
    return fragment_selected_with(0.0f, "fragmenting...", "Fragmented - %d surfaces made");
}

int selected_object_explode(float distance)
{
    if (!(distance == distance) || distance > 3.0e38f || distance < -3.0e38f) {
        display_message("object_explode: the distance must be a finite number");
        return 0;
    }
    return fragment_selected_with(distance, "exploding...", "Exploded - %d surfaces made");
}

/* ---- merging ---- */

/* Appends a list to another whose last node is *tail; returns the new
 * last node and counts the nodes moved. */
static List *splice(List **head, List *tail, List *moved, uint32_t *count)
{
    if (!moved) return tail;
    if (tail) tail->next = moved;
    else *head = moved;
    for (; moved; moved = moved->next) {
        tail = moved;
        (*count)++;
    }
    return tail;
}

/* Moves the vertex and surface records of the object and of its
 * descendants, depth-first, into target. */
static void take_geometry(Object *object, Object *target, List **vtail, List **stail)
{
    for (Object *o : subtree_objects(object)) {
        *vtail = splice(&target->vertices, *vtail, o->vertices, &target->num_vert);
        *stail = splice(&target->surfaces, *stail, o->surfaces, &target->num_surf);
        o->vertices = o->surfaces = nullptr;
        o->num_vert = o->num_surf = 0;
    }
}

int selected_object_merge(void)
{
    if (!selection.selected_objects) {
        display_message("merge - select objects first");
        return 0;
    }
    record_snapshot(UNDO_SNAPSHOT, "merge");
    display_message("merging...");
    Object *merged = new_object(OBJECT_NORMAL);
    object_copy_data((Object *)selection.selected_objects->item, merged);
    /* The record is a plain object: it cannot take a light's type. */
    if (merged->type == OBJECT_LIGHT) merged->type = OBJECT_NORMAL;
    std::vector<uint32_t> sources = handles_of_topmost(selection.selected_objects);
    List *vtail = nullptr, *stail = nullptr;
    for (uint32_t h : sources) take_geometry(object_from_handle(h), merged, &vtail, &stail);
    /* Freed without cleanup: an emptied parent group stays. */
    for (Object *o : detach_objects(sources, 0)) object_free(o);
    object_calculate_centre(merged);
    object_add_child(world, merged);
    clear_selection();
    selection_publish_counts();
    edit_mark_changed();
    redraw_all();
    display_status();
    display_message("merging done");
    return 1;
}
