/*
 * edit/surface_ops_batch.h - what the surface operations share: the
 * selected surfaces with their owners, and batched edits of objects.
 *
 * Removing one surface from an object's list is a walk of the list, and
 * so is appending one; an operation on a hundred thousand surfaces done
 * one surface at a time would walk the list a hundred thousand times.  A
 * batch instead appends through remembered tails and marks what is to go;
 * finishing the batch removes everything marked in one sweep per object.
 * The lists end exactly as the one-at-a-time edits would leave them:
 * survivors in their old order, then the appended items in order.
 * An item dropped twice goes once, at its first node.
 */
#ifndef VESK_EDIT_SURFACE_OPS_BATCH_H
#define VESK_EDIT_SURFACE_OPS_BATCH_H

#include "vesk.h"
#include "edit/pointer_table.h"
#include "edit/primitive_append.h"

#include <unordered_map>
#include <vector>

/* Items to unlink and free when the batch finishes, in the order they
 * were dropped.  Operations drop surfaces in list order almost always,
 * so the sweep first tries to meet them one after another along the list
 * and only hashes them when that fails; vertices are told apart by their
 * scratch marks. */
struct DropList {
    std::vector<void *> items;
};

struct ObjectEdit {
    Object *object;
    ObjectAppender append;
    DropList dropped_surfaces;
    DropList dropped_vertices;
};

struct SurfaceEdits {
    std::unordered_map<Object *, ObjectEdit *> by_object;
    std::vector<ObjectEdit *> edits;

    SurfaceEdits() = default;
    SurfaceEdits(const SurfaceEdits &) = delete;
    SurfaceEdits &operator=(const SurfaceEdits &) = delete;
    ~SurfaceEdits();
};

/* The edit of an object, started on first use. */
ObjectEdit *edits_for(SurfaceEdits *edits, Object *object);
void edit_drop_surface(ObjectEdit *edit, Surface *surface);
void edit_drop_vertex(ObjectEdit *edit, Vertex *vertex);
/* Unlinks and frees everything dropped, keeping the counts. */
void edits_finish(SurfaceEdits *edits);

/* A surface with the object that owns it. */
struct OwnedSurface {
    Object *object;
    Surface *surface;
};

/* The wholly selected surfaces (of the part selection) with their owners,
 * in the order find_selected_whole_surfaces gives them. */
std::vector<OwnedSurface> whole_selected_surfaces(void);
/* The owner of each surface of the list, found in one walk of the model;
 * surfaces without an owner are left out. */
std::vector<OwnedSurface> surfaces_with_owners(List *surfaces);
/* The object's own surfaces as they are now. */
std::vector<Surface *> object_surfaces(Object *object);
/* 1 when there is neither a whole selected surface nor a selected object. */
int no_surfaces_selected(const std::vector<OwnedSurface> &whole);
/* Recomputes the normals of the given owners and of the selected objects. */
void recalc_selection_normals(const std::vector<OwnedSurface> &whole);
/* Marks the model changed and asks for a redraw of every view. */
void model_changed_redraw_all(void);

#endif
