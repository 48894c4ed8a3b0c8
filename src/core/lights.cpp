/*
 * core/lights.cpp - light records and the list of lights.  A light is an
 * object of type OBJECT_LIGHT whose record continues with the light
 * parameters; the list holds every light of the model in tree order.
 */
#include "core/lights.h"

List *lights_list = nullptr;

Light *new_light_record(void)
{
    Light *l = (Light *)myalloc(sizeof(Light));
    l->light_type = LIGHT_POINT;
    const float ambient[4] = {0, 0, 0, 1}, white[4] = {1, 1, 1, 1};
    for (int i = 0; i < 4; i++) {
        l->ambient[i] = ambient[i];
        l->diffuse[i] = white[i];
        l->specular[i] = white[i];
    }
    l->direction[0] = 0.0f;
    l->direction[1] = 0.0f;
    l->direction[2] = -1.0f;
    l->spot_exponent = 0.0f;
    l->spot_cutoff = 45.0f;
    return l;
}

Object *new_light(void)
{
    return new_object(OBJECT_LIGHT);
}

int object_is_light(Object *object)
{
    return object && object->type == OBJECT_LIGHT;
}

void register_light(Object *light)
{
    list_add_item(&lights_list, light);
}

void unregister_light(Object *light)
{
    list_remove_item(&lights_list, light);
}

static void collect_lights(Object *object, List **list)
{
    if (object_is_light(object)) list_add_item(list, object);
    for (List *k = object->kids; k; k = k->next) collect_lights((Object *)k->item, list);
}

List *find_lights(void)
{
    List *found = nullptr;
    if (world) collect_lights(world, &found);
    return found;
}

List *scan_lights(void)
{
    list_free(&lights_list);
    lights_list = find_lights();
    return lights_list;
}

List *vk_get_lights_list(void)
{
    return lights_list;
}
