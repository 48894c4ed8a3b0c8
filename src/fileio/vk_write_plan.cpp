/*
 * fileio/vk_write_plan.cpp - see vk_write_plan.h.
 */
#include "fileio/vk_write_plan.h"

#include <cmath>
#include <cstring>
#include <vector>

static const float identity3[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

/* The inverse of a Matrix3 (column by column) in double; 0 when it has
 * none. */
static int invert(const float *m, double *inv)
{
    double a = m[0], b = m[3], c = m[6];
    double d = m[1], e = m[4], f = m[7];
    double g = m[2], h = m[5], i = m[8];
    double A = e * i - f * h, B = -(d * i - f * g), C = d * h - e * g;
    double det = a * A + b * B + c * C;
    if (det == 0.0 || !std::isfinite(det)) return 0;
    double r[3][3] = {{A, -(b * i - c * h), b * f - c * e},
                      {B, a * i - c * g, -(a * f - c * d)},
                      {C, -(a * h - b * g), a * e - b * d}};
    for (int row = 0; row < 3; row++) {
        for (int col = 0; col < 3; col++) inv[col * 3 + row] = r[row][col] / det;
    }
    return 1;
}

static void apply(const double *m, const double *p, double *out)
{
    double x = p[0], y = p[1], z = p[2];
    out[0] = m[0] * x + m[3] * y + m[6] * z;
    out[1] = m[1] * x + m[4] * y + m[7] * z;
    out[2] = m[2] * x + m[5] * y + m[8] * z;
}

static int same_value(float a, float b)
{
    if (std::isnan(a) && std::isnan(b)) return 1;
    return memcmp(&a, &b, sizeof a) == 0;
}

/* The sign of a zero centre is not kept (0 + -0 is +0). */
static int same_centre(const float *a, const float *b)
{
    for (int i = 0; i < 3; i++) {
        if (a[i] == 0.0f && b[i] == 0.0f) continue;
        if (!same_value(a[i], b[i])) return 0;
    }
    return 1;
}

void vk_plan_local(const VkObjectPlan *plan, const float *point, double *local)
{
    double p[3] = {point[0], point[1], point[2]};
    if (plan->placement.translate) {
        for (int i = 0; i < 3; i++) p[i] -= plan->placement.translation[i];
    }
    if (plan->placement.rotate) {
        apply(plan->inverse, p, local);
        return;
    }
    memcpy(local, p, sizeof p);
}

int vk_plan_reads_back(const VkObjectPlan *plan, const double *local, const float *point)
{
    float back[3];
    vk_place_point(&plan->placement, local, back);
    return same_value(back[0], point[0]) && same_value(back[1], point[1]) && same_value(back[2], point[2]);
}

/* Sets the plan's frame: the rotation aimed at, and either the object's
 * centre or (keep_centre 0) a translation of zero. */
static int set_frame(Object *o, const float *rp, const float *cp, const float *target, int keep_centre,
                     VkObjectPlan *plan)
{
    double parent_inverse[9];
    int parent_turns = !matrix_is_identity(rp);
    if (parent_turns && !invert(rp, parent_inverse)) return 0;
    if (!parent_turns || matrix_is_identity(target) || memcmp(target, rp, 9 * sizeof(float)) == 0) {
        /* The reader's product is then exactly the rotation aimed at (or
         * the parent's). */
        matrix_copy(parent_turns ? identity3 : target, plan->rotation_written);
    } else {
        /* Close is the best there is: the vertices are checked anyway. */
        double t[9];
        for (int col = 0; col < 3; col++) {
            double column[3] = {target[col * 3], target[col * 3 + 1], target[col * 3 + 2]};
            apply(parent_inverse, column, &t[col * 3]);
        }
        for (int k = 0; k < 9; k++) plan->rotation_written[k] = (float)t[k];
    }
    matrix_multiply(rp, plan->rotation_written, plan->rotation_as_read);
    double offset[3];
    for (int i = 0; i < 3; i++) offset[i] = keep_centre ? (double)o->centre[i] - cp[i] : -(double)cp[i];
    if (parent_turns) apply(parent_inverse, offset, plan->location_written);
    else memcpy(plan->location_written, offset, sizeof offset);
    float t[3];
    frame_location_to_global(rp, cp, plan->location_written, t);
    for (int i = 0; i < 3; i++) plan->centre_as_read[i] = 0.0f + t[i];
    vk_placement_set(&plan->placement, plan->rotation_as_read, t);
    if (plan->placement.rotate && !invert(plan->rotation_as_read, plan->inverse)) return 0;
    return !keep_centre || same_centre(plan->centre_as_read, o->centre);
}

static int vertices_read_back(Object *o, const VkObjectPlan *plan)
{
    for (List *l = o->vertices; l; l = l->next) {
        const float *p = ((Vertex *)l->item)->point;
        double local[3];
        vk_plan_local(plan, p, local);
        if (!vk_plan_reads_back(plan, local, p)) return 0;
    }
    return 1;
}

static int try_frame(Object *o, const float *rp, const float *cp, const float *target, int keep_centre,
                     VkObjectPlan *plan)
{
    return set_frame(o, rp, cp, target, keep_centre, plan) && vertices_read_back(o, plan);
}

/* The frame aimed at first, then without the rotation, then the exact
 * identity (t = 0). */
static void plan_with_target(Object *o, const float *rp, const float *cp, const float *target, VkObjectPlan *plan)
{
    plan->exact = 1;
    if (try_frame(o, rp, cp, target, 1, plan)) return;
    if (!matrix_is_identity(target) && try_frame(o, rp, cp, identity3, 1, plan)) return;
    if (try_frame(o, rp, cp, identity3, 0, plan)) return;
    plan->exact = 0;
}

FramedObject framed_object(Object *o, const float *parent_rotation, const float *parent_centre)
{
    FramedObject f;
    f.object = o;
    memcpy(f.parent_rotation, parent_rotation, sizeof f.parent_rotation);
    memcpy(f.parent_centre, parent_centre, sizeof f.parent_centre);
    return f;
}

/* Can o keep its rotation and centre with every object below it still
 * reading back exactly?  Objects below are tried without rotations of
 * their own where they have children, which is always at least as good
 * as what they will get. */
static int subtree_reads_back(Object *o, const float *rp, const float *cp)
{
    VkObjectPlan plan;
    if (!try_frame(o, rp, cp, o->rotation, 1, &plan)) return 0;
    std::vector<FramedObject> stack;
    for (List *k = o->kids; k; k = k->next) {
        stack.push_back(framed_object((Object *)k->item, plan.rotation_as_read, plan.centre_as_read));
    }
    while (!stack.empty()) {
        FramedObject p = stack.back();
        stack.pop_back();
        VkObjectPlan below;
        plan_with_target(p.object, p.parent_rotation, p.parent_centre, p.object->kids ? identity3 : p.object->rotation, &below);
        if (!below.exact) return 0;
        for (List *k = p.object->kids; k; k = k->next) {
            stack.push_back(framed_object((Object *)k->item, below.rotation_as_read, below.centre_as_read));
        }
    }
    return 1;
}

void vk_plan_object(Object *o, const float *rp, const float *cp, VkObjectPlan *plan)
{
    const float *target = o->rotation;
    if (o->kids && !matrix_is_identity(target) && !subtree_reads_back(o, rp, cp)) target = identity3;
    plan_with_target(o, rp, cp, target, plan);
}
