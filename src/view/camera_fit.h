/*
 * view/camera_fit.h - framing the 3D view around the selection or the
 * whole model.
 */
#ifndef VESK_VIEW_CAMERA_FIT_H
#define VESK_VIEW_CAMERA_FIT_H

/* Command "fit_3d": the selection, or the whole model when nothing is
 * selected, fills the 3D view; 0 with a status message when there is
 * nothing to frame. */
int fit_3d_view(void);
/* The 3D view changed size: a fitted viewer the user has not moved since
 * frames the same part of the model again. */
void fit_3d_view_resized(void);
/* Command "pick_3d x y how": picks what lies under a window point of the
 * 3D view, as Control+click does; how 0 selects it, 1 adds it to the
 * selection, 2 removes it (view_commands.cpp). */
int command_pick_3d(float x, float y, float how);
/* Command "pick_3d_query x y": what lies under a window point of the 3D
 * view, as "object ID name NAME surface I vertex J selected 0|1" (I and J
 * count in the object's lists, -1 for none), or "" over nothing.  The
 * selection is left alone. */
int command_pick_3d_query(float x, float y);

#endif
