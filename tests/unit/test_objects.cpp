/*
 * test_objects.cpp - the object model: what constructors make, building and
 * detaching, deletion with its upward cleanup, vertex deletion, ungroup,
 * queries, setters, reference replacement, cloning, normals, centres,
 * handles and the consistency dump.
 */
#include "test_support.h"
#include "core/lights.h"
#include "edit/selection.h"
#include "edit/transform.h"

#include <chrono>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

class Objects : public ::testing::Test {
protected:
    void SetUp() override { reset(); }
    void TearDown() override { reset(); }
    static void reset()
    {
        clear_selection();
        selection.select_mode = SELECT_TREE;
        clear_world_children();
    }
};

/* A live object is one whose handle still resolves; deletion forgets the
 * handle, so this never touches freed memory. */
bool alive(uint32_t handle) { return object_from_handle(handle) != nullptr; }

Vertex *add_point(Object *o, float x, float y, float z)
{
    float p[3] = {x, y, z};
    return object_add_new_vertex(o, p);
}

Surface *add_surface_over(Object *o, std::vector<Vertex *> vertices)
{
    Surface *s = new_surface();
    for (size_t i = 0; i < vertices.size(); i++) {
        surface_add_vertref(s, new_svertex(vertices[i], (float)i, 0.5f));
    }
    object_add_surface(o, s);
    return s;
}

Vertex *ref_vertex(Surface *s, unsigned i) { return ((SVertex *)list_get_item(s->vertrefs, i))->vertex; }

Object *child_of_world(int type)
{
    Object *o = new_object(type);
    object_add_child(world, o);
    return o;
}

} // namespace

/* What the constructors make, by what it does: a new object is empty and
 * visible and places its points where they are put (a neutral frame:
 * identity rotation, unit scale, centre at the origin); each kind of
 * object says what it is; type names and numbers convert both ways; a
 * cloned vertex is an independent copy; a new surface is an empty,
 * two-sided, flat polygon of the first material. */
TEST_F(Objects, ConstructorsMakeWhatTheyName)
{
    Object *o = child_of_world(OBJECT_NORMAL);
    EXPECT_STREQ(o->name, "");
    EXPECT_EQ(o->num_vert + o->num_surf + o->num_kids, 0u);
    EXPECT_TRUE(o->visible);
    EXPECT_FALSE(o->deleted);
    float placed[3];
    const float p[3] = {1.5f, -2.0f, 3.25f};
    point_transform_local_to_global(placed, o->rotation, o->centre, p);
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(placed[i], p[i]);
        EXPECT_EQ(o->scale[i], 1.0f);
    }

    Object *g = new_group(), *s = new_sphere(), *w = new_world(), *light = new_object(OBJECT_LIGHT);
    EXPECT_EQ(g->type, OBJECT_GROUP);
    EXPECT_EQ(s->type, OBJECT_SPHERE);
    EXPECT_EQ(s->is_sphere, 1);
    EXPECT_EQ(w->type, OBJECT_WORLD);
    EXPECT_STREQ(light->name, "light");
    for (Object *x : {g, s, w, light}) object_delete(x);

    for (int type : {OBJECT_NORMAL, OBJECT_GROUP, OBJECT_LIGHT, OBJECT_CUBE, OBJECT_SPHERE, OBJECT_WORLD})
        EXPECT_EQ(object_type_from_name(object_type_name(type)), type) << object_type_name(type);
    EXPECT_STREQ(object_type_name(0), "poly");

    Vertex *v = new_vertex_set(1, 2, 3);
    Vertex *c = vertex_clone(v);
    EXPECT_EQ(memcmp(c, v, sizeof(Vertex)), 0);
    const float q[3] = {7, 8, 9};
    vertex_set_point(c, q);
    EXPECT_EQ(c->point[0], 7.0f);
    EXPECT_EQ(v->point[0], 1.0f);
    myfree(v);
    myfree(c);

    Surface *sf = new_surface();
    EXPECT_EQ(sf->mat, 1);
    EXPECT_EQ(sf->surface_kind, SURFACE_POLYGON);
    EXPECT_EQ(sf->shading, 0);
    EXPECT_EQ(sf->twosided, 1);
    EXPECT_EQ(sf->num_vertrefs, 0u);
    surface_free(sf);
}

TEST_F(Objects, BuildingKeepsCountsAndWarnsOnNull)
{
    Object *o = child_of_world(OBJECT_NORMAL);
    Captured c = capture([&] { object_add_vertex(o, nullptr); });
    EXPECT_EQ(c.out, "warning - attempt to add null point to object\n");
    Vertex *none = (Vertex *)1;
    c = capture([&] { none = object_add_new_vertex(o, nullptr); });
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(c.out, "warning - attempt to add null point to object\n");
    c = capture([&] { object_add_surface(o, nullptr); });
    EXPECT_EQ(c.out, "warning - attempt to add null surface to object\n");
    c = capture([&] { object_add_child(o, nullptr); });
    EXPECT_EQ(c.out, "warning - attempt to add null child to object\n");
    EXPECT_EQ(o->num_vert + o->num_surf + o->num_kids, 0u);

    Vertex *a = add_point(o, 1, 2, 3);
    EXPECT_EQ(o->num_vert, 1u);
    /* Reuse: an exactly equal point gives the existing vertex. */
    float same[3] = {1, 2, 3}, near[3] = {1, 2, 3.0001f};
    EXPECT_EQ(object_add_new_vertex_reuse(o, same), a);
    EXPECT_EQ(o->num_vert, 1u);
    Vertex *b = object_add_new_vertex_reuse(o, near);
    EXPECT_NE(b, a);
    EXPECT_EQ(o->num_vert, 2u);

    List *more = nullptr;
    list_add_item(&more, new_vertex_set(5, 0, 0));
    list_add_item(&more, new_vertex_set(6, 0, 0));
    object_add_vertices(o, more);
    EXPECT_EQ(o->num_vert, 4u);
    EXPECT_EQ(list_count(o->vertices), 4u);
    list_free(&more);

    const float floats[6] = {10, 11, 12, 13, 14, 15};
    vk_object_add_vertices_from_float_array(o, floats, 2);
    EXPECT_EQ(o->num_vert, 6u);
    Vertex *last = vk_object_get_vertex_at_index(o, 5);
    EXPECT_EQ(last->point[0], 13.0f);
    EXPECT_EQ(last->point[2], 15.0f);
    EXPECT_EQ(vk_object_get_vertex_index(o, last), 5u);
    EXPECT_EQ(vk_object_get_vertex_at_index(o, 6), nullptr);

    Surface *s = add_surface_over(o, {a, b, last});
    EXPECT_EQ(o->num_surf, 1u);
    EXPECT_EQ(s->num_vertrefs, 3u);

    /* Reparenting moves the child and leaves the emptied parent alone. */
    Object *g1 = child_of_world(OBJECT_GROUP), *g2 = child_of_world(OBJECT_GROUP);
    uint32_t h1 = object_handle(g1);
    Object *k = new_object(OBJECT_NORMAL);
    object_add_child(g1, k);
    EXPECT_EQ(k->parent, g1);
    EXPECT_EQ(object_reparent(k, g2), 1);
    EXPECT_EQ(k->parent, g2);
    EXPECT_EQ(g1->num_kids, 0u);
    EXPECT_EQ(g2->num_kids, 1u);
    EXPECT_TRUE(alive(h1));
    Object *loose = new_object(OBJECT_NORMAL);
    EXPECT_EQ(object_reparent(loose, g1), 1);
    EXPECT_EQ(loose->parent, g1);
    EXPECT_EQ(world->num_kids, 3u);
}

TEST_F(Objects, RemovalCleansUpEmptyParents)
{
    /* Removing the last child of a vertexless group deletes the group. */
    Object *g = child_of_world(OBJECT_GROUP);
    Object *a = new_object(OBJECT_NORMAL);
    object_add_child(g, a);
    uint32_t hg = object_handle(g);
    object_remove_child(g, a);
    EXPECT_FALSE(alive(hg));
    EXPECT_EQ(a->parent, nullptr);
    EXPECT_EQ(world->num_kids, 0u);
    EXPECT_EQ(object_exists(a), 0);

    /* The no-cleanup variant leaves the empty group. */
    g = child_of_world(OBJECT_GROUP);
    object_add_child(g, a);
    hg = object_handle(g);
    object_remove_child_nocleanup(g, a);
    EXPECT_TRUE(alive(hg));
    EXPECT_EQ(g->num_kids, 0u);
    EXPECT_EQ(g->kids, nullptr);

    /* A group that still has vertices survives losing its last child. */
    add_point(g, 0, 0, 0);
    object_add_child(g, a);
    object_remove_child(g, a);
    EXPECT_TRUE(alive(hg));

    /* The world is never deleted; a null parent means the world. */
    object_add_child(world, a);
    object_remove_child(nullptr, a);
    EXPECT_EQ(a->parent, nullptr);
    EXPECT_EQ(world->num_kids, 1u);
    Captured c = capture([&] { object_remove_child(nullptr, a); });
    EXPECT_EQ(c.out, "object_remove_child: attempt to remove non existant child\n");
    c = capture([&] { object_remove_child(g, nullptr); });
    EXPECT_EQ(c.out, "warning - attempt to remove null child to object\n");
    c = capture([&] { object_remove_child_nocleanup(g, a); });
    EXPECT_EQ(c.out, "object_remove_child: attempt to remove non existant child\n");
    object_delete(a);

    /* Deleting a deep leaf cascades up to, never including, the world. */
    Object *outer = child_of_world(OBJECT_GROUP);
    Object *inner = new_group();
    object_add_child(outer, inner);
    Object *leaf = new_object(OBJECT_NORMAL);
    object_add_child(inner, leaf);
    uint32_t ho = object_handle(outer), hi = object_handle(inner), hl = object_handle(leaf);
    unsigned before = world->num_kids;
    object_delete(leaf);
    EXPECT_FALSE(alive(hl));
    EXPECT_FALSE(alive(hi));
    EXPECT_FALSE(alive(ho));
    EXPECT_EQ(world->num_kids, before - 1);
    EXPECT_TRUE(object_exists(world));

    /* object_free does not clean up: the emptied parent stays. */
    outer = child_of_world(OBJECT_GROUP);
    leaf = new_object(OBJECT_NORMAL);
    object_add_child(outer, leaf);
    ho = object_handle(outer);
    object_free(leaf);
    EXPECT_TRUE(alive(ho));
    EXPECT_EQ(outer->num_kids, 0u);

    /* Deleting a group deletes its children with it. */
    Object *k1 = new_object(OBJECT_NORMAL), *k2 = new_object(OBJECT_NORMAL);
    object_add_child(outer, k1);
    object_add_child(outer, k2);
    uint32_t h1 = object_handle(k1), h2 = object_handle(k2);
    object_delete(outer);
    EXPECT_FALSE(alive(ho));
    EXPECT_FALSE(alive(h1));
    EXPECT_FALSE(alive(h2));

    c = capture([] { object_delete(nullptr); });
    EXPECT_EQ(c.out, "NULL object passed to object_delete!\n");

    /* A list of objects is deleted item by item; the nodes stay. */
    List *objects = nullptr;
    list_add_item(&objects, child_of_world(OBJECT_NORMAL));
    list_add_item(&objects, child_of_world(OBJECT_NORMAL));
    unsigned n = world->num_kids;
    objectlist_delete(objects);
    EXPECT_EQ(world->num_kids, n - 2);
    list_free(&objects);
}

TEST_F(Objects, DeleteReentryReturnsAtOnce)
{
    Object *g = child_of_world(OBJECT_GROUP);
    Object *k = new_object(OBJECT_NORMAL);
    object_add_child(g, k);
    uint32_t hg = object_handle(g);
    g->deleted = 1; /* deletion already under way */
    object_delete(g);
    EXPECT_TRUE(alive(hg));
    EXPECT_EQ(g->num_kids, 1u);
    EXPECT_EQ(g->parent, world);
    g->deleted = 0;
    object_delete(g);
    EXPECT_FALSE(alive(hg));

    /* Lights leave the light list when deleted. */
    Object *light = new_light();
    object_add_child(world, light);
    register_light(light);
    EXPECT_EQ(list_index(lights_list, light), 0u);
    object_delete(light);
    EXPECT_EQ(list_index(lights_list, light), LIST_NOT_FOUND);
}

TEST_F(Objects, DeleteVertexRemovesReferencesAndEmptyObjects)
{
    Object *o = child_of_world(OBJECT_NORMAL);
    Vertex *a = add_point(o, 0, 0, 0), *b = add_point(o, 1, 0, 0), *c = add_point(o, 0, 1, 0);
    Vertex *d = add_point(o, 5, 5, 5);
    Surface *tri = add_surface_over(o, {a, b, c});
    add_surface_over(o, {a, b}); /* a line that loses both ends */
    uint32_t ho = object_handle(o);

    EXPECT_EQ(object_delete_vertex(o, b), 1);
    EXPECT_EQ(o->num_vert, 3u);
    EXPECT_EQ(tri->num_vertrefs, 2u);
    EXPECT_EQ(ref_vertex(tri, 0), a);
    EXPECT_EQ(ref_vertex(tri, 1), c);
    EXPECT_EQ(o->num_surf, 2u);
    EXPECT_EQ(object_delete_vertex(o, a), 1);
    EXPECT_EQ(o->num_surf, 1u); /* the line had no references left */
    EXPECT_EQ(list_count(o->surfaces), 1u);

    int result = 0;
    Captured cap = capture([&] { result = object_delete_vertex(o, b); });
    EXPECT_EQ(result, 1);
    EXPECT_EQ(cap.out, "object_delete_vertex vertex not found\n");

    EXPECT_EQ(object_delete_vertex(o, c), 1);
    EXPECT_EQ(o->num_surf, 0u);
    EXPECT_TRUE(alive(ho));
    /* The last vertex goes: the object goes with it. */
    EXPECT_EQ(object_delete_vertex(o, d), 0);
    EXPECT_FALSE(alive(ho));
    EXPECT_EQ(world->num_kids, 0u);

    /* An object that still has a child is kept. */
    Object *p = child_of_world(OBJECT_NORMAL);
    object_add_child(p, new_object(OBJECT_NORMAL));
    Vertex *only = add_point(p, 1, 1, 1);
    EXPECT_EQ(object_delete_vertex(p, only), 1);
    EXPECT_EQ(p->parent, world);

    /* The world never deletes itself this way. */
    Vertex *wv = add_point(world, 3, 3, 3);
    EXPECT_EQ(object_delete_vertex(world, wv), 1);
    EXPECT_EQ(world->num_vert, 0u);
}

TEST_F(Objects, DeleteSurfaceAndItsOwnPoints)
{
    Object *o = child_of_world(OBJECT_NORMAL);
    Vertex *a = add_point(o, 0, 0, 0), *b = add_point(o, 1, 0, 0), *c = add_point(o, 0, 1, 0);
    Vertex *d = add_point(o, 1, 1, 0);
    Surface *s1 = add_surface_over(o, {a, b, c});
    Surface *s2 = add_surface_over(o, {b, d, c});
    object_delete_surface_and_points(o, s1);
    /* Only a was used by no other surface. */
    EXPECT_EQ(o->num_vert, 3u);
    EXPECT_EQ(list_index(o->vertices, a), LIST_NOT_FOUND);
    EXPECT_NE(list_index(o->vertices, b), LIST_NOT_FOUND);
    EXPECT_EQ(o->num_surf, 1u);
    EXPECT_EQ(o->surfaces->item, s2);

    /* Removing only unlinks: the record is the caller's. */
    EXPECT_EQ(object_remove_surface(o, s2), 1);
    EXPECT_EQ(object_remove_surface(o, s2), 0);
    EXPECT_EQ(o->num_surf, 0u);
    surface_free(s2);
    EXPECT_EQ(object_remove_vertex(o, d), 1);
    EXPECT_EQ(object_remove_vertex(o, d), 0);
    EXPECT_EQ(o->num_vert, 2u);
    myfree(d);

    Surface *s3 = add_surface_over(o, {b, c});
    object_delete_surface(o, s3);
    EXPECT_EQ(o->num_surf, 0u);
    EXPECT_EQ(o->num_vert, 2u);
}

TEST_F(Objects, UngroupMovesChildrenToTheWorld)
{
    Object *outer = child_of_world(OBJECT_GROUP);
    Object *inner = new_group();
    Object *sibling = new_object(OBJECT_NORMAL);
    object_add_child(outer, inner);
    object_add_child(outer, sibling);
    Object *c1 = new_object(OBJECT_NORMAL), *c2 = new_object(OBJECT_NORMAL);
    object_add_child(inner, c1);
    object_add_child(inner, c2);
    uint32_t hi = object_handle(inner), ho = object_handle(outer);

    object_ungroup(inner);
    EXPECT_EQ(c1->parent, world);
    EXPECT_EQ(c2->parent, world);
    EXPECT_EQ(world->num_kids, 3u);
    EXPECT_EQ(list_index(world->kids, c1), 1u);
    EXPECT_EQ(list_index(world->kids, c2), 2u);
    EXPECT_FALSE(alive(hi)); /* the emptied group went */
    EXPECT_TRUE(alive(ho));
    EXPECT_EQ(outer->num_kids, 1u);
    EXPECT_EQ(outer->kids->item, sibling);

    /* A group with vertices keeps itself. */
    Object *g = child_of_world(OBJECT_GROUP);
    add_point(g, 0, 0, 0);
    Object *c3 = new_object(OBJECT_NORMAL);
    object_add_child(g, c3);
    uint32_t hg = object_handle(g);
    object_ungroup(g);
    EXPECT_TRUE(alive(hg));
    EXPECT_EQ(g->num_kids, 0u);
    EXPECT_EQ(c3->parent, world);
}

TEST_F(Objects, QueriesSearchTheTree)
{
    Object *g = child_of_world(OBJECT_GROUP);
    Object *o = new_object(OBJECT_NORMAL);
    object_add_child(g, o);
    Vertex *a = add_point(o, 1, 2, 3), *b = add_point(o, 4, 5, 6);
    Vertex *c = add_point(o, 1, 2, 3); /* same position as a */
    Surface *s1 = add_surface_over(o, {a, b});
    Surface *s2 = add_surface_over(o, {b, a, b});
    add_surface_over(o, {c});

    EXPECT_EQ(object_of_vertex(world, b), o);
    EXPECT_EQ(object_of_surface(world, s2), o);
    Vertex stranger{};
    EXPECT_EQ(object_of_vertex(world, &stranger), nullptr);
    EXPECT_EQ(object_of_surface(g, (Surface *)&stranger), nullptr);

    List *with_b = surfaces_of_object_vertex(o, b);
    ASSERT_EQ(list_count(with_b), 2u); /* each surface once */
    EXPECT_EQ(with_b->item, s1);
    EXPECT_EQ(with_b->next->item, s2);
    list_free(&with_b);
    EXPECT_TRUE(surface_contains_vertex(s1, a));
    EXPECT_FALSE(surface_contains_vertex(s1, c));

    EXPECT_EQ(object_top_ancestor(o), g);
    EXPECT_EQ(object_top_ancestor(g), g);
    EXPECT_EQ(object_top_ancestor(nullptr), nullptr);
    EXPECT_EQ(object_parent(o), g);

    EXPECT_EQ(object_exists(o), 1);
    EXPECT_EQ(object_exists(world), 1);
    Object *loose = new_object(OBJECT_NORMAL);
    EXPECT_EQ(object_exists(loose), 0);
    EXPECT_EQ(object_exists(nullptr), 0);
    object_delete(loose);

    float p[3] = {1, 2, 3}, q[3] = {4, 5, 6}, r[3] = {7, 7, 7};
    EXPECT_EQ(object_point_index(o, p), 0); /* the first of two */
    EXPECT_EQ(object_point_index(o, q), 1);
    EXPECT_EQ(object_point_index(o, r), -1);
    EXPECT_EQ(object_find_vertex_point(o, p), a);
    EXPECT_EQ(object_find_vertex_point(o, r), nullptr);

    EXPECT_EQ(vk_object_get_num_vertices(o), 3u);
    EXPECT_EQ(vk_object_get_num_surfaces(o), 3u);
    EXPECT_EQ(vk_object_get_num_children(g), 1u);
    EXPECT_EQ(vk_object_get_childrenlist(g)->item, o);
    EXPECT_EQ(vk_object_get_vertexlist(o)->item, a);
    EXPECT_EQ(vk_object_get_type(g), OBJECT_GROUP);
    EXPECT_EQ(vk_get_world(), world);
}

TEST_F(Objects, SettersAndCopyData)
{
    Object *o = child_of_world(OBJECT_CUBE);
    object_set_name(o, "box");
    object_set_url(o, "http://x");
    object_set_userdata(o, "some data");
    EXPECT_STREQ(o->name, "box");
    EXPECT_STREQ(vk_object_get_url(o), "http://x");
    EXPECT_STREQ(vk_object_get_data(o), "some data");
    object_set_url(o, nullptr);
    EXPECT_EQ(o->url, nullptr);
    object_set_url(o, "u2");
    char name[] = "renamed";
    object_set_name(o, name);
    name[0] = 'X'; /* a private copy was stored */
    EXPECT_STREQ(o->name, "renamed");

    o->user_value = 42;
    o->texture = 3;
    object_set_texture_repeat(o, 2.5f, 3.5f);
    o->centre[1] = 9;
    o->rotation[4] = -1;
    o->visible = 0;
    o->scale[0] = 4;

    Object *t = new_object(OBJECT_NORMAL);
    object_copy_data(o, t);
    EXPECT_STREQ(t->name, "renamed");
    EXPECT_NE(t->name, o->name);
    EXPECT_STREQ(t->data, "some data");
    EXPECT_NE(t->data, o->data);
    EXPECT_STREQ(t->url, "u2");
    EXPECT_EQ(t->user_value, 42);
    EXPECT_EQ(t->texture, 3);
    EXPECT_EQ(vk_object_get_texture_repeat_x(t), 2.5f);
    EXPECT_EQ(vk_object_get_texture_repeat_y(t), 3.5f);
    EXPECT_EQ(vk_object_get_centre(t)[1], 9.0f);
    EXPECT_EQ(t->rotation[4], -1.0f);
    EXPECT_EQ(t->type, OBJECT_CUBE);
    EXPECT_EQ(t->visible, 1); /* not copied */
    EXPECT_EQ(t->scale[0], 1.0f);
    EXPECT_EQ(t->parent, nullptr);
    object_delete(t);

    /* Recursive setters count every surface below the object. */
    Object *g = child_of_world(OBJECT_GROUP);
    Object *k1 = new_object(OBJECT_NORMAL), *k2 = new_object(OBJECT_NORMAL);
    object_add_child(g, k1);
    object_add_child(k1, k2);
    Vertex *a = add_point(k1, 0, 0, 0), *b = add_point(k1, 1, 0, 0), *c = add_point(k1, 0, 1, 0);
    Surface *s1 = add_surface_over(k1, {a, b, c});
    Surface *s2 = add_surface_over(k1, {c, b});
    Vertex *d = add_point(k2, 0, 0, 1);
    Surface *s3 = add_surface_over(k2, {d});
    EXPECT_EQ(object_set_col_index(g, 7), 3);
    EXPECT_EQ(s1->mat, 7);
    EXPECT_EQ(s3->mat, 7);
    EXPECT_EQ(object_set_surface_type(k1, SURFACE_LINE), 3);
    EXPECT_EQ(s2->surface_kind, SURFACE_LINE);
    EXPECT_EQ(s3->surface_kind, SURFACE_LINE);
    EXPECT_EQ(object_set_surface_shading(k2, 1), 1);
    EXPECT_EQ(s3->shading, 1);
    EXPECT_EQ(s1->shading, 0);
    EXPECT_EQ(object_set_twosided_faces(g, 0), 3);
    EXPECT_EQ(s1->twosided, 0);
    EXPECT_EQ(object_set_col_index(o, 2), 0);

    object_reverse_normals(g);
    EXPECT_EQ(ref_vertex(s1, 0), c);
    EXPECT_EQ(ref_vertex(s1, 2), a);
    EXPECT_EQ(((SVertex *)s1->vertrefs->item)->u, 2.0f); /* texture coordinates travel */
    EXPECT_EQ(s1->num_vertrefs, 3u);

    objects_are_hidden = 0;
    object_set_visible(g, 0);
    EXPECT_EQ(g->visible, 0);
    EXPECT_EQ(k2->visible, 0);
    EXPECT_EQ(objects_are_hidden, 1);
    object_show(g);
    EXPECT_EQ(k1->visible, 1);
    EXPECT_EQ(k2->visible, 1);
    objects_are_hidden = 0;
}

TEST_F(Objects, ReplaceSurfaceRef)
{
    Object *o = child_of_world(OBJECT_NORMAL);
    Vertex *oldv = add_point(o, 0, 0, 0), *newv = add_point(o, 1, 0, 0), *x = add_point(o, 0, 1, 0);
    Surface *s = new_surface();
    surface_add_vertref(s, new_svertex(x, 0.1f, 0.2f));
    surface_add_vertref(s, new_svertex(oldv, 0.3f, 0.4f));
    surface_add_vertref(s, new_svertex(newv, 0.5f, 0.6f));
    surface_add_vertref(s, new_svertex(oldv, 0.7f, 0.8f));
    object_add_surface(o, s);
    Surface *other = add_surface_over(o, {oldv, x});

    Captured c = capture([&] { object_replace_surfaceref(o, oldv, newv); });
    EXPECT_EQ(c.out, "duplicate surface ref deleted\n");
    ASSERT_EQ(s->num_vertrefs, 3u);
    ASSERT_EQ(list_count(s->vertrefs), 3u);
    EXPECT_EQ(ref_vertex(s, 0), x);
    EXPECT_EQ(ref_vertex(s, 1), newv); /* where the old one stood first */
    EXPECT_EQ(((SVertex *)list_get_item(s->vertrefs, 1))->u, 0.3f);
    EXPECT_EQ(ref_vertex(s, 2), newv);
    EXPECT_EQ(ref_vertex(other, 0), newv);
    EXPECT_EQ(other->num_vertrefs, 2u);
}

TEST_F(Objects, CloneCollapsesCoincidentVertices)
{
    Object *o = child_of_world(OBJECT_NORMAL);
    object_set_name(o, "orig");
    o->user_value = 5;
    Vertex *a = add_point(o, 0, 0, 0), *b = add_point(o, 1, 0, 0);
    Vertex *a2 = add_point(o, 0, 0, 0); /* coincident with a */
    a2->normal[0] = 0.5f;
    Surface *s = add_surface_over(o, {a2, b, a});
    s->mat = 4;
    s->surface_kind = SURFACE_CLOSED_LINE;
    s->shading = 1;
    s->twosided = 0;
    s->normal[2] = 1;
    Object *kid = new_object(OBJECT_SPHERE);
    object_add_child(o, kid);
    add_point(kid, 3, 3, 3);

    Object *copy = object_clone(o);
    EXPECT_EQ(copy->parent, nullptr);
    EXPECT_STREQ(copy->name, "orig");
    EXPECT_EQ(copy->user_value, 5);
    EXPECT_EQ(copy->num_vert, 3u);
    ASSERT_EQ(list_count(copy->vertices), 3u);
    Vertex *ca = (Vertex *)list_get_item(copy->vertices, 0);
    Vertex *ca2 = (Vertex *)list_get_item(copy->vertices, 2);
    EXPECT_NE(ca, a);
    EXPECT_EQ(memcmp(ca2, a2, sizeof(Vertex)), 0); /* byte-for-byte copies */
    ASSERT_EQ(copy->num_surf, 1u);
    Surface *cs = (Surface *)copy->surfaces->item;
    EXPECT_EQ(cs->mat, 4);
    EXPECT_EQ(cs->surface_kind, SURFACE_CLOSED_LINE);
    EXPECT_EQ(cs->shading, 1);
    EXPECT_EQ(cs->twosided, 0);
    EXPECT_EQ(cs->normal[2], 1.0f);
    ASSERT_EQ(cs->num_vertrefs, 3u);
    /* Both coincident references point at the first vertex there. */
    EXPECT_EQ(ref_vertex(cs, 0), ca);
    EXPECT_EQ(ref_vertex(cs, 2), ca);
    EXPECT_EQ(((SVertex *)cs->vertrefs->item)->u, 0.0f);
    EXPECT_EQ(((SVertex *)list_get_item(cs->vertrefs, 2))->u, 2.0f);
    ASSERT_EQ(copy->num_kids, 1u);
    Object *ck = (Object *)copy->kids->item;
    EXPECT_EQ(ck->parent, copy);
    EXPECT_EQ(ck->type, OBJECT_SPHERE);
    EXPECT_EQ(ck->num_vert, 1u);
    EXPECT_NE(ck, kid);
    object_add_child(world, copy);

    /* A reference whose position is not in the new object is dropped. */
    Object *empty = new_object(OBJECT_NORMAL);
    add_point(empty, 1, 0, 0);
    Surface *partial = surface_clone_into(s, empty);
    EXPECT_EQ(partial->num_vertrefs, 1u);
    EXPECT_EQ(list_count(partial->vertrefs), 1u);
    surface_free(partial);
    object_delete(empty);
}

TEST_F(Objects, VertexNormalsKeepTheIntegerTruncation)
{
    Object *o = child_of_world(OBJECT_NORMAL);
    Vertex *shared = add_point(o, 0, 0, 0);
    Vertex *only_x = add_point(o, 0, 1, 0);
    Vertex *only_y = add_point(o, 1, 0, 0);
    Vertex *lonely = add_point(o, 9, 9, 9);
    Surface *fx = add_surface_over(o, {shared, only_x});
    Surface *fy = add_surface_over(o, {shared, only_y, shared}); /* counted once */
    const float nx[3] = {1, 0, 0}, ny[3] = {0, 1, 0};
    vk_surface_set_normal(fx, nx);
    vk_surface_set_normal(fy, ny);
    object_calc_vertex_normals(o);
    /* Two perpendicular faces: the plain average, not renormalised. */
    EXPECT_FLOAT_EQ(shared->normal[0], 0.5f);
    EXPECT_FLOAT_EQ(shared->normal[1], 0.5f);
    EXPECT_FLOAT_EQ(shared->normal[2], 0.0f);
    float len = std::sqrt(shared->normal[0] * shared->normal[0] + shared->normal[1] * shared->normal[1]);
    EXPECT_NEAR(len, 0.7071f, 1e-4);
    /* One face: that face's normal. */
    EXPECT_EQ(only_x->normal[0], 1.0f);
    EXPECT_EQ(only_x->normal[1], 0.0f);
    EXPECT_EQ(only_y->normal[1], 1.0f);
    /* No face: zero. */
    for (int i = 0; i < 3; i++) EXPECT_EQ(lonely->normal[i], 0.0f);

    /* A long face normal is scaled by the root of its truncated squared
     * length: (0, 0, 3) has 9, root 3; (0, 0, 1.9) has 3.61 -> 3 -> 1.732. */
    const float n3[3] = {0, 0, 3};
    vk_surface_set_normal(fy, n3);
    object_calc_vertex_normals(o);
    EXPECT_FLOAT_EQ(only_y->normal[2], 1.0f);
    const float n19[3] = {0, 0, 1.9f};
    vk_surface_set_normal(fy, n19);
    object_calc_vertex_normals(o);
    EXPECT_NEAR(only_y->normal[2], 1.9 / std::sqrt(3.0), 1e-6);

    /* Children are processed too. */
    Object *k = new_object(OBJECT_NORMAL);
    object_add_child(o, k);
    Vertex *kv = add_point(k, 0, 0, 0);
    Surface *ks = add_surface_over(k, {kv});
    const float nz[3] = {0, 0, -1};
    vk_surface_set_normal(ks, nz);
    object_calc_vertex_normals(o);
    EXPECT_EQ(kv->normal[2], -1.0f);

    /* Forced recalculation: a flat square gets a unit normal everywhere. */
    Object *sq = child_of_world(OBJECT_NORMAL);
    Vertex *p0 = add_point(sq, 0, 0, 0), *p1 = add_point(sq, 1, 0, 0);
    Vertex *p2 = add_point(sq, 1, 1, 0), *p3 = add_point(sq, 0, 1, 0);
    Surface *face = add_surface_over(sq, {p0, p1, p2, p3});
    object_calc_normals_force(sq);
    EXPECT_EQ(face->normal[0], 0.0f);
    EXPECT_EQ(face->normal[1], 0.0f);
    EXPECT_EQ(std::fabs(face->normal[2]), 1.0f);
    for (Vertex *v : {p0, p1, p2, p3}) EXPECT_EQ(v->normal[2], face->normal[2]);
}

TEST_F(Objects, Centres)
{
    Object *o = child_of_world(OBJECT_NORMAL);
    add_point(o, -1, 2, 4);
    add_point(o, 3, 6, 8);
    add_point(o, 0, 3, 5);
    object_calculate_centre(o);
    EXPECT_EQ(o->centre[0], 1.0f);
    EXPECT_EQ(o->centre[1], 4.0f);
    EXPECT_EQ(o->centre[2], 6.0f);

    /* Without vertices: the mean of the children's centres. */
    Object *g = child_of_world(OBJECT_GROUP);
    Object *k1 = new_object(OBJECT_NORMAL), *k2 = new_object(OBJECT_NORMAL);
    object_add_child(g, k1);
    object_add_child(g, k2);
    k1->centre[0] = 2;
    k2->centre[0] = 6;
    k2->centre[2] = -4;
    object_calculate_centre(g);
    EXPECT_EQ(g->centre[0], 4.0f);
    EXPECT_EQ(g->centre[2], -2.0f);

    /* Only poly and group objects; an empty object keeps its centre. */
    Object *cube = child_of_world(OBJECT_CUBE);
    add_point(cube, 10, 10, 10);
    object_calculate_centre(cube);
    EXPECT_EQ(cube->centre[0], 0.0f);
    Object *bare = child_of_world(OBJECT_NORMAL);
    bare->centre[1] = 7;
    object_calculate_centre(bare);
    EXPECT_EQ(bare->centre[1], 7.0f);

    /* Recursive: children first; an object with children ignores its own
     * vertices; the world is left alone. */
    add_point(k1, 0, 0, 0);
    add_point(k1, 2, 2, 2);
    add_point(k2, 10, 0, 0);
    add_point(g, 100, 100, 100);
    g->centre[1] = 55;
    object_calculate_centre_recurse(g);
    EXPECT_EQ(k1->centre[0], 1.0f);
    EXPECT_EQ(k2->centre[0], 10.0f);
    EXPECT_EQ(g->centre[0], 5.5f);
    EXPECT_EQ(g->centre[1], 0.5f);
    /* The non-recursive form uses the vertices when there are any. */
    object_calculate_centre(g);
    EXPECT_EQ(g->centre[0], 100.0f);

    object_calculate_centre_recurse(cube);
    EXPECT_EQ(cube->centre[0], 10.0f);
    object_calculate_centre_recurse(bare);
    EXPECT_EQ(bare->centre[1], 0.0f);

    world->centre[0] = 3;
    object_calculate_centre_recurse(world);
    EXPECT_EQ(world->centre[0], 3.0f);
    world->centre[0] = 0;
}

TEST_F(Objects, HandlesAreStableAndForgotten)
{
    Object *a = child_of_world(OBJECT_NORMAL), *b = child_of_world(OBJECT_NORMAL);
    uint32_t ha = object_handle(a), hb = object_handle(b);
    EXPECT_NE(ha, 0u);
    EXPECT_NE(ha, hb);
    EXPECT_EQ(object_handle(a), ha);
    EXPECT_EQ(object_from_handle(ha), a);
    EXPECT_EQ(object_from_handle(hb), b);
    EXPECT_EQ(object_handle(nullptr), 0u);
    EXPECT_EQ(object_from_handle(0), nullptr);
    EXPECT_EQ(object_from_handle(0xFFFFFFF0u), nullptr);
    object_delete(a);
    EXPECT_EQ(object_from_handle(ha), nullptr);
    EXPECT_EQ(object_from_handle(hb), b);
    /* A new object never takes a stale handle. */
    Object *c = child_of_world(OBJECT_NORMAL);
    EXPECT_NE(object_handle(c), ha);
    EXPECT_EQ(object_from_handle(ha), nullptr);
    /* A clone gets its own handle. */
    Object *d = object_clone(b);
    object_add_child(world, d);
    EXPECT_NE(object_handle(d), hb);
}

TEST_F(Objects, ConsistencyDump)
{
    Object *g = child_of_world(OBJECT_GROUP);
    object_set_name(g, "grp");
    Object *k = new_object(OBJECT_NORMAL);
    object_set_name(k, "leaf");
    object_add_child(g, k);
    Vertex *a = add_point(k, 0, 0, 0), *b = add_point(k, 1, 0, 0);
    add_surface_over(k, {a, b});
    Object *other = child_of_world(OBJECT_NORMAL);
    add_point(other, 5, 5, 5);

    selection.select_mode = SELECT_TREE;
    select_object(k); /* tree mode selects the top ancestor */
    ASSERT_EQ(selection.num_selected_objects, 1);

    Captured c = capture([] { list_objects(); });
    char line[512];
    std::string expected = "\nObject hierarchy:\n";
    snprintf(line, sizeof line, "Object \"WORLD\", 0x%lX, v 0, s 0, kids 2, parent 0x0 \n",
             (unsigned long)(uintptr_t)world);
    expected += line;
    snprintf(line, sizeof line, "    Object \"grp\", 0x%lX, v 0, s 0, kids 1, parent 0x%lX *\n",
             (unsigned long)(uintptr_t)g, (unsigned long)(uintptr_t)world);
    expected += line;
    snprintf(line, sizeof line, "        Object \"leaf\", 0x%lX, v 2, s 1, kids 0, parent 0x%lX \n",
             (unsigned long)(uintptr_t)k, (unsigned long)(uintptr_t)g);
    expected += line;
    snprintf(line, sizeof line, "    Object \"\", 0x%lX, v 1, s 0, kids 0, parent 0x%lX \n",
             (unsigned long)(uintptr_t)other, (unsigned long)(uintptr_t)world);
    expected += line;
    expected += "\nObjects: 4   Surfaces: 1   Vertices: 3\n";
    EXPECT_EQ(c.out, expected);

    /* Counts that disagree with their lists are reported. */
    k->num_vert++;
    k->num_surf--;
    g->num_kids = 3;
    c = capture([] { list_objects(); });
    EXPECT_TRUE(contains(c.out, "**** warning - numvert count is different to number of actual "
                                "vertices - tell Orlo!\n"));
    EXPECT_TRUE(contains(c.out, "**** warning - numsurface count is different to number of actual "
                                "surfaces - tell Orlo!\n"));
    EXPECT_TRUE(contains(c.out, "**** warning - numchildren count is different to number of actual "
                                "children - tell Orlo!\n"));
    EXPECT_TRUE(contains(c.out, "kids 3,")); /* the stored child count is shown */
    EXPECT_TRUE(contains(c.out, "\nObjects: 4   Surfaces: 1   Vertices: 3\n"));
    k->num_vert--;
    k->num_surf++;
    g->num_kids = 1;

    /* With the debug switch each surface is listed and checked too. */
    Surface *s = (Surface *)k->surfaces->item;
    s->num_vertrefs = 5;
    int saved = debug_flag;
    debug_flag = 1;
    c = capture([] { list_objects(); });
    debug_flag = saved;
    s->num_vertrefs = 2;
    EXPECT_TRUE(contains(c.out, "surface 0 has 2 vertex refs\n"));
    EXPECT_TRUE(contains(c.out, "**** warning - surface numvert count is different to number of "
                                "actual vert - tell Orlo!\n"));
    EXPECT_FALSE(contains(c.out, "numvert count is different to number of actual vertices"));
}

TEST_F(Objects, CloneOfALargeObjectScales)
{
    /* A strip of 200000 vertices and about as many triangles, with one
     * pair of coincident vertices: the clone must map every reference by
     * position without a list walk per reference. */
    const unsigned n = 200000;
    Object *o = child_of_world(OBJECT_NORMAL);
    std::vector<float> points(3 * (size_t)n);
    for (unsigned i = 0; i < n; i++) {
        points[3 * i] = (float)(i / 2);
        points[3 * i + 1] = (float)(i % 2);
        points[3 * i + 2] = 0.0f;
    }
    points[3 * 10] = points[0], points[3 * 10 + 1] = points[1]; /* vertex 10 sits on vertex 0 */
    points[3 * 21] = 0.0f, points[3 * 21 + 1] = 1.0f, points[3 * 21 + 2] = -0.0f; /* and 21 on 1 */
    vk_object_add_vertices_from_float_array(o, points.data(), n);
    std::vector<Vertex *> v;
    for (List *l = o->vertices; l; l = l->next) v.push_back((Vertex *)l->item);
    List *last = nullptr;
    for (unsigned i = 0; i + 2 < n; i++) {
        Surface *s = new_surface();
        List *ref_last = nullptr;
        for (unsigned k = 0; k < 3; k++) ref_last = list_add_item_fast(&s->vertrefs, ref_last, new_svertex(v[i + k], (float)k, 0));
        s->num_vertrefs = 3;
        last = list_add_item_fast(&o->surfaces, last, s);
        o->num_surf++;
    }
    /* A reference to a vertex whose position is not a number never
     * matches, as exact comparison goes. */
    v[5]->point[2] = NAN;

    auto start = std::chrono::steady_clock::now();
    Object *copy = object_clone(o);
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_LT(seconds, 20.0);
    object_add_child(world, copy);

    ASSERT_EQ(copy->num_surf, n - 2);
    std::vector<Vertex *> cv;
    for (List *l = copy->vertices; l; l = l->next) cv.push_back((Vertex *)l->item);
    ASSERT_EQ(cv.size(), (size_t)n);
    std::vector<Surface *> cs;
    for (List *l = copy->surfaces; l; l = l->next) cs.push_back((Surface *)l->item);
    EXPECT_EQ(ref_vertex(cs[0], 0), cv[0]);
    EXPECT_EQ(ref_vertex(cs[1000], 2), cv[1002]);
    EXPECT_EQ(ref_vertex(cs[10], 0), cv[0]);  /* the coincident vertex collapses onto the first */
    EXPECT_EQ(ref_vertex(cs[8], 2), cv[0]);
    EXPECT_EQ(cs[3]->num_vertrefs, 2u);       /* the NaN reference is dropped */
    EXPECT_EQ(list_count(cs[3]->vertrefs), 2u);
    EXPECT_EQ(ref_vertex(cs[3], 0), cv[3]);
    EXPECT_EQ(ref_vertex(cs[3], 1), cv[4]);
    EXPECT_EQ(ref_vertex(cs[20], 1), cv[1]); /* -0 equals 0 */
    EXPECT_EQ(ref_vertex(cs[n - 3], 2), cv[n - 1]);
    EXPECT_EQ(((SVertex *)list_get_item(cs[n - 3]->vertrefs, 2))->u, 2.0f);
}
