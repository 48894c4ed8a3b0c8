/*
 * test_undo.cpp - the undo history: records and their depth limit, the
 * console messages of set-undo calls without a record, every kind's
 * revert (positions back bit for bit where the inverse is exact, tree and
 * selection restored), the history wipe after snapshot, tree-delete and
 * ungroup undos, and records whose objects or vertices left the model.
 */
#include "edit_test_support.h"
#include "edit/transform.h"

namespace {

typedef EditTest UndoTest;

std::string undo_output(void)
{
    return console_of_undo();
}

TEST_F(UndoTest, RecordsCountAndDepthLimitKeepsTheNewest)
{
    prefs.undo_levels = 3;
    for (int i = 0; i < 4; i++) new_undo(UNDO_MOVE, "move");
    EXPECT_EQ(undo_count, 3);
    prefs.undo_levels = 0;
    /* A limit below 1 still keeps the record just started. */
    UndoRecord *r = new_undo(UNDO_MOVE, "last");
    EXPECT_EQ(undo_current(), r);
    EXPECT_EQ(undo_count, 3); /* one dropped per call */
    prefs.undo_levels = 3;
    clear_all_undos();
    EXPECT_EQ(undo_count, 0);
    EXPECT_EQ(undo_current(), nullptr);
    EXPECT_EQ(undo_output(), "nothing to UNDO!\n");
}

TEST_F(UndoTest, SetUndoWithoutRecordSaysSo)
{
    Captured c = capture([] {
        set_undo_vert(1, 2, 3);
        set_undo_vertices(nullptr);
        set_undo_vertex_positions(nullptr);
        set_undo_vertref(nullptr);
        set_undo_object(nullptr);
        set_undo_objectlist(nullptr);
        set_undo_selection(nullptr, nullptr, 0);
        set_undo_surface(nullptr);
        set_undo_all();
        set_undo_partselected();
        set_undo_resize(nullptr, nullptr, nullptr, nullptr);
        set_undo_rotate(0, nullptr, 0);
        EXPECT_EQ(set_undo_delete_selection(), 0);
    });
    EXPECT_EQ(c.out, "set_undo_vert - cal new_undo first!\nset_undo_vert - cal new_undo first!\n"
                     "set_undo_vert - cal new_undo first!\nset_undo_vert - cal new_undo first!\n"
                     "set_undo_object - cal new_undo first!\nset_undo_objectlist - cal new_undo first!\n"
                     "set_undo_selection(List - cal new_undo first!\nset_undo_surface - cal new_undo first!\n");
}

TEST_F(UndoTest, UnknownKindStaysAndRevertsNothing)
{
    new_undo(32, "odd");
    EXPECT_EQ(undo_output(), "");
    EXPECT_EQ(undo_count, 1);
    EXPECT_EQ(std::string(undo_current()->label), "odd");
}

TEST_F(UndoTest, MoveUndoSubtractsTheVector)
{
    Object *o = add_square(world);
    auto before = points_of(o);
    select_object(o);
    new_undo(UNDO_MOVE, "move");
    const float d[3] = {0.5f, -2.0f, 4.0f};
    set_undo_vert(d[0], d[1], d[2]);
    move_selection(d);
    EXPECT_FALSE(same_bits(before, points_of(o)));
    UNDO();
    EXPECT_TRUE(same_bits(before, points_of(o)));
    EXPECT_EQ(undo_count, 0);
}

TEST_F(UndoTest, SnapshotUndoRestoresModelAndWipesHistory)
{
    Object *o = add_square(world);
    add_square(o, 5.0f, "child");
    /* Two vertices at one place: an exact copy keeps them apart. */
    const float p[3] = {0, 0, 0};
    object_add_new_vertex(o, p);
    new_undo(UNDO_MOVE, "earlier");
    new_undo(UNDO_SNAPSHOT, "subdivide");
    set_undo_all();
    clear_world_children();
    EXPECT_EQ(world->num_kids, 0u);
    UNDO();
    ASSERT_EQ(world->num_kids, 1u);
    Object *back = (Object *)world->kids->item;
    EXPECT_EQ(back->num_vert, 5u);
    EXPECT_EQ(back->num_kids, 1u);
    EXPECT_STREQ(back->name, "square");
    EXPECT_EQ(((Surface *)back->surfaces->item)->num_vertrefs, 4u);
    EXPECT_EQ(undo_count, 0);
    EXPECT_EQ(undo_output(), "nothing to UNDO!\n");
    EXPECT_TRUE(model_consistent());
}

TEST_F(UndoTest, TreeDeleteKeepsTheSameObjects)
{
    Object *a = add_square(world, 0, "a");
    Object *b = add_square(world, 2, "b");
    select_object(a);
    new_undo(UNDO_DELETE_TREE, "delete");
    EXPECT_EQ(set_undo_delete_selection(), 1);
    clear_selection();
    EXPECT_EQ(world->num_kids, 1u);
    EXPECT_EQ(a->parent, nullptr);
    UNDO();
    EXPECT_EQ(world->num_kids, 2u);
    EXPECT_EQ(a->parent, world);
    EXPECT_EQ(list_get_item(world->kids, 1), a);
    EXPECT_EQ(list_get_item(world->kids, 0), b);
    EXPECT_EQ(selection.num_selected_objects, 1);
    EXPECT_EQ(undo_count, 0);
}

TEST_F(UndoTest, DroppedTreeDeleteFreesItsObjects)
{
    prefs.undo_levels = 1;
    Object *a = add_square(world, 0, "a");
    select_object(a);
    new_undo(UNDO_DELETE_TREE, "delete");
    set_undo_delete_selection();
    clear_selection();
    uint32_t h = object_handle(a);
    new_undo(UNDO_MOVE, "move"); /* drops the delete and with it a */
    EXPECT_EQ(object_from_handle(h), nullptr);
}

TEST_F(UndoTest, DeleteOutsideTreeModeSnapshots)
{
    Object *a = add_square(world, 0, "a");
    selection.select_mode = SELECT_OBJECT;
    select_object(a);
    UndoRecord *r = new_undo(UNDO_DELETE_TREE, "delete");
    EXPECT_EQ(set_undo_delete_selection(), 0);
    EXPECT_EQ(r->kind, UNDO_SNAPSHOT);
    EXPECT_NE(r->world_snapshot, nullptr);
}

TEST_F(UndoTest, SelectionUndoRestoresListsAndMode)
{
    Object *a = add_square(world, 0, "a");
    Object *b = add_square(world, 2, "b");
    select_object(a);
    set_new_select_mode(SELECT_VERTEX);
    EXPECT_EQ(selection.num_selected_vertices, 4);
    EXPECT_EQ(undo_count, 1);
    EXPECT_EQ(std::string(undo_current()->label), "selection");
    UNDO();
    EXPECT_EQ(selection.select_mode, SELECT_TREE);
    EXPECT_EQ(selection.num_selected_objects, 1);
    EXPECT_EQ(selection.selected_objects->item, a);
    EXPECT_EQ(selection.num_selected_vertices, 0);
    EXPECT_EQ(get_current_object(), nullptr);
    (void)b;
}

TEST_F(UndoTest, SelectionUndoSkipsObjectsNoLongerInTheModel)
{
    Object *a = add_square(world, 0, "a");
    Object *b = add_square(world, 2, "b");
    select_object(a);
    select_object(b);
    new_undo(UNDO_SELECTION, "selection");
    set_undo_selection(selection.selected_vertices, selection.selected_objects, 1);
    EXPECT_TRUE(nothing_is_selected());
    object_delete(a); /* an edit that kept no undo */
    UNDO();
    ASSERT_EQ(selection.num_selected_objects, 1);
    EXPECT_EQ(selection.selected_objects->item, b);
}

TEST_F(UndoTest, AddObjectUndoDeletesItAndRestoresSelection)
{
    Object *a = add_square(world, 0, "a");
    select_object(a);
    Object *n = new_object(OBJECT_NORMAL);
    new_undo(UNDO_ADD_OBJECT, "new object");
    set_undo_object(n);
    object_add_child(world, n);
    clear_selection();
    select_object(n);
    UNDO();
    EXPECT_EQ(world->num_kids, 1u);
    EXPECT_EQ(selection.num_selected_objects, 1);
    EXPECT_EQ(selection.selected_objects->item, a);
    /* Already gone: only the selection comes back. */
    Object *m = new_object(OBJECT_NORMAL);
    object_add_child(world, m);
    new_undo(UNDO_ADD_OBJECT, "new object");
    set_undo_object(m);
    object_delete(m);
    UNDO();
    EXPECT_EQ(world->num_kids, 1u);
    EXPECT_TRUE(model_consistent());
}

TEST_F(UndoTest, VertexPositionsComeBackExactly)
{
    Object *o = add_square(world);
    auto before = points_of(o);
    new_undo(UNDO_VERTEX_POSITIONS, "snap to grid");
    set_undo_vertex_positions(o->vertices);
    for (List *v = o->vertices; v; v = v->next) ((Vertex *)v->item)->point[0] = 0.3f;
    UNDO();
    EXPECT_TRUE(same_bits(before, points_of(o)));
}

TEST_F(UndoTest, AddedVerticesAreDeleted)
{
    Object *o = add_square(world);
    selection.select_mode = SELECT_VERTEX;
    select_object(o);
    const float p[3] = {0.5f, 0.5f, 0};
    Vertex *v = object_add_new_vertex(o, p);
    add_to_selected_list(v);
    List *added = nullptr;
    list_add_item(&added, v);
    new_undo(UNDO_ADDED_VERTICES, "insert vertex");
    set_undo_vertices(added);
    list_free(&added);
    UNDO();
    EXPECT_EQ(o->num_vert, 4u);
    EXPECT_EQ(selection.num_selected_vertices, 4);
    EXPECT_TRUE(model_consistent());
}

TEST_F(UndoTest, AddSurfaceUndoDeletesTheSurface)
{
    Object *o = add_square(world);
    Surface *s = new_surface();
    surface_add_vertref(s, new_svertex((Vertex *)o->vertices->item, 0, 0));
    new_undo(UNDO_ADD_SURFACE, "add surface");
    set_undo_surface(s);
    object_add_surface(o, s);
    UNDO();
    EXPECT_EQ(o->num_surf, 1u);
}

TEST_F(UndoTest, ResizeUndoSwapsTheBoxes)
{
    Object *o = add_square(world);
    select_object(o);
    auto before = points_of(o);
    const float a[3] = {1, 1, 0}, b[3] = {0, 0, 0}, c[3] = {4, 2, 0}, d[3] = {2, -2, 0};
    new_undo(UNDO_RESIZE, "resize");
    set_undo_resize(a, b, c, d);
    resize_selected_to_bounding_box(a, b, c, d);
    find_bounding_box();
    EXPECT_EQ(selection.box_max[0], 4.0f);
    EXPECT_EQ(selection.box_min[1], -2.0f);
    UNDO();
    EXPECT_TRUE(same_bits(before, points_of(o)));
}

TEST_F(UndoTest, RotateUndoTurnsBack)
{
    Object *o = add_square(world);
    select_object(o);
    auto before = points_of(o);
    const float c[3] = {0, 0, 0};
    new_undo(UNDO_ROTATE, "rotate");
    set_undo_rotate(0, c, 90.0f);
    rotate_selected(90.0f, 0, c);
    UNDO();
    auto after = points_of(o);
    for (size_t i = 0; i < before.size(); i++) {
        for (int k = 0; k < 3; k++) EXPECT_NEAR(before[i][k], after[i][k], 1e-6);
    }
}

TEST_F(UndoTest, PasteUndoDeletesTheAddedObjects)
{
    Object *a = add_square(world, 0, "a");
    select_object(a);
    List *added = nullptr;
    list_add_item(&added, add_square(world, 3, "p1"));
    list_add_item(&added, add_square(world, 6, "p2"));
    new_undo(UNDO_PASTE, "paste");
    set_undo_objectlist(added);
    list_free(&added);
    UNDO();
    EXPECT_EQ(world->num_kids, 1u);
    EXPECT_EQ(selection.selected_objects->item, a);
}

} // namespace
