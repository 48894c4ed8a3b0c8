/*
 * exchange_formats.cpp - which formats libassimp reads and writes, as the
 * plug-in names them: exporter ids, the exporter for a file's suffix,
 * formats that hold only triangles, and the suffixes for the import
 * dialog.
 */
#include "exchange.h"

#include <assimp/cexport.h>
#include <assimp/cimport.h>

#include <cctype>
#include <cstring>

/* Suffixes whose exporter is chosen here rather than by assimp's order
 * (".stl" is written binary, ".gltf" as glTF 2.0). */
static const char *const preferred[][2] = {
    {"obj", "obj"},   {"stl", "stlb"},        {"ply", "ply"},  {"gltf", "gltf2"}, {"glb", "glb2"},
    {"dae", "collada"}, {"3mf", "3mf"},       {"fbx", "fbx"},  {"x", "x"},        {"x3d", "x3d"},
    {"3ds", "3ds"},   {"json", "assjson"},    {"pbrt", "pbrt"},
};

enum { MAX_SUFFIX_TEXT = 1400 };

/* Exporters whose files hold nothing but triangles. */
static const char *const triangle_formats[] = {"stl", "stlb", "gltf", "glb", "gltf2", "glb2", "3mf", "3ds", "pbrt"};

static std::string lower(std::string text)
{
    for (char &c : text) c = (char)std::tolower((unsigned char)c);
    return text;
}

static std::string suffix_of(const char *filename)
{
    std::string name = filename ? filename : "";
    size_t slash = name.rfind('/');
    size_t dot = name.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    return lower(name.substr(dot + 1));
}

std::string exchange_format_for_suffix(const char *filename)
{
    std::string suffix = suffix_of(filename);
    if (suffix.empty()) return "";
    for (const auto &p : preferred) {
        if (suffix == p[0]) return exchange_format_known(p[1]) ? p[1] : "";
    }
    size_t n = aiGetExportFormatCount();
    for (size_t i = 0; i < n; i++) {
        const aiExportFormatDesc *d = aiGetExportFormatDescription(i);
        if (!d) continue;
        std::string id = d->id;
        bool match = d->fileExtension && suffix == lower(d->fileExtension);
        aiReleaseExportFormatDescription(d);
        if (match) return id;
    }
    return "";
}

int exchange_format_known(const char *format)
{
    if (!format || !*format) return 0;
    size_t n = aiGetExportFormatCount();
    int found = 0;
    for (size_t i = 0; i < n && !found; i++) {
        const aiExportFormatDesc *d = aiGetExportFormatDescription(i);
        if (!d) continue;
        found = d->id && strcmp(d->id, format) == 0;
        aiReleaseExportFormatDescription(d);
    }
    return found;
}

std::string exchange_format_list(void)
{
    std::string list;
    size_t n = aiGetExportFormatCount();
    for (size_t i = 0; i < n; i++) {
        const aiExportFormatDesc *d = aiGetExportFormatDescription(i);
        if (!d) continue;
        if (!list.empty()) list += " ";
        list += d->id;
        aiReleaseExportFormatDescription(d);
    }
    return list;
}

int exchange_format_needs_triangles(const char *format)
{
    for (const char *f : triangle_formats) {
        if (format && strcmp(f, format) == 0) return 1;
    }
    return 0;
}

std::string exchange_import_suffixes(void)
{
    aiString list;
    aiGetExtensionList(&list);
    /* assimp gives "*.3ds;*.obj;..."; the dialog wants ".3ds .obj ...". */
    std::string text = list.C_Str(), out;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find(';', start);
        if (end == std::string::npos) end = text.size();
        std::string item = text.substr(start, end - start);
        if (item.rfind("*.", 0) == 0) item = item.substr(1);
        /* Only plain suffixes: the text goes into a Tcl command as it is. */
        bool plain = item.size() > 1 && item[0] == '.';
        for (char c : item) plain = plain && (std::isalnum((unsigned char)c) || c == '.' || c == '_' || c == '-');
        /* The dialog's filter goes out in one Tcl command of 2048 bytes:
         * a list longer than this is cut (the "All files" filter still
         * offers the rest). */
        if (plain && out.size() + item.size() < MAX_SUFFIX_TEXT) out += (out.empty() ? "" : " ") + item;
        start = end + 1;
    }
    return out;
}
