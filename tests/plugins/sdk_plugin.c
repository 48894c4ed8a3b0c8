/*
 * sdk_plugin.c - a plug-in built by the tests the way an outside author
 * builds one: against the installed vesk.h and libveskcore only, with
 *     cc -shared -fPIC sdk_plugin.c -o sdk_plugin.so $(pkg-config --cflags --libs vesk)
 * It registers a command, a Tools menu entry, a surface filter and a
 * texture loader, and can be told to fault in each of them, so that the
 * tests see a fault reported and the program go on.  It also takes the
 * address of every function of the plug-in interface: a name missing
 * from the header fails the compile, one missing from the library fails
 * the load.
 */
#include <vesk.h>

#include <signal.h>
#include <stdio.h>
#include <string.h>

typedef void (*any_function)(void);

static const any_function api_functions[] = {
#define VK_API(name) (any_function)name,
#include "api_functions.def"
#undef VK_API
};

static int fault_in_filter = 0;
static int menu_hits = 0;

/* A real segmentation fault, raised without undefined behaviour. */
static void fault_now(void) { raise(SIGSEGV); }

/* "sdk_echo <text> <n>": the text and twice n. */
static int sdk_echo(char *text, int n)
{
    command_result_set(NULL);
    command_result_appendf("%s:%d", text, 2 * n);
    return 1;
}

/* "sdk_menu_hit": what the Tools menu entry runs; counts in ::sdk_menu_hits. */
static int sdk_menu_hit(void)
{
    menu_hits++;
    tcl_command("set ::sdk_menu_hits %d", menu_hits);
    display_message("SDK plug-in menu entry chosen");
    return 1;
}

/* "sdk_fault": faults at once. */
static int sdk_fault(void)
{
    fault_now();
    return 0;
}

/* "sdk_arm_filter_fault <0|1>": the filter faults while armed. */
static int sdk_arm_filter_fault(int on)
{
    fault_in_filter = on;
    return 1;
}

/* "sdk_world_summary": the world's numbers read through the accessors. */
static int sdk_world_summary(void)
{
    Object *w = vk_get_world();
    List *vertices = NULL, *surfaces = NULL, *children = NULL;
    unsigned int total = vk_object_get_contents(w, &vertices, &surfaces, &children);
    command_result_set(NULL);
    command_result_appendf("children %u total %u lights %u palette %d walk %d", vk_object_get_num_children(w),
                           total, list_count(vk_get_lights_list()), vk_get_num_palette(),
                           vk_person_is_walk_vehicle());
    return 1;
}

/* "sdk_prefs <name> <getter>": the preference through one getter, 0 int,
 * 1 boolean, 2 double, 3 hex, 4 string, 5 key. */
static int sdk_prefs(char *name, int getter)
{
    const char *text = NULL;
    command_result_set(NULL);
    switch (getter) {
    case 0: command_result_appendf("%d", vk_prefs_get_int(name)); return 1;
    case 1: command_result_appendf("%d", vk_prefs_get_boolean(name)); return 1;
    case 2: command_result_appendf("%g", vk_prefs_get_double(name)); return 1;
    case 3: command_result_appendf("%x", (unsigned int)vk_prefs_get_hex(name)); return 1;
    case 4: text = vk_prefs_get_string(name); break;
    case 5: text = vk_prefs_get_key(name); break;
    default: command_result_appendf("no getter %d", getter); return 0;
    }
    command_result_appendf("%s", text ? text : "(none)");
    return 1;
}

/* The filter: reverses the winding and gives the surface material 5. */
static void sdk_filter(Object *object, Surface *surface)
{
    (void)object;
    if (fault_in_filter) fault_now();
    list_reverse(&surface->vertrefs);
    surface->mat = 5;
}

/* The loader reads "sdkimg W H R G B" (1 to 64 pixels each way): an
 * image of one colour.  A file that starts "crash" faults. */
static vkimage *sdk_load(const char *filename)
{
    FILE *f = fopen(filename, "r");
    if (!f) {
        display_message("sdk loader: can't open %s", filename);
        return NULL;
    }
    char word[16] = "";
    int w = 0, h = 0, r = 0, g = 0, b = 0;
    int n = fscanf(f, "%15s %d %d %d %d %d", word, &w, &h, &r, &g, &b);
    fclose(f);
    if (strcmp(word, "crash") == 0) fault_now();
    if (n != 6 || strcmp(word, "sdkimg") != 0 || w < 1 || w > 64 || h < 1 || h > 64) {
        display_message("sdk loader: %s is not an sdkimg file", filename);
        return NULL;
    }
    unsigned char *data = myalloc((unsigned int)(w * h * 3));
    if (!data) return NULL;
    for (int i = 0; i < w * h; i++) {
        data[3 * i] = (unsigned char)r;
        data[3 * i + 1] = (unsigned char)g;
        data[3 * i + 2] = (unsigned char)b;
    }
    vkimage *image = new_vkimage(filename);
    if (!image) {
        myfree(data);
        return NULL;
    }
    vk_image_set_dim(image, w, h, 3);
    vk_image_set_data(image, data);
    return image;
}

int vesk_plugin_init(void)
{
    for (size_t i = 0; i < sizeof api_functions / sizeof api_functions[0]; i++) {
        if (!api_functions[i]) return 0;
    }
    vk_add_command_sd("sdk_echo", sdk_echo, "<text> <int n>", "echo");
    vk_add_command("sdk_menu_hit", (vk_command_function)sdk_menu_hit);
    vk_add_command("sdk_fault", (vk_command_function)sdk_fault);
    vk_add_command_d("sdk_arm_filter_fault", sdk_arm_filter_fault, "<0|1>",
                        "make the SDK filter fault");
    vk_add_command("sdk_world_summary", (vk_command_function)sdk_world_summary);
    vk_add_command_sd("sdk_prefs", sdk_prefs, "<name> <int getter>",
                        "read a preference");
    vk_add_tools_menu_item("SDK plug-in entry", "vesk sdk_menu_hit", "a menu entry added by the SDK test plug-in");
    if (!vk_register_surface_filter("SDK reverse", "reverse the winding, material 5", sdk_filter, 0)) return 0;
    return vk_register_texture_loader(".sdkimg", "SDK test images", sdk_load) != NULL;
}
