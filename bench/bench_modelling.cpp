/*
 * bench_modelling.cpp - times the surface operations and the revolve on
 * meshes of n and 4n quadrilaterals (100k and 400k by default), with
 * their undo snapshots, and prints seconds per step and the ratio of the
 * two sizes: about 4 means the step is linear in its input.
 * Beside each step at the larger size: its undo, and the floor of
 * building that many records, the time to load a model file of the
 * step's result (so every figure reads as a ratio within one run).
 * `bench_modelling [quads [step [once]]]` changes the smaller size and
 * runs only the step whose label begins with the given text; with "once"
 * it runs that step at the given size alone and exits (for profiling).
 * Each step prints its wall time and the main thread's user and system
 * time; each size of each step runs in a process of its own.  The second
 * run at the larger size comes after a model was loaded and emptied:
 * records laid out on a reused heap walk more slowly than fresh ones.
 */
#include "vesk.h"
#include "app/prefs.h"
#include "edit/primitives.h"
#include "edit/selection.h"
#include "edit/surface_ops.h"
#include "edit/extrude.h"
#include "edit/undo.h"
#include "fileio/vk_file.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

static double seconds_since(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

static void clear_model(void)
{
    clear_all_undos();
    clear_selection();
    while (world->kids) object_delete((Object *)world->kids->item);
}

/* A selected mesh of about the given number of quadrilaterals. */
static Object *selected_mesh(unsigned int quads)
{
    clear_model();
    int side = (int)std::ceil(std::sqrt((double)quads));
    prefs.mesh_x = prefs.mesh_y = side;
    prefs.mesh_from_triangles = 0;
    const float a[3] = {0, 0, 0}, b[3] = {(float)side, (float)side, 0};
    Object *mesh = add_mesh(0, a, b);
    object_add_child(world, mesh);
    select_object(mesh);
    return mesh;
}

/* A mesh of polygons of eight corners (each quad of the mesh with a new
 * point on each edge), for the tessellator. */
static void octagon_mesh(unsigned int quads)
{
    Object *mesh = selected_mesh(quads);
    selection.select_mode = SELECT_VERTEX;
    clear_selection();
    select_object(mesh);
    selected_insert_vertex();
    selection.select_mode = SELECT_TREE;
    clear_selection();
    select_object(mesh);
}

/* A selected object of line segments, one per quad of the mesh. */
static void selected_profile(unsigned int quads)
{
    Object *mesh = selected_mesh(quads);
    object_set_surface_type(mesh, SURFACE_LINE);
}

struct Step {
    const char *label;
    void (*prepare)(unsigned int);
    int (*run)(void);
};

static void quietly(void (*work)(void *), void *context)
{
    fflush(stdout);
    FILE *saved = fdopen(dup(fileno(stdout)), "w");
    if (!freopen("/dev/null", "w", stdout)) return;
    work(context);
    fflush(stdout);
    dup2(fileno(saved), fileno(stdout));
    fclose(saved);
}

static double undo_seconds(void)
{
    auto start = std::chrono::steady_clock::now();
    quietly([](void *) { UNDO(); }, nullptr);
    return seconds_since(start);
}

/* Saves the model, empties it and times loading the file back. */
static double load_floor_seconds(void)
{
    static const char *path = "/tmp/bench_modelling_floor.vk";
    double seconds = 0;
    quietly(
        [](void *out) {
            write_vk(path);
            clear_model();
            auto start = std::chrono::steady_clock::now();
            readfile_vk(path, world, 0);
            *(double *)out = seconds_since(start);
        },
        &seconds);
    remove(path);
    return seconds;
}

/* Processor time of the calling thread so far, user and system apart:
 * the system part is mostly the kernel handing out fresh zeroed pages,
 * which on a virtual machine can cost more than the work itself. */
struct ThreadTimes {
    double user, system;
};

static ThreadTimes thread_times(void)
{
    struct rusage usage;
    getrusage(RUSAGE_THREAD, &usage);
    return {usage.ru_utime.tv_sec + usage.ru_utime.tv_usec / 1e6, usage.ru_stime.tv_sec + usage.ru_stime.tv_usec / 1e6};
}

static double time_step(const Step &step, unsigned int quads, const char *note = "")
{
    step.prepare(quads);
    unsigned int before = world->kids ? ((Object *)world->kids->item)->num_surf : 0;
    ThreadTimes t0 = thread_times();
    auto start = std::chrono::steady_clock::now();
    step.run();
    double t = seconds_since(start);
    ThreadTimes t1 = thread_times();
    unsigned int after = world->kids ? ((Object *)world->kids->item)->num_surf : 0;
    printf("%-24s %8u surfaces -> %8u   %8.3f s  (user %.3f s, system %.3f s)%s\n", step.label, before, after, t,
           t1.user - t0.user, t1.system - t0.system, note);
    return t;
}

/* Runs work in a child process and returns the number it leaves in the
 * shared slot: every size of every step starts from a fresh heap, since
 * a heap that earlier work filled and emptied lays records out
 * differently and the figures would depend on what ran before. */
static double in_fresh_process(double (*work)(const Step &, unsigned int), const Step &step, unsigned int quads)
{
    static double *slot =
        (double *)mmap(nullptr, sizeof(double), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (slot == MAP_FAILED) return work(step, quads);
    *slot = 0;
    fflush(stdout);
    pid_t child = fork();
    if (child < 0) return work(step, quads);
    if (child == 0) {
        *slot = work(step, quads);
        fflush(stdout);
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return *slot;
}

static double small_run(const Step &step, unsigned int quads) { return time_step(step, quads); }

/* The larger size, the load floor of its result, the step again on the
 * heap the load left, and its undo. */
static double large_run(const Step &step, unsigned int quads)
{
    double large = time_step(step, quads);
    double floor = load_floor_seconds();
    printf("%-24s load of the result: %.3f s, step / load %.2f\n", step.label, floor, floor > 0 ? large / floor : 0.0);
    time_step(step, quads, "  again, on the emptied heap");
    double undo = undo_seconds();
    printf("%-24s undo %.3f s, undo / step %.2f\n", step.label, undo, large > 0 ? undo / large : 0.0);
    return large;
}

static void run_step(const Step &step, unsigned int quads)
{
    double small = in_fresh_process(small_run, step, quads);
    double large = in_fresh_process(large_run, step, 4 * quads);
    printf("%-24s ratio for 4x the input: %.2f\n\n", step.label, small > 0 ? large / small : 0.0);
}

static int revolve_y(void) { return rotate_form_selected_objects(1); }
static void plain_mesh(unsigned int quads) { selected_mesh(quads); }

int main(int argc, char **argv)
{
    unsigned int quads = argc > 1 ? (unsigned int)strtoul(argv[1], nullptr, 10) : 100000;
    if (quads == 0) quads = 1;
    prefs_set_defaults();
    prefs.undo_levels = 2;
    world = new_world();
    create_palette();
    prefs.rot_segments = 4;
    const Step steps[] = {
        {"subdivide", plain_mesh, selected_subdivide_surfaces},
        {"spike", plain_mesh, selected_spike_surfaces},
        {"triangulate quads", plain_mesh, selected_surface_triangulate},
        {"triangulate octagons", octagon_mesh, selected_surface_triangulate},
        {"make hole", plain_mesh, selected_surfaces_make_hole},
        {"bevel", plain_mesh, selected_surfaces_bevel},
        {"spline", plain_mesh, spline_selected},
        {"revolve (4 steps)", selected_profile, revolve_y},
    };
    const char *only = argc > 2 ? argv[2] : nullptr;
    bool once = argc > 3 && strcmp(argv[3], "once") == 0;
    for (const Step &step : steps) {
        if (only && strncmp(step.label, only, strlen(only)) != 0) continue;
        if (once) {
            time_step(step, quads);
            fflush(stdout);
            _exit(0);   /* only the step, for profiling: no clean-up */
        }
        run_step(step, quads);
    }
    clear_model();
    return 0;
}
