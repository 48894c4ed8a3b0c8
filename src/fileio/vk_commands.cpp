/*
 * fileio/vk_commands.cpp - the commands "load_vk", "save_vk" and
 * "save_selection_vk": the model file reader and writer as the user
 * interface and scripts call them.  Each leaves "1" (done) or "0" (not
 * done) as its command result.
 */
#include "app/commands.h"
#include "app/linked_vars.h"
#include "app/shared_state.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "fileio/vk_document.h"
#include "fileio/vk_file.h"
#include "fileio/vk_recovery.h"
#include "app/prefs.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <unordered_set>

/* How much of the model there is, to tell whether a load changed it. */
static unsigned long model_size(void)
{
    return (unsigned long)world->num_kids + world->num_vert + world->num_surf;
}

/* The world's children from the node after tail on (all of them when
 * tail is null). */
static List *children_after(List *tail)
{
    List *from = tail ? tail->next : world->kids;
    return list_clone(from);
}

/* Makes a load into a model that held something one undo step, which
 * takes the loaded objects out again and gives back the selection of
 * before the load. */
static void record_load_undo(List *loaded, List *vertices_before, List *objects_before, int mode_before)
{
    if (!loaded) return;
    new_undo(UNDO_PASTE, "load");
    set_undo_objectlist(loaded);
    set_undo_selection(vertices_before, objects_before, 0);
    UndoRecord *r = undo_current();
    if (r) r->select_mode = mode_before;
}

/* The status line after a load: what was read and what went wrong. */
static void report_load(const char *filename, int ok, const VkLoadReport &report)
{
    if (report.refused) return;
    const char *plural = report.problems == 1 ? "" : "s";
    if (!ok || !report.complete) {
        display_message("%s was not read completely: the file is cut short or damaged (%ld problem%s, see the "
                        "console) - what was read is in the model",
                        filename, report.problems, plural);
        return;
    }
    if (report.problems > 0) {
        display_message("loaded %s - %ld problem%s in the file %s skipped (see the console)", filename,
                        report.problems, plural, report.problems == 1 ? "was" : "were");
        return;
    }
    display_message("loaded %s", filename);
}

int command_load_vk_object(char *filename)
{
    if (command_lacks_filename(filename, "load_vk")) return command_finish(0);
    int was_empty = model_size() == 0;
    unsigned long before = model_size();
    List *last_child = world->kids ? list_end(world->kids) : nullptr;
    List *vertices_before = was_empty ? nullptr : list_clone(selection.selected_vertices);
    List *objects_before = was_empty ? nullptr : list_clone(selection.selected_objects);
    int mode_before = selection.select_mode;
    int ok = readfile_vk(filename, world, 1);
    /* A load into an empty world replaces the model: the history of the
     * model before it goes. */
    if (was_empty) {
        clear_all_undos();
    } else {
        List *loaded = children_after(last_child);
        record_load_undo(loaded, vertices_before, objects_before, mode_before);
        list_free(&loaded);
    }
    list_free(&vertices_before);
    list_free(&objects_before);
    VkLoadReport report;
    readfile_vk_last_report(&report);
    if (ok) {
        /* The model is the file only when it was empty before. */
        set_unsaved_changes(was_empty ? 0 : 1);
    } else if (model_size() != before) {
        set_unsaved_changes(1);
    }
    report_load(filename, ok, report);
    return command_finish(ok);
}

static void report_save_failure(const char *filename, int error)
{
    windows_message_dialog("Save VESK file:\n\ncan't write file %s\n%s\nThe previous file (if any) is unchanged.",
                           filename, strerror(error));
    display_message("save failed: %s", filename);
}

/* Tells the user, in a message box and on the status line, which names
 * and urls the file can't give back as they are.  Returns 1 when there
 * were any. */
static int report_altered_texts(const char *filename)
{
    std::vector<std::string> altered;
    write_vk_altered_texts(&altered);
    if (altered.empty()) return 0;
    std::string list;
    size_t shown = altered.size() < 10 ? altered.size() : 10;
    for (size_t i = 0; i < shown; i++) list += "  " + altered[i] + "\n";
    if (altered.size() > shown) list += "  and " + std::to_string(altered.size() - shown) + " more\n";
    windows_message_dialog("Save VESK file:\n\n%s was saved, but %zu text%s will not read back as %s:\n\n%s\n"
                           "Shorten them (and take out line breaks) and save again to keep them whole.",
                           filename, altered.size(), altered.size() == 1 ? "" : "s",
                           altered.size() == 1 ? "it is" : "they are", list.c_str());
    display_message("saved %s - %zu name%s or url%s will not read back as they are (see the message)", filename,
                    altered.size(), altered.size() == 1 ? "" : "s", altered.size() == 1 ? "" : "s");
    return 1;
}

/* Saves the model, keeping the file it replaces as filename~ when the
 * preference asks for it. */
static int save_whole_model(const char *filename, int *backup_error)
{
    *backup_error = 0;
    if (!prefs.backup_on_save) return write_vk(filename);
    return write_vk_keeping_backup(filename, backup_error);
}

int command_save_vk(char *filename)
{
    if (command_lacks_filename(filename, "save_vk")) return command_finish(0);
    display_message("saving %s...", filename);
    int backup_error = 0;
    if (!save_whole_model(filename, &backup_error)) {
        report_save_failure(filename, errno);
        return command_finish(0);
    }
    set_unsaved_changes(0);
    recovery_discard_own();
    int altered = report_altered_texts(filename);
    if (backup_error) {
        /* The missing backup matters more than the texts on the status
         * line; the texts have their message box. */
        std::string backup = backup_file_name(filename);
        console_printf("save_vk: couldn't keep the previous %s as %s: %s\n", filename, backup.c_str(),
                       strerror(backup_error));
        display_message("saved %s - but no backup could be kept (%s: %s)", filename, backup.c_str(),
                        strerror(backup_error));
        return command_finish(1);
    }
    if (!altered) display_message("saved %s", filename);
    return command_finish(1);
}

/* The selected objects that have no selected ancestor, in selection
 * order: each is saved with its whole subtree.  In vertex mode the
 * objects that own selected vertices are saved. */
static List *selected_roots(void)
{
    List *chosen = selection.select_mode == SELECT_VERTEX ? selection.part_selected_objects
                                                          : selection.selected_objects;
    std::unordered_set<Object *> set;
    for (List *l = chosen; l; l = l->next) set.insert((Object *)l->item);
    List *roots = nullptr, *tail = nullptr;
    for (List *l = chosen; l; l = l->next) {
        Object *o = (Object *)l->item;
        if (o == world) continue;
        Object *up = o->parent;
        while (up && !set.count(up)) up = up->parent;
        if (!up) tail = list_add_item_fast(&roots, tail, o);
    }
    return roots;
}

int command_save_selection_vk(char *filename)
{
    if (command_lacks_filename(filename, "save_selection_vk")) return command_finish(0);
    List *roots = selected_roots();
    if (!roots) {
        display_message("save_selection_vk: nothing is selected");
        return command_finish(0);
    }
    int ok = write_vk_objects(filename, roots);
    int error = errno;
    list_free(&roots);
    if (!ok) {
        report_save_failure(filename, error);
        return command_finish(0);
    }
    display_message("saved the selection in %s", filename);
    return command_finish(1);
}
