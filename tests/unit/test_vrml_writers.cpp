/*
 * test_vrml_writers.cpp - the VRML 2.0, VRML 1.0 and Inventor writers:
 * the exact text for a small model (a triangle and a quad in one object,
 * a named child with a url holding a closed line and a line, a texture
 * with repeats 2 and 3, a palette entry with shininess 64, one light),
 * built here by hand from the format's rules; the preferences; failures
 * that keep an earlier file; the console lines.
 */
#include "test_support.h"
#include "core/lights.h"
#include "fileio/vrml_writer.h"
#include "texture/texture_table.h"

#include <fstream>
#include <sstream>
#include <sys/stat.h>

namespace {

std::string read_text(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

std::string temp_path(const char *name)
{
    return std::string(::testing::TempDir()) + "vesk_vrml_" + std::to_string(getpid()) + "_" + name;
}

Vertex *add_vertex(Object *o, float x, float y, float z)
{
    Vertex *v = new_vertex_set(x, y, z);
    object_add_vertex(o, v);
    return v;
}

Surface *add_surface(Object *o, int kind, int mat, std::initializer_list<std::pair<Vertex *, std::pair<float, float>>> refs)
{
    Surface *s = new_surface();
    s->surface_kind = (uint8_t)kind;
    s->mat = (uint16_t)mat;
    for (auto &r : refs) surface_add_vertref(s, new_svertex(r.first, r.second.first, r.second.second));
    object_add_surface(o, s);
    return s;
}

class VrmlWriters : public ::testing::Test {
protected:
    Material saved[3];
    int saved_normals, saved_textures;
    Object *body = nullptr, *door = nullptr, *lamp = nullptr;

    void SetUp() override
    {
        clear_world_children();
        for (int i = 0; i < 3; i++) saved[i] = *index_to_material(i);
        saved_normals = prefs.vrml_output_normals;
        saved_textures = prefs.vrml_output_textures;
        set_palette_entry(1, 1, 0, 0, 0.2f, 0, 0, 0, 0, 0, 1, 1, 1, 64, 0);
        set_palette_entry(2, 0, 0.5f, 1, 0, 0.1f, 0.2f, 0, 0, 0, 0.5f, 0.5f, 0.5f, 10, 0.25f);
        build_model();
    }
    void TearDown() override
    {
        clear_world_children();
        scan_lights();
        for (int i = 0; i < 3; i++) *index_to_material(i) = saved[i];
        prefs.vrml_output_normals = saved_normals;
        prefs.vrml_output_textures = saved_textures;
    }

    void build_model()
    {
        body = new_object(OBJECT_NORMAL);
        object_set_name(body, "body");
        Vertex *v0 = add_vertex(body, 0, 0, 0), *v1 = add_vertex(body, 1, 0, 0), *v2 = add_vertex(body, 1, 1, 0);
        Vertex *v3 = add_vertex(body, 2, 0, 0), *v4 = add_vertex(body, 2, 1, 0);
        Surface *t = add_surface(body, SURFACE_POLYGON, 2, {{v0, {0, 0}}, {v1, {1, 0}}, {v2, {1, 1}}});
        t->normal[2] = 1;
        Surface *q = add_surface(body, SURFACE_POLYGON, 1, {{v1, {0, 0}}, {v3, {1, 0}}, {v4, {1, 1}}, {v2, {0, 1}}});
        q->shading = 1;
        q->normal[0] = 1;  /* not written: the quad is smooth */
        for (Vertex *v : {v1, v2, v3, v4}) {
            v->normal[0] = 0;
            v->normal[1] = 0.6f;
            v->normal[2] = 0.8f;
        }
        body->texture = (uint8_t)texture_register_name("wood.rgb");
        body->texture_repeat_x = 2;
        body->texture_repeat_y = 3;
        object_add_child(world, body);

        door = new_object(OBJECT_NORMAL);
        object_set_name(door, "door");
        object_set_url(door, "http://example.com/door");
        Vertex *w0 = add_vertex(door, 0, 2, 0), *w1 = add_vertex(door, 1, 2, 0), *w2 = add_vertex(door, 1, 3, 0);
        add_surface(door, SURFACE_CLOSED_LINE, 0, {{w0, {0, 0}}, {w1, {0, 0}}, {w2, {0, 0}}});
        add_surface(door, SURFACE_LINE, 2, {{w0, {0, 0}}, {w2, {0, 0}}});
        object_add_child(body, door);

        lamp = new_light();
        object_set_name(lamp, "lamp");
        lamp->centre[0] = 1;
        lamp->centre[1] = 2;
        lamp->centre[2] = 3;
        object_add_child(world, lamp);
    }

    std::string write(int (*writer)(const char *), const char *name, std::string *console = nullptr)
    {
        std::string path = temp_path(name);
        int ok = 0;
        Captured c = capture([&] { ok = writer(path.c_str()); });
        EXPECT_EQ(ok, 1);
        if (console) *console = c.out;
        std::string text = read_text(path);
        remove(path.c_str());
        return text;
    }
};

const char *const light2 = "# Light lamp\n"
                           "Transform {\n"
                           "\ttranslation 1 2 3\n"
                           "\tchildren [\n"
                           "\t\tPointLight\n\t\t{\n\t\ton TRUE\n"
                           "\t\tintensity 1\n"
                           "\t\tcolor 1 1 1\n"
                           "\t\t}\n"
                           "\t\t]\n"
                           "}\n\n";

std::string vrml2_expected(bool normals, bool textures)
{
    std::string t = "#VRML V2.0 utf8\n\nGroup {\nchildren [\n";
    t += light2;
    t += "# Object \"body\" \n";
    t += "Shape {\nappearance Appearance { \n";
    if (textures) t += "texture ImageTexture { url \"file://wood.rgb\" }\n";
    t += "textureTransform TextureTransform { scale 2.000000 3.000000 } \n";
    t += " material Material {  }\n }\ngeometry IndexedFaceSet {\nsolid FALSE\ncreaseAngle 0.5\n";
    if (normals) t += "\nnormalPerVertex TRUE\n";
    t += "coord Coordinate { \npoint [\n0 0 0,\n1 0 0,\n1 1 0,\n2 0 0,\n2 1 0]\n}\n";
    t += "\n    coordIndex [ 0, 1, 2, -1,\n1, 3, 4, 2, -1]";
    if (normals) {
        t += "\nnormal Normal {\n    vector [ \n";
        t += "0 0 1, 0 0 1, 0 0 1,\n0 0.6 0.8, 0 0.6 0.8, 0 0.6 0.8, 0 0.6 0.8";
        t += "\n]\n}\n";
        t += "\n    normalIndex [ 0, 1, 2, -1,\n3, 4, 5, 6, -1]\n";
    }
    if (textures) {
        t += "\n texCoord TextureCoordinate {\n    point [ \n";
        t += "0 0, 1 0, 1 1, \n0 0, 1 0, 1 1, 0 1\n";
        t += "\n]\n}\n";
        t += "\n    texCoordIndex [ 0, 1, 2, -1,\n3, 4, 5, 6, -1]\n";
    }
    t += "\n    color Color { \n    color [ 0 0.5 1,\n1 0 0]\n}\ncolorPerVertex FALSE\n";
    t += "}\n}\n";
    t += "Anchor { url \"http://example.com/door\"\nchildren [\n";
    t += "# Object \"door\" \n";
    t += "]}\n";
    t += "]\n}\n";
    return t;
}

/* The palette node from the rules: every entry, "%g" numbers, "," between
 * entries, shininess divided by 128. */
std::string palette_expected()
{
    std::string t = "Material {\n";
    char b[128];
    const char *names[4] = {"diffuseColor [", "ambientColor [", "specularColor [", "emissiveColor ["};
    for (int part = 0; part < 4; part++) {
        t += names[part];
        for (int i = 0; i < num_palette; i++) {
            Material *m = index_to_material(i);
            const float *c = part == 0 ? m->rgb : part == 1 ? m->ambient : part == 2 ? m->specular : m->emissive;
            snprintf(b, sizeof b, "%s%g %g %g", i ? "," : "", c[0], c[1], c[2]);
            t += b;
        }
        t += "]\n";
    }
    t += "shininess [";
    for (int i = 0; i < num_palette; i++) {
        snprintf(b, sizeof b, "%s%g", i ? "," : "", index_to_material(i)->shininess / 128.0f);
        t += b;
    }
    t += "]\ntransparency [";
    for (int i = 0; i < num_palette; i++) {
        snprintf(b, sizeof b, "%s%g", i ? "," : "", index_to_material(i)->transparency);
        t += b;
    }
    t += "]\n}\nMaterialBinding {value PER_FACE_INDEXED }\n";
    return t;
}

std::string vrml1_expected(bool inventor, bool normals, bool textures)
{
    std::string t = inventor ? "#Inventor V2.1 ascii\n\n" : "#VRML V1.0 ascii\n\n";
    t += "Separator {\nShapeHints {\nvertexOrdering  COUNTERCLOCKWISE\n}\n\n";
    t += "\nPointLight\n{\non TRUE\nintensity 1\ncolor 1 1 1\nlocation 1 2 3\n}\n\n";
    t += palette_expected();
    t += "# Object body\nSeparator {\n";
    t += "Coordinate3 { \npoint [\n0 0 0,\n1 0 0,\n1 1 0,\n2 0 0,\n2 1 0]\n}\n";
    if (textures) {
        t += "Texture2 { filename \"file://wood.rgb\" }\n\n";
        t += "\nTextureCoordinate2 {\n    point [ \n0 0, 2 0, 2 3, \n0 0, 2 0, 2 3, 0 3\n\n]\n}\n";
    }
    if (normals) {
        t += "\nNormalBinding { value PER_VERTEX_INDEXED }\n";
        t += "\nNormal {\n    vector [ \n0 0 1, 0 0 1, 0 0 1,\n0 0.6 0.8, 0 0.6 0.8, 0 0.6 0.8, 0 0.6 0.8\n]\n}\n";
    }
    t += "IndexedFaceSet {\n \n    coordIndex [ 0, 1, 2, -1,\n1, 3, 4, 2, -1]";
    if (normals) t += "\n    normalIndex [ 0, 1, 2, -1,\n3, 4, 5, 6, -1]\n";
    if (textures) t += "\n    textureCoordIndex [ 0, 1, 2, -1,\n3, 4, 5, 6, -1]\n";
    t += "\n    materialIndex [ 2, 1]\n";
    t += "}\n";
    t += "# Object door\nWWWAnchor { name \"http://example.com/door\" description \"\"  map NONE\n";
    t += "Separator {\n";
    t += "Coordinate3 { \npoint [\n0 2 0,\n1 2 0,\n1 3 0]\n}\n";
    t += "IndexedLineSet {\n \n    coordIndex [ 0, 1, 2, 0, -1,\n0, 2, -1]";
    t += "\n    materialIndex [ 0, 2]\n";
    t += "}\n";
    t += "}\n}\n";  /* the door's Separator and WWWAnchor */
    t += "}\n";     /* the body's Separator */
    t += "# Object lamp\nSeparator {\n}\n";
    t += "}\n";
    return t;
}

} // namespace

TEST_F(VrmlWriters, Vrml2WithNormalsAndTextures)
{
    prefs.vrml_output_normals = 1;
    prefs.vrml_output_textures = 1;
    std::string console;
    EXPECT_EQ(write(write_vrml2, "a.wrl", &console), vrml2_expected(true, true));
    EXPECT_TRUE(contains(console, "Generating VRML (with normals, with texture support)\n")) << console;
    EXPECT_TRUE(contains(console, "written file ")) << console;
    EXPECT_EQ(export_notes.line_surfaces_left_out, 2);
}

TEST_F(VrmlWriters, Vrml2Plain)
{
    prefs.vrml_output_normals = 0;
    prefs.vrml_output_textures = 0;
    std::string console;
    EXPECT_EQ(write(write_vrml2, "b.wrl", &console), vrml2_expected(false, false));
    EXPECT_TRUE(contains(console, "Generating VRML (no normals, no texture support)\n")) << console;
}

TEST_F(VrmlWriters, Vrml1WithNormalsAndTextures)
{
    prefs.vrml_output_normals = 1;
    prefs.vrml_output_textures = 1;
    EXPECT_EQ(write(write_vrml1, "c.wrl"), vrml1_expected(false, true, true));
}

TEST_F(VrmlWriters, InventorPlain)
{
    prefs.vrml_output_normals = 0;
    prefs.vrml_output_textures = 0;
    std::string text = write(write_inventor, "d.iv");
    EXPECT_EQ(text, vrml1_expected(true, false, false));
    /* shininess 64 is 0.5 */
    EXPECT_TRUE(contains(text, "shininess [" + std::string(index_to_material(0)->shininess / 128 == 0 ? "0" : "")));
    char b[64];
    snprintf(b, sizeof b, ",0.5,");
    EXPECT_TRUE(contains(text, b));
}

TEST_F(VrmlWriters, OnlyLinesGiveNoShapeInVrml2)
{
    clear_world_children();
    Object *o = new_object(OBJECT_NORMAL);
    Vertex *a = add_vertex(o, 0, 0, 0), *b = add_vertex(o, 1, 0, 0);
    add_surface(o, SURFACE_LINE, 1, {{a, {0, 0}}, {b, {0, 0}}});
    object_add_child(world, o);
    prefs.vrml_output_normals = 1;
    EXPECT_EQ(write(write_vrml2, "e.wrl"), "#VRML V2.0 utf8\n\nGroup {\nchildren [\n]\n}\n");
}

TEST_F(VrmlWriters, NoNameNoUrlWritesNeitherCommentNorAnchor)
{
    object_set_name(body, "");
    object_set_url(door, "");
    object_set_name(door, nullptr);
    std::string text = write(write_vrml1, "f.wrl");
    EXPECT_FALSE(contains(text, "# Object body"));
    EXPECT_FALSE(contains(text, "WWWAnchor"));
    EXPECT_FALSE(contains(text, "# Object door"));
    text = write(write_vrml2, "g.wrl");
    EXPECT_FALSE(contains(text, "Anchor"));
    EXPECT_FALSE(contains(text, "# Object \""));
}

TEST_F(VrmlWriters, DebugLinesTraceTheWrite)
{
    prefs.vrml_output_normals = 1;
    prefs.vrml_output_textures = 1;
    int saved = debug_flag;
    debug_flag = 1;
    std::string console;
    write(write_vrml2, "h.wrl", &console);
    std::string console1;
    write(write_vrml1, "i.wrl", &console1);
    debug_flag = saved;
    for (const char *line : {"outputing VRML Normals\n", "number of normals output = 7\n",
                             "number of vertices in list of polys was 7\n", "outputing VRML normalIndex\n",
                             "normal indices output = 7\n", "outputing VRML TextureCoordinate\n",
                             "outputing VRML textureCoordIndex\n", "outputing VRML colour\n",
                             "outputing VRML IndexedFaceSet\n"}) {
        EXPECT_TRUE(contains(console, line)) << line;
    }
    for (const char *line : {"outputing VRML Normal\n", "outputing VRML TextureCoordinate2\n",
                             "outputing VRML IndexedLineSe\n", "outputing VRML materialIndex\n"}) {
        EXPECT_TRUE(contains(console1, line)) << line;
    }
}

TEST_F(VrmlWriters, UnopenableFileFailsAndKeepsTheEarlierFile)
{
    std::string console;
    int ok = 1;
    Captured c = capture([&] { ok = write_vrml2("/nonexistent-dir/x.wrl"); });
    EXPECT_EQ(ok, 0);
    EXPECT_TRUE(contains(c.out, "can't open file for writing\n"));
    std::string dir = temp_path("ro");
    mkdir(dir.c_str(), 0755);
    std::string path = dir + "/keep.wrl";
    { std::ofstream(path) << "earlier"; }
    chmod(dir.c_str(), 0555);
    if (geteuid() != 0) {
        c = capture([&] { ok = write_vrml1(path.c_str()); });
        EXPECT_EQ(ok, 0);
    }
    chmod(dir.c_str(), 0755);
    EXPECT_EQ(read_text(path), "earlier");
    remove(path.c_str());
    rmdir(dir.c_str());
}

TEST_F(VrmlWriters, CommandsReportOnTheStatusLineAndResult)
{
    std::string path = temp_path("cmd.wrl");
    const char *argv[] = {"write_vrml2", path.c_str()};
    int saved = debug_flag;
    debug_flag = 1;   /* status messages are traced on the console */
    Captured c = capture([&] { do_command(2, (char **)argv); });
    debug_flag = saved;
    EXPECT_STREQ(command_result_get(), "1");
    EXPECT_TRUE(contains(c.out + c.err, "VRML 2.0 leaves out 2 line surfaces")) << c.out << c.err;
    remove(path.c_str());
    const char *argv2[] = {"write_inventor", "/nonexistent-dir/x.iv"};
    c = capture([&] { do_command(2, (char **)argv2); });
    EXPECT_STREQ(command_result_get(), "0");
}
