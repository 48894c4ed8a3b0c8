/*
 * view/redraw.h - asking the views to draw again.  A redraw is only a
 * request: the front end draws when its event loop is idle, so many
 * requests in one command cost one redraw.
 */
#ifndef VESK_VIEW_REDRAW_H
#define VESK_VIEW_REDRAW_H

#include "vesk.h" /* redraw_all, offered to plug-ins */

/* Counts changes of what the views show of the model; the drawing code
 * caches its work until it changes.  redraw_all, redraw_orth and
 * redraw_3d advance it (edits call them); request_redisplay and the
 * redisplay_ functions do not (camera moves, zoom, fit, the 3D cursor and
 * exposure call them). */
extern unsigned long model_generation;

void request_redisplay(int view);
int redraw_orth(void);
int redraw_3d(void);
/* Redraw the orthographic views, or all four, after a change to the views
 * alone (their mapping, the 3D cursor): the model's drawing caches stay
 * valid, so a million-triangle model redraws in milliseconds. */
void redisplay_orth(void);
void redisplay_all(void);
/* Fits the orthographic views to the selection. */
int fit_selected_all(void);

#endif
