/*
 * app/added_commands.cpp - the commands this program offers beyond the
 * built-in table.  They are registered at start-up the way a plug-in
 * registers its own, so that the built-in table keeps exactly its rows
 * and a plug-in can still replace any of them.
 */
#include "app/added_commands.h"
#include "app/autosave.h"
#include "app/commands.h"
#include "app/plugins.h"
#include "edit/redo.h"
#include "fileio/vk_document.h"
#include "view/camera_fit.h"

#define CMDFN(f) reinterpret_cast<vk_command_function>(&(f))

/* Rows as in the built-in table. */
static const Command added_table[] = {
    {"new_model", CMDFN(command_new_model), 0, nullptr, nullptr,
     "start an empty model with no file and no unsaved changes"},
    {"open_vk", CMDFN(command_open_vk), 1, "s", "<filename>",
     "open a VESK model file in place of the model, once it has been read whole"},
    {"merge_vk", CMDFN(command_merge_vk), 1, "s", "<filename>",
     "add the objects of a VESK model file to the model, once it has been read whole"},
    {"revert_vk", CMDFN(command_revert_vk), 0, nullptr, nullptr, "open the model's file again, dropping unsaved changes"},
    {"open_backup_vk", CMDFN(command_open_backup_vk), 0, nullptr, nullptr,
     "open the backup kept by the last save over the model's file"},
    {"autosave_now", CMDFN(command_autosave_now), 0, nullptr, nullptr,
     "write the model to this program's autosave file now"},
    {"recovery_files", CMDFN(command_recovery_files), 0, nullptr, nullptr,
     "list the unsaved work that stopped programs left: {file model seconds kind} ..."},
    {"recover_file", CMDFN(command_recover_file), 1, "s", "<recovery-file>",
     "open unsaved work that a stopped program left, in place of the model"},
    {"discard_recovery_file", CMDFN(command_discard_recovery_file), 1, "s", "<recovery-file>",
     "delete unsaved work that a stopped program left"},
    {"redo", CMDFN(REDO), 0, nullptr, nullptr, "do again what the last undo took back"},
    {"undo_history", CMDFN(command_undo_history), 0, nullptr, nullptr,
     "list the labels of the undo history, oldest first"},
    {"command_available", CMDFN(command_available), 1, "s", "<command>",
     "1 when the command exists and works in this build, else 0"},
    {"fit_3d", CMDFN(fit_3d_view), 0, nullptr, nullptr,
     "place the 3D view's camera so that the selection, or the whole model, fills the view"},
    {"pick_3d", CMDFN(command_pick_3d), 3, "fff", "<x> <y> <0 select, 1 add, 2 remove>",
     "pick what lies under a window point of the 3D view, as Control+click does"},
    {"undo_to", CMDFN(command_undo_to), 1, "d", "<step>",
     "undo back to a step of the undo history, counted from 0 at the oldest"},
    {"plugin_load_all", CMDFN(command_plugin_load_all), 0, nullptr, nullptr,
     "load every plug-in of the plug-in directories, each in name order; the number tried"},
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
