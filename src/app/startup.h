/*
 * app/startup.h - the start-up steps shared by the graphical modeller and
 * the headless shell.
 */
#ifndef VESK_APP_STARTUP_H
#define VESK_APP_STARTUP_H

#include <tcl.h>

/* Sets the debug switch from the first argument ("debug"). */
void startup_read_debug_switch(int argc, char **argv);
/* Finds the installation directory: VESK_HOME, else the working
 * directory, with the console messages that say which. */
void startup_find_home(void);
/* Loads the preferences, creates the empty world and registers the
 * added commands. */
void startup_core(void);
/* Binds the core to the interpreter: the vesk command and the linked
 * variables.  Returns 0 on failure. */
int startup_bind(Tcl_Interp *interp);
/* After the scripts: the palette and the initial modes. */
void startup_after_scripts(void);

#endif
