/*
 * view/redraw.h - asking the views to draw again.  A redraw is only a
 * request: the front end draws when its event loop is idle, so many
 * requests in one command cost one redraw.
 */
#ifndef VESK_VIEW_REDRAW_H
#define VESK_VIEW_REDRAW_H

/* Counts changes of what the views show of the model; the drawing code
 * caches its work until it changes.  redraw_all, redraw_orth and
 * redraw_3d advance it (edits call them); request_redisplay does not
 * (camera moves, zoom and exposure call it). */
extern unsigned long model_generation;

void request_redisplay(int view);
int redraw_all(void);
int redraw_orth(void);
int redraw_3d(void);
/* Fits the orthographic views to the selection. */
int fit_selected_all(void);

#endif
