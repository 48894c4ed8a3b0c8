/*
 * fileio/import_support.h - what the readers of whole drawings and
 * scenes share: reading a file into memory with a limit, naming the
 * import after the file, refusing with a message that leaves the model
 * as it was, and adding the imported tree to the world as one step that
 * undo takes out again.
 */
#ifndef VESK_FILEIO_IMPORT_SUPPORT_H
#define VESK_FILEIO_IMPORT_SUPPORT_H

#include "vesk.h"

#include <string>

/* Reads a regular file of at most limit bytes; false with *error set
 * otherwise. */
bool import_read_file(const char *path, long limit, std::string *bytes, std::string *error);
/* The file's name without its directories and suffix, or fallback. */
std::string import_name_of(const char *filename, const char *fallback);
/* Says on the console and the status line that nothing was imported and
 * why; returns the command's failure. */
int import_refused(const char *command, const char *filename, const std::string &why);
/* Adds top to the world as one undoable step, selects it and fits the
 * views when the settings say so. */
void import_attach_as_step(Object *top, const char *undo_label);

#endif
