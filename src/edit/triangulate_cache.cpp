/*
 * edit/triangulate_cache.cpp - order-type keys of small outlines and the
 * table of tessellations found for them (see triangulate_cache.h).
 *
 * The tessellator projects an outline along the axis its normal leans to
 * most, keeping the other two coordinates as they are (the second one
 * perhaps negated, so that the outline runs counter-clockwise), and from
 * then on only compares.  The key therefore holds that axis, the
 * outline's turning sense, the order of the points along each remaining
 * axis with its ties, and the side of every triple.
 */
#include "edit/triangulate_cache.h"

#include <cassert>
#include <cmath>
#include <cstring>
#include <unordered_map>

namespace {

struct KeyHash {
    size_t operator()(const OutlineKey &k) const
    {
        uint64_t h = 0x9E3779B97F4A7C15ull;
        for (uint64_t w : k.words) h = (h ^ w) * 0xBF58476D1CE4E5B9ull;
        return (size_t)(h ^ (h >> 31));
    }
};

struct KeyEqual {
    bool operator()(const OutlineKey &a, const OutlineKey &b) const { return a.words == b.words; }
};

/* Past this many order types the table keeps what it has. */
const size_t MOST_ENTRIES = 1 << 16;
/* Below these fractions a triangle or a turn is too close to flat for its
 * side to be certain after rounding. */
const double NEGLIGIBLE_AREA = 1e-12;
const double THIN_PAIR = 1e-4;
const double AXIS_MARGIN = 1.0001;
const double FLAT_TRIPLE = 1e-9;
const double AREA_ROUNDING = 1e-12;

std::unordered_map<OutlineKey, CornerTriangles, KeyHash, KeyEqual> &table =
    *new std::unordered_map<OutlineKey, CornerTriangles, KeyHash, KeyEqual>;
bool enabled = true;

struct Point2 {
    double s, t;
};

void cross(const double *a, const double *b, const double *c, double *n)
{
    double d1[3] = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
    double d2[3] = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
    n[0] = d1[1] * d2[2] - d1[2] * d2[1];
    n[1] = d1[2] * d2[0] - d1[0] * d2[2];
    n[2] = d1[0] * d2[1] - d1[1] * d2[0];
}

/* The axis the vector leans to most, or -1 when two come too close. */
int clear_long_axis(const double *n)
{
    double a[3] = {std::fabs(n[0]), std::fabs(n[1]), std::fabs(n[2])};
    int i = 0;
    if (a[1] > a[i]) i = 1;
    if (a[2] > a[i]) i = 2;
    for (int j = 0; j < 3; j++) {
        if (j != i && a[i] <= AXIS_MARGIN * a[j]) return -1;
    }
    return i;
}

/* The projection axis, when every triangle the tessellator might take
 * for the outline's normal leans to the same one; else -1. */
int projection_axis(const double *xyz, int n)
{
    double normals[56][3];
    double length2[56];
    int count = 0;
    double most = 0;
    for (int a = 0; a < n; a++)
        for (int b = a + 1; b < n; b++)
            for (int c = b + 1; c < n; c++) {
                cross(xyz + 3 * a, xyz + 3 * b, xyz + 3 * c, normals[count]);
                const double *m = normals[count];
                length2[count] = m[0] * m[0] + m[1] * m[1] + m[2] * m[2];
                if (length2[count] > most) most = length2[count];
                count++;
            }
    if (!(most > 0) || !std::isfinite(most)) return -1;
    int axis = -1;
    for (int k = 0; k < count; k++) {
        if (length2[k] < NEGLIGIBLE_AREA * most) continue;
        int i = clear_long_axis(normals[k]);
        if (i < 0 || (axis >= 0 && i != axis)) return -1;
        axis = i;
    }
    /* The tessellator takes the largest triangle on some pair of points:
     * no pair may have only slivers. */
    int k = 0;
    double best_on_pair[8][8] = {};
    for (int a = 0; a < n; a++)
        for (int b = a + 1; b < n; b++)
            for (int c = b + 1; c < n; c++, k++) {
                double l = length2[k];
                if (l > best_on_pair[a][b]) best_on_pair[a][b] = l;
                if (l > best_on_pair[a][c]) best_on_pair[a][c] = l;
                if (l > best_on_pair[b][c]) best_on_pair[b][c] = l;
            }
    for (int a = 0; a < n; a++)
        for (int b = a + 1; b < n; b++)
            if (best_on_pair[a][b] < THIN_PAIR * most) return -1;
    return axis;
}

/* 1 or -1: the sense the tessellator's own area sum finds, or 0 when the
 * sum is too close to zero for its sign to be sure. */
int turning_sense(const Point2 *p, int n)
{
    double area = 0, size = 0;
    for (int k = 0; k < n; k++) {
        const Point2 &a = p[k], &b = p[(k + 1) % n];
        double term = (a.s - b.s) * (a.t + b.t);
        area += term;
        size += std::fabs(a.s - b.s) * (std::fabs(a.t) + std::fabs(b.t));
    }
    if (std::fabs(area) <= AREA_ROUNDING * size || area == 0) return 0;
    return area > 0 ? 1 : -1;
}

/* The corners in order along one axis (the other breaking ties), packed
 * 3 bits a corner, and a bit for each neighbour pair on the same line
 * across that axis. */
void axis_order(const Point2 *p, int n, bool by_s, uint64_t *order, uint64_t *ties)
{
    int idx[8];
    for (int k = 0; k < n; k++) idx[k] = k;
    auto major = [&](int k) { return by_s ? p[k].s : p[k].t; };
    auto minor = [&](int k) { return by_s ? p[k].t : p[k].s; };
    for (int a = 1; a < n; a++) {
        int v = idx[a], b = a;
        while (b > 0 && (major(idx[b - 1]) > major(v) || (major(idx[b - 1]) == major(v) && minor(idx[b - 1]) > minor(v)))) {
            idx[b] = idx[b - 1];
            b--;
        }
        idx[b] = v;
    }
    *order = 0;
    *ties = 0;
    for (int k = 0; k < n; k++) *order |= (uint64_t)idx[k] << (3 * k);
    for (int k = 0; k + 1 < n; k++) {
        if (major(idx[k]) == major(idx[k + 1])) *ties |= (uint64_t)1 << k;
    }
}

/* Which side of ab c lies on: 1, 2 (the other side), 0 when the three are
 * exactly on one line across an axis, -1 when too close to tell. */
int triple_side(const Point2 &a, const Point2 &b, const Point2 &c, double scale2)
{
    if ((a.s == b.s && b.s == c.s) || (a.t == b.t && b.t == c.t)) return 0;
    double o = (b.s - a.s) * (c.t - a.t) - (b.t - a.t) * (c.s - a.s);
    if (!(std::fabs(o) > FLAT_TRIPLE * scale2)) return -1;
    return o > 0 ? 1 : 2;
}

} // namespace

bool outline_key(const double *xyz, int n, OutlineKey *key)
{
    if (n < 3 || n > TRIANGULATE_CACHE_MAX_CORNERS) return false;
    int axis = projection_axis(xyz, n);
    if (axis < 0) return false;
    Point2 p[8];
    double smin = HUGE_VAL, smax = -HUGE_VAL, tmin = HUGE_VAL, tmax = -HUGE_VAL;
    for (int k = 0; k < n; k++) {
        p[k] = {xyz[3 * k + (axis + 1) % 3], xyz[3 * k + (axis + 2) % 3]};
        smin = std::fmin(smin, p[k].s), smax = std::fmax(smax, p[k].s);
        tmin = std::fmin(tmin, p[k].t), tmax = std::fmax(tmax, p[k].t);
    }
    for (int a = 0; a < n; a++)
        for (int b = a + 1; b < n; b++)
            if (p[a].s == p[b].s && p[a].t == p[b].t) return false;
    int sense = turning_sense(p, n);
    if (!sense) return false;
    double scale = std::fmax(smax - smin, tmax - tmin);
    double scale2 = scale * scale;

    uint64_t s_order, s_ties, t_order, t_ties;
    axis_order(p, n, true, &s_order, &s_ties);
    axis_order(p, n, false, &t_order, &t_ties);
    key->words = {0, 0, 0};
    key->words[0] = (uint64_t)n | (uint64_t)axis << 4 | (uint64_t)(sense > 0) << 6 | s_order << 7 | t_order << 31 |
                    s_ties << 55;
    key->words[1] = t_ties;
    int k = 0;
    for (int a = 0; a < n; a++)
        for (int b = a + 1; b < n; b++)
            for (int c = b + 1; c < n; c++, k++) {
                int side = triple_side(p[a], p[b], p[c], scale2);
                if (side < 0) return false;
                /* 28 sides fill the rest of the second word, the third
                 * holds the others. */
                if (k < 28) key->words[1] |= (uint64_t)side << (7 + 2 * k);
                else key->words[2] |= (uint64_t)side << (2 * (k - 28));
            }
    assert(k <= 56);
    return true;
}

const CornerTriangles *triangulate_cache_find(const OutlineKey &key)
{
    auto found = table.find(key);
    return found == table.end() ? nullptr : &found->second;
}

void triangulate_cache_store(const OutlineKey &key, const CornerTriangles &triangles)
{
    assert(triangles.count >= 1 && triangles.count <= TRIANGULATE_CACHE_MAX_CORNERS - 2);
    if (table.size() >= MOST_ENTRIES) return;
    table.emplace(key, triangles);
}

bool triangulate_cache_enable(bool on)
{
    bool previous = enabled;
    enabled = on;
    return previous;
}

bool triangulate_cache_enabled(void)
{
    return enabled;
}
