/*
 * view/camera_fit.cpp - framing the 3D view: places the viewer so that
 * the selection, or the whole model when nothing is selected, fills the
 * 3D view (command "fit_3d", the 3D view's "h" key, and the fit after a
 * load).  The turn of the model is kept; only where the viewer stands and
 * the spin zoom change.  Display-free: the field of view is worked out
 * from the window size the way the renderer sets up its projection.
 */
#include "view/camera_fit.h"
#include "app/prefs.h"
#include "edit/model_state.h"
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "view/camera.h"
#include "view/redraw.h"
#include "view/view_state.h"

#include <algorithm>
#include <cmath>
#include <cstring>

/* How much of the view the model's bounding sphere may take. */
static const double FILL = 0.9;

struct Bounds {
    double min[3], max[3];
    int empty;
};

static void bounds_add(Bounds *b, const float *p)
{
    for (int i = 0; i < 3; i++) {
        b->min[i] = std::min(b->min[i], (double)p[i]);
        b->max[i] = std::max(b->max[i], (double)p[i]);
    }
    b->empty = 0;
}

static void bounds_add_tree(Bounds *b, Object *root)
{
    for (Object *o : model_walk(root)) {
        if (!o->visible && o != world) continue;
        for (List *v = o->vertices; v; v = v->next) bounds_add(b, ((Vertex *)v->item)->point);
    }
}

/* The box of what is to be framed: the selection, else the model. */
static Bounds framed_bounds(void)
{
    Bounds b = {{HUGE_VAL, HUGE_VAL, HUGE_VAL}, {-HUGE_VAL, -HUGE_VAL, -HUGE_VAL}, 1};
    for (List *v = selection.selected_vertices; v; v = v->next) bounds_add(&b, ((Vertex *)v->item)->point);
    for (List *l = selection.selected_objects; l; l = l->next) bounds_add_tree(&b, (Object *)l->item);
    if (b.empty && world) bounds_add_tree(&b, world);
    return b;
}

/* Half the narrower opening angle of the 3D view, in radians, as the
 * renderer's projection has it. */
static double half_view_angle(void)
{
    int w = views[3].width > 0 ? views[3].width : 1, h = views[3].height > 0 ? views[3].height : 1;
    double aspect = (double)w / (double)h;
    double fovy = (double)(long)((float)prefs.fov_3d / (float)aspect * 10.0f) * 0.1;
    if (!(fovy > 0.5)) fovy = 0.5;
    if (fovy > 179.0) fovy = 179.0;
    double half_v = fovy * M_PI / 360.0;
    double half_h = std::atan(std::tan(half_v) * aspect);
    return std::min(half_v, half_h);
}

/* The sphere last framed and the viewer as the fit left it: while the
 * viewer is untouched, a new size of the 3D view frames it again (the
 * first fit after a load can come before the window has its size). */
static struct {
    int valid;
    double centre[3], radius;
    Person after;
} last_fit;

static void place_viewer(const double *centre, double radius)
{
    double seen = std::sin(half_view_angle()) * FILL;
    Person *p = get_person();
    if (p->walk) {
        /* Step back along the view direction until the sphere fits. */
        double distance = radius / seen;
        float location[3];
        for (int i = 0; i < 3; i++) location[i] = (float)(centre[i] - p->direction[i] * distance);
        person_set_location(location);
    } else {
        /* The eye stays on the z axis at its distance; the model is
         * centred on the offset and zoomed so that the sphere fits. */
        double d = p->location[2] >= 1.0f ? p->location[2] : (prefs.init3d_z >= 1.0 ? prefs.init3d_z : 5.0);
        float location[3] = {0, 0, (float)d};
        float c[3] = {(float)centre[0], (float)centre[1], (float)centre[2]};
        person_set_location(location);
        person_set_offset(c);
        p->scale = (float)std::min(std::max(d * seen / radius, 1e-6), 1e6);
    }
    last_fit.valid = 1;
    for (int i = 0; i < 3; i++) last_fit.centre[i] = centre[i];
    last_fit.radius = radius;
    last_fit.after = *p;
    request_redisplay(3);
}

void fit_3d_view_resized(void)
{
    if (!last_fit.valid) return;
    if (memcmp(get_person(), &last_fit.after, sizeof last_fit.after) != 0) {
        last_fit.valid = 0;
        return;
    }
    double centre[3] = {last_fit.centre[0], last_fit.centre[1], last_fit.centre[2]};
    place_viewer(centre, last_fit.radius);
}

int fit_3d_view(void)
{
    Bounds b = framed_bounds();
    if (b.empty) {
        display_message("fit 3D view - the model is empty");
        return 0;
    }
    double centre[3], radius2 = 0;
    for (int i = 0; i < 3; i++) {
        centre[i] = (b.min[i] + b.max[i]) * 0.5;
        double half = (b.max[i] - b.min[i]) * 0.5;
        radius2 += half * half;
    }
    double radius = std::sqrt(radius2);
    if (!std::isfinite(radius) || !std::isfinite(centre[0] + centre[1] + centre[2])) {
        display_message("fit 3D view - the model's coordinates are not finite numbers");
        return 0;
    }
    /* A single point still gets a view around it. */
    double size = std::fabs(centre[0]) + std::fabs(centre[1]) + std::fabs(centre[2]);
    radius = std::max(radius, 1e-3 * std::max(1.0, size));
    place_viewer(centre, radius);
    display_message("3D view fitted to the %s",
                    selection.selected_objects || selection.selected_vertices ? "selection" : "model");
    return 1;
}
