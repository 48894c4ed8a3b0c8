/*
 * bench_dxf.cpp - times the DXF reader on drawings made in memory: a grid
 * of 3DFACEs on five layers, and the same count of CIRCLEs (each
 * flattened to rot_segments points), and the 3DFACEs again as a binary
 * DXF file (two-byte codes): the translation to text alone and the
 * whole read.  Prints seconds, MB/s and the objects made.
 *
 *   bench_dxf [entities...]        default: 100000 300000
 */
#include "vesk.h"
#include "bench_support.h"
#include "app/prefs.h"
#include "fileio/dxf_binary.h"
#include "fileio/dxf_reader.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

static void put_code(std::string *bytes, int code)
{
    bytes->push_back((char)(code & 0xFF));
    bytes->push_back((char)(code >> 8));
}

static void put_string(std::string *bytes, int code, const std::string &s)
{
    put_code(bytes, code);
    *bytes += s;
    bytes->push_back('\0');
}

static void put_double(std::string *bytes, int code, double d)
{
    put_code(bytes, code);
    unsigned char b[8];
    memcpy(b, &d, sizeof b);   /* little-endian machines only, like the files */
    bytes->append((const char *)b, sizeof b);
}

/* The 3DFACE drawing as a binary DXF file. */
static std::string binary_drawing(long count)
{
    std::string bytes("AutoCAD Binary DXF\r\n\x1a\0", 22);
    put_string(&bytes, 0, "SECTION");
    put_string(&bytes, 2, "ENTITIES");
    for (long i = 0; i < count; i++) {
        double x = (double)(i % 1000) * 1.25, y = (double)(i / 1000) * 1.25;
        double corners[4][2] = {{x, y}, {x + 1, y}, {x + 1, y + 1}, {x, y + 1}};
        put_string(&bytes, 0, "3DFACE");
        put_string(&bytes, 8, "L" + std::to_string(i % 5));
        for (int k = 0; k < 4; k++) {
            put_double(&bytes, 10 + k, corners[k][0]);
            put_double(&bytes, 20 + k, corners[k][1]);
            put_double(&bytes, 30 + k, 0.0);
        }
    }
    put_string(&bytes, 0, "ENDSEC");
    put_string(&bytes, 0, "EOF");
    return bytes;
}

static void run_binary(long count)
{
    std::string bytes = binary_drawing(count), text, error;
    double mb = bytes.size() / 1048576.0;
    double start = now();
    bool ok = dxf_binary_to_text(bytes.data(), bytes.size(), &text, &error);
    double seconds = now() - start;
    if (!ok) {
        printf("%ld binary 3DFACEs: refused: %s\n", count, error.c_str());
        return;
    }
    printf("%8ld %-8s %7.1f MB  %6.2f s  %6.1f MB/s  translated to %.1f MB of text\n", count, "binary", mb, seconds,
           mb / seconds, text.size() / 1048576.0);
    start = now();
    DxfResult result;
    read_dxf_text(bytes.c_str(), bytes.size(), "bench", &result);
    seconds = now() - start;
    if (!result.drawing) {
        printf("%ld binary 3DFACEs: refused: %s\n", count, result.error.c_str());
        return;
    }
    printf("%8ld %-8s %7.1f MB  %6.2f s  %6.1f MB/s  %ld entities on %lu layers (whole read)\n", count, "binary", mb,
           seconds, mb / seconds, result.entities, (unsigned long)result.drawing->num_kids);
    object_free(result.drawing);
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
        run_binary(n);
    }
    return 0;
}
