/*
 * app/plugin_calls.cpp - the plug-in calls that belong to no other module:
 * menu entries and file dialogs, each one Tcl command sent to the
 * interface scripts, and file sizes.  Texts are inserted unescaped, so
 * they must not hold double quotes.
 */
#include "app/tcl_bridge.h"
#include "core/internal.h"

#include <string>
#include <sys/stat.h>

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
