/*
 * edit/object_ops_optimize.cpp - removing duplicate vertices, repeated
 * references and duplicate or degenerate surfaces ("optimize" and
 * "optimize_surfaces").
 *
 * Vertices at exactly the same position collapse into the first of them
 * in list order; the result is the one the pairwise scan (each vertex
 * against every later one) gives, reached through a hash of positions.
 * Duplicate surfaces are found through a hash of their sorted vertex
 * sets.  The vertices' scratch field numbers them and marks, per surface,
 * which vertices a surface has already referenced.
 */
#include "app/tcl_bridge.h"
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "view/redraw.h"
#include "core/internal.h"
#include "core/point_key.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <unordered_set>
#include <vector>

/* A fresh number for marking vertices: a vertex whose mark equals it has
 * been seen in the current pass. */
static uint32_t next_serial(void)
{
    static uint32_t serial = 0;
    if (++serial == 0) serial = 1;
    return serial;
}

/* ---- vertices ---- */

/* Maps each vertex that has an earlier vertex at the same position to
 * the first vertex there. */
static void find_duplicate_vertices(Object *o, PointerTable *duplicate_of)
{
    std::unordered_map<PointKey, Vertex *, PointKeyHash> first_at;
    for (List *v = o->vertices; v; v = v->next) {
        Vertex *vx = (Vertex *)v->item;
        const float *p = vx->point;
        if (!(p[0] == p[0] && p[1] == p[1] && p[2] == p[2])) continue; /* a NaN equals nothing */
        PointKey key = {{p[0], p[1], p[2]}};
        auto found = first_at.emplace(key, vx);
        if (!found.second) ptable_set(duplicate_of, vx, (uintptr_t)found.first->second);
    }
}

/* Points each surface's first reference to a duplicate at the first
 * vertex and deletes its further references to the same duplicate, as
 * object_replace_surfaceref does. */
static void redirect_references(Object *o, const PointerTable *duplicate_of)
{
    for (List *s = o->surfaces; s; s = s->next) {
        Surface *sf = (Surface *)s->item;
        uint32_t serial = next_serial();
        List **link = &sf->vertrefs;
        while (*link) {
            SVertex *ref = (SVertex *)(*link)->item;
            uintptr_t first;
            if (!ptable_get(duplicate_of, ref->vertex, &first)) {
                link = &(*link)->next;
                continue;
            }
            if (ref->vertex->mark == serial) {
                console_printf("duplicate surface ref deleted\n");
                surface_unlink_ref(sf, link);
                continue;
            }
            ref->vertex->mark = serial;
            ref->vertex = (Vertex *)first;
            link = &(*link)->next;
        }
    }
}

/* Unlinks and frees the duplicates from the vertex list; returns how
 * many. */
static int remove_duplicates(Object *o, const PointerTable *duplicate_of)
{
    int removed = 0;
    List **link = &o->vertices;
    while (*link) {
        if (!ptable_get(duplicate_of, (*link)->item, nullptr)) {
            link = &(*link)->next;
            continue;
        }
        List *gone = *link;
        *link = gone->next;
        myfree(gone->item);
        myfree(gone);
        removed++;
    }
    o->num_vert -= (uint32_t)removed;
    return removed;
}

/* Deletes every later reference of a surface to a vertex it already
 * referenced; returns how many went. */
static int remove_repeated_references(Object *o)
{
    int removed = 0;
    for (List *s = o->surfaces; s; s = s->next) {
        Surface *sf = (Surface *)s->item;
        uint32_t serial = next_serial();
        List **link = &sf->vertrefs;
        while (*link) {
            Vertex *v = ((SVertex *)(*link)->item)->vertex;
            if (v->mark == serial) {
                surface_unlink_ref(sf, link);
                removed++;
                continue;
            }
            v->mark = serial;
            link = &(*link)->next;
        }
    }
    return removed;
}

static void clear_marks(Object *o)
{
    for (List *v = o->vertices; v; v = v->next) ((Vertex *)v->item)->mark = 0;
}

/* The object's own vertices and references, without its children. */
static int optimize_one(Object *o)
{
    PointerTable duplicate_of;
    clear_marks(o);
    find_duplicate_vertices(o, &duplicate_of);
    int removed = 0;
    if (ptable_size(&duplicate_of)) {
        redirect_references(o, &duplicate_of);
        removed = remove_duplicates(o, &duplicate_of);
        console_printf("%d duplicate vertices removed from object %s\n", removed, o->name ? o->name : "");
    }
    return removed;
}

int object_optimize(Object *object)
{
    int removed = 0;
    for (Object *o : subtree_objects(object)) removed += optimize_one(o);
    for (Object *o : subtree_objects(object)) {
        int refs = remove_repeated_references(o);
        if (refs) console_printf("%d duplicate vertex references removed from surfaces\n", refs);
    }
    return removed;
}

/* The objects the optimizers work on: the selected objects, or in vertex
 * mode the owners of the selected vertices; each once, none below
 * another. */
static std::vector<uint32_t> optimize_targets(void)
{
    List *from = selection.selected_objects ? selection.selected_objects : selection.part_selected_objects;
    return handles_of_topmost(from);
}

/* How one of the optimize commands runs over the selected trees. */
struct OptimizeRun {
    const char *name;          /* undo label and message prefix */
    const char *running;
    int (*optimize)(Object *);
    const char *finished;      /* the dialog; takes the count removed */
    const char *done;
};

static int run_optimize(const OptimizeRun &run, void (*tidy_selection)(int removed))
{
    std::vector<uint32_t> targets = optimize_targets();
    if (targets.empty()) {
        display_message("%s: select objects first", run.name);
        return 0;
    }
    display_message("%s - setting up undo", run.name);
    new_undo(UNDO_SNAPSHOT, run.name);
    set_undo_all();
    display_message("%s", run.running);
    int removed = 0;
    for (uint32_t h : targets) {
        Object *o = object_from_handle(h);
        if (o) removed += run.optimize(o);
    }
    tidy_selection(removed);
    selection_publish_counts();
    edit_mark_changed();
    redraw_all();
    windows_info_dialog(run.finished, removed);
    display_message("%s", run.done);
    return 1;
}

int optimize_selected(void)
{
    /* Removed vertices may have been selected. */
    return run_optimize({"optimize", "optimizing vertices...", object_optimize,
                         "Vertex optimization finished - vertices removed = %d", "optimize vertices done"},
                        [](int removed) {
                            if (removed) selection_forget_dead();
                        });
}

/* ---- surfaces ---- */

namespace {

/* The sorted vertex sets of an object's surfaces, flat, for hashing. */
struct SurfaceSets {
    std::vector<Surface *> surfaces;
    std::vector<Vertex *> vertices;   /* each surface's distinct vertices, sorted */
    std::vector<size_t> start;        /* where each surface's set begins; one more at the end */
};

struct SetHash {
    const SurfaceSets *sets;
    size_t operator()(uint32_t i) const
    {
        size_t h = sets->surfaces[i]->num_vertrefs;
        for (size_t k = sets->start[i]; k < sets->start[i + 1]; k++) h = h * 1000003u ^ (uintptr_t)sets->vertices[k];
        return h;
    }
};

struct SetEqual {
    const SurfaceSets *sets;
    bool operator()(uint32_t a, uint32_t b) const
    {
        const SurfaceSets &s = *sets;
        size_t na = s.start[a + 1] - s.start[a], nb = s.start[b + 1] - s.start[b];
        return s.surfaces[a]->num_vertrefs == s.surfaces[b]->num_vertrefs && na == nb &&
               std::equal(s.vertices.begin() + (long)s.start[a], s.vertices.begin() + (long)s.start[a + 1],
                          s.vertices.begin() + (long)s.start[b]);
    }
};

} // namespace

static void build_sets(Object *o, SurfaceSets *sets)
{
    for (List *s = o->surfaces; s; s = s->next) {
        Surface *sf = (Surface *)s->item;
        sets->surfaces.push_back(sf);
        sets->start.push_back(sets->vertices.size());
        for (List *r = sf->vertrefs; r; r = r->next) sets->vertices.push_back(((SVertex *)r->item)->vertex);
        auto first = sets->vertices.begin() + (long)sets->start.back();
        std::sort(first, sets->vertices.end());
        sets->vertices.erase(std::unique(first, sets->vertices.end()), sets->vertices.end());
    }
    sets->start.push_back(sets->vertices.size());
}

static bool has_repeats(const SurfaceSets &sets, uint32_t i)
{
    return sets.start[i + 1] - sets.start[i] < sets.surfaces[i]->num_vertrefs;
}

/* Surface t references every vertex that surface s references. */
static bool set_includes(const SurfaceSets &sets, uint32_t t, uint32_t s)
{
    auto at = [&sets](size_t k) { return sets.vertices.begin() + (long)k; };
    return std::includes(at(sets.start[t]), at(sets.start[t + 1]), at(sets.start[s]), at(sets.start[s + 1]));
}

/* A surface with repeated references marks each later surface with as
 * many references that uses all its vertices.  Candidates are the
 * surfaces around its first vertex, listed only for those vertices. */
static void mark_supersets_of_repeated(const SurfaceSets &sets, const std::vector<uint32_t> &repeated,
                                       std::vector<char> *marked)
{
    std::unordered_map<Vertex *, std::vector<uint32_t>> around;
    for (uint32_t s : repeated) {
        if (sets.start[s + 1] > sets.start[s]) around[sets.vertices[sets.start[s]]];
    }
    for (uint32_t i = 0; i < (uint32_t)sets.surfaces.size(); i++) {
        for (size_t k = sets.start[i]; k < sets.start[i + 1]; k++) {
            auto it = around.find(sets.vertices[k]);
            if (it != around.end()) it->second.push_back(i);
        }
    }
    for (uint32_t s : repeated) {
        if (sets.start[s + 1] == sets.start[s]) continue;
        for (uint32_t t : around[sets.vertices[sets.start[s]]]) {
            if (t <= s || (*marked)[t] || sets.surfaces[t]->num_vertrefs != sets.surfaces[s]->num_vertrefs) continue;
            if (set_includes(sets, t, s)) (*marked)[t] = 1;
        }
    }
}

/* Marks every later surface T with S's reference count whose vertices
 * include all of S's: for surfaces without repeated references that is
 * the same vertex set, found by hash; surfaces with repeats (few, after
 * "optimize") are handled apart. */
static void mark_duplicate_surfaces(const SurfaceSets &sets, std::vector<char> *marked)
{
    uint32_t n = (uint32_t)sets.surfaces.size();
    std::unordered_set<uint32_t, SetHash, SetEqual> seen(16, SetHash{&sets}, SetEqual{&sets});
    std::vector<uint32_t> repeated;
    for (uint32_t i = 0; i < n; i++) {
        if (has_repeats(sets, i)) repeated.push_back(i);
        if (!seen.insert(i).second) (*marked)[i] = 1;
    }
    if (!repeated.empty()) mark_supersets_of_repeated(sets, repeated, marked);
}

/* Unlinks the surfaces for which drop says so; frees them when asked. */
template <typename Drop> static int unlink_surfaces(Object *o, Drop drop, bool free_them)
{
    int n = 0;
    List **link = &o->surfaces;
    while (*link) {
        Surface *s = (Surface *)(*link)->item;
        if (!drop(s)) {
            link = &(*link)->next;
            continue;
        }
        List *gone = *link;
        *link = gone->next;
        myfree(gone);
        o->num_surf--;
        if (free_them) surface_free(s);
        n++;
    }
    return n;
}

static int remove_duplicate_surfaces(Object *o)
{
    SurfaceSets sets;
    build_sets(o, &sets);
    std::vector<char> marked(sets.surfaces.size(), 0);
    mark_duplicate_surfaces(sets, &marked);
    PointerTable doomed;
    for (size_t i = 0; i < marked.size(); i++) {
        if (marked[i]) ptable_set(&doomed, sets.surfaces[i], 1);
    }
    if (!ptable_size(&doomed)) return 0;
    return unlink_surfaces(o, [&doomed](Surface *s) { return ptable_get(&doomed, s, nullptr) != 0; }, true);
}

static bool degenerate(const Surface *s)
{
    return s->num_vertrefs == 1 || (s->num_vertrefs == 2 && s->surface_kind == SURFACE_POLYGON);
}

/* Removes the surfaces with one reference, or two in a polygon, and
 * their vertices that no other surface uses. */
static int remove_degenerate_surfaces(Object *o)
{
    int found = 0;
    for (List *s = o->surfaces; s; s = s->next) found += degenerate((Surface *)s->item);
    if (!found) return 0;
    console_printf("(%d surfaces with 1 or 2 vertices deleted from object %s)\n", found, o->name ? o->name : "");
    uint32_t used = next_serial();
    for (List *s = o->surfaces; s; s = s->next) {
        if (degenerate((Surface *)s->item)) continue;
        for (List *r = ((Surface *)s->item)->vertrefs; r; r = r->next) ((SVertex *)r->item)->vertex->mark = used;
    }
    PointerTable doomed;
    for (List *s = o->surfaces; s; s = s->next) {
        if (!degenerate((Surface *)s->item)) continue;
        for (List *r = ((Surface *)s->item)->vertrefs; r; r = r->next) {
            Vertex *v = ((SVertex *)r->item)->vertex;
            if (v->mark != used) ptable_set(&doomed, v, 1);
        }
    }
    int removed = unlink_surfaces(o, [](Surface *s) { return degenerate(s); }, true);
    List **link = &o->vertices;
    while (*link) {
        if (!ptable_get(&doomed, (*link)->item, nullptr)) {
            link = &(*link)->next;
            continue;
        }
        List *gone = *link;
        *link = gone->next;
        myfree(gone->item);
        myfree(gone);
        o->num_vert--;
    }
    return removed;
}

int object_optimize_surfaces(Object *object)
{
    int removed = 0;
    std::vector<uint32_t> order;
    for (Object *o : subtree_objects(object)) {
        clear_marks(o);
        removed += remove_duplicate_surfaces(o);
        removed += remove_degenerate_surfaces(o);
        order.push_back(object_handle(o));
    }
    /* Emptied objects go, children before their parents, so that a group
     * emptied by its children's going is tested after them. */
    for (auto it = order.rbegin(); it != order.rend(); ++it) {
        Object *o = object_from_handle(*it);
        if (o && o != world && !o->kids && !o->vertices) object_delete(o);
    }
    return removed;
}

int selected_optimize_surfaces(void)
{
    return run_optimize({"optimize surfaces", "optimizing surfaces...", object_optimize_surfaces,
                         "Surface optimization finished - %d surfaces removed", "optimize surfaces done"},
                        [](int) { clear_selection(); });
}
