/*
 * edit/selection_surfaces.cpp - the selection seen through surfaces:
 * selecting a surface (its vertices, or its owner object), finding the
 * surfaces that a vertex selection touches or covers wholly, and growing
 * a vertex selection to whole surfaces.
 *
 * The surfaces touched by the selection come out in a fixed order: per
 * object in depth-first order, a surface stands where its earliest
 * selected vertex (in selection order) would meet it in a scan of the
 * object's surfaces.  That order is computed from one table of selection
 * positions and a sort per object, instead of a scan of every surface for
 * every selected vertex.
 */
#include "edit/selection_internal.h"
#include "view/redraw.h"

#include <algorithm>
#include <vector>

/* ---- selecting surfaces ---- */

static void select_surface_vertices(Surface *surface)
{
    for (List *r = surface->vertrefs; r; r = r->next) {
        Vertex *v = ((SVertex *)r->item)->vertex;
        if (v) add_selected_vertex(v);
    }
}

void select_surface(Surface *surface)
{
    if (!surface) return;
    if (selection.select_mode == SELECT_VERTEX) {
        select_surface_vertices(surface);
    } else {
        Object *owner = object_of_surface(world, surface);
        if (owner) select_rule(owner);
        update_current_object();
    }
    find_bounding_box();
}

/* Sets the value of each key of owners that is still 0 to the first
 * object, in depth-first order from o, whose surface list holds it. */
static void find_surface_owners(Object *o, PointerTable *owners, size_t *unresolved)
{
    for (List *s = o->surfaces; s && *unresolved; s = s->next) {
        uintptr_t owner;
        if (!ptable_get(owners, s->item, &owner) || owner) continue;
        ptable_set(owners, s->item, (uintptr_t)o);
        (*unresolved)--;
    }
    for (List *k = o->kids; k && *unresolved; k = k->next) {
        find_surface_owners((Object *)k->item, owners, unresolved);
    }
}

void select_surfacelist(List *surfaces)
{
    if (selection.select_mode == SELECT_VERTEX) {
        for (List *s = surfaces; s; s = s->next) {
            if (s->item) select_surface_vertices((Surface *)s->item);
        }
        find_bounding_box();
        return;
    }
    /* One walk of the model finds every owner. */
    PointerTable owners;
    for (List *s = surfaces; s; s = s->next) ptable_set_if_absent(&owners, s->item, 0);
    size_t unresolved = ptable_size(&owners);
    if (world) find_surface_owners(world, &owners, &unresolved);
    for (List *s = surfaces; s; s = s->next) {
        Object *owner = (Object *)ptable_value(&owners, s->item);
        if (owner) select_rule(owner);
    }
    update_current_object();
    find_bounding_box();
}

/* ---- surfaces touched by the selection ---- */

struct TouchedSurface {
    uintptr_t first_selected;   /* selection position of its earliest selected vertex */
    uint32_t order;             /* its position in the object's surface list */
    Surface *surface;
};

struct SurfaceSearch {
    PointerTable position;      /* selected vertex -> first position in the selection */
    List **result;
    ListIndex result_index;
    std::vector<TouchedSurface> touched;
};

static int earliest_selected_vertex(const SurfaceSearch *search, Surface *surface, uintptr_t *first)
{
    int found = 0;
    for (List *r = surface->vertrefs; r; r = r->next) {
        uintptr_t position;
        if (!ptable_get(&search->position, ((SVertex *)r->item)->vertex, &position)) continue;
        if (!found || position < *first) *first = position;
        found = 1;
    }
    return found;
}

static void search_object(Object *o, SurfaceSearch *search)
{
    search->touched.clear();
    uint32_t order = 0;
    for (List *s = o->surfaces; s; s = s->next, order++) {
        uintptr_t first;
        Surface *surface = (Surface *)s->item;
        if (earliest_selected_vertex(search, surface, &first)) search->touched.push_back({first, order, surface});
    }
    std::sort(search->touched.begin(), search->touched.end(), [](const TouchedSurface &a, const TouchedSurface &b) {
        return a.first_selected != b.first_selected ? a.first_selected < b.first_selected : a.order < b.order;
    });
    for (const TouchedSurface &t : search->touched) ilist_add_unique(search->result, &search->result_index, t.surface);
    for (List *k = o->kids; k; k = k->next) search_object((Object *)k->item, search);
}

void find_surfaces_with_selected_vertex(Object *object, List **surfaces)
{
    if (!object || !surfaces || !selection.selected_vertices) return;
    SurfaceSearch search;
    uintptr_t position = 0;
    for (List *v = selection.selected_vertices; v; v = v->next, position++) {
        ptable_set_if_absent(&search.position, v->item, position);
    }
    search.result = surfaces;
    ilist_rebuild(*surfaces, &search.result_index);
    search_object(object, &search);
}

static int surface_is_whole(Surface *surface)
{
    for (List *r = surface->vertrefs; r; r = r->next) {
        if (!vertex_is_selected(((SVertex *)r->item)->vertex)) return 0;
    }
    return 1;
}

List *find_selected_whole_surfaces(void)
{
    List *touched = nullptr;
    find_surfaces_with_selected_vertex(world, &touched);
    List *whole = nullptr, *tail = nullptr;
    for (List *s = touched; s; s = s->next) {
        if (surface_is_whole((Surface *)s->item)) tail = list_add_item_fast(&whole, tail, s->item);
    }
    list_free(&touched);
    return whole;
}

void select_whole_surfaces(void)
{
    List *whole = find_selected_whole_surfaces();
    /* The count and the box are deliberately left as they were. */
    ilist_reset(&selection.selected_vertices, &selected_vertex_index);
    for (List *s = whole; s; s = s->next) {
        for (List *r = ((Surface *)s->item)->vertrefs; r; r = r->next) {
            Vertex *v = ((SVertex *)r->item)->vertex;
            if (v) ilist_add_unique(&selection.selected_vertices, &selected_vertex_index, v);
        }
    }
    list_free(&whole);
}

int select_part_selected_surfaces(void)
{
    display_message("selecting surfaces...");
    List *surfaces = nullptr;
    find_surfaces_with_selected_vertex(world, &surfaces);
    if (!surfaces) {
        display_message("no vertices selected");
        return 1;
    }
    select_surfacelist(surfaces);
    display_message("Done.");
    redraw_all();
    display_status();
    display_message("%d surfaces selected", (int)list_count(surfaces));
    list_free(&surfaces);
    selection_publish_counts();
    return 1;
}
