/*
 * view/camera.h - the viewer of the 3D view (the "person"): spin mode
 * turns the model in front of a fixed eye, walk mode moves the eye
 * through the scene.  Display-free; the renderer reads the record.
 */
#ifndef VESK_VIEW_CAMERA_H
#define VESK_VIEW_CAMERA_H

/* The calls offered to plug-ins (vk_person_...) are declared in vesk.h. */
#include "vesk.h"

struct Person {
    float location[3];
    float pitch, yaw, roll;
    float direction[3];
    float rotation[3];        /* spin mode: the model's turn, degrees */
    float spin_velocity[3];   /* vertical and horizontal deltas of a thrown spin */
    float scale;              /* spin-mode zoom */
    float key_move_step;
    float key_turn_step;
    int walk;                 /* 0 spin, 1 walk; linked as person_walk_vehicle */
    float offset[3];
    float start_direction[3];
    float spare;
    float walk_start[3];
};

Person *get_person(void);
int person_set_walk(void);
int person_set_spin(void);
void person_reset(void);
void person_turn_left(float deg);
void person_turn_right(float deg);
void person_turn_up(float deg);
void person_turn_down(float deg);
void person_move_left(float d);
void person_move_right(float d);
void person_move_forward(float d);
void person_move_back(float d);
void person_move_up(float d);
void person_move_down(float d);
void person_set_offset(const float *v);
void person_zero_offset(void);
void person_set_location(const float *v);

#endif
