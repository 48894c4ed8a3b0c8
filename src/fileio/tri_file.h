/*
 * fileio/tri_file.h - triangle files: one triangle per text line, three
 * corners and a packed colour, "%g %g %g  %g %g %g  %g %g %g  0x%X".
 */
#ifndef VESK_FILEIO_TRI_FILE_H
#define VESK_FILEIO_TRI_FILE_H

#include "vesk.h"

#include <cstdio>

/* Reads the file into one new object under the world, vertices shared by
 * exact position.  1 on success; 0 on failure with the model unchanged. */
int load_tri_file(const char *filename);
/* Writes the object's surfaces as triangles, then its children's. */
void write_tri_object(FILE *file, Object *object);
/* Writes the whole model through a temporary file; 1 on success. */
int write_tri_file(const char *filename);

/* The commands "import_tri" and "write_tri". */
int command_import_tri(char *filename);
int write_tri(char *filename);

#endif
