/*
 * app/plugins.h - loading plug-ins: one library or Tcl script, or every
 * plug-in of the plug-in directories at start-up (see plugins.cpp and
 * plugin_dirs.cpp).
 */
#ifndef VESK_APP_PLUGINS_H
#define VESK_APP_PLUGINS_H

#include "vesk.h"

#include <string>
#include <vector>

/* Loads one shared library and runs its vesk_plugin_init inside the fault
 * guard; 1 when it loaded and started, else 0 with the reason reported. */
int plugin_load_library(const char *filename);
/* Sources one Tcl plug-in at global level; 1 when it ran without error. */
int plugin_source_script(const char *filename);
/* The file name of the plug-in whose vesk_plugin_init is running, or
 * none. */
const char *plugin_being_started(void);
/* Called by the command registry before it adds a command: while a
 * plug-in starts, a name that is already taken is reported. */
void plugin_check_command_name(const char *name);
/* Reports a plug-in problem on the status line (and on the console while
 * reports_to_console is on). */
void plugin_report(const char *format, ...) VK_PRINTF(1, 2);
void plugin_reports_to_console(int on);

/* The directories searched at start-up, in order: the plug-in directory
 * preference (a leading $VESK_HOME expanded), the installed plug-in
 * directory (relative to the program) and "plugins" beside the program.
 * Directories that do not exist are left out. */
std::vector<std::string> plugin_directories(void);
/* Every *.so and *.tcl of those directories, each directory in name
 * order; a file name met in an earlier directory is not taken again. */
std::vector<std::string> plugin_files(void);
/* The same for the given directories. */
std::vector<std::string> plugin_files_in(const std::vector<std::string> &dirs);
/* Loads all of them, each failure reported without stopping the rest;
 * returns the number of files tried. */
int plugins_load_all(void);
/* Command "plugin_load_all": the same, the count as the result. */
int command_plugin_load_all(void);

#endif
