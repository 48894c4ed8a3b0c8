/*
 * fuzz_image_gif.cpp - libFuzzer target for the GIF reader: each input is
 * decoded from memory and the image, if any, freed again.
 */
#include "vesk.h"
#include "app/prefs.h"
#include "texture/texture_table.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static bool started = false;
    if (!started) {
        prefs_set_defaults();
        started = true;
    }
    free_vkimage(gif_image_from_memory(data, size, "fuzz"));
    return 0;
}
