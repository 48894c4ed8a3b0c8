/*
 * edit/snap.cpp - vertex snapping: the selected vertices to the nearest
 * grid point ("snaptogrid"), the selected vertices onto the first of them
 * ("snaptogether"), and one object moved so that a selected vertex of it
 * meets a selected vertex of another ("snap_object_vertex_pairs",
 * "object_snap_together_by_vertices").  Vertex snaps record the vertex
 * positions for undo; moving an object records a copy of the model, since
 * its location moves too.
 */
#include "app/commands.h"
#include "app/prefs.h"
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "edit/transform.h"
#include "edit/undo.h"
#include "view/redraw.h"
#include "view/view_state.h"

#include <cmath>
#include <vector>

static void finish_vertex_snap(const char *message, int count)
{
    selected_calc_normals();
    find_bounding_box();
    edit_mark_changed();
    redraw_all();
    display_status();
    display_message(message, count);
}

int selected_snap_to_grid(void)
{
    if (!selection.selected_vertices) {
        display_message("snap to grid: select vertices first");
        return 0;
    }
    float g = (float)prefs.grid;
    if (!(g > 0.0f) || !std::isfinite(g)) {
        display_message("snap to grid: the grid size must be a number above 0");
        return 0;
    }
    /* A point near the end of the float range may have no grid point in
     * range: then nothing moves. */
    for (List *v = selection.selected_vertices; v; v = v->next) {
        float p[3];
        for (int i = 0; i < 3; i++) p[i] = ((Vertex *)v->item)->point[i];
        snap_to_grid_float(p, g, g, g);
        if (!std::isfinite(p[0]) || !std::isfinite(p[1]) || !std::isfinite(p[2])) {
            display_message("snap to grid: a vertex has no grid point in range - nothing changed");
            return 0;
        }
    }
    new_undo(UNDO_VERTEX_POSITIONS, "snap to grid");
    set_undo_vertex_positions(selection.selected_vertices);
    int n = 0;
    for (List *v = selection.selected_vertices; v; v = v->next, n++) {
        float *p = ((Vertex *)v->item)->point;
        snap_to_grid_float(p, g, g, g);
    }
    finish_vertex_snap("vertices snapped to grid: %d", n);
    return 1;
}

int selected_snap_together(void)
{
    List *first = selection.selected_vertices;
    if (!first || !first->next) {
        display_message("snap together: select two or more vertices");
        return 0;
    }
    new_undo(UNDO_VERTEX_POSITIONS, "snap vertices together");
    set_undo_vertex_positions(selection.selected_vertices);
    const float *target = ((Vertex *)first->item)->point;
    int n = 0;
    for (List *v = first->next; v; v = v->next, n++) {
        float *p = ((Vertex *)v->item)->point;
        for (int i = 0; i < 3; i++) p[i] = target[i];
    }
    finish_vertex_snap("vertices snapped together: %d", n);
    return 1;
}

/* The two objects of a vertex selection and the first selected vertex of
 * each, in the order of those vertices; 0 unless exactly two objects own
 * selected vertices. */
static int two_owned_vertices(Object **objects, Vertex **vertices)
{
    if (selection.select_mode != SELECT_VERTEX || !selection.selected_vertices) return 0;
    PointerTable owners;
    for (List *v = selection.selected_vertices; v; v = v->next) ptable_set_if_absent(&owners, v->item, 0);
    find_vertex_owners(&owners);
    int found = 0;
    for (List *v = selection.selected_vertices; v; v = v->next) {
        Object *o = (Object *)ptable_value(&owners, v->item);
        if (!o || (found > 0 && o == objects[0]) || (found > 1 && o == objects[1])) continue;
        if (found == 2) return 0;
        objects[found] = o;
        vertices[found] = (Vertex *)v->item;
        found++;
    }
    return found == 2;
}

static int is_ancestor(Object *a, Object *b)
{
    for (Object *up = b->parent; up; up = up->parent) {
        if (up == a) return 1;
    }
    return 0;
}

int snap_2_objects_vertices_together(void)
{
    Object *objects[2];
    Vertex *vertices[2];
    if (!two_owned_vertices(objects, vertices)) {
        display_message("snap objects: in vertex mode, select vertices in exactly two objects");
        return 0;
    }
    if (is_ancestor(objects[0], objects[1]) || is_ancestor(objects[1], objects[0])) {
        display_message("snap objects: one object lies inside the other - nothing changed");
        return 0;
    }
    float d[3];
    for (int i = 0; i < 3; i++) d[i] = vertices[0]->point[i] - vertices[1]->point[i];
    if (!std::isfinite(d[0]) || !std::isfinite(d[1]) || !std::isfinite(d[2])) {
        display_message("snap objects: the distance is out of range - nothing changed");
        return 0;
    }
    new_undo(UNDO_SNAPSHOT, "snap objects together");
    set_undo_all();
    translate_object(objects[1], d);
    find_bounding_box();
    edit_mark_changed();
    redraw_all();
    display_status();
    display_message("object %s moved onto %s", objects[1]->name ? objects[1]->name : "",
                    objects[0]->name ? objects[0]->name : "");
    return 1;
}

int allign_objects_using_2_vert(void)
{
    return snap_2_objects_vertices_together();
}
