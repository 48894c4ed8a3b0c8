/*
 * test_plugin_api.cpp - the plug-in interface as a plug-in sees it: every
 * function is exported with C linkage under its own name, what an object
 * holds, the file-dialog filter arrays, file sizes, and the directories
 * and files the program loads plug-ins from.
 */
#include "test_support.h"
#include "app/plugins.h"
#include "app/shared_state.h"

#include <dlfcn.h>
#include <tcl.h>
#include <fstream>
#include <sys/stat.h>

static const char *const api_names[] = {
#define VK_API(name) #name,
#include "../plugins/api_functions.def"
#undef VK_API
};

TEST(PluginApi, EveryFunctionIsExportedUnderItsPlainName)
{
    int missing = 0;
    for (const char *name : api_names) {
        if (!dlsym(RTLD_DEFAULT, name)) {
            ADD_FAILURE() << name << " is not exported with C linkage";
            missing++;
        }
    }
    EXPECT_EQ(missing, 0);
    EXPECT_GE(sizeof api_names / sizeof api_names[0], 60u);
}

TEST(PluginApi, ObjectContentsGivesItsThreeLists)
{
    Object *o = new_object(OBJECT_NORMAL);
    float points[6] = {0, 0, 0, 1, 0, 0};
    vk_object_add_vertices_from_float_array(o, points, 2);
    Surface *s = new_surface();
    object_add_surface(o, s);
    Object *child = new_object(OBJECT_NORMAL);
    object_add_child(o, child);
    List *v = nullptr, *f = nullptr, *c = nullptr;
    EXPECT_EQ(vk_object_get_contents(o, &v, &f, &c), 4u);
    EXPECT_EQ(v, o->vertices);
    EXPECT_EQ(f, o->surfaces);
    EXPECT_EQ(c, o->kids);
    EXPECT_EQ(list_count(v), 2u);
    /* Any of the three may be left out. */
    List *only = nullptr;
    EXPECT_EQ(vk_object_get_contents(o, nullptr, &only, nullptr), 4u);
    EXPECT_EQ(only, o->surfaces);
    object_free(o);
}

TEST(PluginApi, ContentsOfNoObjectIsEmpty)
{
    List *v = (List *)1, *f = (List *)1, *c = (List *)1;
    EXPECT_EQ(vk_object_get_contents(nullptr, &v, &f, &c), 0u);
    EXPECT_EQ(v, nullptr);
    EXPECT_EQ(f, nullptr);
    EXPECT_EQ(c, nullptr);
    EXPECT_EQ(vk_object_get_contents(nullptr, nullptr, nullptr, nullptr), 0u);
}

TEST(PluginApi, FilterArrayOfOnlyTheEndPairIsNull)
{
    const char *filters[] = {nullptr, nullptr};
    EXPECT_EQ(vk_filter_array_to_string(filters), nullptr);
    EXPECT_EQ(vk_filter_array_to_string(nullptr), nullptr);
}

TEST(PluginApi, TextureDialogFilterArrayKeepsItsBlanks)
{
    const char *filters[] = {"Texture files", ".bmp .rgb .gif ", "All files", "*", nullptr, nullptr};
    char *text = vk_filter_array_to_string(filters);
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, "{ { Texture files} { .bmp .rgb .gif } } { { All files} { *} } ");
    myfree(text);
}

TEST(PluginApi, OnePairGivesOneListElement)
{
    const char *filters[] = {"Bitmap files", ".bmp", nullptr, nullptr};
    char *text = vk_filter_array_to_string(filters);
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, "{ { Bitmap files} { .bmp} } ");
    myfree(text);
}

TEST(PluginApi, FileSizes)
{
    EXPECT_EQ(vk_get_filesize("/nonexistent/vesk/file"), 0);
    EXPECT_EQ(vk_get_filesize(nullptr), 0);
    std::string path = testing::TempDir() + "vesk_filesize_test";
    {
        std::ofstream f(path, std::ios::binary);
        f << std::string(1234, 'x');
    }
    EXPECT_EQ(vk_get_filesize(path.c_str()), 1234);
    unlink(path.c_str());
}

/* The plug-in directory preference, with $VESK_HOME expanded. */
class PluginDirectories : public ::testing::Test {
protected:
    std::string dir;
    char *saved_pref = nullptr;
    char *saved_home = nullptr;

    void SetUp() override
    {
        dir = testing::TempDir() + "vesk_plugin_dirs_" + std::to_string(getpid());
        mkdir(dir.c_str(), 0755);
        mkdir((dir + "/plugins").c_str(), 0755);
        saved_pref = prefs.plugin_dir;
        saved_home = vesk_home;
        prefs.plugin_dir = nullptr;
        vesk_home = nullptr;
        prefs_set_string(&prefs.plugin_dir, "$VESK_HOME/plugins");
        shared_set_string(&vesk_home, dir.c_str());
    }
    void TearDown() override
    {
        Tcl_Free(prefs.plugin_dir);
        Tcl_Free(vesk_home);
        prefs.plugin_dir = saved_pref;
        vesk_home = saved_home;
        std::string command = "rm -rf '" + dir + "'";
        EXPECT_EQ(system(command.c_str()), 0);
    }
    void touch(const std::string &name)
    {
        std::ofstream f(dir + "/plugins/" + name);
        f << "\n";
    }
};

TEST_F(PluginDirectories, ThePreferenceComesFirstWithHomeExpanded)
{
    std::vector<std::string> dirs = plugin_directories();
    ASSERT_FALSE(dirs.empty());
    EXPECT_EQ(dirs[0], dir + "/plugins");
}

TEST_F(PluginDirectories, LibrariesAndScriptsInNameOrderOthersLeftOut)
{
    for (const char *name : {"b.tcl", "a.so", "c.so", "readme.txt", "d.so.bak", ".hidden.so"}) touch(name);
    mkdir((dir + "/plugins/e.so").c_str(), 0755);
    std::vector<std::string> files = plugin_files();
    std::vector<std::string> mine;
    for (const std::string &f : files) {
        if (f.compare(0, dir.size(), dir) == 0) mine.push_back(f.substr(dir.size()));
    }
    EXPECT_EQ(mine, (std::vector<std::string>{"/plugins/a.so", "/plugins/b.tcl", "/plugins/c.so"}));
}

TEST_F(PluginDirectories, AMissingDirectoryIsLeftOut)
{
    prefs_set_string(&prefs.plugin_dir, "/nonexistent/vesk/plugins");
    for (const std::string &d : plugin_directories()) EXPECT_NE(d, "/nonexistent/vesk/plugins");
}

TEST_F(PluginDirectories, ANameAlreadyMetIsNotTakenAgain)
{
    /* The user's directory comes first: its copy of a plug-in is the one
     * loaded, the installed one of the same name is not. */
    std::string second = dir + "/installed";
    mkdir(second.c_str(), 0755);
    touch("same.so");
    for (const char *name : {"same.so", "other.so"}) std::ofstream(second + "/" + name) << "\n";
    std::vector<std::string> files = plugin_files_in({dir + "/plugins", second});
    EXPECT_EQ(files, (std::vector<std::string>{dir + "/plugins/same.so", second + "/other.so"}));
}
