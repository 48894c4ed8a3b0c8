/*
 * fileio/svg_reader.h - reading an SVG drawing as outlines in the Front
 * (XY) plane at z = 0: one object for the drawing, a child object for
 * each group (named by its id), filled shapes as polygons (every
 * subpath its own surface, holes too), stroked-only shapes as lines and
 * closed lines, colours through the palette.  One SVG user unit is one
 * model unit after the viewBox mapping; y is turned upward, so the
 * top-left corner of the drawing's viewport lies at the origin and the
 * drawing below the X axis, upright.
 */
#ifndef VESK_FILEIO_SVG_READER_H
#define VESK_FILEIO_SVG_READER_H

#include "vesk.h"

#include <cstddef>
#include <string>
#include <vector>

/* Elements nested deeper than this are refused: the model's trees are
 * walked by recursion elsewhere. */
enum { SVG_MAX_DEPTH = 128 };
/* Files larger than this are refused before parsing. */
enum { SVG_MAX_BYTES = 64 * 1024 * 1024 };

/* Reads SVG text into a new detached group whose one child is the
 * drawing's object (named name unless the svg element has an id); colours
 * are added to the palette.  Returns the group, or null with the reason in
 * *error (the palette and the model then unchanged).  Notes about parts
 * that were skipped (unknown elements, bad path data after which the rest
 * of a path was dropped) go to *warnings. */
Object *read_svg_text(const char *text, size_t size, const char *name, int steps, std::vector<std::string> *warnings,
                      std::string *error);
/* Reads a file as above; null also when it cannot be read. */
Object *read_svg_file(const char *filename, int steps, std::vector<std::string> *warnings, std::string *error);

#endif
