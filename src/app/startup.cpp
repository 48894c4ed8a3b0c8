/*
 * app/startup.cpp - the start-up steps shared by the front ends (see
 * startup.h).  The order matters: the preferences (and with them the
 * allocator's memory_checks switch) are settled before the first model
 * allocation, and the palette is made after the interpreter exists since
 * every entry is announced to the scripts.
 */
#include "app/startup.h"
#include "view/draw_modes.h"
#include "app/added_commands.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "app/tcl_bridge.h"
#include "core/internal.h"
#include "edit/selection.h"
#include "texture/texture_table.h"
#include "view/view_state.h"

#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

void startup_read_debug_switch(int argc, char **argv)
{
    if (argc >= 2 && strcmp(argv[1], "debug") == 0) debug_flag = 1;
}

void startup_find_home(void)
{
    const char *home = getenv("VESK_HOME");
    if (home && *home) {
        shared_set_string(&vesk_home, home);
        return;
    }
    console_printf("Environment variable VESK_HOME is unset\n");
    char cwd[PATH_MAX];
    if (!getcwd(cwd, sizeof cwd)) {
        console_printf("can't get current working directory \n");
        shared_set_string(&vesk_home, "");
        return;
    }
    console_printf("using current dir - %s\n", cwd);
    shared_set_string(&vesk_home, cwd);
}

void startup_core(void)
{
    /* A file-size limit makes a write fail with "File too large", which a
     * save reports, instead of ending the program with the model. */
    signal(SIGXFSZ, SIG_IGN);
    shared_state_init();
    init_prefs();
    init_views();
    world = new_world();
    register_added_commands();
    /* Before the scripts, which load the plug-ins: loaders a plug-in
     * registers go in front of these. */
    register_builtin_texture_loaders();
}

int startup_bind(Tcl_Interp *interp)
{
    int status = vesk_bind_interpreter(interp);
    /* The scripts build the tool panel from the core's list of modes. */
    publish_draw_modes();
    return status;
}

void startup_after_scripts(void)
{
    create_palette();
    selection.select_mode = SELECT_TREE;
}
