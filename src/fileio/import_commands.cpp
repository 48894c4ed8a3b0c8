/*
 * fileio/import_commands.cpp - the commands that read other programs'
 * files into the model: "import_tri", "import_3ds", "import_alias_tri",
 * "import_vrml" and "import_inventor".  Each leaves "1" (read) or "0" as
 * its command result ("import_3ds": "0" read, "1" not) and marks the
 * model changed when something was added.
 */
#include "app/commands.h"
#include "app/linked_vars.h"
#include "app/shared_state.h"
#include "fileio/alias_tri.h"
#include "fileio/reader_3ds.h"
#include "fileio/tri_file.h"
#include "fileio/vrml1_reader.h"
#include "view/redraw.h"

/* An import that added something leaves the model unsaved. */
static int finish_import(int ok)
{
    if (ok) {
        unsaved_changes = 1;
        ui_update_linked_var(&unsaved_changes);
    }
    return command_finish(ok);
}

int command_import_tri(char *filename)
{
    if (!filename || !*filename) return finish_import(0);
    display_message("Loading Tri...");
    int ok = load_tri_file(filename);
    display_message(" ");
    return finish_import(ok);
}

int command_import_3ds(char *filename)
{
    unsigned long before = world->num_kids;
    display_message("Loading 3DS...");
    int result = import_3ds_file(filename);
    if (result == 0) {
        unsaved_changes = 1;
        ui_update_linked_var(&unsaved_changes);
        display_message("imported %lu objects from %s", (unsigned long)world->num_kids - before, filename);
    } else {
        display_message("%s was not imported - see the console", filename ? filename : "");
    }
    command_result_set(result ? "1" : "0");
    return result;
}

int command_import_alias_tri(char *filename)
{
    if (!filename || !*filename) return finish_import(0);
    display_message("Loading Alias Tri...");
    load_alias_tri_file(filename);
    display_message(" ");
    return finish_import(1);
}

/* "import_vrml" and "import_inventor": both formats are read alike. */
int import_vrml(char *filename)
{
    if (!filename || !*filename) return finish_import(0);
    display_message("Loading VRML...");
    long added = read_vrml1_file(filename);
    if (added < 0) {
        display_message("%s was not imported - see the console", filename);
        return finish_import(0);
    }
    fit_selected_all();
    display_message("imported %ld objects from %s", added, filename);
    return finish_import(1);
}
