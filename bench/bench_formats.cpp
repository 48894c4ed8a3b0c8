/*
 * bench_formats.cpp - times the exchange formats on a model of about a
 * million triangles (ten grid objects of 225 x 225 points, each within
 * the 3DS limit of 65535 points per mesh):
 *  - import of a 3DS file exported by assimp from the same mesh, beside
 *    `assimp info` of that file in the same run (the target: our import
 *    no slower);
 *  - export with each writer (VRML 2.0, VRML 1.0, Inventor, triangle,
 *    POV-Ray, RIB, DIVE, MASSIVE, DVS),
 *    in seconds and MB/s;
 *  - import of the VRML 1.0 and triangle files written.
 *   bench_formats [directory]        default: /tmp
 * Needs the `assimp` tool (assimp-utils) for the import figures.
 */
#include "vesk.h"
#include "bench_support.h"
#include "app/prefs.h"
#include "fileio/reader_3ds.h"
#include "fileio/tri_file.h"
#include "fileio/vrml1_reader.h"
#include "fileio/scene_writers.h"
#include "fileio/vrml_writer.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

enum { PARTS = 10, SIDE = 225 };

/* The figures; the core's console lines go to /dev/null. */
static FILE *report = stderr;

static float height(int part, int x, int y)
{
    return 0.37f * (float)((x * 7 + y * 13 + part) % 11) / 11.0f;
}

static long write_obj(const std::string &path)
{
    FILE *f = fopen(path.c_str(), "w");
    if (!f) return 0;
    long triangles = 0, base = 1;
    for (int p = 0; p < PARTS; p++) {
        fprintf(f, "o part%d\n", p);
        for (int y = 0; y < SIDE; y++)
            for (int x = 0; x < SIDE; x++) fprintf(f, "v %g %g %g\n", x * 0.1 + p * 30, height(p, x, y), y * 0.1);
        for (int y = 0; y + 1 < SIDE; y++)
            for (int x = 0; x + 1 < SIDE; x++) {
                long a = base + y * SIDE + x;
                fprintf(f, "f %ld %ld %ld\nf %ld %ld %ld\n", a, a + 1, a + SIDE + 1, a, a + SIDE + 1, a + SIDE);
                triangles += 2;
            }
        base += SIDE * SIDE;
    }
    fclose(f);
    return triangles;
}

static void build_model(void)
{
    for (int p = 0; p < PARTS; p++) {
        Object *o = new_object(OBJECT_NORMAL);
        std::vector<Vertex *> v;
        List *tail = nullptr;
        for (int y = 0; y < SIDE; y++)
            for (int x = 0; x < SIDE; x++) {
                v.push_back(new_vertex_set(x * 0.1f + p * 30, height(p, x, y), y * 0.1f));
                tail = list_add_item_fast(&o->vertices, tail, v.back());
                o->num_vert++;
            }
        tail = nullptr;
        for (int y = 0; y + 1 < SIDE; y++)
            for (int x = 0; x + 1 < SIDE; x++) {
                int a = y * SIDE + x;
                const int tri[2][3] = {{a, a + 1, a + SIDE + 1}, {a, a + SIDE + 1, a + SIDE}};
                for (const auto &t : tri) {
                    Surface *s = new_surface();
                    List *rt = nullptr;
                    for (int c : t) {
                        rt = list_add_item_fast(&s->vertrefs, rt, new_svertex(v[c], x * 0.01f, y * 0.01f));
                        s->num_vertrefs++;
                    }
                    tail = list_add_item_fast(&o->surfaces, tail, s);
                    o->num_surf++;
                }
            }
        object_calc_normals_force(o);
        object_add_child(world, o);
    }
}

static double run_timed(const std::string &command)
{
    double t = now();
    int rc = system(command.c_str());
    double elapsed = now() - t;
    return rc == 0 ? elapsed : -1.0;
}

static void bench_import(const std::string &dir)
{
    std::string obj = dir + "/vesk_bench_grid.obj", tds = dir + "/vesk_bench_grid.3ds";
    long triangles = write_obj(obj);
    fprintf(report, "model: %d objects, %ld triangles\n", PARTS, triangles);
    if (run_timed("assimp export '" + obj + "' '" + tds + "' > /dev/null 2>&1") < 0) {
        fprintf(report, "3DS import: assimp not found or its export failed - skipped\n");
        remove(obj.c_str());
        return;
    }
    /* The best of three runs each, alternating, so that both see the same
     * machine.  assimp runs as a user would run it: with its default
     * post-processing. */
    double assimp = 1e30, ours = 1e30;
    long surfaces = 0;
    int r = 1;
    for (int run = 0; run < 3; run++) {
        double a = run_timed("assimp info '" + tds + "' > /dev/null 2>&1");
        if (a >= 0 && a < assimp) assimp = a;
        while (world->kids) object_delete((Object *)world->kids->item);
        double t = now();
        r = import_3ds_file(tds.c_str());
        double elapsed = now() - t;
        if (elapsed < ours) ours = elapsed;
    }
    for (List *k = world->kids; k; k = k->next) surfaces += ((Object *)k->item)->num_surf;
    fprintf(report, "3DS import of %.1f MB (assimp export), best of 3: vesk %.3f s (%ld surfaces, result %d), "
                    "assimp info %.3f s: %s\n",
            file_mb(tds), ours, surfaces, r, assimp, ours <= assimp ? "no slower" : "SLOWER");
    while (world->kids) object_delete((Object *)world->kids->item);
    remove(obj.c_str());
    remove(tds.c_str());
}

/* Reads a file just written into the model beside the original, then
 * removes what was read. */
static void reimport(const std::string &path, const char *name, double mb)
{
    List *before = world->kids ? list_end(world->kids) : nullptr;
    double t = now();
    int ok = name[0] == 't' ? load_tri_file(path.c_str()) : read_vrml1_file(path.c_str()) > 0;
    double elapsed = now() - t;
    fprintf(report, "import %-8s: %.3f s, %.1f MB/s%s\n", name, elapsed, mb / elapsed, ok ? "" : " (FAILED)");
    while (before && before->next) object_delete((Object *)before->next->item);
}

static void bench_export(const std::string &dir)
{
    build_model();
    struct Writer {
        const char *name, *file;
        int (*write)(const char *);
    } writers[] = {{"VRML 2.0", "/vesk_bench.wrl", write_vrml2},
                   {"VRML 1.0", "/vesk_bench1.wrl", write_vrml1},
                   {"Inventor", "/vesk_bench.iv", write_inventor},
                   {"triangle", "/vesk_bench.tri", write_tri_file}};
    for (int normals = 0; normals < 2; normals++) {
        prefs.vrml_output_normals = normals;
        for (const Writer &w : writers) {
            if (normals && w.write == write_tri_file) continue;
            std::string path = dir + w.file;
            double t = now();
            int ok = w.write(path.c_str());
            double elapsed = now() - t;
            double mb = file_mb(path);
            fprintf(report, "export %-8s%s: %.3f s, %.1f MB, %.1f MB/s%s\n", w.name, normals ? " with normals" : "", elapsed,
                   mb, mb / elapsed, ok ? "" : " (FAILED)");
            if (!normals && (w.write == write_vrml1 || w.write == write_tri_file)) reimport(path, w.name, mb);
            remove(path.c_str());
        }
    }
    /* The renderer and world formats, which have no normals switch. */
    const Writer scene_writers[] = {{"POV-Ray", "/vesk_bench.pov", write_pov_file},
                                    {"RIB", "/vesk_bench.rib", write_rib_file},
                                    {"DIVE", "/vesk_bench.vr", write_dive_file},
                                    {"MASSIVE", "/vesk_bench.massive", write_massive_file},
                                    {"DVS", "/vesk_bench.dvs", write_dvs_file}};
    for (const Writer &w : scene_writers) {
        std::string path = dir + w.file;
        double t = now();
        int ok = w.write(path.c_str());
        double elapsed = now() - t;
        double mb = file_mb(path);
        fprintf(report, "export %-8s: %.3f s, %.1f MB, %.1f MB/s%s\n", w.name, elapsed, mb, mb / elapsed,
                ok ? "" : " (FAILED)");
        remove(path.c_str());
    }
}

int main(int argc, char **argv)
{
    std::string dir = argc > 1 ? argv[1] : "/tmp";
    prefs_set_defaults();
    world = new_world();
    create_palette();
    fflush(stdout);
    int out = dup(1);
    if (out < 0 || !freopen("/dev/null", "w", stdout)) return 1;
    report = fdopen(out, "w");
    if (!report) return 1;
    setvbuf(report, nullptr, _IOLBF, 0);
    bench_import(dir);
    bench_export(dir);
    return 0;
}
