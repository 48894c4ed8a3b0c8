/*
 * texture/image_bmp.cpp - the Windows bitmap reader: a device-independent
 * bitmap read into 24-bit RGB rows from the bottom up (depth 3).  It
 * takes the headers that common tools write (OS/2 core, and the Windows
 * info header up to version 5), palettes of 1, 4 and 8 bits, 16, 24 and
 * 32 bits with or without bit-field masks, top-down rows and the RLE4 and
 * RLE8 encodings.  Alpha is dropped.
 *
 * The whole file is read first; the header's sizes are checked against
 * it before anything is allocated.
 */
#include "texture/texture_table.h"

#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

enum { BI_RGB = 0, BI_RLE8 = 1, BI_RLE4 = 2, BI_BITFIELDS = 3, BI_ALPHABITFIELDS = 6 };

struct Dib {
    int width, height;
    int top_down;
    int bits;
    int compression;
    uint32_t masks[3];
    std::vector<unsigned char> palette; /* r, g, b per entry */
    size_t pixels_at;
};

uint32_t le32(const unsigned char *p)
{
    return p[0] | (uint32_t)p[1] << 8 | (uint32_t)p[2] << 16 | (uint32_t)p[3] << 24;
}
unsigned le16(const unsigned char *p) { return p[0] | (unsigned)p[1] << 8; }

int bad_format(const char *why)
{
    fprintf(stderr, "Unknown DIB file format. (%s)\n", why);
    return 0;
}

int read_palette(const unsigned char *bytes, size_t size, size_t at, size_t entries, int entry_size, Dib *d)
{
    if (at > size || entries > (size - at) / entry_size) return bad_format("the palette runs past the end of the file");
    d->palette.resize(entries * 3);
    for (size_t i = 0; i < entries; i++) {
        const unsigned char *p = bytes + at + i * entry_size;
        d->palette[i * 3] = p[2];
        d->palette[i * 3 + 1] = p[1];
        d->palette[i * 3 + 2] = p[0];
    }
    return 1;
}

void default_masks(Dib *d)
{
    if (d->bits == 16) d->masks[0] = 0x7C00, d->masks[1] = 0x03E0, d->masks[2] = 0x001F;
    else d->masks[0] = 0xFF0000, d->masks[1] = 0xFF00, d->masks[2] = 0xFF;
}

int read_info(const unsigned char *bytes, size_t size, Dib *d)
{
    if (size < 18 || bytes[0] != 'B' || bytes[1] != 'M') return bad_format("no BM signature");
    d->pixels_at = le32(bytes + 10);
    uint32_t header = le32(bytes + 14);
    if (header < 12 || header > size - 14) return bad_format("bad header size");
    const unsigned char *h = bytes + 14;
    size_t colours = 0;
    int entry_size = 4;
    if (header == 12) {
        d->width = (int)le16(h + 4);
        d->height = (int)(int16_t)le16(h + 6);
        d->bits = (int)le16(h + 10);
        d->compression = BI_RGB;
        entry_size = 3;
    } else {
        if (header < 40) return bad_format("unknown header size");
        d->width = (int32_t)le32(h + 4);
        d->height = (int32_t)le32(h + 8);
        d->bits = (int)le16(h + 14);
        d->compression = (int)le32(h + 16);
        colours = le32(h + 32);
    }
    d->top_down = d->height < 0;
    if (d->top_down) d->height = d->height == INT32_MIN ? 0 : -d->height;
    default_masks(d);
    if (d->compression == BI_BITFIELDS || d->compression == BI_ALPHABITFIELDS) {
        /* The masks follow a 40-byte header, or are part of a longer one. */
        size_t at = 14 + 40;
        if (at + 12 > size) return bad_format("the bit-field masks are missing");
        for (int i = 0; i < 3; i++) d->masks[i] = le32(bytes + at + 4 * i);
        if (d->bits != 16 && d->bits != 32) return bad_format("bit fields need 16 or 32 bits");
    }
    if (d->width <= 0 || d->height <= 0) {
        fprintf(stderr, "Unknown DIB file format. (a bitmap of %d x %d pixels)\n", d->width, d->height);
        return 0;
    }
    if (d->width > 65535 || d->height > 65535 || (size_t)d->width * d->height > TEXTURE_MAX_PIXELS) {
        fprintf(stderr, "bmp file: a bitmap of %d x %d pixels is too large\n", d->width, d->height);
        return 0;
    }
    int bits = d->bits;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32) {
        return bad_format("unknown bit depth");
    }
    int c = d->compression;
    if (!(c == BI_RGB || (c == BI_RLE8 && bits == 8) || (c == BI_RLE4 && bits == 4) || c == BI_BITFIELDS ||
          c == BI_ALPHABITFIELDS)) {
        return bad_format("unknown compression");
    }
    if (bits <= 8) {
        size_t most = (size_t)1 << bits;
        if (colours == 0 || colours > most) colours = most;
        size_t at = 14 + header;
        if (c == BI_BITFIELDS && header == 40) at += 12;
        /* Some writers give fewer entries than they claim: take what the
         * space before the pixels holds. */
        if (d->pixels_at > at && (d->pixels_at - at) / entry_size < colours) colours = (d->pixels_at - at) / entry_size;
        if (!read_palette(bytes, size, at, colours, entry_size, d)) return 0;
    }
    if (d->pixels_at > size) return bad_format("the pixels lie past the end of the file");
    return 1;
}

int palette_colour(const Dib &d, unsigned index, unsigned char *out)
{
    if (index * 3 >= d.palette.size()) {
        fprintf(stderr, "bmp file: colour index %u is past the palette (%zu entries)\n", index, d.palette.size() / 3);
        return 0;
    }
    memcpy(out, &d.palette[index * 3], 3);
    return 1;
}

/* A field of a pixel widened to 0..255 by repeating its bits (31 of 5
 * bits gives 255, 16 gives 132), as common decoders widen them. */
unsigned char mask_value(uint32_t pixel, uint32_t mask)
{
    if (!mask) return 0;
    int shift = 0, bits = 0;
    while (!((mask >> shift) & 1)) shift++;
    while (shift + bits < 32 && ((mask >> (shift + bits)) & 1)) bits++;
    uint32_t v = (pixel & mask) >> shift;
    if (bits >= 8) return (unsigned char)(v >> (bits - 8));
    uint32_t out = v << (8 - bits);
    for (int filled = bits; filled < 8; filled += bits) out |= out >> bits;
    return (unsigned char)out;
}

/* Converts one stored row (bottom-up order already chosen) to RGB. */
int convert_row(const Dib &d, const unsigned char *in, unsigned char *out)
{
    int w = d.width;
    switch (d.bits) {
    case 1:
    case 4:
    case 8: {
        int per_byte = 8 / d.bits;
        unsigned mask = (1u << d.bits) - 1;
        for (int x = 0; x < w; x++) {
            int shift = 8 - d.bits * (x % per_byte + 1);
            unsigned index = (in[x / per_byte] >> shift) & mask;
            if (!palette_colour(d, index, out + 3 * x)) return 0;
        }
        return 1;
    }
    case 24:
        for (int x = 0; x < w; x++, in += 3, out += 3) out[0] = in[2], out[1] = in[1], out[2] = in[0];
        return 1;
    case 16:
    case 32:
        for (int x = 0; x < w; x++, out += 3) {
            uint32_t p = d.bits == 16 ? le16(in + 2 * x) : le32(in + 4 * x);
            out[0] = mask_value(p, d.masks[0]);
            out[1] = mask_value(p, d.masks[1]);
            out[2] = mask_value(p, d.masks[2]);
        }
        return 1;
    }
    return 0;
}

int read_plain(const unsigned char *bytes, size_t size, const Dib &d, unsigned char *rgb)
{
    size_t stride = (((size_t)d.width * d.bits + 31) / 32) * 4;
    if ((size - d.pixels_at) / stride < (size_t)d.height) {
        fprintf(stderr, "bmp file: the file ends before the last row\n");
        return 0;
    }
    for (int y = 0; y < d.height; y++) {
        const unsigned char *row = bytes + d.pixels_at + (size_t)y * stride;
        int out_row = d.top_down ? d.height - 1 - y : y;
        if (!convert_row(d, row, rgb + (size_t)out_row * d.width * 3)) return 0;
    }
    return 1;
}

/* Expands RLE4 or RLE8 into one palette index per pixel (bottom-up rows),
 * then to RGB.  Pixels the encoding skips keep index 0. */
int read_rle(const unsigned char *bytes, size_t size, const Dib &d, unsigned char *rgb)
{
    size_t w = (size_t)d.width, h = (size_t)d.height;
    std::vector<unsigned char> index(w * h, 0);
    size_t x = 0, y = 0, i = d.pixels_at;
    int four = d.compression == BI_RLE4;
    /* Writers pad rows to whole words with runs past the row's end:
     * those pixels are dropped. */
    auto put = [&](unsigned value) -> int {
        if (x < w && y < h) index[y * w + x] = (unsigned char)value;
        x++;
        return 1;
    };
    while (y < h) {
        /* A missing end mark ends the picture (the padding of the last
         * absolute run may take i one past the end). */
        if (i + 2 > size) break;
        unsigned n = bytes[i], v = bytes[i + 1];
        i += 2;
        if (n > 0) {
            for (unsigned k = 0; k < n; k++) {
                if (!put(four ? (k & 1 ? v & 15 : v >> 4) : v)) return 0;
            }
        } else if (v == 0) {
            x = 0, y++;
        } else if (v == 1) {
            break;
        } else if (v == 2) {
            if (i + 2 > size) break;
            x += bytes[i], y += bytes[i + 1];
            i += 2;
        } else {
            size_t stored = four ? (v + 1) / 2 : v;
            if (i > size || size - i < stored) {
                fprintf(stderr, "bmp file: the file ends inside a run\n");
                return 0;
            }
            for (unsigned k = 0; k < v; k++) {
                unsigned b = bytes[i + (four ? k / 2 : k)];
                if (!put(four ? (k & 1 ? b & 15 : b >> 4) : b)) return 0;
            }
            i += (stored + 1) & ~(size_t)1;
        }
    }
    for (size_t p = 0; p < w * h; p++) {
        if (!palette_colour(d, index[p], rgb + 3 * p)) return 0;
    }
    return 1;
}

} // namespace

vkimage *bmp_image_from_memory(const unsigned char *bytes, size_t size, const char *name)
{
    Dib d = {};
    if (!read_info(bytes, size, &d)) return nullptr;
    vkimage *image = new_vkimage(name);
    unsigned char *rgb = image ? (unsigned char *)myalloc((unsigned)((size_t)d.width * d.height * 3)) : nullptr;
    if (!rgb) {
        fprintf(stderr, "Out of memory!\n");
        free_vkimage(image);
        return nullptr;
    }
    vk_image_set_dim(image, d.width, d.height, 3);
    vk_image_set_data(image, rgb);
    int ok = d.compression == BI_RLE8 || d.compression == BI_RLE4 ? read_rle(bytes, size, d, rgb)
                                                                  : read_plain(bytes, size, d, rgb);
    if (!ok) {
        free_vkimage(image);
        return nullptr;
    }
    return image;
}

vkimage *BMPImageLoad(const char *filename)
{
    size_t size = 0;
    unsigned char *bytes = texture_file_read_all(filename, &size);
    if (!bytes) {
        fprintf(stderr, "Failed to open DIB file %s.\n", filename);
        fprintf(stderr, "error opening bmp file\n");
        return nullptr;
    }
    vkimage *image = bmp_image_from_memory(bytes, size, filename);
    free(bytes);
    if (!image) fprintf(stderr, "error opening bmp file\n");
    return image;
}
