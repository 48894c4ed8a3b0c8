/*
 * fileio/vrml_frame.cpp - the frame every VRML and Inventor export runs
 * in: the file goes through a temporary file that is renamed over the
 * target only when everything was written, so a failed export leaves an
 * earlier file as it was.
 */
#include "fileio/vrml_writer.h"
#include "app/prefs.h"
#include "platform/safe_file.h"
#include "vesk.h"

#include <cerrno>
#include <cstring>

ExportNotes export_notes;

int vrml_write_file(const char *filename, void (*body)(FILE *file, void *data), void *data)
{
    SafeFile sf;
    FILE *file = filename ? safe_file_open(&sf, filename) : nullptr;
    if (!file) {
        console_printf("can't open file for writing\n");
        return 0;
    }
    console_printf("Generating VRML ");
    console_printf("(%s, %s)\n", prefs.vrml_output_normals ? "with normals" : "no normals",
                   prefs.vrml_output_textures ? "with texture support" : "no texture support");
    body(file, data);
    if (!safe_file_commit(&sf)) {
        console_printf("can't write file %s: %s\n", filename, strerror(errno));
        return 0;
    }
    console_printf("written file %s\n", filename);
    return 1;
}
