/*
 * object.cpp - creating the model records and building, detaching and
 * deleting them: objects with their vertex, surface and child lists, and
 * the counts kept beside every list.
 */
#include "vesk.h"
#include "core/internal.h"
#include "core/lights.h"

#include <cstring>

Object *world = nullptr;
int objects_are_hidden = 0;

static const char *const object_type_names[] = {"poly", "group", "light", "cube", "sphere"};

const char *object_type_name(int type)
{
    if (type == OBJECT_WORLD) return "world";
    if (type >= 0 && type <= OBJECT_SPHERE) return object_type_names[type];
    return "poly";
}

int object_type_from_name(const char *name)
{
    if (strcmp(name, "world") == 0) return OBJECT_WORLD;
    for (int i = 0; i <= OBJECT_SPHERE; i++) {
        if (strcmp(name, object_type_names[i]) == 0) return i;
    }
    return OBJECT_NORMAL;
}

static void object_init_fields(Object *o, int type)
{
    o->num_vert = o->num_surf = o->num_kids = 0;
    o->vertices = o->surfaces = o->kids = nullptr;
    o->parent = nullptr;
    o->data = o->url = nullptr;
    o->user_value = 0;
    o->texture = 0;
    o->texture_repeat_x = o->texture_repeat_y = 1.0f;
    o->centre[0] = o->centre[1] = o->centre[2] = 0.0f;
    static const float identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    memcpy(o->rotation, identity, sizeof identity);
    o->type = (uint16_t)type;
    o->deleted = 0;
    o->is_sphere = (type == OBJECT_SPHERE);
    o->scale[0] = o->scale[1] = o->scale[2] = 1.0f;
    o->visible = 1;
    o->reserved_one = 1;
    o->reserved_zero = 0;
    o->handle = 0;
}

Object *new_object(int type)
{
    Object *o;
    if (type == OBJECT_LIGHT) {
        o = &new_light_record()->object;
        object_init_fields(o, type);
        o->name = mystrdup("light");
        return o;
    }
    o = (Object *)myalloc(sizeof(Object));
    if (!o) return nullptr;
    object_init_fields(o, type);
    o->name = mystrdup("");
    return o;
}

Object *new_group(void) { return new_object(OBJECT_GROUP); }
Object *new_sphere(void) { return new_object(OBJECT_SPHERE); }
Object *new_world(void) { return new_object(OBJECT_WORLD); }

Vertex *new_vertex(void)
{
    return new_vertex_set(0.0f, 0.0f, 0.0f);
}

Vertex *new_vertex_set(float x, float y, float z)
{
    Vertex *v = (Vertex *)myalloc(sizeof(Vertex));
    v->point[0] = x;
    v->point[1] = y;
    v->point[2] = z;
    v->normal[0] = 0.0f;
    v->normal[1] = 1.0f;
    v->normal[2] = 0.0f;
    v->win_x = v->win_y = 0;
    v->mark = 0;
    return v;
}

Vertex *vertex_clone(Vertex *vertex)
{
    Vertex *v = (Vertex *)myalloc(sizeof(Vertex));
    *v = *vertex;
    return v;
}

void vertex_set_point(Vertex *vertex, const float *point)
{
    memcpy(vertex->point, point, 3 * sizeof(float));
}

Surface *new_surface(void)
{
    Surface *s = (Surface *)myalloc(sizeof(Surface));
    s->vertrefs = nullptr;
    s->num_vertrefs = 0;
    s->mat = 1;
    s->normal[0] = s->normal[1] = s->normal[2] = 0.0f;
    s->surface_kind = SURFACE_POLYGON;
    s->shading = 0;
    s->twosided = 1;
    return s;
}

SVertex *new_svertex(Vertex *vertex, float u, float v)
{
    SVertex *r = (SVertex *)myalloc(sizeof(SVertex));
    r->vertex = vertex;
    r->u = u;
    r->v = v;
    return r;
}

void surface_add_vertref(Surface *surface, SVertex *ref)
{
    list_add_item(&surface->vertrefs, ref);
    surface->num_vertrefs++;
}

/* ---- building ---- */

void object_add_vertex(Object *object, Vertex *vertex)
{
    if (!vertex) {
        console_printf("warning - attempt to add null point to object\n");
        return;
    }
    list_add_item(&object->vertices, vertex);
    object->num_vert++;
}

Vertex *object_add_new_vertex(Object *object, const float *point)
{
    if (!point) {
        console_printf("warning - attempt to add null point to object\n");
        return nullptr;
    }
    Vertex *v = new_vertex_set(point[0], point[1], point[2]);
    object_add_vertex(object, v);
    return v;
}

Vertex *object_add_new_vertex_reuse(Object *object, const float *point)
{
    if (point) {
        Vertex *existing = object_find_vertex_point(object, point);
        if (existing) return existing;
    }
    return object_add_new_vertex(object, point);
}

void object_add_vertices(Object *object, List *vertices)
{
    /* The caller keeps the list itself; its items join the object. */
    List *last = object->vertices ? list_end(object->vertices) : nullptr;
    unsigned int n = 0;
    for (List *l = vertices; l; l = l->next, n++) {
        last = list_add_item_fast(&object->vertices, last, l->item);
    }
    object->num_vert += n;
}

void vk_object_add_vertices_from_float_array(Object *object, const float *floats, unsigned int n)
{
    List *last = object->vertices ? list_end(object->vertices) : nullptr;
    for (unsigned int i = 0; i < n; i++) {
        const float *p = floats + 3 * (size_t)i;
        last = list_add_item_fast(&object->vertices, last, new_vertex_set(p[0], p[1], p[2]));
        object->num_vert++;
    }
}

void object_add_surface(Object *object, Surface *surface)
{
    if (!surface) {
        console_printf("warning - attempt to add null surface to object\n");
        return;
    }
    list_add_item(&object->surfaces, surface);
    object->num_surf++;
}

void object_add_surfaces(Object *object, List *surfaces)
{
    for (; surfaces; surfaces = surfaces->next) object_add_surface(object, (Surface *)surfaces->item);
}

void object_add_child(Object *parent, Object *child)
{
    if (!child) {
        console_printf("warning - attempt to add null child to object\n");
        return;
    }
    list_add_item(&parent->kids, child);
    child->parent = parent;
    parent->num_kids++;
}

void object_add_children(Object *parent, List *children)
{
    for (; children; children = children->next) object_add_child(parent, (Object *)children->item);
}

int object_reparent(Object *child, Object *new_parent)
{
    Object *old = child->parent;
    if (old) {
        if (list_remove_item(&old->kids, child)) old->num_kids--;
        child->parent = nullptr;
    }
    object_add_child(new_parent, child);
    return 1;
}

/* ---- detaching ---- */

int object_remove_vertex(Object *object, Vertex *vertex)
{
    if (!list_remove_item(&object->vertices, vertex)) return 0;
    object->num_vert--;
    return 1;
}

int object_remove_surface(Object *object, Surface *surface)
{
    if (!list_remove_item(&object->surfaces, surface)) return 0;
    object->num_surf--;
    return 1;
}

/* Unlinks child from parent; returns 1 when it was there. */
static int object_unlink_child(Object *parent, Object *child)
{
    if (!child) {
        console_printf("warning - attempt to remove null child to object\n");
        return 0;
    }
    if (!list_remove_item(&parent->kids, child)) {
        console_printf("object_remove_child: attempt to remove non existant child\n");
        return 0;
    }
    child->parent = nullptr;
    parent->num_kids--;
    return 1;
}

void object_remove_child(Object *parent, Object *child)
{
    if (!parent) parent = world;
    if (!object_unlink_child(parent, child)) return;
    /* A group left with nothing in it goes too, but never the world. */
    if (parent != world && parent->num_kids == 0 && parent->num_vert == 0) object_delete(parent);
}

void object_remove_child_nocleanup(Object *parent, Object *child)
{
    if (!parent) parent = world;
    object_unlink_child(parent, child);
}

/* ---- deleting ---- */

void surface_free(Surface *surface)
{
    list_free_all(&surface->vertrefs);
    myfree(surface);
}

static void object_delete_actual(Object *object, int cleanup)
{
    if (!object) {
        console_printf("NULL object passed to object_delete!\n");
        return;
    }
    debugf("object_delete %s %lx\n", object->name ? object->name : "",
           (unsigned long)(uintptr_t)object);
    if (object->deleted) return;
    object->deleted = 1;
    if (object->type == OBJECT_LIGHT) unregister_light(object);
    List *kid = object->kids;
    while (kid) {
        List *next = kid->next;
        object_delete((Object *)kid->item);
        kid = next;
    }
    if (object->parent) {
        if (cleanup) object_remove_child(object->parent, object);
        else object_remove_child_nocleanup(object->parent, object);
    }
    myfree(object->name);
    list_free_all(&object->vertices);
    for (List *s = object->surfaces; s; s = s->next) surface_free((Surface *)s->item);
    list_free(&object->surfaces);
    list_free(&object->kids);
    /* data and url were never freed here; they are now, since nothing
     * else can reach them once the record is gone. */
    myfree(object->data);
    myfree(object->url);
    object_handle_release(object);
    myfree(object);
    debugf("end object_delete \n");
}

void object_delete(Object *object) { object_delete_actual(object, 1); }
void object_free(Object *object) { object_delete_actual(object, 0); }

void objectlist_delete(List *objects)
{
    for (List *l = objects; l; l = l->next) object_delete((Object *)l->item);
}

void surface_unlink_ref(Surface *surface, List **link)
{
    List *gone = *link;
    *link = gone->next;
    myfree(gone->item);
    myfree(gone);
    surface->num_vertrefs--;
}

void object_free_children_where(Object *parent, bool (*drop)(Object *child))
{
    List *kept = nullptr, *tail = nullptr;
    uint32_t n = 0;
    for (List *k = parent->kids; k; k = k->next) {
        Object *kid = (Object *)k->item;
        if (drop(kid)) {
            kid->parent = nullptr;
            object_free(kid);
            continue;
        }
        tail = list_add_item_fast(&kept, tail, kid);
        n++;
    }
    list_free(&parent->kids);
    parent->kids = kept;
    parent->num_kids = n;
}

/* Removes every reference to vertex from surface; returns how many. */
static int surface_remove_vertex_refs(Surface *surface, Vertex *vertex)
{
    int removed = 0;
    List **link = &surface->vertrefs;
    while (*link) {
        SVertex *ref = (SVertex *)(*link)->item;
        if (ref->vertex != vertex) {
            link = &(*link)->next;
            continue;
        }
        surface_unlink_ref(surface, link);
        removed++;
    }
    return removed;
}

int object_delete_vertex(Object *object, Vertex *vertex)
{
    if (!object_remove_vertex(object, vertex)) {
        console_printf("object_delete_vertex vertex not found\n");
        return 1;
    }
    List **link = &object->surfaces;
    while (*link) {
        Surface *s = (Surface *)(*link)->item;
        surface_remove_vertex_refs(s, vertex);
        if (s->vertrefs) {
            link = &(*link)->next;
            continue;
        }
        List *gone = *link;
        *link = gone->next;
        myfree(gone);
        object->num_surf--;
        surface_free(s);
    }
    myfree(vertex);
    if (object != world && object->num_vert == 0 && object->num_surf == 0 && object->num_kids == 0) {
        debugf("removing empty object %lx \n", (unsigned long)(uintptr_t)object);
        object_delete(object);
        return 0;
    }
    return 1;
}

void object_delete_surface(Object *object, Surface *surface)
{
    object_remove_surface(object, surface);
    surface_free(surface);
}

static int vertex_used_by_other_surface(Object *object, Surface *surface, Vertex *vertex)
{
    for (List *s = object->surfaces; s; s = s->next) {
        if (s->item != surface && surface_contains_vertex((Surface *)s->item, vertex)) return 1;
    }
    return 0;
}

void object_delete_surface_points(Object *object, Surface *surface)
{
    for (List *r = surface->vertrefs; r; r = r->next) {
        Vertex *v = ((SVertex *)r->item)->vertex;
        if (!v || vertex_used_by_other_surface(object, surface, v)) continue;
        if (!object_remove_vertex(object, v)) continue;
        /* A vertex referenced twice by this surface must be freed once. */
        for (List *later = r->next; later; later = later->next) {
            if (((SVertex *)later->item)->vertex == v) ((SVertex *)later->item)->vertex = nullptr;
        }
        myfree(v);
        ((SVertex *)r->item)->vertex = nullptr;
    }
}

void object_delete_surface_and_points(Object *object, Surface *surface)
{
    object_delete_surface_points(object, surface);
    object_delete_surface(object, surface);
}
