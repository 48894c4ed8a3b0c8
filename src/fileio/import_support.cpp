/*
 * fileio/import_support.cpp - reading, naming, refusing and attaching
 * for the importers (see import_support.h).
 */
#include "fileio/import_support.h"
#include "app/commands.h"
#include "app/prefs.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "view/camera_fit.h"
#include "view/redraw.h"

#include <cstdio>
#include <sys/stat.h>

bool import_read_file(const char *path, long limit, std::string *bytes, std::string *error)
{
    struct stat st;
    if (stat(path, &st) != 0) {
        *error = "can't open the file for reading";
        return false;
    }
    if (!S_ISREG(st.st_mode)) {
        *error = "not a regular file";
        return false;
    }
    FILE *file = fopen(path, "rb");
    if (!file) {
        *error = "can't open the file for reading";
        return false;
    }
    char buffer[65536];
    size_t n;
    bool too_big = false;
    while ((n = fread(buffer, 1, sizeof buffer, file)) > 0) {
        if ((long)(bytes->size() + n) > limit) {
            too_big = true;
            break;
        }
        bytes->append(buffer, n);
    }
    bool failed = ferror(file);
    fclose(file);
    if (too_big) {
        *error = "the file is larger than " + std::to_string(limit) + " bytes";
        return false;
    }
    if (failed) *error = "error reading the file";
    return !failed;
}

std::string import_name_of(const char *filename, const char *fallback)
{
    std::string name = filename;
    size_t slash = name.find_last_of('/');
    if (slash != std::string::npos) name = name.substr(slash + 1);
    size_t dot = name.find_last_of('.');
    if (dot != std::string::npos && dot > 0) name = name.substr(0, dot);
    return name.empty() ? std::string(fallback) : name;
}

int import_refused(const char *command, const char *filename, const std::string &why)
{
    console_printf("%s: %s: %s\n", command, filename, why.c_str());
    display_message("%s: %s: %s - nothing was imported", command, filename, why.c_str());
    return command_finish(0);
}

void import_attach_as_step(Object *top, const char *undo_label)
{
    List *made = nullptr;
    list_add_item(&made, top);
    new_undo(UNDO_PASTE, undo_label);
    set_undo_objectlist(made);
    List *tail = world->kids ? list_end(world->kids) : nullptr;
    list_add_item_fast(&world->kids, tail, top);
    top->parent = world;
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
