/*
 * app/vesksh.cpp - vesksh, the headless front end: a Tcl shell with the
 * VESK core and no display.  `vesksh script.tcl ?arg ...?` runs a script
 * with argv as tclsh sets it and exits with its status; with no script it
 * reads commands from standard input.  The procedures through which the
 * core talks to the user interface exist as quiet procedures, except that
 * display_message prints its text.  The plug-ins are loaded at start as
 * the modeller loads them.
 */
#include "app/autosave.h"
#include "app/plugins.h"
#include "app/startup.h"
#include "platform/big_stack.h"
#include "vesk.h"
#include "core/internal.h"

#include <tcl.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

static const char quiet_interface[] = R"TCL(
proc display_message {text} { puts $text }
proc sync_ui {args} {}
proc add_palette_button {args} {}
proc remove_palette_buttons_from {args} {}
proc set_progress_bar {args} {}
proc set_undo_string {args} {}
proc set_redo_string {args} {}
proc edit_colour_ui {args} {}
proc popup_3d_menu {args} {}
proc set_select_mode_ui {args} {}
proc get_opentexturename {args} { return "" }
proc get_savefilename {args} { return "" }
proc add_import_menu_item {args} {}
proc add_export_menu_item {args} {}
proc add_tools_menu_item {args} {}
proc add_surface_menu_item {args} {}
fconfigure stdout -buffering line
)TCL";

/* vesk_redirect_stdout FILE: sends the process's standard output (where
 * the core's console messages go) to FILE until vesk_restore_stdout is
 * called with the returned token.  Lets scripts check console output.
 * vesk_redirect_stderr and vesk_restore_stderr do the same for standard
 * error, where message boxes go without a display.  The client data is
 * the file descriptor. */
static int redirect_cmd(ClientData data, Tcl_Interp *interp, int argc, const char **argv)
{
    int target = (int)(intptr_t)data;
    if (argc != 2) {
        Tcl_AppendResult(interp, "usage: ", argv[0], " file", nullptr);
        return TCL_ERROR;
    }
    Tcl_Eval(interp, "flush stdout; flush stderr");
    fflush(stdout);
    fflush(stderr);
    int fd = open(argv[1], O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0) {
        Tcl_SetResult(interp, (char *)"can't open capture file", TCL_STATIC);
        return TCL_ERROR;
    }
    int saved = dup(target);
    dup2(fd, target);
    close(fd);
    Tcl_SetObjResult(interp, Tcl_NewIntObj(saved));
    return TCL_OK;
}

static int restore_cmd(ClientData data, Tcl_Interp *interp, int argc, const char **argv)
{
    int target = (int)(intptr_t)data;
    if (argc != 2) {
        Tcl_AppendResult(interp, "usage: ", argv[0], " token", nullptr);
        return TCL_ERROR;
    }
    Tcl_Eval(interp, "flush stdout; flush stderr");
    fflush(stdout);
    fflush(stderr);
    int saved = atoi(argv[1]);
    if (saved > 2) {
        dup2(saved, target);
        close(saved);
    }
    return TCL_OK;
}

static int vesksh_init(Tcl_Interp *interp)
{
    if (Tcl_Init(interp) != TCL_OK) return TCL_ERROR;
    /* Start-up messages go to standard error, so that standard output
     * carries only what the script prints. */
    console_to_stderr = 1;
    startup_find_home();
    startup_core();
    console_to_stderr = 0;
    if (!startup_bind(interp)) return TCL_ERROR;
    autosave_init(0);
    if (Tcl_Eval(interp, quiet_interface) != TCL_OK) return TCL_ERROR;
    Tcl_CreateCommand(interp, "vesk_redirect_stdout", redirect_cmd, (ClientData)(intptr_t)1, nullptr);
    Tcl_CreateCommand(interp, "vesk_restore_stdout", restore_cmd, (ClientData)(intptr_t)1, nullptr);
    Tcl_CreateCommand(interp, "vesk_redirect_stderr", redirect_cmd, (ClientData)(intptr_t)2, nullptr);
    Tcl_CreateCommand(interp, "vesk_restore_stderr", restore_cmd, (ClientData)(intptr_t)2, nullptr);
    startup_after_scripts();
    /* The same plug-ins as the graphical modeller, so that scripts can
     * use their commands, filters and loaders.  Their console lines go
     * to standard error like the other start-up messages. */
    console_to_stderr = 1;
    plugins_load_all();
    console_to_stderr = 0;
    return TCL_OK;
}

static int vesksh_main(int argc, char **argv)
{
    Tcl_Main(argc, argv, vesksh_init);
    return 0;
}

int main(int argc, char **argv)
{
    return run_on_big_stack(vesksh_main, argc, argv);
}
