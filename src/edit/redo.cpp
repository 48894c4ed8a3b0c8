/*
 * edit/redo.cpp - the redo list (see redo.h).  An entry keeps the model as
 * it was just before an undo, in the cheapest form that gives it back bit
 * for bit:
 *
 *   selection  the selection (kind selection);
 *   geometry   every position, centre, frame and normal, by walk position
 *              (move, resize, rotate, vertex positions);
 *   re-add     exact copies of the added objects and where they stood
 *              among the world's children (add object, paste);
 *   in place   an exact copy of the whole model with the items the undo
 *              removes marked (add surface, insert vertex, objects added
 *              below a group): redo moves them back into the live model,
 *              which keeps every other record (model_additions.h);
 *   tree       how many top-level objects a tree delete took out: its
 *              undo puts those very objects back at the end of the
 *              world's children, and redo takes them out again into a
 *              new tree-delete record (delete in tree mode, cut);
 *   model      an exact copy of the whole model (everything else).
 *
 * Entries name objects and vertices by position, never by pointer, and a
 * redo first checks that the model still has the shape the entry was
 * taken from; if not, it says so and changes nothing.  Redoing starts an
 * undo record of the entry's kind, so the redone step can be undone again
 * the way the original could.  Only the kinds whose undo wipes the
 * history (snapshots, tree delete, ungroup) are redone by replacing the
 * whole model: when such an entry is redone the history is already empty,
 * since nothing but its own undo can have happened after that wipe.
 */
#include "edit/redo.h"
#include "edit/model_additions.h"
#include "edit/model_state.h"
#include "core/internal.h"
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "app/linked_vars.h"
#include "app/prefs.h"
#include "core/lights.h"
#include "view/redraw.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <string>

int redo_count = 0;

enum RedoWay { REDO_SELECTION, REDO_GEOMETRY, REDO_READD, REDO_IN_PLACE, REDO_TREE, REDO_MODEL };

struct ReaddedObject {
    Object *copy;        /* owned by the entry until the redo hands it over */
    uint32_t kid_index;  /* place among the world's children before the undo */
};

struct RedoEntry {
    int kind = 0;
    std::string label;
    RedoWay way = REDO_MODEL;
    /* The record's own numbers, so that the redone record undoes alike. */
    float vector[3] = {0, 0, 0};
    float boxes[4][3] = {};
    float rotate_angle = 0;
    int rotate_axis = 0;
    SelectionState done_selection;
    GeometryState done_geometry;
    std::vector<ReaddedObject> readded;
    ModelAdditions additions;
    uint32_t removed_trees = 0;   /* objects a tree delete took out */
    GeometryState undone_geometry;  /* the model just after the tree delete's undo */
    Object *done_model = nullptr;
};

/* Allocated once and never destroyed, like the undo history. */
static std::deque<RedoEntry *> &entries = *new std::deque<RedoEntry *>;
static int held = 0;

static void publish(void)
{
    redo_count = (int)entries.size();
    ui_update_linked_var(&redo_count);
    set_redo_string(entries.empty() ? "" : entries.back()->label.c_str());
}

/* The entry of the undo under way that takes over the model the undo
 * replaces (redo_take_replaced_world), instead of copying it first. */
static RedoEntry *awaiting_world = nullptr;

void redo_discard(RedoEntry *e)
{
    if (!e) return;
    if (awaiting_world == e) awaiting_world = nullptr;
    for (ReaddedObject &r : e->readded) object_free(r.copy);
    if (e->done_model) object_free(e->done_model);
    additions_free(&e->additions);
    delete e;
}

void clear_redo(void)
{
    for (RedoEntry *e : entries) redo_discard(e);
    entries.clear();
    publish();
}

void redo_new_edit(void)
{
    if (held || entries.empty()) return;
    clear_redo();
}

int redo_hold(void)
{
    int previous = held;
    held = 1;
    return previous;
}

void redo_release(int previous)
{
    held = previous;
}

const char *redo_label(void)
{
    return entries.empty() ? nullptr : entries.back()->label.c_str();
}

/* ---- capturing, before the undo ---- */

static int is_geometry_kind(int kind)
{
    return kind == UNDO_MOVE || kind == UNDO_RESIZE || kind == UNDO_ROTATE || kind == UNDO_VERTEX_POSITIONS;
}

static int is_known_kind(int kind)
{
    switch (kind) {
    case UNDO_SELECTION: case UNDO_MOVE: case UNDO_ADD_SURFACE: case UNDO_DELETE_TREE:
    case UNDO_SNAPSHOT_128: case UNDO_ADD_OBJECT: case UNDO_SNAPSHOT_512: case UNDO_UNGROUP:
    case UNDO_REMOVE_SURFACE: case UNDO_RESIZE: case UNDO_ROTATE: case UNDO_VERTEX_POSITIONS:
    case UNDO_ADDED_VERTICES: case UNDO_SNAPSHOT: case UNDO_PASTE:
        return 1;
    default:
        return 0;
    }
}

/* The objects an add-object or paste record added that are still in the
 * model, as direct children of the world with their places; false when
 * one of them hangs elsewhere (the entry then copies the whole model). */
static bool capture_readded(const UndoRecord *r, RedoEntry *e)
{
    std::vector<uint32_t> handles;
    if (r->kind == UNDO_ADD_OBJECT) handles.push_back(r->added_object_handle);
    for (uint32_t i = 0; i < r->num_added_object_handles; i++) handles.push_back(r->added_object_handles[i]);
    PointerTable wanted;
    for (uint32_t h : handles) {
        Object *o = object_from_handle(h);
        if (!o || o == world || !object_exists(o)) continue;
        if (o->parent != world) return false;
        ptable_set_if_absent(&wanted, o, 0);
    }
    uint32_t index = 0;
    for (List *k = world->kids; k; k = k->next, index++) {
        if (!ptable_get(&wanted, k->item, nullptr)) continue;
        e->readded.push_back({copy_object_exact((Object *)k->item), index});
    }
    return true;
}

/* The live records the undo of an additive kind removes. */
static void removed_by_undo(const UndoRecord *r, PointerTable *removed)
{
    if (r->kind == UNDO_ADD_SURFACE && r->surface) ptable_set(removed, r->surface, 1);
    if (r->kind == UNDO_ADDED_VERTICES) {
        for (List *v = r->added_vertices; v; v = v->next) {
            if (v->item) ptable_set(removed, v->item, 1);
        }
    }
    std::vector<uint32_t> handles;
    if (r->kind == UNDO_ADD_OBJECT) handles.push_back(r->added_object_handle);
    if (r->kind == UNDO_PASTE) {
        for (uint32_t i = 0; i < r->num_added_object_handles; i++) handles.push_back(r->added_object_handles[i]);
    }
    for (uint32_t h : handles) {
        Object *o = object_from_handle(h);
        if (o && o != world && object_exists(o)) ptable_set(removed, o, 1);
    }
}

static int is_additive_kind(int kind)
{
    return kind == UNDO_ADD_SURFACE || kind == UNDO_ADDED_VERTICES || kind == UNDO_ADD_OBJECT || kind == UNDO_PASTE;
}

static int replaces_whole_model(const UndoRecord *r)
{
    switch (r->kind) {
    case UNDO_SNAPSHOT_128: case UNDO_SNAPSHOT_512: case UNDO_UNGROUP: case UNDO_REMOVE_SURFACE: case UNDO_SNAPSHOT:
        return r->world_snapshot != nullptr;
    default:
        return 0;
    }
}

RedoEntry *redo_capture(const UndoRecord *r)
{
    if (!r || !world || !is_known_kind(r->kind)) return nullptr;
    RedoEntry *e = new RedoEntry;
    e->kind = r->kind;
    e->label = r->label ? r->label : "";
    memcpy(e->vector, r->vector, sizeof e->vector);
    memcpy(e->boxes[0], r->resize_box_a, sizeof e->boxes[0]);
    memcpy(e->boxes[1], r->resize_box_b, sizeof e->boxes[1]);
    memcpy(e->boxes[2], r->resize_box_c, sizeof e->boxes[2]);
    memcpy(e->boxes[3], r->resize_box_d, sizeof e->boxes[3]);
    e->rotate_angle = r->rotate_angle;
    e->rotate_axis = r->rotate_axis;
    e->done_selection = selection_state_capture();
    if (r->kind == UNDO_SELECTION) {
        e->way = REDO_SELECTION;
    } else if (is_geometry_kind(r->kind)) {
        e->way = REDO_GEOMETRY;
        e->done_geometry = geometry_state_capture();
    } else if ((r->kind == UNDO_ADD_OBJECT || r->kind == UNDO_PASTE) && capture_readded(r, e)) {
        e->way = REDO_READD;
    } else if (r->kind == UNDO_DELETE_TREE && r->removed_objects) {
        e->way = REDO_TREE;
        e->removed_trees = list_count(r->removed_objects);
    } else if (is_additive_kind(r->kind)) {
        for (ReaddedObject &o : e->readded) object_free(o.copy);
        e->readded.clear();
        PointerTable removed;
        removed_by_undo(r, &removed);
        additions_capture(&e->additions, world, removed);
        e->way = REDO_IN_PLACE;
    } else {
        e->way = REDO_MODEL;
        /* A snapshot's undo sets the kept copy in place of the model and
         * hands the model it replaces to this entry: nothing to copy. */
        if (replaces_whole_model(r)) awaiting_world = e;
        else e->done_model = copy_object_exact(world);
    }
    return e;
}

int redo_take_replaced_world(Object *replaced)
{
    if (!awaiting_world || !replaced) return 0;
    /* Its objects are out of the model now: their ids must not find them. */
    for (Object *o : model_walk(replaced)) object_handle_release(o);
    awaiting_world->done_model = replaced;
    awaiting_world = nullptr;
    return 1;
}

/* An in-place entry whose undo removed more than its marked items (an
 * emptied object went too, say) falls back to a model copy. */
static void check_in_place(RedoEntry *e)
{
    if (e->way != REDO_IN_PLACE || additions_fit(e->additions, world)) return;
    debugf("redo %s: the undo removed more than it added - keeping a model copy\n", e->label.c_str());
    e->done_model = e->additions.done;
    e->additions.done = nullptr;
    additions_free(&e->additions);
    e->way = REDO_MODEL;
}

void redo_push(RedoEntry *e)
{
    if (!e) return;
    if (awaiting_world == e) awaiting_world = nullptr;
    if (e->way == REDO_MODEL && !e->done_model) {
        /* The undo kept the model it replaced after all: nothing to redo. */
        redo_discard(e);
        return;
    }
    check_in_place(e);
    /* The shape the model must still have for a tree delete to be redone
     * on the same objects. */
    if (e->way == REDO_TREE) e->undone_geometry = geometry_state_capture();
    entries.push_back(e);
    /* Never more entries than the history may hold records. */
    size_t limit = prefs.undo_levels < 1 ? 1 : (size_t)prefs.undo_levels;
    while (entries.size() > limit) {
        redo_discard(entries.front());
        entries.pop_front();
    }
    publish();
}

/* ---- redoing ---- */

/* 1 when the model can take the entry back. */
static int entry_fits(const RedoEntry *e)
{
    switch (e->way) {
    case REDO_GEOMETRY: return geometry_state_fits(e->done_geometry);
    case REDO_READD: {
        uint32_t kids = list_count(world->kids);
        for (size_t i = 0; i < e->readded.size(); i++) {
            /* Each re-added object goes in before the ones after it. */
            if (e->readded[i].kid_index > kids + i) return 0;
        }
        return 1;
    }
    case REDO_IN_PLACE: return additions_fit(e->additions, world);
    case REDO_TREE:
        return world->num_kids >= e->removed_trees && geometry_state_fits(e->undone_geometry);
    default: return 1;
    }
}

/* A new record for the redone step, of the original kind with its
 * numbers (the selection and the positions are stored by the caller). */
static void start_record(const RedoEntry *e, int kind)
{
    display_message("%s - setting up undo", e->label.c_str());
    UndoRecord *r = new_undo(kind, e->label.c_str());
    memcpy(r->vector, e->vector, sizeof r->vector);
    if (kind == UNDO_RESIZE) set_undo_resize(e->boxes[0], e->boxes[1], e->boxes[2], e->boxes[3]);
    if (kind == UNDO_ROTATE) {
        r->rotate_angle = e->rotate_angle;
        r->rotate_axis = e->rotate_axis;
    }
}

static void redo_selection(RedoEntry *e)
{
    start_record(e, UNDO_SELECTION);
    set_undo_selection(selection.selected_vertices, selection.selected_objects, 0);
}

static void redo_geometry(RedoEntry *e)
{
    start_record(e, e->kind);
    if (e->kind == UNDO_VERTEX_POSITIONS) {
        /* Every vertex: the undo of the redone step puts back exactly the
         * positions the model has now. */
        List *all = nullptr, *tail = nullptr;
        for (Object *o : model_walk(world)) {
            for (List *v = o->vertices; v; v = v->next) tail = list_add_item_fast(&all, tail, v->item);
        }
        set_undo_vertex_positions(all);
        list_free(&all);
    }
    geometry_state_apply(e->done_geometry);
}

static void insert_world_child(Object *child, uint32_t index)
{
    Object *before = index < list_count(world->kids) ? (Object *)list_get_item(world->kids, index) : nullptr;
    if (!before) {
        object_add_child(world, child);
        return;
    }
    list_insert_item(&world->kids, before, child);
    child->parent = world;
    world->num_kids++;
}

static void redo_readd(RedoEntry *e)
{
    start_record(e, e->kind);
    std::vector<ReaddedObject> objects;
    objects.swap(e->readded);
    std::sort(objects.begin(), objects.end(),
              [](const ReaddedObject &a, const ReaddedObject &b) { return a.kid_index < b.kid_index; });
    if (e->kind == UNDO_ADD_OBJECT && objects.size() == 1) {
        set_undo_object(objects[0].copy);
    } else {
        List *added = nullptr, *tail = nullptr;
        for (ReaddedObject &o : objects) tail = list_add_item_fast(&added, tail, o.copy);
        set_undo_objectlist(added);
        list_free(&added);
        /* An add-object record whose object was gone by the undo undoes
         * as a paste of nothing: it puts the selection back. */
        undo_current()->kind = UNDO_PASTE;
    }
    for (ReaddedObject &o : objects) insert_world_child(o.copy, o.kid_index);
    scan_lights();
}

static void redo_in_place(RedoEntry *e)
{
    start_record(e, e->kind);
    PutBack back;
    additions_put_back(&e->additions, world, &back);
    switch (e->kind) {
    case UNDO_ADD_SURFACE:
        set_undo_surface(back.surfaces.empty() ? nullptr : back.surfaces[0]);
        break;
    case UNDO_ADDED_VERTICES: {
        List *added = nullptr, *tail = nullptr;
        for (Vertex *v : back.vertices) tail = list_add_item_fast(&added, tail, v);
        set_undo_vertices(added);
        list_free(&added);
        break;
    }
    default: {
        if (e->kind == UNDO_ADD_OBJECT && back.objects.size() == 1) {
            set_undo_object(back.objects[0]);
            break;
        }
        List *added = nullptr, *tail = nullptr;
        for (Object *o : back.objects) tail = list_add_item_fast(&added, tail, o);
        set_undo_objectlist(added);
        list_free(&added);
        undo_current()->kind = UNDO_PASTE;
        break;
    }
    }
    scan_lights();
}

/* The undo appended the objects it put back, in the record's order, to
 * the world's children: the last ones are they.  They are selected in
 * tree mode and taken out by the tree delete itself. */
static void redo_tree(RedoEntry *e)
{
    start_record(e, UNDO_DELETE_TREE);
    clear_selection();
    selection.select_mode = SELECT_TREE;
    uint32_t skip = world->num_kids - e->removed_trees;
    List *k = world->kids;
    for (uint32_t i = 0; i < skip && k; i++) k = k->next;
    for (; k; k = k->next) select_object((Object *)k->item);
    set_undo_delete_selection();
    clear_selection();
}

static void redo_model(RedoEntry *e)
{
    /* Only the kinds whose undo wiped the history come here, so this
     * drops nothing; it stays as the guard that no older record can
     * point into the model this replaces. */
    clear_all_undos();
    int kind = e->kind;
    if (kind != UNDO_SNAPSHOT_128 && kind != UNDO_SNAPSHOT_512 && kind != UNDO_UNGROUP && kind != UNDO_REMOVE_SURFACE)
        kind = UNDO_SNAPSHOT;
    start_record(e, kind);
    clear_selection();
    /* The model this replaces is the redone step's "before": the new
     * record keeps it rather than a copy of it. */
    Object *replaced = world;
    world = e->done_model;
    e->done_model = nullptr;
    set_undo_all_taking(replaced);
    scan_lights();
}

int REDO(void)
{
    if (entries.empty()) {
        console_printf("nothing to REDO!\n");
        display_message("nothing to redo");
        return 0;
    }
    RedoEntry *e = entries.back();
    if (!world || !entry_fits(e)) {
        /* Something changed the model without an undo record since. */
        display_message("redo %s - the model has changed since the undo, nothing redone", e->label.c_str());
        console_printf("redo %s: the model no longer has the shape it had before the undo\n", e->label.c_str());
        clear_redo();
        return 0;
    }
    entries.pop_back();
    display_message("redo...");
    int previous = redo_hold();
    switch (e->way) {
    case REDO_SELECTION: redo_selection(e); break;
    case REDO_GEOMETRY: redo_geometry(e); break;
    case REDO_READD: redo_readd(e); break;
    case REDO_IN_PLACE: redo_in_place(e); break;
    case REDO_TREE: redo_tree(e); break;
    case REDO_MODEL: redo_model(e); break;
    }
    edit_mark_changed();
    redo_release(previous);
    selection_state_restore(e->done_selection);
    redo_discard(e);
    publish();
    redraw_all();
    display_message("redo done");
    display_status();
    return 1;
}
