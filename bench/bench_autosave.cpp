/*
 * bench_autosave.cpp - what an autosave costs the user of a model of a
 * million triangles (500,000 quads): the pause while the child is forked,
 * the child's time to write the file, and the steps of a drag (a small
 * move of the whole selection, as each mouse motion of a move drag makes)
 * while no autosave runs and while one does: their median and longest.
 * The recovery file goes to a scratch HOME.  `bench_autosave [quads]`
 * changes the model size.
 */
#include "vesk.h"
#include "app/prefs.h"
#include "edit/selection.h"
#include "edit/transform.h"
#include "fileio/vk_recovery.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

using Clock = std::chrono::steady_clock;

static double ms_since(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/* side x side quads sharing their corners: two triangles each. */
static void build_model(unsigned int quads)
{
    unsigned int side = 1;
    while (side * side < quads) side++;
    Object *o = new_object(OBJECT_NORMAL);
    std::vector<Vertex *> grid;
    List *vtail = nullptr, *stail = nullptr;
    for (unsigned int y = 0; y <= side; y++) {
        for (unsigned int x = 0; x <= side; x++) {
            Vertex *v = new_vertex_set((float)x, (float)y, 0.0f);
            grid.push_back(v);
            vtail = list_add_item_fast(&o->vertices, vtail, v);
            o->num_vert++;
        }
    }
    for (unsigned int y = 0; y < side; y++) {
        for (unsigned int x = 0; x < side; x++) {
            Surface *s = new_surface();
            List *rtail = nullptr;
            unsigned int corner[4] = {y * (side + 1) + x, y * (side + 1) + x + 1, (y + 1) * (side + 1) + x + 1,
                                      (y + 1) * (side + 1) + x};
            for (unsigned int c : corner) {
                rtail = list_add_item_fast(&s->vertrefs, rtail, new_svertex(grid[c], 0, 0));
                s->num_vertrefs++;
            }
            stail = list_add_item_fast(&o->surfaces, stail, s);
            o->num_surf++;
        }
    }
    object_add_child(world, o);
}

/* Drag steps until the time is up or, with child, until it finished;
 * their durations in ms. */
static std::vector<double> drag(double at_least_ms, pid_t child, int *child_result)
{
    std::vector<double> steps;
    auto start = Clock::now();
    for (;;) {
        auto step = Clock::now();
        move_selection_f(0.001f, 0.0f, 0.0f);
        steps.push_back(ms_since(step));
        if (child > 0 && *child_result == 0) *child_result = recovery_write_poll(child, 0);
        int child_done = child <= 0 || *child_result != 0;
        if (child_done && ms_since(start) >= at_least_ms) break;
    }
    return steps;
}

static void print_steps(const char *label, std::vector<double> steps)
{
    std::sort(steps.begin(), steps.end());
    printf("%-34s %5zu steps   median %7.1f ms   longest %7.1f ms\n", label, steps.size(), steps[steps.size() / 2],
           steps.back());
}

int main(int argc, char **argv)
{
    unsigned int quads = argc > 1 ? (unsigned int)strtoul(argv[1], nullptr, 10) : 500000;
    char home[] = "/tmp/vesk_bench_autosave_XXXXXX";
    if (!mkdtemp(home)) return 1;
    setenv("HOME", home, 1);
    prefs_set_defaults();
    world = new_world();
    build_model(quads);
    select_all();
    printf("model: %u quads (%u triangles), %u vertices\n", quads, 2 * quads, ((Object *)world->kids->item)->num_vert);
    print_steps("drag steps, no autosave", drag(2000, -1, nullptr));
    auto fork_start = Clock::now();
    pid_t child = recovery_write_begin(RECOVERY_AUTOSAVE, "");
    double pause = ms_since(fork_start);
    auto write_start = Clock::now();
    int result = 0;
    std::vector<double> steps = drag(0, child, &result);
    printf("autosave: fork pause %.1f ms, the child wrote the file in %.0f ms (%s)\n", pause, ms_since(write_start),
           result == 1 ? "written" : "failed");
    print_steps("drag steps, autosave running", steps);
    recovery_discard_own();
    rmdir(home);
    return 0;
}
