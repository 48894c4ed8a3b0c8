/*
 * fileio/tokens.cpp - the line tokeniser (see tokens.h).
 */
#include "fileio/tokens.h"

#include <cstring>

static bool is_separator(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

static bool is_line_end(char c)
{
    return c == '\0' || c == '\n' || c == '\r';
}

/* Copies a quoted token starting after its opening quote; returns the
 * position after the closing quote (or at the end of the line). */
static const char *copy_quoted(const char *p, char **out, char *limit)
{
    char *o = *out;
    while (!is_line_end(*p) && *p != '"') {
        if (*p == '\\' && !is_line_end(p[1])) p++;
        if (o < limit) *o++ = *p;
        p++;
    }
    if (*p == '"') p++;
    *out = o;
    return p;
}

int get_tokens(const char *line, TokenLine *tokens)
{
    char *out = tokens->storage;
    char *limit = tokens->storage + TOKEN_STORAGE - 1;
    const char *p = line;
    tokens->count = 0;
    for (;;) {
        while (is_separator(*p)) p++;
        if (*p == '\0' || out >= limit) break;
        char *start = out;
        if (*p == '"') {
            p = copy_quoted(p + 1, &out, limit);
        } else {
            while (*p && !is_separator(*p)) {
                if (out < limit) *out++ = *p;
                p++;
            }
        }
        *out++ = '\0';
        if (tokens->count < MAX_TOKENS) tokens->token[tokens->count] = start;
        tokens->count++;
    }
    return tokens->count;
}
