/*
 * test_dispatcher.cpp - do_command and the command registry: word counts,
 * lookup order, argument conversion by template, the eight call shapes,
 * the fault guard, the built-in table and the result buffer.
 */
#include "test_support.h"
#include "app/commands.h"
#include "app/tcl_bridge.h"

#include <tcl.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace {

/* What the test handlers last received. */
int calls;
int got_d;
float got_f[15];
char *got_s;

void reset_got()
{
    calls = 0;
    got_d = -12345;
    for (float &f : got_f) f = -1;
    got_s = nullptr;
}

int h_none(void) { calls++; return 7; }
int h_other(void) { calls += 100; return 0; }
int h_d(int d) { calls++; got_d = d; return 0; }
int h_f(float f) { calls++; got_f[0] = f; return 0; }
int h_s(char *s) { calls++; got_s = s; return 0; }
int h_sd(char *s, int d) { calls++; got_s = s; got_d = d; return 0; }
int h_ff(float a, float b) { calls++; got_f[0] = a; got_f[1] = b; return 0; }
int h_fff(float a, float b, float c)
{
    calls++;
    got_f[0] = a, got_f[1] = b, got_f[2] = c;
    return 0;
}
int h_ffffff(float a, float b, float c, float d, float e, float f)
{
    calls++;
    float v[6] = {a, b, c, d, e, f};
    for (int i = 0; i < 6; i++) got_f[i] = v[i];
    return 0;
}
int h_dfff(int d, float a, float b, float c, float e, float f, float g, float h, float i, float j,
           float k, float l, float m, float n, float o)
{
    calls++;
    got_d = d;
    float v[14] = {a, b, c, e, f, g, h, i, j, k, l, m, n, o};
    for (int x = 0; x < 14; x++) got_f[x] = v[x];
    return 0;
}

/* Handlers that fault; the sanitizer must not turn the fault into its
 * own report, since the guard is what is being tested. */
__attribute__((no_sanitize("undefined"))) int h_segv(void)
{
    calls++;
    volatile int *nowhere = nullptr;
    return *nowhere;
}

__attribute__((no_sanitize("undefined"))) int h_fpe(int d)
{
    calls++;
    volatile int zero = 0;
    return d / zero;
}

/* Recurses until the stack runs out long before the limit. */
volatile int recursion_limit = INT_MAX;

__attribute__((no_sanitize("undefined"), noinline)) int recurse_forever(volatile int depth)
{
    volatile char frame[256];
    frame[0] = (char)depth;
    if (depth >= recursion_limit) return frame[0];
    return recurse_forever(depth + 1) + frame[0];
}

int h_overflow(void)
{
    calls++;
    return recurse_forever(0);
}

#define FN(f) reinterpret_cast<vk_command_function>(&(f))

/* Removes a command added by a test, with its copied strings. */
void remove_added_command(const char *name)
{
    for (List *l = added_commands; l; l = l->next) {
        Command *c = (Command *)l->item;
        if (strcmp(c->name, name) != 0) continue;
        list_remove_item(&added_commands, c);
        myfree(const_cast<char *>(c->name));
        myfree(const_cast<char *>(c->template_));
        myfree(const_cast<char *>(c->usage));
        myfree(const_cast<char *>(c->description));
        myfree(c);
        return;
    }
}

class Dispatcher : public ::testing::Test {
protected:
    std::vector<std::string> added;

    void SetUp() override { reset_got(); }
    void TearDown() override
    {
        for (const std::string &name : added) remove_added_command(name.c_str());
        command_result_set(nullptr);
    }
    void add(const char *name, vk_command_function f, int numargs, const char *tmpl)
    {
        vk_add_command_full(name, f, numargs, tmpl, "<usage>", "test command");
        added.push_back(name);
    }
};

/* Runs a command line given as words; stdout and stderr are captured. */
struct CommandRun {
    int result;
    std::string out, err;
};

CommandRun run(std::vector<std::string> words)
{
    std::vector<char *> argv;
    for (std::string &w : words) argv.push_back(&w[0]);
    CommandRun r{0, "", ""};
    Captured c = capture([&] { r.result = do_command((int)argv.size(), argv.data()); });
    r.out = c.out;
    r.err = c.err;
    return r;
}

std::string result_text()
{
    const char *r = command_result_get();
    return r ? r : "<none>";
}

struct Row {
    const char *name, *tmpl, *usage, *description;
};

/* The built-in commands in lookup order. */
const Row builtin_rows[] = {
    {"add_text", "s", "<string text>", nullptr},
    {"clear_all", nullptr, nullptr, "delete everything"},
    {"clear_background_image", "d", "<win>", "remove a background image from an orth window"},
    {"clear_selection", nullptr, nullptr, "clear selection and redraw windows"},
    {"clipboard_copy", nullptr, nullptr, nullptr},
    {"clipboard_cut", nullptr, nullptr, nullptr},
    {"clipboard_paste", nullptr, nullptr, nullptr},
    {"clone_selection", nullptr, nullptr, nullptr},
    {"convexhull", nullptr, nullptr, nullptr},
    {"createsurface", nullptr, nullptr, "create a surface using selected vertices (order is important)"},
    {"create_text", "s", "<string text>", nullptr},
    {"edit_palette_entry", "d", "<entrynum>", nullptr},
    {"execute", "s", "<string system-command>", nullptr},
    {"extrude_along_path", nullptr, nullptr, "extrude along the defined path"},
    {"define_extrude_path", nullptr, nullptr, "define the line object used in 'extrude along path'"},
    {"delete", nullptr, nullptr, "remove selection and redraw all"},
    {"do_perspective", nullptr, nullptr, "reconfigure the perspective of the 3D window"},
    {"duplicate", nullptr, nullptr, "clone selected and translate by one grid cell"},
    {"execute_surface_filter", "s", "<filtername>", "run a surface filter on each selected surface"},
    {"file_select_texture", nullptr, nullptr, "open a texture file dialog and load a texture"},
    {"file_select_background_image", "d", "<windownum>", "open a texture file dialog and load as a background image"},
    {"fit_selected_all", nullptr, nullptr, "Fit selection to orth views"},
    {"fit_all", nullptr, nullptr, "Fit model to orth views"},
    {"get_3d_cursor", nullptr, nullptr, nullptr},
    {"get_world", nullptr, nullptr, nullptr},
    {"get_lights", nullptr, nullptr, nullptr},
    {"get_selected_objects", nullptr, nullptr, nullptr},
    {"get_selection_size", nullptr, nullptr, nullptr},
    {"get_selection_centre", nullptr, nullptr, nullptr},
    {"goto_selected_all", nullptr, nullptr, "Centre orth views about selection"},
    {"group", nullptr, "group", "group selected objects"},
    {"hide_selected", nullptr, nullptr, nullptr},
    {"hide_unselected", nullptr, nullptr, nullptr},
    {"insert_vertex", nullptr, nullptr, nullptr},
    {"import_3ds", "s", "<filename>", "load a 3D Studio file"},
    {"import_dxf", "s", "<filename>", "load a DXF file"},
    {"import_alias_tri", "s", "<filename>", "load an Alias Triangle file"},
    {"import_tri", "s", "<filename>", "load a Triangle file"},
    {"import_lightwave", "s", "<filename>", "load a Lightwave file"},
    {"import_vector", "s", "<filename>", "load a Vector file"},
    {"import_vrml", "s", "<filename>", "load a VRML 1 file"},
    {"import_inventor", "s", "<filename>", "load an Inventor file"},
    {"get_info", nullptr, nullptr, "get details about current model"},
    {"list", nullptr, nullptr, nullptr},
    {"load_vk", "s", "<filename>", "load an VESK format file"},
    {"add_new_texture", "s", "<filename>", nullptr},
    {"load_and_set_new_texture", "s", "<filename>", nullptr},
    {"load_background_image", "sd", "<filename> <windownum>", "Load named picture file into the bcakground of window"},
    {"menu_about", nullptr, nullptr, nullptr},
    {"mirror", "d", "<int axis>", "mirror selected about specified axis"},
    {"move", "fff", "<float x> <float y> <float z>", "translate selection (relative)"},
    {"move_to", "fff", "<float x> <float y> <float z>", "translate selection (absolute - based on centre point)"},
    {"new_cube", nullptr, nullptr, "add a regular cube centred at the origin"},
    {"new_palette_entry", "d", "<int index>", nullptr},
    {"object_explode", "f", "<float explode_dist>", "fragment and explode surfaces"},
    {"object_get_children", "d", "<int object_id>", "returns a list of object ids"},
    {"object_get_name", "d", "<int object_id>", "returns the object's name"},
    {"object_get_surfaces", "d", "<int object_id>", "returns list of surfaces ids"},
    {"object_get_vertices", "d", "<int object_id>", "returns list of surfaces ids"},
    {"object_get_centre", "d", "<int object_id>", "returns object centre x y z"},
    {"object_get_url", "d", "<int object_id>", "returns object url"},
    {"object_get_data", "d", "<int object_id>", "returns object data"},
    {"object_fragment", nullptr, nullptr, nullptr},
    {"object_merge", nullptr, nullptr, nullptr},
    {"object_recentre", nullptr, nullptr, nullptr},
    {"object_is_selected", "d", "<int object_id>", nullptr},
    {"object_is_hidden", "d", "<int object_id>", nullptr},
    {"object_hide", "d", "<int object_id>", nullptr},
    {"object_unhide", "d", "<int object_id>", nullptr},
    {"object_select", "d", "<int object_id>", "select the object"},
    {"object_deselect", "d", "<int object_id>", "deselect the object"},
    {"object_mincentre", nullptr, nullptr, nullptr},
    {"object_snap_together_by_vertices", nullptr, nullptr, nullptr},
    {"optimize", nullptr, nullptr, nullptr},
    {"optimize_surfaces", nullptr, nullptr, nullptr},
    {"plugin_load", "s", "<filename>", "load and initialise a plugin"},
    {"recalc_normals_all", nullptr, nullptr, "recalculate all normals"},
    {"redraw_all", nullptr, nullptr, "redraw 3D and orthographic windows"},
    {"redraw_3d", nullptr, nullptr, "redraw 3d window"},
    {"redraw_orth", nullptr, nullptr, "redraw orthograpic windows"},
    {"reset_views", nullptr, nullptr, "reset window views to initial setup"},
    {"remap_textures", "d", "<int window>", nullptr},
    {"removesurface", nullptr, nullptr, "remove selected surfaces, vertices remain"},
    {"revolve", "d", "<int axis>", "Revolve selected around an axis"},
    {"rotate", "fff", "<float rx-degs> <float ry-degs> <float rz-degs>", "rotate selection about origin"},
    {"rotate_about", "ffffff", "<float rx-degs> <float ry-degs> <float rz-degs> <float x_ <float y> <float z>", "rotate selection about a point"},
    {"save_vk", "s", "<filename>", "save an VESK format file"},
    {"save_selection_vk", "s", "<filename>", "save the selection in an VESK format file"},
    {"save_settings", nullptr, nullptr, nullptr},
    {"set_no_texture", nullptr, nullptr, nullptr},
    {"scale", "fff", "<float scale-x> <float scale-y> <float scale-z>", nullptr},
    {"select_all", nullptr, nullptr, nullptr},
    {"select_by_name", "s", "<string name>", nullptr},
    {"select_part_selected_surfaces", nullptr, nullptr, "select all vertices in surfaces that are part selected"},
    {"selected_texture_off", nullptr, nullptr, "set no textures on all selected"},
    {"set_col", "d", "<int colindex>", "set selected surfaces to this col"},
    {"set_current_object_data", "s", "<string new-data>", nullptr},
    {"set_current_object_name", "s", "<string new-name>", nullptr},
    {"set_current_object_url", "s", "<string new-url>", nullptr},
    {"set_draw_mode", "d", "<int draw-mode-num>", nullptr},
    {"set_drag_mode", "d", "<int drag-mode-num>", nullptr},
    {"set_view_3d_selection", nullptr, nullptr, "centre view about selection"},
    {"set_view_3d_cursor", nullptr, nullptr, "centre view about cursor"},
    {"set_view_3d_origin", nullptr, nullptr, "centre view about origin"},
    {"set_select_mode", "d", "<int select-mode-num>", nullptr},
    {"set_texture", "d", "<int texture-num>", nullptr},
    {"set_texture_repeats", "ff", "<float rx> <float ry>", nullptr},
    {"set_palette_entry", "dffffffffffffff", "<int entrynum> <float red> <float green> <float blue>  <float ambient-red> <float ambient-green> <float ambient-blue> <float emissive-red> <float emissive-green> <float emissive-blue> <float specular-red> <float specular-green> <float specular-blue> <float shininess> <float transp>", nullptr},
    {"set_surface_type", "d", "<int surfacetype>", nullptr},
    {"set_walk_viewer", nullptr, nullptr, nullptr},
    {"set_spin_viewer", nullptr, nullptr, nullptr},
    {"size_to", "fff", "<float x> <float y> <float z>", nullptr},
    {"snap_object_vertex_pairs", nullptr, nullptr, nullptr},
    {"snaptogether", nullptr, nullptr, nullptr},
    {"snaptogrid", nullptr, nullptr, "move all selected vertices to closest grid point"},
    {"surface_bevel", nullptr, nullptr, nullptr},
    {"surface_change_vertex_order", nullptr, nullptr, "change the order of a surfaces vertex references (moves first to last)"},
    {"surface_create_object", nullptr, nullptr, nullptr},
    {"surface_flip_normals", nullptr, nullptr, nullptr},
    {"surface_make_hole", nullptr, nullptr, nullptr},
    {"surface_set_shaded", "d", "<int flag>", nullptr},
    {"surface_set_twosided", "d", "<int flag>", nullptr},
    {"surface_spike", nullptr, nullptr, nullptr},
    {"surface_spline", nullptr, nullptr, nullptr},
    {"surface_subdivide", nullptr, nullptr, nullptr},
    {"surface_triangulate", nullptr, nullptr, nullptr},
    {"texture_set", "d", "<int texture-index>", "set this texture on all selected objects"},
    {"ungroup", nullptr, "ungroup", "ungroup selected objects"},
    {"undo", nullptr, nullptr, "undo"},
    {"unhide", nullptr, nullptr, "undo"},
    {"unselect_by_name", "s", "<string object_name>", "remove objects with this name from the selection"},
    {"write_dive", "s", "<filename>", "Write a Dive format file"},
    {"write_inventor", "s", "<filename>", "Write an Inventor 2.1 format file"},
    {"write_massive", "s", "<filename>", "Write a Massive format file"},
    {"write_vrml", "s", "<filename>", "Write a VRML 1.0 format file"},
    {"write_vrml2", "s", "<filename>", "Write a VRML 2.0 format file"},
    {"write_rib", "s", "<filename>", "Write a Renderman format file"},
    {"write_POV", "s", "<filename>", "Write a Povray format file"},
    {"write_dvs", "s", "<filename>", "Write a DVS format file"},
    {"write_tri", "s", "<filename>", "Write a triangle format file"},
    {"zoom_in", nullptr, nullptr, nullptr},
    {"zoom_out", nullptr, nullptr, nullptr},
};

} // namespace

TEST_F(Dispatcher, WordCountsAndLookup)
{
    command_result_set("stale");
    const char *none[] = {nullptr};
    EXPECT_EQ(do_command(0, (char **)none), 1);
    EXPECT_EQ(command_result_get(), nullptr); /* cleared first */

    CommandRun r = run({"no_such_command", "1"});
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(r.out, "\acommand no_such_command not found!\n");
    EXPECT_EQ(result_text(), "command not found");
    EXPECT_EQ(run({"LIST"}).result, 0); /* names are case-sensitive */

    r = run({"move", "1", "2"});
    EXPECT_EQ(r.result, 0);
    const char *message = "incorrect number of args for move (should be 3, got 2) - usage:\n"
                          "    <float x> <float y> <float z>";
    EXPECT_EQ(r.out, std::string(message) + "\n");
    EXPECT_EQ(result_text(), message);
    r = run({"get_world", "extra"});
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(r.out.rfind("incorrect number of args for get_world (should be 0, got 1) - usage:\n    ", 0), 0u);

    /* At most twenty words: the name and nineteen arguments. */
    std::vector<std::string> words(21, "1");
    words[0] = "move";
    r = run(words);
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(r.out, "max number of command parameters exceeded\n");
    EXPECT_EQ(command_result_get(), nullptr);
    words.resize(20);
    r = run(words);
    EXPECT_EQ(r.out.rfind("incorrect number of args for move (should be 3, got 19)", 0), 0u) << r.out;
    words[0] = "no_such_command";
    EXPECT_EQ(run(words).out, "\acommand no_such_command not found!\n");

    /* Nineteen arguments reach an added command; its template is none of
     * the eight call shapes, which is reported and still counts as run. */
    add("test_nineteen", FN(h_none), 19, "sssssssssssssssssss");
    words[0] = "test_nineteen";
    r = run(words);
    EXPECT_EQ(r.result, 1);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(r.out, "\aunknown arg template sssssssssssssssssss for command test_nineteen\n"
                     "templates are: d, f, s, sd, ff, fff, ffffff, dffffffffffffff\n where d=int, "
                     "f=float, s=string (use NULL for no template)\n");
}

TEST_F(Dispatcher, ArgumentConversion)
{
    add("test_d", FN(h_d), 1, "d");
    add("test_f", FN(h_f), 1, "f");
    add("test_s", FN(h_s), 1, "s");

    struct {
        const char *word;
        int value;
    } ints[] = {{"12abc", 12}, {"abc", 0}, {"", 0}, {" 42", 42}, {"-7", -7}, {"0x10", 0},
                {"3.9", 3}, {"99999999999999999999", INT_MAX}, {"-99999999999", INT_MIN}};
    for (const auto &t : ints) {
        CommandRun r = run({"test_d", t.word});
        EXPECT_EQ(r.result, 1);
        EXPECT_EQ(got_d, t.value) << t.word;
    }

    EXPECT_EQ(run({"test_f", "2.5xyz"}).result, 1);
    EXPECT_EQ(got_f[0], 2.5f);
    run({"test_f", "abc"});
    EXPECT_EQ(got_f[0], 0.0f);
    CommandRun r = run({"test_f", "1e39"});
    EXPECT_EQ(r.result, 1);
    EXPECT_TRUE(std::isinf(got_f[0]));
    run({"test_f", "-1e-50"});
    EXPECT_EQ(got_f[0], 0.0f);
    run({"test_f", "nan"});
    EXPECT_TRUE(std::isnan(got_f[0]));

    /* A string argument is the word itself, however long. */
    std::string big(1 << 20, 'x');
    std::vector<char *> argv = {(char *)"test_s", &big[0]};
    EXPECT_EQ(do_command(2, argv.data()), 1);
    EXPECT_EQ(got_s, &big[0]);
    EXPECT_EQ(strlen(got_s), (size_t)1 << 20);

    /* An unknown template letter stops before the call. */
    add("test_x", FN(h_d), 1, "x");
    calls = 0;
    r = run({"test_x", "1"});
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(r.out, "error - internal command - unknown parameter type - tell Orlo\n");
    /* A template shorter than the argument count is caught the same way. */
    add("test_short", FN(h_sd), 2, "s");
    r = run({"test_short", "a", "1"});
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(r.out, "error - internal command - unknown parameter type - tell Orlo\n");
}

TEST_F(Dispatcher, EveryCallShapeGetsItsValues)
{
    add("test_none", FN(h_none), 0, "");
    add("test_d", FN(h_d), 1, "d");
    add("test_f", FN(h_f), 1, "f");
    add("test_s", FN(h_s), 1, "s");
    add("test_sd", FN(h_sd), 2, "sd");
    add("test_ff", FN(h_ff), 2, "ff");
    add("test_fff", FN(h_fff), 3, "fff");
    add("test_ffffff", FN(h_ffffff), 6, "ffffff");
    add("test_dfff", FN(h_dfff), 15, "dffffffffffffff");

    EXPECT_EQ(run({"test_none"}).result, 1);
    EXPECT_EQ(calls, 1);
    run({"test_d", "-5"});
    EXPECT_EQ(got_d, -5);
    run({"test_f", "0.25"});
    EXPECT_EQ(got_f[0], 0.25f);
    std::vector<std::string> words = {"test_s", "hello world"};
    std::vector<char *> argv = {&words[0][0], &words[1][0]};
    do_command(2, argv.data());
    EXPECT_EQ(got_s, argv[1]);
    std::vector<std::string> sd_words = {"test_sd", "file.vk", "3"};
    std::vector<char *> sd_argv = {&sd_words[0][0], &sd_words[1][0], &sd_words[2][0]};
    do_command(3, sd_argv.data());
    EXPECT_EQ(got_s, sd_argv[1]);
    EXPECT_STREQ(got_s, "file.vk");
    EXPECT_EQ(got_d, 3);
    run({"test_ff", "1.5", "-2.5"});
    EXPECT_EQ(got_f[0], 1.5f);
    EXPECT_EQ(got_f[1], -2.5f);
    run({"test_fff", "1", "2", "3"});
    EXPECT_EQ(got_f[2], 3.0f);
    run({"test_ffffff", "1", "2", "3", "4", "5", "6"});
    for (int i = 0; i < 6; i++) EXPECT_EQ(got_f[i], (float)(i + 1));
    std::vector<std::string> fifteen = {"test_dfff", "42"};
    for (int i = 1; i <= 14; i++) fifteen.push_back(std::to_string(i * 0.5));
    EXPECT_EQ(run(fifteen).result, 1);
    EXPECT_EQ(got_d, 42);
    for (int i = 0; i < 14; i++) EXPECT_EQ(got_f[i], (i + 1) * 0.5f) << i;
    EXPECT_EQ(calls, 9);

    /* A two-letter template outside the eight: reported, not called, and
     * the command still counts as run. */
    add("test_dd", FN(h_sd), 2, "dd");
    calls = 0;
    CommandRun r = run({"test_dd", "1", "2"});
    EXPECT_EQ(r.result, 1);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(r.out.rfind("\aunknown arg template dd for command test_dd\ntemplates are: ", 0), 0u);
}

/* "so": a file name and an optional word (null when left out). */
static std::string got_so_first, got_so_second;
static int h_so(char *first, char *second)
{
    calls++;
    got_so_first = first ? first : "<null>";
    got_so_second = second ? second : "<null>";
    return 0;
}

TEST_F(Dispatcher, AnOptionalLastWord)
{
    add("test_so", FN(h_so), 2, "so");
    EXPECT_EQ(run({"test_so", "a.obj", "obj"}).result, 1);
    EXPECT_EQ(got_so_first, "a.obj");
    EXPECT_EQ(got_so_second, "obj");
    EXPECT_EQ(run({"test_so", "b.stl"}).result, 1);
    EXPECT_EQ(got_so_first, "b.stl");
    EXPECT_EQ(got_so_second, "<null>");
    EXPECT_EQ(calls, 2);
    /* Only the last word may be left out. */
    EXPECT_EQ(run({"test_so"}).result, 0);
    EXPECT_EQ(run({"test_so", "a", "b", "c"}).result, 0);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(result_text(), "incorrect number of args for test_so (should be 2, got 3) - usage:\n    <usage>");
}

TEST_F(Dispatcher, AddedCommandsComeFirst)
{
    /* An added command hides the built-in of the same name. */
    char name[] = "list";
    vk_add_command(name, FN(h_none));
    added.push_back("list");
    name[0] = 'X'; /* the name was copied */
    Command *c = find_command("list");
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->numargs, 0);
    EXPECT_EQ(c->template_, nullptr);
    EXPECT_EQ(c->usage, nullptr);
    EXPECT_STREQ(c->description, "user command");
    EXPECT_EQ(run({"list"}).result, 1);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(command_result_get(), nullptr);

    /* Replacing finds the added command first. */
    EXPECT_EQ(vk_replace_command_function("list", FN(h_other)), 1);
    run({"list"});
    EXPECT_EQ(calls, 101);
    remove_added_command("list");
    added.clear();
    run({"list"});
    EXPECT_EQ(calls, 101);
    EXPECT_NE(command_result_get(), nullptr); /* the built-in listing ran */

    /* A built-in can be redirected, and put back. */
    Command *zoom = find_command("zoom_in");
    ASSERT_NE(zoom, nullptr);
    vk_command_function original = zoom->function;
    EXPECT_EQ(vk_replace_command_function("zoom_in", FN(h_none)), 1);
    calls = 0;
    run({"zoom_in"});
    EXPECT_EQ(calls, 1);
    zoom->function = original;
    EXPECT_EQ(vk_replace_command_function("no_such_command", FN(h_none)), 0);

    /* The full form copies every string. */
    char tmpl[] = "d", usage[] = "<int n>", desc[] = "a test";
    List *node = vk_add_command_full("test_full", FN(h_d), 1, tmpl, usage, desc);
    added.push_back("test_full");
    ASSERT_NE(node, nullptr);
    Command *full = (Command *)node->item;
    tmpl[0] = 'f', usage[0] = 'X', desc[0] = 'X';
    EXPECT_STREQ(full->template_, "d");
    EXPECT_STREQ(full->usage, "<int n>");
    EXPECT_STREQ(full->description, "a test");
    EXPECT_EQ(full->numargs, 1);
    run({"test_full", "9"});
    EXPECT_EQ(got_d, 9);
    CommandRun r = run({"test_full"});
    EXPECT_EQ(result_text(), "incorrect number of args for test_full (should be 1, got 0) - usage:\n"
                             "    <int n>");
}

TEST_F(Dispatcher, FaultsAreReportedAndTheProgramGoesOn)
{
    add("test_segv", FN(h_segv), 0, nullptr);
    add("test_fpe", FN(h_fpe), 1, "d");
    CommandRun r = run({"test_segv"});
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(r.err, "Exception occured whilst executing internal command 'test_segv'\n"
                     "Exception code 11\n\nPlease report this to Orlo.\n"
                     "Please report what you did before the error occured and\n"
                     "details of any output in the console.\n");
    EXPECT_EQ(run({"get_world"}).result, 1);

    r = run({"test_fpe", "5"});
    EXPECT_EQ(r.result, 0);
    EXPECT_TRUE(contains(r.err, "internal command 'test_fpe'\nException code 8\n")) << r.err;
    /* Twice more: the guard is re-armed after each fault. */
    EXPECT_EQ(run({"test_segv"}).result, 0);
    EXPECT_EQ(run({"test_fpe", "1"}).result, 0);
    EXPECT_EQ(calls, 4);
    EXPECT_EQ(run({"list"}).result, 1);

    /* Running out of stack is a fault like any other. */
    add("test_overflow", FN(h_overflow), 0, nullptr);
    r = run({"test_overflow"});
    EXPECT_EQ(r.result, 0);
    EXPECT_TRUE(contains(r.err, "internal command 'test_overflow'\nException code 11\n")) << r.err;
    EXPECT_EQ(run({"test_overflow"}).result, 0);
    EXPECT_EQ(run({"get_world"}).result, 1);
}

TEST_F(Dispatcher, BuiltinTable)
{
    const int rows = (int)(sizeof builtin_rows / sizeof builtin_rows[0]);
    ASSERT_EQ(rows, 142);
    ASSERT_EQ(num_builtin_commands, 142);
    auto same = [](const char *a, const char *b) { return a == b || (a && b && strcmp(a, b) == 0); };
    for (int i = 0; i < rows; i++) {
        const Command &c = builtin_commands[i];
        const Row &r = builtin_rows[i];
        EXPECT_STREQ(c.name, r.name) << "row " << i;
        EXPECT_TRUE(same(c.template_, r.tmpl)) << "row " << i << " " << r.name;
        EXPECT_TRUE(same(c.usage, r.usage)) << "row " << i << " " << r.name;
        EXPECT_TRUE(same(c.description, r.description)) << "row " << i << " " << r.name;
        EXPECT_EQ(c.numargs, c.template_ ? (int)strlen(c.template_) : 0) << "row " << i;
        EXPECT_NE(c.function, nullptr) << "row " << i;
        /* The name finds its own row: no earlier duplicate hides it. */
        EXPECT_EQ(find_command(r.name), &c) << "row " << i;
    }
    EXPECT_STREQ(builtin_commands[85].usage,
                 "<float rx-degs> <float ry-degs> <float rz-degs> <float x_ <float y> <float z>");
    EXPECT_STREQ(builtin_commands[129].name, "unhide");
    EXPECT_STREQ(builtin_commands[129].description, "undo");
    EXPECT_STREQ(builtin_commands[141].name, "zoom_out");
}

TEST_F(Dispatcher, ListCommand)
{
    add("test_listed", FN(h_none), 0, nullptr);
    CommandRun r = run({"list"});
    EXPECT_EQ(r.result, 1);
    std::string text = result_text();
    EXPECT_EQ(count_lines(text), 143);
    /* Added commands first, then the built-ins in table order. */
    EXPECT_EQ(text.rfind("test_listed <usage> test command\n"
                         "add_text <string text> \n"
                         "clear_all  delete everything\n"
                         "clear_background_image <win> remove a background image from an orth window\n",
                         0),
              0u)
        << text.substr(0, 300);
    EXPECT_TRUE(contains(text, "\nmove <float x> <float y> <float z> translate selection (relative)\n"));
    EXPECT_TRUE(contains(text, "\ngroup group group selected objects\n"));
    EXPECT_TRUE(contains(text, "\nzoom_in  \nzoom_out  \n"));
    EXPECT_EQ(text.substr(text.size() - 11), "zoom_out  \n");
}

TEST_F(Dispatcher, ResultBuffer)
{
    EXPECT_STREQ(command_result_set("abc"), "abc");
    command_result_append_string("def");
    command_result_append_string(nullptr);
    command_result_append_int(-42);
    command_result_appendf(" %s=%d", "x", 5);
    EXPECT_EQ(result_text(), "abcdef-42 x=5");
    EXPECT_EQ(command_result_set(nullptr), nullptr);
    EXPECT_EQ(command_result_get(), nullptr);
    command_result_append_string("start");
    EXPECT_EQ(result_text(), "start");

    /* A formatted piece is cut at the message buffer's size. */
    command_result_set(nullptr);
    std::string long_text(3000, 'y');
    command_result_appendf("%s", long_text.c_str());
    EXPECT_EQ(result_text().size(), 2047u);

    /* Many appends build a long answer. */
    command_result_set("");
    for (int i = 0; i < 100000; i++) command_result_append_string("12345 ");
    EXPECT_EQ(result_text().size(), 600000u);
    EXPECT_EQ(result_text().substr(0, 12), "12345 12345 ");
    command_result_set(nullptr);
}

TEST_F(Dispatcher, ResultMayBeBuiltFromItself)
{
    /* A handler may pass the current result back in; with plain heap
     * blocks a freed buffer would be read.  Both allocator modes. */
    for (bool guarded : {false, true}) {
        command_result_set(nullptr);
        GuardingScope scope(guarded);
        command_result_set("abc");
        command_result_append_string(command_result_get());
        EXPECT_EQ(result_text(), "abcabc") << guarded;
        command_result_set(command_result_get());
        EXPECT_EQ(result_text(), "abcabc") << guarded;
        command_result_set(command_result_get() + 3);
        EXPECT_EQ(result_text(), "abc") << guarded;
        for (int i = 0; i < 6; i++) command_result_append_string(command_result_get());
        EXPECT_EQ(result_text().size(), 3u * 64) << guarded;
        command_result_appendf("%s", command_result_get());
        EXPECT_EQ(result_text().size(), 3u * 128) << guarded;
        command_result_set(nullptr);
    }
}

TEST_F(Dispatcher, DebugTrace)
{
    add("test_fff", FN(h_fff), 3, "fff");
    int saved = debug_flag;
    debug_flag = 1;
    CommandRun r = run({"test_fff", "1", "2", "3"});
    debug_flag = saved;
    EXPECT_EQ(r.result, 1);
    EXPECT_TRUE(contains(r.out, "received command : \t'test_fff' \t'1' \t'2' \t'3' \n")) << r.out;
    EXPECT_TRUE(contains(r.out, "executing command 'test_fff', numargs 3 params fff usage <usage> desc "
                                "\"test command\"\n"))
        << r.out;
    EXPECT_EQ(got_f[2], 3.0f);
}

TEST_F(Dispatcher, TheVeskTclCommand)
{
    Tcl_FindExecutable(nullptr);
    Tcl_Interp *interp = Tcl_CreateInterp();
    create_vesk_command(interp);
    add("test_s", FN(h_s), 1, "s");
    OutputCapture quiet;
    EXPECT_EQ(Tcl_Eval(interp, "vesk no_such_command"), TCL_OK);
    EXPECT_STREQ(Tcl_GetStringResult(interp), "command not found");
    EXPECT_EQ(Tcl_Eval(interp, "vesk move 1"), TCL_OK);
    EXPECT_EQ(std::string(Tcl_GetStringResult(interp)).rfind("incorrect number of args for move", 0), 0u);
    EXPECT_EQ(Tcl_Eval(interp, "vesk"), TCL_OK);
    EXPECT_STREQ(Tcl_GetStringResult(interp), "");
    EXPECT_EQ(Tcl_Eval(interp, "vesk test_s {a [b] $c}"), TCL_OK);
    EXPECT_STREQ(Tcl_GetStringResult(interp), "");
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(Tcl_Eval(interp, "llength [split [vesk list] \\n]"), TCL_OK);
    EXPECT_STREQ(Tcl_GetStringResult(interp), "144"); /* 143 lines and the empty tail */
    quiet.stop();
    Tcl_DeleteInterp(interp);
}
