/*
 * edit/surface_ops_spline.cpp - smoothing an outline into a uniform
 * quadratic B-spline.  Each corner becomes spline_steps points on the
 * curve through its two neighbours; an open line keeps copies of its end
 * points.  The old points go from the object unless another surface still
 * uses them.
 *
 * Whether another surface uses a point is answered from a count of the
 * surfaces that reference each vertex, made once per object and kept up
 * to date as surfaces are splined, instead of a scan of every surface;
 * the counts are found through the vertices' scratch marks, not hashed.
 */
#include "edit/surface_ops.h"
#include "edit/surface_ops_batch.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "edit/edit_prefault.h"
#include "app/prefs.h"

#include <memory>
#include <unordered_map>
#include <vector>

/* How many surfaces of an object reference each of its vertices, and
 * which are still held.  A vertex's place is its scratch mark, trusted
 * only when the object's vertex at that place is the vertex itself:
 * vertices of other objects (broken references) have no place and are
 * never dropped. */
struct VertexUse {
    std::vector<Vertex *> members;
    std::vector<uint32_t> surfaces_using;
    std::vector<uint8_t> held;
    std::vector<uint32_t> stamp;     /* last pass that met the vertex */
    uint32_t pass = 0;
};

static long member_place(const VertexUse *use, const Vertex *v)
{
    uint32_t i = v->mark;
    return i < use->members.size() && use->members[i] == v ? (long)i : -1;
}

/* Starts a pass over one surface's points: each place answers "first
 * meeting" once. */
static void begin_pass(VertexUse *use) { use->pass++; }

static bool first_meeting(VertexUse *use, long place)
{
    if (use->stamp[(size_t)place] == use->pass) return false;
    use->stamp[(size_t)place] = use->pass;
    return true;
}

struct SplineRun {
    SurfaceEdits edits;
    std::unordered_map<Object *, std::unique_ptr<VertexUse>> use;
    int steps;
};

static VertexUse *vertex_use(SplineRun *run, Object *object)
{
    std::unique_ptr<VertexUse> &slot = run->use[object];
    if (slot) return slot.get();
    slot.reset(new VertexUse);
    VertexUse *use = slot.get();
    for (List *v = object->vertices; v; v = v->next) use->members.push_back((Vertex *)v->item);
    /* Backwards, so a vertex listed twice keeps its first place. */
    for (size_t i = use->members.size(); i-- > 0;) use->members[i]->mark = (uint32_t)i;
    use->surfaces_using.assign(use->members.size(), 0);
    use->held.assign(use->members.size(), 1);
    use->stamp.assign(use->members.size(), 0);
    for (List *s = object->surfaces; s; s = s->next) {
        begin_pass(use);
        for (List *r = ((Surface *)s->item)->vertrefs; r; r = r->next) {
            Vertex *v = ((SVertex *)r->item)->vertex;
            long place = v ? member_place(use, v) : -1;
            if (place >= 0 && first_meeting(use, place)) use->surfaces_using[(size_t)place]++;
        }
    }
    return use;
}

/* The s points of one curve piece through the control points a, b, c;
 * none when s is 0. */
static void add_piece(std::vector<Vertex *> *out, const float *a, const float *b, const float *c, int steps)
{
    if (steps <= 0) return;
    int step = 1024 / steps;
    for (int i = 0; i < steps; i++) {
        double t = (double)i * step;
        double wa = (t - 1024) * (t - 1024) / 2048, wb = 768 - (t - 512) * (t - 512) / 1024, wc = t * t / 2048;
        float p[3];
        for (int k = 0; k < 3; k++) p[k] = (float)((a[k] * wa + b[k] * wb + c[k] * wc) / 1024);
        out->push_back(new_vertex_set(p[0], p[1], p[2]));
    }
}

static std::vector<Vertex *> spline_points(const std::vector<Vertex *> &p, int closed, int steps)
{
    std::vector<Vertex *> out;
    size_t n = p.size();
    out.reserve(n * (size_t)steps + 2);
    if (closed) add_piece(&out, p[n - 1]->point, p[0]->point, p[1]->point, steps);
    else out.push_back(vertex_clone(p[0]));
    for (size_t k = 0; k + 2 < n; k++) add_piece(&out, p[k]->point, p[k + 1]->point, p[k + 2]->point, steps);
    if (closed) add_piece(&out, p[n - 2]->point, p[n - 1]->point, p[0]->point, steps);
    else out.push_back(vertex_clone(p[n - 1]));
    return out;
}

/* Drops the surface's vertices that no other surface of the object uses;
 * the others lose this surface from their count. */
static void release_old_points(ObjectEdit *e, VertexUse *use, const std::vector<Vertex *> &points)
{
    begin_pass(use);
    for (Vertex *v : points) {
        long place = member_place(use, v);
        if (place < 0 || !first_meeting(use, place)) continue;
        uint32_t &count = use->surfaces_using[(size_t)place];
        if (count > 1) {
            count--;
            continue;
        }
        count = 0;
        if (!use->held[(size_t)place]) continue;
        use->held[(size_t)place] = 0;
        edit_drop_vertex(e, v);
    }
}

/* Splines one surface of the object; returns 1 when it was changed. */
static int spline_in(SplineRun *run, Object *object, Surface *surface)
{
    std::vector<Vertex *> points;
    for (List *r = surface->vertrefs; r; r = r->next) {
        Vertex *v = ((SVertex *)r->item)->vertex;
        if (!v) return 0;
        points.push_back(v);
    }
    if (points.size() < 2) return 0;
    if ((double)points.size() * run->steps > SPLINE_MAX_POINTS) {
        console_printf("spline: %u points in %d steps each would be too many - surface left as it was\n",
                       (unsigned)points.size(), run->steps);
        return 0;
    }
    std::vector<Vertex *> curve = spline_points(points, surface->surface_kind != SURFACE_LINE, run->steps);
    ObjectEdit *e = edits_for(&run->edits, object);
    release_old_points(e, vertex_use(run, object), points);
    list_free_all(&surface->vertrefs);
    surface->num_vertrefs = 0;
    RefAppender refs = ref_appender_start(surface);
    for (Vertex *v : curve) {
        ref_append(&refs, v, 0.0f, 0.0f);
        appender_add_vertex(&e->append, v);
    }
    return 1;
}

/* spline_steps within [0, SPLINE_MAX_STEPS]: with 0 or less a curve
 * piece adds nothing, so a closed outline loses every point and an open
 * line keeps only copies of its two ends. */
static int spline_steps_setting(void)
{
    int steps = prefs.spline_steps;
    if (steps < 0) return 0;
    return steps > SPLINE_MAX_STEPS ? SPLINE_MAX_STEPS : steps;
}

void surface_spline(Surface *surface, Object *)
{
    if (!surface) return;
    Object *owner = object_of_surface(world, surface);
    if (!owner) {
        console_printf("can't find surfaces parent!\n");
        return;
    }
    SplineRun run;
    run.steps = spline_steps_setting();
    spline_in(&run, owner, surface);
    edits_finish(&run.edits);
}

int spline_selected(void)
{
    std::vector<OwnedSurface> whole = whole_selected_surfaces();
    if (no_surfaces_selected(whole)) {
        display_message("no surfaces selected");
        return 0;
    }
    SplineRun run;
    run.steps = spline_steps_setting();
    display_message("setting up undo for spline...");
    EditPrefault prefault((double)run.steps);   /* each corner becomes steps points */
    new_undo(UNDO_SNAPSHOT, "spline");
    set_undo_all();
    display_message("splining surfaces...");
    std::vector<OwnedSurface> targets = whole;
    for (List *l = selection.selected_objects; l; l = l->next) {
        Object *o = (Object *)l->item;
        for (Surface *s : object_surfaces(o)) targets.push_back({o, s});
    }
    List *surfaces = nullptr, *tail = nullptr;
    int count = 0;
    for (const OwnedSurface &t : targets) {
        count += spline_in(&run, t.object, t.surface);
        tail = list_add_item_fast(&surfaces, tail, t.surface);
    }
    edits_finish(&run.edits);
    recalc_selection_normals(whole);
    /* The same surfaces and objects are selected again. */
    List *objects = list_clone(selection.selected_objects);
    clear_selection();
    select_surfacelist(surfaces);
    select_objectlist(objects);
    list_free(&objects);
    list_free(&surfaces);
    selection_publish_counts();
    model_changed_redraw_all();
    display_status();
    display_message("surfaces splined: %d", count);
    return 1;
}
