/*
 * test_reader_3ds.cpp - the 3D Studio reader: files built here chunk by
 * chunk for each rule (the axis swap, the winding, face materials, the
 * colour forms, texture points and names), bad data of every kind (not
 * 3DS, lengths that lie, counts larger than their chunk, truncation at
 * every byte, 100,000 nested chunks), and files written by assimp and by
 * lib3ds, whose chunk layouts differ, loaded with the counts assimp
 * reports for them.  assimp joins identical vertices when it reports,
 * the reader keeps every vertex the file holds: the counts agree for
 * files whose meshes hold no duplicate points, as these do.
 */
#include "test_support.h"
#include "edit/selection.h"
#include "fileio/reader_3ds.h"
#include "texture/texture_table.h"

#include <cstring>
#include <fstream>
#include <sstream>

namespace {

/* A 3DS file being built: chunks are opened and closed, lengths patched. */
struct Bytes {
    std::string b;
    void u16(unsigned v)
    {
        b.push_back((char)(v & 255));
        b.push_back((char)(v >> 8 & 255));
    }
    void u32(uint32_t v)
    {
        u16(v & 0xFFFF);
        u16(v >> 16);
    }
    void f32(float f)
    {
        uint32_t v;
        memcpy(&v, &f, 4);
        u32(v);
    }
    void str(const std::string &s)
    {
        b += s;
        b.push_back('\0');
    }
    size_t open(unsigned id)
    {
        size_t at = b.size();
        u16(id);
        u32(0);
        return at;
    }
    void close(size_t at)
    {
        uint32_t n = (uint32_t)(b.size() - at);
        for (int i = 0; i < 4; i++) b[at + 2 + i] = (char)(n >> (8 * i) & 255);
    }
};

struct Mesh {
    std::vector<float> points;              /* file x, y, z */
    std::vector<unsigned> faces;            /* a, b, c */
    std::vector<float> uv;
    std::string material;                   /* for every face, "" none */
};

void material_chunk(Bytes &f, const std::string &name, unsigned colour_id, const std::vector<float> &colour,
                    const std::string &texture = "")
{
    size_t m = f.open(0xAFFF);
    size_t n = f.open(0xA000);
    f.str(name);
    f.close(n);
    size_t d = f.open(0xA020);
    size_t c = f.open(colour_id);
    for (float v : colour) {
        if (colour_id == 0x11 || colour_id == 0x12) f.b.push_back((char)(unsigned char)v);
        else f.f32(v);
    }
    f.close(c);
    f.close(d);
    if (!texture.empty()) {
        size_t t = f.open(0xA200);
        size_t fn = f.open(0xA300);
        f.str(texture);
        f.close(fn);
        f.close(t);
    }
    f.close(m);
}

void mesh_chunk(Bytes &f, const Mesh &mesh)
{
    size_t o = f.open(0x4000);
    f.str("obj");
    size_t t = f.open(0x4100);
    size_t v = f.open(0x4110);
    f.u16((unsigned)mesh.points.size() / 3);
    for (float x : mesh.points) f.f32(x);
    f.close(v);
    if (!mesh.uv.empty()) {
        size_t u = f.open(0x4140);
        f.u16((unsigned)mesh.uv.size() / 2);
        for (float x : mesh.uv) f.f32(x);
        f.close(u);
    }
    size_t fl = f.open(0x4120);
    f.u16((unsigned)mesh.faces.size() / 3);
    for (size_t i = 0; i < mesh.faces.size(); i += 3) {
        f.u16(mesh.faces[i]);
        f.u16(mesh.faces[i + 1]);
        f.u16(mesh.faces[i + 2]);
        f.u16(7);
    }
    if (!mesh.material.empty()) {
        size_t fm = f.open(0x4130);
        f.str(mesh.material);
        f.u16((unsigned)mesh.faces.size() / 3);
        for (size_t i = 0; i < mesh.faces.size() / 3; i++) f.u16((unsigned)i);
        f.close(fm);
    }
    f.close(fl);
    f.close(t);
    f.close(o);
}

std::string file_3ds(const std::vector<Mesh> &meshes, const std::string &materials = "")
{
    Bytes f;
    size_t main = f.open(0x4D4D);
    size_t version = f.open(0x0002);
    f.u32(3);
    f.close(version);
    size_t editor = f.open(0x3D3D);
    f.b += materials;
    for (const Mesh &m : meshes) mesh_chunk(f, m);
    f.close(editor);
    size_t keyframes = f.open(0xB000);
    f.u32(0);
    f.close(keyframes);
    f.close(main);
    return f.b;
}

std::string red_material(const std::string &name = "red")
{
    Bytes m;
    material_chunk(m, name, 0x11, {255, 0, 0});
    return m.b;
}

Mesh triangle_mesh()
{
    Mesh m;
    m.points = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    m.faces = {0, 1, 2};
    return m;
}

std::string temp_path(const std::string &name)
{
    return std::string(::testing::TempDir()) + "vesk_3ds_" + std::to_string(getpid()) + "_" + name;
}

std::string run(const std::string &command)
{
    std::string text;
    FILE *p = popen(command.c_str(), "r");
    if (!p) return text;
    char buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, p)) > 0) text.append(buffer, n);
    pclose(p);
    return text;
}

long field(const std::string &text, const std::string &name)
{
    size_t at = text.find(name);
    if (at == std::string::npos) return -1;
    return strtol(text.c_str() + at + name.size(), nullptr, 10);
}

class Reader3ds : public ::testing::Test {
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

    int load_memory(const std::string &data, Captured *out = nullptr)
    {
        int r = -1;
        Captured c = capture([&] { r = import_3ds_memory((const unsigned char *)data.data(), (long)data.size()); });
        if (out) *out = c;
        return r;
    }
    int load_file(const std::string &path, Captured *out = nullptr)
    {
        int r = -1;
        Captured c = capture([&] { r = import_3ds_file(path.c_str()); });
        if (out) *out = c;
        return r;
    }
    Object *child(unsigned i) { return (Object *)list_get_item(world->kids, i); }
    long total_vertices()
    {
        long n = 0;
        for (List *k = world->kids; k; k = k->next) n += ((Object *)k->item)->num_vert;
        return n;
    }
    long total_faces()
    {
        long n = 0;
        for (List *k = world->kids; k; k = k->next) n += ((Object *)k->item)->num_surf;
        return n;
    }
};

SVertex *ref(Surface *s, unsigned i)
{
    return (SVertex *)list_get_item(s->vertrefs, i);
}

} // namespace

TEST_F(Reader3ds, NotThreeDsData)
{
    Captured c;
    EXPECT_EQ(load_memory("PK\3\4 not a 3ds file", &c), 1);
    EXPECT_TRUE(contains(c.out, "Not 3ds data\n"));
    EXPECT_EQ(world->num_kids, 0u);
    std::string path = temp_path("not.3ds");
    std::ofstream(path) << "hello";
    EXPECT_EQ(load_file(path, &c), 1);
    EXPECT_TRUE(contains(c.out, "Not 3ds data\n"));
    EXPECT_TRUE(contains(c.err, "Failed to load " + path + "\n"));
    remove(path.c_str());
}

TEST_F(Reader3ds, MissingFile)
{
    Captured c;
    EXPECT_EQ(load_file("/nonexistent/a.3ds", &c), 1);
    EXPECT_TRUE(contains(c.err, "Failed to open /nonexistent/a.3ds\n"));
}

TEST_F(Reader3ds, AxesSwapAndWindingReverses)
{
    Captured c;
    ASSERT_EQ(load_memory(file_3ds({triangle_mesh()}), &c), 0);
    EXPECT_TRUE(contains(c.out, "3DS file parsed - converting\n"));
    ASSERT_EQ(world->num_kids, 1u);
    Object *o = child(0);
    EXPECT_STREQ(o->name, "rawobj");
    EXPECT_EQ(o->type, OBJECT_NORMAL);
    Vertex *v0 = (Vertex *)o->vertices->item;
    EXPECT_EQ(v0->point[0], 1.0f);
    EXPECT_EQ(v0->point[1], 3.0f);
    EXPECT_EQ(v0->point[2], 2.0f);
    Surface *s = (Surface *)o->surfaces->item;
    ASSERT_EQ(s->num_vertrefs, 3u);
    EXPECT_EQ(ref(s, 0)->vertex, (Vertex *)list_get_item(o->vertices, 2));
    EXPECT_EQ(ref(s, 1)->vertex, (Vertex *)list_get_item(o->vertices, 1));
    EXPECT_EQ(ref(s, 2)->vertex, v0);
    EXPECT_EQ(s->mat, 1);   /* no material: the default of a new surface */
}

TEST_F(Reader3ds, SharedRedMaterialAddsOnePaletteEntry)
{
    int before = num_palette;
    Mesh a = triangle_mesh(), b = triangle_mesh();
    a.material = b.material = "scarlet";
    std::string materials = red_material("scarlet") ;
    /* A colour not in the palette yet. */
    Bytes m;
    material_chunk(m, "scarlet", 0x11, {251, 3, 7});
    ASSERT_EQ(load_memory(file_3ds({a, b}, m.b)), 0);
    EXPECT_EQ(num_palette, before + 1);
    Surface *sa = (Surface *)child(0)->surfaces->item, *sb = (Surface *)child(1)->surfaces->item;
    EXPECT_EQ(sa->mat, sb->mat);
    EXPECT_EQ(index_to_rgb(sa->mat), 0xFB0307);
}

TEST_F(Reader3ds, SelectsTheNewObjects)
{
    Object *old = new_object(OBJECT_NORMAL);
    object_add_child(world, old);
    select_object(old);
    ASSERT_EQ(load_memory(file_3ds({triangle_mesh(), triangle_mesh()})), 0);
    EXPECT_EQ(selection.num_selected_objects, 2);
    EXPECT_FALSE(object_is_selected(old));
    EXPECT_TRUE(object_is_selected(child(1)));
    EXPECT_TRUE(object_is_selected(child(2)));
}

TEST_F(Reader3ds, TexturePointsAndIndicesPastTheVertices)
{
    Mesh m;
    m.points = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    m.uv = {0.1f, 0.2f, 0.3f, 0.4f};           /* for vertices 0 and 1 only */
    m.faces = {0, 1, 2, 0, 9, 3};              /* 9 names no vertex */
    ASSERT_EQ(load_memory(file_3ds({m})), 0);
    Object *o = child(0);
    Surface *s = (Surface *)o->surfaces->item;
    EXPECT_EQ(ref(s, 0)->u, 0.0f);   /* vertex 2: no texture point */
    EXPECT_EQ(ref(s, 1)->u, 0.3f);
    EXPECT_EQ(ref(s, 1)->v, 0.4f);
    EXPECT_EQ(ref(s, 2)->v, 0.2f);
    Surface *t = (Surface *)o->surfaces->next->item;
    EXPECT_EQ(t->num_vertrefs, 2u);
}

TEST_F(Reader3ds, ColourForms)
{
    struct Case {
        std::vector<std::pair<unsigned, std::vector<float>>> chunks;
        long expected;
    } cases[] = {
        {{{0x10, {1.0f, 0.5f, 0.0f}}}, 0xFF8000},
        {{{0x12, {10, 20, 30}}}, 0x0A141E},
        {{{0x13, {0.0f, 1.0f, 0.2f}}}, 0x00FF33},
        {{{0x11, {1, 2, 3}}, {0x12, {9, 9, 9}}}, 0x010203},     /* lib3ds: byte then linear */
        {{{0x13, {0, 0, 0}}, {0x10, {0.0f, 0.0f, 1.0f}}}, 0x0000FF},
    };
    for (const Case &c : cases) {
        clear_world_children();
        Bytes m;
        size_t mc = m.open(0xAFFF);
        size_t n = m.open(0xA000);
        m.str("mat");
        m.close(n);
        size_t d = m.open(0xA020);
        for (auto &chunk : c.chunks) {
            size_t k = m.open(chunk.first);
            for (float v : chunk.second) {
                if (chunk.first == 0x11 || chunk.first == 0x12) m.b.push_back((char)(unsigned char)v);
                else m.f32(v);
            }
            m.close(k);
        }
        m.close(d);
        m.close(mc);
        Mesh mesh = triangle_mesh();
        mesh.material = "mat";
        ASSERT_EQ(load_memory(file_3ds({mesh}, m.b)), 0);
        EXPECT_EQ(index_to_rgb(((Surface *)child(0)->surfaces->item)->mat), c.expected) << std::hex << c.expected;
    }
}

TEST_F(Reader3ds, TextureBesideTheModelBecomesTheObjectsTexture)
{
    Bytes m;
    material_chunk(m, "wood", 0x11, {200, 100, 50}, "wood.gif");
    Mesh a = triangle_mesh();
    a.material = "wood";
    std::string dir = temp_path("tex");
    mkdir(dir.c_str(), 0755);
    std::string path = dir + "/m.3ds";
    std::string data = file_3ds({a}, m.b);
    std::ofstream(path, std::ios::binary) << data;
    ASSERT_EQ(load_file(path), 0);
    EXPECT_EQ(child(0)->texture, 0);   /* no such file beside it */
    std::ofstream(dir + "/wood.gif") << "GIF89a";
    ASSERT_EQ(load_file(path), 0);
    ASSERT_NE(child(1)->texture, 0);
    EXPECT_EQ(std::string(texture_id_to_name(child(1)->texture)), dir + "/wood.gif");
    remove((dir + "/wood.gif").c_str());
    remove(path.c_str());
    rmdir(dir.c_str());
}

TEST_F(Reader3ds, FaceMaterialMayNameOnePastTheLastFace)
{
    Bytes f;
    size_t main = f.open(0x4D4D);
    size_t editor = f.open(0x3D3D);
    f.b += red_material();
    size_t o = f.open(0x4000);
    f.str("x");
    size_t t = f.open(0x4100);
    size_t v = f.open(0x4110);
    f.u16(3);
    for (float x : {0, 0, 0, 1, 0, 0, 0, 1, 0}) f.f32(x);
    f.close(v);
    size_t fl = f.open(0x4120);
    f.u16(1);
    for (unsigned w : {0, 1, 2, 0}) f.u16(w);
    size_t fm = f.open(0x4130);
    f.str("red");
    f.u16(3);
    for (unsigned w : {1, 0, 60000}) f.u16(w);   /* one past the end, the face, far past */
    f.close(fm);
    f.close(fl);
    f.close(t);
    f.close(o);
    f.close(editor);
    f.close(main);
    ASSERT_EQ(load_memory(f.b), 0);
    EXPECT_EQ(index_to_rgb(((Surface *)child(0)->surfaces->item)->mat), 0xFF0000);
}

TEST_F(Reader3ds, LyingLengthsAndCounts)
{
    std::string good = file_3ds({triangle_mesh()}, red_material());
    auto with_u32 = [&](size_t at, uint32_t v) {
        std::string s = good;
        for (int i = 0; i < 4; i++) s[at + i] = (char)(v >> (8 * i) & 255);
        return s;
    };
    /* The main chunk claims far more than the file. */
    Captured past;
    EXPECT_EQ(load_memory(with_u32(2, 0x7FFFFFFF), &past), 1);
    EXPECT_TRUE(contains(past.out, "runs past the end of its parent")) << past.out;
    EXPECT_EQ(world->num_kids, 0u);
    /* Zero and short lengths end the parse. */
    size_t editor = good.find(std::string("\x3D\x3D", 2));
    ASSERT_NE(editor, std::string::npos);
    for (uint32_t length : {0u, 1u, 5u}) {
        Captured c;
        EXPECT_EQ(load_memory(with_u32(editor + 2, length), &c), 1) << length;
        EXPECT_EQ(world->num_kids, 0u);
        EXPECT_TRUE(contains(c.out, "shorter than its header")) << c.out;
    }
    /* A vertex count larger than its chunk. */
    size_t vertices = good.find(std::string("\x10\x41", 2));
    std::string big = good;
    big[vertices + 6] = (char)0xFF;
    big[vertices + 7] = (char)0xFF;
    Captured c;
    EXPECT_EQ(load_memory(big, &c), 1);
    EXPECT_TRUE(contains(c.out, "a count is larger than its chunk")) << c.out;
    EXPECT_EQ(world->num_kids, 0u);
}

TEST_F(Reader3ds, TruncatedAnywhereLeavesTheModelUnchanged)
{
    std::string good = file_3ds({triangle_mesh(), triangle_mesh()}, red_material());
    int palette = num_palette;
    for (size_t n = 0; n < good.size(); n++) {
        Captured c;
        EXPECT_EQ(load_memory(good.substr(0, n), &c), 1) << n;
        EXPECT_EQ(world->num_kids, 0u) << n;
        EXPECT_NE(c.out, "") << n;
    }
    EXPECT_EQ(num_palette, palette);
}

TEST_F(Reader3ds, HundredThousandNestedChunks)
{
    Bytes f;
    std::vector<size_t> open;
    open.push_back(f.open(0x4D4D));
    open.push_back(f.open(0x3D3D));
    open.push_back(f.open(0x4000));
    f.str("deep");
    for (int i = 0; i < 100000; i++) open.push_back(f.open(i % 2 ? 0x4100 : 0x1234));
    for (size_t i = open.size(); i-- > 0;) f.close(open[i]);
    EXPECT_EQ(load_memory(f.b), 0);
    /* The ids nest only a fixed number of levels: one empty mesh. */
    EXPECT_EQ(world->num_kids, 0u + 0u);
}

TEST_F(Reader3ds, FileAndMemoryGiveTheSameModel)
{
    Mesh a = triangle_mesh();
    a.material = "red";
    std::string data = file_3ds({a}, red_material());
    std::string path = temp_path("same.3ds");
    std::ofstream(path, std::ios::binary) << data;
    ASSERT_EQ(load_file(path), 0);
    ASSERT_EQ(load_memory(data), 0);
    ASSERT_EQ(world->num_kids, 2u);
    EXPECT_EQ(child(0)->num_vert, child(1)->num_vert);
    EXPECT_EQ(((Surface *)child(0)->surfaces->item)->mat, ((Surface *)child(1)->surfaces->item)->mat);
    remove(path.c_str());
}

TEST_F(Reader3ds, FilesExportedByAssimp)
{
#ifndef VESK_ASSIMP
    GTEST_SKIP() << "assimp is not installed";
#else
    std::string obj = temp_path("m.obj"), mtl = temp_path("m.mtl"), out = temp_path("m.3ds");
    {
        std::ofstream o(obj);
        o << "mtllib " << mtl.substr(mtl.rfind('/') + 1) << "\n";
        for (int y = 0; y < 5; y++)
            for (int x = 0; x < 6; x++) o << "v " << x << " " << y << " " << (x * y) % 3 << "\n";
        o << "usemtl red\n";
        for (int y = 0; y < 4; y++)
            for (int x = 0; x < 5; x++) {
                int a = y * 6 + x + 1;
                o << "f " << a << " " << a + 1 << " " << a + 7 << "\n";
                if (x < 3) o << "f " << a << " " << a + 7 << " " << a + 6 << "\n";
            }
        o << "usemtl blue\nf 1 2 8 7\nf 3 4 10 9\n";
        std::ofstream(mtl) << "newmtl red\nKd 1 0 0\nnewmtl blue\nKd 0 0 1\n";
    }
    run(std::string(VESK_ASSIMP) + " export '" + obj + "' '" + out + "' 2>&1");
    std::string info = run(std::string(VESK_ASSIMP) + " info '" + out + "' 2>&1");
    long vertices = field(info, "\nVertices:"), faces = field(info, "\nFaces:");
    ASSERT_GT(faces, 0) << info;
    ASSERT_EQ(load_file(out), 0);
    EXPECT_EQ(total_vertices(), vertices);
    EXPECT_EQ(total_faces(), faces);
    remove(obj.c_str());
    remove(mtl.c_str());
    remove(out.c_str());
#endif
}

TEST_F(Reader3ds, FilesWrittenByLib3ds)
{
#ifndef VESK_LIB3DS_WRITE
    GTEST_SKIP() << "lib3ds is not installed";
#else
    std::string out = temp_path("l.3ds");
    std::string made = run(std::string(VESK_LIB3DS_WRITE) + " '" + out + "' 4 9");
    ASSERT_EQ(load_file(out), 0);
    EXPECT_EQ(total_vertices(), field(made, "vertices "));
    EXPECT_EQ(total_faces(), field(made, "faces "));
#ifdef VESK_ASSIMP
    std::string info = run(std::string(VESK_ASSIMP) + " info '" + out + "' 2>&1");
    EXPECT_EQ(total_vertices(), field(info, "\nVertices:")) << info;
    EXPECT_EQ(total_faces(), field(info, "\nFaces:")) << info;
#endif
    /* Faces of two materials and none in one mesh: colours per face. */
    clear_world_children();
    made = run(std::string(VESK_LIB3DS_WRITE) + " '" + out + "' 2 5 mixed");
    ASSERT_EQ(load_file(out), 0);
    EXPECT_EQ(total_faces(), field(made, "faces "));
    Object *last = child(1);
    int red = 0, green = 0, plain = 0;
    for (List *l = last->surfaces; l; l = l->next) {
        long rgb = index_to_rgb(((Surface *)l->item)->mat);
        red += rgb == 0xFF0000;
        green += rgb == 0x00FF00;
        plain += ((Surface *)l->item)->mat == 1;
    }
    EXPECT_GT(red, 0);
    EXPECT_GT(green, 0);
    EXPECT_GT(plain, 0);
    remove(out.c_str());
#endif
}
