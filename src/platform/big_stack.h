/*
 * platform/big_stack.h - running a program's work on a thread with a
 * large stack.  Much of the program walks the object tree recursively, a
 * level a call; with a gigabyte of (lazily committed) stack a model
 * nested hundreds of thousands of levels deep is edited, drawn and freed
 * like any other.
 */
#ifndef VESK_PLATFORM_BIG_STACK_H
#define VESK_PLATFORM_BIG_STACK_H

#include <cstddef>

enum { BIG_STACK_BYTES = 1024 * 1024 * 1024 };

/* Runs main_function(argc, argv) on a new thread with a big stack and
 * returns its result; runs it on the calling thread when no such thread
 * can be made. */
int run_on_big_stack(int (*main_function)(int, char **), int argc, char **argv);

#endif
