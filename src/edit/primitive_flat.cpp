/*
 * edit/primitive_flat.cpp - the flat primitives: rectangle, grid, mesh,
 * ellipse, arc and disk, and the helpers every builder shares (the view's
 * axes and the checked segment counts).
 */
#include "edit/primitives.h"
#include "edit/primitive_append.h"
#include "app/prefs.h"

#include <cmath>

/* The single-precision value of 1/180 that degree conversions use. */
static const float DEGREE = 0.0055555557f;
static const double PI = 3.14159265358979323846;

void view_axes(int view, int *h, int *v, int *depth)
{
    switch (view) {
    case 1: *h = 2, *v = 1, *depth = 0; break;
    case 2: *h = 0, *v = 2, *depth = 1; break;
    default: *h = 0, *v = 1, *depth = 2; break;
    }
}

void view_point(int view, float h, float v, float depth, float *out)
{
    int ah, av, ad;
    view_axes(view, &ah, &av, &ad);
    out[ah] = h;
    out[av] = v;
    out[ad] = depth;
}

int primitive_segments(int value, int minimum, int maximum, const char *name)
{
    if (value < minimum) {
        console_printf("%s is %d - using %d\n", name, value, minimum);
        return minimum;
    }
    if (value > maximum) {
        console_printf("%s is %d - using %d\n", name, value, maximum);
        return maximum;
    }
    return value;
}

static void set_location_to_centre(Object *o, const float *a, const float *b)
{
    for (int i = 0; i < 3; i++) o->centre[i] = (a[i] + b[i]) * 0.5f;
}

static Object *new_named_object(const char *name)
{
    Object *o = new_object(OBJECT_NORMAL);
    object_set_name(o, name);
    return o;
}

void add_new_vertex(Vertex *vertex)
{
    object_add_vertex(world, vertex);
}

void add_surface(Surface *surface)
{
    object_add_surface(world, surface);
}

void surface_add_quad_refs(Surface *surface, Vertex *a, Vertex *b, Vertex *c, Vertex *d)
{
    RefAppender refs = ref_appender_start(surface);
    ref_append(&refs, a, 0.0f, 0.0f);
    ref_append(&refs, b, 1.0f, 0.0f);
    ref_append(&refs, c, 1.0f, 1.0f);
    ref_append(&refs, d, 0.0f, 1.0f);
}

/* ---- rectangle ---- */

Object *add_rect(int view, const float *a, const float *b)
{
    int h, v, d;
    view_axes(view, &h, &v, &d);
    Object *o = new_named_object("rect");
    set_location_to_centre(o, a, b);
    ObjectAppender append;
    appender_start(&append, o);
    const float corners[4][2] = {{a[h], a[v]}, {b[h], a[v]}, {b[h], b[v]}, {a[h], b[v]}};
    Vertex *vx[4];
    for (int i = 0; i < 4; i++) {
        float p[3];
        view_point(view, corners[i][0], corners[i][1], a[d], p);
        vx[i] = appender_new_vertex(&append, p[0], p[1], p[2]);
    }
    Surface *s = new_surface();
    RefAppender refs = ref_appender_start(s);
    ref_append(&refs, vx[3], 0.0f, 0.0f);
    ref_append(&refs, vx[2], 1.0f, 0.0f);
    ref_append(&refs, vx[1], 1.0f, 1.0f);
    ref_append(&refs, vx[0], 0.0f, 1.0f);
    appender_add_surface(&append, s);
    object_calc_normals_force(o);
    return o;
}

/* ---- grid and mesh ---- */

/* mesh_x and mesh_y, each at least 1 and their product bounded. */
static void mesh_divisions(int *mx, int *my)
{
    *mx = primitive_segments(prefs.mesh_x, 1, PRIMITIVE_MAX_MESH_CELLS, "mesh_x");
    *my = primitive_segments(prefs.mesh_y, 1, PRIMITIVE_MAX_MESH_CELLS / *mx, "mesh_y");
}

static void add_grid_line(ObjectAppender *append, int view, const float *from, const float *to, float depth)
{
    float p[3], q[3];
    view_point(view, from[0], from[1], depth, p);
    view_point(view, to[0], to[1], depth, q);
    Vertex *v1 = appender_new_vertex(append, p[0], p[1], p[2]);
    Vertex *v2 = appender_new_vertex(append, q[0], q[1], q[2]);
    Surface *s = new_surface_styled(SURFACE_LINE, 0, 1);
    RefAppender refs = ref_appender_start(s);
    ref_append(&refs, v1, 0.0f, 0.0f);
    ref_append(&refs, v2, 0.0f, 0.0f);
    appender_add_surface(append, s);
}

/* What a grid and a mesh start from: the view's axes, the divisions, the
 * spans of the box a-b and the new object centred on the box. */
struct FlatLayout {
    int h, v, d, mx, my;
    float dh, dv;
    Object *object;
    ObjectAppender append;
};

static void start_flat(FlatLayout *f, const char *name, int view, const float *a, const float *b)
{
    view_axes(view, &f->h, &f->v, &f->d);
    mesh_divisions(&f->mx, &f->my);
    f->object = new_named_object(name);
    set_location_to_centre(f->object, a, b);
    appender_start(&f->append, f->object);
    f->dh = b[f->h] - a[f->h];
    f->dv = b[f->v] - a[f->v];
}

Object *add_grid(int view, const float *a, const float *b)
{
    FlatLayout f;
    start_flat(&f, "grid", view, a, b);
    /* Lines across the horizontal axis, then across the vertical; each
     * owns its two vertices. */
    for (int i = 0; i <= f.mx; i++) {
        float x = a[f.h] + f.dh / (float)f.mx * (float)i;
        const float from[2] = {x, a[f.v]}, to[2] = {x, b[f.v]};
        add_grid_line(&f.append, view, from, to, a[f.d]);
    }
    for (int j = 0; j <= f.my; j++) {
        float y = a[f.v] + f.dv / (float)f.my * (float)j;
        const float from[2] = {a[f.h], y}, to[2] = {b[f.h], y};
        add_grid_line(&f.append, view, from, to, a[f.d]);
    }
    return f.object;
}

static void add_mesh_cell(ObjectAppender *append, Vertex *a, Vertex *b, Vertex *c, Vertex *d, int parity,
                          int triangles)
{
    if (!triangles) {
        Surface *s = new_surface();
        RefAppender refs = ref_appender_start(s);
        ref_append(&refs, a, 0, 0);
        ref_append(&refs, b, 0, 0);
        ref_append(&refs, c, 0, 0);
        ref_append(&refs, d, 0, 0);
        s->mat = (uint16_t)parity;
        appender_add_surface(append, s);
        return;
    }
    /* The diagonal alternates with the parity, so the triangles form a
     * checkerboard too. */
    Surface *first = parity ? new_triangle(a, b, d) : new_triangle(a, b, c);
    Surface *second = parity ? new_triangle(d, b, c) : new_triangle(a, c, d);
    first->mat = second->mat = (uint16_t)(parity ? 1 : 0);
    appender_add_surface(append, first);
    appender_add_surface(append, second);
}

Object *add_mesh(int view, const float *a, const float *b)
{
    FlatLayout f;
    start_flat(&f, "mesh", view, a, b);
    Object *o = f.object;
    int columns = f.mx + 1, rows = f.my + 1;
    Vertex **grid = (Vertex **)myalloc((unsigned int)(sizeof(Vertex *) * (size_t)columns * (size_t)rows));
    if (!grid) return o;
    for (int k = 0; k < columns * rows; k++) {
        int c = k % columns, r = k / columns;
        float p[3];
        view_point(view, a[f.h] + f.dh / (float)f.mx * (float)c, a[f.v] + f.dv / (float)f.my * (float)r, a[f.d], p);
        grid[k] = appender_new_vertex(&f.append, p[0], p[1], p[2]);
    }
    int triangles = prefs.mesh_from_triangles != 0;
    for (int r = 0; r < f.my; r++) {
        for (int c = 0; c < f.mx; c++) {
            int ia = r * columns + c, ib = ia + columns;
            add_mesh_cell(&f.append, grid[ia], grid[ib], grid[ib + 1], grid[ia + 1], (r + c) % 2, triangles);
        }
    }
    myfree(grid);
    calc_texture_coors(o, view);
    object_calc_normals_force(o);
    object_set_surface_shading(o, 1);
    return o;
}

/* ---- ellipse, arc and disk ---- */

/* The rim of an ellipse: n vertices from angle 0, anticlockwise in the
 * view. */
static void add_rim(ObjectAppender *append, int view, float rh, float rv, int n)
{
    float step = 360.0f / (float)n;
    for (float i = 0.0f; i < (float)n; i += 1.0f) {
        double angle = (double)(step * i * DEGREE) * PI;
        float p[3];
        view_point(view, (float)cos(angle) * rh, (float)sin(angle) * rv, 0.0f, p);
        appender_new_vertex(append, p[0], p[1], p[2]);
    }
}

static int rot_segments_checked(int value)
{
    return primitive_segments(value, 1, PRIMITIVE_MAX_SEGMENTS, "rot_segments");
}

Object *new_circle(int view, float radius_h, float radius_v, int segments)
{
    int n = rot_segments_checked(segments);
    Object *o = new_named_object("ellipse");
    ObjectAppender append;
    appender_start(&append, o);
    add_rim(&append, view, radius_h, radius_v, n);
    Surface *s = new_surface_styled(SURFACE_CLOSED_LINE, 0, 1);
    RefAppender refs = ref_appender_start(s);
    for (List *l = o->vertices; l; l = l->next) ref_append(&refs, (Vertex *)l->item, 0.0f, 0.0f);
    appender_add_surface(&append, s);
    return o;
}

/* Half the drag box's extent in the view's two axes. */
static void drag_radii(int view, const float *a, const float *b, float *rh, float *rv)
{
    int h, v, d;
    view_axes(view, &h, &v, &d);
    *rh = fabsf(b[h] - a[h]) / 2.0f;
    *rv = fabsf(b[v] - a[v]) / 2.0f;
}

Object *add_circle(int view, const float *a, const float *b, int)
{
    float rh, rv;
    drag_radii(view, a, b, &rh, &rv);
    Object *o = new_circle(view, rh, rv, prefs.rot_segments);
    calc_texture_coors(o, view);
    object_calc_normals_force(o);
    return o;
}

Object *create_regular_elipse(int view)
{
    return new_circle(view, 0.5f, 0.5f, prefs.rot_segments);
}

Object *new_arc(int view, float radius, float start, float end, int segments)
{
    int n = rot_segments_checked(segments);
    Object *o = new_named_object("arc");
    ObjectAppender append;
    appender_start(&append, o);
    double step = 2.0 * PI / n;
    double a0 = start * DEGREE * PI, a1 = end * DEGREE * PI;
    /* A start past the end starts one turn earlier. */
    if (a0 > a1) a0 -= 2.0 * PI;
    double span = fabs(a1 - a0);
    double advance = step <= span ? step : span;
    /* The bound on the count only matters for angles so large that the
     * advance is lost in their rounding, or for spans of many turns. */
    double limit = advance > 0.0 ? span / advance + 2.0 : 1.0;
    if (!(limit <= 2.0 * PRIMITIVE_MAX_SEGMENTS)) limit = 2.0 * PRIMITIVE_MAX_SEGMENTS;
    Surface *s = new_surface_styled(SURFACE_LINE, 0, 1);
    RefAppender refs = ref_appender_start(s);
    for (double angle = a0; angle <= a1 && s->num_vertrefs < (uint32_t)limit; angle += advance) {
        float p[3];
        view_point(view, (float)cos(angle) * radius, (float)sin(angle) * radius, 0.0f, p);
        ref_append(&refs, appender_new_vertex(&append, p[0], p[1], p[2]), 0.0f, 0.0f);
        if (advance <= 0.0) break; /* start equals end: one point */
    }
    appender_add_surface(&append, s);
    return o;
}

Object *new_disk(int view, float radius_h, float radius_v, int segments)
{
    int n = rot_segments_checked(segments);
    Object *o = new_named_object("disk");
    ObjectAppender append;
    appender_start(&append, o);
    add_rim(&append, view, radius_h, radius_v, n);
    /* The rim as an array, for the wrap from the last vertex to the first. */
    Vertex **rim = (Vertex **)myalloc((unsigned int)(sizeof(Vertex *) * (size_t)n));
    if (!rim) return o;
    int i = 0;
    for (List *l = o->vertices; l && i < n; l = l->next) rim[i++] = (Vertex *)l->item;
    Vertex *centre = appender_new_vertex(&append, 0.0f, 0.0f, 0.0f);
    for (int k = 0; k < i; k++) appender_add_surface(&append, new_triangle(rim[k], rim[(k + 1) % i], centre));
    myfree(rim);
    return o;
}

Object *add_disk(int view, const float *a, const float *b, int)
{
    float rh, rv;
    drag_radii(view, a, b, &rh, &rv);
    Object *o = new_disk(view, rh, rv, prefs.rot_segments);
    calc_texture_coors(o, view);
    object_calc_normals_force(o);
    return o;
}

Object *create_regular_disk(int view)
{
    Object *o = new_disk(view, 0.5f, 0.5f, prefs.rot_segments);
    object_calc_normals_force(o);
    return o;
}
