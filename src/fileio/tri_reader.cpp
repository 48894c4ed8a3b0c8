/*
 * fileio/tri_reader.cpp - reading triangle files.  The whole file is
 * checked before the model is touched: a bad line leaves the model and
 * the palette as they were.  Corners at exactly the same position share
 * one vertex (found through a hash of the position, so large files load
 * in linear time); every triangle keeps its corner order and so its
 * facing.
 */
#include "fileio/tri_file.h"
#include "edit/primitive_append.h"
#include "view/redraw.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <unordered_map>
#include <vector>

struct TriLine {
    float corner[9];
    long colour;        /* -1 when the line has no colour */
};

static void report_format_error(long line)
{
    fprintf(stderr, "Error whilst loading triangle file.\nformat of triangle file is:\n"
                    "each line contains 9 floating point numbers and one hex value e.g.:\n"
                    "0.0 0.0 0.0  1.0 0.0 0.0  1.0 1.0 0.0  0xffffff\n"
                    "represents 3 vertices of a triangle.\n"
                    "duplicate vertices are aggregated when loaded.\n");
    if (line > 0) fprintf(stderr, "(the first bad line is line %ld)\n", line);
}

static const char *skip_blanks(const char *p)
{
    while (*p == ' ' || *p == '\t' || *p == '\r' || *p == '\n' || *p == '\f' || *p == '\v') p++;
    return p;
}

/* Nine finite numbers and an optional hex colour of at most 0xFFFFFF,
 * nothing after them.  Returns 1 when the line is one. */
static int parse_line(const char *text, TriLine *out)
{
    const char *p = text;
    for (int i = 0; i < 9; i++) {
        p = skip_blanks(p);
        char *end;
        errno = 0;
        float value = strtof(p, &end);
        if (end == p || !std::isfinite(value)) return 0;
        out->corner[i] = value == 0.0f ? 0.0f : value;   /* -0 and 0 are one position */
        p = end;
    }
    p = skip_blanks(p);
    out->colour = -1;
    if (!*p) return 1;
    if (*p == '-' || *p == '+') return 0;
    char *end;
    errno = 0;
    unsigned long colour = strtoul(p, &end, 16);
    if (end == p || errno || colour > 0xFFFFFFul) return 0;
    out->colour = (long)colour;
    return *skip_blanks(end) == '\0';
}

/* Reads every line; returns the first bad line's number, 0 when all are
 * good, -1 when the file holds no triangle. */
static long read_lines(FILE *file, std::vector<TriLine> *lines)
{
    char *text = nullptr;
    size_t room = 0;
    long number = 0;
    long bad = 0;
    ssize_t n;
    while ((n = getline(&text, &room, file)) >= 0) {
        number++;
        if ((size_t)n != strlen(text) && !bad) bad = number;   /* a NUL byte inside */
        if (bad) break;
        if (!*skip_blanks(text)) continue;
        TriLine line;
        if (!parse_line(text, &line)) {
            bad = number;
            break;
        }
        lines->push_back(line);
    }
    free(text);
    if (!bad && ferror(file)) bad = number + 1;
    if (!bad && lines->empty()) bad = -1;
    return bad;
}

struct PositionKey {
    uint32_t bits[3];
    bool operator==(const PositionKey &o) const { return !memcmp(bits, o.bits, sizeof bits); }
};

struct PositionHash {
    size_t operator()(const PositionKey &k) const
    {
        uint64_t h = k.bits[0] * 0x9E3779B97F4A7C15ull;
        h ^= (h >> 29) + k.bits[1] * 0xBF58476D1CE4E5B9ull;
        h ^= (h >> 31) + k.bits[2] * 0x94D049BB133111EBull;
        return (size_t)(h ^ (h >> 32));
    }
};

static Object *build_object(const std::vector<TriLine> &lines)
{
    Object *o = new_object(OBJECT_NORMAL);
    ObjectAppender append;
    appender_start(&append, o);
    std::unordered_map<PositionKey, Vertex *, PositionHash> shared;
    shared.reserve(lines.size() * 2);
    std::unordered_map<long, int> colours;
    for (const TriLine &line : lines) {
        Surface *s = new_surface();
        RefAppender refs = ref_appender_start(s);
        for (int c = 0; c < 3; c++) {
            const float *point = &line.corner[c * 3];
            PositionKey key;
            memcpy(key.bits, point, sizeof key.bits);
            Vertex *&v = shared[key];
            if (!v) v = appender_new_vertex(&append, point[0], point[1], point[2]);
            ref_append(&refs, v, 0.0f, 0.0f);
        }
        if (line.colour >= 0) {
            auto found = colours.find(line.colour);
            if (found == colours.end()) found = colours.emplace(line.colour, rgb_to_index(line.colour)).first;
            s->mat = (uint16_t)found->second;
        }
        appender_add_surface(&append, s);
    }
    return o;
}

int load_tri_file(const char *filename)
{
    FILE *file = filename ? fopen(filename, "r") : nullptr;
    if (!file) {
        console_printf("can't open file for reading\n");
        return 0;
    }
    std::vector<TriLine> lines;
    long bad = read_lines(file, &lines);
    fclose(file);
    if (bad) {
        report_format_error(bad);
        return 0;
    }
    Object *o = build_object(lines);
    object_add_child(world, o);
    display_message("Calculating normals...");
    object_calc_normals_force(o);
    display_message("normals done.");
    redraw_all();
    return 1;
}
