/*
 * platform/signal_guard.h - the fault guard around commands and the main
 * loop.  A processor fault (SIGSEGV, SIGBUS, SIGFPE, SIGILL) raised inside
 * a guarded call ends that call and is reported to the caller with its
 * signal number; the program goes on.
 */
#ifndef VESK_PLATFORM_SIGNAL_GUARD_H
#define VESK_PLATFORM_SIGNAL_GUARD_H

typedef void (*guarded_function)(void *context);

/* Runs function(context).  Returns 1 when it returned normally, 0 when a
 * fault ended it; *signal_number then holds the signal. */
int run_guarded(guarded_function function, void *context, int *signal_number);

/* A function called once, from the signal handler, when a fault happens
 * outside every guard and is about to end the process (to save what can
 * be saved).  It must be safe to call from a signal handler. */
void signal_guard_set_last_words(void (*last_words)(int signal_number));

#endif
