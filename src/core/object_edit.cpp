/*
 * object_edit.cpp - changing objects in place: names and strings, copying
 * and cloning, the recursive surface setters, visibility, reference
 * replacement and ungrouping.
 */
#include "vesk.h"
#include "core/internal.h"
#include "core/point_key.h"

#include <cstring>
#include <unordered_map>

static void replace_string(char **slot, const char *text)
{
    myfree(*slot);
    *slot = mystrdup(text);
}

void object_set_name(Object *object, const char *name) { replace_string(&object->name, name); }
void object_set_url(Object *object, const char *url) { replace_string(&object->url, url); }
void object_set_userdata(Object *object, const char *data) { replace_string(&object->data, data); }

void object_copy_data(Object *from, Object *to)
{
    object_set_name(to, from->name);
    object_set_userdata(to, from->data);
    object_set_url(to, from->url);
    to->user_value = from->user_value;
    to->texture = from->texture;
    to->texture_repeat_x = from->texture_repeat_x;
    to->texture_repeat_y = from->texture_repeat_y;
    for (int i = 0; i < 3; i++) to->centre[i] = from->centre[i];
    for (int i = 0; i < 9; i++) to->rotation[i] = from->rotation[i];
    to->type = from->type;
}

/* The vertices of an object by exact position, the first vertex at each
 * position, so that cloning a large object finds each reference's vertex
 * without walking the vertex list.  Matches exact float comparison: -0
 * finds 0, and a position holding a NaN is never found. */
typedef std::unordered_map<PointKey, Vertex *, PointKeyHash> VertexIndex;

static void index_vertices(Object *object, VertexIndex *index)
{
    for (List *l = object->vertices; l; l = l->next) {
        Vertex *v = (Vertex *)l->item;
        if (!point_is_comparable(v->point)) continue;
        PointKey key = {{v->point[0], v->point[1], v->point[2]}};
        index->emplace(key, v); /* keeps the first at a position */
    }
}

static Vertex *find_vertex(Object *owner, const VertexIndex *index, const float *point)
{
    if (!index) return object_find_vertex_point(owner, point);
    if (!point_is_comparable(point)) return nullptr;
    PointKey key = {{point[0], point[1], point[2]}};
    auto it = index->find(key);
    return it == index->end() ? nullptr : it->second;
}

static Surface *surface_clone_with(Surface *surface, Object *new_owner, const VertexIndex *index)
{
    Surface *copy = new_surface();
    copy->mat = surface->mat;
    copy->surface_kind = surface->surface_kind;
    copy->shading = surface->shading;
    copy->twosided = surface->twosided;
    for (int i = 0; i < 3; i++) copy->normal[i] = surface->normal[i];
    List *last = nullptr;
    for (List *r = surface->vertrefs; r; r = r->next) {
        SVertex *ref = (SVertex *)r->item;
        /* References follow positions, so coincident vertices collapse
         * onto the first of them in the clone. */
        Vertex *v = find_vertex(new_owner, index, ref->vertex->point);
        if (!v) continue;
        last = list_add_item_fast(&copy->vertrefs, last, new_svertex(v, ref->u, ref->v));
        copy->num_vertrefs++;
    }
    return copy;
}

Surface *surface_clone_into(Surface *surface, Object *new_owner)
{
    return surface_clone_with(surface, new_owner, nullptr);
}

Object *object_clone(Object *object)
{
    Object *copy = new_object(object->type);
    object_copy_data(object, copy);
    copy->vertices = list_clone_all(object->vertices, sizeof(Vertex));
    copy->num_vert = object->num_vert;
    VertexIndex index;
    index_vertices(copy, &index);
    List *last = nullptr;
    for (List *s = object->surfaces; s; s = s->next) {
        last = list_add_item_fast(&copy->surfaces, last, surface_clone_with((Surface *)s->item, copy, &index));
        copy->num_surf++;
    }
    for (List *k = object->kids; k; k = k->next) object_add_child(copy, object_clone((Object *)k->item));
    return copy;
}

/* Applies set to every surface of object and its descendants; returns
 * the number of surfaces visited. */
static int object_for_all_surfaces(Object *object, void (*set)(Surface *, int), int value)
{
    int n = 0;
    for (List *s = object->surfaces; s; s = s->next, n++) set((Surface *)s->item, value);
    for (List *k = object->kids; k; k = k->next) n += object_for_all_surfaces((Object *)k->item, set, value);
    return n;
}

static void surface_set_mat(Surface *s, int mat) { s->mat = (uint16_t)mat; }
static void surface_set_kind(Surface *s, int kind) { s->surface_kind = (uint8_t)kind; }
static void surface_set_twosided(Surface *s, int flag) { s->twosided = flag; }

void surface_set_shading(Surface *surface, int flag) { surface->shading = flag; }

int object_set_col_index(Object *o, int mat) { return object_for_all_surfaces(o, surface_set_mat, mat); }
int object_set_surface_type(Object *o, int kind) { return object_for_all_surfaces(o, surface_set_kind, kind); }
int object_set_surface_shading(Object *o, int flag) { return object_for_all_surfaces(o, surface_set_shading, flag); }
int object_set_twosided_faces(Object *o, int flag) { return object_for_all_surfaces(o, surface_set_twosided, flag); }

void object_reverse_normals(Object *object)
{
    for (List *s = object->surfaces; s; s = s->next) list_reverse(&((Surface *)s->item)->vertrefs);
    for (List *k = object->kids; k; k = k->next) object_reverse_normals((Object *)k->item);
}

void object_set_texture_repeat(Object *object, float x, float y)
{
    object->texture_repeat_x = x;
    object->texture_repeat_y = y;
}

void object_set_visible(Object *object, int flag)
{
    object->visible = flag;
    if (!flag) objects_are_hidden = 1;
    for (List *k = object->kids; k; k = k->next) object_set_visible((Object *)k->item, flag);
}

void object_show(Object *object) { object_set_visible(object, 1); }

/* Points the first reference to old_vertex at new_vertex and deletes the
 * later ones in the same surface. */
static void surface_replace_ref(Surface *surface, Vertex *old_vertex, Vertex *new_vertex)
{
    int replaced = 0;
    List **link = &surface->vertrefs;
    while (*link) {
        SVertex *ref = (SVertex *)(*link)->item;
        if (ref->vertex != old_vertex) {
            link = &(*link)->next;
            continue;
        }
        if (!replaced) {
            ref->vertex = new_vertex;
            replaced = 1;
            link = &(*link)->next;
            continue;
        }
        surface_unlink_ref(surface, link);
        console_printf("duplicate surface ref deleted\n");
    }
}

void object_replace_surfaceref(Object *object, Vertex *old_vertex, Vertex *new_vertex)
{
    for (List *s = object->surfaces; s; s = s->next) {
        surface_replace_ref((Surface *)s->item, old_vertex, new_vertex);
    }
}

void object_ungroup(Object *group)
{
    /* Children go to the world, not to the group's own parent; the last
     * one to leave deletes the emptied group. */
    if (group == world) return;
    while (group->kids) {
        Object *child = (Object *)group->kids->item;
        int last = group->kids->next == nullptr;
        object_remove_child(group, child);
        object_add_child(world, child);
        if (last) break;
    }
}
