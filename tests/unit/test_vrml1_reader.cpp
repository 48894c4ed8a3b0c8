/*
 * test_vrml1_reader.cpp - the VRML 1.0 / Inventor reader: files written
 * by the writers read back to the same vertices, surfaces, materials,
 * names, urls and hierarchy; nodes of files from other tools (Transform
 * and friends, DEF/USE, Group, Switch, Cube, Sphere, Cylinder, Cone,
 * Info, unknown nodes); bad files (unbalanced braces, 100,000 nested
 * Separators, indices past the points, a 100 MB number, USE bombs) that
 * leave the model unchanged.
 */
#include "test_support.h"
#include "core/lights.h"
#include "edit/primitives.h"
#include "edit/selection.h"
#include "fileio/vk_file.h"
#include "fileio/vrml1_reader.h"
#include "fileio/vrml_writer.h"
#include "texture/texture_table.h"

#include <fstream>
#include <sstream>

namespace {

std::string temp_path(const std::string &name)
{
    return std::string(::testing::TempDir()) + "vesk_vrml1r_" + std::to_string(getpid()) + "_" + name;
}

/* The model as text: per object its name, url, texture, points and
 * surfaces (kind, material, vertex numbers), children indented. */
void snapshot_object(Object *o, int depth, std::ostringstream &out)
{
    out << std::string(depth * 2, ' ') << (o->name ? o->name : "") << "|" << (o->url ? o->url : "") << "|"
        << (o->texture ? texture_id_to_name(o->texture) : "") << "|";
    unsigned n = 0;
    for (List *l = o->vertices; l; l = l->next) {
        Vertex *v = (Vertex *)l->item;
        v->mark = n++;
        out << v->point[0] << "," << v->point[1] << "," << v->point[2] << " ";
    }
    out << "|";
    for (List *l = o->surfaces; l; l = l->next) {
        Surface *s = (Surface *)l->item;
        out << (int)s->surface_kind << ":" << s->mat << ":";
        for (List *r = s->vertrefs; r; r = r->next) out << ((SVertex *)r->item)->vertex->mark << ".";
        out << " ";
    }
    out << "\n";
    for (List *k = o->kids; k; k = k->next) snapshot_object((Object *)k->item, depth + 1, out);
}

std::string snapshot()
{
    std::ostringstream out;
    for (List *k = world->kids; k; k = k->next) snapshot_object((Object *)k->item, 0, out);
    return out.str();
}

class Vrml1Reader : public ::testing::Test {
protected:
    int saved_normals = 0, saved_textures = 0;
    void SetUp() override
    {
        clear_selection();
        clear_world_children();
        saved_normals = prefs.vrml_output_normals;
        saved_textures = prefs.vrml_output_textures;
    }
    void TearDown() override
    {
        clear_selection();
        clear_world_children();
        scan_lights();
        prefs.vrml_output_normals = saved_normals;
        prefs.vrml_output_textures = saved_textures;
    }
    long read(const std::string &text, Captured *out = nullptr)
    {
        long r = 0;
        Captured c = capture([&] { r = read_vrml1_text(text.c_str(), text.size()); });
        if (out) *out = c;
        return r;
    }
    /* Writes the model with writer, empties it, reads the file back and
     * compares. */
    void round_trip(int (*writer)(const char *), const char *label)
    {
        std::string before = snapshot();
        std::string path = temp_path("rt.wrl");
        capture([&] { ASSERT_EQ(writer(path.c_str()), 1); });
        clear_selection();
        clear_world_children();
        int palette = num_palette;
        long added = 0;
        Captured c = capture([&] { added = read_vrml1_file(path.c_str()); });
        EXPECT_GT(added, 0) << label << c.out;
        EXPECT_EQ(snapshot(), before) << label;
        EXPECT_EQ(num_palette, palette) << label;
        remove(path.c_str());
    }
};

} // namespace

TEST_F(Vrml1Reader, ExampleModelRoundTrips)
{
    std::string path = std::string(getenv("VESK_HOME") ? getenv("VESK_HOME") : ".") + "/examples/sample.vk";
    capture([&] { ASSERT_EQ(readfile_vk(path.c_str(), world, 0), 1); });
    for (int normals = 0; normals < 2; normals++) {
        prefs.vrml_output_normals = normals;
        round_trip(write_vrml1, "vrml1");
        round_trip(write_inventor, "inventor");
    }
}

TEST_F(Vrml1Reader, PrimitivesLinesUrlsAndTexturesRoundTrip)
{
    const float origin[3] = {0, 0, 0}, a[3] = {-1, -1, 0}, b[3] = {1, 2, 0};
    capture([&] {
        object_add_child(world, create_regular_cube(origin));
        object_add_child(world, new_cone(0, 1, 1, 2, 12));
        object_add_child(world, add_grid(0, a, b));
        object_add_child(world, new_circle(0, 1, 2, 16));
        object_add_child(world, new_arc(1, 2, 10, 200, 9));
    });
    Object *cube = (Object *)world->kids->item;
    object_set_name(cube, "box");
    object_set_url(cube, "http://example.com/box");
    cube->texture = (uint8_t)texture_register_name("crate.rgb");
    Object *cone = (Object *)world->kids->next->item;
    object_reparent(cone, cube);
    set_palette_entry(3, 0.1f, 0.2f, 0.3f, 0.2f, 0.2f, 0.2f, 0, 0, 0, 1, 1, 1, 64, 0.5f);
    object_set_col_index(cone, 3);
    prefs.vrml_output_textures = 1;
    prefs.vrml_output_normals = 1;
    round_trip(write_vrml1, "vrml1");
    prefs.vrml_output_textures = 0;   /* no texture written: none read */
    ((Object *)world->kids->item)->texture = 0;
    round_trip(write_inventor, "inventor");
}

TEST_F(Vrml1Reader, LightsBecomeLights)
{
    ASSERT_EQ(read("#VRML V1.0 ascii\nSeparator { PointLight { location 1 2 3 } Separator { Cube {} } }\n"), 2);
    List *lights = scan_lights();
    ASSERT_EQ(list_count(lights), 1u);
    EXPECT_EQ(((Object *)lights->item)->centre[1], 2.0f);
}

TEST_F(Vrml1Reader, NodesOfOtherTools)
{
    const char *text = "#Inventor V2.1 ascii\n"
                       "# a comment\n"
                       "Separator {\n"
                       "  Info { string \"made { elsewhere }\" }\n"
                       "  DEF Red Material { diffuseColor 1 0 0 }\n"
                       "  Separator {\n"
                       "    Translation { translation 10 0 0 }\n"
                       "    Cube { width 2 height 4 depth 6 }\n"
                       "  }\n"
                       "  DEF Ball Separator { Transform { translation 0 5 0 scaleFactor 2 2 2 } Sphere { radius 1 } }\n"
                       "  Separator { USE Ball }\n"
                       "  Separator { Rotation { rotation 0 0 1 1.5707964 } Scale { scaleFactor 1 1 1 } Cylinder { } }\n"
                       "  Separator { MatrixTransform { matrix 1 0 0 0  0 1 0 0  0 0 1 0  0 0 -7 1 } Cone { } }\n"
                       "  Group { Coordinate3 { point [ 0 0 0, 1 0 0, 1 1 0 ] } }\n"
                       "  Separator { IndexedFaceSet { coordIndex [ 0, 1, 2, -1 ] } }\n"
                       "  Switch { whichChild 1 Separator { Cube { } } Separator { Sphere { } } }\n"
                       "  SoUnknownNode { fields [ SFFloat f ] f 1 Separator { Cube { } } }\n"
                       "  WWWAnchor { name \"http://x\" Separator { Cube { } } }\n"
                       "}\n";
    Captured c;
    ASSERT_EQ(read(text, &c), 8) << c.out;
    Object *cube = (Object *)list_get_item(world->kids, 0);
    EXPECT_EQ(cube->num_vert, 8u);
    EXPECT_EQ(cube->num_surf, 6u);
    float lo = 1e9f, hi = -1e9f;
    for (List *l = cube->vertices; l; l = l->next) {
        lo = std::min(lo, ((Vertex *)l->item)->point[2]);
        hi = std::max(hi, ((Vertex *)l->item)->point[2]);
        EXPECT_GE(((Vertex *)l->item)->point[0], 9.0f);
    }
    EXPECT_EQ(hi - lo, 6.0f);
    EXPECT_EQ(index_to_rgb(((Surface *)cube->surfaces->item)->mat), 0xFF0000);
    EXPECT_STREQ(((Object *)list_get_item(world->kids, 1))->name, "Ball");
    Object *used = (Object *)list_get_item(world->kids, 2);
    ASSERT_EQ(used->num_kids, 1u);   /* the Ball again, inside */
    EXPECT_EQ(((Object *)used->kids->item)->num_vert, ((Object *)list_get_item(world->kids, 1))->num_vert);
    Object *face = (Object *)list_get_item(world->kids, 5);
    EXPECT_EQ(face->num_surf, 1u);   /* coordinates from the Group before it */
    Object *sw = (Object *)list_get_item(world->kids, 6);
    EXPECT_EQ(sw->num_surf, 16u * 8u);   /* the sphere, not the cube */
    EXPECT_STREQ(((Object *)list_get_item(world->kids, 7))->url, "http://x");
    EXPECT_EQ(selection.num_selected_objects, 8);
}

TEST_F(Vrml1Reader, BadFilesChangeNothing)
{
    std::string nested = "#VRML V1.0 ascii\n";
    for (int i = 0; i < 100000; i++) nested += "Separator {\n";
    nested += "Cube { }\n";
    for (int i = 0; i < 100000; i++) nested += "}\n";
    std::string bomb = "#VRML V1.0 ascii\nDEF A0 Separator { Cube { } }\n";
    for (int i = 1; i < 40; i++) {
        bomb += "DEF A" + std::to_string(i) + " Separator { USE A" + std::to_string(i - 1) + " USE A" +
                std::to_string(i - 1) + " }\n";
    }
    struct Case {
        std::string text, message;
    } cases[] = {
        {"", "does not start with"},
        {"#VRML V2.0 utf8\nGroup {}\n", "VRML 2.0 file"},
        {"#VRML V1.0 ascii\nSeparator { Cube { }\n", "closing brace is missing"},
        {"#VRML V1.0 ascii\nSeparator { Cube { } } }\n", "has no opening brace"},
        {"#VRML V1.0 ascii\nSeparator { Info { string \"open } }\n", "has no end"},
        {"#VRML V1.0 ascii\nSeparator { Coordinate3 { point [ 0 0 0, 1 0 0 }\n", "not closed"},
        {"#VRML V1.0 ascii\nSeparator { Coordinate3 { point [ 0 0 nan ] } }\n", "can't be read or is too large"},
        {"#VRML V1.0 ascii\nSeparator { Coordinate3 { point [ 0 0 1e99 ] } }\n", "can't be read or is too large"},
        {"#VRML V1.0 ascii\nSeparator { IndexedFaceSet { coordIndex [ 0, 1, 99999999999 ] } }\n", "can't be read"},
        {"#VRML V1.0 ascii\nSeparator { USE nothing }\n", "names no node"},
        {nested, "nest more than"},
        {bomb, "too many times"},
        {"#VRML V1.0 ascii\nSeparator { Coordinate3 { point [ 0 0 " + std::string(100 << 20, '9') + " ] } }\n",
         "too large"},
    };
    for (const Case &c : cases) {
        int palette = num_palette;
        Captured out;
        EXPECT_EQ(read(c.text, &out), -1) << c.message;
        EXPECT_TRUE(contains(out.out, c.message)) << c.message << ": " << out.out;
        EXPECT_EQ(world->num_kids, 0u) << c.message;
        EXPECT_EQ(num_palette, palette) << c.message;
    }
}

TEST_F(Vrml1Reader, IndicesPastThePointsAreLeftOut)
{
    Captured c;
    ASSERT_EQ(read("#VRML V1.0 ascii\nSeparator { Coordinate3 { point [ 0 0 0, 1 0 0, 0 1 0 ] }\n"
                   "IndexedFaceSet { coordIndex [ 0, 1, 2, -1, 0, 7, 1, 2, -1 ] } }\n",
                   &c),
              1);
    Object *o = (Object *)world->kids->item;
    EXPECT_EQ(o->num_surf, 2u);
    EXPECT_EQ(((Surface *)o->surfaces->next->item)->num_vertrefs, 3u);
    EXPECT_TRUE(contains(c.out, "1 indices named no point")) << c.out;
}

TEST_F(Vrml1Reader, CommandsReadBothFormats)
{
    std::string path = temp_path("c.iv");
    std::ofstream(path) << "#Inventor V2.1 ascii\nSeparator { Cube { } }\n";
    for (const char *command : {"import_vrml", "import_inventor"}) {
        const char *argv[] = {command, path.c_str()};
        capture([&] { do_command(2, (char **)argv); });
        EXPECT_STREQ(command_result_get(), "1") << command;
    }
    EXPECT_EQ(world->num_kids, 2u);
    const char *argv[] = {"import_vrml", "/nonexistent.wrl"};
    capture([&] { do_command(2, (char **)argv); });
    EXPECT_STREQ(command_result_get(), "0");
    remove(path.c_str());
}
