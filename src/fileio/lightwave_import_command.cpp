/*
 * fileio/lightwave_import_command.cpp - the "import_lightwave" command:
 * reads a LightWave object (LWOB, LWO2) or scene (LWSC), told apart by
 * the file's first bytes, into a detached group and, when it was read,
 * adds the group to the world as one undoable step and selects it.  A
 * file that cannot be read changes nothing and says why.
 */
#include "fileio/lightwave.h"
#include "fileio/import_support.h"
#include "app/commands.h"

#include <cstdio>
#include <cstring>

long lw_file_limit = LW_MAX_FILE_BYTES;

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

int command_import_lightwave(char *filename)
{
    if (command_lacks_filename(filename, "import_lightwave")) return command_finish(0);
    display_message("Loading LightWave...");
    std::string bytes, error;
    if (!import_read_file(filename, lw_file_limit, &bytes, &error)) return import_refused("import_lightwave", filename, error);
    LwResult result;
    lw_read_bytes((const uint8_t *)bytes.data(), bytes.size(), filename, import_name_of(filename, "lightwave").c_str(), &result);
    for (const std::string &w : result.warnings) console_printf("import_lightwave: %s: %s\n", filename, w.c_str());
    if (!result.root) return import_refused("import_lightwave", filename, result.error);
    import_attach_as_step(result.root, "import LightWave");
    std::string notes;
    if (result.skipped > 0) notes += ", " + std::to_string(result.skipped) + " curve or other polygon lists skipped";
    if (!result.warnings.empty()) notes += ", " + std::to_string(result.warnings.size()) + " problems (see the console)";
    display_message("imported %s: %ld polygons and lines in %ld objects%s", filename, result.polygons,
                    result.objects, notes.c_str());
    return command_finish(1);
}
