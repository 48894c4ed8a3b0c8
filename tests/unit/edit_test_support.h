/*
 * edit_test_support.h - what the editing tests share: a fixture that
 * leaves the model, the selection and the undo history empty around each
 * test, small models (a square, a cube with shared corners), and checks
 * of positions bit for bit and of the model's counts.
 */
#ifndef VESK_TESTS_EDIT_TEST_SUPPORT_H
#define VESK_TESTS_EDIT_TEST_SUPPORT_H

#include "test_support.h"
#include "app/shared_state.h"
#include "edit/selection.h"
#include "edit/undo.h"

#include <array>
#include <cstring>
#include <vector>

class EditTest : public ::testing::Test {
protected:
    int saved_levels = 0, saved_recalc = 0;
    double saved_grid = 0;
    int saved_gridlock = 0;
    void SetUp() override
    {
        saved_levels = prefs.undo_levels;
        saved_recalc = prefs.recalc_normals;
        saved_grid = prefs.grid;
        saved_gridlock = prefs.gridlock;
        reset();
    }
    void TearDown() override
    {
        reset();
        prefs.undo_levels = saved_levels;
        prefs.recalc_normals = saved_recalc;
        prefs.grid = saved_grid;
        prefs.gridlock = saved_gridlock;
    }
    static void reset()
    {
        clear_all_undos();
        clear_selection();
        clear_world_children();
        selection.select_mode = SELECT_TREE;
        objects_are_hidden = 0;
    }
};

typedef std::array<float, 3> Point;

/* A polygon on the given points, referencing the object's vertices by
 * index. */
static inline Surface *add_polygon(Object *o, std::initializer_list<int> indices, int kind = SURFACE_POLYGON)
{
    Surface *s = new_surface();
    s->surface_kind = (uint8_t)kind;
    for (int i : indices) surface_add_vertref(s, new_svertex(vk_object_get_vertex_at_index(o, (unsigned)i), 0, 0));
    object_add_surface(o, s);
    surface_calc_normal(s);
    return s;
}

static inline Object *add_points(Object *parent, std::initializer_list<Point> points, const char *name = "")
{
    Object *o = new_object(OBJECT_NORMAL);
    object_set_name(o, name);
    for (const Point &p : points) object_add_new_vertex(o, p.data());
    if (parent) object_add_child(parent, o);
    return o;
}

/* A unit square from (x0, 0, 0) in z = 0 with one polygon. */
static inline Object *add_square(Object *parent, float x0 = 0.0f, const char *name = "square")
{
    Object *o = add_points(parent, {{x0, 0, 0}, {x0 + 1, 0, 0}, {x0 + 1, 1, 0}, {x0, 1, 0}}, name);
    add_polygon(o, {0, 1, 2, 3});
    return o;
}

/* A cube from -1 to 1 with 8 shared corners and 6 outward faces. */
static inline Object *add_cube(Object *parent, const char *name = "cube")
{
    Object *o = add_points(parent,
                           {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1},
                            {-1, -1, 1}, {1, -1, 1}, {1, 1, 1}, {-1, 1, 1}},
                           name);
    add_polygon(o, {0, 3, 2, 1});
    add_polygon(o, {4, 5, 6, 7});
    add_polygon(o, {0, 1, 5, 4});
    add_polygon(o, {3, 7, 6, 2});
    add_polygon(o, {0, 4, 7, 3});
    add_polygon(o, {1, 2, 6, 5});
    return o;
}

static inline std::vector<Point> points_of(Object *o)
{
    std::vector<Point> out;
    for (List *v = o->vertices; v; v = v->next) {
        const float *p = ((Vertex *)v->item)->point;
        out.push_back({p[0], p[1], p[2]});
    }
    return out;
}

static inline bool same_bits(const std::vector<Point> &a, const std::vector<Point> &b)
{
    return a.size() == b.size() && memcmp(a.data(), b.data(), a.size() * sizeof(Point)) == 0;
}

static inline Point centre_of(Object *o)
{
    return {o->centre[0], o->centre[1], o->centre[2]};
}

/* list_objects reports no count that differs from its list. */
static inline bool model_consistent(void)
{
    Captured c = capture([] { list_objects(); });
    return !contains(c.out, "tell Orlo");
}

static inline Object *world_child(unsigned int i)
{
    return (Object *)list_get_item(world->kids, i);
}

static inline std::string console_of_undo(void)
{
    return capture([] { UNDO(); }).out;
}

#endif
