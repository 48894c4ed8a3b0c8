/*
 * test_alias_tri.cpp - the Alias object-separated triangle reader, on
 * files made here by a small writer that follows the format: one
 * triangle, shared corners, 2047 and 2048 triangles, only the magic word,
 * the markers compared exactly, and damaged files (wrong magic, ending
 * mid-record, a negative count, a name with no NUL before the end).
 */
#include "test_support.h"
#include "edit/selection.h"
#include "fileio/alias_tri.h"

#include <cmath>
#include <fstream>

namespace {

struct AliasWriter {
    std::string b;
    void word(uint32_t w)
    {
        for (int i = 3; i >= 0; i--) b.push_back((char)(w >> (8 * i) & 255));
    }
    void f(float x)
    {
        uint32_t w;
        memcpy(&w, &x, 4);
        word(w);
    }
    void name(const std::string &s)
    {
        b += s;
        b.push_back('\0');
    }
    AliasWriter() { word(ALIAS_TRI_MAGIC); }
    void start(const std::string &object, int32_t count, const std::string &texture = "tex.rgb")
    {
        f(99999.0f);
        name(object);
        word((uint32_t)count);
        if (count) name(texture);
    }
    void end(const std::string &object)
    {
        f(-99999.0f);
        name(object);
    }
    /* A corner: normal, position, colour 0-255, u v. */
    void corner(const float n[3], const float p[3], const float rgb[3], float u, float v)
    {
        for (int i = 0; i < 3; i++) f(n[i]);
        for (int i = 0; i < 3; i++) f(p[i]);
        for (int i = 0; i < 3; i++) f(rgb[i]);
        f(u);
        f(v);
    }
    void triangle(float x = 0, float z = 0)
    {
        const float n[3] = {0, 0, 1}, rgb[3] = {10.9f, 20.2f, 30.7f};
        const float a[3] = {x, 0, z}, b2[3] = {x + 1, 0, z}, c[3] = {x, 1, z};
        corner(n, a, rgb, 0, 0);
        corner(n, b2, rgb, 1, 0);
        corner(n, c, rgb, 0, 1);
    }
};

std::string temp_path(const std::string &name)
{
    return std::string(::testing::TempDir()) + "vesk_alias_" + std::to_string(getpid()) + "_" + name;
}

class AliasTri : public ::testing::Test {
protected:
    void SetUp() override
    {
        clear_selection();
        clear_world_children();
    }
    void TearDown() override
    {
        clear_selection();
        clear_world_children();
    }
    Object *load(const std::string &data, Captured *out = nullptr)
    {
        std::string path = temp_path("a.tri");
        std::ofstream(path, std::ios::binary) << data;
        Captured c = capture([&] { load_alias_tri_file(path.c_str()); });
        if (out) *out = c;
        remove(path.c_str());
        return world->kids ? (Object *)list_last_item(world->kids) : nullptr;
    }
};

SVertex *ref(Surface *s, unsigned i)
{
    return (SVertex *)list_get_item(s->vertrefs, i);
}

} // namespace

TEST_F(AliasTri, OnlyTheMagicWordGivesOneEmptyObject)
{
    AliasWriter w;
    Object *o = load(w.b);
    ASSERT_NE(o, nullptr);
    EXPECT_EQ(world->num_kids, 1u);
    EXPECT_EQ(o->num_vert, 0u);
    EXPECT_EQ(o->num_surf, 0u);
    EXPECT_TRUE(object_is_selected(o));
}

TEST_F(AliasTri, OneTriangle)
{
    AliasWriter w;
    w.start("obj", 1);
    const float na[3] = {1, 0, 0}, nb[3] = {0, 1, 0}, nc[3] = {0, 0, 1};
    const float pa[3] = {1, 2, 3}, pb[3] = {4, 5, 6}, pc[3] = {7, 8, 9};
    const float ca[3] = {200.9f, 100.5f, 3.99f}, cb[3] = {1, 1, 1}, cc[3] = {2, 2, 2};
    w.corner(na, pa, ca, 0.1f, 0.2f);
    w.corner(nb, pb, cb, 0.3f, 0.4f);
    w.corner(nc, pc, cc, 0.5f, 0.6f);
    w.end("obj");
    int before = num_palette;
    Object *o = load(w.b);
    ASSERT_EQ(o->num_vert, 3u);
    ASSERT_EQ(o->num_surf, 1u);
    Surface *s = (Surface *)o->surfaces->item;
    EXPECT_EQ(ref(s, 0)->vertex->point[0], 7.0f);   /* C, B, A */
    EXPECT_EQ(ref(s, 1)->vertex->point[0], 4.0f);
    EXPECT_EQ(ref(s, 2)->vertex->point[0], 1.0f);
    EXPECT_EQ(ref(s, 0)->u, 0.5f);
    EXPECT_EQ(ref(s, 2)->v, 0.2f);
    EXPECT_EQ(ref(s, 2)->vertex->normal[0], 1.0f);
    EXPECT_EQ((Vertex *)o->vertices->item, ref(s, 0)->vertex);   /* vertices C, B, A too */
    EXPECT_FLOAT_EQ(s->normal[0], 0.33333334f);
    EXPECT_EQ(index_to_rgb(s->mat), 0xC86403);   /* truncated */
    EXPECT_EQ(num_palette, before + 1);
}

TEST_F(AliasTri, SharedCornersAreNotShared)
{
    AliasWriter w;
    w.start("a", 2);
    w.triangle();
    w.triangle();
    Object *o = load(w.b);
    EXPECT_EQ(o->num_vert, 6u);
    EXPECT_EQ(o->num_surf, 2u);
}

TEST_F(AliasTri, ObjectsOfAFileBecomeOneObject)
{
    AliasWriter w;
    w.start("a", 1);
    w.triangle();
    w.end("a");
    w.start("b", 0);
    w.end("b");
    w.start("c", 2, "");
    w.triangle(5);
    w.triangle(6);
    w.end("c");
    Object *o = load(w.b);
    EXPECT_EQ(world->num_kids, 1u);
    EXPECT_EQ(o->num_surf, 3u);
}

TEST_F(AliasTri, At2047TrianglesAcceptedAnd2048Refused)
{
    AliasWriter w;
    w.start("big", 2047);
    for (int i = 0; i < 2047; i++) w.triangle((float)i);
    Object *o = load(w.b);
    EXPECT_EQ(o->num_surf, 2047u);
    clear_world_children();
    w.triangle(9999);
    w.b.replace(4 + 4 + 4, 4, std::string("\0\0\x08\0", 4));   /* count 2048 */
    Captured c;
    o = load(w.b, &c);
    EXPECT_TRUE(contains(c.err, "Error: too many triangles; increase MAXTRIANGLES\n")) << c.err;
    ASSERT_NE(o, nullptr);
    EXPECT_EQ(o->num_surf, 0u);
    EXPECT_EQ(world->num_kids, 1u);
}

TEST_F(AliasTri, MarkersAreComparedExactly)
{
    /* After an object of one triangle, a word near but not equal to the
     * end marker starts that object's triangles again. */
    AliasWriter w;
    w.start("a", 1);
    w.triangle();
    AliasWriter t;
    t.b.clear();
    t.triangle(3);
    std::string second = t.b;
    float near_end = std::nextafter(-99999.0f, 0.0f);
    uint32_t bits;
    memcpy(&bits, &near_end, 4);
    for (int i = 0; i < 4; i++) second[i] = (char)(bits >> (8 * (3 - i)) & 255);
    w.b += second;
    Object *o = load(w.b);
    ASSERT_EQ(o->num_surf, 2u);
    Surface *s = (Surface *)o->surfaces->next->item;
    EXPECT_EQ(ref(s, 2)->vertex->normal[0], near_end);   /* corner A's normal x */
}

TEST_F(AliasTri, WrongMagicAndMissingFile)
{
    Captured c;
    Object *o = load("\0\1\xE1\xBB", &c);
    EXPECT_TRUE(contains(c.err, "is not a Alias object separated triangle file, magic number is wrong.")) << c.err;
    ASSERT_NE(o, nullptr);
    EXPECT_EQ(o->num_surf, 0u);
    c = capture([] { load_alias_tri_file("/nonexistent/x.tri"); });
    EXPECT_TRUE(contains(c.err, "reader: could not open file '/nonexistent/x.tri'")) << c.err;
    EXPECT_EQ(world->num_kids, 2u);
}

TEST_F(AliasTri, DamagedFiles)
{
    /* Ending inside the second record: the first is kept. */
    AliasWriter w;
    w.start("a", 2);
    w.triangle();
    w.triangle();
    Captured c;
    Object *o = load(w.b.substr(0, w.b.size() - 10), &c);
    EXPECT_EQ(o->num_surf, 1u);
    EXPECT_TRUE(contains(c.out, "ends inside triangle 2")) << c.out;
    /* A negative count refuses the file. */
    AliasWriter n;
    n.start("neg", -5);
    n.triangle();
    o = load(n.b, &c);
    EXPECT_EQ(o->num_surf, 0u);
    EXPECT_TRUE(contains(c.err, "negative number of triangles")) << c.err;
    /* A name with no NUL before the end. */
    AliasWriter u;
    u.start("a", 1);
    u.triangle();
    u.f(99999.0f);
    u.b += std::string(5000, 'x');
    o = load(u.b, &c);
    EXPECT_EQ(o->num_surf, 1u);
    /* Every cut of a small file: no crash, one object each time. */
    AliasWriter all;
    all.start("a", 2);
    all.triangle();
    all.triangle();
    all.end("a");
    clear_world_children();
    for (size_t cut = 0; cut <= all.b.size(); cut++) load(all.b.substr(0, cut));
    EXPECT_EQ(world->num_kids, all.b.size() + 1);
}

TEST_F(AliasTri, CommandShowsLoadingAndClears)
{
    AliasWriter w;
    w.start("a", 1);
    w.triangle();
    std::string path = temp_path("cmd.tri");
    std::ofstream(path, std::ios::binary) << w.b;
    const char *argv[] = {"import_alias_tri", path.c_str()};
    int saved = debug_flag;
    debug_flag = 1;
    Captured c = capture([&] { do_command(2, (char **)argv); });
    debug_flag = saved;
    EXPECT_TRUE(contains(c.out, "Loading Alias Tri...")) << c.out;
    EXPECT_TRUE(contains(c.out, "OBJECT START: a\n")) << c.out;
    EXPECT_TRUE(contains(c.out, "NUMBER OF TRIANGLES: 1\n")) << c.out;
    EXPECT_TRUE(contains(c.out, "  Object texture name: 'tex.rgb'\n")) << c.out;
    EXPECT_EQ(world->num_kids, 1u);
    remove(path.c_str());
}
