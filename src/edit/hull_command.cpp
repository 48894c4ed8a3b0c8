/*
 * edit/hull_command.cpp - the command "convexhull": the hull of the
 * selected vertices, or of every vertex of the selected objects and their
 * descendants, added to the world as a new selected object.
 */
#include "edit/hull.h"
#include "edit/primitives.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "view/redraw.h"

#include <vector>

static void add_point(std::vector<float> *xyz, const Vertex *v)
{
    xyz->insert(xyz->end(), v->point, v->point + 3);
}

static std::vector<float> selected_points(void)
{
    std::vector<float> xyz;
    for (List *v = selection.selected_vertices; v; v = v->next) add_point(&xyz, (Vertex *)v->item);
    std::vector<Object *> pending;
    for (List *l = selection.selected_objects; l; l = l->next) pending.push_back((Object *)l->item);
    while (!pending.empty()) {
        Object *o = pending.back();
        pending.pop_back();
        for (List *v = o->vertices; v; v = v->next) add_point(&xyz, (Vertex *)v->item);
        for (List *k = o->kids; k; k = k->next) pending.push_back((Object *)k->item);
    }
    return xyz;
}

int make_convex_hull(void)
{
    std::vector<float> xyz = selected_points();
    if (xyz.empty()) {
        display_message("convex hull - no vertices selected");
        return 0;
    }
    display_message("convex hull...");
    const char *reason = "";
    Object *hull = convex_hull_from_points(xyz.data(), xyz.size() / 3, prefs.convexhull_precision, &reason);
    if (!hull) {
        display_message("convex hull - %s", reason);
        return 0;
    }
    object_calculate_centre(hull);
    add_new_object_selected(hull, "convex hull");
    display_message("convex hull done: %u vertices, %u surfaces", (unsigned)hull->num_vert, (unsigned)hull->num_surf);
    return 1;
}
