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

int safe_file_commit(SafeFile *sf)
{
    int ok = !ferror(sf->file) && fflush(sf->file) == 0 && fsync(fileno(sf->file)) == 0;
    int e = errno;
    if (fclose(sf->file) != 0 && ok) {
        ok = 0;
        e = errno;
    }
    sf->file = nullptr;
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
