/*
 * fuzz_svg_reader.cpp - libFuzzer target for the SVG reader: each input
 * is read as a drawing (curves cut into 2 steps, so that inputs are
 * spent on the parsing rather than on points); what it made is freed
 * again without touching the model.
 */
#include "fuzz_support.h"
#include "fileio/svg_reader.h"

#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_start_once();
    std::vector<std::string> warnings;
    std::string error;
    Object *made = read_svg_text((const char *)data, size, "fuzz", 2, &warnings, &error);
    if (made) object_free(made);
    return 0;
}
