/*
 * app/tcl_bridge.cpp - the scripting bridge (see tcl_bridge.h).  Text sent
 * to the scripts is passed as separate words wherever it comes from the
 * model or the user (messages, labels), so that quotes, brackets and
 * dollar signs in a file name or message are shown, never evaluated.
 * The commands formatted with tcl_command carry numbers and fixed words
 * only, with one exception: the plug-in menu and dialog calls
 * (plugin_calls.cpp) insert the plug-in's texts unescaped, as plug-ins
 * have always been told, so those texts must not hold double quotes.
 */
#include "app/tcl_bridge.h"
#include "edit/model_check.h"
#include "app/commands.h"
#include "app/frontend.h"
#include "app/linked_vars.h"
#include "core/internal.h"
#include "edit/redo.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

enum { MESSAGE_BUFFER = 2048 };

Tcl_Interp *tcl_interp = nullptr;
FrontEnd frontend = {nullptr, nullptr, nullptr, nullptr, 0, nullptr};

int frontend_window_geometry(int view, int rect[4])
{
    return frontend.window_geometry ? frontend.window_geometry(view, rect) : 0;
}

void frontend_pick(int view, int x, int y, int width, int height, int add, int remove)
{
    if (frontend.pick) frontend.pick(view, x, y, width, height, add, remove);
}

void frontend_set_cursor(int view, const char *cursor)
{
    if (frontend.set_cursor) frontend.set_cursor(view, cursor);
}

int frontend_pick_query(int x, int y, int width, int height, PickHit *hit)
{
    *hit = PickHit();
    return frontend.pick_query ? frontend.pick_query(x, y, width, height, hit) : 0;
}

void tcl_trace_error(const char *where)
{
    if (!tcl_interp) return;
    console_printf("TCL ERROR IN VESK in %s:\n%s\n", where, Tcl_GetStringResult(tcl_interp));
    const char *info = Tcl_GetVar(tcl_interp, "errorInfo", TCL_GLOBAL_ONLY);
    if (info) console_printf("Stack Trace:\n%s\n\n", info);
    else console_printf("NO Stack Trace\n");
}

const char *tcl_command(const char *format, ...)
{
    char buffer[MESSAGE_BUFFER];
    va_list ap;
    va_start(ap, format);
    vsnprintf(buffer, sizeof buffer, format, ap);
    va_end(ap);
    if (!tcl_interp) return "";
    debugf("sending command to TCL: %s\n", buffer);
    if (Tcl_Eval(tcl_interp, buffer) != TCL_OK) tcl_trace_error(buffer);
    return Tcl_GetStringResult(tcl_interp);
}

/* Calls a script procedure with its arguments as words, unevaluated. */
static void tcl_call(const char *procedure, const char *argument)
{
    if (!tcl_interp) return;
    Tcl_Obj *words[2] = {Tcl_NewStringObj(procedure, -1), Tcl_NewStringObj(argument, -1)};
    for (Tcl_Obj *w : words) Tcl_IncrRefCount(w);
    if (Tcl_EvalObjv(tcl_interp, 2, words, TCL_EVAL_GLOBAL) != TCL_OK) tcl_trace_error(procedure);
    for (Tcl_Obj *w : words) Tcl_DecrRefCount(w);
}

void display_message(const char *format, ...)
{
    char buffer[MESSAGE_BUFFER];
    va_list ap;
    va_start(ap, format);
    vsnprintf(buffer, sizeof buffer, format, ap);
    va_end(ap);
    debugf("sending command to TCL: %s\n", buffer);
    tcl_call("display_message", buffer);
}

void display_status(void)
{
    tcl_command("sync_ui");
    debugf("done display status\n");
}

void set_progress_bar(int percent)
{
    tcl_command("set_progress_bar %d", percent);
}

void set_undo_string(const char *text)
{
    tcl_call("set_undo_string", text ? text : "");
}

void set_redo_string(const char *text)
{
    tcl_call("set_redo_string", text ? text : "");
}

void popup_3d_menu(int x, int y)
{
    tcl_command("popup_3d_menu %d %d", x, y);
}

void tcl_update(void)
{
    if (tcl_interp) Tcl_VarEval(tcl_interp, "update", (char *)nullptr);
}

void handle_tcl_events(void)
{
    while (Tcl_DoOneEvent(TCL_DONT_WAIT)) {
    }
}

char *tcl_get_string(const char *name)
{
    if (!tcl_interp) return nullptr;
    return (char *)Tcl_GetVar(tcl_interp, name, 0);
}

void tcl_set_string(const char *name, const char *value)
{
    if (tcl_interp) Tcl_SetVar(tcl_interp, name, value ? value : "", TCL_GLOBAL_ONLY);
}

void tcl_set_int(const char *name, int value)
{
    char text[32];
    snprintf(text, sizeof text, "%d", value);
    tcl_set_string(name, text);
}

const char *tcl_eval_file(const char *path)
{
    if (!tcl_interp) return "";
    if (Tcl_EvalFile(tcl_interp, path) != TCL_OK) tcl_trace_error(path);
    return Tcl_GetStringResult(tcl_interp);
}

/* A modal message box with the given icon; standard error without Tk. */
static int show_message_box(const char *icon, const char *text)
{
    if (!frontend.has_tk || !tcl_interp) {
        fprintf(stderr, "%s\n", text);
        return 1;
    }
    const char *script[] = {"tk_messageBox", "-title", "VESK Message", "-message", text,
                            "-type", "ok", "-icon", icon};
    const int n = (int)(sizeof script / sizeof script[0]);
    Tcl_Obj *words[n];
    for (int i = 0; i < n; i++) {
        words[i] = Tcl_NewStringObj(script[i], -1);
        Tcl_IncrRefCount(words[i]);
    }
    if (Tcl_EvalObjv(tcl_interp, n, words, TCL_EVAL_GLOBAL) != TCL_OK) {
        fprintf(stderr, "%s\n", text);
    }
    for (Tcl_Obj *w : words) Tcl_DecrRefCount(w);
    return 1;
}

/* Message boxes report what went wrong, so they carry the error icon;
 * windows_info_dialog is for the few that only tell. */
int windows_message_dialog(const char *format, ...)
{
    char buffer[MESSAGE_BUFFER];
    va_list ap;
    va_start(ap, format);
    vsnprintf(buffer, sizeof buffer, format, ap);
    va_end(ap);
    return show_message_box("error", buffer);
}

int windows_info_dialog(const char *format, ...)
{
    char buffer[MESSAGE_BUFFER];
    va_list ap;
    va_start(ap, format);
    vsnprintf(buffer, sizeof buffer, format, ap);
    va_end(ap);
    return show_message_box("info", buffer);
}

double vk_get_version_number(void) { return 2.0; }

/* ---- the vesk command ---- */

static int vesk_command_proc(ClientData, Tcl_Interp *interp, int argc, const char **argv)
{
    do_command(argc - 1, (char **)(argv + 1));
    const char *result = command_result_get();
    Tcl_SetResult(interp, (char *)(result ? result : ""), TCL_VOLATILE);
    return TCL_OK;
}

void create_vesk_command(Tcl_Interp *interp)
{
    Tcl_CreateCommand(interp, "vesk", vesk_command_proc, nullptr, nullptr);
}

/* vesk_check_tree: checks the model and the selection; answers a list of
 * the number of problems and their description. */
static int check_tree_command(ClientData, Tcl_Interp *interp, int, const char **)
{
    char report[4096];
    long problems = model_check(report, sizeof report);
    Tcl_Obj *answer[2] = {Tcl_NewLongObj(problems), Tcl_NewStringObj(report, -1)};
    Tcl_SetObjResult(interp, Tcl_NewListObj(2, answer));
    return TCL_OK;
}

int vesk_bind_interpreter(Tcl_Interp *interp)
{
    tcl_interp = interp;
    create_vesk_command(interp);
    Tcl_CreateCommand(interp, "vesk_check_tree", check_tree_command, nullptr, nullptr);
    return link_tcl_variables(interp);
}

/* ---- empty hooks kept for plug-ins and call sites ---- */

void init_ui(void) {}
void set_busy_cursor(void) {}
void win_set_submode_cursor(void) {}
void print_time(void) {}
void cache_material(void) {}
void create_texture_menu(void) {}
void set_undo_surface_colour(void) {}
void vk_register_internal_surface_filters(void) {}
