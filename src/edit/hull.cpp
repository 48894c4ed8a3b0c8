/*
 * edit/hull.cpp - convex hulls of point sets.
 *
 * Duplicate points are merged first.  Four extreme points decide the
 * shape: when the fourth lies within the precision of the plane of the
 * first three, the points are taken as planar and the hull is the 2D hull
 * in that plane (Andrew's monotone chain, collinear points dropped), one
 * polygon facing along the plane's normal.  Otherwise the hull is built by
 * quickhull: a starting tetrahedron grows by the furthest point outside
 * any face, replacing the faces that point sees by a fan from their
 * horizon.  Points within a small tolerance of a face count as inside, so
 * coplanar and nearly coplanar points never make slivers or loops; each
 * step takes one outside point, so the work always ends.
 */
#include "edit/hull.h"
#include "edit/primitive_append.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <unordered_map>
#include <vector>

namespace {

typedef std::array<double, 3> P3;

P3 sub(const P3 &a, const P3 &b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
P3 cross(const P3 &a, const P3 &b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double dot(const P3 &a, const P3 &b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
double length(const P3 &a) { return std::sqrt(dot(a, a)); }
P3 scaled(const P3 &a, double s) { return {a[0] * s, a[1] * s, a[2] * s}; }

struct HullFace {
    int v[3];
    int neighbour[3];            /* the face across edge v[j] -> v[(j + 1) % 3] */
    P3 normal;
    double offset;
    std::vector<int> outside;    /* points in front of this face */
    bool alive;
};

struct Hull {
    const std::vector<P3> *points;
    double tolerance;
    std::vector<HullFace> faces;
    std::vector<unsigned> visited; /* per face: the step that last visited it */
    unsigned step;
};

double distance_to(const HullFace &f, const P3 &p)
{
    return dot(f.normal, p) - f.offset;
}

int add_face(Hull *h, int a, int b, int c)
{
    const std::vector<P3> &pts = *h->points;
    HullFace f;
    f.v[0] = a, f.v[1] = b, f.v[2] = c;
    f.neighbour[0] = f.neighbour[1] = f.neighbour[2] = -1;
    P3 n = cross(sub(pts[b], pts[a]), sub(pts[c], pts[a]));
    double len = length(n);
    f.normal = len > 0 ? scaled(n, 1.0 / len) : n;
    f.offset = dot(f.normal, pts[a]);
    f.alive = true;
    h->faces.push_back(f);
    h->visited.push_back(0);
    return (int)h->faces.size() - 1;
}

uint64_t edge_key(int a, int b)
{
    return ((uint64_t)(uint32_t)a << 32) | (uint32_t)b;
}

/* Joins each edge of the faces to the face holding the reverse edge;
 * returns false when some edge has no partner (a broken hull). */
bool link_faces(Hull *h, const std::vector<int> &new_faces, std::unordered_map<uint64_t, int> *edge_face)
{
    for (int fi : new_faces) {
        const HullFace &f = h->faces[(size_t)fi];
        for (int j = 0; j < 3; j++) (*edge_face)[edge_key(f.v[j], f.v[(j + 1) % 3])] = fi;
    }
    for (int fi : new_faces) {
        HullFace &f = h->faces[(size_t)fi];
        for (int j = 0; j < 3; j++) {
            if (f.neighbour[j] >= 0) continue;
            auto twin = edge_face->find(edge_key(f.v[(j + 1) % 3], f.v[j]));
            if (twin == edge_face->end()) return false;
            f.neighbour[j] = twin->second;
        }
    }
    return true;
}

/* Gives each point to the first face it is in front of; points in front
 * of none are inside and dropped. */
void assign_points(Hull *h, const std::vector<int> &candidates, const std::vector<int> &faces)
{
    const std::vector<P3> &pts = *h->points;
    for (int p : candidates) {
        for (int fi : faces) {
            if (distance_to(h->faces[(size_t)fi], pts[(size_t)p]) > h->tolerance) {
                h->faces[(size_t)fi].outside.push_back(p);
                break;
            }
        }
    }
}

/* The faces the eye point sees, reached from the first one across edges. */
std::vector<int> visible_faces(Hull *h, int first, const P3 &eye)
{
    std::vector<int> visible, pending(1, first);
    h->step++;
    h->visited[(size_t)first] = h->step;
    while (!pending.empty()) {
        int fi = pending.back();
        pending.pop_back();
        visible.push_back(fi);
        for (int nb : h->faces[(size_t)fi].neighbour) {
            if (nb < 0 || h->visited[(size_t)nb] == h->step) continue;
            h->visited[(size_t)nb] = h->step;
            if (h->faces[(size_t)nb].alive && distance_to(h->faces[(size_t)nb], eye) > h->tolerance) pending.push_back(nb);
        }
    }
    return visible;
}

/* Adds the furthest outside point of the face to the hull.  Returns false
 * when the hull could not be kept closed. */
bool expand(Hull *h, int face, std::vector<int> *work)
{
    const std::vector<P3> &pts = *h->points;
    HullFace &start = h->faces[(size_t)face];
    size_t best = 0;
    for (size_t i = 1; i < start.outside.size(); i++) {
        if (distance_to(start, pts[(size_t)start.outside[i]]) > distance_to(start, pts[(size_t)start.outside[best]])) best = i;
    }
    int eye = start.outside[best];
    std::vector<int> visible = visible_faces(h, face, pts[(size_t)eye]);
    std::vector<int> orphans, made;
    for (int fi : visible) h->faces[(size_t)fi].alive = false;
    for (int fi : visible) {
        for (int p : h->faces[(size_t)fi].outside) {
            if (p != eye) orphans.push_back(p);
        }
        h->faces[(size_t)fi].outside.clear();
        for (int j = 0; j < 3; j++) {
            int nb = h->faces[(size_t)fi].neighbour[j];
            if (nb < 0 || !h->faces[(size_t)nb].alive) continue;
            /* A horizon edge: a fan face from it to the eye. */
            int a = h->faces[(size_t)fi].v[j], b = h->faces[(size_t)fi].v[(j + 1) % 3];
            int nf = add_face(h, a, b, eye);
            h->faces[(size_t)nf].neighbour[0] = nb;
            HullFace &other = h->faces[(size_t)nb];
            for (int k = 0; k < 3; k++) {
                if (other.v[k] == b && other.v[(k + 1) % 3] == a) other.neighbour[k] = nf;
            }
            made.push_back(nf);
        }
    }
    std::unordered_map<uint64_t, int> edges;
    if (made.empty() || !link_faces(h, made, &edges)) return false;
    assign_points(h, orphans, made);
    for (int nf : made) {
        if (!h->faces[(size_t)nf].outside.empty()) work->push_back(nf);
    }
    return true;
}

/* The index of the point furthest from the line through a and b. */
size_t furthest_from_line(const std::vector<P3> &pts, size_t a, size_t b, double *distance)
{
    P3 dir = sub(pts[b], pts[a]);
    double len = length(dir);
    size_t best = a;
    *distance = 0;
    for (size_t i = 0; i < pts.size(); i++) {
        double d = length(cross(sub(pts[i], pts[a]), dir)) / len;
        if (d > *distance) *distance = d, best = i;
    }
    return best;
}

/* The two points furthest apart along one of the axes. */
void extreme_pair(const std::vector<P3> &pts, size_t *a, size_t *b)
{
    double widest = -1;
    for (int axis = 0; axis < 3; axis++) {
        size_t lo = 0, hi = 0;
        for (size_t i = 1; i < pts.size(); i++) {
            if (pts[i][axis] < pts[lo][axis]) lo = i;
            if (pts[i][axis] > pts[hi][axis]) hi = i;
        }
        double w = length(sub(pts[hi], pts[lo]));
        if (w > widest) widest = w, *a = lo, *b = hi;
    }
}

Object *hull_object(const std::vector<P3> &pts, const std::vector<std::vector<int>> &polygons)
{
    Object *o = new_object(OBJECT_NORMAL);
    object_set_name(o, "convex hull");
    ObjectAppender append;
    appender_start(&append, o);
    std::vector<Vertex *> made(pts.size(), nullptr);
    for (const std::vector<int> &poly : polygons) {
        Surface *s = new_surface();
        RefAppender refs = ref_appender_start(s);
        for (int p : poly) {
            Vertex *&v = made[(size_t)p];
            if (!v) v = appender_new_vertex(&append, (float)pts[(size_t)p][0], (float)pts[(size_t)p][1], (float)pts[(size_t)p][2]);
            ref_append(&refs, v, 0.0f, 0.0f);
        }
        appender_add_surface(&append, s);
    }
    object_calc_normals_force(o);
    return o;
}

/* The 2D hull of planar points as one polygon, anticlockwise about the
 * normal. */
std::vector<int> planar_hull(const std::vector<P3> &pts, const P3 &origin, const P3 &e1, const P3 &e2, double tolerance)
{
    struct Q {
        double x, y;
        int index;
    };
    std::vector<Q> q;
    for (size_t i = 0; i < pts.size(); i++) {
        P3 d = sub(pts[i], origin);
        q.push_back({dot(d, e1), dot(d, e2), (int)i});
    }
    std::sort(q.begin(), q.end(), [](const Q &a, const Q &b) { return a.x != b.x ? a.x < b.x : a.y < b.y; });
    /* b is dropped when it is not clearly to the left of a -> c. */
    auto left_turn = [tolerance](const Q &a, const Q &b, const Q &c) {
        double abx = b.x - a.x, aby = b.y - a.y, acx = c.x - a.x, acy = c.y - a.y;
        double ac = std::sqrt(acx * acx + acy * acy);
        return abx * acy - aby * acx > tolerance * ac;
    };
    std::vector<Q> chain(2 * q.size());
    size_t k = 0;
    for (size_t i = 0; i < q.size(); i++) {
        while (k >= 2 && !left_turn(chain[k - 2], chain[k - 1], q[i])) k--;
        chain[k++] = q[i];
    }
    for (size_t i = q.size() - 1, lower = k + 1; i-- > 0;) {
        while (k >= lower && !left_turn(chain[k - 2], chain[k - 1], q[i])) k--;
        chain[k++] = q[i];
    }
    std::vector<int> ring;
    for (size_t i = 0; i + 1 < k; i++) ring.push_back(chain[i].index);
    return ring;
}

/* Merges exactly equal points; drops points that are not finite. */
std::vector<P3> distinct_points(const float *xyz, size_t count)
{
    std::vector<P3> pts;
    pts.reserve(count);
    for (size_t i = 0; i < count; i++) {
        const float *p = xyz + 3 * i;
        if (std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2])) pts.push_back({p[0], p[1], p[2]});
    }
    std::sort(pts.begin(), pts.end());
    pts.erase(std::unique(pts.begin(), pts.end()), pts.end());
    return pts;
}

/* The tetrahedron a, b, c, d as four outward faces. */
bool start_tetrahedron(Hull *h, int a, int b, int c, int d)
{
    const std::vector<P3> &pts = *h->points;
    double volume = dot(cross(sub(pts[(size_t)b], pts[(size_t)a]), sub(pts[(size_t)c], pts[(size_t)a])),
                        sub(pts[(size_t)d], pts[(size_t)a]));
    if (volume > 0) std::swap(b, c); /* d must lie behind a, b, c */
    std::vector<int> faces = {add_face(h, a, b, c), add_face(h, a, d, b), add_face(h, b, d, c), add_face(h, c, d, a)};
    std::unordered_map<uint64_t, int> edges;
    if (!link_faces(h, faces, &edges)) return false;
    std::vector<int> rest;
    for (size_t i = 0; i < pts.size(); i++) {
        if ((int)i != a && (int)i != b && (int)i != c && (int)i != d) rest.push_back((int)i);
    }
    assign_points(h, rest, faces);
    return true;
}

bool solid_hull(const std::vector<P3> &pts, int a, int b, int c, int d, double tolerance,
                std::vector<std::vector<int>> *polygons)
{
    Hull h;
    h.points = &pts;
    h.tolerance = tolerance;
    h.step = 0;
    if (!start_tetrahedron(&h, a, b, c, d)) return false;
    std::vector<int> work;
    for (size_t i = 0; i < h.faces.size(); i++) {
        if (!h.faces[i].outside.empty()) work.push_back((int)i);
    }
    while (!work.empty()) {
        int f = work.back();
        work.pop_back();
        if (!h.faces[(size_t)f].alive || h.faces[(size_t)f].outside.empty()) continue;
        if (!expand(&h, f, &work)) return false;
    }
    for (const HullFace &f : h.faces) {
        if (f.alive) polygons->push_back({f.v[0], f.v[1], f.v[2]});
    }
    return true;
}

} // namespace

Object *convex_hull_from_points(const float *xyz, size_t count, double precision, const char **reason)
{
    const char *unused;
    if (!reason) reason = &unused;
    std::vector<P3> pts = distinct_points(xyz, count);
    if (pts.size() < 3) {
        *reason = "fewer than three different points";
        return nullptr;
    }
    double scale = 0;
    for (const P3 &p : pts) scale = std::max(scale, std::fabs(p[0]) + std::fabs(p[1]) + std::fabs(p[2]));
    /* Below this, differences are rounding, whatever the precision says. */
    double tolerance = std::max(precision > 0 ? precision : 0.0, 1e3 * DBL_EPSILON * scale);
    size_t a = 0, b = 0;
    extreme_pair(pts, &a, &b);
    double line_distance;
    size_t c = furthest_from_line(pts, a, b, &line_distance);
    if (line_distance <= tolerance) {
        *reason = "the points lie on one line";
        return nullptr;
    }
    P3 normal = cross(sub(pts[b], pts[a]), sub(pts[c], pts[a]));
    normal = scaled(normal, 1.0 / length(normal));
    size_t d = a;
    double plane_distance = 0;
    for (size_t i = 0; i < pts.size(); i++) {
        double dist = std::fabs(dot(normal, sub(pts[i], pts[a])));
        if (dist > plane_distance) plane_distance = dist, d = i;
    }
    std::vector<std::vector<int>> polygons;
    if (plane_distance <= tolerance) {
        P3 e1 = sub(pts[b], pts[a]);
        e1 = scaled(e1, 1.0 / length(e1));
        polygons.push_back(planar_hull(pts, pts[a], e1, cross(normal, e1), tolerance));
    } else if (!solid_hull(pts, (int)a, (int)b, (int)c, (int)d, tolerance, &polygons)) {
        *reason = "the points are too close together to make a closed hull";
        return nullptr;
    }
    return hull_object(pts, polygons);
}
