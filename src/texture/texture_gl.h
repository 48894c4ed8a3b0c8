/*
 * texture/texture_gl.h - OpenGL textures of the texture table (the
 * graphical front end only).
 */
#ifndef VESK_TEXTURE_TEXTURE_GL_H
#define VESK_TEXTURE_TEXTURE_GL_H

#include "vesk.h"

/* Builds the image's GL texture in the current context. */
void texture_build_gl(vkimage *image);
/* Enables texturing with texture id; 0 (texturing left off) when the id
 * has no image to show. */
int texture_bind(int id);

#endif
