/*
 * view/background.h - the background images of the orthographic views.
 * An image is pinned in model space: when it is loaded it fills the
 * view's visible area with its aspect kept, and from then on it zooms and
 * pans with the view, so that a shape traced over it stays aligned.
 */
#ifndef VESK_VIEW_BACKGROUND_H
#define VESK_VIEW_BACKGROUND_H

#include "vesk.h"

struct BackgroundImage {
    vkimage *image;   /* owned; null for none */
    float corner_a[3];  /* model point at the image's top-left corner */
    float corner_b[3];  /* model point at its bottom-right corner */
    unsigned serial;    /* changes with every new image, for caches */
};

extern BackgroundImage background_images[3];

/* Gives view (0-2) the image, placed to fill its visible area; the old
 * image is freed.  A null image clears the view's background. */
void set_background_image(int view, vkimage *image);
/* The image's window rectangle in the view as it stands: left, top,
 * right, bottom in pixels (y down); 0 when the view has none. */
int background_window_rect(int view, float rect[4]);

/* Draws the view's image in its current context (background_gl.cpp),
 * in the pixel projection of the view. */
void draw_background_image(int view, int width, int height);

int load_background_image(char *filename, int view);
int clear_background_image(int view);
int file_select_background_image(int view);

#endif
