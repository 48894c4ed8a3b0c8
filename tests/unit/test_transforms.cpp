/*
 * test_transforms.cpp - matrices and frames (the rotation formula exactly,
 * products, inverses), the object transforms, the selection transforms
 * (move, rotate in each view, scale, size to, resize box to box, mirror),
 * and the transform commands: their undo (bit for bit where the inverse
 * is exact), refused input (NaN, infinity, out-of-range results, bad
 * axis, nothing selected) leaving the model as it was.
 */
#include "edit_test_support.h"
#include "app/commands.h"
#include "edit/transform.h"

#include <cfloat>
#include <cmath>

namespace {

typedef EditTest TransformTest;

void expect_near(const Point &a, const Point &b, float tolerance = 1e-5f)
{
    for (int i = 0; i < 3; i++) EXPECT_NEAR(a[i], b[i], tolerance) << "component " << i;
}

Point point_of(Object *o, unsigned int i)
{
    const float *p = vk_object_get_vertex_at_index(o, i)->point;
    return {p[0], p[1], p[2]};
}

/* ---- matrices and frames ---- */

TEST(Matrix, ZeroAnglesGiveExactlyTheIdentity)
{
    float m[9];
    matrix_set_rotate(m, 0, 0, 0);
    EXPECT_EQ(matrix_is_identity(m), 1);
    const float id[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    for (int i = 0; i < 9; i++) EXPECT_EQ(m[i], id[i]);
    m[3] = 1e-30f;
    EXPECT_EQ(matrix_is_identity(m), 0);
}

TEST(Matrix, RotationIsTheFormulaWithSinglePrecisionSines)
{
    float rx = 0.3f, ry = -1.1f, rz = 2.0f;
    float cx = cosf(rx), sx = sinf(rx), cy = cosf(ry), sy = sinf(ry), cz = cosf(rz), sz = sinf(rz);
    const float expect[9] = {cz * cy, sx * (cz * sy) + sz * cx, sz * sx - cx * (cz * sy),
                             -(sz * cy), cz * cx - sx * (sz * sy), cx * (sz * sy) + cz * sx,
                             sy, -(cy * sx), cy * cx};
    float m[9];
    matrix_set_rotate(m, rx, ry, rz);
    for (int i = 0; i < 9; i++) EXPECT_EQ(m[i], expect[i]) << "m" << i;
    /* Rx * Ry * Rz: z turns first.  90 degrees about z takes x to y. */
    matrix_set_rotate(m, 0, 0, (float)(M_PI / 2));
    float p[3] = {1, 0, 0};
    matrix_rotate_point(m, p);
    expect_near({p[0], p[1], p[2]}, {0, 1, 0}, 1e-6f);
}

TEST(Matrix, ProductsTransposesAndFrames)
{
    float a[9], b[9], c[9], inv[9];
    matrix_set_rotate(a, 0.4f, 0.2f, -0.7f);
    matrix_set_rotate(b, -0.1f, 0.9f, 0.3f);
    rotmult(c, a, b);
    float p[3] = {1, 2, 3}, q[3] = {1, 2, 3};
    matrix_rotate_point(c, p);
    matrix_rotate_point(b, q);
    matrix_rotate_point(a, q);
    expect_near({p[0], p[1], p[2]}, {q[0], q[1], q[2]});
    rotinvert(inv, a);
    matrix_multiply(a, inv, c);
    for (int i = 0; i < 9; i++) EXPECT_NEAR(c[i], i % 4 == 0 ? 1.0f : 0.0f, 1e-6f);
    const float t[3] = {5, -6, 7};
    float local[3], global[3];
    const float x[3] = {1, 1, 1};
    point_transform_local_to_global(global, a, t, x);
    point_transform_global_to_local(local, a, t, global);
    expect_near({local[0], local[1], local[2]}, {1, 1, 1});
    /* A frame times its inverse is the identity frame. */
    float ri[9], ti[3], rr[9], tt[3];
    frame_invert(ri, ti, a, t);
    frame_mult(rr, tt, a, t, ri, ti);
    for (int i = 0; i < 9; i++) EXPECT_NEAR(rr[i], i % 4 == 0 ? 1.0f : 0.0f, 1e-6f);
    expect_near({tt[0], tt[1], tt[2]}, {0, 0, 0});
    /* frame_multinv(R, t, A, B) = inverse(A) * B. */
    float r3[9], t3[3];
    frame_cp(r3, t3, a, t);
    frame_multinv(r3, t3, a, t, a, t);
    EXPECT_EQ(matrix_is_identity(r3) || std::fabs(r3[0] - 1) < 1e-6f, true);
    expect_near({t3[0], t3[1], t3[2]}, {0, 0, 0});
    /* frame_postmult: in place, as frame_mult. */
    float r4[9], t4[3], r5[9], t5[3];
    frame_cp(r4, t4, a, t);
    frame_postmult(r4, t4, b, x);
    frame_mult(r5, t5, a, t, b, x);
    EXPECT_EQ(memcmp(r4, r5, sizeof r4), 0);
    EXPECT_EQ(memcmp(t4, t5, sizeof t4), 0);
}

TEST(Matrix, PrintWritesStorageOrder)
{
    const float m[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    Captured c = capture([&] { matrix_print(m); });
    EXPECT_EQ(c.out, "Matrix:\n1.000000 2.000000 3.000000\n4.000000 5.000000 6.000000\n7.000000 8.000000 9.000000\n");
}

/* ---- objects ---- */

TEST_F(TransformTest, ObjectTransformsCoverTheSubtree)
{
    Object *a = add_square(world);
    Object *b = add_square(a, 5);
    b->centre[0] = 3;
    const float d[3] = {1, 2, 3};
    translate_object(a, d);
    EXPECT_EQ(point_of(b, 0), (Point{6, 2, 3}));
    EXPECT_EQ(centre_of(b), (Point{4, 2, 3}));
    translate_object_only(a, d);
    EXPECT_EQ(point_of(b, 0), (Point{6, 2, 3}));
    translate_object_abs(b, d);
    EXPECT_EQ(centre_of(b), (Point{1, 2, 3}));
    const float s[3] = {2, 3, 4};
    object_scale(a, 2, 3, 4);
    EXPECT_EQ(b->scale[1], 3.0f);
    multiply_object(b, s);
    EXPECT_EQ(b->scale[1], 3.0f);
    const float t1[3] = {1, 0, 0}, sm[3] = {-1, 1, 1}, t2[3] = {0, 0, 0};
    Point before_centre = centre_of(a);
    Point p0 = point_of(a, 0);
    translate_multiply_object(a, t1, sm, t2);
    EXPECT_EQ(point_of(a, 0)[0], -(p0[0] + 1));
    EXPECT_EQ(centre_of(a), before_centre); /* locations stay */
    set_global_matrix_rotate(0, 0, (float)M_PI);
    rotate_object(a);
    EXPECT_TRUE(model_consistent());
}

/* ---- the selection ---- */

TEST_F(TransformTest, RotateInView0TurnsXToMinusY)
{
    Object *o = add_points(world, {{1, 0, 0}, {0, 0, 0}});
    select_object(o);
    const float c[3] = {0, 0, 0};
    rotate_selected(90.0f, 0, c);
    expect_near(point_of(o, 0), {0, -1, 0}, 1e-6f);
    /* View 1 turns about +x: y goes to z. */
    Object *p = add_points(world, {{0, 1, 0}});
    clear_selection();
    select_object(p);
    rotate_selected(90.0f, 1, c);
    expect_near(point_of(p, 0), {0, 0, 1}, 1e-6f);
    /* View 2 turns about -y: x goes to z. */
    Object *q = add_points(world, {{1, 0, 0}});
    clear_selection();
    select_object(q);
    rotate_selected(90.0f, 2, c);
    expect_near(point_of(q, 0), {0, 0, 1}, 1e-6f);
    /* About a centre, with the location turned too. */
    Object *r = add_points(world, {{3, 2, 0}});
    r->centre[0] = 3;
    r->centre[1] = 2;
    clear_selection();
    select_object(r);
    const float c2[3] = {2, 2, 0};
    rotate_selected(90.0f, 0, c2);
    expect_near(point_of(r, 0), {2, 1, 0}, 1e-6f);
    expect_near(centre_of(r), {2, 1, 0}, 1e-6f);
}

TEST_F(TransformTest, MoveShiftsTheBoxAndPoints)
{
    Object *o = add_square(world);
    select_object(o);
    const float d[3] = {0.5f, 1, -2};
    move_selection(d);
    EXPECT_EQ(point_of(o, 2), (Point{1.5f, 2, -2}));
    EXPECT_EQ(selection.box_min[2], -2.0f);
    EXPECT_EQ(selection.box_max[0], 1.5f);
}

TEST_F(TransformTest, MirrorTwiceRestoresAndLeavesLocations)
{
    Object *o = add_points(world, {{0, 0, 0}, {1, 2, 0}, {4, 1, 0}});
    o->centre[0] = 7;
    auto before = points_of(o);
    select_object(o);
    mirror_selected(0);
    EXPECT_EQ(points_of(o)[0], (Point{4, 0, 0}));
    EXPECT_EQ(points_of(o)[1], (Point{3, 2, 0}));
    EXPECT_EQ(o->centre[0], 7.0f);
    mirror_selected(0);
    EXPECT_TRUE(same_bits(before, points_of(o)));
    EXPECT_EQ(mirror_selected(3), 0);
    EXPECT_EQ(mirror_selected(-1), 0);
    EXPECT_TRUE(same_bits(before, points_of(o)));
}

TEST_F(TransformTest, SizeToFlattensForZeroAndIgnoresNegativeTargets)
{
    Object *o = add_points(world, {{0, 0, 0}, {2, 4, 0}});
    select_object(o);
    const float target[3] = {0, -5, 3};
    selection_size_to(target);
    EXPECT_EQ(point_of(o, 0), (Point{1, 0, 0}));
    EXPECT_EQ(point_of(o, 1), (Point{1, 4, 0})); /* y kept, z flat stays */
    /* Nothing selected: nothing happens. */
    clear_selection();
    EXPECT_EQ(scale_selected(2, 2, 2), 0);
    EXPECT_EQ(point_of(o, 1), (Point{1, 4, 0}));
}

TEST_F(TransformTest, ScaleAboutTheBoxCentre)
{
    Object *o = add_points(world, {{0, 0, 0}, {2, 4, 2}});
    select_object(o);
    scale_selected(2, 0.5f, 1);
    EXPECT_EQ(point_of(o, 0), (Point{-1, 1, 0}));
    EXPECT_EQ(point_of(o, 1), (Point{3, 3, 2}));
    EXPECT_EQ(o->scale[0], 2.0f);
    EXPECT_EQ(selection.box_max[0], 3.0f);
}

TEST_F(TransformTest, ResizeOfAFlatAxisMapsOntoTheTargetMinimum)
{
    Object *o = add_points(world, {{0, 0, 5}, {2, 2, 5}});
    select_object(o);
    const float a[3] = {2, 2, 5}, b[3] = {0, 0, 5}, c[3] = {4, 1, 9}, d[3] = {2, -1, 7};
    resize_selected_to_bounding_box(a, b, c, d);
    EXPECT_EQ(point_of(o, 0), (Point{2, -1, 7}));
    EXPECT_EQ(point_of(o, 1), (Point{4, 1, 7}));
}

TEST_F(TransformTest, VertexSelectionMovesOnlySelectedVertices)
{
    Object *o = add_square(world);
    selection.select_mode = SELECT_VERTEX;
    add_to_selected_list(vk_object_get_vertex_at_index(o, 0));
    find_bounding_box();
    const float d[3] = {0, 0, 1};
    translate_all_selected(d);
    EXPECT_EQ(point_of(o, 0), (Point{0, 0, 1}));
    EXPECT_EQ(point_of(o, 1), (Point{1, 0, 0}));
    List *v = nullptr, *ob = nullptr;
    EXPECT_EQ(vk_get_selection(&v, &ob), SELECT_VERTEX);
    EXPECT_EQ(v, selection.selected_vertices);
}

/* ---- the commands and their undo ---- */

TEST_F(TransformTest, MoveAndMoveToUndoExactly)
{
    Object *o = add_square(world);
    auto before = points_of(o);
    select_object(o);
    EXPECT_EQ(move_selection_f(0.25f, -8, 16), 1);
    EXPECT_EQ(undo_count, 1);
    EXPECT_STREQ(undo_current()->label, "move");
    UNDO();
    EXPECT_TRUE(same_bits(before, points_of(o)));
    EXPECT_EQ(selection_move_to_f(10, 10, 10), 1);
    EXPECT_EQ(point_of(o, 0), (Point{9.5f, 9.5f, 10}));
    UNDO();
    EXPECT_TRUE(same_bits(before, points_of(o)));
    EXPECT_EQ(unsaved_changes, 1);
}

TEST_F(TransformTest, RotateCommandsUndo)
{
    Object *o = add_cube(world);
    auto before = points_of(o);
    select_object(o);
    /* About one axis: the rotate kind turns back. */
    EXPECT_EQ(rotate_selection_f(0, 0, 30), 1);
    EXPECT_EQ(undo_current()->kind, UNDO_ROTATE);
    UNDO();
    auto after = points_of(o);
    for (size_t i = 0; i < before.size(); i++) expect_near(before[i], after[i]);
    /* About two axes: a copy of the model comes back exactly. */
    EXPECT_EQ(rotate_selection_about_f(10, 20, 0, 1, 1, 1), 1);
    EXPECT_EQ(undo_current()->kind, UNDO_SNAPSHOT);
    UNDO();
    ASSERT_EQ(world->num_kids, 1u);
    EXPECT_TRUE(same_bits(before, points_of(world_child(0))));
    EXPECT_EQ(undo_count, 0);
}

TEST_F(TransformTest, RotateCommandMatchesRotateSelection)
{
    /* The command's single-axis path gives the very result of turning by
     * the three angles with the global matrix. */
    Object *a = add_cube(world, "a");
    select_object(a);
    rotate_selection_f(0, 25, 0);
    auto by_command = points_of(a);
    UNDO();
    clear_world_children();
    clear_all_undos();
    Object *b = add_cube(world, "b");
    select_object(b);
    const float degrees[3] = {0, 25, 0};
    rotate_selection(degrees);
    EXPECT_TRUE(same_bits(by_command, points_of(b)));
}

TEST_F(TransformTest, ScaleSizeToAndMirrorUndo)
{
    Object *o = add_points(world, {{0, 0, 0}, {2, 4, 8}, {1, 1, 1}});
    auto before = points_of(o);
    select_object(o);
    EXPECT_EQ(command_scale(2, 4, 0.5f), 1);
    EXPECT_EQ(undo_current()->kind, UNDO_RESIZE);
    UNDO();
    EXPECT_TRUE(same_bits(before, points_of(o)));
    EXPECT_EQ(o->scale[0], 1.0f);
    /* A factor of 0 cannot be stretched back: the model is copied. */
    EXPECT_EQ(selection_size_to_f(0, 8, 8), 1);
    EXPECT_EQ(undo_current()->kind, UNDO_SNAPSHOT);
    UNDO();
    o = world_child(0);
    EXPECT_TRUE(same_bits(before, points_of(o)));
    select_object(o);
    EXPECT_EQ(command_mirror(2), 1);
    EXPECT_EQ(point_of(o, 1), (Point{2, 4, 0}));
    EXPECT_EQ(undo_current()->kind, UNDO_VERTEX_POSITIONS);
    UNDO();
    EXPECT_TRUE(same_bits(before, points_of(o)));
}

TEST_F(TransformTest, BadInputLeavesTheModelAlone)
{
    Object *o = add_square(world);
    auto before = points_of(o);
    /* Nothing selected. */
    EXPECT_EQ(move_selection_f(1, 1, 1), 0);
    EXPECT_EQ(rotate_selection_f(1, 1, 1), 0);
    EXPECT_EQ(command_scale(2, 2, 2), 0);
    EXPECT_EQ(command_mirror(0), 0);
    select_object(o);
    /* NaN and infinity, as the dispatcher converts "nan" and "1e39". */
    float nan = std::nanf(""), inf = (float)1e39;
    EXPECT_EQ(move_selection_f(nan, 0, 0), 0);
    EXPECT_EQ(selection_move_to_f(0, inf, 0), 0);
    EXPECT_EQ(selection_size_to_f(inf, 1, 1), 0);
    EXPECT_EQ(rotate_selection_f(0, nan, 0), 0);
    EXPECT_EQ(rotate_selection_about_f(0, 0, 10, 0, 0, -inf), 0);
    EXPECT_EQ(command_scale(1, nan, 1), 0);
    EXPECT_EQ(command_mirror(7), 0);
    EXPECT_EQ(rotate_selection_f(0, 0, 0), 0); /* no angle */
    EXPECT_TRUE(same_bits(before, points_of(o)));
    EXPECT_EQ(undo_count, 0);
    /* Hidden objects cannot be selected, so commands find nothing. */
    clear_selection();
    object_set_visible(o, 0);
    select_object(o);
    EXPECT_EQ(move_selection_f(1, 0, 0), 0);
    EXPECT_TRUE(same_bits(before, points_of(o)));
    EXPECT_TRUE(model_consistent());
}

TEST_F(TransformTest, ResultsBeyondTheFloatRangeAreRefused)
{
    Object *o = add_points(world, {{3e38f, 1, 0}, {-3e38f, 0, 0}});
    auto before = points_of(o);
    select_object(o);
    EXPECT_EQ(move_selection_f(1e38f, 0, 0), 0);
    EXPECT_EQ(selection_move_to_f(1e38f, 0, 0), 0);
    EXPECT_EQ(command_scale(2, 1, 1), 0);
    EXPECT_EQ(selection_size_to_f(3.4e38f, 1, 1), 0);
    EXPECT_EQ(rotate_selection_about_f(0, 0, 45, 3e38f, 0, 0), 0);
    EXPECT_EQ(command_mirror(0), 0); /* max - min overflows */
    EXPECT_TRUE(same_bits(before, points_of(o)));
    EXPECT_EQ(undo_count, 0);
    /* Within range it works. */
    EXPECT_EQ(move_selection_f(1e37f, 0, 0), 1);
}

TEST_F(TransformTest, ScaleOfAFlatSelectionIsRefused)
{
    Object *o = add_points(world, {{0, 0, 0}});
    select_object(o);
    EXPECT_EQ(command_scale(2, 2, 2), 0);
    EXPECT_EQ(undo_count, 0);
}

} // namespace
