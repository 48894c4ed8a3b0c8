/*
 * texture/texture_table.h - the table of textures, numbered by texture id
 * from 1 (0 means no texture), and the image record a texture holds.
 *
 * Model files name textures by file name, so the table is also the
 * registry of texture names: a name whose image cannot be read still gets
 * an id when a model names it, so that the model keeps (and saves) it.
 * Images are read by texture_read; until image loaders are registered it
 * reads none.
 */
#ifndef VESK_TEXTURE_TEXTURE_TABLE_H
#define VESK_TEXTURE_TEXTURE_TABLE_H

#include "vesk.h"

struct vkimage {
    uint16_t width;
    uint16_t height;
    uint16_t depth;              /* bytes per pixel: 1, 2, 3 or 4 */
    unsigned char *data;         /* rows from the bottom up, owned */
    uint32_t texture_handle;     /* OpenGL texture once built, 0 before */
    char *name;                  /* the file the image came from, owned */
    int32_t alpha_flags;
};

/* Ids 1 to TEXTURE_SLOTS - 1 are usable. */
enum { TEXTURE_SLOTS = 40 };

vkimage *new_vkimage(const char *name);
void vk_image_set_dim(vkimage *image, int width, int height, int depth);
void vk_image_set_data(vkimage *image, unsigned char *data);
void free_vkimage(vkimage *image);

/* Reads an image file with the loader for its suffix; null if none can. */
vkimage *texture_read(const char *filename);
/* The id whose image has exactly this name, or -1. */
int texture_find_by_name(const char *filename);
/* Loads (or reloads) a texture; its id, or 0 when the image can't be read
 * or the table is full. */
int add_new_texture(const char *filename);
/* The id of the named texture, adding the name (with no image when it
 * can't be read) if the table doesn't have it; 0 only when the table is
 * full.  Used by model readers so that a model keeps its texture names. */
int texture_register_name(const char *filename);
/* Gives the object and its descendants the texture named by filename. */
void object_set_init_texture(Object *object, const char *filename);
vkimage *texture_id_to_image(int id);
const char *texture_id_to_name(int id);
int texture_highest_id(void);

#endif
