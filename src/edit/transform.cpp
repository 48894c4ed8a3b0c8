/*
 * edit/transform.cpp - rotation matrices, the global matrix, frames, and
 * the transforms of one object and its subtree (see transform.h).
 */
#include "edit/transform.h"

#include <cfloat>
#include <cmath>
#include <cstring>
#include <vector>

static const float identity_matrix[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

/* A double rounded to float; beyond the float range it becomes an
 * infinity (a plain conversion would be undefined there). */
static float to_float(double v)
{
    if (v > FLT_MAX) return INFINITY;
    if (v < -FLT_MAX) return -INFINITY;
    return (float)v;
}

void matrix_set_identity(float *m)
{
    memcpy(m, identity_matrix, sizeof identity_matrix);
}

void matrix_set_rotate(float *m, float rx, float ry, float rz)
{
    /* Sines and cosines are rounded to single precision before they are
     * combined, so that the same angles always give the same matrix. */
    float cx = cosf(rx), sx = sinf(rx);
    float cy = cosf(ry), sy = sinf(ry);
    float cz = cosf(rz), sz = sinf(rz);
    m[0] = cz * cy;
    m[1] = sx * (cz * sy) + sz * cx;
    m[2] = sz * sx - cx * (cz * sy);
    m[3] = -(sz * cy);
    m[4] = cz * cx - sx * (sz * sy);
    m[5] = cx * (sz * sy) + cz * sx;
    m[6] = sy;
    m[7] = -(cy * sx);
    m[8] = cy * cx;
}

void matrix_copy(const float *source, float *destination)
{
    memmove(destination, source, 9 * sizeof(float));
}

int matrix_is_identity(const float *m)
{
    for (int i = 0; i < 9; i++) {
        if (m[i] != identity_matrix[i]) return 0;
    }
    return 1;
}

void matrix_multiply(const float *a, const float *b, float *c)
{
    /* A factor that is the identity is not multiplied in: the product is
     * then the other factor bit for bit (1*x + 0*y would turn -0 into +0
     * and an infinity into NaN). */
    if (matrix_is_identity(a)) {
        matrix_copy(b, c);
        return;
    }
    if (matrix_is_identity(b)) {
        matrix_copy(a, c);
        return;
    }
    float r[9];
    for (int col = 0; col < 3; col++) {
        for (int row = 0; row < 3; row++) {
            double sum = 0.0;
            for (int k = 0; k < 3; k++) sum += (double)a[k * 3 + row] * b[col * 3 + k];
            r[col * 3 + row] = to_float(sum);
        }
    }
    memcpy(c, r, sizeof r);
}

void matrix_rotate_point(const float *m, float *p)
{
    double x = p[0], y = p[1], z = p[2];
    p[0] = to_float(m[0] * x + m[3] * y + m[6] * z);
    p[1] = to_float(m[1] * x + m[4] * y + m[7] * z);
    p[2] = to_float(m[2] * x + m[5] * y + m[8] * z);
}

void pointlist_rotate_matrix(List *vertices, const float *m)
{
    for (; vertices; vertices = vertices->next) matrix_rotate_point(m, ((Vertex *)vertices->item)->point);
}

void matrix_print(const float *m)
{
    console_printf("Matrix:\n%f %f %f\n%f %f %f\n%f %f %f\n", m[0], m[1], m[2], m[3], m[4], m[5], m[6],
                   m[7], m[8]);
}

float global_matrix[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

void set_global_matrix_rotate(float rx, float ry, float rz)
{
    matrix_set_rotate(global_matrix, rx, ry, rz);
}

void rotate_point_3d(float *p)
{
    matrix_rotate_point(global_matrix, p);
}

void rotate_pointlist_3d(List *vertices)
{
    pointlist_rotate_matrix(vertices, global_matrix);
}

void rotate_matrix(float *m)
{
    matrix_multiply(m, global_matrix, m);
}

void rotmult(float *c, const float *a, const float *b)
{
    matrix_multiply(a, b, c);
}

void rotinvert(float *result, const float *source)
{
    float t[9];
    for (int col = 0; col < 3; col++) {
        for (int row = 0; row < 3; row++) t[row * 3 + col] = source[col * 3 + row];
    }
    memcpy(result, t, sizeof t);
}

/* ---- frames ---- */

void point_transform_local_to_global(float *out, const float *r, const float *t, const float *p)
{
    float q[3] = {p[0], p[1], p[2]};
    matrix_rotate_point(r, q);
    for (int i = 0; i < 3; i++) out[i] = t[i] + q[i];
}

void point_transform_global_to_local(float *out, const float *r, const float *t, const float *p)
{
    float rt[9];
    rotinvert(rt, r);
    float q[3] = {p[0] - t[0], p[1] - t[1], p[2] - t[2]};
    matrix_rotate_point(rt, q);
    memcpy(out, q, sizeof q);
}

void frame_cp(float *r_out, float *t_out, const float *r, const float *t)
{
    matrix_copy(r, r_out);
    memmove(t_out, t, 3 * sizeof(float));
}

void frame_invert(float *r_out, float *t_out, const float *r, const float *t)
{
    float rt[9];
    rotinvert(rt, r);
    float q[3] = {t[0], t[1], t[2]};
    matrix_rotate_point(rt, q);
    matrix_copy(rt, r_out);
    for (int i = 0; i < 3; i++) t_out[i] = -q[i];
}

void frame_mult(float *r_out, float *t_out, const float *r1, const float *t1, const float *r2, const float *t2)
{
    /* Work on copies: the outputs may be any of the inputs. */
    float r[9], t[3];
    point_transform_local_to_global(t, r1, t1, t2);
    matrix_multiply(r1, r2, r);
    frame_cp(r_out, t_out, r, t);
}

void frame_postmult(float *r, float *t, const float *r2, const float *t2)
{
    frame_mult(r, t, r, t, r2, t2);
}

void frame_multinv(float *r, float *t, const float *r2, const float *t2, const float *r3, const float *t3)
{
    float ri[9], ti[3];
    frame_invert(ri, ti, r2, t2);
    frame_mult(r, t, ri, ti, r3, t3);
}

/* ---- objects ---- */

void translate_pointlist(List *vertices, const float *d)
{
    for (; vertices; vertices = vertices->next) {
        float *p = ((Vertex *)vertices->item)->point;
        p[0] += d[0];
        p[1] += d[1];
        p[2] += d[2];
    }
}

void translate_object_only(Object *object, const float *d)
{
    for (int i = 0; i < 3; i++) object->centre[i] += d[i];
    translate_pointlist(object->vertices, d);
}

/* Calls visit on the object and every descendant.  An explicit stack: a
 * model may be nested deeper than the C stack would allow recursion. */
template <typename Visit> static void for_subtree(Object *object, Visit visit)
{
    std::vector<Object *> pending(1, object);
    while (!pending.empty()) {
        Object *o = pending.back();
        pending.pop_back();
        visit(o);
        for (List *k = o->kids; k; k = k->next) pending.push_back((Object *)k->item);
    }
}

void translate_object(Object *object, const float *d)
{
    for_subtree(object, [d](Object *o) { translate_object_only(o, d); });
}

void translate_object_zero(Object *object)
{
    const float d[3] = {-object->centre[0], -object->centre[1], -object->centre[2]};
    translate_object(object, d);
}

void translate_object_abs(Object *object, const float *p)
{
    translate_object_zero(object);
    translate_object(object, p);
}

void translate_objectlist(List *objects, const float *d)
{
    for (; objects; objects = objects->next) translate_object((Object *)objects->item, d);
}

void rotate_object_only(Object *object)
{
    rotate_point_3d(object->centre);
    rotate_pointlist_3d(object->vertices);
}

void rotate_object(Object *object)
{
    for_subtree(object, [](Object *o) { rotate_object_only(o); });
}

/* p := c + M * (p - c) */
static void rotate_about(const float *m, const float *c, float *p)
{
    float q[3] = {p[0] - c[0], p[1] - c[1], p[2] - c[2]};
    matrix_rotate_point(m, q);
    for (int i = 0; i < 3; i++) p[i] = c[i] + q[i];
}

void object_rotate_matrix(Object *object, const float *m, const float *centre)
{
    for_subtree(object, [m, centre](Object *o) {
        rotate_about(m, centre, o->centre);
        for (List *v = o->vertices; v; v = v->next) rotate_about(m, centre, ((Vertex *)v->item)->point);
    });
}

static void multiply_point(float *p, const float *s)
{
    p[0] *= s[0];
    p[1] *= s[1];
    p[2] *= s[2];
}

void multiply_object(Object *object, const float *s)
{
    for_subtree(object, [s](Object *o) {
        multiply_point(o->centre, s);
        for (List *v = o->vertices; v; v = v->next) multiply_point(((Vertex *)v->item)->point, s);
    });
}

void object_scale(Object *object, float sx, float sy, float sz)
{
    const float s[3] = {sx, sy, sz};
    for_subtree(object, [&s](Object *o) {
        multiply_point(o->centre, s);
        multiply_point(o->scale, s);
        for (List *v = o->vertices; v; v = v->next) multiply_point(((Vertex *)v->item)->point, s);
    });
}

void scale_object(Object *object, const float *s)
{
    object_scale(object, s[0], s[1], s[2]);
}

void translate_multiply_object(Object *object, const float *t1, const float *s, const float *t2)
{
    for_subtree(object, [t1, s, t2](Object *o) {
        for (List *v = o->vertices; v; v = v->next) {
            float *p = ((Vertex *)v->item)->point;
            for (int i = 0; i < 3; i++) p[i] = (p[i] + t1[i]) * s[i] + t2[i];
        }
    });
}

void frame_location_to_global(const float *r, const float *c, const double *location, float *out)
{
    double l[3] = {location[0], location[1], location[2]};
    if (!matrix_is_identity(r)) {
        double x = l[0], y = l[1], z = l[2];
        l[0] = r[0] * x + r[3] * y + r[6] * z;
        l[1] = r[1] * x + r[4] * y + r[7] * z;
        l[2] = r[2] * x + r[5] * y + r[8] * z;
    }
    for (int i = 0; i < 3; i++) out[i] = (float)(l[i] + c[i]);
}

void object_translation_local_to_global(Object *parent, const double *location, float *out)
{
    frame_location_to_global(parent->rotation, parent->centre, location, out);
}
