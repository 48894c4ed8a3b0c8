/*
 * app/vesksh.cpp - vesksh, the headless front end: a Tcl shell with the
 * VESK core and no display.  `vesksh script.tcl ?arg ...?` runs a script
 * with argv as tclsh sets it and exits with its status; with no script it
 * reads commands from standard input.  The procedures through which the
 * core talks to the user interface exist as quiet procedures, except that
 * display_message prints its text.
 */
#include "app/startup.h"
#include "vesk.h"

#include <tcl.h>

static const char quiet_interface[] = R"TCL(
proc display_message {text} { puts $text }
proc sync_ui {args} {}
proc add_palette_button {args} {}
proc set_progress_bar {args} {}
proc set_undo_string {args} {}
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

static int vesksh_init(Tcl_Interp *interp)
{
    if (Tcl_Init(interp) != TCL_OK) return TCL_ERROR;
    startup_find_home();
    startup_core();
    if (!startup_bind(interp)) return TCL_ERROR;
    if (Tcl_Eval(interp, quiet_interface) != TCL_OK) return TCL_ERROR;
    startup_after_scripts();
    return TCL_OK;
}

int main(int argc, char **argv)
{
    Tcl_Main(argc, argv, vesksh_init);
    return 0;
}
