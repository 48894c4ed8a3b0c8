/*
 * bench_editing.cpp - times the editing commands on a selection of a
 * million vertices: move, undo and redo of the move, rotate (about one
 * axis and about two, each undone and redone), scale, mirror, and
 * "optimize" on a mesh whose
 * quads each have their own four corners (so that it collapses three in
 * four vertices).  Prints seconds per step with the vertex count.
 * `bench_editing [vertices]` changes the model size.
 */
#include "vesk.h"
#include "app/commands.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "edit/transform.h"
#include "edit/redo.h"
#include "edit/undo.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

static double seconds_since(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

static unsigned int model_vertices(void)
{
    unsigned int n = 0;
    for (List *k = world->kids; k; k = k->next) n += ((Object *)k->item)->num_vert;
    return n;
}

template <typename F> static void timed(const char *label, F step)
{
    auto start = std::chrono::steady_clock::now();
    step();
    printf("%-36s %8.3f s   (%u vertices in the model, %d undo records)\n", label, seconds_since(start),
           model_vertices(), undo_count);
}

/* One object of side x side quads in the x-y plane, each quad with its
 * own four corners. */
static void build_model(unsigned int total)
{
    unsigned int side = 1;
    while (4 * side * side < total) side++;
    Object *o = new_object(OBJECT_NORMAL);
    object_set_name(o, "mesh");
    List *vtail = nullptr, *stail = nullptr;
    for (unsigned int y = 0; y < side; y++) {
        for (unsigned int x = 0; x < side; x++) {
            const float corners[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
            Surface *s = new_surface();
            List *rtail = nullptr;
            for (const auto &c : corners) {
                Vertex *v = new_vertex_set((float)x + c[0], (float)y + c[1], 0.0f);
                vtail = list_add_item_fast(&o->vertices, vtail, v);
                o->num_vert++;
                rtail = list_add_item_fast(&s->vertrefs, rtail, new_svertex(v, c[0], c[1]));
                s->num_vertrefs++;
            }
            stail = list_add_item_fast(&o->surfaces, stail, s);
            o->num_surf++;
        }
    }
    object_add_child(world, o);
}

int main(int argc, char **argv)
{
    unsigned int total = argc > 1 ? (unsigned int)strtoul(argv[1], nullptr, 10) : 1000000;
    if (total == 0) total = 4;
    prefs_set_defaults();
    world = new_world();
    timed("build model", [&] { build_model(total); });
    timed("select all", [] { select_all(); });
    timed("move", [] { move_selection_f(1.0f, 2.0f, 3.0f); });
    timed("undo of the move", [] { UNDO(); });
    timed("redo of the move", [] { REDO(); });
    timed("undo of the redone move", [] { UNDO(); });
    timed("rotate about z", [] { rotate_selection_f(0.0f, 0.0f, 30.0f); });
    timed("undo of the rotation", [] { UNDO(); });
    timed("redo of the rotation", [] { REDO(); });
    timed("undo of the redone rotation", [] { UNDO(); });
    timed("rotate about x and y (snapshot)", [] { rotate_selection_f(10.0f, 20.0f, 0.0f); });
    timed("undo of it (restores the copy)", [] { UNDO(); });
    timed("redo of it (a copy again)", [] { REDO(); });
    timed("undo of the redone snapshot", [] { UNDO(); });
    timed("select all", [] { select_all(); });
    timed("scale", [] { command_scale(2.0f, 2.0f, 1.0f); });
    timed("mirror", [] { command_mirror(0); });
    timed("undo of the mirror", [] { UNDO(); });
    timed("optimize", [] { optimize_selected(); });
    timed("optimize surfaces", [] { selected_optimize_surfaces(); });
    timed("clear all", [] { command_clear_all(); });
    return 0;
}
