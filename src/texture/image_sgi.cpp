/*
 * texture/image_sgi.cpp - the SGI RGB image reader: verbatim and
 * run-length encoded files of one byte per channel and 1 to 4 channels
 * (grey, grey + alpha, RGB, RGBA).  File row 0 is the bottom row, as in
 * vkimage.  Images with alpha record which kinds of alpha they hold in
 * alpha_flags.
 *
 * The whole file is read first, so every offset, length and run is
 * checked against the bytes that are really there.
 */
#include "texture/texture_table.h"

#include <cstdlib>
#include <cstring>

namespace {

const int SGI_MAGIC = 474;
const size_t SGI_HEADER = 512;

struct SgiHeader {
    int rle;
    int bytes_per_channel;
    unsigned xsize, ysize, zsize;
};

unsigned be16(const unsigned char *p) { return (unsigned)p[0] << 8 | p[1]; }
uint32_t be32(const unsigned char *p)
{
    return (uint32_t)p[0] << 24 | (uint32_t)p[1] << 16 | (uint32_t)p[2] << 8 | p[3];
}

int read_header(const unsigned char *bytes, size_t size, SgiHeader *h)
{
    if (size < SGI_HEADER) {
        fprintf(stderr, "rgb file: only %zu bytes, too short for an SGI image\n", size);
        return 0;
    }
    if (be16(bytes) != SGI_MAGIC) {
        fprintf(stderr, "rgb file: not an SGI image (magic %u)\n", be16(bytes));
        return 0;
    }
    h->rle = bytes[2] == 0x01;
    h->bytes_per_channel = bytes[3];
    h->xsize = be16(bytes + 6);
    h->ysize = be16(bytes + 8);
    h->zsize = be16(bytes + 10);
    /* One-dimensional images store one row and say nothing of the rest. */
    if (be16(bytes + 4) == 1) h->ysize = 1, h->zsize = 1;
    if (be16(bytes + 4) == 2) h->zsize = 1;
    if (h->bytes_per_channel != 1) {
        fprintf(stderr, "rgb file: %d bytes per channel, only 1 can be read\n", h->bytes_per_channel);
        return 0;
    }
    if (bytes[2] > 1) {
        fprintf(stderr, "rgb file: unknown storage type %d\n", bytes[2]);
        return 0;
    }
    if (h->xsize == 0 || h->ysize == 0 || h->zsize < 1 || h->zsize > 4) {
        fprintf(stderr, "rgb file: can't use an image of %u x %u pixels with %u channels\n", h->xsize,
                h->ysize, h->zsize);
        return 0;
    }
    if ((size_t)h->xsize * h->ysize > TEXTURE_MAX_PIXELS) {
        fprintf(stderr, "rgb file: an image of %u x %u pixels is too large\n", h->xsize, h->ysize);
        return 0;
    }
    return 1;
}

/* Where each channel row of the file is: a pointer and a length. */
struct RowSource {
    const unsigned char *bytes;
    size_t size;
    const SgiHeader *h;
    const unsigned char *table; /* the two RLE tables, or null */
};

/* Decodes one run-length row into out (xsize bytes); 0 on bad data. */
int decode_rle_row(const unsigned char *in, size_t length, unsigned char *out, unsigned xsize, unsigned row)
{
    unsigned x = 0;
    size_t i = 0;
    while (i < length) {
        unsigned char b = in[i++];
        unsigned count = b & 0x7F;
        if (count == 0) break;
        if (count > xsize - x) {
            fprintf(stderr, "rgb file: a run of row %u goes past the end of the row\n", row);
            return 0;
        }
        if (b & 0x80) {
            if (count > length - i) {
                fprintf(stderr, "rgb file: row %u ends inside a run\n", row);
                return 0;
            }
            memcpy(out + x, in + i, count);
            i += count;
        } else {
            if (i >= length) {
                fprintf(stderr, "rgb file: row %u ends inside a run\n", row);
                return 0;
            }
            memset(out + x, in[i++], count);
        }
        x += count;
    }
    /* A short row keeps zeros at its end. */
    if (x < xsize) memset(out + x, 0, xsize - x);
    return 1;
}

/* Reads row y of channel z into out; 0 on bad data. */
int read_row(const RowSource &src, unsigned y, unsigned z, unsigned char *out)
{
    const SgiHeader &h = *src.h;
    size_t index = y + (size_t)z * h.ysize;
    if (!src.table) {
        size_t start = SGI_HEADER + index * h.xsize;
        if (start + h.xsize > src.size) {
            fprintf(stderr, "rgb file: the file ends before row %u of channel %u\n", y, z);
            return 0;
        }
        memcpy(out, src.bytes + start, h.xsize);
        return 1;
    }
    size_t entries = (size_t)h.ysize * h.zsize;
    uint32_t offset = be32(src.table + index * 4);
    uint32_t length = be32(src.table + (entries + index) * 4);
    if (offset > src.size || length > src.size - offset) {
        fprintf(stderr, "rgb file: row %u of channel %u lies past the end of the file\n", y, z);
        return 0;
    }
    return decode_rle_row(src.bytes + offset, length, out, h.xsize, y);
}

void update_alpha_flags(vkimage *image, unsigned char alpha)
{
    if (alpha == 255) image->alpha_flags |= 1;
    else if (alpha == 0) image->alpha_flags |= 2;
    else image->alpha_flags |= 16;
}

/* Reads every row of every channel into the image's pixels. */
int read_pixels(const RowSource &src, vkimage *image, unsigned char *rows)
{
    const SgiHeader &h = *src.h;
    unsigned depth = h.zsize;
    for (unsigned y = 0; y < h.ysize; y++) {
        for (unsigned z = 0; z < depth; z++) {
            if (!read_row(src, y, z, rows + (size_t)z * h.xsize)) return 0;
        }
        unsigned char *out = image->data + (size_t)y * h.xsize * depth;
        for (unsigned x = 0; x < h.xsize; x++) {
            for (unsigned z = 0; z < depth; z++) *out++ = rows[(size_t)z * h.xsize + x];
        }
        if (depth == 2 || depth == 4) {
            const unsigned char *alpha = rows + (size_t)(depth - 1) * h.xsize;
            for (unsigned x = 0; x < h.xsize; x++) update_alpha_flags(image, alpha[x]);
        }
    }
    return 1;
}

} // namespace

vkimage *rgb_image_from_memory(const unsigned char *bytes, size_t size, const char *name)
{
    SgiHeader h;
    if (!read_header(bytes, size, &h)) return nullptr;
    RowSource src = {bytes, size, &h, nullptr};
    if (h.rle) {
        size_t entries = (size_t)h.ysize * h.zsize;
        if (SGI_HEADER + entries * 8 > size) {
            fprintf(stderr, "rgb file: the file ends inside its row tables\n");
            return nullptr;
        }
        src.table = bytes + SGI_HEADER;
    } else if (SGI_HEADER + (size_t)h.xsize * h.ysize * h.zsize > size) {
        fprintf(stderr, "rgb file: the file is too short for %u x %u pixels\n", h.xsize, h.ysize);
        return nullptr;
    }
    debugf("raw image depth %d", (int)h.zsize);
    vkimage *image = new_vkimage(name);
    unsigned char *rows = (unsigned char *)malloc((size_t)h.xsize * 4);
    /* Room for one more row and column, as the format's own reader keeps. */
    size_t pixels = ((size_t)h.xsize + 1) * ((size_t)h.ysize + 1) * 4;
    unsigned char *data = image && rows ? (unsigned char *)myalloc((unsigned)pixels) : nullptr;
    if (!data) {
        fprintf(stderr, "Out of memory!\n");
        free(rows);
        free_vkimage(image);
        return nullptr;
    }
    vk_image_set_dim(image, (int)h.xsize, (int)h.ysize, (int)h.zsize);
    vk_image_set_data(image, data);
    int ok = read_pixels(src, image, rows);
    free(rows);
    if (!ok) {
        free_vkimage(image);
        return nullptr;
    }
    return image;
}

vkimage *RGBImageLoad(const char *filename)
{
    size_t size = 0;
    unsigned char *bytes = texture_file_read_all(filename, &size);
    if (!bytes) {
        fprintf(stderr, "error opening rgb file\n");
        return nullptr;
    }
    vkimage *image = rgb_image_from_memory(bytes, size, filename);
    free(bytes);
    if (!image) fprintf(stderr, "error opening rgb file\n");
    return image;
}
