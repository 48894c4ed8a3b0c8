/*
 * fuzz_model_exchange.cpp - libFuzzer target for the model exchange
 * plug-in's reader: the first byte picks OBJ, PLY or STL, the rest is read
 * from memory through libassimp and converted into detached objects,
 * which are freed again.  Only these three formats: assimp's other
 * readers are too slow under a fuzzer for the time it gets.
 */
#include "fuzz_support.h"
#include "../plugins/exchange/exchange.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_start_once();
    if (size < 2) return 0;
    static const char *const hints[] = {"obj", "ply", "stl"};
    const char *hint = hints[data[0] % 3];
    ImportCounts counts;
    std::string error;
    Object *holder = exchange_read_memory(data + 1, size - 1, hint, &counts, &error);
    if (holder) object_free(holder);
    return 0;
}
