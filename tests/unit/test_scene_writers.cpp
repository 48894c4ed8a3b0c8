/*
 * test_scene_writers.cpp - the POV-Ray, RenderMan, DIVE, MASSIVE and DVS
 * exporters.  Every POV-Ray file written for the example model and for
 * models made here (textured, smooth, lines, lights of each kind, empty)
 * is rendered by povray at a tiny size, must parse without an error, and
 * must show the model where it is: the camera test puts one square right
 * of and above the eye and looks for its pixels there.  RIB files are read
 * by a small tokenizer that checks every request and its arguments; the
 * DIVE, MASSIVE and DVS files by checks of their structure.  Failed
 * writes keep an earlier file.
 */
#include "test_support.h"
#include "core/lights.h"
#include "fileio/scene_out.h"
#include "fileio/scene_writers.h"
#include "fileio/vk_file.h"
#include "texture/texture_table.h"
#include "view/camera.h"
#include "view/view_state.h"
#include "app/shared_state.h"
#include "file_test_support.h"

#include <cctype>
#include <iomanip>
#include <sstream>
#include <csignal>
#include <map>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>
#include <vector>

namespace {

Vertex *add_vertex(Object *o, float x, float y, float z)
{
    Vertex *v = new_vertex_set(x, y, z);
    object_add_vertex(o, v);
    return v;
}

Surface *add_surface(Object *o, int kind, int mat, std::vector<Vertex *> corners)
{
    Surface *s = new_surface();
    s->surface_kind = (uint8_t)kind;
    s->mat = (uint16_t)mat;
    s->normal[2] = 1;
    float u = 0;
    for (Vertex *v : corners) {
        surface_add_vertref(s, new_svertex(v, u, u * 0.5f));
        u += 0.25f;
    }
    object_add_surface(o, s);
    return s;
}

/* A square facing the eye (normal +z) centred on (x, y, z). */
Object *square(float x, float y, float z, float half, int mat)
{
    Object *o = new_object(OBJECT_NORMAL);
    Vertex *a = add_vertex(o, x - half, y - half, z), *b = add_vertex(o, x + half, y - half, z);
    Vertex *c = add_vertex(o, x + half, y + half, z), *d = add_vertex(o, x - half, y + half, z);
    add_surface(o, SURFACE_POLYGON, mat, {a, b, c, d});
    object_add_child(world, o);
    return o;
}

std::string run(const std::string &command, int *status)
{
    std::string text;
    FILE *p = popen(command.c_str(), "r");
    if (!p) return text;
    char buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, p)) > 0) text.append(buffer, n);
    *status = pclose(p);
    return text;
}

bool have_povray()
{
    int status = 0;
    run("command -v povray >/dev/null 2>&1", &status);
    return status == 0;
}

struct Picture {
    int width = 0, height = 0;
    std::vector<unsigned char> rgb;
    const unsigned char *at(int x, int y) const { return &rgb[3 * ((size_t)y * width + x)]; }
};

/* A binary PPM as povray writes it with +FP (its header has comments). */
bool read_ppm(const std::string &path, Picture *p)
{
    std::string data = read_file(path);
    size_t i = 2;
    long numbers[3];
    if (data.compare(0, 2, "P6") != 0) return false;
    for (long &n : numbers) {
        while (i < data.size() && (isspace((unsigned char)data[i]) || data[i] == '#')) {
            if (data[i] == '#') {
                while (i < data.size() && data[i] != '\n') i++;
            } else {
                i++;
            }
        }
        n = 0;
        while (i < data.size() && isdigit((unsigned char)data[i])) n = n * 10 + (data[i++] - '0');
    }
    p->width = (int)numbers[0];
    p->height = (int)numbers[1];
    size_t size = (size_t)p->width * p->height * 3;
    if (numbers[2] != 255 || data.size() < i + 1 + size) return false;
    p->rgb.assign(data.begin() + (long)i + 1, data.begin() + (long)(i + 1 + size));
    return true;
}

/* Renders a POV-Ray file at 64 x 48 without a display; the log goes to
 * *log.  True when povray finished without an error. */
bool render(const std::string &pov, Picture *picture, std::string *log)
{
    std::string out = pov + ".ppm";
    int status = -1;
    *log = run("povray +I'" + pov + "' +O'" + out + "' +FP +W64 +H48 -D -V 2>&1", &status);
    bool ok = status == 0 && !contains(*log, "Parse Error") && !contains(*log, "Fatal error") && contains(*log, "POV-Ray finished");
    if (ok) ok = read_ppm(out, picture);
    remove(out.c_str());
    return ok;
}

/* Pixels differing from the background (black in these tests) in a box. */
int lit_pixels(const Picture &p, int x0, int y0, int x1, int y1)
{
    int n = 0;
    for (int y = y0; y < y1; y++) {
        for (int x = x0; x < x1; x++) {
            const unsigned char *c = p.at(x, y);
            n += c[0] > 8 || c[1] > 8 || c[2] > 8;
        }
    }
    return n;
}

class SceneWriters : public ::testing::Test {
protected:
    TempDir dir;
    Person saved_person;
    int saved_walk = 0, saved_width = 0, saved_height = 0, saved_background = 0;
    int saved_use_data = 0, saved_object_data = 0, saved_rib_header = 0, saved_rib_textures = 0, saved_rib_data = 0;
    char *saved_header = nullptr;
    Material saved_palette[4];

    void SetUp() override
    {
        clear_world_children();
        scan_lights();
        saved_person = *get_person();
        saved_walk = person_walk_vehicle;
        saved_width = views[3].width;
        saved_height = views[3].height;
        saved_background = prefs.col_3dbackground;
        saved_use_data = prefs.pov_use_object_data;
        saved_object_data = prefs.pov_object_data;
        saved_rib_header = prefs.output_rib_header;
        saved_rib_textures = prefs.rib_textures;
        saved_rib_data = prefs.rib_use_object_data;
        saved_header = prefs.pov_file_header;
        prefs.pov_file_header = nullptr;
        for (int i = 0; i < 4; i++) saved_palette[i] = *index_to_material(i);
        /* A fresh 3D view of 64 x 48 pixels: the eye at (0, 0, 5)
         * looking down -z, a black background. */
        person_walk_vehicle = 0;
        Person *p = get_person();
        p->location[0] = p->location[1] = 0;
        p->location[2] = 5;
        p->scale = 1;
        for (int i = 0; i < 3; i++) p->rotation[i] = p->offset[i] = 0;
        views[3].width = 64;
        views[3].height = 48;
        prefs.col_3dbackground = 0;
        set_palette_entry(1, 1, 0.2f, 0.1f, 0.2f, 0.2f, 0.2f, 0, 0, 0, 0, 0, 0, 20, 0);
        set_palette_entry(2, 0.1f, 0.9f, 0.2f, 0.2f, 0.2f, 0.2f, 0, 0, 0, 0, 0, 0, 10, 0.5f);
        set_palette_entry(3, 0.9f, 0.9f, 0.9f, 0.3f, 0.3f, 0.3f, 0, 0, 0, 0.2f, 0.2f, 0.2f, 5, 0);
    }
    void TearDown() override
    {
        clear_world_children();
        scan_lights();
        *get_person() = saved_person;
        person_walk_vehicle = saved_walk;
        views[3].width = saved_width;
        views[3].height = saved_height;
        prefs.col_3dbackground = saved_background;
        prefs.pov_use_object_data = saved_use_data;
        prefs.pov_object_data = saved_object_data;
        prefs.output_rib_header = saved_rib_header;
        prefs.rib_textures = saved_rib_textures;
        prefs.rib_use_object_data = saved_rib_data;
        prefs.pov_file_header = saved_header;
        for (int i = 0; i < 4; i++) *index_to_material(i) = saved_palette[i];
    }

    std::string write(int (*writer)(const char *), const std::string &name, std::string *console = nullptr)
    {
        std::string path = dir.file(name);
        int ok = 0;
        Captured c = capture([&] { ok = writer(path.c_str()); });
        EXPECT_EQ(ok, 1) << c.out;
        if (console) *console = c.out;
        return path;
    }

    /* Writes the POV-Ray file and renders it; the picture is checked by
     * the caller. */
    void render_model(const std::string &label, Picture *picture, std::string *text = nullptr)
    {
        std::string path = write(write_pov_file, label + ".pov");
        if (text) *text = read_file(path);
        if (!have_povray()) GTEST_SKIP() << "povray is not installed";
        std::string log;
        EXPECT_TRUE(render(path, picture, &log)) << label << ":\n" << log << "\n" << read_file(path);
    }

    /* A model with everything the writers handle: a smooth textured
     * sphere-like fan, a concave polygon, lines, and a named child with
     * data. */
    void build_rich_model(const std::string &texture)
    {
        Object *body = new_object(OBJECT_NORMAL);
        object_set_name(body, "body \"with\" quotes\nand a line break");
        Vertex *a = add_vertex(body, -1.5f, -1, 0), *b = add_vertex(body, 0, -1, 0.2f), *c = add_vertex(body, 0, 0, 0.5f);
        Vertex *d = add_vertex(body, -1.5f, 0.5f, 0);
        Surface *s = add_surface(body, SURFACE_POLYGON, 1, {a, b, c, d});
        s->shading = 1;
        for (Vertex *v : {a, b, c, d}) v->normal[2] = 1;
        d->normal[2] = 0;   /* a zero normal must not reach the renderer */
        if (!texture.empty()) body->texture = (uint8_t)texture_register_name(texture.c_str());
        body->texture_repeat_x = 2;
        object_add_child(world, body);

        Object *kid = new_object(OBJECT_NORMAL);
        object_set_name(kid, "L-shape");
        object_set_userdata(kid, "// user text\n");
        std::vector<Vertex *> l;
        const float corners[6][2] = {{0.2f, -1}, {1.5f, -1}, {1.5f, -0.5f}, {0.7f, -0.5f}, {0.7f, 1}, {0.2f, 1}};
        for (auto &p : corners) l.push_back(add_vertex(kid, p[0], p[1], 0));
        add_surface(kid, SURFACE_POLYGON, 2, l);
        add_surface(kid, SURFACE_CLOSED_LINE, 3, {l[0], l[1], l[2]});
        add_surface(kid, SURFACE_LINE, 3, {l[3], l[4], l[4], l[5]});
        add_surface(kid, SURFACE_POLYGON, 3, {l[0], l[1]});   /* too few corners */
        object_add_child(body, kid);
    }

    void add_lights()
    {
        int types[3] = {1, 2, 3};
        for (int t : types) {
            Light *light = (Light *)new_light();
            light->light_type = t;
            light->object.centre[2] = 4;
            light->direction[2] = t == 1 ? 1.0f : -1.0f;
            object_set_name(&light->object, t == 1 ? "sun" : t == 2 ? "bulb" : "spot");
            object_add_child(world, &light->object);
        }
        scan_lights();
    }
};

} // namespace

/* ---- POV-Ray ---- */

TEST_F(SceneWriters, PovCameraShowsTheModelWhereTheViewDoes)
{
    square(1.5f, 1.0f, 0, 0.5f, 1);   /* right of and above the eye */
    Picture p;
    render_model("camera", &p);
    if (p.width == 0) return;
    int right_top = lit_pixels(p, 32, 0, 64, 24), left = lit_pixels(p, 0, 0, 32, 48),
        bottom = lit_pixels(p, 0, 24, 64, 48);
    EXPECT_GT(right_top, 20);
    EXPECT_EQ(left, 0);
    EXPECT_EQ(bottom, 0);
    /* The square's colour, lit by the light at the eye. */
    const unsigned char *c = p.at(48, 12);
    EXPECT_GT(c[0], 2 * c[1]) << (int)c[0] << " " << (int)c[1] << " " << (int)c[2];
}

TEST_F(SceneWriters, PovTurnedCameraFollowsTheView)
{
    /* The model turned 90 degrees about y in front of an eye at the
     * origin: the view looks along +x, so a square at (5, 0, 0) facing
     * the eye fills the middle. */
    Object *o = square(0, 0, 0, 0.6f, 1);
    for (List *l = o->vertices; l; l = l->next) {
        float *pt = ((Vertex *)l->item)->point;
        float x = pt[0];
        pt[0] = 5 + pt[2];
        pt[2] = x;
    }
    get_person()->rotation[1] = 90;
    get_person()->location[2] = 0;
    Picture p;
    std::string text;
    render_model("turned", &p, &text);
    if (p.width == 0) return;
    EXPECT_GT(lit_pixels(p, 24, 16, 40, 32), 100) << text;
}

TEST_F(SceneWriters, PovRichModelRendersWithTexturesSmoothShadingLinesAndLights)
{
    /* A texture POV-Ray can read: a PPM (the render is restricted to
     * reading from /tmp and the home directory, so it is made there). */
    std::string texture = dir.file("checker.ppm");
    {
        std::string ppm = "P6\n2 2\n255\n";
        const unsigned char px[12] = {255, 255, 0, 0, 0, 255, 0, 0, 255, 255, 255, 0};
        ppm.append((const char *)px, sizeof px);
        write_file(texture, ppm);
    }
    build_rich_model(texture);
    Picture p;
    std::string text;
    render_model("rich", &p, &text);
    EXPECT_TRUE(contains(text, "uv_vectors")) << text;
    EXPECT_TRUE(contains(text, "normal_vectors"));
    EXPECT_TRUE(contains(text, "image_map { ppm \"" + texture + "\""));
    EXPECT_TRUE(contains(text, "cylinder {"));
    EXPECT_TRUE(contains(text, "// object \"body \\\"with\\\" quotes and a line break\"") ||
                contains(text, "// object \"body \"with\" quotes and a line break\""));
    EXPECT_TRUE(contains(text, "// the object's data text:\n// // user text\n"));
    EXPECT_EQ(scene_notes.polygons_skipped, 1);
    if (p.width) {
        EXPECT_GT(lit_pixels(p, 0, 0, 64, 48), 200);
    }

    /* A PNG texture (from the test images) gives a png image map. */
    std::string home = getenv("VESK_HOME") ? getenv("VESK_HOME") : ".";
    std::string png = dir.file("rgb.png");
    write_file(png, read_file(home + "/tests/data/images/rgb.png"));
    ((Object *)world->kids->item)->texture = (uint8_t)texture_register_name(png.c_str());
    render_model("rich_png", &p, &text);
    EXPECT_TRUE(contains(text, "image_map { png \"" + png + "\""));

    add_lights();
    render_model("rich_lights", &p, &text);
    EXPECT_TRUE(contains(text, "parallel point_at"));
    EXPECT_TRUE(contains(text, "spotlight point_at"));
    EXPECT_FALSE(contains(text, "the model has no lights"));
    if (p.width) {
        EXPECT_GT(lit_pixels(p, 0, 0, 64, 48), 200);
    }
}

TEST_F(SceneWriters, PovTextureItCannotReadIsLeftOutWithAComment)
{
    build_rich_model("no-such-dir/brick.rgb");
    Picture p;
    std::string text;
    render_model("sgi", &p, &text);
    EXPECT_FALSE(contains(text, "image_map"));
    EXPECT_TRUE(contains(text, "// texture no-such-dir/brick.rgb left out"));
    EXPECT_EQ(scene_notes.textures_skipped, 1);
}

TEST_F(SceneWriters, PovEmptyModelRenders)
{
    Picture p;
    std::string text;
    render_model("empty", &p, &text);
    EXPECT_TRUE(contains(text, "#version 3.7;"));
    EXPECT_TRUE(contains(text, "the model has no lights"));
    EXPECT_FALSE(contains(text, "mesh2"));
    if (p.width) {
        EXPECT_EQ(lit_pixels(p, 0, 0, 64, 48), 0);
    }
}

TEST_F(SceneWriters, PovExampleAndTestModelsRender)
{
    std::string home = getenv("VESK_HOME") ? getenv("VESK_HOME") : ".";
    for (const std::string &model : {home + "/examples/sample.vk", home + "/tests/data/vk/model.vk",
                                     home + "/tests/data/vk/odd_lines.vk"}) {
        clear_world_children();
        int ok = 0;
        capture([&] { ok = readfile_vk(model.c_str(), world, 0); });
        ASSERT_EQ(ok, 1) << model;
        /* Look at the middle of the model from twice its size away. */
        float min[3], max[3];
        ASSERT_EQ(scene_extent(min, max), 1);
        Person *person = get_person();
        float size = 0;
        for (int i = 0; i < 3; i++) {
            person->offset[i] = (min[i] + max[i]) / 2;
            size = std::max(size, max[i] - min[i]);
        }
        person->location[2] = 2 * size;
        Picture p;
        render_model("model", &p);
        if (p.width) {
        EXPECT_GT(lit_pixels(p, 0, 0, 64, 48), 0) << model;
    }
    }
}

TEST_F(SceneWriters, PovHeaderAndObjectDataPreferences)
{
    build_rich_model("");
    char header[] = "// my header\n#include \"colors.inc\"";
    prefs.pov_file_header = header;
    prefs.pov_use_object_data = 1;
    std::string text = read_file(write(write_pov_file, "prefs.pov"));
    EXPECT_EQ(text.rfind("// my header\n#include \"colors.inc\"\n// POV-Ray 3.7 scene written by VESK\n#version 3.7;", 0),
              0u);
    EXPECT_TRUE(contains(text, "// the object's data text, included as it stands\n// user text\n"));
    prefs.pov_use_object_data = 0;
    prefs.pov_object_data = 0;
    text = read_file(write(write_pov_file, "prefs2.pov"));
    EXPECT_FALSE(contains(text, "user text"));
    prefs.pov_file_header = nullptr;
}

/* ---- RenderMan ---- */

namespace {

struct RibToken {
    enum Kind { NAME, STRING, NUMBER, ARRAY } kind;
    std::string text;
    std::vector<RibToken> items;   /* an array's numbers or strings */
};

/* Splits RIB text into requests and arguments; false on anything a RIB
 * reader would refuse (unclosed strings or arrays, stray characters). */
bool rib_tokens(const std::string &text, std::vector<RibToken> *out, std::string *error)
{
    size_t i = 0, n = text.size();
    std::vector<RibToken> *target = out;
    RibToken array;
    bool in_array = false;
    while (i < n) {
        char c = text[i];
        if (isspace((unsigned char)c)) {
            i++;
        } else if (c == '#') {
            while (i < n && text[i] != '\n') i++;
        } else if (c == '"') {
            std::string s;
            for (i++; i < n && text[i] != '"'; i++) {
                if (text[i] == '\\' && i + 1 < n) i++;
                if (text[i] == '\n') return *error = "line break in a string", false;
                s += text[i];
            }
            if (i >= n) return *error = "unclosed string", false;
            i++;
            target->push_back(RibToken{RibToken::STRING, s, {}});
        } else if (c == '[') {
            if (in_array) return *error = "nested array", false;
            in_array = true;
            array = RibToken{RibToken::ARRAY, "", {}};
            target = &array.items;
            i++;
        } else if (c == ']') {
            if (!in_array) return *error = "stray ]", false;
            in_array = false;
            target = out;
            out->push_back(array);
            i++;
        } else if (isdigit((unsigned char)c) || c == '-' || c == '.' || c == '+') {
            size_t used = 0;
            std::stod(text.substr(i, 40), &used);
            if (used == 0) return *error = "bad number", false;
            target->push_back(RibToken{RibToken::NUMBER, text.substr(i, used), {}});
            i += used;
        } else if (isalpha((unsigned char)c)) {
            if (in_array) return *error = "name in an array", false;
            size_t start = i;
            while (i < n && isalnum((unsigned char)text[i])) i++;
            out->push_back(RibToken{RibToken::NAME, text.substr(start, i - start), {}});
        } else {
            return *error = std::string("stray character ") + c, false;
        }
    }
    if (in_array) return *error = "unclosed array", false;
    return true;
}

/* One request: its name and the arguments up to the next name. */
struct RibRequest {
    std::string name;
    std::vector<RibToken> args;
};

std::vector<RibRequest> rib_requests(const std::vector<RibToken> &tokens)
{
    std::vector<RibRequest> requests;
    for (const RibToken &t : tokens) {
        if (t.kind == RibToken::NAME) {
            requests.push_back(RibRequest{t.text, {}});
        } else if (!requests.empty()) {
            requests.back().args.push_back(t);
        }
    }
    return requests;
}

bool all_numbers(const RibToken &t, size_t count)
{
    if (t.kind != RibToken::ARRAY || (count && t.items.size() != count)) return false;
    for (const RibToken &x : t.items) {
        if (x.kind != RibToken::NUMBER) return false;
    }
    return true;
}

/* The parameter list from position first: pairs of a name and a value;
 * the values by name. */
bool param_list(const RibRequest &r, size_t first, std::map<std::string, RibToken> *params)
{
    if ((r.args.size() - first) % 2) return false;
    for (size_t i = first; i < r.args.size(); i += 2) {
        if (r.args[i].kind != RibToken::STRING) return false;
        (*params)[r.args[i].text] = r.args[i + 1];
    }
    return true;
}

/* Checks every request of a RIB file; returns a description of the first
 * fault, or "". */
std::string check_rib(const std::string &text, std::map<std::string, int> *counts)
{
    std::vector<RibToken> tokens;
    std::string error;
    if (!rib_tokens(text, &tokens, &error)) return error;
    if (!tokens.empty() && tokens[0].kind != RibToken::NAME) return "arguments before the first request";
    int attribute_depth = 0, world_depth = 0;
    for (const RibRequest &r : rib_requests(tokens)) {
        (*counts)[r.name]++;
        const auto &a = r.args;
        auto kind = [&](size_t i, RibToken::Kind k) { return i < a.size() && a[i].kind == k; };
        std::map<std::string, RibToken> params;
        if (r.name == "version") {
            if (a.size() != 1 || !kind(0, RibToken::NUMBER)) return "version";
        } else if (r.name == "Display") {
            if (a.size() < 3 || !kind(0, RibToken::STRING) || !kind(1, RibToken::STRING) || !kind(2, RibToken::STRING))
                return "Display";
        } else if (r.name == "Format") {
            if (a.size() != 3 || !kind(0, RibToken::NUMBER) || !kind(1, RibToken::NUMBER) || !kind(2, RibToken::NUMBER))
                return "Format";
        } else if (r.name == "Projection") {
            if (!kind(0, RibToken::STRING) || !param_list(r, 1, &params)) return "Projection";
            if (!params.count("fov") || !all_numbers(params["fov"], 1)) return "Projection fov";
        } else if (r.name == "Scale") {
            if (a.size() != 3) return "Scale";
        } else if (r.name == "ConcatTransform") {
            if (a.size() != 1 || !all_numbers(a[0], 16)) return "ConcatTransform";
        } else if (r.name == "WorldBegin" || r.name == "AttributeBegin") {
            if (!a.empty()) return r.name;
            (r.name == "WorldBegin" ? world_depth : attribute_depth)++;
        } else if (r.name == "WorldEnd" || r.name == "AttributeEnd") {
            if (!a.empty()) return r.name;
            int &depth = r.name == "WorldEnd" ? world_depth : attribute_depth;
            if (--depth < 0) return r.name + " without its begin";
        } else if (r.name == "LightSource") {
            if (!kind(0, RibToken::STRING) || !kind(1, RibToken::NUMBER) || !param_list(r, 2, &params)) return "LightSource";
            for (auto &p : params) {
                if (!all_numbers(p.second, 0)) return "LightSource " + p.first;
            }
        } else if (r.name == "Sides") {
            if (a.size() != 1 || !kind(0, RibToken::NUMBER)) return "Sides";
        } else if (r.name == "Attribute") {
            if (!kind(0, RibToken::STRING) || !param_list(r, 1, &params)) return "Attribute";
        } else if (r.name == "Color" || r.name == "Opacity") {
            if (a.size() != 1 || !all_numbers(a[0], 3)) return r.name;
        } else if (r.name == "Surface") {
            if (!kind(0, RibToken::STRING) || !param_list(r, 1, &params)) return "Surface";
        } else if (r.name == "PointsPolygons") {
            if (a.size() < 2 || !all_numbers(a[0], 0) || !all_numbers(a[1], 0) || !param_list(r, 2, &params))
                return "PointsPolygons";
            long corners = 0, highest = -1;
            for (const RibToken &x : a[0].items) {
                if (std::stol(x.text) < 3) return "PointsPolygons: a polygon of fewer than 3 corners";
                corners += std::stol(x.text);
            }
            if ((long)a[1].items.size() != corners) return "PointsPolygons: corner count";
            for (const RibToken &x : a[1].items) highest = std::max(highest, std::stol(x.text));
            if (!params.count("P") || !all_numbers(params["P"], 3 * (size_t)(highest + 1))) return "PointsPolygons P";
            if (params.count("facevarying normal N") && !all_numbers(params["facevarying normal N"], 3 * (size_t)corners))
                return "PointsPolygons N";
            if (params.count("facevarying float[2] st") &&
                !all_numbers(params["facevarying float[2] st"], 2 * (size_t)corners))
                return "PointsPolygons st";
        } else if (r.name == "Curves") {
            if (a.size() < 3 || !kind(0, RibToken::STRING) || !all_numbers(a[1], 0) || !kind(2, RibToken::STRING) ||
                !param_list(r, 3, &params))
                return "Curves";
            long points = 0;
            for (const RibToken &x : a[1].items) points += std::stol(x.text);
            if (!params.count("P") || !all_numbers(params["P"], 3 * (size_t)points)) return "Curves P";
        } else {
            return "unknown request " + r.name;
        }
    }
    if (attribute_depth || world_depth) return "unbalanced blocks";
    return "";
}

} // namespace

TEST_F(SceneWriters, RibRequestsAndArgumentsAreWellFormed)
{
    build_rich_model("wood.png");
    add_lights();
    prefs.rib_textures = 1;
    std::string text = read_file(write(write_rib_file, "rich.rib"));
    std::map<std::string, int> counts;
    EXPECT_EQ(check_rib(text, &counts), "") << text;
    EXPECT_EQ(counts["WorldBegin"], 1);
    EXPECT_EQ(counts["LightSource"], 4);   /* the ambient light and three */
    EXPECT_EQ(counts["AttributeBegin"], 2);
    EXPECT_EQ(counts["PointsPolygons"], 2);
    EXPECT_EQ(counts["Curves"], 2);
    EXPECT_TRUE(contains(text, "\"texturename\" [\"wood.tex\"]") || contains(text, "\"texturename\" \"wood.tex\""));
    EXPECT_TRUE(contains(text, "\"facevarying float[2] st\""));
    EXPECT_TRUE(contains(text, "\"facevarying normal N\""));
    EXPECT_TRUE(contains(text, "Display \"rich.tif\""));
    EXPECT_TRUE(contains(text, "Format 64 48 1"));

    /* Without the header: only the objects; with object data. */
    prefs.output_rib_header = 0;
    prefs.rib_textures = 0;
    prefs.rib_use_object_data = 1;
    counts.clear();
    text = read_file(write(write_rib_file, "bare.rib"));
    EXPECT_FALSE(contains(text, "WorldBegin"));
    EXPECT_FALSE(contains(text, "LightSource"));
    EXPECT_FALSE(contains(text, "st\""));
    EXPECT_TRUE(contains(text, "// user text")) << text;
    /* The data text is the user's; without it the file still checks. */
    Object *kid = (Object *)((Object *)world->kids->item)->kids->item;
    object_set_userdata(kid, "Attribute \"user\" \"int x\" [1]");
    text = read_file(write(write_rib_file, "bare2.rib"));
    EXPECT_EQ(check_rib(text, &counts), "") << text;
}

TEST_F(SceneWriters, RibOfTheExampleModelAndOfAnEmptyModel)
{
    std::map<std::string, int> counts;
    std::string text = read_file(write(write_rib_file, "empty.rib"));
    EXPECT_EQ(check_rib(text, &counts), "") << text;
    EXPECT_EQ(counts["AttributeBegin"], 0);
    std::string model = std::string(getenv("VESK_HOME") ? getenv("VESK_HOME") : ".") + "/examples/sample.vk";
    capture([&] { readfile_vk(model.c_str(), world, 0); });
    counts.clear();
    text = read_file(write(write_rib_file, "sample.rib"));
    EXPECT_EQ(check_rib(text, &counts), "");
    EXPECT_GT(counts["PointsPolygons"], 2);
}

/* ---- DIVE ---- */

namespace {

/* Checks the structure of a DIVE file: balanced braces, every N_POLY and
 * N_LINE followed by its count of "v x y z" points, every material_index
 * within its object's materials. */
std::string check_dive(const std::string &text, int *polys, int *lines, int *objects)
{
    std::vector<std::string> words;
    std::string w;
    bool in_string = false, in_comment = false;
    for (size_t i = 0; i < text.size(); i++) {
        char c = text[i];
        if (in_comment) {
            if (c == '*' && i + 1 < text.size() && text[i + 1] == '/') in_comment = false, i++;
            continue;
        }
        if (!in_string && c == '/' && i + 1 < text.size() && text[i + 1] == '*') {
            in_comment = true;
            continue;
        }
        if (c == '"') in_string = !in_string;
        if (!in_string && isspace((unsigned char)c)) {
            if (!w.empty()) words.push_back(w);
            w.clear();
        } else {
            if (in_string && c == '\n') return "line break in a string";
            w += c;
        }
    }
    if (in_string || in_comment) return "unclosed string or comment";
    if (!w.empty()) words.push_back(w);
    std::vector<int> materials;   /* per open object */
    int depth = 0;
    for (size_t i = 0; i < words.size(); i++) {
        const std::string &x = words[i];
        if (x == "{") depth++;
        if (x == "}" && --depth < 0) return "unbalanced }";
        if (x == "object") {
            if (i + 1 >= words.size() || words[i + 1] != "{") return "object without {";
            materials.push_back(0);
            (*objects)++;
        }
        if (x == "material" && !materials.empty()) materials.back()++;
        if (x == "material_index") {
            int m = std::stoi(words.at(i + 1));
            if (materials.empty() || m < 0 || m >= materials.back()) return "material_index out of range";
        }
        if (x == "N_POLY" || x == "N_LINE") {
            int n = std::stoi(words.at(i + 1));
            if (n < (x == "N_POLY" ? 3 : 2)) return x + " too short";
            size_t j = i + 2;
            for (int k = 0; k < n; k++) {
                if (j + 3 >= words.size() || words[j] != "v") return x + ": missing point";
                for (int c = 1; c <= 3; c++) std::stod(words[j + c]);
                j += 4;
                if (j + 2 < words.size() && words[j] == "t") j += 3;
            }
            if (words.at(j) != "}") return x + ": more than its points";
            (x == "N_POLY" ? *polys : *lines)++;
        }
    }
    if (depth) return "unbalanced {";
    return "";
}

} // namespace

TEST_F(SceneWriters, DiveWorldStructure)
{
    build_rich_model("wood.png");
    add_lights();
    std::string text = read_file(write(write_dive_file, "rich.vr"));
    int polys = 0, lines = 0, objects = 0;
    EXPECT_EQ(check_dive(text, &polys, &lines, &objects), "") << text;
    /* The quad is bent out of its plane and the L-shape is concave:
     * two and four triangles; the closed line repeats its first point. */
    EXPECT_EQ(polys, 2 + 4) << text;
    EXPECT_EQ(lines, 2);
    EXPECT_EQ(objects, 2 + 3);
    EXPECT_TRUE(contains(text, "world \"vesk\" {\n  start v 0 0 5\n}"));
    EXPECT_TRUE(contains(text, "N_LINE 4\n"));
    EXPECT_TRUE(contains(text, "texture \"wood.png\""));
    EXPECT_TRUE(contains(text, "DLIGHT"));
    EXPECT_TRUE(contains(text, "SLIGHT"));
    EXPECT_TRUE(contains(text, "PLIGHT"));
    EXPECT_EQ(scene_notes.polygons_skipped, 1);
}

/* ---- MASSIVE and DVS ---- */

namespace {

/* Reads the geometry text back and checks its counts and indices;
 * returns "" or the first fault. */
std::string check_geometry_text(const std::string &text, const std::string &format, long *polygons, long *lines)
{
    std::istringstream in(text);
    std::string line;
    std::getline(in, line);
    if (line != "VESK-" + format + " 1") return "header " + line;
    std::getline(in, line);
    if (line.rfind("#", 0) != 0) return "comment";
    std::string word;
    long count = 0;
    in >> word >> count;
    if (word != "materials") return "materials";
    std::set<long> materials;
    for (long i = 0; i < count; i++) {
        long index;
        in >> word >> index;
        if (word != "material") return "material";
        materials.insert(index);
        std::getline(in, line);
    }
    long objects = 0;
    in >> word >> objects;
    if (word != "objects") return "objects";
    for (long o = 0; o < objects; o++) {
        long number, parent, v, p, l;
        std::string k1, k2, k3, k4, k5, name, k6, texture;
        in >> word >> number >> k1 >> parent >> k2 >> std::quoted(name) >> k3 >> v >> k4 >> p >> k5 >> l >> k6 >>
            std::quoted(texture);
        if (!in || word != "object" || number != o || parent >= o || k3 != "vertices") return "object line";
        for (long i = 0; i < v; i++) {
            double x, y, z;
            in >> word >> x >> y >> z;
            if (!in || word != "v") return "vertex";
        }
        for (long i = 0; i < p; i++) {
            long mat, n, index;
            in >> word >> mat >> n;
            if (word != "p" || !materials.count(mat) || n < 3) return "polygon";
            for (long k = 0; k < n; k++) {
                in >> index;
                if (index < 0 || index >= v) return "polygon index";
            }
            in >> word;
            if (word != "uv") return "uv";
            for (long k = 0; k < 2 * n; k++) {
                double uv;
                in >> uv;
            }
            (*polygons)++;
        }
        for (long i = 0; i < l; i++) {
            long mat, n, index;
            std::string kind;
            in >> word >> mat >> kind >> n;
            if (word != "l" || !materials.count(mat) || (kind != "open" && kind != "closed") || n < 2) return "line";
            for (long k = 0; k < n; k++) {
                in >> index;
                if (index < 0 || index >= v) return "line index";
            }
            (*lines)++;
        }
    }
    in >> word;
    if (word != "end") return "end";
    return in ? "" : "short file";
}

} // namespace

TEST_F(SceneWriters, MassiveAndDvsGeometryTexts)
{
    build_rich_model("wood.png");
    add_lights();
    for (auto f : {std::make_pair(write_massive_file, std::string("MASSIVE")),
                   std::make_pair(write_dvs_file, std::string("DVS"))}) {
        std::string text = read_file(write(f.first, "rich." + f.second));
        long polygons = 0, lines = 0;
        EXPECT_EQ(check_geometry_text(text, f.second, &polygons, &lines), "") << text;
        EXPECT_EQ(polygons, 2);
        EXPECT_EQ(lines, 2);
        EXPECT_TRUE(contains(text, "objects 5\n"));
        EXPECT_TRUE(contains(text, " parent 0 name \"L-shape\""));
        EXPECT_TRUE(contains(text, "l 3 closed 3 0 1 2\n"));
    }
    clear_world_children();
    std::string text = read_file(write(write_dvs_file, "empty.dvs"));
    EXPECT_EQ(text, "VESK-DVS 1\n# DVS geometry text written by VESK; the layout is described in its README\n"
                    "materials 0\nobjects 0\nend\n");
}

/* ---- failures ---- */

TEST_F(SceneWriters, FailedWritesSaySoAndKeepTheEarlierFile)
{
    build_rich_model("");
    int (*writers[])(const char *) = {write_pov_file, write_rib_file, write_dive_file, write_massive_file,
                                      write_dvs_file};
    std::string path = dir.file("keep.out");
    write_file(path, "earlier\n");
    for (auto writer : writers) {
        int ok = 1;
        Captured c = capture([&] { ok = writer(dir.file("no/such/dir.out").c_str()); });
        EXPECT_EQ(ok, 0);
        EXPECT_TRUE(contains(c.out, "can't open file for writing\n")) << c.out;
        c = capture([&] { ok = writer(dir.path.c_str()); });
        EXPECT_EQ(ok, 0) << "a directory as the path";
        c = capture([&] { ok = writer((path + "/x").c_str()); });
        EXPECT_EQ(ok, 0);
        c = capture([&] { ok = writer(""); });
        EXPECT_EQ(ok, 0);

        /* A full disk: every write past 100 bytes fails. */
        struct rlimit saved;
        getrlimit(RLIMIT_FSIZE, &saved);
        struct rlimit small = saved;
        small.rlim_cur = 100;
        void (*old_handler)(int) = signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &small);
        c = capture([&] { ok = writer(path.c_str()); });
        setrlimit(RLIMIT_FSIZE, &saved);
        signal(SIGXFSZ, old_handler);
        EXPECT_EQ(ok, 0);
        EXPECT_TRUE(contains(c.out, "can't write file")) << c.out;
        EXPECT_EQ(read_file(path), "earlier\n");
        EXPECT_EQ(count_entries(dir.path), 1) << "a temporary file was left behind";
    }
}

TEST_F(SceneWriters, CommandsLeaveTheirResultAndStatus)
{
    build_rich_model("");
    for (const char *name : {"write_POV", "write_rib", "write_dive", "write_massive", "write_dvs"}) {
        std::string path = dir.file(std::string(name) + ".out");
        const char *argv[] = {name, path.c_str()};
        capture([&] { EXPECT_EQ(do_command(2, (char **)argv), 1); });
        ASSERT_NE(command_result_get(), nullptr) << name;
        EXPECT_STREQ(command_result_get(), "1") << name;
        const char *bad[] = {name, "/no/such/dir/x"};
        capture([&] { do_command(2, (char **)bad); });
        EXPECT_STREQ(command_result_get(), "0") << name;
    }
}
