/*
 * fileio/svg_transform.cpp - SVG's numbers and its "transform" attribute
 * (see svg_geometry.h): matrix, translate, scale, rotate (about a centre
 * too), skewX and skewY, in a list applied right to left.
 */
#include "fileio/svg_geometry.h"
#include "fileio/number_scan.h"

#include <cctype>
#include <cmath>
#include <cstring>

SvgMatrix svg_identity(void)
{
    return SvgMatrix{1, 0, 0, 1, 0, 0};
}

SvgMatrix svg_multiply(const SvgMatrix &m, const SvgMatrix &n)
{
    return SvgMatrix{m.a * n.a + m.c * n.b,       m.b * n.a + m.d * n.b,       m.a * n.c + m.c * n.d,
                     m.b * n.c + m.d * n.d,       m.a * n.e + m.c * n.f + m.e, m.b * n.e + m.d * n.f + m.f};
}

SvgPoint svg_apply(const SvgMatrix &m, SvgPoint p)
{
    return SvgPoint{m.a * p.x + m.c * p.y + m.e, m.b * p.x + m.d * p.y + m.f};
}

static const char *skip_blanks(const char *p)
{
    while (*p == ' ' || *p == '\t' || *p == '\n' || *p == '\r') p++;
    return p;
}

int svg_scan_number(const char **where, double *out)
{
    const char *p = skip_blanks(*where);
    if (*p == ',') p = skip_blanks(p + 1);
    /* Find the extent by SVG's grammar first: scanf-style readers would
     * also take "inf", "nan" and hexadecimal numbers. */
    const char *start = p;
    if (*p == '+' || *p == '-') p++;
    int digits = 0;
    while (isdigit((unsigned char)*p)) p++, digits++;
    if (*p == '.') {
        p++;
        while (isdigit((unsigned char)*p)) p++, digits++;
    }
    if (!digits) return 0;
    if (*p == 'e' || *p == 'E') {
        const char *e = p + 1;
        if (*e == '+' || *e == '-') e++;
        if (isdigit((unsigned char)*e)) {
            while (isdigit((unsigned char)*e)) e++;
            p = e;
        }
    }
    size_t length = (size_t)(p - start);
    char buffer[128];
    if (length >= sizeof buffer) return 0;
    memcpy(buffer, start, length);
    buffer[length] = '\0';
    double value;
    if (!scan_double(buffer, &value) || !std::isfinite(value)) return 0;
    *out = value;
    *where = p;
    return 1;
}

/* The numbers inside "(...)": between min and max of them. */
static int scan_arguments(const char **where, double *values, int min, int max, int *count)
{
    const char *p = skip_blanks(*where);
    if (*p != '(') return 0;
    p++;
    int n = 0;
    while (n < max && svg_scan_number(&p, &values[n])) n++;
    p = skip_blanks(p);
    if (*p != ')' || n < min) return 0;
    *where = p + 1;
    *count = n;
    return 1;
}

static double radians(double degrees)
{
    return degrees * M_PI / 180.0;
}

/* One transform function at p; its matrix in *m. */
static int scan_function(const char **where, SvgMatrix *m, std::string *error)
{
    const char *p = *where;
    const char *name = p;
    while (isalpha((unsigned char)*p)) p++;
    std::string word(name, p);
    double v[6];
    int n = 0;
    struct Shape {
        const char *name;
        int min, max;
    };
    static const Shape shapes[] = {{"matrix", 6, 6}, {"translate", 1, 2}, {"scale", 1, 2},
                                   {"rotate", 1, 3}, {"skewX", 1, 1},     {"skewY", 1, 1}};
    const Shape *shape = nullptr;
    for (const Shape &s : shapes) {
        if (word == s.name) shape = &s;
    }
    if (!shape) {
        *error = "unknown transform \"" + word.substr(0, 40) + "\"";
        return 0;
    }
    if (!scan_arguments(&p, v, shape->min, shape->max, &n) || (word == "rotate" && n == 2)) {
        *error = "bad arguments to " + word;
        return 0;
    }
    *m = svg_identity();
    if (word == "matrix") {
        *m = SvgMatrix{v[0], v[1], v[2], v[3], v[4], v[5]};
    } else if (word == "translate") {
        m->e = v[0];
        m->f = n > 1 ? v[1] : 0;
    } else if (word == "scale") {
        m->a = v[0];
        m->d = n > 1 ? v[1] : v[0];
    } else if (word == "rotate") {
        double c = std::cos(radians(v[0])), s = std::sin(radians(v[0]));
        SvgMatrix r{c, s, -s, c, 0, 0};
        if (n == 3) {
            /* About (cx, cy): translate there, rotate, translate back. */
            SvgMatrix to{1, 0, 0, 1, v[1], v[2]}, back{1, 0, 0, 1, -v[1], -v[2]};
            r = svg_multiply(to, svg_multiply(r, back));
        }
        *m = r;
    } else if (word == "skewX") {
        m->c = std::tan(radians(v[0]));
    } else {
        m->b = std::tan(radians(v[0]));
    }
    *where = p;
    return 1;
}

int svg_parse_transform(const char *text, SvgMatrix *out, std::string *error)
{
    SvgMatrix m = svg_identity();
    const char *p = skip_blanks(text);
    while (*p) {
        SvgMatrix f;
        if (!scan_function(&p, &f, error)) return 0;
        m = svg_multiply(m, f);
        p = skip_blanks(p);
        if (*p == ',') p = skip_blanks(p + 1);
    }
    for (double x : {m.a, m.b, m.c, m.d, m.e, m.f}) {
        if (!std::isfinite(x)) {
            *error = "transform out of range";
            return 0;
        }
    }
    *out = m;
    return 1;
}
