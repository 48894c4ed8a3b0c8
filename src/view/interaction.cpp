/*
 * view/interaction.cpp - routing of mouse and key events to the views and
 * the draw mode and drag submode.  The orthographic views show the mouse
 * position on the status line; the 3D view's events go to the camera.
 */
#include "view/interaction.h"
#include "app/tcl_bridge.h"
#include "view/view_state.h"
#include "vesk.h"

int interaction_mode = 0;
int move_submode = 100;

static const char *draw_mode_name(int mode)
{
    static const char *const names[] = {"select", "line", "closed line", "polygon", "rectangle",
                                        "ellipse", "disk", "box", "sphere", "cylinder",
                                        "mesh", "grid", "icosahedron", "light"};
    if (mode >= 0 && mode <= 13) return names[mode];
    return "select";
}

static const char *drag_mode_name(int submode)
{
    static const char *const names[] = {"move", "resize", "rotate", "extrude"};
    if (submode >= 100 && submode <= 103) return names[submode - 100];
    return "move";
}

int set_new_draw_mode(int mode)
{
    if (mode < 0 || mode > 13) {
        display_message("unknown draw mode %d", mode);
        return 0;
    }
    interaction_mode = mode;
    tcl_set_string("draw_mode_name", draw_mode_name(mode));
    return 1;
}

int set_new_move_mode(int submode)
{
    if (submode < 100 || submode > 103) {
        display_message("unknown drag mode %d", submode);
        return 0;
    }
    move_submode = submode;
    tcl_set_string("drag_mode_name", drag_mode_name(submode));
    return 1;
}

void handle_mouse_down(int view, int x, int y, int, int)
{
    if (view < 0 || view > 2) return;
    float p[3];
    mouse_to_point(x, y, view, p);
    show_coors(p);
}

void handle_mouse_move(int view, int x, int y)
{
    if (view < 0 || view > 2) return;
    float p[3];
    mouse_to_point(x, y, view, p);
    snap_to_grid(p);
    show_coors(p);
}

void handle_mouse_up(int view, int x, int y, int)
{
    handle_mouse_move(view, x, y);
}

void handle_key_press(int view, int character, int state)
{
    if (view == 3) handle_key_press_3d(character, state);
}

void handle_special_key_press(int view, int keycode, int state)
{
    if (view == 3) handle_special_key_press_3d(keycode, state);
}
