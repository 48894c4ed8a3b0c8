/*
 * platform/safe_file.h - writing a file without destroying the previous
 * one: the text goes to a temporary file in the same directory, which is
 * flushed, synced and renamed over the target only when everything was
 * written.  A failed save leaves the old file as it was.
 */
#ifndef VESK_PLATFORM_SAFE_FILE_H
#define VESK_PLATFORM_SAFE_FILE_H

#include <cstdio>

struct SafeFile {
    FILE *file;
    char target[4096];
    char temp[4096];
};

/* Opens a temporary file beside path.  Returns the stream, or null with
 * errno set (the target is untouched). */
FILE *safe_file_open(SafeFile *sf, const char *path);
/* Flushes, syncs and renames the temporary file over the target.  Returns
 * 1 on success; on failure removes the temporary file and returns 0 with
 * errno describing the first error. */
int safe_file_commit(SafeFile *sf);
/* Abandons the temporary file. */
void safe_file_abort(SafeFile *sf);

#endif
