/*
 * edit/model_additions.cpp - putting back, in place, what an undo took
 * away (see model_additions.h).  The copy and the live model are walked
 * side by side: every unmarked object, vertex, surface and reference of
 * the copy pairs with the next live one, in list order; the marked ones
 * have no live partner and are moved over.  A check pass does the pairing
 * without changing anything, so a model that has changed in some other
 * way is refused before the first write.
 */
#include "edit/model_additions.h"
#include "edit/model_state.h"
#include "edit/object_ops.h"

#include <cassert>
#include <cstring>

namespace {

struct Pair {
    Object *live;
    Object *done;
};

bool is_marked(const ModelAdditions &a, const void *item)
{
    return ptable_get(&a.marked, item, nullptr) != 0;
}

/* Pairs the unmarked objects of the copy with the live ones, parents
 * before children; false when the tree shapes differ. */
bool pair_objects(const ModelAdditions &a, Object *live, Object *done, std::vector<Pair> *pairs)
{
    std::vector<Pair> pending(1, Pair{live, done});
    while (!pending.empty()) {
        Pair p = pending.back();
        pending.pop_back();
        if (p.live->type != p.done->type) return false;
        pairs->push_back(p);
        List *l = p.live->kids;
        for (List *d = p.done->kids; d; d = d->next) {
            if (is_marked(a, d->item)) continue;
            if (!l) return false;
            pending.push_back(Pair{(Object *)l->item, (Object *)d->item});
            l = l->next;
        }
        if (l) return false;
    }
    return true;
}

/* Maps each unmarked vertex of the copy to its live partner. */
bool pair_vertices(const ModelAdditions &a, const std::vector<Pair> &pairs, PointerTable *map)
{
    for (const Pair &p : pairs) {
        List *l = p.live->vertices;
        for (List *d = p.done->vertices; d; d = d->next) {
            if (is_marked(a, d->item)) continue;
            if (!l) return false;
            ptable_set(map, d->item, (uintptr_t)l->item);
            l = l->next;
        }
        if (l) return false;
    }
    return true;
}

/* A reference of a surface that moves over must point at a vertex that
 * moves too or that has a live partner. */
bool refs_resolve(const ModelAdditions &a, const Surface *s, const PointerTable &map)
{
    for (List *r = s->vertrefs; r; r = r->next) {
        Vertex *v = ((SVertex *)r->item)->vertex;
        if (!is_marked(a, v) && !ptable_get(&map, v, nullptr)) return false;
    }
    return true;
}

/* The live surface is the copy's without the references to marked
 * vertices, pointing at the partners of the copy's vertices. */
bool surface_pairs(const ModelAdditions &a, const Surface *live, const Surface *done, const PointerTable &map)
{
    List *l = live->vertrefs;
    for (List *d = done->vertrefs; d; d = d->next) {
        Vertex *v = ((SVertex *)d->item)->vertex;
        if (is_marked(a, v)) continue;
        uintptr_t partner;
        if (!l || !ptable_get(&map, v, &partner)) return false;
        if (((SVertex *)l->item)->vertex != (Vertex *)partner) return false;
        l = l->next;
    }
    return l == nullptr;
}

bool pair_surfaces(const ModelAdditions &a, const std::vector<Pair> &pairs, const PointerTable &map)
{
    for (const Pair &p : pairs) {
        List *l = p.live->surfaces;
        for (List *d = p.done->surfaces; d; d = d->next) {
            const Surface *ds = (const Surface *)d->item;
            if (is_marked(a, ds)) {
                if (!refs_resolve(a, ds, map)) return false;
                continue;
            }
            if (!l || !surface_pairs(a, (const Surface *)l->item, ds, map)) return false;
            l = l->next;
        }
        if (l) return false;
    }
    return true;
}

bool pair_all(const ModelAdditions &a, Object *live_world, std::vector<Pair> *pairs, PointerTable *map)
{
    if (!a.done || !live_world) return false;
    return pair_objects(a, live_world, a.done, pairs) && pair_vertices(a, *pairs, map) &&
           pair_surfaces(a, *pairs, *map);
}

/* ---- moving over ---- */

struct Builder {
    List *head = nullptr;
    List *tail = nullptr;
    void add(void *item) { tail = list_add_item_fast(&head, tail, item); }
};

/* Takes the next live item of a list being replaced. */
void *take(List **cursor)
{
    assert(*cursor);
    void *item = (*cursor)->item;
    *cursor = (*cursor)->next;
    return item;
}

void merge_vertices(const ModelAdditions &a, const Pair &p, std::vector<Vertex *> *spent, PutBack *out)
{
    Builder b;
    List *l = p.live->vertices;
    for (List *d = p.done->vertices; d; d = d->next) {
        Vertex *dv = (Vertex *)d->item;
        if (is_marked(a, dv)) {
            b.add(dv);
            out->vertices.push_back(dv);
            continue;
        }
        Vertex *lv = (Vertex *)take(&l);
        memcpy(lv->point, dv->point, sizeof lv->point);
        memcpy(lv->normal, dv->normal, sizeof lv->normal);
        b.add(lv);
        spent->push_back(dv);
    }
    list_free(&p.live->vertices);
    list_free(&p.done->vertices);
    p.live->vertices = b.head;
    p.live->num_vert = p.done->num_vert;
    p.done->num_vert = 0;
}

void copy_surface_numbers(Surface *to, const Surface *from)
{
    to->mat = from->mat;
    memcpy(to->normal, from->normal, sizeof to->normal);
    to->surface_kind = from->surface_kind;
    to->shading = from->shading;
    to->twosided = from->twosided;
}

/* The live surface gets the copy's references back, its own records
 * kept; the copy's surface record is used up. */
void merge_refs(const ModelAdditions &a, Surface *ls, Surface *ds)
{
    Builder b;
    List *l = ls->vertrefs;
    for (List *d = ds->vertrefs; d; d = d->next) {
        SVertex *dr = (SVertex *)d->item;
        if (is_marked(a, dr->vertex)) {
            b.add(dr);
            continue;
        }
        SVertex *lr = (SVertex *)take(&l);
        lr->u = dr->u;
        lr->v = dr->v;
        b.add(lr);
        myfree(dr);
    }
    list_free(&ls->vertrefs);
    list_free(&ds->vertrefs);
    ls->vertrefs = b.head;
    ls->num_vertrefs = ds->num_vertrefs;
    copy_surface_numbers(ls, ds);
    myfree(ds);
}

void merge_surfaces(const ModelAdditions &a, const Pair &p, const PointerTable &map, PutBack *out)
{
    Builder b;
    List *l = p.live->surfaces;
    for (List *d = p.done->surfaces; d; d = d->next) {
        Surface *ds = (Surface *)d->item;
        if (!is_marked(a, ds)) {
            Surface *ls = (Surface *)take(&l);
            merge_refs(a, ls, ds);
            b.add(ls);
            continue;
        }
        for (List *r = ds->vertrefs; r; r = r->next) {
            SVertex *ref = (SVertex *)r->item;
            uintptr_t partner;
            if (ptable_get(&map, ref->vertex, &partner)) ref->vertex = (Vertex *)partner;
        }
        b.add(ds);
        out->surfaces.push_back(ds);
    }
    list_free(&p.live->surfaces);
    list_free(&p.done->surfaces);
    p.live->surfaces = b.head;
    p.live->num_surf = p.done->num_surf;
    p.done->num_surf = 0;
}

void merge_kids(const ModelAdditions &a, const Pair &p, PutBack *out)
{
    Builder b;
    List *l = p.live->kids;
    for (List *d = p.done->kids; d; d = d->next) {
        Object *dk = (Object *)d->item;
        if (is_marked(a, dk)) {
            dk->parent = p.live;
            b.add(dk);
            out->objects.push_back(dk);
            continue;
        }
        b.add(take(&l));
    }
    list_free(&p.live->kids);
    list_free(&p.done->kids);
    p.live->kids = b.head;
    p.live->num_kids = p.done->num_kids;
    p.done->num_kids = 0;
}

void copy_object_numbers(Object *to, const Object *from)
{
    memcpy(to->centre, from->centre, sizeof to->centre);
    memcpy(to->rotation, from->rotation, sizeof to->rotation);
    memcpy(to->scale, from->scale, sizeof to->scale);
}

} // namespace

void additions_capture(ModelAdditions *a, Object *live_world, const PointerTable &removed)
{
    additions_free(a);
    if (!live_world) return;
    a->done = copy_object_exact(live_world);
    std::vector<Object *> live = model_walk(live_world), done = model_walk(a->done);
    assert(live.size() == done.size());
    for (size_t i = 0; i < live.size() && i < done.size(); i++) {
        if (ptable_get(&removed, live[i], nullptr)) ptable_set(&a->marked, done[i], 1);
        List *d = done[i]->vertices;
        for (List *l = live[i]->vertices; l && d; l = l->next, d = d->next) {
            if (ptable_get(&removed, l->item, nullptr)) ptable_set(&a->marked, d->item, 1);
        }
        d = done[i]->surfaces;
        for (List *l = live[i]->surfaces; l && d; l = l->next, d = d->next) {
            if (ptable_get(&removed, l->item, nullptr)) ptable_set(&a->marked, d->item, 1);
        }
    }
}

int additions_fit(const ModelAdditions &a, Object *live_world)
{
    std::vector<Pair> pairs;
    PointerTable map;
    return pair_all(a, live_world, &pairs, &map) ? 1 : 0;
}

void additions_put_back(ModelAdditions *a, Object *live_world, PutBack *out)
{
    std::vector<Pair> pairs;
    PointerTable map;
    if (!pair_all(*a, live_world, &pairs, &map)) {
        console_printf("redo: the model no longer matches its copy - nothing put back (tell Orlo)\n");
        return;
    }
    std::vector<Vertex *> spent;
    for (const Pair &p : pairs) {
        merge_vertices(*a, p, &spent, out);
        merge_surfaces(*a, p, map, out);
        merge_kids(*a, p, out);
        copy_object_numbers(p.live, p.done);
    }
    /* What is left of the copy: the paired records' shells, with empty
     * lists, and the vertices whose numbers went to their partners. */
    for (Vertex *v : spent) myfree(v);
    for (const Pair &p : pairs) {
        p.done->parent = nullptr;
        object_free(p.done);
    }
    a->done = nullptr;
    ptable_clear(&a->marked);
}

void additions_free(ModelAdditions *a)
{
    if (a->done) object_free(a->done);
    a->done = nullptr;
    ptable_clear(&a->marked);
}
