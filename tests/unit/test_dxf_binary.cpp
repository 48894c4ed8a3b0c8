/*
 * test_dxf_binary.cpp - binary DXF to ASCII text: every value type with
 * one- and two-byte group codes and the 255 escape, binary chunks,
 * doubles that read back to the same bits, line breaks in strings, and
 * damaged files (cut at every byte, codes DXF lacks, endless and overlong
 * strings) refused with the offset named; a binary drawing read whole.
 */
#include "test_support.h"
#include "fileio/dxf_binary.h"
#include "fileio/dxf_reader.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

namespace {

const std::string SENTINEL("AutoCAD Binary DXF\r\n\x1a\0", 22);

/* Builds a binary DXF file group by group. */
struct Writer {
    bool wide;
    std::string bytes = SENTINEL;

    void le(uint64_t v, int n)
    {
        for (int i = 0; i < n; i++) bytes.push_back((char)(v >> (8 * i) & 0xFF));
    }
    Writer &code(int c)
    {
        if (wide) {
            le((uint16_t)c, 2);
        } else if (c >= 255) {
            le(255, 1);
            le((uint16_t)c, 2);
        } else {
            le((unsigned)c, 1);
        }
        return *this;
    }
    Writer &str(int c, const std::string &s)
    {
        code(c);
        bytes += s;
        bytes.push_back('\0');
        return *this;
    }
    Writer &dbl(int c, double d)
    {
        uint64_t bits;
        memcpy(&bits, &d, sizeof d);
        code(c);
        le(bits, 8);
        return *this;
    }
    Writer &i16(int c, int v)
    {
        code(c);
        le((uint16_t)(int16_t)v, 2);
        return *this;
    }
    Writer &i32(int c, long v)
    {
        code(c);
        le((uint32_t)(int32_t)v, 4);
        return *this;
    }
    Writer &i64(int c, long long v)
    {
        code(c);
        le((uint64_t)v, 8);
        return *this;
    }
    Writer &flag(int c, int v)
    {
        code(c);
        le((unsigned)v, 1);
        return *this;
    }
    Writer &chunk(int c, const std::string &data)
    {
        code(c);
        le(data.size(), 1);
        bytes += data;
        return *this;
    }
    Writer &start() { return str(0, "SECTION").str(2, "ENTITIES"); }
    Writer &end() { return str(0, "ENDSEC").str(0, "EOF"); }
};

bool translate(const std::string &bytes, std::string *text, std::string *error)
{
    return dxf_binary_to_text(bytes.data(), bytes.size(), text, error);
}

std::string text_of(const std::string &bytes)
{
    std::string text, error;
    EXPECT_TRUE(translate(bytes, &text, &error)) << error;
    return text;
}

std::string error_of(const std::string &bytes)
{
    std::string text, error;
    EXPECT_FALSE(translate(bytes, &text, &error));
    EXPECT_TRUE(text.empty());
    return error;
}

std::string ascii(const std::vector<std::string> &lines)
{
    std::string text;
    for (const std::string &l : lines) text += l + "\n";
    return text;
}

/* Every value type, in files of either code width. */
Writer every_type(bool wide)
{
    Writer w{wide};
    w.start();
    w.str(0, "LINE").str(8, "LAYER 1").i16(62, -3).i32(90, -2000000000).i32(420, 0x123456).i64(160, -1234567890123LL);
    w.flag(290, 1).dbl(10, 0.1).dbl(20, -2.5e-300).dbl(30, 1e308).dbl(40, 0).dbl(1041, 12.5);
    w.chunk(310, std::string("\x00\x01\xAB\xFF", 4)).str(1001, "APP").str(1000, "x").i16(1070, 32767);
    w.i32(1071, 70000).chunk(1004, "ok").i16(370, -1).i16(400, 7).i32(440, 1).dbl(460, 2).dbl(212, 3);
    w.i16(170, 1).i16(280, 2).i32(450, 3).str(330, "1F").str(100, "AcDbLine").str(999, "a comment");
    return w;
}

/* As "%.17g" writes it. */
std::string g17(double d)
{
    char buffer[64];
    snprintf(buffer, sizeof buffer, "%.17g", d);
    return buffer;
}

const std::vector<std::string> EVERY_TYPE_TEXT = {
    "0",    "SECTION", "2",    "ENTITIES", "0",    "LINE",           "8",    "LAYER 1",
    "62",   "-3",      "90",   "-2000000000", "420", "1193046",      "160",  "-1234567890123",
    "290",  "1",       "10",   g17(0.1), "20", g17(-2.5e-300), "30", g17(1e308),
    "40",   "0",       "1041", "12.5",     "310",  "0001ABFF",       "1001", "APP",
    "1000", "x",       "1070", "32767",    "1071", "70000",          "1004", "6F6B",
    "370",  "-1",      "400",  "7",        "440",  "1",              "460",  "2",
    "212",  "3",       "170",  "1",        "280",  "2",              "450",  "3",
    "330",  "1F",      "100",  "AcDbLine", "999",  "a comment",      "0",    "ENDSEC",
    "0",    "EOF"};

} // namespace

TEST(DxfBinary, TellsBinaryFromAscii)
{
    EXPECT_TRUE(dxf_is_binary(SENTINEL.data(), SENTINEL.size()));
    EXPECT_FALSE(dxf_is_binary(SENTINEL.data(), SENTINEL.size() - 1));
    EXPECT_FALSE(dxf_is_binary("0\nSECTION\n", 10));
    std::string other = SENTINEL;
    other[21] = 'x';
    EXPECT_FALSE(dxf_is_binary(other.data(), other.size()));
}

TEST(DxfBinary, EveryValueTypeWithOneByteCodes)
{
    Writer w = every_type(false);
    w.end();
    EXPECT_EQ(text_of(w.bytes), ascii(EVERY_TYPE_TEXT));
}

TEST(DxfBinary, EveryValueTypeWithTwoByteCodes)
{
    Writer w = every_type(true);
    w.end();
    EXPECT_EQ(text_of(w.bytes), ascii(EVERY_TYPE_TEXT));
}

TEST(DxfBinary, OneByteFilesEscapeCodesFrom255)
{
    Writer w{false};
    w.start().str(0, "LINE").str(255 + 45, "three hundred").str(1000, "xdata").end();
    /* The escaped codes: 255, then the code in two bytes. */
    EXPECT_NE(w.bytes.find(std::string("\xFF\x2C\x01three hundred", 16)), std::string::npos);
    EXPECT_NE(w.bytes.find(std::string("\xFF\xE8\x03xdata", 8)), std::string::npos);
    EXPECT_EQ(text_of(w.bytes),
              ascii({"0", "SECTION", "2", "ENTITIES", "0", "LINE", "300", "three hundred", "1000", "xdata", "0",
                     "ENDSEC", "0", "EOF"}));
}

TEST(DxfBinary, DoublesReadBackToTheSameBits)
{
    const double values[] = {0.1, 1.0 / 3, -0.0, 5e-324, 1.7976931348623157e308, 123456.789, -2.2250738585072014e-308};
    for (double d : values) {
        Writer w{true};
        w.start().dbl(10, d).end();
        std::string text = text_of(w.bytes);
        std::istringstream lines(text);
        std::string line;
        for (int i = 0; i < 6; i++) std::getline(lines, line);
        double back = strtod(line.c_str(), nullptr);
        EXPECT_EQ(memcmp(&back, &d, sizeof d), 0) << line;
    }
}

TEST(DxfBinary, ChunksOfAnyLength)
{
    std::string all;
    for (int i = 0; i < 255; i++) all.push_back((char)i);
    Writer w{true};
    w.start().chunk(311, "").chunk(319, all).end();
    std::string text = text_of(w.bytes);
    std::string hex;
    for (int i = 0; i < 255; i++) {
        char two[3];
        snprintf(two, sizeof two, "%02X", i);
        hex += two;
    }
    EXPECT_NE(text.find("311\n\n319\n" + hex + "\n"), std::string::npos);
}

TEST(DxfBinary, LineBreaksInStringsBecomeSpaces)
{
    Writer w{true};
    w.start().str(1, "two\r\nlines").end();
    EXPECT_NE(text_of(w.bytes).find("1\ntwo  lines\n"), std::string::npos);
}

TEST(DxfBinary, WhatFollowsEofIsIgnored)
{
    Writer w{true};
    w.start().end();
    w.bytes += "\x01\x02 trailing bytes";
    EXPECT_EQ(text_of(w.bytes), ascii({"0", "SECTION", "2", "ENTITIES", "0", "ENDSEC", "0", "EOF"}));
}

TEST(DxfBinary, CutAtEveryByteIsRefusedWithTheOffset)
{
    for (bool wide : {false, true}) {
        Writer w = every_type(wide);
        w.end();
        for (size_t cut = 0; cut < w.bytes.size(); cut++) {
            /* A copy of just the bytes kept, so that the sanitizers see
             * any read past them. */
            std::vector<char> kept(w.bytes.begin(), w.bytes.begin() + (long)cut);
            std::string text, error;
            EXPECT_FALSE(dxf_binary_to_text(kept.data(), kept.size(), &text, &error)) << cut;
            EXPECT_TRUE(text.empty());
            if (cut < SENTINEL.size()) {
                EXPECT_NE(error.find("sentinel"), std::string::npos) << error;
            } else {
                EXPECT_EQ(error.compare(0, 12, "binary DXF: "), 0) << error;
                EXPECT_NE(error.find("offset "), std::string::npos) << error;
            }
        }
    }
}

TEST(DxfBinary, CutShortMessagesNameTheGroup)
{
    Writer w{true};
    w.start().dbl(10, 1.5);
    /* The group starts at 22 + 10 + 11 = 43; two of its ten bytes are
     * missing. */
    w.bytes.resize(w.bytes.size() - 2);
    EXPECT_EQ(error_of(w.bytes), "binary DXF: the group at offset 43 is cut short (the file ends at offset 51)");
    Writer v{true};
    v.start().end();
    v.bytes.resize(v.bytes.size() - 6);   /* without 0 "EOF" */
    EXPECT_EQ(error_of(v.bytes), "binary DXF: the file ends at offset " + std::to_string(v.bytes.size()) +
                                     " before its EOF group (cut short?)");
}

TEST(DxfBinary, CodesDxfLacksAreRefused)
{
    Writer w{true};
    w.start().str(1072, "x").end();
    EXPECT_EQ(error_of(w.bytes), "binary DXF: group code 1072 at offset 43 is not a DXF group code");
    Writer n{true};
    n.start().str(-5, "x").end();
    EXPECT_EQ(error_of(n.bytes), "binary DXF: group code -5 at offset 43 is not a DXF group code");
    Writer e{false};
    e.start().str(40000, "x").end();
    EXPECT_EQ(error_of(e.bytes), "binary DXF: group code -25536 at offset 41 is not a DXF group code");
}

TEST(DxfBinary, TheFirstGroupMustBeSection)
{
    EXPECT_EQ(error_of(SENTINEL), "binary DXF: no SECTION group follows the sentinel (offset 22)");
    Writer w{true};
    w.str(0, "SECTIONS").end();
    EXPECT_NE(error_of(w.bytes).find("no SECTION"), std::string::npos);
    Writer v{true};
    v.str(1, "SECTION").end();
    EXPECT_NE(error_of(v.bytes).find("no SECTION"), std::string::npos);
}

TEST(DxfBinary, HugeStringWithoutItsEnd)
{
    Writer w{true};
    w.start().code(1);
    w.bytes += std::string(20 * 1000 * 1000, 'x');
    EXPECT_EQ(error_of(w.bytes), "binary DXF: the string at offset 45 has no end (the file ends at offset " +
                                     std::to_string(w.bytes.size()) + ")");
}

TEST(DxfBinary, OverlongStringIsRefused)
{
    Writer ok{true};
    ok.start().str(1, std::string(DXF_BINARY_MAX_STRING, 'y')).end();
    EXPECT_NE(text_of(ok.bytes).find(std::string(DXF_BINARY_MAX_STRING, 'y')), std::string::npos);
    Writer w{true};
    w.start().str(1, std::string(DXF_BINARY_MAX_STRING + 1, 'y')).end();
    EXPECT_EQ(error_of(w.bytes), "binary DXF: the string at offset 45 is longer than 4096 bytes");
}

TEST(DxfBinary, ReaderTakesBinaryDrawings)
{
    if (!dxf_reader_available()) GTEST_SKIP() << "built without libdxflib";
    Writer w{false};
    w.start().str(0, "LINE").str(8, "L").dbl(10, 1).dbl(20, 2).dbl(30, 3).dbl(11, 4).dbl(21, 5).dbl(31, 6);
    w.str(1001, "APP").dbl(1040, 2.5).str(0, "3DFACE").str(8, "F");
    const int codes[] = {10, 20, 30, 11, 21, 31, 12, 22, 32, 13, 23, 33};
    const double corners[] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 1, 0};   /* a triangle: the last corner repeated */
    for (int i = 0; i < 12; i++) w.dbl(codes[i], corners[i]);
    w.end();
    std::string file = w.bytes;
    DxfResult result;
    read_dxf_text(file.c_str(), file.size(), "binary", &result);
    ASSERT_NE(result.drawing, nullptr) << result.error;
    EXPECT_EQ(result.entities, 2);
    EXPECT_EQ(result.drawing->num_kids, 2);
    object_free(result.drawing);

    std::string cut = file.substr(0, file.size() - 9);
    DxfResult refused;
    read_dxf_text(cut.c_str(), cut.size(), "binary", &refused);
    EXPECT_EQ(refused.drawing, nullptr);
    EXPECT_NE(refused.error.find("offset"), std::string::npos) << refused.error;
}
