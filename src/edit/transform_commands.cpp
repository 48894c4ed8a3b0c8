/*
 * edit/transform_commands.cpp - the commands "move", "move_to", "rotate",
 * "rotate_about", "scale", "size_to" and "mirror".  Each checks its
 * numbers and the selection, refuses a result that would leave the range
 * of single-precision floats, records the undo kind that inverts it, and
 * then transforms the selection (transform_selection.cpp).
 *
 * Undo kinds: a move records its vector; a turn about one axis records
 * the angle, view and centre; a scale by non-zero factors records the box
 * before and after (a resize); mirroring records the vertex positions
 * (it moves no object locations, so that restores it exactly); a turn
 * about several axes or a scale that flattens an axis cannot be undone by
 * the inverse transform and keeps a copy of the model.
 */
#include "app/commands.h"
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "edit/transform.h"
#include "edit/undo.h"
#include "view/redraw.h"

#include <cfloat>
#include <cmath>

/* Results are kept clear of the largest float so that rounding cannot
 * carry them to infinity. */
static const double FLOAT_RANGE = FLT_MAX * 0.999;

static int refuse_bad_numbers(const char *command, const float *v, int n)
{
    for (int i = 0; i < n; i++) {
        if (std::isfinite(v[i])) continue;
        display_message("%s: the numbers must be finite", command);
        return 1;
    }
    return 0;
}

/* Refreshes the selection box; 1 (with a message) when nothing is
 * selected.  Hidden objects are never selected, so a selection of hidden
 * objects is empty too. */
static int refuse_empty(const char *command)
{
    if (nothing_is_selected()) {
        display_message("%s: nothing selected", command);
        return 1;
    }
    find_bounding_box();
    return 0;
}

static int refuse_out_of_range(const char *command, int fits)
{
    if (fits) return 0;
    display_message("%s: the result would be out of range - nothing changed", command);
    return 1;
}

/* Every moved point stays in range when the box's corners do (adding d is
 * monotonic in the point). */
static int move_fits(const float *d)
{
    float min[3], max[3];
    if (!selection_bounds_with_locations(min, max)) return 1;
    for (int i = 0; i < 3; i++) {
        if (!std::isfinite(d[i])) return 0;
        if (fabs((double)min[i] + d[i]) > FLOAT_RANGE || fabs((double)max[i] + d[i]) > FLOAT_RANGE) return 0;
    }
    return 1;
}

/* The farthest a point of the box lies from centre along each axis. */
static void reach_from(const float *centre, double *reach)
{
    float min[3] = {0, 0, 0}, max[3] = {0, 0, 0};
    selection_bounds_with_locations(min, max);
    for (int i = 0; i < 3; i++) reach[i] = fmax(fabs((double)max[i] - centre[i]), fabs((double)min[i] - centre[i]));
}

/* A turn keeps every point within the box's diagonal of the centre. */
static int rotate_fits(const float *centre)
{
    double reach[3];
    reach_from(centre, reach);
    double radius = std::sqrt(reach[0] * reach[0] + reach[1] * reach[1] + reach[2] * reach[2]);
    for (int i = 0; i < 3; i++) {
        if (fabs((double)centre[i]) + radius > FLOAT_RANGE) return 0;
    }
    return 1;
}

static int scale_fits(const float *centre, const float *s)
{
    double reach[3];
    reach_from(centre, reach);
    for (int i = 0; i < 3; i++) {
        if (!std::isfinite(s[i]) || fabs((double)centre[i]) + reach[i] * fabs((double)s[i]) > FLOAT_RANGE) {
            return 0;
        }
    }
    return 1;
}

/* A box wider than the float range has no size or centre to work from. */
static int box_span_fits(void)
{
    for (int i = 0; i < 3; i++) {
        if (!std::isfinite(selection.box_max[i] - selection.box_min[i])) return 0;
    }
    return 1;
}

static void finish(const char *verb)
{
    edit_mark_changed();
    redraw_all();
    display_message("%s done", verb);
}

/* ---- moving ---- */

static int move_by(const char *command, const float *d)
{
    if (refuse_out_of_range(command, move_fits(d))) return 0;
    display_message("move - setting up undo");
    new_undo(UNDO_MOVE, "move");
    set_undo_vert(d[0], d[1], d[2]);
    move_selection(d);
    finish("move");
    return 1;
}

int move_selection_f(float x, float y, float z)
{
    const float d[3] = {x, y, z};
    if (refuse_bad_numbers("move", d, 3) || refuse_empty("move")) return 0;
    return move_by("move", d);
}

int selection_move_to_f(float x, float y, float z)
{
    const float target[3] = {x, y, z};
    if (refuse_bad_numbers("move_to", target, 3) || refuse_empty("move_to")) return 0;
    float centre[3], d[3];
    find_box_centre(selection.box_max, selection.box_min, centre);
    for (int i = 0; i < 3; i++) d[i] = target[i] - centre[i];
    return move_by("move_to", d);
}

/* ---- rotating ---- */

/* The view whose turn is a rotation about the one non-zero angle, and the
 * angle rotate_selected takes for it: view 0 turns about -z, view 1 about
 * x, view 2 about -y.  -1 when more than one angle is given. */
static int single_axis_view(const float *degrees, float *angle)
{
    int axis = -1;
    for (int i = 0; i < 3; i++) {
        if (degrees[i] == 0.0f) continue;
        if (axis >= 0) return -1;
        axis = i;
    }
    static const int view_of_axis[3] = {1, 2, 0};
    static const float sign_of_axis[3] = {1.0f, -1.0f, -1.0f};
    *angle = sign_of_axis[axis] * degrees[axis];
    return view_of_axis[axis];
}

static int rotate_about_centre(const char *command, const float *degrees, const float *centre)
{
    if (degrees[0] == 0.0f && degrees[1] == 0.0f && degrees[2] == 0.0f) {
        display_message("%s: no angle given - nothing changed", command);
        return 0;
    }
    if (refuse_out_of_range(command, rotate_fits(centre))) return 0;
    display_message("rotate - setting up undo");
    float angle;
    int view = single_axis_view(degrees, &angle);
    if (view < 0) {
        new_undo(UNDO_SNAPSHOT, "rotate");
        set_undo_all();
        rotate_selection_about(degrees, centre);
    } else {
        new_undo(UNDO_ROTATE, "rotate");
        set_undo_rotate(view, centre, angle);
        rotate_selected(angle, view, centre);
        selected_calc_normals();
        find_bounding_box();
        display_status();
    }
    finish("rotate");
    return 1;
}

int rotate_selection_f(float rx, float ry, float rz)
{
    const float degrees[3] = {rx, ry, rz};
    if (refuse_bad_numbers("rotate", degrees, 3) || refuse_empty("rotate")) return 0;
    float centre[3];
    selection_rotation_centre(centre);
    return rotate_about_centre("rotate", degrees, centre);
}

int rotate_selection_about_f(float rx, float ry, float rz, float x, float y, float z)
{
    const float values[6] = {rx, ry, rz, x, y, z};
    if (refuse_bad_numbers("rotate_about", values, 6) || refuse_empty("rotate_about")) return 0;
    return rotate_about_centre("rotate_about", values, values + 3);
}

/* ---- scaling and mirroring ---- */

/* Scales about the box centre, recording the box before and after as a
 * resize, or a copy of the model when a factor is 0 (a flattened axis
 * cannot be stretched back). */
static int scale_by(const char *command, const char *label, const float *s)
{
    if (!selection.selection_has_extent) {
        display_message("%s: the selection has no size - nothing changed", command);
        return 0;
    }
    float c[3];
    find_box_centre(selection.box_max, selection.box_min, c);
    if (refuse_out_of_range(command, scale_fits(c, s))) return 0;
    display_message("%s - setting up undo", label);
    if (s[0] == 0.0f || s[1] == 0.0f || s[2] == 0.0f) {
        new_undo(UNDO_SNAPSHOT, label);
        set_undo_all();
    } else {
        float after_max[3], after_min[3];
        for (int i = 0; i < 3; i++) {
            after_max[i] = (selection.box_max[i] - c[i]) * s[i] + c[i];
            after_min[i] = (selection.box_min[i] - c[i]) * s[i] + c[i];
        }
        new_undo(UNDO_RESIZE, label);
        set_undo_resize(selection.box_max, selection.box_min, after_max, after_min);
    }
    scale_selected(s[0], s[1], s[2]);
    selected_calc_normals();
    display_status();
    finish(label);
    return 1;
}

int command_scale(float sx, float sy, float sz)
{
    const float s[3] = {sx, sy, sz};
    if (refuse_bad_numbers("scale", s, 3) || refuse_empty("scale")) return 0;
    if (refuse_out_of_range("scale", box_span_fits())) return 0;
    return scale_by("scale", "scale", s);
}

int selection_size_to_f(float x, float y, float z)
{
    const float target[3] = {x, y, z};
    if (refuse_bad_numbers("size_to", target, 3) || refuse_empty("size_to")) return 0;
    if (refuse_out_of_range("size_to", box_span_fits())) return 0;
    float f[3];
    selection_size_factors(target, f);
    return scale_by("size_to", "size to", f);
}

int command_mirror(int axis)
{
    if (axis < 0 || axis > 2) {
        display_message("mirror: axis must be 0 (x), 1 (y) or 2 (z), not %d", axis);
        return 0;
    }
    if (refuse_empty("mirror")) return 0;
    double span = (double)selection.box_max[axis] - selection.box_min[axis];
    if (refuse_out_of_range("mirror", fabs(span) <= FLOAT_RANGE)) return 0;
    display_message("mirror - setting up undo");
    new_undo(UNDO_VERTEX_POSITIONS, "mirror");
    set_undo_selected_vertex_positions();
    mirror_selected(axis);
    display_status();
    finish("mirror");
    return 1;
}
