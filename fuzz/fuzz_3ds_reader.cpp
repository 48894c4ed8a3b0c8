/*
 * fuzz_3ds_reader.cpp - libFuzzer target for the 3D Studio reader: each
 * input is parsed from memory and converted into the model, which is
 * emptied again.
 */
#include "fuzz_support.h"
#include "fileio/reader_3ds.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_start_once();
    import_3ds_memory(data, (long)size);
    fuzz_empty_model();
    return 0;
}
