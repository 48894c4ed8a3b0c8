/*
 * edit/surface_ops_settings.cpp - per-surface settings of the selected
 * surfaces: facing (flip), kind, shading, sidedness, colour and the order
 * of the vertex references.  Whole selected surfaces are set one by one;
 * selected objects through the recursive object setters.
 */
#include "edit/surface_ops.h"
#include "edit/surface_ops_batch.h"
#include "edit/selection.h"
#include "app/shared_state.h"
#include "view/redraw.h"

/* Applies set to every whole selected surface and every selected object;
 * returns the number of surfaces changed. */
static int set_on_selection(const std::vector<OwnedSurface> &whole, void (*set_surface)(Surface *, int),
                            int (*set_object)(Object *, int), int value)
{
    int count = 0;
    for (const OwnedSurface &w : whole) {
        set_surface(w.surface, value);
        count++;
    }
    for (List *l = selection.selected_objects; l; l = l->next) count += set_object((Object *)l->item, value);
    unsaved_changes = 1;
    return count;
}

static void surface_reverse(Surface *s, int) { list_reverse(&s->vertrefs); }
static int object_reverse(Object *o, int)
{
    object_reverse_normals(o);
    return 1;
}

int flip_selected_surface_normals(void)
{
    display_message("flip normals...");
    std::vector<OwnedSurface> whole = whole_selected_surfaces();
    if (no_surfaces_selected(whole)) {
        display_message("flip normals - no surfaces selected");
        return 0;
    }
    set_on_selection(whole, surface_reverse, object_reverse, 0);
    recalc_selection_normals(whole);
    redraw_3d();
    display_message("flip normals done");
    return 1;
}

static void surface_set_kind_value(Surface *s, int kind) { s->surface_kind = (uint8_t)kind; }

int set_selected_surface_type(int type)
{
    if (type < SURFACE_POLYGON || type > SURFACE_LINE) {
        display_message("surface type must be 0 (polygon), 1 (closed line) or 2 (line), not %d", type);
        return 0;
    }
    display_message("setting surface type...");
    int count = set_on_selection(whole_selected_surfaces(), surface_set_kind_value, object_set_surface_type, type);
    redraw_all();
    display_message("surface type set: %d", count);
    return 1;
}

/* Sets a surface flag on the whole selected surfaces and the selected
 * objects, with the messages of the setting. */
struct FlagRun {
    const char *none_selected;
    const char *running;
    void (*surface_set)(Surface *, int);
    int (*object_set)(Object *, int);
    const char *done_on;    /* each takes the count */
    const char *done_off;
};

static int set_flag_on_selection(const FlagRun &run, int flag)
{
    std::vector<OwnedSurface> whole = whole_selected_surfaces();
    if (no_surfaces_selected(whole)) {
        display_message("%s", run.none_selected);
        return 0;
    }
    display_message("%s", run.running);
    int count = set_on_selection(whole, run.surface_set, run.object_set, flag);
    redraw_3d();
    display_message(flag ? run.done_on : run.done_off, count);
    return 1;
}

int set_selected_surface_shading(int flag)
{
    return set_flag_on_selection({"surface set shading - no surfaces selected", "setting shading...",
                                  surface_set_shading, object_set_surface_shading, "surfaces set to shaded: %d",
                                  "surfaces set to flat: %d"},
                                 flag);
}

static void surface_set_sides(Surface *s, int flag) { s->twosided = flag; }

int set_selected_surfaces_twosided(int flag)
{
    return set_flag_on_selection({"surface set twosided - no surfaces selected", "setting surfaces sides...",
                                  surface_set_sides, object_set_twosided_faces, "%d surfaces set to two sided",
                                  "%d surfaces set to one sided"},
                                 flag);
}

static void surface_set_col(Surface *s, int index) { s->mat = (uint16_t)index; }

int set_selected_surfaces_col_index(int index)
{
    if (index < 0 || index >= vk_get_num_palette()) {
        display_message("set col - there is no palette entry %d (palette is 0->%d)", index, vk_get_num_palette() - 1);
        return 0;
    }
    display_message("setting surfaces col...");
    int count = set_on_selection(whole_selected_surfaces(), surface_set_col, object_set_col_index, index);
    redraw_all();
    display_message("col set on surfaces: %d", count);
    return 1;
}

/* ---- vertex order ---- */

void surface_change_vertex_order(Surface *surface)
{
    List *first = surface->vertrefs;
    if (!first || !first->next) return;
    surface->vertrefs = first->next;
    first->next = nullptr;
    list_end(surface->vertrefs)->next = first;
    surface_calc_normal(surface);
}

int object_change_vertex_order(Object *object)
{
    int count = 0;
    for (List *s = object->surfaces; s; s = s->next, count++) surface_change_vertex_order((Surface *)s->item);
    for (List *k = object->kids; k; k = k->next) count += object_change_vertex_order((Object *)k->item);
    return count;
}

int selected_surface_change_vertex_order(void)
{
    display_message("changing vertex order...");
    std::vector<OwnedSurface> whole = whole_selected_surfaces();
    int objects = 0, lines = 0;
    for (List *l = selection.selected_objects; l; l = l->next, objects++) {
        object_change_vertex_order((Object *)l->item);
    }
    for (const OwnedSurface &w : whole) {
        surface_change_vertex_order(w.surface);
        if (w.surface->surface_kind == SURFACE_LINE) lines = 1;
    }
    unsaved_changes = 1;
    if (lines) redraw_orth();
    redraw_3d();
    if (objects > 0) display_message("vertex order changed in %d objects", objects);
    else display_message("vertex order changed in %d surfaces", (int)whole.size());
    return 1;
}
