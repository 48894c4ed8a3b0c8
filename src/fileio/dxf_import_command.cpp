/*
 * fileio/dxf_import_command.cpp - the "import_dxf" command: reads a DXF
 * file into a detached drawing object and, when the whole file was read,
 * adds it to the world as one undoable step and selects it.  A file that
 * cannot be read changes nothing and says why on the status line.
 */
#include "fileio/dxf_reader.h"
#include "app/commands.h"
#include "app/prefs.h"
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "view/camera_fit.h"
#include "view/redraw.h"

#include <cstdio>
#include <string>

/* The file's name without its directories and suffix names the drawing. */
static std::string drawing_name(const char *filename)
{
    std::string name = filename;
    size_t slash = name.find_last_of('/');
    if (slash != std::string::npos) name = name.substr(slash + 1);
    size_t dot = name.find_last_of('.');
    if (dot != std::string::npos && dot > 0) name = name.substr(0, dot);
    return name.empty() ? std::string("dxf") : name;
}

static bool read_whole(const char *filename, std::string *text, std::string *error)
{
    FILE *file = fopen(filename, "rb");
    if (!file) {
        *error = "can't open the file for reading";
        return false;
    }
    char buffer[65536];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, file)) > 0) text->append(buffer, n);
    bool failed = ferror(file);
    fclose(file);
    if (failed) *error = "error reading the file";
    return !failed;
}

static int import_failed(const char *filename, const std::string &why)
{
    console_printf("import_dxf: %s: %s\n", filename, why.c_str());
    display_message("import_dxf: %s: %s - nothing was imported", filename, why.c_str());
    return command_finish(0);
}

/* Adds the drawing to the world as one step that undo takes out again. */
static void attach_drawing(Object *drawing)
{
    List *made = nullptr;
    list_add_item(&made, drawing);
    new_undo(UNDO_PASTE, "import DXF");
    set_undo_objectlist(made);
    List *tail = world->kids ? list_end(world->kids) : nullptr;
    list_add_item_fast(&world->kids, tail, drawing);
    drawing->parent = world;
    world->num_kids++;
    clear_selection();
    set_new_select_mode(SELECT_TREE);
    select_objectlist(made);
    find_bounding_box();
    selection_publish_counts();
    list_free(&made);
    edit_mark_changed();
    redraw_all();
    if (prefs.fit_view_after_load) {
        fit_selected_all();
        fit_3d_view();
    }
    display_status();
}

int command_import_dxf(char *filename)
{
    if (command_lacks_filename(filename, "import_dxf")) return command_finish(0);
    if (!dxf_reader_available()) {
        return import_failed(filename, "this VESK was built without libdxflib (Debian package libdxflib-dev)");
    }
    display_message("Loading DXF...");
    std::string text, error;
    if (!read_whole(filename, &text, &error)) return import_failed(filename, error);
    DxfResult result;
    read_dxf_text(text.c_str(), text.size(), drawing_name(filename).c_str(), &result);
    if (!result.drawing) return import_failed(filename, result.error);
    long layers = (long)result.drawing->num_kids;
    attach_drawing(result.drawing);
    if (result.skipped > 0) {
        console_printf("import_dxf: %s: %ld entities of kinds not read or unusable were skipped\n", filename,
                       result.skipped);
        display_message("imported %s: %ld entities on %ld layers, %ld skipped (see the console)", filename,
                        result.entities, layers, result.skipped);
    } else {
        display_message("imported %s: %ld entities on %ld layers", filename, result.entities, layers);
    }
    return command_finish(1);
}
