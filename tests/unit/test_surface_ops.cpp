/*
 * test_surface_ops.cpp - the surface operations on known shapes:
 * subdivide and spike, flip and the surface settings, vertex order, holes,
 * bevels, splines, triangulation, making, removing and splitting off
 * surfaces, inserting vertices, surface filters, their undo, and bad input
 * (degenerate and self-intersecting outlines, bad settings, empty
 * selections).
 */
#include "modelling_test_support.h"
#include "edit/primitive_append.h"
#include "edit/primitives.h"
#include "edit/surface_ops.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <cstring>

namespace {

class SurfaceOpsTest : public ModellingTest {};

int run(const char *command)
{
    char buffer[256];
    snprintf(buffer, sizeof buffer, "%s", command);
    char *argv[4];
    int argc = 0;
    for (char *word = strtok(buffer, " "); word && argc < 4; word = strtok(nullptr, " ")) argv[argc++] = word;
    return do_command(argc, argv);
}

Object *triangle_object(Object *parent)
{
    Object *o = object_with_points(parent, {{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}, "triangle");
    add_face(o, {0, 1, 2});
    object_calc_normals_force(o);
    return o;
}

/* ---- subdivide and spike ---- */

TEST_F(SurfaceOpsTest, SubdividedQuadGivesFourQuadsWithCornerTextures)
{
    Object *o = unit_square(world);
    select_object(o);
    EXPECT_EQ(selected_subdivide_surfaces(), 1);
    expect_consistent(o);
    ASSERT_EQ(o->num_vert, 9u);
    ASSERT_EQ(o->num_surf, 4u);
    std::vector<Vertex *> v = vertices_of(o);
    EXPECT_POINT(v[4]->point, 0.5f, 0, 0);    /* M01 */
    EXPECT_POINT(v[7]->point, 0, 0.5f, 0);    /* M30 */
    EXPECT_POINT(v[8]->point, 0.5f, 0.5f, 0); /* C */
    std::vector<Surface *> s = surfaces_of(o);
    EXPECT_EQ(ref_indices(o, s[0]), (std::vector<int>{0, 4, 8, 7}));
    EXPECT_EQ(ref_indices(o, s[1]), (std::vector<int>{4, 1, 5, 8}));
    EXPECT_EQ(ref_indices(o, s[2]), (std::vector<int>{8, 5, 2, 6}));
    EXPECT_EQ(ref_indices(o, s[3]), (std::vector<int>{7, 8, 6, 3}));
    for (Surface *q : s) {
        std::vector<SVertex *> r = refs_of(q);
        EXPECT_UV(r[0], 0, 0);
        EXPECT_UV(r[1], 1, 0);
        EXPECT_UV(r[2], 1, 1);
        EXPECT_UV(r[3], 0, 1);
        EXPECT_POINT(q->normal, 0, 0, 1);
    }
    EXPECT_EQ(selection.selected_objects, nullptr);
}

TEST_F(SurfaceOpsTest, SubdivideTriangleAndSkipOtherShapes)
{
    Object *t = triangle_object(world);
    EXPECT_EQ(surface_subdivide(t, surfaces_of(t)[0], 0), 1);
    EXPECT_EQ(t->num_vert, 4u);
    ASSERT_EQ(t->num_surf, 3u);
    EXPECT_EQ(ref_indices(t, surfaces_of(t)[0]), (std::vector<int>{0, 1, 3}));
    EXPECT_EQ(ref_indices(t, surfaces_of(t)[2]), (std::vector<int>{2, 0, 3}));
    EXPECT_POINT(vertices_of(t)[3]->point, 2.0f / 3, 2.0f / 3, 0);

    Object *p = object_with_points(world, {{0, 0, 0}, {1, 0, 0}, {2, 1, 0}, {1, 2, 0}, {0, 1, 0}});
    add_face(p, {0, 1, 2, 3, 4});
    Object *line = object_with_points(world, {{0, 0, 0}, {1, 0, 0}});
    add_face(line, {0, 1}, SURFACE_LINE);
    EXPECT_EQ(surface_subdivide(p, surfaces_of(p)[0], 0), 0);
    EXPECT_EQ(object_subdivide_surfaces(line, 0), 0);
    EXPECT_EQ(p->num_surf, 1u);
    EXPECT_EQ(line->num_surf, 1u);
}

TEST_F(SurfaceOpsTest, SpikedQuadAddsFiveVerticesAndReferencesOne)
{
    prefs.spike_factor = 0.5;
    Object *o = unit_square(world);
    select_vertices_of(o);
    EXPECT_EQ(selected_spike_surfaces(), 1);
    expect_consistent(o);
    ASSERT_EQ(o->num_vert, 9u);
    ASSERT_EQ(o->num_surf, 4u);
    Vertex *centre = vertices_of(o)[8];
    EXPECT_POINT(centre->point, 0.5f, 0.5f, 0.5f);
    int referenced_new = 0;
    for (size_t i = 4; i < 9; i++) {
        for (Surface *s : surfaces_of(o)) referenced_new += surface_contains_vertex(s, vertices_of(o)[i]);
    }
    EXPECT_EQ(referenced_new, 4); /* the centre, once per triangle */
    EXPECT_EQ(ref_indices(o, surfaces_of(o)[3]), (std::vector<int>{3, 0, 8}));
    /* The normals were recomputed: the triangles lean outwards. */
    EXPECT_GT(surfaces_of(o)[0]->normal[2], 0.5f);
    EXPECT_LT(surfaces_of(o)[0]->normal[1], -0.1f);
}

TEST_F(SurfaceOpsTest, SubdivideWithNothingSelectedRecordsNoUndo)
{
    unit_square(world);
    EXPECT_EQ(selected_subdivide_surfaces(), 0);
    EXPECT_EQ(undo_current(), nullptr);
    EXPECT_EQ(world_child(0)->num_surf, 1u);
}

TEST_F(SurfaceOpsTest, SnapshotOperationsUndoExactly)
{
    if (!undo_is_recorded()) GTEST_SKIP() << "undo records are not kept in this build";
    struct Case {
        int (*op)(void);
        const char *label;
    } cases[] = {{selected_subdivide_surfaces, "subdivide"}, {selected_spike_surfaces, "spike"},
                 {selected_surfaces_make_hole, "make hole"}, {selected_surfaces_bevel, "bevel"},
                 {spline_selected, "spline"},               {selected_surface_triangulate, "triangluate"},
                 {remove_surface, "remove surface"}};
    for (const Case &c : cases) {
        reset();
        Object *o = object_with_points(world, {{0, 0, 0}, {2, 0, 0}, {3, 1, 0}, {2, 2, 0}, {0, 2, 0}}, "pent");
        add_face(o, {0, 1, 2, 3, 4});
        Object *q = unit_square(world);
        select_vertices_of(o);
        select_object(q);
        ASSERT_EQ(c.op(), 1) << c.label;
        ASSERT_NE(undo_current(), nullptr) << c.label;
        EXPECT_STREQ(undo_current()->label, c.label);
        UNDO();
        ASSERT_EQ(world->num_kids, 2u) << c.label;
        Object *back = world_child(0);
        EXPECT_EQ(back->num_vert, 5u) << c.label;
        ASSERT_EQ(back->num_surf, 1u) << c.label;
        EXPECT_EQ(ref_indices(back, surfaces_of(back)[0]), (std::vector<int>{0, 1, 2, 3, 4})) << c.label;
        EXPECT_POINT(vertices_of(back)[2]->point, 3, 1, 0);
        EXPECT_EQ(world_child(1)->num_surf, 1u) << c.label;
    }
}

/* ---- settings ---- */

TEST_F(SurfaceOpsTest, FlipReversesAndRecomputesNormals)
{
    Object *o = unit_square(world);
    EXPECT_EQ(flip_selected_surface_normals(), 0);
    EXPECT_POINT(surfaces_of(o)[0]->normal, 0, 0, 1);
    select_object(o);
    EXPECT_EQ(flip_selected_surface_normals(), 1);
    EXPECT_EQ(ref_indices(o, surfaces_of(o)[0]), (std::vector<int>{3, 2, 1, 0}));
    EXPECT_POINT(surfaces_of(o)[0]->normal, 0, 0, -1);
}

TEST_F(SurfaceOpsTest, TypeShadingSidesAndColourOnObjectsAndWholeSurfaces)
{
    Object *group = new_group();
    object_add_child(world, group);
    Object *a = unit_square(group, "a");
    Object *b = triangle_object(group);
    select_object(group); /* tree mode: the group, subtree included */
    EXPECT_EQ(set_selected_surface_type(SURFACE_CLOSED_LINE), 1);
    EXPECT_EQ(surfaces_of(a)[0]->surface_kind, SURFACE_CLOSED_LINE);
    EXPECT_EQ(surfaces_of(b)[0]->surface_kind, SURFACE_CLOSED_LINE);
    EXPECT_EQ(set_selected_surface_type(7), 0);
    EXPECT_EQ(surfaces_of(a)[0]->surface_kind, SURFACE_CLOSED_LINE);
    EXPECT_EQ(set_selected_surface_shading(2), 1);
    EXPECT_EQ(surfaces_of(b)[0]->shading, 2);
    EXPECT_EQ(set_selected_surfaces_twosided(0), 1);
    EXPECT_EQ(surfaces_of(a)[0]->twosided, 0);
    EXPECT_EQ(set_selected_surfaces_col_index(0), 1);
    EXPECT_EQ(surfaces_of(a)[0]->mat, 0);
    /* A palette entry that does not exist is refused. */
    EXPECT_EQ(set_selected_surfaces_col_index(vk_get_num_palette()), 0);
    EXPECT_EQ(set_selected_surfaces_col_index(-1), 0);
    EXPECT_EQ(surfaces_of(a)[0]->mat, 0);

    /* Vertex mode: only the wholly selected surfaces. */
    clear_selection();
    selection.select_mode = SELECT_VERTEX;
    select_object(b);
    EXPECT_EQ(set_selected_surfaces_col_index(1), 1);
    EXPECT_EQ(surfaces_of(b)[0]->mat, 1);
    EXPECT_EQ(surfaces_of(a)[0]->mat, 0);

    clear_selection();
    EXPECT_EQ(set_selected_surface_shading(1), 0);
    EXPECT_EQ(set_selected_surfaces_twosided(1), 0);
    EXPECT_EQ(surfaces_of(a)[0]->twosided, 0);
}

TEST_F(SurfaceOpsTest, VertexOrderMovesTheFirstReferenceToTheEnd)
{
    Object *t = triangle_object(world);
    Surface *s = surfaces_of(t)[0];
    float before[3] = {s->normal[0], s->normal[1], s->normal[2]};
    select_vertices_of(t);
    EXPECT_EQ(selected_surface_change_vertex_order(), 1);
    EXPECT_EQ(ref_indices(t, s), (std::vector<int>{1, 2, 0}));
    EXPECT_POINT(s->normal, before[0], before[1], before[2]);

    Object *line = object_with_points(world, {{0, 0, 0}, {1, 0, 0}});
    Surface *l = add_face(line, {0, 1}, SURFACE_LINE);
    surface_change_vertex_order(l);
    EXPECT_EQ(ref_indices(line, l), (std::vector<int>{1, 0}));
    Surface *lonely = add_face(line, {0});
    surface_change_vertex_order(lonely);
    EXPECT_EQ(ref_indices(line, lonely), (std::vector<int>{0}));
}

/* ---- holes and bevels ---- */

TEST_F(SurfaceOpsTest, HalfHoleInAUnitSquareLeavesFourRingQuads)
{
    Object *o = unit_square(world);
    select_object(o);
    EXPECT_EQ(selected_surfaces_make_hole(), 1);
    expect_consistent(o);
    ASSERT_EQ(o->num_vert, 8u);
    ASSERT_EQ(o->num_surf, 4u);
    std::vector<Vertex *> v = vertices_of(o);
    EXPECT_POINT(v[4]->point, 0.25f, 0.25f, 0);
    EXPECT_POINT(v[6]->point, 0.75f, 0.75f, 0);
    Surface *ring = surfaces_of(o)[0];
    EXPECT_EQ(ref_indices(o, ring), (std::vector<int>{0, 1, 5, 4}));
    std::vector<SVertex *> r = refs_of(ring);
    EXPECT_UV(r[0], 0, 0);
    EXPECT_UV(r[1], 1, 0);
    EXPECT_UV(r[2], 0.75, 0.25);
    EXPECT_UV(r[3], 0.25, 0.25);
    EXPECT_EQ(ref_indices(o, surfaces_of(o)[3]), (std::vector<int>{3, 0, 4, 7}));
    double area = 0;
    for (Surface *s : surfaces_of(o)) area += polygon_area(s);
    EXPECT_NEAR(area, 0.75, 1e-6);
}

TEST_F(SurfaceOpsTest, HoleAboveAHundredPercentTurnsTheRingOver)
{
    prefs.hole_percent = 150;
    Object *o = unit_square(world);
    select_object(o);
    EXPECT_EQ(selected_surfaces_make_hole(), 1);
    /* I(k), I(k+1), O(k+1), O(k). */
    EXPECT_EQ(ref_indices(o, surfaces_of(o)[0]), (std::vector<int>{4, 5, 1, 0}));
    EXPECT_POINT(vertices_of(o)[4]->point, -0.25f, -0.25f, 0);
}

TEST_F(SurfaceOpsTest, HoleWithCapAndRefusals)
{
    Object *o = unit_square(world);
    Surface *inner = surface_make_hole(o, surfaces_of(o)[0], 0.5f, 0);
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(o->num_surf, 5u);
    EXPECT_EQ(ref_indices(o, inner), (std::vector<int>{5, 6, 7, 4}));
    EXPECT_UV(refs_of(inner)[0], 0.75, 0.25);

    /* Only polygons of three or more references. */
    Object *line = object_with_points(world, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}});
    add_face(line, {0, 1, 2}, SURFACE_LINE);
    add_face(line, {0, 1});
    for (Surface *s : surfaces_of(line)) EXPECT_EQ(surface_make_hole(line, s, 0.5f, 1), nullptr);
    EXPECT_EQ(line->num_surf, 2u);
    EXPECT_EQ(line->num_vert, 3u);
}

TEST_F(SurfaceOpsTest, NegativeHolePercentIsRefusedLeavingTheModel)
{
    prefs.hole_percent = -1;
    Object *o = unit_square(world);
    select_object(o);
    Captured c = capture([] { EXPECT_EQ(selected_surfaces_make_hole(), 0); });
    EXPECT_TRUE(contains(c.err, "the hole % setting is less than zero - please set to a positive number"));
    EXPECT_EQ(o->num_surf, 1u);
    EXPECT_EQ(o->num_vert, 4u);
    clear_selection();
    EXPECT_EQ(selected_surfaces_make_hole(), 0);
}

TEST_F(SurfaceOpsTest, BevelInsetsAndLiftsTheOutline)
{
    prefs.bevel_size = 0.1;
    Object *o = unit_square(world);
    select_object(o);
    EXPECT_EQ(selected_surfaces_bevel(), 1);
    expect_consistent(o);
    ASSERT_EQ(o->num_vert, 8u);
    ASSERT_EQ(o->num_surf, 5u);
    float k = 0.1f / std::sqrt(2.0f);
    std::vector<Vertex *> v = vertices_of(o);
    EXPECT_POINT(v[4]->point, k, k, 0.1f);
    EXPECT_POINT(v[6]->point, 1 - k, 1 - k, 0.1f);
    std::vector<Surface *> s = surfaces_of(o);
    EXPECT_EQ(ref_indices(o, s[0]), (std::vector<int>{4, 5, 6, 7}));
    EXPECT_EQ(ref_indices(o, s[1]), (std::vector<int>{0, 1, 5, 4}));
    EXPECT_UV(refs_of(s[1])[1], 1, 0);
    EXPECT_UV(refs_of(s[1])[2], 0, 0);
    EXPECT_POINT(s[0]->normal, 0, 0, 1);
}

TEST_F(SurfaceOpsTest, BevelOfACollinearCornerDoesNotFail)
{
    Object *o = object_with_points(world, {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {1, 1, 0}});
    add_face(o, {0, 1, 2, 3});
    Captured c = capture([&] { EXPECT_NE(surface_bevel(o, surfaces_of(o)[0]), nullptr); });
    EXPECT_TRUE(contains(c.out, "zero length vector!"));
    for (Vertex *v : vertices_of(o)) {
        for (float f : v->point) EXPECT_TRUE(std::isfinite(f));
    }
    Object *two = object_with_points(world, {{0, 0, 0}, {1, 0, 0}});
    add_face(two, {0, 1});
    EXPECT_EQ(surface_bevel(two, surfaces_of(two)[0]), nullptr);
}

TEST_F(SurfaceOpsTest, NormalizePoint)
{
    float v[3] = {3, 0, 4};
    normalize_point(v);
    EXPECT_POINT(v, 0.6f, 0, 0.8f);
    float z[3] = {0, 0, 0};
    Captured c = capture([&] { normalize_point(z); });
    EXPECT_EQ(c.out, "zero length vector!\n");
    EXPECT_POINT(z, 1, 0, 0);
}

/* ---- splines ---- */

TEST_F(SurfaceOpsTest, SplinedTriangleHasTwelveReferences)
{
    prefs.spline_steps = 4;
    Object *t = triangle_object(world);
    select_vertices_of(t);
    EXPECT_EQ(spline_selected(), 1);
    expect_consistent(t);
    Surface *s = surfaces_of(t)[0];
    ASSERT_EQ(s->num_vertrefs, 12u);
    /* The old points are gone; only the curve's are left. */
    EXPECT_EQ(t->num_vert, 12u);
    /* The first piece runs through P2, P0, P1 and starts halfway from P2
     * to P0. */
    EXPECT_POINT(refs_of(s)[0]->vertex->point, 0, 1, 0);
    /* t = 256: (P2 * 288 + P0 * 704 + P1 * 32) / 1024. */
    EXPECT_POINT(refs_of(s)[1]->vertex->point, 2.0f * 32 / 1024, 2.0f * 288 / 1024, 0);
    /* The same surface is selected again. */
    EXPECT_EQ(selection.num_selected_vertices, 12);
}

TEST_F(SurfaceOpsTest, SplinedOpenLineKeepsItsEnds)
{
    prefs.spline_steps = 4;
    Object *o = object_with_points(world, {{0, 0, 0}, {1, 1, 0}, {2, 0, 0}, {3, 1, 0}, {4, 0, 0}});
    add_face(o, {0, 1, 2, 3, 4}, SURFACE_LINE);
    surface_spline(surfaces_of(o)[0], nullptr);
    Surface *s = surfaces_of(o)[0];
    ASSERT_EQ(s->num_vertrefs, 2u + (5 - 2) * 4);
    EXPECT_POINT(refs_of(s).front()->vertex->point, 0, 0, 0);
    EXPECT_POINT(refs_of(s).back()->vertex->point, 4, 0, 0);
    EXPECT_EQ(o->num_vert, 14u);
    expect_consistent(o);
}

/* Random objects whose surfaces share points, repeat a point, or name
 * another object's point: after splining a random share of the surfaces
 * one by one, an old point is gone exactly when it belonged to the object
 * and every surface of the object that used it was splined. */
TEST_F(SurfaceOpsTest, SplineDropsExactlyThePointsNoOtherSurfaceUses)
{
    prefs.spline_steps = 2;
    std::mt19937 random(11);
    for (int round = 0; round < 60; round++) {
        Object *other = object_with_points(world, {{9, 9, 9}, {8, 8, 8}});
        Object *o = new_object(OBJECT_NORMAL);
        object_add_child(world, o);
        int n = 3 + (int)(random() % 12);
        std::vector<Vertex *> points;
        for (int i = 0; i < n; i++) {
            float p[3] = {(float)i, (float)(i % 3), 0.0f};
            points.push_back(object_add_new_vertex(o, p));
            /* Stale marks that name places in the object. */
            points.back()->mark = (uint32_t)(random() % (unsigned)n);
        }
        ((Vertex *)other->vertices->item)->mark = 0;
        std::vector<std::vector<Vertex *>> faces;
        for (int k = 0; k < 2 + (int)(random() % 6); k++) {
            std::vector<Vertex *> face;
            for (int c = 0; c < 3 + (int)(random() % 3); c++) face.push_back(points[random() % points.size()]);
            if (k == 1) face.push_back((Vertex *)other->vertices->item);
            faces.push_back(face);
            Surface *s = new_surface();
            for (Vertex *v : face) surface_add_vertref(s, new_svertex(v, 0, 0));
            object_add_surface(o, s);
        }
        std::vector<Surface *> surfaces = surfaces_of(o);
        std::vector<bool> splined(surfaces.size());
        for (size_t k = 0; k < surfaces.size(); k++) splined[k] = random() % 2;
        std::vector<Vertex *> want;
        for (Vertex *v : points) {
            bool used = false, kept = false;
            for (size_t k = 0; k < faces.size(); k++) {
                if (std::find(faces[k].begin(), faces[k].end(), v) == faces[k].end()) continue;
                used = true;
                if (!splined[k]) kept = true;
            }
            if (!used || kept) want.push_back(v);
        }
        for (size_t k = 0; k < surfaces.size(); k++) {
            if (splined[k]) surface_spline(surfaces[k], nullptr);
        }
        std::vector<Vertex *> old_left;
        for (List *l = o->vertices; l; l = l->next) {
            if (std::find(points.begin(), points.end(), (Vertex *)l->item) != points.end())
                old_left.push_back((Vertex *)l->item);
        }
        ASSERT_EQ(old_left, want) << "round " << round;
        EXPECT_EQ(other->num_vert, 2u);
        clear_world_children();
    }
}

TEST_F(SurfaceOpsTest, SplineKeepsPointsOtherSurfacesUse)
{
    Object *o = object_with_points(world, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
    Surface *first = add_face(o, {0, 1, 2});
    add_face(o, {0, 2, 3});
    surface_spline(first, nullptr);
    expect_consistent(o);
    /* Vertex 1 was the first triangle's alone; 0 and 2 are shared. */
    EXPECT_EQ(o->num_vert, 3u + 3 * 4);
    EXPECT_EQ(surfaces_of(o)[1]->num_vertrefs, 3u);
}

/* With no steps a curve piece adds nothing: a closed outline is left
 * without points, an open line with copies of its two ends, and the step
 * can be undone. */
TEST_F(SurfaceOpsTest, SplineWithNoStepsKeepsOnlyTheEndsOfLines)
{
    for (int steps : {0, -3}) {
        Object *t = triangle_object(world);
        Object *l = object_with_points(world, {{0, 0, 0}, {1, 0, 0}, {2, 1, 0}, {3, 0, 0}});
        Surface *line = add_face(l, {0, 1, 2, 3}, SURFACE_LINE);
        clear_selection();
        select_object(t);
        select_object(l);
        prefs.spline_steps = steps;
        EXPECT_EQ(spline_selected(), 1);
        expect_consistent(t);
        expect_consistent(l);
        EXPECT_EQ(surfaces_of(t)[0]->num_vertrefs, 0u);
        ASSERT_EQ(line->num_vertrefs, 2u);
        EXPECT_EQ(((SVertex *)line->vertrefs->item)->vertex->point[0], 0.0f);
        EXPECT_EQ(((SVertex *)line->vertrefs->next->item)->vertex->point[0], 3.0f);
        ASSERT_NE(undo_current(), nullptr);
        EXPECT_STREQ(undo_current()->label, "spline");
        clear_selection();
        object_delete(t);
        object_delete(l);
        clear_all_undos();
    }
}

TEST_F(SurfaceOpsTest, SplineRefusesBadSettingsAndOrphans)
{
    Object *t = triangle_object(world);
    select_vertices_of(t);
    prefs.spline_steps = 1 << 30;
    EXPECT_EQ(spline_selected(), 1);
    EXPECT_EQ(surfaces_of(t)[0]->num_vertrefs, 3u * SPLINE_MAX_STEPS);
    /* 40000 points in 1024 steps each would be too many: refused. */
    Object *big = new_object(OBJECT_NORMAL);
    object_add_child(world, big);
    Surface *line = new_surface_styled(SURFACE_LINE, 0, 1);
    ObjectAppender append;
    appender_start(&append, big);
    RefAppender refs = ref_appender_start(line);
    for (int i = 0; i < 40000; i++) ref_append(&refs, appender_new_vertex(&append, (float)i, (float)(i % 2), 0), 0, 0);
    appender_add_surface(&append, line);
    Captured many = capture([&] { surface_spline(line, nullptr); });
    EXPECT_TRUE(contains(many.out, "too many"));
    EXPECT_EQ(line->num_vertrefs, 40000u);

    Surface *loose = new_surface();
    Captured c = capture([&] { surface_spline(loose, nullptr); });
    surface_free(loose);
    EXPECT_TRUE(contains(c.out, "can't find surfaces parent!"));
}

/* ---- triangulation ---- */

TEST_F(SurfaceOpsTest, ConcavePolygonAndPentagonTriangulateCoveringTheArea)
{
    Object *l = object_with_points(world, {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {1, 1, 0}, {1, 2, 0}, {0, 2, 0}}, "L");
    Surface *ls = add_face(l, {0, 1, 2, 3, 4, 5});
    ls->mat = 3;
    ls->shading = 1;
    Object *p = object_with_points(world, {{0, 0, 0}, {2, 0, 0}, {3, 1, 0}, {2, 2, 0}, {0, 2, 0}}, "pent");
    add_face(p, {0, 1, 2, 3, 4});
    double l_area = polygon_area(ls), p_area = polygon_area(surfaces_of(p)[0]);
    selection.select_mode = SELECT_OBJECT;
    select_object(l);
    select_object(p);
    EXPECT_EQ(selected_surface_triangulate(), 1);
    expect_consistent(l);
    ASSERT_EQ(l->num_surf, 4u);
    ASSERT_EQ(p->num_surf, 3u);
    double sum = 0;
    for (Surface *s : surfaces_of(l)) {
        EXPECT_EQ(s->num_vertrefs, 3u);
        EXPECT_EQ(s->mat, 3);
        EXPECT_EQ(s->shading, 1);
        surface_calc_normal(s);
        /* The tessellator may join three collinear corners into a
         * triangle of no area; the others face the way the outline did. */
        if (polygon_area(s) > 1e-9) {
            EXPECT_NEAR(s->normal[2], 1, 1e-6) << "a triangle turned over";
        }
        sum += polygon_area(s);
    }
    EXPECT_NEAR(sum, l_area, 1e-6);
    sum = 0;
    for (Surface *s : surfaces_of(p)) sum += polygon_area(s);
    EXPECT_NEAR(sum, p_area, 1e-6);
    EXPECT_EQ(l->num_vert, 6u);
}

TEST_F(SurfaceOpsTest, TriangulationKeepsTextureCoordinates)
{
    Object *o = unit_square(world);
    List *triangles = surface_get_triangulations(surfaces_of(o)[0]);
    ASSERT_EQ(list_count(triangles), 2u);
    for (Surface *t : items_of<Surface>(triangles)) {
        for (SVertex *r : refs_of(t)) {
            EXPECT_EQ(r->u, r->vertex->point[0]);
            EXPECT_EQ(r->v, r->vertex->point[1]);
        }
        surface_free(t);
    }
    list_free(&triangles);
    EXPECT_EQ(o->num_surf, 1u);
}

TEST_F(SurfaceOpsTest, BadOutlinesAreReportedAndKept)
{
    /* A bow tie crosses itself: the tessellator would need new points. */
    Object *tie = object_with_points(world, {{0, 0, 0}, {1, 1, 0}, {1, 0, 0}, {0, 1, 0}}, "tie");
    add_face(tie, {0, 1, 2, 3});
    Object *flat = object_with_points(world, {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}}, "collinear");
    add_face(flat, {0, 1, 2, 3});
    Object *nan_poly = object_with_points(world, {{0, 0, 0}, {1, 0, 0}, {NAN, 1, 0}, {0, 1, 0}}, "nan");
    add_face(nan_poly, {0, 1, 2, 3});
    Object *line = object_with_points(world, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, "line");
    add_face(line, {0, 1, 2, 3}, SURFACE_LINE);
    Object *tri = triangle_object(world);
    selection.select_mode = SELECT_OBJECT;
    for (Object *o : {tie, flat, nan_poly, line, tri}) select_object(o);
    Captured c = capture([] { EXPECT_EQ(selected_surface_triangulate(), 1); });
    EXPECT_TRUE(contains(c.out, "triangulation error ("));
    EXPECT_TRUE(contains(c.err, "Some surfaces were not triangulated:\n\npolys not triangulated: 3\nlines/polylines ignored: 1"));
    for (Object *o : {tie, flat, nan_poly, line}) {
        ASSERT_EQ(o->num_surf, 1u);
        EXPECT_EQ(surfaces_of(o)[0]->num_vertrefs, 4u);
    }
    EXPECT_EQ(tri->num_surf, 1u);
    EXPECT_EQ(surface_triangulate(tri, surfaces_of(tri)[0]), 1);
    EXPECT_EQ(surface_get_triangulations(surfaces_of(tri)[0]), nullptr);
}

TEST_F(SurfaceOpsTest, RepeatedPointsDoNotBreakTriangulation)
{
    Object *o = object_with_points(world, {{0, 0, 0}, {1, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
    add_face(o, {0, 1, 2, 3, 4});
    TriangulateCounts counts = {0, 0, 0};
    Captured c = capture([&] { object_triangulate_surfaces(o, &counts); });
    expect_consistent(o);
    EXPECT_EQ(counts.polys_triangulated + counts.polys_failed, 1);
    double sum = 0;
    for (Surface *s : surfaces_of(o)) sum += polygon_area(s);
    EXPECT_NEAR(sum, 1.0, 1e-6);
}

/* ---- making, removing and splitting off surfaces ---- */

TEST_F(SurfaceOpsTest, CreateSurfaceFollowsTheSelectionOrder)
{
    Object *o = object_with_points(world, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
    selection.select_mode = SELECT_VERTEX;
    std::vector<Vertex *> v = vertices_of(o);
    for (int i : {2, 0, 3}) add_to_selected_list(v[(size_t)i]);
    Surface *s = create_surface_from_selected();
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(o->num_surf, 1u);
    EXPECT_EQ(ref_indices(o, s), (std::vector<int>{2, 0, 3}));
    EXPECT_POINT(s->normal, 0, 0, -1);

    clear_selection();
    Captured c = capture([] { EXPECT_EQ(create_surface_from_selected(), nullptr); });
    EXPECT_EQ(c.out, "No vertices selected\n");
}

TEST_F(SurfaceOpsTest, CreateSurfaceAcrossObjectsMakesANewObject)
{
    Object *a = object_with_points(world, {{0, 0, 0}, {1, 0, 0}});
    Object *b = object_with_points(world, {{1, 1, 0}});
    Object *c = object_with_points(world, {{0, 1, 0}});
    selection.select_mode = SELECT_VERTEX;
    select_object(a);
    select_object(b);
    select_object(c);
    Captured out = capture([] { EXPECT_EQ(run("createsurface"), 1); });
    EXPECT_EQ(count_lines(out.out), 2);
    EXPECT_TRUE(contains(out.out, "all vertices are not in same object - creating new object for surface\n"));
    ASSERT_EQ(world->num_kids, 4u);
    Object *made = world_child(3);
    EXPECT_EQ(made->num_vert, 4u);
    EXPECT_EQ(made->num_surf, 1u);
    EXPECT_EQ(a->num_surf, 0u);
    EXPECT_POINT(vertices_of(made)[2]->point, 1, 1, 0);
    if (undo_is_recorded()) {
        /* (undo_is_recorded cleared the record; make one again) */
        EXPECT_EQ(run("createsurface"), 1);
        ASSERT_NE(undo_current(), nullptr);
        EXPECT_STREQ(undo_current()->label, "new object");
        UNDO();
        EXPECT_EQ(world->num_kids, 4u);
    }
}

TEST_F(SurfaceOpsTest, RemoveSurfaceKeepsTheVertices)
{
    Object *o = unit_square(world);
    Object *other = triangle_object(world);
    select_vertices_of(o);
    EXPECT_EQ(run("removesurface"), 1);
    EXPECT_EQ(o->num_surf, 0u);
    EXPECT_EQ(o->num_vert, 4u);
    EXPECT_EQ(other->num_surf, 1u);
    if (undo_is_recorded()) {
        EXPECT_EQ(remove_surface(), 0); /* nothing whole is selected any more */
        EXPECT_EQ(undo_current(), nullptr);
    }
}

TEST_F(SurfaceOpsTest, SurfaceToNewObjectMovesWholeSurfaces)
{
    Object *cube = new_object(OBJECT_NORMAL);
    object_add_cube_view(cube, 1, 1, 1);
    object_add_child(world, cube);
    Surface *bottom = surfaces_of(cube)[0];
    selection.select_mode = SELECT_VERTEX;
    for (SVertex *r : refs_of(bottom)) add_to_selected_list(r->vertex);
    EXPECT_EQ(run("surface_create_object"), 1);
    expect_consistent(world);
    EXPECT_EQ(cube->num_surf, 5u);
    EXPECT_EQ(cube->num_vert, 8u); /* every corner is still used */
    ASSERT_EQ(world->num_kids, 2u);
    Object *made = world_child(1);
    EXPECT_EQ(made->num_vert, 4u);
    EXPECT_EQ(made->num_surf, 1u);
    EXPECT_EQ(selection.num_selected_vertices, 4);

    /* A lone square: its vertices go, and the emptied object with them. */
    reset();
    Object *sq = unit_square(world);
    select_vertices_of(sq);
    EXPECT_EQ(selected_surfaces_create_object(), 1);
    ASSERT_EQ(world->num_kids, 1u);
    EXPECT_EQ(world_child(0)->num_surf, 1u);
    EXPECT_EQ(world_child(0)->num_vert, 4u);

    reset();
    EXPECT_EQ(selected_surfaces_create_object(), 0);
}

/* ---- inserting vertices ---- */

TEST_F(SurfaceOpsTest, InsertVertexOnEveryEdgeOfASelectedSquare)
{
    Object *o = unit_square(world);
    select_vertices_of(o);
    EXPECT_EQ(run("insert_vertex"), 1);
    expect_consistent(o);
    ASSERT_EQ(o->num_vert, 8u);
    Surface *s = surfaces_of(o)[0];
    /* New vertices in pair order: AB, AD (the closing edge, at the head),
     * BC, CD. */
    EXPECT_EQ(ref_indices(o, s), (std::vector<int>{5, 0, 4, 1, 6, 2, 7, 3}));
    EXPECT_POINT(vertices_of(o)[5]->point, 0, 0.5f, 0);
    EXPECT_UV(refs_of(s)[0], 0, 0.5);
    EXPECT_EQ(selection.num_selected_vertices, 8);
    if (undo_is_recorded()) {
        EXPECT_EQ(selected_insert_vertex(), 1);
        ASSERT_NE(undo_current(), nullptr);
        EXPECT_STREQ(undo_current()->label, "insert vertex");
        UNDO();
        EXPECT_EQ(o->num_vert, 8u);
        EXPECT_EQ(surfaces_of(o)[0]->num_vertrefs, 8u);
    }
}

TEST_F(SurfaceOpsTest, InsertVertexMatchesOneAtATimeInsertion)
{
    /* Two equal pentagons with some vertices selected: the selection
     * command on one, single insertions in pair order on the other. */
    auto make = [] {
        Object *o = object_with_points(world, {{0, 0, 0}, {2, 0, 0}, {3, 1, 0}, {2, 2, 0}, {0, 2, 0}});
        add_face(o, {0, 1, 2, 3, 4});
        return o;
    };
    Object *a = make(), *b = make();
    selection.select_mode = SELECT_VERTEX;
    for (int i : {4, 0, 1, 3}) add_to_selected_list(vertices_of(a)[(size_t)i]);
    EXPECT_EQ(selected_insert_vertex(), 1);
    std::vector<Vertex *> vb = vertices_of(b);
    Surface *sb = surfaces_of(b)[0];
    /* Selected by first reference: 0, 1, 3, 4; neighbours: (0,1), (0,4),
     * (3,4). */
    for (auto pair : {std::make_pair(0, 1), std::make_pair(0, 4), std::make_pair(3, 4)}) {
        EXPECT_NE(surface_insert_vertex(sb, vb[(size_t)pair.first], vb[(size_t)pair.second]), nullptr);
    }
    std::vector<SVertex *> ra = refs_of(surfaces_of(a)[0]), rb = refs_of(sb);
    ASSERT_EQ(ra.size(), rb.size());
    for (size_t i = 0; i < ra.size(); i++) {
        const float *p = rb[i]->vertex->point;
        EXPECT_POINT(ra[i]->vertex->point, p[0], p[1], p[2]);
    }
    EXPECT_EQ(a->num_vert, b->num_vert);
}

TEST_F(SurfaceOpsTest, InsertVertexEdgeCases)
{
    Object *line = object_with_points(world, {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}});
    Surface *s = add_face(line, {0, 1, 2}, SURFACE_LINE);
    std::vector<Vertex *> v = vertices_of(line);
    Captured c = capture([&] { EXPECT_EQ(surface_insert_vertex(s, v[0], v[2]), nullptr); });
    EXPECT_TRUE(contains(c.out, "not joing start to end"));
    EXPECT_EQ(line->num_vert, 3u);
    /* Not neighbours: the vertex stays in the object, nothing is
     * inserted. */
    Object *sq = unit_square(world);
    std::vector<Vertex *> q = vertices_of(sq);
    EXPECT_EQ(surface_insert_vertex(surfaces_of(sq)[0], q[0], q[2]), nullptr);
    EXPECT_EQ(sq->num_vert, 5u);
    EXPECT_EQ(surfaces_of(sq)[0]->num_vertrefs, 4u);
    /* A repeated vertex takes the one-at-a-time path. */
    Object *rep = object_with_points(world, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}});
    Surface *rs = add_face(rep, {0, 1, 2, 1});
    selection.select_mode = SELECT_VERTEX;
    clear_selection();
    select_object(rep);
    EXPECT_EQ(selected_insert_vertex(), 1);
    expect_consistent(rep);
    EXPECT_GT(rs->num_vertrefs, 4u);
    /* Fewer than two selected vertices: nothing happens. */
    clear_selection();
    add_to_selected_list(q[0]);
    EXPECT_EQ(selected_insert_vertex(), 0);
}

/* ---- surface filters ---- */

int filter_calls = 0;
void count_filter(Object *, Surface *s)
{
    filter_calls++;
    s->mat = 2;
}

TEST_F(SurfaceOpsTest, FiltersGetNumberedIdsAndRunByIdOnly)
{
    SurfaceFilter *f1 = vk_register_surface_filter("colour two", "sets material 2", count_filter, 0);
    SurfaceFilter *f2 = vk_register_surface_filter("quiet", "no undo", count_filter, SURFACE_FILTER_NO_UNDO);
    SurfaceFilter *f3 = vk_register_surface_filter("hidden", "no menu", count_filter, SURFACE_FILTER_NO_MENU);
    ASSERT_TRUE(f1 && f2 && f3);
    int n = atoi(f1->id + strlen("surface_filter_"));
    EXPECT_EQ(strncmp(f1->id, "surface_filter_", 15), 0);
    EXPECT_EQ(std::string(f2->id), "surface_filter_" + std::to_string(n + 1));
    EXPECT_EQ(std::string(f3->id), "surface_filter_" + std::to_string(n + 2));

    Object *o = unit_square(world);
    Object *t = triangle_object(world);
    selection.select_mode = SELECT_OBJECT;
    select_object(o);
    select_object(t);
    filter_calls = 0;
    EXPECT_EQ(execute_surface_filter(f1->id), 1);
    EXPECT_EQ(filter_calls, 2);
    EXPECT_EQ(surfaces_of(t)[0]->mat, 2);
    EXPECT_EQ(selection.selected_objects, nullptr);
    if (undo_is_recorded()) {
        select_object(o);
        EXPECT_EQ(execute_surface_filter(f2->id), 1);
        EXPECT_EQ(undo_current(), nullptr) << "a no-undo filter records nothing";
        select_object(o);
        EXPECT_EQ(execute_surface_filter(f1->id), 1);
        ASSERT_NE(undo_current(), nullptr);
        EXPECT_STREQ(undo_current()->label, "colour two");
    }
    char name[] = "colour two";
    filter_calls = 0;
    select_object(o);
    Captured c = capture([&] { EXPECT_EQ(execute_surface_filter(name), 0); });
    EXPECT_EQ(filter_calls, 0);
    EXPECT_TRUE(contains(c.err, "No surface filter named 'colour two' found."));
    clear_selection();
    EXPECT_EQ(selected_surfaces_do_filter(f1), 0);
    EXPECT_EQ(vk_register_surface_filter(nullptr, "x", count_filter, 0), nullptr);
}

} // namespace
