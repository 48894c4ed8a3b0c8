/*
 * fileio/reader_3ds_source.cpp - the two sources the 3DS parse reads
 * from, a file and a block of memory, each with the same five
 * operations.  Words are little-endian whatever the machine.  The file
 * is read a word at a time, so without stdio's locking.  A failed
 * operation prints its message once and marks the source failed, which
 * ends the parse.
 */
#include "fileio/reader_3ds.h"

#include <cstring>

static int fail(Source3ds *s, const char *message, long offset)
{
    if (!s->failed) console_printf(message, (int)offset);
    s->failed = 1;
    return 0;
}

/* ---- file ---- */

static int file_read_bytes(Source3ds *s, void *out, long n)
{
    if (s->failed) return 0;
    if (n <= 0) return 1;
    if (fread_unlocked(out, 1, (size_t)n, s->file) != (size_t)n) return fail(s, "Error reading file (offset %d)\n", ftell(s->file));
    return 1;
}

static int file_read16(Source3ds *s, uint16_t *out)
{
    unsigned char b[2];
    if (s->failed) return 0;
    if (fread_unlocked(b, 1, 2, s->file) != 2) return fail(s, "Error reading word in file (offset %d)\n", ftell(s->file));
    *out = (uint16_t)(b[0] | b[1] << 8);
    return 1;
}

static int file_read32(Source3ds *s, uint32_t *out)
{
    unsigned char b[4];
    if (s->failed) return 0;
    if (fread_unlocked(b, 1, 4, s->file) != 4) return fail(s, "Error reading file (offset %d)\n", ftell(s->file));
    *out = (uint32_t)b[0] | (uint32_t)b[1] << 8 | (uint32_t)b[2] << 16 | (uint32_t)b[3] << 24;
    return 1;
}

static long file_get_position(Source3ds *s)
{
    long p = ftell(s->file);
    if (p < 0) {
        fail(s, "Error getting fileposition\n", 0);
        return 0;
    }
    return p;
}

static int file_set_position(Source3ds *s, long position)
{
    if (s->failed) return 0;
    if (position < 0 || position > s->size || fseek(s->file, position, SEEK_SET) != 0) {
        return fail(s, "Error moving filepointer\n", 0);
    }
    return 1;
}

void source_3ds_file(Source3ds *s, FILE *file, long size)
{
    memset(s, 0, sizeof *s);
    s->file = file;
    s->size = size;
    s->read16 = file_read16;
    s->read32 = file_read32;
    s->read_bytes = file_read_bytes;
    s->get_position = file_get_position;
    s->set_position = file_set_position;
}

/* ---- memory ---- */

static int memory_read_bytes(Source3ds *s, void *out, long n)
{
    if (s->failed) return 0;
    if (n < 0 || n > s->size - s->position) return fail(s, "Bad memread\n", 0);
    if (n) memcpy(out, s->data + s->position, (size_t)n);
    s->position += n;
    return 1;
}

static int memory_read16(Source3ds *s, uint16_t *out)
{
    unsigned char b[2];
    if (!memory_read_bytes(s, b, 2)) return 0;
    *out = (uint16_t)(b[0] | b[1] << 8);
    return 1;
}

static int memory_read32(Source3ds *s, uint32_t *out)
{
    unsigned char b[4];
    if (!memory_read_bytes(s, b, 4)) return 0;
    *out = (uint32_t)b[0] | (uint32_t)b[1] << 8 | (uint32_t)b[2] << 16 | (uint32_t)b[3] << 24;
    return 1;
}

static long memory_get_position(Source3ds *s)
{
    return s->position;
}

static int memory_set_position(Source3ds *s, long position)
{
    if (s->failed) return 0;
    if (position < 0 || position > s->size) return fail(s, "Bad memsetpos\n", 0);
    s->position = position;
    return 1;
}

void source_3ds_memory(Source3ds *s, const unsigned char *data, long size)
{
    memset(s, 0, sizeof *s);
    s->data = data;
    s->size = size;
    s->read16 = memory_read16;
    s->read32 = memory_read32;
    s->read_bytes = memory_read_bytes;
    s->get_position = memory_get_position;
    s->set_position = memory_set_position;
}
