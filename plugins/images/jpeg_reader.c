/*
 * jpeg_reader.c - JPEG images through libjpeg(-turbo): grey, YCbCr and
 * RGB files converted to 8-bit RGB, rows written from the bottom up.
 * Library errors come back here by longjmp; a file that ends early (the
 * library's warning) is refused rather than shown half grey, and so is a
 * Huffman-coded file far too short for the size its header claims, before
 * any memory is taken for the picture.
 */
#include "images.h"

#include <jpeglib.h>
#include <jerror.h>
#include <setjmp.h>
#include <stdlib.h>
#include <string.h>

struct JpegError {
    struct jpeg_error_mgr manager;
    jmp_buf escape;
    int premature_end;
};

static void on_error(j_common_ptr cinfo)
{
    struct JpegError *e = (struct JpegError *)cinfo->err;
    longjmp(e->escape, 1);
}

static void on_message(j_common_ptr cinfo, int level)
{
    struct JpegError *e = (struct JpegError *)cinfo->err;
    /* Level -1 is a warning about damaged data. */
    if (level < 0 && cinfo->err->msg_code == JWRN_JPEG_EOF) e->premature_end = 1;
}

static void report(j_common_ptr cinfo, const char *name)
{
    char text[JMSG_LENGTH_MAX];
    cinfo->err->format_message(cinfo, text);
    fprintf(stderr, "jpeg file %s: %s\n", name, text);
}

/* Huffman coding spends at least a bit on every 8x8 block's DC value, so
 * a file of size bytes holds at most 512 pixels a byte of one component;
 * twice that leaves room for any subsampling.  Arithmetic coding has no
 * such floor. */
static int size_can_hold(const struct jpeg_decompress_struct *cinfo, size_t size)
{
    if (cinfo->arith_code) return 1;
    size_t pixels = (size_t)cinfo->image_width * cinfo->image_height;
    size_t need = pixels / 1024;
    return need <= 64 || need - 64 <= size;
}

/* Decodes into image; returns 0 with a message on any failure.  size is
 * the file's length in bytes. */
static int decode(struct jpeg_decompress_struct *cinfo, struct JpegError *error, vkimage *image, const char *name,
                  size_t size)
{
    unsigned char *volatile data = NULL;
    if (setjmp(error->escape)) {
        report((j_common_ptr)cinfo, name);
        myfree(data);
        return 0;
    }
    jpeg_read_header(cinfo, TRUE);
    /* Bound what the library itself may take for a progressive file. */
    cinfo->mem->max_memory_to_use = 512L * 1024 * 1024;
    if (cinfo->jpeg_color_space == JCS_CMYK || cinfo->jpeg_color_space == JCS_YCCK) {
        fprintf(stderr, "jpeg file %s: CMYK pictures can't be used as textures\n", name);
        return 0;
    }
    unsigned w = cinfo->image_width, h = cinfo->image_height;
    if (w == 0 || h == 0 || w > 65535 || h > 65535 || (size_t)w * h > IMAGES_MAX_PIXELS) {
        fprintf(stderr, "jpeg file %s: can't use a picture of %u x %u pixels\n", name, w, h);
        return 0;
    }
    if (!size_can_hold(cinfo, size)) {
        fprintf(stderr, "jpeg file %s: %lu bytes can't hold a picture of %u x %u pixels\n", name,
                (unsigned long)size, w, h);
        return 0;
    }
    cinfo->out_color_space = JCS_RGB;
    jpeg_start_decompress(cinfo);
    data = (unsigned char *)myalloc((unsigned)((size_t)w * h * 3));
    if (!data) {
        fprintf(stderr, "jpeg file %s: out of memory\n", name);
        return 0;
    }
    while (cinfo->output_scanline < h) {
        JSAMPROW row = data + (size_t)(h - 1 - cinfo->output_scanline) * w * 3;
        jpeg_read_scanlines(cinfo, &row, 1);
    }
    jpeg_finish_decompress(cinfo);
    if (error->premature_end) {
        fprintf(stderr, "jpeg file %s: the file ends before the picture does\n", name);
        myfree(data);
        return 0;
    }
    vk_image_set_dim(image, (int)w, (int)h, 3);
    vk_image_set_data(image, data);
    return 1;
}

static vkimage *read_jpeg(FILE *file, const unsigned char *bytes, size_t size, const char *name)
{
    struct jpeg_decompress_struct cinfo;
    struct JpegError error;
    memset(&error, 0, sizeof error);
    cinfo.err = jpeg_std_error(&error.manager);
    error.manager.error_exit = on_error;
    error.manager.emit_message = on_message;
    vkimage *image = new_vkimage(name);
    if (!image) return NULL;
    if (setjmp(error.escape)) {
        report((j_common_ptr)&cinfo, name);
        jpeg_destroy_decompress(&cinfo);
        free_vkimage(image);
        return NULL;
    }
    jpeg_create_decompress(&cinfo);
    if (file) jpeg_stdio_src(&cinfo, file);
    else jpeg_mem_src(&cinfo, bytes, (unsigned long)size);
    int ok = decode(&cinfo, &error, image, name, size);
    jpeg_destroy_decompress(&cinfo);
    if (!ok) {
        free_vkimage(image);
        return NULL;
    }
    return image;
}

vkimage *jpeg_image_from_memory(const unsigned char *bytes, size_t size, const char *name)
{
    if (size == 0) {
        fprintf(stderr, "jpeg file %s: empty\n", name);
        return NULL;
    }
    return read_jpeg(NULL, bytes, size, name);
}

vkimage *jpeg_image_load(const char *filename)
{
    FILE *file = fopen(filename, "rb");
    if (!file) {
        fprintf(stderr, "jpeg file %s: can't open it\n", filename);
        return NULL;
    }
    size_t size = (size_t)-1; /* unknown: no bound */
    if (fseek(file, 0, SEEK_END) == 0) {
        long end = ftell(file);
        if (end > 0) size = (size_t)end;
        rewind(file);
    }
    vkimage *image = read_jpeg(file, NULL, size, filename);
    fclose(file);
    return image;
}
