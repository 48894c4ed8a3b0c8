/*
 * object_query.cpp - read-only questions about objects: accessors for
 * plug-ins, searches through the tree, and exact-position vertex lookups.
 */
#include "vesk.h"
#include "core/internal.h"

Object *vk_get_world(void) { return world; }
const char *vk_object_get_name(Object *o) { return o->name; }
List *vk_object_get_childrenlist(Object *o) { return o->kids; }
List *vk_object_get_vertexlist(Object *o) { return o->vertices; }
List *vk_object_get_surfacelist(Object *o) { return o->surfaces; }
unsigned int vk_object_get_num_vertices(Object *o) { return o->num_vert; }
unsigned int vk_object_get_num_surfaces(Object *o) { return o->num_surf; }
unsigned int vk_object_get_num_children(Object *o) { return o->num_kids; }
int vk_object_get_type(Object *o) { return o->type; }
int vk_object_get_texture_index(Object *o) { return o->texture; }
int vk_object_has_texture(Object *o) { return o->texture != 0; }
float vk_object_get_texture_repeat_x(Object *o) { return o->texture_repeat_x; }
float vk_object_get_texture_repeat_y(Object *o) { return o->texture_repeat_y; }
float *vk_object_get_centre(Object *o) { return o->centre; }
const char *vk_object_get_data(Object *o) { return o->data; }
const char *vk_object_get_url(Object *o) { return o->url; }
Object *object_parent(Object *o) { return o->parent; }

unsigned int vk_object_get_vertex_index(Object *o, Vertex *v)
{
    return list_index(o->vertices, v);
}

Vertex *vk_object_get_vertex_at_index(Object *o, unsigned int index)
{
    return (Vertex *)list_get_item(o->vertices, index);
}

void vk_surface_set_normal(Surface *s, const float *normal)
{
    for (int i = 0; i < 3; i++) s->normal[i] = normal[i];
}

int surface_contains_vertex(Surface *surface, Vertex *vertex)
{
    for (List *r = surface->vertrefs; r; r = r->next) {
        if (((SVertex *)r->item)->vertex == vertex) return 1;
    }
    return 0;
}

Object *object_of_vertex(Object *root, Vertex *vertex)
{
    if (!root) return nullptr;
    if (list_index(root->vertices, vertex) != LIST_NOT_FOUND) return root;
    for (List *k = root->kids; k; k = k->next) {
        Object *found = object_of_vertex((Object *)k->item, vertex);
        if (found) return found;
    }
    return nullptr;
}

Object *object_of_surface(Object *root, Surface *surface)
{
    if (!root) return nullptr;
    if (list_index(root->surfaces, surface) != LIST_NOT_FOUND) return root;
    for (List *k = root->kids; k; k = k->next) {
        Object *found = object_of_surface((Object *)k->item, surface);
        if (found) return found;
    }
    return nullptr;
}

List *surfaces_of_object_vertex(Object *object, Vertex *vertex)
{
    List *found = nullptr, *last = nullptr;
    for (List *s = object->surfaces; s; s = s->next) {
        if (surface_contains_vertex((Surface *)s->item, vertex)) {
            last = list_add_item_fast(&found, last, s->item);
        }
    }
    return found;
}

Object *object_top_ancestor(Object *object)
{
    if (!object) return nullptr;
    while (object->parent && object->parent != world) object = object->parent;
    return object;
}

int object_exists(Object *object)
{
    /* A live object's ancestors are live, so walking up to the root tells
     * whether the world holds it. */
    if (!object || !world) return 0;
    while (object->parent) object = object->parent;
    return object == world;
}

static int point_equals(const float *a, const float *b)
{
    return a[0] == b[0] && a[1] == b[1] && a[2] == b[2];
}

int object_point_index(Object *object, const float *point)
{
    int i = 0;
    for (List *v = object->vertices; v; v = v->next, i++) {
        if (point_equals(((Vertex *)v->item)->point, point)) return i;
    }
    return -1;
}

Vertex *object_find_vertex_point(Object *object, const float *point)
{
    for (List *v = object->vertices; v; v = v->next) {
        if (point_equals(((Vertex *)v->item)->point, point)) return (Vertex *)v->item;
    }
    return nullptr;
}

unsigned int vk_object_get_contents(Object *o, List **vertices, List **surfaces, List **children)
{
    if (vertices) *vertices = o ? o->vertices : nullptr;
    if (surfaces) *surfaces = o ? o->surfaces : nullptr;
    if (children) *children = o ? o->kids : nullptr;
    if (!o) return 0;
    return o->num_vert + o->num_surf + o->num_kids;
}
