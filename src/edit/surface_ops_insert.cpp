/*
 * edit/surface_ops_insert.cpp - inserting vertices halfway along the
 * edges whose two ends are selected.
 *
 * The edges of a surface are found from the positions of its selected
 * vertices in one pass.  When no vertex appears twice in the outline, all
 * the new vertices of a surface are put in place in one rebuild of its
 * reference list; the result is the same as inserting them one after the
 * other, because an insertion between two neighbours never separates
 * another pair of neighbours.  Outlines that repeat a vertex are done one
 * insertion at a time.
 */
#include "edit/surface_ops.h"
#include "edit/surface_ops_batch.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "app/shared_state.h"
#include "view/redraw.h"

#include <cstdlib>
#include <vector>

/* The reference at each position of the outline. */
static std::vector<SVertex *> outline(Surface *surface)
{
    std::vector<SVertex *> refs;
    refs.reserve(surface->num_vertrefs);
    for (List *r = surface->vertrefs; r; r = r->next) refs.push_back((SVertex *)r->item);
    return refs;
}

/* The new vertex for the edge from a to b and the texture of its
 * reference. */
static Vertex *edge_midpoint(SVertex *ra, SVertex *rb, float *u, float *v)
{
    Vertex *m = vertex_clone(ra->vertex);
    for (int i = 0; i < 3; i++) m->point[i] = (ra->vertex->point[i] + rb->vertex->point[i]) / 2.0f;
    *u = (ra->u + rb->u) / 2.0f;
    *v = (ra->v + rb->v) / 2.0f;
    return m;
}

/* Inserts a reference to vertex after the node, or at the head when node
 * is null. */
static void insert_ref_after(Surface *surface, List *node, Vertex *vertex, float u, float v)
{
    List *fresh = (List *)myalloc(sizeof(List));
    fresh->item = new_svertex(vertex, u, v);
    List **link = node ? &node->next : &surface->vertrefs;
    fresh->next = *link;
    *link = fresh;
    surface->num_vertrefs++;
}

/* The node holding a directly followed by b, or b directly followed by a. */
static List *find_edge(Surface *surface, Vertex *a, Vertex *b)
{
    for (List *r = surface->vertrefs; r && r->next; r = r->next) {
        Vertex *x = ((SVertex *)r->item)->vertex, *y = ((SVertex *)r->next->item)->vertex;
        if ((x == a && y == b) || (x == b && y == a)) return r;
    }
    return nullptr;
}

/* One insertion, the vertex going to the appender's object. */
static Vertex *insert_one(ObjectAppender *append, Surface *surface, Vertex *a, Vertex *b)
{
    unsigned int n = surface->num_vertrefs;
    unsigned int ia = surface_vertex_index(surface, a), ib = surface_vertex_index(surface, b);
    if (ia == LIST_NOT_FOUND || ib == LIST_NOT_FOUND) return nullptr;
    if (n != 2 && ia == 0 && ib == n - 1 && surface->surface_kind == SURFACE_LINE) {
        console_printf("not joing start to end - you should not see this message - report to Orlo\n");
        return nullptr;
    }
    float u, v;
    Vertex *m = edge_midpoint((SVertex *)list_get_item(surface->vertrefs, ia),
                              (SVertex *)list_get_item(surface->vertrefs, ib), &u, &v);
    appender_add_vertex(append, m);
    unsigned int d = ia > ib ? ia - ib : ib - ia;
    if (n != 2 && d == n - 1) {
        /* The closing edge: the new point starts the outline. */
        insert_ref_after(surface, nullptr, m, u, v);
        return m;
    }
    List *edge = find_edge(surface, a, b);
    if (!edge) return nullptr;
    insert_ref_after(surface, edge, m, u, v);
    return m;
}

Vertex *surface_insert_vertex(Surface *surface, Vertex *a, Vertex *b)
{
    if (!surface || !a || !b) return nullptr;
    Object *owner = object_of_surface(world, surface);
    if (!owner) {
        console_printf("surface_insert_vertex: the surface is in no object\n");
        return nullptr;
    }
    ObjectAppender append;
    appender_start(&append, owner);
    return insert_one(&append, surface, a, b);
}

/* An edge of the outline between positions first < second. */
struct EdgePair {
    unsigned int first, second;
};

/* The edges between selected vertices, in the order of a walk over the
 * selected vertices (by first reference) and, for each, its neighbours
 * further on.  *repeats tells whether some vertex appears twice. */
static std::vector<EdgePair> selected_edges(Surface *surface, const std::vector<SVertex *> &refs, int *repeats)
{
    size_t n = refs.size();
    PointerTable first_at;
    std::vector<char> selected_first(n, 0);
    *repeats = 0;
    for (size_t i = 0; i < n; i++) {
        Vertex *v = refs[i]->vertex;
        if (!ptable_set_if_absent(&first_at, v, i)) *repeats = 1;
        else if (v && vertex_is_selected(v)) selected_first[i] = 1;
    }
    std::vector<EdgePair> pairs;
    size_t selected = 0;
    for (char s : selected_first) selected += s;
    if (selected < 2) return pairs;
    int closed = surface->surface_kind != SURFACE_LINE;
    for (size_t i = 0; i < n; i++) {
        if (!selected_first[i]) continue;
        if (i + 1 < n && selected_first[i + 1]) pairs.push_back({(unsigned)i, (unsigned)(i + 1)});
        if (closed && i == 0 && n > 2 && selected_first[n - 1]) pairs.push_back({0, (unsigned)(n - 1)});
    }
    return pairs;
}

/* Inserts every edge's vertex into an outline without repeated vertices
 * in one rebuild; the new vertices are appended to *made in edge order. */
static void insert_all(ObjectAppender *append, Surface *surface, const std::vector<SVertex *> &refs,
                       const std::vector<EdgePair> &pairs, std::vector<Vertex *> *made)
{
    size_t n = refs.size();
    std::vector<Vertex *> after(n, nullptr);
    std::vector<float> tex(2 * n, 0.0f);
    Vertex *head = nullptr;
    float head_u = 0, head_v = 0;
    for (const EdgePair &p : pairs) {
        float u, v;
        Vertex *m = edge_midpoint(refs[p.first], refs[p.second], &u, &v);
        appender_add_vertex(append, m);
        made->push_back(m);
        if (p.second == p.first + 1 || n == 2) {
            after[p.first] = m, tex[2 * p.first] = u, tex[2 * p.first + 1] = v;
        } else {
            head = m, head_u = u, head_v = v;
        }
    }
    size_t i = 0;
    for (List *r = surface->vertrefs; r; i++) {
        List *next = r->next;
        if (i < n && after[i]) insert_ref_after(surface, r, after[i], tex[2 * i], tex[2 * i + 1]);
        r = next;
    }
    if (head) insert_ref_after(surface, nullptr, head, head_u, head_v);
}

static void insert_on_surface(ObjectAppender *append, Surface *surface, std::vector<Vertex *> *made)
{
    std::vector<SVertex *> refs = outline(surface);
    int repeats;
    std::vector<EdgePair> pairs = selected_edges(surface, refs, &repeats);
    if (pairs.empty()) return;
    if (!repeats) {
        insert_all(append, surface, refs, pairs, made);
        return;
    }
    for (const EdgePair &p : pairs) {
        Vertex *m = insert_one(append, surface, refs[p.first]->vertex, refs[p.second]->vertex);
        if (m) made->push_back(m);
    }
}

int selected_insert_vertex(void)
{
    if (selection.num_selected_vertices < 2) {
        /* Nothing happens; the user learns why. */
        display_message("insert vertex - select two neighbouring vertices of a surface first");
        return 0;
    }
    display_message("insert vertex...");
    List *touched = nullptr;
    find_surfaces_with_selected_vertex(world, &touched);
    std::vector<OwnedSurface> surfaces = surfaces_with_owners(touched);
    list_free(&touched);
    SurfaceEdits edits;
    std::vector<Vertex *> made;
    for (const OwnedSurface &w : surfaces) insert_on_surface(&edits_for(&edits, w.object)->append, w.surface, &made);
    edits_finish(&edits);
    List *added = nullptr, *tail = nullptr;
    for (Vertex *v : made) tail = list_add_item_fast(&added, tail, v);
    new_undo(UNDO_ADDED_VERTICES, "insert vertex");
    set_undo_vertices(added);
    for (Vertex *v : made) add_to_selected_list(v);
    list_free(&added);
    find_bounding_box();
    selection_publish_counts();
    unsaved_changes = 1;
    redraw_orth();
    display_status();
    display_message("insert vertex done");
    return 1;
}
