/*
 * modelling_test_support.h - what the modelling tests share: a fixture
 * that empties the model, the selection and the undo history around each
 * test and puts back the settings the modelling operations read, small
 * models, and checks of positions, counts and facing.
 */
#ifndef VESK_TESTS_MODELLING_TEST_SUPPORT_H
#define VESK_TESTS_MODELLING_TEST_SUPPORT_H

#include "test_support.h"
#include "app/shared_state.h"
#include "edit/selection.h"
#include "edit/undo.h"

#include <array>
#include <cmath>
#include <initializer_list>
#include <string>
#include <unordered_set>
#include <vector>

class ModellingTest : public ::testing::Test {
protected:
    Prefs saved{};
    std::string saved_fontpath;

    void SetUp() override
    {
        saved = prefs;
        saved_fontpath = prefs.fontpath ? prefs.fontpath : "";
        reset();
    }
    void TearDown() override
    {
        reset();
        restore_settings();
    }
    void restore_settings()
    {
        prefs.rot_segments = saved.rot_segments;
        prefs.sphere_from_triangles = saved.sphere_from_triangles;
        prefs.extrude_segments = saved.extrude_segments;
        prefs.mesh_x = saved.mesh_x;
        prefs.mesh_y = saved.mesh_y;
        prefs.mesh_from_triangles = saved.mesh_from_triangles;
        prefs.hole_percent = saved.hole_percent;
        prefs.undo_levels = saved.undo_levels;
        prefs.spike_factor = saved.spike_factor;
        prefs.revolve_degs = saved.revolve_degs;
        prefs.bevel_size = saved.bevel_size;
        prefs.font_char_offset = saved.font_char_offset;
        prefs.spline_steps = saved.spline_steps;
        prefs.recalc_normals = saved.recalc_normals;
        prefs.convexhull_precision = saved.convexhull_precision;
        prefs.cylinder_has_ends = saved.cylinder_has_ends;
        if (saved_fontpath != (prefs.fontpath ? prefs.fontpath : "")) {
            prefs_set_string(&prefs.fontpath, saved_fontpath.c_str());
        }
    }
    static void reset()
    {
        clear_all_undos();
        clear_selection();
        clear_world_children();
        selection.select_mode = SELECT_TREE;
    }
};

typedef std::array<float, 3> P3f;

template <typename T> static inline std::vector<T *> items_of(List *head)
{
    std::vector<T *> out;
    for (; head; head = head->next) out.push_back((T *)head->item);
    return out;
}

static inline std::vector<Vertex *> vertices_of(Object *o) { return items_of<Vertex>(o->vertices); }
static inline std::vector<Surface *> surfaces_of(Object *o) { return items_of<Surface>(o->surfaces); }
static inline std::vector<SVertex *> refs_of(Surface *s) { return items_of<SVertex>(s->vertrefs); }
static inline std::vector<Object *> kids_of(Object *o) { return items_of<Object>(o->kids); }

/* Position of the vertex in the object's list, or -1. */
static inline int index_in(Object *o, Vertex *v)
{
    unsigned i = list_index(o->vertices, v);
    return i == LIST_NOT_FOUND ? -1 : (int)i;
}

/* The vertex indices a surface references. */
static inline std::vector<int> ref_indices(Object *o, Surface *s)
{
    std::vector<int> out;
    for (SVertex *r : refs_of(s)) out.push_back(index_in(o, r->vertex));
    return out;
}

#define EXPECT_POINT(p, x, y, z)                                                                                   \
    do {                                                                                                           \
        const float *pp_ = (p);                                                                                    \
        EXPECT_NEAR(pp_[0], (x), 1e-5);                                                                            \
        EXPECT_NEAR(pp_[1], (y), 1e-5);                                                                            \
        EXPECT_NEAR(pp_[2], (z), 1e-5);                                                                            \
    } while (0)

#define EXPECT_UV(ref, u_, v_)                                                                                     \
    do {                                                                                                           \
        EXPECT_NEAR((ref)->u, (u_), 1e-5);                                                                         \
        EXPECT_NEAR((ref)->v, (v_), 1e-5);                                                                         \
    } while (0)

/* Counts kept beside every list, and every reference naming a vertex of
 * its own object; recursively. */
static inline void expect_consistent(Object *o)
{
    EXPECT_EQ(o->num_vert, list_count(o->vertices));
    EXPECT_EQ(o->num_surf, list_count(o->surfaces));
    EXPECT_EQ(o->num_kids, list_count(o->kids));
    std::unordered_set<Vertex *> own;
    for (Vertex *v : vertices_of(o)) own.insert(v);
    for (Surface *s : surfaces_of(o)) {
        EXPECT_EQ(s->num_vertrefs, list_count(s->vertrefs));
        for (SVertex *r : refs_of(s)) EXPECT_TRUE(own.count(r->vertex)) << "reference to a vertex of another object";
    }
    for (Object *k : kids_of(o)) expect_consistent(k);
}

static inline void centroid(Surface *s, float *c)
{
    c[0] = c[1] = c[2] = 0;
    std::vector<SVertex *> refs = refs_of(s);
    for (SVertex *r : refs) {
        for (int i = 0; i < 3; i++) c[i] += r->vertex->point[i] / (float)refs.size();
    }
}

/* Every surface's normal points away from the given inside point. */
static inline void expect_facing_out(Object *o, const float *inside)
{
    for (Surface *s : surfaces_of(o)) {
        float c[3];
        centroid(s, c);
        float d = 0;
        for (int i = 0; i < 3; i++) d += (c[i] - inside[i]) * s->normal[i];
        EXPECT_GT(d, 0.0f) << "a surface faces inwards";
    }
}

static inline Object *object_with_points(Object *parent, std::initializer_list<P3f> points, const char *name = "")
{
    Object *o = new_object(OBJECT_NORMAL);
    object_set_name(o, name);
    for (const P3f &p : points) object_add_new_vertex(o, p.data());
    if (parent) object_add_child(parent, o);
    return o;
}

static inline Surface *add_face(Object *o, std::initializer_list<int> indices, int kind = SURFACE_POLYGON)
{
    Surface *s = new_surface();
    s->surface_kind = (uint8_t)kind;
    for (int i : indices) surface_add_vertref(s, new_svertex(vk_object_get_vertex_at_index(o, (unsigned)i), 0, 0));
    object_add_surface(o, s);
    surface_calc_normal(s);
    return s;
}

/* A unit square in z = 0, anticlockwise seen from +z, texture at the
 * corners. */
static inline Object *unit_square(Object *parent, const char *name = "square")
{
    Object *o = object_with_points(parent, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, name);
    Surface *s = new_surface();
    const float uv[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    std::vector<Vertex *> vs = vertices_of(o);
    for (int i = 0; i < 4; i++) surface_add_vertref(s, new_svertex(vs[(size_t)i], uv[i][0], uv[i][1]));
    object_add_surface(o, s);
    object_calc_normals_force(o);
    return o;
}

/* Selects every vertex of the object in vertex mode. */
static inline void select_vertices_of(Object *o)
{
    selection.select_mode = SELECT_VERTEX;
    select_object(o);
}

/* The child of the world at the position, or null. */
static inline Object *world_child(unsigned i)
{
    return (Object *)list_get_item(world->kids, i);
}

/* Whether undo records are kept in this build. */
static inline bool undo_is_recorded()
{
    new_undo(UNDO_SELECTION, "probe");
    bool kept = undo_current() != nullptr;
    clear_all_undos();
    return kept;
}

/* The area of a planar polygon (Newell's vector length over 2). */
static inline double polygon_area(Surface *s)
{
    double n[3] = {0, 0, 0};
    std::vector<SVertex *> refs = refs_of(s);
    for (size_t i = 0; i < refs.size(); i++) {
        const float *a = refs[i]->vertex->point, *b = refs[(i + 1) % refs.size()]->vertex->point;
        n[0] += ((double)a[1] - b[1]) * ((double)a[2] + b[2]);
        n[1] += ((double)a[2] - b[2]) * ((double)a[0] + b[0]);
        n[2] += ((double)a[0] - b[0]) * ((double)a[1] + b[1]);
    }
    return std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]) / 2;
}

#endif
