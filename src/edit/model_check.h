/*
 * edit/model_check.h - checking the whole model: the tree and the
 * selection (see model_check.cpp).
 */
#ifndef VESK_EDIT_MODEL_CHECK_H
#define VESK_EDIT_MODEL_CHECK_H

#include <cstddef>

/* Returns the number of problems found under the world and in the
 * selection; the first are described in report, a line each. */
long model_check(char *report, size_t size);

#endif
