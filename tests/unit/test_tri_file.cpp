/*
 * test_tri_file.cpp - triangle files: shared corners, lines without a
 * colour, palette entries for new colours, bad files of every kind
 * (empty, 8 or 11 fields, NaN, huge numbers, a colour out of range) that
 * leave model and palette as they were, the writer's triangulation and
 * messages, and a model written and read back with every triangle's
 * facing kept.
 */
#include "test_support.h"
#include "fileio/tri_file.h"

#include <fstream>
#include <sstream>

namespace {

std::string temp_path(const std::string &name)
{
    return std::string(::testing::TempDir()) + "vesk_tri_" + std::to_string(getpid()) + "_" + name;
}

std::string write_file(const std::string &name, const std::string &text)
{
    std::string path = temp_path(name);
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

std::string read_text(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

class TriFile : public ::testing::Test {
protected:
    void SetUp() override { clear_world_children(); }
    void TearDown() override { clear_world_children(); }

    Object *last_child() { return world->kids ? (Object *)list_last_item(world->kids) : nullptr; }

    int load(const std::string &text, Captured *out = nullptr)
    {
        std::string path = write_file("in.tri", text);
        int ok = 0;
        Captured c = capture([&] { ok = load_tri_file(path.c_str()); });
        if (out) *out = c;
        remove(path.c_str());
        return ok;
    }
};

Vertex *ref_vertex(Surface *s, int i)
{
    return ((SVertex *)list_get_item(s->vertrefs, (unsigned)i))->vertex;
}

} // namespace

TEST_F(TriFile, TwoTrianglesSharingAnEdgeGiveFourVertices)
{
    ASSERT_EQ(load("0 0 0  1 0 0  1 1 0  0xff0000\n1 1 0  0 1 0  0 0 0  0xff0000\n"), 1);
    Object *o = last_child();
    ASSERT_NE(o, nullptr);
    EXPECT_EQ(o->num_vert, 4u);
    EXPECT_EQ(o->num_surf, 2u);
    Surface *s = (Surface *)o->surfaces->item;
    EXPECT_EQ(ref_vertex(s, 0)->point[0], 0.0f);
    EXPECT_EQ(ref_vertex(s, 1)->point[0], 1.0f);
    EXPECT_EQ(ref_vertex(s, 2)->point[1], 1.0f);
    Surface *t = (Surface *)o->surfaces->next->item;
    EXPECT_EQ(ref_vertex(t, 2), ref_vertex(s, 0));
    EXPECT_EQ(ref_vertex(t, 0), ref_vertex(s, 2));
    EXPECT_EQ(s->mat, t->mat);
    EXPECT_EQ(index_to_rgb(s->mat), 0xff0000);
}

TEST_F(TriFile, NineNumbersKeepTheDefaultMaterial)
{
    ASSERT_EQ(load("0 0 0 1 0 0 1 1 0\n"), 1);
    EXPECT_EQ(((Surface *)last_child()->surfaces->item)->mat, 1);
}

TEST_F(TriFile, NewColourAddsOnePaletteEntry)
{
    int before = num_palette;
    ASSERT_EQ(load("0 0 0 1 0 0 1 1 0 0x123456\n0 0 1 1 0 1 1 1 1 0x123456\n0 0 2 1 0 2 1 1 2 0x123456\n"), 1);
    EXPECT_EQ(num_palette, before + 1);
    EXPECT_EQ(index_to_rgb(num_palette - 1), 0x123456);
}

TEST_F(TriFile, BadFilesFailWithTheFormatMessageAndChangeNothing)
{
    const char *bad[] = {
        "",
        "   \n\n",
        "0 0 0 1 0 0 1 1\n",                               /* 8 fields */
        "0 0 0 1 0 0 1 1 0 0xff 7\n",                      /* 11 fields */
        "0 0 0 1 0 0 1 1 0 0xff\n0 0 0 nan 0 0 1 1 0\n",   /* NaN */
        "0 0 0 1e39 0 0 1 1 0\n",                          /* beyond float */
        "0 0 0 1 0 0 1 1 0 0x1000000\n",                   /* not a packed colour */
        "0 0 0 1 0 0 1 1 0 -0x10\n",
        "0 0 0 1 0 0 1 1 0 zz\n",
        "0 0 0 1 0 0 1 1 0\0 0x10\n",
    };
    for (size_t i = 0; i < sizeof bad / sizeof *bad; i++) {
        std::string text = i + 1 == sizeof bad / sizeof *bad ? std::string(bad[i], 25) : std::string(bad[i]);
        int palette = num_palette;
        Captured c;
        EXPECT_EQ(load(text, &c), 0) << i;
        EXPECT_EQ(world->num_kids, 0u) << i;
        EXPECT_EQ(num_palette, palette) << i;
        EXPECT_TRUE(contains(c.err, "Error whilst loading triangle file.\nformat of triangle file is:\n"
                                    "each line contains 9 floating point numbers and one hex value e.g.:\n"))
            << i << c.err;
        EXPECT_TRUE(contains(c.err, "represents 3 vertices of a triangle.")) << i;
        EXPECT_TRUE(contains(c.err, "duplicate vertices are aggregated when loaded.")) << i;
    }
}

TEST_F(TriFile, HugeNumberOnOneLine)
{
    std::string digits(1 << 20, '9');
    EXPECT_EQ(load("0 0 0 1 0 0 1 1 " + digits + "\n"), 0);
    EXPECT_EQ(load("0 0 0 1 0 0 1 1 0." + digits + "\n"), 1);
}

TEST_F(TriFile, MissingFileSaysSo)
{
    int ok = 1;
    Captured c = capture([&] { ok = load_tri_file("/nonexistent/x.tri"); });
    EXPECT_EQ(ok, 0);
    EXPECT_TRUE(contains(c.out, "can't open file for reading\n"));
}

TEST_F(TriFile, WriterSplitsQuadsAndIgnoresShortLines)
{
    Object *o = new_object(OBJECT_NORMAL);
    Vertex *v[4];
    const float p[4][3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    for (int i = 0; i < 4; i++) v[i] = object_add_new_vertex(o, p[i]);
    Surface *quad = new_surface();
    for (int i = 0; i < 4; i++) surface_add_vertref(quad, new_svertex(v[i], 0, 0));
    object_add_surface(o, quad);
    Surface *line = new_surface();
    line->surface_kind = SURFACE_LINE;
    surface_add_vertref(line, new_svertex(v[0], 0, 0));
    surface_add_vertref(line, new_svertex(v[2], 0, 0));
    object_add_surface(o, line);
    object_add_child(world, o);
    std::string path = temp_path("q.tri");
    Captured c = capture([&] { EXPECT_EQ(write_tri_file(path.c_str()), 1); });
    std::string text = read_text(path);
    EXPECT_EQ(count_lines(text), 2) << text;
    char colour[32];
    snprintf(colour, sizeof colour, "  0x%lX\n", index_to_rgb(1));
    EXPECT_TRUE(contains(text, colour)) << text;
    EXPECT_TRUE(contains(c.out, "poly with 4 vertices triangulated\n"));
    EXPECT_TRUE(contains(c.out, "ignoring surface with 2 vertices\n"));
    EXPECT_TRUE(contains(c.out, "written file "));
    remove(path.c_str());
}

TEST_F(TriFile, WriterUsesTheExactLineFormat)
{
    Object *o = new_object(OBJECT_NORMAL);
    const float p[3][3] = {{0.5f, -2, 3}, {1e-7f, 100000, 1234567}, {0, 0, -0.25f}};
    Surface *s = new_surface();
    for (int i = 0; i < 3; i++) surface_add_vertref(s, new_svertex(object_add_new_vertex(o, p[i]), 0, 0));
    s->mat = (uint16_t)rgb_to_index(0xABCDEF);
    object_add_surface(o, s);
    object_add_child(world, o);
    std::string path = temp_path("f.tri");
    capture([&] { write_tri_file(path.c_str()); });
    EXPECT_EQ(read_text(path), "0.5 -2 3  1e-07 100000 1.23457e+06  0 0 -0.25  0xABCDEF\n");
    remove(path.c_str());
}

TEST_F(TriFile, WrittenAndReadBackKeepsEveryTrianglesFacing)
{
    /* Two objects, one nested, with triangles and a pentagon. */
    Object *a = new_object(OBJECT_NORMAL);
    const float pa[5][3] = {{0, 0, 0}, {2, 0, 0}, {3, 1, 0}, {1, 2, 0}, {-1, 1, 0}};
    Vertex *va[5];
    for (int i = 0; i < 5; i++) va[i] = object_add_new_vertex(a, pa[i]);
    Surface *pent = new_surface();
    for (int i = 0; i < 5; i++) surface_add_vertref(pent, new_svertex(va[i], 0.5f, 0.5f));
    object_add_surface(a, pent);
    Object *b = new_object(OBJECT_NORMAL);
    const float pb[3][3] = {{0, 0, 5}, {0, 1, 5}, {1, 0, 5}};
    Surface *tri = new_surface();
    for (int i = 0; i < 3; i++) surface_add_vertref(tri, new_svertex(object_add_new_vertex(b, pb[i]), 0, 0));
    object_add_surface(b, tri);
    object_add_child(a, b);
    object_add_child(world, a);
    object_calc_normals_force(a);
    object_calc_normals_force(b);
    float n_pent[3], n_tri[3];
    memcpy(n_pent, pent->normal, sizeof n_pent);
    memcpy(n_tri, tri->normal, sizeof n_tri);
    std::string path = temp_path("rt.tri");
    capture([&] { ASSERT_EQ(write_tri_file(path.c_str()), 1); });
    clear_world_children();
    capture([&] { ASSERT_EQ(load_tri_file(path.c_str()), 1); });
    Object *o = (Object *)world->kids->item;
    EXPECT_EQ(o->num_surf, 4u);   /* three from the pentagon, one triangle */
    EXPECT_EQ(o->num_vert, 8u);   /* shared by position */
    EXPECT_EQ(o->num_kids, 0u);
    int i = 0;
    for (List *l = o->surfaces; l; l = l->next, i++) {
        Surface *s = (Surface *)l->item;
        const float *expected = i < 3 ? n_pent : n_tri;
        for (int k = 0; k < 3; k++) EXPECT_NEAR(s->normal[k], expected[k], 1e-5) << i;
        for (List *r = s->vertrefs; r; r = r->next) {
            EXPECT_EQ(((SVertex *)r->item)->u, 0.0f);
        }
    }
    remove(path.c_str());
}

TEST_F(TriFile, CommandShowsLoadingAndClears)
{
    std::string path = write_file("c.tri", "0 0 0 1 0 0 1 1 0\n");
    const char *argv[] = {"import_tri", path.c_str()};
    int saved = debug_flag;
    debug_flag = 1;
    Captured c = capture([&] { do_command(2, (char **)argv); });
    debug_flag = saved;
    EXPECT_STREQ(command_result_get(), "1");
    EXPECT_TRUE(contains(c.out, "Loading Tri...")) << c.out;
    EXPECT_TRUE(contains(c.out, "Calculating normals...")) << c.out;
    EXPECT_TRUE(contains(c.out, "normals done.")) << c.out;
    EXPECT_EQ(world->num_kids, 1u);
    remove(path.c_str());
}
