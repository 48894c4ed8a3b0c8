/*
 * core/lights.h - light objects and the list of lights that the 3D view
 * enables each frame.
 */
#ifndef VESK_CORE_LIGHTS_H
#define VESK_CORE_LIGHTS_H

#include "vesk.h"

/* The kinds of light a Light's light_type holds. */
enum {
    LIGHT_INFINITE = 1, /* parallel rays along its direction */
    LIGHT_POINT = 2,    /* from its centre in every direction */
    LIGHT_SPOT = 3,     /* from its centre along its direction, in a cone */
};

extern List *lights_list;

/* A zeroed light record with the light defaults; new_object fills the
 * common object fields. */
Light *new_light_record(void);
Object *new_light(void);
int object_is_light(Object *object);
void register_light(Object *light);
void unregister_light(Object *light);
List *scan_lights(void);
List *find_lights(void);

#endif
