/*
 * fileio/dxf_import_command.cpp - the "import_dxf" command: reads a DXF
 * file into a detached drawing object and, when the whole file was read,
 * adds it to the world as one undoable step and selects it.  A file that
 * cannot be read changes nothing and says why on the status line.
 */
#include "fileio/dxf_reader.h"
#include "fileio/import_support.h"
#include "app/commands.h"

#include <cstdio>
#include <string>

/* Text DXF runs to a few hundred bytes a face: a gigabyte is far beyond
 * any drawing a modeller can take in. */
static const long DXF_MAX_FILE_BYTES = 1L << 30;

int command_import_dxf(char *filename)
{
    if (command_lacks_filename(filename, "import_dxf")) return command_finish(0);
    if (!dxf_reader_available()) {
        return import_refused("import_dxf", filename,
                              "this VESK was built without libdxflib (Debian package libdxflib-dev)");
    }
    display_message("Loading DXF...");
    std::string text, error;
    if (!import_read_file(filename, DXF_MAX_FILE_BYTES, &text, &error))
        return import_refused("import_dxf", filename, error);
    DxfResult result;
    read_dxf_text(text.c_str(), text.size(), import_name_of(filename, "dxf").c_str(), &result);
    if (!result.drawing) return import_refused("import_dxf", filename, result.error);
    long layers = (long)result.drawing->num_kids;
    import_attach_as_step(result.drawing, "import DXF");
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
