/*
 * fileio/lightwave_import_command.cpp - the "import_lightwave" command:
 * reads a LightWave object (LWOB, LWO2) or scene (LWSC), told apart by
 * the file's first bytes, into a detached group and, when it was read,
 * adds the group to the world as one undoable step and selects it.  A
 * file that cannot be read changes nothing and says why.
 */
#include "fileio/lightwave.h"
#include "app/commands.h"
#include "app/prefs.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "view/camera_fit.h"
#include "view/redraw.h"

#include <cstdio>
#include <cstring>
#include <sys/stat.h>

long lw_file_limit = LW_MAX_FILE_BYTES;

bool lw_read_file(const char *path, long limit, std::string *bytes, std::string *error)
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

static bool is_scene(const uint8_t *bytes, size_t size)
{
    size_t i = 0;
    if (size >= 3 && memcmp(bytes, "\xEF\xBB\xBF", 3) == 0) i = 3;
    while (i < size && (bytes[i] == ' ' || bytes[i] == '\t' || bytes[i] == '\r' || bytes[i] == '\n')) i++;
    return size - i >= 4 && memcmp(bytes + i, "LWSC", 4) == 0;
}

void lw_read_bytes(const uint8_t *bytes, size_t size, const char *path, const char *name, LwResult *result)
{
    if (size >= 12 && memcmp(bytes, "FORM", 4) == 0) {
        LwModel model;
        if (!lw_parse_object(bytes, size, &model, &result->error)) return;
        std::vector<LwColouring> colours;
        result->root = lw_build_model(model, name, lw_identity(), -1, &colours);
        if (!result->root) {
            result->error = "the object holds no polygons or lines";
            return;
        }
        lw_apply_colours(colours);
        result->polygons = lw_count_surfaces(result->root, &result->objects);
        result->skipped = model.skipped;
        return;
    }
    if (is_scene(bytes, size)) {
        size_t start = 0;
        while (start < size && bytes[start] != 'L') start++;
        lw_read_scene((const char *)bytes + start, size - start, path, name, result);
        return;
    }
    result->error = "not a LightWave object (FORM ... LWOB or LWO2) or scene (LWSC)";
}

/* The file's name without its directories and suffix names the group. */
static std::string group_name(const char *filename)
{
    std::string name = filename;
    size_t slash = name.find_last_of('/');
    if (slash != std::string::npos) name = name.substr(slash + 1);
    size_t dot = name.find_last_of('.');
    if (dot != std::string::npos && dot > 0) name = name.substr(0, dot);
    return name.empty() ? std::string("lightwave") : name;
}

static int import_failed(const char *filename, const std::string &why)
{
    console_printf("import_lightwave: %s: %s\n", filename, why.c_str());
    display_message("import_lightwave: %s: %s - nothing was imported", filename, why.c_str());
    return command_finish(0);
}

/* Adds the group to the world as one step that undo takes out again. */
static void attach_group(Object *group)
{
    List *made = nullptr;
    list_add_item(&made, group);
    new_undo(UNDO_PASTE, "import LightWave");
    set_undo_objectlist(made);
    List *tail = world->kids ? list_end(world->kids) : nullptr;
    list_add_item_fast(&world->kids, tail, group);
    group->parent = world;
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

int command_import_lightwave(char *filename)
{
    if (command_lacks_filename(filename, "import_lightwave")) return command_finish(0);
    display_message("Loading LightWave...");
    std::string bytes, error;
    if (!lw_read_file(filename, lw_file_limit, &bytes, &error)) return import_failed(filename, error);
    LwResult result;
    lw_read_bytes((const uint8_t *)bytes.data(), bytes.size(), filename, group_name(filename).c_str(), &result);
    for (const std::string &w : result.warnings) console_printf("import_lightwave: %s: %s\n", filename, w.c_str());
    if (!result.root) return import_failed(filename, result.error);
    attach_group(result.root);
    std::string notes;
    if (result.skipped > 0) notes += ", " + std::to_string(result.skipped) + " curve or other polygon lists skipped";
    if (!result.warnings.empty()) notes += ", " + std::to_string(result.warnings.size()) + " problems (see the console)";
    display_message("imported %s: %ld polygons and lines in %ld objects%s", filename, result.polygons,
                    result.objects, notes.c_str());
    return command_finish(1);
}
