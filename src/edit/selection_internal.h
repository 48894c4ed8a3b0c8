/*
 * edit/selection_internal.h - what the selection's source files share:
 * the indexes kept beside the three selection lists and the pieces of the
 * object rule.  The rule functions change the lists and counts only; the
 * public functions finish with the current object and the box once, so a
 * long list costs one box computation, not one per element.
 */
#ifndef VESK_EDIT_SELECTION_INTERNAL_H
#define VESK_EDIT_SELECTION_INTERNAL_H

#include "edit/indexed_list.h"
#include "edit/selection.h"

extern ListIndex selected_vertex_index;
extern ListIndex selected_object_index;
extern ListIndex part_selected_index;

/* Unique insertions and removal requests that keep the counts. */
void add_selected_vertex(Vertex *vertex);
void add_selected_object(Object *object);
void add_part_selected_object(Object *object);
void request_unselect_object(Object *object);
/* Makes every requested removal (one walk of each list that has some). */
void sweep_selection_removals(void);

/* The object rule for one object, without the box. */
void select_rule(Object *object);
/* The unselect rule for one object, as removal requests: follow with
 * sweep_selection_removals. */
void unselect_rule(Object *object);
/* current_object from the count of selected objects. */
void update_current_object(void);

/* The top ancestor that tree mode selects: none for none and for the
 * world, which is no child of itself. */
Object *tree_top(Object *object);
/* The owners of the selected vertices, each once, in the order of their
 * first selected vertex (a new list). */
List *selected_vertex_owners(void);

#endif
