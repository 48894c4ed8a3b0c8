/*
 * view/interaction_actions.cpp - the edits at the end of mouse gestures
 * and keys (see interaction_actions.h): each records its undo, edits, and
 * reports on the status line.
 */
#include "view/interaction_actions.h"
#include "view/draw_modes.h"
#include "app/commands.h"
#include "app/shared_state.h"
#include "core/lights.h"
#include "edit/extrude.h"
#include "edit/object_ops.h"
#include "edit/primitives.h"
#include "edit/selection.h"
#include "edit/transform.h"
#include "edit/undo.h"
#include "view/interaction.h"
#include "view/redraw.h"

#include <cmath>
#include <cstdio>

void action_move(const float *d)
{
    if (nothing_is_selected()) return;
    display_message("moving...");
    new_undo(UNDO_MOVE, "move");
    set_undo_vert(d[0], d[1], d[2]);
    translate_all_selected(d);
    find_bounding_box();
    selected_calc_normals();
    unsaved_changes = 1;
    display_message("move done");
}

void action_resize(const float *from_max, const float *from_min, const float *to_max, const float *to_min)
{
    if (nothing_is_selected()) return;
    display_message("resizing...");
    new_undo(UNDO_RESIZE, "resize");
    set_undo_resize(from_max, from_min, to_max, to_min);
    resize_selected_to_bounding_box(from_max, from_min, to_max, to_min);
    find_bounding_box();
    selected_calc_normals();
    unsaved_changes = 1;
    display_message("resize done");
}

void action_rotate(float degrees, int view, const float *centre)
{
    if (nothing_is_selected() || degrees == 0.0f) return;
    display_message("rotating...");
    new_undo(UNDO_ROTATE, "rotate");
    rotate_selected(degrees, view, centre);
    set_undo_rotate(view, centre, degrees);
    find_bounding_box();
    selected_calc_normals();
    unsaved_changes = 1;
    display_message("rotating done");
}

void action_extrude(const float *down, const float *d, int view)
{
    (void)view;
    if (nothing_is_selected()) return;
    new_undo(UNDO_SNAPSHOT, "extrude");
    set_undo_all();
    float end[3] = {down[0] + d[0], down[1] + d[1], down[2] + d[2]};
    extrude_selected(down, end);
    find_bounding_box();
    unsaved_changes = 1;
}

static void move_to(Object *o, const float *p)
{
    translate_object(o, p);
}

static void midpoint(const float *a, const float *b, float *m)
{
    for (int i = 0; i < 3; i++) m[i] = (a[i] + b[i]) * 0.5f;
}

static int same_point(const float *a, const float *b)
{
    return a[0] == b[0] && a[1] == b[1] && a[2] == b[2];
}

/* Says where set_av_depth_box takes the depth from, for the status line. */
static void describe_depth(int view, const float *down, const float *up, char *out, size_t size)
{
    static const int depth_axis[3] = {2, 0, 1};
    static const char axis_name[3] = {'x', 'y', 'z'};
    int d = depth_axis[view];
    float lo, hi;
    set_av_depth_box(view, down, up, &lo, &hi);
    if (!nothing_is_selected() && selection.box_max[d] > selection.box_min[d]) {
        snprintf(out, size, " - depth %c %g to %g, from the selection", axis_name[d], lo, hi);
    } else {
        snprintf(out, size, " - depth %c %g to %g, as deep as it is wide, centred on the 3D cursor", axis_name[d], lo, hi);
    }
}

/* The drag's two corners with the depth of a box or sphere filled in. */
static void with_depth(int view, const float *down, const float *up, float *a, float *b)
{
    static const int depth_axis[3] = {2, 0, 1};
    for (int i = 0; i < 3; i++) {
        a[i] = down[i];
        b[i] = up[i];
    }
    float lo, hi;
    set_av_depth_box(view, down, up, &lo, &hi);
    a[depth_axis[view]] = lo;
    b[depth_axis[view]] = hi;
}

static Object *make_primitive(int mode, int view, const float *down, const float *up)
{
    float a[3], b[3], m[3];
    int click = same_point(down, up);
    midpoint(down, up, m);
    switch (mode) {
    case DRAW_RECTANGLE: return add_rect(view, down, up);
    case DRAW_ELLIPSE: {
        Object *o = click ? create_regular_elipse(view) : add_circle(view, down, up, 10);
        if (o) move_to(o, m);
        return o;
    }
    case DRAW_DISK: {
        Object *o = click ? create_regular_disk(view) : add_disk(view, down, up, 10);
        if (o) move_to(o, m);
        return o;
    }
    case DRAW_BOX:
        if (click) return create_regular_cube(down);
        with_depth(view, down, up, a, b);
        return add_cube(view, a, b);
    case DRAW_SPHERE:
        if (click) return create_regular_sphere(down);
        with_depth(view, down, up, a, b);
        return add_sphere(view, a, b);
    case DRAW_CYLINDER: {
        Object *o = new_cylinder(view);
        with_depth(view, down, up, a, b);
        float s[3] = {std::fabs(b[0] - a[0]), std::fabs(b[1] - a[1]), std::fabs(b[2] - a[2])};
        for (float &v : s) {
            if (v == 0.0f) v = 1.0f;
        }
        if (o) {
            object_scale(o, s[0], s[1], s[2]);
            move_to(o, m);
        }
        return o;
    }
    case DRAW_MESH: return add_mesh(view, down, up);
    case DRAW_GRID: return add_grid(view, down, up);
    case DRAW_ICOSAHEDRON: return create_ico(0, 0);
    case DRAW_LIGHT: {
        Object *o = new_light();
        for (int i = 0; i < 3; i++) o->centre[i] = up[i];
        return o;
    }
    default: return nullptr;
    }
}

Object *action_primitive(int mode, int view, const float *down, const float *up)
{
    /* Undo labels, from the rectangle on. */
    static const char *const labels[] = {"add rect", "add elipse", "add disk", "add cube", "add sphere",
                                         "add cylinder", "add mesh", "add grid", "add ico", "add light"};
    if (mode < DRAW_RECTANGLE || mode > DRAW_LIGHT) return nullptr;
    /* Where a box's or sphere's depth comes from, told before the new
     * object changes the selection. */
    char depth[160] = "";
    if ((mode == DRAW_BOX || mode == DRAW_SPHERE || mode == DRAW_CYLINDER) && !same_point(down, up) && view >= 0 && view <= 2) {
        describe_depth(view, down, up, depth, sizeof depth);
    }
    Object *o = make_primitive(mode, view, down, up);
    if (!o) return nullptr;
    new_undo(UNDO_ADD_OBJECT, labels[mode - DRAW_RECTANGLE]);
    set_undo_object(o);
    object_add_child(world, o);
    if (object_is_light(o)) register_light(o);
    display_message("%s done%s", labels[mode - DRAW_RECTANGLE], depth);
    return o;
}

void action_delete(void)
{
    if (nothing_is_selected()) return;
    delete_all_selected();
    redraw_all();
}

void action_duplicate(int view) { duplicate_selected_in_view(view); }
void action_hide(void) { hide_selected(); }
void action_snap_together(void) { selected_snap_together(); }
void action_undo(void)
{
    /* The console is not where a user at the views looks. */
    if (!undo_current()) display_message("nothing to undo");
    UNDO();
}
