/*
 * plugin_typed_command.c - a plug-in registering a command through the
 * typed call of the wrong template must not compile.  Built twice by the
 * tests: with VESK_RIGHT_TEMPLATE the int command goes through
 * vk_add_command_d and compiles; without it, through vk_add_command_s,
 * which wants a char * argument, and the build must stop.
 */
#include "vesk.h"

static int takes_a_number(int n) { return n; }

int vesk_plugin_init(void)
{
#ifdef VESK_RIGHT_TEMPLATE
    return vk_add_command_d("number", takes_a_number, "<n>", NULL) != NULL;
#else
    return vk_add_command_s("number", takes_a_number, "<n>", NULL) != NULL;
#endif
}
