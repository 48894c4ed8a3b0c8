/*
 * test_lightwave.cpp - the LightWave reader from bytes: what an LWO2 file
 * is read into (layers, surfaces, colours, skipped curves), objects built
 * detached for the caller, and every cut-short or damaged copy of the
 * sample files refused (or read) without touching the palette on refusal.
 */
#include "test_support.h"
#include "fileio/lightwave.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace {

std::string sample(const char *name)
{
    const char *home = getenv("VESK_HOME");
    std::string path = std::string(home ? home : ".") + "/tests/data/formats/" + name;
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

LwResult read(const std::string &bytes, const char *path = "/nonexistent/sample.lwo")
{
    LwResult result;
    OutputCapture quiet;
    lw_read_bytes((const uint8_t *)bytes.data(), bytes.size(), path, "sample", &result);
    return result;
}

TEST(LightWaveObject, Lwo2IsReadIntoLayersSurfacesAndColours)
{
    std::string bytes = sample("lightwave_layers.lwo");
    ASSERT_FALSE(bytes.empty());
    LwModel model;
    std::string error;
    ASSERT_EQ(lw_parse_object((const uint8_t *)bytes.data(), bytes.size(), &model, &error), 1) << error;
    EXPECT_TRUE(model.lwo2);
    ASSERT_EQ(model.layers.size(), 2u);
    EXPECT_EQ(model.layers[0].name, "base");
    EXPECT_EQ(model.layers[1].parent, 0);
    EXPECT_EQ(model.layers[1].pivot[2], 3.0f);
    EXPECT_EQ(model.surface_names, (std::vector<std::string>{"Red", "Green", "Grey"}));
    EXPECT_EQ(model.surface_colours, (std::vector<long>{0xFF0000, 0x00FF00, 0x808080}));
    EXPECT_EQ(model.skipped, 1);   /* the curve list */
    /* Six faces; a triangle, a line and a patch (the one-point polygon is
     * kept in place but makes nothing). */
    EXPECT_EQ(model.polygons, 9);
    EXPECT_EQ(model.layers[1].polygons[2].kind, -1);
}

TEST(LightWaveObject, BuiltDetachedWithColoursInThePalette)
{
    int before = num_palette;
    LwResult result = read(sample("lightwave_box.lwob"));
    ASSERT_NE(result.root, nullptr) << result.error;
    EXPECT_EQ(result.root->parent, nullptr);
    EXPECT_EQ(result.root->type, OBJECT_GROUP);
    EXPECT_EQ(result.polygons, 7);
    EXPECT_EQ(result.objects, 1);
    EXPECT_GE(num_palette, before);
    object_free(result.root);
}

/* Every prefix of a file and every byte inverted in turn: refused with a
 * reason and the palette untouched, or read. */
void check_damage(const std::string &whole, bool prefixes_fail)
{
    for (size_t n = 0; n < whole.size(); n++) {
        int palette = num_palette;
        LwResult result = read(whole.substr(0, n));
        if (prefixes_fail) {
            EXPECT_EQ(result.root, nullptr) << "prefix " << n;
        }
        if (!result.root) {
            EXPECT_FALSE(result.error.empty()) << "prefix " << n;
            EXPECT_EQ(num_palette, palette);
        } else {
            object_free(result.root);
        }
    }
    for (size_t i = 0; i < whole.size(); i++) {
        std::string damaged = whole;
        damaged[i] = (char)(damaged[i] ^ 0xFF);
        int palette = num_palette;
        LwResult result = read(damaged);
        if (!result.root) {
            EXPECT_FALSE(result.error.empty()) << "byte " << i;
            EXPECT_EQ(num_palette, palette);
        } else {
            object_free(result.root);
        }
    }
}

TEST(LightWaveObject, DamagedLwo2)
{
    check_damage(sample("lightwave_layers.lwo"), true);
}

TEST(LightWaveObject, DamagedLwob)
{
    check_damage(sample("lightwave_box.lwob"), true);
}

TEST(LightWaveScene, DamagedScenes)
{
    /* The scenes' objects are not found from here: each is refused or
     * makes nothing, whatever the damage. */
    check_damage(sample("lightwave_new.lws"), false);
    check_damage(sample("lightwave_old.lws"), false);
}

TEST(LightWaveScene, MissingObjectsAreReportedAndNothingIsMade)
{
    LwResult result = read("LWSC\n3\n\nLoadObjectLayer 1 Objects/none.lwo\nAddNullObject N\n", "/nonexistent/s.lws");
    EXPECT_EQ(result.root, nullptr);
    EXPECT_EQ(result.error, "the scene places no object with polygons or lines");
    ASSERT_EQ(result.warnings.size(), 1u);
    EXPECT_EQ(result.warnings[0], "object file not found: Objects/none.lwo");
}

TEST(LightWaveScene, NotAScene)
{
    LwResult result = read("LWS\n3\n");
    EXPECT_EQ(result.root, nullptr);
    EXPECT_EQ(result.error, "not a LightWave object (FORM ... LWOB or LWO2) or scene (LWSC)");
}

} // namespace
