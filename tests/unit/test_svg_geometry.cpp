/*
 * test_svg_geometry.cpp - the SVG reader's drawing helpers on their own:
 * numbers in SVG's syntax only (no inf, nan or hexadecimal), transform
 * lists and their errors, paints, path data (end points exact, the offset
 * of a bad token, the limit on steps) and the shapes' outlines.
 */
#include <gtest/gtest.h>

#include "fileio/svg_geometry.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

TEST(SvgNumbers, TakesSvgSyntaxOnly)
{
    const char *text = "1.5.5-2e1,3";
    const char *p = text;
    double v;
    ASSERT_TRUE(svg_scan_number(&p, &v));
    EXPECT_DOUBLE_EQ(v, 1.5);
    ASSERT_TRUE(svg_scan_number(&p, &v));
    EXPECT_DOUBLE_EQ(v, 0.5);
    ASSERT_TRUE(svg_scan_number(&p, &v));
    EXPECT_DOUBLE_EQ(v, -20);
    ASSERT_TRUE(svg_scan_number(&p, &v));
    EXPECT_DOUBLE_EQ(v, 3);
    EXPECT_FALSE(svg_scan_number(&p, &v));
    for (const char *bad : {"inf", "nan", "NaN", "0x10", "1e999", "-", ".", "e5"}) {
        const char *q = bad;
        double w = 7;
        if (!strcmp(bad, "0x10")) {
            /* "0" is a number; the x after it is not. */
            ASSERT_TRUE(svg_scan_number(&q, &w));
            EXPECT_EQ(*q, 'x');
            continue;
        }
        EXPECT_FALSE(svg_scan_number(&q, &w)) << bad;
        EXPECT_EQ(q, bad) << bad;
    }
}

TEST(SvgTransform, ListsAndErrors)
{
    SvgMatrix m;
    std::string error;
    ASSERT_TRUE(svg_parse_transform("translate(10,20) scale(2)", &m, &error));
    SvgPoint p = svg_apply(m, {1, 1});
    EXPECT_DOUBLE_EQ(p.x, 12);
    EXPECT_DOUBLE_EQ(p.y, 22);
    ASSERT_TRUE(svg_parse_transform("rotate(90, 5, 5)", &m, &error));
    p = svg_apply(m, {10, 5});
    EXPECT_NEAR(p.x, 5, 1e-12);
    EXPECT_NEAR(p.y, 10, 1e-12);
    ASSERT_TRUE(svg_parse_transform("", &m, &error));
    EXPECT_DOUBLE_EQ(m.a, 1);
    EXPECT_FALSE(svg_parse_transform("rotate(1 2)", &m, &error));
    EXPECT_FALSE(svg_parse_transform("matrix(1 2 3)", &m, &error));
    EXPECT_FALSE(svg_parse_transform("scale(2", &m, &error));
    EXPECT_FALSE(svg_parse_transform("spin(3)", &m, &error));
    EXPECT_NE(error.find("spin"), std::string::npos);
    EXPECT_FALSE(svg_parse_transform("scale(1e300) scale(1e300)", &m, &error));
}

TEST(SvgPaint, Values)
{
    SvgPaint p;
    ASSERT_TRUE(svg_parse_paint(" #F0a ", &p));
    EXPECT_EQ(p.rgb, 0xff00aa);
    ASSERT_TRUE(svg_parse_paint("rgb(300, -5, 50%)", &p));
    EXPECT_EQ(p.rgb, 0xff0080);
    ASSERT_TRUE(svg_parse_paint("none", &p));
    EXPECT_TRUE(p.none);
    ASSERT_TRUE(svg_parse_paint("Teal", &p));
    EXPECT_EQ(p.rgb, 0x008080);
    ASSERT_TRUE(svg_parse_paint("url(#g)", &p));
    EXPECT_EQ(p.rgb, 0x808080);
    EXPECT_FALSE(svg_parse_paint("url(#g) url(#h)", &p));
    EXPECT_FALSE(svg_parse_paint("#12345", &p));
    EXPECT_FALSE(svg_parse_paint("", &p));
    EXPECT_FALSE(svg_parse_paint("rgb(1,2)", &p));
}

TEST(SvgPath, CurveEndsExactAndStepsLimited)
{
    std::vector<SvgOutline> out;
    std::string error;
    ASSERT_TRUE(svg_parse_path("M0 0 C1 1 2 1 3 0 Q4 -1 5 0 A1 1 0 0 1 7 0", 0, &out, &error));
    ASSERT_EQ(out.size(), 1u);
    /* Steps below 1 count as 1: a point per curve, two for the half turn. */
    EXPECT_EQ(out[0].points.size(), 5u);
    EXPECT_EQ(out[0].points.back().x, 7);
    EXPECT_EQ(out[0].points.back().y, 0);
    out.clear();
    ASSERT_TRUE(svg_parse_path("M0 0 C1 1 2 1 3 0", 100000, &out, &error));
    EXPECT_EQ(out[0].points.size(), (size_t)SVG_MAX_STEPS + 1);
}

TEST(SvgPath, BadTokenKeepsWhatCameBefore)
{
    std::vector<SvgOutline> out;
    std::string error;
    EXPECT_FALSE(svg_parse_path("M0 0 L5 5 Z M1 1 L2 2 L# 3", 4, &out, &error));
    ASSERT_EQ(out.size(), 2u);
    EXPECT_TRUE(out[0].closed);
    EXPECT_EQ(out[1].points.size(), 2u);
    EXPECT_NE(error.find("offset 23"), std::string::npos) << error;
    out.clear();
    EXPECT_FALSE(svg_parse_path("5 5", 4, &out, &error));
    EXPECT_TRUE(out.empty());
    EXPECT_FALSE(svg_parse_path("M0 0 Z 5", 4, &out, &error));
    EXPECT_FALSE(svg_parse_path("M0 0 A1 1 0 2 0 5 5", 4, &out, &error));
    EXPECT_TRUE(svg_parse_path("", 4, &out, &error));
}

TEST(SvgShapes, Outlines)
{
    SvgOutline e = svg_ellipse(1, 2, 3, 4, 2);
    ASSERT_EQ(e.points.size(), 8u);
    EXPECT_TRUE(e.closed);
    EXPECT_DOUBLE_EQ(e.points[0].x, 4);
    EXPECT_DOUBLE_EQ(e.points[0].y, 2);
    SvgOutline r = svg_rect(0, 0, 10, 4, 100, 0, 3);
    /* rx clamped to half the width, ry (not given) to half the height. */
    double min_x = 1e9, max_x = -1e9, min_y = 1e9, max_y = -1e9;
    for (const SvgPoint &p : r.points) {
        min_x = std::min(min_x, p.x), max_x = std::max(max_x, p.x);
        min_y = std::min(min_y, p.y), max_y = std::max(max_y, p.y);
    }
    EXPECT_DOUBLE_EQ(min_x, 0);
    EXPECT_DOUBLE_EQ(max_x, 10);
    EXPECT_DOUBLE_EQ(min_y, 0);
    EXPECT_DOUBLE_EQ(max_y, 4);
}

} // namespace
