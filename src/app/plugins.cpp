/*
 * app/plugins.cpp - plug-in libraries and the plug-in calls that belong to
 * no other module: loading a library ("plugin_load"), menu entries, file
 * dialogs and file sizes.
 *
 * A plug-in is a shared library that exports
 *     int vesk_plugin_init(void);
 * which registers its commands, menu entries, filters and loaders through
 * the vk_ functions of vesk.h and returns nonzero on success.  It is
 * called once, inside the fault guard, right after the library loads.
 */
#include "app/commands.h"
#include "app/tcl_bridge.h"
#include "core/internal.h"
#include "platform/signal_guard.h"

#include <dlfcn.h>
#include <string>
#include <sys/stat.h>

typedef int (*plugin_init_function)(void);

struct PluginInit {
    plugin_init_function init;
    int result;
};

static void run_plugin_init(void *context)
{
    PluginInit *p = (PluginInit *)context;
    p->result = p->init();
}

int command_plugin_load(char *filename)
{
    void *library = dlopen(filename, RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        display_message("can't load plugin %s: %s", filename, dlerror());
        return 0;
    }
    PluginInit p = {(plugin_init_function)dlsym(library, "vesk_plugin_init"), 0};
    if (!p.init) {
        display_message("plugin %s has no vesk_plugin_init function", filename);
        dlclose(library);
        return 0;
    }
    int fault = 0;
    if (!run_guarded(run_plugin_init, &p, &fault)) {
        windows_message_dialog("The plugin %s crashed while starting (signal %d).", filename, fault);
        return 0;
    }
    if (!p.result) {
        display_message("plugin %s failed to start", filename);
        return 0;
    }
    debugf("plugin %s loaded\n", filename);
    return 1;
}

/* ---- menu entries ---- */

const char *vk_add_menu_item(const char *menu, const char *label, const char *command)
{
    return tcl_command("%s add command -label \"%s\" -command \"%s\"", menu, label, command);
}

const char *vk_add_import_menu_item(const char *label, const char *command)
{
    return tcl_command("add_import_menu_item \"%s\" \"%s\"", label, command);
}

const char *vk_add_export_menu_item(const char *label, const char *command)
{
    return tcl_command("add_export_menu_item \"%s\" \"%s\"", label, command);
}

const char *vk_add_tools_menu_item(const char *label, const char *command, const char *help)
{
    return tcl_command("add_tools_menu_item \"%s\" \"%s\" \"%s\"", label, command, help);
}

const char *vk_add_surface_menu_item(const char *label, const char *command, const char *help)
{
    return tcl_command("add_surface_menu_item \"%s\" \"%s\" \"%s\"", label, command, help);
}

/* ---- file dialogs ---- */

char *vk_filter_array_to_string(const char **filters)
{
    if (!filters || !filters[0]) return nullptr;
    std::string text;
    for (int i = 0; filters[i]; i += 2) {
        text += "{ { ";
        text += filters[i];
        text += "} { ";
        text += filters[i + 1] ? filters[i + 1] : "";
        text += "} } ";
    }
    return mystrdup(text.c_str());
}

static const char *file_dialog(const char *procedure, const char *title, const char **filters)
{
    char *filter_text = vk_filter_array_to_string(filters);
    debugf("filter string '%s'\n", filter_text ? filter_text : "");
    const char *result = tcl_command("%s \"%s\" \"%s\"", procedure, title, filter_text ? filter_text : "");
    myfree(filter_text);
    return result;
}

const char *vk_get_open_filename(const char *title, const char **filters)
{
    return file_dialog("get_opentexturename", title, filters);
}

const char *vk_get_save_filename(const char *title, const char **filters)
{
    return file_dialog("get_savefilename", title, filters);
}

long vk_get_filesize(const char *filename)
{
    struct stat st;
    if (!filename || stat(filename, &st) != 0) return 0;
    return (long)st.st_size;
}
