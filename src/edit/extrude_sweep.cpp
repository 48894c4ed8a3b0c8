/*
 * edit/extrude_sweep.cpp - the sweep shared by the extrusions (see
 * extrude_internal.h).  The surface copies of the intermediate copies are
 * only needed to make the next links, so each is freed as soon as those
 * are made; only the last is kept, as the end cap.
 */
#include "edit/extrude_internal.h"
#include "edit/primitive_append.h"

void free_surface_list(List **surfaces)
{
    for (List *s = *surfaces; s; s = s->next) surface_free((Surface *)s->item);
    list_free(surfaces);
}

static int is_line(const Surface *s)
{
    return s->surface_kind == SURFACE_CLOSED_LINE || s->surface_kind == SURFACE_LINE;
}

int sweep_size_ok(Object *object, long copies, const char *what)
{
    double total = (double)copies * (double)object->num_vert;
    if (copies <= EXTRUDE_MAX_COPIES && total <= (double)EXTRUDE_MAX_NEW_VERTICES) return 1;
    console_printf("%s: %ld copies of the %u vertices of object \"%s\" would be too many - object left as it was\n",
                   what, copies, (unsigned)object->num_vert, object->name ? object->name : "");
    return 0;
}

void sweep_make_links(Object *object, Sweep *sweep, int keep_end_cap, int close_on_source)
{
    size_t n = sweep->copies.size();
    sweep->links.assign(n, nullptr);
    sweep->end_cap = nullptr;
    List *previous = nullptr; /* surface copies on copy i - 1 */
    for (size_t i = 0; i < n; i++) {
        List *on_copy = copy_surfacelist(object->surfaces, object->vertices, sweep->copies[i]);
        if (i == 0) {
            sweep->links[0] = create_link_surfaces(object->surfaces, object->vertices, sweep->copies[0]);
        } else if (close_on_source && i == n - 1) {
            sweep->links[i] = create_link_surfaces(previous, sweep->copies[i - 1], object->vertices);
        } else {
            sweep->links[i] = create_link_surfaces(previous, sweep->copies[i - 1], sweep->copies[i]);
        }
        free_surface_list(&previous);
        previous = on_copy;
    }
    if (keep_end_cap) sweep->end_cap = previous;
    else free_surface_list(&previous);
}

void remove_line_surfaces(Object *object)
{
    List **link = &object->surfaces;
    while (*link) {
        List *node = *link;
        Surface *s = (Surface *)node->item;
        if (!is_line(s)) {
            link = &node->next;
            continue;
        }
        *link = node->next;
        myfree(node);
        object->num_surf--;
        surface_free(s);
    }
}

void sweep_add_to_object(Object *object, Sweep *sweep)
{
    ObjectAppender append;
    appender_start(&append, object);
    size_t n = sweep->copies.size();
    for (size_t i = 0; i < n; i++) {
        appender_add_vertices(&append, sweep->copies[i]);
        list_free(&sweep->copies[i]);
        if (i == n - 1) {
            for (List *s = sweep->end_cap; s; s = s->next) {
                Surface *cap = (Surface *)s->item;
                /* The end faces away from the start. */
                if (remove_extruded_lines && is_line(cap)) {
                    surface_free(cap);
                    continue;
                }
                list_reverse(&cap->vertrefs);
                appender_add_surface(&append, cap);
            }
            list_free(&sweep->end_cap);
        }
        for (List *s = sweep->links[i]; s; s = s->next) appender_add_surface(&append, (Surface *)s->item);
        list_free(&sweep->links[i]);
    }
}
