/*
 * fileio/vrml1_shapes.cpp - the primitive shapes of VRML 1.0 and
 * Inventor as polygons, and the reader's 4 x 4 matrices (see
 * vrml1_shapes.h).  Shapes follow the formats' definitions: a cube of
 * the given sizes, a sphere of the radius, a cylinder and a cone along
 * the Y axis, all centred on the origin.
 */
#include "fileio/vrml1_shapes.h"

#include <cmath>
#include <cstring>
#include <vector>

enum { ROUND_SEGMENTS = 16, SPHERE_BANDS = 8 };

Matrix4 matrix4_identity(void)
{
    Matrix4 r = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
    return r;
}

Matrix4 matrix4_multiply(const Matrix4 &a, const Matrix4 &b)
{
    Matrix4 r;
    for (int i = 0; i < 4; i++) {
        for (int j = 0; j < 4; j++) {
            float s = 0;
            for (int k = 0; k < 4; k++) s += a.m[i * 4 + k] * b.m[k * 4 + j];
            r.m[i * 4 + j] = s;
        }
    }
    return r;
}

Matrix4 matrix4_translation(float x, float y, float z)
{
    Matrix4 r = matrix4_identity();
    r.m[3] = x;
    r.m[7] = y;
    r.m[11] = z;
    return r;
}

Matrix4 matrix4_scale(float x, float y, float z)
{
    Matrix4 r = matrix4_identity();
    r.m[0] = x;
    r.m[5] = y;
    r.m[10] = z;
    return r;
}

Matrix4 matrix4_rotation(float x, float y, float z, float angle)
{
    float length = std::sqrt(x * x + y * y + z * z);
    if (!(length > 0.0f)) return matrix4_identity();
    x /= length;
    y /= length;
    z /= length;
    float c = std::cos(angle), s = std::sin(angle), t = 1 - c;
    Matrix4 r = {{t * x * x + c, t * x * y - s * z, t * x * z + s * y, 0, t * x * y + s * z, t * y * y + c,
                  t * y * z - s * x, 0, t * x * z - s * y, t * y * z + s * x, t * z * z + c, 0, 0, 0, 0, 1}};
    return r;
}

void matrix4_apply(const Matrix4 &m, const float *p, float *out)
{
    /* Points not moved keep their exact values, -0 included. */
    static const Matrix4 identity = matrix4_identity();
    if (!memcmp(m.m, identity.m, sizeof m.m)) {
        memmove(out, p, 3 * sizeof *out);
        return;
    }
    for (int i = 0; i < 3; i++) out[i] = m.m[i * 4] * p[0] + m.m[i * 4 + 1] * p[1] + m.m[i * 4 + 2] * p[2] + m.m[i * 4 + 3];
}

static Vertex *add_point(ObjectAppender *append, const Matrix4 &m, float x, float y, float z)
{
    const float p[3] = {x, y, z};
    float q[3];
    matrix4_apply(m, p, q);
    return appender_new_vertex(append, q[0], q[1], q[2]);
}

static void add_polygon(ObjectAppender *append, const std::vector<Vertex *> &corners, int mat)
{
    Surface *s = new_surface();
    s->mat = (uint16_t)mat;
    RefAppender refs = ref_appender_start(s);
    for (Vertex *v : corners) ref_append(&refs, v, 0, 0);
    appender_add_surface(append, s);
}

void vrml1_add_cube(ObjectAppender *append, const Matrix4 &m, float width, float height, float depth, int mat)
{
    float x = width / 2, y = height / 2, z = depth / 2;
    Vertex *v[8];
    for (int i = 0; i < 8; i++) v[i] = add_point(append, m, i & 1 ? x : -x, i & 2 ? y : -y, i & 4 ? z : -z);
    static const int faces[6][4] = {{0, 4, 6, 2}, {1, 3, 7, 5}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 2, 3, 1}, {4, 5, 7, 6}};
    for (const auto &f : faces) add_polygon(append, {v[f[0]], v[f[1]], v[f[2]], v[f[3]]}, mat);
}

/* A ring of points at height y, radius r, counter-clockwise seen from +Y. */
static std::vector<Vertex *> ring(ObjectAppender *append, const Matrix4 &m, float r, float y)
{
    std::vector<Vertex *> points;
    for (int i = 0; i < ROUND_SEGMENTS; i++) {
        float a = 2.0f * (float)M_PI * (float)i / ROUND_SEGMENTS;
        points.push_back(add_point(append, m, r * std::sin(a), y, r * std::cos(a)));
    }
    return points;
}

void vrml1_add_sphere(ObjectAppender *append, const Matrix4 &m, float radius, int mat)
{
    Vertex *top = add_point(append, m, 0, radius, 0);
    std::vector<std::vector<Vertex *>> rings;
    for (int b = 1; b < SPHERE_BANDS; b++) {
        float a = (float)M_PI * (float)b / SPHERE_BANDS;
        rings.push_back(ring(append, m, radius * std::sin(a), radius * std::cos(a)));
    }
    Vertex *bottom = add_point(append, m, 0, -radius, 0);
    for (int i = 0; i < ROUND_SEGMENTS; i++) {
        int j = (i + 1) % ROUND_SEGMENTS;
        add_polygon(append, {top, rings[0][i], rings[0][j]}, mat);
        for (size_t b = 0; b + 1 < rings.size(); b++) {
            add_polygon(append, {rings[b][i], rings[b + 1][i], rings[b + 1][j], rings[b][j]}, mat);
        }
        add_polygon(append, {rings.back()[i], bottom, rings.back()[j]}, mat);
    }
}

void vrml1_add_cylinder(ObjectAppender *append, const Matrix4 &m, float radius, float height, int mat)
{
    std::vector<Vertex *> high = ring(append, m, radius, height / 2), low = ring(append, m, radius, -height / 2);
    for (int i = 0; i < ROUND_SEGMENTS; i++) {
        int j = (i + 1) % ROUND_SEGMENTS;
        add_polygon(append, {high[i], low[i], low[j], high[j]}, mat);
    }
    std::vector<Vertex *> top(high.begin(), high.end()), bottom(low.rbegin(), low.rend());
    add_polygon(append, top, mat);
    add_polygon(append, bottom, mat);
}

void vrml1_add_cone(ObjectAppender *append, const Matrix4 &m, float radius, float height, int mat)
{
    Vertex *apex = add_point(append, m, 0, height / 2, 0);
    std::vector<Vertex *> low = ring(append, m, radius, -height / 2);
    for (int i = 0; i < ROUND_SEGMENTS; i++) add_polygon(append, {apex, low[i], low[(i + 1) % ROUND_SEGMENTS]}, mat);
    add_polygon(append, std::vector<Vertex *>(low.rbegin(), low.rend()), mat);
}
