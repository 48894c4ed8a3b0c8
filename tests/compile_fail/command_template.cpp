/*
 * command_template.cpp - a command table row whose template does not
 * match its function must not compile.  Built twice by the tests: with
 * VESK_RIGHT_TEMPLATE the row is right and the file compiles; without it
 * the row says "s" for an int parameter and the build must stop.
 */
#include "app/command_row.h"

static int takes_a_number(int) { return 0; }

Command rows[] = {
#ifdef VESK_RIGHT_TEMPLATE
    COMMAND_ROW("number", takes_a_number, 1, "d", "<n>", nullptr),
#else
    COMMAND_ROW("number", takes_a_number, 1, "s", "<n>", nullptr),
#endif
};
