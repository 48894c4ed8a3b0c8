/*
 * view/camera.cpp - the viewer record and its turn and move steps (see
 * camera.h).  The walk flag is the storage of the linked Tcl variable
 * person_walk_vehicle.
 */
#include "view/camera.h"
#include "app/linked_vars.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "vesk.h"

#include <cmath>

static Person person = {
    {0, 0, 5}, 0, 0, 0, {0, 0, -1}, {0, 0, 0}, {0, 0, 0}, 1.0f, 0.2f, 5.0f,
    0,         {0, 0, 0}, {0, 0, -1}, 0, {0, 0, 5},
};

Person *get_person(void)
{
    person.walk = person_walk_vehicle;
    return &person;
}

int vk_person_is_walk_vehicle(void) { return person_walk_vehicle; }

static void copy3(float *dst, const float *src)
{
    for (int i = 0; i < 3; i++) dst[i] = src[i];
}

static void zero3(float *v) { v[0] = v[1] = v[2] = 0.0f; }

/* Resets everything but the location and the walk flag. */
static void person_clear_motion(void)
{
    copy3(person.direction, person.start_direction);
    person.scale = 1.0f;
    person.pitch = person.yaw = person.roll = 0.0f;
    zero3(person.rotation);
    zero3(person.spin_velocity);
    zero3(person.offset);
}

int person_set_walk(void)
{
    person_walk_vehicle = person.walk = 1;
    copy3(person.location, person.walk_start);
    person_clear_motion();
    ui_update_linked_var(&person_walk_vehicle);
    return 1;
}

static void set_init_location(void)
{
    person.location[0] = (float)prefs.init3d_x;
    person.location[1] = (float)prefs.init3d_y;
    person.location[2] = (float)prefs.init3d_z;
}

int person_set_spin(void)
{
    person_walk_vehicle = person.walk = 0;
    set_init_location();
    person_clear_motion();
    ui_update_linked_var(&person_walk_vehicle);
    return 1;
}

void person_reset(void)
{
    set_init_location();
    person_clear_motion();
}

void vk_person_set_rotation(const float *r) { copy3(person.rotation, r); }

void vk_person_add_rotation(const float *r)
{
    for (int i = 0; i < 3; i++) person.rotation[i] += r[i];
}

void vk_person_scale_mult(float f) { person.scale *= f; }
void vk_person_scale_div(float f) { person.scale /= f; }

static void normalise_direction(void)
{
    float *d = person.direction;
    double len = std::sqrt((double)d[0] * d[0] + (double)d[1] * d[1] + (double)d[2] * d[2]);
    if (len == 0.0 || !std::isfinite(len)) return;
    for (int i = 0; i < 3; i++) d[i] = (float)(d[i] / len);
}

static float tan_deg(float deg) { return (float)std::tan(deg * 3.14159265358979323846 / 180.0); }

/* D += sign * t * (dz, 0, -dx): the horizontal sideways vector. */
static void turn_sideways(float deg, float sign)
{
    float *d = person.direction;
    float t = tan_deg(deg) * sign;
    float side[3] = {d[2], 0.0f, -d[0]};
    for (int i = 0; i < 3; i++) d[i] += t * side[i];
    normalise_direction();
}

/* D += sign * t * (dx*dy, -(dx^2 + dz^2), dy*dz): the downward vector. */
static void turn_vertical(float deg, float sign)
{
    float *d = person.direction;
    float t = tan_deg(deg) * sign;
    float down[3] = {d[0] * d[1], -(d[0] * d[0] + d[2] * d[2]), d[1] * d[2]};
    for (int i = 0; i < 3; i++) d[i] += t * down[i];
    normalise_direction();
}

void person_turn_left(float deg)
{
    debugf("person_turn_left %f\n", deg);
    turn_sideways(deg, 1.0f);
    person.yaw -= deg;
}

void person_turn_right(float deg)
{
    debugf("person_turn_right %f\n", deg);
    turn_sideways(deg, -1.0f);
    person.yaw += deg;
}

void person_turn_down(float deg)
{
    debugf("person_turn_down %f\n", deg);
    turn_vertical(deg, 1.0f);
    person.pitch += deg;
}

void person_turn_up(float deg)
{
    debugf("person_turn_up %f\n", deg);
    turn_vertical(deg, -1.0f);
    person.pitch -= deg;
}

static void move_sideways(float d)
{
    const float *dir = person.direction;
    person.location[0] += d * dir[2];
    person.location[2] += d * -dir[0];
}

void person_move_left(float d)
{
    debugf("person_move_left %f\n", d);
    move_sideways(d);
}

void person_move_right(float d)
{
    debugf("person_move_right %f\n", d);
    move_sideways(-d);
}

void person_move_forward(float d)
{
    debugf("person_move_forward %f\n", d);
    for (int i = 0; i < 3; i++) person.location[i] += d * person.direction[i];
}

void person_move_back(float d)
{
    debugf("person_move_back %f\n", d);
    for (int i = 0; i < 3; i++) person.location[i] -= d * person.direction[i];
}

void person_move_up(float d)
{
    debugf("person_move_up %f\n", d);
    person.location[1] += d;
}

void person_move_down(float d)
{
    debugf("person_move_down %f\n", d);
    person.location[1] -= d;
}

void person_set_offset(const float *v) { copy3(person.offset, v); }
void person_zero_offset(void) { zero3(person.offset); }
void person_set_location(const float *v) { copy3(person.location, v); }
