/*
 * edit/selection.h - the one global selection: select mode, the lists of
 * selected vertices and objects, their counts, the current object and the
 * selection box.
 */
#ifndef VESK_EDIT_SELECTION_H
#define VESK_EDIT_SELECTION_H

#include "vesk.h"

#define SELECT_TREE 0
#define SELECT_OBJECT 1
#define SELECT_VERTEX 2

struct Selection {
    int select_mode;
    List *selected_vertices;
    List *selected_objects;
    List *part_selected_objects;
    int num_selected_vertices;
    int num_selected_objects;
    int num_part_selected_objects;
    int selection_has_extent;
    Object *current_object;
    float box_min[3];
    float box_max[3];
    int view_has_extent[3];
};

extern Selection selection;

Object *get_current_object(void);
void clear_selection(void);
void clear_selection_refresh(void);
void select_object(Object *object);
void unselect_object(Object *object);
void select_objectlist(List *objects);
void unselect_objectlist(List *objects);
int object_is_selected(Object *object);
int nothing_is_selected(void);
void find_bounding_box(void);
/* Changes the select mode, converting the selection (command
 * "set_select_mode"). */
int set_new_select_mode(int mode);

#endif
