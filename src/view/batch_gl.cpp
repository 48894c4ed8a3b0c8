/*
 * view/batch_gl.cpp - drawing the model from prepared arrays.  Drawing a
 * million surfaces one glBegin at a time is far too slow, so each view
 * keeps the model's geometry in arrays, rebuilt only when the model or the
 * settings that shape its drawing change:
 *
 *  - orthographic views: one array of positions with every vertex of the
 *    visible objects, and index arrays of line segments (each polygon's
 *    outline, each line's strip, each edge once) and of vertex markers,
 *    split by the selected and unselected colours, built once for the
 *    three views.  Segments and markers are written straight into the
 *    view's pixels (line_raster.h);
 *  - the 3D view: triangles grouped by material, shading and sidedness
 *    (quads split as the triangle strip 1, 2, 4, 3 splits them, so flat
 *    shading takes its colour from the same corner), and lines grouped by
 *    material, in buffer objects.  Surfaces the buffers cannot express
 *    (polygons needing the tessellator, textured objects, the point style)
 *    are drawn directly with the per-surface code each frame.
 */
#define GL_GLEXT_PROTOTYPES 1
#include "view/render_gl.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "edit/selection.h"
#include "view/line_raster.h"
#include "view/redraw.h"

#include <GL/glext.h>

#include <algorithm>
#include <map>
#include <tuple>
#include <vector>

/* A buffer object with its element count. */
struct GpuArray {
    GLuint buffer = 0;
    GLsizei count = 0;
};

static void upload(GpuArray &a, GLenum target, const void *data, size_t bytes, GLsizei count)
{
    if (!a.buffer) glGenBuffers(1, &a.buffer);
    glBindBuffer(target, a.buffer);
    glBufferData(target, (GLsizeiptr)bytes, bytes ? data : nullptr, GL_STATIC_DRAW);
    glBindBuffer(target, 0);
    a.count = count;
}

/* ---- orthographic views ---- */

/* What the three orthographic views draw of the model: built once per
 * change and drawn into each view's pixels. */
struct OrthBuild {
    std::vector<float> positions;
    std::vector<uint32_t> lines[2];
    std::vector<uint32_t> points[2];
    std::vector<Object *> centres[2];

    /* Empties the arrays but keeps their memory for the next rebuild. */
    void clear()
    {
        positions.clear();
        for (int s = 0; s < 2; s++) {
            lines[s].clear();
            points[s].clear();
            centres[s].clear();
        }
    }
};

/* A set of edges (vertex index pairs) with open addressing, so that an
 * edge shared by two surfaces is drawn once: the picture is the same and
 * a closed mesh has half the lines.
 *
 * An edge's first probes lie in the cache line of its lower vertex (eight
 * slots a vertex), and neighbouring surfaces share vertices, so most
 * lookups touch memory that was just used; a vertex with more edges than
 * its line holds goes on at a scattered place.  Nothing is ever removed
 * but all at once, so lookups follow the same probes as inserts did.
 *
 * One table serves every object of every rebuild: emptying it clears only
 * the slots that were filled, and its pages stay mapped, so a rebuild does
 * not fault in and zero tens of megabytes again. */
class EdgeSet {
public:
    /* Empties the set for an object whose vertices are numbered from base,
     * with `vertices` of them and up to `expected` edges. */
    void reset(uint32_t base, size_t vertices, size_t expected)
    {
        size_t size = 64;
        while (size < vertices * LINE || size < expected * 2) size *= 2;
        if (size > slots_.size()) {
            slots_.assign(size, EMPTY);
        } else {
            for (size_t i : filled_) slots_[i] = EMPTY;
        }
        filled_.clear();
        mask_ = size - 1;
        base_ = base;
    }

    /* Returns true when the edge was not there yet. */
    bool insert(uint32_t a, uint32_t b)
    {
        if (a > b) std::swap(a, b);
        uint64_t key = (uint64_t)a << 32 | b;
        size_t home = ((size_t)(a - base_) * LINE) & mask_;
        for (size_t k = 0; k < LINE; k++) {
            size_t i = home + k;
            if (slots_[i] == key) return false;
            if (slots_[i] == EMPTY) return take(i, key);
        }
        size_t i = (size_t)((key * 0x9E3779B97F4A7C15ULL) >> 20) & mask_;
        while (slots_[i] != EMPTY) {
            if (slots_[i] == key) return false;
            i = (i + 1) & mask_;
        }
        return take(i, key);
    }

private:
    static constexpr uint64_t EMPTY = ~(uint64_t)0;
    static constexpr size_t LINE = 8;   /* slots of one 64-byte cache line */

    bool take(size_t i, uint64_t key)
    {
        slots_[i] = key;
        filled_.push_back(i);
        return true;
    }

    std::vector<uint64_t> slots_;
    std::vector<size_t> filled_;
    size_t mask_ = 0;
    uint32_t base_ = 0;
};

static void add_edge(EdgeSet &edges, std::vector<uint32_t> &lines, uint32_t a, uint32_t b)
{
    if (!edges.insert(a, b)) return;
    lines.push_back(a);
    lines.push_back(b);
}

static size_t count_references(Object *o)
{
    size_t n = 0;
    for (List *l = o->surfaces; l; l = l->next) n += ((Surface *)l->item)->num_vertrefs;
    return n;
}

static void orth_collect_object(Object *o, int selected, OrthBuild &b)
{
    uint32_t base = (uint32_t)(b.positions.size() / 3);
    uint32_t n = 0;
    for (List *v = o->vertices; v; v = v->next, n++) {
        Vertex *vx = (Vertex *)v->item;
        vx->mark = base + n;
        b.positions.insert(b.positions.end(), vx->point, vx->point + 3);
    }
    std::vector<uint32_t> &lines = b.lines[selected];
    static EdgeSet edges;
    edges.reset(base, n, count_references(o));
    for (List *l = o->surfaces; l; l = l->next) {
        const Surface *s = (const Surface *)l->item;
        if (!s->vertrefs) continue;
        if (polygon_too_many_corners(s, 0)) continue;
        uint32_t first = ((SVertex *)s->vertrefs->item)->vertex->mark, prev = first;
        for (List *r = s->vertrefs->next; r; r = r->next) {
            uint32_t i = ((SVertex *)r->item)->vertex->mark;
            add_edge(edges, lines, prev, i);
            prev = i;
        }
        if (s->surface_kind != SURFACE_LINE) add_edge(edges, lines, prev, first);
    }
    if (prefs.show_vertices) {
        for (uint32_t i = 0; i < n; i++) b.points[selected].push_back(base + i);
    }
    if (prefs.show_object_centres) b.centres[selected].push_back(o);
}

static void orth_collect(Object *o, int selected, OrthBuild &b)
{
    int effective = selected || object_is_selected(o);
    if (o->visible) orth_collect_object(o, effective, b);
    for (List *k = o->kids; k; k = k->next) orth_collect((Object *)k->item, effective, b);
}

/* The window mapping of the current orthographic matrices and viewport
 * (both affine: an orthographic projection of a rotated, scaled and moved
 * model). */
static RasterMapping current_window_mapping(void)
{
    double mv[16], pr[16];
    GLint vp[4];
    glGetDoublev(GL_MODELVIEW_MATRIX, mv);
    glGetDoublev(GL_PROJECTION_MATRIX, pr);
    glGetIntegerv(GL_VIEWPORT, vp);
    RasterMapping m;
    double *rows[2] = {m.x, m.y};
    for (int r = 0; r < 2; r++) {
        double half = vp[2 + r] * 0.5;
        for (int c = 0; c < 4; c++) {
            double clip = 0;
            for (int k = 0; k < 4; k++) clip += pr[k * 4 + r] * mv[c * 4 + k];
            rows[r][c] = clip * half;
        }
        rows[r][3] += half + vp[r];
    }
    return m;
}

/* A preference colour (0xRRGGBB) as the framebuffer holds it: bytes blue,
 * green, red, alpha, as glColor3ub of its bytes would write it. */
static uint32_t framebuffer_colour(int colour)
{
    return 0xFF000000u | ((uint32_t)colour & 0xFFFFFFu);
}

/* Draws the segments and markers into the pixels of the view's draw
 * buffer: read, write, put back. */
static void orth_draw_pixels(const OrthBuild &b)
{
    size_t items = b.lines[0].size() + b.lines[1].size() + b.points[0].size() + b.points[1].size();
    if (items == 0) return;
    GLint vp[4], draw_buffer = GL_BACK;
    glGetIntegerv(GL_VIEWPORT, vp);
    glGetIntegerv(GL_DRAW_BUFFER, &draw_buffer);
    if (vp[2] < 1 || vp[3] < 1) return;
    static std::vector<uint32_t> pixels;
    static std::vector<float> window;
    pixels.resize((size_t)vp[2] * vp[3]);
    size_t points = b.positions.size() / 3;
    window.resize(points * 2);
    raster_project(current_window_mapping(), b.positions.data(), points, window.data());
    RasterImage image = {pixels.data(), vp[2], vp[3]};
    glReadBuffer((GLenum)draw_buffer);
    glReadPixels(vp[0], vp[1], vp[2], vp[3], GL_BGRA, GL_UNSIGNED_BYTE, pixels.data());
    const int line_colours[2] = {prefs.col_line, prefs.col_selline};
    const int marker_colours[2] = {prefs.col_vert, prefs.col_selvert};
    for (int s = 0; s < 2; s++) {
        raster_lines(image, window.data(), points, b.lines[s].data(), b.lines[s].size(),
                     framebuffer_colour(line_colours[s]));
    }
    /* OpenGL limits the size of points; the markers keep to that limit. */
    GLfloat size_range[2] = {1.0f, 1.0f};
    glGetFloatv(GL_ALIASED_POINT_SIZE_RANGE, size_range);
    int marker_size = std::min(prefs.vert_size, (int)size_range[1]);
    for (int s = 0; s < 2; s++) {
        raster_points(image, window.data(), points, b.points[s].data(), b.points[s].size(), marker_size,
                      framebuffer_colour(marker_colours[s]));
    }
    glWindowPos2i(vp[0], vp[1]);
    glDrawPixels(vp[2], vp[3], GL_BGRA, GL_UNSIGNED_BYTE, pixels.data());
}

static void draw_elements(const GpuArray &indices, GLenum mode)
{
    if (!indices.count) return;
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indices.buffer);
    glDrawElements(mode, indices.count, GL_UNSIGNED_INT, nullptr);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
}

static void orth_draw(const OrthBuild &build, int view)
{
    glDisable(GL_LIGHTING);
    orth_draw_pixels(build);
    for (int s = 0; s < 2; s++) {
        for (Object *o : build.centres[s]) draw_object_centre(o, s, view);
    }
}

/* ---- the 3D view ---- */

typedef std::tuple<int, int, int> TriangleKey;   /* mat, shading, twosided */

/* Smooth triangles share their corners: each vertex of an object is put
 * once into one buffer of normals and positions and the triangles index
 * it, so the renderer lights a vertex once instead of once per corner.
 * Flat triangles take the surface normal at every corner and keep their
 * own corners. */
struct Batch3d {
    int mat, shading, twosided;
    GpuArray data;      /* flat: interleaved normal and position per corner */
    GpuArray indices;   /* smooth: corners as indices into the shared vertices */
};

struct Batches3d {
    GpuArray shared_vertices;
    std::vector<Batch3d> triangles;
    std::vector<Batch3d> lines;   /* shading and twosided unused */
    std::vector<std::pair<Object *, int>> direct_objects;   /* drawn whole, with selected flag */
    std::vector<Surface *> direct_surfaces;
};

/* The corners of one batch while it is being collected. */
struct TriangleList {
    std::vector<float> corners;     /* flat */
    std::vector<uint32_t> indices;  /* smooth */
};

struct Build3d {
    std::vector<float> shared_vertices;
    std::map<TriangleKey, TriangleList> triangles;
    std::map<int, std::vector<float>> lines;
    std::vector<std::pair<Object *, int>> direct_objects;
    std::vector<Surface *> direct_surfaces;
    /* The batch of the last surface: neighbouring surfaces mostly share
     * it, which saves a map lookup per surface. */
    TriangleKey last_key{-1, -1, -1};
    TriangleList *last_list = nullptr;
    Object *shared_object = nullptr;   /* whose vertices are in shared_vertices */
};

static void push_corner(std::vector<float> &out, const float *normal, const float *point)
{
    out.insert(out.end(), normal, normal + 3);
    out.insert(out.end(), point, point + 3);
}

static void push_line_segments(std::vector<float> &out, const Surface *s, int closed)
{
    static const float none[3] = {0, 0, 1};
    const Vertex *first = ((SVertex *)s->vertrefs->item)->vertex, *prev = first;
    for (List *r = s->vertrefs->next; r; r = r->next) {
        const Vertex *v = ((SVertex *)r->item)->vertex;
        push_corner(out, none, prev->point);
        push_corner(out, none, v->point);
        prev = v;
    }
    if (closed) {
        push_corner(out, none, prev->point);
        push_corner(out, none, first->point);
    }
}

static TriangleList &triangle_list(Build3d &b, const Surface *s)
{
    TriangleKey key(s->mat, s->shading != 0, s->twosided != 0);
    if (b.last_list && key == b.last_key) return *b.last_list;
    b.last_key = key;
    b.last_list = &b.triangles[key];
    return *b.last_list;
}

/* Puts the object's vertices into the shared buffer the first time one
 * of its smooth surfaces needs them; their marks become their indices. */
static void share_vertices(Build3d &b, Object *o)
{
    if (b.shared_object == o) return;
    b.shared_object = o;
    uint32_t index = (uint32_t)(b.shared_vertices.size() / 6);
    for (List *v = o->vertices; v; v = v->next) {
        Vertex *vx = (Vertex *)v->item;
        vx->mark = index++;
        push_corner(b.shared_vertices, vx->normal, vx->point);
    }
}

/* Adds triangle (a, b, c) of the surface's first four corners. */
static void push_triangle(TriangleList &out, const Surface *s, const Vertex *const *v, int a, int b, int c)
{
    const int corners[3] = {a, b, c};
    if (s->shading) {
        for (int i : corners) out.indices.push_back(v[i]->mark);
        return;
    }
    for (int i : corners) push_corner(out.corners, s->normal, v[i]->point);
}

static void collect_surface_3d(Object *o, Surface *s, Build3d &b)
{
    unsigned n = s->num_vertrefs;
    int m = prefs.view_3d_mode;
    if (n == 0) return;
    if (polygon_too_many_corners(s, 0)) return;
    int is_line_kind = s->surface_kind == SURFACE_LINE;
    if (n == 2 || is_line_kind) {
        push_line_segments(b.lines[s->mat], s, 0);
        return;
    }
    if (s->surface_kind == SURFACE_CLOSED_LINE || m == 1) {
        push_line_segments(b.lines[s->mat], s, 1);
        return;
    }
    if (n == 1) return; /* the point style draws nothing */
    if (n > 4) {
        b.direct_surfaces.push_back(s);
        return;
    }
    if (s->shading) share_vertices(b, o);
    TriangleList &out = triangle_list(b, s);
    List *r = s->vertrefs;
    const Vertex *v[4];
    for (unsigned i = 0; i < n; i++, r = r->next) v[i] = ((SVertex *)r->item)->vertex;
    if (n == 3) {
        push_triangle(out, s, v, 0, 1, 2);
        return;
    }
    /* A quad as the strip 1, 2, 4, 3 draws it: (1, 2, 4), then (4, 2, 3),
     * so that flat shading takes each triangle's colour from the same
     * corner as the strip does. */
    push_triangle(out, s, v, 0, 1, 3);
    push_triangle(out, s, v, 3, 1, 2);
}

static void collect_3d(Object *o, int selected, Build3d &b)
{
    int effective = selected || (prefs.show_vertices_3d && object_is_selected(o));
    int draw = !(prefs.hide_objects_in_3d && !o->visible);
    if (draw) {
        int textured = view_3d_textures && o->texture;
        if (textured || prefs.show_vertices_3d) {
            b.direct_objects.push_back({o, effective});
        } else {
            for (List *l = o->surfaces; l; l = l->next) collect_surface_3d(o, (Surface *)l->item, b);
        }
    }
    for (List *k = o->kids; k; k = k->next) collect_3d((Object *)k->item, effective, b);
}

static void delete_array(GpuArray &a)
{
    if (a.buffer) glDeleteBuffers(1, &a.buffer);
    a = GpuArray();
}

static void build_3d(Batches3d &batches)
{
    for (Batch3d &old : batches.triangles) {
        delete_array(old.data);
        delete_array(old.indices);
    }
    for (Batch3d &old : batches.lines) delete_array(old.data);
    batches.triangles.clear();
    batches.lines.clear();
    Build3d b;
    collect_3d(world, 0, b);
    upload(batches.shared_vertices, GL_ARRAY_BUFFER, b.shared_vertices.data(),
           b.shared_vertices.size() * sizeof(float), (GLsizei)(b.shared_vertices.size() / 6));
    for (auto &t : b.triangles) {
        Batch3d batch = {std::get<0>(t.first), std::get<1>(t.first), std::get<2>(t.first), {}, {}};
        const TriangleList &l = t.second;
        if (batch.shading) {
            upload(batch.indices, GL_ELEMENT_ARRAY_BUFFER, l.indices.data(), l.indices.size() * sizeof(uint32_t),
                   (GLsizei)l.indices.size());
        } else {
            upload(batch.data, GL_ARRAY_BUFFER, l.corners.data(), l.corners.size() * sizeof(float),
                   (GLsizei)(l.corners.size() / 6));
        }
        batches.triangles.push_back(batch);
    }
    for (auto &l : b.lines) {
        Batch3d batch = {l.first, 0, 1, {}, {}};
        upload(batch.data, GL_ARRAY_BUFFER, l.second.data(), l.second.size() * sizeof(float),
               (GLsizei)(l.second.size() / 6));
        batches.lines.push_back(batch);
    }
    batches.direct_objects = b.direct_objects;
    batches.direct_surfaces = b.direct_surfaces;
}

static void bind_interleaved(const GpuArray &a, int normals)
{
    glBindBuffer(GL_ARRAY_BUFFER, a.buffer);
    glVertexPointer(3, GL_FLOAT, 6 * sizeof(float), (const void *)(3 * sizeof(float)));
    if (normals) glNormalPointer(GL_FLOAT, 6 * sizeof(float), nullptr);
}

static void draw_triangle_batch(const Batches3d &b, const Batch3d &t)
{
    if (t.twosided) glDisable(GL_CULL_FACE);
    else glEnable(GL_CULL_FACE);
    glShadeModel(t.shading ? GL_SMOOTH : GL_FLAT);
    set_material_cached(t.mat);
    if (!t.shading) {
        bind_interleaved(t.data, 1);
        glDrawArrays(GL_TRIANGLES, 0, t.data.count);
        return;
    }
    bind_interleaved(b.shared_vertices, 1);
    draw_elements(t.indices, GL_TRIANGLES);
}

static void draw_3d(const Batches3d &b)
{
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_NORMAL_ARRAY);
    glEnable(GL_LIGHTING);
    for (const Batch3d &t : b.triangles) draw_triangle_batch(b, t);
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisable(GL_LIGHTING);
    glShadeModel(GL_FLAT);
    for (const Batch3d &l : b.lines) {
        glColor3fv(index_to_material(l.mat)->rgb);
        bind_interleaved(l.data, 0);
        glDrawArrays(GL_LINES, 0, l.data.count);
    }
    render_state.cached_material = -1;
    glDisableClientState(GL_VERTEX_ARRAY);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    for (Surface *s : b.direct_surfaces) draw_surface_direct_3d(s);
    for (const auto &d : b.direct_objects) draw_object_direct(d.first, d.second, 3);
    glShadeModel(GL_FLAT);
}

/* ---- the cache ---- */

static OrthBuild orth_build;
static Batches3d batches_3d;
static unsigned long built_generation_3d, built_signature_3d;
static unsigned long orth_build_generation, orth_build_signature;

static unsigned long mix(unsigned long h, long v)
{
    return (h ^ (unsigned long)v) * 1099511628211UL;
}

static unsigned long drawing_signature(int view)
{
    unsigned long h = 1469598103934665603UL;
    const int values[] = {prefs.view_3d_mode,       prefs.show_vertices_3d, view_3d_textures,
                          prefs.hide_objects_in_3d, prefs.show_vertices,    prefs.show_object_centres,
                          selection.select_mode,    view == 3};
    for (int v : values) h = mix(h, v);
    return h;
}

static void orth_refresh_build(unsigned long sig)
{
    if (orth_build_generation == model_generation && orth_build_signature == sig) return;
    orth_build.clear();
    orth_collect(world, 0, orth_build);
    orth_build_generation = model_generation;
    orth_build_signature = sig;
}

int draw_model_batched(int view)
{
    if (!world || render_state.render_mode != GL_RENDER) return 0;
    if (view == 3 && prefs.view_3d_mode != 0 && prefs.view_3d_mode != 1) return 0;
    unsigned long sig = drawing_signature(view);
    if (view == 3) {
        if (built_generation_3d != model_generation || built_signature_3d != sig) {
            build_3d(batches_3d);
            built_generation_3d = model_generation;
            built_signature_3d = sig;
        }
        draw_3d(batches_3d);
        return 1;
    }
    orth_refresh_build(sig);
    orth_draw(orth_build, view);
    return 1;
}
