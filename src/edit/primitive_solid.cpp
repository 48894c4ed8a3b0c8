/*
 * edit/primitive_solid.cpp - the solid primitives: the box from a drag and
 * the centred box, the sphere, the cone, the cylinder and the icosahedron,
 * and the regular unit shapes dropped with a click.
 */
#include "edit/primitives.h"
#include "edit/primitive_append.h"
#include "edit/transform.h"
#include "app/prefs.h"

#include <cmath>
#include <vector>

static const double PI = 3.14159265358979323846;

static Object *new_named_object(const char *name)
{
    Object *o = new_object(OBJECT_NORMAL);
    object_set_name(o, name);
    return o;
}

/* A surface of references given as vertex indices with (u, v). */
struct Ref {
    int vertex;
    float u, v;
};

static Surface *surface_from_refs(Vertex *const *vx, const Ref *refs, int count)
{
    Surface *s = new_surface();
    RefAppender append = ref_appender_start(s);
    for (int i = 0; i < count; i++) ref_append(&append, vx[refs[i].vertex], refs[i].u, refs[i].v);
    return s;
}

/* Per axis the smaller and the larger of a and b; on ties b. */
static void drag_box(const float *a, const float *b, float *min, float *max)
{
    for (int i = 0; i < 3; i++) {
        min[i] = a[i] < b[i] ? a[i] : b[i];
        max[i] = a[i] > b[i] ? a[i] : b[i];
    }
}

/* ---- boxes ---- */

Object *add_cube(int, const float *a, const float *b)
{
    float min[3], max[3];
    drag_box(a, b, min, max);
    float sx = max[0] - min[0], sy = max[1] - min[1], sz = max[2] - min[2];
    const float corner[8][3] = {{0, 0, 0},   {0, sy, 0},   {sx, sy, 0},  {sx, 0, 0},
                                {0, 0, sz},  {0, sy, sz},  {sx, sy, sz}, {sx, 0, sz}};
    Object *o = new_named_object("box");
    ObjectAppender append;
    appender_start(&append, o);
    Vertex *vx[8];
    for (int i = 0; i < 8; i++) {
        vx[i] = appender_new_vertex(&append, corner[i][0] + min[0], corner[i][1] + min[1], corner[i][2] + min[2]);
    }
    static const Ref faces[6][4] = {
        {{0, 1, 0}, {1, 1, 1}, {2, 0, 1}, {3, 0, 0}},  /* z = min */
        {{6, 0, 1}, {7, 0, 0}, {3, 1, 0}, {2, 1, 1}},  /* x = max */
        {{7, 1, 0}, {6, 1, 1}, {5, 0, 1}, {4, 0, 0}},  /* z = max */
        {{4, 1, 0}, {5, 1, 1}, {1, 0, 1}, {0, 0, 0}},  /* x = min */
        {{1, 0, 0}, {5, 1, 0}, {6, 1, 1}, {2, 0, 1}},  /* y = max */
        {{4, 0, 0}, {0, 1, 0}, {3, 1, 1}, {7, 0, 1}},  /* y = min */
    };
    for (const auto &face : faces) {
        Surface *s = surface_from_refs(vx, face, 4);
        s->twosided = 0;
        appender_add_surface(&append, s);
    }
    object_calc_normals_force(o);
    for (int i = 0; i < 3; i++) o->centre[i] = (a[i] + b[i]) * 0.5f;
    return o;
}

void object_add_cube_view(Object *object, float size_x, float size_y, float size_z)
{
    float x = size_x * 0.5f, y = size_y * 0.5f, z = size_z * 0.5f;
    const float corner[8][3] = {{-x, -y, -z}, {x, -y, -z}, {x, -y, z}, {-x, -y, z},
                                {-x, y, z},   {x, y, z},   {x, y, -z}, {-x, y, -z}};
    ObjectAppender append;
    appender_start(&append, object);
    Vertex *vx[8];
    for (int i = 0; i < 8; i++) vx[i] = appender_new_vertex(&append, corner[i][0], corner[i][1], corner[i][2]);
    static const int faces[6][4] = {{0, 1, 2, 3}, {7, 4, 5, 6}, {4, 3, 2, 5},
                                    {6, 1, 0, 7}, {7, 0, 3, 4}, {5, 2, 1, 6}};
    for (const auto &f : faces) {
        Surface *s = new_surface();
        surface_add_quad_refs(s, vx[f[0]], vx[f[1]], vx[f[2]], vx[f[3]]);
        appender_add_surface(&append, s);
    }
    object_calc_normals_force(object);
}

Object *create_regular_cube(const float *position)
{
    Object *o = new_named_object("cube");
    object_add_cube_view(o, 1.0f, 1.0f, 1.0f);
    translate_object(o, position);
    return o;
}

/* ---- spheres ---- */

struct SphereShape {
    float centre[3];
    float radius[3];
    int n;            /* rings and segments */
    int triangles;    /* bands of triangles instead of quadrilaterals */
};

/* The vertices ring by ring: one pole, n - 1 rings of n, the other pole. */
static std::vector<Vertex *> sphere_vertices(ObjectAppender *append, const SphereShape &sh)
{
    std::vector<Vertex *> vx;
    int n = sh.n;
    vx.reserve((size_t)(n - 1) * (size_t)n + 2);
    for (int i = 0; i <= n; i++) {
        double phi = ((float)i - (float)n / 2.0f) * PI / n;
        int count = (i == 0 || i == n) ? 1 : n;
        for (int j = 0; j < count; j++) {
            double theta = j * 6.2831855f / n;
            float x = sh.centre[0] + (float)(cos(theta) * sh.radius[0] * cos(phi));
            float y = sh.centre[1] + (float)(sin(phi) * sh.radius[1]);
            float z = sh.centre[2] + (float)(sin(theta) * sh.radius[2] * cos(phi));
            vx.push_back(appender_new_vertex(append, x, y, z));
        }
    }
    return vx;
}

static Surface *sphere_surface(const Ref *refs, int count, const std::vector<Vertex *> &vx)
{
    Surface *s = surface_from_refs(vx.data(), refs, count);
    s->shading = 1;
    s->twosided = 0;
    return s;
}

/* Index of vertex j of ring i (1..n-1). */
static int ring_index(int n, int i, int j)
{
    return 1 + (i - 1) * n + j;
}

static void sphere_bands(ObjectAppender *append, const SphereShape &sh, const std::vector<Vertex *> &vx)
{
    int n = sh.n;
    float t = 1.0f / (float)n;
    for (int i = 1; i <= n - 2; i++) {
        for (int j = 0; j < n; j++) {
            int jn = (j + 1) % n;
            float uj = 1.0f - (float)j * t, uk = 1.0f - (float)(j + 1) * t;
            Ref a = {ring_index(n, i, j), uj, i * t}, b = {ring_index(n, i + 1, j), uj, (i + 1) * t};
            Ref c = {ring_index(n, i + 1, jn), uk, (i + 1) * t}, d = {ring_index(n, i, jn), uk, i * t};
            if (!sh.triangles) {
                const Ref quad[4] = {a, b, c, d};
                appender_add_surface(append, sphere_surface(quad, 4, vx));
                continue;
            }
            /* The diagonal alternates so the bands do not spiral. */
            const Ref odd[2][3] = {{a, b, c}, {c, d, a}}, even[2][3] = {{d, a, b}, {b, c, d}};
            const Ref(*tri)[3] = ((i + j) % 2) ? odd : even;
            appender_add_surface(append, sphere_surface(tri[0], 3, vx));
            appender_add_surface(append, sphere_surface(tri[1], 3, vx));
        }
    }
}

static void sphere_caps(ObjectAppender *append, const SphereShape &sh, const std::vector<Vertex *> &vx)
{
    int n = sh.n;
    float t = 1.0f / (float)n;
    int top_pole = (int)vx.size() - 1;
    for (int j = 0; j < n; j++) {
        int jn = (j + 1) % n;
        float uj = 1.0f - (float)j * t, uk = 1.0f - (float)(j + 1) * t;
        const Ref tri[3] = {{0, uj, 0.0f}, {ring_index(n, 1, j), uj, t}, {ring_index(n, 1, jn), uk, t}};
        appender_add_surface(append, sphere_surface(tri, 3, vx));
    }
    for (int j = 0; j < n; j++) {
        int jn = (j + 1) % n;
        float uj = 1.0f - (float)j * t, uk = 1.0f - (float)(j + 1) * t;
        const Ref tri[3] = {{top_pole, uk, n * t},
                            {ring_index(n, n - 1, jn), uk, (n - 1) * t},
                            {ring_index(n, n - 1, j), uj, (n - 1) * t}};
        appender_add_surface(append, sphere_surface(tri, 3, vx));
    }
}

static void build_sphere(Object *object, const SphereShape &sh)
{
    ObjectAppender append;
    appender_start(&append, object);
    std::vector<Vertex *> vx = sphere_vertices(&append, sh);
    sphere_bands(&append, sh, vx);
    sphere_caps(&append, sh, vx);
    object_calc_normals_force(object);
}

static int sphere_segments(void)
{
    return primitive_segments(prefs.rot_segments, 2, PRIMITIVE_MAX_SPHERE_SEGMENTS, "rot_segments");
}

Object *add_sphere(int, const float *a, const float *b)
{
    float min[3], max[3];
    drag_box(a, b, min, max);
    SphereShape sh;
    for (int i = 0; i < 3; i++) {
        sh.radius[i] = (max[i] - min[i]) / 2.0f;
        sh.centre[i] = min[i] + sh.radius[i];
    }
    sh.n = sphere_segments();
    sh.triangles = prefs.sphere_from_triangles != 0;
    Object *o = new_named_object("sphere");
    build_sphere(o, sh);
    for (int i = 0; i < 3; i++) o->centre[i] = sh.centre[i];
    return o;
}

void object_add_sphere_view(Object *object, float radius)
{
    SphereShape sh = {{0, 0, 0}, {radius, radius, radius}, sphere_segments(), prefs.sphere_from_triangles != 0};
    build_sphere(object, sh);
}

Object *create_regular_sphere(const float *position)
{
    Object *o = new_named_object("sphere");
    object_add_sphere_view(o, 0.5f);
    translate_object(o, position);
    return o;
}

/* ---- cone ---- */

Object *new_cone(int view, float radius_h, float radius_v, float height, int segments)
{
    Object *o = new_circle(view, radius_h, radius_v, segments);
    object_set_name(o, "cone");
    Surface *base = (Surface *)o->surfaces->item;
    base->surface_kind = SURFACE_POLYGON;
    ObjectAppender append;
    appender_start(&append, o);
    std::vector<Vertex *> rim;
    for (List *l = o->vertices; l; l = l->next) rim.push_back((Vertex *)l->item);
    float apex_point[3];
    view_point(view, 0.0f, 0.0f, height, apex_point);
    Vertex *apex = appender_new_vertex(&append, apex_point[0], apex_point[1], apex_point[2]);
    /* The texture step follows the preference, not the segment count. */
    float t = 1.0f / (float)primitive_segments(prefs.rot_segments, 1, PRIMITIVE_MAX_SEGMENTS, "rot_segments");
    size_t n = rim.size();
    for (size_t k = 0; k < n; k++) {
        Surface *s = new_surface();
        s->shading = 1;
        RefAppender refs = ref_appender_start(s);
        ref_append(&refs, rim[k], (float)k * t, 0.0f);
        ref_append(&refs, apex, 0.0f, 1.0f);
        ref_append(&refs, rim[(k + 1) % n], (float)(k + 1) * t, 0.0f);
        appender_add_surface(&append, s);
    }
    float shift[3];
    view_point(view, 0.0f, 0.0f, -height / 2.0f, shift);
    translate_object(o, shift);
    return o;
}

Object *create_cone(int view, const float *a, const float *b)
{
    int h, v, d;
    view_axes(view, &h, &v, &d);
    float rh = fabsf(b[h] - a[h]) / 2.0f, rv = fabsf(b[v] - a[v]) / 2.0f;
    Object *o = new_cone(view, rh, rv, b[d] - a[d], prefs.rot_segments);
    object_calc_normals_force(o);
    return o;
}

/* ---- cylinder ---- */

/* The two rings of a unit cylinder for vertex k at angle a. */
static void cylinder_ring_points(int view, float scale, double a, float *ring1, float *ring2)
{
    float c = (float)(cos(a) * 0.5), s = (float)(sin(a) * 0.5);
    switch (view) {
    case 1:
        ring1[0] = 0.5f, ring1[1] = s, ring1[2] = c;
        ring2[0] = -0.5f, ring2[1] = s, ring2[2] = c;
        break;
    case 2:
        /* Only the first ring is scaled: the asymmetry is intended. */
        ring1[0] = c * scale, ring1[1] = 0.5f, ring1[2] = s * scale;
        ring2[0] = c, ring2[1] = -0.5f, ring2[2] = s;
        break;
    default:
        ring1[0] = c, ring1[1] = s, ring1[2] = -0.5f;
        ring2[0] = c, ring2[1] = s, ring2[2] = 0.5f;
        break;
    }
}

static void cylinder_cap(ObjectAppender *append, const std::vector<Vertex *> &ring, float y)
{
    /* The cap centres lie on the Y axis whatever the view. */
    Vertex *centre = appender_new_vertex(append, 0.0f, y, 0.0f);
    size_t n = ring.size();
    for (size_t k = 0; k < n; k++) appender_add_surface(append, new_triangle(ring[k], ring[(k + 1) % n], centre));
}

static Surface *smooth_triangle(Vertex *a, float ua, float va, Vertex *b, float ub, float vb, Vertex *c, float uc,
                                float vc)
{
    Surface *s = new_surface();
    s->shading = 1;
    RefAppender refs = ref_appender_start(s);
    ref_append(&refs, a, ua, va);
    ref_append(&refs, b, ub, vb);
    ref_append(&refs, c, uc, vc);
    return s;
}

void object_add_cylinder_view(Object *object, int view, float scale, int top, int bottom)
{
    int n = primitive_segments(prefs.rot_segments, 1, PRIMITIVE_MAX_SEGMENTS, "rot_segments");
    double step = 2.0 * PI / n;
    std::vector<Vertex *> ring1(n), ring2(n);
    for (int k = 1; k <= n; k++) {
        float p[3], q[3];
        cylinder_ring_points(view, scale, k * step, p, q);
        ring1[k - 1] = new_vertex_set(p[0], p[1], p[2]);
        ring2[k - 1] = new_vertex_set(q[0], q[1], q[2]);
    }
    ObjectAppender append;
    appender_start(&append, object);
    for (int k = 0; k < n; k++) {
        int kn = (k + 1) % n;
        float u = 1.0f - (float)k / n, un = 1.0f - (float)(k + 1) / n;
        Vertex *a1 = ring1[k], *b1 = ring2[k], *a2 = ring1[kn], *b2 = ring2[kn];
        appender_add_surface(&append, smooth_triangle(a1, u, 1, b2, un, 0, b1, u, 0));
        appender_add_surface(&append, smooth_triangle(a1, u, 1, a2, un, 1, b2, un, 0));
    }
    for (Vertex *v : ring1) appender_add_vertex(&append, v);
    for (Vertex *v : ring2) appender_add_vertex(&append, v);
    if (top) cylinder_cap(&append, ring1, 0.5f);
    if (bottom) cylinder_cap(&append, ring2, -0.5f);
    object_calc_normals_force(object);
}

Object *new_cylinder(int view)
{
    Object *o = new_named_object("cylinder");
    int ends = prefs.cylinder_has_ends != 0;
    object_add_cylinder_view(o, view, 1.0f, ends, ends);
    return o;
}

/* ---- icosahedron ---- */

Object *create_ico(int, int)
{
    const float X = 0.525731087f, Z = 0.850650787f;
    const float points[12][3] = {{-X, 0, Z}, {X, 0, Z},  {-X, 0, -Z}, {X, 0, -Z}, {0, Z, X},  {0, Z, -X},
                                 {0, -Z, X}, {0, -Z, -X}, {Z, X, 0},   {-Z, X, 0}, {Z, -X, 0}, {-Z, -X, 0}};
    static const int faces[20][3] = {{0, 4, 1},  {0, 9, 4},  {9, 5, 4},  {4, 5, 8},  {4, 8, 1},
                                     {8, 10, 1}, {8, 3, 10}, {5, 3, 8},  {5, 2, 3},  {2, 7, 3},
                                     {7, 10, 3}, {7, 6, 10}, {7, 11, 6}, {11, 0, 6}, {0, 1, 6},
                                     {6, 1, 10}, {9, 0, 11}, {9, 11, 2}, {9, 2, 5},  {7, 2, 11}};
    Object *o = new_named_object("icosahedron");
    ObjectAppender append;
    appender_start(&append, o);
    Vertex *vx[12];
    for (int i = 0; i < 12; i++) vx[i] = appender_new_vertex(&append, points[i][0], points[i][1], points[i][2]);
    for (const auto &f : faces) appender_add_surface(&append, new_triangle(vx[f[0]], vx[f[1]], vx[f[2]]));
    calc_texture_coors(o, 0);
    object_calc_normals_force(o);
    return o;
}
