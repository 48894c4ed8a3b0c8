/*
 * test_image_readers.cpp - the SGI, GIF and BMP readers against what
 * ImageMagick decodes from the same files, for files written by
 * ImageMagick and netpbm in a temporary directory: every channel count
 * and encoding, interlaced and plain GIFs, transparency, several images,
 * odd widths, palette depths, top-down rows.  Then damaged files: each
 * gives a message and no image.
 */
#include "test_support.h"
#include "texture/texture_table.h"

#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

std::string work_dir;

bool run(const std::string &command)
{
    std::string line = "cd '" + work_dir + "' && (" + command + ") >/dev/null 2>&1";
    return system(line.c_str()) == 0;
}

std::string output_of(const std::string &command)
{
    std::string line = "cd '" + work_dir + "' && " + command + " 2>/dev/null";
    FILE *p = popen(line.c_str(), "r");
    if (!p) return "";
    std::string out;
    char buffer[65536];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, p)) > 0) out.append(buffer, n);
    pclose(p);
    return out;
}

std::string path(const std::string &name) { return work_dir + "/" + name; }

/* A picture with every kind of pixel near every other: gradients, a
 * diagonal and a few flat areas, so that quantised files keep several
 * colours. */
void write_source(const std::string &name, int w, int h, bool alpha)
{
    std::ofstream f(path(name), std::ios::binary);
    if (alpha) {
        f << "P7\nWIDTH " << w << "\nHEIGHT " << h << "\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n";
    } else {
        f << "P6\n" << w << " " << h << "\n255\n";
    }
    for (int y = 0; y < h; y++) {
        for (int x = 0; x < w; x++) {
            unsigned char p[4] = {(unsigned char)(x * 255 / (w - 1)), (unsigned char)(y * 255 / (h - 1)),
                                  (unsigned char)((x + y) % 7 * 36), 255};
            if (x < 4 && y < 4) p[0] = p[1] = p[2] = 200;
            /* Alpha: clear, opaque and half-transparent areas. */
            if (alpha) p[3] = x < w / 3 ? 0 : (x < 2 * w / 3 ? 128 : 255);
            f.write((const char *)p, alpha ? 4 : 3);
        }
    }
}

struct Decoded {
    int width = 0, height = 0;
    std::vector<unsigned char> rgba; /* bottom-up */
};

/* What ImageMagick decodes from the first image of a file, rows bottom-up. */
Decoded imagemagick(const std::string &name)
{
    Decoded d;
    std::istringstream size(output_of("identify -format '%w %h\\n' '" + name + "[0]'"));
    size >> d.width >> d.height;
    std::string raw = output_of("convert '" + name + "[0]' -depth 8 rgba:-");
    size_t row = (size_t)d.width * 4;
    if (raw.size() != row * d.height) return Decoded();
    d.rgba.resize(raw.size());
    for (int y = 0; y < d.height; y++) memcpy(&d.rgba[(size_t)y * row], raw.data() + (size_t)(d.height - 1 - y) * row, row);
    return d;
}

/* Our image widened to RGBA. */
std::vector<unsigned char> as_rgba(const vkimage *image)
{
    size_t n = (size_t)image->width * image->height;
    std::vector<unsigned char> out(n * 4);
    for (size_t i = 0; i < n; i++) {
        const unsigned char *p = image->data + i * image->depth;
        unsigned char *q = &out[i * 4];
        switch (image->depth) {
        case 1: q[0] = q[1] = q[2] = p[0], q[3] = 255; break;
        case 2: q[0] = q[1] = q[2] = p[0], q[3] = p[1]; break;
        case 3: q[0] = p[0], q[1] = p[1], q[2] = p[2], q[3] = 255; break;
        default: memcpy(q, p, 4); break;
        }
    }
    return out;
}

int first_difference(const std::vector<unsigned char> &a, const std::vector<unsigned char> &b)
{
    for (size_t i = 0; i < a.size() && i < b.size(); i++) {
        if (a[i] != b[i]) return (int)i;
    }
    return a.size() == b.size() ? -1 : (int)std::min(a.size(), b.size());
}

vkimage *load_quietly(vkimage *(*loader)(const char *), const std::string &name, Captured *out = nullptr)
{
    vkimage *image = nullptr;
    Captured c = capture([&] { image = loader(path(name).c_str()); });
    if (out) *out = c;
    return image;
}

/* Loads name with loader and compares every pixel with ImageMagick. */
void expect_same_as_imagemagick(vkimage *(*loader)(const char *), const std::string &name, int depth)
{
    SCOPED_TRACE(name);
    Decoded want = imagemagick(name);
    ASSERT_GT(want.width, 0) << "ImageMagick could not read " << name;
    Captured c;
    vkimage *image = load_quietly(loader, name, &c);
    ASSERT_NE(image, nullptr) << c.err;
    EXPECT_EQ(image->width, want.width);
    EXPECT_EQ(image->height, want.height);
    if (depth) {
        EXPECT_EQ(image->depth, depth);
    }
    std::vector<unsigned char> got = as_rgba(image);
    if (image->depth == 3 || image->depth == 1) {
        /* Files without alpha: compare colour only. */
        for (size_t i = 3; i < want.rgba.size(); i += 4) want.rgba[i] = 255;
    }
    int at = first_difference(got, want.rgba);
    EXPECT_EQ(at, -1) << "first difference at pixel " << at / 4 << " channel " << at % 4;
    free_vkimage(image);
}

/* Writes name with command unless an earlier test of this process did. */
void make(const std::string &name, const std::string &command)
{
    struct stat st;
    if (stat(path(name).c_str(), &st) == 0) return;
    ASSERT_TRUE(run(command)) << command;
}

std::vector<unsigned char> read_bytes(const std::string &name)
{
    std::ifstream f(path(name), std::ios::binary);
    return std::vector<unsigned char>((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
}

void write_bytes(const std::string &name, const std::vector<unsigned char> &bytes)
{
    std::ofstream f(path(name), std::ios::binary);
    f.write((const char *)bytes.data(), (std::streamsize)bytes.size());
}

class ImageReaders : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        char pattern[] = "/tmp/vesk_images_XXXXXX";
        work_dir = mkdtemp(pattern);
        write_source("src.ppm", 37, 23, false);
        write_source("src.pam", 37, 23, true);
        write_source("wide.ppm", 64, 16, false);
    }
    static void TearDownTestSuite()
    {
        std::string command = "rm -rf '" + work_dir + "'";
        if (system(command.c_str()) != 0) fprintf(stderr, "could not remove %s\n", work_dir.c_str());
    }
};

} // namespace

/* ---- SGI ---- */

TEST_F(ImageReaders, SgiFromImageMagickVerbatimAndRle)
{
    struct Case {
        const char *type, *compress, *name;
        int depth;
    } cases[] = {
        {"Grayscale", "None", "g1.rgb", 1},      {"Grayscale", "RLE", "g1r.rgb", 1},
        {"GrayscaleMatte", "None", "g2.rgb", 0}, {"GrayscaleMatte", "RLE", "g2r.rgb", 0},
        {"TrueColor", "None", "c3.rgb", 3},      {"TrueColor", "RLE", "c3r.rgb", 3},
        {"TrueColorMatte", "None", "c4.rgb", 4}, {"TrueColorMatte", "RLE", "c4r.rgb", 4},
    };
    for (const Case &c : cases) {
        std::string source = c.depth == 0 || c.depth == 4 ? "src.pam" : "src.ppm";
        ASSERT_TRUE(run(std::string("convert ") + source + " -type " + c.type + " -depth 8 -compress " + c.compress +
                        " sgi:" + c.name));
        expect_same_as_imagemagick(RGBImageLoad, c.name, c.depth);
    }
}

/* Grey and alpha in two channels, as few tools write them: made here
 * from the RGBA file (grey = red), verbatim. */
TEST_F(ImageReaders, SgiGreyWithAlphaInTwoChannels)
{
    ASSERT_TRUE(run("convert src.pam -type TrueColorMatte -depth 8 -compress None sgi:c4v.rgb"));
    std::vector<unsigned char> c4 = read_bytes("c4v.rgb");
    ASSERT_EQ(c4.size(), 512u + 37 * 23 * 4);
    std::vector<unsigned char> g2(c4.begin(), c4.begin() + 512 + 37 * 23);
    g2.insert(g2.end(), c4.begin() + 512 + 37 * 23 * 3, c4.end());
    g2[10] = 0, g2[11] = 2;
    write_bytes("ga.rgb", g2);
    vkimage *image = load_quietly(RGBImageLoad, "ga.rgb");
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->depth, 2);
    EXPECT_EQ(image->alpha_flags, 1 + 2 + 16);
    vkimage *colour = load_quietly(RGBImageLoad, "c4v.rgb");
    ASSERT_NE(colour, nullptr);
    for (size_t i = 0; i < (size_t)37 * 23; i++) {
        ASSERT_EQ(image->data[2 * i], colour->data[4 * i]) << i;
        ASSERT_EQ(image->data[2 * i + 1], colour->data[4 * i + 3]) << i;
    }
    free_vkimage(image);
    free_vkimage(colour);
}

TEST_F(ImageReaders, SgiFromNetpbm)
{
    ASSERT_TRUE(run("pnmtosgi src.ppm > n3r.rgb && pnmtosgi -verbatim src.ppm > n3.rgb"));
    ASSERT_TRUE(run("ppmtopgm src.ppm | pnmtosgi > n1r.rgb && ppmtopgm src.ppm | pnmtosgi -verbatim > n1.rgb"));
    expect_same_as_imagemagick(RGBImageLoad, "n3r.rgb", 3);
    expect_same_as_imagemagick(RGBImageLoad, "n3.rgb", 3);
    expect_same_as_imagemagick(RGBImageLoad, "n1r.rgb", 1);
    expect_same_as_imagemagick(RGBImageLoad, "n1.rgb", 1);
}

TEST_F(ImageReaders, SgiAlphaFlagsRecordOpaqueClearAndBetween)
{
    ASSERT_TRUE(run("convert src.pam -type TrueColorMatte -depth 8 sgi:alpha.rgb"));
    vkimage *image = load_quietly(RGBImageLoad, "alpha.rgb");
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->alpha_flags, 1 + 2 + 16);
    free_vkimage(image);
    ASSERT_TRUE(run("convert src.ppm -type TrueColorMatte -depth 8 sgi:opaque.rgb"));
    image = load_quietly(RGBImageLoad, "opaque.rgb");
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->depth, 4);
    EXPECT_EQ(image->alpha_flags, 1);
    free_vkimage(image);
    /* No alpha channel, no flags. */
    make("n3.rgb", "pnmtosgi -verbatim src.ppm > n3.rgb");
    image = load_quietly(RGBImageLoad, "n3.rgb");
    if (image) {
        EXPECT_EQ(image->alpha_flags, 0);
    }
    free_vkimage(image);
}

/* ---- GIF ---- */

TEST_F(ImageReaders, GifPlainAndInterlacedGiveIdenticalPixels)
{
    ASSERT_TRUE(run("convert src.ppm -colors 200 plain.gif && convert src.ppm -colors 200 -interlace GIF inter.gif"));
    expect_same_as_imagemagick(GIFImageLoad, "plain.gif", 3);
    expect_same_as_imagemagick(GIFImageLoad, "inter.gif", 3);
    vkimage *a = load_quietly(GIFImageLoad, "plain.gif"), *b = load_quietly(GIFImageLoad, "inter.gif");
    ASSERT_TRUE(a && b);
    EXPECT_EQ(first_difference(as_rgba(a), as_rgba(b)), -1);
    free_vkimage(a);
    free_vkimage(b);
    /* Every height of the interlace passes, with a tall thin picture. */
    ASSERT_TRUE(run("convert -size 3x29 gradient:red-blue -colors 64 -interlace GIF thin.gif"));
    expect_same_as_imagemagick(GIFImageLoad, "thin.gif", 3);
}

TEST_F(ImageReaders, GifFromNetpbm87aAnd89a)
{
    ASSERT_TRUE(run("pnmquant 256 src.ppm > q.ppm && pamtogif q.ppm > n.gif && pamtogif -interlace q.ppm > ni.gif"));
    ASSERT_TRUE(run("ppmtogif q.ppm > p.gif"));
    expect_same_as_imagemagick(GIFImageLoad, "n.gif", 3);
    expect_same_as_imagemagick(GIFImageLoad, "ni.gif", 3);
    expect_same_as_imagemagick(GIFImageLoad, "p.gif", 3);
    /* An 87a file: the version is rewritten, the rest is as written. */
    std::vector<unsigned char> bytes = read_bytes("n.gif");
    memcpy(&bytes[3], "87a", 3);
    write_bytes("old.gif", bytes);
    expect_same_as_imagemagick(GIFImageLoad, "old.gif", 3);
    /* Wide codes: a picture with many colours and long runs. */
    ASSERT_TRUE(run("pnmquant 256 wide.ppm | pamtogif > wide.gif"));
    expect_same_as_imagemagick(GIFImageLoad, "wide.gif", 3);
}

TEST_F(ImageReaders, GifTransparencyGivesAlpha)
{
    make("t.gif", "pnmquant 256 src.ppm | pamtogif -transparent=rgb:c8/c8/c8 > t.gif");
    vkimage *image = load_quietly(GIFImageLoad, "t.gif");
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->depth, 4);
    /* The 4 x 4 grey corner is the top-left: the last rows of the image. */
    const unsigned char *corner = image->data + (size_t)(image->height - 1) * image->width * 4;
    EXPECT_EQ(corner[3], 0);
    EXPECT_EQ(image->data[3 + 4 * 10], 255);
    free_vkimage(image);
    expect_same_as_imagemagick(GIFImageLoad, "t.gif", 4);
    ASSERT_TRUE(run("convert src.pam -channel A -threshold 50% +channel -colors 100 it.gif"));
    expect_same_as_imagemagick(GIFImageLoad, "it.gif", 4);
}

TEST_F(ImageReaders, GifOfSeveralImagesGivesTheFirst)
{
    ASSERT_TRUE(run("convert -size 13x7 xc:red -size 5x9 xc:blue -size 13x7 gradient: several.gif"));
    vkimage *image = load_quietly(GIFImageLoad, "several.gif");
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->width, 13);
    EXPECT_EQ(image->height, 7);
    free_vkimage(image);
    expect_same_as_imagemagick(GIFImageLoad, "several.gif", 3);
}

/* ---- BMP ---- */

TEST_F(ImageReaders, BmpPaletteAndTrueColourDepths)
{
    ASSERT_TRUE(run("pnmquant 2 src.ppm | ppmtobmp -bpp 1 > b1.bmp"));
    ASSERT_TRUE(run("pnmquant 16 src.ppm | ppmtobmp -bpp 4 > b4.bmp"));
    ASSERT_TRUE(run("pnmquant 200 src.ppm | ppmtobmp -bpp 8 > b8.bmp"));
    ASSERT_TRUE(run("ppmtobmp -bpp 24 src.ppm > b24.bmp && ppmtobmp -os2 src.ppm > os2.bmp"));
    ASSERT_TRUE(run("convert src.ppm -type Bilevel BMP3:m1.bmp && convert src.ppm -colors 12 BMP3:m4.bmp"));
    ASSERT_TRUE(run("convert src.ppm -colors 100 BMP3:m8.bmp && convert src.ppm BMP3:m24.bmp"));
    ASSERT_TRUE(run("convert src.pam BMP:m32.bmp && convert src.ppm -define bmp:format=bmp4 BMP:m24v4.bmp"));
    ASSERT_TRUE(run("convert src.ppm -colors 100 -compress RLE BMP3:r8.bmp"));
    ASSERT_TRUE(run("convert src.ppm -define bmp:subtype=RGB565 BMP:b565.bmp"));
    ASSERT_TRUE(run("convert src.ppm -define bmp:subtype=RGB555 BMP:b555.bmp"));
    for (const char *name : {"b1.bmp", "b4.bmp", "b8.bmp", "b24.bmp", "os2.bmp", "m1.bmp", "m4.bmp", "m8.bmp",
                             "m24.bmp", "m32.bmp", "m24v4.bmp", "r8.bmp", "b565.bmp", "b555.bmp"}) {
        expect_same_as_imagemagick(BMPImageLoad, name, 3);
    }
}

/* RLE4, which the common tools read but do not write: made here with an
 * encoded run, an absolute run with its word padding and end marks. */
TEST_F(ImageReaders, BmpRle4MatchesImageMagick)
{
    std::vector<unsigned char> d(54 + 64, 0);
    d[0] = 'B', d[1] = 'M', d[14] = 40, d[26] = 1, d[28] = 4, d[30] = 2, d[46] = 16;
    d[18] = 7, d[22] = 3;
    for (int i = 0; i < 16; i++) {
        d[54 + 4 * i] = (unsigned char)(i * 8), d[55 + 4 * i] = (unsigned char)(255 - i * 16);
        d[56 + 4 * i] = (unsigned char)(i * 16);
    }
    const unsigned char pixels[] = {4, 0x12, 0, 3, 0x34, 0x50, 0, 0,              /* 1 2 1 2 3 4 5 */
                                    0, 7, 0x56, 0x78, 0x9A, 0xB0, 0, 0,          /* 5 ... 11 */
                                    7, 0xEF, 0, 1};                               /* 14 15 14 ... */
    d[10] = (unsigned char)d.size();
    d.insert(d.end(), pixels, pixels + sizeof pixels);
    d[2] = (unsigned char)d.size();
    write_bytes("rle4.bmp", d);
    expect_same_as_imagemagick(BMPImageLoad, "rle4.bmp", 3);
    vkimage *image = load_quietly(BMPImageLoad, "rle4.bmp");
    ASSERT_NE(image, nullptr);
    /* Bottom row, sixth pixel: index 4. */
    EXPECT_EQ(image->data[5 * 3 + 2], 4 * 8);
    free_vkimage(image);
}

TEST_F(ImageReaders, BmpTopDownRowsAreTurned)
{
    ASSERT_TRUE(run("ppmtobmp -bpp 24 src.ppm > up.bmp"));
    std::vector<unsigned char> bytes = read_bytes("up.bmp");
    uint32_t offset = bytes[10] | bytes[11] << 8, stride = (37 * 3 + 3) / 4 * 4;
    std::vector<unsigned char> flipped = bytes;
    for (int y = 0; y < 23; y++) {
        memcpy(&flipped[offset + y * stride], &bytes[offset + (22 - y) * stride], stride);
    }
    int32_t height = -23;
    if (bytes[14] == 12) memcpy(&flipped[14 + 6], &height, 2);
    else memcpy(&flipped[14 + 8], &height, 4);
    write_bytes("down.bmp", flipped);
    vkimage *a = load_quietly(BMPImageLoad, "up.bmp"), *b = load_quietly(BMPImageLoad, "down.bmp");
    ASSERT_TRUE(a && b);
    EXPECT_EQ(first_difference(as_rgba(a), as_rgba(b)), -1);
    free_vkimage(a);
    free_vkimage(b);
}

/* ---- damaged files ---- */

namespace {

/* Every prefix of a file and a few bit flips: a message or an image, never
 * a crash (the sanitizer build checks the bounds). */
void try_damaged(vkimage *(*from_memory)(const unsigned char *, size_t, const char *), std::vector<unsigned char> bytes)
{
    Captured c = capture([&] {
        for (size_t n = 0; n < bytes.size(); n += 1 + n / 16) {
            free_vkimage(from_memory(bytes.data(), n, "cut"));
        }
        for (size_t i = 0; i < bytes.size(); i += 3) {
            std::vector<unsigned char> b = bytes;
            b[i] ^= 0xA5;
            free_vkimage(from_memory(b.data(), b.size(), "flipped"));
        }
    });
    EXPECT_FALSE(c.err.empty());
}

} // namespace

TEST_F(ImageReaders, DamagedFilesGiveMessagesNotCrashes)
{
    make("c4r.rgb", "convert src.pam -type TrueColorMatte -depth 8 -compress RLE sgi:c4r.rgb");
    make("n3.rgb", "pnmtosgi -verbatim src.ppm > n3.rgb");
    make("inter.gif", "convert src.ppm -colors 200 -interlace GIF inter.gif");
    make("t.gif", "pnmquant 256 src.ppm | pamtogif -transparent=rgb:c8/c8/c8 > t.gif");
    make("b4.bmp", "pnmquant 16 src.ppm | ppmtobmp -bpp 4 > b4.bmp");
    make("r8.bmp", "convert src.ppm -colors 100 -compress RLE BMP3:r8.bmp");
    make("m32.bmp", "convert src.pam BMP:m32.bmp");
    try_damaged(rgb_image_from_memory, read_bytes("c4r.rgb"));
    try_damaged(rgb_image_from_memory, read_bytes("n3.rgb"));
    try_damaged(gif_image_from_memory, read_bytes("inter.gif"));
    try_damaged(gif_image_from_memory, read_bytes("t.gif"));
    try_damaged(bmp_image_from_memory, read_bytes("b4.bmp"));
    try_damaged(bmp_image_from_memory, read_bytes("r8.bmp"));
    try_damaged(bmp_image_from_memory, read_bytes("m32.bmp"));
}

TEST_F(ImageReaders, TruncatedFilesAreRefusedWithAMessage)
{
    make("c3.rgb", "convert src.ppm -depth 8 -compress None sgi:c3.rgb");
    make("c3r.rgb", "convert src.ppm -depth 8 -compress RLE sgi:c3r.rgb");
    make("plain.gif", "convert src.ppm -colors 200 plain.gif");
    make("b24.bmp", "ppmtobmp -bpp 24 src.ppm > b24.bmp");
    for (const char *name : {"c3.rgb", "c3r.rgb", "plain.gif", "b24.bmp"}) {
        std::vector<unsigned char> bytes = read_bytes(name);
        ASSERT_GT(bytes.size(), 40u) << name;
        bytes.resize(bytes.size() - 20);
        std::string cut = std::string("cut_") + name;
        write_bytes(cut, bytes);
        Captured c;
        vkimage *image = load_quietly(name[0] == 'c' ? RGBImageLoad : name[0] == 'p' ? GIFImageLoad : BMPImageLoad,
                                      cut, &c);
        EXPECT_EQ(image, nullptr) << name;
        EXPECT_FALSE(c.err.empty()) << name;
        free_vkimage(image);
    }
}

TEST(ImageReadersBad, HugeDimensionsAreRefusedBeforeAllocating)
{
    /* SGI: 65535 x 65535 x 4 in a 600-byte file. */
    std::vector<unsigned char> sgi(600, 0);
    unsigned char h[12] = {0x01, 0xDA, 0x00, 0x01, 0x00, 0x03, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x04};
    memcpy(sgi.data(), h, 12);
    Captured c = capture([&] { EXPECT_EQ(rgb_image_from_memory(sgi.data(), sgi.size(), "x"), nullptr); });
    EXPECT_TRUE(contains(c.err, "too large")) << c.err;
    /* 4000 x 4000 RLE: the row tables alone would need 128000 bytes. */
    h[2] = 0x01, h[6] = h[8] = 0x0F, h[7] = h[9] = 0xA0;
    memcpy(sgi.data(), h, 12);
    c = capture([&] { EXPECT_EQ(rgb_image_from_memory(sgi.data(), sgi.size(), "x"), nullptr); });
    EXPECT_TRUE(contains(c.err, "row tables")) << c.err;
    /* Zero width. */
    h[6] = h[7] = 0;
    memcpy(sgi.data(), h, 12);
    c = capture([&] { EXPECT_EQ(rgb_image_from_memory(sgi.data(), sgi.size(), "x"), nullptr); });
    EXPECT_FALSE(c.err.empty());

    /* GIF: 65535 x 65535 from a few bytes of codes. */
    const unsigned char gif[] = {'G', 'I', 'F', '8', '9', 'a', 1, 0, 1, 0, 0x80, 0, 0, 0, 0, 0, 255, 255, 255,
                                 ',', 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 2, 2, 0x4C, 0x01, 0, ';'};
    c = capture([&] { EXPECT_EQ(gif_image_from_memory(gif, sizeof gif, "x"), nullptr); });
    EXPECT_FALSE(c.err.empty());
    /* LZW code size above 12. */
    std::vector<unsigned char> g(gif, gif + sizeof gif);
    g[24] = g[26] = 1, g[25] = g[27] = 0;
    g[29] = 13;
    c = capture([&] { EXPECT_EQ(gif_image_from_memory(g.data(), g.size(), "x"), nullptr); });
    EXPECT_TRUE(contains(c.err, "LZW code size")) << c.err;
    /* No image at all. */
    const unsigned char empty[] = {'G', 'I', 'F', '8', '9', 'a', 1, 0, 1, 0, 0, 0, 0, ';'};
    c = capture([&] { EXPECT_EQ(gif_image_from_memory(empty, sizeof empty, "x"), nullptr); });
    EXPECT_TRUE(contains(c.err, "no image")) << c.err;
    /* A code past the table: after a clear (4), code 7 with only 6 known. */
    const unsigned char past[] = {'G', 'I', 'F', '8', '9', 'a', 2, 0, 1, 0, 0x80, 0, 0, 0, 0, 0, 255, 255, 255,
                                  ',', 0, 0, 0, 0, 2, 0, 1, 0, 0, 2, 2, 0xC4, 0x01, 0, ';'};
    c = capture([&] { EXPECT_EQ(gif_image_from_memory(past, sizeof past, "x"), nullptr); });
    EXPECT_FALSE(c.err.empty());

    /* BMP: a claimed 60000 x 60000 picture in 100 bytes. */
    std::vector<unsigned char> bmp(100, 0);
    bmp[0] = 'B', bmp[1] = 'M', bmp[10] = 54, bmp[14] = 40;
    int32_t side = 60000;
    memcpy(&bmp[18], &side, 4);
    memcpy(&bmp[22], &side, 4);
    bmp[28] = 24;
    c = capture([&] { EXPECT_EQ(bmp_image_from_memory(bmp.data(), bmp.size(), "x"), nullptr); });
    EXPECT_FALSE(c.err.empty());
    /* A palette index past a two-entry palette. */
    side = 2;
    memcpy(&bmp[18], &side, 4);
    memcpy(&bmp[22], &side, 4);
    bmp[28] = 8, bmp[46] = 2, bmp[10] = 54 + 8;
    bmp[62] = 7;
    c = capture([&] { EXPECT_EQ(bmp_image_from_memory(bmp.data(), bmp.size(), "x"), nullptr); });
    EXPECT_TRUE(contains(c.err, "past the palette")) << c.err;
}

/* The seed images of the fuzz targets, and inputs the fuzzers once found
 * wrong: each is read as a texture or refused, through every reader. */
TEST(ImageReadersSeeds, EveryStoredImageReadsOrIsRefused)
{
    /* This file is tests/unit/<name>; the images are in tests/data. */
    std::string here = __FILE__;
    std::string images = here.substr(0, here.rfind('/')) + "/../data/images";
    std::string list = "ls '" + images + "' 2>/dev/null";
    FILE *p = popen(list.c_str(), "r");
    ASSERT_NE(p, nullptr);
    char line[512];
    int files = 0;
    while (fgets(line, sizeof line, p)) {
        std::string name = images + "/" + std::string(line, strcspn(line, "\n"));
        std::ifstream f(name, std::ios::binary);
        std::vector<unsigned char> bytes((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
        capture([&] {
            free_vkimage(rgb_image_from_memory(bytes.data(), bytes.size(), "seed"));
            free_vkimage(gif_image_from_memory(bytes.data(), bytes.size(), "seed"));
            free_vkimage(bmp_image_from_memory(bytes.data(), bytes.size(), "seed"));
        });
        files++;
    }
    pclose(p);
    EXPECT_GT(files, 10);
}
