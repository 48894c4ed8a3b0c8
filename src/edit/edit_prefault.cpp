/*
 * edit/edit_prefault.cpp - faulting memory in ahead of big edits (see
 * edit_prefault.h).
 */
#include "edit/edit_prefault.h"
#include "edit/model_state.h"
#include "core/internal.h"

#include <cassert>

/* Each record with its list node, as the allocator hands them out
 * (headers included): a vertex and its node, a surface and its node,
 * a reference and its node. */
enum { VERTEX_BYTES = 64, SURFACE_BYTES = 72, REFERENCE_BYTES = 48, REFERENCES_PER_SURFACE = 4 };

size_t world_record_bytes(void)
{
    if (!world) return 0;
    size_t bytes = 0;
    for (Object *o : model_walk(world)) {
        bytes += (size_t)o->num_vert * VERTEX_BYTES;
        bytes += (size_t)o->num_surf * (SURFACE_BYTES + REFERENCES_PER_SURFACE * REFERENCE_BYTES);
    }
    return bytes;
}

EditPrefault::EditPrefault(double growth)
{
    assert(growth >= 0);
    memory_prefault_begin((size_t)((double)world_record_bytes() * (1.0 + growth)));
}

EditPrefault::~EditPrefault()
{
    memory_prefault_end();
}
