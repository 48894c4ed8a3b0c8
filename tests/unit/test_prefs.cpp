/*
 * test_prefs.cpp - the preferences: defaults, the file written by
 * save_prefs, loading it back, refused and damaged files, value
 * conversions by type, the typed getters and the listing.
 */
#include "test_support.h"

#include <cmath>
#include <cstring>
#include <dirent.h>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/stat.h>

namespace {

/* The shipped render command, with its backspace (code 8). */
const char render_default[] = "vesk write_POV veskpovfile.pov ; vesk execute {\"C:Program FilesPOV-Ray for "
                              "Windows\x08inpvengine.exe\"  /RENDER veskpovfile.pov }";

/* The file save_prefs writes for the default settings. */
const char default_file[] =
    "VKPR 12\n"
    "rot_segments 12\n"
    "sphere_from_triangles FALSE\n"
    "extrude_segments 1\n"
    "grid 0.100000\n"
    "drawgrid 1.000000\n"
    "grid3d_square 1.000000\n"
    "grid3d_size 20.000000\n"
    "grid3d_show TRUE\n"
    "show_vertices TRUE\n"
    "show_drawgrid TRUE\n"
    "show_object_centres FALSE\n"
    "gridlock FALSE\n"
    "view_3d_mode 0\n"
    "wireframe_move TRUE\n"
    "mesh_x 8\n"
    "mesh_y 8\n"
    "mesh_from_triangles TRUE\n"
    "show_palette_changes TRUE\n"
    "frontwin_x 183\n"
    "frontwin_y 23\n"
    "frontwin_width 430\n"
    "frontwin_height 353\n"
    "sidewin_x 620\n"
    "sidewin_y 23\n"
    "sidewin_width 400\n"
    "sidewin_height 353\n"
    "planwin_x 183\n"
    "planwin_y 402\n"
    "planwin_width 431\n"
    "planwin_height 334\n"
    "3dwin_x 620\n"
    "3dwin_y 402\n"
    "3dwin_width 400\n"
    "3dwin_height 334\n"
    "cpwin_x 0\n"
    "cpwin_y 0\n"
    "cpwin_width 0\n"
    "cpwin_height 0\n"
    "vert_size 3\n"
    "handle_size 8\n"
    "independent_window_zoom FALSE\n"
    "axis_size 1.000000\n"
    "show_3d_axis FALSE\n"
    "vrml_output_normals FALSE\n"
    "vrml_output_textures TRUE\n"
    "handles_hollow FALSE\n"
    "hole_percent 50\n"
    "undo_levels 20\n"
    "hide_objects_in_3d TRUE\n"
    "fit_view_after_load TRUE\n"
    "fit_view_factor 0.800000\n"
    "init3d_x 0.000000\n"
    "init3d_y 0.000000\n"
    "init3d_z 5.000000\n"
    "font_main \"{arial} 9 {bold}\"\n"
    "font_menu \"{arial} 9 {bold italic}\"\n"
    "col_background 0x0\n"
    "col_foreground 0xFFFFFF\n"
    "col_line 0xAAAAAA\n"
    "col_selline 0xFFFFFF\n"
    "col_vert 0xFF4444\n"
    "col_selvert 0xFF00\n"
    "col_box 0xFF00\n"
    "col_grid 0x454545\n"
    "col_axis 0x777777\n"
    "col_3dgrid 0xAAAAAA\n"
    "col_3dbackground 0x0\n"
    "key_mode_tree t\n"
    "key_mode_object o\n"
    "key_mode_vertex v\n"
    "key_submode_move m\n"
    "key_submode_resize i\n"
    "key_submode_rotate r\n"
    "key_submode_extrude e\n"
    "key_selection_hide h\n"
    "key_select_all a\n"
    "key_selection_clear n\n"
    "key_undo u\n"
    "key_info ?\n"
    "key_reset Space\n"
    "key_centre c\n"
    "key_goto g\n"
    "key_goto_all G\n"
    "key_selected_fit f\n"
    "key_selected_fit_all F\n"
    "key_snap_together s\n"
    "key_zoom_in z\n"
    "key_zoom_out x\n"
    "spike_factor 0.200000\n"
    "draw_moving_vertices 0.000000\n"
    "revolve_degs 360\n"
    "render_command \"vesk write_POV veskpovfile.pov ; vesk execute {\\\"C:Program FilesPOV-Ray for Windows\binpvengine.exe\\\"  /RENDER veskpovfile.pov }\"\n"
    "lightx -100.000000\n"
    "lighty 10.000000\n"
    "lightz 100.000000\n"
    "lightw 0.000000\n"
    "bevel_size 0.050000\n"
    "font_char_offset 0.050000\n"
    "fontpath \"font.vk\"\n"
    "sgi_anim_frames 20\n"
    "headlighton TRUE\n"
    "balloon_help TRUE\n"
    "fov_3d 50\n"
    "orth_xcursor -1\n"
    "XYwindowlabel \"Front (XY)\"\n"
    "ZYwindowlabel \"Side (ZY) \"\n"
    "XZwindowlabel \"Plan (XZ)\"\n"
    "XYZwindowlabel \"3D (XYZ)\"\n"
    "gl_concave TRUE\n"
    "allow_3d_spin TRUE\n"
    "spline_steps 4\n"
    "output_rib_header TRUE\n"
    "rib_textures FALSE\n"
    "object_centre_size 5\n"
    "ui_timer_msecs 100\n"
    "pov_object_data TRUE\n"
    "pov_file_header \"\"\n"
    "pov_use_object_data FALSE\n"
    "pov_active_pointer TRUE\n"
    "use_textures_for_background_images FALSE\n"
    "show_vertices_3d FALSE\n"
    "tk_strictmotif TRUE\n"
    "recalc_normals TRUE\n"
    "rotate_about_object_centre FALSE\n"
    "show_window_labels TRUE\n"
    "window_3d_width_percent 50\n"
    "window_3d_height_percent 50\n"
    "doublebuffer_orth TRUE\n"
    "tcl_socket_port 1655\n"
    "rib_use_object_data FALSE\n"
    "plugin_dir \"$VESK_HOME/plugins\"\n"
    "zoom_factor_3d 1.200000\n"
    "memory_checks TRUE\n"
    "pick_pixel_range 4\n"
    "walk_move_speed 0.010000\n"
    "walk_turn_speed 0.200000\n"
    "mouse_rotate_degs 5\n"
    "key_rotate_degs_3d 10\n"
    "show_selected_vertices_3d TRUE\n"
    "convexhull_precision 0.000010\n"
    "show_selected_vertices TRUE\n"
    "cylinder_has_ends FALSE\n"
    "backup_on_save TRUE\n"
    "autosave_seconds 60\n";

std::string read_file(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

void write_file(const std::string &path, const std::string &text)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
}

/* Each test runs with HOME in a fresh directory, no USERPROFILE, and the
 * default settings; the defaults and the environment are put back after. */
class PrefsFile : public ::testing::Test {
protected:
    std::string dir, path;
    std::string saved_home, saved_profile;
    bool had_home = false, had_profile = false;

    void SetUp() override
    {
        const char *h = getenv("HOME"), *p = getenv("USERPROFILE");
        had_home = h != nullptr;
        had_profile = p != nullptr;
        if (h) saved_home = h;
        if (p) saved_profile = p;
        char templ[] = "/tmp/vesk_prefs_XXXXXX";
        ASSERT_NE(mkdtemp(templ), nullptr);
        dir = templ;
        path = dir + "/veskprefs.txt";
        setenv("HOME", dir.c_str(), 1);
        unsetenv("USERPROFILE");
        prefs_set_defaults();
    }

    void TearDown() override
    {
        prefs_set_defaults();
        if (had_home) setenv("HOME", saved_home.c_str(), 1);
        else unsetenv("HOME");
        if (had_profile) setenv("USERPROFILE", saved_profile.c_str(), 1);
        if (DIR *d = opendir(dir.c_str())) {
            while (struct dirent *e = readdir(d)) {
                if (strcmp(e->d_name, ".") && strcmp(e->d_name, "..")) remove((dir + "/" + e->d_name).c_str());
            }
            closedir(d);
        }
        rmdir(dir.c_str());
    }

    /* Loads text as the preferences file; returns the console output. */
    Captured load(const std::string &text)
    {
        write_file(path, text);
        return capture([&] { prefs_load_file(path.c_str()); });
    }
};

} // namespace

/* Every name finds its own entry, case-sensitively; the defaults are
 * what the file written by default shows (SaveWritesEveryEntryInOrder). */
TEST_F(PrefsFile, EveryNameFindsItsEntry)
{
    ASSERT_EQ(num_prefs, 144);
    for (int i = 0; i < num_prefs; i++) EXPECT_EQ(vk_prefs_get_spec(prefs_table[i].name), &prefs_table[i]);
    EXPECT_EQ(vk_prefs_get_spec("Grid"), nullptr);
    EXPECT_EQ(vk_prefs_get_spec(nullptr), nullptr);
    /* The shipped render command keeps its backspace, which the file's
     * text would not show. */
    EXPECT_EQ(std::string(prefs.render_command), std::string(render_default));
}

/* After every setting has been changed (by loading a file in which each
 * value differs from its default), restoring the defaults gives back
 * exactly the default file, strings included. */
TEST_F(PrefsFile, DefaultsComeBackAfterEverySettingChanged)
{
    std::istringstream lines(default_file);
    std::string line, changed;
    std::getline(lines, line);
    changed = line + "\n";
    while (std::getline(lines, line)) {
        size_t space = line.find(' ');
        std::string name = line.substr(0, space), value = line.substr(space + 1);
        const PrefSpec *spec = vk_prefs_get_spec(name.c_str());
        ASSERT_NE(spec, nullptr) << name;
        switch (spec->type) {
        case PREF_BOOLEAN: value = value == "TRUE" ? "FALSE" : "TRUE"; break;
        case PREF_STRING: value = "\"changed\""; break;
        case PREF_KEY: value = "Q"; break;
        case PREF_HEX: value = "123456"; break;
        default: value = "7"; break;
        }
        changed += name + " " + value + "\n";
    }
    load(changed);
    ASSERT_EQ(prefs.rot_segments, 7);
    ASSERT_STREQ(prefs.font_main, "changed");
    prefs_set_defaults();
    int ok = 0;
    capture([&] { ok = save_prefs(); });
    ASSERT_EQ(ok, 1);
    EXPECT_EQ(read_file(path), default_file);
    EXPECT_EQ(std::string(prefs.render_command), std::string(render_default));
}

TEST_F(PrefsFile, FileNameFollowsTheEnvironment)
{
    EXPECT_EQ(std::string(prefs_get_prefs_filename()), path);
    setenv("USERPROFILE", "/some/profile", 1);
    EXPECT_STREQ(prefs_get_prefs_filename(), "/some/profile/veskprefs.txt");
    unsetenv("USERPROFILE");
    unsetenv("HOME");
    EXPECT_STREQ(prefs_get_prefs_filename(), "veskprefs.txt");
    setenv("HOME", dir.c_str(), 1);
}

TEST_F(PrefsFile, SaveWritesEveryEntryInOrder)
{
    int ok = 0;
    Captured c = capture([&] { ok = save_prefs(); });
    EXPECT_EQ(ok, 1);
    EXPECT_EQ(c.err, "Settings have been saved to " + path + "\n");
    std::string text = read_file(path);
    EXPECT_EQ(text.rfind("VKPR 12\nrot_segments 12\nsphere_from_triangles FALSE\nextrude_segments 1\n"
                         "grid 0.100000\n",
                         0),
              0u);
    EXPECT_EQ(text, default_file);
    EXPECT_EQ(count_lines(text), 145);

    /* A directory that cannot take the file: a message, no crash. */
    setenv("HOME", (dir + "/missing/deeper").c_str(), 1);
    c = capture([&] { ok = save_prefs(); });
    EXPECT_EQ(ok, 0);
    EXPECT_TRUE(contains(c.err, "settings not saved")) << c.err;
    setenv("HOME", dir.c_str(), 1);
}

TEST_F(PrefsFile, SaveAndReloadRoundTrip)
{
    prefs_set_string(&prefs.font_main, "say \"hi\" now");
    prefs_set_string(&prefs.fontpath, "");
    prefs.grid = 0.25;
    prefs.rot_segments = 7;
    prefs.col_vert = 0x123ABC;
    prefs.col_grid = 0;
    prefs.key_undo = 'q';
    prefs.key_info = 0;
    prefs.gridlock = 1;
    prefs.revolve_degs = 90;
    prefs.spike_factor = 1e-7;
    capture([] { save_prefs(); });
    std::string text = read_file(path);
    EXPECT_TRUE(contains(text, "\nfont_main \"say \\\"hi\\\" now\"\n"));
    EXPECT_TRUE(contains(text, "\nfontpath \"\"\n"));
    EXPECT_TRUE(contains(text, "\ncol_vert 0x123ABC\n"));
    EXPECT_TRUE(contains(text, "\ncol_grid 0x0\n"));
    EXPECT_TRUE(contains(text, "\nkey_info Up\n"));
    EXPECT_TRUE(contains(text, "\nkey_undo q\n"));
    EXPECT_TRUE(contains(text, "\nspike_factor 0.000000\n"));
    EXPECT_TRUE(contains(text, "\ndraw_moving_vertices 0.000000\nrevolve_degs 90\n"));

    prefs_set_defaults();
    Captured c = capture([] { init_prefs(); });
    EXPECT_EQ(c.out, "prefs file " + path + " loaded OK.\n");
    EXPECT_STREQ(prefs.font_main, "say \"hi\" now");
    EXPECT_STREQ(prefs.fontpath, "");
    EXPECT_EQ(prefs.grid, 0.25);
    EXPECT_EQ(prefs.rot_segments, 7);
    EXPECT_EQ(prefs.col_vert, 0x123ABC);
    EXPECT_EQ(prefs.col_grid, 0);
    EXPECT_EQ(prefs.key_undo, 'q');
    EXPECT_EQ(prefs.key_info, 0);
    EXPECT_EQ(prefs.gridlock, 1);
    EXPECT_EQ(prefs.spike_factor, 0.0);
    /* The flag shares its 64 bits with revolve_degs, which its own line
     * restores: the flag alone comes back false. */
    EXPECT_EQ(prefs.draw_moving_vertices, 0);
    EXPECT_EQ(prefs.revolve_degs, 90);
    EXPECT_STREQ(prefs.ZYwindowlabel, "Side (ZY) ");
    EXPECT_STREQ(prefs.render_command, render_default);

    /* The defaults alone: the flag goes false and revolve_degs stays 360. */
    prefs_set_defaults();
    capture([] { save_prefs(); });
    capture([] { init_prefs(); });
    EXPECT_EQ(prefs.draw_moving_vertices, 0);
    EXPECT_EQ(prefs.revolve_degs, 360);
    EXPECT_EQ(prefs.memory_checks, 1);
    EXPECT_EQ(prefs.convexhull_precision, 0.00001);
    EXPECT_EQ(prefs.key_reset, ' ');
    /* A second save writes the same file except for that flag. */
    std::string first = read_file(path);
    capture([] { save_prefs(); });
    EXPECT_EQ(read_file(path), first);
}

TEST_F(PrefsFile, RefusedFilesChangeNothing)
{
    prefs.grid = 0.5;
    Captured c = load("VESP 3\ngrid 0.25\n");
    EXPECT_EQ(c.err, "'" + path + "' is a prefs file from an old version of VESK.\nsave-settings to "
                                  "replace it.\n.\n");
    EXPECT_EQ(prefs.grid, 0.5);
    c = load("HELLO 12\ngrid 0.25\n");
    EXPECT_EQ(c.err, "'" + path + "' is not a valid VESK prefs file.\n");
    EXPECT_EQ(prefs.grid, 0.5);
    c = load("vkpr 12\ngrid 0.25\n");
    EXPECT_EQ(c.err, "'" + path + "' is not a valid VESK prefs file.\n");
    c = load("VKPR 11\ngrid 0.25\n");
    EXPECT_EQ(c.err, "The prefs file is from an older version of VESK.\nsave-settings to replace "
                     "it.\n.\n");
    EXPECT_EQ(c.out, "");
    EXPECT_EQ(prefs.grid, 0.5);
    c = load("VKPR\ngrid 0.25\n"); /* no version counts as 0 */
    EXPECT_TRUE(contains(c.err, "older version"));
    c = load("");
    EXPECT_TRUE(contains(c.err, "is not a valid VESK prefs file"));
    c = load("\n\n");
    EXPECT_TRUE(contains(c.err, "is not a valid VESK prefs file"));
    EXPECT_EQ(prefs.grid, 0.5);

    c = load("VKPR 13\ngrid 0.25\n");
    EXPECT_EQ(c.err, "");
    EXPECT_EQ(c.out, "prefs file " + path + " loaded OK.\n");
    EXPECT_EQ(prefs.grid, 0.25);

    remove(path.c_str());
    c = capture([&] { prefs_load_file(path.c_str()); });
    EXPECT_EQ(c.out, "no preferences file found \"" + path + "\"\n - using default setup. That's OK, "
                     "one will be created when settings are saved.\n");
    EXPECT_EQ(prefs.grid, 0.25);
}

TEST_F(PrefsFile, ADirectoryInPlaceOfTheFile)
{
    ASSERT_EQ(mkdir(path.c_str(), 0700), 0);
    prefs.grid = 0.5;
    Captured c = capture([] { prefs_load_file(prefs_get_prefs_filename()); });
    EXPECT_EQ(prefs.grid, 0.5);
    EXPECT_NE(c.out + c.err, "");
    int ok = 1;
    c = capture([&] { ok = save_prefs(); });
    EXPECT_EQ(ok, 0);
    EXPECT_TRUE(contains(c.err, "settings not saved")) << c.err;
    rmdir(path.c_str());
}

TEST_F(PrefsFile, MalformedLineStopsLoading)
{
    Captured c = load("VKPR 12\nrot_segments 5\ngrid 0.25 extra\ngridlock TRUE\n");
    EXPECT_EQ(c.out, "error reading prefs file (line 3) - expected token value pair - actually found "
                     "3 items 'grid 0.25 extra\n'\n");
    EXPECT_EQ(prefs.rot_segments, 5);
    EXPECT_EQ(prefs.grid, 0.1);
    EXPECT_EQ(prefs.gridlock, 0);

    /* Comment and empty lines are skipped and not counted. */
    prefs_set_defaults();
    c = load("VKPR 12\n# a comment\n\nrot_segments 6\ngrid\ngridlock TRUE\n");
    EXPECT_EQ(c.out, "error reading prefs file (line 3) - expected token value pair - actually found "
                     "1 items 'grid\n'\n");
    EXPECT_EQ(prefs.rot_segments, 6);
    EXPECT_EQ(prefs.gridlock, 0);

    /* An unknown name is skipped and counted. */
    prefs_set_defaults();
    c = load("VKPR 12\nno_such_pref 5\nrot_segments 8\nbogus\n");
    EXPECT_EQ(c.out, "unknown prefs token 'no_such_pref' in prefs file (line 2) - ignored\n"
                     "error reading prefs file (line 4) - expected token value pair - actually found "
                     "1 items 'bogus\n'\n");
    EXPECT_EQ(prefs.rot_segments, 8);

    prefs_set_defaults();
    c = load("VKPR 12\nGrid 0.5\nrot_segments 9\n");
    EXPECT_EQ(c.out, "unknown prefs token 'Grid' in prefs file (line 2) - ignored\nprefs file " + path +
                         " loaded OK.\n");
    EXPECT_EQ(prefs.rot_segments, 9);
    EXPECT_EQ(prefs.grid, 0.1);
}

TEST_F(PrefsFile, ValuesConvertByType)
{
    auto key_after = [&](const char *value) {
        load(std::string("VKPR 12\nkey_undo ") + value + "\n");
        return (int)prefs.key_undo;
    };
    EXPECT_EQ(key_after("Space"), 32);
    EXPECT_EQ(key_after("Up"), 0);
    EXPECT_EQ(key_after("q"), 'q');
    EXPECT_EQ(key_after("Down"), 0);
    EXPECT_EQ(key_after("Esc"), 0);
    EXPECT_EQ(key_after("Right"), 0);
    EXPECT_EQ(key_after("#"), '#');
    EXPECT_EQ(key_after("space"), 0);
    EXPECT_EQ(key_after("\"\""), 0);
    EXPECT_EQ(prefs_key_from_name("Left"), 0);
    EXPECT_STREQ(prefs_key_to_name(0), "Up");
    EXPECT_STREQ(prefs_key_to_name(' '), "Space");
    EXPECT_STREQ(prefs_key_to_name('z'), "z");

    load("VKPR 12\nrot_segments 2.9\nmesh_x -2.9\nmesh_y 7abc\nhole_percent abc\n");
    EXPECT_EQ(prefs.rot_segments, 2);
    EXPECT_EQ(prefs.mesh_x, -2);
    EXPECT_EQ(prefs.mesh_y, 7);
    EXPECT_EQ(prefs.hole_percent, 0);

    load("VKPR 12\ngridlock yes\nshow_vertices 1\nshow_drawgrid FALSE\ngrid3d_show true\n"
         "show_object_centres TRUE\nhandles_hollow 2.5\n");
    EXPECT_EQ(prefs.gridlock, 0);
    EXPECT_EQ(prefs.show_vertices, 1);
    EXPECT_EQ(prefs.show_drawgrid, 0);
    EXPECT_EQ(prefs.grid3d_show, 0);
    EXPECT_EQ(prefs.show_object_centres, 1);
    EXPECT_EQ(prefs.handles_hollow, 2);

    load("VKPR 12\ngrid 1.5e-3\ndrawgrid 2abc\naxis_size junk\n");
    EXPECT_EQ(prefs.grid, 1.5e-3);
    EXPECT_EQ(prefs.drawgrid, 2.0);
    EXPECT_EQ(prefs.axis_size, 0.0);

    load("VKPR 12\ncol_vert 0xabcdef\ncol_line 0x00FF00\n");
    EXPECT_EQ(prefs.col_vert, 0xABCDEF);
    EXPECT_EQ(prefs.col_line, 0x00FF00);
    /* Without the prefix the value is left as it was. */
    load("VKPR 12\ncol_vert 123456\ncol_line FF\ncol_grid 0x\n");
    EXPECT_EQ(prefs.col_vert, 0xABCDEF);
    EXPECT_EQ(prefs.col_line, 0x00FF00);
    EXPECT_EQ(prefs.col_grid, 0x454545);

    load("VKPR 12\nfont_main \"{times} 12\"\nfontpath plain\nplugin_dir \"a \\\"b\\\" c\"\n");
    EXPECT_STREQ(prefs.font_main, "{times} 12");
    EXPECT_STREQ(prefs.fontpath, "plain");
    EXPECT_STREQ(prefs.plugin_dir, "a \"b\" c");
    EXPECT_STREQ(vk_prefs_get_string("fontpath"), "plain");
}

TEST_F(PrefsFile, DamagedFilesNeverCrash)
{
    /* Huge, negative and not-a-number values stay defined. */
    load("VKPR 12\nrot_segments 1e999\nmesh_x -1e999\nmesh_y nan\ngridlock 1e300\n");
    EXPECT_EQ(prefs.mesh_y, 0);
    EXPECT_NE(prefs.gridlock, 0);

    /* Binary bytes after good lines: the good lines stay. */
    prefs_set_defaults();
    std::string binary = "VKPR 12\nrot_segments 4\n";
    for (int i = 0; i < 4096; i++) binary += (char)((i * 37 + 11) & 0xff);
    Captured c = load(binary);
    EXPECT_EQ(prefs.rot_segments, 4);
    EXPECT_EQ(prefs.memory_checks, 1);

    /* A line longer than the reader's line: it is read in pieces, and
     * nothing overflows. */
    prefs_set_defaults();
    std::string long_line = "VKPR 12\nrot_segments 3\nfont_main \"" + std::string(600, 'w') +
                            "\"\ngridlock TRUE\n";
    c = load(long_line);
    EXPECT_EQ(prefs.rot_segments, 3);
    EXPECT_LT(strlen(prefs.font_main), 255u);
    EXPECT_EQ(prefs.gridlock, 0);
    EXPECT_TRUE(contains(c.out, "expected token value pair"));
    prefs_set_defaults();
    c = load("VKPR 12\nextrude_segments 2\n" + std::string(5000, 'z') + "\n");
    EXPECT_EQ(prefs.extrude_segments, 2);
    c = load("VKPR 12" + std::string(400, ' ') + "x\nextrude_segments 3\n");
    c = load(std::string(300, 'V') + "\n");
    EXPECT_TRUE(contains(c.err, "is not a valid VESK prefs file"));

    /* Odd layouts: blanks only, tabs, CRLF, a missing final newline, an
     * unterminated quote, NUL bytes, a lone quote. */
    prefs_set_defaults();
    c = load("VKPR 12\r\nrot_segments\t5\r\ngrid 0.5");
    EXPECT_EQ(prefs.rot_segments, 5);
    EXPECT_EQ(prefs.grid, 0.5);
    c = load("VKPR 12\nfont_menu \"unterminated\nrot_segments 6\n");
    EXPECT_STREQ(prefs.font_menu, "unterminated");
    EXPECT_EQ(prefs.rot_segments, 6);
    const char with_nuls[] = "VKPR 12\nrot_segments 7\0\0\nmesh_x 3\n";
    c = load(std::string(with_nuls, sizeof with_nuls - 1));
    EXPECT_EQ(prefs.rot_segments, 7);
    EXPECT_EQ(prefs.mesh_x, 3);
    c = load("VKPR 12\nrot_segments 8\n   \nmesh_x 4\n");
    EXPECT_EQ(prefs.rot_segments, 8);
    EXPECT_TRUE(contains(c.out, "actually found 0 items"));
    c = load("VKPR 12\n\"\nkey_undo \\\n");
    c = load("VKPR 12\nkey_undo \"\\\"\"\n");
    EXPECT_EQ(prefs.key_undo, '"');
    std::string many = "VKPR 12\n";
    for (int i = 0; i < 100; i++) many += "x ";
    c = load(many + "\n");
    EXPECT_TRUE(contains(c.out, "actually found "));
    EXPECT_EQ(prefs.memory_checks, 1);
}

TEST_F(PrefsFile, TypedGetters)
{
    Captured c;
    int i = 0;
    c = capture([&] { i = vk_prefs_get_int("rot_segments"); });
    EXPECT_EQ(i, 12);
    EXPECT_EQ(c.err, "");
    c = capture([&] { i = vk_prefs_get_int("nope"); });
    EXPECT_EQ(i, -1);
    EXPECT_EQ(c.err, "vk_prefs_get_int: nope not found in preferences\n");
    c = capture([&] { i = vk_prefs_get_int("grid"); });
    EXPECT_EQ(i, -1);
    EXPECT_EQ(c.err, "vk_prefs_get_int: pref grid is not type 'int' (actually type 1)\n");

    c = capture([&] { i = vk_prefs_get_boolean("grid"); });
    EXPECT_EQ(i, -1);
    EXPECT_EQ(c.err, "vk_prefs_get_boolean: pref grid is not type 'boolean' (is type number 1)\n");
    c = capture([&] { i = vk_prefs_get_boolean("nope"); });
    EXPECT_EQ(c.err, "vk_prefs_get_boolean: nope not found in preferences\n");
    EXPECT_EQ(vk_prefs_get_boolean("grid3d_show"), 1);
    EXPECT_EQ(vk_prefs_get_boolean("gridlock"), 0);

    double d = 0;
    c = capture([&] { d = vk_prefs_get_double("mesh_x"); });
    EXPECT_EQ(d, -1.0);
    EXPECT_EQ(c.err, "vk_prefs_get_double: pref mesh_x is not type 'double' (is type number 0)\n");
    c = capture([&] { d = vk_prefs_get_double("nope"); });
    EXPECT_EQ(c.err, "vk_prefs_get_double: nope not found in preferences\n");
    EXPECT_EQ(vk_prefs_get_double("fit_view_factor"), 0.8);

    c = capture([&] { i = vk_prefs_get_hex("font_main"); });
    EXPECT_EQ(i, -1);
    EXPECT_EQ(c.err, "vk_prefs_get_hex: pref font_main is not type 'hex' (actually type 3)\n");
    c = capture([&] { i = vk_prefs_get_hex("nope"); });
    EXPECT_EQ(c.err, "vk_prefs_get_hex: nope not found in preferences\n");
    EXPECT_EQ(vk_prefs_get_hex("col_grid"), 0x454545);

    char *s = (char *)"x";
    c = capture([&] { s = vk_prefs_get_string("key_undo"); });
    EXPECT_EQ(s, nullptr);
    EXPECT_EQ(c.err, "vk_prefs_get_string: pref key_undo is not type 'string' (actually type 4)\n");
    c = capture([&] { s = vk_prefs_get_string("nope"); });
    EXPECT_EQ(c.err, "vk_prefs_get_string: nope not found in preferences\n");
    EXPECT_EQ(vk_prefs_get_string("font_main"), prefs.font_main); /* not a copy */

    const char *k = "x";
    c = capture([&] { k = vk_prefs_get_key("nope"); });
    EXPECT_EQ(k, nullptr);
    EXPECT_EQ(c.err, "vk_prefs_get_string: nope not found in preferences\n");
    c = capture([&] { k = vk_prefs_get_key("memory_checks"); });
    EXPECT_EQ(k, nullptr);
    EXPECT_EQ(c.err, "vk_prefs_get_key: pref memory_checks is not type 'key' (actually type 5)\n");
    EXPECT_STREQ(vk_prefs_get_key("key_reset"), "Space");
    EXPECT_STREQ(vk_prefs_get_key("key_undo"), "u");
    EXPECT_STREQ(vk_prefs_get_key("key_goto_all"), "G");
    c = capture([&] { k = vk_prefs_get_key(nullptr); });
    EXPECT_EQ(k, nullptr);
}

TEST_F(PrefsFile, ListingShowsEverySecondEntry)
{
    int steps = 0;
    Captured c = capture([&] { steps = vk_prefs_list(); });
    EXPECT_EQ(steps, 72);
    EXPECT_EQ(count_lines(c.out), 72);
    EXPECT_EQ(c.out.rfind("rot_segments \t PREF_INT\nextrude_segments \t PREF_INT\n"
                          "drawgrid \t PREF_DOUBLE\n",
                          0),
              0u);
    EXPECT_TRUE(contains(c.out, "\nfont_main \t PREF_STRING\n"));
    EXPECT_TRUE(contains(c.out, "\ncol_background \t PREF_HEX\n"));
    EXPECT_TRUE(contains(c.out, "\nkey_mode_object \t PREF_KEY\n"));
    EXPECT_EQ(c.out.substr(c.out.size() - 31), "\nbackup_on_save \t PREF_BOOLEAN\n");
}
