/*
 * edit/undo.cpp - the undo history (see undo.h): a linear list of
 * records, oldest first, at most "undo_levels" long.  Each record holds
 * what its operation needs to be reverted: a vector, boxes, an angle,
 * saved positions, added or removed objects, a copy of the selection, or
 * a whole-model snapshot.  Undoing a snapshot, a tree delete or an
 * ungroup wipes the whole history, because the older records may point
 * into the model that the snapshot replaced.
 *
 * Records point into the model.  Before an undo writes through such a
 * pointer it checks that the object or vertex is still in the model (by
 * handle, or with one walk of the model), so that a record left behind by
 * an edit that kept no undo can never reach freed memory.
 */
#include "edit/undo.h"
#include "edit/model_state.h"
#include "core/internal.h"
#include "edit/redo.h"
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "edit/transform.h"
#include "app/linked_vars.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "core/lights.h"
#include "view/redraw.h"

#include <cstring>
#include <deque>
#include <string>
#include <vector>

/* Allocated once and never destroyed: the records still in the history
 * at exit stay reachable instead of being orphaned by the container's
 * destructor. */
static std::deque<UndoRecord *> &history = *new std::deque<UndoRecord *>;
static UndoRecord *current = nullptr;

static void publish_count(void)
{
    undo_count = (int)history.size();
    ui_update_linked_var(&undo_count);
}

static const char *label_of(const UndoRecord *r)
{
    return r && r->label ? r->label : "";
}

/* ---- records ---- */

static void free_record(UndoRecord *r)
{
    debugf("freeing undo for %s\n", label_of(r));
    myfree(r->label);
    list_free(&r->saved_vertices);
    if (r->saved_objects_owned) {
        for (List *l = r->saved_objects; l; l = l->next) object_free((Object *)l->item);
    }
    list_free(&r->saved_objects);
    if (r->world_snapshot) object_free(r->world_snapshot);
    list_free(&r->added_vertices);
    list_free_all(&r->vertex_positions);
    list_free(&r->added_objects);
    /* Objects a tree delete took out of the model live only here. */
    for (List *l = r->removed_objects; l; l = l->next) object_free((Object *)l->item);
    list_free(&r->removed_objects);
    myfree(r->added_object_handles);
    myfree(r);
}

UndoRecord *new_undo(int kind, const char *label)
{
    debugf("setting up undo for %s\n", label ? label : "");
    redo_new_edit();
    UndoRecord *r = (UndoRecord *)myalloc(sizeof(UndoRecord));
    memset(r, 0, sizeof *r);
    r->kind = kind;
    r->label = mystrdup(label);
    history.push_back(r);
    current = r;
    /* One record goes per call, and never the one just started. */
    int limit = prefs.undo_levels < 1 ? 1 : prefs.undo_levels;
    if ((int)history.size() > limit) {
        UndoRecord *oldest = history.front();
        history.pop_front();
        free_record(oldest);
    }
    publish_count();
    set_undo_string(label);
    return r;
}

UndoRecord *undo_current(void)
{
    return current;
}

void clear_all_undos(void)
{
    redo_new_edit();
    for (UndoRecord *r : history) free_record(r);
    history.clear();
    current = nullptr;
    publish_count();
    set_undo_string("");
}

/* Removes the current record after it was undone; the one before it
 * becomes current. */
static void drop_current(void)
{
    for (auto it = history.begin(); it != history.end(); ++it) {
        if (*it != current) continue;
        history.erase(it);
        free_record(current);
        break;
    }
    current = history.empty() ? nullptr : history.back();
    publish_count();
    set_undo_string(current ? current->label : "");
}

/* ---- storing ---- */

static int have_record(const char *message)
{
    if (current) return 1;
    console_printf("%s", message);
    return 0;
}

static const char vert_message[] = "set_undo_vert - cal new_undo first!\n";

void set_undo_vert(float x, float y, float z)
{
    if (!have_record(vert_message)) return;
    current->vector[0] = x;
    current->vector[1] = y;
    current->vector[2] = z;
}

void set_undo_vertref(SVertex *ref)
{
    if (!have_record(vert_message)) return;
    current->vertref = ref;
}

void set_undo_vertices(List *vertices)
{
    if (!have_record(vert_message)) return;
    list_free(&current->added_vertices);
    current->added_vertices = list_clone(vertices);
}

/* Appends one saved position per point to the record's list. */
struct PositionAppender {
    List **head;
    List *tail;
};

static PositionAppender position_appender(void)
{
    PositionAppender a = {&current->vertex_positions, nullptr};
    if (*a.head) a.tail = list_end(*a.head);
    return a;
}

static void append_position(PositionAppender *a, Vertex *v)
{
    VertexPosition *p = (VertexPosition *)myalloc(sizeof(VertexPosition));
    p->vertex = v;
    p->x = v->point[0];
    p->y = v->point[1];
    p->z = v->point[2];
    a->tail = list_add_item_fast(a->head, a->tail, p);
}

void set_undo_vertex_positions(List *vertices)
{
    if (!have_record(vert_message)) return;
    PositionAppender a = position_appender();
    for (List *v = vertices; v; v = v->next) {
        if (v->item) append_position(&a, (Vertex *)v->item);
    }
}

void set_undo_selected_vertex_positions(void)
{
    if (!have_record(vert_message)) return;
    PositionAppender a = position_appender();
    for (List *v = selection.selected_vertices; v; v = v->next) append_position(&a, (Vertex *)v->item);
    for (List *l = selection.selected_objects; l; l = l->next) {
        for (Object *o : subtree_objects((Object *)l->item)) {
            for (List *v = o->vertices; v; v = v->next) append_position(&a, (Vertex *)v->item);
        }
    }
}

/* Stores copies of the two selection lists and the select mode. */
static void save_selection_copies(void)
{
    list_free(&current->saved_vertices);
    list_free(&current->saved_objects);
    current->saved_vertices = list_clone(selection.selected_vertices);
    current->saved_objects = list_clone(selection.selected_objects);
    current->select_mode = selection.select_mode;
}

void set_undo_object(Object *object)
{
    if (!have_record("set_undo_object - cal new_undo first!\n")) return;
    save_selection_copies();
    current->added_object = object;
    current->added_object_handle = object_handle(object);
}

void set_undo_objectlist(List *objects)
{
    if (!have_record("set_undo_objectlist - cal new_undo first!\n")) return;
    save_selection_copies();
    list_free(&current->added_objects);
    myfree(current->added_object_handles);
    current->added_objects = list_clone(objects);
    unsigned int n = list_count(objects);
    current->added_object_handles = n ? (uint32_t *)myalloc(n * (unsigned int)sizeof(uint32_t)) : nullptr;
    current->num_added_object_handles = n;
    unsigned int i = 0;
    for (List *l = objects; l; l = l->next) current->added_object_handles[i++] = object_handle((Object *)l->item);
}

void set_undo_selection(List *vertices, List *objects, int hand_over)
{
    if (!have_record("set_undo_selection(List - cal new_undo first!\n")) return;
    list_free(&current->saved_vertices);
    list_free(&current->saved_objects);
    current->select_mode = selection.select_mode;
    if (!hand_over) {
        current->saved_vertices = list_clone(vertices);
        current->saved_objects = list_clone(objects);
        return;
    }
    /* The record takes the lists over and the selection is left empty. */
    if (vertices == selection.selected_vertices && objects == selection.selected_objects) {
        selection_take_lists(&current->saved_vertices, &current->saved_objects);
    } else {
        current->saved_vertices = vertices;
        current->saved_objects = objects;
        clear_selection();
    }
    selection_publish_counts();
}

void set_undo_surface(Surface *surface)
{
    if (!have_record("set_undo_surface - cal new_undo first!\n")) return;
    current->surface = surface;
}

void set_undo_partselected(void)
{
    if (!current) return;
    if (current->saved_objects && !current->saved_objects_owned) list_free(&current->saved_objects);
    List *tail = current->saved_objects ? list_end(current->saved_objects) : nullptr;
    for (List *l = selection.part_selected_objects; l; l = l->next) {
        tail = list_add_item_fast(&current->saved_objects, tail, object_clone((Object *)l->item));
    }
    for (List *l = selection.selected_objects; l; l = l->next) {
        tail = list_add_item_fast(&current->saved_objects, tail, object_clone((Object *)l->item));
    }
    current->saved_objects_owned = 1;
}

void set_undo_all(void)
{
    if (!current || !world) return;
    if (current->world_snapshot) object_free(current->world_snapshot);
    /* An exact copy: a copy that matched references by position would
     * merge coincident vertices and give back a different model. */
    current->world_snapshot = copy_object_exact(world);
}

void set_undo_all_taking(Object *replaced)
{
    if (!current || !replaced) return;
    if (current->world_snapshot) object_free(current->world_snapshot);
    for (Object *o : model_walk(replaced)) object_handle_release(o);
    current->world_snapshot = replaced;
}

/* Takes the selected top-level objects out of the world, in selection
 * order, with one sweep of the world's children. */
static List *detach_selected_trees(void)
{
    PointerTable chosen;
    for (List *l = selection.selected_objects; l; l = l->next) {
        Object *o = (Object *)l->item;
        if (o && o != world && o->parent == world) ptable_set_if_absent(&chosen, o, 0);
    }
    List **link = &world->kids;
    while (*link) {
        if (!ptable_get(&chosen, (*link)->item, nullptr)) {
            link = &(*link)->next;
            continue;
        }
        List *gone = *link;
        *link = gone->next;
        ((Object *)gone->item)->parent = nullptr;
        world->num_kids--;
        myfree(gone);
    }
    List *removed = nullptr, *tail = nullptr;
    for (List *l = selection.selected_objects; l; l = l->next) {
        uintptr_t taken;
        if (!ptable_get(&chosen, l->item, &taken) || taken) continue;
        ptable_set(&chosen, l->item, 1);
        tail = list_add_item_fast(&removed, tail, l->item);
    }
    return removed;
}

int set_undo_delete_selection(void)
{
    if (!current || !world) return 0;
    switch (selection.select_mode) {
    case SELECT_TREE: {
        List *removed = detach_selected_trees();
        List *tail = current->removed_objects ? list_end(current->removed_objects) : nullptr;
        for (List *l = removed; l; l = l->next) tail = list_add_item_fast(&current->removed_objects, tail, l->item);
        list_free(&removed);
        scan_lights();
        return 1;
    }
    case SELECT_OBJECT:
    case SELECT_VERTEX:
        current->kind = UNDO_SNAPSHOT;
        set_undo_all();
        return 0;
    default:
        return 0;
    }
}

void set_undo_resize(const float *a, const float *b, const float *c, const float *d)
{
    if (!current) return;
    memcpy(current->resize_box_a, a, sizeof current->resize_box_a);
    memcpy(current->resize_box_b, b, sizeof current->resize_box_b);
    memcpy(current->resize_box_c, c, sizeof current->resize_box_c);
    memcpy(current->resize_box_d, d, sizeof current->resize_box_d);
}

void set_undo_rotate(int view, const float *centre, float angle)
{
    if (!current) return;
    current->rotate_axis = view;
    memcpy(current->vector, centre, sizeof current->vector);
    current->rotate_angle = angle;
}

/* ---- reverting ---- */

/* The common end of kinds selection, add object and paste: the saved
 * selection comes back (what of it is still in the model), in its mode. */
static void restore_selection(UndoRecord *r)
{
    clear_selection();
    if (r->select_mode >= SELECT_TREE && r->select_mode <= SELECT_VERTEX) selection.select_mode = r->select_mode;
    List *vertices = r->saved_vertices, *objects = r->saved_objects_owned ? nullptr : r->saved_objects;
    r->saved_vertices = nullptr;
    if (objects) r->saved_objects = nullptr;
    selection_adopt_lists(vertices, objects);
    /* The part-selected list and the current object stay empty until the
     * next selection change. */
    selection_forget_dead();
    selection.current_object = nullptr;
    find_bounding_box();
    redraw_all();
    set_new_select_mode_ui(selection.select_mode);
    selection_publish_counts();
    drop_current();
}

static void finish_geometry_undo(int normals)
{
    drop_current();
    find_bounding_box();
    if (normals) selected_calc_normals();
    redraw_all();
}

static void undo_delete_surface(UndoRecord *r)
{
    Object *owner = r->surface && world ? object_of_surface(world, r->surface) : nullptr;
    if (owner) object_delete_surface(owner, r->surface);
    else debugf("undo add surface - surface no longer exists\n");
    drop_current();
    redraw_all();
}

static void undo_tree_delete(UndoRecord *r)
{
    List *removed = r->removed_objects;
    r->removed_objects = nullptr;
    ChildAppender kids = child_appender(world);
    for (List *l = removed; l; l = l->next) append_child(&kids, (Object *)l->item);
    select_objectlist(removed);
    selection_publish_counts();
    list_free(&removed);
    drop_current();
    clear_all_undos();
    scan_lights();
    find_bounding_box();
    redraw_all();
}

static void undo_snapshot(UndoRecord *r)
{
    Object *snapshot = r->world_snapshot;
    if (!snapshot) {
        console_printf("undo %s: no copy of the model was kept - nothing to restore\n", label_of(r));
        drop_current();
        return;
    }
    r->world_snapshot = nullptr;
    clear_selection();
    selection_publish_counts();
    if (!redo_take_replaced_world(world)) object_delete(world);
    world = snapshot;
    clear_all_undos();
    scan_lights();
    redraw_all();
}

static void undo_add_object(UndoRecord *r)
{
    Object *o = object_from_handle(r->added_object_handle);
    if (o && o != world && object_exists(o)) object_delete(o);
    else debugf("undo add ob - object no longer exists\n");
    restore_selection(r);
}

static void undo_paste(UndoRecord *r)
{
    for (uint32_t i = 0; i < r->num_added_object_handles; i++) {
        Object *o = object_from_handle(r->added_object_handles[i]);
        if (o && o != world && object_exists(o)) object_delete(o);
    }
    restore_selection(r);
}

static void undo_vertex_positions(UndoRecord *r)
{
    PointerTable owners;
    for (List *l = r->vertex_positions; l; l = l->next) {
        ptable_set_if_absent(&owners, ((VertexPosition *)l->item)->vertex, 0);
    }
    find_vertex_owners(&owners);
    for (List *l = r->vertex_positions; l; l = l->next) {
        VertexPosition *p = (VertexPosition *)l->item;
        if (!ptable_value(&owners, p->vertex)) continue;
        p->vertex->point[0] = p->x;
        p->vertex->point[1] = p->y;
        p->vertex->point[2] = p->z;
    }
    list_free_all(&r->vertex_positions);
    finish_geometry_undo(1);
}

static void undo_added_vertices(UndoRecord *r)
{
    unselect_vertices(r->added_vertices);
    int objects_deleted = 0;
    delete_vertices(r->added_vertices, &objects_deleted);
    if (objects_deleted) selection_forget_dead();
    list_free(&r->added_vertices);
    selection_publish_counts();
    finish_geometry_undo(1);
}

/* Reverts the record by its kind; returns 0 for a kind with no action. */
static int revert(UndoRecord *r)
{
    switch (r->kind) {
    case UNDO_SELECTION: restore_selection(r); return 1;
    case UNDO_MOVE:
        subtract_point_from_all_selected(r->vector);
        finish_geometry_undo(1);
        return 1;
    case UNDO_ADD_SURFACE: undo_delete_surface(r); return 1;
    case UNDO_DELETE_TREE: undo_tree_delete(r); return 1;
    case UNDO_SNAPSHOT_128:
    case UNDO_SNAPSHOT_512:
    case UNDO_UNGROUP:
    case UNDO_REMOVE_SURFACE:
    case UNDO_SNAPSHOT: undo_snapshot(r); return 1;
    case UNDO_ADD_OBJECT: undo_add_object(r); return 1;
    case UNDO_RESIZE:
        resize_selected_to_bounding_box(r->resize_box_c, r->resize_box_d, r->resize_box_a, r->resize_box_b);
        finish_geometry_undo(1);
        return 1;
    case UNDO_ROTATE:
        rotate_selected(-r->rotate_angle, r->rotate_axis, r->vector);
        finish_geometry_undo(1);
        return 1;
    case UNDO_VERTEX_POSITIONS: undo_vertex_positions(r); return 1;
    case UNDO_ADDED_VERTICES: undo_added_vertices(r); return 1;
    case UNDO_PASTE: undo_paste(r); return 1;
    default: return 0;
    }
}

int UNDO(void)
{
    if (!current) {
        console_printf("nothing to UNDO!\n");
        return 0;
    }
    display_message("undo...");
    RedoEntry *again = redo_capture(current);
    /* The undos that wipe the history keep the redo list. */
    int previous = redo_hold();
    int reverted = revert(current);
    if (reverted) edit_mark_changed();
    redo_release(previous);
    /* A kind without an action stays current and reverts nothing. */
    if (reverted) {
        redo_push(again);
    } else {
        redo_discard(again);
    }
    display_message("undo done");
    display_status();
    return 1;
}

/* ---- the history as the user sees it ---- */

int command_undo_history(void)
{
    command_result_set("");
    const char *sep = "";
    for (const UndoRecord *r : history) {
        /* Braces and backslashes would break the list the scripts read. */
        std::string label = label_of(r);
        for (char &c : label) {
            if (c == '{' || c == '}' || c == '\\') c = '?';
        }
        command_result_appendf("%s{%s}", sep, label.c_str());
        sep = " ";
    }
    return 1;
}

int command_undo_to(int step)
{
    if (step < 0 || step >= (int)history.size()) {
        display_message("undo to step %d - the history has no such step", step);
        return 0;
    }
    /* Each undo takes back one record; one that wipes the history or
     * reverts nothing ends the walk. */
    while ((int)history.size() > step) {
        size_t before = history.size();
        UndoRecord *was = current;
        UNDO();
        if (history.size() >= before || current == was) break;
    }
    return 1;
}
