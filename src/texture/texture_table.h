/*
 * texture/texture_table.h - the table of textures, numbered by texture id
 * from 1 (0 means no texture), the loader registry that reads images by
 * file suffix, and the commands that give textures to the selection.
 *
 * Model files name textures by file name, so the table is also the
 * registry of texture names: a name whose image cannot be read still gets
 * an id when a model names it, so that the model keeps (and saves) it.
 * Such an entry has no pixels and is never drawn.
 *
 * OpenGL textures are built in the 3D view's context.  The headless shell
 * has none: its images stay unbuilt (texture_handle 0) and the graphical
 * front end builds an image the first time it draws it.
 */
#ifndef VESK_TEXTURE_TEXTURE_TABLE_H
#define VESK_TEXTURE_TEXTURE_TABLE_H

#include "vesk.h"

/* Ids 1 to TEXTURE_SLOTS - 1 are usable. */
enum { TEXTURE_SLOTS = 40 };

/* The largest image any reader accepts, in pixels: a file claiming more
 * is refused before anything is allocated for it. */
enum { TEXTURE_MAX_PIXELS = 64 * 1024 * 1024 };

/* What the graphical front end supplies; both unset in the shell. */
struct TextureGl {
    /* Makes the 3D view's GL context current (initialising it when it
     * is new); 0 when there is none yet. */
    int (*make_3d_current)(void);
    /* Builds the image's GL texture in the current context. */
    void (*build)(vkimage *image);
};
extern TextureGl texture_gl;

/* The id whose image has exactly this name, or -1. */
int texture_find_by_name(const char *filename);
/* The id of the named texture, adding the name (with no image when it
 * can't be read) if the table doesn't have it; 0 only when the table is
 * full.  Used by model readers so that a model keeps its texture names. */
int texture_register_name(const char *filename);
/* Gives the object and its descendants the texture named by filename. */
void object_set_init_texture(Object *object, const char *filename);
vkimage *texture_id_to_image(int id);
int texture_highest_id(void);
/* Adds the Texture menu entry "vesk set_texture <id>" labelled name. */
void create_texture_menubutton(const char *name, int id);
/* Builds the GL texture of an image when a 3D view exists. */
void texture_build(vkimage *image);
/* 1 for 2, 4, 8, ...; 0 for everything else. */
int is_power_of_2(int n);

/* ---- loaders (texture_loaders.cpp) ---- */

/* The registry, newest first. */
extern List *texture_loaders;
void register_builtin_texture_loaders(void);
/* The suffix of a file name as texture_read sees it (from the last dot,
 * which may not be the last character), or null. */
const char *texture_file_suffix(const char *filename);
/* The open-file dialog's filter array for the registered loaders: pairs
 * of texts ended by a null description.  Free with texture_filters_free. */
const char **texture_filters_new(void);
void texture_filters_free(const char **filters);

/* ---- the built-in readers ---- */

vkimage *RGBImageLoad(const char *filename);
vkimage *GIFImageLoad(const char *filename);
vkimage *BMPImageLoad(const char *filename);
/* The same readers over bytes in memory (name only labels the image). */
vkimage *rgb_image_from_memory(const unsigned char *bytes, size_t size, const char *name);
vkimage *gif_image_from_memory(const unsigned char *bytes, size_t size, const char *name);
vkimage *bmp_image_from_memory(const unsigned char *bytes, size_t size, const char *name);
/* Reads a whole file into a buffer from malloc; null when it can't (or
 * it is larger than any image file could need to be). */
unsigned char *texture_file_read_all(const char *filename, size_t *size);

/* ---- commands (texture_commands.cpp) ---- */

int load_and_set_new_texture(const char *filename);
int texture_set(int id);
int selected_texture_off(void);
int file_select_texture(void);
int selected_set_texture_repeats(float x, float y);
int command_add_new_texture(char *filename);
int command_load_and_set_new_texture(char *filename);

#endif
