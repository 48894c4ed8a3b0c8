/*
 * edit/primitive_append.h - appending vertices, surfaces and references
 * in bulk.  object_add_vertex and object_add_surface walk to the end of
 * the list on every call, which makes building a shape of n parts cost
 * n squared; an appender remembers the last node of each list (found once)
 * and keeps the counts beside the lists as it goes.
 */
#ifndef VESK_EDIT_PRIMITIVE_APPEND_H
#define VESK_EDIT_PRIMITIVE_APPEND_H

#include "vesk.h"

struct ObjectAppender {
    Object *object;
    List *vertex_tail;     /* last node of object->vertices, or null */
    List *surface_tail;    /* last node of object->surfaces, or null */
};

/* Starts appending to an object (one walk of each list to its end).  The
 * object's lists must not be appended to by other means until the
 * appender is finished with; removing nodes other than the last is fine. */
void appender_start(ObjectAppender *append, Object *object);
/* Re-finds the tails after the lists were changed by other means. */
void appender_refresh(ObjectAppender *append);
void appender_add_vertex(ObjectAppender *append, Vertex *vertex);
Vertex *appender_new_vertex(ObjectAppender *append, float x, float y, float z);
/* Appends every vertex of the list (the list nodes stay the caller's). */
void appender_add_vertices(ObjectAppender *append, List *vertices);
void appender_add_surface(ObjectAppender *append, Surface *surface);

/* A surface being filled with references. */
struct RefAppender {
    Surface *surface;
    List *tail;
};

RefAppender ref_appender_start(Surface *surface);
void ref_append(RefAppender *refs, Vertex *vertex, float u, float v);

/* A new surface with the given kind, shading and sidedness. */
Surface *new_surface_styled(int kind, int shading, int twosided);
/* A new surface of three references with texture (0, 0). */
Surface *new_triangle(Vertex *a, Vertex *b, Vertex *c);

#endif
