/*
 * view/interaction_actions.cpp - the edits at the end of mouse gestures
 * and keys (see interaction_actions.h).
 */
#include "view/interaction_actions.h"
#include "app/commands.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "view/redraw.h"

static void not_yet(const char *what)
{
    display_message("%s is not available yet", what);
}

void action_move(const float *) { not_yet("moving"); }
void action_resize(const float *, const float *, const float *, const float *) { not_yet("resizing"); }
void action_rotate(float, int, const float *) { not_yet("rotating"); }
void action_extrude(const float *, const float *, int) { not_yet("extruding"); }
Object *action_primitive(int, int, const float *, const float *)
{
    not_yet("drawing primitives");
    return nullptr;
}
void action_delete(void) { not_yet("deleting"); }
void action_duplicate(void) { not_yet("duplicating"); }
void action_hide(void) { not_yet("hiding"); }
void action_snap_together(void) { not_yet("snapping"); }
void action_undo(void) { UNDO(); }
