/*
 * platform/console.cpp - the console: developer diagnostics and start-up
 * messages written to standard output, and the debug channel that writes
 * only when the "debug" switch is on.
 */
#include "vesk.h"
#include "core/internal.h"

#include <cstdarg>
#include <cstdio>

enum { CONSOLE_BUFFER = 2048 };

/* When set, console output goes to standard error instead (the headless
 * shell uses it during start-up so that a script's own output is all that
 * reaches standard output). */
int console_to_stderr = 0;

static void console_write(const char *format, va_list ap)
{
    char buffer[CONSOLE_BUFFER];
    vsnprintf(buffer, sizeof buffer, format, ap);
    FILE *out = console_to_stderr ? stderr : stdout;
    fputs(buffer, out);
    fflush(out);
}

void console_printf(const char *format, ...)
{
    va_list ap;
    va_start(ap, format);
    console_write(format, ap);
    va_end(ap);
}

void debugf(const char *format, ...)
{
    if (!debug_flag) return;
    va_list ap;
    va_start(ap, format);
    console_write(format, ap);
    va_end(ap);
}
