/*
 * bench_exchange.cpp - times the model exchange plug-in's reader and
 * writers on files of about a million triangles (made by
 * bench_exchange.sh, which prints assimp's own figures beside these):
 *  - import of an OBJ and a PLY file into the model (assimp's parse and
 *    the conversion into objects);
 *  - export of the PLY model to OBJ and to glTF 2.0.
 *   bench_exchange <mesh.obj> <mesh.ply> <output directory>
 */
#include "vesk.h"
#include "bench_support.h"
#include "app/prefs.h"
#include "../plugins/exchange/exchange.h"

#include <assimp/scene.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

/* The figures; the core's console lines go to /dev/null. */
static FILE *report = stderr;

static void empty_model(void)
{
    while (world->kids) object_delete((Object *)world->kids->item);
}

/* Reads a file into the model; 1 when it was read. */
static int time_import(const char *label, const std::string &file)
{
    empty_model();
    ImportCounts counts;
    std::string error;
    double t0 = now();
    Object *holder = exchange_read_file(file.c_str(), &counts, &error);
    double t1 = now();
    if (!holder) {
        fprintf(report, "  %-22s failed: %s\n", label, error.c_str());
        return 0;
    }
    while (holder->kids) {
        Object *o = (Object *)holder->kids->item;
        object_remove_child_nocleanup(holder, o);
        object_add_child(world, o);
    }
    object_free(holder);
    fprintf(report, "  %-22s %7.2f s  (%.1f MB, %lu vertices, %lu surfaces)\n", label, t1 - t0, file_mb(file),
            counts.vertices, counts.surfaces);
    return 1;
}

static void time_export(const char *label, const std::string &file, const char *format)
{
    ExportCounts counts;
    std::string error;
    double t0 = now();
    int ok = exchange_write_file(world, file.c_str(), format, &counts, &error);
    double t1 = now();
    if (!ok) {
        fprintf(report, "  %-22s failed: %s\n", label, error.c_str());
        return;
    }
    /* glTF keeps its data in a .bin file beside the .gltf. */
    double mb = file_mb(file);
    if (strcmp(format, "gltf2") == 0) mb += file_mb(file.substr(0, file.rfind('.')) + ".bin");
    fprintf(report, "  %-22s %7.2f s  (%.1f MB, %lu faces)\n", label, t1 - t0, mb, counts.faces);
}

int main(int argc, char **argv)
{
    if (argc != 4) {
        fprintf(stderr, "usage: bench_exchange <mesh.obj> <mesh.ply> <output directory>\n");
        return 2;
    }
    std::string dir = argv[3];
    prefs_set_defaults();
    world = new_world();
    create_palette();
    fflush(stdout);
    int out = dup(1);
    if (out < 0 || !freopen("/dev/null", "w", stdout)) return 1;
    report = fdopen(out, "w");
    if (!report) return 1;
    setvbuf(report, nullptr, _IOLBF, 0);
    fprintf(report, "VESK exchange plug-in:\n");
    time_import("import OBJ", argv[1]);
    if (!time_import("import PLY", argv[2])) return 1;
    ExportCounts counts;
    double t0 = now();
    delete exchange_build_scene(world, "obj", nullptr, &counts);
    fprintf(report, "  %-22s %7.2f s  (of each export: the model as an assimp scene)\n", "scene for export", now() - t0);
    time_export("export OBJ", dir + "/vesk_out.obj", "obj");
    time_export("export glTF 2.0", dir + "/vesk_out.gltf", "gltf2");
    return 0;
}
