/*
 * test_images_plugin.cpp - the PNG and JPEG texture plug-in, loaded as the
 * program loads it (dlopen and vesk_plugin_init) and used through the
 * registered loaders: every pixel against ImageMagick's decoding for
 * files written by ImageMagick and netpbm, and damaged files refused with
 * a message.
 */
#include "test_support.h"
#include "texture/texture_table.h"

#include <dlfcn.h>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string work;

bool run(const std::string &command)
{
    std::string line = "cd '" + work + "' && (" + command + ") >/dev/null 2>&1";
    return system(line.c_str()) == 0;
}

std::string output_of(const std::string &command)
{
    std::string line = "cd '" + work + "' && " + command + " 2>/dev/null";
    FILE *p = popen(line.c_str(), "r");
    std::string out;
    if (!p) return out;
    char buffer[65536];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, p)) > 0) out.append(buffer, n);
    pclose(p);
    return out;
}

bool plugin_loaded = false;

class ImagesPlugin : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        char pattern[] = "/tmp/vesk_plugin_images_XXXXXX";
        work = mkdtemp(pattern);
        if (!texture_loaders) register_builtin_texture_loaders();
#ifdef VESK_IMAGES_PLUGIN
        void *library = dlopen(VESK_IMAGES_PLUGIN, RTLD_NOW | RTLD_LOCAL);
        if (!library) return;
        int (*init)(void) = (int (*)(void))dlsym(library, "vesk_plugin_init");
        plugin_loaded = init && init();
#endif
        std::ofstream f(work + "/src.ppm", std::ios::binary);
        f << "P6\n37 23\n255\n";
        for (int y = 0; y < 23; y++) {
            for (int x = 0; x < 37; x++) {
                unsigned char p[3] = {(unsigned char)(x * 7), (unsigned char)(y * 11), (unsigned char)((x ^ y) * 9)};
                f.write((const char *)p, 3);
            }
        }
    }
    static void TearDownTestSuite()
    {
        std::string command = "rm -rf '" + work + "'";
        if (system(command.c_str()) != 0) fprintf(stderr, "could not remove %s\n", work.c_str());
    }
    void SetUp() override
    {
        if (!plugin_loaded) GTEST_SKIP() << "the PNG and JPEG plug-in is not built";
    }
};

/* ImageMagick's RGBA of a file, rows bottom-up. */
std::vector<unsigned char> imagemagick_rgba(const std::string &name, int *w, int *h)
{
    std::istringstream size(output_of("identify -format '%w %h\\n' '" + name + "[0]'"));
    size >> *w >> *h;
    std::string raw = output_of("convert '" + name + "[0]' -depth 8 rgba:-");
    size_t row = (size_t)*w * 4;
    std::vector<unsigned char> out(raw.size());
    if (raw.size() != row * *h) return {};
    for (int y = 0; y < *h; y++) memcpy(&out[y * row], raw.data() + (size_t)(*h - 1 - y) * row, row);
    return out;
}

void expect_same(const std::string &name, int depth)
{
    SCOPED_TRACE(name);
    int w = 0, h = 0;
    std::vector<unsigned char> want = imagemagick_rgba(name, &w, &h);
    ASSERT_FALSE(want.empty());
    vkimage *image = nullptr;
    Captured c = capture([&] { image = texture_read((work + "/" + name).c_str()); });
    ASSERT_NE(image, nullptr) << c.err;
    EXPECT_EQ(image->depth, depth);
    ASSERT_EQ(image->width, w);
    ASSERT_EQ(image->height, h);
    size_t n = (size_t)w * h, bad = 0;
    for (size_t i = 0; i < n; i++) {
        for (int k = 0; k < image->depth; k++) bad += image->data[i * image->depth + k] != want[i * 4 + k];
    }
    EXPECT_EQ(bad, 0u);
    free_vkimage(image);
}

} // namespace

TEST_F(ImagesPlugin, PngOfEveryColourTypeMatchesImageMagick)
{
    ASSERT_TRUE(run("convert src.ppm PNG24:rgb.png && convert src.ppm -alpha set -channel A -fx 'i/w' PNG32:rgba.png"));
    ASSERT_TRUE(run("convert src.ppm -colors 50 PNG8:pal.png && convert src.ppm -type Grayscale gray.png"));
    ASSERT_TRUE(run("convert src.ppm -interlace PNG PNG24:inter.png && pnmtopng src.ppm > netpbm.png"));
    ASSERT_TRUE(run("pnmtopng -transparent=rgb:00/00/00 src.ppm > trns.png"));
    expect_same("rgb.png", 3);
    expect_same("rgba.png", 4);
    expect_same("pal.png", 3);
    expect_same("gray.png", 3);
    expect_same("inter.png", 3);
    expect_same("netpbm.png", 3);
    expect_same("trns.png", 4);
}

TEST_F(ImagesPlugin, JpegMatchesImageMagick)
{
    ASSERT_TRUE(run("convert src.ppm -quality 90 plain.jpg && convert src.ppm -interlace JPEG prog.jpeg"));
    ASSERT_TRUE(run("convert src.ppm -type Grayscale gray.jpg && pnmtojpeg src.ppm > netpbm.jpg"));
    expect_same("plain.jpg", 3);
    expect_same("prog.jpeg", 3);
    expect_same("gray.jpg", 3);
    expect_same("netpbm.jpg", 3);
}

TEST_F(ImagesPlugin, DamagedFilesAreRefusedWithAMessage)
{
    ASSERT_TRUE(run("convert src.ppm PNG24:cut.png && convert src.ppm cut.jpg"));
    for (const char *name : {"cut.png", "cut.jpg"}) {
        std::string path = work + "/" + name;
        std::ifstream in(path, std::ios::binary);
        std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        in.close();
        for (size_t keep : {bytes.size() / 2, (size_t)10, (size_t)0}) {
            std::ofstream out(path, std::ios::binary | std::ios::trunc);
            out.write(bytes.data(), (std::streamsize)keep);
            out.close();
            vkimage *image = nullptr;
            Captured c = capture([&] { image = texture_read(path.c_str()); });
            EXPECT_EQ(image, nullptr) << name << " cut to " << keep;
            EXPECT_FALSE(c.err.empty()) << name << " cut to " << keep;
            free_vkimage(image);
        }
    }
}

/* A 200-byte JPEG whose header claims 777 x 65283 pixels is refused
 * before the 150 MB for its picture are taken; large plain pictures that
 * really are that small (solid colours, progressive or not) still load. */
TEST_F(ImagesPlugin, JpegHeaderLargerThanItsFileIsRefused)
{
    const char *claim =
        "/9j/4AAQSkZJRgABAQAhAAABAAD/2wBDAAMCAgICAgMCAgIDAwMDBAYEBAQEBAgGCgUGCQj29fb39vb1+A8MCgsOCwkJDRENDg8QEBEQ"
        "CgwSExIQJA8QEBD/wAALCP8DAwkBAREA/8QAFQABAQAAAAAAAAAAAAAAAAAAAgcCBAADBhESCBghMFFTYZPR/9oACAEBAAA/ADAFhKB6"
        "AAAAAAAB2Q==";
    ASSERT_TRUE(run(std::string("echo ") + claim + " | base64 -d > claim.jpg"));
    vkimage *image = nullptr;
    Captured c = capture([&] { image = texture_read((work + "/claim.jpg").c_str()); });
    EXPECT_EQ(image, nullptr);
    EXPECT_NE(c.err.find("can't hold a picture of 777 x 65283 pixels"), std::string::npos) << c.err;

    ASSERT_TRUE(run("convert -size 3000x3000 xc:white solid.jpg && convert -size 3000x3000 xc:gray -interlace JPEG "
                    "-define jpeg:optimize-coding=true solidp.jpg"));
    for (const char *name : {"solid.jpg", "solidp.jpg"}) {
        c = capture([&] { image = texture_read((work + "/" + name).c_str()); });
        ASSERT_NE(image, nullptr) << name << ": " << c.err;
        EXPECT_EQ(image->width, 3000);
        free_vkimage(image);
    }
}

/* A text chunk whose length field says 1.9 GB in a 120-byte PNG: refused
 * before libpng sets that much aside (the fuzz replay covers the reader
 * from memory). */
TEST_F(ImagesPlugin, PngChunkLongerThanItsFileIsRefused)
{
    const char *claim = "iVBORw0KGgoAAAANSUhEUgAAAAkAAAAGCAYAAAARx7TFAAAABGVBTUEAAAAAgOgAAHUAACV0RVh0ZLx0ZTpjcmVhdGUAMjAyNtQx"
                        "OTo0MC46MDUrMDA6MDC4OqxeAAAAAElFTkSuQmCC";
    ASSERT_TRUE(run(std::string("echo ") + claim + " | base64 -d > claim.png"));
    vkimage *image = nullptr;
    Captured c = capture([&] { image = texture_read((work + "/claim.png").c_str()); });
    EXPECT_EQ(image, nullptr);
    EXPECT_NE(c.err.find("a chunk runs past the end of the file"), std::string::npos) << c.err;
    /* A whole PNG written by ImageMagick still reads. */
    ASSERT_TRUE(run("convert src.ppm PNG24:whole.png"));
    image = texture_read((work + "/whole.png").c_str());
    ASSERT_NE(image, nullptr);
    free_vkimage(image);
}

TEST_F(ImagesPlugin, LoadersAreRegisteredInFrontOfTheBuiltIns)
{
    unsigned n = list_count(texture_loaders);
    ASSERT_GE(n, 6u);
    bool seen_png = false;
    for (List *l = texture_loaders; l; l = l->next) {
        const char *suffix = ((TextureLoader *)l->item)->suffix;
        if (!strcmp(suffix, ".png")) seen_png = true;
        if (!strcmp(suffix, ".bmp")) {
            EXPECT_TRUE(seen_png);
        }
    }
    EXPECT_TRUE(seen_png);
}
