/*
 * fileio/line_reader.cpp - see line_reader.h.
 */
#include "fileio/line_reader.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>

/* The buffer must hold more than a whole line. */
enum { READ_CHUNK = 1 << 20, SMALLEST_BUFFER = 4096 };

int line_reader_open(LineReader *r, const char *filename)
{
    memset(r, 0, sizeof *r);
    r->file = fopen(filename, "rb");
    if (!r->file) return 0;
    struct stat st;
    if (fstat(fileno(r->file), &st) == 0) {
        if (S_ISDIR(st.st_mode)) {
            fclose(r->file);
            r->file = nullptr;
            errno = EISDIR;
            return 0;
        }
        if (S_ISREG(st.st_mode) && st.st_size > 0) r->file_size = (uint64_t)st.st_size;
    }
    /* Our own buffer does the buffering; a small file gets a small one. */
    setvbuf(r->file, nullptr, _IONBF, 0);
    size_t capacity = READ_CHUNK;
    if (r->file_size > 0 && r->file_size + 1 < capacity) capacity = (size_t)r->file_size + 1;
    if (capacity < SMALLEST_BUFFER) capacity = SMALLEST_BUFFER;
    r->buffer = (char *)malloc(capacity);
    if (!r->buffer) {
        fclose(r->file);
        r->file = nullptr;
        errno = ENOMEM;
        return 0;
    }
    r->capacity = capacity;
    r->line = r->copy;
    return 1;
}

void line_reader_close(LineReader *r)
{
    if (r->file) fclose(r->file);
    r->file = nullptr;
    free(r->buffer);
    r->buffer = nullptr;
}

/* Reads more of the file behind the unread bytes.  Returns 0 when nothing
 * more could be read. */
static int refill(LineReader *r)
{
    if (r->at_eof) return 0;
    if (r->start > 0) {
        memmove(r->buffer, r->buffer + r->start, r->end - r->start);
        r->end -= r->start;
        r->start = 0;
    }
    if (r->end == r->capacity) return 1;
    size_t n = fread(r->buffer + r->end, 1, r->capacity - r->end, r->file);
    if (n == 0) {
        if (ferror(r->file)) r->read_error = errno ? errno : EIO;
        r->at_eof = 1;
        return 0;
    }
    r->end += n;
    r->bytes_read += n;
    return 1;
}

/* Keeps as much of bytes[0, n) in the copy as still fits. */
static void keep(LineReader *r, const char *bytes, size_t n)
{
    size_t room = LINE_LIMIT - r->line_length;
    if (n > room) {
        r->line_too_long = 1;
        n = room;
    }
    memcpy(r->copy + r->line_length, bytes, n);
    r->line_length += n;
}

/* The slow way, for a line longer than the limit or cut by the end of the
 * buffer: its start is copied and the rest skipped up to the line break. */
static void take_line_by_copy(LineReader *r)
{
    r->line_length = 0;
    for (;;) {
        if (r->start == r->end && !refill(r)) break;
        char *p = r->buffer + r->start;
        size_t avail = r->end - r->start;
        char *nl = (char *)memchr(p, '\n', avail);
        if (nl) {
            keep(r, p, (size_t)(nl - p));
            r->start += (size_t)(nl - p) + 1;
            break;
        }
        keep(r, p, avail);
        r->start = r->end;
    }
    r->copy[r->line_length] = '\0';
    r->line = r->copy;
}

int line_reader_next(LineReader *r)
{
    if (r->pushed_back) {
        r->pushed_back = 0;
        return 1;
    }
    r->line_too_long = 0;
    if (r->start == r->end && !refill(r)) {
        r->line = r->copy;
        r->copy[0] = '\0';
        r->line_length = 0;
        return 0;
    }
    r->line_number++;
    char *p = r->buffer + r->start;
    size_t avail = r->end - r->start;
    size_t scan = avail < LINE_LIMIT + 1 ? avail : LINE_LIMIT + 1;
    char *nl = (char *)memchr(p, '\n', scan);
    if (!nl && avail <= LINE_LIMIT && !r->at_eof) {
        /* The line may go on past the buffer: bring the rest in. */
        refill(r);
        p = r->buffer + r->start;
        avail = r->end - r->start;
        scan = avail < LINE_LIMIT + 1 ? avail : LINE_LIMIT + 1;
        nl = (char *)memchr(p, '\n', scan);
    }
    if (nl) {
        *nl = '\0';
        r->line = p;
        r->line_length = (size_t)(nl - p);
        r->start += r->line_length + 1;
        return 1;
    }
    take_line_by_copy(r);
    return 1;
}

void line_reader_push_back(LineReader *r)
{
    r->pushed_back = 1;
}

size_t line_reader_read_bytes(LineReader *r, size_t n, std::string *out)
{
    size_t taken = 0;
    while (taken < n) {
        if (r->start == r->end && !refill(r)) break;
        size_t chunk = r->end - r->start;
        if (chunk > n - taken) chunk = n - taken;
        const char *p = r->buffer + r->start;
        for (size_t i = 0; i < chunk; i++) r->line_number += p[i] == '\n';
        out->append(p, chunk);
        r->start += chunk;
        taken += chunk;
    }
    return taken;
}

void line_reader_skip_blanks(LineReader *r)
{
    for (;;) {
        if (r->start == r->end && !refill(r)) return;
        char c = r->buffer[r->start];
        if (c != ' ' && c != '\t' && c != '\n' && c != '\r') return;
        r->line_number += c == '\n';
        r->start++;
    }
}

uint64_t line_reader_position(const LineReader *r)
{
    return r->bytes_read - (r->end - r->start);
}
