/*
 * fileio/vrml1_lexer.cpp - splitting VRML 1.0 and Inventor text into
 * tokens (see vrml1_lexer.h).
 */
#include "fileio/vrml1_lexer.h"

#include <cstring>

static bool is_blank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == ',' || c == '\f' || c == '\v' || c == '\0';
}

static bool is_special(char c)
{
    return strchr("{}[]()|\"#", c) != nullptr;
}

int vrml1_tokenize(const char *text, size_t size, std::vector<Vrml1Token> *tokens, std::string *error)
{
    size_t i = 0;
    long line = 1;
    while (i < size) {
        char c = text[i];
        if (c == '\n') line++;
        if (is_blank(c)) {
            i++;
            continue;
        }
        if (c == '#') {
            size_t end = i;
            while (end < size && text[end] != '\n') end++;
            static const char mark[] = "# Object ";
            if (end - i > sizeof mark - 1 && !memcmp(text + i, mark, sizeof mark - 1)) {
                size_t from = i + sizeof mark - 1, to = end;
                while (to > from && (text[to - 1] == '\r' || text[to - 1] == ' ')) to--;
                tokens->push_back({from, (uint32_t)(to - from), (uint32_t)line, VRML_OBJECT_COMMENT});
            }
            i = end;
            continue;
        }
        if (c == '"') {
            long start_line = line;
            size_t from = ++i;
            while (i < size && text[i] != '"') {
                if (text[i] == '\\' && i + 1 < size) i++;
                if (text[i] == '\n') line++;
                i++;
            }
            if (i >= size) {
                *error = "a string that starts on line " + std::to_string(start_line) + " has no end";
                return 0;
            }
            tokens->push_back({from, (uint32_t)(i - from), (uint32_t)start_line, VRML_STRING});
            i++;
            continue;
        }
        Vrml1TokenKind kind = VRML_WORD;
        switch (c) {
        case '{': kind = VRML_OPEN_BRACE; break;
        case '}': kind = VRML_CLOSE_BRACE; break;
        case '[': kind = VRML_OPEN_BRACKET; break;
        case ']': kind = VRML_CLOSE_BRACKET; break;
        case '(': kind = VRML_OPEN_PAREN; break;
        case ')': kind = VRML_CLOSE_PAREN; break;
        case '|': kind = VRML_BAR; break;
        default: break;
        }
        if (kind != VRML_WORD) {
            tokens->push_back({i, 1, (uint32_t)line, (uint8_t)kind});
            i++;
            continue;
        }
        size_t end = i;
        while (end < size && !is_blank(text[end]) && !is_special(text[end])) end++;
        if (end - i > UINT32_MAX) {
            *error = "a word on line " + std::to_string(line) + " is too long";
            return 0;
        }
        tokens->push_back({i, (uint32_t)(end - i), (uint32_t)line, VRML_WORD});
        i = end;
    }
    return 1;
}

std::string vrml1_token_text(const char *text, const Vrml1Token &token)
{
    const char *p = text + token.offset;
    if (token.kind != VRML_STRING) return std::string(p, token.length);
    std::string s;
    for (uint32_t i = 0; i < token.length; i++) {
        if (p[i] == '\\' && i + 1 < token.length) i++;
        s.push_back(p[i]);
    }
    return s;
}
