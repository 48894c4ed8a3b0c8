/*
 * edit/hull.h - convex hulls of the selection: the selected vertices, or
 * all the vertices of the selected objects.  Points that lie in one plane
 * (within the preference convexhull_precision) give one closed polygon;
 * others a closed solid of outward-facing triangles.
 */
#ifndef VESK_EDIT_HULL_H
#define VESK_EDIT_HULL_H

#include "vesk.h"

/* The hull of the points (x, y, z per point) as a new object named
 * "convex hull" that is in no tree yet, or none when the points do not
 * span a plane; *reason then says why.  Duplicate points count once. */
Object *convex_hull_from_points(const float *xyz, size_t count, double precision, const char **reason);
/* Command "convexhull": the hull of the selection as a new, selected
 * object. */
int make_convex_hull(void);

#endif
