/*
 * test_redo.cpp - the redo list: a redone move gives the moved positions
 * bit for bit; a change made without an undo record makes a redo refuse
 * with a message and change nothing; the list never holds more entries
 * than "undo_levels"; a new record clears it; a redone addition puts the
 * object back where it stood among the world's children.
 */
#include "edit_test_support.h"
#include "edit/redo.h"
#include "edit/transform.h"

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

} // namespace
