/*
 * app/togl_bind_gl.cpp - binds the four Togl widgets that the scripts
 * create to the core: the Tcl commands the widgets call back on create,
 * reshape and display; the Tk event handlers for mouse, pointer and keys
 * on each widget; and the front-end hooks for redraw requests and window
 * geometry.
 *
 * Togl 2.0 calls back through Tcl commands named in the widget's options,
 * each with the widget path; the view number comes from the path.
 */
#include "app/togl_bind.h"
#include "app/frontend.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "app/tcl_bridge.h"
#include "core/internal.h"
#include "texture/texture_gl.h"
#include "texture/texture_table.h"
#include "view/interaction.h"
#include "view/render_gl.h"
#include "view/view_state.h"

#include <togl.h>
#include <GL/glx.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <cstdlib>
#include <cstring>
#include <ctime>

static const char *const view_paths[NUM_VIEWS] = {".views.xyframe.f.win", ".views.zyframe.f.win",
                                                  ".views.xzframe.f.win", ".views.xyzframe.f.win"};

struct ViewSlot {
    Togl *togl;
    Tk_Window tkwin;
    int x, y, width, height;
    int bound;        /* event handlers installed */
    int gl_ready;     /* the 3D view's GL state initialised */
};

static ViewSlot slots[NUM_VIEWS];
static Tk_Window main_window;
int pointer_window = -1;

static int view_of_path(const char *path)
{
    for (int v = 0; v < NUM_VIEWS; v++) {
        if (strcmp(path, view_paths[v]) == 0) return v;
    }
    return -1;
}

static Togl *togl_of(Tcl_Interp *interp, const char *path)
{
    Togl *togl = nullptr;
    if (Togl_GetToglFromName(interp, path, &togl) != TCL_OK) return nullptr;
    return togl;
}

/* ---- redraw ---- */

static int is_double_buffered(int view)
{
    return view == 3 || prefs.doublebuffer_orth;
}

static void redisplay(Togl *togl, int view)
{
    if (!window_is_visible(view)) return;
    Togl_MakeCurrent(togl);
    int w = Togl_Width(togl), h = Togl_Height(togl);
    if (view == 3) {
        if (!slots[3].gl_ready) {
            init_3d_gl(w, h);
            slots[3].gl_ready = 1;
        }
        redraw_3d_real(w, h, 1);
    } else {
        redraw_orth_real(view, w, h, is_double_buffered(view));
    }
    if (is_double_buffered(view)) Togl_SwapBuffers(togl);
}

static void request_view_redisplay(int view)
{
    if (view < 0 || view >= NUM_VIEWS || !slots[view].togl) return;
    Togl_PostRedisplay(slots[view].togl);
}

static void reshape(Togl *togl, int view)
{
    ViewSlot &s = slots[view];
    s.width = Togl_Width(togl);
    s.height = Togl_Height(togl);
    Tk_Window w = Togl_TkWin(togl);
    if (w) {
        s.x = Tk_X(w);
        s.y = Tk_Y(w);
    }
    Togl_MakeCurrent(togl);
    if (view != 3) glViewport(0, 0, s.width, s.height);
    handle_resize(view, s.width, s.height);
}

/* ---- Tcl callbacks named in the widgets' options ---- */

static int togl_callback(ClientData kind, Tcl_Interp *interp, int argc, const char **argv)
{
    if (argc < 2) return TCL_OK;
    Togl *togl = togl_of(interp, argv[1]);
    int view = view_of_path(argv[1]);
    if (!togl) {
        console_printf("togl is null!\n");
        return TCL_OK;
    }
    if (view < 0) return TCL_OK;
    slots[view].togl = togl;
    switch ((intptr_t)kind) {
    case 1: reshape(togl, view); break;
    case 2: redisplay(togl, view); break;
    default: break;
    }
    return TCL_OK;
}

/* ---- events ---- */

static int core_state(unsigned int x_state)
{
    /* Shift, Control and Alt (Mod1); Lock and NumLock are dropped. */
    int state = 0;
    if (x_state & ShiftMask) state |= QUALIFIER_SHIFT;
    if (x_state & ControlMask) state |= QUALIFIER_CONTROL;
    if (x_state & Mod1Mask) state |= QUALIFIER_ALT;
    return state;
}

static void key_event(ClientData, XEvent *event)
{
    if (event->type != KeyPress) return;
    char chars[10];
    KeySym keysym = 0;
    int n = XLookupString(&event->xkey, chars, 9, &keysym, nullptr);
    int state = core_state(event->xkey.state);
    debugf("key event key %d  qual %d\n", (int)event->xkey.keycode, state);
    if (n > 0) {
        for (int i = 0; i < n; i++) handle_key_press(pointer_window, (unsigned char)chars[i], state);
        return;
    }
    int code = 0;
    switch (keysym) {
    case XK_Left: code = KEY_LEFT; break;
    case XK_Up: code = KEY_UP; break;
    case XK_Right: code = KEY_RIGHT; break;
    case XK_Down: code = KEY_DOWN; break;
    default: return;
    }
    handle_special_key_press(pointer_window, code, state);
}

static void view_event(ClientData data, XEvent *event)
{
    int view = (int)(intptr_t)data;
    switch (event->type) {
    case ButtonPress: {
        int state = core_state(event->xbutton.state);
        if (view == 3) handle_mouse_down_3d(event->xbutton.x, event->xbutton.y, event->xbutton.button, state);
        else handle_mouse_down(view, event->xbutton.x, event->xbutton.y, event->xbutton.button, state);
        break;
    }
    case ButtonRelease:
        if (view == 3) {
            handle_mouse_up_3d(event->xbutton.x, event->xbutton.y, event->xbutton.button,
                               event->xbutton.time, core_state(event->xbutton.state));
        } else {
            handle_mouse_up(view, event->xbutton.x, event->xbutton.y, event->xbutton.button);
        }
        break;
    case MotionNotify:
        if (view == 3) handle_mouse_move_3d(event->xmotion.x, event->xmotion.y, event->xmotion.time);
        else handle_mouse_move(view, event->xmotion.x, event->xmotion.y);
        break;
    case EnterNotify:
        pointer_window = view;
        if (view == 3) handle_enter_3d();
        /* Keys act on the view under the pointer: give it the focus. */
        tcl_command("focus %s", view_paths[view]);
        break;
    case LeaveNotify:
        if (view == 3) handle_leave_3d();
        pointer_window = -1;
        break;
    default:
        break;
    }
}

/* ---- binding ---- */

static int window_geometry(int view, int rect[4])
{
    if (view == 4) {
        if (!main_window) return 0;
        int x = 0, y = 0;
        Tk_GetRootCoords(main_window, &x, &y);
        rect[0] = x;
        rect[1] = y;
        rect[2] = Tk_Width(main_window);
        rect[3] = Tk_Height(main_window);
        return 1;
    }
    if (view < 0 || view >= NUM_VIEWS || !slots[view].togl) return 0;
    rect[0] = slots[view].x;
    rect[1] = slots[view].y;
    rect[2] = slots[view].width;
    rect[3] = slots[view].height;
    return 1;
}

/* ---- timing commands for the benchmarks ---- */

static void pick_in_view(int view, int x, int y, int width, int height, int add, int remove);

struct TimedCall {
    int view, x, y, count;
};

static double now_ms(void)
{
    struct timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return t.tv_sec * 1e3 + t.tv_nsec / 1e6;
}

/* Runs one redraw (pick false) or pick COUNT times and answers the mean
 * milliseconds per call. */
static int time_calls(Tcl_Interp *interp, const TimedCall &c, bool pick)
{
    double start = now_ms();
    int range = prefs.pick_pixel_range > 0 ? prefs.pick_pixel_range : 1;
    for (int i = 0; i < c.count; i++) {
        if (pick) {
            pick_in_view(c.view, c.x, c.y, range, range, 0, 0);
        } else {
            redisplay(slots[c.view].togl, c.view);
            glFinish();
        }
    }
    char text[64];
    snprintf(text, sizeof text, "%.2f", (now_ms() - start) / c.count);
    Tcl_SetResult(interp, text, TCL_VOLATILE);
    return TCL_OK;
}

static int usage(Tcl_Interp *interp, const char *text)
{
    Tcl_SetResult(interp, (char *)text, TCL_STATIC);
    return TCL_ERROR;
}

/* vesk_time_redraw VIEW COUNT: draws a view COUNT times at once, waiting
 * for each frame to finish. */
static int time_redraw_cmd(ClientData, Tcl_Interp *interp, int argc, const char **argv)
{
    TimedCall c = {argc == 3 ? atoi(argv[1]) : -1, 0, 0, argc == 3 ? atoi(argv[2]) : 0};
    if (c.view < 0 || c.view >= NUM_VIEWS || c.count < 1 || !slots[c.view].togl) {
        return usage(interp, "usage: vesk_time_redraw view(0-3) count");
    }
    return time_calls(interp, c, false);
}

/* vesk_time_pick VIEW X Y COUNT: picks COUNT times at window pixel (X, Y). */
static int time_pick_cmd(ClientData, Tcl_Interp *interp, int argc, const char **argv)
{
    if (argc != 5) return usage(interp, "usage: vesk_time_pick view(0-3) x y count");
    TimedCall c = {atoi(argv[1]), atoi(argv[2]), atoi(argv[3]), atoi(argv[4])};
    if (c.view < 0 || c.view >= NUM_VIEWS || c.count < 1 || !slots[c.view].togl) {
        return usage(interp, "usage: vesk_time_pick view(0-3) x y count");
    }
    return time_calls(interp, c, true);
}

/* vesk_gl_visual_ok DOUBLE: whether the display offers an RGBA visual with
 * a depth buffer, double-buffered when DOUBLE is true.  Togl leaves a
 * broken window behind when it finds none, and Xlib then ends the program
 * on the next event, so the scripts ask before they make a view. */
static int gl_visual_ok_cmd(ClientData, Tcl_Interp *interp, int argc, const char **argv)
{
    int double_buffered = 0;
    if (argc != 2 || Tcl_GetBoolean(interp, argv[1], &double_buffered) != TCL_OK) {
        return usage(interp, "usage: vesk_gl_visual_ok double(0/1)");
    }
    Tk_Window main = Tk_MainWindow(interp);
    if (!main) return usage(interp, "vesk_gl_visual_ok: Tk is not running");
    int attributes[] = {GLX_RGBA, GLX_RED_SIZE, 1, GLX_GREEN_SIZE, 1, GLX_BLUE_SIZE, 1, GLX_DEPTH_SIZE, 1,
                        double_buffered ? GLX_DOUBLEBUFFER : (int)None, (int)None};
    XVisualInfo *visual = glXChooseVisual(Tk_Display(main), Tk_ScreenNumber(main), attributes);
    Tcl_SetResult(interp, (char *)(visual ? "1" : "0"), TCL_STATIC);
    if (visual) XFree(visual);
    return TCL_OK;
}

void register_togl_callbacks(Tcl_Interp *interp)
{
    Tcl_CreateCommand(interp, "vesk_gl_visual_ok", gl_visual_ok_cmd, nullptr, nullptr);
    Tcl_CreateCommand(interp, "vesk_time_pick", time_pick_cmd, nullptr, nullptr);
    Tcl_CreateCommand(interp, "vesk_time_redraw", time_redraw_cmd, nullptr, nullptr);
    Tcl_CreateCommand(interp, "vesk_togl_create", togl_callback, (ClientData)0, nullptr);
    Tcl_CreateCommand(interp, "vesk_togl_reshape", togl_callback, (ClientData)1, nullptr);
    Tcl_CreateCommand(interp, "vesk_togl_display", togl_callback, (ClientData)2, nullptr);
}

void bind_key_handler(Tk_Window window)
{
    main_window = window;
    Tk_CreateEventHandler(window, KeyPressMask, key_event, nullptr);
}

int make_tcl_window(Tcl_Interp *interp, int view)
{
    Togl *togl = togl_of(interp, view_paths[view]);
    if (!togl) {
        console_printf("can't get togl id for window %d - it looks like the OpenGL window may have "
                       "failed to open/initialize\n",
                       view);
        return 0;
    }
    ViewSlot &s = slots[view];
    s.togl = togl;
    s.tkwin = Togl_TkWin(togl);
    Togl_SetClientData(togl, (ClientData)(intptr_t)view);
    if (!s.bound) {
        long mask = ButtonPressMask | ButtonReleaseMask | PointerMotionMask | EnterWindowMask |
                    LeaveWindowMask;
        Tk_CreateEventHandler(s.tkwin, mask, view_event, (ClientData)(intptr_t)view);
        Tk_CreateEventHandler(s.tkwin, KeyPressMask, key_event, nullptr);
        s.bound = 1;
    }
    s.width = Togl_Width(togl);
    s.height = Togl_Height(togl);
    handle_resize(view, s.width, s.height);
    return 1;
}

static void pick_in_view(int view, int x, int y, int width, int height, int add, int remove)
{
    if (view < 0 || view >= NUM_VIEWS || !slots[view].togl) return;
    Togl_MakeCurrent(slots[view].togl);
    if (view == 3) select_3d(x, y, width, height, add, remove);
    else select_orth(x, y, width, height, view, add, remove);
}

static int query_in_3d(int x, int y, int width, int height, PickHit *hit)
{
    if (!slots[3].togl) return 0;
    Togl_MakeCurrent(slots[3].togl);
    return query_3d(x, y, width, height, hit);
}

static void set_view_cursor(int view, const char *cursor)
{
    if (view < 0 || view >= NUM_VIEWS) return;
    Tcl_Obj *words[4] = {Tcl_NewStringObj(view_paths[view], -1), Tcl_NewStringObj("configure", -1),
                         Tcl_NewStringObj("-cursor", -1), Tcl_NewStringObj(cursor ? cursor : "", -1)};
    for (Tcl_Obj *w : words) Tcl_IncrRefCount(w);
    if (tcl_interp) Tcl_EvalObjv(tcl_interp, 4, words, TCL_EVAL_GLOBAL);
    for (Tcl_Obj *w : words) Tcl_DecrRefCount(w);
}

/* Makes the 3D view's context current for building textures. */
static int make_3d_current(void)
{
    ViewSlot &s = slots[3];
    if (!s.togl) return 0;
    Togl_MakeCurrent(s.togl);
    if (!s.gl_ready) {
        init_3d_gl(prefs.win3d_width, prefs.win3d_height);
        s.gl_ready = 1;
    }
    return 1;
}

int create_ui(Tcl_Interp *interp)
{
    texture_gl.make_3d_current = make_3d_current;
    texture_gl.build = texture_build_gl;
    frontend.pick = pick_in_view;
    frontend.pick_query = query_in_3d;
    frontend.set_cursor = set_view_cursor;
    frontend.window_geometry = window_geometry;
    frontend.request_redisplay = request_view_redisplay;
    frontend.has_tk = 1;
    for (int v = 0; v < NUM_VIEWS; v++) {
        if (!make_tcl_window(interp, v)) return 0;
    }
    return 1;
}

void init_3d_view_gl(void)
{
    ViewSlot &s = slots[3];
    if (!s.togl || s.gl_ready) return;
    Togl_MakeCurrent(s.togl);
    init_3d_gl(prefs.win3d_width, prefs.win3d_height);
    s.gl_ready = 1;
}
