/*
 * fileio/vrml_writer.h - the VRML 2.0, VRML 1.0 and Inventor 2.1
 * exporters and the frame they share: the file is written through a
 * temporary file that replaces the target only when all was written, the
 * console says what is being generated and what was written.
 */
#ifndef VESK_FILEIO_VRML_WRITER_H
#define VESK_FILEIO_VRML_WRITER_H

#include <cstdio>

/* What the last export left out or could not express, for the status
 * line. */
struct ExportNotes {
    long line_surfaces_left_out;   /* VRML 2.0 writes polygons only */
    long mixed_objects;            /* VRML 1.0 / Inventor: polygons and lines in one object */
    long surfaces_ignored;         /* triangle file: fewer than 3 references or no triangulation */
};
extern ExportNotes export_notes;

/* Each returns 1 when the file was written, 0 when it could not be
 * opened or written (the console says so; an earlier file is intact). */
int write_vrml2(const char *filename);
int write_vrml1_or_inventor(const char *filename, int inventor);
int write_vrml1(const char *filename);
int write_inventor(const char *filename);

/* The common frame: opens the file for writing, prints the "Generating
 * VRML" lines, calls body, commits, prints "written file".  Returns 1 on
 * success, 0 on failure. */
int vrml_write_file(const char *filename, void (*body)(FILE *file, void *data), void *data);

/* The commands "write_vrml2", "write_vrml" and "write_inventor". */
int command_write_vrml2(char *filename);
int command_write_vrml(char *filename);
int command_write_inventor(char *filename);

#endif
