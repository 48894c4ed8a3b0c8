/*
 * edit/model_additions.h - putting back, in place, what an undo took away
 * from the model.  The undos of "add surface", "insert vertex" and of
 * added objects that hang below a group only remove things: a surface,
 * some vertices with their references, whole subtrees.  Redo keeps an
 * exact copy of the model from just before such an undo with those items
 * marked, and later moves the marked items from the copy into the live
 * model at their old places.  Every other live object, vertex, surface and
 * reference stays the record it was, so the older undo records, which
 * point into the model, still undo correctly.
 */
#ifndef VESK_EDIT_MODEL_ADDITIONS_H
#define VESK_EDIT_MODEL_ADDITIONS_H

#include "vesk.h"
#include "edit/pointer_table.h"

#include <vector>

struct ModelAdditions {
    Object *done = nullptr;   /* exact copy of the model before the undo; owned */
    PointerTable marked;      /* objects, surfaces and vertices of `done` that the undo removes */
};

/* What a put-back added to the live model, in model order. */
struct PutBack {
    std::vector<Object *> objects;
    std::vector<Surface *> surfaces;
    std::vector<Vertex *> vertices;
};

/* Copies the live model and marks in the copy the counterparts of the
 * live objects, surfaces and vertices held in `removed` (keys only). */
void additions_capture(ModelAdditions *a, Object *live_world, const PointerTable &removed);
/* 1 when the live model is exactly the copy without its marked items
 * (and without the references to marked vertices), so that a put-back
 * gives the copy back. */
int additions_fit(const ModelAdditions &a, Object *live_world);
/* Moves the marked items into the live model and writes the copy's
 * numbers into the matching live records; the copy is used up.  The
 * caller checked additions_fit. */
void additions_put_back(ModelAdditions *a, Object *live_world, PutBack *out);
void additions_free(ModelAdditions *a);

#endif
