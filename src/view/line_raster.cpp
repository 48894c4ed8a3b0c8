/*
 * view/line_raster.cpp - one-pixel lines and square markers written
 * straight into an image: the orthographic views' edges and vertices (see
 * line_raster.h for the rules).
 */
#include "view/line_raster.h"

#include <algorithm>
#include <cassert>
#include <cmath>

void raster_project(const RasterMapping &m, const float *points, size_t n, float *window)
{
    for (size_t i = 0; i < n; i++, points += 3, window += 2) {
        double x = points[0], y = points[1], z = points[2];
        window[0] = (float)(m.x[0] * x + m.x[1] * y + m.x[2] * z + m.x[3]);
        window[1] = (float)(m.y[0] * x + m.y[1] * y + m.y[2] * z + m.y[3]);
    }
}

/* The steps along the major axis whose pixel centres lie in the half-open
 * span from a0 to a1, clipped to [0, along): returns false when none. */
static bool major_span(double a0, double a1, int along, double *lo, double *hi)
{
    if (a1 > a0) {
        *lo = std::ceil(a0 - 0.5);
        *hi = std::ceil(a1 - 0.5) - 1.0;
    } else {
        *hi = std::floor(a0 - 0.5);
        *lo = std::floor(a1 - 0.5) + 1.0;
    }
    *lo = std::max(*lo, 0.0);
    *hi = std::min(*hi, along - 1.0);
    return *lo <= *hi;
}

/* Narrows the span to the steps where the minor position b0 + (i + 0.5 -
 * a0) * slope lies in [0, across); a step to either side is kept, and the
 * per-pixel test below has the last word. */
static bool minor_span(double a0, double b0, double slope, int across, double *lo, double *hi)
{
    if (slope == 0.0) return b0 >= 0.0 && b0 < across;
    double t0 = (0.0 - b0) / slope + a0 - 0.5;
    double t1 = (across - b0) / slope + a0 - 0.5;
    if (t0 > t1) std::swap(t0, t1);
    *lo = std::max(*lo, std::floor(t0) - 1.0);
    *hi = std::min(*hi, std::ceil(t1) + 1.0);
    return *lo <= *hi;
}

/* A line along its major axis: a is the major coordinate (x for an
 * x-major line), b the minor one. */
static void draw_major(const RasterImage &image, double a0, double b0, double a1, double b1, bool x_major,
                       uint32_t colour)
{
    double da = a1 - a0;
    if (da == 0.0) return;
    int along = x_major ? image.width : image.height;
    int across = x_major ? image.height : image.width;
    double slope = (b1 - b0) / da;
    double lo, hi;
    if (!major_span(a0, a1, along, &lo, &hi)) return;
    if (!minor_span(a0, b0, slope, across, &lo, &hi)) return;
    int first = (int)lo, last = (int)hi;
    assert(first >= 0 && last < along);
    double b = b0 + (first + 0.5 - a0) * slope;
    uint32_t *pixels = image.pixels;
    int width = image.width;
    for (int i = first; i <= last; i++, b += slope) {
        if (!(b >= 0.0 && b < across)) continue;
        int j = (int)b;
        if (x_major) pixels[(size_t)j * width + i] = colour;
        else pixels[(size_t)i * width + j] = colour;
    }
}

void raster_line(const RasterImage &image, float x0, float y0, float x1, float y1, uint32_t colour)
{
    if (image.width < 1 || image.height < 1) return;
    if (!std::isfinite(x0) || !std::isfinite(y0) || !std::isfinite(x1) || !std::isfinite(y1)) return;
    double dx = (double)x1 - x0, dy = (double)y1 - y0;
    if (std::fabs(dx) >= std::fabs(dy)) draw_major(image, x0, y0, x1, y1, true, colour);
    else draw_major(image, y0, x0, y1, x1, false, colour);
}

void raster_lines(const RasterImage &image, const float *window, size_t num_points, const uint32_t *indices,
                  size_t num_indices, uint32_t colour)
{
    for (size_t i = 0; i + 1 < num_indices; i += 2) {
        if (indices[i] >= num_points || indices[i + 1] >= num_points) continue;
        const float *a = window + 2 * (size_t)indices[i];
        const float *b = window + 2 * (size_t)indices[i + 1];
        raster_line(image, a[0], a[1], b[0], b[1], colour);
    }
}

/* The first pixel of a marker along one axis. */
static double marker_start(float w, int size)
{
    if (size % 2) return std::floor(w) - (size - 1) / 2;
    return std::floor(w + 0.5) - size / 2;
}

void raster_points(const RasterImage &image, const float *window, size_t num_points, const uint32_t *indices,
                   size_t num_indices, int size, uint32_t colour)
{
    if (image.width < 1 || image.height < 1) return;
    if (size < 1) size = 1;
    for (size_t i = 0; i < num_indices; i++) {
        if (indices[i] >= num_points) continue;
        const float *p = window + 2 * (size_t)indices[i];
        if (!std::isfinite(p[0]) || !std::isfinite(p[1])) continue;
        double x0 = std::max(marker_start(p[0], size), 0.0);
        double y0 = std::max(marker_start(p[1], size), 0.0);
        double x1 = std::min(marker_start(p[0], size) + size, (double)image.width);
        double y1 = std::min(marker_start(p[1], size) + size, (double)image.height);
        if (!(x0 < x1 && y0 < y1)) continue;
        for (int y = (int)y0; y < y1; y++) {
            uint32_t *row = image.pixels + (size_t)y * image.width;
            for (int x = (int)x0; x < x1; x++) row[x] = colour;
        }
    }
}
