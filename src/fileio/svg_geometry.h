/*
 * fileio/svg_geometry.h - the drawing side of the SVG reader: 2D affine
 * matrices and the "transform" attribute (svg_transform.cpp), path data
 * and the basic shapes as outlines of points (svg_path.cpp), and paint
 * colours (svg_paint.cpp).  Everything here works in doubles on SVG user
 * units; the reader maps the outlines into the model at the end.
 */
#ifndef VESK_FILEIO_SVG_GEOMETRY_H
#define VESK_FILEIO_SVG_GEOMETRY_H

#include <string>
#include <vector>

/* x' = a x + c y + e, y' = b x + d y + f (SVG's matrix(a b c d e f)). */
struct SvgMatrix {
    double a, b, c, d, e, f;
};

struct SvgPoint {
    double x, y;
};

/* One subpath: its points in drawing order (a closing point equal to the
 * first is not repeated) and whether it was closed. */
struct SvgOutline {
    std::vector<SvgPoint> points;
    bool closed = false;
};

/* More points than this in one file are refused: no drawing a user
 * extrudes needs them, and the limit keeps memory in proportion. */
enum { SVG_MAX_POINTS = 4000000 };
/* Curve pieces are cut into at most this many segments. */
enum { SVG_MAX_STEPS = 256 };

SvgMatrix svg_identity(void);
/* The matrix applying inner first, then outer. */
SvgMatrix svg_multiply(const SvgMatrix &outer, const SvgMatrix &inner);
SvgPoint svg_apply(const SvgMatrix &m, SvgPoint p);
/* Reads a transform list into *out (identity for empty text).  Returns 0
 * with a reason in *error for text that is not a transform list. */
int svg_parse_transform(const char *text, SvgMatrix *out, std::string *error);

/* Reads the number at *p (after blanks and at most one comma) in SVG's
 * number syntax, locale-free; advances *p.  Returns 0 when there is none
 * or it is not finite. */
int svg_scan_number(const char **p, double *out);

/* Reads path data into outlines, curves cut into steps segments each
 * (arcs: steps segments per quarter turn).  Returns 1 when all of it was
 * read; else 0 with *error saying where it stopped, the outlines read
 * before the bad token kept in *out. */
int svg_parse_path(const char *d, int steps, std::vector<SvgOutline> *out, std::string *error);

/* The basic shapes as closed outlines (steps segments per quarter of a
 * round corner or ellipse). */
SvgOutline svg_ellipse(double cx, double cy, double rx, double ry, int steps);
SvgOutline svg_rect(double x, double y, double width, double height, double rx, double ry, int steps);

/* A paint: none, or a packed colour 0x00RRGGBB. */
struct SvgPaint {
    bool none = true;
    long rgb = 0;
};
/* Reads a paint value ("none", "#rgb", "#rrggbb", "rgb(r,g,b)" with
 * numbers or percentages, a colour name, "url(#id) fallback").  Returns 0
 * for a value it does not know. */
int svg_parse_paint(const char *text, SvgPaint *out);

#endif
