/*
 * images.h - the PNG and JPEG texture plug-in: its two readers, each over
 * a file or bytes in memory.  Images come out as 8-bit RGB (depth 3), or
 * RGBA (depth 4) when the file has alpha, rows from the bottom up.
 */
#ifndef VESK_PLUGIN_IMAGES_H
#define VESK_PLUGIN_IMAGES_H

#include "vesk.h"

/* The largest picture the readers accept, in pixels (the same bound the
 * program's own readers keep). */
#define IMAGES_MAX_PIXELS (64u * 1024u * 1024u)

vkimage *png_image_load(const char *filename);
vkimage *png_image_from_memory(const unsigned char *bytes, size_t size, const char *name);
vkimage *jpeg_image_load(const char *filename);
vkimage *jpeg_image_from_memory(const unsigned char *bytes, size_t size, const char *name);

#endif
