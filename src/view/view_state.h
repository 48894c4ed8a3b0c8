/*
 * view/view_state.h - the orthographic views' mapping between model
 * coordinates and window pixels: per-view scale, centre and pan, the 3D
 * cursor, zoom, pan, go-to and fit.  Display-free, so that the headless
 * shell and the tests can use it; drawing lives in orth_view_gl.cpp.
 *
 * Views: 0 front (x right, y up), 1 side (z right, y up), 2 plan (x right,
 * z down), 3 the 3D view (only its scale and centre are used here).
 */
#ifndef VESK_VIEW_VIEW_STATE_H
#define VESK_VIEW_VIEW_STATE_H

#include "vesk.h"

enum { NUM_VIEWS = 4 };

struct ViewState {
    float scale;          /* pixels per model unit */
    float centre[3];      /* window half-size, stored by model axis */
    float pan[3];         /* pixels, by model axis (views 0..2) */
    int width, height;    /* window size in pixels */
    int handles;          /* the selection box shows its handles */
};

extern ViewState views[NUM_VIEWS];
extern float cursor_3d[3];
extern const float reset_scale;

void init_views(void);
void point2screen(const float *p, float *s, int view);
void screen2point(const float *s, float *p, int view);
/* The window pixel of a model point, kept within +-1e9 pixels. */
void point2xy(const float *p, int *x, int *y, int view);
/* A marker or handle size from the preferences, kept within +-4096 pixels
 * so that no arithmetic on it overflows. */
int pixel_size(int size);
void point3towin(Vertex *vertex, int view);
void size_to_pixels(const float *size, int *w, int *h, int view);
void mouse_to_point(int mx, int my, int view, float *p);
void snap_to_grid_float(float *p, float gx, float gy, float gz);
void snap_to_grid(float *p);

void handle_resize(int view, int width, int height);
void scale_win(int view, float f);
void scale_win2(int view, float f);
int zoom_in(void);
int zoom_out(void);
void zoom_in_win(int view);
void zoom_out_win(int view);
void move_view(int view, float dx, float dy);
void home_windows(void);
void windows_reset_scale(void);
int reset_views(void);
void goto_point(const float *p);
void goto_selected(int view);
int goto_selected_all(void);
int fit_selected_all(void);
void fit_selected(int view);
int fit_all(void);
/* Fit ratio of an extent in one view: -1 when it cannot fit. */
float view_fit_ratio(const float *extent, int view);

#endif
