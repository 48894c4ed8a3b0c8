/*
 * edit/surface_filters.cpp - the registry of surface filters: per-surface
 * operations that plug-ins add to the surface menu, and running one of
 * them over the selected surfaces.
 */
#include "edit/surface_ops.h"
#include "edit/surface_ops_batch.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "platform/signal_guard.h"

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

struct FilterCall {
    SurfaceFilter *filter;
    Object *object;
    Surface *surface;
};

static void call_filter(void *context)
{
    FilterCall *c = (FilterCall *)context;
    c->filter->function(c->object, c->surface);
}

/* Runs the filter on one surface inside the fault guard, so that a fault
 * in a plug-in's filter ends only this run, which then cleans up after
 * itself; 0 (with the signal in *fault) when it faulted. */
static int filter_surface(SurfaceFilter *filter, Object *object, Surface *surface, int *fault)
{
    FilterCall call = {filter, object, surface};
    return run_guarded(call_filter, &call, fault);
}

static void report_filter_fault(SurfaceFilter *filter, int fault)
{
    windows_message_dialog("The surface filter '%s' crashed (signal %d) and was stopped.%s", filter->name, fault,
                           (filter->flags & SURFACE_FILTER_NO_UNDO) ? ""
                                                                    : "\nUndo takes back what it changed.");
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
    int fault = 0;
    for (const OwnedSurface &w : whole) {
        if (!filter_surface(filter, w.object, w.surface, &fault)) break;
    }
    /* The object's surfaces as they were, so that the filter may add or
     * remove surfaces of the object as it goes. */
    List *objects = fault ? nullptr : list_clone(selection.selected_objects);
    for (List *l = objects; l && !fault; l = l->next) {
        Object *o = (Object *)l->item;
        for (Surface *s : object_surfaces(o)) {
            if (!filter_surface(filter, o, s, &fault)) break;
        }
    }
    list_free(&objects);
    if (fault) {
        model_changed_redraw_all();
        report_filter_fault(filter, fault);
        display_status();
        return 0;
    }
    clear_selection();
    selection_publish_counts();
    model_changed_redraw_all();
    display_message("%s - done", filter->name);
    display_status();
    return 1;
}
