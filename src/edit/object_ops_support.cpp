/*
 * edit/object_ops_support.cpp - bulk helpers of the editing operations
 * and the undo history: owners of many vertices, deleting many vertices,
 * appending many children, walking and detaching many objects.  Each
 * works in one pass over the lists it touches, so that operations on a
 * million vertices stay linear.  (Exact copies of a subtree are in
 * object_copy_exact.cpp, the selection's clean-up after deletions in
 * selection_forget.cpp.)
 */
#include "edit/object_ops.h"
#include "core/internal.h"
#include "edit/redo.h"
#include "edit/selection.h"
#include "app/linked_vars.h"
#include "app/shared_state.h"
#include "core/lights.h"

#include <algorithm>
#include <cstring>
#include <vector>

void edit_mark_changed(void)
{
    /* Any change of the model makes what redo would put back stale. */
    redo_new_edit();
    unsaved_changes = 1;
    ui_update_linked_var(&unsaved_changes);
}

/* ---- finding owners ---- */

void find_vertex_owners(PointerTable *owners)
{
    size_t unresolved = 0;
    for (const PointerSlot &s : owners->slots) unresolved += s.key && !s.value;
    if (!world || !unresolved) return;
    std::vector<Object *> pending(1, world);
    while (!pending.empty() && unresolved) {
        Object *o = pending.back();
        pending.pop_back();
        for (List *v = o->vertices; v && unresolved; v = v->next) {
            uintptr_t owner;
            if (!ptable_get(owners, v->item, &owner) || owner) continue;
            ptable_set(owners, v->item, (uintptr_t)o);
            unresolved--;
        }
        /* Children in reverse onto the stack: visited in list order, as a
         * depth-first search from the world would. */
        size_t first = pending.size();
        for (List *k = o->kids; k; k = k->next) pending.push_back((Object *)k->item);
        std::reverse(pending.begin() + (long)first, pending.end());
    }
}

List *owners_of_vertices(List *vertices)
{
    PointerTable owners;
    for (List *v = vertices; v; v = v->next) {
        if (v->item) ptable_set_if_absent(&owners, v->item, 0);
    }
    find_vertex_owners(&owners);
    List *result = nullptr, *tail = nullptr;
    PointerTable seen;
    for (List *v = vertices; v; v = v->next) {
        Object *owner = v->item ? (Object *)ptable_value(&owners, v->item) : nullptr;
        if (owner && ptable_set_if_absent(&seen, owner, 1)) tail = list_add_item_fast(&result, tail, owner);
    }
    return result;
}

void find_live_objects(PointerTable *live)
{
    if (!world) return;
    std::vector<Object *> pending(1, world);
    while (!pending.empty()) {
        Object *o = pending.back();
        pending.pop_back();
        ptable_set(live, o, 1);
        for (List *k = o->kids; k; k = k->next) pending.push_back((Object *)k->item);
    }
}

/* ---- deleting many vertices ---- */

/* Unlinks the references to doomed vertices from the surface; returns 1
 * when the surface is left without references. */
static int surface_drop_refs(Surface *s, const PointerTable *doomed)
{
    List **link = &s->vertrefs;
    while (*link) {
        SVertex *ref = (SVertex *)(*link)->item;
        if (!ptable_get(doomed, ref->vertex, nullptr)) {
            link = &(*link)->next;
            continue;
        }
        surface_unlink_ref(s, link);
    }
    return s->vertrefs == nullptr;
}

/* Deletes the object's vertices that doomed maps to it; returns how many. */
static unsigned int object_drop_vertices(Object *o, const PointerTable *doomed)
{
    unsigned int n = 0;
    List **link = &o->vertices;
    std::vector<Vertex *> freed;
    while (*link) {
        uintptr_t owner;
        if (!ptable_get(doomed, (*link)->item, &owner) || owner != (uintptr_t)o) {
            link = &(*link)->next;
            continue;
        }
        List *gone = *link;
        *link = gone->next;
        freed.push_back((Vertex *)gone->item);
        myfree(gone);
        o->num_vert--;
        n++;
    }
    if (!n) return 0;
    /* As object_delete_vertex: every surface left without references
     * goes, also one that had none before. */
    link = &o->surfaces;
    while (*link) {
        Surface *s = (Surface *)(*link)->item;
        if (!surface_drop_refs(s, doomed)) {
            link = &(*link)->next;
            continue;
        }
        List *gone = *link;
        *link = gone->next;
        myfree(gone);
        o->num_surf--;
        surface_free(s);
    }
    for (Vertex *v : freed) myfree(v);
    return n;
}

unsigned int delete_vertices(List *vertices, int *objects_deleted)
{
    if (objects_deleted) *objects_deleted = 0;
    PointerTable doomed;
    for (List *v = vertices; v; v = v->next) {
        if (v->item) ptable_set_if_absent(&doomed, v->item, 0);
    }
    find_vertex_owners(&doomed);
    std::vector<Object *> owners;
    PointerTable seen;
    for (List *v = vertices; v; v = v->next) {
        Object *owner = v->item ? (Object *)ptable_value(&doomed, v->item) : nullptr;
        if (owner && ptable_set_if_absent(&seen, owner, 1)) owners.push_back(owner);
    }
    unsigned int n = 0;
    std::vector<uint32_t> emptied;
    for (Object *o : owners) {
        n += object_drop_vertices(o, &doomed);
        if (o != world && !o->vertices && !o->surfaces && !o->kids) emptied.push_back(object_handle(o));
    }
    /* By handle: deleting one emptied object may already have deleted
     * another (an emptied group above it). */
    for (uint32_t h : emptied) {
        Object *o = object_from_handle(h);
        if (!o) continue;
        debugf("removing empty object %lx \n", (unsigned long)(uintptr_t)o);
        object_delete(o);
        if (objects_deleted) *objects_deleted = 1;
    }
    return n;
}

/* ---- appending children ---- */

ChildAppender child_appender(Object *parent)
{
    ChildAppender a = {parent, parent->kids ? list_end(parent->kids) : nullptr};
    return a;
}

void append_child(ChildAppender *a, Object *child)
{
    a->tail = list_add_item_fast(&a->parent->kids, a->tail, child);
    child->parent = a->parent;
    a->parent->num_kids++;
}

/* ---- walking and detaching many objects ---- */

std::vector<Object *> subtree_objects(Object *object)
{
    std::vector<Object *> order, pending;
    if (object) pending.push_back(object);
    while (!pending.empty()) {
        Object *o = pending.back();
        pending.pop_back();
        order.push_back(o);
        size_t first = pending.size();
        for (List *k = o->kids; k; k = k->next) pending.push_back((Object *)k->item);
        std::reverse(pending.begin() + (long)first, pending.end());
    }
    return order;
}

std::vector<uint32_t> handles_of(List *objects)
{
    std::vector<uint32_t> handles;
    for (List *l = objects; l; l = l->next) {
        if (l->item && l->item != world) handles.push_back(object_handle((Object *)l->item));
    }
    return handles;
}

std::vector<uint32_t> handles_of_topmost(List *objects)
{
    PointerTable listed;
    for (List *l = objects; l; l = l->next) ptable_set(&listed, l->item, 1);
    std::vector<uint32_t> handles;
    for (List *l = objects; l; l = l->next) {
        Object *o = (Object *)l->item;
        if (!o || o == world) continue;
        Object *up = o->parent;
        while (up && !ptable_get(&listed, up, nullptr)) up = up->parent;
        if (!up) handles.push_back(object_handle(o));
    }
    return handles;
}

/* Unlinks the chosen children of parent in one sweep. */
static void sweep_children(Object *parent, const PointerTable *chosen)
{
    List **link = &parent->kids;
    while (*link) {
        if (!ptable_get(chosen, (*link)->item, nullptr)) {
            link = &(*link)->next;
            continue;
        }
        List *gone = *link;
        *link = gone->next;
        ((Object *)gone->item)->parent = nullptr;
        parent->num_kids--;
        myfree(gone);
    }
}

std::vector<Object *> detach_objects(const std::vector<uint32_t> &handles, int cleanup)
{
    PointerTable chosen, parent_seen;
    std::vector<Object *> parents;
    for (uint32_t h : handles) {
        Object *o = object_from_handle(h);
        if (!o || o == world || !ptable_set_if_absent(&chosen, o, 1)) continue;
        if (o->parent && ptable_set_if_absent(&parent_seen, o->parent, 1)) parents.push_back(o->parent);
    }
    std::vector<uint32_t> parent_handles;
    for (Object *p : parents) {
        sweep_children(p, &chosen);
        parent_handles.push_back(object_handle(p));
    }
    if (cleanup) {
        /* By handle: one deletion may cascade to a parent listed later. */
        for (uint32_t h : parent_handles) {
            Object *p = object_from_handle(h);
            if (p && p != world && !p->kids && !p->vertices) object_delete(p);
        }
    }
    std::vector<Object *> detached;
    PointerTable out;
    for (uint32_t h : handles) {
        Object *o = object_from_handle(h);
        if (o && o != world && !o->parent && ptable_set_if_absent(&out, o, 1)) detached.push_back(o);
    }
    return detached;
}
