/*
 * test_dxf_reader.cpp - the DXF reader from text: the colour index table,
 * layers and their colours, a drawing left detached for the caller, and
 * refused texts that leave the palette as it was.
 */
#include "test_support.h"
#include "fileio/dxf_reader.h"

#include <string>
#include <vector>

namespace {

/* A DXF text from group code / value pairs. */
std::string dxf_text(const std::vector<std::string> &pairs)
{
    std::string text;
    for (const std::string &p : pairs) text += p + "\n";
    return text;
}

std::string entities(const std::vector<std::string> &pairs)
{
    std::vector<std::string> all = {"0", "SECTION", "2", "ENTITIES"};
    all.insert(all.end(), pairs.begin(), pairs.end());
    for (const char *s : {"0", "ENDSEC", "0", "EOF"}) all.push_back(s);
    return dxf_text(all);
}

DxfResult read(const std::string &text)
{
    DxfResult result;
    read_dxf_text(text.c_str(), text.size(), "drawing", &result);
    return result;
}

Object *kid(Object *o, int i)
{
    List *k = o->kids;
    while (k && i--) k = k->next;
    return k ? (Object *)k->item : nullptr;
}

TEST(DxfColours, IndexTableHasTheStandardColours)
{
    EXPECT_EQ(dxf_aci_to_rgb(1), 0xFF0000);
    EXPECT_EQ(dxf_aci_to_rgb(2), 0xFFFF00);
    EXPECT_EQ(dxf_aci_to_rgb(3), 0x00FF00);
    EXPECT_EQ(dxf_aci_to_rgb(4), 0x00FFFF);
    EXPECT_EQ(dxf_aci_to_rgb(5), 0x0000FF);
    EXPECT_EQ(dxf_aci_to_rgb(6), 0xFF00FF);
    EXPECT_EQ(dxf_aci_to_rgb(7), 0xFFFFFF);
    EXPECT_EQ(dxf_aci_to_rgb(8), 0x808080);
    EXPECT_EQ(dxf_aci_to_rgb(10), 0xFF0000);
    EXPECT_EQ(dxf_aci_to_rgb(255), 0xFFFFFF);
    /* A layer that is off has its colour negated. */
    EXPECT_EQ(dxf_aci_to_rgb(-5), 0x0000FF);
    /* By block, by layer and nonsense fall back to white. */
    EXPECT_EQ(dxf_aci_to_rgb(0), 0xFFFFFF);
    EXPECT_EQ(dxf_aci_to_rgb(256), 0xFFFFFF);
    EXPECT_EQ(dxf_aci_to_rgb(100000), 0xFFFFFF);
}

TEST(DxfReader, LinesGoToTheirLayersObjects)
{
    if (!dxf_reader_available()) GTEST_SKIP() << "built without libdxflib";
    DxfResult r = read(entities({"0", "LINE", "8", "A", "62", "1", "10", "0", "20", "0", "30", "0", "11", "1", "21",
                                 "2", "31", "3", "0", "LINE", "8", "B", "10", "0", "20", "0", "30", "0", "11", "1",
                                 "21", "0", "31", "0", "0", "LINE", "8", "A", "10", "5", "20", "0", "30", "0", "11",
                                 "6", "21", "0", "31", "0"}));
    ASSERT_NE(r.drawing, nullptr) << r.error;
    EXPECT_STREQ(r.drawing->name, "drawing");
    EXPECT_EQ(r.drawing->parent, nullptr);
    ASSERT_EQ(r.drawing->num_kids, 2u);
    EXPECT_STREQ(kid(r.drawing, 0)->name, "A");
    EXPECT_STREQ(kid(r.drawing, 1)->name, "B");
    EXPECT_EQ(kid(r.drawing, 0)->num_surf, 2u);
    EXPECT_EQ(kid(r.drawing, 0)->num_vert, 4u);
    EXPECT_EQ(r.entities, 3);
    EXPECT_EQ(r.skipped, 0);
    Surface *s = (Surface *)kid(r.drawing, 0)->surfaces->item;
    EXPECT_EQ(s->surface_kind, SURFACE_LINE);
    EXPECT_EQ(s->mat, rgb_to_index(0xFF0000));
    object_free(r.drawing);
}

TEST(DxfReader, RefusedTextsLeaveThePaletteAlone)
{
    if (!dxf_reader_available()) GTEST_SKIP() << "built without libdxflib";
    int before = num_palette;
    const char *bad[] = {"", "hello\n", "0\nSECTION\n2\n", "AutoCAD Binary DXF\r\n\x1a", "0\nSECTION\n0\nENDSEC\n"};
    for (const char *text : bad) {
        DxfResult r = read(text);
        EXPECT_EQ(r.drawing, nullptr) << text;
        EXPECT_FALSE(r.error.empty()) << text;
    }
    /* Read, but with a colour never seen: still nothing may be added when
     * a block inserts itself. */
    std::string self = dxf_text({"0", "SECTION", "2", "BLOCKS", "0", "BLOCK", "2", "S", "10", "0", "20", "0", "30", "0",
                                 "0", "LINE", "8", "0", "62", "77", "10", "0", "20", "0", "30", "0", "11", "1", "21", "0",
                                 "31", "0", "0", "INSERT", "8", "0", "2", "S", "10", "1", "20", "0", "30", "0", "0",
                                 "ENDBLK", "0", "ENDSEC", "0", "SECTION", "2", "ENTITIES", "0", "INSERT", "8", "0",
                                 "2", "S", "10", "0", "20", "0", "30", "0", "0", "ENDSEC", "0", "EOF"});
    DxfResult r = read(self);
    EXPECT_EQ(r.drawing, nullptr);
    EXPECT_NE(r.error.find("inserts itself"), std::string::npos) << r.error;
    EXPECT_EQ(num_palette, before);
}

TEST(DxfReader, PointLimitStopsExpansion)
{
    if (!dxf_reader_available()) GTEST_SKIP() << "built without libdxflib";
    long saved = dxf_point_limit;
    dxf_point_limit = 10;
    std::vector<std::string> pairs;
    for (int i = 0; i < 6; i++) {
        for (const char *s : {"0", "LINE", "8", "L", "10", "0", "20", "0", "30", "0", "11", "1", "21", "0", "31", "0"})
            pairs.push_back(s);
    }
    DxfResult r = read(entities(pairs));
    dxf_point_limit = saved;
    EXPECT_EQ(r.drawing, nullptr);
    EXPECT_NE(r.error.find("more than 10"), std::string::npos) << r.error;
}

} // namespace
