/*
 * edit/surface_ops_create.cpp - making a surface from the selected
 * vertices and removing the selected surfaces.
 */
#include "edit/surface_ops.h"
#include "edit/surface_ops_batch.h"
#include "edit/selection.h"
#include "edit/undo.h"

/* The surface over the selected vertices, in their own object when they
 * all belong to it, else in a new object of copies; *made_object tells
 * which. */
static Surface *surface_from_selected(Object **owner_out, int *made_object)
{
    *made_object = 0;
    *owner_out = nullptr;
    if (!selection.selected_vertices) {
        console_printf("No vertices selected\n");
        return nullptr;
    }
    Object *owner = object_of_vertex(world, (Vertex *)selection.selected_vertices->item);
    PointerTable members;
    if (owner) {
        for (List *v = owner->vertices; v; v = v->next) ptable_set(&members, v->item, 1);
    }
    int foreign = 0;
    for (List *v = selection.selected_vertices; v; v = v->next) {
        if (owner && ptable_value(&members, v->item)) continue;
        console_printf("all vertices are not in same object - creating new object for surface\n");
        foreign = 1;
    }
    Surface *s = new_surface();
    RefAppender refs = ref_appender_start(s);
    ObjectAppender append;
    if (!foreign) {
        for (List *v = selection.selected_vertices; v; v = v->next) ref_append(&refs, (Vertex *)v->item, 0.0f, 0.0f);
        object_add_surface(owner, s);
    } else {
        /* Vertices cannot be shared between objects: the new object holds
         * copies. */
        owner = new_object(OBJECT_NORMAL);
        appender_start(&append, owner);
        for (List *v = selection.selected_vertices; v; v = v->next) {
            Vertex *copy = vertex_clone((Vertex *)v->item);
            appender_add_vertex(&append, copy);
            ref_append(&refs, copy, 0.0f, 0.0f);
        }
        appender_add_surface(&append, s);
        object_add_child(world, owner);
        *made_object = 1;
    }
    object_calc_normals_force(owner);
    *owner_out = owner;
    return s;
}

Surface *create_surface_from_selected(void)
{
    Object *owner;
    int made_object;
    return surface_from_selected(&owner, &made_object);
}

int create_surface(void)
{
    Object *owner;
    int made_object;
    Surface *s = surface_from_selected(&owner, &made_object);
    if (!s) {
        display_message("create surface - no vertices selected");
        return 0;
    }
    if (made_object) {
        new_undo(UNDO_ADD_OBJECT, "new object");
        set_undo_object(owner);
    } else {
        new_undo(UNDO_ADD_SURFACE, "add surface");
        set_undo_surface(s);
    }
    model_changed_redraw_all();
    display_status();
    display_message("surface created with %u vertices", (unsigned)s->num_vertrefs);
    return 1;
}

int remove_surface(void)
{
    std::vector<OwnedSurface> whole = whole_selected_surfaces();
    if (whole.empty()) {
        display_message("remove surface - no surfaces selected");
        return 0;
    }
    new_undo(UNDO_REMOVE_SURFACE, "remove surface");
    set_undo_all();
    SurfaceEdits edits;
    for (const OwnedSurface &w : whole) edit_drop_surface(edits_for(&edits, w.object), w.surface);
    edits_finish(&edits);
    /* The vertices keep the normals of surfaces that are gone. */
    for (ObjectEdit *e : edits.edits) object_calc_vertex_normals(e->object);
    model_changed_redraw_all();
    display_status();
    display_message("surfaces removed: %d", (int)whole.size());
    return 1;
}
