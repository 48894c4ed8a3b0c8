/*
 * view/view_commands.cpp - the commands that control the views and the
 * 3D camera: zoom, fit, go-to, reset, redraw, the 3D view's centre and
 * mode, and the queries of the 3D cursor and the lights.  They change view
 * state and ask for redraws, so they work headless too.
 */
#include "app/commands.h"
#include "app/frontend.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "core/lights.h"
#include "edit/selection.h"
#include "view/camera.h"
#include "view/camera_fit.h"
#include "view/redraw.h"
#include "view/view_state.h"

#include <cmath>
#include <string>

int command_do_perspective(void)
{
    /* The projection is set up from the window size and fov_3d at every
     * redraw of the 3D view. */
    request_redisplay(3);
    return 1;
}

int tcl_get_3d_cursor(void)
{
    command_result_appendf("%g %g %g", cursor_3d[0], cursor_3d[1], cursor_3d[2]);
    return 1;
}

int command_get_lights(void)
{
    const char *sep = "";
    for (List *l = vk_get_lights_list(); l; l = l->next, sep = " ") {
        command_result_appendf("%s%u", sep, object_handle((Object *)l->item));
    }
    return 1;
}

static int centre_3d_view_on(const float *p)
{
    person_set_offset(p);
    request_redisplay(3);
    return 1;
}

int set_3d_view_selection(void)
{
    if (nothing_is_selected()) {
        display_message("nothing selected");
        return 0;
    }
    float c[3];
    for (int i = 0; i < 3; i++) {
        c[i] = selection.box_min[i] + (selection.box_max[i] - selection.box_min[i]) * 0.5f;
    }
    return centre_3d_view_on(c);
}

int set_3d_view_cursor(void) { return centre_3d_view_on(cursor_3d); }

int set_3d_view_origin(void)
{
    const float origin[3] = {0, 0, 0};
    return centre_3d_view_on(origin);
}

int command_set_walk_viewer(void)
{
    person_set_walk();
    request_redisplay(3);
    return 1;
}

int command_set_spin_viewer(void)
{
    person_set_spin();
    request_redisplay(3);
    return 1;
}

int about_menu(void)
{
    const char *about = "VESK v2.0 - a polygon modeller for building 3D models by hand.";
    console_printf("%s\n", about);
    command_result_set(about);
    return 1;
}

static int finite_position(float x, float y)
{
    return std::isfinite(x) && std::isfinite(y) && std::fabs(x) <= 1e6f && std::fabs(y) <= 1e6f;
}

/* The dispatcher's templates have three floats, not three integers. */
int command_pick_3d(float fx, float fy, float fhow)
{
    if (!finite_position(fx, fy) || !std::isfinite(fhow) || std::fabs(fhow) > 1e6f) {
        display_message("pick_3d: the numbers must be finite window positions");
        return 0;
    }
    int x = (int)fx, y = (int)fy, how = (int)fhow;
    if (how < 0 || how > 2 || (float)how != fhow) {
        display_message("pick_3d: the third number is 0 (select), 1 (add) or 2 (remove), not %g", fhow);
        return 0;
    }
    if (!frontend.pick) {
        display_message("pick_3d: there is no 3D view to pick in");
        return 0;
    }
    if (x < 0 || y < 0 || x >= views[3].width || y >= views[3].height) {
        display_message("pick_3d: %d %d lies outside the 3D view", x, y);
        return 0;
    }
    int range = prefs.pick_pixel_range > 0 ? prefs.pick_pixel_range : 1;
    frontend_pick(3, x, y, range, range, how == 1, how == 2);
    display_status();
    return 1;
}

/* A name as one element of a Tcl list: braces and backslashes would
 * break the list the scripts read, so they show as '?'. */
static std::string list_word(const char *name)
{
    std::string word = name ? name : "";
    for (char &c : word) {
        if (c == '{' || c == '}' || c == '\\') c = '?';
    }
    return "{" + word + "}";
}

int command_pick_3d_query(float fx, float fy)
{
    command_result_set("");
    if (!finite_position(fx, fy)) {
        display_message("pick_3d_query: the numbers must be finite window positions");
        return 0;
    }
    if (!frontend.pick_query) {
        display_message("pick_3d_query: there is no 3D view to pick in");
        return 0;
    }
    int x = (int)fx, y = (int)fy;
    if (x < 0 || y < 0 || x >= views[3].width || y >= views[3].height) {
        display_message("pick_3d_query: %d %d lies outside the 3D view", x, y);
        return 0;
    }
    int range = prefs.pick_pixel_range > 0 ? prefs.pick_pixel_range : 1;
    PickHit hit;
    if (!frontend_pick_query(x, y, range, range, &hit) || !hit.object) return 1;
    command_result_appendf("object %u name %s surface %d vertex %d selected %d", object_handle(hit.object),
                           list_word(hit.object->name).c_str(), hit.surface_index, hit.vertex_index,
                           object_is_selected(hit.object) ? 1 : 0);
    return 1;
}
