/*
 * fileio/vrml1_reader.h - reading VRML 1.0 and Inventor 2.1 ASCII files
 * into the model: each Separator becomes an object (the objects of
 * nested Separators its children), shapes add polygons and lines to the
 * object of the Separator they stand in, materials go through the
 * palette and texture names through the texture table.
 */
#ifndef VESK_FILEIO_VRML1_READER_H
#define VESK_FILEIO_VRML1_READER_H

#include <cstddef>

/* Nesting deeper than this is refused: the model's trees are walked by
 * recursion elsewhere. */
enum { VRML1_MAX_DEPTH = 4096 };

/* Reads text (a whole file, followed by a NUL byte at text[size]) and adds what it describes under the world,
 * selecting the new top objects.  Returns the number of objects added, or
 * -1 after an error, which was printed on the console; the model is then
 * unchanged. */
long read_vrml1_text(const char *text, size_t size);
/* Reads a file as above; -1 also when it cannot be read. */
long read_vrml1_file(const char *filename);

#endif
