/*
 * edit/object_ops_copy.cpp - copying the selection into new objects:
 * clone_selected (used by cloning, duplicating and the clipboard), the
 * commands "clone_selection" and "duplicate".  Selected vertices are
 * copied into one new object with the surfaces they complete or touch;
 * surface references find their vertex copy by exact position, through a
 * hash of the copies' positions instead of a walk of the vertex list.
 */
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "edit/transform.h"
#include "edit/undo.h"
#include "core/lights.h"
#include "view/redraw.h"
#include "view/view_state.h"
#include "core/point_key.h"

#include <cstring>
#include <unordered_map>

typedef std::unordered_map<PointKey, Vertex *, PointKeyHash> PointIndex;

/* A copy of the surface whose references point at the first vertex copy
 * at the same position; references with no copy there are dropped. */
static Surface *clone_surface(Surface *s, const PointIndex &index)
{
    Surface *c = new_surface();
    c->mat = s->mat;
    c->surface_kind = s->surface_kind;
    c->shading = s->shading;
    c->twosided = s->twosided;
    memcpy(c->normal, s->normal, sizeof c->normal);
    List *tail = nullptr;
    for (List *r = s->vertrefs; r; r = r->next) {
        SVertex *ref = (SVertex *)r->item;
        if (!point_is_comparable(ref->vertex->point)) continue;
        PointKey key = {{ref->vertex->point[0], ref->vertex->point[1], ref->vertex->point[2]}};
        auto it = index.find(key);
        if (it == index.end()) continue;
        tail = list_add_item_fast(&c->vertrefs, tail, new_svertex(it->second, ref->u, ref->v));
        c->num_vertrefs++;
    }
    return c;
}

/* One object holding copies of the selected vertices and the surfaces
 * that are wholly selected (whole_surfaces) or use a selected vertex. */
static Object *clone_selected_vertices(int whole_surfaces)
{
    Object *o = new_object(OBJECT_NORMAL);
    PointIndex index;
    List *tail = nullptr;
    for (List *v = selection.selected_vertices; v; v = v->next) {
        Vertex *copy = vertex_clone((Vertex *)v->item);
        tail = list_add_item_fast(&o->vertices, tail, copy);
        o->num_vert++;
        if (!point_is_comparable(copy->point)) continue;
        PointKey key = {{copy->point[0], copy->point[1], copy->point[2]}};
        index.emplace(key, copy);
    }
    List *surfaces = nullptr;
    if (whole_surfaces) surfaces = find_selected_whole_surfaces();
    else find_surfaces_with_selected_vertex(world, &surfaces);
    tail = nullptr;
    for (List *s = surfaces; s; s = s->next) {
        tail = list_add_item_fast(&o->surfaces, tail, clone_surface((Surface *)s->item, index));
        o->num_surf++;
    }
    list_free(&surfaces);
    return o;
}

List *clone_selected(int whole_surfaces)
{
    List *clones = nullptr, *tail = nullptr;
    if (selection.selected_vertices) tail = list_add_item_fast(&clones, tail, clone_selected_vertices(whole_surfaces));
    for (List *l = selection.selected_objects; l; l = l->next) {
        tail = list_add_item_fast(&clones, tail, object_clone((Object *)l->item));
    }
    return clones;
}

/* Adds the new objects to the world and makes them the selection, with
 * an undo step that deletes them again. */
static void add_as_selection(List *objects, const char *label)
{
    new_undo(UNDO_PASTE, label);
    set_undo_objectlist(objects);
    clear_selection();
    ChildAppender kids = child_appender(world);
    for (List *l = objects; l; l = l->next) append_child(&kids, (Object *)l->item);
    scan_lights();
    select_objectlist(objects);
    selection_publish_counts();
    edit_mark_changed();
    redraw_all();
    display_status();
}

int clone_selection(void)
{
    List *clones = clone_selected(0);
    if (!clones) {
        display_message("clone: select something first");
        return 0;
    }
    int n = (int)list_count(clones);
    add_as_selection(clones, "clone");
    list_free(&clones);
    display_message("clone done - %d objects made", n);
    return 1;
}

/* The offset of a duplicate: 20 pixels right and down in the view,
 * snapped to the grid. */
static void duplicate_offset(int view, float *d)
{
    int scale_view = view >= 0 && view < NUM_VIEWS ? view : 2;
    float s = views[scale_view].scale > 0.0f ? views[scale_view].scale : 1.0f;
    float step = 20.0f / s;
    d[0] = d[1] = d[2] = 0.0f;
    switch (view) {
    case 0: d[0] = step; d[1] = -step; break;
    case 1: d[2] = step; d[1] = -step; break;
    default: d[0] = step; d[2] = step; break;
    }
    snap_to_grid(d);
}

int duplicate_selected_in_view(int view)
{
    if (nothing_is_selected()) {
        display_message("duplicate: select something first");
        return 0;
    }
    display_message("duplicating...");
    List *copies = clone_selected(0);
    float d[3];
    duplicate_offset(view, d);
    translate_objectlist(copies, d);
    int n = (int)list_count(copies);
    add_as_selection(copies, "duplicate");
    list_free(&copies);
    display_message("duplicate done - %d objects made", n);
    return 1;
}

int duplicate_selected(void)
{
    return duplicate_selected_in_view(-1);
}
