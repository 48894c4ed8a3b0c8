/*
 * fuzz_dxf_reader.cpp - libFuzzer target for the DXF reader: each input
 * is read as a whole DXF file, ASCII or binary (the binary seeds keep
 * their sentinel, so mutations of them reach the binary translator); a
 * drawing it makes is freed again (it never joins the world).
 */
#include "fuzz_support.h"
#include "fileio/dxf_reader.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_start_once();
    /* Drawings that expand past this are refused as they would be past
     * the real limit, only sooner. */
    dxf_point_limit = 100000;
    std::string text((const char *)data, size);
    DxfResult result;
    read_dxf_text(text.c_str(), text.size(), "fuzz", &result);
    if (result.drawing) object_free(result.drawing);
    return 0;
}
