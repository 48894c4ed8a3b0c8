/*
 * edit/object_ops.h - operations that restructure the object tree on
 * behalf of the user (group, ungroup, fragment, explode, merge, hide,
 * show, clone, duplicate, delete, clear all, optimize, centres), and the
 * bulk helpers they and the undo history share: finding the owners of
 * many vertices at once, deleting many vertices at once, appending many
 * children at once, and an exact deep copy of a subtree.
 */
#ifndef VESK_EDIT_OBJECT_OPS_H
#define VESK_EDIT_OBJECT_OPS_H

#include "vesk.h"
#include "edit/pointer_table.h"

#include <vector>

/* ---- shared helpers (object_ops_support.cpp) ---- */

/* Every edit ends here: the model differs from its file now. */
void edit_mark_changed(void);

/* Fills in the owner of each key of owners whose value is 0: the first
 * object, depth-first from the world, whose vertex list holds it.  Keys
 * that stay 0 are vertices no longer in the model.  One walk of the
 * model, stopping once every key has its owner. */
void find_vertex_owners(PointerTable *owners);
/* The owners of the vertices, each once, in the order of their first
 * vertex; vertices no longer in the model are skipped. */
List *owners_of_vertices(List *vertices);
/* Every object reachable from the world, the world included. */
void find_live_objects(PointerTable *live);

/* Deletes the vertices (each once, whatever the list repeats) from their
 * owners, with the effect of object_delete_vertex on each: their surface
 * references go, surfaces left without references are deleted, and an
 * owner left with no vertices, surfaces or children is deleted.  One
 * sweep of each owner's lists.  Returns how many vertices were deleted;
 * *objects_deleted (when given) is set when an owner was deleted. */
unsigned int delete_vertices(List *vertices, int *objects_deleted);

/* Appends children to a parent with one walk to the end of its child
 * list; keep the appender for as long as nothing else changes the list. */
struct ChildAppender {
    Object *parent;
    List *tail;
};
ChildAppender child_appender(Object *parent);
void append_child(ChildAppender *a, Object *child);

/* Takes the objects named by the handles out of their parents, with one
 * sweep of each parent's child list.  With cleanup, a parent left with no
 * children and no vertices is then deleted (never the world), as
 * object_remove_child would.  Returns the objects still alive, detached,
 * in the order given, each once. */
std::vector<Object *> detach_objects(const std::vector<uint32_t> &handles, int cleanup);
/* The object and its descendants, depth-first, each before its children
 * and the children in list order (no recursion: any depth is fine). */
std::vector<Object *> subtree_objects(Object *object);
/* Handles of the objects of the list (the world and nulls left out). */
std::vector<uint32_t> handles_of(List *objects);
/* The objects of the list without those that have an ancestor in the
 * list (an operation on the ancestor already covers them). */
std::vector<uint32_t> handles_of_topmost(List *objects);

/* A deep copy of the object and its subtree that keeps every surface
 * reference to the very vertex copy it stood for (no matching by
 * position), with all fields and light parameters; detached, no handle. */
Object *copy_object_exact(Object *object);

/* Drops from the selection every object and vertex that is no longer in
 * the model (after a deletion that may have cascaded). */
void selection_forget_dead(void);

/* ---- object operations (object_ops.cpp, object_ops_structure.cpp) ---- */

int group_selected_objects(void);
int ungroup_selected_objects(void);
int object_fragment(Object *object, float distance);
int selected_object_fragment(void);
int selected_object_explode(float distance);
int selected_object_merge(void);
int hide_selected(void);
int hide_unselected(void);
int show_all(void);
/* New objects, not in the tree yet: one holding copies of the selected
 * vertices with the surfaces they complete (whole_surfaces) or touch,
 * then a clone of every selected object. */
List *clone_selected(int whole_surfaces);
int clone_selection(void);
/* Copies move 20 pixels of the view right and down (view 0 front, 1
 * side, else plan), snapped to the grid; duplicate_selected uses the
 * plan view's offset. */
int duplicate_selected_in_view(int view);
int duplicate_selected(void);
int delete_all_selected(void);
/* Deletes the selection with undo recorded under the verb ("delete",
 * "cut"); returns 1 when something was deleted. */
int delete_selection_as(const char *verb);
int command_clear_all(void);
/* Empties the world (its children, vertices and surfaces), the selection
 * and the undo history, without telling the views or the user. */
void clear_world_contents(void);
int recalc_normals_all(void);
int selected_recentre(void);
int selected_mincentre(void);

/* ---- optimizing (object_ops_optimize.cpp) ---- */

int object_optimize(Object *object);
int optimize_selected(void);
int object_optimize_surfaces(Object *object);
int selected_optimize_surfaces(void);

#endif
