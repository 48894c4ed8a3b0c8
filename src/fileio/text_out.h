/*
 * fileio/text_out.h - buffered text output for the file writers: numbers
 * in the shortest form that reads back exactly, without the locale and
 * without a library call per character.  A write error is remembered (with
 * its errno) and later output is dropped.  The small writers are inline:
 * a model file is tens of millions of them.
 */
#ifndef VESK_FILEIO_TEXT_OUT_H
#define VESK_FILEIO_TEXT_OUT_H

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

struct TextOut {
    FILE *file;
    char *data;
    size_t used, capacity;
    int error;               /* errno of the first failed write, else 0 */
};

enum { TEXT_OUT_NUMBER_ROOM = 64 };

/* 1 when the buffer could be made.  The other calls may only be made
 * between a successful open and the close. */
int text_out_open(TextOut *out, FILE *file);
/* Writes what is buffered and releases the buffer; returns 1 when every
 * write succeeded. */
int text_out_close(TextOut *out);
/* Writes the buffer out. */
void text_out_flush(TextOut *out);
/* Bytes too many for the buffer go straight to the file. */
void text_out_large(TextOut *out, const char *bytes, size_t n);
/* text in double quotes, a backslash before every backslash and double
 * quote.  Line breaks would end the line early, so they are written as
 * blanks. */
void text_out_quoted(TextOut *out, const char *text);

/* Room for n more bytes at the end of the buffer. */
static inline char *text_out_room(TextOut *out, size_t n)
{
    if (out->used + n > out->capacity) text_out_flush(out);
    return out->data + out->used;
}

static inline void text_out_char(TextOut *out, char c)
{
    *text_out_room(out, 1) = c;
    out->used++;
}

static inline void text_out_bytes(TextOut *out, const char *bytes, size_t n)
{
    if (n > out->capacity / 2) {
        text_out_large(out, bytes, n);
        return;
    }
    memcpy(text_out_room(out, n), bytes, n);
    out->used += n;
}

static inline void text_out_string(TextOut *out, const char *text)
{
    text_out_bytes(out, text, strlen(text));
}

/* Integers, and floats and doubles in the shortest text that reads back
 * (as their own type) to exactly the value. */
template <typename T> static inline void text_out_number(TextOut *out, T value)
{
    char *p = text_out_room(out, TEXT_OUT_NUMBER_ROOM);
    out->used += (size_t)(std::to_chars(p, p + TEXT_OUT_NUMBER_ROOM, value).ptr - p);
}

static inline void text_out_uint(TextOut *out, uint64_t value) { text_out_number(out, value); }
static inline void text_out_int(TextOut *out, long long value) { text_out_number(out, value); }
static inline void text_out_float(TextOut *out, float value) { text_out_number(out, value); }
static inline void text_out_double(TextOut *out, double value) { text_out_number(out, value); }

#endif
