/*
 * edit/selection.cpp - the global selection and the object rule that
 * decides, per select mode, what selecting or unselecting an object puts
 * into it or takes out: tree mode the object's top ancestor, object mode
 * the object or, for a group, its leaf descendants, vertex mode the
 * vertices with their owners as part-selected objects.  Hidden objects are
 * never selected.
 *
 * Every list has an index beside it (selection_internal.h): unique
 * insertion is a table lookup and removals are made in one sweep, so
 * selecting or unselecting a million vertices is linear.
 */
#include "edit/selection_internal.h"
#include "app/linked_vars.h"
#include "core/internal.h"
#include "view/redraw.h"

Selection selection = {SELECT_TREE, nullptr, nullptr, nullptr, 0, 0, 0, 0, nullptr, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}};

ListIndex selected_vertex_index;
ListIndex selected_object_index;
ListIndex part_selected_index;

Object *get_current_object(void) { return selection.current_object; }

void clear_selection(void)
{
    ilist_reset(&selection.selected_vertices, &selected_vertex_index);
    ilist_reset(&selection.selected_objects, &selected_object_index);
    ilist_reset(&selection.part_selected_objects, &part_selected_index);
    selection.current_object = nullptr;
    selection.num_selected_vertices = 0;
    selection.num_selected_objects = 0;
    selection.num_part_selected_objects = 0;
    selection.selection_has_extent = 0;
}

int clear_selection_refresh(void)
{
    clear_selection();
    display_status();
    redraw_orth();
    selection_publish_counts();
    return 1;
}

void selection_publish_counts(void)
{
    ui_update_linked_var(&selection.num_selected_vertices);
    ui_update_linked_var(&selection.num_selected_objects);
}

/* ---- counted insertions and removals ---- */

void add_selected_vertex(Vertex *vertex)
{
    if (ilist_add_unique(&selection.selected_vertices, &selected_vertex_index, vertex)) {
        selection.num_selected_vertices++;
    }
}

void add_selected_object(Object *object)
{
    if (ilist_add_unique(&selection.selected_objects, &selected_object_index, object)) {
        selection.num_selected_objects++;
    }
}

void add_part_selected_object(Object *object)
{
    if (ilist_add_unique(&selection.part_selected_objects, &part_selected_index, object)) {
        selection.num_part_selected_objects++;
    }
}

static void request_unselect_vertex(Vertex *vertex)
{
    if (ilist_request_remove(&selected_vertex_index, vertex)) selection.num_selected_vertices--;
}

void request_unselect_object(Object *object)
{
    if (ilist_request_remove(&selected_object_index, object)) selection.num_selected_objects--;
}

static void request_unselect_part_object(Object *object)
{
    if (ilist_request_remove(&part_selected_index, object)) selection.num_part_selected_objects--;
}

void sweep_selection_removals(void)
{
    ilist_sweep(&selection.selected_vertices, &selected_vertex_index);
    ilist_sweep(&selection.selected_objects, &selected_object_index);
    ilist_sweep(&selection.part_selected_objects, &part_selected_index);
}

/* ---- the object rule ---- */

Object *tree_top(Object *object)
{
    if (!object || object == world) return nullptr;
    return object_top_ancestor(object);
}

/* Calls visit on each of the object's vertices, fetching the selection
 * index's slots a few vertices ahead. */
static void visit_vertices(Object *o, void (*visit)(Vertex *))
{
    ListLookahead ahead = lookahead_start(o->vertices);
    for (List *v = o->vertices; v; v = v->next) {
        lookahead_step(&ahead, &selected_vertex_index.counts);
        visit((Vertex *)v->item);
    }
}

void select_rule(Object *o)
{
    switch (selection.select_mode) {
    case SELECT_VERTEX:
        if (o->visible) {
            visit_vertices(o, add_selected_vertex);
            add_part_selected_object(o);
        }
        /* Children are visited even below a hidden object: each child's
         * own visibility decides. */
        for (List *k = o->kids; k; k = k->next) select_rule((Object *)k->item);
        break;
    case SELECT_OBJECT:
        if (!o->visible) break;
        if (!o->kids) {
            add_selected_object(o);
            break;
        }
        for (List *k = o->kids; k; k = k->next) select_rule((Object *)k->item);
        break;
    default: {
        if (!o->visible) break;
        Object *top = tree_top(o);
        if (top) add_selected_object(top);
        break;
    }
    }
}

void unselect_rule(Object *o)
{
    switch (selection.select_mode) {
    case SELECT_VERTEX:
        if (o->visible) {
            visit_vertices(o, request_unselect_vertex);
            request_unselect_part_object(o);
        }
        for (List *k = o->kids; k; k = k->next) unselect_rule((Object *)k->item);
        break;
    case SELECT_OBJECT:
        /* A group is removed as itself: selecting it put its leaves in,
         * unselecting it does not take them out. */
        if (o->visible) request_unselect_object(o);
        break;
    default: {
        if (!o->visible) break;
        Object *top = tree_top(o);
        if (top) request_unselect_object(top);
        break;
    }
    }
}

void update_current_object(void)
{
    selection.current_object = selection.num_selected_objects == 1 && selection.selected_objects
                                   ? (Object *)selection.selected_objects->item
                                   : nullptr;
}

void select_object(Object *object)
{
    if (object) select_rule(object);
    update_current_object();
    find_bounding_box();
}

void unselect_object(Object *object)
{
    if (object) unselect_rule(object);
    sweep_selection_removals();
    update_current_object();
    find_bounding_box();
}

void select_objectlist(List *objects)
{
    for (List *l = objects; l; l = l->next) {
        if (l->item) select_rule((Object *)l->item);
    }
    update_current_object();
    find_bounding_box();
}

void unselect_objectlist(List *objects)
{
    for (List *l = objects; l; l = l->next) {
        if (l->item) unselect_rule((Object *)l->item);
    }
    sweep_selection_removals();
    update_current_object();
    find_bounding_box();
}

int select_all(void)
{
    display_message("select all...");
    clear_selection();
    select_objectlist(world ? world->kids : nullptr);
    display_status();
    redraw_orth();
    display_message("select all done");
    selection_publish_counts();
    return 1;
}

/* ---- vertices ---- */

void select_vertices(List *vertices)
{
    if (selection.select_mode != SELECT_VERTEX) {
        console_printf("select_vertices called when not in VERTEX selectmode\n");
        return;
    }
    for (List *v = vertices; v; v = v->next) add_to_selected_list((Vertex *)v->item);
    find_bounding_box();
}

void add_to_selected_list(Vertex *vertex)
{
    ilist_append(&selection.selected_vertices, &selected_vertex_index, vertex);
    selection.num_selected_vertices++;
}

int unselect_vertices(List *vertices)
{
    int before = selection.num_selected_vertices;
    ListLookahead ahead = lookahead_start(vertices);
    for (List *v = vertices; v; v = v->next) {
        lookahead_step(&ahead, &selected_vertex_index.counts);
        request_unselect_vertex((Vertex *)v->item);
    }
    sweep_selection_removals();
    return before - selection.num_selected_vertices;
}

/* Owner of each key of owners whose value is still 0, as object_of_vertex
 * from the world finds it: the first object in depth-first order whose
 * vertex list holds the vertex.  Stops once every key has its owner. */
static void find_vertex_owners(Object *o, PointerTable *owners, size_t *unresolved)
{
    ListLookahead ahead = lookahead_start(o->vertices);
    for (List *v = o->vertices; v && *unresolved; v = v->next) {
        lookahead_step(&ahead, owners);
        uintptr_t owner;
        if (!ptable_get(owners, v->item, &owner) || owner) continue;
        ptable_set(owners, v->item, (uintptr_t)o);
        (*unresolved)--;
    }
    for (List *k = o->kids; k && *unresolved; k = k->next) {
        find_vertex_owners((Object *)k->item, owners, unresolved);
    }
}

List *selected_vertex_owners(void)
{
    if (!selection.selected_vertices || !world) return nullptr;
    /* Only the selected vertices go into the table, so that one walk of
     * the model answers them all whatever the size of the model. */
    PointerTable owners;
    for (List *v = selection.selected_vertices; v; v = v->next) ptable_set_if_absent(&owners, v->item, 0);
    size_t unresolved = ptable_size(&owners);
    find_vertex_owners(world, &owners, &unresolved);
    List *result = nullptr;
    ListIndex index;
    for (List *v = selection.selected_vertices; v; v = v->next) {
        Object *owner = (Object *)ptable_value(&owners, v->item);
        if (owner) ilist_add_unique(&result, &index, owner);
    }
    return result;
}

/* ---- queries ---- */

int nothing_is_selected(void)
{
    return !selection.selected_vertices && !selection.selected_objects;
}

int object_is_selected(Object *object)
{
    return ilist_contains(&selected_object_index, object) || ilist_contains(&part_selected_index, object);
}

int vertex_is_selected(Vertex *vertex)
{
    return ilist_contains(&selected_vertex_index, vertex);
}

/* ---- handing lists over ---- */

void selection_take_lists(List **vertices, List **objects)
{
    *vertices = selection.selected_vertices;
    *objects = selection.selected_objects;
    /* Detach the lists before clearing, so that only the part-selected
     * list is freed. */
    selection.selected_vertices = nullptr;
    selection.selected_objects = nullptr;
    clear_selection();
}

void selection_adopt_lists(List *vertices, List *objects)
{
    ilist_reset(&selection.selected_vertices, &selected_vertex_index);
    ilist_reset(&selection.selected_objects, &selected_object_index);
    selection.selected_vertices = vertices;
    selection.selected_objects = objects;
    ilist_rebuild(vertices, &selected_vertex_index);
    ilist_rebuild(objects, &selected_object_index);
    selection.num_selected_vertices = (int)list_count(vertices);
    selection.num_selected_objects = (int)list_count(objects);
}
