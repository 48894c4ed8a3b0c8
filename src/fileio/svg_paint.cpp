/*
 * fileio/svg_paint.cpp - SVG paint values as packed colours (see
 * svg_geometry.h).  A reference to a gradient or pattern cannot become
 * one colour: its fallback colour is used when it names one, else a mid
 * grey, so that the shape still arrives.
 */
#include "fileio/svg_geometry.h"

#include <cctype>
#include <cmath>
#include <cstring>
#include <strings.h>

namespace {

struct NamedColour {
    const char *name;
    long rgb;
};

/* The basic colour keywords, with the greys and a few more that
 * drawings use often. */
const NamedColour named_colours[] = {
    {"black", 0x000000},  {"silver", 0xc0c0c0}, {"gray", 0x808080},    {"grey", 0x808080},
    {"white", 0xffffff},  {"maroon", 0x800000}, {"red", 0xff0000},     {"purple", 0x800080},
    {"fuchsia", 0xff00ff}, {"magenta", 0xff00ff}, {"green", 0x008000}, {"lime", 0x00ff00},
    {"olive", 0x808000},  {"yellow", 0xffff00}, {"navy", 0x000080},    {"blue", 0x0000ff},
    {"teal", 0x008080},   {"aqua", 0x00ffff},   {"cyan", 0x00ffff},    {"orange", 0xffa500},
    {"brown", 0xa52a2a},  {"pink", 0xffc0cb},   {"gold", 0xffd700},    {"darkgray", 0xa9a9a9},
    {"darkgrey", 0xa9a9a9}, {"lightgray", 0xd3d3d3}, {"lightgrey", 0xd3d3d3},
};

int hex_digit(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    c = (char)tolower((unsigned char)c);
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

int parse_hex(const char *p, size_t length, long *out)
{
    if (length != 3 && length != 6) return 0;
    long rgb = 0;
    for (size_t i = 0; i < length; i++) {
        int h = hex_digit(p[i]);
        if (h < 0) return 0;
        rgb = length == 3 ? rgb << 8 | h * 17 : rgb << 4 | h;
    }
    *out = rgb;
    return 1;
}

/* rgb(r, g, b) with numbers 0-255 or percentages, clamped. */
int parse_rgb_function(const char *p, long *out)
{
    p += 4;
    long rgb = 0;
    for (int i = 0; i < 3; i++) {
        double v;
        if (!svg_scan_number(&p, &v)) return 0;
        if (*p == '%') {
            v = v * 255.0 / 100.0;
            p++;
        }
        v = v < 0 ? 0 : v > 255 ? 255 : v;
        rgb = rgb << 8 | (long)std::lround(v);
    }
    while (isspace((unsigned char)*p)) p++;
    if (*p != ')') return 0;
    *out = rgb;
    return 1;
}

} // namespace

int svg_parse_paint(const char *text, SvgPaint *out)
{
    while (isspace((unsigned char)*text)) text++;
    size_t length = strlen(text);
    while (length && isspace((unsigned char)text[length - 1])) length--;
    std::string value(text, length);
    if (value == "none" || value == "transparent") {
        *out = SvgPaint();
        return 1;
    }
    long rgb;
    if (value[0] == '#' && parse_hex(value.c_str() + 1, value.size() - 1, &rgb)) {
        *out = SvgPaint{false, rgb};
        return 1;
    }
    if (!strncasecmp(value.c_str(), "rgb(", 4) && parse_rgb_function(value.c_str(), &rgb)) {
        *out = SvgPaint{false, rgb};
        return 1;
    }
    if (!strncasecmp(value.c_str(), "url(", 4)) {
        size_t close = value.find(')');
        if (close == std::string::npos) return 0;
        std::string fallback = value.substr(close + 1);
        size_t first = fallback.find_first_not_of(" \t\r\n");
        /* A fallback is a plain colour, never another reference. */
        if (first != std::string::npos) {
            if (!strncasecmp(fallback.c_str() + first, "url(", 4)) return 0;
            return svg_parse_paint(fallback.c_str(), out);
        }
        *out = SvgPaint{false, 0x808080};
        return 1;
    }
    /* currentColor: the "color" property is not followed; black. */
    if (!strcasecmp(value.c_str(), "currentColor")) {
        *out = SvgPaint{false, 0x000000};
        return 1;
    }
    for (const NamedColour &c : named_colours) {
        if (!strcasecmp(value.c_str(), c.name)) {
            *out = SvgPaint{false, c.rgb};
            return 1;
        }
    }
    return 0;
}
