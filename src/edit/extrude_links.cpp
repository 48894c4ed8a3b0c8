/*
 * edit/extrude_links.cpp - the copy-and-link helpers of extrusion: copies
 * of vertex lists, surfaces moved onto copied vertices, and the surfaces
 * that join each edge to its copy.  A vertex's index in `from` is found
 * through its scratch mark, checked against `from`, not by walking the
 * list.
 */
#include "edit/extrude.h"
#include "edit/primitive_append.h"
#include "edit/selection.h"
#include "edit/surface_ops.h"
#include "edit/transform.h"
#include "edit/pointer_table.h"

#include <vector>

int remove_extruded_lines = 1;

List *copy_pointlist(List *points, const float *d)
{
    List *copy = nullptr, *tail = nullptr;
    for (List *l = points; l; l = l->next) {
        Vertex *v = vertex_clone((Vertex *)l->item);
        for (int i = 0; i < 3; i++) v->point[i] -= d[i];
        tail = list_add_item_fast(&copy, tail, v);
    }
    return copy;
}

List *copy_pointlist_rotate(List *points)
{
    static const float zero[3] = {0, 0, 0};
    List *copy = copy_pointlist(points, zero);
    rotate_pointlist_3d(copy);
    return copy;
}

/* The vertex at the same position in another list, for each vertex of
 * `from`.  A vertex's position is kept in its scratch mark (its first
 * position when it stands twice); a mark is trusted only when `from`
 * holds that very vertex there, so a stale mark on another vertex finds
 * nothing. */
struct VertexMap {
    std::vector<Vertex *> from;
    std::vector<Vertex *> targets;  /* the vertices of a parallel list */
    long first_null = -1;           /* position of the first null item */
};

static void map_start(VertexMap *map, List *from)
{
    for (List *l = from; l; l = l->next) map->from.push_back((Vertex *)l->item);
    for (size_t i = map->from.size(); i-- > 0;) {
        if (map->from[i]) map->from[i]->mark = (uint32_t)i;
        else map->first_null = (long)i;
    }
}

static void map_targets(VertexMap *map, List *to)
{
    map->targets.clear();
    for (List *l = to; l; l = l->next) map->targets.push_back((Vertex *)l->item);
}

/* Position in `from` (from 0), or -1. */
static long map_position(const VertexMap *map, Vertex *v)
{
    if (!v) return map->first_null;
    uint32_t i = v->mark;
    return i < map->from.size() && map->from[i] == v ? (long)i : -1;
}

static Vertex *map_target(const VertexMap *map, Vertex *v)
{
    long i = map_position(map, v);
    return i >= 0 && (size_t)i < map->targets.size() ? map->targets[(size_t)i] : nullptr;
}

List *copy_surfacelist(List *surfaces, List *from, List *to)
{
    VertexMap map;
    map_start(&map, from);
    map_targets(&map, to);
    List *copy = nullptr, *tail = nullptr;
    for (List *s = surfaces; s; s = s->next) {
        Surface *source = (Surface *)s->item;
        Surface *c = new_surface();
        surface_copy_properties(source, c);
        RefAppender refs = ref_appender_start(c);
        for (List *r = source->vertrefs; r; r = r->next) {
            Vertex *v = map_target(&map, ((SVertex *)r->item)->vertex);
            if (v) ref_append(&refs, v, 0.0f, 0.0f);
        }
        tail = list_add_item_fast(&copy, tail, c);
    }
    return copy;
}

static int same_position(const Vertex *a, const Vertex *b)
{
    return a->point[0] == b->point[0] && a->point[1] == b->point[1] && a->point[2] == b->point[2];
}

/* Calls edge(a, b) for each edge of the surface: each reference with the
 * next, the last with the first except in an open line. */
template <typename F> static void for_each_edge(Surface *surface, F edge)
{
    for (List *r = surface->vertrefs; r; r = r->next) {
        List *next = r->next;
        if (!next) {
            if (surface->surface_kind == SURFACE_LINE) break;
            next = surface->vertrefs;
        }
        edge(((SVertex *)r->item)->vertex, ((SVertex *)next->item)->vertex);
    }
}

List *create_link_surfaces(List *surfaces, List *from, List *to)
{
    VertexMap map;
    map_start(&map, from);
    map_targets(&map, to);
    List *links = nullptr, *tail = nullptr;
    for (List *s = surfaces; s; s = s->next) {
        Surface *source = (Surface *)s->item;
        for_each_edge(source, [&](Vertex *a, Vertex *b) {
            Vertex *a2 = map_target(&map, a), *b2 = map_target(&map, b);
            if (!a || !b || !a2 || !b2) return;
            Surface *link = new_surface();
            link->mat = source->mat;
            RefAppender refs = ref_appender_start(link);
            if (!same_position(a2, a)) ref_append(&refs, a, 0.0f, 0.0f);
            ref_append(&refs, a2, 0.0f, 0.0f);
            if (!same_position(b2, b)) ref_append(&refs, b2, 0.0f, 0.0f);
            ref_append(&refs, b, 0.0f, 0.0f);
            tail = list_add_item_fast(&links, tail, link);
        });
    }
    return links;
}

List *create_link_surfaces2(List *surfaces, List *from, List *base, List *to)
{
    VertexMap map;
    map_start(&map, from);
    std::vector<Vertex *> base_vertices, to_vertices;
    for (List *l = base; l; l = l->next) base_vertices.push_back((Vertex *)l->item);
    for (List *l = to; l; l = l->next) to_vertices.push_back((Vertex *)l->item);
    List *links = nullptr, *tail = nullptr;
    for (List *s = surfaces; s; s = s->next) {
        Surface *source = (Surface *)s->item;
        for_each_edge(source, [&](Vertex *a, Vertex *b) {
            long i = map_position(&map, a), j = map_position(&map, b);
            if (i < 0 || j < 0 || (size_t)i >= base_vertices.size() || (size_t)j >= base_vertices.size() ||
                (size_t)i >= to_vertices.size() || (size_t)j >= to_vertices.size()) {
                return;
            }
            Surface *link = new_surface();
            surface_copy_properties(source, link);
            RefAppender refs = ref_appender_start(link);
            ref_append(&refs, base_vertices[(size_t)i], 0.0f, 0.0f);
            ref_append(&refs, to_vertices[(size_t)i], 0.0f, 0.0f);
            ref_append(&refs, to_vertices[(size_t)j], 0.0f, 0.0f);
            ref_append(&refs, base_vertices[(size_t)j], 0.0f, 0.0f);
            tail = list_add_item_fast(&links, tail, link);
        });
    }
    return links;
}

int vertices_owned_by_same_object(List *points)
{
    if (!points) return 1;
    Object *owner = object_of_vertex(world, (Vertex *)points->item);
    if (!owner) return 0;
    PointerTable members;
    for (List *v = owner->vertices; v; v = v->next) ptable_set(&members, v->item, 1);
    for (List *l = points->next; l; l = l->next) {
        if (!ptable_value(&members, l->item)) return 0;
    }
    return 1;
}

int points_are_joined(Vertex *a, Vertex *b)
{
    Object *o = nullptr;
    if (selection.selected_objects) o = (Object *)selection.selected_objects->item;
    else if (selection.selected_vertices) o = object_of_vertex(world, (Vertex *)selection.selected_vertices->item);
    if (!o) return 0;
    for (List *s = o->surfaces; s; s = s->next) {
        Surface *surface = (Surface *)s->item;
        if (point_in_surface(a, surface) && point_in_surface(b, surface) && surface_points_are_linked(surface, a, b)) {
            return 1;
        }
    }
    return 0;
}
