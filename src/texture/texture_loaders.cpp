/*
 * texture/texture_loaders.cpp - the registry of texture loaders, chosen
 * by file suffix (newest first, case ignored), the reading of an image
 * through it, and the filter list of the texture file dialog.
 */
#include "texture/texture_table.h"
#include "platform/signal_guard.h"

#include <cstdlib>
#include <cstring>
#include <strings.h>
#include <sys/stat.h>

List *texture_loaders = nullptr;

TextureLoader *vk_register_texture_loader(const char *suffix, const char *description,
                                          vk_texture_load_function function)
{
    if (!suffix || !function) return nullptr;
    TextureLoader *loader = (TextureLoader *)myalloc(sizeof(TextureLoader));
    if (!loader) return nullptr;
    loader->suffix = mystrdup(suffix);
    loader->description = mystrdup(description ? description : "");
    loader->load = function;
    if (!loader->suffix || !loader->description || !list_add_item_head(&texture_loaders, loader)) {
        myfree(loader->suffix);
        myfree(loader->description);
        myfree(loader);
        return nullptr;
    }
    return loader;
}

void register_builtin_texture_loaders(void)
{
    /* Each goes in front, so the search order is .bmp, .rgb, .gif. */
    vk_register_texture_loader(".gif", "GIF image files", GIFImageLoad);
    vk_register_texture_loader(".rgb", "SGI rgb image files", RGBImageLoad);
    vk_register_texture_loader(".bmp", "Bitmap files", BMPImageLoad);
}

const char *texture_file_suffix(const char *filename)
{
    if (!filename) return nullptr;
    size_t n = strlen(filename);
    if (n < 2) return nullptr;
    /* A dot in the last position starts no suffix. */
    for (size_t i = n - 1; i-- > 0;) {
        if (filename[i] == '.') return filename + i;
    }
    return nullptr;
}

static void list_loaders_on_console(void)
{
    console_printf("I can load these files as textures:\n");
    for (List *l = texture_loaders; l; l = l->next) {
        TextureLoader *t = (TextureLoader *)l->item;
        console_printf("%s (%s)\n", t->suffix, t->description);
    }
}

struct LoaderCall {
    TextureLoader *loader;
    const char *filename;
    vkimage *image;
};

static void call_loader(void *context)
{
    LoaderCall *c = (LoaderCall *)context;
    c->image = c->loader->load(c->filename);
}

/* Loaders come from plug-ins too: one that faults is reported and reads
 * nothing, and the command that asked goes on. */
static vkimage *load_guarded(TextureLoader *loader, const char *filename)
{
    LoaderCall call = {loader, filename, nullptr};
    int fault = 0;
    if (run_guarded(call_loader, &call, &fault)) return call.image;
    windows_message_dialog("The texture loader for %s files crashed reading %s (signal %d).", loader->suffix, filename,
                           fault);
    return nullptr;
}

vkimage *texture_read(const char *filename)
{
    const char *suffix = texture_file_suffix(filename);
    if (!suffix) {
        windows_message_dialog("I need a filename with a suffix (e.g. file.rgb)\n");
        return nullptr;
    }
    for (List *l = texture_loaders; l; l = l->next) {
        TextureLoader *t = (TextureLoader *)l->item;
        /* The first match decides: a failing loader has said why. */
        if (strcasecmp(t->suffix, suffix) == 0) return load_guarded(t, filename);
    }
    list_loaders_on_console();
    /* The suffix keeps its dot, so the text shows two. */
    windows_message_dialog("Sorry, there is no texture loader for .%s files", suffix);
    return nullptr;
}

const char **texture_filters_new(void)
{
    unsigned count = list_count(texture_loaders);
    const char **filters = (const char **)calloc(2 * (count + 3), sizeof(char *));
    if (!filters) return nullptr;
    size_t all_length = 1;
    for (List *l = texture_loaders; l; l = l->next) all_length += strlen(((TextureLoader *)l->item)->suffix) + 1;
    char *all = (char *)calloc(all_length, 1);
    if (!all) {
        free(filters);
        return nullptr;
    }
    for (List *l = texture_loaders; l; l = l->next) {
        strcat(all, ((TextureLoader *)l->item)->suffix);
        strcat(all, " ");
    }
    size_t k = 0;
    filters[k++] = "Texture files";
    filters[k++] = all;
    for (List *l = texture_loaders; l; l = l->next) {
        TextureLoader *t = (TextureLoader *)l->item;
        filters[k++] = t->description;
        filters[k++] = t->suffix;
    }
    filters[k++] = "All files";
    filters[k++] = "*";
    filters[k++] = nullptr;
    filters[k] = nullptr;
    return filters;
}

void texture_filters_free(const char **filters)
{
    if (!filters) return;
    free((void *)filters[1]);
    free(filters);
}

unsigned char *texture_file_read_all(const char *filename, size_t *size)
{
    *size = 0;
    FILE *f = filename ? fopen(filename, "rb") : nullptr;
    if (!f) return nullptr;
    struct stat st;
    /* No image the readers accept needs more than this. */
    const off_t largest = (off_t)1 << 30;
    if (fstat(fileno(f), &st) != 0 || !S_ISREG(st.st_mode) || st.st_size > largest) {
        fclose(f);
        return nullptr;
    }
    size_t n = (size_t)st.st_size;
    unsigned char *bytes = (unsigned char *)malloc(n ? n : 1);
    if (!bytes) {
        fclose(f);
        return nullptr;
    }
    size_t got = fread(bytes, 1, n, f);
    fclose(f);
    if (got != n) {
        free(bytes);
        return nullptr;
    }
    *size = n;
    return bytes;
}
