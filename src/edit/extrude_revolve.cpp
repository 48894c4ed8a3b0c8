/*
 * edit/extrude_revolve.cpp - revolving profiles: each selected object is
 * swept about an axis through the origin in rot_segments steps over
 * revolve_degs degrees.  Every copy is turned from the object's own
 * vertices.  A full turn closes the sweep: the last links go back to the
 * object's own vertices (the last copy is still added, and its end cap
 * still lies on the first surfaces, as it always has).
 */
#include "edit/extrude_internal.h"
#include "edit/selection.h"
#include "edit/transform.h"
#include "edit/undo.h"
#include "edit/edit_prefault.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "view/redraw.h"

static void revolve_object(Object *object, int axis, int n, int degrees)
{
    if (!sweep_size_ok(object, n, "revolve")) return;
    double step = degrees * 3.14159265358979323846 * 0.005555555555555556 / n;
    Sweep sweep;
    for (int i = 1; i <= n; i++) {
        float angle = (float)(i * step);
        set_global_matrix_rotate(axis == 0 ? angle : 0.0f, axis == 1 ? angle : 0.0f, axis == 2 ? angle : 0.0f);
        sweep.copies.push_back(copy_pointlist_rotate(object->vertices));
    }
    /* With a single step there is no previous copy to close from. */
    sweep_make_links(object, &sweep, 1, degrees == 360 && n >= 2);
    if (remove_extruded_lines) remove_line_surfaces(object);
    sweep_add_to_object(object, &sweep);
    for (List *k = object->kids; k; k = k->next) revolve_object((Object *)k->item, axis, n, degrees);
}

int rotate_form_selected_objects(int axis)
{
    int degrees = prefs.revolve_degs;
    if (degrees <= 0 || degrees > 360) {
        windows_message_dialog("The setting 'revolve degrees' is out of range (should be 1-360)");
        return 0;
    }
    int n = prefs.rot_segments;
    if (n < 1) {
        windows_message_dialog("The setting 'rot segments' is out of range (should be 1 or more)");
        return 0;
    }
    if (!selection.selected_objects) {
        display_message("revolve - no objects selected");
        return 0;
    }
    EditPrefault prefault(3.0 * n);   /* a copy and its links for each segment */
    new_undo(UNDO_SNAPSHOT, "revolve");
    set_undo_all();
    display_message("revolving...");
    for (List *l = selection.selected_objects; l; l = l->next) {
        Object *o = (Object *)l->item;
        revolve_object(o, axis, n, degrees);
        object_calc_normals_force(o);
        object_calculate_centre(o);
    }
    unsaved_changes = 1;
    find_bounding_box();
    redraw_all();
    display_message("revolve done");
    return 1;
}
