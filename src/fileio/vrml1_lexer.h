/*
 * fileio/vrml1_lexer.h - the tokens of a VRML 1.0 or Inventor ASCII
 * file: braces, brackets, parentheses, words (names and numbers alike)
 * and quoted strings.  Commas are blanks.  Comments are dropped, except
 * "# Object NAME" comments, which the writers put before an object and
 * the reader turns back into the object's name.
 */
#ifndef VESK_FILEIO_VRML1_LEXER_H
#define VESK_FILEIO_VRML1_LEXER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

enum Vrml1TokenKind {
    VRML_WORD,
    VRML_STRING,        /* the text between the quotes, escapes unresolved */
    VRML_OPEN_BRACE,
    VRML_CLOSE_BRACE,
    VRML_OPEN_BRACKET,
    VRML_CLOSE_BRACKET,
    VRML_OPEN_PAREN,
    VRML_CLOSE_PAREN,
    VRML_BAR,
    VRML_OBJECT_COMMENT /* "# Object NAME": the text is NAME */
};

/* A token is a piece of the file's text, so that a large file costs a
 * few words per token. */
struct Vrml1Token {
    size_t offset;
    uint32_t length;
    uint32_t line;
    uint8_t kind;
};

/* The token's text; strings with their escapes resolved. */
std::string vrml1_token_text(const char *text, const Vrml1Token &token);

/* Splits the text after its header line into tokens.  Returns 1, or 0
 * with a message in error (an unterminated string). */
int vrml1_tokenize(const char *text, size_t size, std::vector<Vrml1Token> *tokens, std::string *error);

#endif
