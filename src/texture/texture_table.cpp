/*
 * texture/texture_table.cpp - the texture table (see texture_table.h).
 * Ids are never reused or removed; reloading a texture keeps its id.
 */
#include "texture/texture_table.h"
#include "app/frontend.h"
#include "app/tcl_bridge.h"

#include <cstring>
#include <vector>

static vkimage *textures[TEXTURE_SLOTS];
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
    image->width = (uint16_t)width;
    image->height = (uint16_t)height;
    image->depth = (uint16_t)depth;
}

void vk_image_set_data(vkimage *image, unsigned char *data)
{
    image->data = data;
}

void free_vkimage(vkimage *image)
{
    if (!image) return;
    myfree(image->data);
    myfree(image->name);
    myfree(image);
}

vkimage *texture_read(const char *)
{
    /* No image loaders are registered in this build. */
    return nullptr;
}

int texture_find_by_name(const char *filename)
{
    if (!filename) return -1;
    for (int id = 1; id <= highest_id; id++) {
        if (textures[id] && strcmp(textures[id]->name, filename) == 0) return id;
    }
    return -1;
}

/* Adds an entry to the Texture menu.  The name comes from a model file,
 * so it is passed as one word and never evaluated. */
static void texture_menu_add(const char *name, int id)
{
    if (!frontend.has_tk || !tcl_interp) return;
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

/* Stores image under a new id; 0 when the table is full. */
static int texture_add_image(vkimage *image)
{
    if (highest_id + 1 >= TEXTURE_SLOTS) {
        console_printf("the texture table is full (%d textures) - can't add %s\n", TEXTURE_SLOTS - 1,
                       image->name);
        free_vkimage(image);
        return 0;
    }
    textures[++highest_id] = image;
    texture_menu_add(image->name, highest_id);
    return highest_id;
}

int add_new_texture(const char *filename)
{
    if (!filename) return 0;
    int id = texture_find_by_name(filename);
    if (id < 0) {
        vkimage *image = texture_read(filename);
        return image ? texture_add_image(image) : 0;
    }
    debugf("reloading texture\n");
    vkimage *image = texture_read(filename);
    if (!image) return id;
    /* The old image stays allocated: a drawing may still refer to it. */
    textures[id] = image;
    return id;
}

int texture_register_name(const char *filename)
{
    if (!filename) return 0;
    int id = add_new_texture(filename);
    if (id > 0) return id;
    id = texture_find_by_name(filename);
    if (id > 0) return id;
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
    int id = add_new_texture(filename);
    if (id == 0) {
        fprintf(stderr, "can't assign texture %s\n", filename);
        /* The model keeps the name even without an image. */
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
