/*
 * fileio/import_commands.cpp - the commands that read other programs'
 * files into the model: "import_tri", "import_3ds", "import_alias_tri",
 * "import_vrml", "import_inventor" and "import_vector" (SVG drawings).  Each leaves "1" (read) or "0" as
 * its command result ("import_3ds": "0" read, "1" not) and marks the
 * model changed when something was added.
 */
#include "app/commands.h"
#include "app/linked_vars.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "core/lights.h"
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "fileio/alias_tri.h"
#include "fileio/reader_3ds.h"
#include "fileio/tri_file.h"
#include "fileio/svg_reader.h"
#include "fileio/vrml1_reader.h"
#include "view/camera_fit.h"
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

/* Notes about skipped parts go to the console, the first few in full. */
static void print_vector_warnings(const std::vector<std::string> &warnings)
{
    const size_t shown = 20;
    for (size_t i = 0; i < warnings.size() && i < shown; i++) console_printf("import_vector: %s\n", warnings[i].c_str());
    if (warnings.size() > shown) console_printf("import_vector: ... and %lu more notes\n", (unsigned long)(warnings.size() - shown));
}

/* Moves the holder's children to the end of the world's and frees it. */
static void attach_to_world(Object *holder)
{
    List *tail = world->kids ? list_end(world->kids) : nullptr;
    for (List *k = holder->kids; k; k = k->next) {
        Object *kid = (Object *)k->item;
        tail = list_add_item_fast(&world->kids, tail, kid);
        kid->parent = world;
        world->num_kids++;
    }
    list_free(&holder->kids);
    holder->num_kids = 0;
    object_free(holder);
}

/* "import_vector": an SVG drawing as outlines, one undo step. */
int command_import_vector(char *filename)
{
    if (command_lacks_filename(filename, "import_vector")) return command_finish(0);
    display_message("Loading SVG...");
    std::vector<std::string> warnings;
    std::string error;
    Object *holder = read_svg_file(filename, prefs.spline_steps, &warnings, &error);
    print_vector_warnings(warnings);
    if (!holder) {
        console_printf("import_vector: %s: %s\n", filename, error.c_str());
        display_message("import_vector: %s: %s", filename, error.c_str());
        return command_finish(0);
    }
    List *tops = list_clone(holder->kids);
    new_undo(UNDO_PASTE, "import");
    set_undo_objectlist(tops);
    attach_to_world(holder);
    clear_selection();
    set_new_select_mode(SELECT_TREE);
    select_objectlist(tops);
    find_bounding_box();
    selection_publish_counts();
    list_free(&tops);
    redraw_all();
    if (prefs.fit_view_after_load) {
        fit_selected_all();
        fit_3d_view();
    }
    edit_mark_changed();
    if (warnings.empty()) {
        display_message("imported %s", filename);
    } else {
        display_message("imported %s (%lu notes - see the console)", filename, (unsigned long)warnings.size());
    }
    return command_finish(1);
}
