/*
 * app/added_commands.cpp - the commands this program offers beyond the
 * built-in table.  They are registered at start-up the way a plug-in
 * registers its own, so that the built-in table keeps exactly its rows
 * and a plug-in can still replace any of them.
 */
#include "app/added_commands.h"
#include "app/autosave.h"
#include "app/commands.h"
#include "app/command_row.h"
#include "app/plugins.h"
#include "edit/redo.h"
#include "fileio/vk_document.h"
#include "view/camera_fit.h"

/* Rows as in the built-in table. */
static const Command added_table[] = {
    COMMAND_ROW("new_model", command_new_model, 0, nullptr, nullptr,
     "start an empty model with no file and no unsaved changes"),
    COMMAND_ROW("open_vk", command_open_vk, 1, "s", "<filename>",
     "open a VESK model file in place of the model, once it has been read whole"),
    COMMAND_ROW("merge_vk", command_merge_vk, 1, "s", "<filename>",
     "add the objects of a VESK model file to the model, once it has been read whole"),
    COMMAND_ROW("revert_vk", command_revert_vk, 0, nullptr, nullptr, "open the model's file again, dropping unsaved changes"),
    COMMAND_ROW("open_backup_vk", command_open_backup_vk, 0, nullptr, nullptr,
     "open the backup kept by the last save over the model's file"),
    COMMAND_ROW("autosave_now", command_autosave_now, 0, nullptr, nullptr,
     "write the model to this program's autosave file now"),
    COMMAND_ROW("recovery_files", command_recovery_files, 0, nullptr, nullptr,
     "list the unsaved work that stopped programs left: {file model seconds kind} ..."),
    COMMAND_ROW("recover_file", command_recover_file, 1, "s", "<recovery-file>",
     "open unsaved work that a stopped program left, in place of the model"),
    COMMAND_ROW("discard_recovery_file", command_discard_recovery_file, 1, "s", "<recovery-file>",
     "delete unsaved work that a stopped program left"),
    COMMAND_ROW("redo", REDO, 0, nullptr, nullptr, "do again what the last undo took back"),
    COMMAND_ROW("undo_history", command_undo_history, 0, nullptr, nullptr,
     "list the labels of the undo history, oldest first"),
    COMMAND_ROW("command_available", command_available, 1, "s", "<command>",
     "1 when the command exists and works in this build, else 0"),
    COMMAND_ROW("fit_3d", fit_3d_view, 0, nullptr, nullptr,
     "place the 3D view's camera so that the selection, or the whole model, fills the view"),
    COMMAND_ROW("pick_3d", command_pick_3d, 3, "fff", "<x> <y> <0 select, 1 add, 2 remove>",
     "pick what lies under a window point of the 3D view, as Control+click does"),
    COMMAND_ROW("pick_3d_query", command_pick_3d_query, 2, "ff", "<x> <y>",
     "tell what lies under a window point of the 3D view (object, surface, vertex) without selecting it"),
    COMMAND_ROW("undo_to", command_undo_to, 1, "d", "<step>",
     "undo back to a step of the undo history, counted from 0 at the oldest"),
    COMMAND_ROW("plugin_load_all", command_plugin_load_all, 0, nullptr, nullptr,
     "load every plug-in of the plug-in directories, each in name order; the number tried"),
};

void register_added_commands(void)
{
    static int done = 0;
    if (done) return;
    done = 1;
    for (const Command &c : added_table) {
        vk_add_command_full(c.name, c.function, c.numargs, c.template_, c.usage, c.description);
    }
}

int num_added_builtin_commands(void)
{
    return (int)(sizeof added_table / sizeof added_table[0]);
}
