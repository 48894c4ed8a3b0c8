/*
 * test_edit_batch.cpp - the batched removals of the surface operations
 * and the vertex maps of extrusion give what the plain one-at-a-time
 * forms give: random drops (in list order, shuffled, repeated, of items
 * the object does not hold) leave the lists and counts a plain removal
 * leaves, and surfaces copied or linked onto parallel vertex lists (with
 * repeated vertices, vertices from elsewhere and stale scratch marks)
 * reference what a search of the list finds.
 */
#include "edit_test_support.h"
#include "edit/extrude.h"
#include "edit/primitive_append.h"
#include "edit/surface_ops.h"
#include "edit/surface_ops_batch.h"

#include <algorithm>
#include <random>
#include <set>

namespace {

class EditBatch : public EditTest {};

/* An object of n vertices and n triangles over them, in world. */
Object *object_of(int n)
{
    Object *o = new_object(OBJECT_NORMAL);
    object_add_child(world, o);
    ObjectAppender append;
    appender_start(&append, o);
    std::vector<Vertex *> v;
    for (int i = 0; i < n; i++) v.push_back(appender_new_vertex(&append, (float)i, 0.0f, 0.0f));
    for (int i = 0; i < n; i++) {
        Surface *s = new_surface();
        surface_add_tri_refs(s, v[i], v[(i + 1) % n], v[(i + 2) % n]);
        appender_add_surface(&append, s);
    }
    return o;
}

std::vector<void *> items_of(List *l)
{
    std::vector<void *> items;
    for (; l; l = l->next) items.push_back(l->item);
    return items;
}

/* The list after removing the first node of each distinct dropped item
 * that it holds, as one removal at a time would leave it. */
std::vector<void *> plainly_removed(std::vector<void *> items, const std::vector<void *> &dropped)
{
    std::set<void *> gone;
    for (void *d : dropped) {
        if (!gone.insert(d).second) continue;
        auto at = std::find(items.begin(), items.end(), d);
        if (at != items.end()) items.erase(at);
    }
    return items;
}

TEST_F(EditBatch, DropsInAnyOrderLeaveWhatPlainRemovalLeaves)
{
    std::mt19937 random(20261124);
    for (int round = 0; round < 200; round++) {
        int n = 1 + (int)(random() % 60);
        Object *o = object_of(n);
        std::vector<void *> surfaces = items_of(o->surfaces), vertices = items_of(o->vertices);
        /* A random subset, in list order or shuffled, sometimes with an
         * item dropped twice. */
        std::vector<void *> drop_s, drop_v;
        for (void *s : surfaces) {
            if (random() % 3 == 0) drop_s.push_back(s);
        }
        for (void *v : vertices) {
            if (random() % 4 == 0) drop_v.push_back(v);
        }
        int kind = round % 4;
        if (kind == 1) std::shuffle(drop_s.begin(), drop_s.end(), random);
        if (kind == 2 && !drop_s.empty()) drop_s.push_back(drop_s[random() % drop_s.size()]);
        if (kind == 3 && drop_v.size() > 1) std::swap(drop_v.front(), drop_v.back());
        std::vector<void *> want_s = plainly_removed(surfaces, drop_s), want_v = plainly_removed(vertices, drop_v);
        /* Vertices are dropped only when no surface that stays uses them;
         * here the test frees them all the same and never reads them. */
        {
            SurfaceEdits edits;
            ObjectEdit *e = edits_for(&edits, o);
            for (void *s : drop_s) edit_drop_surface(e, (Surface *)s);
            for (void *v : drop_v) edit_drop_vertex(e, (Vertex *)v);
            edits_finish(&edits);
        }
        ASSERT_EQ(items_of(o->surfaces), want_s) << "round " << round;
        ASSERT_EQ(items_of(o->vertices), want_v) << "round " << round;
        ASSERT_EQ(o->num_surf, want_s.size());
        ASSERT_EQ(o->num_vert, want_v.size());
        /* The surviving surfaces may name freed vertices: drop them
         * without reading them. */
        for (Surface *s : object_surfaces(o)) {
            for (List *r = s->vertrefs; r; r = r->next) ((SVertex *)r->item)->vertex = nullptr;
        }
        clear_world_children();
    }
}

TEST_F(EditBatch, AppendsAfterDropsKeepTheirOrder)
{
    Object *o = object_of(5);
    std::vector<void *> before = items_of(o->surfaces);
    SurfaceEdits edits;
    ObjectEdit *e = edits_for(&edits, o);
    Surface *added = new_surface();
    surface_add_tri_refs(added, (Vertex *)o->vertices->item, (Vertex *)o->vertices->next->item,
                         (Vertex *)o->vertices->next->next->item);
    edit_drop_surface(e, (Surface *)before[4]);
    appender_add_surface(&e->append, added);
    edit_drop_surface(e, (Surface *)before[1]);
    edits_finish(&edits);
    std::vector<void *> want = {before[0], before[2], before[3], added};
    EXPECT_EQ(items_of(o->surfaces), want);
    EXPECT_EQ(o->num_surf, 4u);
}

/* The vertex of `to` at the first position of v in `from`, found by
 * walking the list, or null. */
Vertex *searched_target(List *from, List *to, Vertex *v)
{
    for (; from && to; from = from->next, to = to->next) {
        if (from->item == v) return (Vertex *)to->item;
    }
    return nullptr;
}

List *list_of(const std::vector<Vertex *> &vertices)
{
    List *l = nullptr, *tail = nullptr;
    for (Vertex *v : vertices) tail = list_add_item_fast(&l, tail, v);
    return l;
}

void free_surfaces(List *surfaces)
{
    for (List *l = surfaces; l; l = l->next) surface_free((Surface *)l->item);
    list_free(&surfaces);
}

TEST_F(EditBatch, CopiedSurfacesReferenceWhatASearchFinds)
{
    std::mt19937 random(7);
    for (int round = 0; round < 100; round++) {
        int n = 2 + (int)(random() % 40);
        Object *o = object_of(n);
        std::vector<Vertex *> own;
        for (List *l = o->vertices; l; l = l->next) own.push_back((Vertex *)l->item);
        /* `from` repeats some vertices and leaves some out; the strangers
         * carry marks that point into it. */
        std::vector<Vertex *> from;
        for (Vertex *v : own) {
            if (random() % 5) from.push_back(v);
            if (random() % 7 == 0) from.push_back(own[random() % own.size()]);
        }
        for (Vertex *v : own) v->mark = (uint32_t)(random() % (from.size() + 2));
        std::vector<Vertex *> to;
        for (size_t i = 0; i < from.size(); i++) to.push_back(new_vertex_set((float)i, 1.0f, 0.0f));
        List *from_list = list_of(from), *to_list = list_of(to);

        List *copies = copy_surfacelist(o->surfaces, from_list, to_list);
        List *c = copies;
        for (List *s = o->surfaces; s; s = s->next, c = c->next) {
            ASSERT_TRUE(c);
            std::vector<Vertex *> want, got;
            for (List *r = ((Surface *)s->item)->vertrefs; r; r = r->next) {
                Vertex *t = searched_target(from_list, to_list, ((SVertex *)r->item)->vertex);
                if (t) want.push_back(t);
            }
            for (List *r = ((Surface *)c->item)->vertrefs; r; r = r->next) got.push_back(((SVertex *)r->item)->vertex);
            ASSERT_EQ(got, want) << "round " << round;
        }
        List *links = create_link_surfaces(o->surfaces, from_list, to_list);
        size_t want_links = 0;
        for (List *s = o->surfaces; s; s = s->next) {
            Surface *sf = (Surface *)s->item;
            for (List *r = sf->vertrefs; r; r = r->next) {
                Vertex *a = ((SVertex *)r->item)->vertex;
                Vertex *b = ((SVertex *)(r->next ? r->next : sf->vertrefs)->item)->vertex;
                if (searched_target(from_list, to_list, a) && searched_target(from_list, to_list, b)) want_links++;
            }
        }
        EXPECT_EQ((size_t)list_count(links), want_links) << "round " << round;
        free_surfaces(copies);
        free_surfaces(links);
        for (Vertex *v : to) myfree(v);
        list_free(&from_list);
        list_free(&to_list);
        clear_world_children();
    }
}

} // namespace
