/*
 * edit/modelling_commands.cpp - what the modelling commands that make a
 * new object share: recording its undo, adding it to the world and
 * selecting it; and the command "new_cube".
 */
#include "edit/primitives.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "app/shared_state.h"
#include "view/redraw.h"

void add_new_object_selected(Object *object, const char *undo_label)
{
    new_undo(UNDO_ADD_OBJECT, undo_label);
    set_undo_object(object);
    object_add_child(world, object);
    clear_selection();
    select_object(object);
    selection_publish_counts();
    unsaved_changes = 1;
    redraw_all();
    display_status();
}

int command_new_cube(void)
{
    static const float origin[3] = {0.0f, 0.0f, 0.0f};
    add_new_object_selected(create_regular_cube(origin), "add cube");
    display_message("cube added");
    return 1;
}
