/*
 * core/lights.h - light objects and the list of lights that the 3D view
 * enables each frame.
 */
#ifndef VESK_CORE_LIGHTS_H
#define VESK_CORE_LIGHTS_H

#include "vesk.h"

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
