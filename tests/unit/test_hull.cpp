/*
 * test_hull.cpp - convex hulls: a cube's corners, coplanar points (one
 * polygon), duplicates and inside points, random clouds checked for
 * closure and containment, degenerate input, and the "convexhull"
 * command with its undo.
 */
#include "modelling_test_support.h"
#include "edit/hull.h"
#include "edit/primitives.h"

#include <map>
#include <random>

namespace {

class HullTest : public ModellingTest {};

struct Hull {
    const char *reason = "";
    Object *o;
    explicit Hull(const std::vector<float> &xyz, double precision = 1e-5)
        : o(convex_hull_from_points(xyz.data(), xyz.size() / 3, precision, &reason))
    {
    }
    ~Hull()
    {
        if (o) object_delete(o);
    }
    Hull(const Hull &) = delete;
    Hull &operator=(const Hull &) = delete;
};

std::vector<float> cube_corners(void)
{
    std::vector<float> xyz;
    for (int i = 0; i < 8; i++) {
        xyz.push_back((float)(i & 1));
        xyz.push_back((float)((i >> 1) & 1));
        xyz.push_back((float)((i >> 2) & 1));
    }
    return xyz;
}

/* Every edge is used once in each direction: the hull is closed and
 * consistently oriented.  Returns the number of edges. */
size_t expect_closed(Object *o)
{
    std::map<std::pair<Vertex *, Vertex *>, int> edges;
    for (Surface *s : surfaces_of(o)) {
        std::vector<SVertex *> r = refs_of(s);
        for (size_t i = 0; i < r.size(); i++) edges[{r[i]->vertex, r[(i + 1) % r.size()]->vertex}]++;
    }
    for (const auto &e : edges) {
        EXPECT_EQ(e.second, 1);
        EXPECT_EQ(edges.count({e.first.second, e.first.first}), 1u) << "an edge without its twin";
    }
    return edges.size() / 2;
}

/* Every point lies behind (or on) every face. */
void expect_contains(Object *o, const std::vector<float> &xyz, double tolerance)
{
    for (Surface *s : surfaces_of(o)) {
        const float *a = refs_of(s)[0]->vertex->point;
        for (size_t i = 0; i + 2 < xyz.size(); i += 3) {
            double d = 0;
            for (int k = 0; k < 3; k++) d += ((double)xyz[i + (size_t)k] - a[k]) * s->normal[k];
            EXPECT_LE(d, tolerance);
        }
    }
}

TEST_F(HullTest, CubeCornersGiveTwelveOutwardTriangles)
{
    Hull h(cube_corners());
    ASSERT_NE(h.o, nullptr);
    EXPECT_STREQ(h.o->name, "convex hull");
    expect_consistent(h.o);
    EXPECT_EQ(h.o->num_vert, 8u);
    ASSERT_EQ(h.o->num_surf, 12u);
    for (Surface *s : surfaces_of(h.o)) EXPECT_EQ(s->num_vertrefs, 3u);
    const float centre[3] = {0.5f, 0.5f, 0.5f};
    expect_facing_out(h.o, centre);
    EXPECT_EQ(expect_closed(h.o), 18u);
}

TEST_F(HullTest, DuplicatesAndInsidePointsDoNotChangeTheHull)
{
    std::vector<float> xyz;
    for (int copy = 0; copy < 3; copy++) {
        std::vector<float> c = cube_corners();
        xyz.insert(xyz.end(), c.begin(), c.end());
    }
    for (float f : {0.5f, 0.5f, 0.5f, 0.2f, 0.7f, 0.1f, 0.5f, 0.5f, 0.0f, 1.0f, 0.5f, 0.5f, -0.0f, 0.0f, 0.0f}) xyz.push_back(f);
    Hull h(xyz);
    ASSERT_NE(h.o, nullptr);
    EXPECT_EQ(h.o->num_vert, 8u);
    EXPECT_EQ(h.o->num_surf, 12u);
    expect_closed(h.o);
}

TEST_F(HullTest, CoplanarPointsGiveOnePolygon)
{
    /* A 3 x 3 grid in a tilted plane: the corners make the outline, the
     * edge midpoints and centre are dropped. */
    std::vector<float> xyz;
    for (int i = 0; i < 3; i++) {
        for (int j = 0; j < 3; j++) {
            xyz.push_back((float)i);
            xyz.push_back((float)j);
            xyz.push_back((float)i * 0.5f);
        }
    }
    Hull h(xyz);
    ASSERT_NE(h.o, nullptr);
    ASSERT_EQ(h.o->num_surf, 1u);
    Surface *s = surfaces_of(h.o)[0];
    EXPECT_EQ(s->surface_kind, SURFACE_POLYGON);
    EXPECT_EQ(s->num_vertrefs, 4u);
    EXPECT_NEAR(polygon_area(s), 2 * 2 * std::sqrt(1.25), 1e-5);
}

TEST_F(HullTest, NearlyCoplanarPointsWithinThePrecisionAreFlat)
{
    std::vector<float> xyz = {0, 0, 0, 1, 0, 0, 1, 1, 1e-7f, 0, 1, 0, 0.5f, 0.5f, -1e-7f};
    Hull flat(xyz, 1e-5);
    ASSERT_NE(flat.o, nullptr);
    EXPECT_EQ(flat.o->num_surf, 1u);
    xyz[8] = 0.5f;
    Hull solid(xyz, 1e-5);
    ASSERT_NE(solid.o, nullptr);
    EXPECT_GT(solid.o->num_surf, 1u);
    expect_closed(solid.o);
}

TEST_F(HullTest, RandomCloudsAreClosedAndContainEveryPoint)
{
    std::mt19937 random(12345);
    std::uniform_real_distribution<float> coordinate(-1, 1);
    for (int pass = 0; pass < 5; pass++) {
        std::vector<float> xyz;
        for (int i = 0; i < 2000; i++) {
            float p[3] = {coordinate(random), coordinate(random), coordinate(random)};
            /* Round to a coarse grid, so that many points are coplanar. */
            for (float &f : p) f = pass % 2 ? std::round(f * 4) / 4 : f;
            xyz.insert(xyz.end(), p, p + 3);
        }
        Hull h(xyz);
        ASSERT_NE(h.o, nullptr);
        expect_consistent(h.o);
        size_t edges = expect_closed(h.o);
        /* Euler: V - E + F = 2 for a closed convex surface. */
        EXPECT_EQ((long)h.o->num_vert - (long)edges + (long)h.o->num_surf, 2);
        expect_contains(h.o, xyz, 1e-4);
    }
}

TEST_F(HullTest, DegenerateInputIsRefusedWithAReason)
{
    Hull two(std::vector<float>{0, 0, 0, 1, 1, 1, 0, 0, 0});
    EXPECT_EQ(two.o, nullptr);
    EXPECT_STREQ(two.reason, "fewer than three different points");
    Hull line(std::vector<float>{0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3});
    EXPECT_EQ(line.o, nullptr);
    EXPECT_STREQ(line.reason, "the points lie on one line");
    Hull with_nan(std::vector<float>{0, 0, 0, NAN, 1, 1, 1, 0, 0, 0, 1, 0});
    ASSERT_NE(with_nan.o, nullptr);
    EXPECT_EQ(with_nan.o->num_vert, 3u);
    Hull none(std::vector<float>{});
    EXPECT_EQ(none.o, nullptr);
}

TEST_F(HullTest, CommandMakesASelectedHullOfTheSelection)
{
    Object *cube = new_object(OBJECT_NORMAL);
    object_add_cube_view(cube, 2, 2, 2);
    object_add_child(world, cube);
    char name[] = "convexhull";
    char *argv[] = {name};
    EXPECT_EQ(do_command(1, argv), 1);
    EXPECT_EQ(world->num_kids, 1u) << "nothing selected: no hull";

    select_vertices_of(cube);
    unsaved_changes = 0;
    EXPECT_EQ(do_command(1, argv), 1);
    ASSERT_EQ(world->num_kids, 2u);
    Object *hull = world_child(1);
    EXPECT_EQ(hull->num_surf, 12u);
    EXPECT_EQ(unsaved_changes, 1);
    EXPECT_EQ(selection.num_selected_vertices, 8);
    EXPECT_EQ(vertices_of(hull)[0]->point[0] * vertices_of(hull)[0]->point[0], 1.0f);
    if (!undo_is_recorded()) GTEST_SKIP() << "undo records are not kept in this build";
    clear_selection();
    selection.select_mode = SELECT_OBJECT;
    select_object(cube);
    EXPECT_EQ(make_convex_hull(), 1);
    ASSERT_NE(undo_current(), nullptr);
    EXPECT_STREQ(undo_current()->label, "convex hull");
    UNDO();
    EXPECT_EQ(world->num_kids, 2u);
}

} // namespace
