/*
 * exchange.h - the model exchange plug-in: reading any format libassimp
 * knows into detached objects, and writing the model through assimp's
 * exporters.  The plug-in's commands and menu entries live in
 * exchange_plugin.cpp.
 */
#ifndef VESK_EXCHANGE_H
#define VESK_EXCHANGE_H

#include "vesk.h"

#include <cstddef>
#include <string>

struct aiScene;

/* What an import produced, for the status line and the tests. */
struct ImportCounts {
    unsigned long objects = 0;
    unsigned long vertices = 0;
    unsigned long surfaces = 0;
    unsigned long skipped_points = 0;
};

/* Reads a model file into a new detached holder object whose children
 * are the model's top objects.  Returns null with a message in words the
 * user understands in *error; the model is not touched either way. */
Object *exchange_read_file(const char *filename, ImportCounts *counts, std::string *error);
/* The same from memory; hint is the format's suffix ("obj", "ply"...). */
Object *exchange_read_memory(const void *data, size_t size, const char *hint, ImportCounts *counts,
                             std::string *error);
/* Turns a scene that assimp read into a detached holder (textures are
 * looked for beside the file named by directory, when given). */
Object *exchange_convert_scene(const aiScene *scene, const char *directory, ImportCounts *counts);

/* The most of a file looked at before it goes to assimp. */
enum { EXCHANGE_HEADER_LIMIT = 1 << 20 };
/* Why an input must not reach assimp (which would loop for ever on it or
 * allocate what the file can't justify), or null when it may.  data and
 * size: the start of the input (all of it when whole is set); total_size:
 * the whole input's size. */
const char *exchange_refused_input(const char *data, size_t size, unsigned long long total_size, bool whole);

/* What an export wrote, before the exporter's own post-processing. */
struct ExportCounts {
    unsigned long meshes = 0;
    unsigned long vertices = 0;
    unsigned long faces = 0;
    unsigned long nodes = 0;
};

/* The assimp exporter id for a file name's suffix, or "" when none. */
std::string exchange_format_for_suffix(const char *filename);
/* 1 when assimp has an exporter with this id. */
int exchange_format_known(const char *format);
/* The exporter ids assimp offers, blank-separated. */
std::string exchange_format_list(void);
/* 1 when the format holds only triangles (so polygons are split). */
int exchange_format_needs_triangles(const char *format);
/* The suffixes assimp reads, as ".a .b ..." for a file dialog. */
std::string exchange_import_suffixes(void);

/* Builds an assimp scene of the objects under root (the world, or a
 * subtree) for the given exporter; texture names are made relative to
 * the directory of filename when it is given.  The caller deletes it. */
aiScene *exchange_build_scene(Object *root, const char *format, const char *filename, ExportCounts *counts);
/* Writes the model under root to filename in the given assimp format,
 * through temporary files renamed into place only when every file was
 * written.  Returns 1, or 0 with a message in *error (earlier files are
 * left as they were). */
int exchange_write_file(Object *root, const char *filename, const char *format, ExportCounts *counts,
                        std::string *error);

#endif
