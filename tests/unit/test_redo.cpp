/*
 * test_redo.cpp - the redo list: a redone move gives the moved positions
 * bit for bit; a change made without an undo record makes a redo refuse
 * with a message and change nothing; the list never holds more entries
 * than "undo_levels"; a new record clears it; a redone addition puts the
 * object back where it stood among the world's children; additions redone
 * in place (a surface, an object below a group) keep the live records,
 * so older records still undo, also with a small "undo_levels".
 */
#include "edit_test_support.h"
#include "edit/redo.h"
#include "edit/transform.h"
#include "edit/selection.h"
#include "edit/surface_ops.h"

namespace {

typedef EditTest RedoTest;

void do_move(const float *d)
{
    new_undo(UNDO_MOVE, "move");
    set_undo_vert(d[0], d[1], d[2]);
    move_selection(d);
}

TEST_F(RedoTest, RedoneMoveIsExact)
{
    Object *o = add_square(world);
    select_object(o);
    const float d[3] = {0.1f, 0.2f, 0.3f};
    do_move(d);
    auto done = points_of(o);
    UNDO();
    EXPECT_EQ(redo_count, 1);
    EXPECT_STREQ(redo_label(), "move");
    EXPECT_EQ(REDO(), 1);
    EXPECT_TRUE(same_bits(done, points_of(o)));
    EXPECT_EQ(redo_count, 0);
    EXPECT_EQ(undo_count, 1);
    EXPECT_EQ(redo_label(), nullptr);
}

/* A snapshot's undo hands the model it replaces to the redo list, and a
 * redo hands the model it replaces to its new record, rather than either
 * copying: the models go back and forth themselves, and while one waits
 * its objects' ids find nothing. */
TEST_F(RedoTest, SnapshotRedoTakesBackTheReplacedModel)
{
    Object *o = add_square(world);
    select_object(o);
    EXPECT_EQ(selected_subdivide_surfaces(), 1);
    Object *done_world = world;
    uint32_t id = object_handle(o);
    auto done = points_of(o);
    UNDO();
    Object *before_world = world;
    EXPECT_NE(before_world, done_world);
    EXPECT_EQ(object_from_handle(id), nullptr);
    EXPECT_EQ(redo_count, 1);
    EXPECT_EQ(REDO(), 1);
    EXPECT_EQ(world, done_world); /* not a copy */
    EXPECT_TRUE(same_bits(done, points_of(o)));
    EXPECT_EQ(undo_count, 1);
    /* The redone record kept the model the redo replaced: undoing it
     * brings back that very model, again without a copy. */
    UNDO();
    EXPECT_EQ(world, before_world);
    EXPECT_EQ(REDO(), 1);
    EXPECT_EQ(world, done_world);
    EXPECT_TRUE(same_bits(done, points_of(o)));
    /* Dropping the list frees the waiting model (the leak checker of the
     * sanitizer build watches this). */
    UNDO();
    clear_redo();
    EXPECT_EQ(redo_count, 0);
}

TEST_F(RedoTest, ModelChangedWithoutRecordRefuses)
{
    Object *o = add_square(world);
    select_object(o);
    const float d[3] = {1, 0, 0};
    do_move(d);
    UNDO();
    /* An edit that kept no undo record (and said nothing). */
    const float p[3] = {9, 9, 9};
    object_add_new_vertex(o, p);
    auto before = points_of(o);
    Captured c = capture([] { EXPECT_EQ(REDO(), 0); });
    EXPECT_NE(c.out.find("no longer has the shape"), std::string::npos);
    EXPECT_TRUE(same_bits(before, points_of(o)));
    EXPECT_EQ(redo_count, 0);
    EXPECT_EQ(undo_count, 0);
}

TEST_F(RedoTest, ListKeepsToTheDepthLimit)
{
    prefs.undo_levels = 3;
    Object *o = add_square(world);
    select_object(o);
    const float d[3] = {0.25f, 0, 0};
    for (int i = 0; i < 5; i++) do_move(d);
    EXPECT_EQ(undo_count, 3);
    for (int i = 0; i < 5; i++) UNDO();
    EXPECT_EQ(redo_count, 3);
    for (int i = 0; i < 3; i++) EXPECT_EQ(REDO(), 1);
    Captured c = capture([] { EXPECT_EQ(REDO(), 0); });
    EXPECT_EQ(c.out, "nothing to REDO!\n");
    EXPECT_EQ(undo_count, 3);
}

TEST_F(RedoTest, NewRecordClearsTheList)
{
    Object *o = add_square(world);
    select_object(o);
    const float d[3] = {1, 0, 0};
    do_move(d);
    UNDO();
    EXPECT_EQ(redo_count, 1);
    new_undo(UNDO_SELECTION, "selection");
    EXPECT_EQ(redo_count, 0);
}

TEST_F(RedoTest, RedoneAdditionKeepsItsPlace)
{
    add_square(world, 0, "a");
    Object *b = add_square(world, 2, "b");
    add_square(world, 4, "c");
    /* "b" was the added object. */
    new_undo(UNDO_ADD_OBJECT, "add cube");
    set_undo_object(b);
    UNDO();
    EXPECT_EQ(world->num_kids, 2u);
    EXPECT_EQ(REDO(), 1);
    ASSERT_EQ(world->num_kids, 3u);
    EXPECT_STREQ(((Object *)list_get_item(world->kids, 1))->name, "b");
    EXPECT_EQ(undo_count, 1);
    /* The redone addition undoes like the original. */
    UNDO();
    EXPECT_EQ(world->num_kids, 2u);
    EXPECT_TRUE(model_consistent());
}

/* An added surface, as "add surface" records it. */
Surface *do_add_surface(Object *o)
{
    Surface *s = add_polygon(o, {0, 1, 2});
    new_undo(UNDO_ADD_SURFACE, "add surface");
    set_undo_surface(s);
    return s;
}

/* Saved positions, as "snap to grid" records them, then new ones. */
void do_snap(Object *o, float to)
{
    new_undo(UNDO_VERTEX_POSITIONS, "snap to grid");
    set_undo_vertex_positions(o->vertices);
    for (List *v = o->vertices; v; v = v->next) ((Vertex *)v->item)->point[2] = to;
}

TEST_F(RedoTest, RedoneSurfaceKeepsOlderRecords)
{
    Object *o = add_square(world);
    auto start = points_of(o);
    do_snap(o, 0.5f);
    Surface *first = do_add_surface(o);
    UNDO();
    EXPECT_EQ(o->num_surf, 1u);
    EXPECT_EQ(REDO(), 1);
    EXPECT_EQ(o->num_surf, 2u);
    EXPECT_EQ(undo_count, 2);
    /* The redone surface is a live record of the model again. */
    EXPECT_NE(object_of_surface(world, (Surface *)list_get_item(o->surfaces, 1)), nullptr);
    (void)first;
    UNDO();
    EXPECT_EQ(o->num_surf, 1u);
    UNDO();
    EXPECT_TRUE(same_bits(start, points_of(o)));
    EXPECT_EQ(undo_count, 0);
    EXPECT_TRUE(model_consistent());
}

TEST_F(RedoTest, ObjectAddedBelowAGroupIsRedoneInPlace)
{
    Object *group = new_group();
    object_add_child(world, group);
    Object *a = add_square(group, 0, "a");
    add_square(group, 4, "c");
    do_snap(a, 0.25f);
    Object *b = add_square(group, 2, "b");
    /* Move "b" between "a" and "c". */
    list_remove_item(&group->kids, b);
    list_insert_item(&group->kids, list_get_item(group->kids, 1), b);
    new_undo(UNDO_ADD_OBJECT, "add cube");
    set_undo_object(b);
    UNDO();
    EXPECT_EQ(group->num_kids, 2u);
    EXPECT_EQ(REDO(), 1);
    ASSERT_EQ(group->num_kids, 3u);
    EXPECT_STREQ(((Object *)list_get_item(group->kids, 1))->name, "b");
    EXPECT_EQ(undo_count, 2);
    UNDO();
    EXPECT_EQ(group->num_kids, 2u);
    UNDO();
    for (const Point &p : points_of(a)) EXPECT_EQ(p[2], 0.0f);
    EXPECT_TRUE(model_consistent());
}

TEST_F(RedoTest, InPlaceRedosWithASmallHistory)
{
    prefs.undo_levels = 2;
    Object *o = add_square(world);
    do_snap(o, 1.0f);
    do_add_surface(o);
    do_add_surface(o);
    do_add_surface(o);
    EXPECT_EQ(undo_count, 2);
    UNDO();
    UNDO();
    EXPECT_EQ(o->num_surf, 2u);
    EXPECT_EQ(REDO(), 1);
    EXPECT_EQ(REDO(), 1);
    EXPECT_EQ(o->num_surf, 4u);
    EXPECT_EQ(undo_count, 2);
    UNDO();
    UNDO();
    EXPECT_EQ(o->num_surf, 2u);
    EXPECT_EQ(undo_count, 0);
    EXPECT_TRUE(model_consistent());
}

TEST_F(RedoTest, InPlaceRedoRefusesAChangedModel)
{
    Object *o = add_square(world);
    do_add_surface(o);
    UNDO();
    /* An edit without a record: a surface the copy does not have. */
    add_polygon(o, {1, 2, 3});
    Captured c = capture([] { EXPECT_EQ(REDO(), 0); });
    EXPECT_NE(c.out.find("no longer has the shape"), std::string::npos);
    EXPECT_EQ(o->num_surf, 2u);
    EXPECT_EQ(redo_count, 0);
    EXPECT_TRUE(model_consistent());
}

TEST_F(RedoTest, TreeDeleteRedoRefusesAChangedModel)
{
    add_square(world, 0, "a");
    Object *b = add_square(world, 2, "b");
    select_object(b);
    new_undo(UNDO_DELETE_TREE, "delete");
    ASSERT_EQ(set_undo_delete_selection(), 1);
    clear_selection();
    UNDO();
    EXPECT_EQ(world->num_kids, 2u);
    /* An object added without a record: the last child is no longer the
     * one the undo put back. */
    add_square(world, 4, "c");
    Captured c = capture([] { EXPECT_EQ(REDO(), 0); });
    EXPECT_NE(c.out.find("no longer has the shape"), std::string::npos);
    EXPECT_EQ(world->num_kids, 3u);
    EXPECT_TRUE(model_consistent());
}

} // namespace
