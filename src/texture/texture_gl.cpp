/*
 * texture/texture_gl.cpp - OpenGL textures of the texture table: building
 * one from an image (a display list around the upload on OpenGL 1.0,
 * else a texture object), and binding one for drawing.  Both run in the
 * 3D view's context.
 */
#include "texture/texture_gl.h"
#include "texture/texture_table.h"
#include "view/render_gl.h"

#include <GL/glu.h>

#include <cstdlib>
#include <cstring>

static void set_texture_parameters(void)
{
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
}

/* The upload always reads the pixels as RGB, whatever the image's depth.
 * Images of one or two bytes per pixel hold fewer bytes than that reads,
 * so they are handed over in a buffer of the size it needs. */
static void upload(const vkimage *image)
{
    size_t rgb_size = (size_t)image->width * image->height * 3;
    size_t have = (size_t)image->width * image->height * image->depth;
    const unsigned char *pixels = image->data;
    unsigned char *copy = nullptr;
    if (have < rgb_size) {
        copy = (unsigned char *)calloc(rgb_size, 1);
        if (!copy) return;
        memcpy(copy, image->data, have);
        pixels = copy;
    }
    gluBuild2DMipmaps(GL_TEXTURE_2D, image->depth, image->width, image->height, GL_RGB, GL_UNSIGNED_BYTE, pixels);
    free(copy);
}

void texture_build_gl(vkimage *image)
{
    if (!image || !image->data || image->texture_handle) return;
    if (image->width == 0 || image->height == 0 || image->depth < 1 || image->depth > 4) return;
    if (render_state.use_display_lists_for_textures) {
        GLuint list = glGenLists(1);
        if (!list) return;
        set_texture_parameters();
        glNewList(list, GL_COMPILE);
        upload(image);
        glEndList();
        image->texture_handle = list;
        return;
    }
    GLuint name = 0;
    glGenTextures(1, &name);
    if (!name) return;
    debugf("binding texture with index %d\n", (int)name);
    glBindTexture(GL_TEXTURE_2D, name);
    /* Parameters belong to the bound texture object, so they follow the
     * binding. */
    set_texture_parameters();
    upload(image);
    image->texture_handle = name;
}

int texture_bind(int id)
{
    if (id <= 0 || id > texture_highest_id()) return 0;
    vkimage *image = texture_id_to_image(id);
    if (!image || !image->data) return 0;
    /* Images loaded before the 3D view existed are built on first use. */
    if (!image->texture_handle) texture_build_gl(image);
    if (!image->texture_handle) return 0;
    glEnable(GL_TEXTURE_2D);
    if (render_state.use_display_lists_for_textures) {
        glCallList(image->texture_handle);
    } else {
        glBindTexture(GL_TEXTURE_2D, image->texture_handle);
    }
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    return 1;
}
