/*
 * edit/transform.h - 3x3 rotation matrices and rigid frames, and moving
 * objects.  A Matrix3 is nine floats stored column by column: a point p
 * becomes x' = m0*x + m3*y + m6*z, y' = m1*x + m4*y + m7*z,
 * z' = m2*x + m5*y + m8*z.  A frame is a matrix R and a translation t; it
 * maps a local point p to the global point t + R*p.
 */
#ifndef VESK_EDIT_TRANSFORM_H
#define VESK_EDIT_TRANSFORM_H

#include "vesk.h"

/* M = Rx(rx) * Ry(ry) * Rz(rz), angles in radians. */
void matrix_set_rotate(float *m, float rx, float ry, float rz);
void matrix_set_identity(float *m);
void matrix_copy(const float *source, float *destination);
/* C = A * B.  C may be A or B. */
void matrix_multiply(const float *a, const float *b, float *c);
/* 1 when every element equals the identity's exactly (so -0 counts as 0). */
int matrix_is_identity(const float *m);
/* p := M * p */
void matrix_rotate_point(const float *m, float *p);
void pointlist_rotate_matrix(List *vertices, const float *m);
void matrix_print(const float *m);

/* p := p + d for each vertex of the list. */
void translate_pointlist(List *vertices, const float *d);
/* Location and the object's own vertices += d. */
void translate_object_only(Object *object, const float *d);
/* translate_object_only on the object and every descendant. */
void translate_object(Object *object, const float *d);

/* The global position of a location given in the parent's frame:
 * out = parent centre + parent rotation * location.  Formed in double and
 * rounded once; an identity parent rotation is not applied at all, so that
 * it leaves the location exactly as given. */
void object_translation_local_to_global(Object *parent, const double *location, float *out);
/* The same for a frame given as its rotation and centre. */
void frame_location_to_global(const float *rotation, const float *centre, const double *location, float *out);

#endif
