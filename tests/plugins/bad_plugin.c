/*
 * bad_plugin.c - plug-ins that go wrong, one per build of this file:
 *   BAD_NO_ENTRY  exports no vesk_plugin_init;
 *   BAD_FAILS     its init returns 0;
 *   BAD_FAULTS    its init faults;
 *   BAD_TAKEN     registers the same command name twice;
 *   BAD_HIDES     registers the name of a built-in command.
 * Each notes its start in the Tcl list ::plugin_order, so that the tests
 * see the order in which plug-ins are loaded.
 */
#include "vesk.h"

#include <signal.h>

#ifndef BAD_NAME
#define BAD_NAME "bad"
#endif

static int first_version(void)
{
    command_result_set("first");
    return 1;
}

static int second_version(void)
{
    command_result_set("second");
    return 1;
}

#ifndef BAD_NO_ENTRY
int vesk_plugin_init(void)
{
    tcl_command("lappend ::plugin_order %s", BAD_NAME);
    (void)first_version;
    (void)second_version;
#if defined(BAD_FAILS)
    return 0;
#elif defined(BAD_FAULTS)
    raise(SIGSEGV);
    return 1;
#elif defined(BAD_TAKEN)
    vk_add_command("bad_taken", (vk_command_function)first_version);
    vk_add_command("bad_taken", (vk_command_function)second_version);
    return 1;
#elif defined(BAD_HIDES)
    vk_add_command("zoom_out", (vk_command_function)second_version);
    return 1;
#else
    return 1;
#endif
}
#else
/* Something to export, so that the library is otherwise whole. */
int bad_plugin_without_entry(void)
{
    (void)first_version;
    (void)second_version;
    return 1;
}
#endif
