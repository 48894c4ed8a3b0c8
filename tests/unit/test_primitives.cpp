/*
 * test_primitives.cpp - the primitive builders: vertex and surface order,
 * positions in each view, texture coordinates, materials, shading and
 * sidedness; the regular shapes; texture mapping; bad segment and
 * division settings; and the commands "new_cube" and "remap_textures".
 */
#include "modelling_test_support.h"
#include "edit/primitives.h"

#include <cmath>

namespace {

class PrimitiveTest : public ModellingTest {};

const double PI = 3.14159265358979323846;

/* Builds, checks the counts, frees. */
struct Built {
    Object *o;
    explicit Built(Object *object) : o(object) { expect_consistent(o); }
    ~Built() { object_delete(o); }
    Built(const Built &) = delete;
    Built &operator=(const Built &) = delete;
    std::vector<Vertex *> v() const { return vertices_of(o); }
    std::vector<Surface *> s() const { return surfaces_of(o); }
};

TEST_F(PrimitiveTest, RectangleCornersInEachView)
{
    const float a[3] = {1, 2, 3}, b[3] = {4, 6, 8};
    const float expected[3][4][3] = {
        {{1, 2, 3}, {4, 2, 3}, {4, 6, 3}, {1, 6, 3}},
        {{1, 2, 3}, {1, 2, 8}, {1, 6, 8}, {1, 6, 3}},
        {{1, 2, 3}, {4, 2, 3}, {4, 2, 8}, {1, 2, 8}},
    };
    for (int view = 0; view < 3; view++) {
        Built r(add_rect(view, a, b));
        EXPECT_STREQ(r.o->name, "rect");
        ASSERT_EQ(r.o->num_vert, 4u);
        ASSERT_EQ(r.o->num_surf, 1u);
        for (int i = 0; i < 4; i++) EXPECT_POINT(r.v()[(size_t)i]->point, expected[view][i][0], expected[view][i][1], expected[view][i][2]);
        EXPECT_POINT(r.o->centre, 2.5f, 4.0f, 5.5f);
        Surface *s = r.s()[0];
        EXPECT_EQ(ref_indices(r.o, s), (std::vector<int>{3, 2, 1, 0}));
        std::vector<SVertex *> refs = refs_of(s);
        EXPECT_UV(refs[0], 0, 0);
        EXPECT_UV(refs[1], 1, 0);
        EXPECT_UV(refs[2], 1, 1);
        EXPECT_UV(refs[3], 0, 1);
        EXPECT_EQ(s->surface_kind, SURFACE_POLYGON);
        EXPECT_EQ(s->mat, 1);
    }
    /* V4, V3, V2, V1 runs clockwise in the front view: the normal is -z. */
    Built r(add_rect(0, a, b));
    EXPECT_POINT(r.s()[0]->normal, 0, 0, -1);
}

TEST_F(PrimitiveTest, GridLinesOwnTheirVertices)
{
    prefs.mesh_x = 2;
    prefs.mesh_y = 3;
    const float a[3] = {0, 0, 5}, b[3] = {2, 3, 9};
    Built g(add_grid(0, a, b));
    EXPECT_STREQ(g.o->name, "grid");
    ASSERT_EQ(g.o->num_surf, 7u);
    ASSERT_EQ(g.o->num_vert, 14u);
    for (Surface *s : g.s()) {
        EXPECT_EQ(s->surface_kind, SURFACE_LINE);
        EXPECT_EQ(s->num_vertrefs, 2u);
    }
    /* Line i = 1 across the horizontal axis, then line j = 2 across the
     * vertical; the depth comes from A. */
    EXPECT_POINT(g.v()[2]->point, 1, 0, 5);
    EXPECT_POINT(g.v()[3]->point, 1, 3, 5);
    EXPECT_POINT(g.v()[6 + 4]->point, 0, 2, 5);
    EXPECT_POINT(g.v()[6 + 5]->point, 2, 2, 5);
    EXPECT_EQ(ref_indices(g.o, g.s()[4]), (std::vector<int>{8, 9}));

    Built plan(add_grid(2, a, b));
    /* In the plan view the vertical axis is z. */
    EXPECT_POINT(plan.v()[6 + 2]->point, 0, 0, 5 + 4.0f / 3.0f);
    EXPECT_POINT(plan.v()[6 + 3]->point, 2, 0, 5 + 4.0f / 3.0f);
}

TEST_F(PrimitiveTest, MeshOfQuadrilateralsIsACheckerboard)
{
    prefs.mesh_x = 2;
    prefs.mesh_y = 2;
    prefs.mesh_from_triangles = 0;
    const float a[3] = {0, 0, 0}, b[3] = {2, 2, 0};
    Built m(add_mesh(0, a, b));
    ASSERT_EQ(m.o->num_vert, 9u);
    ASSERT_EQ(m.o->num_surf, 4u);
    EXPECT_POINT(m.v()[4]->point, 1, 1, 0);
    EXPECT_POINT(m.v()[5]->point, 2, 1, 0);
    std::vector<int> mats;
    for (Surface *s : m.s()) {
        mats.push_back(s->mat);
        EXPECT_EQ(s->shading, 1);
    }
    EXPECT_EQ(mats, (std::vector<int>{0, 1, 1, 0}));
    EXPECT_EQ(ref_indices(m.o, m.s()[0]), (std::vector<int>{0, 3, 4, 1}));
    /* Planar texture over the mesh's box. */
    std::vector<SVertex *> refs = refs_of(m.s()[3]);
    EXPECT_UV(refs[0], 0.5, 0.5);
    EXPECT_UV(refs[2], 1, 1);
}

TEST_F(PrimitiveTest, MeshOfTrianglesAlternatesDiagonals)
{
    prefs.mesh_x = 2;
    prefs.mesh_y = 1;
    prefs.mesh_from_triangles = 1;
    const float a[3] = {0, 0, 0}, b[3] = {2, 1, 0};
    Built m(add_mesh(0, a, b));
    ASSERT_EQ(m.o->num_surf, 4u);
    /* Cell 0 (even): (a, b, c2), (a, c2, d2); cell 1 (odd): (a, b, d2),
     * (d2, b, c2). */
    EXPECT_EQ(ref_indices(m.o, m.s()[0]), (std::vector<int>{0, 3, 4}));
    EXPECT_EQ(ref_indices(m.o, m.s()[1]), (std::vector<int>{0, 4, 1}));
    EXPECT_EQ(ref_indices(m.o, m.s()[2]), (std::vector<int>{1, 4, 2}));
    EXPECT_EQ(ref_indices(m.o, m.s()[3]), (std::vector<int>{2, 4, 5}));
    EXPECT_EQ(m.s()[0]->mat, 0);
    EXPECT_EQ(m.s()[2]->mat, 1);
}

TEST_F(PrimitiveTest, MeshInTheSideView)
{
    prefs.mesh_x = 1;
    prefs.mesh_y = 1;
    prefs.mesh_from_triangles = 0;
    const float a[3] = {7, 0, 0}, b[3] = {9, 2, 4};
    Built m(add_mesh(1, a, b));
    /* Horizontal z, vertical y, depth x from A. */
    EXPECT_POINT(m.v()[1]->point, 7, 0, 4);
    EXPECT_POINT(m.v()[2]->point, 7, 2, 0);
}

TEST_F(PrimitiveTest, BadMeshDivisionsAreClampedWithAMessage)
{
    prefs.mesh_x = 0;
    prefs.mesh_y = -4;
    prefs.mesh_from_triangles = 0;
    const float a[3] = {0, 0, 0}, b[3] = {1, 1, 0};
    Object *mesh = nullptr, *grid = nullptr;
    Captured c = capture([&] {
        mesh = add_mesh(0, a, b);
        grid = add_grid(0, a, b);
    });
    Built m(mesh), g(grid);
    EXPECT_EQ(m.o->num_surf, 1u);
    for (Vertex *v : m.v()) {
        for (float f : v->point) EXPECT_TRUE(std::isfinite(f));
    }
    EXPECT_EQ(g.o->num_surf, 4u);
    EXPECT_TRUE(contains(c.out, "mesh_x is 0 - using 1")) << c.out;
    EXPECT_TRUE(contains(c.out, "mesh_y is -4 - using 1"));
}

TEST_F(PrimitiveTest, EllipseIsAClosedLineStartingOnTheHorizontalAxis)
{
    for (int view = 0; view < 3; view++) {
        Built e(new_circle(view, 2, 1, 3));
        EXPECT_STREQ(e.o->name, "ellipse");
        ASSERT_EQ(e.o->num_vert, 3u);
        ASSERT_EQ(e.o->num_surf, 1u);
        EXPECT_EQ(e.s()[0]->surface_kind, SURFACE_CLOSED_LINE);
        EXPECT_EQ(e.s()[0]->num_vertrefs, 3u);
        float c = (float)cos(2 * PI / 3) * 2, s = (float)sin(2 * PI / 3);
        const float first[3][3] = {{2, 0, 0}, {0, 0, 2}, {2, 0, 0}};
        const float second[3][3] = {{c, s, 0}, {0, s, c}, {c, 0, s}};
        EXPECT_POINT(e.v()[0]->point, first[view][0], first[view][1], first[view][2]);
        EXPECT_POINT(e.v()[1]->point, second[view][0], second[view][1], second[view][2]);
    }
}

TEST_F(PrimitiveTest, CircleFromADragUsesHalfTheBox)
{
    prefs.rot_segments = 4;
    const float a[3] = {3, 3, 0}, b[3] = {-1, 1, 0};
    Built e(add_circle(0, a, b, 99));
    /* Radii 2 and 1, around the origin (the caller places it). */
    EXPECT_POINT(e.v()[0]->point, 2, 0, 0);
    EXPECT_POINT(e.v()[1]->point, 0, 1, 0);
    EXPECT_POINT(e.o->centre, 0, 0, 0);
    /* Texture over the ellipse's own box. */
    EXPECT_UV(refs_of(e.s()[0])[0], 1, 0.5);
    Built r(create_regular_elipse(0));
    EXPECT_POINT(r.v()[0]->point, 0.5f, 0, 0);
}

TEST_F(PrimitiveTest, ArcRunsFromStartToEnd)
{
    Built q(new_arc(0, 2, 0, 90, 4));
    EXPECT_STREQ(q.o->name, "arc");
    ASSERT_EQ(q.s()[0]->surface_kind, SURFACE_LINE);
    ASSERT_EQ(q.o->num_vert, 2u);
    EXPECT_POINT(q.v()[0]->point, 2, 0, 0);
    EXPECT_POINT(q.v()[1]->point, 0, 2, 0);
}

TEST_F(PrimitiveTest, ArcWhoseStartExceedsItsEndStartsOneTurnEarlier)
{
    Built q(new_arc(0, 1, 90, 0, 4));
    ASSERT_GE(q.o->num_vert, 3u);
    /* At 90 - 360 degrees, then 180, then 270, all on the circle. */
    EXPECT_POINT(q.v()[0]->point, 0, 1, 0);
    EXPECT_POINT(q.v()[1]->point, -1, 0, 0);
    EXPECT_POINT(q.v()[2]->point, 0, -1, 0);
    for (Vertex *v : q.v()) EXPECT_NEAR(hypot(v->point[0], v->point[1]), 1.0, 1e-5);
}

TEST_F(PrimitiveTest, ArcEdgeCasesEnd)
{
    Built same(new_arc(0, 1, 30, 30, 12));
    EXPECT_EQ(same.o->num_vert, 1u);
    Captured c = capture([] {
        Built bad(new_arc(0, 1, 0, 180, 0));
        EXPECT_GE(bad.o->num_vert, 1u);
        Built nan_arc(new_arc(0, 1, NAN, 10, 12));
        EXPECT_EQ(nan_arc.o->num_vert, 0u);
        Built huge(new_arc(0, 1, -1e30f, 1e30f, 12));
        EXPECT_LE(huge.o->num_vert, (unsigned)(2 * PRIMITIVE_MAX_SEGMENTS));
    });
    EXPECT_TRUE(contains(c.out, "rot_segments is 0 - using 1"));
}

TEST_F(PrimitiveTest, DiskIsAFanAroundACentreAddedLast)
{
    Built d(new_disk(0, 1, 1, 4));
    EXPECT_STREQ(d.o->name, "disk");
    ASSERT_EQ(d.o->num_vert, 5u);
    ASSERT_EQ(d.o->num_surf, 4u);
    EXPECT_POINT(d.v()[4]->point, 0, 0, 0);
    EXPECT_EQ(ref_indices(d.o, d.s()[0]), (std::vector<int>{0, 1, 4}));
    EXPECT_EQ(ref_indices(d.o, d.s()[3]), (std::vector<int>{3, 0, 4}));
    prefs.rot_segments = 6;
    Built r(create_regular_disk(1));
    EXPECT_EQ(r.o->num_surf, 6u);
    EXPECT_POINT(r.v()[0]->point, 0, 0, 0.5f);
    EXPECT_NEAR(fabs(r.s()[0]->normal[0]), 1.0, 1e-6);
    const float a[3] = {0, 0, 0}, b[3] = {2, 2, 0};
    Built dragged(add_disk(0, a, b, 0));
    EXPECT_POINT(dragged.v()[0]->point, 1, 0, 0);
}

TEST_F(PrimitiveTest, BoxFromADragHasItsSixFacesInOrder)
{
    const float a[3] = {1, 2, 3}, b[3] = {3, 5, 7};
    Built box(add_cube(0, a, b));
    EXPECT_STREQ(box.o->name, "box");
    ASSERT_EQ(box.o->num_vert, 8u);
    ASSERT_EQ(box.o->num_surf, 6u);
    EXPECT_POINT(box.v()[0]->point, 1, 2, 3);
    EXPECT_POINT(box.v()[1]->point, 1, 5, 3);
    EXPECT_POINT(box.v()[6]->point, 3, 5, 7);
    EXPECT_POINT(box.v()[7]->point, 3, 2, 7);
    const std::vector<int> faces[6] = {{0, 1, 2, 3}, {6, 7, 3, 2}, {7, 6, 5, 4}, {4, 5, 1, 0}, {1, 5, 6, 2}, {4, 0, 3, 7}};
    for (int i = 0; i < 6; i++) {
        EXPECT_EQ(ref_indices(box.o, box.s()[(size_t)i]), faces[i]);
        EXPECT_EQ(box.s()[(size_t)i]->twosided, 0);
    }
    std::vector<SVertex *> first = refs_of(box.s()[0]);
    EXPECT_UV(first[0], 1, 0);
    EXPECT_UV(first[1], 1, 1);
    EXPECT_UV(first[2], 0, 1);
    EXPECT_UV(first[3], 0, 0);
    EXPECT_POINT(box.o->centre, 2, 3.5f, 5);
    const float inside[3] = {2, 3.5f, 5};
    expect_facing_out(box.o, inside);
}

TEST_F(PrimitiveTest, BoxDraggedWithSwappedCornersIsTheSame)
{
    const float a[3] = {1, 5, 3}, b[3] = {3, 2, 7};
    const float a2[3] = {3, 2, 7}, b2[3] = {1, 5, 3};
    Built one(add_cube(0, a, b)), two(add_cube(2, a2, b2));
    for (size_t i = 0; i < 8; i++) {
        const float *p = one.v()[i]->point, *q = two.v()[i]->point;
        EXPECT_POINT(q, p[0], p[1], p[2]);
    }
}

TEST_F(PrimitiveTest, CentredBoxIsTwoSidedWithQuadTextures)
{
    Object *o = new_object(OBJECT_NORMAL);
    object_add_cube_view(o, 2, 4, 6);
    Built box(o);
    EXPECT_POINT(box.v()[0]->point, -1, -2, -3);
    EXPECT_POINT(box.v()[2]->point, 1, -2, 3);
    EXPECT_POINT(box.v()[6]->point, 1, 2, -3);
    EXPECT_EQ(ref_indices(o, box.s()[1]), (std::vector<int>{7, 4, 5, 6}));
    EXPECT_EQ(ref_indices(o, box.s()[5]), (std::vector<int>{5, 2, 1, 6}));
    for (Surface *s : box.s()) EXPECT_EQ(s->twosided, 1);
    std::vector<SVertex *> refs = refs_of(box.s()[2]);
    EXPECT_UV(refs[1], 1, 0);
    EXPECT_UV(refs[3], 0, 1);
    const float origin[3] = {0, 0, 0};
    expect_facing_out(o, origin);

    const float at[3] = {5, 0, -1};
    Built regular(create_regular_cube(at));
    EXPECT_POINT(regular.o->centre, 5, 0, -1);
    EXPECT_POINT(regular.v()[0]->point, 4.5f, -0.5f, -1.5f);
}

TEST_F(PrimitiveTest, SphereRingsBandsAndCaps)
{
    prefs.rot_segments = 4;
    prefs.sphere_from_triangles = 0;
    const float a[3] = {-1, -2, -3}, b[3] = {1, 2, 3};
    Built sp(add_sphere(0, a, b));
    EXPECT_STREQ(sp.o->name, "sphere");
    EXPECT_EQ(sp.o->type, OBJECT_NORMAL);
    ASSERT_EQ(sp.o->num_vert, 1u + 3 * 4 + 1);
    ASSERT_EQ(sp.o->num_surf, 2u * 4 + 4 + 4);
    EXPECT_POINT(sp.v()[0]->point, 0, -2, 0);
    EXPECT_POINT(sp.v()[13]->point, 0, 2, 0);
    /* Ring 2 is the equator: j = 1 is a quarter turn from x to z. */
    EXPECT_POINT(sp.v()[5]->point, 1, 0, 0);
    EXPECT_POINT(sp.v()[6]->point, 0, 0, 3);
    for (Surface *s : sp.s()) {
        EXPECT_EQ(s->shading, 1);
        EXPECT_EQ(s->twosided, 0);
    }
    /* The first band quad: ring 1 [0], ring 2 [0], ring 2 [1], ring 1 [1]. */
    EXPECT_EQ(ref_indices(sp.o, sp.s()[0]), (std::vector<int>{1, 5, 6, 2}));
    std::vector<SVertex *> q = refs_of(sp.s()[0]);
    EXPECT_UV(q[0], 1, 0.25);
    EXPECT_UV(q[2], 0.75, 0.5);
    /* Bottom cap, then top cap. */
    EXPECT_EQ(ref_indices(sp.o, sp.s()[8]), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(ref_indices(sp.o, sp.s()[12]), (std::vector<int>{13, 10, 9}));
    EXPECT_UV(refs_of(sp.s()[12])[0], 0.75, 1);
    EXPECT_POINT(sp.o->centre, 0, 0, 0);
    const float origin[3] = {0, 0, 0};
    expect_facing_out(sp.o, origin);
}

TEST_F(PrimitiveTest, SphereOfTrianglesAndTheSmallestSphere)
{
    prefs.rot_segments = 4;
    prefs.sphere_from_triangles = 1;
    const float a[3] = {0, 0, 0}, b[3] = {2, 2, 2};
    Built sp(add_sphere(0, a, b));
    ASSERT_EQ(sp.o->num_surf, 2u * 4 * 2 + 8);
    /* i = 1, j = 0 is odd: (a, b, c) and (c, d, a). */
    EXPECT_EQ(ref_indices(sp.o, sp.s()[0]), (std::vector<int>{1, 5, 6}));
    EXPECT_EQ(ref_indices(sp.o, sp.s()[1]), (std::vector<int>{6, 2, 1}));
    /* j = 1 is even: (d, a, b) and (b, c, d). */
    EXPECT_EQ(ref_indices(sp.o, sp.s()[2]), (std::vector<int>{3, 2, 6}));
    const float centre[3] = {1, 1, 1};
    expect_facing_out(sp.o, centre);

    prefs.rot_segments = 2;
    Built two(add_sphere(0, a, b));
    EXPECT_EQ(two.o->num_vert, 4u);
    EXPECT_EQ(two.o->num_surf, 4u);
    for (Surface *s : two.s()) EXPECT_EQ(s->num_vertrefs, 3u);
}

TEST_F(PrimitiveTest, SphereViewMatchesTheDraggedSphere)
{
    prefs.rot_segments = 6;
    for (int triangles = 0; triangles < 2; triangles++) {
        prefs.sphere_from_triangles = triangles;
        const float a[3] = {-0.5f, -0.5f, -0.5f}, b[3] = {0.5f, 0.5f, 0.5f};
        Built dragged(add_sphere(0, a, b));
        Object *o = new_object(OBJECT_NORMAL);
        object_add_sphere_view(o, 0.5f);
        Built view(o);
        ASSERT_EQ(view.o->num_vert, dragged.o->num_vert);
        ASSERT_EQ(view.o->num_surf, dragged.o->num_surf);
        for (size_t i = 0; i < view.v().size(); i++) {
            const float *p = dragged.v()[i]->point;
            EXPECT_POINT(view.v()[i]->point, p[0], p[1], p[2]);
        }
        for (Surface *s : view.s()) {
            EXPECT_EQ(s->shading, 1);
            EXPECT_EQ(s->twosided, 0);
        }
    }
    const float at[3] = {0, 3, 0};
    Built regular(create_regular_sphere(at));
    EXPECT_POINT(regular.v()[0]->point, 0, 2.5f, 0);
}

TEST_F(PrimitiveTest, BadSphereSegmentsAreClamped)
{
    prefs.rot_segments = -5;
    const float a[3] = {0, 0, 0}, b[3] = {1, 1, 1};
    Captured c = capture([&] {
        Built sp(add_sphere(0, a, b));
        EXPECT_EQ(sp.o->num_vert, 4u);
        Built e(create_regular_elipse(0));
        EXPECT_EQ(e.o->num_vert, 1u);
        Built cyl(new_cylinder(0));
        EXPECT_GT(cyl.o->num_surf, 0u);
    });
    EXPECT_TRUE(contains(c.out, "rot_segments is -5 - using 2"));
}

TEST_F(PrimitiveTest, ConeHasItsApexOnTheDepthAxis)
{
    prefs.rot_segments = 8;
    Built cone(new_cone(0, 1, 1, 2, 4));
    EXPECT_STREQ(cone.o->name, "cone");
    ASSERT_EQ(cone.o->num_vert, 5u);
    ASSERT_EQ(cone.o->num_surf, 5u);
    EXPECT_EQ(cone.s()[0]->surface_kind, SURFACE_POLYGON);
    /* Shifted by half the height: base at -1, apex at +1. */
    EXPECT_POINT(cone.v()[0]->point, 1, 0, -1);
    EXPECT_POINT(cone.v()[4]->point, 0, 0, 1);
    EXPECT_EQ(ref_indices(cone.o, cone.s()[1]), (std::vector<int>{0, 4, 1}));
    EXPECT_EQ(ref_indices(cone.o, cone.s()[4]), (std::vector<int>{3, 4, 0}));
    std::vector<SVertex *> side = refs_of(cone.s()[2]);
    /* The texture step is 1 / rot_segments, not 1 / the segments given. */
    EXPECT_UV(side[0], 1.0f / 8, 0);
    EXPECT_UV(side[1], 0, 1);
    EXPECT_UV(side[2], 2.0f / 8, 0);
    EXPECT_EQ(cone.s()[1]->shading, 1);

    const float a[3] = {0, 0, 0}, b[3] = {2, 4, 6};
    Built side_view(create_cone(1, a, b));
    /* View 1: depth x, height 2; radii from z and y. */
    EXPECT_POINT(side_view.v().back()->point, 1, 0, 0);
    EXPECT_POINT(side_view.v()[0]->point, -1, 0, 3);
}

TEST_F(PrimitiveTest, CylinderRingsCapsAndTheViewTwoScale)
{
    prefs.rot_segments = 4;
    Object *o = new_object(OBJECT_NORMAL);
    object_add_cylinder_view(o, 0, 1, 1, 1);
    Built cyl(o);
    ASSERT_EQ(o->num_vert, 4u + 4 + 2);
    ASSERT_EQ(o->num_surf, 8u + 4 + 4);
    /* The first vertex is one step past angle 0. */
    EXPECT_POINT(cyl.v()[0]->point, 0, 0.5f, -0.5f);
    EXPECT_POINT(cyl.v()[4]->point, 0, 0.5f, 0.5f);
    /* The cap centres are on the Y axis whatever the view. */
    EXPECT_POINT(cyl.v()[8]->point, 0, 0.5f, 0);
    EXPECT_POINT(cyl.v()[9]->point, 0, -0.5f, 0);
    EXPECT_EQ(ref_indices(o, cyl.s()[0]), (std::vector<int>{0, 5, 4}));
    EXPECT_EQ(ref_indices(o, cyl.s()[1]), (std::vector<int>{0, 1, 5}));
    std::vector<SVertex *> side = refs_of(cyl.s()[0]);
    EXPECT_UV(side[0], 1, 1);
    EXPECT_UV(side[1], 0.75, 0);
    EXPECT_EQ(cyl.s()[0]->shading, 1);
    EXPECT_EQ(ref_indices(o, cyl.s()[8]), (std::vector<int>{0, 1, 8}));
    EXPECT_EQ(ref_indices(o, cyl.s()[12]), (std::vector<int>{4, 5, 9}));

    Object *plan = new_object(OBJECT_NORMAL);
    object_add_cylinder_view(plan, 2, 2, 0, 0);
    Built scaled(plan);
    EXPECT_EQ(plan->num_surf, 8u);
    /* Only the first ring is scaled. */
    EXPECT_POINT(scaled.v()[0]->point, 0, 0.5f, 1);
    EXPECT_POINT(scaled.v()[4]->point, 0, -0.5f, 0.5f);

    Object *side_cyl = new_object(OBJECT_NORMAL);
    object_add_cylinder_view(side_cyl, 1, 1, 0, 0);
    Built side_built(side_cyl);
    EXPECT_POINT(side_built.v()[0]->point, 0.5f, 0.5f, 0);
    EXPECT_POINT(side_built.v()[4]->point, -0.5f, 0.5f, 0);

    prefs.cylinder_has_ends = 0;
    Built plain(new_cylinder(0));
    EXPECT_STREQ(plain.o->name, "cylinder");
    EXPECT_EQ(plain.o->num_surf, 8u);
}

TEST_F(PrimitiveTest, IcosahedronHasItsTwentyFacesInOrder)
{
    Built ico(create_ico(7, 9));
    ASSERT_EQ(ico.o->num_vert, 12u);
    ASSERT_EQ(ico.o->num_surf, 20u);
    EXPECT_POINT(ico.v()[0]->point, -0.525731087f, 0, 0.850650787f);
    EXPECT_EQ(ref_indices(ico.o, ico.s()[19]), (std::vector<int>{7, 2, 11}));
    for (Vertex *v : ico.v()) EXPECT_NEAR(hypot(hypot(v->point[0], v->point[1]), v->point[2]), 1.0, 1e-6);
    /* The listed triangles run clockwise seen from outside, so all
     * normals point inwards, consistently. */
    for (Surface *s : ico.s()) {
        float c[3];
        centroid(s, c);
        EXPECT_LT(c[0] * s->normal[0] + c[1] * s->normal[1] + c[2] * s->normal[2], 0.0f);
    }
}

TEST_F(PrimitiveTest, PlanarTextureCoordinatesPerView)
{
    const float a[3] = {0, 0, 0}, b[3] = {2, 4, 8};
    Built box(add_cube(0, a, b));
    calc_texture_coors(box.o, 1);
    /* View 1: u from z, v from y.  V6 is the far corner. */
    for (Surface *s : box.s()) {
        for (SVertex *r : refs_of(s)) {
            EXPECT_FLOAT_EQ(r->u, r->vertex->point[2] / 8);
            EXPECT_FLOAT_EQ(r->v, r->vertex->point[1] / 4);
        }
    }
    calc_texture_coors(box.o, 2);
    for (SVertex *r : refs_of(box.s()[2])) EXPECT_FLOAT_EQ(r->v, r->vertex->point[2] / 8);

    /* A flat object: the flat axis maps to 0, not a division by zero. */
    Built rect(add_rect(0, a, b));
    calc_texture_coors(rect.o, 1);
    for (SVertex *r : refs_of(rect.s()[0])) EXPECT_EQ(r->u, 0.0f);
}

TEST_F(PrimitiveTest, CylindricalTextureCoordinatesAreTraced)
{
    Object *o = object_with_points(nullptr, {{1, 0, 0}, {0, 2, 1}, {-1, 2, 0}}, "c");
    add_face(o, {0, 1, 2});
    Built b(o);
    Captured c = capture([&] { crap_calc_texture_coors(o); });
    std::vector<SVertex *> refs = refs_of(b.s()[0]);
    EXPECT_NEAR(refs[0]->u, 0, 1e-6);
    EXPECT_NEAR(refs[1]->u, 0.25, 1e-6);
    /* v = y / height / height. */
    EXPECT_NEAR(refs[1]->v, 0.5, 1e-6);
    EXPECT_EQ(count_lines(c.out), 6);
    EXPECT_TRUE(contains(c.out, "u 0.250000, v 0.500000"));
}

TEST_F(PrimitiveTest, NewCubeCommandAddsASelectedCubeWithUndo)
{
    char name[] = "new_cube";
    char *argv[] = {name};
    unsaved_changes = 0;
    EXPECT_EQ(do_command(1, argv), 1);
    ASSERT_EQ(world->num_kids, 1u);
    Object *cube = world_child(0);
    EXPECT_EQ(cube->num_vert, 8u);
    EXPECT_EQ(get_current_object(), cube);
    EXPECT_EQ(unsaved_changes, 1);
    if (!undo_is_recorded()) GTEST_SKIP() << "undo records are not kept in this build";
    EXPECT_EQ(do_command(1, argv), 1);
    ASSERT_NE(undo_current(), nullptr);
    EXPECT_STREQ(undo_current()->label, "add cube");
    UNDO();
    EXPECT_EQ(world->num_kids, 1u);
}

TEST_F(PrimitiveTest, RemapTexturesCommandMapsTheSelection)
{
    const float a[3] = {0, 0, 0}, b[3] = {2, 4, 8};
    Object *box = add_cube(0, a, b);
    object_add_child(world, box);
    for (Surface *s : surfaces_of(box)) {
        for (SVertex *r : refs_of(s)) r->u = r->v = 0.5f;
    }
    select_object(box);
    char name[] = "remap_textures", view[] = "2";
    char *argv[] = {name, view};
    EXPECT_EQ(do_command(2, argv), 1);
    for (SVertex *r : refs_of(surfaces_of(box)[0])) {
        EXPECT_FLOAT_EQ(r->u, r->vertex->point[0] / 2);
        EXPECT_FLOAT_EQ(r->v, r->vertex->point[2] / 8);
    }
    /* Nothing selected: nothing changes. */
    clear_selection();
    for (SVertex *r : refs_of(surfaces_of(box)[0])) r->u = 0.5f;
    EXPECT_EQ(do_command(2, argv), 1);
    EXPECT_EQ(refs_of(surfaces_of(box)[0])[0]->u, 0.5f);
}

} // namespace
