/*
 * test_text.cpp - text from the vector font: the shipped font's glyphs,
 * one object of line surfaces per text, the advance by glyph width plus
 * font_char_offset, missing characters, and missing or malformed fonts;
 * the commands "add_text" and "create_text".
 */
#include "modelling_test_support.h"
#include "edit/text.h"
#include "fileio/vk_file.h"

#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/* The repository's top directory, from this file's path, so that the
 * shipped font is found wherever the tests run. */
std::string source_root(void)
{
    std::string file = __FILE__;
    for (int up = 0; up < 3; up++) file = file.substr(0, file.find_last_of('/'));
    return file;
}

class TextTest : public ModellingTest {
protected:
    void SetUp() override
    {
        ModellingTest::SetUp();
        prefs_set_string(&prefs.fontpath, (source_root() + "/font.vk").c_str());
    }
};

/* The shipped font, read the way text_object reads it. */
struct Font {
    Object *group = new_group();
    Font()
    {
        std::string path = find_font_file(prefs.fontpath);
        EXPECT_FALSE(path.empty()) << "the shipped font.vk was not found";
        if (!path.empty()) readfile_vk(path.c_str(), group, 0);
    }
    ~Font() { object_free(group); }
    bool ok() const { return group->num_kids == 95; }
    Font(const Font &) = delete;
    Font &operator=(const Font &) = delete;
    Object *glyph(char c) const
    {
        for (Object *g : kids_of(group)) {
            if (g->name && g->name[0] == c && !g->name[1]) return g;
        }
        return nullptr;
    }
    float width(char c) const
    {
        float lo = 1e30f, hi = -1e30f;
        for (Vertex *v : vertices_of(glyph(c))) lo = std::min(lo, v->point[0]), hi = std::max(hi, v->point[0]);
        return hi - lo;
    }
    /* The vertices the glyph's surfaces use. */
    size_t used(char c) const
    {
        PointerTableUse table;
        return table.count(glyph(c));
    }
    struct PointerTableUse {
        size_t count(Object *g)
        {
            std::vector<Vertex *> seen;
            for (Surface *s : surfaces_of(g)) {
                for (SVertex *r : refs_of(s)) {
                    if (std::find(seen.begin(), seen.end(), r->vertex) == seen.end()) seen.push_back(r->vertex);
                }
            }
            return seen.size();
        }
    };
};

std::string write_temp(const char *name, const char *text)
{
    std::string path = std::string(testing::TempDir()) + name;
    FILE *f = fopen(path.c_str(), "w");
    fputs(text, f);
    fclose(f);
    return path;
}

TEST_F(TextTest, ShippedFontHasThePrintableCharacters)
{
    Font font;
    ASSERT_EQ(font.group->num_kids, 95u);
    for (int c = 32; c < 127; c++) EXPECT_NE(font.glyph((char)c), nullptr) << "no glyph for " << (char)c;
    for (Object *g : kids_of(font.group)) {
        for (Surface *s : surfaces_of(g)) EXPECT_EQ(s->surface_kind, SURFACE_LINE);
    }
    EXPECT_EQ(font.glyph(' ')->num_surf, 0u);
    EXPECT_GT(font.width(' '), 0.5f);
    /* Capitals stand on the baseline and are one unit high. */
    float top = -1e30f, bottom = 1e30f;
    for (Vertex *v : vertices_of(font.glyph('E'))) top = std::max(top, v->point[1]), bottom = std::min(bottom, v->point[1]);
    EXPECT_FLOAT_EQ(top, 1.0f);
    EXPECT_FLOAT_EQ(bottom, 0.0f);
}

TEST_F(TextTest, TextIsOneObjectOfLinesAdvancedByGlyphWidths)
{
    Font font;
    ASSERT_TRUE(font.ok());
    prefs.font_char_offset = 0.25;
    Object *t = text_object("VESK 2.0");
    ASSERT_NE(t, nullptr);
    EXPECT_STREQ(t->name, "VESK 2.0");
    expect_consistent(t);
    size_t expected_vertices = 0, expected_surfaces = 0;
    for (char c : std::string("VESK 2.0")) {
        expected_vertices += font.used(c);
        expected_surfaces += font.glyph(c)->num_surf;
    }
    EXPECT_EQ(t->num_vert, expected_vertices);
    EXPECT_EQ(t->num_surf, expected_surfaces);
    for (Surface *s : surfaces_of(t)) EXPECT_EQ(s->surface_kind, SURFACE_LINE);
    /* The last glyph starts after the widths of the others plus one
     * offset each. */
    float pen = 0;
    for (char c : std::string("VESK 2.")) pen += font.width(c) + 0.25f;
    std::vector<Vertex *> v = vertices_of(t);
    float last_min = 1e30f;
    for (size_t i = v.size() - font.used('0'); i < v.size(); i++) last_min = std::min(last_min, v[i]->point[0]);
    float glyph_min = 1e30f;
    for (SVertex *r : refs_of(surfaces_of(font.glyph('0'))[0])) glyph_min = std::min(glyph_min, r->vertex->point[0]);
    EXPECT_NEAR(last_min, pen + glyph_min, 1e-4);
    object_free(t);
}

TEST_F(TextTest, RepeatedGlyphIsShiftedByItsWidthPlusTheOffset)
{
    Font font;
    ASSERT_TRUE(font.ok());
    Object *t = text_object("VV");
    ASSERT_NE(t, nullptr);
    size_t n = font.used('V');
    ASSERT_EQ(t->num_vert, 2 * n);
    std::vector<Vertex *> v = vertices_of(t);
    float advance = font.width('V') + (float)prefs.font_char_offset;
    for (size_t i = 0; i < n; i++) {
        EXPECT_NEAR(v[n + i]->point[0], v[i]->point[0] + advance, 1e-5);
        EXPECT_EQ(v[n + i]->point[1], v[i]->point[1]);
    }
    object_free(t);
}

TEST_F(TextTest, MissingCharactersAreSkippedWithAMessage)
{
    Font font;
    ASSERT_TRUE(font.ok());
    Object *t = nullptr;
    Captured c = capture([&] { t = text_object("A\x01\xc3\xa9" "B"); });
    ASSERT_NE(t, nullptr);
    EXPECT_TRUE(contains(c.out, "there is no character 1 in the font - skipped"));
    EXPECT_TRUE(contains(c.out, "there is no character 195 in the font - skipped"));
    EXPECT_EQ(t->num_vert, font.used('A') + font.used('B'));
    object_free(t);
    EXPECT_EQ(text_object(""), nullptr);
    EXPECT_EQ(text_object(nullptr), nullptr);
    Captured spaces = capture([&] { EXPECT_EQ(text_object("   "), nullptr); });
}

TEST_F(TextTest, MissingOrMalformedFontsAreReported)
{
    prefs_set_string(&prefs.fontpath, "no_such_font.vk");
    Captured missing = capture([] { EXPECT_EQ(text_object("abc"), nullptr); });
    EXPECT_TRUE(contains(missing.err, "can't find the font file 'no_such_font.vk'"));

    std::string junk = write_temp("vesk_junk_font.vk", "this is not a model file\n");
    prefs_set_string(&prefs.fontpath, junk.c_str());
    Captured bad = capture([] { EXPECT_EQ(text_object("abc"), nullptr); });
    EXPECT_TRUE(contains(bad.err, "could not be read"));

    std::string other = write_temp("vesk_small_font.vk",
                                   "VESKb\nOBJECT world\nkids 1\nOBJECT poly\nname \"x\"\nnumvert 2\n0 0 0\n1 1 0\n"
                                   "numsurf 1\nSURF 2\nrefs 2\n0 0 0\n1 0 0\nkids 0\n");
    prefs_set_string(&prefs.fontpath, other.c_str());
    Object *x = text_object("xx");
    ASSERT_NE(x, nullptr);
    EXPECT_EQ(x->num_vert, 4u);
    object_free(x);
    Captured none = capture([] { EXPECT_EQ(text_object("A"), nullptr); });
    EXPECT_TRUE(contains(none.out, "there is no 'A' in the font - skipped"));
    EXPECT_EQ(world->num_kids, 0u);
    remove(junk.c_str());
    remove(other.c_str());
}

TEST_F(TextTest, FontIsLookedUpInTheWorkingDirectoryThenVeskHome)
{
    std::string root = source_root();
    const char *old_home = getenv("VESK_HOME");
    std::string saved_home = old_home ? old_home : "";
    char cwd[4096];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    std::string dir = std::string(testing::TempDir()) + "vesk_font_dir";
    mkdir(dir.c_str(), 0755);
    ASSERT_EQ(chdir(dir.c_str()), 0);
    remove("font.vk");
    setenv("VESK_HOME", root.c_str(), 1);
    EXPECT_EQ(find_font_file("font.vk"), root + "/font.vk");
    FILE *f = fopen("font.vk", "w");
    fputs("VESKb\n", f);
    fclose(f);
    EXPECT_EQ(find_font_file("font.vk"), "font.vk");
    remove("font.vk");
    /* Without VESK_HOME only the installed data directory is left. */
    unsetenv("VESK_HOME");
    std::string found = find_font_file("font.vk");
    EXPECT_NE(found, root + "/font.vk");
    EXPECT_NE(found, "font.vk");
    EXPECT_EQ(find_font_file((root + "/font.vk").c_str()), root + "/font.vk");
    EXPECT_EQ(find_font_file("/no/such/font.vk"), "");
    EXPECT_EQ(find_font_file(""), "");
    EXPECT_EQ(chdir(cwd), 0);
    if (old_home) setenv("VESK_HOME", saved_home.c_str(), 1);
}

TEST_F(TextTest, AddTextCommandsMakeASelectedObject)
{
    char add[] = "add_text", create[] = "create_text", text[] = "VESK 2.0";
    char *argv[] = {add, text};
    EXPECT_EQ(do_command(2, argv), 1);
    ASSERT_EQ(world->num_kids, 1u);
    EXPECT_STREQ(world_child(0)->name, "VESK 2.0");
    EXPECT_EQ(get_current_object(), world_child(0));
    argv[0] = create;
    EXPECT_EQ(do_command(2, argv), 1);
    EXPECT_EQ(world->num_kids, 2u);
    if (!undo_is_recorded()) GTEST_SKIP() << "undo records are not kept in this build";
    EXPECT_EQ(add_text(text), 1);
    ASSERT_NE(undo_current(), nullptr);
    EXPECT_STREQ(undo_current()->label, "add text");
    UNDO();
    EXPECT_EQ(world->num_kids, 2u);
}

} // namespace
