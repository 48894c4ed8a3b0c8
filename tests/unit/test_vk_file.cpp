/*
 * test_vk_file.cpp - the model file: round trips of built and loaded
 * models (tree, global vertex positions bit for bit, surfaces, references,
 * texture coordinates, materials, strings, frames), the reader's rules for
 * headers, flags, materials, references and data blocks, bad and hostile
 * input, and saves that fail without harming the previous file.
 */
#include "test_support.h"
#include "file_test_support.h"
#include "core/check.h"
#include "edit/model_state.h"
#include "app/commands.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "edit/primitives.h"
#include "edit/selection.h"
#include "edit/transform.h"
#include "fileio/number_scan.h"
#include "fileio/vk_file.h"
#include "platform/big_stack.h"
#include "texture/texture_table.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <csignal>
#include <cstring>
#include <dirent.h>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>
#include <sys/resource.h>
#include <unordered_map>
#include <vector>

namespace {

/* ---- the model as text, floats as bit patterns ---- */

void put_bits(std::string &s, float f)
{
    uint32_t b;
    memcpy(&b, &f, 4);
    char t[16];
    snprintf(t, sizeof t, "%08x ", b);
    s += t;
}

void put_object(std::string &s, Object *o, bool frames)
{
    s += "O " + std::string(object_type_name(o->type)) + " [" + (o->name ? o->name : "") + "] [" +
         (o->data ? o->data : "") + "] [" + (o->url ? o->url : "") + "] tex[" +
         (o->texture ? texture_id_to_name(o->texture) : "") + "] ";
    put_bits(s, o->texture_repeat_x);
    put_bits(s, o->texture_repeat_y);
    if (frames) {
        s += "\n  centre ";
        for (float c : o->centre) put_bits(s, c);
        s += "\n  rot ";
        for (float r : o->rotation) put_bits(s, r);
    }
    std::unordered_map<Vertex *, int> index;
    s += "\n  V";
    for (List *v = o->vertices; v; v = v->next) {
        index[(Vertex *)v->item] = (int)index.size();
        s += "\n   ";
        for (float c : ((Vertex *)v->item)->point) put_bits(s, c);
    }
    s += "\n  S";
    for (List *l = o->surfaces; l; l = l->next) {
        Surface *f = (Surface *)l->item;
        s += "\n   kind " + std::to_string(f->surface_kind) + " smooth " + std::to_string(f->shading) + " two " +
             std::to_string(f->twosided) + " mat " + std::to_string(f->mat) + ":";
        for (List *r = f->vertrefs; r; r = r->next) {
            SVertex *ref = (SVertex *)r->item;
            s += " " + std::to_string(index.count(ref->vertex) ? index[ref->vertex] : -1) + " ";
            put_bits(s, ref->u);
            put_bits(s, ref->v);
        }
    }
    s += "\n  kids " + std::to_string(o->num_kids) + "\n";
}

/* Depth-first text of the world's subtrees. */
std::string snapshot(bool frames = true)
{
    std::string s;
    std::vector<Object *> stack;
    for (List *k = world->kids; k; k = k->next) stack.insert(stack.begin(), (Object *)k->item);
    while (!stack.empty()) {
        Object *o = stack.back();
        stack.pop_back();
        put_object(s, o, frames);
        std::vector<Object *> kids;
        for (List *k = o->kids; k; k = k->next) kids.push_back((Object *)k->item);
        for (size_t i = kids.size(); i-- > 0;) stack.push_back(kids[i]);
    }
    return s;
}

int count_objects(Object *root)
{
    int n = 0;
    std::vector<Object *> stack(1, root);
    while (!stack.empty()) {
        Object *o = stack.back();
        stack.pop_back();
        n++;
        for (List *k = o->kids; k; k = k->next) stack.push_back((Object *)k->item);
    }
    return n - 1;
}

Object *child(Object *o, int i) { return (Object *)list_get_item(o->kids, (unsigned)i); }
Surface *surface(Object *o, int i) { return (Surface *)list_get_item(o->surfaces, (unsigned)i); }

/* ---- building models ---- */

Object *add_object(Object *parent, int type, const char *name)
{
    Object *o = new_object(type);
    object_set_name(o, name);
    object_add_child(parent, o);
    return o;
}

Vertex *add_vertex(Object *o, float x, float y, float z)
{
    const float p[3] = {x, y, z};
    return object_add_new_vertex(o, p);
}

Surface *add_surface(Object *o, std::vector<Vertex *> vs, int kind, int smooth, int two, int mat)
{
    Surface *s = new_surface();
    s->surface_kind = (uint8_t)kind;
    s->shading = smooth;
    s->twosided = two;
    s->mat = (uint16_t)mat;
    float u = 0.1f;
    for (Vertex *v : vs) {
        surface_add_vertref(s, new_svertex(v, u, 1.0f - u));
        u *= 3.3f;
    }
    object_add_surface(o, s);
    return s;
}

/* A box-like solid of vertices around centre c, given extent. */
Object *add_solid(Object *parent, const char *name, float cx, float cy, float cz, float extent, int mat)
{
    Object *o = add_object(parent, OBJECT_NORMAL, name);
    std::vector<Vertex *> v;
    for (int i = 0; i < 8; i++) {
        v.push_back(add_vertex(o, cx + ((i & 1) ? extent : -extent * 0.7f), cy + ((i & 2) ? extent * 1.1f : -extent),
                               cz + ((i & 4) ? extent * 0.3f : -extent * 0.9f)));
    }
    add_surface(o, {v[0], v[1], v[3], v[2]}, SURFACE_POLYGON, 0, 1, mat);
    add_surface(o, {v[4], v[5], v[7]}, SURFACE_POLYGON, 1, 0, 0);
    add_surface(o, {v[0], v[4], v[6], v[2]}, SURFACE_CLOSED_LINE, 1, 1, mat);
    add_surface(o, {v[1], v[5]}, SURFACE_LINE, 0, 0, 0);
    o->centre[0] = cx, o->centre[1] = cy, o->centre[2] = cz;
    return o;
}

/* An empty model and selection (the selection is cleared first: it may
 * hold objects about to be deleted). */
void reset_model()
{
    clear_selection();
    clear_world_children();
}

int load(const std::string &path, int select = 0)
{
    return readfile_vk(path.c_str(), world, select);
}

/* Reads a file made of text into a fresh model; returns readfile_vk's
 * result and what it printed. */
Captured load_text(const TempDir &dir, const std::string &text, int *result = nullptr)
{
    std::string path = dir.file("in.vk");
    write_file(path, text);
    int r = 0;
    Captured c = capture([&] { r = load(path); });
    if (result) *result = r;
    return c;
}

class VkFile : public ::testing::Test {
protected:
    TempDir dir;
    void SetUp() override { reset_model(); }
    void TearDown() override { reset_model(); }

    /* Saves the model, clears it and loads the file back. */
    void save_clear_load(const std::string &name)
    {
        std::string path = dir.file(name);
        Captured c = capture([&] { ASSERT_EQ(write_vk(path.c_str()), 1); });
        reset_model();
        int r = 0;
        capture([&] { r = load(path); });
        ASSERT_EQ(r, 1) << c.out;
    }
};

const char *const HEADER = "VESKb\n";

std::string material_line(float r)
{
    return "MATERIAL \"m\" rgb " + std::to_string(r) +
           " 0.5 0.25 amb 0.2 0.2 0.2 emis 0 0 0 spec 0.5 0.5 0.5 shi 10 trans 0\n";
}

} // namespace

/* ================= numbers ================= */

/* The reader's number scanner takes a fast path for short decimals; it
 * must give exactly what std::from_chars gives for every text. */
TEST(VkNumbers, ScanningMatchesFromChars)
{
    std::mt19937_64 rng(7);
    std::vector<std::string> texts = {"0", "-0", "0.0", "1", "-1", "0.1", "1e10", "1E-5", "3.4028235e38",
                                      "1.17549435e-38", "123456789012345678", "9007199254740993", "0.30000001192092896",
                                      "16777217", "33554434", "0.5e-1", ".5", "5.", "1e22", "1e23", "4.9e-324",
                                      "7.038531e-26", "-2.5e-8", "1e-10", "1.00000005960464477539062500000001"};
    char buffer[64];
    for (int i = 0; i < 20000; i++) {
        uint64_t bits = rng();
        double d;
        float f;
        memcpy(&d, &bits, 8);
        uint32_t fbits = (uint32_t)bits;
        memcpy(&f, &fbits, 4);
        if (std::isfinite(d)) texts.push_back(std::string(buffer, std::to_chars(buffer, buffer + 64, d).ptr));
        if (std::isfinite(f)) texts.push_back(std::string(buffer, std::to_chars(buffer, buffer + 64, f).ptr));
        double moderate = std::ldexp((double)(bits >> 11) / 9007199254740992.0, (int)(rng() % 60) - 30);
        int precision = 1 + (int)(rng() % 19);
        texts.push_back(std::string(buffer, std::to_chars(buffer, buffer + 64, moderate, std::chars_format::general,
                                                          precision)
                                                .ptr));
        texts.push_back(std::string(buffer, std::to_chars(buffer, buffer + 64, (float)moderate).ptr));
    }
    for (const std::string &t : texts) {
        double expect_d = 0, got_d = 0;
        float expect_f = 0, got_f = 0;
        auto rd = std::from_chars(t.data(), t.data() + t.size(), expect_d);
        auto rf = std::from_chars(t.data(), t.data() + t.size(), expect_f);
        const char *end_d = scan_double(t.c_str(), &got_d);
        const char *end_f = scan_float(t.c_str(), &got_f);
        ASSERT_TRUE(end_d && end_f) << t;
        EXPECT_EQ(end_d, rd.ptr) << t;
        EXPECT_EQ(end_f, rf.ptr) << t;
        if (rd.ec == std::errc()) {
            EXPECT_EQ(memcmp(&got_d, &expect_d, 8), 0) << t;
        }
        if (rf.ec == std::errc()) {
            EXPECT_EQ(memcmp(&got_f, &expect_f, 4), 0) << t << " " << got_f << " " << expect_f;
        }
    }
    double d = 0;
    float f = 0;
    long long n = 0;
    EXPECT_TRUE(scan_double("+2.5 x", &d) && d == 2.5);
    EXPECT_TRUE(scan_double("1e999", &d) && std::isinf(d));
    EXPECT_TRUE(scan_float("1e-999", &f) && f == 0.0f);
    EXPECT_TRUE(scan_float("-nan", &f) && std::isnan(f));
    EXPECT_EQ(scan_double("x1", &d), nullptr);
    EXPECT_EQ(scan_double("-", &d), nullptr);
    EXPECT_TRUE(scan_long("99999999999999999999999", &n) && n == LLONG_MAX);
    EXPECT_TRUE(scan_long("-99999999999999999999999", &n) && n == LLONG_MIN);
    EXPECT_TRUE(scan_long("  -42abc", &n) && n == -42);
}

/* ================= round trips ================= */

TEST_F(VkFile, BuiltModelReadsBackExactly)
{
    Material m;
    const float values[14] = {0.11f, 0.22f, 0.33f, 0.44f, 0.55f, 0.66f, 0.77f,
                              0.88f, 0.99f, 0.12f, 0.23f, 0.34f, 7.5f,  0.45f};
    for (int i = 0; i < 3; i++) {
        m.rgb[i] = values[i];
        m.ambient[i] = values[3 + i];
        m.emissive[i] = values[6 + i];
        m.specular[i] = values[9 + i];
    }
    m.rgb[3] = m.ambient[3] = m.emissive[3] = m.specular[3] = 1.0f;
    m.shininess = values[12];
    m.transparency = values[13];
    int mat = material_get_index(&m);

    Object *top = add_object(world, OBJECT_GROUP, "top \"group\" with \\ and \\\"");
    object_set_url(top, "http://example.com/a b?\"q\"\\");
    object_set_userdata(top, "  line one\n\nline three\twith tab  \n ");
    Object *mid = add_object(top, OBJECT_GROUP, "");
    mid->centre[0] = 0.1f, mid->centre[1] = -7.3f, mid->centre[2] = 1e5f + 0.3f;
    add_solid(mid, "a", 0.1f, 0.2f, 0.3f, 1.7f, mat);
    Object *b = add_solid(mid, "b", -12345.678f, 3.14159f, 2.5e-3f, 0.01f, 3);
    object_set_init_texture(b, "textures/wood grain.gif");
    object_set_texture_repeat(b, 2.5f, 0.3f);
    Object *deep = add_object(b, OBJECT_GROUP, "deep");
    Object *c = add_solid(deep, "c", 1e-3f, 1e3f, -42.0f, 5.0f, 2);
    /* A rotated child: its vertices turned about its centre. */
    float r[9];
    matrix_set_rotate(r, 0.3f, -1.1f, 2.0f);
    for (List *v = c->vertices; v; v = v->next) {
        float *p = ((Vertex *)v->item)->point;
        for (int i = 0; i < 3; i++) p[i] -= c->centre[i];
        matrix_rotate_point(r, p);
        for (int i = 0; i < 3; i++) p[i] += c->centre[i];
    }
    /* Zero centre, a negative zero and extreme values. */
    Object *z = add_object(world, OBJECT_NORMAL, "zeros");
    Vertex *z0 = add_vertex(z, -0.0f, 0.0f, 1e-38f);
    Vertex *z1 = add_vertex(z, 3.4e38f, -1e-45f, 1.0f);
    Vertex *z2 = add_vertex(z, 1.0f / 3.0f, 2.0f / 3.0f, -0.1f);
    add_surface(z, {z0, z1, z2}, 4, 1, 1, 0);
    add_object(world, OBJECT_LIGHT, "lamp");

    std::string before = snapshot();
    int palette = num_palette;
    save_clear_load("one.vk");
    EXPECT_EQ(snapshot(), before);
    EXPECT_EQ(num_palette, palette);

    /* Load, save, load again: the same model and the same file. */
    save_clear_load("two.vk");
    EXPECT_EQ(snapshot(), before);
    EXPECT_EQ(read_file(dir.file("one.vk")), read_file(dir.file("two.vk")));
    EXPECT_EQ(num_palette, palette);
}

TEST_F(VkFile, RotationOfAnObjectIsKept)
{
    Object *o = add_solid(world, "turned", 5.25f, -1.5f, 0.75f, 1.0f, 2);
    matrix_set_rotate(o->rotation, 0.4f, 0.5f, -0.6f);
    /* Vertices of comparable magnitude away from zero, so that the frame
     * can be kept exactly. */
    int i = 0;
    for (List *v = o->vertices; v; v = v->next, i++) {
        float *p = ((Vertex *)v->item)->point;
        p[0] = 7.0f + 0.37f * i, p[1] = 3.0f + 0.11f * i, p[2] = 4.0f - 0.23f * i;
    }
    std::string before = snapshot();
    save_clear_load("turned.vk");
    EXPECT_EQ(snapshot(), before);
    std::string text = read_file(dir.file("turned.vk"));
    EXPECT_TRUE(contains(text, "\nrot ")) << text;
}

TEST_F(VkFile, VerticesReadBackExactlyWhateverTheirValues)
{
    /* Random bit patterns and centres: frames are only kept where exact,
     * but every finite vertex comes back bit for bit, the largest and the
     * subnormal ones included. */
    std::mt19937 rng(12345);
    std::uniform_int_distribution<uint32_t> bits;
    auto random_float = [&] {
        for (;;) {
            uint32_t b = bits(rng);
            float f;
            memcpy(&f, &b, 4);
            if (std::isfinite(f)) return f;
        }
    };
    Object *g = add_object(world, OBJECT_GROUP, "g");
    g->centre[0] = 1e10f, g->centre[1] = -3.0f, g->centre[2] = 1e-20f;
    for (int k = 0; k < 20; k++) {
        Object *o = add_object(k % 2 ? g : world, OBJECT_NORMAL, "r");
        for (int i = 0; i < 3; i++) o->centre[i] = (k % 3) ? random_float() : 0.5f * (float)k;
        if (k % 4 == 0) matrix_set_rotate(o->rotation, 0.1f * k, 0.2f, 0.3f);
        std::vector<Vertex *> vs;
        for (int i = 0; i < 30; i++) vs.push_back(add_vertex(o, random_float(), random_float(), random_float()));
        add_surface(o, vs, 0, 0, 1, 1);
    }
    std::string before = snapshot(false);
    save_clear_load("random.vk");
    EXPECT_EQ(snapshot(false), before);
}

TEST_F(VkFile, NonFiniteCoordinatesAreReportedAndReadAsZero)
{
    int r = 0;
    Captured c = load_text(dir,
                           "VESKb\nOBJECT world\nkids 1\nOBJECT poly\nloc inf 0 0\nnumvert 3\n"
                           "nan 1 2\n1 -inf 2\n1 2 1e39\nkids 0\n",
                           &r);
    EXPECT_EQ(r, 1);
    Object *o = world->kids ? child(world, 0) : nullptr;
    ASSERT_NE(o, nullptr);
    EXPECT_TRUE(contains(c.out, "line 5: location coordinate inf is not a finite number - read as 0")) << c.out;
    EXPECT_TRUE(contains(c.out, "line 7: vertex coordinate nan is not a finite number - read as 0")) << c.out;
    EXPECT_TRUE(contains(c.out, "line 8: vertex coordinate -inf is not a finite number")) << c.out;
    EXPECT_TRUE(contains(c.out, "line 9: vertex coordinate 1e+39 is not a finite number")) << c.out;
    float expected[3][3] = {{0, 1, 2}, {1, 0, 2}, {1, 2, 0}};
    int i = 0;
    for (List *l = o->vertices; l && i < 3; l = l->next, i++) {
        for (int k = 0; k < 3; k++) EXPECT_EQ(((Vertex *)l->item)->point[k], expected[i][k]);
    }
    EXPECT_EQ(i, 3);
    EXPECT_EQ(o->centre[0], 0.0f);
}

TEST_F(VkFile, LoadedFileSavesAndLoadsTheSame)
{
    std::string text = std::string(HEADER) + material_line(0.9f) + material_line(0.8f) +
                       "OBJECT world\nkids 2\n"
                       "OBJECT group\nname \"g\"\nrot 0 1 0 -1 0 0 0 0 1\nloc 1 2 3\nkids 1\n"
                       "OBJECT poly\nname \"p\"\nloc 0.5 0.25 0\nnumvert 3\n0 0 0\n1 0 0\n0 1 0\n"
                       "numsurf 1\nSURF 0x20\nmat 1\nrefs 3\n0 0 0\n1 1 0\n2 0.5 1\nkids 0\n"
                       "OBJECT sphere\nloc -1 -1 -1\nnumvert 1\n0.1 0.2 0.3\nkids 0\n";
    int r = 0;
    load_text(dir, text, &r);
    ASSERT_EQ(r, 1);
    int palette = num_palette;
    std::string first = snapshot();
    save_clear_load("again.vk");
    EXPECT_EQ(snapshot(), first);
    /* The same file twice adds no palette entries. */
    load_text(dir, text, &r);
    EXPECT_EQ(num_palette, palette);
    EXPECT_EQ(world->num_kids, 4u);
}

TEST_F(VkFile, ChildIsPlacedInItsParentsFrame)
{
    /* Parent turned 90 degrees about z (x' = -y, y' = x) at (1, 2, 3);
     * child at (1, 0, 0) in the parent's frame with a vertex at (1, 0, 0)
     * in its own. */
    std::string text = std::string(HEADER) +
                       "OBJECT world\nkids 1\nOBJECT group\nrot 0 1 0 -1 0 0 0 0 1\nloc 1 2 3\nkids 1\n"
                       "OBJECT poly\nloc 1 0 0\nnumvert 1\n1 0 0\nkids 0\n";
    int r = 0;
    load_text(dir, text, &r);
    ASSERT_EQ(r, 1);
    Object *g = child(world, 0), *p = child(g, 0);
    EXPECT_EQ(g->centre[0], 1.0f);
    EXPECT_EQ(g->centre[1], 2.0f);
    EXPECT_EQ(p->centre[0], 1.0f);
    EXPECT_EQ(p->centre[1], 3.0f);
    EXPECT_EQ(p->centre[2], 3.0f);
    const float *v = ((Vertex *)p->vertices->item)->point;
    EXPECT_EQ(v[0], 1.0f);
    EXPECT_EQ(v[1], 4.0f);
    EXPECT_EQ(v[2], 3.0f);
    EXPECT_EQ(p->rotation[1], 1.0f);
    EXPECT_EQ(p->rotation[3], -1.0f);
}

/* ================= reader rules ================= */

TEST_F(VkFile, HeaderVersions)
{
    int r = -1;
    Captured c = load_text(dir, "VESKb\nOBJECT world\nkids 1\nOBJECT poly\nname \"b\"\nkids 0\n", &r);
    EXPECT_EQ(r, 1);
    EXPECT_EQ(world->num_kids, 1u);

    c = load_text(dir, "VESKc\nOBJECT world\nkids 1\nOBJECT poly\nkids 0\n", &r);
    EXPECT_EQ(r, 0);
    EXPECT_TRUE(contains(c.err, "cannot be loaded because it is from a newer version of VESK")) << c.err;
    EXPECT_EQ(world->num_kids, 1u);

    c = load_text(dir, "VESK5\nOBJECT world\nkids 1\nOBJECT poly\nname \"old\"\nkids 0\n", &r);
    EXPECT_EQ(r, 1);
    EXPECT_TRUE(contains(c.out, "read file")) << c.out;
    EXPECT_EQ(world->num_kids, 2u);

    c = load_text(dir, "VRSKb\nOBJECT world\nkids 0\n", &r);
    EXPECT_EQ(r, 0);
    EXPECT_TRUE(contains(c.err, "is not a valid VESK file")) << c.err;

    c = load_text(dir, "", &r);
    EXPECT_EQ(r, 0);
    EXPECT_TRUE(contains(c.err, "is not a valid VESK file"));

    c = capture([&] { r = load(dir.file("missing.vk")); });
    EXPECT_EQ(r, 0);
    EXPECT_TRUE(contains(c.err, "can't open file")) << c.err;
    c = capture([&] { r = load(dir.path); });
    EXPECT_EQ(r, 0);
    EXPECT_TRUE(contains(c.err, "can't open file")) << c.err;
    EXPECT_EQ(world->num_kids, 2u);
}

TEST_F(VkFile, OldVersionReadsPaletteIndicesDirectly)
{
    int r = 0;
    Captured c = load_text(dir,
                           "VESK5\nMATERIAL \"m\" rgb 1 1 1 amb 0 0 0 emis 0 0 0 spec 0 0 0 shi 1 trans 0\n"
                           "OBJECT poly\nnumvert 1\n0 0 0\nnumsurf 2\nSURF 0\nmat 9\nrefs 1\n0 0 0\n"
                           "SURF 0\nmat 999\nrefs 1\n0 0 0\nkids 0\n",
                           &r);
    EXPECT_EQ(r, 1);
    EXPECT_TRUE(contains(c.out, "ignoring MATERIAL")) << c.out;
    EXPECT_TRUE(contains(c.out, "Surface material index (999) out of range")) << c.out;
    Object *o = child(world, 0);
    EXPECT_EQ(surface(o, 0)->mat, 9);
    EXPECT_EQ(surface(o, 1)->mat, 1);
}

TEST_F(VkFile, SurfaceFlagsInThreeBases)
{
    int r = 0;
    load_text(dir,
              std::string(HEADER) + "OBJECT poly\nnumvert 1\n0 0 0\nnumsurf 4\n"
                                    "SURF 0x30\nrefs 1\n0 0 0\nSURF 20\nrefs 1\n0 0 0\n"
                                    "SURF 010\nrefs 1\n0 0 0\nSURF 2\nrefs 1\n0 0 0\nkids 0\n",
              &r);
    ASSERT_EQ(r, 1);
    Object *o = child(world, 0);
    Surface *s = surface(o, 0);
    EXPECT_EQ(s->surface_kind, 0);
    EXPECT_EQ(s->shading, 1);
    EXPECT_EQ(s->twosided, 1);
    s = surface(o, 1);
    EXPECT_EQ(s->surface_kind, 4);
    EXPECT_EQ(s->shading, 1);
    EXPECT_EQ(s->twosided, 0);
    EXPECT_EQ(surface(o, 2)->surface_kind, 8);
    s = surface(o, 3);
    EXPECT_EQ(s->surface_kind, 2);
    EXPECT_EQ(s->shading, 0);
    EXPECT_EQ(s->twosided, 0);
}

TEST_F(VkFile, InvalidVertexReferenceIsSkipped)
{
    int r = 0;
    Captured c = load_text(dir,
                           std::string(HEADER) + "OBJECT poly\nnumvert 6\n0 0 0\n1 0 0\n2 0 0\n3 0 0\n4 0 0\n5 0 0\n"
                                                 "numsurf 1\nSURF 0\nrefs 4\n0 0 0\n7 0.5 0.5\n5 1 1\n-1 0 0\nkids 0\n",
                           &r);
    EXPECT_EQ(r, 1);
    EXPECT_TRUE(contains(c.out, "ERROR in file line 14 - surface's vertex index invalid (7)")) << c.out;
    EXPECT_TRUE(contains(c.out, "vertex index invalid (-1)")) << c.out;
    Surface *s = surface(child(world, 0), 0);
    ASSERT_EQ(s->num_vertrefs, 2u);
    EXPECT_EQ(((SVertex *)s->vertrefs->next->item)->u, 1.0f);
}

TEST_F(VkFile, MaterialIndicesAreMappedAndChecked)
{
    int r = 0;
    std::string mats = material_line(0.31f) + material_line(0.32f) + material_line(0.33f);
    Captured c = load_text(dir,
                           std::string(HEADER) + mats +
                               "OBJECT poly\nnumvert 1\n0 0 0\nnumsurf 3\nSURF 0\nmat 3\nrefs 1\n0 0 0\n"
                               "SURF 0\nmat 2\nrefs 1\n0 0 0\nSURF 0\nmat -4\nrefs 1\n0 0 0\n"
                               "mat 7\nkids 0\n",
                           &r);
    EXPECT_EQ(r, 1);
    EXPECT_TRUE(contains(c.out, "Surface material index (3) out of range [palette is 0->2]")) << c.out;
    EXPECT_TRUE(contains(c.out, "object material index (7) out of range [palette is 0->2]")) << c.out;
    Object *o = child(world, 0);
    EXPECT_EQ(surface(o, 0)->mat, 1);
    Material *m = index_to_material(surface(o, 1)->mat);
    EXPECT_FLOAT_EQ(m->rgb[0], 0.33f);
    EXPECT_EQ(surface(o, 2)->mat, 0);

    /* Object-level "mat" sets every surface; malformed MATERIAL lines are
     * reported and do not count as file materials. */
    c = load_text(dir,
                  std::string(HEADER) + "MATERIAL \"short\" rgb 1 1 1\n" + material_line(0.31f) +
                      "OBJECT poly\nnumvert 1\n0 0 0\nnumsurf 2\nSURF 0\nrefs 1\n0 0 0\nSURF 0\nrefs 1\n0 0 0\n"
                      "mat 0\nkids 0\n",
                  &r);
    EXPECT_TRUE(contains(c.out, "expected 21 params after \"MATERIAL\" - line 2")) << c.out;
    Object *p = child(world, 1);
    EXPECT_FLOAT_EQ(index_to_material(surface(p, 0)->mat)->rgb[0], 0.31f);
    EXPECT_EQ(surface(p, 0)->mat, surface(p, 1)->mat);
}

TEST_F(VkFile, DataBlockKeepsItsBytes)
{
    int r = 0;
    Captured c = load_text(dir,
                           std::string(HEADER) + "OBJECT poly\ndata 5\nab\ncd\n  \n\t\nname \"after\"\n"
                                                 "data 0\ndata 3 junk\nkids 0\n",
                           &r);
    EXPECT_EQ(r, 1);
    Object *o = child(world, 0);
    ASSERT_NE(o->data, nullptr);
    EXPECT_STREQ(o->data, "ab\ncd");
    EXPECT_STREQ(o->name, "after");
    EXPECT_TRUE(contains(c.out, "STRING 5, string \"ab\ncd\" \n")) << c.out;
    EXPECT_TRUE(contains(c.out, "expected 'data <number>' at line 10")) << c.out;
}

TEST_F(VkFile, QuotedStringsAndTheirMessages)
{
    int r = 0;
    Captured c = load_text(dir,
                           std::string(HEADER) + "OBJECT poly\nname \"say \\\"hi\\\" \\\\ there\"\n"
                                                 "url \"u\" extra\nname two words\ntexrep 1\ntexture\nkids 0\n",
                           &r);
    EXPECT_EQ(r, 1);
    EXPECT_STREQ(child(world, 0)->name, "say \"hi\" \\ there");
    EXPECT_TRUE(contains(c.out, "expected one arg to url at line 4 (got 3)")) << c.out;
    EXPECT_TRUE(contains(c.out, "expected quoted name at line 5")) << c.out;
    EXPECT_TRUE(contains(c.out, "expected 'texrep <float> <float>' at line 6")) << c.out;
    EXPECT_TRUE(contains(c.out, "expected quoted texture name at line 7")) << c.out;
}

TEST_F(VkFile, BlockWithoutKidsSwallowsTheNextBlocks)
{
    /* The first child has no "kids" line: the second OBJECT line is read
     * inside the first child's run, so the second object becomes its
     * sibling and its "kids" ends that run; the world's second run then
     * reads the third object. */
    int r = 0;
    Captured c = load_text(dir,
                           std::string(HEADER) +
                               "OBJECT world\nkids 2\nOBJECT poly\nname \"a\"\nOBJECT poly\nname \"b\"\nkids 0\n"
                               "OBJECT poly\nname \"c\"\nkids 0\nOBJECT poly\nname \"not read\"\nkids 0\n",
                           &r);
    EXPECT_EQ(r, 1);
    EXPECT_TRUE(contains(c.out, "the model ended at line 11 - the rest of the file (from line 12) is not read"))
        << c.out;
    ASSERT_EQ(world->num_kids, 3u);
    EXPECT_STREQ(child(world, 0)->name, "a");
    EXPECT_STREQ(child(world, 1)->name, "b");
    EXPECT_STREQ(child(world, 2)->name, "c");
}

TEST_F(VkFile, LegacyKeywords)
{
    int r = 0;
    Captured c = load_text(dir,
                           std::string(HEADER) + "LIGHT\nOBJECT poly\nnumvert 1\n1 2 3\nscale 2 3 4\nsphere\n"
                                                 "cube 1 2\nellipse 1 2 3\ncylinder 1 1\nsphere -1\nfrobnicate 3\nkids 0\n",
                           &r);
    EXPECT_EQ(r, 1);
    EXPECT_TRUE(contains(c.out, "Light\n"));
    EXPECT_TRUE(contains(c.out, "expected 'sphere <float>' at line 7")) << c.out;
    EXPECT_TRUE(contains(c.out, "expected 'cube <float> <float> <float>' at line 8")) << c.out;
    EXPECT_TRUE(contains(c.out, "expected 'ellipse <float> <float>' at line 9")) << c.out;
    EXPECT_TRUE(contains(c.out, "expected 'cylinder <float ratio>")) << c.out;
    EXPECT_TRUE(contains(c.out, "expected 'sphere <float>' at line 11")) << c.out;
    EXPECT_TRUE(contains(c.out, "ignoring frobnicate")) << c.out;
    Object *o = child(world, 0);
    EXPECT_EQ(o->num_vert, 1u);
    const float *p = ((Vertex *)o->vertices->item)->point;
    EXPECT_EQ(p[0], 2.0f);
    EXPECT_EQ(p[1], 6.0f);
    EXPECT_EQ(p[2], 12.0f);
}

/* The legacy shapes are built into the object being read: a later "scale"
 * and the block's placement apply to them, and a surface line may refer
 * to their vertices by index. */
TEST_F(VkFile, LegacyShapesJoinTheObject)
{
    Object *cube = new_object(0);
    object_add_cube_view(cube, 1, 2, 3);
    Object *sphere = new_object(0);
    object_add_sphere_view(sphere, 1);
    Object *ellipse = new_circle(0, 1, 2, prefs.rot_segments);
    Object *cylinder = new_object(0);
    object_add_cylinder_view(cylinder, 0, 0.5f, 1, 0);
    int r = 0;
    Captured c = load_text(dir,
                           std::string(HEADER) + "OBJECT world\nkids 2\nOBJECT poly\ncube 1 2 3\nscale 2 2 2\nloc 10 0 0\nkids 0\n"
                                                 "OBJECT poly\nsphere 1\nellipse 1 2\ncylinder 0.5 1 0\n"
                                                 "numsurf 1\nSURF 0\nmat 0\nrefs 2\n0 0 0\n1 0 0\nkids 0\n",
                           &r);
    EXPECT_EQ(r, 1) << c.out;
    ASSERT_EQ(world->num_kids, 2u) << c.out;
    Object *a = child(world, 0);
    EXPECT_EQ(a->num_vert, cube->num_vert);
    EXPECT_EQ(a->num_surf, cube->num_surf);
    EXPECT_EQ(list_count(a->vertices), a->num_vert);
    float lo[3] = {1e9f, 1e9f, 1e9f}, hi[3] = {-1e9f, -1e9f, -1e9f};
    for (List *l = a->vertices; l; l = l->next) {
        for (int i = 0; i < 3; i++) {
            lo[i] = std::min(lo[i], ((Vertex *)l->item)->point[i]);
            hi[i] = std::max(hi[i], ((Vertex *)l->item)->point[i]);
        }
    }
    EXPECT_EQ(lo[0], 9.0f);
    EXPECT_EQ(hi[0], 11.0f);
    EXPECT_EQ(hi[1] - lo[1], 4.0f);
    EXPECT_EQ(hi[2] - lo[2], 6.0f);
    Object *b = child(world, 1);
    unsigned shapes_vert = sphere->num_vert + ellipse->num_vert + cylinder->num_vert;
    unsigned shapes_surf = sphere->num_surf + ellipse->num_surf + cylinder->num_surf;
    EXPECT_EQ(b->num_vert, shapes_vert);
    EXPECT_EQ(b->num_surf, shapes_surf + 1);
    EXPECT_EQ(list_count(b->surfaces), b->num_surf);
    Surface *last = (Surface *)list_last_item(b->surfaces);
    ASSERT_EQ(last->num_vertrefs, 2u);
    EXPECT_EQ(((SVertex *)last->vertrefs->item)->vertex, (Vertex *)b->vertices->item);
    for (Object *shape : {cube, sphere, ellipse, cylinder}) object_delete(shape);
}

TEST_F(VkFile, SelectSelectsTheLoadedObjects)
{
    std::string path = dir.file("sel.vk");
    write_file(path, std::string(HEADER) + "OBJECT world\nkids 2\nOBJECT poly\nnumvert 1\n1 1 1\nkids 0\n"
                                           "OBJECT poly\nnumvert 1\n-1 -1 -1\nkids 0\n");
    int r = 0;
    capture([&] { r = load(path, 1); });
    EXPECT_EQ(r, 1);
    EXPECT_EQ(selection.num_selected_objects, 2);
    EXPECT_EQ(selection.box_max[0], 1.0f);
    EXPECT_EQ(selection.box_min[2], -1.0f);
}

/* ================= bad input ================= */

TEST_F(VkFile, TruncatedFilesKeepWhatWasRead)
{
    Object *o = add_solid(world, "s", 1.5f, 2.5f, 3.5f, 1.0f, 2);
    add_solid(o, "t", -1.5f, 2.5f, 3.5f, 1.0f, 2);
    std::string path = dir.file("full.vk");
    capture([&] { write_vk(path.c_str()); });
    std::string text = read_file(path);
    reset_model();
    /* However early the file stops, the tree read so far is sound, and a
     * later cut never yields fewer objects or vertices than an earlier. */
    size_t most_objects = 0, most_vertices = 0;
    size_t world_block = text.find("OBJECT world\n");
    ASSERT_NE(world_block, std::string::npos);
    world_block += strlen("OBJECT world\n");
    for (size_t cut = 0; cut < text.size(); cut += 7) {
        int r = 0;
        load_text(dir, text.substr(0, cut), &r);
        char report[512] = "";
        ASSERT_EQ(object_check_tree(world, report, sizeof report), 0) << "cut at " << cut << ": " << report;
        size_t objects = 0, vertices = 0;
        for (Object *x : model_walk(world)) {
            objects++;
            vertices += x->num_vert;
        }
        reset_model();
        if (cut < world_block) {
            /* Before the world's block (or within its first line) a file
             * holds the palette and no geometry. */
            EXPECT_EQ(vertices, 0u) << "cut at " << cut;
            continue;
        }
        EXPECT_GE(objects, most_objects) << "cut at " << cut;
        EXPECT_GE(vertices, most_vertices) << "cut at " << cut;
        most_objects = std::max(most_objects, objects);
        most_vertices = std::max(most_vertices, vertices);
    }
    /* The whole file gives the whole model: world, two solids. */
    EXPECT_EQ(most_objects, 3u);
}

TEST_F(VkFile, HugeAndNegativeCountsStopAtTheEndOfTheFile)
{
    int r = 0;
    Captured c = load_text(dir,
                           std::string(HEADER) + "OBJECT poly\nnumvert 2000000000\n1 2 3\n4 5 6\n"
                                                 "numsurf -5\nnumvert -3\nkids 0\n",
                           &r);
    EXPECT_EQ(r, 1);
    Object *o = child(world, 0);
    EXPECT_EQ(o->num_vert, 2u);
    EXPECT_TRUE(contains(c.out, "expected a vertex 'x y z' (1999999998 more were due)")) << c.out;

    c = load_text(dir,
                  std::string(HEADER) + "OBJECT poly\nnumvert 1\n0 0 0\nnumsurf 2000000000\nSURF 0\n"
                                        "refs 2000000000\n0 0 0\n0 1 1\n",
                  &r);
    EXPECT_EQ(r, 0);
    EXPECT_TRUE(contains(c.out, "the file ended inside a surface")) << c.out;
    o = child(world, 1);
    ASSERT_EQ(o->num_surf, 1u);
    EXPECT_EQ(surface(o, 0)->num_vertrefs, 2u);

    c = load_text(dir, std::string(HEADER) + "OBJECT world\nkids 2000000000\nOBJECT poly\nkids 0\n", &r);
    EXPECT_EQ(r, 1);
    EXPECT_EQ(world->num_kids, 3u);
    c = load_text(dir, std::string(HEADER) + "OBJECT poly\ndata 2000000000\nabc", &r);
    EXPECT_STREQ(child(world, 3)->data, "abc");
}

TEST_F(VkFile, GarbageLongLinesAndNulBytes)
{
    std::mt19937 rng(99);
    std::string garbage(200000, '\0');
    for (char &ch : garbage) ch = (char)(rng() & 0xff);
    int r = 0;
    load_text(dir, std::string(HEADER) + garbage, &r);
    load_text(dir, std::string(HEADER) + "OBJECT poly\nnumvert 3\n" + garbage, &r);
    load_text(dir, std::string(HEADER) + "OBJECT poly\nnumvert 1\n0 0 0\nnumsurf 1\nSURF 0\nrefs 1\n" + garbage, &r);

    std::string long_name(300, 'n');
    std::string huge_line(3000000, 'x');
    const char nul_lines[] = "url \"a\0b\"\nnumvert 1\n1\0 2 3\n";
    Captured c = load_text(dir,
                           std::string(HEADER) + "OBJECT poly\nname \"" + long_name + "\"\n" + huge_line +
                               " kids 0\nname \"ok\"\n" + std::string(nul_lines, sizeof nul_lines - 1) + "kids 0\n",
                           &r);
    EXPECT_EQ(r, 1);
    EXPECT_TRUE(contains(c.out, "line 3 is longer than 255 characters")) << c.out.substr(0, 500);
    EXPECT_TRUE(contains(c.out, "line 4 is longer than 255 characters")) << c.out.substr(0, 500);
    Object *o = (Object *)list_last_item(world->kids);
    EXPECT_STREQ(o->name, "ok");
    EXPECT_STREQ(o->url, "a");
    EXPECT_EQ(o->num_vert, 1u);

    /* A line of 10 MB without a line break and a file of NUL bytes. */
    load_text(dir, std::string(HEADER) + std::string(10000000, 'y'), &r);
    load_text(dir, std::string(100000, '\0'), &r);
    EXPECT_EQ(r, 0);
}

/* Runs body on a thread with the program's big stack, as the shells run
 * everything: the model's recursive walks then reach any depth the
 * reader takes. */
void run_deep(const std::function<void()> &body)
{
    static const std::function<void()> *current;
    current = &body;
    run_on_big_stack([](int, char **) {
        (*current)();
        return 0;
    }, 0, nullptr);
}

TEST_F(VkFile, DeepNestingIsCappedFarBelowTheStack)
{
    run_deep([&] {
        std::string text = HEADER;
        text.reserve(7000000);
        for (int i = 0; i < VK_MAX_NESTING + 50000; i++) text += "OBJECT group\nkids 1\n";
        int r = 0;
        Captured c = load_text(dir, text, &r);
        EXPECT_EQ(r, 0);
        EXPECT_TRUE(contains(c.out, "nested more than 250000 deep")) << c.out.substr(0, 300);
        EXPECT_EQ(count_objects(world), VK_MAX_NESTING);
        reset_model();
    });
}

TEST_F(VkFile, HundredThousandLevelsSaveAndLoadBack)
{
    run_deep([&] {
        Object *parent = world;
        for (int i = 0; i < 100000; i++) {
            Object *o = add_object(parent, OBJECT_GROUP, "level");
            o->centre[0] = (float)(i % 7);
            add_vertex(o, (float)i, 1.0f, 2.0f);
            parent = o;
        }
        std::string before = snapshot(false);
        save_clear_load("deep.vk");
        EXPECT_EQ(snapshot(false), before);
        reset_model();
    });
}

TEST_F(VkFile, ManyObjectsAndReferencesLoadInLinearTime)
{
    /* 100000 sibling objects and one surface of 200000 references: any
     * list walk per item would take minutes. */
    std::string text = std::string(HEADER) + "OBJECT world\nkids 100000\n";
    for (int i = 0; i < 100000; i++) text += "OBJECT light\nkids 0\n";
    int r = 0;
    load_text(dir, text, &r);
    EXPECT_EQ(r, 1);
    EXPECT_EQ(world->num_kids, 100000u);
    reset_model();
    text = std::string(HEADER) + "OBJECT poly\nnumvert 200000\n";
    for (int i = 0; i < 200000; i++) text += std::to_string(i) + " 0 0\n";
    text += "numsurf 1\nSURF 0\nrefs 200000\n";
    for (int i = 0; i < 200000; i++) text += std::to_string(199999 - i) + " 0 0\n";
    text += "kids 0\n";
    load_text(dir, text, &r);
    EXPECT_EQ(r, 1);
    Surface *s = surface(child(world, 0), 0);
    ASSERT_EQ(s->num_vertrefs, 200000u);
    EXPECT_EQ(((SVertex *)s->vertrefs->item)->vertex->point[0], 199999.0f);
}

/* ================= writing ================= */

TEST_F(VkFile, OutputStringEscapes)
{
    char *buffer = nullptr;
    size_t size = 0;
    FILE *f = open_memstream(&buffer, &size);
    output_string(f, "a\"b\\c\nd");
    fclose(f);
    EXPECT_EQ(std::string(buffer, size), "\"a\\\"b\\\\c d\"");
    free(buffer);
}

TEST_F(VkFile, SubtreeWrittenToAnOpenFile)
{
    Object *g = add_object(world, OBJECT_GROUP, "g");
    g->centre[0] = 3.5f;
    add_solid(g, "inner", 1.25f, -2.0f, 0.1f, 0.5f, 2);
    std::string before = snapshot();
    char *buffer = nullptr;
    size_t size = 0;
    FILE *f = open_memstream(&buffer, &size);
    EXPECT_EQ(write_vk_object(f, g), 1);
    fclose(f);
    /* The subtree names palette entries: the palette goes first. */
    std::string text = HEADER;
    for (int i = 0; i < num_palette; i++) {
        Material *m = index_to_material(i);
        char line[512];
        snprintf(line, sizeof line,
                 "MATERIAL \"\" rgb %.9g %.9g %.9g amb %.9g %.9g %.9g emis %.9g %.9g %.9g spec %.9g %.9g %.9g "
                 "shi %.9g trans %.9g\n",
                 m->rgb[0], m->rgb[1], m->rgb[2], m->ambient[0], m->ambient[1], m->ambient[2], m->emissive[0],
                 m->emissive[1], m->emissive[2], m->specular[0], m->specular[1], m->specular[2], m->shininess,
                 m->transparency);
        text += line;
    }
    text += "OBJECT world\nkids 1\n" + std::string(buffer, size);
    free(buffer);
    reset_model();
    int r = 0;
    load_text(dir, text, &r);
    EXPECT_EQ(r, 1);
    EXPECT_EQ(snapshot(), before);
}

TEST_F(VkFile, FailedSaveLeavesTheOldFile)
{
    add_solid(world, "s", 1, 2, 3, 1, 2);
    std::string path = dir.file("keep.vk");
    write_file(path, "old contents\n");

    /* A full disk: the file size limit makes every write past 1 kB fail. */
    struct rlimit saved;
    getrlimit(RLIMIT_FSIZE, &saved);
    struct rlimit small = saved;
    small.rlim_cur = 1024;
    void (*old_handler)(int) = signal(SIGXFSZ, SIG_IGN);
    for (int i = 0; i < 50; i++) add_solid(world, "filler", (float)i, 2, 3, 1, 2);
    setrlimit(RLIMIT_FSIZE, &small);
    int r = 1;
    Captured c = capture([&] { r = write_vk(path.c_str()); });
    setrlimit(RLIMIT_FSIZE, &saved);
    signal(SIGXFSZ, old_handler);
    EXPECT_EQ(r, 0);
    EXPECT_EQ(read_file(path), "old contents\n");
    EXPECT_EQ(count_entries(dir.path), 1) << "temporary file left behind";

    /* A missing directory, a path through a file, a directory target. */
    EXPECT_EQ(write_vk(dir.file("no/such/dir.vk").c_str()), 0);
    EXPECT_EQ(write_vk((path + "/x.vk").c_str()), 0);
    EXPECT_EQ(write_vk(dir.path.c_str()), 0);
    EXPECT_EQ(read_file(path), "old contents\n");
    EXPECT_EQ(count_entries(dir.path), 1);

    /* The command says so and keeps the unsaved flag. */
    unsaved_changes = 1;
    std::string bad = dir.file("no/such/dir.vk");
    const char *argv[] = {"save_vk", bad.c_str()};
    c = capture([&] { do_command(2, (char **)argv); });
    EXPECT_STREQ(command_result_get(), "0");
    EXPECT_TRUE(contains(c.err, "can't write file")) << c.err;
    EXPECT_EQ(unsaved_changes, 1);
}

TEST_F(VkFile, Commands)
{
    add_solid(world, "a", 1, 2, 3, 1, 2);
    Object *g = add_object(world, OBJECT_GROUP, "g");
    add_solid(g, "b", -1, -2, -3, 1, 4);
    std::string whole = dir.file("whole.vk"), part = dir.file("part.vk");
    unsaved_changes = 1;
    const char *save[] = {"save_vk", whole.c_str()};
    Captured c = capture([&] { do_command(2, (char **)save); });
    EXPECT_STREQ(command_result_get(), "1");
    EXPECT_EQ(unsaved_changes, 0);
    std::string before = snapshot();

    clear_selection();
    select_object(g);
    const char *save_part[] = {"save_selection_vk", part.c_str()};
    capture([&] { do_command(2, (char **)save_part); });
    EXPECT_STREQ(command_result_get(), "1");
    clear_selection();
    capture([&] { do_command(2, (char **)save_part); });
    EXPECT_STREQ(command_result_get(), "0");

    reset_model();
    const char *load_part[] = {"load_vk", part.c_str()};
    capture([&] { do_command(2, (char **)load_part); });
    EXPECT_STREQ(command_result_get(), "1");
    ASSERT_EQ(world->num_kids, 1u);
    EXPECT_STREQ(child(world, 0)->name, "g");
    EXPECT_EQ(unsaved_changes, 0);

    reset_model();
    const char *load_whole[] = {"load_vk", whole.c_str()};
    capture([&] { do_command(2, (char **)load_whole); });
    EXPECT_EQ(snapshot(), before);

    const char *load_missing[] = {"load_vk", "/nonexistent/file.vk"};
    c = capture([&] { do_command(2, (char **)load_missing); });
    EXPECT_STREQ(command_result_get(), "0");
    EXPECT_EQ(snapshot(), before);
}
