/*
 * edit/undo.cpp - the undo history (see undo.h).
 *
 * Placeholder: records are not kept yet, so nothing can be undone; the
 * "undo" command says so.
 */
#include "edit/undo.h"

UndoRecord *new_undo(int, const char *label)
{
    set_undo_string(label);
    return nullptr;
}

void set_undo_vert(float, float, float) {}
void set_undo_vertref(SVertex *) {}
void set_undo_vertices(List *) {}
void set_undo_vertex_positions(List *) {}
void set_undo_object(Object *) {}
void set_undo_objectlist(List *) {}
void set_undo_selection(List *, List *, int) {}
void set_undo_surface(Surface *) {}
void set_undo_partselected(void) {}
void set_undo_all(void) {}
int set_undo_delete_selection(void) { return 0; }
void set_undo_resize(const float *, const float *, const float *, const float *) {}
void set_undo_rotate(int, const float *, float) {}

int UNDO(void)
{
    console_printf("nothing to UNDO!\n");
    return 0;
}

void clear_all_undos(void) { set_undo_string(""); }
UndoRecord *undo_current(void) { return nullptr; }
