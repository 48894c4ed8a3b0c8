/*
 * fileio/line_reader.h - reading a text file line by line through one
 * large buffer, with the line length limit of the model file: a line keeps
 * its first LINE_LIMIT characters and the rest of it is skipped.  Raw byte
 * blocks (a model file's "data") can be taken between lines.  Memory use
 * is fixed whatever the file holds.  Lines are handed out in place in the
 * buffer (no copy) where they can be.
 */
#ifndef VESK_FILEIO_LINE_READER_H
#define VESK_FILEIO_LINE_READER_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

enum { LINE_LIMIT = 255 };

struct LineReader {
    FILE *file;
    char *buffer;             /* unread bytes are buffer[start, end) */
    size_t capacity, start, end;
    int at_eof;
    int read_error;           /* errno of a failed read, else 0 */
    uint64_t bytes_read;      /* from the file so far */
    uint64_t file_size;       /* 0 when unknown (not a regular file) */
    long line_number;         /* lines taken so far, data lines included */
    char *line;               /* the current line, NUL terminated; valid
                                 until the next call */
    size_t line_length;       /* bytes kept in line (NUL bytes included) */
    char copy[LINE_LIMIT + 1];   /* lines that can't be handed out in place */
    int line_too_long;        /* the current line lost characters */
    int pushed_back;
};

/* Opens filename for reading.  Returns 1, or 0 with errno set (a
 * directory gives EISDIR). */
int line_reader_open(LineReader *reader, const char *filename);
void line_reader_close(LineReader *reader);
/* Takes the next line into reader->line (without its line break, NUL
 * terminated).  Returns 0 at the end of the file. */
int line_reader_next(LineReader *reader);
/* Makes the next line_reader_next return the current line again. */
void line_reader_push_back(LineReader *reader);
/* Appends up to n raw bytes that follow the current line to out; returns
 * how many there were (fewer at the end of the file). */
size_t line_reader_read_bytes(LineReader *reader, size_t n, std::string *out);
/* Skips spaces, tabs and line breaks. */
void line_reader_skip_blanks(LineReader *reader);
/* Bytes of the file consumed so far. */
uint64_t line_reader_position(const LineReader *reader);

#endif
