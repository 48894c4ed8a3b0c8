/*
 * test_palette.cpp - the materials palette: the standard colours, colour
 * packing, lookups that add entries, the comparison used to merge file
 * materials, the material arithmetic, the messages to the palette window
 * and the fixed capacity of the table.
 */
#include "test_support.h"
#include "app/tcl_bridge.h"

#include <tcl.h>

#include <cmath>
#include <cstring>
#include <string>

namespace {

class Palette : public ::testing::Test {
protected:
    void SetUp() override { create_palette(); }
    void TearDown() override { create_palette(); }
};

/* An interpreter that records the palette messages in ::buttons and
 * ::edit, installed as the core's interpreter for the test's lifetime. */
class RecordingInterp {
public:
    RecordingInterp()
    {
        Tcl_FindExecutable(nullptr);
        interp_ = Tcl_CreateInterp();
        Tcl_Eval(interp_, "set ::buttons {}; proc add_palette_button args {lappend ::buttons $args}; "
                          "proc edit_colour_ui args {set ::edit $args}");
        saved_ = tcl_interp;
        tcl_interp = interp_;
    }
    ~RecordingInterp()
    {
        tcl_interp = saved_;
        Tcl_DeleteInterp(interp_);
    }
    std::string eval(const char *script)
    {
        Tcl_Eval(interp_, script);
        return Tcl_GetStringResult(interp_);
    }

private:
    Tcl_Interp *interp_;
    Tcl_Interp *saved_;
};

Material make_material(float r, float g, float b)
{
    Material m;
    memset(&m, 0, sizeof m);
    m.rgb[0] = r, m.rgb[1] = g, m.rgb[2] = b, m.rgb[3] = 1;
    m.shininess = 10;
    return m;
}

} // namespace

TEST_F(Palette, StandardColours)
{
    EXPECT_EQ(vk_get_num_palette(), 15);
    EXPECT_EQ(num_palette, 15);
    const long standard[15] = {0x000000, 0xffffff, 0xa04040, 0xff0000, 0xff7700,
                               0xffff00, 0x00ff00, 0x458674, 0xa0c0e0, 0x0000ff,
                               0x82004b, 0xee80ee, 0x444444, 0x888888, 0xcccccc};
    for (int i = 0; i < 15; i++) {
        EXPECT_EQ(index_to_rgb(i), standard[i]) << i;
        EXPECT_EQ(vk_material_index_to_rgb(i), standard[i]) << i;
    }
    EXPECT_STREQ(index_to_string(7), "#458674");
    EXPECT_STREQ(index_to_string(0), "#000000");
    EXPECT_STREQ(index_to_string(9), "#0000ff");

    Material *m = index_to_material(3);
    EXPECT_EQ(m, vk_material_get(3));
    EXPECT_EQ(m->rgb[0], 255 * 0.003921569f);
    EXPECT_EQ(m->rgb[1], 0.0f);
    EXPECT_EQ(m->rgb[3], 1.0f);
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(m->ambient[i], 0.2f);
        EXPECT_EQ(m->specular[i], 0.5f);
        EXPECT_EQ(m->emissive[i], 0.0f);
    }
    EXPECT_EQ(m->ambient[3], 1.0f);
    EXPECT_EQ(m->specular[3], 1.0f);
    EXPECT_EQ(m->emissive[3], 1.0f);
    EXPECT_EQ(m->shininess, 10.0f);
    EXPECT_EQ(m->transparency, 0.0f);

    float r, g, b;
    index_to_3f(7, &r, &g, &b);
    EXPECT_EQ(r, 0x45 * 0.003921569f);
    EXPECT_EQ(g, 0x86 * 0.003921569f);
    EXPECT_EQ(b, 0x74 * 0.003921569f);

    /* Out-of-range indices must not read outside the table. */
    index_to_rgb(-1);
    index_to_rgb(100000);
    index_to_string(-5);

    /* create_palette starts again from fifteen entries. */
    rgb_to_index(0x010203);
    EXPECT_EQ(num_palette, 16);
    create_palette();
    EXPECT_EQ(num_palette, 15);
}

TEST_F(Palette, ColourPacking)
{
    EXPECT_EQ(rgb_floats_to_long(1.0f, 0.5f, 0.0f), 0xff7f00);
    const float v[3] = {1.0f, 0.5f, 0.0f};
    EXPECT_EQ(rgb_floatv_to_long(v), 0xff7f00);
    const float v255[3] = {255.0f, 127.9f, 1.5f};
    EXPECT_EQ(rgb_float255v_to_long(v255), 0xff7f01);
    const float red[3] = {1, 0, 0}, blue[3] = {0, 0, 1};
    EXPECT_EQ(rgb_floatv_to_long_sgi(red), 0x0000ff);
    EXPECT_EQ(rgb_floatv_to_long_sgi(blue), 0xff0000);
    EXPECT_EQ(rgb_floatv_to_long_sgi(v), 0x007fff);
    /* No clamping: a component above 1 spills into the next byte. */
    EXPECT_EQ(rgb_floats_to_long(0.0f, 2.0f, 0.0f), 0x1fe00);

    float r, g, b;
    long_rgb_to_floats(0xff8001, &r, &g, &b);
    EXPECT_EQ(r, 255 * 0.003921569f);
    EXPECT_EQ(g, 128 * 0.003921569f);
    EXPECT_EQ(b, 1 * 0.003921569f);
    float c[4] = {9, 9, 9, 9};
    long_rgb_to_floatv(0x00ff00, c);
    EXPECT_EQ(c[0], 0.0f);
    EXPECT_EQ(c[1], 255 * 0.003921569f);
    EXPECT_EQ(c[3], 1.0f);
    /* Every byte survives unpacking and packing again. */
    for (long colour : {0x000000L, 0x123456L, 0xa0c0e0L, 0xffffffL, 0x010203L}) {
        long_rgb_to_floats(colour, &r, &g, &b);
        EXPECT_EQ(rgb_floats_to_long(r, g, b), colour) << std::hex << colour;
    }
}

TEST_F(Palette, RgbToIndexFindsOrAdds)
{
    EXPECT_EQ(rgb_to_index(0xff0000), 3);
    EXPECT_EQ(num_palette, 15);
    EXPECT_EQ(rgb_to_index(0x458674), 7);

    EXPECT_EQ(rgb_to_index(0x123456), 15);
    EXPECT_EQ(num_palette, 16);
    Material *m = index_to_material(15);
    EXPECT_EQ(index_to_rgb(15), 0x123456);
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(m->ambient[i], 0.2f);
        EXPECT_EQ(m->specular[i], 0.5f);
        EXPECT_EQ(m->emissive[i], 0.0f);
    }
    EXPECT_EQ(m->shininess, 10.0f);
    EXPECT_EQ(m->transparency, 0.0f);
    EXPECT_EQ(rgb_to_index(0x123456), 15);
    EXPECT_EQ(num_palette, 16);

    /* Only the diffuse colour is compared. */
    index_to_material(3)->shininess = 50;
    EXPECT_EQ(rgb_to_index(0xff0000), 3);
}

TEST_F(Palette, MaterialCompareTruncatesToHundredths)
{
    Material a = make_material(0.501f, 0.2f, 0.3f);
    Material b = make_material(0.509f, 0.2f, 0.3f);
    EXPECT_EQ(material_compare(&a, &b), 1);
    b.rgb[0] = 0.499f;
    a.rgb[0] = 0.501f;
    EXPECT_EQ(material_compare(&a, &b), 0);
    b = a;
    b.shininess = 10.0001f;
    EXPECT_EQ(material_compare(&a, &b), 0);
    b = a;
    b.transparency = 0.0001f;
    EXPECT_EQ(material_compare(&a, &b), 0);
    /* Every colour component takes part, alpha does not. */
    for (float *field : {&b.ambient[2], &b.emissive[0], &b.specular[1], &b.rgb[2]}) {
        b = a;
        *field += 0.05f;
        EXPECT_EQ(material_compare(&a, &b), 0) << (char *)field - (char *)&b;
    }
    b = a;
    b.rgb[3] = 0.1f;
    b.ambient[3] = 0.5f;
    EXPECT_EQ(material_compare(&a, &b), 1);
    /* Huge and odd values do not upset the comparison. */
    b = a;
    b.ambient[0] = 1e30f;
    EXPECT_EQ(material_compare(&a, &b), 0);
    b.ambient[0] = NAN;
    material_compare(&a, &b);

    /* find_material uses the same rule. */
    Material entry = *index_to_material(5);
    entry.rgb[1] += 0.004f;
    EXPECT_EQ(find_material(&entry), 5);
    entry.shininess = 11;
    EXPECT_EQ(find_material(&entry), -1);
}

TEST_F(Palette, AddingEntries)
{
    /* new_palette_entry answers the new count, append_material the index. */
    EXPECT_EQ(new_palette_entry(3), 16);
    EXPECT_EQ(num_palette, 16);
    EXPECT_EQ(memcmp(index_to_material(15), index_to_material(3), sizeof(Material)), 0);
    create_palette();
    Material copy = *index_to_material(3);
    EXPECT_EQ(append_material(&copy), 15);
    EXPECT_EQ(num_palette, 16);
    EXPECT_EQ(memcmp(index_to_material(15), &copy, sizeof(Material)), 0);

    /* material_get_index finds an equal entry before appending. */
    EXPECT_EQ(material_get_index(&copy), 3);
    Material fresh = make_material(0.33f, 0.66f, 0.99f);
    EXPECT_EQ(material_get_index(&fresh), 16);
    EXPECT_EQ(material_get_index(&fresh), 16);
    EXPECT_EQ(num_palette, 17);

    /* set_palette_entry stores the fields by name, alpha untouched. */
    Material *m = index_to_material(16);
    m->specular[3] = 0.25f;
    EXPECT_EQ(set_palette_entry(16, 0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0.7f, 0.8f, 0.9f, 0.15f,
                                0.25f, 0.35f, 42.0f, 0.5f), 1);
    EXPECT_EQ(m->rgb[2], 0.3f);
    EXPECT_EQ(m->ambient[0], 0.4f);
    EXPECT_EQ(m->emissive[0], 0.7f);
    EXPECT_EQ(m->emissive[2], 0.9f);
    EXPECT_EQ(m->specular[0], 0.15f);
    EXPECT_EQ(m->specular[2], 0.35f);
    EXPECT_EQ(m->specular[3], 0.25f);
    EXPECT_EQ(m->shininess, 42.0f);
    EXPECT_EQ(m->transparency, 0.5f);

    /* The command converts its fifteen words into the same call. */
    const char *words[] = {"set_palette_entry", "16", "1", "0.5", "0.25", "0", "0", "0", "0.1",
                           "0.2", "0.3", "0.6", "0.7", "0.8", "20", "0.75"};
    EXPECT_EQ(do_command(16, (char **)words), 1);
    EXPECT_EQ(m->rgb[1], 0.5f);
    EXPECT_EQ(m->emissive[1], 0.2f);
    EXPECT_EQ(m->specular[1], 0.7f);
    EXPECT_EQ(m->shininess, 20.0f);
    EXPECT_EQ(m->transparency, 0.75f);
    const char *copy_words[] = {"new_palette_entry", "16"};
    EXPECT_EQ(do_command(2, (char **)copy_words), 1);
    EXPECT_EQ(num_palette, 18);
    EXPECT_EQ(memcmp(index_to_material(17), m, sizeof(Material)), 0);

    Captured c = capture([] { set_palette_entry(500, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0); });
    EXPECT_NE(c.out, "");
    c = capture([] { new_palette_entry(-1); });
    EXPECT_EQ(num_palette, 18);
}

TEST_F(Palette, MaterialArithmetic)
{
    Material zero;
    memset(&zero, 0, sizeof zero);
    Material src = make_material(0.1f, 0.2f, 0.3f);
    src.ambient[0] = 1, src.ambient[1] = 2, src.ambient[2] = 3, src.ambient[3] = 9;
    src.specular[0] = 4, src.specular[1] = 5, src.specular[2] = 6;
    src.emissive[0] = 7, src.emissive[1] = 8, src.emissive[2] = 9;
    src.transparency = 0.5f;

    /* Green takes the source's blue: the established quirk. */
    EXPECT_EQ(material_add(&zero, &src), &zero);
    EXPECT_EQ(zero.rgb[0], 0.1f);
    EXPECT_EQ(zero.rgb[1], 0.3f);
    EXPECT_EQ(zero.rgb[2], 0.3f);
    EXPECT_EQ(zero.ambient[1], 3.0f);
    EXPECT_EQ(zero.specular[1], 6.0f);
    EXPECT_EQ(zero.emissive[0], 7.0f);
    EXPECT_EQ(zero.emissive[1], 9.0f);
    EXPECT_EQ(zero.ambient[3], 0.0f); /* alpha untouched */
    EXPECT_EQ(zero.rgb[3], 0.0f);
    EXPECT_EQ(zero.shininess, 10.0f);
    EXPECT_EQ(zero.transparency, 0.5f);
    material_add(&zero, &src);
    EXPECT_EQ(zero.shininess, 20.0f);

    zero.rgb[3] = 1.0f;
    EXPECT_EQ(material_divide(&zero, 2), &zero);
    EXPECT_FLOAT_EQ(zero.rgb[0], 0.1f);
    EXPECT_FLOAT_EQ(zero.rgb[1], 0.3f);
    EXPECT_EQ(zero.emissive[2], 9.0f);
    EXPECT_EQ(zero.specular[0], 4.0f);
    EXPECT_EQ(zero.shininess, 10.0f);
    EXPECT_EQ(zero.transparency, 0.5f);
    EXPECT_EQ(zero.rgb[3], 1.0f);
    material_divide(&zero, 0);
    EXPECT_TRUE(std::isinf(zero.shininess));

    Material *n = new_material();
    ASSERT_NE(n, nullptr);
    myfree(n);
    Material *copy = new_material_copy(&src);
    EXPECT_EQ(memcmp(copy, &src, sizeof(Material)), 0);
    myfree(copy);

    Captured c = capture([] { print_material(index_to_material(0)); });
    EXPECT_EQ(c.out, "MATERIAL \"\" rgb 0 0 0  amb 0.2 0.2 0.2  emis 0 0 0  spec 0.5 0.5 0.5  shi 10  "
                     "trans 0\n");
}

TEST_F(Palette, MessagesToThePaletteWindow)
{
    RecordingInterp tcl;
    create_palette();
    EXPECT_EQ(tcl.eval("llength $::buttons"), "15");
    EXPECT_EQ(tcl.eval("join [lindex $::buttons 0]"), "#000000 0");
    EXPECT_EQ(tcl.eval("join [lindex $::buttons 7]"), "#458674 7");
    EXPECT_EQ(tcl.eval("join [lindex $::buttons 14]"), "#cccccc 14");

    rgb_to_index(0xff0000); /* present: no message */
    EXPECT_EQ(tcl.eval("llength $::buttons"), "15");
    rgb_to_index(0x123456);
    EXPECT_EQ(tcl.eval("join [lindex $::buttons end]"), "#123456 15");
    new_palette_entry(3);
    EXPECT_EQ(tcl.eval("join [lindex $::buttons end]"), "#ff0000 16");
    Material m = make_material(0, 0, 1);
    append_material(&m);
    EXPECT_EQ(tcl.eval("join [lindex $::buttons end]"), "#0000ff 17");
    set_palette_entry(17, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0);
    EXPECT_EQ(tcl.eval("llength $::buttons"), "18");

    /* The editor message lists emissive before specular. */
    set_palette_entry(16, 0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0.7f, 0.8f, 0.9f, 0.15f, 0.25f, 0.35f,
                      42.0f, 0.5f);
    edit_palette_entry(16);
    EXPECT_EQ(tcl.eval("join $::edit { }"),
              "16 0.100000 0.200000 0.300000 0.400000 0.500000 0.600000 0.700000 0.800000 "
              "0.900000 0.150000 0.250000 0.350000 42.000000 0.500000");
}

TEST_F(Palette, CapacityIsNeverExceeded)
{
    int wrong = 0;
    Captured c = capture([&] {
        for (int i = 15; i < PALETTE_CAPACITY; i++) wrong += rgb_to_index(0x100000 + i * 7) != i;
    });
    EXPECT_EQ(wrong, 0);
    ASSERT_EQ(num_palette, 255);
    Material last = *index_to_material(254);

    /* A full palette answers with an existing entry and stays at 255. */
    int i = -1;
    c = capture([&] { i = rgb_to_index(0xfe0001); });
    EXPECT_GE(i, 0);
    EXPECT_LT(i, 255);
    EXPECT_EQ(num_palette, 255);
    EXPECT_NE(c.out, ""); /* the refusal is reported */
    EXPECT_EQ(rgb_to_index(0xff0000), 3);
    EXPECT_EQ(rgb_to_index(0x100000 + 254 * 7), 254);

    Material m = make_material(0.9f, 0.1f, 0.1f);
    c = capture([&] { i = append_material(&m); });
    EXPECT_GE(i, 0);
    EXPECT_LT(i, 255);
    EXPECT_EQ(num_palette, 255);
    c = capture([&] { i = material_get_index(&m); });
    EXPECT_LT(i, 255);
    c = capture([&] { i = new_palette_entry(3); });
    EXPECT_EQ(i, 255);
    EXPECT_EQ(num_palette, 255);
    EXPECT_EQ(memcmp(index_to_material(254), &last, sizeof(Material)), 0);
    EXPECT_EQ(index_to_rgb(3), 0xff0000);

    create_palette();
    EXPECT_EQ(num_palette, 15);
    EXPECT_EQ(rgb_to_index(0x123456), 15);
}
