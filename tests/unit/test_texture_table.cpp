/*
 * test_texture_table.cpp - the texture table and the loader registry:
 * choosing a loader by suffix (case ignored, newest first), the messages
 * for names without a suffix or without a loader, loading the same file
 * twice, reloading, the full table, giving textures to the selection and
 * taking them away, repeat factors with undo, the dialog's filter list,
 * and texture names that a model keeps while their image is missing.
 */
#include "edit_test_support.h"
#include "texture/texture_table.h"

#include <fstream>
#include <string>
#include <strings.h>

namespace {

std::string dir;

std::string file(const std::string &name) { return dir + "/" + name; }

/* A 24-bit BMP of w x h pixels, every pixel (r, g, b). */
void write_bmp(const std::string &name, int w, int h, unsigned char r, unsigned char g, unsigned char b)
{
    int stride = (w * 3 + 3) / 4 * 4;
    std::vector<unsigned char> d(54 + stride * h, 0);
    d[0] = 'B', d[1] = 'M', d[10] = 54, d[14] = 40, d[26] = 1, d[28] = 24;
    memcpy(&d[18], &w, 4);
    memcpy(&d[22], &h, 4);
    for (int y = 0; y < h; y++) {
        for (int x = 0; x < w; x++) {
            unsigned char *p = &d[54 + y * stride + 3 * x];
            p[0] = b, p[1] = g, p[2] = r;
        }
    }
    std::ofstream f(file(name), std::ios::binary);
    f.write((const char *)d.data(), (std::streamsize)d.size());
}

void ensure_loaders()
{
    if (!texture_loaders) register_builtin_texture_loaders();
}

class TextureTable : public EditTest {
protected:
    static void SetUpTestSuite()
    {
        char pattern[] = "/tmp/vesk_textures_XXXXXX";
        dir = mkdtemp(pattern);
        ensure_loaders();
    }
    static void TearDownTestSuite()
    {
        std::string command = "rm -rf '" + dir + "'";
        if (system(command.c_str()) != 0) fprintf(stderr, "could not remove %s\n", dir.c_str());
    }
};

} // namespace

TEST(TexturePowerOf2, OnlyTwoAndUp)
{
    EXPECT_EQ(is_power_of_2(1), 0);
    EXPECT_EQ(is_power_of_2(0), 0);
    EXPECT_EQ(is_power_of_2(-2), 0);
    EXPECT_EQ(is_power_of_2(2), 1);
    EXPECT_EQ(is_power_of_2(64), 1);
    EXPECT_EQ(is_power_of_2(96), 0);
    EXPECT_EQ(is_power_of_2(3), 0);
    EXPECT_EQ(is_power_of_2(1 << 30), 1);
}

TEST(TextureSuffix, FromTheLastDotNotTheLastCharacter)
{
    EXPECT_STREQ(texture_file_suffix("wood.GIF"), ".GIF");
    EXPECT_STREQ(texture_file_suffix("a.b.rgb"), ".rgb");
    EXPECT_EQ(texture_file_suffix("wood"), nullptr);
    EXPECT_EQ(texture_file_suffix("wood."), nullptr);
    EXPECT_STREQ(texture_file_suffix("a.b."), ".b.");
    EXPECT_EQ(texture_file_suffix("."), nullptr);
    EXPECT_EQ(texture_file_suffix(""), nullptr);
    EXPECT_STREQ(texture_file_suffix(".x"), ".x");
}

TEST_F(TextureTable, RegistrySearchOrderIsBmpRgbGif)
{
    const char *order[] = {".bmp", ".rgb", ".gif"};
    List *l = texture_loaders;
    /* Loaders of other tests may stand in front; the built-ins close the list. */
    unsigned n = list_count(texture_loaders);
    ASSERT_GE(n, 3u);
    l = list_seekto(texture_loaders, n - 3);
    for (const char *suffix : order) {
        ASSERT_NE(l, nullptr);
        EXPECT_STREQ(((TextureLoader *)l->item)->suffix, suffix);
        l = l->next;
    }
}

TEST_F(TextureTable, SuffixCaseIsIgnoredAndMissingSuffixIsExplained)
{
    write_bmp("wood.BMP", 3, 2, 10, 20, 30);
    vkimage *image = nullptr;
    Captured c = capture([&] { image = texture_read(file("wood.BMP").c_str()); });
    ASSERT_NE(image, nullptr) << c.err;
    EXPECT_EQ(image->width, 3);
    EXPECT_EQ(image->data[0], 10);
    free_vkimage(image);
    c = capture([&] { EXPECT_EQ(texture_read("wood"), nullptr); });
    EXPECT_TRUE(contains(c.err, "I need a filename with a suffix (e.g. file.rgb)\n")) << c.err;
}

TEST_F(TextureTable, UnknownSuffixListsTheLoadersAndShowsTwoDots)
{
    Captured c = capture([&] { EXPECT_EQ(texture_read("x.tga"), nullptr); });
    EXPECT_TRUE(contains(c.out, "I can load these files as textures:\n")) << c.out;
    EXPECT_TRUE(contains(c.out, ".gif (GIF image files)\n")) << c.out;
    EXPECT_TRUE(contains(c.out, ".rgb (SGI rgb image files)\n")) << c.out;
    EXPECT_TRUE(contains(c.out, ".bmp (Bitmap files)\n")) << c.out;
    EXPECT_TRUE(contains(c.err, "Sorry, there is no texture loader for ..tga files")) << c.err;
}

namespace {
int test_loader_calls = 0;
vkimage *test_loader(const char *name)
{
    test_loader_calls++;
    vkimage *image = new_vkimage(name);
    unsigned char *data = (unsigned char *)myalloc(3);
    data[0] = 1, data[1] = 2, data[2] = 3;
    vk_image_set_dim(image, 1, 1, 3);
    vk_image_set_data(image, data);
    return image;
}
} // namespace

TEST_F(TextureTable, NewerLoadersComeFirstAndAFailingLoaderIsFinal)
{
    TextureLoader *loader = vk_register_texture_loader(".BMP", "test bitmaps", test_loader);
    ASSERT_NE(loader, nullptr);
    EXPECT_EQ(texture_loaders->item, loader);
    write_bmp("first.bmp", 2, 2, 0, 0, 0);
    test_loader_calls = 0;
    vkimage *image = texture_read(file("first.bmp").c_str());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(test_loader_calls, 1);
    EXPECT_EQ(image->width, 1);
    free_vkimage(image);
    list_remove_item(&texture_loaders, loader);
    myfree(loader->suffix);
    myfree(loader->description);
    myfree(loader);
    /* The built-in GIF loader fails on a BMP named .gif, and nothing else
     * is tried. */
    write_bmp("liar.gif", 2, 2, 0, 0, 0);
    Captured c = capture([&] { EXPECT_EQ(texture_read(file("liar.gif").c_str()), nullptr); });
    EXPECT_TRUE(contains(c.err, "divepic_read_gif: not a GIF file")) << c.err;
    EXPECT_TRUE(contains(c.err, "gif load failed")) << c.err;
}

TEST_F(TextureTable, SameFileTwiceGivesTheSameIdAndReloadKeepsIt)
{
    write_bmp("same.bmp", 4, 4, 255, 0, 0);
    int id = 0, again = 0;
    capture([&] { id = add_new_texture(file("same.bmp").c_str()); });
    ASSERT_GT(id, 0);
    int highest = texture_highest_id();
    EXPECT_EQ(texture_find_by_name(file("same.bmp").c_str()), id);
    EXPECT_STREQ(texture_id_to_name(id), file("same.bmp").c_str());
    /* Changed on disk: reloaded into the same id. */
    write_bmp("same.bmp", 8, 2, 0, 255, 0);
    capture([&] { again = add_new_texture(file("same.bmp").c_str()); });
    EXPECT_EQ(again, id);
    EXPECT_EQ(texture_highest_id(), highest);
    EXPECT_EQ(texture_id_to_image(id)->width, 8);
    EXPECT_EQ(texture_id_to_image(id)->data[1], 255);
    /* Unreadable now: the old image stays. */
    write_bmp("same.bmp", 0, 0, 0, 0, 0);
    capture([&] { again = add_new_texture(file("same.bmp").c_str()); });
    EXPECT_EQ(again, id);
    EXPECT_EQ(texture_id_to_image(id)->width, 8);
    /* Names are compared exactly. */
    EXPECT_EQ(texture_find_by_name(file("SAME.bmp").c_str()), -1);
}

TEST_F(TextureTable, BadIdsAreReported)
{
    Captured c = capture([&] {
        EXPECT_EQ(texture_id_to_image(0), nullptr);
        EXPECT_EQ(texture_id_to_name(200), nullptr);
    });
    EXPECT_TRUE(contains(c.out, "texture id 0 invalid - in texture_id_to_image\n")) << c.out;
    EXPECT_TRUE(contains(c.out, "invalid texture id passed to texture_id_to_name (200)\n")) << c.out;
}

TEST_F(TextureTable, TheFortiethTextureIsRefused)
{
    /* In a child process: the table only ever grows. */
    EXPECT_EXIT(
        {
            int last = 0;
            capture([&] {
                for (int i = 0; i < 45; i++) {
                    std::string name = file("fill" + std::to_string(i) + ".bmp");
                    write_bmp("fill" + std::to_string(i) + ".bmp", 1, 1, (unsigned char)i, 0, 0);
                    int id = add_new_texture(name.c_str());
                    if (id) last = id;
                }
            });
            Captured c = capture([&] { add_new_texture(file("fill44.bmp").c_str()); });
            bool ok = last == TEXTURE_SLOTS - 1 && texture_highest_id() == TEXTURE_SLOTS - 1 &&
                      contains(c.err, "no room for another texture");
            exit(ok ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(TextureTable, SetOnAGroupTexturesItAllAndOffLeavesTheChildren)
{
    write_bmp("group.bmp", 2, 2, 9, 9, 9);
    int id = 0;
    capture([&] { id = add_new_texture(file("group.bmp").c_str()); });
    ASSERT_GT(id, 0);
    Object *group = new_object(OBJECT_GROUP);
    object_add_child(world, group);
    Object *a = add_square(group, 0, "a"), *b = add_square(group, 2, "b");
    Object *deep = add_square(b, 4, "deep");
    select_object(group);
    capture([&] { EXPECT_EQ(texture_set(id), 1); });
    for (Object *o : {group, a, b, deep}) EXPECT_EQ(o->texture, id);
    EXPECT_EQ(vk_object_has_texture(deep), 1);
    capture([&] { selected_texture_off(); });
    EXPECT_EQ(group->texture, 0);
    EXPECT_EQ(vk_object_has_texture(group), 0);
    for (Object *o : {a, b, deep}) EXPECT_EQ(o->texture, id);
    /* An id past the table changes nothing. */
    Captured c = capture([&] { EXPECT_EQ(texture_set(texture_highest_id() + 1), 0); });
    EXPECT_EQ(a->texture, id);
}

TEST_F(TextureTable, LoadAndSetGivesTheSelectionTheNewTexture)
{
    write_bmp("loadset.bmp", 2, 2, 1, 2, 3);
    Object *a = add_square(world, 0, "a");
    select_object(a);
    int id = 0;
    capture([&] { id = load_and_set_new_texture(file("loadset.bmp").c_str()); });
    ASSERT_GT(id, 0);
    EXPECT_EQ(a->texture, id);
    /* A failed load sets nothing. */
    capture([&] { EXPECT_EQ(load_and_set_new_texture(file("missing.bmp").c_str()), 0); });
    EXPECT_EQ(a->texture, id);
}

TEST_F(TextureTable, RepeatsAreSetOnTheSelectionAndUndone)
{
    Object *a = add_square(world, 0, "a");
    Object *kid = add_square(a, 3, "kid");
    select_object(a);
    capture([&] { EXPECT_EQ(selected_set_texture_repeats(2.0f, 3.5f), 1); });
    EXPECT_EQ(a->texture_repeat_x, 2.0f);
    EXPECT_EQ(kid->texture_repeat_y, 3.5f);
    capture([&] { UNDO(); });
    Object *back = world_child(0);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->texture_repeat_x, 1.0f);
    EXPECT_EQ(back->texture_repeat_y, 1.0f);
    clear_selection();
    capture([&] { EXPECT_EQ(selected_set_texture_repeats(2.0f, 2.0f), 0); });
}

TEST_F(TextureTable, DialogFilterListNamesEveryLoader)
{
    const char **filters = texture_filters_new();
    ASSERT_NE(filters, nullptr);
    char *text = vk_filter_array_to_string(filters);
    ASSERT_NE(text, nullptr);
    std::string s = text;
    EXPECT_EQ(s.rfind("{ { Texture files} { .bmp .rgb .gif } } ", 0), 0u) << s;
    EXPECT_TRUE(contains(s, "{ { Bitmap files} { .bmp} } { { SGI rgb image files} { .rgb} } "
                            "{ { GIF image files} { .gif} } { { All files} { *} } "))
        << s;
    myfree(text);
    texture_filters_free(filters);
}

TEST_F(TextureTable, AMissingImageKeepsItsNameOnTheObject)
{
    Object *a = add_square(world, 0, "a");
    std::string missing = file("not_there.bmp");
    Captured c = capture([&] { object_set_init_texture(a, missing.c_str()); });
    EXPECT_TRUE(contains(c.err, "can't assign texture " + missing + "\n")) << c.err;
    ASSERT_GT(a->texture, 0);
    EXPECT_STREQ(texture_id_to_name(a->texture), missing.c_str());
    EXPECT_EQ(texture_id_to_image(a->texture)->data, nullptr);
    /* A second object naming it shares the id. */
    Object *b = add_square(world, 2, "b");
    capture([&] { object_set_init_texture(b, missing.c_str()); });
    EXPECT_EQ(b->texture, a->texture);
    /* Once the file is there, loading it fills the same id. */
    write_bmp("not_there.bmp", 2, 2, 5, 5, 5);
    int id = 0;
    capture([&] { id = add_new_texture(missing.c_str()); });
    EXPECT_EQ(id, a->texture);
    ASSERT_NE(texture_id_to_image(id)->data, nullptr);
    EXPECT_EQ(texture_id_to_image(id)->data[0], 5);
}
