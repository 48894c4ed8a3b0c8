/*
 * fileio/text_out.cpp - see text_out.h.
 */
#include "fileio/text_out.h"

#include <cerrno>
#include <cstdlib>

enum { OUT_BUFFER = 1 << 20 };

int text_out_open(TextOut *out, FILE *file)
{
    out->file = file;
    out->used = 0;
    out->error = 0;
    out->capacity = OUT_BUFFER;
    out->data = (char *)malloc(OUT_BUFFER);
    if (!out->data) {
        out->error = ENOMEM;
        return 0;
    }
    return 1;
}

void text_out_flush(TextOut *out)
{
    if (out->used == 0) return;
    if (!out->error && fwrite(out->data, 1, out->used, out->file) != out->used) {
        out->error = errno ? errno : EIO;
    }
    out->used = 0;
}

int text_out_close(TextOut *out)
{
    if (out->data) text_out_flush(out);
    free(out->data);
    out->data = nullptr;
    return out->error == 0;
}

void text_out_large(TextOut *out, const char *bytes, size_t n)
{
    text_out_flush(out);
    if (!out->error && fwrite(bytes, 1, n, out->file) != n) out->error = errno ? errno : EIO;
}

void text_out_quoted(TextOut *out, const char *text)
{
    text_out_char(out, '"');
    for (const char *p = text ? text : ""; *p; p++) {
        char c = *p;
        if (c == '\n' || c == '\r') c = ' ';
        if (c == '\\' || c == '"') text_out_char(out, '\\');
        text_out_char(out, c);
    }
    text_out_char(out, '"');
}
