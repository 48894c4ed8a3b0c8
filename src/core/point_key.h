/*
 * core/point_key.h - a point as a hash key, for finding vertices by
 * their exact position without walking a vertex list.  Equality is exact
 * float comparison: -0 equals (and hashes as) 0, and a point holding a NaN
 * equals nothing, so such a point must not be looked up or stored
 * (point_is_comparable).
 */
#ifndef VESK_CORE_POINT_KEY_H
#define VESK_CORE_POINT_KEY_H

#include <cstddef>
#include <cstdint>
#include <cstring>

struct PointKey {
    float p[3];
    bool operator==(const PointKey &o) const { return p[0] == o.p[0] && p[1] == o.p[1] && p[2] == o.p[2]; }
};

struct PointKeyHash {
    size_t operator()(const PointKey &k) const
    {
        size_t h = 0;
        for (float f : k.p) {
            if (f == 0.0f) f = 0.0f; /* -0 hashes as 0 */
            uint32_t bits;
            memcpy(&bits, &f, sizeof bits);
            h = h * 1000003u ^ bits;
        }
        return h;
    }
};

/* False when a coordinate is a NaN. */
inline bool point_is_comparable(const float *p)
{
    return p[0] == p[0] && p[1] == p[1] && p[2] == p[2];
}

#endif
