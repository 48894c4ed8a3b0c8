/*
 * edit/surface_ops_triangulate.cpp - splitting polygons into triangles
 * with GLU's polygon tessellator.  Registering an edge-flag callback makes
 * the tessellator deliver independent triangles only (no fans or strips),
 * so every three vertices it passes make one triangle.  The tessellator
 * keeps the outline's winding, so the triangles face the way the polygon
 * did.  A polygon the tessellator cannot handle (a self-intersecting
 * outline, for which it would need to invent vertices) is reported and
 * left as it was.  Small outlines of an order type met before take the
 * triangles the tessellator made then (triangulate_cache.h).
 */
#include "edit/surface_ops.h"
#include "edit/surface_ops_batch.h"
#include "edit/selection.h"
#include "edit/triangulate_cache.h"
#include "edit/undo.h"
#include "edit/edit_prefault.h"

#include <GL/glu.h>

#include <cmath>
#include <unordered_set>
#include <vector>

/* One polygon going through the tessellator. */
struct Tessellation {
    Surface *source;
    List *triangles;
    List *tail;
    Surface *current;
    RefAppender refs;
    int count;
    int failed;
};

static void close_triangle(Tessellation *t)
{
    if (!t->current) return;
    if (t->current->vertrefs) t->tail = list_add_item_fast(&t->triangles, t->tail, t->current);
    else surface_free(t->current);
    t->current = nullptr;
}

static void open_triangle(Tessellation *t)
{
    t->current = new_surface();
    surface_copy_properties(t->source, t->current);
    t->refs = ref_appender_start(t->current);
    t->count = 0;
}

static void GLAPIENTRY tess_begin(GLenum, void *data)
{
    Tessellation *t = (Tessellation *)data;
    close_triangle(t);
    open_triangle(t);
}

static void GLAPIENTRY tess_vertex(void *vertex_data, void *data)
{
    Tessellation *t = (Tessellation *)data;
    if (!t->current) open_triangle(t);
    if (++t->count == 4) {
        close_triangle(t);
        open_triangle(t);
        t->count = 1;
    }
    /* After an error the tessellator may pass vertices it made itself,
     * which carry no reference; the run is discarded anyway. */
    SVertex *ref = (SVertex *)vertex_data;
    if (ref) ref_append(&t->refs, ref->vertex, ref->u, ref->v);
}

static void GLAPIENTRY tess_end(void *data)
{
    close_triangle((Tessellation *)data);
}

static void GLAPIENTRY tess_error(GLenum error, void *data)
{
    console_printf("triangulation error (%d) %s\n", (int)error, (const char *)gluErrorString(error));
    ((Tessellation *)data)->failed = 1;
}

static void GLAPIENTRY tess_edge_flag(GLboolean, void *) {}

static GLUtesselator *new_tessellator(void)
{
    GLUtesselator *tess = gluNewTess();
    if (!tess) {
        console_printf("triangulation error - no memory for the tessellator\n");
        return nullptr;
    }
    gluTessCallback(tess, GLU_TESS_BEGIN_DATA, (_GLUfuncptr)tess_begin);
    gluTessCallback(tess, GLU_TESS_VERTEX_DATA, (_GLUfuncptr)tess_vertex);
    gluTessCallback(tess, GLU_TESS_END_DATA, (_GLUfuncptr)tess_end);
    gluTessCallback(tess, GLU_TESS_ERROR_DATA, (_GLUfuncptr)tess_error);
    gluTessCallback(tess, GLU_TESS_EDGE_FLAG_DATA, (_GLUfuncptr)tess_edge_flag);
    return tess;
}

static void free_surfaces(List **surfaces)
{
    for (List *s = *surfaces; s; s = s->next) surface_free((Surface *)s->item);
    list_free(surfaces);
}

/* The outline's points in double precision, or empty when one is missing
 * or not a finite number (the tessellator must not see those). */
static std::vector<GLdouble> outline_coordinates(Surface *surface)
{
    std::vector<GLdouble> xyz;
    xyz.reserve(3 * (size_t)surface->num_vertrefs);
    for (List *r = surface->vertrefs; r; r = r->next) {
        Vertex *v = ((SVertex *)r->item)->vertex;
        if (!v) return std::vector<GLdouble>();
        for (int i = 0; i < 3; i++) {
            if (!std::isfinite(v->point[i])) return std::vector<GLdouble>();
            xyz.push_back(v->point[i]);
        }
    }
    return xyz;
}

static List *tessellate(GLUtesselator *tess, Surface *surface, std::vector<GLdouble> &xyz)
{
    Tessellation t = {surface, nullptr, nullptr, nullptr, {nullptr, nullptr}, 0, 0};
    gluTessBeginPolygon(tess, &t);
    gluTessBeginContour(tess);
    size_t i = 0;
    for (List *r = surface->vertrefs; r; r = r->next, i += 3) gluTessVertex(tess, &xyz[i], r->item);
    gluTessEndContour(tess);
    gluTessEndPolygon(tess);
    close_triangle(&t);
    if (t.failed) free_surfaces(&t.triangles);
    return t.triangles;
}

/* The outline's references in order. */
static int outline_refs(Surface *surface, SVertex **refs)
{
    int n = 0;
    for (List *r = surface->vertrefs; r && n < TRIANGULATE_CACHE_MAX_CORNERS; r = r->next) refs[n++] = (SVertex *)r->item;
    return n;
}

/* The triangles as corners of the outline; false when one of them holds
 * a point that is not a corner or the count is not what an outline of
 * that many corners gives. */
static bool corners_of(Surface *surface, List *triangles, CornerTriangles *out)
{
    SVertex *refs[TRIANGULATE_CACHE_MAX_CORNERS];
    int n = outline_refs(surface, refs);
    out->count = 0;
    for (List *l = triangles; l; l = l->next) {
        Surface *triangle = (Surface *)l->item;
        if (triangle->num_vertrefs != 3 || out->count == n - 2) return false;
        int k = 0;
        for (List *r = triangle->vertrefs; r; r = r->next, k++) {
            Vertex *v = ((SVertex *)r->item)->vertex;
            int corner = 0;
            while (corner < n && refs[corner]->vertex != v) corner++;
            if (corner == n) return false;
            out->corners[3 * out->count + k] = (uint8_t)corner;
        }
        out->count++;
    }
    return out->count == n - 2;
}

static List *triangles_from_corners(Surface *surface, const CornerTriangles &known)
{
    SVertex *refs[TRIANGULATE_CACHE_MAX_CORNERS];
    outline_refs(surface, refs);
    List *triangles = nullptr, *tail = nullptr;
    for (int k = 0; k < known.count; k++) {
        Surface *triangle = new_surface();
        surface_copy_properties(surface, triangle);
        RefAppender appender = ref_appender_start(triangle);
        for (int c = 0; c < 3; c++) {
            const SVertex *ref = refs[known.corners[3 * k + c]];
            ref_append(&appender, ref->vertex, ref->u, ref->v);
        }
        tail = list_add_item_fast(&triangles, tail, triangle);
    }
    return triangles;
}

static List *triangulate_with(GLUtesselator *tess, Surface *surface)
{
    if (!surface || surface->num_vertrefs < 4) return nullptr;
    std::vector<GLdouble> xyz = outline_coordinates(surface);
    if (xyz.empty()) {
        console_printf("triangulation error - a point of the surface is missing or not a number\n");
        return nullptr;
    }
    OutlineKey key;
    bool keyed = triangulate_cache_enabled() && outline_key(xyz.data(), (int)(xyz.size() / 3), &key);
    if (keyed) {
        if (const CornerTriangles *known = triangulate_cache_find(key)) return triangles_from_corners(surface, *known);
    }
    List *triangles = tessellate(tess, surface, xyz);
    CornerTriangles found;
    if (keyed && triangles && corners_of(surface, triangles, &found)) triangulate_cache_store(key, found);
    return triangles;
}

List *surface_get_triangulations(Surface *surface)
{
    if (!surface || surface->num_vertrefs < 4) return nullptr;
    GLUtesselator *tess = new_tessellator();
    if (!tess) return nullptr;
    List *triangles = triangulate_with(tess, surface);
    gluDeleteTess(tess);
    return triangles;
}

/* Replaces the surface by its triangles within a batch. */
static int triangulate_in(ObjectEdit *e, Surface *surface, GLUtesselator *tess)
{
    if (surface->num_vertrefs < 4) return 1;
    List *triangles = triangulate_with(tess, surface);
    if (!triangles) return 0;
    for (List *s = triangles; s; s = s->next) appender_add_surface(&e->append, (Surface *)s->item);
    list_free(&triangles);
    edit_drop_surface(e, surface);
    return 1;
}

int surface_triangulate(Object *object, Surface *surface)
{
    if (!object || !surface) return 0;
    if (surface->num_vertrefs < 4) return 1;
    GLUtesselator *tess = new_tessellator();
    if (!tess) return 0;
    SurfaceEdits edits;
    int done = triangulate_in(edits_for(&edits, object), surface, tess);
    edits_finish(&edits);
    gluDeleteTess(tess);
    return done;
}

struct TriangulateRun {
    SurfaceEdits edits;
    GLUtesselator *tess;
    TriangulateCounts counts;
    std::unordered_set<Object *> seen;
};

/* Counts a surface of more than three references as a line ignored, a
 * polygon triangulated or a polygon that failed. */
static void triangulate_counted(TriangulateRun *run, ObjectEdit *e, Surface *s)
{
    if (s->num_vertrefs <= 3) return;
    if (s->surface_kind != SURFACE_POLYGON) run->counts.lines_ignored++;
    else if (triangulate_in(e, s, run->tess)) run->counts.polys_triangulated++;
    else run->counts.polys_failed++;
}

static void triangulate_object_in(TriangulateRun *run, Object *object)
{
    if (!run->seen.insert(object).second) return;
    ObjectEdit *e = edits_for(&run->edits, object);
    for (Surface *s : object_surfaces(object)) triangulate_counted(run, e, s);
    for (List *k = object->kids; k; k = k->next) triangulate_object_in(run, (Object *)k->item);
}

void object_triangulate_surfaces(Object *object, TriangulateCounts *counts)
{
    if (!object || !counts) return;
    TriangulateRun run;
    run.tess = new_tessellator();
    if (!run.tess) return;
    run.counts = *counts;
    triangulate_object_in(&run, object);
    edits_finish(&run.edits);
    gluDeleteTess(run.tess);
    *counts = run.counts;
}

int selected_surface_triangulate(void)
{
    std::vector<OwnedSurface> whole = whole_selected_surfaces();
    if (no_surfaces_selected(whole)) {
        display_message("no surfaces selected");
        return 0;
    }
    TriangulateRun run;
    run.tess = new_tessellator();
    if (!run.tess) return 0;
    EditPrefault prefault(2.0);   /* two triangles a quadrilateral, more for larger polygons */
    new_undo(UNDO_SNAPSHOT, "triangluate");
    set_undo_all();
    display_message("triangulating...");
    run.counts = {0, 0, 0};
    for (const OwnedSurface &w : whole) triangulate_counted(&run, edits_for(&run.edits, w.object), w.surface);
    for (List *l = selection.selected_objects; l; l = l->next) triangulate_object_in(&run, (Object *)l->item);
    edits_finish(&run.edits);
    gluDeleteTess(run.tess);
    clear_selection();
    selection_publish_counts();
    model_changed_redraw_all();
    const TriangulateCounts &c = run.counts;
    if (c.polys_failed || c.lines_ignored) {
        windows_message_dialog("Some surfaces were not triangulated:\n\npolys not triangulated: %d\nlines/polylines "
                               "ignored: %d",
                               c.polys_failed, c.lines_ignored);
    }
    display_message("polygons triangulated: %d", c.polys_triangulated);
    return 1;
}
