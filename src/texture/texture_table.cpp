/*
 * texture/texture_table.cpp - the texture table (see texture_table.h).
 * Ids are never reused or removed; reloading a texture keeps its id.
 */
#include "texture/texture_table.h"
#include "app/frontend.h"
#include "app/tcl_bridge.h"
#include "view/redraw.h"

#include <cassert>
#include <cstring>
#include <vector>

TextureGl texture_gl;

static vkimage *textures[TEXTURE_SLOTS];
/* Images replaced by a reload (a plain list: it must outlive the static
 * destructors, as the images it holds do). */
static List *retired_images = nullptr;
static int highest_id = 0;

int texture_highest_id(void) { return highest_id; }

vkimage *new_vkimage(const char *name)
{
    vkimage *image = (vkimage *)myalloc(sizeof(vkimage));
    if (!image) {
        fprintf(stderr, "can't allocate memory for image\n");
        return nullptr;
    }
    memset(image, 0, sizeof *image);
    image->name = mystrdup(name ? name : "");
    return image;
}

void vk_image_set_dim(vkimage *image, int width, int height, int depth)
{
    if (!image) return;
    image->width = (uint16_t)width;
    image->height = (uint16_t)height;
    image->depth = (uint16_t)depth;
}

void vk_image_set_data(vkimage *image, unsigned char *data)
{
    if (image) image->data = data;
}

void free_vkimage(vkimage *image)
{
    if (!image) return;
    myfree(image->data);
    myfree(image->name);
    myfree(image);
}

int is_power_of_2(int n)
{
    return n >= 2 && (n & (n - 1)) == 0;
}

int texture_find_by_name(const char *filename)
{
    if (!filename) return -1;
    for (int id = 1; id <= highest_id; id++) {
        if (textures[id] && textures[id]->name && strcmp(textures[id]->name, filename) == 0) return id;
    }
    return -1;
}

void texture_build(vkimage *image)
{
    if (!image) return;
    if (image->texture_handle != 0) {
        console_printf("!!!!!!!!!!!!!!!! texture internal index already set to %d!\n", (int)image->texture_handle);
        return;
    }
    /* Without a 3D view the image is built when a view first draws it. */
    if (!image->data || !texture_gl.build || !texture_gl.make_3d_current) return;
    if (!texture_gl.make_3d_current()) return;
    texture_gl.build(image);
}

/* Adds the Texture menu entry of a new id (and before the first, a
 * separator).  The name comes from a model file or a dialog, so it goes to
 * Tk as one word and is never evaluated. */
void create_texture_menubutton(const char *name, int id)
{
    if (!frontend.has_tk || !tcl_interp || !name) return;
    if (id == 1) tcl_command(".mbar.object.menu.texture add separator");
    char command[64];
    snprintf(command, sizeof command, "vesk set_texture %d", id);
    const char *words[] = {".mbar.object.menu.texture", "add", "command", "-label", name, "-command", command};
    std::vector<Tcl_Obj *> objs;
    for (const char *w : words) {
        objs.push_back(Tcl_NewStringObj(w, -1));
        Tcl_IncrRefCount(objs.back());
    }
    if (Tcl_EvalObjv(tcl_interp, (int)objs.size(), objs.data(), TCL_EVAL_GLOBAL) != TCL_OK) {
        tcl_trace_error("texture menu");
    }
    for (Tcl_Obj *o : objs) Tcl_DecrRefCount(o);
}

static int table_full(const char *filename)
{
    if (highest_id + 1 < TEXTURE_SLOTS) return 0;
    windows_message_dialog("There is no room for another texture (%d are loaded), so %s was not added.",
                           TEXTURE_SLOTS - 1, filename);
    return 1;
}

/* Stores image under a new id and announces it. */
static int texture_add_image(vkimage *image)
{
    /* Callers test table_full first; the table is never written past. */
    assert(highest_id + 1 < TEXTURE_SLOTS);
    if (highest_id + 1 >= TEXTURE_SLOTS) {
        free_vkimage(image);
        return 0;
    }
    textures[++highest_id] = image;
    texture_build(image);
    create_texture_menubutton(image->name, highest_id);
    return highest_id;
}

int add_new_texture(const char *filename)
{
    if (!filename) return 0;
    int id = texture_find_by_name(filename);
    if (id < 0) {
        if (table_full(filename)) return 0;
        vkimage *image = texture_read(filename);
        return image ? texture_add_image(image) : 0;
    }
    debugf("reloading texture\n");
    vkimage *image = texture_read(filename);
    if (!image) {
        /* A name kept without an image is no texture to fall back on. */
        return textures[id]->data ? id : 0;
    }
    /* The old image is kept, never freed: a kept frame or a drawing may
     * still refer to it or to its GL texture. */
    list_add_item_head(&retired_images, textures[id]);
    textures[id] = image;
    texture_build(image);
    redraw_3d();
    return id;
}

int texture_register_name(const char *filename)
{
    if (!filename) return 0;
    int id = texture_find_by_name(filename);
    if (id > 0) return id;
    if (table_full(filename)) return 0;
    vkimage *image = new_vkimage(filename);
    return image ? texture_add_image(image) : 0;
}

static void object_set_texture_recursive(Object *object, int id)
{
    std::vector<Object *> pending(1, object);
    while (!pending.empty()) {
        Object *o = pending.back();
        pending.pop_back();
        o->texture = (uint8_t)id;
        for (List *k = o->kids; k; k = k->next) pending.push_back((Object *)k->item);
    }
}

void object_set_init_texture(Object *object, const char *filename)
{
    if (!object || !filename) return;
    int id = add_new_texture(filename);
    if (id == 0) {
        fprintf(stderr, "can't assign texture %s\n", filename);
        /* The model keeps the name, so that saving it does not drop the
         * reference while the image is missing. */
        id = texture_register_name(filename);
        if (id == 0) return;
    }
    object_set_texture_recursive(object, id);
}

vkimage *texture_id_to_image(int id)
{
    if (id == 0) {
        console_printf("texture id 0 invalid - in texture_id_to_image\n");
        return nullptr;
    }
    if (id < 0 || id > highest_id) return nullptr;
    return textures[id];
}

const char *texture_id_to_name(int id)
{
    vkimage *image = (id > 0 && id <= highest_id) ? textures[id] : nullptr;
    if (!image) {
        console_printf("invalid texture id passed to texture_id_to_name (%d)\n", id);
        return nullptr;
    }
    return image->name;
}
