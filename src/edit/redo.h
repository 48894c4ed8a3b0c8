/*
 * edit/redo.h - the redo list: what each undo took back, kept so that it
 * can be done again exactly, until a new edit clears the list.  UNDO asks
 * for an entry before it reverts a record (redo_capture) and files it
 * afterwards (redo_push); REDO puts the model back as it was before that
 * undo and starts an undo record again, so undo and redo alternate
 * freely.
 */
#ifndef VESK_EDIT_REDO_H
#define VESK_EDIT_REDO_H

#include "edit/undo.h"

struct RedoEntry;

extern int redo_count;

/* What the record's undo is about to take back, or null for a kind that
 * undo does not revert. */
RedoEntry *redo_capture(const UndoRecord *record);
/* Called by a snapshot's undo with the model it takes out: the entry
 * being captured keeps it for a redo (and 1 is returned) instead of the
 * undo deleting it. */
int redo_take_replaced_world(Object *replaced);
/* Files the entry of an undo that has happened (null is ignored). */
void redo_push(RedoEntry *entry);
void redo_discard(RedoEntry *entry);

/* A new edit started (new_undo) or the history was emptied
 * (clear_all_undos): the list goes, except while undo or redo themselves
 * start or empty records. */
void redo_new_edit(void);
/* Undo and redo hold the list while they work; returns the previous hold
 * for redo_release. */
int redo_hold(void);
void redo_release(int previous);

/* Command "redo": does again what the last undo took back. */
int REDO(void);
/* Empties the list (and the label and count the interface shows). */
void clear_redo(void);
/* The label of what REDO would do again, or null. */
const char *redo_label(void);
/* Sends the label to the interface as "set_redo_string" (tcl bridge). */
void set_redo_string(const char *text);

#endif
