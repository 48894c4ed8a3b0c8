/*
 * fileio/vrml1_shapes.h - the VRML 1.0 / Inventor primitive shapes
 * (Cube, Sphere, Cylinder, Cone) built as polygons in an object, and the
 * 4 x 4 matrices of the reader's transformations (row major, points as
 * columns: p' = M p).
 */
#ifndef VESK_FILEIO_VRML1_SHAPES_H
#define VESK_FILEIO_VRML1_SHAPES_H

#include "edit/primitive_append.h"

struct Matrix4 {
    float m[16];
};

Matrix4 matrix4_identity(void);
Matrix4 matrix4_multiply(const Matrix4 &a, const Matrix4 &b);
Matrix4 matrix4_translation(float x, float y, float z);
Matrix4 matrix4_scale(float x, float y, float z);
/* A rotation by angle radians about the axis (x, y, z). */
Matrix4 matrix4_rotation(float x, float y, float z, float angle);
void matrix4_apply(const Matrix4 &m, const float *p, float *out);

/* Each adds the shape's vertices and outward-facing polygons, centred on
 * the origin of the frame m, with the material mat.  Segments around the
 * round shapes: 16. */
void vrml1_add_cube(ObjectAppender *append, const Matrix4 &m, float width, float height, float depth, int mat);
void vrml1_add_sphere(ObjectAppender *append, const Matrix4 &m, float radius, int mat);
void vrml1_add_cylinder(ObjectAppender *append, const Matrix4 &m, float radius, float height, int mat);
void vrml1_add_cone(ObjectAppender *append, const Matrix4 &m, float radius, float height, int mat);

#endif
