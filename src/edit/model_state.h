/*
 * edit/model_state.h - pictures of the model that do not hold pointers
 * into it: the selection and the geometry, each named by position (the
 * object's place in a depth-first walk from the world, a vertex's place
 * in its object's list).  Redo keeps them across undos that replace
 * records with copies, and puts them back exactly, bit for bit, once it
 * has checked that the model still has the shape they were taken from.
 */
#ifndef VESK_EDIT_MODEL_STATE_H
#define VESK_EDIT_MODEL_STATE_H

#include "vesk.h"

#include <cstdint>
#include <vector>

struct SelectionState {
    int select_mode = 0;
    std::vector<uint32_t> objects;          /* walk positions, in selection order */
    std::vector<uint32_t> part_objects;     /* walk positions */
    std::vector<uint64_t> vertices;         /* object position << 32 | vertex position */
};

/* Positions, centres, frames, scales and normals of every object, vertex
 * and surface, with the counts that say whether a model has its shape. */
struct GeometryState {
    std::vector<uint32_t> shape;   /* per object: type, vertices, surfaces, children */
    std::vector<float> numbers;
};

/* The world and its descendants, each before its children. */
std::vector<Object *> model_walk(Object *root);

SelectionState selection_state_capture(void);
/* Makes the selection the one captured; 0 (selection left alone) when a
 * position is beyond the model. */
int selection_state_restore(const SelectionState &state);

GeometryState geometry_state_capture(void);
/* 1 when the model has the counts the state was taken from. */
int geometry_state_fits(const GeometryState &state);
/* Writes the captured numbers back; the caller checked that it fits. */
void geometry_state_apply(const GeometryState &state);

#endif
