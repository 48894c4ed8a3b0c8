/*
 * core/check.h - invariants stated in the code.  VK_ASSERT(condition)
 * checks in Debug and sanitizer builds (VESK_CHECKS defined) and costs
 * nothing otherwise; a failed check names the file, the line and the
 * condition on standard error and stops the program, so that the test
 * that broke an invariant fails where it broke it.
 */
#ifndef VESK_CORE_CHECK_H
#define VESK_CORE_CHECK_H

#include "vesk.h"

#include <cstddef>

[[noreturn]] void vk_assert_failed(const char *file, int line, const char *condition);

#ifdef VESK_CHECKS
#define VK_ASSERT(condition) ((condition) ? (void)0 : vk_assert_failed(__FILE__, __LINE__, #condition))
#else
#define VK_ASSERT(condition) ((void)0)
#endif

/* Checks the tree under root: the counts against their lists, every
 * child's parent link, every surface's references to vertices of its own
 * object, palette indices within the palette, no object reached twice (no
 * cycles, no sharing), no deleted object still linked.  Returns the number
 * of problems; the first ones are described in report (a line each), cut
 * to size bytes.  Walks without recursion, so any depth is fine. */
long object_check_tree(Object *root, char *report, size_t size);

#endif
