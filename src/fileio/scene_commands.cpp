/*
 * fileio/scene_commands.cpp - the commands "write_POV", "write_rib",
 * "write_dive", "write_massive" and "write_dvs": each writes the whole
 * model, leaves "1" (written) or "0" as its command result, and says on
 * the status line what was written and what the format had to leave out.
 */
#include "app/commands.h"
#include "fileio/scene_writers.h"
#include "fileio/exchange_commands.h"

#include <string>

static std::string scene_notes_text(void)
{
    std::string notes;
    char buffer[160];
    const struct {
        long count;
        const char *what;
    } items[] = {
        {scene_notes.polygons_skipped, "polygons with fewer than 3 corners left out"},
        {scene_notes.lines_skipped, "line surfaces left out"},
        {scene_notes.textures_skipped, "textures the format can't use left out"},
    };
    for (const auto &item : items) {
        if (!item.count) continue;
        snprintf(buffer, sizeof buffer, "%ld %s", item.count, item.what);
        notes += notes.empty() ? "" : "; ";
        notes += buffer;
    }
    return notes;
}

static int run_scene_export(char *filename, const char *command, const char *format, int (*writer)(const char *))
{
    return run_export_command(filename, command, format, writer, [](const char *) { return scene_notes_text(); });
}

int write_POV(char *filename)
{
    return run_scene_export(filename, "write_POV", "POV-Ray", write_pov_file);
}

int write_rib(char *filename)
{
    return run_scene_export(filename, "write_rib", "RenderMan", write_rib_file);
}

int command_write_dive(char *filename)
{
    return run_scene_export(filename, "write_dive", "DIVE", write_dive_file);
}

int command_write_massive(char *filename)
{
    return run_scene_export(filename, "write_massive", "MASSIVE", write_massive_file);
}

int command_write_dvs(char *filename)
{
    return run_scene_export(filename, "write_dvs", "DVS", write_dvs_file);
}
