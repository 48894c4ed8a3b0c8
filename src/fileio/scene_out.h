/*
 * fileio/scene_out.h - what the renderer and world-format writers (POV-Ray,
 * RenderMan, DIVE, MASSIVE, DVS) share: the frame that writes a file
 * through a temporary file, number output that never writes "nan" or
 * "inf", an object's polygons as triangles, the tree walk, the scene's
 * extent and the 3D view's camera as vectors in model space.
 */
#ifndef VESK_FILEIO_SCENE_OUT_H
#define VESK_FILEIO_SCENE_OUT_H

#include "fileio/text_out.h"
#include "fileio/vrml_lists.h"
#include "vesk.h"

#include <vector>

/* Writes a whole file: opens a temporary file beside filename, prints
 * "Generating <format> file" on the console, calls body, and renames the
 * temporary file over filename only when everything was written.  On
 * failure the console says why and an earlier file is left as it was.
 * Returns 1 when written. */
int scene_write_file(const char *filename, const char *format, void (*body)(TextOut *out, void *data),
                     void *data);

/* A number; values that are not finite are written as 0 so that no
 * reader meets "nan" or "inf". */
void scene_put_number(TextOut *out, double value);
/* Three numbers separated by sep ("x y z" or "x, y, z"). */
void scene_put_triple(TextOut *out, const float *v, const char *sep);
/* The three numbers between open and close ("<a, b, c>", "[a b c]"); a
 * double triple is written as floats, like the model's own numbers. */
void scene_put_bracketed(TextOut *out, const float *v, char open, const char *sep, char close);
void scene_put_bracketed(TextOut *out, const double *v, char open, const char *sep, char close);
/* Text on one line: line breaks and other control characters become
 * blanks, so that a name can stand in a comment. */
void scene_put_one_line(TextOut *out, const char *text);
/* The text in double quotes, a quote or backslash escaped by a backslash
 * and control characters as blanks (null as ""). */
void scene_put_quoted(TextOut *out, const char *text);

/* The palette entry a surface is drawn with: numbers out of range fall
 * back to entry 0, as the palette itself does. */
static inline int scene_material(const Surface *s) { return s->mat < PALETTE_CAPACITY ? s->mat : 0; }

/* One triangle of a polygon: its surface and three references. */
struct SceneTriangle {
    Surface *surface;
    SVertex *ref[3];
};

/* An object's polygons as triangles in surface order.  Polygons of 4 or
 * more corners are split by the surface triangulation, or into a fan when
 * that fails; references to vertices the object doesn't own are dropped,
 * and polygons left with fewer than 3 corners are counted in skipped.
 * The triangles made here are owned and freed by scene_triangles_clear. */
struct SceneTriangles {
    std::vector<SceneTriangle> triangles;
    List *owned = nullptr;
    long skipped = 0;
};
void scene_triangulate(const VrmlObjectLists *lists, SceneTriangles *out);
/* The same for one polygon, appending to out. */
void scene_triangulate_surface(const VrmlObjectLists *lists, Surface *s, SceneTriangles *out);
/* One polygon as faces for formats that want convex faces: the polygon
 * itself when it is convex, else its triangles (kept in scratch until
 * scene_triangles_clear).  Returns the number of faces; 0 when the
 * polygon has fewer than 3 usable corners. */
int scene_convex_faces(const VrmlObjectLists *lists, Surface *s, SceneTriangles *scratch,
                       std::vector<std::vector<SVertex *>> *faces);
void scene_triangles_clear(SceneTriangles *t);

/* The references of a surface that point at vertices of the object. */
void scene_surface_refs(const VrmlObjectLists *lists, Surface *s, std::vector<SVertex *> *refs);
/* 1 when the polygon (3 or more references) is convex and planar enough
 * to be written as one face by formats that want convex faces. */
int scene_polygon_is_convex(const std::vector<SVertex *> &refs);

/* Every object of the model below world, depth first, parents before
 * their children, lights included. */
void scene_objects(std::vector<Object *> *objects);
/* The box around every vertex; 0 when the model has none. */
int scene_extent(float *min, float *max);

/* The 3D view's camera in model space. */
struct SceneCamera {
    double eye[3];
    double forward[3];    /* unit */
    double up[3];         /* unit */
    double right[3];      /* unit */
    double fovy;          /* vertical field of view, degrees */
    double aspect;        /* width / height of the view */
    int width, height;    /* the view's size in pixels (a default when unknown) */
    float modelview[16];  /* the view's OpenGL model-view matrix, column by column */
};
/* The camera of the 3D view now, as the view draws it. */
void scene_camera(SceneCamera *camera);

#endif
