/*
 * edit/edit_prefault.h - memory faulted in ahead of a big edit.  The
 * surface operations copy the model for their undo and then build
 * several times the records they start from; every fresh page costs the
 * kernel a zeroing, and on a virtual machine much more.  While such an
 * edit runs, the allocator's helper thread faults the next slabs in on
 * the other processor, as it does for loading.
 */
#ifndef VESK_EDIT_EDIT_PREFAULT_H
#define VESK_EDIT_EDIT_PREFAULT_H

#include <cstddef>

/* About the bytes of model records in the world (vertices, surfaces and
 * their references, taking four references to a surface). */
size_t world_record_bytes(void);

/* For the lifetime of the scope: memory for the undo copy of the world
 * and growth times the world's records besides is faulted in ahead. */
struct EditPrefault {
    explicit EditPrefault(double growth);
    ~EditPrefault();
    EditPrefault(const EditPrefault &) = delete;
    EditPrefault &operator=(const EditPrefault &) = delete;
};

#endif
