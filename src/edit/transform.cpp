/*
 * edit/transform.cpp - rotation matrices, frames and moving objects (see
 * transform.h).
 */
#include "edit/transform.h"

#include <cmath>
#include <cstring>
#include <vector>

static const float identity_matrix[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

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
            r[col * 3 + row] = (float)sum;
        }
    }
    memcpy(c, r, sizeof r);
}

void matrix_rotate_point(const float *m, float *p)
{
    double x = p[0], y = p[1], z = p[2];
    p[0] = (float)(m[0] * x + m[3] * y + m[6] * z);
    p[1] = (float)(m[1] * x + m[4] * y + m[7] * z);
    p[2] = (float)(m[2] * x + m[5] * y + m[8] * z);
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

void translate_object(Object *object, const float *d)
{
    /* An explicit stack: a model may be nested deeper than the C stack
     * would allow recursion. */
    std::vector<Object *> pending(1, object);
    while (!pending.empty()) {
        Object *o = pending.back();
        pending.pop_back();
        translate_object_only(o, d);
        for (List *k = o->kids; k; k = k->next) pending.push_back((Object *)k->item);
    }
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
