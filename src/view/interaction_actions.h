/*
 * view/interaction_actions.h - the edits that mouse gestures and keys in
 * the orthographic views end in: moving, resizing, rotating and extruding
 * the selection, making a primitive from a drag, deleting, duplicating,
 * hiding, snapping and undoing.  Each records its own undo.
 */
#ifndef VESK_VIEW_INTERACTION_ACTIONS_H
#define VESK_VIEW_INTERACTION_ACTIONS_H

#include "vesk.h"

void action_move(const float *d);
void action_resize(const float *from_max, const float *from_min, const float *to_max, const float *to_min);
void action_rotate(float degrees, int view, const float *centre);
void action_extrude(const float *down, const float *d, int view);
/* Makes the primitive of draw mode 4-13 from a drag (or a click when the
 * two points are equal) in a view; returns the new object or null. */
Object *action_primitive(int mode, int view, const float *down, const float *up);
void action_delete(void);
void action_duplicate(int view);
void action_hide(void);
void action_snap_together(void);
void action_undo(void);

#endif
