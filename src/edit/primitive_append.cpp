/*
 * edit/primitive_append.cpp - appending in bulk (see primitive_append.h).
 */
#include "edit/primitive_append.h"

static List *tail_of(List *head)
{
    return head ? list_end(head) : nullptr;
}

void appender_start(ObjectAppender *append, Object *object)
{
    append->object = object;
    appender_refresh(append);
}

void appender_refresh(ObjectAppender *append)
{
    append->vertex_tail = tail_of(append->object->vertices);
    append->surface_tail = tail_of(append->object->surfaces);
}

void appender_add_vertex(ObjectAppender *append, Vertex *vertex)
{
    Object *o = append->object;
    append->vertex_tail = list_add_item_fast(&o->vertices, append->vertex_tail, vertex);
    o->num_vert++;
}

Vertex *appender_new_vertex(ObjectAppender *append, float x, float y, float z)
{
    Vertex *v = new_vertex_set(x, y, z);
    appender_add_vertex(append, v);
    return v;
}

void appender_add_vertices(ObjectAppender *append, List *vertices)
{
    for (List *l = vertices; l; l = l->next) appender_add_vertex(append, (Vertex *)l->item);
}

void appender_add_surface(ObjectAppender *append, Surface *surface)
{
    Object *o = append->object;
    append->surface_tail = list_add_item_fast(&o->surfaces, append->surface_tail, surface);
    o->num_surf++;
}

RefAppender ref_appender_start(Surface *surface)
{
    RefAppender refs = {surface, tail_of(surface->vertrefs)};
    return refs;
}

void ref_append(RefAppender *refs, Vertex *vertex, float u, float v)
{
    Surface *s = refs->surface;
    refs->tail = list_add_item_fast(&s->vertrefs, refs->tail, new_svertex(vertex, u, v));
    s->num_vertrefs++;
}

Surface *new_surface_styled(int kind, int shading, int twosided)
{
    Surface *s = new_surface();
    s->surface_kind = (uint8_t)kind;
    s->shading = shading;
    s->twosided = twosided;
    return s;
}

Surface *new_triangle(Vertex *a, Vertex *b, Vertex *c)
{
    Surface *s = new_surface();
    RefAppender refs = ref_appender_start(s);
    ref_append(&refs, a, 0.0f, 0.0f);
    ref_append(&refs, b, 0.0f, 0.0f);
    ref_append(&refs, c, 0.0f, 0.0f);
    return s;
}
