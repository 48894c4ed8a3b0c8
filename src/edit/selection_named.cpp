/*
 * edit/selection_named.cpp - selection by object name: selecting and
 * unselecting every visible object with a given name through the object
 * rule (so in tree mode a nested name selects its top ancestor), and the
 * depth-first search for an object by name.  Names compare byte for byte,
 * case-sensitively.
 */
#include "edit/selection_internal.h"
#include "view/redraw.h"

#include <cstring>

static int name_matches(Object *o, const char *name)
{
    return o->name && strcmp(o->name, name) == 0;
}

static void select_named_walk(const char *name, Object *o)
{
    if (o != world && name_matches(o, name) && o->visible && !ilist_contains(&selected_object_index, o)) {
        select_rule(o);
    }
    for (List *k = o->kids; k; k = k->next) select_named_walk(name, (Object *)k->item);
}

static void unselect_named_walk(const char *name, Object *o)
{
    if (o != world && name_matches(o, name) && o->visible) unselect_rule(o);
    for (List *k = o->kids; k; k = k->next) unselect_named_walk(name, (Object *)k->item);
}

void select_named(const char *name, Object *object)
{
    if (!name || !object) return;
    select_named_walk(name, object);
    update_current_object();
    find_bounding_box();
}

void unselect_named(const char *name, Object *object)
{
    if (!name || !object) return;
    unselect_named_walk(name, object);
    sweep_selection_removals();
    update_current_object();
    find_bounding_box();
}

int select_by_name(char *name)
{
    select_named(name, world);
    redraw_all();
    display_status();
    selection_publish_counts();
    return 1;
}

int unselect_by_name(char *name)
{
    unselect_named(name, world);
    redraw_all();
    display_status();
    selection_publish_counts();
    return 1;
}

Object *find_named_object(const char *name, Object *start)
{
    if (!name) return nullptr;
    if (!start) start = world;
    if (!start) return nullptr;
    if (name_matches(start, name)) return start;
    for (List *k = start->kids; k; k = k->next) {
        Object *found = find_named_object(name, (Object *)k->item);
        if (found) return found;
    }
    return nullptr;
}
