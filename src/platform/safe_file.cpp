/*
 * platform/safe_file.cpp - see safe_file.h.
 */
#include "platform/safe_file.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

/* Temporary files are named ".vesk-PID-XXXXXX" in the directory of the
 * file they will replace: short enough whatever the target's name (a
 * 255-byte name still saves), and marked with the writing process, so
 * that a later save can tell a leftover of a process that died from a
 * save in progress. */
static const char temp_prefix[] = ".vesk-";
enum { STALE_SECONDS = 60, MAX_LINKS = 40 };

/* The directory part of path, "." when it has none. */
static void directory_of(const char *path, char *dir, size_t size)
{
    const char *slash = strrchr(path, '/');
    if (!slash) {
        snprintf(dir, size, ".");
        return;
    }
    size_t n = slash == path ? 1 : (size_t)(slash - path);
    if (n >= size) n = size - 1;
    memcpy(dir, path, n);
    dir[n] = '\0';
}

int safe_file_resolve(const char *path, char *out, size_t size)
{
    if (snprintf(out, size, "%s", path) >= (int)size) return errno = ENAMETOOLONG, 0;
    for (int i = 0; i < MAX_LINKS; i++) {
        struct stat st;
        if (lstat(out, &st) != 0 || !S_ISLNK(st.st_mode)) return 1;
        char link[4096];
        ssize_t n = readlink(out, link, sizeof link - 1);
        if (n < 0) return 1;
        link[n] = '\0';
        if (link[0] == '/') {
            if (snprintf(out, size, "%s", link) >= (int)size) return errno = ENAMETOOLONG, 0;
            continue;
        }
        char dir[4096];
        directory_of(out, dir, sizeof dir);
        if (snprintf(out, size, "%s/%s", dir, link) >= (int)size) return errno = ENAMETOOLONG, 0;
    }
    errno = ELOOP;
    return 0;
}

/* The process id in a temporary's name, or 0 when the name is not one of
 * ours. */
static long temp_owner(const char *name)
{
    size_t prefix = sizeof temp_prefix - 1;
    if (strncmp(name, temp_prefix, prefix) != 0) return 0;
    char *end = nullptr;
    long pid = strtol(name + prefix, &end, 10);
    if (end == name + prefix || pid <= 0 || *end != '-' || strlen(end + 1) != 6) return 0;
    return pid;
}

int safe_file_remove_stale(const char *dir)
{
    DIR *d = opendir(dir);
    if (!d) return 0;
    int removed = 0;
    time_t now = time(nullptr);
    while (struct dirent *e = readdir(d)) {
        long pid = temp_owner(e->d_name);
        if (pid == 0 || pid == (long)getpid()) continue;
        if (kill((pid_t)pid, 0) == 0 || errno != ESRCH) continue;
        char path[4096 + 256];
        snprintf(path, sizeof path, "%s/%s", dir, e->d_name);
        struct stat st;
        if (lstat(path, &st) != 0 || !S_ISREG(st.st_mode)) continue;
        /* A file still being written elsewhere (another machine sharing
         * the directory) keeps changing. */
        if (now - st.st_mtime < STALE_SECONDS) continue;
        removed += unlink(path) == 0;
    }
    closedir(d);
    return removed;
}

/* Creates a new temporary file in dir; its name goes to temp. */
static int make_temp(const char *dir, char *temp, size_t size)
{
    if (snprintf(temp, size, "%s/%s%ld-XXXXXX", dir, temp_prefix, (long)getpid()) >= (int)size) {
        errno = ENAMETOOLONG;
        return -1;
    }
    return mkstemp(temp);
}

/* The mode a new file gets: that of the file it replaces, else the
 * default for new files. */
static mode_t mode_for(const char *path)
{
    struct stat st;
    if (stat(path, &st) == 0) return st.st_mode & 07777;
    mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

FILE *safe_file_open(SafeFile *sf, const char *path)
{
    sf->file = nullptr;
    sf->keep_backup = 0;
    sf->backup_error = 0;
    sf->temp[0] = '\0';
    if (!path || !*path) {
        errno = ENOENT;
        return nullptr;
    }
    if (!safe_file_resolve(path, sf->target, sizeof sf->target)) return nullptr;
    char dir[sizeof sf->target];
    directory_of(sf->target, dir, sizeof dir);
    safe_file_remove_stale(dir);
    int fd = make_temp(dir, sf->temp, sizeof sf->temp);
    if (fd < 0) return nullptr;
    fchmod(fd, mode_for(sf->target));
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
    char dir[4096], temp[4096 + 32];
    directory_of(backup, dir, sizeof dir);
    int fd = make_temp(dir, temp, sizeof temp);
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
