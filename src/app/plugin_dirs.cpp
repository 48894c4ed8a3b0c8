/*
 * app/plugin_dirs.cpp - finding the plug-ins to load at start-up: the
 * plug-in directory of the preferences, the installed plug-in directory
 * and the plug-ins built beside the program, and loading them all.  Both
 * front ends call this, so the graphical modeller and the headless shell
 * start with the same plug-ins.
 */
#include "app/commands.h"
#include "app/plugins.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "core/internal.h"

#include <algorithm>
#include <climits>
#include <dirent.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

#ifndef VESK_PLUGIN_SUBDIR
#define VESK_PLUGIN_SUBDIR "lib/vesk/plugins"
#endif

static int is_directory(const std::string &path)
{
    struct stat st;
    return !path.empty() && stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

static int has_suffix(const std::string &name, const char *suffix)
{
    size_t n = strlen(suffix);
    return name.size() > n && name.compare(name.size() - n, n, suffix) == 0;
}

/* The preference with a leading $VESK_HOME (or ${VESK_HOME}) replaced by
 * the installation directory. */
static std::string preference_directory(void)
{
    std::string dir = prefs.plugin_dir ? prefs.plugin_dir : "";
    size_t first = dir.find_first_not_of(" \t");
    size_t last = dir.find_last_not_of(" \t");
    if (first == std::string::npos) return "";
    dir = dir.substr(first, last - first + 1);
    const char *home = vesk_home ? vesk_home : "";
    for (const char *prefix : {"${VESK_HOME}", "$VESK_HOME"}) {
        size_t n = strlen(prefix);
        if (dir.compare(0, n, prefix) == 0) return home + dir.substr(n);
    }
    return dir;
}

/* The directory holding the running program, "" when unknown. */
static std::string program_directory(void)
{
    char path[PATH_MAX];
    ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
    if (n <= 0) return "";
    path[n] = '\0';
    std::string p = path;
    size_t slash = p.rfind('/');
    return slash == std::string::npos ? "" : p.substr(0, slash);
}

std::vector<std::string> plugin_directories(void)
{
    std::vector<std::string> dirs;
    std::string program = program_directory();
    std::string candidates[3] = {preference_directory(),
                                 program.empty() ? "" : program + "/../" VESK_PLUGIN_SUBDIR,
                                 program.empty() ? "" : program + "/plugins"};
    for (const std::string &dir : candidates) {
        if (is_directory(dir)) dirs.push_back(dir);
    }
    return dirs;
}

/* The plug-in files of one directory in name order (byte order). */
static std::vector<std::string> directory_plugin_names(const std::string &dir)
{
    std::vector<std::string> names;
    DIR *d = opendir(dir.c_str());
    if (!d) return names;
    while (struct dirent *e = readdir(d)) {
        std::string name = e->d_name;
        if (name[0] == '.') continue;
        if (!has_suffix(name, ".so") && !has_suffix(name, ".tcl")) continue;
        struct stat st;
        if (stat((dir + "/" + name).c_str(), &st) != 0 || !S_ISREG(st.st_mode)) continue;
        names.push_back(name);
    }
    closedir(d);
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> plugin_files(void) { return plugin_files_in(plugin_directories()); }

std::vector<std::string> plugin_files_in(const std::vector<std::string> &dirs)
{
    std::vector<std::string> files;
    std::set<std::string> seen;
    for (const std::string &dir : dirs) {
        for (const std::string &name : directory_plugin_names(dir)) {
            /* The user's directory comes first, so its copy of a plug-in
             * is the one taken. */
            if (!seen.insert(name).second) continue;
            files.push_back(dir + "/" + name);
        }
    }
    return files;
}

int plugins_load_all(void)
{
    std::vector<std::string> files = plugin_files();
    plugin_reports_to_console(1);
    for (const std::string &file : files) {
        debugf("loading plugin %s\n", file.c_str());
        if (has_suffix(file, ".tcl")) {
            plugin_source_script(file.c_str());
        } else {
            plugin_load_library(file.c_str());
        }
    }
    plugin_reports_to_console(0);
    return (int)files.size();
}

int command_plugin_load_all(void)
{
    int tried = plugins_load_all();
    command_result_set(nullptr);
    command_result_append_int(tried);
    return 1;
}
