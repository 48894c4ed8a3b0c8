/*
 * edit/undo.h - the linear, depth-limited undo history.  An operation
 * announces itself with new_undo(kind, label) before it changes anything,
 * stores what it needs with the set_undo_ functions, then edits; UNDO
 * reverts the latest record.  Structural operations snapshot the whole
 * model (set_undo_all).
 */
#ifndef VESK_EDIT_UNDO_H
#define VESK_EDIT_UNDO_H

#include "vesk.h"

/* Kind codes.  A record has exactly one kind; the codes are powers of
 * two as the history has always numbered them, but they are never
 * combined. */
enum {
    UNDO_SELECTION = 4,
    UNDO_MOVE = 8,
    UNDO_ADD_SURFACE = 16,
    UNDO_DELETE_TREE = 64,
    UNDO_SNAPSHOT_128 = 128,
    UNDO_ADD_OBJECT = 256,
    UNDO_SNAPSHOT_512 = 512,
    UNDO_UNGROUP = 1024,
    UNDO_REMOVE_SURFACE = 2048,
    UNDO_RESIZE = 4096,
    UNDO_ROTATE = 8192,
    UNDO_VERTEX_POSITIONS = 16384,
    UNDO_ADDED_VERTICES = 32768,
    UNDO_SNAPSHOT = 65536,
    UNDO_PASTE = 131072,
};

struct VertexPosition {
    Vertex *vertex;
    float x, y, z;
};

struct UndoRecord {
    int kind;
    char *label;
    SVertex *vertref;
    float vector[3];
    List *saved_vertices;
    List *saved_objects;
    Surface *surface;
    List *added_vertices;
    List *removed_objects;
    Object *added_object;
    Object *world_snapshot;
    float resize_box_a[3], resize_box_b[3], resize_box_c[3], resize_box_d[3];
    float rotate_angle;
    int rotate_axis;
    int select_mode;
    List *vertex_positions;
    List *added_objects;
    /* Handles of the added object(s): a handle outlives its object only as
     * an unknown number, so undo never reaches a freed record through
     * them. */
    uint32_t added_object_handle;
    uint32_t *added_object_handles;
    uint32_t num_added_object_handles;
    /* saved_objects holds deep copies (set_undo_partselected) that the
     * record must free. */
    int saved_objects_owned;
};

UndoRecord *new_undo(int kind, const char *label);
void set_undo_vert(float x, float y, float z);
void set_undo_vertref(SVertex *ref);
void set_undo_vertices(List *vertices);
void set_undo_vertex_positions(List *vertices);
void set_undo_object(Object *object);
void set_undo_objectlist(List *objects);
void set_undo_selection(List *vertices, List *objects, int hand_over);
void set_undo_surface(Surface *surface);
void set_undo_partselected(void);
void set_undo_all(void);
/* Like set_undo_all for a caller that replaces the whole world with
 * another model: the record keeps the replaced model itself as its
 * snapshot (its objects' ids no longer find them) instead of a copy. */
void set_undo_all_taking(Object *replaced);
int set_undo_delete_selection(void);
void set_undo_resize(const float *a, const float *b, const float *c, const float *d);
void set_undo_rotate(int view, const float *centre, float angle);
int UNDO(void);
void clear_all_undos(void);
/* The record the next undo reverts, or null. */
UndoRecord *undo_current(void);
/* Saves the position of every vertex the selection moves: the selected
 * vertices and all vertices of the selected subtrees (kind vertex
 * positions). */
void set_undo_selected_vertex_positions(void);

/* Commands "undo_history" (the labels, oldest first, as a Tcl list) and
 * "undo_to" (undoes until the history holds only the steps before the
 * given one, counted from 0 at the oldest). */
int command_undo_history(void);
int command_undo_to(int step);

#endif
