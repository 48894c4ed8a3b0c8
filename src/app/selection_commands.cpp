/*
 * app/selection_commands.cpp - the commands through which scripts select
 * objects by handle and read the selection: its objects, whether an
 * object is selected, and the size and centre of the selection box.
 * Unknown handles give a console message and change nothing.
 */
#include "app/commands.h"
#include "edit/selection.h"
#include "view/redraw.h"

/* Redraw and tell the scripts after a selection change. */
static void selection_changed(void)
{
    redraw_all();
    display_status();
    selection_publish_counts();
}

int command_select_object(int id)
{
    Object *o = object_from_script_id(id);
    if (!o) return 0;
    select_object(o);
    selection_changed();
    return 1;
}

int command_unselect_object(int id)
{
    Object *o = object_from_script_id(id);
    if (!o) return 0;
    unselect_object(o);
    selection_changed();
    return 1;
}

int command_object_is_selected(int id)
{
    Object *o = object_from_script_id(id);
    if (!o) return 0;
    command_result_set(object_is_selected(o) ? "1" : "0");
    return 1;
}

int command_get_selected_objects(void)
{
    const char *sep = "";
    for (List *l = selection.selected_objects; l; l = l->next, sep = " ") {
        command_result_appendf("%s%u", sep, object_handle((Object *)l->item));
    }
    return 1;
}

int tcl_get_selection_size(void)
{
    if (nothing_is_selected()) {
        command_result_set("0 0 0");
        return 1;
    }
    float size[3];
    find_box_size(selection.box_max, selection.box_min, size);
    command_result_appendf("%g %g %g", size[0], size[1], size[2]);
    return 1;
}

int tcl_get_selection_centre(void)
{
    if (nothing_is_selected()) {
        command_result_set("0 0 0");
        return 1;
    }
    float centre[3];
    find_box_centre(selection.box_max, selection.box_min, centre);
    command_result_appendf("%g %g %g", centre[0], centre[1], centre[2]);
    return 1;
}
