/*
 * Orthographic mapping, grid snapping, zoom, go-to and fit arithmetic,
 * and the 3D camera's steps: all display-free.
 */
#include "test_support.h"
#include "app/shared_state.h"
#include "edit/selection.h"
#include "view/camera.h"
#include "view/view_state.h"

#include <climits>
#include <cmath>

namespace {

void size_views(int width, int height)
{
    init_views();
    for (int v = 0; v < 4; v++) handle_resize(v, width, height);
}

Object *add_box_object(float x0, float y0, float z0, float x1, float y1, float z1)
{
    Object *o = new_object(OBJECT_NORMAL);
    for (int i = 0; i < 8; i++) {
        float p[3] = {(i & 1) ? x1 : x0, (i & 2) ? y1 : y0, (i & 4) ? z1 : z0};
        object_add_new_vertex(o, p);
    }
    object_add_child(world, o);
    return o;
}

}  // namespace

TEST(ViewMapping, PointsMapToWindowPixelsPerView)
{
    size_views(800, 600);
    int x, y;
    const float front[3] = {1, 1, 0}, plan[3] = {1, 0, 1}, side[3] = {0, 1, 1};
    point2xy(front, &x, &y, 0);
    EXPECT_EQ(x, 500);
    EXPECT_EQ(y, 200);
    point2xy(plan, &x, &y, 2);
    EXPECT_EQ(x, 500);
    EXPECT_EQ(y, 400);
    point2xy(side, &x, &y, 1);
    EXPECT_EQ(x, 500);
    EXPECT_EQ(y, 200);

    /* screen2point inverts point2screen. */
    const float p[3] = {0.25f, -1.5f, 2.0f};
    for (int v = 0; v < 3; v++) {
        float s[3], back[3];
        point2screen(p, s, v);
        screen2point(s, back, v);
        for (int i = 0; i < 3; i++) EXPECT_FLOAT_EQ(back[i], p[i]) << "view " << v;
    }

    /* Rounding is trunc(value + 0.5): negative positions round toward
     * zero. */
    views[0].pan[0] = -400.7f;
    const float origin[3] = {0, 0, 0};
    point2xy(origin, &x, &y, 0);
    EXPECT_EQ(x, 0); /* -0.7 + 0.5 = -0.2 truncates to 0 */

    /* point3towin truncates to 16 bits first, then rounds once more. */
    views[0].pan[0] = -403.0f;
    Vertex *vx = new_vertex_set(0, 0, 0);
    point3towin(vx, 0);
    EXPECT_EQ(vx->win_x, -2); /* -3 becomes -2: one pixel nearer zero */
    myfree(vx);
}

TEST(ViewMapping, HugeAndTinyZoomStayInRange)
{
    size_views(800, 600);
    int x, y;
    const float far_point[3] = {1e30f, -1e30f, 0};
    views[0].scale = 1e30f;
    point2xy(far_point, &x, &y, 0);
    EXPECT_GT(x, 0);
    EXPECT_GT(y, 0);
    /* Opposite far points stay far enough inside the int range that their
     * distance, plus a margin, is still an int. */
    const float other_side[3] = {-1e30f, 1e30f, 0};
    int x2, y2;
    point2xy(other_side, &x2, &y2, 0);
    EXPECT_LE((long long)x - x2 + 4096, (long long)INT_MAX);
    EXPECT_LE((long long)y - y2 + 4096, (long long)INT_MAX);
    views[0].scale = INFINITY;
    point2xy(far_point, &x, &y, 0);
    EXPECT_LE((long long)x - x2 + 4096, (long long)INT_MAX);
    EXPECT_EQ(pixel_size(2000000000), 4096);
    EXPECT_EQ(pixel_size(-2147483647 - 1), -4096);
    EXPECT_EQ(pixel_size(7), 7);
    views[0].scale = 1e-30f;
    point2xy(far_point, &x, &y, 0);
    Vertex *vx = new_vertex_set(1e30f, 1e30f, 0);
    views[0].scale = 1e30f;
    point3towin(vx, 0);
    EXPECT_EQ(vx->win_x, 32767);
    myfree(vx);
    handle_resize(0, 0, 0); /* a degenerate window is accepted */
    EXPECT_EQ(views[0].width, 0);
}

TEST(ViewMapping, MouseToPointTakesDepthFromTheCursor)
{
    size_views(800, 600);
    cursor_3d[0] = 7;
    cursor_3d[1] = 8;
    cursor_3d[2] = 9;
    float p[3];
    mouse_to_point(500, 200, 0, p);
    EXPECT_FLOAT_EQ(p[0], 1);
    EXPECT_FLOAT_EQ(p[1], 1);
    EXPECT_FLOAT_EQ(p[2], 9);
    mouse_to_point(500, 200, 1, p);
    EXPECT_FLOAT_EQ(p[2], 1);
    EXPECT_FLOAT_EQ(p[0], 7);
    mouse_to_point(500, 400, 2, p);
    EXPECT_FLOAT_EQ(p[0], 1);
    EXPECT_FLOAT_EQ(p[2], 1);
    EXPECT_FLOAT_EQ(p[1], 8);
    cursor_3d[0] = cursor_3d[1] = cursor_3d[2] = 0;
}

TEST(GridSnap, RoundsToNearestMultipleWithHalvesAwayFromZero)
{
    float p[3] = {0.75f, -0.75f, 0.7f};
    snap_to_grid_float(p, 0.5f, 0.5f, 0.5f);
    EXPECT_FLOAT_EQ(p[0], 1.0f);
    EXPECT_FLOAT_EQ(p[1], -1.0f);
    EXPECT_FLOAT_EQ(p[2], 0.5f);
    float q[3] = {0.3f, 0.0f, -0.3f};
    snap_to_grid_float(q, 0.0f, 1.0f, -1.0f); /* zero or negative spacing leaves the axis */
    EXPECT_FLOAT_EQ(q[0], 0.3f);
    EXPECT_FLOAT_EQ(q[1], 0.0f);
    EXPECT_FLOAT_EQ(q[2], -0.3f);

    float r[3] = {0.26f, 0.0f, 0.0f};
    prefs.gridlock = 0;
    snap_to_grid(r);
    EXPECT_FLOAT_EQ(r[0], 0.26f);
    prefs.gridlock = 1;
    snap_to_grid(r);
    EXPECT_FLOAT_EQ(r[0], 0.3f);
    prefs_set_defaults();
}

TEST(ViewControl, ZoomKeepsTheCentreAndIndependentZoomIsPerView)
{
    size_views(800, 600);
    views[0].pan[0] = 10;
    views[0].pan[1] = 20;
    views[0].pan[2] = 30;
    zoom_in();
    EXPECT_FLOAT_EQ(views[0].scale, 150);
    EXPECT_FLOAT_EQ(views[0].pan[0], 15);
    EXPECT_FLOAT_EQ(views[0].pan[1], 30);
    EXPECT_FLOAT_EQ(views[0].pan[2], 30); /* not an axis of the front view */
    zoom_out();
    EXPECT_FLOAT_EQ(views[0].scale, 100);

    prefs.independent_window_zoom = 1;
    zoom_in_win(1);
    EXPECT_FLOAT_EQ(views[1].scale, 150);
    EXPECT_FLOAT_EQ(views[0].scale, 100);
    zoom_in_win(-1);
    EXPECT_FLOAT_EQ(views[0].scale, 150);
    EXPECT_FLOAT_EQ(views[2].scale, 150);
    prefs_set_defaults();

    move_view(2, 5, 6);
    EXPECT_FLOAT_EQ(views[2].pan[0], 5);
    EXPECT_FLOAT_EQ(views[2].pan[2], 6);
    reset_views();
    for (int v = 0; v < 3; v++) {
        EXPECT_FLOAT_EQ(views[v].scale, 100);
        EXPECT_FLOAT_EQ(views[v].pan[0], 0);
    }
}

TEST(ViewControl, GotoAndFitFollowTheSelection)
{
    size_views(800, 600);
    clear_world_children();
    clear_selection();
    selection.select_mode = SELECT_TREE;
    EXPECT_EQ(fit_selected_all(), 0); /* nothing selected: nothing happens */
    EXPECT_FLOAT_EQ(views[0].scale, 100);

    Object *o = add_box_object(1, 1, 1, 3, 2, 1); /* flat in z */
    select_object(o);
    goto_selected_all();
    int x, y;
    const float centre[3] = {2, 1.5f, 1};
    point2xy(centre, &x, &y, 0);
    EXPECT_EQ(x, 400);
    EXPECT_EQ(y, 300);

    fit_selected_all();
    /* Front: 800/200 = 4, 600/100 = 6 -> 4; plan: 800/200 = 4, depth 0 -> 4;
     * side: width 0, 600/100 = 6 -> 6.  Smallest 4, times 0.8. */
    EXPECT_FLOAT_EQ(views[0].scale, 100 * 4 * 0.8f);
    EXPECT_FLOAT_EQ(views[1].scale, 100 * 4 * 0.8f);
    point2xy(centre, &x, &y, 2);
    EXPECT_EQ(x, 400);
    EXPECT_EQ(y, 300);

    /* A single point leaves the scales and only centres the views. */
    clear_world_children();
    clear_selection();
    Object *dot = new_object(OBJECT_NORMAL);
    const float at[3] = {5, 5, 5};
    object_add_new_vertex(dot, at);
    object_add_child(world, dot);
    select_object(dot);
    float before = views[0].scale;
    fit_selected_all();
    EXPECT_FLOAT_EQ(views[0].scale, before);
    point2xy(at, &x, &y, 0);
    EXPECT_EQ(x, 400);

    const float zero[3] = {0, 0, 0};
    EXPECT_FLOAT_EQ(view_fit_ratio(zero, 0), -1.0f);
    clear_selection();
    clear_world_children();
}

TEST(ViewControl, FitAllUsesTheModelAndTheShownView)
{
    size_views(800, 600);
    clear_world_children();
    EXPECT_EQ(fit_all(), 0); /* fewer than two vertices */
    add_box_object(-1, -1, -4, 1, 1, 4);
    shared_set_string(&viewsetting, "all");
    fit_all();
    /* The plan view shows the 8 units of depth vertically: 600/800 = 0.75
     * is the smallest ratio. */
    EXPECT_FLOAT_EQ(views[0].scale, 100 * 0.75f * 0.8f);
    init_views();
    size_views(800, 600);
    shared_set_string(&viewsetting, "xy");
    fit_all(); /* only the front view counts: 600/200 = 3 */
    EXPECT_FLOAT_EQ(views[0].scale, 100 * 3 * 0.8f);
    shared_set_string(&viewsetting, "all");
    clear_world_children();
}

TEST(Camera, TurnsMovesAndResets)
{
    person_set_spin();
    Person *p = get_person();
    EXPECT_EQ(p->walk, 0);
    EXPECT_FLOAT_EQ(p->location[2], 5.0f);

    person_set_walk();
    p = get_person();
    EXPECT_EQ(p->walk, 1);
    person_move_forward(1.0f);
    EXPECT_FLOAT_EQ(p->location[2], 4.0f);
    person_move_up(0.2f);
    EXPECT_FLOAT_EQ(p->location[1], 0.2f);
    person_turn_left(45.0f);
    EXPECT_NEAR(p->direction[0], -std::sqrt(0.5f), 1e-6);
    EXPECT_NEAR(p->direction[2], -std::sqrt(0.5f), 1e-6);
    EXPECT_FLOAT_EQ(p->yaw, -45.0f);
    float len = std::sqrt(p->direction[0] * p->direction[0] + p->direction[1] * p->direction[1] +
                          p->direction[2] * p->direction[2]);
    EXPECT_NEAR(len, 1.0f, 1e-6);
    person_turn_left(90.0f); /* tan 90: no guard, the direction stays finite */
    EXPECT_TRUE(std::isfinite(p->direction[0]));

    /* Reset in walk mode goes to the init3d location and keeps walking. */
    prefs.init3d_z = 9.0;
    person_reset();
    EXPECT_EQ(p->walk, 1);
    EXPECT_FLOAT_EQ(p->location[2], 9.0f);
    prefs_set_defaults();

    person_set_spin();
    for (int i = 0; i < 3; i++) p->scale *= 1.1f;
    EXPECT_NEAR(p->scale, 1.331f, 1e-6);
    person_set_spin();
}
