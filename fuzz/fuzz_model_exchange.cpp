/*
 * fuzz_model_exchange.cpp - libFuzzer target for the model exchange
 * plug-in's reader: the first byte picks OBJ, PLY or STL, the rest is
 * written to a file of that suffix (in /dev/shm when there is one) and
 * imported the way import_model does, through libassimp, into detached
 * objects, which are freed again.  Only these three formats: assimp's
 * other readers are too slow under a fuzzer for the time it gets.
 *
 * The input goes through a file, not assimp's read from memory: the
 * program only ever reads files, and assimp 5.2's OBJ reader crashes
 * from memory on input it refuses from a file (an "mtllib" line, then
 * "map_emissive 0").  With VESK_FUZZ_ASSIMP_ONLY set in the environment
 * only assimp reads the input, which tells its faults from ours.
 */
#include "fuzz_support.h"
#include "../plugins/exchange/exchange.h"

#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>

#include <cstdlib>
#include <string>
#include <sys/stat.h>

static std::string input_path(const char *suffix)
{
    struct stat st;
    const char *dir = stat("/dev/shm", &st) == 0 && S_ISDIR(st.st_mode) ? "/dev/shm" : "/tmp";
    return std::string(dir) + "/vesk_fuzz_exchange_" + std::to_string((long)getpid()) + "." + suffix;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_start_once();
    if (size < 2) return 0;
    static const char *const suffixes[] = {"obj", "ply", "stl"};
    std::string path = input_path(suffixes[data[0] % 3]);
    FILE *f = fopen(path.c_str(), "wb");
    if (!f) return 0;
    size_t written = fwrite(data + 1, 1, size - 1, f);
    fclose(f);
    if (written == size - 1 && getenv("VESK_FUZZ_ASSIMP_ONLY")) {
        /* assimp's reader alone (behind the same checks), without the
         * conversion: tells faults of libassimp from faults of ours. */
        if (!exchange_refused_input((const char *)data + 1, size - 1, size - 1, true)) {
            Assimp::Importer importer;
            importer.ReadFile(path.c_str(), aiProcess_ValidateDataStructure);
        }
    } else if (written == size - 1) {
        ImportCounts counts;
        std::string error;
        Object *holder = exchange_read_file(path.c_str(), &counts, &error);
        if (holder) object_free(holder);
    }
    unlink(path.c_str());
    return 0;
}
