/*
 * platform/signal_guard.cpp - see signal_guard.h.  The handlers run on an
 * alternate stack so that a stack overflow can be caught too, and leave
 * the faulting code with siglongjmp to the innermost active guard.  A
 * fault outside any guard gets the default action.
 */
#include "platform/signal_guard.h"

#include <csetjmp>
#include <csignal>
#include <cstdlib>
#include <cstring>

enum { MAX_GUARD_DEPTH = 64 };

static const int guarded_signals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL};

static sigjmp_buf *guard_stack[MAX_GUARD_DEPTH];
static volatile sig_atomic_t guard_depth = 0;
static bool handlers_installed = false;
static void (*volatile last_words)(int) = nullptr;
static volatile sig_atomic_t last_words_said = 0;

static void fault_handler(int sig)
{
    if (guard_depth > 0 && guard_depth <= MAX_GUARD_DEPTH) {
        siglongjmp(*guard_stack[guard_depth - 1], sig);
    }
    /* No guard: let the default action end the process, after the last
     * words (said once, even if they fault themselves). */
    if (last_words && !last_words_said) {
        last_words_said = 1;
        last_words(sig);
    }
    signal(sig, SIG_DFL);
    raise(sig);
}

static void install_handlers(void)
{
    if (handlers_installed) return;
    handlers_installed = true;
    static char *alt_stack = nullptr;
    size_t size = 64 * 1024;
    alt_stack = (char *)malloc(size);
    if (alt_stack) {
        stack_t ss;
        memset(&ss, 0, sizeof ss);
        ss.ss_sp = alt_stack;
        ss.ss_size = size;
        sigaltstack(&ss, nullptr);
    }
    struct sigaction sa;
    memset(&sa, 0, sizeof sa);
    sa.sa_handler = fault_handler;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = SA_ONSTACK | SA_NODEFER;
    for (int sig : guarded_signals) sigaction(sig, &sa, nullptr);
}

int run_guarded(guarded_function function, void *context, int *signal_number)
{
    install_handlers();
    if (guard_depth >= MAX_GUARD_DEPTH) {
        function(context);
        return 1;
    }
    sigjmp_buf jump;
    int depth_at_entry = guard_depth;
    guard_stack[guard_depth] = &jump;
    guard_depth = guard_depth + 1;
    int sig = sigsetjmp(jump, 1);
    if (sig != 0) {
        guard_depth = depth_at_entry;
        if (signal_number) *signal_number = sig;
        return 0;
    }
    function(context);
    guard_depth = depth_at_entry;
    return 1;
}

void signal_guard_set_last_words(void (*function)(int signal_number))
{
    last_words = function;
    install_handlers();
}
