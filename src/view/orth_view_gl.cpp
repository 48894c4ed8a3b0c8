/*
 * view/orth_view_gl.cpp - drawing an orthographic view: background, grid
 * and axes, the model in parallel projection, vertex markers, the
 * selection box with its handles and the 3D cursor; and the 2D drawing
 * primitives in window pixels, including the XOR forms for rubber bands.
 */
#define GL_GLEXT_PROTOTYPES 1
#include "view/render_gl.h"
#include "app/prefs.h"
#include "core/internal.h"
#include "edit/selection.h"
#include "view/background.h"
#include "view/overlay.h"
#include "view/picture_cache_gl.h"
#include "view/redraw.h"
#include "view/view_state.h"

#include <GL/glu.h>
#include <GL/glext.h>

#include <cmath>
#include <cstring>
#include <ctime>
#include <vector>

enum { BOX_MARGIN = 13, CURSOR_ARM = 20 };

static int xor_uses_blending = 0;
static int xor_on = 0;

/* ---- 2D primitives (window pixels, origin top-left, y down) ---- */

static void normalise_rect(int *x, int *y, int *w, int *h)
{
    if (*w < 0) {
        *x += *w;
        *w = -*w;
    }
    if (*h < 0) {
        *y += *h;
        *h = -*h;
    }
}

void draw_line(int x1, int y1, int x2, int y2)
{
    glBegin(GL_LINES);
    glVertex2f((float)x1 + 0.5f, (float)y1 + 0.5f);
    glVertex2f((float)x2 + 0.5f, (float)y2 + 0.5f);
    glEnd();
    glFlush();
}

void draw_rect(int x, int y, int w, int h)
{
    normalise_rect(&x, &y, &w, &h);
    glBegin(GL_LINE_LOOP);
    glVertex2f(x + 0.5f, y + 0.5f);
    glVertex2f(x + w + 0.5f, y + 0.5f);
    glVertex2f(x + w + 0.5f, y + h + 0.5f);
    glVertex2f(x + 0.5f, y + h + 0.5f);
    glEnd();
    glFlush();
}

void fill_rect(int x, int y, int w, int h)
{
    normalise_rect(&x, &y, &w, &h);
    glRecti(x, y, x + w, y + h);
    glFlush();
}

static void draw_ellipse(int x, int y, int w, int h)
{
    normalise_rect(&x, &y, &w, &h);
    float cx = x + w * 0.5f, cy = y + h * 0.5f;
    glBegin(GL_LINE_LOOP);
    for (int i = 0; i < 64; i++) {
        double a = i * 2 * 3.14159265358979323846 / 64;
        glVertex2f(cx + (float)(w * 0.5 * std::cos(a)), cy + (float)(h * 0.5 * std::sin(a)));
    }
    glEnd();
    glFlush();
}

void xor_mode(int on)
{
    if (on == xor_on) return;
    xor_on = on;
    if (on) {
        glLineStipple(1, 0x0F0F);
        if (xor_uses_blending) {
            glEnable(GL_BLEND);
            glBlendFunc(GL_ONE_MINUS_DST_COLOR, GL_ZERO);
        } else {
            glEnable(GL_COLOR_LOGIC_OP);
            glLogicOp(GL_XOR);
            glEnable(GL_LINE_STIPPLE);
        }
        glColor3ub(255, 255, 255);
        return;
    }
    if (xor_uses_blending) {
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    } else {
        glDisable(GL_COLOR_LOGIC_OP);
        glDisable(GL_LINE_STIPPLE);
    }
}

void xor_line(int x1, int y1, int x2, int y2)
{
    xor_mode(1);
    draw_line(x1, y1, x2, y2);
    xor_mode(0);
}

void xor_rect(int x, int y, int w, int h)
{
    xor_mode(1);
    draw_rect(x, y, w, h);
    xor_mode(0);
}

void xor_ellipse(int x, int y, int w, int h)
{
    xor_mode(1);
    draw_ellipse(x, y, w, h);
    xor_mode(0);
}

/* ---- projections ---- */

static void pixel_projection(int width, int height)
{
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluOrtho2D(0, width, height, 0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

void orth_model_projection(int view, int width, int height)
{
    const ViewState &v = views[view];
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    apply_pick_matrix();
    glOrtho(-width * 0.5, width * 0.5, -height * 0.5, height * 0.5, -100000.0, 100000.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    if (view == 2) glRotatef(90.0f, 1, 0, 0);
    if (view == 1) glRotatef(90.0f, 0, 1, 0);
    float s = v.scale;
    glScalef(s, s, s);
    glTranslatef(v.pan[0] / s, -v.pan[1] / s, v.pan[2] / s);
}

/* ---- grid, markers, box, cursor ---- */

static void draw_orth_grid(int view, int width, int height)
{
    float spacing = views[view].scale * (float)prefs.drawgrid;
    if (!prefs.show_drawgrid || !(spacing >= 5.0f)) return;
    const float top_left[3] = {0, 0, 0};
    float p[3];
    screen2point(top_left, p, view);
    float g = (float)prefs.drawgrid;
    snap_to_grid_float(p, g, g, g);
    int x0, y0;
    point2xy(p, &x0, &y0, view);
    set_col(7);
    glBegin(GL_LINES);
    for (float off = 0; off < width; off += spacing) {
        glVertex2f(x0 + off + 0.5f, 0);
        glVertex2f(x0 + off + 0.5f, (float)height);
    }
    for (float off = 0; off < height; off += spacing) {
        glVertex2f(0, y0 + off + 0.5f);
        glVertex2f((float)width, y0 + off + 0.5f);
    }
    glEnd();
    const float origin[3] = {0, 0, 0};
    int ox, oy;
    point2xy(origin, &ox, &oy, view);
    set_col(8);
    glBegin(GL_LINES);
    glVertex2f(ox + 0.5f, 0);
    glVertex2f(ox + 0.5f, (float)height);
    glVertex2f(1, oy + 0.5f);
    glVertex2f((float)(width - 1), oy + 0.5f);
    glEnd();
}

static void draw_vert_size(const Vertex *vertex, int view, int size)
{
    size = pixel_size(size);
    int x, y;
    point2xy(vertex->point, &x, &y, view);
    if (size <= 1) {
        glBegin(GL_POINTS);
        glVertex2f(x + 0.5f, y + 0.5f);
        glEnd();
        return;
    }
    int x0 = x - size / 2, y0 = y - size / 2;
    if (prefs.handles_hollow) draw_rect(x0, y0, size, size);
    else glRecti(x0, y0, x0 + size, y0 + size);
}

static void draw_selected_markers(int view)
{
    if (!prefs.show_selected_vertices) return;
    set_col(5);
    for (List *v = selection.selected_vertices; v; v = v->next) {
        draw_vert_size((const Vertex *)v->item, view, prefs.vert_size);
    }
}

static void draw_bounding_box(int view)
{
    int x1, y1, x2, y2;
    point2xy(selection.box_min, &x1, &y1, view);
    point2xy(selection.box_max, &x2, &y2, view);
    int left = (x1 < x2 ? x1 : x2) - BOX_MARGIN, right = (x1 > x2 ? x1 : x2) + BOX_MARGIN;
    int top = (y1 < y2 ? y1 : y2) - BOX_MARGIN, bottom = (y1 > y2 ? y1 : y2) + BOX_MARGIN;
    set_col(6);
    draw_rect(left, top, right - left, bottom - top);
    if (!views[view].handles) return;
    int hs = pixel_size(prefs.handle_size);
    int mx = (left + right) / 2 - hs / 2, my = (top + bottom) / 2 - hs / 2;
    const int squares[8][2] = {{left, top},           {left, bottom - hs}, {right - hs, bottom - hs},
                               {right - hs, top},     {mx, top},           {mx, bottom - hs},
                               {left, my},            {right - hs, my}};
    for (const auto &sq : squares) glRecti(sq[0], sq[1], sq[0] + hs, sq[1] + hs);
}

static void draw_3d_cursor(int view)
{
    int x, y;
    point2xy(cursor_3d, &x, &y, view);
    xor_mode(1);
    glDisable(GL_LINE_STIPPLE);
    glBegin(GL_LINES);
    glVertex2f(x - CURSOR_ARM + 0.5f, y + 0.5f);
    glVertex2f(x + CURSOR_ARM + 0.5f, y + 0.5f);
    glVertex2f(x + 0.5f, y - CURSOR_ARM + 0.5f);
    glVertex2f(x + 0.5f, y + CURSOR_ARM + 0.5f);
    glEnd();
    xor_mode(0);
}

/* The box outline of a drag, turned by the overlay's angle about its
 * centre in the view's plane. */
static void draw_overlay_box(const Overlay &o, int view)
{
    static const int axes[3][2] = {{0, 1}, {2, 1}, {0, 2}};
    int h = axes[view][0], v = axes[view][1];
    float corners[4][3];
    for (int i = 0; i < 4; i++) {
        for (int k = 0; k < 3; k++) corners[i][k] = o.box_min[k];
        corners[i][h] = (i == 1 || i == 2) ? o.box_max[h] : o.box_min[h];
        corners[i][v] = (i >= 2) ? o.box_max[v] : o.box_min[v];
    }
    double a = o.box_angle * 3.14159265358979323846 / 180.0;
    int xs[4], ys[4];
    for (int i = 0; i < 4; i++) {
        float p[3] = {corners[i][0], corners[i][1], corners[i][2]};
        if (a != 0.0) {
            float dh = p[h] - o.box_centre[h], dv = p[v] - o.box_centre[v];
            /* Screen-clockwise for positive angles, as the rotation drag turns. */
            float sign = view == 2 ? -1.0f : 1.0f;
            p[h] = o.box_centre[h] + (float)(dh * std::cos(a) + sign * dv * std::sin(a));
            p[v] = o.box_centre[v] + (float)(-sign * dh * std::sin(a) + dv * std::cos(a));
        }
        point2xy(p, &xs[i], &ys[i], view);
    }
    glBegin(GL_LINE_LOOP);
    for (int i = 0; i < 4; i++) glVertex2f(xs[i] + 0.5f, ys[i] + 0.5f);
    glEnd();
}

static void draw_overlay(int view)
{
    const Overlay &o = overlays[view];
    if (!o.shape && !o.line && !o.box) return;
    xor_mode(1);
    if (o.shape == OVERLAY_RECT) draw_rect(o.x0, o.y0, o.x1 - o.x0, o.y1 - o.y0);
    if (o.shape == OVERLAY_ELLIPSE) draw_ellipse(o.x0, o.y0, o.x1 - o.x0, o.y1 - o.y0);
    if (o.line) draw_line(o.lx0, o.ly0, o.lx1, o.ly1);
    if (o.box) draw_overlay_box(o, view);
    xor_mode(0);
}

/* ---- the picture cache ----
 *
 * The grid and the model of a view change only with the model, the view's
 * mapping or the drawing settings; the overlays on top (markers of the
 * selected vertices, selection box, 3D cursor, rubber bands) change far
 * more often.  So each view keeps the pixels of its grid-and-model layer
 * and puts them back while nothing they depend on has changed. */

static PictureCache picture_caches[3];

static unsigned long picture_key(int view, int width, int height)
{
    unsigned long h = picture_key_start();
    const ViewState &v = views[view];
    h = picture_key_mix(h, &model_generation, sizeof model_generation);
    h = picture_key_mix(h, &v.scale, sizeof v.scale);
    h = picture_key_mix(h, v.pan, sizeof v.pan);
    h = picture_key_mix(h, v.centre, sizeof v.centre);
    const int ints[] = {view, width, height, prefs.show_drawgrid, prefs.col_background, prefs.col_grid,
                        prefs.col_axis, prefs.col_line, prefs.col_selline, prefs.col_vert,
                        prefs.col_selvert, prefs.show_vertices, prefs.vert_size, prefs.handles_hollow,
                        prefs.show_object_centres, prefs.object_centre_size, selection.select_mode};
    h = picture_key_mix(h, ints, sizeof ints);
    h = picture_key_mix(h, &prefs.drawgrid, sizeof prefs.drawgrid);
    if (view <= 2 && background_images[view].image) {
        const BackgroundImage &b = background_images[view];
        const unsigned background[] = {b.serial, (unsigned)prefs.use_textures_for_background_images};
        h = picture_key_mix(h, background, sizeof background);
        h = picture_key_mix(h, b.corner_a, sizeof b.corner_a);
        h = picture_key_mix(h, b.corner_b, sizeof b.corner_b);
    }
    return h;
}

void redraw_orth_real(int view, int width, int height, int double_buffered)
{
    if (width < 1 || height < 1) return;
    const char *version = (const char *)glGetString(GL_VERSION);
    xor_uses_blending = version && strncmp(version, "1.0", 3) == 0;
    glDrawBuffer(double_buffered ? GL_BACK : GL_FRONT);
    glViewport(0, 0, width, height);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glDisable(GL_CULL_FACE);
    unsigned long key = picture_key(view, width, height);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    if (!picture_restore(picture_caches[view], key, width, height)) {
        float bg[3];
        long_rgb_to_floats(prefs.col_background, &bg[0], &bg[1], &bg[2]);
        glClearColor(bg[0], bg[1], bg[2], 0.0f);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        draw_background_image(view, width, height);
        pixel_projection(width, height);
        draw_orth_grid(view, width, height);
        orth_model_projection(view, width, height);
        render_state.orth_drawing = 1;
        clock_t start = debug_flag ? clock() : 0;
        draw_model(view);
        if (debug_flag) console_printf("ORTH %d TIME %d\n", view, (int)((clock() - start) * 1000 / CLOCKS_PER_SEC));
        render_state.orth_drawing = 0;
        picture_store(picture_caches[view], key, width, height, double_buffered);
    }
    pixel_projection(width, height);
    draw_selected_markers(view);
    if (!nothing_is_selected()) draw_bounding_box(view);
    draw_3d_cursor(view);
    draw_overlay(view);
    glFlush();
}
