/*
 * edit/object_copy_exact.cpp - exact deep copies of a subtree, as the
 * undo history's snapshots and the redo list keep them: every field,
 * every vertex, surface and reference in the same order, built in one
 * pass per object without list walks.
 */
#include "edit/object_ops.h"
#include "core/internal.h"

#include <cstring>
#include <vector>

/* The record alone: every field copied, strings duplicated, no lists, no
 * parent, no handle. */
static Object *copy_record(Object *o)
{
    size_t size = o->type == OBJECT_LIGHT ? sizeof(Light) : sizeof(Object);
    Object *c = (Object *)myalloc((unsigned int)size);
    memcpy(c, o, size);
    c->name = mystrdup(o->name);
    c->data = mystrdup(o->data);
    c->url = mystrdup(o->url);
    c->vertices = c->surfaces = c->kids = nullptr;
    c->num_vert = c->num_surf = c->num_kids = 0;
    c->parent = nullptr;
    c->deleted = 0;
    c->handle = 0;
    return c;
}

static Surface *copy_surface(Surface *s, const std::vector<Vertex *> &from, const std::vector<Vertex *> &to)
{
    Surface *c = new_surface();
    c->mat = s->mat;
    memcpy(c->normal, s->normal, sizeof c->normal);
    c->surface_kind = s->surface_kind;
    c->shading = s->shading;
    c->twosided = s->twosided;
    List *tail = nullptr;
    for (List *r = s->vertrefs; r; r = r->next) {
        SVertex *ref = (SVertex *)r->item;
        uint32_t i = ref->vertex ? ref->vertex->mark : UINT32_MAX;
        /* A reference to a vertex of another object cannot be copied. */
        if (i >= from.size() || from[i] != ref->vertex) continue;
        tail = list_add_item_fast(&c->vertrefs, tail, new_svertex(to[i], ref->u, ref->v));
        c->num_vertrefs++;
    }
    return c;
}

/* Copies the vertices and surfaces of o into c; the vertices are matched
 * through their scratch numbers. */
static void copy_geometry(Object *o, Object *c)
{
    std::vector<Vertex *> from, to;
    List *tail = nullptr;
    for (List *v = o->vertices; v; v = v->next) {
        Vertex *vx = (Vertex *)v->item;
        vx->mark = (uint32_t)from.size();
        from.push_back(vx);
        to.push_back(vertex_clone(vx));
        tail = list_add_item_fast(&c->vertices, tail, to.back());
        c->num_vert++;
    }
    tail = nullptr;
    for (List *s = o->surfaces; s; s = s->next) {
        tail = list_add_item_fast(&c->surfaces, tail, copy_surface((Surface *)s->item, from, to));
        c->num_surf++;
    }
}

Object *copy_object_exact(Object *object)
{
    Object *top = copy_record(object);
    std::vector<std::pair<Object *, Object *>> pending(1, {object, top});
    while (!pending.empty()) {
        Object *o = pending.back().first, *c = pending.back().second;
        pending.pop_back();
        copy_geometry(o, c);
        ChildAppender kids = child_appender(c);
        for (List *k = o->kids; k; k = k->next) {
            Object *child = copy_record((Object *)k->item);
            append_child(&kids, child);
            pending.push_back({(Object *)k->item, child});
        }
    }
    return top;
}

