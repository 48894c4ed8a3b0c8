/*
 * fileio/vk_write_plan.h - where the model file writer puts each object's
 * frame ("rot" and "loc") and its vertices, so that the reader gives back
 * the same global vertex positions bit for bit.
 *
 * The reader places an object at its "kids" line: rotation = parent
 * rotation * "rot", translation t = parent centre + parent rotation *
 * "loc", centre = t, and each vertex p = rotation * local + t, formed in
 * double from the coordinates as written and rounded once (see
 * vk_placement.h).  The writer therefore writes local = rotation^-1 *
 * (p - t), worked out in double and printed so that it reads back as
 * exactly that double.  For an unrotated object p - t is exact in double
 * unless the coordinates are more than 2^29 apart in magnitude, and then
 * (p - t) + t rounds back to p exactly.  Rather than trust that, the writer
 * replays the reader's arithmetic on every vertex; if any vertex (or the
 * centre) would not come back exactly, the object is written with a frame
 * on which the reader's transform is an exact identity: no rotation and a
 * location that cancels the parent's centre (t = 0), with the vertices in
 * global coordinates.  Only the object's own centre is then not kept.
 *
 * Below a rotated object no child can be given an identity frame, so an
 * object with children keeps a rotation other than the identity only when
 * every object below it still reads back exactly; otherwise its rotation
 * is written as the identity (its children keep their own).
 */
#ifndef VESK_FILEIO_VK_WRITE_PLAN_H
#define VESK_FILEIO_VK_WRITE_PLAN_H

#include "fileio/vk_placement.h"

struct VkObjectPlan {
    float rotation_written[9];    /* "rot" (no line when the identity) */
    double location_written[3];   /* "loc" (no line when zero) */
    VkPlacement placement;        /* what the reader applies to vertices */
    double inverse[9];            /* inverse of the placement's rotation */
    float rotation_as_read[9];    /* the rotation the reader will store */
    float centre_as_read[3];      /* the centre the reader will store */
    int exact;                    /* every vertex comes back exactly */
};

/* Plans object o whose parent the reader will have placed with the given
 * rotation and centre. */
void vk_plan_object(Object *o, const float *parent_rotation, const float *parent_centre, VkObjectPlan *plan);

/* An object waiting on a depth-first walk, with the frame its parent will
 * have when the file is read back. */
struct FramedObject {
    Object *object;
    float parent_rotation[9];
    float parent_centre[3];
};

FramedObject framed_object(Object *o, const float *parent_rotation, const float *parent_centre);
/* The coordinates to write for a vertex at point. */
void vk_plan_local(const VkObjectPlan *plan, const float *point, double *local);
/* 1 when the reader, given local, stores exactly point. */
int vk_plan_reads_back(const VkObjectPlan *plan, const double *local, const float *point);

#endif
