/*
 * view/line_raster.h - drawing one-pixel lines and square vertex markers
 * into an image in memory.
 *
 * The orthographic views draw every edge of the model as a thin line and
 * every vertex as a small square.  A
 * software OpenGL spends several hundred nanoseconds on each line (vertex
 * processing, setup, binning and rasterising a quad), which makes a model
 * of a million triangles take a third of a second per view; writing the
 * pixels of the same lines directly takes a tenth of that.  The views draw
 * their grid with OpenGL, read the pixels back, draw the edges here and
 * put the pixels back.
 *
 * Lines follow OpenGL's rule for aliased lines of width one: along the
 * major axis, the pixel column (or row) whose centre lies in the half-open
 * span from the first end to the second is drawn, at the minor position
 * the line has at that centre; so the last pixel of a line is left for the
 * next line of an outline to draw.  Markers follow its rule for aliased
 * points: a square of size pixels around the pixel holding the point (odd
 * sizes) or around the pixel corner nearest to it (even sizes).
 */
#ifndef VESK_VIEW_LINE_RASTER_H
#define VESK_VIEW_LINE_RASTER_H

#include <cstddef>
#include <cstdint>

/* 32-bit pixels, rows bottom to top as OpenGL reads them. */
struct RasterImage {
    uint32_t *pixels;
    int width, height;
};

/* Window position of a model point: x = x[0]*px + x[1]*py + x[2]*pz + x[3],
 * and y likewise. */
struct RasterMapping {
    double x[4], y[4];
};

/* Window coordinates (two floats per point) of n model points (three
 * floats each). */
void raster_project(const RasterMapping &mapping, const float *points, size_t n, float *window);

/* Draws the line between two window positions.  Ends that are far outside
 * the image, infinite or not numbers are handled: nothing is written
 * outside the image and the work is bounded by the image's size. */
void raster_line(const RasterImage &image, float x0, float y0, float x1, float y1, uint32_t colour);

/* Draws the lines between pairs of points: indices[2i] to indices[2i+1]
 * index window (two floats for each of num_points points); a pair with an
 * index out of range is skipped. */
void raster_lines(const RasterImage &image, const float *window, size_t num_points, const uint32_t *indices,
                  size_t num_indices, uint32_t colour);

/* Draws a marker of size pixels (at least 1) at each indexed point;
 * indices out of range are skipped. */
void raster_points(const RasterImage &image, const float *window, size_t num_points, const uint32_t *indices,
                   size_t num_indices, int size, uint32_t colour);

#endif
