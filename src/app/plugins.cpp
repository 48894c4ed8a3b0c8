/*
 * app/plugins.cpp - plug-in libraries: loading one library or Tcl script
 * ("plugin_load") and reporting every way it can fail to start.  (The
 * plug-in calls of no other module, menu entries and file dialogs, are in
 * plugin_calls.cpp; which directories are searched, in plugin_dirs.cpp.)
 *
 * A plug-in is a shared library that exports
 *     int vesk_plugin_init(void);
 * which registers its commands, menu entries, filters and loaders through
 * the vk_ functions of vesk.h and returns nonzero on success.  It is
 * called once, inside the fault guard, right after the library loads.
 * Every way a plug-in can fail to start is reported and the program goes
 * on; a library whose init has run stays loaded even when it failed,
 * because whatever it registered before failing may point into it.
 */
#include "app/plugins.h"
#include "app/commands.h"
#include "app/tcl_bridge.h"
#include "core/internal.h"
#include "platform/signal_guard.h"

#include <cstdarg>
#include <cstdio>
#include <dlfcn.h>
#include <string>
#include <sys/stat.h>
#include <tcl.h>
#include <unistd.h>
#include <vector>

typedef int (*plugin_init_function)(void);

struct PluginInit {
    plugin_init_function init;
    int result;
};

/* The plug-in whose init is running (nested loads restore the outer). */
static const char *starting_plugin = nullptr;
/* While the plug-in directories load at start-up the reports also go to
 * the console: the status line keeps only the last of them. */
static int reports_to_console = 0;
/* Libraries whose init has been called, so that a second load of the
 * same library does not register everything twice. */
static std::vector<void *> started_libraries;

void plugin_report(const char *format, ...)
{
    char text[2048];
    va_list ap;
    va_start(ap, format);
    vsnprintf(text, sizeof text, format, ap);
    va_end(ap);
    if (reports_to_console) console_printf("%s\n", text);
    display_message("%s", text);
}

void plugin_reports_to_console(int on) { reports_to_console = on; }

const char *plugin_being_started(void) { return starting_plugin; }

void plugin_check_command_name(const char *name)
{
    if (!starting_plugin || !name) return;
    Command *c = find_command(name);
    if (!c) return;
    /* The new command still goes in: added commands are found before the
     * built-in ones, in the order they were added.  So it hides a
     * built-in command (a plug-in may mean that) and is itself hidden by
     * an earlier added one; either way the user should know. */
    int builtin = c >= builtin_commands && c < builtin_commands + num_builtin_commands;
    plugin_report("plugin %s: the command name '%s' is already taken; %s", starting_plugin, name,
                  builtin ? "the plug-in's command hides the built-in one"
                          : "the command added first keeps the name");
}

static void run_plugin_init(void *context)
{
    PluginInit *p = (PluginInit *)context;
    p->result = p->init();
}

static int library_already_started(void *library)
{
    for (void *l : started_libraries) {
        if (l == library) return 1;
    }
    return 0;
}

/* dlopen searches the library path for a name without a slash; a plug-in
 * named by the user is a file, relative to the working directory. */
static std::string library_path(const char *filename)
{
    std::string path = filename;
    if (path.find('/') == std::string::npos) path = "./" + path;
    return path;
}

static int start_library(void *library, const char *filename, plugin_init_function init)
{
    PluginInit p = {init, 0};
    const char *outer = starting_plugin;
    starting_plugin = filename;
    started_libraries.push_back(library);
    int fault = 0;
    int ran = run_guarded(run_plugin_init, &p, &fault);
    starting_plugin = outer;
    if (!ran) {
        if (reports_to_console) console_printf("plugin %s crashed while starting (signal %d)\n", filename, fault);
        windows_message_dialog("The plugin %s crashed while starting (signal %d).", filename, fault);
        return 0;
    }
    if (!p.result) {
        plugin_report("plugin %s failed to start", filename);
        return 0;
    }
    return 1;
}

int plugin_load_library(const char *filename)
{
    if (!filename || !*filename) {
        plugin_report("can't load plugin: no file named");
        return 0;
    }
    std::string path = library_path(filename);
    struct stat st;
    if (stat(path.c_str(), &st) != 0) {
        plugin_report("can't load plugin %s: no such file", filename);
        return 0;
    }
    if (!S_ISREG(st.st_mode)) {
        plugin_report("can't load plugin %s: not a file", filename);
        return 0;
    }
    void *library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        const char *why = dlerror();
        plugin_report("can't load plugin %s: %s", filename, why ? why : "not a shared library");
        return 0;
    }
    if (library_already_started(library)) {
        dlclose(library);
        plugin_report("plugin %s is already loaded", filename);
        return 0;
    }
    plugin_init_function init = (plugin_init_function)dlsym(library, "vesk_plugin_init");
    if (!init) {
        plugin_report("plugin %s has no vesk_plugin_init function", filename);
        dlclose(library);
        return 0;
    }
    if (!start_library(library, filename, init)) return 0;
    debugf("plugin %s loaded\n", filename);
    return 1;
}

int plugin_source_script(const char *filename)
{
    if (!tcl_interp) {
        plugin_report("plug-in %s failed: no interpreter", filename);
        return 0;
    }
    Tcl_Obj *words[2] = {Tcl_NewStringObj("source", -1), Tcl_NewStringObj(filename, -1)};
    Tcl_Obj *script = Tcl_NewListObj(2, words);
    Tcl_IncrRefCount(script);
    int code = Tcl_EvalObjEx(tcl_interp, script, TCL_EVAL_GLOBAL);
    Tcl_DecrRefCount(script);
    if (code != TCL_OK) {
        std::string error = Tcl_GetStringResult(tcl_interp);
        Tcl_ResetResult(tcl_interp);
        plugin_report("plug-in %s failed: %s", filename, error.c_str());
        return 0;
    }
    Tcl_ResetResult(tcl_interp);
    return 1;
}

/* "plugin_load <file>": a Tcl plug-in is sourced, anything else is
 * loaded as a library. */
int command_plugin_load(char *filename)
{
    std::string name = filename ? filename : "";
    if (name.size() > 4 && name.compare(name.size() - 4, 4, ".tcl") == 0) {
        return command_finish(plugin_source_script(filename));
    }
    return command_finish(plugin_load_library(filename));
}
