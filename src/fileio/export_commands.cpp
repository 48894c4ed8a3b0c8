/*
 * fileio/export_commands.cpp - the commands "write_vrml2", "write_vrml",
 * "write_inventor" and "write_tri": each writes the whole model, leaves
 * "1" (written) or "0" as its command result, and says on the status line
 * what was written and, once, what the format had to leave out.
 */
#include "app/commands.h"
#include "fileio/tri_file.h"
#include "fileio/vrml_writer.h"

#include <string>
#include <vector>

/* What a triangle file cannot keep of this model: more than one object,
 * names, textures or texture coordinates. */
static int model_has_more_than_triangles(void)
{
    std::vector<Object *> stack;
    for (List *k = world ? world->kids : nullptr; k; k = k->next) stack.push_back((Object *)k->item);
    size_t objects = stack.size();
    while (!stack.empty()) {
        Object *o = stack.back();
        stack.pop_back();
        if ((o->name && o->name[0]) || o->texture || o->kids) return 1;
        for (List *l = o->surfaces; l; l = l->next) {
            for (List *r = ((Surface *)l->item)->vertrefs; r; r = r->next) {
                SVertex *ref = (SVertex *)r->item;
                if (ref->u != 0.0f || ref->v != 0.0f) return 1;
            }
        }
        for (List *k = o->kids; k; k = k->next) stack.push_back((Object *)k->item);
    }
    return objects > 1;
}

static std::string export_notes_text(const char *format)
{
    std::string notes;
    char buffer[256];
    if (export_notes.line_surfaces_left_out) {
        snprintf(buffer, sizeof buffer, "%s leaves out %ld line surfaces", format,
                 export_notes.line_surfaces_left_out);
        notes += buffer;
    }
    if (export_notes.mixed_objects) {
        snprintf(buffer, sizeof buffer, "%ld objects have both polygons and lines, which some programs can't read",
                 export_notes.mixed_objects);
        notes += notes.empty() ? "" : "; ";
        notes += buffer;
    }
    if (export_notes.surfaces_ignored) {
        snprintf(buffer, sizeof buffer, "%ld surfaces with fewer than 3 corners or no triangulation left out",
                 export_notes.surfaces_ignored);
        notes += notes.empty() ? "" : "; ";
        notes += buffer;
    }
    return notes;
}

int run_export_command(char *filename, const char *command, const char *format, int (*writer)(const char *),
                       std::string (*notes)(const char *format))
{
    if (command_lacks_filename(filename, command)) return command_finish(0);
    display_message("writing %s file %s...", format, filename);
    if (!writer(filename)) {
        display_message("%s export failed: can't write %s - see the console; an earlier file is unchanged", format,
                        filename);
        return command_finish(0);
    }
    std::string left_out = notes(format);
    if (left_out.empty()) {
        display_message("written %s file %s", format, filename);
    } else {
        display_message("written %s file %s (%s)", format, filename, left_out.c_str());
    }
    return command_finish(1);
}

/* A triangle file also loses everything but the triangles. */
static std::string tri_notes_text(const char *format)
{
    std::string notes = export_notes_text(format);
    if (model_has_more_than_triangles()) {
        notes += notes.empty() ? "" : "; ";
        notes += "triangle file keeps no hierarchy, names or texture coordinates";
    }
    return notes;
}

int command_write_vrml2(char *filename)
{
    return run_export_command(filename, "write_vrml2", "VRML 2.0", write_vrml2, export_notes_text);
}

int command_write_vrml(char *filename)
{
    return run_export_command(filename, "write_vrml", "VRML 1.0", write_vrml1, export_notes_text);
}

int command_write_inventor(char *filename)
{
    return run_export_command(filename, "write_inventor", "Inventor", write_inventor, export_notes_text);
}

int write_tri(char *filename)
{
    return run_export_command(filename, "write_tri", "triangle", write_tri_file, tri_notes_text);
}
