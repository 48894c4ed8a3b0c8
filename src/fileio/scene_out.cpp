/*
 * fileio/scene_out.cpp - the pieces the renderer and world-format writers
 * share (see scene_out.h).  The camera is rebuilt here from the viewer
 * record with the same steps, in the same order, as the 3D view's
 * camera transform, so that a rendered picture shows what the view shows.
 */
#include "fileio/scene_out.h"
#include "app/prefs.h"
#include "edit/surface_ops.h"
#include "platform/safe_file.h"
#include "view/camera.h"
#include "view/view_state.h"

#include <cassert>
#include <cerrno>
#include <cmath>
#include <cstring>

int scene_write_file(const char *filename, const char *format, void (*body)(TextOut *out, void *data), void *data)
{
    SafeFile sf;
    FILE *file = filename && filename[0] ? safe_file_open(&sf, filename) : nullptr;
    if (!file) {
        console_printf("can't open file for writing\n");
        if (filename && filename[0]) console_printf("can't write file %s: %s\n", filename, strerror(errno));
        return 0;
    }
    TextOut out;
    if (!text_out_open(&out, file)) {
        console_printf("can't write file %s: out of memory\n", filename);
        safe_file_abort(&sf);
        return 0;
    }
    console_printf("Generating %s file\n", format);
    body(&out, data);
    int written = text_out_close(&out);
    int saved = out.error;
    if (!written) {
        console_printf("can't write file %s: %s\n", filename, strerror(saved ? saved : EIO));
        safe_file_abort(&sf);
        return 0;
    }
    if (!safe_file_commit(&sf)) {
        console_printf("can't write file %s: %s\n", filename, strerror(errno));
        return 0;
    }
    console_printf("written file %s\n", filename);
    return 1;
}

void scene_put_number(TextOut *out, double value)
{
    if (!std::isfinite(value) || !std::isfinite((float)value)) value = 0.0;
    /* The shortest text that reads back to the same float: the model's
     * numbers are floats, and nothing finer is wanted. */
    text_out_float(out, (float)value);
}

void scene_put_triple(TextOut *out, const float *v, const char *sep)
{
    scene_put_number(out, v[0]);
    text_out_string(out, sep);
    scene_put_number(out, v[1]);
    text_out_string(out, sep);
    scene_put_number(out, v[2]);
}

void scene_put_bracketed(TextOut *out, const float *v, char open, const char *sep, char close)
{
    text_out_char(out, open);
    scene_put_triple(out, v, sep);
    text_out_char(out, close);
}

void scene_put_bracketed(TextOut *out, const double *v, char open, const char *sep, char close)
{
    const float f[3] = {(float)v[0], (float)v[1], (float)v[2]};
    scene_put_bracketed(out, f, open, sep, close);
}

void scene_put_one_line(TextOut *out, const char *text)
{
    for (const char *p = text ? text : ""; *p; p++) text_out_char(out, (unsigned char)*p < 32 ? ' ' : *p);
}

void scene_put_quoted(TextOut *out, const char *text)
{
    text_out_char(out, '"');
    for (const char *p = text ? text : ""; *p; p++) {
        if (*p == '"' || *p == '\\') text_out_char(out, '\\');
        text_out_char(out, (unsigned char)*p < 32 ? ' ' : *p);
    }
    text_out_char(out, '"');
}

void scene_surface_refs(const VrmlObjectLists *lists, Surface *s, std::vector<SVertex *> *refs)
{
    refs->clear();
    for (List *r = s->vertrefs; r; r = r->next) {
        SVertex *ref = (SVertex *)r->item;
        if (ref && vrml_vertex_number(lists, ref->vertex) >= 0) refs->push_back(ref);
    }
}

static void add_triangle(SceneTriangles *out, Surface *s, SVertex *a, SVertex *b, SVertex *c)
{
    out->triangles.push_back(SceneTriangle{s, {a, b, c}});
}

/* The tessellator's triangles, when every corner is a vertex of the
 * object; else nothing (the caller then makes a fan). */
static int add_tessellated(const VrmlObjectLists *lists, SceneTriangles *out, Surface *s)
{
    List *pieces = surface_get_triangulations(s);
    if (!pieces) return 0;
    std::vector<SVertex *> refs;
    int usable = 1;
    for (List *t = pieces; t && usable; t = t->next) {
        scene_surface_refs(lists, (Surface *)t->item, &refs);
        usable = refs.size() == 3;
    }
    if (!usable) {
        for (List *t = pieces; t; t = t->next) surface_free((Surface *)t->item);
        list_free(&pieces);
        return 0;
    }
    for (List *t = pieces; t; t = t->next) {
        Surface *piece = (Surface *)t->item;
        scene_surface_refs(lists, piece, &refs);
        add_triangle(out, s, refs[0], refs[1], refs[2]);
        list_add_item_head(&out->owned, piece);
    }
    list_free(&pieces);
    return 1;
}

void scene_triangulate_surface(const VrmlObjectLists *lists, Surface *s, SceneTriangles *out)
{
    std::vector<SVertex *> refs;
    scene_surface_refs(lists, s, &refs);
    if (refs.size() < 3) {
        out->skipped++;
        return;
    }
    if (refs.size() == 3) {
        add_triangle(out, s, refs[0], refs[1], refs[2]);
        return;
    }
    if (refs.size() == s->num_vertrefs && add_tessellated(lists, out, s)) return;
    for (size_t i = 1; i + 1 < refs.size(); i++) add_triangle(out, s, refs[0], refs[i], refs[i + 1]);
}

void scene_triangulate(const VrmlObjectLists *lists, SceneTriangles *out)
{
    for (Surface *s : lists->polygons) scene_triangulate_surface(lists, s, out);
}

int scene_convex_faces(const VrmlObjectLists *lists, Surface *s, SceneTriangles *scratch,
                       std::vector<std::vector<SVertex *>> *faces)
{
    faces->clear();
    std::vector<SVertex *> refs;
    scene_surface_refs(lists, s, &refs);
    if (refs.size() < 3) return 0;
    if (scene_polygon_is_convex(refs)) {
        faces->push_back(refs);
        return 1;
    }
    size_t first = scratch->triangles.size();
    scene_triangulate_surface(lists, s, scratch);
    for (size_t i = first; i < scratch->triangles.size(); i++) {
        const SceneTriangle &t = scratch->triangles[i];
        faces->push_back(std::vector<SVertex *>{t.ref[0], t.ref[1], t.ref[2]});
    }
    return (int)faces->size();
}

void scene_triangles_clear(SceneTriangles *t)
{
    for (List *l = t->owned; l; l = l->next) surface_free((Surface *)l->item);
    list_free(&t->owned);
    t->triangles.clear();
    t->skipped = 0;
}

static void sub3(const float *a, const float *b, double *out)
{
    for (int i = 0; i < 3; i++) out[i] = (double)a[i] - (double)b[i];
}

static void cross3(const double *a, const double *b, double *out)
{
    out[0] = a[1] * b[2] - a[2] * b[1];
    out[1] = a[2] * b[0] - a[0] * b[2];
    out[2] = a[0] * b[1] - a[1] * b[0];
}

int scene_polygon_is_convex(const std::vector<SVertex *> &refs)
{
    size_t n = refs.size();
    if (n < 3) return 0;
    if (n == 3) return 1;
    /* The turn at every corner must point the same way as the first one
     * that is not zero. */
    double reference[3] = {0, 0, 0};
    int have_reference = 0;
    for (size_t i = 0; i < n; i++) {
        double e1[3], e2[3], turn[3];
        sub3(refs[(i + 1) % n]->vertex->point, refs[i]->vertex->point, e1);
        sub3(refs[(i + 2) % n]->vertex->point, refs[(i + 1) % n]->vertex->point, e2);
        cross3(e1, e2, turn);
        double length = std::sqrt(turn[0] * turn[0] + turn[1] * turn[1] + turn[2] * turn[2]);
        if (!std::isfinite(length)) return 0;
        if (length == 0.0) continue;
        if (!have_reference) {
            for (int k = 0; k < 3; k++) reference[k] = turn[k] / length;
            have_reference = 1;
            continue;
        }
        double dot = (turn[0] * reference[0] + turn[1] * reference[1] + turn[2] * reference[2]) / length;
        /* Bent out of the plane by more than about 8 degrees, or turning
         * back: not one convex face. */
        if (dot < 0.99) return 0;
    }
    return have_reference;
}

void scene_objects(std::vector<Object *> *objects)
{
    objects->clear();
    std::vector<Object *> stack;
    std::vector<Object *> kids;
    for (List *k = world ? world->kids : nullptr; k; k = k->next) kids.push_back((Object *)k->item);
    for (size_t i = kids.size(); i-- > 0;) stack.push_back(kids[i]);
    while (!stack.empty()) {
        Object *o = stack.back();
        stack.pop_back();
        objects->push_back(o);
        kids.clear();
        for (List *k = o->kids; k; k = k->next) kids.push_back((Object *)k->item);
        for (size_t i = kids.size(); i-- > 0;) stack.push_back(kids[i]);
    }
}

int scene_extent(float *min, float *max)
{
    std::vector<Object *> objects;
    scene_objects(&objects);
    int found = 0;
    for (Object *o : objects) {
        for (List *l = o->vertices; l; l = l->next) {
            const float *p = ((Vertex *)l->item)->point;
            if (!std::isfinite(p[0]) || !std::isfinite(p[1]) || !std::isfinite(p[2])) continue;
            for (int i = 0; i < 3; i++) {
                if (!found || p[i] < min[i]) min[i] = p[i];
                if (!found || p[i] > max[i]) max[i] = p[i];
            }
            found = 1;
        }
    }
    return found;
}

/* ---- the camera ---- */

/* 4x4 matrices column by column, as OpenGL keeps them; each step
 * multiplies on the right, as glScalef, glRotatef and glTranslated do. */
typedef double Mat4[16];

static void mat_identity(Mat4 m)
{
    for (int i = 0; i < 16; i++) m[i] = (i % 5 == 0) ? 1.0 : 0.0;
}

static void mat_mult(Mat4 m, const Mat4 b)
{
    Mat4 r;
    for (int col = 0; col < 4; col++) {
        for (int row = 0; row < 4; row++) {
            double sum = 0;
            for (int k = 0; k < 4; k++) sum += m[k * 4 + row] * b[col * 4 + k];
            r[col * 4 + row] = sum;
        }
    }
    memcpy(m, r, sizeof r);
}

static void mat_scale(Mat4 m, double s)
{
    Mat4 b;
    mat_identity(b);
    b[0] = b[5] = b[10] = s;
    mat_mult(m, b);
}

static void mat_translate(Mat4 m, double x, double y, double z)
{
    Mat4 b;
    mat_identity(b);
    b[12] = x;
    b[13] = y;
    b[14] = z;
    mat_mult(m, b);
}

static void mat_rotate(Mat4 m, double degrees, double x, double y, double z)
{
    double a = degrees * M_PI / 180.0, c = std::cos(a), s = std::sin(a), t = 1.0 - c;
    Mat4 b;
    mat_identity(b);
    b[0] = t * x * x + c;
    b[1] = t * x * y + s * z;
    b[2] = t * x * z - s * y;
    b[4] = t * x * y - s * z;
    b[5] = t * y * y + c;
    b[6] = t * y * z + s * x;
    b[8] = t * x * z + s * y;
    b[9] = t * y * z - s * x;
    b[10] = t * z * z + c;
    mat_mult(m, b);
}

/* The view's model-view matrix, as camera_transform builds it. */
static void view_matrix(const Person *p, Mat4 m)
{
    mat_identity(m);
    double s = p->scale;
    if (p->walk) {
        mat_scale(m, s);
        mat_rotate(m, p->pitch, 1, 0, 0);
        mat_rotate(m, p->yaw, 0, 1, 0);
        mat_rotate(m, p->roll, 0, 0, 1);
        mat_translate(m, -p->location[0], -p->location[1], -p->location[2]);
        return;
    }
    mat_translate(m, -p->location[0], -p->location[1], -p->location[2]);
    mat_scale(m, s);
    mat_rotate(m, p->rotation[0], 1, 0, 0);
    mat_rotate(m, p->rotation[1], 0, 1, 0);
    mat_translate(m, -p->offset[0], -p->offset[1], -p->offset[2]);
}

/* Inverse of the upper 3x3 part; 0 when it has none. */
static int invert3(const Mat4 m, double inv[9])
{
    double a = m[0], b = m[4], c = m[8], d = m[1], e = m[5], f = m[9], g = m[2], h = m[6], i = m[10];
    double det = a * (e * i - f * h) - b * (d * i - f * g) + c * (d * h - e * g);
    if (!std::isfinite(det) || std::fabs(det) < 1e-30) return 0;
    double r[9] = {e * i - f * h, c * h - b * i, b * f - c * e, f * g - d * i, a * i - c * g,
                   c * d - a * f, d * h - e * g, b * g - a * h, a * e - b * d};
    for (int k = 0; k < 9; k++) inv[k] = r[k] / det;   /* row by row */
    return 1;
}

static void apply3(const double inv[9], double x, double y, double z, double *out)
{
    for (int r = 0; r < 3; r++) out[r] = inv[r * 3] * x + inv[r * 3 + 1] * y + inv[r * 3 + 2] * z;
}

static int normalise(double *v)
{
    double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    if (!std::isfinite(length) || length == 0.0) return 0;
    for (int i = 0; i < 3; i++) v[i] /= length;
    return 1;
}

/* The camera of a fresh view: at (0, 0, 5), looking down -z. */
static void default_pose(SceneCamera *c)
{
    const double eye[3] = {0, 0, 5}, forward[3] = {0, 0, -1}, up[3] = {0, 1, 0}, right[3] = {1, 0, 0};
    memcpy(c->eye, eye, sizeof eye);
    memcpy(c->forward, forward, sizeof forward);
    memcpy(c->up, up, sizeof up);
    memcpy(c->right, right, sizeof right);
    Mat4 m;
    mat_identity(m);
    m[14] = -5;
    for (int i = 0; i < 16; i++) c->modelview[i] = (float)m[i];
}

void scene_camera(SceneCamera *c)
{
    assert(c);
    const ViewState &view = views[3];
    c->width = view.width > 0 ? view.width : 640;
    c->height = view.height > 0 ? view.height : 480;
    c->aspect = (double)c->width / (double)c->height;
    /* fov_3d divided by the aspect, truncated to a tenth of a degree, as
     * the view's projection has it. */
    double fovy = (double)(long)((float)prefs.fov_3d / (float)c->aspect * 10.0f) * 0.1;
    c->fovy = fovy > 0.5 && fovy < 179.0 ? fovy : 45.0;
    Mat4 m;
    view_matrix(get_person(), m);
    double inv[9];
    double t[3] = {m[12], m[13], m[14]};
    if (!invert3(m, inv)) {
        default_pose(c);
        return;
    }
    apply3(inv, -t[0], -t[1], -t[2], c->eye);
    apply3(inv, 0, 0, -1, c->forward);
    apply3(inv, 0, 1, 0, c->up);
    apply3(inv, 1, 0, 0, c->right);
    int finite = std::isfinite(c->eye[0]) && std::isfinite(c->eye[1]) && std::isfinite(c->eye[2]);
    if (!finite || !normalise(c->forward) || !normalise(c->up) || !normalise(c->right)) {
        default_pose(c);
        return;
    }
    for (int i = 0; i < 16; i++) c->modelview[i] = (float)m[i];
}
