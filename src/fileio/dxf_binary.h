/*
 * fileio/dxf_binary.h - binary DXF files turned into the ASCII group /
 * value text the DXF reader takes.  A binary DXF file is the 22-byte
 * sentinel "AutoCAD Binary DXF\r\n\x1a\0" and then the same groups an
 * ASCII file holds, each a group code (one byte in files of R12 and
 * before, with 255 escaping to a two-byte code; two bytes little-endian
 * in later ones) and a value whose type the code gives.
 */
#ifndef VESK_FILEIO_DXF_BINARY_H
#define VESK_FILEIO_DXF_BINARY_H

#include <cstddef>
#include <string>

/* The length of the sentinel, its terminating NUL included. */
enum { DXF_BINARY_SENTINEL_SIZE = 22 };
/* A string value longer than this is refused, as an ASCII line of that
 * length is. */
enum { DXF_BINARY_MAX_STRING = 4096 };

/* 1 when data[size] starts with the binary DXF sentinel. */
int dxf_is_binary(const char *data, size_t size);

/* Translates a whole binary DXF file into ASCII DXF text, one line for
 * each group code and one for each value, up to and including the EOF
 * group (what follows it is ignored).  Doubles are written with 17
 * significant digits, so they read back to the same bits; binary chunks
 * as upper case hex digits; line breaks inside strings as spaces.  False,
 * with *error naming the byte offset, for a file that is no binary DXF,
 * ends inside a group or before its EOF, or holds a group code DXF does
 * not have. */
bool dxf_binary_to_text(const char *data, size_t size, std::string *text, std::string *error);

#endif
