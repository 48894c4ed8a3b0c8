/*
 * bench_image_readers.cpp - decoding speed of the texture readers on a
 * 4096 x 4096 picture in each format (SGI verbatim and run-length, GIF,
 * BMP 24-bit and 8-bit, and PNG and JPEG through the plug-in when it is
 * built), beside ImageMagick's `convert FILE rgb:-` of the same file,
 * measured in the same run.  Figures are megabytes of decoded pixels
 * (width x height x 3) per second, the best of three runs each.  The
 * files are written by ImageMagick and netpbm into a temporary directory.
 * `bench_image_readers [side]` changes the picture's size.
 */
#include "vesk.h"
#include "bench_support.h"
#include "app/prefs.h"
#include "texture/texture_table.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <string>

static std::string dir;

static void shell(const std::string &command)
{
    std::string line = "cd '" + dir + "' && " + command;
    if (system(line.c_str()) != 0) fprintf(stderr, "failed: %s\n", command.c_str());
}

/* A picture of 256 colours in blocks and stripes: every format can hold
 * it exactly, and it neither compresses to nothing nor not at all. */
static void write_source(int side)
{
    FILE *f = fopen((dir + "/source.ppm").c_str(), "wb");
    if (!f) return;
    fprintf(f, "P6\n%d %d\n255\n", side, side);
    unsigned char *row = (unsigned char *)malloc((size_t)side * 3);
    for (int y = 0; y < side; y++) {
        for (int x = 0; x < side; x++) {
            int c = ((x / 16) * 7 + (y / 8) * 13 + ((x ^ y) & 3)) & 255;
            row[3 * x] = (unsigned char)(c * 37), row[3 * x + 1] = (unsigned char)(c * 91);
            row[3 * x + 2] = (unsigned char)(c * 151);
        }
        fwrite(row, 3, (size_t)side, f);
    }
    free(row);
    fclose(f);
}

static double best_of_three_ours(const std::string &file, int *ok)
{
    double best = 1e30;
    *ok = 1;
    for (int i = 0; i < 3; i++) {
        double start = now();
        vkimage *image = texture_read((dir + "/" + file).c_str());
        double t = now() - start;
        if (!image) *ok = 0;
        free_vkimage(image);
        if (t < best) best = t;
    }
    return best;
}

static double best_of_three_convert(const std::string &file)
{
    double best = 1e30;
    for (int i = 0; i < 3; i++) {
        double start = now();
        shell("convert '" + file + "' -depth 8 rgb:- > /dev/null");
        double t = now() - start;
        if (t < best) best = t;
    }
    return best;
}

int main(int argc, char **argv)
{
    int side = argc > 1 ? atoi(argv[1]) : 4096;
    if (side < 16 || side > 8192) side = 4096;
    prefs_set_defaults();
    prefs.memory_checks = 0;
    register_builtin_texture_loaders();
#ifdef VESK_IMAGES_PLUGIN
    void *plugin = dlopen(VESK_IMAGES_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    int (*init)(void) = plugin ? (int (*)(void))dlsym(plugin, "vesk_plugin_init") : nullptr;
    int have_plugin = init && init();
#else
    int have_plugin = 0;
#endif
    char pattern[] = "/tmp/vesk_bench_images_XXXXXX";
    dir = mkdtemp(pattern);
    printf("writing %d x %d test pictures in %s...\n", side, side, dir.c_str());
    fflush(stdout);
    write_source(side);
    shell("convert source.ppm -depth 8 -compress None sgi:verbatim.rgb");
    shell("convert source.ppm -depth 8 -compress RLE sgi:rle.rgb");
    shell("pamtogif source.ppm > plain.gif 2>/dev/null");
    shell("pamtogif -interlace source.ppm > interlaced.gif 2>/dev/null");
    shell("ppmtobmp -bpp 24 source.ppm > rgb24.bmp 2>/dev/null");
    shell("ppmtobmp -bpp 8 source.ppm > palette8.bmp 2>/dev/null");
    if (have_plugin) {
        shell("convert source.ppm PNG24:picture.png");
        shell("convert source.ppm -quality 90 picture.jpg");
    }
    const char *files[] = {"verbatim.rgb", "rle.rgb",     "plain.gif",   "interlaced.gif",
                           "rgb24.bmp",    "palette8.bmp", "picture.png", "picture.jpg"};
    double megabytes = (double)side * side * 3 / 1e6;
    printf("%-16s %12s %14s %8s\n", "file", "vesk MB/s", "convert MB/s", "ratio");
    for (const char *file : files) {
        bool plugin_file = std::string(file).find(".png") != std::string::npos ||
                           std::string(file).find(".jpg") != std::string::npos;
        if (plugin_file && !have_plugin) continue;
        int ok = 0;
        double ours = best_of_three_ours(file, &ok);
        double theirs = best_of_three_convert(file);
        printf("%-16s %12.1f %14.1f %7.1fx%s\n", file, megabytes / ours, megabytes / theirs, theirs / ours,
               ok ? "" : "   (read failed)");
        fflush(stdout);
    }
    std::string command = "rm -rf '" + dir + "'";
    if (system(command.c_str()) != 0) fprintf(stderr, "could not remove %s\n", dir.c_str());
    return 0;
}
