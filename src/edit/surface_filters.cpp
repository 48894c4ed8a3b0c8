/*
 * edit/surface_filters.cpp - the registry of surface filters: per-surface
 * operations that plug-ins add to the surface menu, and running one of
 * them over the selected surfaces.
 */
#include "edit/surface_ops.h"
#include "edit/surface_ops_batch.h"
#include "edit/selection.h"
#include "edit/undo.h"

#include <cstdio>
#include <cstring>

/* Every registered filter, in registration order; they live until exit. */
static List *surface_filters = nullptr;
static int num_surface_filters = 0;

SurfaceFilter *vk_register_surface_filter(const char *name, const char *description,
                                          vk_surface_filter_function function, int flags)
{
    if (!name || !function) {
        console_printf("vk_register_surface_filter: a filter needs a name and a function\n");
        return nullptr;
    }
    SurfaceFilter *f = (SurfaceFilter *)myalloc(sizeof(SurfaceFilter));
    if (!f) return nullptr;
    char id[32];
    snprintf(id, sizeof id, "surface_filter_%d", num_surface_filters + 1);
    f->name = mystrdup(name);
    f->description = mystrdup(description ? description : "");
    f->function = function;
    f->flags = flags;
    f->id = mystrdup(id);
    list_add_item(&surface_filters, f);
    num_surface_filters++;
    char command[64];
    snprintf(command, sizeof command, "vesk execute_surface_filter %s", f->id);
    if (!(flags & SURFACE_FILTER_NO_MENU)) vk_add_surface_menu_item(f->name, command, f->description);
    return f;
}

int execute_surface_filter(char *id)
{
    for (List *l = surface_filters; l; l = l->next) {
        SurfaceFilter *f = (SurfaceFilter *)l->item;
        if (id && strcmp(f->id, id) == 0) return selected_surfaces_do_filter(f);
    }
    windows_message_dialog("No surface filter named '%s' found.", id ? id : "");
    return 0;
}

int selected_surfaces_do_filter(SurfaceFilter *filter)
{
    if (!filter) return 0;
    std::vector<OwnedSurface> whole = whole_selected_surfaces();
    debugf("executing surface filter %s (%d)\n", filter->name, (int)(intptr_t)filter->function);
    if (no_surfaces_selected(whole)) {
        display_message("no surfaces selected");
        return 0;
    }
    display_message("%s...", filter->name);
    if (!(filter->flags & SURFACE_FILTER_NO_UNDO)) {
        new_undo(UNDO_SNAPSHOT, filter->name);
        set_undo_all();
    }
    for (const OwnedSurface &w : whole) filter->function(w.object, w.surface);
    /* The object's surfaces as they were, so that the filter may add or
     * remove surfaces of the object as it goes. */
    List *objects = list_clone(selection.selected_objects);
    for (List *l = objects; l; l = l->next) {
        Object *o = (Object *)l->item;
        for (Surface *s : object_surfaces(o)) filter->function(o, s);
    }
    list_free(&objects);
    clear_selection();
    selection_publish_counts();
    model_changed_redraw_all();
    display_message("%s - done", filter->name);
    display_status();
    return 1;
}
