/*
 * fileio/dxf_groups.cpp - splitting a DXF text into its group code /
 * value pairs (see dxf_groups.h): Unix and DOS line ends, a byte order
 * mark, comments kept for the caller to skip; binary DXF, text that is
 * no DXF and files cut short are told apart.
 */
#include "fileio/dxf_groups.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

const size_t MAX_VALUE_LENGTH = 4096;
const char BINARY_SENTINEL[] = "AutoCAD Binary DXF";

std::string trimmed(const char *begin, const char *end)
{
    while (begin < end && (*begin == ' ' || *begin == '\t')) begin++;
    while (end > begin && (end[-1] == ' ' || end[-1] == '\t' || end[-1] == '\r')) end--;
    return std::string(begin, (size_t)(end - begin));
}

bool group_code_of(const std::string &s, int *code)
{
    if (s.empty()) return false;
    errno = 0;
    char *end = nullptr;
    long v = strtol(s.c_str(), &end, 10);
    if (*end || errno || v < -5 || v > 1071) return false;
    *code = (int)v;
    return true;
}

} // namespace

bool dxf_split_groups(const char *text, size_t size, std::vector<DxfGroup> *groups, std::string *error)
{
    /* The reader turns binary files into text before they come here. */
    if (size >= sizeof BINARY_SENTINEL - 1 && !memcmp(text, BINARY_SENTINEL, sizeof BINARY_SENTINEL - 1)) {
        *error = "this is a binary DXF file, not its text";
        return false;
    }
    size_t at = 0;
    if (size >= 3 && !memcmp(text, "\xEF\xBB\xBF", 3)) at = 3;
    long line = 0;
    bool want_code = true;
    int code = 0;
    while (at < size) {
        const char *start = text + at;
        const char *nl = (const char *)memchr(start, '\n', size - at);
        const char *end = nl ? nl : text + size;
        at = (size_t)(end - text) + (nl ? 1 : 0);
        line++;
        if ((size_t)(end - start) > MAX_VALUE_LENGTH) {
            *error = "line " + std::to_string(line) + " is too long for a DXF file";
            return false;
        }
        if (memchr(start, '\0', (size_t)(end - start))) {
            *error = "line " + std::to_string(line) + " holds binary data - this is not an ASCII DXF file";
            return false;
        }
        std::string s = trimmed(start, end);
        if (want_code) {
            if (!group_code_of(s, &code)) {
                *error = groups->empty() ? std::string("this is not a DXF file")
                                         : "line " + std::to_string(line) + ": a group code was expected";
                return false;
            }
        } else {
            groups->push_back({code, s, line - 1});
        }
        want_code = !want_code;
    }
    if (!want_code) {
        *error = "the file ends in the middle of a group (cut short?)";
        return false;
    }
    size_t first = 0;
    while (first < groups->size() && (*groups)[first].code == 999) first++;
    if (first == groups->size() || (*groups)[first].code != 0 || (*groups)[first].value != "SECTION") {
        *error = "this is not a DXF file (it does not start with a SECTION)";
        return false;
    }
    if (groups->back().code != 0 || groups->back().value != "EOF") {
        *error = "the file ends before its EOF marker (cut short?)";
        return false;
    }
    return true;
}
