/*
 * fileio/vk_document.cpp - the model as a document: the file it was
 * opened from or saved to, and the commands that replace or extend the
 * model from a file only once that file has been read whole.
 *
 * Every file is read first into a holder object that is not part of the
 * model.  A file that can't be opened, is not a model, is from a newer
 * version or ends before its last object block leaves the model, its
 * palette, its file name, its unsaved state and its undo history exactly
 * as they were;
 * only a whole file takes the model's place ("open_vk", "revert_vk",
 * "open_backup_vk") or joins it as one undoable step ("merge_vk").
 * "new_model" starts an empty model with no file and nothing unsaved.
 */
#include "app/commands.h"
#include "view/camera_fit.h"
#include "fileio/vk_document.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "core/internal.h"
#include "core/lights.h"
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "fileio/vk_file.h"
#include "fileio/vk_recovery.h"
#include "platform/safe_file.h"
#include "view/redraw.h"

#include <cassert>
#include <cstring>
#include <string>
#include <unistd.h>

static int has_file_name(void)
{
    return current_file_name && *current_file_name;
}

std::string backup_file_name(const char *path)
{
    char target[4096];
    if (!path) return "~";
    if (!safe_file_resolve(path, target, sizeof target)) return std::string(path) + "~";
    return std::string(target) + "~";
}

/* ---- reading a whole file aside ---- */

/* A holder placed like the world, so that what is read into it lands
 * where it would have landed in the world. */
static Object *new_holder(void)
{
    Object *holder = new_object(OBJECT_GROUP);
    if (!holder) return nullptr;
    memcpy(holder->rotation, world->rotation, sizeof holder->rotation);
    memcpy(holder->centre, world->centre, sizeof holder->centre);
    return holder;
}

static void report_incomplete(const char *action, const char *filename, const VkLoadReport &report)
{
    windows_message_dialog("%s:\n\nThe file '%s' ends before the model in it is complete (after line %ld).\n"
                           "It may be cut short or damaged, so it was not opened.\n\n"
                           "The model you have open is unchanged.",
                           action, filename, report.lines);
}

/* Reads the whole file into a new holder; null (after telling the user)
 * when it could not be read whole.  The model is not touched either way. */
static Object *read_whole_file(const char *filename, const char *action, VkLoadReport *report)
{
    Object *holder = new_holder();
    if (!holder) {
        windows_message_dialog("%s:\n\nThere is not enough memory to read '%s'.", action, filename);
        return nullptr;
    }
    int palette_before = num_palette;
    if (readfile_vk_detached(filename, holder, report)) return holder;
    object_free(holder);
    palette_truncate(palette_before);
    set_progress_bar(0);
    if (!report->refused) report_incomplete(action, filename, *report);
    display_message("%s: %s was not read - the model is unchanged", action, filename);
    return nullptr;
}

/* ---- replacing and extending the model ---- */

static void take_string(char **to, char **from)
{
    myfree(*to);
    *to = *from;
    *from = nullptr;
}

/* Makes the holder's contents the model: its children, its own vertices
 * and surfaces and its world lines (name, data, url, texture).  The world
 * record stays, so that scripts' ids for it stay valid.  The holder is
 * freed. */
static void replace_model(Object *holder)
{
    clear_world_contents();
    world->kids = holder->kids;
    world->num_kids = holder->num_kids;
    for (List *k = world->kids; k; k = k->next) ((Object *)k->item)->parent = world;
    world->vertices = holder->vertices;
    world->num_vert = holder->num_vert;
    world->surfaces = holder->surfaces;
    world->num_surf = holder->num_surf;
    take_string(&world->name, &holder->name);
    take_string(&world->data, &holder->data);
    take_string(&world->url, &holder->url);
    world->texture = holder->texture;
    world->texture_repeat_x = holder->texture_repeat_x;
    world->texture_repeat_y = holder->texture_repeat_y;
    holder->kids = holder->vertices = holder->surfaces = nullptr;
    holder->num_kids = holder->num_vert = holder->num_surf = 0;
    object_free(holder);
    scan_lights();
}

/* Geometry the file gave its world line would be merged straight into
 * the world, where undo could not find it; it becomes an object of its
 * own instead. */
static void wrap_world_geometry(Object *holder, const char *filename)
{
    if (holder->num_vert == 0 && holder->num_surf == 0) return;
    Object *o = new_object(OBJECT_NORMAL);
    if (!o) return;
    o->vertices = holder->vertices;
    o->num_vert = holder->num_vert;
    o->surfaces = holder->surfaces;
    o->num_surf = holder->num_surf;
    holder->vertices = holder->surfaces = nullptr;
    holder->num_vert = holder->num_surf = 0;
    const char *slash = strrchr(filename, '/');
    object_set_name(o, slash ? slash + 1 : filename);
    object_calculate_centre(o);
    object_add_child(holder, o);
}

/* Moves the holder's children to the end of the world's, keeping their
 * order, and frees the holder. */
static void append_to_world(Object *holder)
{
    if (holder->kids) {
        for (List *k = holder->kids; k; k = k->next) ((Object *)k->item)->parent = world;
        if (world->kids) list_end(world->kids)->next = holder->kids;
        else world->kids = holder->kids;
        world->num_kids += holder->num_kids;
    }
    holder->kids = nullptr;
    holder->num_kids = 0;
    object_free(holder);
    scan_lights();
}

/* Selects the objects just read and shows them, as loading does. */
static void show_loaded(List *tops)
{
    clear_selection();
    set_new_select_mode(SELECT_TREE);
    if (tops) select_objectlist(tops);
    find_bounding_box();
    selection_publish_counts();
    redraw_all();
    if (prefs.fit_view_after_load && tops) {
        fit_selected_all();
        fit_3d_view();
    }
    display_status();
}

/* The closing message of a read: what was done, and what the reader
 * skipped, if anything. */
static void tell_done(const char *done, const VkLoadReport &report)
{
    if (report.problems == 0) {
        display_message("%s", done);
        return;
    }
    display_message("%s - %ld problem%s in the file %s skipped (see the console)", done, report.problems,
                    report.problems == 1 ? "" : "s", report.problems == 1 ? "was" : "were");
}

/* Reads the file and, when it was read whole, makes it the model. */
static int open_in_place(const char *filename, const char *action, VkLoadReport *report)
{
    Object *holder = read_whole_file(filename, action, report);
    if (!holder) return 0;
    replace_model(holder);
    show_loaded(world->kids);
    /* Unsaved work kept for recovery was given up with the model. */
    recovery_discard_own();
    return 1;
}

/* ---- the commands ---- */

int command_open_vk(char *filename)
{
    if (command_lacks_filename(filename, "open_vk")) return command_finish(0);
    return command_finish(open_model_file(filename));
}

int command_merge_vk(char *filename)
{
    if (command_lacks_filename(filename, "merge_vk")) return command_finish(0);
    VkLoadReport report;
    Object *holder = read_whole_file(filename, "Merge VESK file", &report);
    if (!holder) return command_finish(0);
    wrap_world_geometry(holder, filename);
    if (!holder->kids) {
        object_free(holder);
        display_message("merge: %s holds no objects - nothing was added", filename);
        return command_finish(1);
    }
    List *tops = list_clone(holder->kids);
    new_undo(UNDO_PASTE, "merge");
    set_undo_objectlist(tops);
    append_to_world(holder);
    show_loaded(tops);
    edit_mark_changed();
    int n = (int)list_count(tops);
    list_free(&tops);
    std::string done = "merged " + std::string(filename) + ": " + std::to_string(n) + (n == 1 ? " object" : " objects") + " added";
    tell_done(done.c_str(), report);
    return command_finish(1);
}

int command_new_model(void)
{
    clear_world_contents();
    recovery_discard_own();
    selection_publish_counts();
    set_current_file_name("");
    set_unsaved_changes(0);
    redraw_all();
    display_status();
    display_message("new model");
    return command_finish(1);
}

int command_revert_vk(void)
{
    if (!has_file_name()) {
        windows_message_dialog("Revert to saved:\n\nThis model has never been saved, so there is no file to "
                               "revert to.");
        display_message("revert: the model has never been saved");
        return command_finish(0);
    }
    std::string file = current_file_name;
    VkLoadReport report;
    if (!open_in_place(file.c_str(), "Revert to saved", &report)) return command_finish(0);
    set_unsaved_changes(0);
    tell_done(("reverted to " + file).c_str(), report);
    return command_finish(1);
}

int command_open_backup_vk(void)
{
    if (!has_file_name()) {
        windows_message_dialog("Open backup:\n\nThis model has never been saved, so it has no backup.");
        display_message("open backup: the model has never been saved");
        return command_finish(0);
    }
    std::string file = current_file_name;
    std::string backup = backup_file_name(file.c_str());
    if (access(backup.c_str(), F_OK) != 0) {
        windows_message_dialog("Open backup:\n\nThere is no backup of '%s' ('%s' does not exist).\n"
                               "A backup is kept each time the model is saved over its file.",
                               file.c_str(), backup.c_str());
        display_message("open backup: %s does not exist", backup.c_str());
        return command_finish(0);
    }
    VkLoadReport report;
    if (!open_in_place(backup.c_str(), "Open backup", &report)) return command_finish(0);
    /* The backup is an older version of the model's file: saving puts it
     * back there. */
    set_unsaved_changes(1);
    display_message("opened the backup %s - save to make it %s again", backup.c_str(), file.c_str());
    return command_finish(1);
}

int open_recovered(const char *path, const char *model_file)
{
    VkLoadReport report;
    if (!open_in_place(path, "Recover unsaved work", &report)) return 0;
    set_current_file_name(model_file);
    set_unsaved_changes(1);
    display_message("recovered the unsaved work of %s - save it to keep it", *model_file ? model_file : "an untitled model");
    return 1;
}

int open_model_file(const char *filename)
{
    assert(filename);
    VkLoadReport report;
    if (!open_in_place(filename, "Open VESK file", &report)) return 0;
    set_current_file_name(filename);
    set_unsaved_changes(0);
    tell_done(("opened " + std::string(filename)).c_str(), report);
    return 1;
}
