/*
 * edit/transform.h - 3x3 rotation matrices and rigid frames, moving,
 * rotating, scaling, resizing and mirroring objects and the selection.
 *
 * A Matrix3 is nine floats stored column by column: a point p becomes
 * x' = m0*x + m3*y + m6*z, y' = m1*x + m4*y + m7*z,
 * z' = m2*x + m5*y + m8*z.  A frame is a matrix R and a translation t; it
 * maps a local point p to the global point t + R*p.  Angles given by users
 * are degrees; the functions that take radians say so.
 *
 * "What is selected" is both lists of the selection: every selected
 * vertex, and every selected object with its whole subtree.
 */
#ifndef VESK_EDIT_TRANSFORM_H
#define VESK_EDIT_TRANSFORM_H

#include "vesk.h"

/* Degrees to radians as d * pi * (1/180), multiplied in that order in
 * double precision. */
#define DEGREES_TO_RADIANS(d) ((double)(d) * 3.14159265358979323846 * 0.005555555555555556)

/* ---- matrices (transform.cpp) ---- */

/* M = Rx(rx) * Ry(ry) * Rz(rz), angles in radians. */
void matrix_set_rotate(float *m, float rx, float ry, float rz);
void matrix_set_identity(float *m);
void matrix_copy(const float *source, float *destination);
/* C = A * B.  C may be A or B. */
void matrix_multiply(const float *a, const float *b, float *c);
/* The same product with the result first. */
void rotmult(float *c, const float *a, const float *b);
/* result = transpose(source); result may be source. */
void rotinvert(float *result, const float *source);
/* 1 when every element equals the identity's exactly (so -0 counts as 0). */
int matrix_is_identity(const float *m);
/* p := M * p */
void matrix_rotate_point(const float *m, float *p);
void pointlist_rotate_matrix(List *vertices, const float *m);
void matrix_print(const float *m);

/* The global matrix: the working rotation of the selection rotations. */
extern float global_matrix[9];
void set_global_matrix_rotate(float rx, float ry, float rz);
/* p := G * p */
void rotate_point_3d(float *p);
void rotate_pointlist_3d(List *vertices);
/* m := m * G */
void rotate_matrix(float *m);

/* ---- frames ---- */

void frame_invert(float *r_out, float *t_out, const float *r, const float *t);
/* (R out, t out) = (R1 * R2, R1 * t2 + t1) */
void frame_mult(float *r_out, float *t_out, const float *r1, const float *t1, const float *r2, const float *t2);
void frame_cp(float *r_out, float *t_out, const float *r, const float *t);
/* (R, t) := (R * R2, R * t2 + t) */
void frame_postmult(float *r, float *t, const float *r2, const float *t2);
/* (R, t) := inverse of (R2, t2), post-multiplied by (R3, t3). */
void frame_multinv(float *r, float *t, const float *r2, const float *t2, const float *r3, const float *t3);
/* out = transpose(R) * (p - t) */
void point_transform_global_to_local(float *out, const float *r, const float *t, const float *p);
/* out = t + R * p */
void point_transform_local_to_global(float *out, const float *r, const float *t, const float *p);

/* The global position of a location given in the parent's frame:
 * out = parent centre + parent rotation * location.  Formed in double and
 * rounded once; an identity parent rotation is not applied at all, so that
 * it leaves the location exactly as given. */
void object_translation_local_to_global(Object *parent, const double *location, float *out);
/* The same for a frame given as its rotation and centre. */
void frame_location_to_global(const float *rotation, const float *centre, const double *location, float *out);

/* ---- objects (transform.cpp); all but the *_only ones include the
 * whole subtree ---- */

/* p := p + d for each vertex of the list. */
void translate_pointlist(List *vertices, const float *d);
/* Location and the object's own vertices += d. */
void translate_object_only(Object *object, const float *d);
void translate_object(Object *object, const float *d);
/* Moves the subtree so that the object's location becomes 0. */
void translate_object_zero(Object *object);
/* translate_object_zero, then a move to p. */
void translate_object_abs(Object *object, const float *p);
void translate_objectlist(List *objects, const float *d);
/* The global matrix applied to the location and the vertices, about the
 * origin. */
void rotate_object_only(Object *object);
void rotate_object(Object *object);
/* Location and vertices: p := c + M * (p - c). */
void object_rotate_matrix(Object *object, const float *m, const float *centre);
/* Location and vertices multiplied per axis. */
void multiply_object(Object *object, const float *s);
/* Location, the scale fields and vertices multiplied per axis. */
void object_scale(Object *object, float sx, float sy, float sz);
void scale_object(Object *object, const float *s);
/* Vertices only: p := (p + t1) * s + t2 per axis. */
void translate_multiply_object(Object *object, const float *t1, const float *s, const float *t2);

/* ---- the selection (transform_selection.cpp) ---- */

/* The box of every point a transform of the selection moves (the
 * vertices and the locations of the selected subtrees' objects), computed
 * afresh without storing it; 0 when nothing is selected. */
int selection_bounds_with_locations(float *box_min, float *box_max);
/* The rotation centre of the selection: its box minimum plus half its
 * size, per axis. */
void selection_rotation_centre(float *centre);

void translate_all_selected(const float *d);
void subtract_point_from_all_selected(const float *d);
/* Moves the selection and its box by d (command "move"). */
void move_selection(const float *d);
int move_selection_f(float x, float y, float z);
/* Moves the selection so that its box centre lands on the point
 * (command "move_to"). */
int selection_move_to_f(float x, float y, float z);
void multiply_all_selected(const float *s);
void scale_all_selected(const float *s);
void translate_multiply_selected(const float *t1, const float *s, const float *t2);
/* Turns the selection by the global matrix about centre, or about its box
 * centre when centre is null. */
void rotate_selected_with_global_matrix(const float *centre);
/* Turns the selection by angle degrees in a view: 0 about -z, 1 about x,
 * 2 about -y. */
void rotate_selected(float angle, int view, const float *centre);
/* Degrees about the selection's box centre (command "rotate"). */
void rotate_selection(const float *degrees);
void rotate_selection_about(const float *degrees, const float *centre);
int rotate_selection_f(float rx, float ry, float rz);
int rotate_selection_about_f(float rx, float ry, float rz, float x, float y, float z);
/* Scales about the box centre; nothing when the selection has no extent. */
int scale_selected(float sx, float sy, float sz);
/* Scales each axis with extent to the target size; a negative target or a
 * flat axis is left alone. */
void selection_size_to(const float *target);
/* The factors selection_size_to scales by. */
void selection_size_factors(const float *target, float *factor);
int selection_size_to_f(float x, float y, float z);
/* Maps the box (a max, b min) onto the box (c max, d min). */
void resize_selected_to_bounding_box(const float *a, const float *b, const float *c, const float *d);
/* Mirrors the selection's vertices about the middle plane of its box on
 * axis 0 x, 1 y or 2 z; other axes change nothing. */
int mirror_selected(int axis);
/* Recomputes the normals of the selected objects, or of the owners of the
 * selected vertices. */
void selected_calc_normals(void);
/* Hands out the two selection lists; returns the select mode. */
int vk_get_selection(List **vertices, List **objects);

#endif
