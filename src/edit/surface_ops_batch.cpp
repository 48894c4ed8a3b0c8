/*
 * edit/surface_ops_batch.cpp - batched object edits and the selected
 * surfaces with their owners (see surface_ops_batch.h).
 */
#include "edit/surface_ops_batch.h"
#include "edit/selection.h"
#include "app/shared_state.h"
#include "view/redraw.h"

#include <cassert>
#include <unordered_set>
#include <vector>

SurfaceEdits::~SurfaceEdits()
{
    for (ObjectEdit *e : edits) delete e;
}

ObjectEdit *edits_for(SurfaceEdits *edits, Object *object)
{
    auto found = edits->by_object.find(object);
    if (found != edits->by_object.end()) return found->second;
    ObjectEdit *e = new ObjectEdit;
    e->object = object;
    appender_start(&e->append, object);
    edits->by_object[object] = e;
    edits->edits.push_back(e);
    return e;
}

void edit_drop_surface(ObjectEdit *edit, Surface *surface)
{
    edit->dropped_surfaces.items.push_back(surface);
}

void edit_drop_vertex(ObjectEdit *edit, Vertex *vertex)
{
    edit->dropped_vertices.items.push_back(vertex);
}

/* 1 when the dropped items stand in the list in the order they were
 * dropped: then, as a list holds each item once, the nodes holding them
 * are exactly the ones met in that order, with no lookup. */
static int dropped_in_list_order(List *head, const DropList *dropped)
{
    size_t next = 0, n = dropped->items.size();
    for (List *l = head; l && next < n; l = l->next) {
        if (l->item == dropped->items[next]) next++;
    }
    return next == n;
}

/* Unlinks the nodes whose items dropped(item) claims, collecting the
 * items in *gone (freed by the caller afterwards, so that the sweep never
 * reads a freed record); returns how many went and leaves the last node
 * kept in *last, the list's new tail. */
template <typename Dropped>
static uint32_t sweep_list(List **head, Dropped dropped, std::vector<void *> *gone, List **last)
{
    uint32_t removed = 0;
    List **link = head;
    *last = nullptr;
    while (*link) {
        List *node = *link;
        if (!dropped(node->item)) {
            *last = node;
            link = &node->next;
            continue;
        }
        *link = node->next;
        gone->push_back(node->item);
        myfree(node);
        removed++;
    }
    return removed;
}

/* Surfaces go at their first node: met one after another when they were
 * dropped in list order, else looked up. */
static void sweep_surfaces(ObjectEdit *e)
{
    Object *o = e->object;
    const std::vector<void *> &dropped = e->dropped_surfaces.items;
    std::vector<void *> gone;
    uint32_t removed;
    if (dropped_in_list_order(o->surfaces, &e->dropped_surfaces)) {
        size_t next = 0;
        auto next_in_order = [&](void *item) {
            if (next == dropped.size() || item != dropped[next]) return false;
            next++;
            return true;
        };
        removed = sweep_list(&o->surfaces, next_in_order, &gone, &e->append.surface_tail);
        assert(next == dropped.size());
    } else {
        PointerTable table;
        ptable_reserve(&table, dropped.size());
        for (void *item : dropped) ptable_set(&table, item, 1);
        removed = sweep_list(
            &o->surfaces, [&](void *item) { return ptable_erase(&table, item) != 0; }, &gone,
            &e->append.surface_tail);
    }
    o->num_surf -= removed;
    for (void *s : gone) surface_free((Surface *)s);
}

/* Vertices are told by their scratch marks: the object's are cleared,
 * the dropped ones set, and each goes at its first node. */
static void sweep_vertices(ObjectEdit *e)
{
    Object *o = e->object;
    for (List *l = o->vertices; l; l = l->next) ((Vertex *)l->item)->mark = 0;
    for (void *v : e->dropped_vertices.items) ((Vertex *)v)->mark = 1;
    std::vector<void *> gone;
    o->num_vert -= sweep_list(
        &o->vertices,
        [](void *item) {
            Vertex *v = (Vertex *)item;
            if (v->mark != 1) return false;
            v->mark = 0;
            return true;
        },
        &gone, &e->append.vertex_tail);
    for (void *v : gone) myfree(v);
}

static void finish_one(ObjectEdit *e)
{
    if (!e->dropped_surfaces.items.empty()) sweep_surfaces(e);
    if (!e->dropped_vertices.items.empty()) sweep_vertices(e);
    assert(e->append.surface_tail == (e->object->surfaces ? list_end(e->object->surfaces) : nullptr));
    assert(e->append.vertex_tail == (e->object->vertices ? list_end(e->object->vertices) : nullptr));
}

void edits_finish(SurfaceEdits *edits)
{
    for (ObjectEdit *e : edits->edits) finish_one(e);
}

/* ---- the selected surfaces ---- */

/* Sets the value of each key still 0 to the object, in depth-first order
 * from o, whose surface list holds it. */
static void find_owners(Object *root, PointerTable *owners, size_t unresolved)
{
    std::vector<Object *> pending(1, root);
    while (!pending.empty() && unresolved) {
        Object *o = pending.back();
        pending.pop_back();
        for (List *s = o->surfaces; s && unresolved; s = s->next) {
            uintptr_t owner;
            if (!ptable_get(owners, s->item, &owner) || owner) continue;
            ptable_set(owners, s->item, (uintptr_t)o);
            unresolved--;
        }
        /* Children pushed in reverse, so they are visited in list order. */
        std::vector<Object *> kids;
        for (List *k = o->kids; k; k = k->next) kids.push_back((Object *)k->item);
        for (auto it = kids.rbegin(); it != kids.rend(); ++it) pending.push_back(*it);
    }
}

std::vector<OwnedSurface> surfaces_with_owners(List *surfaces)
{
    std::vector<OwnedSurface> result;
    if (!surfaces || !world) return result;
    PointerTable owners;
    for (List *s = surfaces; s; s = s->next) ptable_set_if_absent(&owners, s->item, 0);
    find_owners(world, &owners, ptable_size(&owners));
    for (List *s = surfaces; s; s = s->next) {
        Object *owner = (Object *)ptable_value(&owners, s->item);
        if (owner) result.push_back({owner, (Surface *)s->item});
    }
    return result;
}

std::vector<OwnedSurface> whole_selected_surfaces(void)
{
    List *whole = find_selected_whole_surfaces();
    std::vector<OwnedSurface> result = surfaces_with_owners(whole);
    list_free(&whole);
    return result;
}

std::vector<Surface *> object_surfaces(Object *object)
{
    std::vector<Surface *> result;
    result.reserve(object->num_surf);
    for (List *s = object->surfaces; s; s = s->next) result.push_back((Surface *)s->item);
    return result;
}

int no_surfaces_selected(const std::vector<OwnedSurface> &whole)
{
    return whole.empty() && !selection.selected_objects;
}

void recalc_selection_normals(const std::vector<OwnedSurface> &whole)
{
    std::unordered_set<Object *> done;
    for (const OwnedSurface &w : whole) {
        if (done.insert(w.object).second) object_calc_normals_force(w.object);
    }
    for (List *l = selection.selected_objects; l; l = l->next) {
        if (done.insert((Object *)l->item).second) object_calc_normals_force((Object *)l->item);
    }
}

void model_changed_redraw_all(void)
{
    unsaved_changes = 1;
    redraw_all();
}
