/*
 * test_selection.cpp - the selection: the object rule of each select mode
 * (select and unselect), the current object, hidden objects, box selection
 * with its strict edges and modifier flags, the select-mode conversions,
 * named selection, the surface queries, the selection box, handing lists
 * over, the selection commands, and the indexes that keep it all linear
 * (checked against plain list operations on random input).
 */
#include "test_support.h"
#include "core/lights.h"
#include "edit/indexed_list.h"
#include "edit/selection.h"

#include <algorithm>
#include <array>
#include <random>
#include <unordered_map>
#include <vector>

namespace {

class SelectionTest : public ::testing::Test {
protected:
    void SetUp() override { reset(); }
    void TearDown() override { reset(); }

    static void reset()
    {
        clear_selection();
        clear_world_children();
        selection.select_mode = SELECT_TREE;
    }
};

Object *add_object(Object *parent, std::initializer_list<std::array<float, 3>> points, const char *name = "")
{
    Object *o = new_object(OBJECT_NORMAL);
    object_set_name(o, name);
    for (const auto &p : points) object_add_new_vertex(o, p.data());
    object_add_child(parent, o);
    return o;
}

Object *add_group(Object *parent, const char *name = "")
{
    Object *g = new_group();
    object_set_name(g, name);
    object_add_child(parent, g);
    return g;
}

Vertex *vertex_of(Object *o, unsigned int i) { return vk_object_get_vertex_at_index(o, i); }

template <typename T> std::vector<T *> items(List *head)
{
    std::vector<T *> out;
    for (; head; head = head->next) out.push_back((T *)head->item);
    return out;
}

std::vector<Object *> selected_objects() { return items<Object>(selection.selected_objects); }
std::vector<Object *> part_selected() { return items<Object>(selection.part_selected_objects); }
std::vector<Vertex *> selected_vertices() { return items<Vertex>(selection.selected_vertices); }

std::vector<Vertex *> vertices_of(Object *o) { return items<Vertex>(o->vertices); }

template <typename T> std::vector<T> concat(std::initializer_list<std::vector<T>> parts)
{
    std::vector<T> out;
    for (const auto &p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}

void box_select(float ax, float ay, float az, float bx, float by, float bz, int view, int add = 0, int remove = 0)
{
    const float a[3] = {ax, ay, az}, b[3] = {bx, by, bz};
    select_all_inside(a, b, view, add, remove);
}

Surface *add_surface(Object *o, std::initializer_list<unsigned int> vertex_indexes)
{
    Surface *s = new_surface();
    for (unsigned int i : vertex_indexes) surface_add_vertref(s, new_svertex(vertex_of(o, i), 0, 0));
    object_add_surface(o, s);
    return s;
}

/* ---- the object rule ---- */

TEST_F(SelectionTest, TreeModeSelectsTheTopAncestorOnce)
{
    Object *g = add_group(world);
    Object *inner = add_group(g);
    Object *leaf = add_object(inner, {{1, 2, 3}});
    Object *other = add_object(world, {{5, 5, 5}});

    select_object(leaf);
    EXPECT_EQ(selected_objects(), std::vector<Object *>{g});
    EXPECT_EQ(selection.num_selected_objects, 1);
    EXPECT_EQ(get_current_object(), g);

    select_object(inner); /* same tree: no second entry */
    EXPECT_EQ(selection.num_selected_objects, 1);

    select_object(other);
    EXPECT_EQ(selected_objects(), (std::vector<Object *>{g, other}));
    EXPECT_EQ(get_current_object(), nullptr);

    unselect_object(leaf); /* removes the tree that holds it */
    EXPECT_EQ(selected_objects(), std::vector<Object *>{other});
    EXPECT_EQ(get_current_object(), other);

    select_object(world); /* the world is no tree of itself */
    EXPECT_EQ(selected_objects(), std::vector<Object *>{other});
}

TEST_F(SelectionTest, ObjectModeSelectsLeavesButUnselectsTheGroupEntryOnly)
{
    selection.select_mode = SELECT_OBJECT;
    Object *g = add_group(world);
    Object *a = add_object(g, {{0, 0, 0}});
    Object *h = add_group(g);
    Object *c = add_object(h, {{1, 1, 1}});
    Object *b = add_object(g, {{2, 2, 2}});

    select_object(g);
    EXPECT_EQ(selected_objects(), (std::vector<Object *>{a, c, b}));
    EXPECT_EQ(selection.num_selected_objects, 3);
    EXPECT_EQ(get_current_object(), nullptr);

    unselect_object(g); /* the group itself is not in the list */
    EXPECT_EQ(selection.num_selected_objects, 3);

    select_objectlist(g->kids); /* nothing new */
    EXPECT_EQ(selection.num_selected_objects, 3);

    List *two = nullptr;
    list_add_item(&two, a);
    list_add_item(&two, b);
    unselect_objectlist(two);
    list_free(&two);
    EXPECT_EQ(selected_objects(), std::vector<Object *>{c});
    EXPECT_EQ(get_current_object(), c);
}

TEST_F(SelectionTest, VertexModeSelectsVerticesAndOwnersAndDescendsPastHiddenObjects)
{
    selection.select_mode = SELECT_VERTEX;
    Object *a = add_object(world, {{0, 0, 0}, {1, 0, 0}});
    Object *b = add_object(a, {{2, 0, 0}});
    Object *c = add_object(b, {{3, 0, 0}, {4, 0, 0}});
    b->visible = 0; /* hidden itself, child c still visible */

    select_object(a);
    EXPECT_EQ(selected_vertices(), concat<Vertex *>({vertices_of(a), vertices_of(c)}));
    EXPECT_EQ(part_selected(), (std::vector<Object *>{a, c}));
    EXPECT_EQ(selection.num_selected_vertices, 4);
    EXPECT_EQ(selection.num_part_selected_objects, 2);
    EXPECT_EQ(selection.num_selected_objects, 0);
    EXPECT_EQ(get_current_object(), nullptr);

    select_object(a); /* unique: nothing added twice */
    EXPECT_EQ(selection.num_selected_vertices, 4);

    unselect_object(c);
    EXPECT_EQ(selected_vertices(), vertices_of(a));
    EXPECT_EQ(part_selected(), std::vector<Object *>{a});
    EXPECT_EQ(selection.num_selected_vertices, 2);
    EXPECT_EQ(selection.num_part_selected_objects, 1);

    unselect_object(c); /* not there: counts stay */
    EXPECT_EQ(selection.num_selected_vertices, 2);
    EXPECT_EQ(selection.num_part_selected_objects, 1);
}

TEST_F(SelectionTest, HiddenObjectsAreNeverSelected)
{
    Object *shown = add_object(world, {{1, 1, 0}}, "x");
    Object *hidden = add_object(world, {{2, 2, 0}}, "x");
    object_set_visible(hidden, 0);

    for (int mode : {SELECT_TREE, SELECT_OBJECT, SELECT_VERTEX}) {
        SCOPED_TRACE(mode);
        clear_selection();
        selection.select_mode = mode;
        select_object(hidden);
        EXPECT_TRUE(nothing_is_selected());
        select_by_name((char *)"x");
        box_select(-10, -10, -10, 10, 10, 10, 0, 1, 0);
        EXPECT_FALSE(object_is_selected(hidden));
        for (Vertex *v : vertices_of(hidden)) EXPECT_FALSE(vertex_is_selected(v));
        EXPECT_TRUE(object_is_selected(shown));
    }
    objects_are_hidden = 0;
}

TEST_F(SelectionTest, CurrentObjectFollowsASingleSelectedObject)
{
    Object *a = add_object(world, {{0, 0, 0}});
    Object *b = add_object(world, {{1, 1, 1}});
    select_object(a);
    EXPECT_EQ(get_current_object(), a);
    select_object(b);
    EXPECT_EQ(get_current_object(), nullptr);
    unselect_object(a);
    EXPECT_EQ(get_current_object(), b);
    clear_selection();
    EXPECT_EQ(get_current_object(), nullptr);

    /* a box that finds exactly one object makes it current too */
    box_select(-1, -1, -1, 0.5f, 0.5f, 0.5f, 0);
    EXPECT_EQ(get_current_object(), a);
    box_select(0, 0, 0, 0.5f, 0.5f, 0.5f, 0); /* a's vertex lies on the edge */
    EXPECT_EQ(get_current_object(), nullptr);
    box_select(-1, -1, -1, 2, 2, 2, 0);
    EXPECT_EQ(get_current_object(), nullptr);
}

TEST_F(SelectionTest, NothingIsSelectedIgnoresPartSelectedObjects)
{
    selection.select_mode = SELECT_VERTEX;
    Object *empty = add_object(world, {});
    select_object(empty);
    EXPECT_EQ(part_selected(), std::vector<Object *>{empty});
    EXPECT_EQ(nothing_is_selected(), 1);

    clear_selection();
    Object *light = new_object(OBJECT_LIGHT);
    light->centre[0] = 1;
    light->centre[1] = 1;
    object_add_child(world, light);
    box_select(0, 0, 0, 2, 2, 0, 0);
    EXPECT_EQ(part_selected(), std::vector<Object *>{light});
    EXPECT_EQ(nothing_is_selected(), 1);
    EXPECT_EQ(selection.selection_has_extent, 0);
}

TEST_F(SelectionTest, SelectVerticesAppendsWithoutUniquenessOnlyInVertexMode)
{
    Object *a = add_object(world, {{0, 0, 0}, {1, 1, 1}});
    Captured out = capture([&] { select_vertices(a->vertices); });
    EXPECT_EQ(out.out, "select_vertices called when not in VERTEX selectmode\n");
    EXPECT_TRUE(nothing_is_selected());

    selection.select_mode = SELECT_VERTEX;
    select_vertices(a->vertices);
    select_vertices(a->vertices);
    EXPECT_EQ(selection.num_selected_vertices, 4);
    EXPECT_EQ(list_count(selection.selected_vertices), 4u);
    EXPECT_EQ(selection.box_max[0], 1.0f);

    /* unselecting the object takes out one occurrence of each */
    unselect_object(a);
    EXPECT_EQ(selected_vertices(), vertices_of(a));
    EXPECT_EQ(selection.num_selected_vertices, 2);
    EXPECT_TRUE(vertex_is_selected(vertex_of(a, 0)));

    add_to_selected_list(vertex_of(a, 1));
    EXPECT_EQ(selection.num_selected_vertices, 3);
}

/* ---- box selection ---- */

TEST_F(SelectionTest, BoxEdgesAreOutsideAndViewsPickTheirAxes)
{
    selection.select_mode = SELECT_VERTEX;
    Object *o = add_object(world, {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {1, 5, 1}});
    Vertex *centre = vertex_of(o, 1);

    box_select(2, 2, 2, 0, 0, 0, 0); /* corners in either order */
    EXPECT_EQ(selected_vertices(), std::vector<Vertex *>{centre});

    box_select(0, 0, 0, 2, 2, 2, 1); /* z and y */
    EXPECT_EQ(selected_vertices(), std::vector<Vertex *>{centre});
    box_select(0, 100, 0, 2, -100, 2, 2); /* x and z: y does not matter */
    EXPECT_EQ(selected_vertices(), (std::vector<Vertex *>{centre, vertex_of(o, 3)}));
    box_select(0, 100, 0, 2, -100, 2, 3); /* no such view */
    EXPECT_TRUE(nothing_is_selected());

    /* each of the four edges of each view on its own is outside */
    const float max[3] = {1, 1, 1}, min[3] = {0, 0, 0};
    const int axes[3][2] = {{0, 1}, {2, 1}, {0, 2}};
    for (int view = 0; view < 3; view++) {
        SCOPED_TRACE(view);
        float p[3] = {0.5f, 0.5f, 0.5f};
        EXPECT_EQ(point_inside_box2(view, p, max, min), 1);
        for (int axis : axes[view]) {
            for (float edge : {0.0f, 1.0f}) {
                float q[3] = {0.5f, 0.5f, 0.5f};
                q[axis] = edge;
                EXPECT_EQ(point_inside_box2(view, q, max, min), 0) << "axis " << axis << " at " << edge;
            }
        }
        int unused = 3 - axes[view][0] - axes[view][1];
        p[unused] = 7; /* the view's depth axis does not matter */
        EXPECT_EQ(point_inside_box2(view, p, max, min), 1);
    }
    const float inside[3] = {0.5f, 0.5f, 0.5f};
    EXPECT_EQ(point_inside_box2(-1, inside, max, min), 0);
    EXPECT_EQ(point_inside_box2(3, inside, max, min), 0);

    /* a vertex on one edge of a box drag only */
    box_select(1, 0, 0, 3, 3, 0, 0);
    EXPECT_EQ(selected_vertices(), std::vector<Vertex *>{vertex_of(o, 2)});
}

TEST_F(SelectionTest, BoxModifiersAddRemoveAndBothMeanAdd)
{
    selection.select_mode = SELECT_VERTEX;
    Object *a = add_object(world, {{1, 1, 0}, {3, 1, 0}});
    Object *b = add_object(world, {{5, 1, 0}});
    Vertex *a0 = vertex_of(a, 0), *a1 = vertex_of(a, 1), *b0 = vertex_of(b, 0);

    box_select(0, 0, 0, 2, 2, 0, 0);
    EXPECT_EQ(selected_vertices(), std::vector<Vertex *>{a0});
    box_select(4, 0, 0, 6, 2, 0, 0, 1, 0);
    EXPECT_EQ(selected_vertices(), (std::vector<Vertex *>{a0, b0}));
    EXPECT_EQ(part_selected(), (std::vector<Object *>{a, b}));
    box_select(0, 0, 0, 6, 2, 0, 0, 1, 1); /* add and remove: add */
    EXPECT_EQ(selected_vertices(), (std::vector<Vertex *>{a0, b0, a1}));
    EXPECT_EQ(selection.num_selected_vertices, 3);
    EXPECT_EQ(selection.num_part_selected_objects, 2);

    box_select(4, 0, 0, 6, 2, 0, 0, 0, 1); /* remove: b loses its only vertex */
    EXPECT_EQ(selected_vertices(), (std::vector<Vertex *>{a0, a1}));
    EXPECT_EQ(part_selected(), std::vector<Object *>{a});
    EXPECT_EQ(selection.num_selected_vertices, 2);
    EXPECT_EQ(selection.num_part_selected_objects, 1);
    box_select(4, 0, 0, 6, 2, 0, 0, 0, 1); /* nothing there to remove */
    EXPECT_EQ(selection.num_selected_vertices, 2);

    box_select(2, 0, 0, 6, 2, 0, 0); /* no flag: replaces */
    EXPECT_EQ(selected_vertices(), (std::vector<Vertex *>{a1, b0}));
    EXPECT_EQ(part_selected(), (std::vector<Object *>{a, b}));
    EXPECT_EQ(selection.num_selected_vertices, 2);
}

TEST_F(SelectionTest, BoxInObjectModesPicksObjectsTreesAndLights)
{
    Object *g = add_group(world);
    Object *a = add_object(g, {{1, 1, 0}});
    Object *b = add_object(g, {{3, 1, 0}});
    Object *light = new_object(OBJECT_LIGHT);
    light->centre[0] = 5;
    light->centre[1] = 1;
    object_add_child(world, light);

    selection.select_mode = SELECT_OBJECT;
    box_select(0, 0, 0, 2, 2, 0, 0);
    EXPECT_EQ(selected_objects(), std::vector<Object *>{a}); /* a child, directly */
    box_select(2, 0, 0, 6, 2, 0, 0, 1, 0);
    EXPECT_EQ(selected_objects(), (std::vector<Object *>{a, b, light}));
    box_select(0, 0, 0, 2, 2, 0, 0, 0, 1);
    EXPECT_EQ(selected_objects(), (std::vector<Object *>{b, light}));

    clear_selection();
    selection.select_mode = SELECT_TREE;
    box_select(0, 0, 0, 6, 2, 0, 0);
    EXPECT_EQ(selected_objects(), (std::vector<Object *>{g, light}));
    EXPECT_EQ(selection.num_selected_objects, 2);
}

/* ---- select-mode changes ---- */

TEST_F(SelectionTest, ModeChangeObjectToVertexSelectsTheObjectsVertices)
{
    Object *a = add_object(world, {{0, 0, 0}, {1, 0, 0}});
    Object *b = add_object(world, {{2, 0, 0}});
    selection.select_mode = SELECT_OBJECT;
    select_object(b);
    select_object(a);
    EXPECT_EQ(set_new_select_mode(SELECT_VERTEX), 1);
    EXPECT_EQ(selection.select_mode, SELECT_VERTEX);
    EXPECT_EQ(selected_vertices(), concat<Vertex *>({vertices_of(b), vertices_of(a)}));
    EXPECT_EQ(part_selected(), (std::vector<Object *>{b, a}));
    EXPECT_EQ(selection.num_selected_objects, 0);
}

TEST_F(SelectionTest, ModeChangeTreeToObjectAndVertex)
{
    /* g (vertices) { h (vertices) { c }, e (no vertices, leaf) } */
    Object *g = add_object(world, {{0, 0, 0}});
    Object *h = add_object(g, {{1, 0, 0}});
    Object *c = add_object(h, {{2, 0, 0}});
    Object *e = add_object(g, {});

    select_object(c);
    set_new_select_mode(SELECT_OBJECT);
    EXPECT_EQ(selected_objects(), (std::vector<Object *>{c, e}));
    EXPECT_EQ(get_current_object(), nullptr);

    set_new_select_mode(SELECT_TREE);
    EXPECT_EQ(selected_objects(), std::vector<Object *>{g});
    set_new_select_mode(SELECT_VERTEX);
    EXPECT_EQ(selected_vertices(), concat<Vertex *>({vertices_of(g), vertices_of(h), vertices_of(c)}));
    EXPECT_EQ(part_selected(), (std::vector<Object *>{g, h, c, e}));
    EXPECT_EQ(selection.num_selected_vertices, 3);
    EXPECT_EQ(selection.num_selected_objects, 0);
}

TEST_F(SelectionTest, ModeChangeTreeToVertexTakesAParentBeforeItsChildren)
{
    /* g (no vertices) { h (vertices) { c } } */
    Object *g = add_group(world);
    Object *h = add_object(g, {{1, 0, 0}});
    Object *c = add_object(h, {{2, 0, 0}});
    select_object(g);
    set_new_select_mode(SELECT_VERTEX);
    EXPECT_EQ(selected_vertices(), concat<Vertex *>({vertices_of(h), vertices_of(c)}));
    EXPECT_EQ(part_selected(), (std::vector<Object *>{h, c}));
}

TEST_F(SelectionTest, ModeChangeToTreeUnhidesTheTrees)
{
    Object *g = add_group(world);
    Object *a = add_object(g, {{0, 0, 0}});
    Object *b = add_object(g, {{1, 0, 0}});
    Object *other = add_object(world, {{5, 0, 0}});

    selection.select_mode = SELECT_OBJECT;
    select_object(a);
    select_object(b);
    select_object(other);
    object_set_visible(g, 0);
    set_new_select_mode(SELECT_TREE);
    EXPECT_EQ(selected_objects(), (std::vector<Object *>{g, other}));
    EXPECT_TRUE(g->visible && a->visible && b->visible);

    set_new_select_mode(SELECT_VERTEX);
    clear_selection();
    box_select(-1, -1, 0, 0.5f, 1, 0, 0); /* a's vertex only */
    object_set_visible(g, 0);
    set_new_select_mode(SELECT_TREE);
    EXPECT_EQ(selected_objects(), std::vector<Object *>{g});
    EXPECT_TRUE(g->visible && a->visible && b->visible);
    objects_are_hidden = 0;
}

TEST_F(SelectionTest, ModeChangeVertexToObjectSelectsTheOwners)
{
    Object *a = add_object(world, {{1, 1, 0}});
    Object *g = add_group(world);
    Object *b = add_object(g, {{3, 1, 0}, {3, 3, 0}});
    selection.select_mode = SELECT_VERTEX;
    box_select(2, 0, 0, 4, 4, 0, 0);
    box_select(0, 0, 0, 2, 2, 0, 0, 1, 0);
    set_new_select_mode(SELECT_OBJECT);
    EXPECT_EQ(selected_objects(), (std::vector<Object *>{b, a}));
    EXPECT_EQ(selection.num_selected_vertices, 0);
    EXPECT_TRUE(selected_vertices().empty());
    EXPECT_TRUE(part_selected().empty());
}

TEST_F(SelectionTest, ModeChangeToTheSameModeKeepsTheSelectionAndBadModesAreRefused)
{
    Object *a = add_object(world, {{1, 1, 0}});
    select_object(a);
    EXPECT_EQ(set_new_select_mode(SELECT_TREE), 1);
    EXPECT_EQ(selected_objects(), std::vector<Object *>{a});
    Captured out = capture([&] { EXPECT_EQ(set_new_select_mode(7), 0); });
    EXPECT_TRUE(contains(out.out, "not a select mode"));
    EXPECT_EQ(selection.select_mode, SELECT_TREE);
    EXPECT_EQ(selected_objects(), std::vector<Object *>{a});
}

/* ---- names ---- */

TEST_F(SelectionTest, NamedSelectionUsesTheObjectRule)
{
    Object *g = add_group(world, "outer");
    Object *n1 = add_object(g, {{0, 0, 0}}, "door");
    Object *n2 = add_object(world, {{1, 0, 0}}, "door");
    Object *n3 = add_object(world, {{2, 0, 0}}, "door");
    Object *n4 = add_object(world, {{3, 0, 0}}, "Door");
    object_set_visible(n3, 0);

    select_by_name((char *)"door");
    EXPECT_EQ(selected_objects(), (std::vector<Object *>{g, n2}));

    unselect_by_name((char *)"door");
    EXPECT_TRUE(nothing_is_selected());

    selection.select_mode = SELECT_OBJECT;
    select_by_name((char *)"door");
    EXPECT_EQ(selected_objects(), (std::vector<Object *>{n1, n2}));
    unselect_named("door", n2);
    EXPECT_EQ(selected_objects(), std::vector<Object *>{n1});
    EXPECT_EQ(get_current_object(), n1);
    (void)n4;
    objects_are_hidden = 0;
}

TEST_F(SelectionTest, FindNamedObjectSearchesDepthFirstIncludingHiddenAndTheWorld)
{
    Object *g = add_group(world, "a");
    Object *inner = add_object(g, {{0, 0, 0}}, "b");
    Object *later = add_object(world, {{0, 0, 0}}, "b");
    inner->visible = 0;
    EXPECT_EQ(find_named_object("b", nullptr), inner);
    EXPECT_EQ(find_named_object("b", later), later);
    EXPECT_EQ(find_named_object("a", nullptr), g);
    EXPECT_EQ(find_named_object("nothing", nullptr), nullptr);
    EXPECT_EQ(find_named_object(nullptr, nullptr), nullptr);
    object_set_name(world, "root");
    EXPECT_EQ(find_named_object("root", nullptr), world);
    object_set_name(world, "");
}

/* ---- the box of the selection ---- */

TEST_F(SelectionTest, BoundingBoxExtentAndViewFlags)
{
    selection.select_mode = SELECT_VERTEX;
    Object *o = add_object(world, {{0, 0, 0}, {0, 0, 5}, {-2, 3, 0}});

    List *one = nullptr;
    list_add_item(&one, vertex_of(o, 0));
    select_vertices(one);
    EXPECT_EQ(selection.selection_has_extent, 0); /* a point at the origin */
    EXPECT_EQ(selection.view_has_extent[0], 0);

    list_add_item(&one, vertex_of(o, 1));
    clear_selection();
    select_vertices(one);
    list_free(&one);
    EXPECT_EQ(selection.selection_has_extent, 1);
    EXPECT_EQ(selection.view_has_extent[0], 0); /* flat in x and y */
    EXPECT_EQ(selection.view_has_extent[1], 1);
    EXPECT_EQ(selection.view_has_extent[2], 1);
    EXPECT_EQ(selection.box_max[2], 5.0f);

    select_object(o);
    EXPECT_EQ(selection.box_min[0], -2.0f);
    EXPECT_EQ(selection.box_max[1], 3.0f);
    float centre[3], size[3];
    find_box_centre(selection.box_max, selection.box_min, centre);
    find_box_size(selection.box_min, selection.box_max, size);
    EXPECT_EQ(centre[0], -1.0f);
    EXPECT_EQ(centre[2], 2.5f);
    EXPECT_EQ(size[1], 3.0f);

    /* nothing selected: no extent, the stored box is kept */
    clear_selection();
    find_bounding_box();
    EXPECT_EQ(selection.selection_has_extent, 0);
    EXPECT_EQ(selection.box_max[2], 5.0f);
}

TEST_F(SelectionTest, BoundingBoxOfAnEmptyObjectIsZero)
{
    Object *empty = add_group(world);
    selection.select_mode = SELECT_TREE;
    select_object(empty);
    EXPECT_EQ(selection.selection_has_extent, 0);
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(selection.box_min[i], 0.0f);
        EXPECT_EQ(selection.box_max[i], 0.0f);
    }
}

/* ---- surfaces ---- */

TEST_F(SelectionTest, SurfacesWithSelectedVerticesComeInSelectionOrder)
{
    selection.select_mode = SELECT_VERTEX;
    Object *o = add_object(world, {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}});
    Surface *s0 = add_surface(o, {0, 1});
    Surface *s1 = add_surface(o, {1, 2});
    Surface *s2 = add_surface(o, {2, 3});
    Object *k = add_object(o, {{9, 9, 9}});
    Surface *s3 = add_surface(k, {0});

    add_to_selected_list(vertex_of(o, 2));
    add_to_selected_list(vertex_of(o, 0));
    add_to_selected_list(vertex_of(k, 0));
    List *found = nullptr;
    list_add_item(&found, s2); /* already there: not added again */
    find_surfaces_with_selected_vertex(world, &found);
    EXPECT_EQ(items<Surface>(found), (std::vector<Surface *>{s2, s1, s0, s3}));
    list_free(&found);

    List *whole = find_selected_whole_surfaces();
    EXPECT_EQ(items<Surface>(whole), std::vector<Surface *>{s3});
    list_free(&whole);
}

TEST_F(SelectionTest, WholeAndPartSelectedSurfaces)
{
    selection.select_mode = SELECT_VERTEX;
    Object *o = add_object(world, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {5, 5, 0}});
    Surface *tri = add_surface(o, {0, 1, 2});
    add_surface(o, {2, 3, 4});
    (void)tri;

    for (unsigned int i : {2u, 1u, 0u, 3u}) add_to_selected_list(vertex_of(o, i));
    int count = selection.num_selected_vertices;
    select_whole_surfaces();
    EXPECT_EQ(selected_vertices(), (std::vector<Vertex *>{vertex_of(o, 0), vertex_of(o, 1), vertex_of(o, 2)}));
    EXPECT_EQ(selection.num_selected_vertices, count); /* deliberately left */

    clear_selection();
    add_to_selected_list(vertex_of(o, 4));
    select_part_selected_surfaces();
    EXPECT_EQ(selected_vertices(), (std::vector<Vertex *>{vertex_of(o, 4), vertex_of(o, 2), vertex_of(o, 3)}));
    EXPECT_EQ(selection.num_selected_vertices, 3);
    EXPECT_EQ(selection.box_max[0], 5.0f);

    clear_selection();
    select_part_selected_surfaces();
    EXPECT_TRUE(nothing_is_selected());

    /* outside vertex mode a surface selects its owner */
    selection.select_mode = SELECT_TREE;
    select_surface(tri);
    EXPECT_EQ(selected_objects(), std::vector<Object *>{o});
    EXPECT_EQ(get_current_object(), o);
}

TEST_F(SelectionTest, SurfacesAroundAPointReplaceTheVertexSelection)
{
    selection.select_mode = SELECT_VERTEX;
    Object *o = add_object(world, {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {10, 10, 0}, {12, 10, 0}, {12, 12, 0}});
    add_surface(o, {0, 1, 2});
    add_surface(o, {3, 4, 5});
    add_to_selected_list(vertex_of(o, 5));
    const float point[3] = {1.5f, 1, 0};
    select_surfaces_from_point(point, 0);
    EXPECT_EQ(selected_vertices(), (std::vector<Vertex *>{vertex_of(o, 0), vertex_of(o, 1), vertex_of(o, 2)}));
    EXPECT_EQ(selection.num_selected_vertices, 1); /* not recounted */
    const float edge[3] = {2, 1, 0};
    select_surfaces_from_point(edge, 0);
    EXPECT_TRUE(selected_vertices().empty());
}

/* ---- handing lists over ---- */

TEST_F(SelectionTest, TakeAndAdoptLists)
{
    selection.select_mode = SELECT_VERTEX;
    Object *o = add_object(world, {{0, 0, 0}, {1, 1, 1}});
    select_object(o);
    List *vertices, *objects;
    selection_take_lists(&vertices, &objects);
    EXPECT_TRUE(nothing_is_selected());
    EXPECT_TRUE(part_selected().empty());
    EXPECT_EQ(selection.num_selected_vertices, 0);
    EXPECT_FALSE(vertex_is_selected(vertex_of(o, 0)));
    EXPECT_EQ(list_count(vertices), 2u);

    selection_adopt_lists(vertices, objects);
    EXPECT_EQ(selection.num_selected_vertices, 2);
    EXPECT_TRUE(vertex_is_selected(vertex_of(o, 1)));
    select_object(o); /* the index knows them: nothing added */
    EXPECT_EQ(selection.num_selected_vertices, 2);
    EXPECT_EQ(list_count(selection.selected_vertices), 2u);
}

/* ---- commands ---- */

std::string run(std::vector<std::string> words)
{
    std::vector<char *> argv;
    for (auto &w : words) argv.push_back(&w[0]);
    do_command((int)argv.size(), argv.data());
    const char *r = command_result_get();
    return r ? r : "";
}

TEST_F(SelectionTest, SelectionCommands)
{
    Object *a = add_object(world, {{0, 0, 0}, {2, 4, 6}});
    Object *b = add_object(world, {{-2, 0, 0}});
    std::string id_a = std::to_string(object_handle(a)), id_b = std::to_string(object_handle(b));

    EXPECT_EQ(run({"get_selection_size"}), "0 0 0");
    EXPECT_EQ(run({"get_selection_centre"}), "0 0 0");
    EXPECT_EQ(run({"object_is_selected", id_a}), "0");
    run({"object_select", id_a});
    EXPECT_EQ(run({"object_is_selected", id_a}), "1");
    EXPECT_EQ(run({"get_selection_size"}), "2 4 6");
    EXPECT_EQ(run({"get_selection_centre"}), "1 2 3");
    run({"object_select", id_b});
    EXPECT_EQ(run({"get_selected_objects"}), id_a + " " + id_b);
    run({"object_deselect", id_a});
    EXPECT_EQ(run({"get_selected_objects"}), id_b);

    Captured out = capture([] { run({"object_select", "987654"}); });
    EXPECT_TRUE(contains(out.out, "object_select: no object with id 987654"));
    EXPECT_EQ(run({"get_selected_objects"}), id_b);

    run({"select_all"});
    EXPECT_EQ(selection.num_selected_objects, 2);
    run({"clear_selection"});
    EXPECT_TRUE(nothing_is_selected());
    run({"set_select_mode", "2"});
    EXPECT_EQ(selection.select_mode, SELECT_VERTEX);
    run({"select_all"});
    EXPECT_EQ(selection.num_selected_vertices, 3);
    EXPECT_EQ(run({"get_selected_objects"}), "");
}

/* ---- the indexes against plain lists ---- */

TEST(PointerTable, AgreesWithAStandardMapUnderRandomUse)
{
    std::mt19937 rng(7);
    PointerTable table;
    std::unordered_map<const void *, uintptr_t> model;
    static char keys[600];
    for (int step = 0; step < 200000; step++) {
        const void *key = rng() % 61 == 0 ? nullptr : &keys[rng() % 600];
        switch (rng() % 4) {
        case 0: ptable_increment(&table, key); model[key]++; break;
        case 1: {
            int had = model.count(key) != 0;
            EXPECT_EQ(ptable_decrement(&table, key), had);
            if (had && --model[key] == 0) model.erase(key);
            break;
        }
        case 2: EXPECT_EQ(ptable_erase(&table, key), (int)model.erase(key)); break;
        default: {
            uintptr_t v = 0;
            int held = ptable_get(&table, key, &v);
            ASSERT_EQ(held, (int)model.count(key));
            if (held) {
                ASSERT_EQ(v, model[key]);
            }
        }
        }
        ASSERT_EQ(ptable_size(&table), model.size());
    }
    for (const auto &kv : model) EXPECT_EQ(ptable_value(&table, kv.first), kv.second);
    ptable_clear(&table);
    EXPECT_EQ(ptable_size(&table), 0u);
}

TEST(IndexedList, BatchedRemovalsMatchOneByOneRemovals)
{
    std::mt19937 rng(11);
    static int values[20];
    for (int round = 0; round < 300; round++) {
        List *plain = nullptr, *indexed = nullptr;
        ListIndex index;
        for (int i = 0, n = (int)(rng() % 40); i < n; i++) {
            void *item = &values[rng() % 20];
            if (rng() % 2) {
                list_add_item(&plain, item);
                ilist_append(&indexed, &index, item);
            } else {
                EXPECT_EQ(list_add_item_unique(&plain, item) != nullptr, ilist_add_unique(&indexed, &index, item) == 1);
            }
        }
        for (int i = 0, n = (int)(rng() % 30); i < n; i++) {
            void *item = &values[rng() % 20];
            EXPECT_EQ(list_remove_item(&plain, item), ilist_request_remove(&index, item));
        }
        ilist_sweep(&indexed, &index);
        ASSERT_EQ(items<int>(plain), items<int>(indexed));
        for (int v = 0; v < 20; v++) {
            unsigned int n = 0;
            for (List *l = plain; l; l = l->next) n += l->item == &values[v];
            ASSERT_EQ(ilist_occurrences(&index, &values[v]), n);
        }
        /* the tail is right: appending goes to the end */
        list_add_item(&plain, &values[0]);
        ilist_append(&indexed, &index, &values[0]);
        ASSERT_EQ(items<int>(plain), items<int>(indexed));
        list_free(&plain);
        ilist_reset(&indexed, &index);
    }
}

/* The plain reading of the surface search: for each selected vertex in
 * order, each surface of the object in order that references it. */
void reference_surface_search(Object *o, List **out)
{
    for (List *v = selection.selected_vertices; v; v = v->next) {
        for (List *s = o->surfaces; s; s = s->next) {
            if (surface_contains_vertex((Surface *)s->item, (Vertex *)v->item)) list_add_item_unique(out, s->item);
        }
    }
    for (List *k = o->kids; k; k = k->next) reference_surface_search((Object *)k->item, out);
}

TEST_F(SelectionTest, SurfaceSearchMatchesThePlainReadingOnRandomModels)
{
    std::mt19937 rng(3);
    selection.select_mode = SELECT_VERTEX;
    for (int round = 0; round < 40; round++) {
        clear_selection();
        clear_world_children();
        std::vector<Object *> objects;
        for (int i = 0; i < 4; i++) {
            Object *parent = objects.empty() || rng() % 2 ? world : objects[rng() % objects.size()];
            Object *o = add_object(parent, {});
            for (int v = 0; v < 12; v++) {
                const float p[3] = {(float)v, (float)i, 0};
                object_add_new_vertex(o, p);
            }
            for (int s = 0; s < 15; s++) {
                Surface *sf = new_surface();
                for (int r = 0, n = 1 + (int)(rng() % 4); r < n; r++) {
                    surface_add_vertref(sf, new_svertex(vertex_of(o, rng() % 12), 0, 0));
                }
                object_add_surface(o, sf);
            }
            objects.push_back(o);
        }
        for (int i = 0; i < 10; i++) {
            Object *o = objects[rng() % objects.size()];
            add_to_selected_list(vertex_of(o, rng() % 12)); /* duplicates too */
        }
        List *expected = nullptr, *actual = nullptr;
        reference_surface_search(world, &expected);
        find_surfaces_with_selected_vertex(world, &actual);
        ASSERT_EQ(items<Surface>(expected), items<Surface>(actual));
        list_free(&expected);
        list_free(&actual);
    }
}

} // namespace
