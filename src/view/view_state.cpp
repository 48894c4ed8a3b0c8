/*
 * view/view_state.cpp - the orthographic mapping, zoom, pan, go-to and fit
 * (see view_state.h).
 */
#include "view/camera_fit.h"
#include "view/view_state.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "core/internal.h"
#include "edit/selection.h"
#include "view/redraw.h"

#include <cmath>
#include <cstdint>

ViewState views[NUM_VIEWS];
float cursor_3d[3] = {0, 0, 0};
const float reset_scale = 100.0f;

/* The two model axes a view shows, horizontal first. */
static const int view_axes[3][2] = {{0, 1}, {2, 1}, {0, 2}};

static bool is_orth(int view) { return view >= 0 && view <= 2; }

/* The selection box shows its handles in a view where it has extent. */
static void update_box_handles(void)
{
    for (int v = 0; v < 3; v++) views[v].handles = selection.view_has_extent[v];
}

void init_views(void)
{
    selection_box_changed = update_box_handles;
    for (int v = 0; v < NUM_VIEWS; v++) {
        views[v].scale = reset_scale;
        views[v].centre[0] = 600 * 0.5f;
        views[v].centre[1] = 400 * 0.5f;
        views[v].centre[2] = 400 * 0.5f;
        views[v].pan[0] = views[v].pan[1] = views[v].pan[2] = 0.0f;
        views[v].width = 600;
        views[v].height = 400;
        views[v].handles = 0;
    }
}

void point2screen(const float *p, float *s, int view)
{
    const ViewState &v = views[view];
    s[0] = v.scale * p[0] + v.centre[0] + v.pan[0];
    s[1] = v.centre[1] - v.scale * p[1] + v.pan[1];
    s[2] = v.scale * p[2] + v.centre[2] + v.pan[2];
}

void screen2point(const float *s, float *p, int view)
{
    const ViewState &v = views[view];
    p[0] = (s[0] - v.centre[0] - v.pan[0]) / v.scale;
    p[1] = -(s[1] - v.centre[1] - v.pan[1]) / v.scale;
    p[2] = (s[2] - v.centre[2] - v.pan[2]) / v.scale;
}

/* Window positions are kept within +-1e9 pixels, far outside any window,
 * so that huge zoom factors overflow neither a position nor the distance
 * between two of them. */
enum { FAR_PIXELS = 1000000000 };

/* trunc(value + 0.5) as an int, saturating at FAR_PIXELS. */
static int round_half_trunc(float value)
{
    double d = (double)value + 0.5;
    if (!(d == d)) return 0;
    if (d > FAR_PIXELS) return FAR_PIXELS;
    if (d < -FAR_PIXELS) return -FAR_PIXELS;
    return (int)d;
}

void point2xy(const float *p, int *x, int *y, int view)
{
    float s[3];
    point2screen(p, s, view);
    *x = round_half_trunc(s[view_axes[view][0]]);
    *y = round_half_trunc(s[view_axes[view][1]]);
}

/* Truncation to a 16-bit signed value, saturating outside its range. */
static int16_t trunc16(float value)
{
    if (!(value == value)) return 0;
    if (value >= 32767.0f) return 32767;
    if (value <= -32768.0f) return -32768;
    return (int16_t)(int)value;
}

void point3towin(Vertex *vertex, int view)
{
    float s[3];
    point2screen(vertex->point, s, view);
    /* Truncated to 16 bits, then rounded once more: a negative position
     * ends one pixel nearer zero. */
    vertex->win_x = (int16_t)round_half_trunc(trunc16(s[view_axes[view][0]]));
    vertex->win_y = (int16_t)round_half_trunc(trunc16(s[view_axes[view][1]]));
}

static int trunc_int(float value)
{
    if (!(value == value)) return 0;
    if (value > (float)FAR_PIXELS) return FAR_PIXELS;
    if (value < -(float)FAR_PIXELS) return -FAR_PIXELS;
    return (int)value;
}

int pixel_size(int size)
{
    return size < -4096 ? -4096 : (size > 4096 ? 4096 : size);
}

void size_to_pixels(const float *size, int *w, int *h, int view)
{
    float s = views[view].scale;
    *w = round_half_trunc((float)trunc_int(s * size[view_axes[view][0]]));
    *h = round_half_trunc((float)trunc_int(s * size[view_axes[view][1]]));
}

void mouse_to_point(int mx, int my, int view, float *p)
{
    const float origin[3] = {0, 0, 0};
    float s[3];
    point2screen(origin, s, view);
    s[view_axes[view][0]] = (float)mx;
    s[view_axes[view][1]] = (float)my;
    screen2point(s, p, view);
    /* The axis the view cannot show comes from the 3D cursor. */
    static const int depth_axis[3] = {2, 0, 1};
    p[depth_axis[view]] += cursor_3d[depth_axis[view]];
}

static float snap_one(float c, float g)
{
    if (!(g > 0.0f)) return c;
    float sign = c > 0 ? 1.0f : (c < 0 ? -1.0f : 0.0f);
    double n = std::trunc(((double)c + sign * g / 2) / g);
    return (float)(n * g);
}

void snap_to_grid_float(float *p, float gx, float gy, float gz)
{
    p[0] = snap_one(p[0], gx);
    p[1] = snap_one(p[1], gy);
    p[2] = snap_one(p[2], gz);
}

void snap_to_grid(float *p)
{
    if (!prefs.gridlock) return;
    float g = (float)prefs.grid;
    snap_to_grid_float(p, g, g, g);
}

/* ---- view control ---- */

void handle_resize(int view, int width, int height)
{
    if (view < 0 || view >= NUM_VIEWS) return;
    ViewState &v = views[view];
    float hw = (float)width * 0.5f, hh = (float)height * 0.5f;
    switch (view) {
    case 0: v.centre[0] = hw; v.centre[1] = hh; break;
    case 1: v.centre[2] = hw; v.centre[1] = hh; break;
    case 2: v.centre[0] = hw; v.centre[2] = hh; break;
    default: v.centre[0] = hw; v.centre[1] = hh; break;
    }
    v.width = width;
    v.height = height;
    if (view == 3) fit_3d_view_resized();
    request_redisplay(view);
}

static void scale_view_by(int view, float f)
{
    if (!is_orth(view) || !(f > 0.0f)) return;
    ViewState &v = views[view];
    v.scale *= f;
    v.pan[view_axes[view][0]] *= f;
    v.pan[view_axes[view][1]] *= f;
    request_redisplay(view);
}

void scale_win(int view, float f) { scale_view_by(view, f); }
void scale_win2(int view, float f) { scale_view_by(view, 1.0f / f); }

int zoom_in(void)
{
    scale_win(0, 1.5f);
    scale_win(2, 1.5f);
    scale_win(1, 1.5f);
    return 1;
}

int zoom_out(void)
{
    scale_win2(0, 1.5f);
    scale_win2(2, 1.5f);
    scale_win2(1, 1.5f);
    return 1;
}

void zoom_in_win(int view)
{
    if (!prefs.independent_window_zoom || view < 0) zoom_in();
    else scale_win(view, 1.5f);
}

void zoom_out_win(int view)
{
    if (!prefs.independent_window_zoom || view < 0) zoom_out();
    else scale_win2(view, 1.5f);
}

void move_view(int view, float dx, float dy)
{
    if (!is_orth(view)) return;
    views[view].pan[view_axes[view][0]] += dx;
    views[view].pan[view_axes[view][1]] += dy;
    request_redisplay(view);
}

void home_windows(void)
{
    for (int v = 0; v < 3; v++) views[v].pan[0] = views[v].pan[1] = views[v].pan[2] = 0.0f;
}

void windows_reset_scale(void)
{
    for (int v = 0; v < NUM_VIEWS; v++) views[v].scale = reset_scale;
    redisplay_all();
}

int reset_views(void)
{
    windows_reset_scale();
    home_windows();
    redisplay_all();
    return 1;
}

static void goto_point_in(int view, const float *p)
{
    float s = views[view].scale;
    views[view].pan[0] = -s * p[0];
    views[view].pan[1] = s * p[1];
    views[view].pan[2] = -s * p[2];
}

void goto_point(const float *p)
{
    for (int v = 0; v < 3; v++) goto_point_in(v, p);
    redisplay_orth();
}

static void selection_centre(float *c)
{
    for (int i = 0; i < 3; i++) {
        c[i] = selection.box_min[i] + (selection.box_max[i] - selection.box_min[i]) * 0.5f;
    }
}

void goto_selected(int view)
{
    if (!is_orth(view) || nothing_is_selected()) return;
    float c[3];
    selection_centre(c);
    goto_point_in(view, c);
    request_redisplay(view);
}

int goto_selected_all(void)
{
    if (nothing_is_selected()) return 0;
    float c[3];
    selection_centre(c);
    goto_point(c);
    return 1;
}

float view_fit_ratio(const float *extent, int view)
{
    const ViewState &v = views[view];
    float ew = extent[view_axes[view][0]] * v.scale;
    float eh = extent[view_axes[view][1]] * v.scale;
    float rw = ew != 0.0f ? (float)v.width / ew : 0.0f;
    float rh = eh != 0.0f ? (float)v.height / eh : 0.0f;
    if (rw == 0.0f && rh == 0.0f) return -1.0f;
    if (rw == 0.0f) return rh;
    if (rh == 0.0f) return rw;
    return rw < rh ? rw : rh;
}

/* The smallest valid ratio of views 0, 2, 1, or -1. */
static float smallest_ratio(const float *extent)
{
    float best = -1.0f;
    const int order[3] = {0, 2, 1};
    for (int v : order) {
        float r = view_fit_ratio(extent, v);
        if (r != -1.0f && (best == -1.0f || r < best)) best = r;
    }
    return best;
}

static void apply_fit_ratio(float ratio)
{
    if (ratio == -1.0f || !std::isfinite(ratio)) return;
    for (int v = 0; v < 3; v++) views[v].scale = ratio * views[v].scale * (float)prefs.fit_view_factor;
}

int fit_selected_all(void)
{
    if (nothing_is_selected()) return 0;
    float size[3];
    for (int i = 0; i < 3; i++) size[i] = std::fabs(selection.box_max[i] - selection.box_min[i]);
    apply_fit_ratio(smallest_ratio(size));
    goto_selected_all();
    redisplay_all();
    return 1;
}

void fit_selected(int view)
{
    if (!is_orth(view) || nothing_is_selected()) return;
    float size[3];
    for (int i = 0; i < 3; i++) size[i] = std::fabs(selection.box_max[i] - selection.box_min[i]);
    float r = view_fit_ratio(size, view);
    if (prefs.independent_window_zoom) {
        if (r != -1.0f && std::isfinite(r)) views[view].scale *= r * (float)prefs.fit_view_factor;
        goto_selected(view);
        request_redisplay(view);
        return;
    }
    apply_fit_ratio(r);
    goto_selected(view);
    redisplay_orth();
}

/* Bounds of every vertex below object, counting them. */
static void model_bounds(Object *o, float *min, float *max, long *count)
{
    for (List *v = o->vertices; v; v = v->next, (*count)++) {
        const float *p = ((Vertex *)v->item)->point;
        for (int i = 0; i < 3; i++) {
            if (p[i] < min[i]) min[i] = p[i];
            if (p[i] > max[i]) max[i] = p[i];
        }
    }
    for (List *k = o->kids; k; k = k->next) model_bounds((Object *)k->item, min, max, count);
}

int fit_all(void)
{
    if (!world) return 0;
    float big = bbox_start_value();
    float min[3] = {big, big, big}, max[3] = {-big, -big, -big};
    long count = 0;
    model_bounds(world, min, max, &count);
    if (count < 2) return 0;
    float size[3], centre[3];
    for (int i = 0; i < 3; i++) {
        size[i] = max[i] - min[i];
        centre[i] = min[i] + size[i] * 0.5f;
    }
    float r0 = view_fit_ratio(size, 0), r2 = view_fit_ratio(size, 2), r1 = view_fit_ratio(size, 1);
    debugf("fit_all scalefront %f top %f side %f\n", r0, r2, r1);
    const char *vs = viewsetting ? viewsetting : "all";
    float r;
    if (!strcmp(vs, "xy")) r = r0;
    else if (!strcmp(vs, "zy")) r = r1;
    else if (!strcmp(vs, "xz")) r = r2;
    else r = smallest_ratio(size);
    apply_fit_ratio(r);
    goto_point(centre);
    redisplay_all();
    return 1;
}
