/*
 * fileio/dxf_groups.h - a DXF text as its group code / value pairs, the
 * form every DXF file has under its entities.
 */
#ifndef VESK_FILEIO_DXF_GROUPS_H
#define VESK_FILEIO_DXF_GROUPS_H

#include <cstddef>
#include <string>
#include <vector>

struct DxfGroup {
    int code;
    std::string value;    /* trimmed of spaces and line ends */
    long line;            /* of the value, from 1 */
};

/* Splits a whole text into groups.  False, with *error saying why, for a
 * binary DXF file, text that is not DXF (no SECTION first, a line where a
 * group code belongs, binary data, an overlong line) and a file that ends
 * in a group or before its EOF. */
bool dxf_split_groups(const char *text, size_t size, std::vector<DxfGroup> *groups, std::string *error);

#endif
