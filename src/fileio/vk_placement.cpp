/*
 * fileio/vk_placement.cpp - see vk_placement.h.
 */
#include "fileio/vk_placement.h"

#include <cstring>

void vk_placement_set(VkPlacement *p, const float *rotation, const float *translation)
{
    memcpy(p->rotation, rotation, sizeof p->rotation);
    memcpy(p->translation, translation, sizeof p->translation);
    p->rotate = !matrix_is_identity(rotation);
    p->translate = translation[0] != 0.0f || translation[1] != 0.0f || translation[2] != 0.0f;
}

void vk_place_point(const VkPlacement *p, const double *local, float *out)
{
    double x = local[0], y = local[1], z = local[2];
    if (p->rotate) {
        const float *m = p->rotation;
        double rx = m[0] * x + m[3] * y + m[6] * z;
        double ry = m[1] * x + m[4] * y + m[7] * z;
        double rz = m[2] * x + m[5] * y + m[8] * z;
        x = rx, y = ry, z = rz;
    }
    if (p->translate) {
        x += p->translation[0];
        y += p->translation[1];
        z += p->translation[2];
    }
    out[0] = (float)x;
    out[1] = (float)y;
    out[2] = (float)z;
}
