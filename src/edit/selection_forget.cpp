/*
 * edit/selection_forget.cpp - the selection after deletions: objects and
 * vertices the model no longer holds are dropped from the selection's
 * lists, in one walk of the model.
 */
#include "edit/object_ops.h"
#include "edit/selection.h"

static List *keep_live(List *list, const PointerTable *live)
{
    List *kept = nullptr, *tail = nullptr;
    for (List *l = list; l; l = l->next) {
        if (ptable_get(live, l->item, nullptr)) tail = list_add_item_fast(&kept, tail, l->item);
    }
    return kept;
}

/* The vertices of the list that some object of the model still holds. */
static List *keep_live_vertices(List *vertices)
{
    PointerTable owners;
    for (List *v = vertices; v; v = v->next) ptable_set_if_absent(&owners, v->item, 0);
    find_vertex_owners(&owners);
    List *kept = nullptr, *tail = nullptr;
    for (List *v = vertices; v; v = v->next) {
        if (ptable_value(&owners, v->item)) tail = list_add_item_fast(&kept, tail, v->item);
    }
    return kept;
}

void selection_forget_dead(void)
{
    int mode = selection.select_mode;
    List *vertices, *objects;
    selection_take_lists(&vertices, &objects);
    PointerTable live;
    find_live_objects(&live);
    List *live_objects = keep_live(objects, &live);
    List *live_vertices = keep_live_vertices(vertices);
    list_free(&vertices);
    list_free(&objects);
    selection.select_mode = mode;
    selection_adopt_lists(live_vertices, live_objects);
    /* The current object and the box follow the lists again. */
    select_objectlist(nullptr);
}
