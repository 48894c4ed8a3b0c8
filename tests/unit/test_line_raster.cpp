/*
 * test_line_raster.cpp - the orthographic views' software lines: which
 * pixels a line covers, outlines that close without gaps, and lines with
 * ends far outside the image, infinite or not numbers.
 */
#include "view/line_raster.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <set>
#include <utility>
#include <vector>

namespace {

const uint32_t INK = 0xFF00FF00u;

struct Canvas {
    int width, height;
    std::vector<uint32_t> pixels;
    Canvas(int w, int h) : width(w), height(h), pixels((size_t)w * h, 0) {}
    RasterImage image() { return RasterImage{pixels.data(), width, height}; }
    void line(float x0, float y0, float x1, float y1) { raster_line(image(), x0, y0, x1, y1, INK); }
    std::set<std::pair<int, int>> inked() const
    {
        std::set<std::pair<int, int>> out;
        for (int y = 0; y < height; y++) {
            for (int x = 0; x < width; x++) {
                if (pixels[(size_t)y * width + x] == INK) out.insert({x, y});
            }
        }
        return out;
    }
};

typedef std::set<std::pair<int, int>> Pixels;

/* The rule written out plainly: every step of the major axis across the
 * whole image, its centre tested against the half-open span. */
Pixels reference_line(int width, int height, double x0, double y0, double x1, double y1)
{
    Pixels out;
    double dx = x1 - x0, dy = y1 - y0;
    bool x_major = std::fabs(dx) >= std::fabs(dy);
    double a0 = x_major ? x0 : y0, a1 = x_major ? x1 : y1, b0 = x_major ? y0 : x0, b1 = x_major ? y1 : x1;
    if (a0 == a1) return out;
    int along = x_major ? width : height, across = x_major ? height : width;
    for (int i = 0; i < along; i++) {
        double centre = i + 0.5;
        bool inside = a1 > a0 ? (centre >= a0 && centre < a1) : (centre <= a0 && centre > a1);
        if (!inside) continue;
        double b = b0 + (centre - a0) * (b1 - b0) / (a1 - a0);
        if (!(b >= 0 && b < across)) continue;
        int j = (int)std::floor(b);
        out.insert(x_major ? std::make_pair(i, j) : std::make_pair(j, i));
    }
    return out;
}

} // namespace

TEST(LineRaster, FirstPixelDrawnLastLeftForTheNextLine)
{
    Canvas c(8, 8);
    c.line(0.5f, 0.5f, 5.5f, 0.5f);
    EXPECT_EQ(c.inked(), (Pixels{{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}}));

    Canvas back(8, 8);
    back.line(5.5f, 0.5f, 0.5f, 0.5f);
    EXPECT_EQ(back.inked(), (Pixels{{1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}}));

    Canvas diagonal(8, 8);
    diagonal.line(0.5f, 0.5f, 4.5f, 4.5f);
    EXPECT_EQ(diagonal.inked(), (Pixels{{0, 0}, {1, 1}, {2, 2}, {3, 3}}));

    Canvas steep(8, 8);
    steep.line(1.5f, 0.5f, 2.5f, 4.5f);   /* y-major: one pixel per row */
    EXPECT_EQ(steep.inked().size(), 4u);
    for (auto p : steep.inked()) EXPECT_TRUE(p.first == 1 || p.first == 2);

    Canvas dot(8, 8);
    dot.line(3.2f, 3.2f, 3.2f, 3.2f);   /* no length, no pixel */
    EXPECT_TRUE(dot.inked().empty());
}

TEST(LineRaster, OutlinesCloseWithEveryCornerOnce)
{
    Canvas c(16, 16);
    const float corner[4][2] = {{2.5f, 2.5f}, {12.5f, 2.5f}, {12.5f, 9.5f}, {2.5f, 9.5f}};
    for (int i = 0; i < 4; i++) {
        const float *a = corner[i], *b = corner[(i + 1) % 4];
        c.line(a[0], a[1], b[0], b[1]);
    }
    Pixels expected;
    for (int x = 2; x <= 12; x++) {
        expected.insert({x, 2});
        expected.insert({x, 9});
    }
    for (int y = 2; y <= 9; y++) {
        expected.insert({2, y});
        expected.insert({12, y});
    }
    EXPECT_EQ(c.inked(), expected);
}

TEST(LineRaster, IndexedLinesUseTheProjectedPoints)
{
    /* The plan view's mapping: window x from model x, window y from -z. */
    RasterMapping m = {{10, 0, 0, 20.5}, {0, 0, -10, 20.5}};
    const float points[] = {0, 5, 0, 1, -3, 0, 1, 0, -1};
    float window[6];
    raster_project(m, points, 3, window);
    EXPECT_EQ(window[0], 20.5f);
    EXPECT_EQ(window[1], 20.5f);
    EXPECT_EQ(window[2], 30.5f);
    EXPECT_EQ(window[5], 30.5f);
    Canvas c(40, 40);
    /* A pair naming a point that is not there is skipped, and a trailing
     * odd index is ignored. */
    const uint32_t pairs[] = {0, 1, 1, 2, 0, 3, 9, 2, 7};
    raster_lines(c.image(), window, 3, pairs, 9, INK);
    Pixels expected;
    for (int x = 20; x < 30; x++) expected.insert({x, 20});
    for (int y = 20; y < 30; y++) expected.insert({30, y});
    EXPECT_EQ(c.inked(), expected);
}

/* Lines with ends anywhere, including far outside the image, cover
 * exactly the pixels the plain rule gives, and write nothing outside. */
TEST(LineRaster, ClippedLinesMatchThePlainRule)
{
    std::mt19937 random(11);
    std::uniform_real_distribution<double> near(-20.0, 60.0);
    std::uniform_real_distribution<double> far(-1e7, 1e7);
    for (int round = 0; round < 3000; round++) {
        double p[4];
        for (double &v : p) v = (round % 3 == 0) ? far(random) : near(random);
        /* Keep the ends as float so the reference sees the same numbers. */
        float f[4];
        for (int i = 0; i < 4; i++) f[i] = (float)p[i];
        Canvas c(37, 23);
        c.line(f[0], f[1], f[2], f[3]);
        Pixels want = reference_line(37, 23, f[0], f[1], f[2], f[3]);
        Pixels got = c.inked();
        /* At most a pixel's difference where the two ways of computing the
         * minor position round a centre differently. */
        size_t differing = 0;
        for (auto q : want) differing += !got.count(q);
        for (auto q : got) differing += !want.count(q);
        EXPECT_LE(differing, 2u) << f[0] << " " << f[1] << " -> " << f[2] << " " << f[3];
        ASSERT_LE(got.size(), 37u) << "more pixels than columns";
    }
}

TEST(LineRaster, BadEndsAndEmptyImagesDrawNothing)
{
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    Canvas c(10, 10);
    c.line(nan, 1, 5, 5);
    c.line(1, 1, inf, 5);
    c.line(-inf, 2.5f, inf, 2.5f);
    c.line(-50, -50, -10, -40);   /* wholly outside */
    c.line(3.5f, 100, 3.5f, 50);  /* above the image */
    EXPECT_TRUE(c.inked().empty());

    /* A line of enormous length across the image: one row, every column. */
    c.line(-3e38f, 4.5f, 3e38f, 4.5f);
    Pixels row;
    for (int x = 0; x < 10; x++) row.insert({x, 4});
    EXPECT_EQ(c.inked(), row);

    RasterImage none = {nullptr, 0, 0};
    raster_line(none, 0, 0, 5, 5, INK);   /* must not touch the null pixels */
}

/* Markers: odd sizes centre on the pixel holding the point, even sizes on
 * the nearest pixel corner; clipped at the edges; bad points skipped. */
TEST(LineRaster, MarkersFollowThePointRule)
{
    const float window[] = {5.3f, 5.3f, 5.7f, 5.2f, 0.2f, 9.9f, std::nanf(""), 1.0f, 1e30f, -1e30f};
    const uint32_t first[] = {0};
    Canvas odd(12, 12);
    raster_points(odd.image(), window, 5, first, 1, 3, INK);
    Pixels expected;
    for (int y = 4; y <= 6; y++) {
        for (int x = 4; x <= 6; x++) expected.insert({x, y});
    }
    EXPECT_EQ(odd.inked(), expected);

    const uint32_t second[] = {1};
    Canvas even(12, 12);
    raster_points(even.image(), window, 5, second, 1, 2, INK);
    EXPECT_EQ(even.inked(), (Pixels{{5, 4}, {6, 4}, {5, 5}, {6, 5}}));

    /* At the corner of the image only the part inside is drawn; a point
     * that is not a number, one far away and an index past the end draw
     * nothing; size 0 draws as 1. */
    const uint32_t rest[] = {2, 3, 4, 7};
    Canvas edge(12, 12);
    raster_points(edge.image(), window, 5, rest, 4, 4, INK);
    EXPECT_EQ(edge.inked(), (Pixels{{0, 8}, {1, 8}, {0, 9}, {1, 9}, {0, 10}, {1, 10}, {0, 11}, {1, 11}}));
    Canvas one(12, 12);
    raster_points(one.image(), window, 5, first, 1, 0, INK);
    EXPECT_EQ(one.inked(), (Pixels{{5, 5}}));
}
