/*
 * png_reader.c - PNG images through libpng's simplified interface: every
 * colour type and bit depth, converted to 8-bit RGB or RGBA (with alpha
 * when the file has any, a tRNS chunk included), rows written from the
 * bottom up by a negative row stride.
 */
#include "images.h"

#include <png.h>
#include <stdlib.h>
#include <string.h>

static vkimage *finish_read(png_image *png, const char *name)
{
    if (png->width == 0 || png->height == 0 || png->width > 65535 || png->height > 65535 ||
        (size_t)png->width * png->height > IMAGES_MAX_PIXELS) {
        fprintf(stderr, "png file %s: can't use a picture of %u x %u pixels\n", name, png->width, png->height);
        png_image_free(png);
        return NULL;
    }
    int alpha = (png->format & PNG_FORMAT_FLAG_ALPHA) != 0;
    png->format = alpha ? PNG_FORMAT_RGBA : PNG_FORMAT_RGB;
    size_t depth = alpha ? 4 : 3;
    size_t size = (size_t)png->width * png->height * depth;
    vkimage *image = new_vkimage(name);
    unsigned char *data = image ? (unsigned char *)myalloc((unsigned)size) : NULL;
    if (!data) {
        fprintf(stderr, "png file %s: out of memory\n", name);
        png_image_free(png);
        free_vkimage(image);
        return NULL;
    }
    /* The last row first: a negative stride starts at the buffer's end. */
    png_int_32 stride = -(png_int_32)(png->width * depth);
    if (!png_image_finish_read(png, NULL, data, stride, NULL)) {
        fprintf(stderr, "png file %s: %s\n", name, png->message);
        png_image_free(png);
        myfree(data);
        free_vkimage(image);
        return NULL;
    }
    vk_image_set_dim(image, (int)png->width, (int)png->height, (int)depth);
    vk_image_set_data(image, data);
    return image;
}

vkimage *png_image_from_memory(const unsigned char *bytes, size_t size, const char *name)
{
    png_image png;
    memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&png, bytes, size)) {
        fprintf(stderr, "png file %s: %s\n", name, png.message);
        png_image_free(&png);
        return NULL;
    }
    return finish_read(&png, name);
}

vkimage *png_image_load(const char *filename)
{
    png_image png;
    memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&png, filename)) {
        fprintf(stderr, "png file %s: %s\n", filename, png.message);
        png_image_free(&png);
        return NULL;
    }
    return finish_read(&png, filename);
}
