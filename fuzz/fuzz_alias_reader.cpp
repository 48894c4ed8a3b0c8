/*
 * fuzz_alias_reader.cpp - libFuzzer target for the Alias triangle
 * reader: each input is read as a file into the model, which is emptied
 * again.  Its message boxes go to standard error.
 */
#include "fuzz_support.h"
#include "fileio/alias_tri.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_start_once();
    char path[64];
    int fd = fuzz_input_file(data, size, path, sizeof path);
    if (fd < 0) return 0;
    load_alias_tri_file(path);
    close(fd);
    fuzz_empty_model();
    return 0;
}
