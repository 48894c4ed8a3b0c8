/*
 * edit/surface_ops_batch.cpp - batched object edits and the selected
 * surfaces with their owners (see surface_ops_batch.h).
 */
#include "edit/surface_ops_batch.h"
#include "edit/selection.h"
#include "app/shared_state.h"
#include "view/redraw.h"

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
    ptable_set(&edit->dropped_surfaces, surface, 1);
}

void edit_drop_vertex(ObjectEdit *edit, Vertex *vertex)
{
    ptable_set(&edit->dropped_vertices, vertex, 1);
}

/* Unlinks the nodes whose items are in the table; returns how many went.
 * Each dropped item is unlinked once, at its first node. */
static uint32_t sweep_list(List **head, PointerTable *dropped, void (*release)(void *))
{
    uint32_t removed = 0;
    List **link = head;
    while (*link) {
        List *node = *link;
        if (!ptable_erase(dropped, node->item)) {
            link = &node->next;
            continue;
        }
        *link = node->next;
        release(node->item);
        myfree(node);
        removed++;
    }
    return removed;
}

static void release_surface(void *s) { surface_free((Surface *)s); }
static void release_vertex(void *v) { myfree(v); }

static void finish_one(ObjectEdit *e)
{
    Object *o = e->object;
    if (ptable_size(&e->dropped_surfaces)) o->num_surf -= sweep_list(&o->surfaces, &e->dropped_surfaces, release_surface);
    if (ptable_size(&e->dropped_vertices)) o->num_vert -= sweep_list(&o->vertices, &e->dropped_vertices, release_vertex);
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
