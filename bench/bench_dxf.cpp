/*
 * bench_dxf.cpp - times the DXF reader on drawings made in memory: a grid
 * of 3DFACEs on five layers, and the same count of CIRCLEs (each
 * flattened to rot_segments points).  Prints seconds, MB/s and the
 * objects made.
 *
 *   bench_dxf [entities...]        default: 100000 300000
 */
#include "vesk.h"
#include "bench_support.h"
#include "app/prefs.h"
#include "fileio/dxf_reader.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

static std::string drawing(long count, bool circles)
{
    std::string text = "0\nSECTION\n2\nENTITIES\n";
    char buffer[512];
    for (long i = 0; i < count; i++) {
        double x = (double)(i % 1000) * 1.25, y = (double)(i / 1000) * 1.25;
        if (circles) {
            snprintf(buffer, sizeof buffer, "0\nCIRCLE\n8\nL%ld\n10\n%.4f\n20\n%.4f\n30\n0.0\n40\n0.5\n", i % 5, x, y);
        } else {
            snprintf(buffer, sizeof buffer,
                     "0\n3DFACE\n8\nL%ld\n10\n%.4f\n20\n%.4f\n30\n0.0\n11\n%.4f\n21\n%.4f\n31\n0.0\n12\n%.4f\n22\n"
                     "%.4f\n32\n0.0\n13\n%.4f\n23\n%.4f\n33\n0.0\n",
                     i % 5, x, y, x + 1, y, x + 1, y + 1, x, y + 1);
        }
        text += buffer;
    }
    text += "0\nENDSEC\n0\nEOF\n";
    return text;
}

static void run(long count, bool circles)
{
    std::string text = drawing(count, circles);
    double start = now();
    DxfResult result;
    read_dxf_text(text.c_str(), text.size(), "bench", &result);
    double seconds = now() - start;
    if (!result.drawing) {
        printf("%ld %s: refused: %s\n", count, circles ? "circles" : "3DFACEs", result.error.c_str());
        return;
    }
    double mb = text.size() / 1048576.0;
    printf("%8ld %-8s %7.1f MB  %6.2f s  %6.1f MB/s  %ld entities on %lu layers\n", count,
           circles ? "circles" : "3DFACEs", mb, seconds, mb / seconds, result.entities,
           (unsigned long)result.drawing->num_kids);
    object_free(result.drawing);
}

int main(int argc, char **argv)
{
    prefs_set_defaults();
    world = new_world();
    create_palette();
    if (!dxf_reader_available()) {
        printf("built without libdxflib: nothing to time\n");
        return 0;
    }
    printf("DXF reader (rot_segments %d)\n", prefs.rot_segments);
    std::vector<long> counts;
    for (int i = 1; i < argc; i++) counts.push_back(atol(argv[i]));
    if (counts.empty()) counts = {100000, 300000};
    for (long n : counts) {
        run(n, false);
        run(n, true);
    }
    return 0;
}
