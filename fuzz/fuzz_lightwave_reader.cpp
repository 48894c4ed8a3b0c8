/*
 * fuzz_lightwave_reader.cpp - libFuzzer target for the LightWave reader:
 * each input is read as an object (LWOB, LWO2) or a scene (LWSC), told
 * apart as the command tells them; a scene's object files are looked for
 * beside a folder that does not exist, so they are mostly not found.  What
 * is made is freed again (it never joins the world).
 */
#include "fuzz_support.h"
#include "fileio/lightwave.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_start_once();
    /* Files a scene names that do exist are read only this far. */
    lw_file_limit = 1 << 20;
    LwResult result;
    lw_read_bytes(data, size, "/nonexistent/fuzz.lws", "fuzz", &result);
    if (result.root) object_free(result.root);
    return 0;
}
