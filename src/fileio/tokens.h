/*
 * fileio/tokens.h - the line tokeniser shared by the model file reader and
 * the preferences reader: blank-separated words, where a word that starts
 * with a double quote runs to the next double quote and a backslash inside
 * it takes the following character literally.
 */
#ifndef VESK_FILEIO_TOKENS_H
#define VESK_FILEIO_TOKENS_H

#include <cstddef>

enum { MAX_TOKENS = 64, TOKEN_STORAGE = 4096 };

struct TokenLine {
    int count;                  /* every token of the line, keyword included */
    char *token[MAX_TOKENS];    /* the first MAX_TOKENS of them */
    char storage[TOKEN_STORAGE];
};

/* Splits line into tokens.  A line longer than the storage is cut.
 * Tokens past MAX_TOKENS are counted but not kept.  Returns the count. */
int get_tokens(const char *line, TokenLine *tokens);

#endif
