/*
 * exchange_precheck.cpp - inputs refused before they reach libassimp,
 * because assimp 5.2 would loop for ever on them or allocate what the
 * file cannot justify: PLY headers without an end_header line (assimp
 * searches on for ever), and PLY headers that promise more elements than
 * the file has bytes (assimp sets aside room for all of them first: a few
 * lines claiming two thousand million vertices took 23 GB).
 */
#include "exchange.h"

#include <cctype>
#include <cstring>
#include <strings.h>
#include <vector>

/* Where the line that starts with the word end_header begins, or -1.
 * Lines end with a line feed: assimp runs on for ever over a header of
 * carriage returns alone. */
static long end_header_line(const char *data, size_t size)
{
    static const char marker[] = "end_header";
    const size_t n = sizeof marker - 1;
    for (size_t i = 0; i + n <= size; i++) {
        if ((i > 0 && data[i - 1] != '\n') || memcmp(data + i, marker, n) != 0) continue;
        char after = i + n < size ? data[i + n] : '\n';
        if (after == '\n' || after == '\r' || after == ' ' || after == '\t') return (long)i;
    }
    return -1;
}

struct PlyElement {
    unsigned long long count;
    unsigned long long properties;
};

/* The elements the header declares, each with its number of properties. */
static std::vector<PlyElement> header_elements(const char *data, size_t size)
{
    std::vector<PlyElement> elements;
    size_t start = 0;
    while (start < size) {
        const char *line = data + start;
        const char *end = (const char *)memchr(line, '\n', size - start);
        size_t length = end ? (size_t)(end - line) : size - start;
        std::string text(line, length);
        char word[16] = "", name[64] = "";
        unsigned long long count = 0;
        if (sscanf(text.c_str(), "%15s", word) == 1) {
            if (strcmp(word, "element") == 0 && sscanf(text.c_str(), "%*s %63s %llu", name, &count) == 2) {
                elements.push_back({count, 0});
            } else if (strcmp(word, "property") == 0 && !elements.empty()) {
                elements.back().properties++;
            }
        }
        start += length + 1;
    }
    return elements;
}

const char *exchange_refused_input(const char *data, size_t size, unsigned long long total_size, bool whole)
{
    /* assimp takes anything that starts with these letters for PLY. */
    size_t first = 0;
    while (first < size && std::isspace((unsigned char)data[first])) first++;
    bool ply = size - first >= 3 && strncasecmp(data + first, "ply", 3) == 0;
    if (!ply) return nullptr;
    long end = end_header_line(data, size);
    if (end < 0) {
        return whole || size < EXCHANGE_HEADER_LIMIT ? "the file is damaged (its PLY header has no end)"
                                                     : "the file is damaged (its PLY header is far too long)";
    }
    /* Every property of every element takes at least one byte of what
     * follows the header, in text and in binary files alike. */
    unsigned long long body = total_size > (unsigned long long)end ? total_size - (unsigned long long)end : 0;
    unsigned long long needed = 0;
    for (const PlyElement &e : header_elements(data, (size_t)end)) {
        unsigned long long each = e.properties ? e.properties : 1;
        if (e.count > body / each || needed + e.count * each > body) {
            return "the file is damaged (its PLY header promises more than the file holds)";
        }
        needed += e.count * each;
    }
    return nullptr;
}
