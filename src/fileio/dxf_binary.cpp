/*
 * fileio/dxf_binary.cpp - binary DXF to ASCII DXF text (see
 * dxf_binary.h).  The width of the group codes is told from the first
 * group, which is always 0 "SECTION": writers do not agree on which
 * versions use which width, so the version in the header is not trusted
 * for it.  Every read is checked against the end of the data first; the
 * output grows with what was read, a few characters per input byte.
 */
#include "fileio/dxf_binary.h"

#include <cassert>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace {

const char SENTINEL[DXF_BINARY_SENTINEL_SIZE + 1] = "AutoCAD Binary DXF\r\n\x1a";
const char FIRST_NAME[] = "SECTION";   /* with its NUL: 8 bytes */
const int MAX_GROUP_CODE = 1071;
/* R12 and earlier: a one-byte code of 255 says a two-byte code follows. */
const int CODE_ESCAPE = 255;

enum ValueType { TYPE_STRING, TYPE_DOUBLE, TYPE_INT16, TYPE_INT32, TYPE_INT64, TYPE_BOOL, TYPE_CHUNK };

ValueType value_type(int code)
{
    struct Range {
        int first, last;
        ValueType type;
    };
    static const Range ranges[] = {
        {10, 59, TYPE_DOUBLE},     {60, 79, TYPE_INT16},     {90, 99, TYPE_INT32},     {110, 149, TYPE_DOUBLE},
        {160, 169, TYPE_INT64},    {170, 179, TYPE_INT16},   {210, 239, TYPE_DOUBLE},  {270, 289, TYPE_INT16},
        {290, 299, TYPE_BOOL},     {310, 319, TYPE_CHUNK},   {370, 389, TYPE_INT16},   {400, 409, TYPE_INT16},
        {420, 429, TYPE_INT32},    {440, 459, TYPE_INT32},   {460, 469, TYPE_DOUBLE},  {1004, 1004, TYPE_CHUNK},
        {1010, 1059, TYPE_DOUBLE}, {1060, 1070, TYPE_INT16}, {1071, 1071, TYPE_INT32},
    };
    for (const Range &r : ranges) {
        if (code >= r.first && code <= r.last) return r.type;
    }
    return TYPE_STRING;
}

/* The data being read, where we are in it, and the first error met. */
struct Reader {
    const unsigned char *data;
    size_t size;
    size_t at;
    size_t group_start;   /* where the group being read began */
    std::string *error;
};

bool fail(Reader *r, const std::string &why)
{
    *r->error = "binary DXF: " + why;
    return false;
}

bool cut_short(Reader *r)
{
    return fail(r, "the group at offset " + std::to_string(r->group_start) + " is cut short (the file ends at offset " +
                       std::to_string(r->size) + ")");
}

bool has(const Reader *r, size_t n)
{
    return r->size - r->at >= n;
}

/* Little-endian integers of n bytes, whatever the machine's order. */
uint64_t take_bytes(Reader *r, size_t n)
{
    assert(has(r, n) && n <= 8);
    uint64_t v = 0;
    for (size_t i = 0; i < n; i++) v |= (uint64_t)r->data[r->at + i] << (8 * i);
    r->at += n;
    return v;
}

bool read_int16(Reader *r, int *v)
{
    if (!has(r, 2)) return cut_short(r);
    *v = (int16_t)(uint16_t)take_bytes(r, 2);
    return true;
}

bool read_code(Reader *r, bool wide, int *code)
{
    r->group_start = r->at;
    if (wide) {
        if (!read_int16(r, code)) return false;
    } else {
        if (!has(r, 1)) return cut_short(r);
        *code = (int)take_bytes(r, 1);
        if (*code == CODE_ESCAPE && !read_int16(r, code)) return false;
    }
    if (*code < 0 || *code > MAX_GROUP_CODE) {
        return fail(r, "group code " + std::to_string(*code) + " at offset " + std::to_string(r->group_start) +
                           " is not a DXF group code");
    }
    return true;
}

/* A NUL-terminated string; line breaks in it would break the line
 * structure of the text, so they become spaces. */
bool read_string(Reader *r, std::string *value)
{
    size_t left = r->size - r->at;
    const void *nul = memchr(r->data + r->at, 0, left);
    if (!nul) {
        return fail(r, "the string at offset " + std::to_string(r->at) + " has no end (the file ends at offset " +
                           std::to_string(r->size) + ")");
    }
    size_t length = (size_t)((const unsigned char *)nul - (r->data + r->at));
    if (length > DXF_BINARY_MAX_STRING) {
        return fail(r, "the string at offset " + std::to_string(r->at) + " is longer than " +
                           std::to_string((int)DXF_BINARY_MAX_STRING) + " bytes");
    }
    value->assign((const char *)r->data + r->at, length);
    for (char &c : *value) {
        if (c == '\r' || c == '\n') c = ' ';
    }
    r->at += length + 1;
    return true;
}

/* A binary chunk: a length byte and that many bytes, written as hex. */
bool read_chunk(Reader *r, std::string *value)
{
    static const char digits[] = "0123456789ABCDEF";
    if (!has(r, 1)) return cut_short(r);
    size_t n = (size_t)take_bytes(r, 1);
    if (!has(r, n)) return cut_short(r);
    value->clear();
    for (size_t i = 0; i < n; i++) {
        unsigned char b = r->data[r->at + i];
        value->push_back(digits[b >> 4]);
        value->push_back(digits[b & 15]);
    }
    r->at += n;
    return true;
}

std::string double_text(double d)
{
    /* Like "%.17g" but independent of the locale. */
    char buffer[64];
    std::to_chars_result res = std::to_chars(buffer, buffer + sizeof buffer, d, std::chars_format::general, 17);
    assert(res.ec == std::errc());
    return std::string(buffer, res.ptr);
}

bool read_value(Reader *r, int code, std::string *value)
{
    switch (value_type(code)) {
    case TYPE_STRING:
        return read_string(r, value);
    case TYPE_CHUNK:
        return read_chunk(r, value);
    case TYPE_BOOL:
        if (!has(r, 1)) return cut_short(r);
        *value = std::to_string((unsigned)take_bytes(r, 1));
        return true;
    case TYPE_INT16: {
        int v;
        if (!read_int16(r, &v)) return false;
        *value = std::to_string(v);
        return true;
    }
    case TYPE_INT32:
        if (!has(r, 4)) return cut_short(r);
        *value = std::to_string((int32_t)(uint32_t)take_bytes(r, 4));
        return true;
    case TYPE_INT64:
        if (!has(r, 8)) return cut_short(r);
        *value = std::to_string((long long)(int64_t)take_bytes(r, 8));
        return true;
    case TYPE_DOUBLE: {
        if (!has(r, 8)) return cut_short(r);
        uint64_t bits = take_bytes(r, 8);
        double d;
        memcpy(&d, &bits, sizeof d);
        *value = double_text(d);
        return true;
    }
    }
    assert(!"unknown value type");
    return false;
}

/* Whether the codes are two bytes wide, from the first group. */
bool code_width(Reader *r, bool *wide)
{
    size_t at = r->at;
    size_t name = sizeof FIRST_NAME;   /* "SECTION" and its NUL */
    if (r->size - at >= 1 + name && r->data[at] == 0 && !memcmp(r->data + at + 1, FIRST_NAME, name)) {
        *wide = false;
        return true;
    }
    if (r->size - at >= 2 + name && r->data[at] == 0 && r->data[at + 1] == 0 &&
        !memcmp(r->data + at + 2, FIRST_NAME, name)) {
        *wide = true;
        return true;
    }
    return fail(r, "no SECTION group follows the sentinel (offset " + std::to_string(at) + ")");
}

} // namespace

int dxf_is_binary(const char *data, size_t size)
{
    return size >= DXF_BINARY_SENTINEL_SIZE && !memcmp(data, SENTINEL, DXF_BINARY_SENTINEL_SIZE);
}

bool dxf_binary_to_text(const char *data, size_t size, std::string *text, std::string *error)
{
    text->clear();
    if (!dxf_is_binary(data, size)) {
        *error = "binary DXF: the file does not start with the binary DXF sentinel";
        return false;
    }
    Reader r = {(const unsigned char *)data, size, DXF_BINARY_SENTINEL_SIZE, DXF_BINARY_SENTINEL_SIZE, error};
    bool wide = false;
    if (!code_width(&r, &wide)) return false;
    std::string value;
    while (r.at < r.size) {
        int code;
        if (!read_code(&r, wide, &code) || !read_value(&r, code, &value)) {
            text->clear();
            return false;
        }
        *text += std::to_string(code);
        *text += '\n';
        *text += value;
        *text += '\n';
        if (code == 0 && value == "EOF") return true;
    }
    text->clear();
    return fail(&r, "the file ends at offset " + std::to_string(r.size) + " before its EOF group (cut short?)");
}
