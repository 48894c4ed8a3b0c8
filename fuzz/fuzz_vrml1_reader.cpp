/*
 * fuzz_vrml1_reader.cpp - libFuzzer target for the VRML 1.0 / Inventor
 * reader: each input (after a VRML 1.0 header when the first byte is odd,
 * so that most inputs get past the header check) is read into the model,
 * which is emptied again.
 */
#include "fuzz_support.h"
#include "fileio/vrml1_reader.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_start_once();
    std::string text;
    if (size && (data[0] & 1)) text = "#VRML V1.0 ascii\n";
    text.append((const char *)data, size);
    read_vrml1_text(text.c_str(), text.size());
    fuzz_empty_model();
    return 0;
}
