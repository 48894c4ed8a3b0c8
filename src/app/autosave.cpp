/*
 * app/autosave.cpp - keeping unsaved work while the program runs and
 * after it stops: the timer that autosaves every `autosave_seconds` while
 * there are unsaved changes, the emergency save on logout (SIGHUP),
 * termination (SIGTERM) or a fault nothing can survive, the offer to
 * recover at start-up, and the added commands that do the same for
 * scripts.  The writing itself is in fileio/vk_recovery.cpp.
 */
#include "app/autosave.h"
#include "app/commands.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "app/tcl_bridge.h"
#include "fileio/vk_document.h"
#include "fileio/vk_recovery.h"
#include "platform/signal_guard.h"
#include "view/redraw.h"

#include <tcl.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <unistd.h>

static pid_t writer = -1;                 /* the autosave child, if any */
static unsigned long saved_generation = 0; /* the model as last autosaved */
static time_t last_started = 0;
static int keep_recovery_files = 0;
static Tcl_AsyncHandler termination_handler = nullptr;
static volatile sig_atomic_t termination_signal = 0;

/* ---- the timer ---- */

static void reap_writer(void)
{
    if (writer <= 0) return;
    int r = recovery_write_poll(writer, 0);
    if (r == 0) return;
    writer = -1;
    char when[16];
    time_t now = time(nullptr);
    strftime(when, sizeof when, "%H:%M:%S", localtime(&now));
    if (r == 1) {
        display_message("autosaved %s", when);
        return;
    }
    display_message("autosave failed at %s - is there room in %s?", when, recovery_file_path(RECOVERY_AUTOSAVE).c_str());
}

static void maybe_start_writer(void)
{
    /* Saving, opening and New remove the autosave themselves. */
    if (writer > 0 || !unsaved_changes) return;
    if (prefs.autosave_seconds <= 0 || model_generation == saved_generation) return;
    time_t now = time(nullptr);
    if (now - last_started < prefs.autosave_seconds) return;
    writer = recovery_write_begin(RECOVERY_AUTOSAVE, current_file_name);
    last_started = now;
    saved_generation = model_generation;
    if (writer < 0) display_message("autosave could not start: out of processes or memory");
}

static void autosave_tick(ClientData)
{
    reap_writer();
    maybe_start_writer();
    Tcl_CreateTimerHandler(1000, autosave_tick, nullptr);
}

/* ---- the last moments ---- */

static void discard_at_exit(void)
{
    if (!keep_recovery_files) recovery_discard_own();
}

static void fault_last_words(int)
{
    if (recovery_emergency_save()) keep_recovery_files = 1;
}

/* Runs in the main thread at the next safe moment after SIGTERM or
 * SIGHUP: save what is unsaved, then go. */
static int terminate_safely(ClientData, Tcl_Interp *, int code)
{
    int sig = termination_signal;
    if (unsaved_changes && recovery_write_now(RECOVERY_EMERGENCY, current_file_name, 10)) {
        keep_recovery_files = 1;
        fprintf(stderr, "VESK: stopped by signal %d - the unsaved work was kept in %s\n", sig,
                recovery_file_path(RECOVERY_EMERGENCY).c_str());
    }
    fflush(stdout);
    _exit(128 + sig);
    return code;
}

static void termination_handler_proc(int sig)
{
    termination_signal = sig;
    if (termination_handler) {
        Tcl_AsyncMark(termination_handler);
        return;
    }
    recovery_emergency_save();
    _exit(128 + sig);
}

void autosave_init(int with_timer)
{
    recovery_prepare();
    atexit(discard_at_exit);
    signal_guard_set_last_words(fault_last_words);
    termination_handler = Tcl_AsyncCreate(terminate_safely, nullptr);
    struct sigaction sa = {};
    sa.sa_handler = termination_handler_proc;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGTERM, &sa, nullptr);
    sigaction(SIGHUP, &sa, nullptr);
    last_started = time(nullptr);
    saved_generation = model_generation;
    if (with_timer) Tcl_CreateTimerHandler(1000, autosave_tick, nullptr);
}

/* ---- recovering ---- */

/* The found recovery file at path, or null. */
static const RecoveryFile *find_recovery(const std::vector<RecoveryFile> &found, const char *path)
{
    for (const RecoveryFile &f : found) {
        if (f.path == path) return &f;
    }
    return nullptr;
}

static int recover(const RecoveryFile &file)
{
    if (!open_recovered(file.path.c_str(), file.model_file.c_str())) return 0;
    if (!recovery_adopt(file)) display_message("recovered, but the recovery file could not be kept - save soon");
    saved_generation = model_generation;
    return 1;
}

static std::string time_text(time_t t)
{
    char text[64];
    strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", localtime(&t));
    return text;
}

int startup_offer_recovery(void)
{
    std::vector<RecoveryFile> found = recovery_files_found();
    if (found.empty()) return 0;
    const RecoveryFile &file = found.front();
    const std::string words[] = {"::vesk::ops::offer_recovery", file.model_file, time_text(file.saved),
                                 file.kind == RECOVERY_EMERGENCY ? "emergency" : "autosave"};
    Tcl_Obj *objv[4];
    for (int i = 0; i < 4; i++) {
        objv[i] = Tcl_NewStringObj(words[i].c_str(), -1);
        Tcl_IncrRefCount(objv[i]);
    }
    int code = Tcl_EvalObjv(tcl_interp, 4, objv, TCL_EVAL_GLOBAL);
    for (Tcl_Obj *o : objv) Tcl_DecrRefCount(o);
    if (code != TCL_OK) {
        tcl_trace_error("offering to recover unsaved work");
        return 0;
    }
    std::string answer = Tcl_GetStringResult(tcl_interp);
    if (answer == "recover") return recover(file);
    recovery_remove(file);
    if (answer == "original" && !file.model_file.empty()) return open_model_file(file.model_file.c_str());
    return 0;
}

/* ---- the commands ---- */

int command_autosave_now(void)
{
    reap_writer();
    int ok = recovery_write_now(RECOVERY_AUTOSAVE, current_file_name, 60);
    if (ok) saved_generation = model_generation;
    display_message(ok ? "autosaved to %s" : "autosave to %s failed", recovery_file_path(RECOVERY_AUTOSAVE).c_str());
    return command_finish(ok);
}

int command_recovery_files(void)
{
    Tcl_Obj *list = Tcl_NewListObj(0, nullptr);
    for (const RecoveryFile &f : recovery_files_found()) {
        Tcl_Obj *item[4] = {Tcl_NewStringObj(f.path.c_str(), -1), Tcl_NewStringObj(f.model_file.c_str(), -1),
                            Tcl_NewWideIntObj((Tcl_WideInt)f.saved),
                            Tcl_NewStringObj(f.kind == RECOVERY_EMERGENCY ? "emergency" : "autosave", -1)};
        Tcl_ListObjAppendElement(nullptr, list, Tcl_NewListObj(4, item));
    }
    Tcl_IncrRefCount(list);
    command_result_set(Tcl_GetString(list));
    Tcl_DecrRefCount(list);
    return 1;
}

int command_recover_file(char *path)
{
    std::vector<RecoveryFile> found = recovery_files_found();
    const RecoveryFile *file = find_recovery(found, path ? path : "");
    if (!file) {
        display_message("recover_file: %s is not a recovery file of a program that has stopped", path ? path : "");
        return command_finish(0);
    }
    return command_finish(recover(*file));
}

int command_discard_recovery_file(char *path)
{
    std::vector<RecoveryFile> found = recovery_files_found();
    const RecoveryFile *file = find_recovery(found, path ? path : "");
    if (!file) {
        display_message("discard_recovery_file: %s is not a recovery file of a program that has stopped",
                        path ? path : "");
        return command_finish(0);
    }
    recovery_remove(*file);
    return command_finish(1);
}
