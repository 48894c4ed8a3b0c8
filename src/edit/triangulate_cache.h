/*
 * edit/triangulate_cache.h - remembered tessellations of small polygons.
 *
 * GLU's tessellator decides everything it does for a simple outline from
 * comparisons of the projected points: their order along each sweep axis
 * and which side of the line through two points a third one lies on.  Two
 * outlines that agree in all of those (their order type) are cut into the
 * same triangles, corner for corner, in the same order.  A mesh of a
 * hundred thousand quadrilaterals holds a handful of order types, so the
 * tessellator runs once for each and the other polygons take its answer.
 *
 * Only outlines whose every comparison is clear-cut get a key: no two
 * points in the same place, no three points nearly but not exactly in a
 * line, a plane the tessellator's projection picks beyond doubt.  Anything
 * else goes through the tessellator itself, so the triangles are always
 * the ones it would make.
 */
#ifndef VESK_EDIT_TRIANGULATE_CACHE_H
#define VESK_EDIT_TRIANGULATE_CACHE_H

#include <array>
#include <cstdint>

/* The most corners an outline may have to be keyed. */
enum { TRIANGULATE_CACHE_MAX_CORNERS = 8 };

struct OutlineKey {
    std::array<uint64_t, 3> words;
};

/* A tessellation as corners of the outline, three per triangle. */
struct CornerTriangles {
    int count;
    uint8_t corners[3 * (TRIANGULATE_CACHE_MAX_CORNERS - 2)];
};

/* The key of the outline of n points (x, y, z each), or false when the
 * outline is not one whose tessellation can be shared. */
bool outline_key(const double *xyz, int n, OutlineKey *key);

/* The remembered tessellation for the key, or null. */
const CornerTriangles *triangulate_cache_find(const OutlineKey &key);
/* Remembers a tessellation (the table stops growing at a fixed size). */
void triangulate_cache_store(const OutlineKey &key, const CornerTriangles &triangles);

/* Off makes every polygon go through the tessellator (for comparisons);
 * returns the previous setting. */
bool triangulate_cache_enable(bool on);
bool triangulate_cache_enabled(void);

#endif
