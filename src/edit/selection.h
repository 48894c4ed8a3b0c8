/*
 * edit/selection.h - the one global selection: the select mode, the lists
 * of selected vertices and objects with their counts, the current object,
 * the selection box, and the ways of changing them (the object rule of
 * each select mode, box selection, named selection, surface selection and
 * the select-mode change with its conversion of the selection).
 *
 * Other code reads the lists of `selection` as plain lists but changes
 * them only through the functions here: each list has an index beside it
 * (see indexed_list.h) that must move with it.
 */
#ifndef VESK_EDIT_SELECTION_H
#define VESK_EDIT_SELECTION_H

#include "vesk.h"

#define SELECT_TREE 0
#define SELECT_OBJECT 1
#define SELECT_VERTEX 2

struct Selection {
    int select_mode;                 /* SELECT_TREE, SELECT_OBJECT, SELECT_VERTEX */
    List *selected_vertices;         /* Vertex, in selection order (vertex mode) */
    List *selected_objects;          /* Object, in selection order (tree, object mode) */
    List *part_selected_objects;     /* Object owning selected vertices (vertex mode) */
    int num_selected_vertices;
    int num_selected_objects;
    int num_part_selected_objects;
    int selection_has_extent;        /* 0 when nothing selected or the box is all zero */
    Object *current_object;          /* the one selected object, else none */
    float box_min[3];
    float box_max[3];
    int view_has_extent[3];          /* per orthographic view: box not flat in its two axes */
};

extern Selection selection;

/* Called at the end of find_bounding_box when set, so that the views can
 * recompute the handles of the selection box. */
extern void (*selection_box_changed)(void);

Object *get_current_object(void);
/* Empties the three lists, zeroes the counts, no current object, no
 * extent.  Does not redraw. */
void clear_selection(void);
/* clear_selection, then the status and a redraw (command
 * "clear_selection"). */
int clear_selection_refresh(void);

/* The object rule of the current select mode, then the box. */
/* select_object is declared in vesk.h. */
void unselect_object(Object *object);
void select_objectlist(List *objects);
void unselect_objectlist(List *objects);
/* Selects every child of the world (command "select_all"). */
int select_all(void);

/* Vertex mode only: appends every vertex (no uniqueness test). */
void select_vertices(List *vertices);
/* Appends one vertex without a uniqueness test or a box update. */
void add_to_selected_list(Vertex *vertex);
/* Removes the first occurrence of each vertex from the selected vertices,
 * counting real removals; returns how many were removed.  No box update. */
int unselect_vertices(List *vertices);
/* Vertex mode: the surface's vertices; other modes: its owner object. */
void select_surface(Surface *surface);
void select_surfacelist(List *surfaces);

int nothing_is_selected(void);
/* 1 when the object stands in the selected or the part-selected list. */
int object_is_selected(Object *object);
int vertex_is_selected(Vertex *vertex);

/* Hands the selected-vertex and selected-object lists to the caller,
 * which then owns them, and leaves the selection cleared (the way an undo
 * record takes the selection over). */
void selection_take_lists(List **vertices, List **objects);
/* Makes the given lists the selected-vertex and selected-object lists
 * (the selection owns them from now on; the old ones are freed) with
 * counts from their lengths.  The part-selected list, the current object
 * and the box are left alone (the way an undo restores a selection). */
void selection_adopt_lists(List *vertices, List *objects);
/* Tells the scripts that the selection counts changed. */
void selection_publish_counts(void);

/* Named selection: the whole tree from the world, then redraw (commands
 * "select_by_name", "unselect_by_name"). */
int select_by_name(char *name);
int unselect_by_name(char *name);
void select_named(const char *name, Object *object);
void unselect_named(const char *name, Object *object);
/* Depth-first, pre-order from start (the world when none); hidden objects
 * and the world itself can match. */
Object *find_named_object(const char *name, Object *start);

/* Surfaces. */
void find_surfaces_with_selected_vertex(Object *object, List **surfaces);
/* A new list of the surfaces whose vertices are all selected. */
List *find_selected_whole_surfaces(void);
void select_whole_surfaces(void);
/* Completes the surfaces that have a selected vertex (command
 * "select_part_selected_surfaces"). */
int select_part_selected_surfaces(void);

/* Boxes.  view is an orthographic view: 0 tests x and y, 1 z and y, 2 x
 * and z; the test is strict, a point on the edge is outside. */
int point_inside_box2(int view, const float *point, const float *box_max, const float *box_min);
void find_points_inside(Object *object, const float *box_max, const float *box_min, int view,
                        List **vertices, List **objects);
/* Box selection; add wins over remove when both are set. */
void select_all_inside(const float *corner_a, const float *corner_b, int view, int add, int remove);
void select_surfaces_from_point(const float *point, int view);
void find_box_centre(const float *box_max, const float *box_min, float *result);
void find_box_size(const float *corner_a, const float *corner_b, float *result);
void find_bounding_box(void);

/* Changes the select mode, converting the selection (command
 * "set_select_mode"). */
int set_new_select_mode(int mode);
/* Tells the user interface the mode's word. */
void set_new_select_mode_ui(int mode);

#endif
