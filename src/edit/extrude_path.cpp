/*
 * edit/extrude_path.cpp - extruding the current object along a path: an
 * object of a single line surface, chosen beforehand.  A copy of the
 * object is placed at every point of the line (the first coincides with
 * the object) and turned about z at the corners; consecutive copies are
 * linked.  No end cap is added and line surfaces stay.
 *
 * The path is remembered by its object's handle, not its address, so a
 * path object deleted since is recognised as gone instead of being read
 * after it was freed.
 */
#include "edit/extrude_internal.h"
#include "edit/selection.h"
#include "edit/surface_ops.h"
#include "edit/transform.h"
#include "edit/undo.h"
#include "app/shared_state.h"
#include "view/redraw.h"

#include <cmath>
#include <vector>

static uint32_t path_handle = 0;

/* 1 when the object holds exactly one surface and it is a line. */
static int is_single_line(Object *o)
{
    return o && o->num_surf == 1 && o->surfaces && ((Surface *)o->surfaces->item)->surface_kind == SURFACE_LINE;
}

int vk_define_path_object(void)
{
    if (selection.num_selected_objects != 1) {
        windows_message_dialog("Define path object:\nYou need to select a single line object for the path");
        return 0;
    }
    Object *current = get_current_object();
    if (!is_single_line(current)) {
        windows_message_dialog("Define path object:\nThe path object needs to be one containing a single surface "
                               "which is a line");
        return 0;
    }
    path_handle = object_handle(current);
    display_message("Path object defined OK");
    return 1;
}

/* The path's points, or an empty list (with the message, and the path
 * forgotten) when the path object is gone or no longer a single line. */
static std::vector<Vertex *> path_points(void)
{
    std::vector<Vertex *> points;
    Object *path = object_from_handle(path_handle);
    if (path && object_exists(path) && is_single_line(path)) {
        for (List *r = ((Surface *)path->surfaces->item)->vertrefs; r; r = r->next) {
            Vertex *v = ((SVertex *)r->item)->vertex;
            if (v) points.push_back(v);
        }
    }
    if (points.empty()) {
        windows_message_dialog("Extrude along path:\nthe path object is no longer valid\nPlease define a new path (an "
                               "object containing a single line).");
        path_handle = 0;
    }
    return points;
}

/* Turns a copy at the corner pk between the previous and the next point:
 * about z by the angle between the two legs. */
static void turn_at_corner(List *copy, const float *previous, const float *pk, const float *next)
{
    float u[3], w[3];
    for (int i = 0; i < 3; i++) {
        u[i] = pk[i] - previous[i];
        w[i] = pk[i] - next[i];
    }
    normalize_point(u);
    normalize_point(w);
    double dot = (double)u[0] * w[0] + (double)u[1] * w[1] + (double)u[2] * w[2];
    if (dot > 1.0) dot = 1.0;
    if (dot < -1.0) dot = -1.0;
    double angle = acos(dot);
    console_printf("dot %f %f\n", dot, angle * 180 * 0.3183098861837907);
    set_global_matrix_rotate(0.0f, 0.0f, (float)angle);
    float back[3] = {-pk[0], -pk[1], -pk[2]};
    translate_pointlist(copy, back);
    rotate_pointlist_3d(copy);
    translate_pointlist(copy, pk);
}

static void extrude_along(Object *object, const std::vector<Vertex *> &points)
{
    console_printf("extrude along surface\n");
    const float *p0 = points[0]->point;
    size_t n = points.size();
    Sweep sweep;
    for (size_t k = 0; k < n; k++) {
        const float *pk = points[k]->point;
        float d[3] = {p0[0] - pk[0], p0[1] - pk[1], p0[2] - pk[2]};
        sweep.copies.push_back(copy_pointlist(object->vertices, d));
        /* The last point has no next leg, so its copy is not turned. */
        if (k >= 1 && k + 1 < n) turn_at_corner(sweep.copies.back(), points[k - 1]->point, pk, points[k + 1]->point);
    }
    sweep_make_links(object, &sweep, 0, 0);
    sweep_add_to_object(object, &sweep);
}

int vk_extrude_along_path(void)
{
    console_printf("extrude along path\n");
    if (!path_handle) {
        windows_message_dialog("Extrude along path:\nno path object defined - use object->define path object to set.");
        return 0;
    }
    Object *object = get_current_object();
    std::vector<Vertex *> points = path_points();
    if (points.empty()) return 0;
    if (!object) {
        windows_message_dialog("Extrude along path:\npath object is defined but you need to select an object to "
                               "be\nextruded along the path.");
        return 0;
    }
    if (!sweep_size_ok(object, (long)points.size(), "extrude along path")) return 0;
    new_undo(UNDO_SNAPSHOT, "extrude along path");
    set_undo_all();
    extrude_along(object, points);
    unsaved_changes = 1;
    find_bounding_box();
    redraw_all();
    display_message("extrude along path done");
    return 1;
}
