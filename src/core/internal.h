/*
 * core/internal.h - core state and helpers shared inside the program but
 * not offered to plug-ins: the debug switch, the allocator's running
 * total, and small helpers of the object model.
 */
#ifndef VESK_CORE_INTERNAL_H
#define VESK_CORE_INTERNAL_H

#include "vesk.h"

#include <cstring>

extern int debug_flag;
extern uint32_t memory_total_allocated;
extern int console_to_stderr;

/* Frees the guarded blocks still waiting in the release quarantine. */
void memory_release_quarantine(void);
/* Bytes of guarded blocks waiting there now. */
size_t memory_quarantined_bytes(void);
/* Around a load that will allocate about expected_bytes: memory is
 * faulted in ahead of the reader on another thread meanwhile. */
void memory_prefault_begin(size_t expected_bytes);
void memory_prefault_end(void);

/* The largest float below 3.4028e38 that bounding-box searches start
 * from (bit pattern 0x7F7FFF8B). */
float bbox_start_value(void);

/* Forgets the handle of an object that is being freed. */
void object_handle_release(Object *object);
/* Drops every handle (used when the whole model is replaced). */
unsigned int object_handle_count(void);

/* Drops the palette entries from count on.  Only for entries that a file
 * being read aside added and that nothing else can refer to. */
void palette_truncate(int count);
/* Unlinks and frees the reference at *link (a link of the surface's
 * reference list), keeping the count; *link then holds the next one. */
void surface_unlink_ref(Surface *surface, List **link);
/* Frees the children of parent for which drop(child) is true, keeping
 * the others in their order and the count right; one pass. */
void object_free_children_where(Object *parent, bool (*drop)(Object *child));

#endif
