/*
 * test_extrude.cpp - extrusion of objects (one and several segments, the
 * triangular-number offsets, line profiles, end caps) and of vertices
 * (within one object and across objects), revolving (the closing rule at
 * 360 degrees, profiles touching the axis, bad settings), and extruding
 * along a path with its refusals.
 */
#include "modelling_test_support.h"
#include "edit/extrude.h"
#include "edit/primitives.h"

#include <cmath>

namespace {

class ExtrudeTest : public ModellingTest {};

const float origin[3] = {0, 0, 0};

TEST_F(ExtrudeTest, OneSegmentOnAQuadGivesABox)
{
    Object *o = unit_square(world);
    select_object(o);
    const float end[3] = {0, 0, -1};
    EXPECT_EQ(extrude_selected(origin, end), nullptr);
    expect_consistent(o);
    ASSERT_EQ(o->num_vert, 8u);
    ASSERT_EQ(o->num_surf, 6u);
    std::vector<Vertex *> v = vertices_of(o);
    for (int i = 0; i < 4; i++) {
        const float *p = v[(size_t)i]->point;
        EXPECT_POINT(v[(size_t)i + 4]->point, p[0], p[1], p[2] - 1);
    }
    std::vector<Surface *> s = surfaces_of(o);
    /* The first face, the end cap reversed, then the four links. */
    EXPECT_EQ(ref_indices(o, s[0]), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(ref_indices(o, s[1]), (std::vector<int>{7, 6, 5, 4}));
    EXPECT_EQ(ref_indices(o, s[2]), (std::vector<int>{0, 4, 5, 1}));
    EXPECT_EQ(ref_indices(o, s[5]), (std::vector<int>{3, 7, 4, 0}));
    const float inside[3] = {0.5f, 0.5f, -0.5f};
    expect_facing_out(o, inside);
}

TEST_F(ExtrudeTest, ThreeSegmentsLieAtOneThreeAndSixSteps)
{
    prefs.extrude_segments = 3;
    Object *o = unit_square(world);
    select_object(o);
    const float end[3] = {0, 0, -3};
    extrude_selected(origin, end);
    expect_consistent(o);
    ASSERT_EQ(o->num_vert, 16u);
    ASSERT_EQ(o->num_surf, 1u + 1 + 3 * 4);
    std::vector<Vertex *> v = vertices_of(o);
    EXPECT_NEAR(v[4]->point[2], -1, 1e-6);
    EXPECT_NEAR(v[8]->point[2], -3, 1e-6);
    EXPECT_NEAR(v[12]->point[2], -6, 1e-6);
    /* The links of copy 1 join copy 0 to copy 1. */
    std::vector<Surface *> s = surfaces_of(o);
    EXPECT_EQ(ref_indices(o, s[1]), (std::vector<int>{0, 4, 5, 1}));
    EXPECT_EQ(ref_indices(o, s[5]), (std::vector<int>{4, 8, 9, 5}));
    /* The end cap is the last copy's face, reversed. */
    EXPECT_EQ(ref_indices(o, s[9]), (std::vector<int>{15, 14, 13, 12}));
}

TEST_F(ExtrudeTest, ClosedLineProfileMakesOnlyWalls)
{
    Object *o = object_with_points(world, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
    add_face(o, {0, 1, 2, 3}, SURFACE_CLOSED_LINE);
    Object *child = object_with_points(o, {{5, 0, 0}, {6, 0, 0}});
    add_face(child, {0, 1}, SURFACE_LINE);
    select_object(o);
    const float end[3] = {0, 2, 0};
    extrude_selected(origin, end);
    expect_consistent(o);
    EXPECT_EQ(o->num_vert, 8u);
    ASSERT_EQ(o->num_surf, 4u);
    for (Surface *s : surfaces_of(o)) {
        EXPECT_EQ(s->surface_kind, SURFACE_POLYGON);
        EXPECT_EQ(s->num_vertrefs, 4u);
    }
    /* Children are extruded too; an open line has no closing edge. */
    EXPECT_EQ(child->num_vert, 4u);
    EXPECT_EQ(child->num_surf, 1u);
}

TEST_F(ExtrudeTest, ExtrudeObjectWithRotationAndBadSizes)
{
    Object *o = object_with_points(nullptr, {{1, 0, 0}, {1, 1, 0}});
    add_face(o, {0, 1}, SURFACE_LINE);
    const float d[3] = {0, 0, 0}, rotation[3] = {0, 90, 0};
    extrude_object(o, d, 1, rotation);
    EXPECT_EQ(o->num_vert, 4u);
    EXPECT_POINT(vertices_of(o)[2]->point, 0, 0, -1);
    /* A surface of one reference gives one edge to itself. */
    Object *dot = object_with_points(nullptr, {{1, 0, 0}});
    add_face(dot, {0});
    const float up[3] = {0, -1, 0};
    extrude_object(dot, up, 1, nullptr);
    EXPECT_EQ(dot->num_surf, 3u);
    Captured c = capture([&] { extrude_object(dot, up, EXTRUDE_MAX_NEW_VERTICES, nullptr); });
    EXPECT_TRUE(contains(c.out, "too many"));
    EXPECT_EQ(dot->num_vert, 2u);
    object_delete(o);
    object_delete(dot);
}

TEST_F(ExtrudeTest, VertexExtrusionWithinOneObject)
{
    Object *o = unit_square(world);
    object_add_new_vertex(o, std::array<float, 3>{5, 5, 5}.data());
    select_vertices_of(o);
    const float end[3] = {0, 0, 1};
    Captured c = capture([&] { EXPECT_EQ(extrude_selected(origin, end), nullptr); });
    EXPECT_TRUE(contains(c.out, "one owner\n"));
    expect_consistent(o);
    /* Every selected vertex is copied, the loose one too. */
    EXPECT_EQ(o->num_vert, 10u);
    ASSERT_EQ(o->num_surf, 1u + 1 + 4);
    EXPECT_POINT(vertices_of(o)[9]->point, 5, 5, 6);
    EXPECT_EQ(ref_indices(o, surfaces_of(o)[1]), (std::vector<int>{5, 6, 7, 8}));
    EXPECT_EQ(ref_indices(o, surfaces_of(o)[2]), (std::vector<int>{0, 5, 6, 1}));
}

TEST_F(ExtrudeTest, VertexExtrusionAcrossTwoObjectsMakesANewObject)
{
    Object *a = object_with_points(world, {{0, 0, 0}, {1, 0, 0}});
    Object *b = object_with_points(world, {{1, 1, 0}, {0, 1, 0}});
    selection.select_mode = SELECT_VERTEX;
    select_object(a);
    select_object(b);
    const float end[3] = {0, 0, 1};
    Object *made = nullptr;
    Captured c = capture([&] { made = extrude_selected(origin, end); });
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(contains(c.out, "> one owner\n"));
    const char *message = "a new object was created because selected vertices were in >1 object";
    size_t first = c.out.find(message);
    ASSERT_NE(first, std::string::npos);
    EXPECT_NE(c.out.find(message, first + 1), std::string::npos) << "the message is printed twice";
    EXPECT_EQ(made->parent, world);
    EXPECT_EQ(made->num_vert, 8u);
    EXPECT_EQ(a->num_vert, 2u);
    EXPECT_POINT(vertices_of(made)[4]->point, 0, 0, 1);
}

TEST_F(ExtrudeTest, VertexExtrusionAcrossObjectsWallsAreQuadrilaterals)
{
    /* A whole surface in one object plus a vertex of another. */
    Object *a = unit_square(world);
    Object *b = object_with_points(world, {{9, 9, 9}});
    selection.select_mode = SELECT_VERTEX;
    select_object(a);
    select_object(b);
    const float end[3] = {0, 0, 2};
    Object *made = nullptr;
    capture([&] { made = extrude_selected(origin, end); });
    ASSERT_NE(made, nullptr);
    expect_consistent(made);
    EXPECT_EQ(made->num_vert, 10u);
    ASSERT_EQ(made->num_surf, 1u + 4);
    for (size_t i = 1; i < 5; i++) EXPECT_EQ(surfaces_of(made)[i]->num_vertrefs, 4u);
    EXPECT_EQ(ref_indices(made, surfaces_of(made)[1]), (std::vector<int>{0, 5, 6, 1}));
}

TEST_F(ExtrudeTest, EmptySelectionOnlyShowsItsStatus)
{
    unit_square(world);
    const float end[3] = {0, 0, 1};
    EXPECT_EQ(extrude_selected(origin, end), nullptr);
    EXPECT_EQ(world_child(0)->num_vert, 4u);
}

/* ---- revolve ---- */

TEST_F(ExtrudeTest, FullRevolveClosesOnTheSourceVertices)
{
    prefs.rot_segments = 4;
    prefs.revolve_degs = 360;
    Object *o = object_with_points(world, {{1, 0, 0}, {1, 1, 0}});
    add_face(o, {0, 1}, SURFACE_LINE);
    select_object(o);
    EXPECT_EQ(rotate_form_selected_objects(1), 1);
    expect_consistent(o);
    /* The last copy is still added though it lies on the source. */
    EXPECT_EQ(o->num_vert, 2u + 4 * 2);
    ASSERT_EQ(o->num_surf, 4u);
    std::vector<Vertex *> v = vertices_of(o);
    EXPECT_POINT(v[2]->point, 0, 0, -1); /* a quarter turn about y */
    EXPECT_POINT(v[8]->point, 1, 0, 0);
    /* The last links go from the third copy back to vertices 0 and 1. */
    EXPECT_EQ(ref_indices(o, surfaces_of(o)[3]), (std::vector<int>{6, 0, 1, 7}));
    EXPECT_FLOAT_EQ(o->centre[1], 0.5f);
}

TEST_F(ExtrudeTest, PartRevolveDoesNotClose)
{
    prefs.rot_segments = 2;
    prefs.revolve_degs = 180;
    Object *o = object_with_points(world, {{1, 0, 0}, {1, 1, 0}});
    add_face(o, {0, 1}, SURFACE_LINE);
    select_object(o);
    EXPECT_EQ(rotate_form_selected_objects(1), 1);
    EXPECT_EQ(ref_indices(o, surfaces_of(o)[1]), (std::vector<int>{2, 4, 5, 3}));
}

TEST_F(ExtrudeTest, ProfileTouchingTheAxisGivesTriangles)
{
    prefs.rot_segments = 6;
    Object *o = object_with_points(world, {{0, 1, 0}, {1, 0, 0}});
    add_face(o, {0, 1}, SURFACE_LINE);
    select_object(o);
    EXPECT_EQ(rotate_form_selected_objects(1), 1);
    ASSERT_EQ(o->num_surf, 6u);
    for (Surface *s : surfaces_of(o)) EXPECT_EQ(s->num_vertrefs, 3u);
}

TEST_F(ExtrudeTest, RevolveOfAClosedPolygonAddsAnEndCap)
{
    prefs.rot_segments = 3;
    prefs.revolve_degs = 90;
    Object *o = object_with_points(world, {{1, 0, 0}, {2, 0, 0}, {2, 1, 0}, {1, 1, 0}});
    add_face(o, {0, 1, 2, 3});
    select_object(o);
    EXPECT_EQ(rotate_form_selected_objects(2), 1);
    expect_consistent(o);
    EXPECT_EQ(o->num_vert, 16u);
    EXPECT_EQ(o->num_surf, 1u + 1 + 3 * 4);
}

TEST_F(ExtrudeTest, RevolveRefusesBadSettingsLeavingTheModel)
{
    Object *o = object_with_points(world, {{1, 0, 0}, {1, 1, 0}});
    add_face(o, {0, 1}, SURFACE_LINE);
    select_object(o);
    for (int degs : {0, -10, 361}) {
        prefs.revolve_degs = degs;
        Captured c = capture([] { EXPECT_EQ(rotate_form_selected_objects(1), 0); });
        EXPECT_TRUE(contains(c.err, "The setting 'revolve degrees' is out of range (should be 1-360)"));
    }
    prefs.revolve_degs = 360;
    for (int n : {0, -3}) {
        prefs.rot_segments = n;
        Captured c = capture([] { EXPECT_EQ(rotate_form_selected_objects(1), 0); });
        EXPECT_TRUE(contains(c.err, "rot segments"));
    }
    EXPECT_EQ(o->num_vert, 2u);
    EXPECT_EQ(o->num_surf, 1u);
    EXPECT_EQ(undo_current(), nullptr);
    /* Too many steps: the object is left alone, nothing hangs. */
    prefs.rot_segments = 1 << 30;
    Captured many = capture([] { EXPECT_EQ(rotate_form_selected_objects(1), 1); });
    EXPECT_TRUE(contains(many.out, "too many"));
    EXPECT_EQ(o->num_vert, 2u);
    prefs.rot_segments = 4;
    clear_selection();
    EXPECT_EQ(rotate_form_selected_objects(1), 0);
}

TEST_F(ExtrudeTest, RevolveUndoesExactly)
{
    if (!undo_is_recorded()) GTEST_SKIP() << "undo records are not kept in this build";
    Object *o = object_with_points(world, {{1, 0, 0}, {1, 1, 0}});
    add_face(o, {0, 1}, SURFACE_LINE);
    select_object(o);
    char name[] = "revolve", axis[] = "1";
    char *argv[] = {name, axis};
    EXPECT_EQ(do_command(2, argv), 1);
    ASSERT_NE(undo_current(), nullptr);
    EXPECT_STREQ(undo_current()->label, "revolve");
    UNDO();
    ASSERT_EQ(world->num_kids, 1u);
    EXPECT_EQ(world_child(0)->num_vert, 2u);
    EXPECT_EQ(world_child(0)->num_surf, 1u);
}

/* ---- extrusion along a path ---- */

Object *path_line(std::initializer_list<P3f> points)
{
    Object *path = object_with_points(world, points, "path");
    Surface *s = new_surface();
    s->surface_kind = SURFACE_LINE;
    for (Vertex *v : vertices_of(path)) surface_add_vertref(s, new_svertex(v, 0, 0));
    object_add_surface(path, s);
    return path;
}

TEST_F(ExtrudeTest, DefiningThePathNeedsOneSingleLineObject)
{
    Captured none = capture([] { EXPECT_EQ(vk_define_path_object(), 0); });
    EXPECT_TRUE(contains(none.err, "Define path object:\nYou need to select a single line object for the path"));
    Object *two = object_with_points(world, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}});
    add_face(two, {0, 1}, SURFACE_LINE);
    add_face(two, {1, 2}, SURFACE_LINE);
    select_object(two);
    Captured c = capture([] { EXPECT_EQ(vk_define_path_object(), 0); });
    EXPECT_TRUE(contains(c.err, "Define path object:\nThe path object needs to be one containing a single surface "
                                "which is a line"));
    Object *poly = unit_square(world);
    clear_selection();
    select_object(poly);
    EXPECT_EQ(vk_define_path_object(), 0);
    clear_selection();
    select_object(path_line({{0, 0, 0}, {1, 0, 0}}));
    EXPECT_EQ(vk_define_path_object(), 1);
}

TEST_F(ExtrudeTest, ExtrudeAlongAStraightPath)
{
    Object *path = path_line({{0, 0, 0}, {2, 0, 0}, {4, 0, 0}});
    select_object(path);
    ASSERT_EQ(vk_define_path_object(), 1);
    Object *o = unit_square(world);
    clear_selection();
    select_object(o);
    Captured c = capture([] { EXPECT_EQ(vk_extrude_along_path(), 1); });
    EXPECT_TRUE(contains(c.out, "extrude along path\nextrude along surface\ndot -1.000000 180.000000\n"));
    expect_consistent(o);
    ASSERT_EQ(o->num_vert, 16u);
    ASSERT_EQ(o->num_surf, 1u + 3 * 4);
    std::vector<Vertex *> v = vertices_of(o);
    /* Copy 0 lies on the object; copy 1 is moved and turned half round
     * about z at the corner; the last copy is only moved. */
    EXPECT_POINT(v[4]->point, 0, 0, 0);
    EXPECT_POINT(v[9]->point, 1, 0, 0);
    EXPECT_POINT(v[10]->point, 1, -1, 0);
    EXPECT_POINT(v[14]->point, 5, 1, 0);
    std::vector<Surface *> s = surfaces_of(o);
    /* The first copy coincides with the object, so its links keep two
     * references: the copy's first end and the object's second. */
    EXPECT_EQ(ref_indices(o, s[1]), (std::vector<int>{4, 1}));
    EXPECT_EQ(ref_indices(o, s[5]), (std::vector<int>{4, 8, 9, 5}));
    EXPECT_EQ(s[0]->surface_kind, SURFACE_POLYGON);
    if (undo_current()) {
        EXPECT_STREQ(undo_current()->label, "extrude along path");
    }
}

TEST_F(ExtrudeTest, PathRefusalsLeaveTheModel)
{
    Object *path = path_line({{0, 0, 0}, {0, 1, 0}});
    select_object(path);
    ASSERT_EQ(vk_define_path_object(), 1);
    /* No current object: refused with the message, nothing changes. */
    clear_selection();
    Captured no_object = capture([] { EXPECT_EQ(vk_extrude_along_path(), 0); });
    EXPECT_TRUE(contains(no_object.err, "you need to select an object to be\nextruded along the path."));
    EXPECT_EQ(path->num_vert, 2u);
    /* The path object is deleted: reported and forgotten. */
    Object *o = unit_square(world);
    select_object(o);
    object_delete(path);
    Captured gone = capture([] { EXPECT_EQ(vk_extrude_along_path(), 0); });
    EXPECT_TRUE(contains(gone.err, "Extrude along path:\nthe path object is no longer valid\nPlease define a new "
                                   "path (an object containing a single line)."));
    EXPECT_EQ(o->num_vert, 4u);
    Captured forgotten = capture([] { EXPECT_EQ(vk_extrude_along_path(), 0); });
    EXPECT_TRUE(contains(forgotten.err, "Extrude along path:\nno path object defined - use object->define path "
                                        "object to set."));
    /* A path edited into something else is no longer valid either. */
    Object *p2 = path_line({{0, 0, 0}, {0, 1, 0}});
    clear_selection();
    select_object(p2);
    ASSERT_EQ(vk_define_path_object(), 1);
    add_face(p2, {0, 1}, SURFACE_LINE);
    clear_selection();
    select_object(o);
    Captured edited = capture([] { EXPECT_EQ(vk_extrude_along_path(), 0); });
    EXPECT_TRUE(contains(edited.err, "no longer valid"));
    EXPECT_EQ(o->num_surf, 1u);
}

} // namespace
