/*
 * handles.cpp - 32-bit handles for objects.  Scripts and the GL selection
 * buffer name objects by 32-bit numbers; on a 64-bit machine an address
 * does not fit, so each object is given a handle from a counter the first
 * time one is asked for, and a table maps handles back to live records.
 * A deleted object's handle is forgotten, never reused, so a stale handle
 * is recognised as unknown instead of reaching another object.
 */
#include "vesk.h"
#include "core/internal.h"

#include <unordered_map>

/* Allocated once and never destroyed, so that objects freed during exit
 * can still release their handles. */
static std::unordered_map<uint32_t, Object *> &handle_table = *new std::unordered_map<uint32_t, Object *>;
static uint32_t next_handle = 1;

uint32_t object_handle(Object *object)
{
    if (!object) return 0;
    if (object->handle) return object->handle;
    if (next_handle == 0) next_handle = 1; /* after 2^32 handles, wrap past 0 */
    while (handle_table.count(next_handle)) next_handle++;
    object->handle = next_handle++;
    handle_table[object->handle] = object;
    return object->handle;
}

Object *object_from_handle(uint32_t handle)
{
    auto it = handle_table.find(handle);
    return it == handle_table.end() ? nullptr : it->second;
}

void object_handle_release(Object *object)
{
    if (object->handle) handle_table.erase(object->handle);
    object->handle = 0;
}

unsigned int object_handle_count(void)
{
    return (unsigned int)handle_table.size();
}
