/*
 * edit/surface_ops_subdivide.cpp - subdividing and spiking triangles and
 * quadrilaterals.  A triangle gets a centre vertex and three triangles
 * round it; a quadrilateral gets four edge midpoints and a centre and is
 * split into four quadrilaterals, or, when spiked, into four triangles
 * meeting at the raised centre (the midpoints then stay in the object
 * unreferenced, as they always have).
 */
#include "edit/surface_ops.h"
#include "edit/surface_ops_batch.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "edit/edit_prefault.h"
#include "app/prefs.h"

#include <unordered_set>

/* A new vertex at the average of the points, with the average normal,
 * raised by factor along the direction when factor is not 0. */
static Vertex *centre_vertex(Vertex *const *v, int n, float factor, const float *direction)
{
    Vertex *c = new_vertex();
    for (int i = 0; i < 3; i++) {
        float p = 0.0f, nrm = 0.0f;
        for (int k = 0; k < n; k++) {
            p += v[k]->point[i];
            nrm += v[k]->normal[i];
        }
        c->point[i] = p / (float)n;
        c->normal[i] = nrm / (float)n;
        if (factor != 0.0f) c->point[i] += factor * direction[i];
    }
    return c;
}

/* A copy of a with the position halfway to b. */
static Vertex *midpoint_vertex(Vertex *a, Vertex *b)
{
    Vertex *m = vertex_clone(a);
    for (int i = 0; i < 3; i++) m->point[i] = (a->point[i] + b->point[i]) / 2.0f;
    return m;
}

static void add_piece(ObjectEdit *e, Surface *old, Vertex *a, Vertex *b, Vertex *c)
{
    Surface *s = new_surface();
    surface_copy_properties(old, s);
    surface_add_tri_refs(s, a, b, c);
    appender_add_surface(&e->append, s);
}

static void add_quad_piece(ObjectEdit *e, Surface *old, Vertex *a, Vertex *b, Vertex *c, Vertex *d)
{
    Surface *s = new_surface();
    surface_copy_properties(old, s);
    RefAppender refs = ref_appender_start(s);
    ref_append(&refs, a, 0.0f, 0.0f);
    ref_append(&refs, b, 1.0f, 0.0f);
    ref_append(&refs, c, 1.0f, 1.0f);
    ref_append(&refs, d, 0.0f, 1.0f);
    appender_add_surface(&e->append, s);
}

static void subdivide_triangle(ObjectEdit *e, Surface *s, Vertex *const *v, float factor)
{
    Vertex *c = centre_vertex(v, 3, factor, s->normal);
    appender_add_vertex(&e->append, c);
    add_piece(e, s, v[0], v[1], c);
    add_piece(e, s, v[1], v[2], c);
    add_piece(e, s, v[2], v[0], c);
}

static void subdivide_quad(ObjectEdit *e, Surface *s, Vertex *const *v, float factor)
{
    Vertex *m[4];
    for (int k = 0; k < 4; k++) m[k] = midpoint_vertex(v[k], v[(k + 1) % 4]);
    Vertex *c = centre_vertex(v, 4, factor, s->normal);
    for (Vertex *mid : m) appender_add_vertex(&e->append, mid);
    appender_add_vertex(&e->append, c);
    if (factor == 0.0f) {
        add_quad_piece(e, s, v[0], m[0], c, m[3]);
        add_quad_piece(e, s, m[0], v[1], m[1], c);
        add_quad_piece(e, s, c, m[1], v[2], m[2]);
        add_quad_piece(e, s, m[3], c, m[2], v[3]);
        return;
    }
    for (int k = 0; k < 4; k++) add_piece(e, s, v[k], v[(k + 1) % 4], c);
}

/* Subdivides within a batch; returns 1 when the surface was replaced. */
static int subdivide_in(ObjectEdit *e, Surface *s, float factor)
{
    Vertex *v[4];
    int n = 0;
    for (List *r = s->vertrefs; r; r = r->next) {
        if (n == 4) return 0;
        v[n] = ((SVertex *)r->item)->vertex;
        if (!v[n]) return 0;
        n++;
    }
    if (n == 3) subdivide_triangle(e, s, v, factor);
    else if (n == 4) subdivide_quad(e, s, v, factor);
    else return 0;
    edit_drop_surface(e, s);
    return 1;
}

int surface_subdivide(Object *object, Surface *surface, float factor)
{
    if (!object || !surface) return 0;
    SurfaceEdits edits;
    int done = subdivide_in(edits_for(&edits, object), surface, factor);
    edits_finish(&edits);
    return done;
}

/* Every surface of the object and its descendants, each object once. */
static int subdivide_object_in(SurfaceEdits *edits, Object *object, float factor, std::unordered_set<Object *> *seen)
{
    if (!seen->insert(object).second) return 0;
    int count = 0;
    ObjectEdit *e = edits_for(edits, object);
    for (Surface *s : object_surfaces(object)) count += subdivide_in(e, s, factor);
    for (List *k = object->kids; k; k = k->next) count += subdivide_object_in(edits, (Object *)k->item, factor, seen);
    return count;
}

int object_subdivide_surfaces(Object *object, float factor)
{
    if (!object) return 0;
    SurfaceEdits edits;
    std::unordered_set<Object *> seen;
    int count = subdivide_object_in(&edits, object, factor, &seen);
    edits_finish(&edits);
    return count;
}

struct SubdivideRun {
    float factor;
    const char *label;
    const char *running;
    const char *done;
    int recalc_normals;
};

static int selected_subdivide_run(const SubdivideRun &run)
{
    std::vector<OwnedSurface> whole = whole_selected_surfaces();
    if (no_surfaces_selected(whole)) {
        display_message("no surfaces selected");
        return 0;
    }
    EditPrefault prefault(4.0);   /* four pieces and five points a quadrilateral */
    new_undo(UNDO_SNAPSHOT, run.label);
    set_undo_all();
    display_message("%s", run.running);
    SurfaceEdits edits;
    std::unordered_set<Object *> seen;
    int count = 0;
    for (const OwnedSurface &w : whole) count += subdivide_in(edits_for(&edits, w.object), w.surface, run.factor);
    for (List *l = selection.selected_objects; l; l = l->next) {
        count += subdivide_object_in(&edits, (Object *)l->item, run.factor, &seen);
    }
    edits_finish(&edits);
    if (run.recalc_normals) recalc_selection_normals(whole);
    clear_selection();
    selection_publish_counts();
    model_changed_redraw_all();
    display_status();
    display_message(run.done, count);
    return 1;
}

int selected_subdivide_surfaces(void)
{
    return selected_subdivide_run({0.0f, "subdivide", "subdividing...", "surfaces subdivided: %d", 0});
}

int selected_spike_surfaces(void)
{
    return selected_subdivide_run({(float)prefs.spike_factor, "spike", "spike...", "surfaces spiked: %d", 1});
}
