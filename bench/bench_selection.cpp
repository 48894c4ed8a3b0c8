/*
 * bench_selection.cpp - times the selection on a model of a million
 * vertices: select all in vertex mode, box selections with and without
 * the modifier flags, mode changes, completing part-selected surfaces
 * and clearing.  Prints seconds per
 * step.  `bench_selection [vertices]` changes the model size.
 */
#include "vesk.h"
#include "app/prefs.h"
#include "edit/selection.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

static double seconds_since(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

template <typename F> static void timed(const char *label, F step)
{
    auto start = std::chrono::steady_clock::now();
    step();
    printf("%-40s %8.3f s   (%d vertices, %d objects selected)\n", label, seconds_since(start),
           selection.num_selected_vertices, selection.num_selected_objects);
}

/* One triangle on each three consecutive vertices of the object. */
static void add_triangles(Object *o)
{
    List *tail = nullptr;
    Vertex *corner[3];
    int n = 0;
    for (List *v = o->vertices; v; v = v->next) {
        corner[n++] = (Vertex *)v->item;
        if (n < 3) continue;
        Surface *s = new_surface();
        for (Vertex *c : corner) surface_add_vertref(s, new_svertex(c, 0, 0));
        tail = list_add_item_fast(&o->surfaces, tail, s);
        o->num_surf++;
        n = 0;
    }
}

/* Objects of 10000 vertices each on a square grid in the x-y plane, one
 * unit apart, so that a box over half the grid finds half the vertices. */
static void build_model(unsigned int total)
{
    const unsigned int per_object = 10000;
    unsigned int side = 1;
    while (side * side < total) side++;
    std::vector<float> points;
    unsigned int made = 0;
    while (made < total) {
        unsigned int n = total - made < per_object ? total - made : per_object;
        points.clear();
        for (unsigned int i = made; i < made + n; i++) {
            points.push_back((float)(i % side));
            points.push_back((float)(i / side));
            points.push_back(0.0f);
        }
        Object *o = new_object(OBJECT_NORMAL);
        vk_object_add_vertices_from_float_array(o, points.data(), n);
        add_triangles(o);
        object_add_child(world, o);
        made += n;
    }
}

int main(int argc, char **argv)
{
    unsigned int total = argc > 1 ? (unsigned int)strtoul(argv[1], nullptr, 10) : 1000000;
    if (total == 0) total = 1;
    prefs_set_defaults();
    world = new_world();
    auto start = std::chrono::steady_clock::now();
    build_model(total);
    printf("%-40s %8.3f s\n", "build model", seconds_since(start));

    float half = 0.5f;
    unsigned int side = 1;
    while (side * side < total) side++;
    const float low[3] = {-half, -half, -1}, mid[3] = {side / 2.0f - half, side + half, 1};
    const float high[3] = {side + half, side + half, 1};

    selection.select_mode = SELECT_VERTEX;
    timed("select_all (vertex mode)", [] { select_all(); });
    timed("select_all again (all already selected)", [] { select_all(); });
    timed("clear_selection", [] { clear_selection(); });
    timed("box, no flags (left half)", [&] { select_all_inside(low, mid, 0, 0, 0); });
    timed("box, add (whole model)", [&] { select_all_inside(low, high, 0, 1, 0); });
    timed("box, remove (left half)", [&] { select_all_inside(low, mid, 0, 0, 1); });
    timed("unselect_objectlist (all objects)", [] { unselect_objectlist(world->kids); });
    timed("select_all", [] { select_all(); });
    timed("mode change vertex -> object", [] { set_new_select_mode(SELECT_OBJECT); });
    timed("mode change object -> vertex", [] { set_new_select_mode(SELECT_VERTEX); });
    timed("select_part_selected_surfaces", [] { select_part_selected_surfaces(); });
    timed("clear_selection", [] { clear_selection(); });

    object_delete(world);
    world = nullptr;
    return 0;
}
