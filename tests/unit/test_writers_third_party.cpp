/*
 * test_writers_third_party.cpp - the VRML and Inventor writers' output
 * read by other programs: Coin3D (through tests/tools/coin_check) must
 * read every file written for the example model and for models made by
 * the primitives without an error and find exactly the triangles and
 * line segments of the model; view3dscene's converter must read the VRML
 * 2.0 files without a warning.  Skipped where the programs are missing.
 */
#include "test_support.h"
#include "core/lights.h"
#include "edit/primitives.h"
#include "fileio/tri_file.h"
#include "fileio/vk_file.h"
#include "fileio/vrml_writer.h"
#include "texture/texture_table.h"

#include <array>
#include <fstream>
#include <sstream>

namespace {

struct Counts {
    long triangles = 0, segments = 0;
    bool mixed = false;   /* an object with polygons and lines */
};

void count_tree(Object *o, Counts *c)
{
    bool polys = false, lines = false;
    for (List *l = o->surfaces; l; l = l->next) {
        Surface *s = (Surface *)l->item;
        long n = s->num_vertrefs;
        if (s->surface_kind == SURFACE_POLYGON) {
            polys = true;
            if (n >= 3) c->triangles += n - 2;
        } else {
            lines = true;
            c->segments += s->surface_kind == SURFACE_CLOSED_LINE ? n : n - 1;
        }
    }
    c->mixed |= polys && lines;
    for (List *k = o->kids; k; k = k->next) count_tree((Object *)k->item, c);
}

Counts model_counts()
{
    Counts c;
    count_tree(world, &c);
    return c;
}

std::string run(const std::string &command, int *status = nullptr)
{
    std::string text;
    FILE *p = popen(command.c_str(), "r");
    if (!p) return text;
    char buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, p)) > 0) text.append(buffer, n);
    int rc = pclose(p);
    if (status) *status = rc;
    return text;
}

std::string temp_path(const std::string &name)
{
    return std::string(::testing::TempDir()) + "vesk_3p_" + std::to_string(getpid()) + "_" + name;
}

/* Writes the model in the three formats and has Coin (and for VRML 2.0
 * view3dscene) read them. */
void check_model(const std::string &label)
{
#ifndef VESK_COIN_CHECK
    GTEST_SKIP() << "Coin3D is not installed";
#else
    Counts c = model_counts();
    ASSERT_FALSE(c.mixed) << label << ": objects with both polygons and lines are written as the format has always "
                                      "been, which Coin does not read";
    struct Format {
        const char *name;
        int (*writer)(const char *);
        bool lines;
    };
    const Format formats[] = {{"a.wrl", write_vrml2, false}, {"b.wrl", write_vrml1, true}, {"c.iv", write_inventor, true}};
    for (const Format &f : formats) {
        std::string path = temp_path(f.name);
        int ok = 0;
        capture([&] { ok = f.writer(path.c_str()); });
        ASSERT_EQ(ok, 1);
        /* Coin keeps a few blocks until exit: not ours to report. */
        std::string out = run("ASAN_OPTIONS=detect_leaks=0 " + std::string(VESK_COIN_CHECK) + " '" + path + "' 2>&1");
        char expected[128];
        snprintf(expected, sizeof expected, "errors 0 triangles %ld lines %ld ", c.triangles, f.lines ? c.segments : 0L);
        EXPECT_TRUE(contains(out, expected)) << label << " " << f.name << ": " << out << " expected " << expected;
#ifdef VESK_TOVRMLX3D
        if (f.writer == write_vrml2) {
            int status = 0;
            std::string warnings = run(std::string(VESK_TOVRMLX3D) + " '" + path + "' 2>&1 >/dev/null", &status);
            EXPECT_EQ(status, 0) << label;
            EXPECT_EQ(warnings, "") << label;
        }
#endif
        remove(path.c_str());
    }
#endif
}

class WritersThirdParty : public ::testing::Test {
protected:
    int saved_normals = 0, saved_textures = 0;
    void SetUp() override
    {
        clear_world_children();
        saved_normals = prefs.vrml_output_normals;
        saved_textures = prefs.vrml_output_textures;
    }
    void TearDown() override
    {
        clear_world_children();
        scan_lights();
        prefs.vrml_output_normals = saved_normals;
        prefs.vrml_output_textures = saved_textures;
    }
    void add(Object *o)
    {
        ASSERT_NE(o, nullptr);
        if (!o->parent) object_add_child(world, o);
    }
    void all_settings(const std::string &label)
    {
        for (int normals = 0; normals < 2; normals++) {
            prefs.vrml_output_normals = normals;
            prefs.vrml_output_textures = 1;
            check_model(label + (normals ? " normals" : ""));
        }
    }
};

} // namespace

TEST_F(WritersThirdParty, ExampleModel)
{
    std::string path = std::string(getenv("VESK_HOME") ? getenv("VESK_HOME") : ".") + "/examples/sample.vk";
    int ok = 0;
    capture([&] { ok = readfile_vk(path.c_str(), world, 0); });
    ASSERT_EQ(ok, 1) << path;
    Object *lamp = new_light();
    lamp->centre[1] = 5;
    object_add_child(world, lamp);
    all_settings("sample.vk");
}

TEST_F(WritersThirdParty, Primitives)
{
    const float origin[3] = {0, 0, 0}, a[3] = {-1, -1, 0}, b[3] = {1, 2, 0}, far[3] = {3, 0, 1};
    capture([&] {
        add(create_regular_cube(origin));
        add(create_regular_sphere(far));
        add(create_ico(0, 0));
        add(new_cone(0, 1, 1, 2, 12));
        add(new_cylinder(1));
        add(new_disk(2, 1, 2, 10));
        add(add_grid(0, a, b));
        add(add_mesh(1, a, b));
        add(add_rect(2, a, b));
    });
    Object *textured = (Object *)world->kids->item;
    textured->texture = (uint8_t)texture_register_name("brick.rgb");
    textured->texture_repeat_x = 2;
    object_set_url(textured, "http://example.com/cube");
    object_set_name(textured, "textured cube");
    object_reparent((Object *)world->kids->next->item, textured);   /* a child inside the anchor */
    all_settings("solids");
    clear_world_children();
    capture([&] {
        add(new_circle(0, 1, 2, 16));
        add(new_arc(1, 2, 10, 200, 9));
    });
    all_settings("lines");
}

TEST_F(WritersThirdParty, TriangleFileOfTheExampleHasOneLinePerTriangle)
{
    std::string path = std::string(getenv("VESK_HOME") ? getenv("VESK_HOME") : ".") + "/examples/sample.vk";
    capture([&] { readfile_vk(path.c_str(), world, 0); });
    Counts c = model_counts();
    std::string out = temp_path("s.tri");
    capture([&] { EXPECT_EQ(write_tri_file(out.c_str()), 1); });
    std::ifstream in(out);
    long lines = 0;
    for (std::string line; std::getline(in, line);) lines++;
    EXPECT_EQ(lines, c.triangles);
    remove(out.c_str());
}
