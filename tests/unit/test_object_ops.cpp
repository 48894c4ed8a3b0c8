/*
 * test_object_ops.cpp - the object operations (group, ungroup, fragment,
 * explode, merge, hide and show, clone, duplicate, delete in each select
 * mode, clear all, centres, optimize vertices and surfaces), snapping and
 * the clipboard: each result, each undo, refusals with nothing or the
 * wrong thing selected, and the model's counts afterwards.
 */
#include "edit_test_support.h"
#include "app/commands.h"
#include "edit/object_ops.h"
#include "edit/transform.h"
#include "view/view_state.h"

#include <cmath>
#include <random>
#include <unordered_set>

namespace {

class ObjectOpsTest : public EditTest {
protected:
    void TearDown() override
    {
        EXPECT_TRUE(model_consistent());
        EditTest::TearDown();
    }
};

Object *add_group(Object *parent, const char *name = "g")
{
    Object *g = new_group();
    object_set_name(g, name);
    object_add_child(parent, g);
    return g;
}

Point point_of(Object *o, unsigned int i)
{
    const float *p = vk_object_get_vertex_at_index(o, i)->point;
    return {p[0], p[1], p[2]};
}

Vertex *vertex_at(Object *o, unsigned int i)
{
    return vk_object_get_vertex_at_index(o, i);
}

Surface *surface_at(Object *o, unsigned int i)
{
    return (Surface *)list_get_item(o->surfaces, i);
}

Vertex *ref_vertex(Surface *s, unsigned int i)
{
    return ((SVertex *)list_get_item(s->vertrefs, i))->vertex;
}

void select_vertices_of(Object *o, std::initializer_list<unsigned int> indices)
{
    selection.select_mode = SELECT_VERTEX;
    for (unsigned int i : indices) add_to_selected_list(vertex_at(o, i));
    find_bounding_box();
}

/* ---- group and ungroup ---- */

TEST_F(ObjectOpsTest, GroupingRemovesAnEmptiedParentGroup)
{
    Object *g = add_group(world, "old");
    Object *a = add_square(g, 0, "a");
    Object *b = add_square(g, 2, "b");
    uint32_t old_handle = object_handle(g);
    selection.select_mode = SELECT_OBJECT;
    select_object(a);
    select_object(b);
    EXPECT_EQ(group_selected_objects(), 1);
    EXPECT_EQ(object_from_handle(old_handle), nullptr);
    ASSERT_EQ(world->num_kids, 1u);
    Object *group = world_child(0);
    EXPECT_STREQ(group->name, "group");
    EXPECT_EQ(group->type, OBJECT_GROUP);
    EXPECT_EQ(group->num_kids, 2u);
    EXPECT_EQ(list_get_item(group->kids, 0), a);
    EXPECT_EQ(a->parent, group);
    EXPECT_EQ(centre_of(group), (Point{0, 0, 0})); /* mean of the children's centres */
    EXPECT_EQ(selection.num_selected_objects, 2); /* object mode: the group's leaves */
    UNDO();
    ASSERT_EQ(world->num_kids, 1u);
    EXPECT_STREQ(world_child(0)->name, "old");
    EXPECT_EQ(world_child(0)->num_kids, 2u);
}

TEST_F(ObjectOpsTest, GroupRefusesASingleObject)
{
    Object *a = add_square(world);
    select_object(a);
    Captured c = capture([] { EXPECT_EQ(group_selected_objects(), 0); });
    EXPECT_TRUE(contains(c.err, "Group - select two or more objects"));
    EXPECT_EQ(world->num_kids, 1u);
    EXPECT_EQ(undo_count, 0);
    clear_selection();
    select_vertices_of(a, {0});
    capture([] { EXPECT_EQ(group_selected_objects(), 0); });
    EXPECT_EQ(a->num_vert, 4u);
}

TEST_F(ObjectOpsTest, GroupingVerticesMakesThemLooseVerticesOfTheGroup)
{
    Object *a = add_square(world);
    select_vertices_of(a, {0, 1});
    EXPECT_EQ(group_selected_objects(), 1);
    ASSERT_EQ(world->num_kids, 2u);
    Object *group = world_child(1);
    EXPECT_EQ(group->num_vert, 2u);
    EXPECT_EQ(point_of(group, 1), (Point{1, 0, 0}));
    EXPECT_EQ(a->num_vert, 2u);
    EXPECT_EQ(surface_at(a, 0)->num_vertrefs, 2u);
}

TEST_F(ObjectOpsTest, UngroupMovesChildrenToTheWorldAndUndoes)
{
    Object *outer = add_group(world, "outer");
    Object *inner = add_group(outer, "inner");
    add_square(inner, 0, "a");
    select_object(outer);
    EXPECT_EQ(ungroup_selected_objects(), 1);
    ASSERT_EQ(world->num_kids, 1u);
    EXPECT_EQ(world_child(0), inner);
    EXPECT_EQ(inner->parent, world);
    EXPECT_EQ(undo_current()->kind, UNDO_UNGROUP);
    UNDO();
    ASSERT_EQ(world->num_kids, 1u);
    EXPECT_STREQ(world_child(0)->name, "outer");
    EXPECT_EQ(undo_count, 0);
}

/* ---- fragment, explode, merge ---- */

TEST_F(ObjectOpsTest, FragmentingACubeGivesSixObjectsOfFourVertices)
{
    Object *cube = add_cube(world);
    uint32_t h = object_handle(cube);
    select_object(cube);
    EXPECT_EQ(selected_object_fragment(), 1);
    EXPECT_EQ(object_from_handle(h), nullptr);
    ASSERT_EQ(world->num_kids, 6u);
    unsigned int vertices = 0;
    for (List *k = world->kids; k; k = k->next) {
        Object *o = (Object *)k->item;
        EXPECT_EQ(o->num_vert, 4u);
        EXPECT_EQ(o->num_surf, 1u);
        EXPECT_STREQ(o->name, "cube");
        vertices += o->num_vert;
    }
    EXPECT_EQ(vertices, 24u);
    EXPECT_TRUE(nothing_is_selected());
    UNDO();
    ASSERT_EQ(world->num_kids, 1u);
    EXPECT_EQ(world_child(0)->num_vert, 8u);
    EXPECT_EQ(world_child(0)->num_surf, 6u);
}

TEST_F(ObjectOpsTest, ExplodeMovesEachFaceAlongItsNormal)
{
    Object *cube = add_cube(world);
    select_object(cube);
    EXPECT_EQ(selected_object_explode(1.0f), 1);
    ASSERT_EQ(world->num_kids, 6u);
    /* The first face looks down -z: its corners move from z = -1 to -2. */
    Object *first = world_child(0);
    for (List *v = first->vertices; v; v = v->next) EXPECT_FLOAT_EQ(((Vertex *)v->item)->point[2], -2.0f);
    UNDO();
    /* Exploding by 0 is fragmenting. */
    select_object(world_child(0));
    selected_object_explode(0.0f);
    auto exploded = points_of(world_child(5));
    UNDO();
    select_object(world_child(0));
    selected_object_fragment();
    EXPECT_TRUE(same_bits(exploded, points_of(world_child(5))));
    select_all();
    EXPECT_EQ(selected_object_explode(std::nanf("")), 0);
    EXPECT_EQ(world->num_kids, 6u);
}

TEST_F(ObjectOpsTest, FragmentingAGroupReachesItsChildren)
{
    Object *g = add_group(world);
    add_square(g, 0, "a");
    add_square(g, 2, "b");
    EXPECT_EQ(object_fragment(g, 0.0f), 2);
    EXPECT_EQ(world->num_kids, 2u);
    EXPECT_STREQ(world_child(0)->name, "a");
}

TEST_F(ObjectOpsTest, MergingAGroupAbsorbsItsChildren)
{
    Object *g = add_group(world, "g");
    add_square(g, 0, "a");
    add_square(g, 2, "b");
    add_square(world, 4, "c");
    select_all();
    EXPECT_EQ(selected_object_merge(), 1);
    ASSERT_EQ(world->num_kids, 1u);
    Object *m = world_child(0);
    EXPECT_EQ(m->num_vert, 12u);
    EXPECT_EQ(m->num_surf, 3u);
    EXPECT_EQ(m->num_kids, 0u);
    EXPECT_STREQ(m->name, "g");
    EXPECT_EQ(m->type, OBJECT_GROUP); /* the data of the first selected, its type too */
    EXPECT_EQ(point_of(m, 8), (Point{4, 0, 0}));
    EXPECT_EQ(centre_of(m), (Point{2.5f, 0.5f, 0}));
    /* Every surface still refers to a vertex of the merged object. */
    for (List *s = m->surfaces; s; s = s->next) {
        for (List *r = ((Surface *)s->item)->vertrefs; r; r = r->next) {
            EXPECT_NE(vk_object_get_vertex_index(m, ((SVertex *)r->item)->vertex), LIST_NOT_FOUND);
        }
    }
    UNDO();
    EXPECT_EQ(world->num_kids, 2u);
}

/* ---- hide and show ---- */

TEST_F(ObjectOpsTest, HideSelectedUnselectedAndShowAll)
{
    Object *a = add_square(world, 0, "a");
    Object *b = add_square(world, 2, "b");
    Object *empty = add_group(world, "empty");
    select_object(a);
    hide_selected();
    EXPECT_EQ(a->visible, 0);
    EXPECT_EQ(objects_are_hidden, 1);
    EXPECT_TRUE(nothing_is_selected());
    show_all();
    EXPECT_EQ(a->visible, 1);
    EXPECT_EQ(objects_are_hidden, 0);
    /* Tree mode names no objects that stay: nothing is hidden. */
    select_object(a);
    hide_unselected();
    EXPECT_EQ(b->visible, 1);
    clear_selection();
    selection.select_mode = SELECT_OBJECT;
    select_object(a);
    hide_unselected();
    EXPECT_EQ(a->visible, 1);
    EXPECT_EQ(b->visible, 0);
    EXPECT_EQ(empty->visible, 1); /* no vertices: never hidden */
}

/* ---- clone and duplicate ---- */

TEST_F(ObjectOpsTest, CloneSelectedVerticesWithWholeOrTouchedSurfaces)
{
    Object *a = add_square(world);
    select_vertices_of(a, {0, 1, 2});
    List *whole = clone_selected(1);
    ASSERT_EQ(list_count(whole), 1u);
    Object *w = (Object *)whole->item;
    EXPECT_EQ(w->num_vert, 3u);
    EXPECT_EQ(w->num_surf, 0u);
    List *touched = clone_selected(0);
    Object *t = (Object *)touched->item;
    ASSERT_EQ(t->num_surf, 1u);
    EXPECT_EQ(surface_at(t, 0)->num_vertrefs, 3u); /* the unselected corner has no copy */
    EXPECT_EQ(ref_vertex(surface_at(t, 0), 0), vertex_at(t, 0));
    object_free(w);
    object_free(t);
    list_free(&whole);
    list_free(&touched);
}

TEST_F(ObjectOpsTest, CloneSelectionAddsSelectsAndUndoes)
{
    Object *a = add_square(world);
    select_object(a);
    EXPECT_EQ(clone_selection(), 1);
    ASSERT_EQ(world->num_kids, 2u);
    Object *c = world_child(1);
    EXPECT_NE(c, a);
    EXPECT_TRUE(same_bits(points_of(a), points_of(c)));
    EXPECT_EQ(selection.selected_objects->item, c);
    UNDO();
    EXPECT_EQ(world->num_kids, 1u);
    EXPECT_EQ(selection.selected_objects->item, a);
    clear_selection();
    EXPECT_EQ(clone_selection(), 0);
    EXPECT_EQ(world->num_kids, 1u);
}

TEST_F(ObjectOpsTest, DuplicateOffsetsByTwentyPixels)
{
    prefs.gridlock = 0;
    float saved = views[0].scale;
    views[0].scale = 10.0f;
    Object *a = add_square(world);
    select_object(a);
    EXPECT_EQ(duplicate_selected_in_view(0), 1);
    ASSERT_EQ(world->num_kids, 2u);
    EXPECT_EQ(point_of(world_child(1), 0), (Point{2, -2, 0}));
    views[0].scale = saved;
    clear_selection();
    EXPECT_EQ(duplicate_selected(), 0);
}

/* ---- delete and clear all ---- */

TEST_F(ObjectOpsTest, DeleteInEachModeAndUndo)
{
    Object *a = add_square(world, 0, "a");
    Object *b = add_square(world, 2, "b");
    /* Tree mode keeps the very objects. */
    select_object(a);
    EXPECT_EQ(delete_all_selected(), 1);
    EXPECT_EQ(world->num_kids, 1u);
    UNDO();
    EXPECT_EQ(world->num_kids, 2u);
    EXPECT_EQ(world_child(1), a);
    /* Object mode copies the model. */
    clear_selection();
    selection.select_mode = SELECT_OBJECT;
    select_object(b);
    EXPECT_EQ(delete_all_selected(), 1);
    EXPECT_EQ(world->num_kids, 1u);
    UNDO();
    EXPECT_EQ(world->num_kids, 2u);
    /* Vertex mode deletes the vertices and their references. */
    Object *first = world_child(0);
    select_vertices_of(first, {0});
    EXPECT_EQ(delete_all_selected(), 1);
    EXPECT_EQ(first->num_vert, 3u);
    EXPECT_EQ(surface_at(first, 0)->num_vertrefs, 3u);
    UNDO();
    EXPECT_EQ(world_child(0)->num_vert, 4u);
    /* All vertices of an object: the object goes too. */
    select_vertices_of(world_child(0), {0, 1, 2, 3});
    delete_all_selected();
    EXPECT_EQ(world->num_kids, 1u);
    EXPECT_EQ(delete_all_selected(), 0); /* nothing selected */
}

TEST_F(ObjectOpsTest, ClearAllEmptiesModelSelectionAndHistory)
{
    Object *a = add_square(world);
    select_object(a);
    move_selection_f(1, 0, 0);
    EXPECT_EQ(command_clear_all(), 1);
    EXPECT_EQ(world->num_kids, 0u);
    EXPECT_TRUE(nothing_is_selected());
    EXPECT_EQ(undo_count, 0);
    EXPECT_EQ(console_of_undo(), "nothing to UNDO!\n");
}

TEST_F(ObjectOpsTest, RecentreAndMincentre)
{
    Object *a = add_points(world, {{1, 2, 3}, {3, 6, 5}});
    select_object(a);
    selected_recentre();
    EXPECT_EQ(centre_of(a), (Point{2, 4, 4}));
    selected_mincentre();
    EXPECT_EQ(centre_of(a), (Point{1, 2, 3}));
    EXPECT_TRUE(same_bits(points_of(a), {{1, 2, 3}, {3, 6, 5}}));
    UNDO();
    EXPECT_EQ(centre_of(world_child(0)), (Point{2, 4, 4}));
}

/* ---- optimize ---- */

TEST_F(ObjectOpsTest, CoincidentVerticesCollapseIntoTheFirst)
{
    Object *o = add_points(world, {{0, 0, 0}, {1, 0, 0}, {0, 0, 0}, {0, 1, 0}, {-0.0f, 0, 0}}, "o");
    add_polygon(o, {0, 1, 3});
    add_polygon(o, {2, 1, 4}); /* two references that become the same vertex */
    Captured c = capture([&] { EXPECT_EQ(object_optimize(o), 2); });
    EXPECT_TRUE(contains(c.out, "2 duplicate vertices removed from object o\n"));
    EXPECT_TRUE(contains(c.out, "duplicate surface ref deleted\n") ||
                contains(c.out, "1 duplicate vertex references removed from surfaces\n"));
    EXPECT_EQ(o->num_vert, 3u);
    Surface *second = surface_at(o, 1);
    EXPECT_EQ(second->num_vertrefs, 2u);
    EXPECT_EQ(ref_vertex(second, 0), vertex_at(o, 0));
}

TEST_F(ObjectOpsTest, OptimizeCommandCountsAndUndoes)
{
    Object *o = add_points(world, {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {1, 0, 0}}, "o");
    add_polygon(o, {0, 3, 1});
    Vertex *kept = vertex_at(o, 0);
    select_object(o);
    Captured c = capture([] { optimize_selected(); });
    EXPECT_TRUE(contains(c.err, "Vertex optimization finished - vertices removed = 2"));
    EXPECT_EQ(o->num_vert, 2u);
    EXPECT_EQ(vertex_at(o, 0), kept);
    UNDO();
    EXPECT_EQ(world_child(0)->num_vert, 4u);
}

TEST_F(ObjectOpsTest, DuplicateAndDegenerateSurfacesAreRemoved)
{
    Object *o = add_points(world, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {5, 5, 5}, {6, 6, 6}, {7, 7, 7}, {8, 8, 8}}, "o");
    add_polygon(o, {0, 1, 2});
    add_polygon(o, {2, 0, 1});                  /* the same triangle in another order */
    add_polygon(o, {3, 4}, SURFACE_LINE);       /* a line of two is kept */
    add_polygon(o, {5, 6});                     /* a polygon of two goes, with its vertices */
    add_polygon(o, {0});                        /* one reference goes; vertex 0 stays in use */
    int removed = 0;
    Captured c = capture([&] { removed = object_optimize_surfaces(o); });
    EXPECT_EQ(removed, 3);
    EXPECT_TRUE(contains(c.out, "(2 surfaces with 1 or 2 vertices deleted from object o)\n"));
    EXPECT_EQ(o->num_surf, 2u);
    EXPECT_EQ(o->num_vert, 5u);
    EXPECT_EQ(surface_at(o, 1)->surface_kind, SURFACE_LINE);
    /* An object left with nothing is deleted. */
    Object *lone = add_points(world, {{9, 9, 9}}, "lone");
    add_polygon(lone, {0});
    uint32_t h = object_handle(lone);
    capture([&] { EXPECT_EQ(object_optimize_surfaces(lone), 1); });
    EXPECT_EQ(object_from_handle(h), nullptr);
}

TEST_F(ObjectOpsTest, RepeatedReferenceSurfaceMarksItsSuperset)
{
    /* S = (A, A, B) and a later T = (A, B, C): T uses every vertex of S
     * and has as many references. */
    Object *o = add_points(world, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, "o");
    add_polygon(o, {0, 0, 1});
    add_polygon(o, {0, 1, 2});
    capture([&] { EXPECT_EQ(object_optimize_surfaces(o), 1); });
    EXPECT_EQ(o->num_surf, 1u);
}

/* ---- snapping ---- */

TEST_F(ObjectOpsTest, SnapToGridAndTogetherUndoExactly)
{
    prefs.grid = 1.0;
    Object *o = add_points(world, {{0.4f, 1.6f, -0.5f}, {2.2f, 0.1f, 0.7f}});
    auto before = points_of(o);
    select_vertices_of(o, {0, 1});
    EXPECT_EQ(selected_snap_to_grid(), 1);
    EXPECT_EQ(point_of(o, 0), (Point{0, 2, -1}));
    EXPECT_STREQ(undo_current()->label, "snap to grid");
    UNDO();
    EXPECT_TRUE(same_bits(before, points_of(o)));
    EXPECT_EQ(selected_snap_together(), 1);
    EXPECT_EQ(point_of(o, 1), before[0]);
    EXPECT_STREQ(undo_current()->label, "snap vertices together");
    UNDO();
    EXPECT_TRUE(same_bits(before, points_of(o)));
    prefs.grid = 0;
    EXPECT_EQ(selected_snap_to_grid(), 0);
    clear_selection();
    EXPECT_EQ(selected_snap_together(), 0);
    EXPECT_EQ(selected_snap_to_grid(), 0);
}

TEST_F(ObjectOpsTest, SnapObjectsTogetherByVertices)
{
    Object *a = add_square(world, 0, "a");
    Object *b = add_square(world, 5, "b");
    selection.select_mode = SELECT_VERTEX;
    add_to_selected_list(vertex_at(a, 2));
    add_to_selected_list(vertex_at(b, 0));
    EXPECT_EQ(snap_2_objects_vertices_together(), 1);
    EXPECT_EQ(point_of(b, 0), (Point{1, 1, 0}));
    EXPECT_EQ(point_of(a, 2), (Point{1, 1, 0}));
    UNDO();
    EXPECT_EQ(point_of(world_child(1), 0), (Point{5, 0, 0}));
    /* One object only: refused. */
    clear_selection();
    select_vertices_of(world_child(0), {0, 1});
    EXPECT_EQ(allign_objects_using_2_vert(), 0);
    clear_selection();
    EXPECT_EQ(snap_2_objects_vertices_together(), 0);
}

/* ---- the clipboard ---- */

TEST_F(ObjectOpsTest, PasteGivesIndependentCopiesThatSurviveEdits)
{
    Object *a = add_square(world, 0, "a");
    auto original = points_of(a);
    select_object(a);
    EXPECT_EQ(clipboard_copy(), 1);
    move_selection_f(10, 0, 0); /* the original changes; the clipboard not */
    EXPECT_EQ(clipboard_paste(), 1);
    EXPECT_EQ(clipboard_paste(), 1);
    ASSERT_EQ(world->num_kids, 3u);
    Object *p1 = world_child(1), *p2 = world_child(2);
    EXPECT_TRUE(same_bits(original, points_of(p1)));
    EXPECT_TRUE(same_bits(original, points_of(p2)));
    EXPECT_STREQ(p1->name, "a");
    /* Moving one paste leaves the other. */
    const float d[3] = {0, 0, 1};
    translate_object(p1, d);
    EXPECT_TRUE(same_bits(original, points_of(p2)));
    EXPECT_EQ(selection.selected_objects->item, p2);
    EXPECT_STREQ(undo_current()->label, "paste");
    UNDO();
    EXPECT_EQ(world->num_kids, 2u);
    EXPECT_EQ(selection.selected_objects->item, p1);
}

TEST_F(ObjectOpsTest, CutDeletesAndUndoRestores)
{
    Object *a = add_square(world, 0, "a");
    select_object(a);
    EXPECT_EQ(clipboard_cut(), 1);
    EXPECT_EQ(world->num_kids, 0u);
    EXPECT_STREQ(undo_current()->label, "cut");
    UNDO();
    EXPECT_EQ(world->num_kids, 1u);
    EXPECT_EQ(world_child(0), a);
    clear_selection();
    EXPECT_EQ(clipboard_cut(), 0);
    EXPECT_EQ(clipboard_copy(), 0);
    EXPECT_GE(clipboard_count(), 1);
}

TEST_F(ObjectOpsTest, DepthLimitThroughCommands)
{
    prefs.undo_levels = 3;
    Object *a = add_square(world);
    select_object(a);
    for (int i = 0; i < 4; i++) move_selection_f(1, 0, 0);
    EXPECT_EQ(undo_count, 3);
    for (int i = 0; i < 3; i++) UNDO();
    EXPECT_EQ(point_of(a, 0), (Point{1, 0, 0})); /* the first move stays */
    EXPECT_EQ(console_of_undo(), "nothing to UNDO!\n");
}

} // namespace

namespace {

/* Random sequences of editing commands, selections and undos: whatever
 * the order, no step may corrupt the model (counts, parents, references
 * to the object's own vertices) or reach freed memory (the sanitizer
 * build runs this too). */
class RandomEditing : public EditTest {};

void collect_objects(Object *o, std::vector<Object *> *all)
{
    for (List *k = o->kids; k; k = k->next) {
        all->push_back((Object *)k->item);
        collect_objects((Object *)k->item, all);
    }
}

/* Counts, parent links and references all agree. */
bool tree_sound(Object *o)
{
    if (list_count(o->vertices) != o->num_vert || list_count(o->surfaces) != o->num_surf ||
        list_count(o->kids) != o->num_kids) {
        return false;
    }
    std::unordered_set<Vertex *> own;
    for (List *v = o->vertices; v; v = v->next) own.insert((Vertex *)v->item);
    for (List *s = o->surfaces; s; s = s->next) {
        Surface *sf = (Surface *)s->item;
        if (list_count(sf->vertrefs) != sf->num_vertrefs) return false;
        for (List *r = sf->vertrefs; r; r = r->next) {
            if (!own.count(((SVertex *)r->item)->vertex)) return false;
        }
    }
    for (List *k = o->kids; k; k = k->next) {
        Object *kid = (Object *)k->item;
        if (kid->parent != o || !tree_sound(kid)) return false;
    }
    return true;
}

void build_random_model(std::mt19937 &rng)
{
    std::uniform_int_distribution<int> coordinate(-3, 3);
    for (int i = 0; i < 4; i++) {
        Object *parent = world;
        if (i % 2) {
            parent = new_group();
            object_add_child(world, parent);
        }
        for (int j = 0; j < 2; j++) {
            Object *o = add_cube(parent);
            const float d[3] = {(float)coordinate(rng), (float)coordinate(rng), (float)coordinate(rng)};
            translate_object(o, d);
        }
    }
}

void random_selection(std::mt19937 &rng)
{
    std::vector<Object *> all;
    collect_objects(world, &all);
    clear_selection();
    set_new_select_mode((int)(rng() % 3));
    if (all.empty()) return;
    int n = 1 + (int)(rng() % 3);
    for (int i = 0; i < n; i++) select_object(all[rng() % all.size()]);
}

void random_step(std::mt19937 &rng)
{
    switch (rng() % 26) {
    case 0: move_selection_f(1, -2, 0.5f); break;
    case 1: selection_move_to_f(2, 2, 2); break;
    case 2: rotate_selection_f(0, 0, 30); break;
    case 3: rotate_selection_f(15, 30, 0); break;
    case 4: command_scale(2, 0.5f, 1); break;
    case 5: selection_size_to_f(0, 3, -1); break;
    case 6: command_mirror((int)(rng() % 3)); break;
    case 7: capture([] { group_selected_objects(); }); break;
    case 8: ungroup_selected_objects(); break;
    case 9: selected_object_fragment(); break;
    case 10: selected_object_explode(0.5f); break;
    case 11: selected_object_merge(); break;
    case 12: delete_all_selected(); break;
    case 13: clone_selection(); break;
    case 14: duplicate_selected(); break;
    case 15: capture([] { optimize_selected(); }); break;
    case 16: capture([] { selected_optimize_surfaces(); }); break;
    case 17: selected_snap_to_grid(); break;
    case 18: selected_snap_together(); break;
    case 19: snap_2_objects_vertices_together(); break;
    case 20: clipboard_copy(); break;
    case 21: clipboard_cut(); break;
    case 22: clipboard_paste(); break;
    case 23: hide_selected(); show_all(); break;
    case 24: selected_recentre(); break;
    default: capture([] { UNDO(); }); break;
    }
}

TEST_F(RandomEditing, NoSequenceCorruptsTheModel)
{
    prefs.undo_levels = 5;
    prefs.grid = 1.0;
    std::mt19937 rng(20240611);
    for (int round = 0; round < 6; round++) {
        command_clear_all();
        build_random_model(rng);
        for (int step = 0; step < 150; step++) {
            if (rng() % 3 == 0) random_selection(rng);
            random_step(rng);
            ASSERT_TRUE(tree_sound(world)) << "round " << round << " step " << step;
            for (List *l = selection.selected_objects; l; l = l->next) {
                ASSERT_TRUE(object_exists((Object *)l->item)) << "round " << round << " step " << step;
            }
        }
        /* Undo everything there is. */
        while (undo_current()) capture([] { UNDO(); });
        ASSERT_TRUE(tree_sound(world));
    }
    command_clear_all();
}

} // namespace
