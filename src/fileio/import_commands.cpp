/*
 * fileio/import_commands.cpp - the commands that read other programs'
 * files into the model: "import_tri" (and the others as they come).
 * Each leaves "1" (read) or "0" as its command result and marks the
 * model changed when something was added.
 */
#include "app/commands.h"
#include "app/linked_vars.h"
#include "app/shared_state.h"
#include "fileio/tri_file.h"

static int finish(int ok)
{
    if (ok) {
        unsaved_changes = 1;
        ui_update_linked_var(&unsaved_changes);
    }
    command_result_set(ok ? "1" : "0");
    return ok;
}

int command_import_tri(char *filename)
{
    if (!filename || !*filename) return finish(0);
    display_message("Loading Tri...");
    int ok = load_tri_file(filename);
    display_message(" ");
    return finish(ok);
}
