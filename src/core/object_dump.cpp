/*
 * object_dump.cpp - the consistency dump: prints the object hierarchy
 * with counted list lengths and warns where a count kept beside a list
 * disagrees with the list.
 */
#include "vesk.h"
#include "core/internal.h"
#include "edit/selection.h"

static int total_objects, total_surfaces, total_vertices;

static void print_indent(int depth)
{
    for (int i = 0; i < depth; i++) console_printf("    ");
}

static void dump_surfaces(Object *object, int depth)
{
    int i = 0;
    for (List *s = object->surfaces; s; s = s->next, i++) {
        Surface *sf = (Surface *)s->item;
        unsigned int refs = list_count(sf->vertrefs);
        print_indent(depth);
        console_printf("surface %d has %d vertex refs\n", i, (int)refs);
        if (refs != sf->num_vertrefs) {
            print_indent(depth);
            console_printf("**** warning - surface numvert count is different to number of "
                           "actual vert - tell Orlo!\n");
        }
    }
}

static void dump_object(Object *object, int depth)
{
    unsigned int nv = list_count(object->vertices);
    unsigned int ns = list_count(object->surfaces);
    unsigned int nk = list_count(object->kids);
    int selected = list_index(selection.selected_objects, object) != LIST_NOT_FOUND ||
                   list_index(selection.part_selected_objects, object) != LIST_NOT_FOUND;
    print_indent(depth);
    console_printf("Object \"%s\", 0x%lX, v %d, s %d, kids %d, parent 0x%lX %s",
                   object == world ? "WORLD" : (object->name ? object->name : ""),
                   (unsigned long)(uintptr_t)object, (int)nv, (int)ns, (int)object->num_kids,
                   (unsigned long)(uintptr_t)object->parent, selected ? "*\n" : "\n");
    if (nv != object->num_vert) {
        console_printf("**** warning - numvert count is different to number of actual vertices - "
                       "tell Orlo!\n");
    }
    if (ns != object->num_surf) {
        console_printf("**** warning - numsurface count is different to number of actual surfaces "
                       "- tell Orlo!\n");
    }
    if (nk != object->num_kids) {
        console_printf("**** warning - numchildren count is different to number of actual "
                       "children - tell Orlo!\n");
    }
    if (debug_flag) dump_surfaces(object, depth);
    total_objects++;
    total_vertices += (int)nv;
    total_surfaces += (int)ns;
    for (List *k = object->kids; k; k = k->next) dump_object((Object *)k->item, depth + 1);
}

void list_objects(void)
{
    total_objects = total_surfaces = total_vertices = 0;
    console_printf("\nObject hierarchy:\n");
    if (world) dump_object(world, 0);
    console_printf("\nObjects: %d   Surfaces: %d   Vertices: %d\n", total_objects, total_surfaces,
                   total_vertices);
}
