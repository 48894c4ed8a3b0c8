/*
 * fuzz_tri_reader.cpp - libFuzzer target for the triangle file reader:
 * each input is read as a file into the model, which is emptied again.
 */
#include "fuzz_support.h"
#include "fileio/tri_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_start_once();
    char path[64];
    int fd = fuzz_input_file(data, size, path, sizeof path);
    if (fd < 0) return 0;
    load_tri_file(path);
    close(fd);
    fuzz_empty_model();
    return 0;
}
