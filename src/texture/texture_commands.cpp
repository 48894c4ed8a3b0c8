/*
 * texture/texture_commands.cpp - giving textures to the selection: load
 * and set, set by id, switch off, repeat factors (with undo), and the
 * texture file dialog.
 */
#include "texture/texture_table.h"
#include "edit/object_ops.h"
#include "edit/selection.h"
#include "edit/undo.h"
#include "view/redraw.h"

#include <vector>

/* Calls f on each selected object and, when deep, on its descendants. */
template <typename F> static void for_selected_objects(int deep, F f)
{
    for (List *l = selection.selected_objects; l; l = l->next) {
        std::vector<Object *> pending(1, (Object *)l->item);
        while (!pending.empty()) {
            Object *o = pending.back();
            pending.pop_back();
            f(o);
            if (!deep) continue;
            for (List *k = o->kids; k; k = k->next) pending.push_back((Object *)k->item);
        }
    }
}

int texture_set(int id)
{
    if (id < 0 || id > texture_highest_id()) {
        display_message("there is no texture %d", id);
        return 0;
    }
    for_selected_objects(1, [id](Object *o) { o->texture = (uint8_t)id; });
    edit_mark_changed();
    redraw_3d();
    return 1;
}

int selected_texture_off(void)
{
    /* The objects themselves: their children keep their textures. */
    for_selected_objects(0, [](Object *o) { o->texture = 0; });
    edit_mark_changed();
    redraw_3d();
    return 1;
}

int load_and_set_new_texture(const char *filename)
{
    int id = add_new_texture(filename);
    if (id != 0) texture_set(id);
    return id;
}

int command_add_new_texture(char *filename)
{
    int id = add_new_texture(filename);
    command_result_appendf("%d", id);
    return id != 0;
}

int command_load_and_set_new_texture(char *filename)
{
    int id = load_and_set_new_texture(filename);
    command_result_appendf("%d", id);
    return id != 0;
}

int file_select_texture(void)
{
    const char **filters = texture_filters_new();
    if (!filters) return 0;
    const char *chosen = vk_get_open_filename("Load a texture", filters);
    texture_filters_free(filters);
    if (!chosen || !*chosen) return 0;
    /* The interpreter's result changes under the load: keep a copy. */
    char *name = mystrdup(chosen);
    int id = name ? load_and_set_new_texture(name) : 0;
    myfree(name);
    return id != 0;
}

int selected_set_texture_repeats(float x, float y)
{
    if (!selection.selected_objects) {
        display_message("texture repeats - nothing selected");
        return 0;
    }
    new_undo(UNDO_SNAPSHOT, "texture repeats");
    set_undo_all();
    for_selected_objects(1, [x, y](Object *o) { object_set_texture_repeat(o, x, y); });
    edit_mark_changed();
    redraw_3d();
    display_message("texture repeats %g %g set", x, y);
    return 1;
}
