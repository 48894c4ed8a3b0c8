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

/* Unlinks the nodes whose items were dropped, freeing each item once (at
 * its first node); returns how many went. */
static uint32_t sweep_list(List **head, const DropList *dropped, void (*release)(void *))
{
    const bool in_order = dropped_in_list_order(*head, dropped);
    PointerTable table;
    if (!in_order) {
        ptable_reserve(&table, dropped->items.size());
        for (void *item : dropped->items) ptable_set(&table, item, 1);
    }
    size_t next = 0;
    uint32_t removed = 0;
    List **link = head;
    while (*link) {
        List *node = *link;
        bool drop = in_order ? next < dropped->items.size() && node->item == dropped->items[next]
                             : ptable_erase(&table, node->item);
        if (!drop) {
            link = &node->next;
            continue;
        }
        next++;
        *link = node->next;
        release(node->item);
        myfree(node);
        removed++;
    }
    assert(!in_order || next == dropped->items.size());
    return removed;
}

static void release_surface(void *s) { surface_free((Surface *)s); }
static void release_vertex(void *v) { myfree(v); }

static void finish_one(ObjectEdit *e)
{
    Object *o = e->object;
    if (!e->dropped_surfaces.items.empty())
        o->num_surf -= sweep_list(&o->surfaces, &e->dropped_surfaces, release_surface);
    if (!e->dropped_vertices.items.empty())
        o->num_vert -= sweep_list(&o->vertices, &e->dropped_vertices, release_vertex);
    appender_refresh(&e->append);
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
