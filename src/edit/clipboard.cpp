/*
 * edit/clipboard.cpp - copy, cut and paste inside the program.  The
 * clipboard owns deep copies of what was copied (the selected objects,
 * and the selected vertices with the surfaces they complete), detached
 * from the model, so it survives any later edit of the originals.  Each
 * paste adds fresh copies of them to the world.
 */
#include "app/commands.h"
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "core/lights.h"
#include "view/redraw.h"

static List *clipboard = nullptr;

static void clipboard_clear(void)
{
    for (List *l = clipboard; l; l = l->next) object_free((Object *)l->item);
    list_free(&clipboard);
}

int clipboard_copy(void)
{
    if (nothing_is_selected()) {
        display_message("copy: nothing selected");
        return 0;
    }
    clipboard_clear();
    clipboard = clone_selected(1);
    display_message("copied to the clipboard: %d objects", (int)list_count(clipboard));
    return 1;
}

int clipboard_cut(void)
{
    if (!clipboard_copy()) return 0;
    return delete_selection_as("cut");
}

int clipboard_paste(void)
{
    if (!clipboard) {
        display_message("paste: the clipboard is empty");
        return 0;
    }
    List *copies = nullptr, *tail = nullptr;
    for (List *l = clipboard; l; l = l->next) {
        tail = list_add_item_fast(&copies, tail, copy_object_exact((Object *)l->item));
    }
    new_undo(UNDO_PASTE, "paste");
    set_undo_objectlist(copies);
    clear_selection();
    ChildAppender kids = child_appender(world);
    for (List *l = copies; l; l = l->next) append_child(&kids, (Object *)l->item);
    scan_lights();
    select_objectlist(copies);
    int n = (int)list_count(copies);
    list_free(&copies);
    selection_publish_counts();
    edit_mark_changed();
    redraw_all();
    display_status();
    display_message("pasted: %d objects", n);
    return 1;
}

int clipboard_count(void)
{
    return (int)list_count(clipboard);
}
