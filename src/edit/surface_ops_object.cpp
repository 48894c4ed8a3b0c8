/*
 * edit/surface_ops_object.cpp - moving the selected surfaces into a new
 * object: the selection is copied into new objects, then the whole
 * selected surfaces and the vertices they leave unused are deleted from
 * their old objects.
 */
#include "edit/surface_ops.h"
#include "edit/surface_ops_batch.h"
#include "edit/selection.h"
#include "edit/object_ops.h"

/* Deletes the selected vertices that no surface of their object uses any
 * more (objects left with nothing in them go too). */
static void delete_unused_selected_vertices(void)
{
    List *owners = owners_of_vertices(selection.selected_vertices);
    List *unused = nullptr, *tail = nullptr;
    for (List *l = owners; l; l = l->next) {
        Object *o = (Object *)l->item;
        PointerTable used;
        for (List *s = o->surfaces; s; s = s->next) {
            for (List *r = ((Surface *)s->item)->vertrefs; r; r = r->next) ptable_set(&used, ((SVertex *)r->item)->vertex, 1);
        }
        for (List *v = o->vertices; v; v = v->next) {
            if (vertex_is_selected((Vertex *)v->item) && !ptable_value(&used, v->item)) {
                tail = list_add_item_fast(&unused, tail, v->item);
            }
        }
    }
    delete_vertices(unused, nullptr);
    list_free(&unused);
    list_free(&owners);
}

int selected_surfaces_create_object(void)
{
    display_message("making object...");
    std::vector<OwnedSurface> whole = whole_selected_surfaces();
    List *made = clone_selected(1);
    if (!made) {
        display_message("make object - nothing selected");
        return 0;
    }
    SurfaceEdits edits;
    for (const OwnedSurface &w : whole) edit_drop_surface(edits_for(&edits, w.object), w.surface);
    edits_finish(&edits);
    if (selection.selected_vertices) delete_unused_selected_vertices();
    clear_selection();
    for (List *l = made; l; l = l->next) {
        Object *o = (Object *)l->item;
        object_calc_normals_force(o);
        object_add_child(world, o);
    }
    select_objectlist(made);
    list_free(&made);
    find_bounding_box();
    selection_publish_counts();
    model_changed_redraw_all();
    display_message("new object created");
    display_status();
    return 1;
}
