/*
 * fault_plugin.c - a plug-in for the GUI tests: adds the command
 * "test_fault", which raises a processor fault, to check that a fault
 * inside a command is reported and the program goes on.
 */
#include "vesk.h"

#include <signal.h>

static int test_fault(void)
{
    /* A real segmentation fault, raised without undefined behaviour. */
    raise(SIGSEGV);
    return 0;
}

int vesk_plugin_init(void)
{
    vk_add_command("test_fault", (vk_command_function)test_fault);
    return 1;
}
