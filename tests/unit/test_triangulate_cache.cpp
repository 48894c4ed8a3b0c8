/*
 * test_triangulate_cache.cpp - remembered tessellations give exactly the
 * triangles the tessellator gives: random outlines of many kinds (grids
 * under random rotations and scales, small-integer outlines convex,
 * concave, self-crossing and with points in a line, octagons with their
 * edge midpoints, bent quadrilaterals, far from the origin) are each cut
 * with the table in use, often from a shape met before, and compared
 * corner for corner with a run of the tessellator alone.
 */
#include "test_support.h"
#include "edit/primitive_append.h"
#include "edit/surface_ops.h"
#include "edit/triangulate_cache.h"

#include <cmath>
#include <random>
#include <vector>

namespace {

struct Outline {
    std::vector<Vertex *> vertices;
    Surface *surface = nullptr;

    explicit Outline(const std::vector<std::array<float, 3>> &points)
    {
        surface = new_surface();
        surface->mat = 7;
        RefAppender refs = ref_appender_start(surface);
        float u = 0.125f;
        for (const auto &p : points) {
            vertices.push_back(new_vertex_set(p[0], p[1], p[2]));
            ref_append(&refs, vertices.back(), u, 1.0f - u);
            u += 0.0625f;
        }
    }
    ~Outline()
    {
        surface_free(surface);
        for (Vertex *v : vertices) myfree(v);
    }
};

void free_triangles(List *triangles)
{
    for (List *l = triangles; l; l = l->next) surface_free((Surface *)l->item);
    list_free(&triangles);
}

/* "" when the two lists hold the same triangles, else what differs. */
std::string difference(List *a, List *b)
{
    int k = 0;
    for (; a && b; a = a->next, b = b->next, k++) {
        Surface *x = (Surface *)a->item, *y = (Surface *)b->item;
        if (x->num_vertrefs != y->num_vertrefs || x->mat != y->mat || x->surface_kind != y->surface_kind)
            return "triangle " + std::to_string(k) + " differs in its properties";
        for (List *r = x->vertrefs, *q = y->vertrefs; r && q; r = r->next, q = q->next) {
            SVertex *p1 = (SVertex *)r->item, *p2 = (SVertex *)q->item;
            if (p1->vertex != p2->vertex || p1->u != p2->u || p1->v != p2->v)
                return "triangle " + std::to_string(k) + " differs in its corners";
        }
    }
    if (a || b) return "the triangle counts differ after " + std::to_string(k);
    return "";
}

struct Tally {
    int compared = 0;
    int from_table = 0;
    int failures = 0;
    std::string first_failures;
};

/* Runs the rounds with the console caught once (self-crossing outlines
 * make the tessellator complain), then reports. */
template <typename Rounds> Tally run_rounds(Rounds rounds)
{
    Tally tally;
    capture([&] { rounds(&tally); });
    EXPECT_EQ(tally.failures, 0) << tally.first_failures;
    return tally;
}

/* Cuts the outline both ways and compares. */
void check(const std::vector<std::array<float, 3>> &points, Tally *tally)
{
    Outline outline(points);
    std::vector<double> xyz;
    for (const auto &p : points) xyz.insert(xyz.end(), {p[0], p[1], p[2]});
    OutlineKey key;
    if (outline_key(xyz.data(), (int)points.size(), &key) && triangulate_cache_find(key)) tally->from_table++;

    triangulate_cache_enable(true);
    List *remembered = surface_get_triangulations(outline.surface);
    triangulate_cache_enable(false);
    List *fresh = surface_get_triangulations(outline.surface);
    triangulate_cache_enable(true);

    std::string diff = difference(remembered, fresh);
    if (!diff.empty() && tally->failures++ < 5) {
        tally->first_failures += diff + " for";
        for (const auto &p : points)
            tally->first_failures += " (" + std::to_string(p[0]) + " " + std::to_string(p[1]) + " " + std::to_string(p[2]) + ")";
        tally->first_failures += "\n";
    }
    tally->compared++;
    free_triangles(remembered);
    free_triangles(fresh);
}

using Rotation = std::array<float, 9>;

Rotation random_rotation(std::mt19937 &rng)
{
    std::normal_distribution<double> normal;
    double q[4];
    double len = 0;
    for (double &c : q) {
        c = normal(rng);
        len += c * c;
    }
    len = std::sqrt(len);
    for (double &c : q) c /= len;
    double w = q[0], x = q[1], y = q[2], z = q[3];
    return {(float)(1 - 2 * (y * y + z * z)), (float)(2 * (x * y - z * w)), (float)(2 * (x * z + y * w)),
            (float)(2 * (x * y + z * w)), (float)(1 - 2 * (x * x + z * z)), (float)(2 * (y * z - x * w)),
            (float)(2 * (x * z - y * w)), (float)(2 * (y * z + x * w)), (float)(1 - 2 * (x * x + y * y))};
}

std::array<float, 3> place(const Rotation &r, float scale, const std::array<float, 3> &offset, float x, float y,
                           float z)
{
    return {offset[0] + scale * (r[0] * x + r[1] * y + r[2] * z), offset[1] + scale * (r[3] * x + r[4] * y + r[5] * z),
            offset[2] + scale * (r[6] * x + r[7] * y + r[8] * z)};
}

/* The corners starting at first, forwards or backwards. */
std::vector<std::array<float, 3>> reorder(std::vector<std::array<float, 3>> points, int first, bool backwards)
{
    std::vector<std::array<float, 3>> out;
    int n = (int)points.size();
    for (int k = 0; k < n; k++) {
        int i = backwards ? first - k : first + k;
        out.push_back(points[((i % n) + n) % n]);
    }
    return out;
}

std::array<float, 3> midpoint(const std::array<float, 3> &a, const std::array<float, 3> &b)
{
    return {(a[0] + b[0]) / 2.0f, (a[1] + b[1]) / 2.0f, (a[2] + b[2]) / 2.0f};
}

} // namespace

TEST(TriangulateCache, GridsUnderRandomPlacementsMatchTheTessellator)
{
    std::mt19937 rng(20261123);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    Tally tally = run_rounds([&](Tally *tally) {
        for (int placement = 0; placement < 200; placement++) {
            /* Every fourth grid stays square to the axes, as meshes are drawn. */
            Rotation r = placement % 4 == 0 ? Rotation{1, 0, 0, 0, 1, 0, 0, 0, 1} : random_rotation(rng);
            if (placement % 8 == 4) r = {1, 0, 0, 0, 0, 1, 0, 1, 0};
            float scale = std::pow(10.0f, unit(rng) * 6 - 3);
            std::array<float, 3> offset = {unit(rng) * 1000, unit(rng) * 10, -unit(rng) * 5000};
            int first = placement % 4;
            bool backwards = (placement / 4) % 2;
            for (int i = 0; i < 25; i++) {
                for (int j = 0; j < 25; j++) {
                    std::vector<std::array<float, 3>> quad = {
                        place(r, scale, offset, (float)i, (float)j, 0), place(r, scale, offset, (float)i + 1, (float)j, 0),
                        place(r, scale, offset, (float)i + 1, (float)j + 1, 0), place(r, scale, offset, (float)i, (float)j + 1, 0)};
                    check(reorder(quad, first, backwards), tally);
                    if ((i + j) % 3) continue;
                    std::vector<std::array<float, 3>> octagon;
                    for (int k = 0; k < 4; k++) {
                        octagon.push_back(quad[k]);
                        octagon.push_back(midpoint(quad[k], quad[(k + 1) % 4]));
                    }
                    check(reorder(octagon, first, backwards), tally);
                }
            }
        }
    });
    EXPECT_GT(tally.from_table, tally.compared / 2) << "the table was hardly used: the test proves little";
}

TEST(TriangulateCache, SmallIntegerOutlinesMatchTheTessellator)
{
    std::mt19937 rng(7);
    std::uniform_int_distribution<int> coordinate(0, 4), few(0, 2), corners(4, 8), plane(0, 2);
    Tally tally = run_rounds([&](Tally *tally) {
        for (int round = 0; round < 200000; round++) {
            /* Half of them on a 3 x 3 lattice with four or five corners, where
             * the same shapes come round again and again. */
            bool small = round % 2;
            int n = small ? 4 + round % 4 / 2 : corners(rng);
            int axis = plane(rng);
            float height = (float)coordinate(rng);
            std::vector<std::array<float, 3>> points;
            for (int k = 0; k < n; k++) {
                std::array<float, 3> p;
                p[axis] = height;
                p[(axis + 1) % 3] = (float)(small ? few(rng) : coordinate(rng));
                p[(axis + 2) % 3] = (float)(small ? few(rng) : coordinate(rng));
                points.push_back(p);
            }
            check(points, tally);
        }
    });
    EXPECT_GT(tally.from_table, 10000);
}

TEST(TriangulateCache, StarsBentQuadsAndFarAwayOutlinesMatchTheTessellator)
{
    std::mt19937 rng(99);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    run_rounds([&](Tally *tally) {
        for (int round = 0; round < 100000; round++) {
            Rotation r = round % 2 ? random_rotation(rng) : Rotation{1, 0, 0, 0, 1, 0, 0, 0, 1};
            std::array<float, 3> offset = {0, 0, 0};
            if (round % 3 == 0) offset = {1e6f * unit(rng), -1e5f, 3e4f};
            int n = 4 + round % 5;
            std::vector<std::array<float, 3>> points;
            if (round % 5 == 0) {
                /* A quadrilateral bent out of its plane. */
                for (int k = 0; k < 4; k++) {
                    float a = (float)k * 1.5707963f + 0.3f * unit(rng);
                    points.push_back(place(r, 1.0f, offset, std::cos(a), std::sin(a), 0.4f * (unit(rng) - 0.5f)));
                }
            } else {
                /* A star-shaped outline: convex or not. */
                for (int k = 0; k < n; k++) {
                    float a = ((float)k + 0.8f * unit(rng)) * 6.2831853f / (float)n;
                    float radius = 0.3f + unit(rng);
                    points.push_back(place(r, 2.0f, offset, radius * std::cos(a), radius * std::sin(a), 0));
                }
            }
            check(points, tally);
            check(reorder(points, 1, true), tally);
        }
    });
}

TEST(TriangulateCache, OutlinesThatCannotBeKeyedAreRefusedAKey)
{
    OutlineKey key;
    const double line[] = {0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0};
    EXPECT_FALSE(outline_key(line, 4, &key)); /* no plane */
    const double twice[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 0, 0};
    EXPECT_FALSE(outline_key(twice, 4, &key)); /* a point repeated */
    const double diagonal[] = {0, 0, 0, 1, 1, 1, 0, 2, 2, 1, 0, 1};
    EXPECT_FALSE(outline_key(diagonal, 4, &key)); /* no axis the plane clearly faces */
    const double nearly_flat[] = {0, 0, 0, 1, 1e-12, 0, 2, 0, 0, 1, 1, 0};
    EXPECT_FALSE(outline_key(nearly_flat, 4, &key)); /* a turn too slight to be sure of */
    double nine[27] = {};
    for (int k = 0; k < 9; k++) {
        nine[3 * k] = std::cos(k * 0.7);
        nine[3 * k + 1] = std::sin(k * 0.7);
    }
    EXPECT_FALSE(outline_key(nine, 9, &key)); /* too many corners */
    const double square[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    EXPECT_TRUE(outline_key(square, 4, &key));
    OutlineKey moved;
    const double elsewhere[] = {5, 5, 3, 7, 5, 3, 7, 7, 3, 5, 7, 3};
    ASSERT_TRUE(outline_key(elsewhere, 4, &moved));
    EXPECT_TRUE(key.words == moved.words); /* same order type, same key */
    const double turned[] = {0, 0, 0, 0, 1, 0, 1, 1, 0, 1, 0, 0};
    ASSERT_TRUE(outline_key(turned, 4, &moved));
    EXPECT_FALSE(key.words == moved.words); /* the other way round */
}
