/*
 * fileio/vrml_lists.h - the pieces the VRML 2.0, VRML 1.0 and Inventor
 * writers share: an object's surfaces split into polygons and lines, its
 * vertex numbering, and the lists written from them (vertex points,
 * index lists, normal vectors, texture points and the running indices
 * that match them).  Numbers are written with "%g" as other programs
 * expect; nothing is escaped.
 */
#ifndef VESK_FILEIO_VRML_LISTS_H
#define VESK_FILEIO_VRML_LISTS_H

#include "vesk.h"

#include <cstdio>
#include <vector>

/* One object as the writers see it.  Vertex numbers are positions in the
 * object's vertex list, kept in the vertices' scratch field `mark`. */
struct VrmlObjectLists {
    Object *object;
    std::vector<Vertex *> vertices;
    std::vector<Surface *> polygons;   /* surface_kind polygon */
    std::vector<Surface *> lines;      /* closed lines and lines */
};

/* A number as "%g" writes it (six significant digits, the shortest of
 * the fixed and exponent forms), without printf's cost per call. */
void vrml_put_number(FILE *file, float value);
/* Three numbers as "%g %g %g". */
void vrml_put_triple(FILE *file, const float *values);

/* Numbers the object's vertices and splits its surfaces, in list order. */
void vrml_lists_make(VrmlObjectLists *lists, Object *object);
/* The vertex's number in the object, or -1 for a reference to a vertex
 * the object does not own (such a reference is not written). */
long vrml_vertex_number(const VrmlObjectLists *lists, Vertex *vertex);
/* Every vertex as "%g %g %g", ",\n" between. */
void vrml_write_points(FILE *file, const VrmlObjectLists *lists);
/* The index-list layout: opening, per surface "%d, " per entry and "-1",
 * ",\n" between surfaces, then closing.  Closed lines repeat their first
 * index at the end. */
void vrml_write_coord_index(FILE *file, const VrmlObjectLists *lists, const std::vector<Surface *> &surfaces,
                            const char *opening, const char *closing);
/* The running indices 0, 1, 2... of the polygons' vertex references in
 * the same layout; returns how many were written. */
int vrml_write_running_index(FILE *file, const std::vector<Surface *> &polygons, const char *opening,
                             const char *closing);
/* Per polygon and reference the vertex normal (smooth shading) or the
 * surface normal; returns how many vectors were written. */
int vrml_write_normals(FILE *file, const std::vector<Surface *> &polygons);
/* Per polygon and reference the texture point (u * scale_u, v * scale_v). */
void vrml_write_texture_points(FILE *file, const std::vector<Surface *> &polygons, float scale_u, float scale_v);
/* The name of the object's texture when texture output is on and the
 * object has one, else null. */
const char *vrml_texture_name(Object *object, int with_textures);
/* 1 when the text is set and not empty. */
int vrml_text_present(const char *text);
/* Number of vertex references of all the polygons. */
long vrml_count_references(const std::vector<Surface *> &polygons);

#endif
