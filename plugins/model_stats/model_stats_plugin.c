/*
 * model_stats_plugin.c - the command "model_statistics" and its entry in
 * the Tools menu: counts the model's objects, vertices, surfaces (by
 * kind), lights and textured objects, leaves them as the command result
 * (a Tcl list of names and numbers) and shows them in a message box.
 * Written against vesk.h only.
 */
#include "vesk.h"

#include <stdlib.h>

typedef struct ModelCounts {
    unsigned long objects, groups, lights, textured;
    unsigned long vertices, surfaces, polygons, closed_lines, lines, triangles;
} ModelCounts;

static void count_surfaces(Object *object, ModelCounts *c)
{
    List *surfaces = NULL;
    vk_object_get_contents(object, NULL, &surfaces, NULL);
    for (List *l = surfaces; l; l = l->next) {
        Surface *s = (Surface *)l->item;
        c->surfaces++;
        if (s->surface_kind == SURFACE_LINE) c->lines++;
        else if (s->surface_kind == SURFACE_CLOSED_LINE) c->closed_lines++;
        else c->polygons++;
        if (s->surface_kind == SURFACE_POLYGON && s->num_vertrefs == 3) c->triangles++;
    }
}

static void count_object(Object *object, ModelCounts *c)
{
    int type = vk_object_get_type(object);
    if (type != OBJECT_WORLD) c->objects++;
    if (type == OBJECT_GROUP) c->groups++;
    if (type == OBJECT_LIGHT) c->lights++;
    if (vk_object_has_texture(object)) c->textured++;
    c->vertices += vk_object_get_num_vertices(object);
    count_surfaces(object, c);
}

/* Walks the tree with its own stack: models can be nested far deeper than
 * a recursion would like. */
static int count_model(ModelCounts *c)
{
    size_t size = 64, top = 0;
    Object **stack = malloc(size * sizeof *stack);
    if (!stack) return 0;
    stack[top++] = vk_get_world();
    while (top > 0) {
        Object *o = stack[--top];
        count_object(o, c);
        for (List *l = vk_object_get_childrenlist(o); l; l = l->next) {
            if (top == size) {
                Object **bigger = realloc(stack, 2 * size * sizeof *stack);
                if (!bigger) {
                    free(stack);
                    return 0;
                }
                stack = bigger;
                size *= 2;
            }
            stack[top++] = (Object *)l->item;
        }
    }
    free(stack);
    return 1;
}

static int model_statistics(void)
{
    ModelCounts c = {0};
    if (!count_model(&c)) {
        display_message("model statistics: out of memory");
        return 0;
    }
    command_result_set(NULL);
    command_result_appendf("objects %lu groups %lu lights %lu textured %lu vertices %lu surfaces %lu "
                           "polygons %lu triangles %lu closed_lines %lu lines %lu",
                           c.objects, c.groups, c.lights, c.textured, c.vertices, c.surfaces,
                           c.polygons, c.triangles, c.closed_lines, c.lines);
    windows_message_dialog("Model statistics\n\nobjects: %lu (groups %lu, lights %lu, textured %lu)\n"
                           "vertices: %lu\nsurfaces: %lu\n  polygons: %lu (triangles %lu)\n"
                           "  closed lines: %lu\n  lines: %lu",
                           c.objects, c.groups, c.lights, c.textured, c.vertices, c.surfaces,
                           c.polygons, c.triangles, c.closed_lines, c.lines);
    return 1;
}

int vesk_plugin_init(void)
{
    if (!vk_add_command_none("model_statistics", model_statistics, NULL,
                             "count the model's objects, vertices and surfaces and show them")) {
        return 0;
    }
    vk_add_tools_menu_item("Model statistics", "vesk model_statistics",
                           "count the objects, vertices and surfaces of the model");
    return 1;
}
