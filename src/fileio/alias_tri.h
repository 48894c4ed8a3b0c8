/*
 * fileio/alias_tri.h - the reader of Alias "object separated triangle"
 * files: big-endian words, objects of independent triangles whose corners
 * carry a normal, a position, a colour (0 to 255) and texture
 * coordinates.  Every object of a file becomes part of one new object.
 */
#ifndef VESK_FILEIO_ALIAS_TRI_H
#define VESK_FILEIO_ALIAS_TRI_H

enum {
    ALIAS_TRI_MAGIC = 0x0001E1BA,
    MAXTRIANGLES = 2048,          /* records the working buffer holds */
    ALIAS_TRI_RECORD_FLOATS = 33, /* three corners of 11 floats */
    ALIAS_TRI_CORNER_FLOATS = 11,
};

/* Reads the file and adds its triangles as one new object under the
 * world, selected and fitted into the views.  After a failure (reported
 * in a message box) the object is added empty. */
void load_alias_tri_file(const char *filename);

#endif
