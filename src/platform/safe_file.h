/*
 * platform/safe_file.h - writing a file without destroying the previous
 * one: the text goes to a temporary file in the same directory, which is
 * flushed, synced and renamed over the target only when everything was
 * written.  A failed save leaves the old file as it was and no temporary
 * behind; temporaries left by a process that died are removed by the next
 * save into their directory.  Saving through a symbolic link replaces the
 * file the link points to and keeps the link.
 */
#ifndef VESK_PLATFORM_SAFE_FILE_H
#define VESK_PLATFORM_SAFE_FILE_H

#include <cstdio>

struct SafeFile {
    FILE *file;
    char target[4096];
    char temp[4096];
    /* Set after opening to keep the file being replaced as target~; after
     * the commit backup_error is 0, or the errno of a backup that could
     * not be kept (the new file was still put in place). */
    int keep_backup;
    int backup_error;
};

/* Follows symbolic links from path to the file they name (which need not
 * exist yet).  Returns 0 with errno when the result does not fit in size
 * or the links loop. */
int safe_file_resolve(const char *path, char *out, size_t size);
/* Removes the temporary files in dir that a process which is gone left
 * behind (and that nobody has written for a minute); returns how many. */
int safe_file_remove_stale(const char *dir);
/* Opens a temporary file beside path.  Returns the stream, or null with
 * errno set (the target is untouched). */
FILE *safe_file_open(SafeFile *sf, const char *path);
/* Flushes, syncs and renames the temporary file over the target.  Returns
 * 1 on success; on failure removes the temporary file and returns 0 with
 * errno describing the first error. */
int safe_file_commit(SafeFile *sf);
/* Makes backup a copy of path (a hard link where the file system has
 * them, else a copy of the bytes), replacing any earlier backup only once
 * the new one is complete.  Returns 1, 2 when there was no file to keep,
 * or 0 with errno set. */
int safe_file_keep_backup(const char *path, const char *backup);
/* The same, always copying the bytes (as on file systems without hard
 * links). */
int safe_file_keep_backup_by_copy(const char *path, const char *backup);
/* Abandons the temporary file. */
void safe_file_abort(SafeFile *sf);

#endif
