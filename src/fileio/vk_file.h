/*
 * fileio/vk_file.h - the system's own model file (".vk"): the reader that
 * merges a file into the model and the writer that saves the model or a
 * part of it.
 *
 * The file is line oriented: the header word "VESK" with the version in
 * hexadecimal ("VESKb" is 11, the current one), MATERIAL lines, then one
 * object block (normally "OBJECT world") whose "kids" line is followed by
 * its children's blocks, depth first.
 */
#ifndef VESK_FILEIO_VK_FILE_H
#define VESK_FILEIO_VK_FILE_H

#include "vesk.h"

#include <cstdio>
#include <string>
#include <vector>

enum {
    VK_FILE_VERSION = 11,
    /* Objects nested deeper than this are not read.  The reader and the
     * writer keep their own stacks; the rest of the program walks the
     * tree recursively, on the big stack of its thread (see
     * platform/big_stack.h). */
    VK_MAX_NESTING = 250000,
};

/* Merges the file into the model under parent (normally the world).
 * With select, the loaded top-level objects are selected afterwards and
 * the views fitted to them.  Returns 1 when the whole file was read, 0
 * when it could not be opened, is not a model file, is from a newer
 * version, or stopped part-way (what was read stays in the model). */
int readfile_vk(const char *filename, Object *parent, int select);
/* The reader of files older than version 11 (called by readfile_vk). */
int readfile_vk_old(const char *filename, Object *parent, int select);

/* What reading a file into a detached holder found. */
struct VkLoadReport {
    int refused;      /* not opened, not a model file or from a newer
                         version (the reader's message box was shown) */
    int complete;     /* every object block reached its "kids" line and
                         every child announced there was read */
    long lines;       /* lines read */
    long problems;    /* problems reported on the console */
};

/* Reads a model file into holder, an object that is not part of the
 * model (no parent, not the world, with the world's placement), as if it
 * were the world: the file's world lines apply to the holder and its
 * top-level objects become the holder's children.  Nothing is selected,
 * drawn or registered as a light.  Returns 1 when the file was read to
 * its end and whole; the report says what was found either way. */
int readfile_vk_detached(const char *filename, Object *holder, VkLoadReport *report);
/* What the last load of either kind found. */
void readfile_vk_last_report(VkLoadReport *report);

/* Writes text in double quotes with a backslash before every backslash
 * and double quote, as the reader's tokeniser expects. */
void output_string(FILE *file, const char *text);

/* Saves the whole model.  The previous file is replaced only when the new
 * one was written completely; returns 1, or 0 with errno describing the
 * failure (the old file is then untouched). */
int write_vk(const char *filename);
/* Saves the whole model like write_vk, keeping the file it replaces as
 * filename~.  A backup that can't be kept does not stop the save: the
 * result is that of the save, and *backup_error is 0 or the errno of the
 * backup's failure. */
int write_vk_keeping_backup(const char *filename, int *backup_error);
/* Saves the given objects, each with its subtree, as the children of a
 * world block.  Same results as write_vk. */
int write_vk_objects(const char *filename, List *objects);
/* The names and urls the last write_vk, write_vk_keeping_backup or
 * write_vk_objects could not keep as they are (longer than a line of the
 * file, or holding line breaks), each described for the user. */
void write_vk_altered_texts(std::vector<std::string> *out);
/* Writes one object's block and its subtree to an open file (without the
 * header and materials), placed relative to the object's parent.  Returns
 * 1, or 0 when writing failed. */
int write_vk_object(FILE *file, Object *object);

#endif
