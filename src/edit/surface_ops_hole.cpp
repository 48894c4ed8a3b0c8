/*
 * edit/surface_ops_hole.cpp - holes and bevels.  A hole shrinks a copy of
 * a polygon's outline about its centre and joins the two outlines with a
 * ring of quadrilaterals (the selection commands leave the opening
 * uncapped); a bevel raises an inset copy of the outline along the normal
 * and joins it to the old outline with side quadrilaterals.
 */
#include "edit/surface_ops.h"
#include "edit/surface_ops_batch.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "edit/edit_prefault.h"
#include "app/prefs.h"

#include <vector>

/* The references of a surface, or an empty list when one names no
 * vertex. */
static std::vector<SVertex *> surface_refs(Surface *s)
{
    std::vector<SVertex *> refs;
    refs.reserve(s->num_vertrefs);
    for (List *r = s->vertrefs; r; r = r->next) {
        SVertex *ref = (SVertex *)r->item;
        if (!ref->vertex) return std::vector<SVertex *>();
        refs.push_back(ref);
    }
    return refs;
}

/* Copies of the outline's vertices moved towards their centre by factor. */
static std::vector<Vertex *> shrunk_copies(const std::vector<SVertex *> &outer, float factor)
{
    std::vector<Vertex *> inner;
    double sum[3] = {0, 0, 0};
    for (SVertex *ref : outer) {
        inner.push_back(vertex_clone(ref->vertex));
        for (int i = 0; i < 3; i++) sum[i] += ref->vertex->point[i];
    }
    float c[3];
    for (int i = 0; i < 3; i++) c[i] = (float)(sum[i] / (double)outer.size());
    for (Vertex *v : inner) {
        for (int i = 0; i < 3; i++) v->point[i] = c[i] + (v->point[i] - c[i]) * factor;
    }
    return inner;
}

static float scaled_texture(float t, float factor)
{
    return (t - 0.5f) * factor + 0.5f;
}

static Surface *make_hole_in(ObjectEdit *e, Surface *s, float factor, int no_cap)
{
    if (s->surface_kind != SURFACE_POLYGON) return nullptr;
    std::vector<SVertex *> outer = surface_refs(s);
    size_t n = outer.size();
    if (n < 3) return nullptr;
    std::vector<Vertex *> inner = shrunk_copies(outer, factor);
    for (Vertex *v : inner) appender_add_vertex(&e->append, v);
    Surface *cap = nullptr;
    RefAppender cap_refs = {nullptr, nullptr};
    if (!no_cap) {
        cap = new_surface();
        surface_copy_properties(s, cap);
        cap_refs = ref_appender_start(cap);
    }
    for (size_t k = 0; k < n; k++) {
        size_t kn = (k + 1) % n;
        SVertex *o1 = outer[k], *o2 = outer[kn];
        /* Outer edge, then back along the inner edge; a factor above 1
         * puts the inner outline outside, so the ring turns over. */
        SVertex ring[4] = {{o1->vertex, o1->u, o1->v},
                           {o2->vertex, o2->u, o2->v},
                           {inner[kn], scaled_texture(o2->u, factor), scaled_texture(o2->v, factor)},
                           {inner[k], scaled_texture(o1->u, factor), scaled_texture(o1->v, factor)}};
        Surface *r = new_surface();
        surface_copy_properties(s, r);
        RefAppender refs = ref_appender_start(r);
        for (int i = 0; i < 4; i++) {
            const SVertex &q = ring[factor > 1.0f ? 3 - i : i];
            ref_append(&refs, q.vertex, q.u, q.v);
        }
        if (cap) ref_append(&cap_refs, ring[2].vertex, ring[2].u, ring[2].v);
        appender_add_surface(&e->append, r);
    }
    if (cap) appender_add_surface(&e->append, cap);
    edit_drop_surface(e, s);
    return cap;
}

Surface *surface_make_hole(Object *object, Surface *surface, float factor, int no_cap)
{
    if (!object || !surface) return nullptr;
    SurfaceEdits edits;
    Surface *cap = make_hole_in(edits_for(&edits, object), surface, factor, no_cap);
    edits_finish(&edits);
    return cap;
}

/* Runs the operation on every whole selected surface and on each
 * selected object's own surfaces as they were before it started; returns
 * how many surfaces it changed. */
static int run_on_selection(const std::vector<OwnedSurface> &whole, int (*op)(ObjectEdit *, Surface *, float),
                            float parameter)
{
    SurfaceEdits edits;
    int count = 0;
    for (const OwnedSurface &w : whole) count += op(edits_for(&edits, w.object), w.surface, parameter);
    for (List *l = selection.selected_objects; l; l = l->next) {
        Object *o = (Object *)l->item;
        ObjectEdit *e = edits_for(&edits, o);
        for (Surface *s : object_surfaces(o)) count += op(e, s, parameter);
    }
    edits_finish(&edits);
    return count;
}

static int hole_op(ObjectEdit *e, Surface *s, float factor)
{
    uint32_t before = e->object->num_surf;
    make_hole_in(e, s, factor, 1);
    return e->object->num_surf != before;
}

int selected_surfaces_make_hole(void)
{
    std::vector<OwnedSurface> whole = whole_selected_surfaces();
    if (no_surfaces_selected(whole)) {
        display_message("surface make hole - no surfaces selected");
        return 0;
    }
    display_message("make hole...");
    EditPrefault prefault(4.0);   /* a ring of quadrilaterals and an inner outline */
    new_undo(UNDO_SNAPSHOT, "make hole");
    set_undo_all();
    if (prefs.hole_percent < 0) {
        windows_message_dialog("the hole %% setting is less than zero - please set to a positive number");
        return 0;
    }
    run_on_selection(whole, hole_op, (float)(prefs.hole_percent * 0.01));
    clear_selection();
    selection_publish_counts();
    model_changed_redraw_all();
    display_message("make hole - done");
    display_status();
    return 1;
}

/* ---- bevel ---- */

static void difference(const float *a, const float *b, float *out)
{
    for (int i = 0; i < 3; i++) out[i] = a[i] - b[i];
}

/* The corner's new point: inset along the bisector and lifted along the
 * normal, both by size. */
static void bevel_point(const float *p, const float *prev, const float *next, const float *normal, float size,
                        float *out)
{
    float a[3], c[3], d[3];
    difference(next, p, a);
    normalize_point(a);
    difference(prev, p, c);
    normalize_point(c);
    for (int i = 0; i < 3; i++) d[i] = a[i] + c[i];
    normalize_point(d);
    for (int i = 0; i < 3; i++) out[i] = p[i] + d[i] * size + normal[i] * size;
}

static Surface *bevel_in(ObjectEdit *e, Surface *s)
{
    std::vector<SVertex *> outer = surface_refs(s);
    size_t n = outer.size();
    if (n < 3) return nullptr;
    float size = (float)prefs.bevel_size;
    Surface *top = new_surface();
    surface_copy_properties(s, top);
    RefAppender top_refs = ref_appender_start(top);
    std::vector<Vertex *> raised(n);
    for (size_t k = 0; k < n; k++) {
        const float *p = outer[k]->vertex->point;
        float q[3];
        bevel_point(p, outer[(k + n - 1) % n]->vertex->point, outer[(k + 1) % n]->vertex->point, s->normal, size, q);
        raised[k] = appender_new_vertex(&e->append, q[0], q[1], q[2]);
        ref_append(&top_refs, raised[k], 0.0f, 0.0f);
    }
    appender_add_surface(&e->append, top);
    for (size_t k = 0; k < n; k++) {
        size_t kn = (k + 1) % n;
        Surface *side = new_surface();
        surface_copy_properties(s, side);
        RefAppender refs = ref_appender_start(side);
        ref_append(&refs, outer[k]->vertex, outer[k]->u, outer[k]->v);
        ref_append(&refs, outer[kn]->vertex, outer[kn]->u, outer[kn]->v);
        ref_append(&refs, raised[kn], 0.0f, 0.0f);
        ref_append(&refs, raised[k], 0.0f, 0.0f);
        appender_add_surface(&e->append, side);
    }
    edit_drop_surface(e, s);
    return top;
}

Surface *surface_bevel(Object *object, Surface *surface)
{
    if (!object || !surface) return nullptr;
    SurfaceEdits edits;
    Surface *top = bevel_in(edits_for(&edits, object), surface);
    edits_finish(&edits);
    return top;
}

static int bevel_op(ObjectEdit *e, Surface *s, float)
{
    return bevel_in(e, s) != nullptr;
}

int selected_surfaces_bevel(void)
{
    std::vector<OwnedSurface> whole = whole_selected_surfaces();
    if (no_surfaces_selected(whole)) {
        display_message("surface bevel - no surfaces selected");
        return 0;
    }
    display_message("bevel...");
    EditPrefault prefault(5.0);   /* the sides, the raised face and its outline */
    new_undo(UNDO_SNAPSHOT, "bevel");
    set_undo_all();
    int count = run_on_selection(whole, bevel_op, 0.0f);
    recalc_selection_normals(whole);
    clear_selection();
    selection_publish_counts();
    model_changed_redraw_all();
    display_status();
    display_message("surfaces beveled: %d", count);
    return 1;
}
