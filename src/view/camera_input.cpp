/*
 * view/camera_input.cpp - keys and mouse of the 3D view: arrow keys turn
 * the model (spin mode) or move the eye (walk mode), character keys switch
 * modes and toggles, drags spin, zoom or walk, Control+release picks, and
 * a thrown spin keeps turning on a timer while allow_3d_spin is on.
 */
#include "view/interaction.h"
#include "app/frontend.h"
#include "app/linked_vars.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "app/tcl_bridge.h"
#include "view/camera_fit.h"
#include "view/camera.h"
#include "view/redraw.h"
#include "vesk.h"

#include <tcl.h>

#include <cmath>

static const double SPIN_DECAY = 0.96;
static const int SPIN_TICK_MS = 16;

static struct {
    int left_drag, right_drag, control_press;
    int last_x, last_y;
    int last_dx, last_dy;
    unsigned long last_motion_time;
    int saved_mode, saved_textures, saved;
    int moved;                /* the pointer moved since the press */
    Tcl_TimerToken spin_timer;
} drag;

/* Arrow keys; also called with typed characters' codes, so the characters
 * with codes 37 to 40 act as arrows. */
int handle_special_key_press_3d(int key, int state)
{
    Person *p = get_person();
    int shift = state & QUALIFIER_SHIFT, alt = state & QUALIFIER_ALT, control = state & QUALIFIER_CONTROL;
    float move = p->key_move_step * (shift ? 5.0f : 1.0f);
    float turn = p->key_turn_step * (shift ? 3.0f : 1.0f);
    float degs = (float)prefs.key_rotate_degs_3d;
    switch (key) {
    case KEY_LEFT:
    case KEY_RIGHT: {
        int left = key == KEY_LEFT;
        if (!p->walk) p->rotation[1] += left ? -degs : degs;
        else if (alt) left ? person_move_left(move) : person_move_right(move);
        else left ? person_turn_left(turn) : person_turn_right(turn);
        break;
    }
    case KEY_UP:
    case KEY_DOWN: {
        int up = key == KEY_UP;
        if (p->walk) {
            if (alt) up ? person_move_up(move) : person_move_down(move);
            else if (control) up ? person_turn_up(turn) : person_turn_down(turn);
            else up ? person_move_forward(move) : person_move_back(move);
        } else if (control) {
            p->scale *= up ? 1.1f : (float)0.9090909090909091;
        } else {
            p->rotation[0] += up ? -degs : degs;
        }
        break;
    }
    default:
        return 0;
    }
    request_redisplay(3);
    return 1;
}

static void toggle(int *flag, void *linked)
{
    *flag = !*flag;
    if (linked) ui_update_linked_var(linked);
}

int handle_key_press_3d(int character, int state)
{
    if (handle_special_key_press_3d(character, state)) return 1;
    switch (character) {
    case ' ': person_reset(); break;
    case '1': person_set_spin(); break;
    case '2': person_set_walk(); break;
    case 'a': toggle(&prefs.show_3d_axis, &prefs.show_3d_axis); break;
    case 'g': toggle(&prefs.grid3d_show, &prefs.grid3d_show); break;
    case 'l': toggle(&prefs.headlighton, nullptr); break;
    case 't': toggle(&view_3d_textures, &view_3d_textures); break;
    case 'f': prefs.view_3d_mode = 0; ui_update_linked_var(&prefs.view_3d_mode); break;
    case 'w': prefs.view_3d_mode = 1; ui_update_linked_var(&prefs.view_3d_mode); break;
    case 'v': prefs.view_3d_mode = 2; ui_update_linked_var(&prefs.view_3d_mode); break;
    /* Added: "home" frames the model. */
    case 'h': fit_3d_view(); break;
    default: return 0;
    }
    request_redisplay(3);
    return 1;
}

/* ---- the thrown spin ---- */

static void spin_tick(ClientData)
{
    drag.spin_timer = nullptr;
    Person *p = get_person();
    if (!prefs.allow_3d_spin || p->walk || drag.left_drag) return;
    float *v = p->spin_velocity;
    if (std::fabs(v[0]) < 0.05f && std::fabs(v[1]) < 0.05f) {
        v[0] = v[1] = 0.0f;
        return;
    }
    p->rotation[0] += v[0];
    p->rotation[1] += v[1];
    v[0] *= (float)SPIN_DECAY;
    v[1] *= (float)SPIN_DECAY;
    request_redisplay(3);
    drag.spin_timer = Tcl_CreateTimerHandler(SPIN_TICK_MS, spin_tick, nullptr);
}

static void start_spin(void)
{
    if (!prefs.allow_3d_spin || drag.spin_timer) return;
    drag.spin_timer = Tcl_CreateTimerHandler(SPIN_TICK_MS, spin_tick, nullptr);
}

/* ---- mouse ---- */

void handle_mouse_down_3d(int x, int y, int button, int state)
{
    drag.control_press = (state & QUALIFIER_CONTROL) != 0;
    drag.last_x = x;
    drag.last_y = y;
    drag.last_dx = drag.last_dy = 0;
    drag.moved = 0;
    if (drag.control_press) return;
    Person *p = get_person();
    if (button == 1) {
        drag.left_drag = 1;
        p->spin_velocity[0] = p->spin_velocity[1] = p->spin_velocity[2] = 0.0f;
    } else {
        drag.right_drag = 1;
    }
    if (prefs.wireframe_move && !drag.saved) {
        drag.saved = 1;
        drag.saved_mode = prefs.view_3d_mode;
        drag.saved_textures = view_3d_textures;
        prefs.view_3d_mode = 1;
        view_3d_textures = 0;
        request_redisplay(3);
    }
}

void handle_mouse_move_3d(int x, int y, unsigned long time)
{
    if (drag.control_press || (!drag.left_drag && !drag.right_drag)) return;
    Person *p = get_person();
    int dx = x - drag.last_x, dy = y - drag.last_y;
    if (p->walk && drag.left_drag) {
        person_move_forward((float)(-dy) * (float)prefs.walk_move_speed);
        person_turn_left((float)(-dx) * (float)prefs.walk_turn_speed);
    } else if (p->walk) {
        person_move_up((float)(-dy) * (float)prefs.walk_move_speed);
        person_move_left((float)(-dx) * (float)prefs.walk_move_speed);
    } else if (drag.left_drag) {
        p->rotation[0] += (float)dy;
        p->rotation[1] += (float)dx;
    } else if (dy <= -1) {
        p->scale *= (float)prefs.zoom_factor_3d;
    } else if (dy >= 1) {
        p->scale /= (float)prefs.zoom_factor_3d;
    }
    drag.last_x = x;
    drag.last_y = y;
    drag.last_dx = dx;
    drag.last_dy = dy;
    drag.last_motion_time = time;
    if (dx || dy) drag.moved = 1;
    if (dx || dy) request_redisplay(3);
}

void handle_mouse_up_3d(int x, int y, int button, unsigned long time, int state)
{
    if (drag.control_press) {
        /* Control+click picks the nearest object (or surface in vertex
         * mode); Shift with button 1 adds, with another button removes. */
        drag.control_press = 0;
        int shift = state & QUALIFIER_SHIFT;
        int range = prefs.pick_pixel_range > 0 ? prefs.pick_pixel_range : 1;
        frontend_pick(3, x, y, range, range, shift && button == 1, shift && button != 1);
        return;
    }
    if (drag.saved) {
        prefs.view_3d_mode = drag.saved_mode;
        view_3d_textures = drag.saved_textures;
        drag.saved = 0;
    }
    Person *p = get_person();
    if (button == 1) {
        debugf("last pos %d %d, release pos %d %d\n", drag.last_x, drag.last_y, x, y);
        if (time == drag.last_motion_time && (drag.last_dx || drag.last_dy)) {
            p->spin_velocity[0] = (float)drag.last_dy;
            p->spin_velocity[1] = (float)drag.last_dx;
            if (!p->walk) start_spin();
        } else {
            p->spin_velocity[0] = p->spin_velocity[1] = 0.0f;
        }
    }
    int clicked_third = button == 3 && drag.right_drag && !drag.moved;
    drag.left_drag = drag.right_drag = 0;
    request_redisplay(3);
    /* A third-button click that did not zoom opens the 3D view's menu. */
    if (clicked_third) popup_3d_menu(x, y);
}

void handle_enter_3d(void) {}
void handle_leave_3d(void) {}
