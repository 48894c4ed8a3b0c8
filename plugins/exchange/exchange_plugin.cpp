/*
 * exchange_plugin.cpp - the entry point of the model exchange plug-in and
 * its commands: "import_model <file>" (any format libassimp reads, added
 * to the model as one undoable step), "export_model <file> ?format?" (an
 * assimp exporter id, by default the one for the file's suffix), and the
 * dialog commands behind the File > Import and File > Export entries.
 */
#include "exchange.h"

#include <string>

/* ---- import ---- */

/* Hangs the holder's children under the world (one walk to the world's
 * last child, however many arrive) and frees the empty holder. */
static void attach_to_world(Object *holder)
{
    Object *w = vk_get_world();
    List *tail = w->kids ? list_end(w->kids) : nullptr;
    for (List *k = holder->kids; k; k = k->next) {
        Object *o = (Object *)k->item;
        tail = list_add_item_fast(&w->kids, tail, o);
        o->parent = w;
        w->num_kids++;
    }
    list_free(&holder->kids);
    holder->num_kids = 0;
    object_free(holder);
}

static int command_import_model(char *filename)
{
    if (!filename || !*filename) {
        display_message("import_model: no file name given - usage: import_model <file>");
        return command_finish(0);
    }
    display_message("import %s...", filename);
    ImportCounts counts;
    std::string error;
    Object *holder = exchange_read_file(filename, &counts, &error);
    if (!holder) {
        display_message("%s - the model is unchanged", error.c_str());
        return command_finish(0);
    }
    if (!holder->kids) {
        object_free(holder);
        display_message("can't import %s: it holds nothing to show - the model is unchanged", filename);
        return command_finish(0);
    }
    List *tops = list_clone(holder->kids);
    new_undo(VK_UNDO_ADDED_OBJECTS, "import");
    set_undo_objectlist(tops);
    attach_to_world(holder);
    clear_selection();
    select_objectlist(tops);
    list_free(&tops);
    fit_selected_all();
    redraw_all();
    edit_mark_changed();
    std::string points = counts.skipped_points
                             ? ", " + std::to_string(counts.skipped_points) + " single points left out"
                             : std::string();
    display_message("imported %s: %lu objects, %lu vertices, %lu surfaces%s", filename, counts.objects,
                    counts.vertices, counts.surfaces, points.c_str());
    return command_finish(1);
}

static std::string import_suffixes;

static int command_import_model_dialog(void)
{
    const char *filters[] = {"Models (assimp)", import_suffixes.c_str(), "All files", "*", nullptr, nullptr};
    const char *chosen = vk_get_open_filename("Import a model", filters);
    if (!chosen || !*chosen) return command_finish(0);
    std::string file = chosen;   /* the interpreter's result changes under us */
    return command_import_model(&file[0]);
}

/* ---- export ---- */

static int command_export_model(char *filename, char *format)
{
    if (!filename || !*filename) {
        display_message("export_model: no file name given - usage: export_model <file> ?format?");
        return command_finish(0);
    }
    std::string id = format && *format ? format : exchange_format_for_suffix(filename);
    if (id.empty()) {
        display_message("can't export %s: no format for its suffix - name one of: %s", filename,
                        exchange_format_list().c_str());
        return command_finish(0);
    }
    display_message("export %s...", filename);
    ExportCounts counts;
    std::string error;
    if (!exchange_write_file(vk_get_world(), filename, id.c_str(), &counts, &error)) {
        display_message("%s", error.c_str());
        return command_finish(0);
    }
    display_message("exported %s (%s): %lu objects, %lu meshes, %lu vertices, %lu faces", filename, id.c_str(),
                    counts.nodes, counts.meshes, counts.vertices, counts.faces);
    return command_finish(1);
}

struct ExportEntry {
    const char *label;
    const char *format;
    const char *description;
    const char *suffix;
};

static const ExportEntry export_entries[] = {
    {"OBJ (assimp)...", "obj", "Wavefront OBJ files", ".obj"},
    {"STL binary (assimp)...", "stlb", "STL files", ".stl"},
    {"STL ASCII (assimp)...", "stl", "STL files", ".stl"},
    {"PLY (assimp)...", "ply", "PLY files", ".ply"},
    {"glTF 2.0 (assimp)...", "gltf2", "glTF 2.0 files", ".gltf"},
    {"glTF 2.0 binary GLB (assimp)...", "glb2", "glTF 2.0 binary files", ".glb"},
    {"Collada (assimp)...", "collada", "Collada files", ".dae"},
    {"3MF (assimp)...", "3mf", "3MF files", ".3mf"},
};

static int command_export_model_dialog(char *format)
{
    const ExportEntry *entry = nullptr;
    for (const ExportEntry &e : export_entries) {
        if (format && std::string(format) == e.format) entry = &e;
    }
    if (!entry) {
        display_message("export_model_dialog: unknown format '%s'", format ? format : "");
        return command_finish(0);
    }
    const char *filters[] = {entry->description, entry->suffix, "All files", "*", nullptr, nullptr};
    const char *chosen = vk_get_save_filename("Export the model", filters);
    if (!chosen || !*chosen) return command_finish(0);
    std::string file = chosen;
    /* A name typed without a suffix gets the format's. */
    size_t slash = file.rfind('/'), dot = file.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) file += entry->suffix;
    return command_export_model(&file[0], (char *)entry->format);
}

/* ---- start ---- */

extern "C" int vesk_plugin_init(void)
{
    import_suffixes = exchange_import_suffixes();
    vk_add_command_s("import_model", command_import_model, "<file>",
                        "add the models of a file in any format assimp reads (OBJ, FBX, glTF, Collada, PLY, STL...)");
    vk_add_command_so("export_model", command_export_model, "<file> ?format?",
                        "write the model with assimp; format is an exporter id (obj, stlb, stl, ply, gltf2, glb2, "
                        "collada, 3mf...), by default the one for the file's suffix");
    vk_add_command_none("import_model_dialog", command_import_model_dialog, nullptr,
                        "choose a model file of any format assimp reads and add its models");
    vk_add_command_s("export_model_dialog", command_export_model_dialog, "<format>",
                        "choose a file and write the model to it in one of the formats of the Export menu");
    vk_add_import_menu_item("Model: OBJ, FBX, glTF, Collada, PLY, STL... (assimp)...", "vesk import_model_dialog");
    for (const ExportEntry &e : export_entries) {
        std::string command = std::string("vesk export_model_dialog ") + e.format;
        vk_add_export_menu_item(e.label, command.c_str());
    }
    return 1;
}
