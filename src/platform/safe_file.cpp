/*
 * platform/safe_file.cpp - see safe_file.h.
 */
#include "platform/safe_file.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

FILE *safe_file_open(SafeFile *sf, const char *path)
{
    sf->file = nullptr;
    sf->keep_backup = 0;
    sf->backup_error = 0;
    size_t n = strlen(path);
    if (n == 0 || n + 16 >= sizeof sf->temp) {
        errno = ENAMETOOLONG;
        if (n == 0) errno = ENOENT;
        return nullptr;
    }
    memcpy(sf->target, path, n + 1);
    snprintf(sf->temp, sizeof sf->temp, "%s.tmpXXXXXX", path);
    int fd = mkstemp(sf->temp);
    if (fd < 0) return nullptr;
    /* Keep the permissions of the file being replaced. */
    struct stat st;
    mode_t mode = 0644;
    if (stat(path, &st) == 0) mode = st.st_mode & 07777;
    else {
        mode_t mask = umask(0);
        umask(mask);
        mode = 0666 & ~mask;
    }
    fchmod(fd, mode);
    sf->file = fdopen(fd, "w");
    if (!sf->file) {
        int e = errno;
        close(fd);
        unlink(sf->temp);
        errno = e;
    }
    return sf->file;
}

/* Copies the bytes of one open file to another; 1, or 0 with errno. */
static int copy_bytes(int from, int to)
{
    char buffer[1 << 16];
    for (;;) {
        ssize_t n = read(from, buffer, sizeof buffer);
        if (n == 0) return 1;
        if (n < 0) {
            if (errno == EINTR) continue;
            return 0;
        }
        for (ssize_t done = 0; done < n;) {
            ssize_t w = write(to, buffer + done, (size_t)(n - done));
            if (w < 0) {
                if (errno == EINTR) continue;
                return 0;
            }
            done += w;
        }
    }
}

/* Fills the new file at temp with a copy of path's bytes and mode. */
static int copy_file(const char *path, const char *temp, mode_t mode)
{
    int from = open(path, O_RDONLY);
    if (from < 0) return 0;
    int to = open(temp, O_WRONLY | O_CREAT | O_TRUNC, mode);
    if (to < 0) {
        int e = errno;
        close(from);
        errno = e;
        return 0;
    }
    int ok = copy_bytes(from, to) && fsync(to) == 0;
    int e = errno;
    close(from);
    if (close(to) != 0 && ok) {
        ok = 0;
        e = errno;
    }
    errno = e;
    return ok;
}

/* The two ways of keeping a backup: a hard link keeps the old bytes
 * without copying them; where links are not to be had, the bytes are
 * copied.  The backup is made under a temporary name and renamed over the
 * earlier one only when complete. */
static int keep_backup(const char *path, const char *backup, int may_link)
{
    struct stat st;
    if (stat(path, &st) != 0) return errno == ENOENT ? 2 : 0;
    if (!S_ISREG(st.st_mode)) return 2;
    char temp[4096 + 16];
    if (snprintf(temp, sizeof temp, "%s.tmpXXXXXX", backup) >= (int)sizeof temp) {
        errno = ENAMETOOLONG;
        return 0;
    }
    int fd = mkstemp(temp);
    if (fd < 0) return 0;
    close(fd);
    unlink(temp);
    int ok = (may_link && link(path, temp) == 0) || copy_file(path, temp, st.st_mode & 07777);
    if (ok && rename(temp, backup) == 0) return 1;
    int e = errno;
    unlink(temp);
    errno = e;
    return 0;
}

int safe_file_keep_backup(const char *path, const char *backup)
{
    return keep_backup(path, backup, 1);
}

int safe_file_keep_backup_by_copy(const char *path, const char *backup)
{
    return keep_backup(path, backup, 0);
}

static void keep_backup_of_target(SafeFile *sf)
{
    char backup[sizeof sf->target + 1];
    snprintf(backup, sizeof backup, "%s~", sf->target);
    if (safe_file_keep_backup(sf->target, backup) == 0) sf->backup_error = errno ? errno : EIO;
}

int safe_file_commit(SafeFile *sf)
{
    int ok = !ferror(sf->file) && fflush(sf->file) == 0 && fsync(fileno(sf->file)) == 0;
    int e = errno;
    if (fclose(sf->file) != 0 && ok) {
        ok = 0;
        e = errno;
    }
    sf->file = nullptr;
    if (ok && sf->keep_backup) keep_backup_of_target(sf);
    if (ok && rename(sf->temp, sf->target) != 0) {
        ok = 0;
        e = errno;
    }
    if (!ok) {
        unlink(sf->temp);
        errno = e ? e : EIO;
    }
    return ok;
}

void safe_file_abort(SafeFile *sf)
{
    if (sf->file) fclose(sf->file);
    sf->file = nullptr;
    unlink(sf->temp);
}
