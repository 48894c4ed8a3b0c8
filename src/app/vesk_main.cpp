/*
 * app/vesk_main.cpp - vesk, the graphical modeller: the start-up sequence
 * (console, debug switch, home directory, preferences, views, world, Tcl
 * and Tk, the vesk command and linked variables, Togl, the six scripts,
 * the view windows, the palette and modes, a model named on the command
 * line) and the main loop, which reports a fault and goes on.
 */
#include "app/autosave.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "app/startup.h"
#include "app/tcl_bridge.h"
#include "app/togl_bind.h"
#include "core/internal.h"
#include "edit/selection.h"
#include "fileio/vk_document.h"
#include "platform/big_stack.h"
#include "platform/signal_guard.h"
#include "view/interaction.h"

#include <tcl.h>
#include <tk.h>
#include <togl.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

#ifndef VESK_DATA_DIR
#define VESK_DATA_DIR "/usr/local/share/vesk"
#endif

static const char *const script_names[] = {"tcl/veskops.tcl", "tcl/veskpalette.tcl",
                                           "tcl/veskprefs.tcl", "tcl/veskview.tcl",
                                           "tcl/vesk.tcl",      "tcl/veskplugins.tcl"};

static void panic_proc(const char *format, ...)
{
    va_list ap;
    va_start(ap, format);
    fprintf(stderr, "Fatal Error in Togl: ");
    vfprintf(stderr, format, ap);
    fprintf(stderr, "\n");
    va_end(ap);
    _exit(1);
}

/* The directory that holds tcl/veskops.tcl: the working directory, else
 * VESK_HOME, else the installed data directory. */
static std::string find_script_dir(void)
{
    const char *home = vesk_home && *vesk_home ? vesk_home : nullptr;
    std::string candidates[3] = {".", home ? home : "", VESK_DATA_DIR};
    for (const std::string &dir : candidates) {
        if (dir.empty()) continue;
        if (access((dir + "/" + script_names[0]).c_str(), R_OK) == 0) return dir;
    }
    return ".";
}

static void set_main_window_geometry(Tcl_Interp *interp, Tk_Window main)
{
    Screen *screen = Tk_Screen(main);
    if (prefs.cpwin_width == 0) prefs.cpwin_width = WidthOfScreen(screen) - 50;
    if (prefs.cpwin_height == 0) prefs.cpwin_height = HeightOfScreen(screen) - 80;
    (void)interp;
    tcl_command("wm geometry . %dx%d+%d+%d", prefs.cpwin_width, prefs.cpwin_height, prefs.cpwin_x,
                prefs.cpwin_y);
}

static int eval_scripts(Tcl_Interp *interp)
{
    std::string dir = find_script_dir();
    for (const char *name : script_names) {
        std::string path = dir + "/" + name;
        if (Tcl_EvalFile(interp, path.c_str()) != TCL_OK) {
            tcl_trace_error(path.c_str());
            return 0;
        }
    }
    return 1;
}

static int init_tcl_stuff(Tcl_Interp **out)
{
    debugf("initializing TCL stuff\n");
    Tcl_Interp *interp = Tcl_CreateInterp();
    if (!interp) {
        console_printf("unable to create TCL interpreter\n");
        exit(0);
    }
    *out = interp;
    tcl_interp = interp;
    console_printf("Initializing dynamic TCL\n");
    if (Tcl_Init(interp) != TCL_OK) {
        console_printf("TCL failed\n");
        tcl_trace_error("initing dynamic TCL");
        return 0;
    }
    Tcl_SetVar(interp, "tcl_interactive", "1", TCL_GLOBAL_ONLY);
    Tcl_StaticPackage(interp, "vesk", Tk_Init, nullptr);
    if (Tk_Init(interp) != TCL_OK) {
        console_printf("TK failed\n");
        tcl_trace_error("initing dynamic TK");
        return 0;
    }
    Tk_Window main = Tk_MainWindow(interp);
    set_main_window_geometry(interp, main);
    bind_key_handler(main);
    if (!startup_bind(interp)) return 0;
    register_togl_callbacks(interp);
    int code = Togl_Init(interp);
    debugf("togl code %d  %s\n", code, Tcl_GetStringResult(interp));
    return eval_scripts(interp);
}

static void run_main_loop(void *) { Tk_MainLoop(); }

static void vesk_mainloop(void)
{
    for (;;) {
        int fault = 0;
        if (!run_guarded(run_main_loop, nullptr, &fault)) {
            windows_message_dialog("Exception occured in the main code of VESK\nException code "
                                   "%d\n\nPlease report this to Orlo.",
                                   fault);
            continue;
        }
        /* Tk_MainLoop returns when the last main window is gone; with no
         * window left there is nothing to go on with. */
        if (Tk_GetNumMainWindows() == 0) exit(0);
    }
}

static void load_start_model(int argc, char **argv)
{
    if (startup_offer_recovery()) return;
    if (argc < 2 || strcmp(argv[1], "debug") == 0) return;
    open_model_file(argv[1]);
}

static int vesk_main(int argc, char **argv)
{
    Tcl_SetPanicProc(panic_proc);
    setlocale(LC_ALL, "C");
    Tcl_FindExecutable(argv[0]);
    startup_read_debug_switch(argc, argv);
    console_printf("%s - polygon modeller\n", "VESK v2.0");
    startup_find_home();
    startup_core();
    Tcl_Interp *interp = nullptr;
    if (!init_tcl_stuff(&interp)) {
        windows_message_dialog("Failed to start TCL/TK - exiting.");
        console_printf("failed to start TCL/TK - exiting\n");
        exit(1);
    }
    init_ui();
    if (!create_ui(interp)) exit(0);
    init_3d_view_gl();
    startup_after_scripts();
    set_new_select_mode(0);
    set_new_move_mode(100);
    set_new_draw_mode(0);
    init_ui();
    autosave_init(1);
    load_start_model(argc, argv);
    display_status();
    tcl_update();
    vesk_mainloop();
    return 0;
}

int main(int argc, char **argv)
{
    return run_on_big_stack(vesk_main, argc, argv);
}
