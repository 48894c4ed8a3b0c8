/*
 * view/background.cpp - the background images of the orthographic views
 * (see background.h): loading, placing and dropping them.  Drawing is in
 * background_gl.cpp.
 */
#include "view/background.h"
#include "texture/texture_table.h"
#include "view/redraw.h"
#include "view/view_state.h"

BackgroundImage background_images[3];

static int valid_view(int view)
{
    if (view >= 0 && view <= 2) return 1;
    display_message("background images go in the front, side or plan view (0, 1 or 2), not %d", view);
    return 0;
}

/* The screen vector of a window pixel of the view (the third component
 * stays 0). */
static void window_to_screen(int view, float x, float y, float *s)
{
    s[0] = s[1] = s[2] = 0.0f;
    switch (view) {
    case 0: s[0] = x, s[1] = y; break;
    case 1: s[2] = x, s[1] = y; break;
    default: s[0] = x, s[2] = y; break;
    }
}

static void screen_to_window(int view, const float *s, float *x, float *y)
{
    switch (view) {
    case 0: *x = s[0], *y = s[1]; break;
    case 1: *x = s[2], *y = s[1]; break;
    default: *x = s[0], *y = s[2]; break;
    }
}

/* Pins the image so that it fills the view's window, centred, aspect kept. */
static void place_image(int view, BackgroundImage &b)
{
    float width = (float)(views[view].width > 0 ? views[view].width : 2 * views[view].centre[0]);
    float height = (float)(views[view].height > 0 ? views[view].height : 2 * views[view].centre[1]);
    float iw = b.image->width, ih = b.image->height;
    float k = width / iw < height / ih ? width / iw : height / ih;
    float left = (width - iw * k) / 2, top = (height - ih * k) / 2;
    float s[3];
    window_to_screen(view, left, top, s);
    screen2point(s, b.corner_a, view);
    window_to_screen(view, left + iw * k, top + ih * k, s);
    screen2point(s, b.corner_b, view);
}

void set_background_image(int view, vkimage *image)
{
    if (view < 0 || view > 2) {
        free_vkimage(image);
        return;
    }
    BackgroundImage &b = background_images[view];
    if (b.image) free_vkimage(b.image);
    b.image = image;
    b.serial++;
    if (image) place_image(view, b);
    request_redisplay(view);
}

int background_window_rect(int view, float rect[4])
{
    if (view < 0 || view > 2 || !background_images[view].image) return 0;
    const BackgroundImage &b = background_images[view];
    float s[3];
    point2screen(b.corner_a, s, view);
    screen_to_window(view, s, &rect[0], &rect[1]);
    point2screen(b.corner_b, s, view);
    screen_to_window(view, s, &rect[2], &rect[3]);
    return 1;
}

int load_background_image(char *filename, int view)
{
    if (!valid_view(view)) return 0;
    vkimage *image = texture_read(filename);
    if (!image) return 0;
    if (!image->data || image->width == 0 || image->height == 0 || image->depth < 1 || image->depth > 4) {
        display_message("%s gives no picture to show", filename);
        free_vkimage(image);
        return 0;
    }
    set_background_image(view, image);
    display_message("background image %s loaded", filename);
    return 1;
}

int clear_background_image(int view)
{
    if (!valid_view(view)) return 0;
    set_background_image(view, nullptr);
    return 1;
}

int file_select_background_image(int view)
{
    if (!valid_view(view)) return 0;
    const char **filters = texture_filters_new();
    if (!filters) return 0;
    const char *chosen = vk_get_open_filename("Load a background image", filters);
    texture_filters_free(filters);
    if (!chosen || !*chosen) return 0;
    char *name = mystrdup(chosen);
    int ok = name ? load_background_image(name, view) : 0;
    myfree(name);
    return ok;
}
