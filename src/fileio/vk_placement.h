/*
 * fileio/vk_placement.h - how the model file reader turns the coordinates
 * of a vertex as written (in its object's frame) into the stored global
 * position, p = R * local + t.  The sum is formed in double from the
 * coordinates as read (doubles) and rounded to float once.  An identity R
 * and a zero t are skipped, so that either leaves the coordinates exactly
 * as written.  The writer replays this same arithmetic to check that what
 * it writes reads back bit for bit.
 */
#ifndef VK_FILEIO_VK_PLACEMENT_H
#define VK_FILEIO_VK_PLACEMENT_H

#include "edit/transform.h"

struct VkPlacement {
    float rotation[9];
    float translation[3];
    int rotate;       /* the rotation is not the identity */
    int translate;    /* the translation is not zero */
};

void vk_placement_set(VkPlacement *p, const float *rotation, const float *translation);
/* One definition shared by the reader and the writer, so that both
 * always round the same way. */
void vk_place_point(const VkPlacement *p, const double *local, float *out);

#endif
