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

/* libpng sets aside as much memory as a chunk's length field says before
 * it reads the chunk, so a few damaged bytes could ask for gigabytes.
 * Every chunk before IEND must therefore fit in the file; at_offset
 * copies the 8 bytes of a chunk header at an offset, 0 when there are
 * not 8 left. */
typedef int (*ChunkHeaderAt)(void *source, size_t offset, unsigned char header[8]);

static int chunks_fit_in(size_t size, ChunkHeaderAt at_offset, void *source)
{
    size_t offset = 8; /* past the signature */
    unsigned char header[8];
    while (offset < size && at_offset(source, offset, header)) {
        size_t length = ((size_t)header[0] << 24) | ((size_t)header[1] << 16) | ((size_t)header[2] << 8) | header[3];
        if (length > size - offset - 8 || size - offset - 8 - length < 4) return 0;
        if (memcmp(header + 4, "IEND", 4) == 0) return 1;
        offset += 12 + length;
    }
    return 1; /* whatever is left, libpng reports */
}

struct MemorySource {
    const unsigned char *bytes;
    size_t size;
};

static int memory_header_at(void *source, size_t offset, unsigned char header[8])
{
    const struct MemorySource *m = (const struct MemorySource *)source;
    if (offset > m->size || m->size - offset < 8) return 0;
    memcpy(header, m->bytes + offset, 8);
    return 1;
}

static int file_header_at(void *source, size_t offset, unsigned char header[8])
{
    FILE *file = (FILE *)source;
    return fseek(file, (long)offset, SEEK_SET) == 0 && fread(header, 1, 8, file) == 8;
}

static int report_overrun(const char *name)
{
    fprintf(stderr, "png file %s: a chunk runs past the end of the file\n", name);
    return 0;
}

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
    struct MemorySource source = {bytes, size};
    if (size > 8 && !chunks_fit_in(size, memory_header_at, &source)) {
        report_overrun(name);
        return NULL;
    }
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
    FILE *file = fopen(filename, "rb");
    if (file) {
        int fits = fseek(file, 0, SEEK_END) != 0 || ftell(file) <= 8 ||
                   chunks_fit_in((size_t)ftell(file), file_header_at, file);
        fclose(file);
        if (!fits) {
            report_overrun(filename);
            return NULL;
        }
    }
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
