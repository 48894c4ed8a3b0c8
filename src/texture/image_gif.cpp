/*
 * texture/image_gif.cpp - the GIF reader (87a and 89a): colour tables,
 * graphic control extensions (a transparent index stays in force for the
 * images after it), interlacing and the variable-length LZW code stream.
 * The reader collects every image of the file; the texture loader takes
 * the first.  Output rows go from the bottom up; pixels are RGB, or RGBA
 * with alpha 0 for the transparent index when one is in force.
 *
 * The whole file is read first.  Every image is refused before anything
 * is allocated for it when the file could not hold enough LZW codes to
 * fill it, so a few bytes cannot ask for gigabytes.
 */
#include "texture/texture_table.h"

#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

struct ColourTable {
    unsigned char red[256], green[256], blue[256];
    int entries;
};

struct GifImage {
    unsigned width, height, depth;
    unsigned char *data; /* from myalloc */
};

struct GifReader {
    const unsigned char *bytes;
    size_t size, pos;
    ColourTable global;
    int transparent; /* -1 for none */
    std::vector<GifImage> images;
};

void gif_message(const char *text) { fprintf(stderr, "%s\n", text); }

int take(GifReader &r, void *out, size_t n)
{
    if (n > r.size - r.pos) return 0;
    memcpy(out, r.bytes + r.pos, n);
    r.pos += n;
    return 1;
}

int take_byte(GifReader &r, unsigned char *b) { return take(r, b, 1); }

unsigned le16(const unsigned char *p) { return p[0] | (unsigned)p[1] << 8; }

int read_colour_map(GifReader &r, int entries, ColourTable *table)
{
    memset(table, 0, sizeof *table);
    for (int i = 0; i < entries; i++) {
        unsigned char rgb[3];
        if (!take(r, rgb, 3)) {
            gif_message("gif_ReadColorMap: bad colormap");
            return 0;
        }
        table->red[i] = rgb[0];
        table->green[i] = rgb[1];
        table->blue[i] = rgb[2];
    }
    table->entries = entries;
    return 1;
}

/* One data sub-block: its size in *count (0 ends a run of blocks). */
int get_data_block(GifReader &r, unsigned char *buffer, int *count)
{
    unsigned char n;
    if (!take_byte(r, &n)) {
        gif_message("gif_GetDataBlock: error in getting DataBlock size");
        return 0;
    }
    *count = n;
    if (n && !take(r, buffer, n)) {
        gif_message("gif_GetDataBlock: error in reading DataBlock");
        return 0;
    }
    return 1;
}

int read_extension(GifReader &r)
{
    unsigned char label;
    if (!take_byte(r, &label)) {
        gif_message("divepic_read_gif: EOF on extention function code");
        return 0;
    }
    unsigned char block[256];
    int count = 0;
    if (!get_data_block(r, block, &count)) return 0;
    if (label == 0xF9 && count >= 4) {
        int disposal = (block[0] >> 2) & 7, user_input = (block[0] >> 1) & 1;
        int delay = (int)le16(block + 1);
        debugf("gif graphic control: disposal %d, user input %d, delay %d\n", disposal, user_input, delay);
        if (block[0] & 1) r.transparent = block[3];
    }
    while (count > 0) {
        if (!get_data_block(r, block, &count)) return 0;
    }
    return 1;
}

/* The LZW code stream of one image, gathered from its sub-blocks. */
struct CodeStream {
    std::vector<unsigned char> data;
    size_t bit;
};

int gather_image_data(GifReader &r, CodeStream &s)
{
    s.data.clear();
    s.bit = 0;
    for (;;) {
        unsigned char n;
        if (!take_byte(r, &n)) {
            gif_message("gif_GetDataBlock: error in getting DataBlock size");
            return 0;
        }
        if (n == 0) break;
        if (n > r.size - r.pos) {
            gif_message("gif_GetDataBlock: error in reading DataBlock");
            return 0;
        }
        s.data.insert(s.data.end(), r.bytes + r.pos, r.bytes + r.pos + n);
        r.pos += n;
    }
    /* Padding so that a code can be read with one 32-bit load. */
    s.data.insert(s.data.end(), 4, 0);
    return 1;
}

/* The next code of size bits, or -1 when the data has run out. */
inline int get_code(CodeStream &s, int size, size_t total_bits)
{
    if (s.bit + (size_t)size > total_bits) return -1;
    const unsigned char *p = s.data.data() + (s.bit >> 3);
    uint32_t word = p[0] | (uint32_t)p[1] << 8 | (uint32_t)p[2] << 16;
    int code = (int)((word >> (s.bit & 7)) & ((1u << size) - 1));
    s.bit += (size_t)size;
    return code;
}

/* Decodes the code stream into pixel indices in transmission order;
 * 0 when the stream is broken. */
int decode_lzw(CodeStream &s, int min_size, unsigned char *out, size_t count)
{
    static uint16_t prefix[4096];
    static unsigned char suffix[4096], first[4096];
    static uint16_t length[4096];
    const int clear = 1 << min_size, end = clear + 1;
    for (int i = 0; i < clear; i++) prefix[i] = 0, suffix[i] = first[i] = (unsigned char)i, length[i] = 1;
    size_t total_bits = (s.data.size() - 4) * 8;
    int size = min_size + 1, next = clear + 2, previous = -1;
    size_t done = 0;
    int extra = 0;
    for (;;) {
        int code = get_code(s, size, total_bits);
        if (code < 0) {
            if (done < count) {
                gif_message("gif_GetCode: ran off the end of my bits");
                return 0;
            }
            gif_message("gif_LWZReadBytes: missing EOD in data stream (common occurence)");
            break;
        }
        if (code == clear) {
            size = min_size + 1, next = clear + 2, previous = -1;
            continue;
        }
        if (code == end) break;
        if (previous < 0) {
            if (code > clear) {
                fprintf(stderr, "gif_ReadImage: code %d is not in the table\n", code);
                return 0;
            }
        } else {
            if (code > next || (code == next && next >= 4096)) {
                fprintf(stderr, "gif_ReadImage: code %d is past the end of the table (%d)\n", code, next);
                return 0;
            }
            if (next < 4096) {
                prefix[next] = (uint16_t)previous;
                first[next] = first[previous];
                suffix[next] = code < next ? first[code] : first[previous];
                length[next] = (uint16_t)(length[previous] + 1);
                next++;
                if (next == (1 << size) && size < 12) size++;
            }
        }
        previous = code;
        /* Write the string backwards from its end; whatever falls past the
         * last pixel is dropped. */
        size_t n = length[code];
        if (n > count - done) {
            extra = 1;
            int c = code;
            for (size_t k = n; k > count - done; k--) c = prefix[c];
            n = count - done;
            code = c;
        }
        unsigned char *p = out + done + n;
        for (size_t k = 0; k < n; k++) {
            *--p = suffix[code];
            code = prefix[code];
        }
        done += n;
        if (extra) break;
    }
    if (extra) gif_message("gif_ReadImage: too much input data, ignoring extra...");
    if (done < count) {
        gif_message("gif_ReadImage: error reading image");
        return 0;
    }
    return 1;
}

/* The GIF row of the k-th transmitted row. */
unsigned interlaced_row(unsigned k, unsigned height)
{
    static const unsigned start[4] = {0, 4, 2, 1}, step[4] = {8, 8, 4, 2};
    for (int pass = 0; pass < 4; pass++) {
        unsigned rows = start[pass] < height ? (height - start[pass] + step[pass] - 1) / step[pass] : 0;
        if (k < rows) return start[pass] + k * step[pass];
        k -= rows;
    }
    return 0;
}

int make_picture(const unsigned char *indices, unsigned width, unsigned height, int interlaced,
                 const ColourTable &map, int transparent, GifImage *picture)
{
    unsigned depth = transparent >= 0 ? 4 : 3;
    unsigned char *data = (unsigned char *)myalloc((unsigned)((size_t)width * height * depth));
    if (!data) {
        gif_message("gif_ReadImage: Not enough memory to create Dive pic");
        return 0;
    }
    for (unsigned k = 0; k < height; k++) {
        unsigned y = interlaced ? interlaced_row(k, height) : k;
        const unsigned char *in = indices + (size_t)k * width;
        unsigned char *out = data + (size_t)(height - 1 - y) * width * depth;
        for (unsigned x = 0; x < width; x++) {
            unsigned i = in[x];
            if ((int)i >= map.entries) {
                fprintf(stderr, "gif_ReadImage: colour index %u is past the colour table (%d entries)\n", i,
                        map.entries);
                myfree(data);
                return 0;
            }
            *out++ = map.red[i];
            *out++ = map.green[i];
            *out++ = map.blue[i];
            if (depth == 4) *out++ = (int)i == transparent ? 0 : 255;
        }
    }
    *picture = {width, height, depth, data};
    return 1;
}

int read_image(GifReader &r)
{
    unsigned char d[9];
    if (!take(r, d, 9)) {
        gif_message("divepic_read_gif: couldn't read left/top/width/height");
        return 0;
    }
    unsigned width = le16(d + 4), height = le16(d + 6), flags = d[8];
    ColourTable local;
    const ColourTable *map = &r.global;
    if (flags & 0x80) {
        if (!read_colour_map(r, 1 << ((flags & 7) + 1), &local)) {
            gif_message("divepic_read_gif: error reading local colormap");
            return 0;
        }
        map = &local;
    }
    unsigned char min_size;
    if (!take_byte(r, &min_size)) {
        gif_message("gif_ReadImage: EOF on image data");
        return 0;
    }
    if (min_size < 1 || min_size > 11) {
        fprintf(stderr, "gif_ReadImage: bad LZW code size %d\n", min_size);
        return 0;
    }
    CodeStream s;
    if (!gather_image_data(r, s)) return 0;
    size_t count = (size_t)width * height;
    if (width == 0 || height == 0 || count > TEXTURE_MAX_PIXELS) {
        fprintf(stderr, "gif_ReadImage: can't use an image of %u x %u pixels\n", width, height);
        return 0;
    }
    /* Each code adds at most one entry, and no string is longer than the
     * table: the codes present bound the pixels they can make. */
    size_t codes = (s.data.size() - 4) * 8 / ((size_t)min_size + 1);
    if (count > codes * 4096) {
        fprintf(stderr, "gif_ReadImage: %zu bytes of image data can't fill %u x %u pixels\n",
                s.data.size() - 4, width, height);
        return 0;
    }
    std::vector<unsigned char> indices(count);
    if (!decode_lzw(s, min_size, indices.data(), count)) return 0;
    GifImage picture;
    if (!make_picture(indices.data(), width, height, (flags & 0x40) != 0, *map, r.transparent, &picture)) return 0;
    r.images.push_back(picture);
    return 1;
}

int read_header(GifReader &r)
{
    unsigned char magic[6];
    if (!take(r, magic, 6)) {
        gif_message("divepic_read_gif: error reading magic number");
        return 0;
    }
    if (memcmp(magic, "GIF", 3) != 0) {
        fprintf(stderr, "divepic_read_gif: not a GIF file %.6s\n", (const char *)magic);
        return 0;
    }
    if (memcmp(magic + 3, "87a", 3) != 0 && memcmp(magic + 3, "89a", 3) != 0) {
        gif_message("divepic_read_gif: bad version number, not '87a' or '89a'");
        return 0;
    }
    unsigned char screen[7];
    if (!take(r, screen, 7)) {
        gif_message("divepic_read_gif: failed to read screen descriptor");
        return 0;
    }
    memset(&r.global, 0, sizeof r.global);
    if ((screen[4] & 0x80) && !read_colour_map(r, 2 << (screen[4] & 7), &r.global)) {
        gif_message("divepic_read_gif: error reading global colormap");
        return 0;
    }
    return 1;
}

void free_images(GifReader &r, size_t from)
{
    for (size_t i = from; i < r.images.size(); i++) myfree(r.images[i].data);
    r.images.resize(from < r.images.size() ? from : r.images.size());
}

/* Reads every image; 0 (with nothing kept) on failure. */
int divepic_read_gif(GifReader &r)
{
    if (!read_header(r)) return 0;
    for (;;) {
        unsigned char c;
        if (!take_byte(r, &c)) {
            gif_message("divepic_read_gif: EOF on image data");
            free_images(r, 0);
            return 0;
        }
        if (c == ';') break;
        int ok = 1;
        if (c == '!') ok = read_extension(r);
        else if (c == ',') ok = read_image(r);
        else fprintf(stderr, "divepic_read_gif: bogus character 0x%02x, ignoring\n", c);
        if (!ok) {
            free_images(r, 0);
            return 0;
        }
        /* Only the first picture is kept: later ones are read to the end
         * of the file but need no memory beyond their decoding. */
        if (r.images.size() > 1) free_images(r, 1);
    }
    if (r.images.empty()) {
        gif_message("divepic_read_gif: the file holds no image");
        return 0;
    }
    return 1;
}

} // namespace

vkimage *gif_image_from_memory(const unsigned char *bytes, size_t size, const char *name)
{
    GifReader r;
    r.bytes = bytes;
    r.size = size;
    r.pos = 0;
    r.transparent = -1;
    if (!divepic_read_gif(r)) return nullptr;
    GifImage &first = r.images[0];
    vkimage *image = new_vkimage(name);
    if (!image) {
        gif_message("gifimg_init: No more memory!");
        free_images(r, 0);
        return nullptr;
    }
    vk_image_set_dim(image, (int)first.width, (int)first.height, (int)first.depth);
    vk_image_set_data(image, first.data);
    return image;
}

vkimage *GIFImageLoad(const char *filename)
{
    size_t size = 0;
    unsigned char *bytes = texture_file_read_all(filename, &size);
    vkimage *image = nullptr;
    if (!bytes) fprintf(stderr, "divepic_read_gif: can't read %s\n", filename);
    else image = gif_image_from_memory(bytes, size, filename);
    free(bytes);
    if (!image) windows_message_dialog("gif load failed");
    return image;
}
