/*
 * fuzz_image_png_jpeg.cpp - libFuzzer target for the PNG and JPEG
 * plug-in's readers: each input is decoded from memory by both (a PNG
 * signature or a JPEG marker decides which one reads past the first
 * bytes) and the image, if any, freed again.
 */
extern "C" {
#include "../plugins/images/images.h"
}
#include "app/prefs.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static bool started = false;
    if (!started) {
        prefs_set_defaults();
        started = true;
    }
    free_vkimage(png_image_from_memory(data, size, "fuzz"));
    free_vkimage(jpeg_image_from_memory(data, size, "fuzz"));
    return 0;
}
