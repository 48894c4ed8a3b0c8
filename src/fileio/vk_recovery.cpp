/*
 * fileio/vk_recovery.cpp - see vk_recovery.h.
 *
 * A recovery file is written by a child process made with fork: the child
 * sees the model as it was at that moment (the kernel copies pages only
 * when the parent changes them), writes it through the safe-file path and
 * exits, while the parent goes on at once.  The child writes nothing to
 * the terminal and touches neither Tcl nor the display.
 */
#include "fileio/vk_recovery.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "fileio/vk_file.h"
#include "platform/safe_file.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <ctime>
#include <unistd.h>

static const char *const kind_names[] = {"autosave", "emergency"};
static const char note_header[] = "VESK recovery\nfile ";

static std::string recovery_dir(void)
{
    std::string prefs_file = prefs_get_prefs_filename();
    size_t slash = prefs_file.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : prefs_file.substr(0, slash);
}

static std::string path_for(int kind, long pid)
{
    return recovery_dir() + "/vesk-" + kind_names[kind] + "-" + std::to_string(pid) + ".vk";
}

std::string recovery_file_path(int kind)
{
    return path_for(kind, (long)getpid());
}

static std::string note_path(const std::string &path)
{
    return path + ".info";
}

/* ---- writing, in the child ---- */

static int write_note(const std::string &path, const char *model_file)
{
    SafeFile sf;
    FILE *f = safe_file_open(&sf, note_path(path).c_str());
    if (!f) return 0;
    fputs(note_header, f);
    fputs(model_file ? model_file : "", f);
    fputc('\n', f);
    return safe_file_commit(&sf);
}

/* The child's whole life: nothing it prints reaches the terminal. */
[[noreturn]] static void child_writes(const std::string &path, const char *model_file)
{
    /* The child is a copy of a process that may have Tcl's and the
     * allocator's threads; only this thread lives on in it, and it only
     * reads the model and writes files. */
    int null_fd = open("/dev/null", O_WRONLY);
    if (null_fd >= 0) {
        dup2(null_fd, 1);
        dup2(null_fd, 2);
    }
    signal(SIGTERM, SIG_DFL);
    signal(SIGHUP, SIG_DFL);
    int ok = write_note(path, model_file) && write_vk(path.c_str());
    _exit(ok ? 0 : 1);
}

pid_t recovery_write_begin(int kind, const char *model_file)
{
    std::string path = recovery_file_path(kind);
    /* Output still buffered would otherwise be written twice. */
    fflush(stdout);
    fflush(stderr);
    pid_t child = fork();
    if (child == 0) child_writes(path, model_file);
    return child;
}

int recovery_write_poll(pid_t child, int wait)
{
    int status = 0;
    pid_t r;
    do {
        r = waitpid(child, &status, wait ? 0 : WNOHANG);
    } while (r < 0 && errno == EINTR);
    if (r == 0) return 0;
    if (r < 0) return -1;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? 1 : -1;
}

/* Waits at most seconds for the writing child, which is stopped when its
 * time is up; 1 when it wrote its file.  Safe in a signal handler:
 * waitpid, nanosleep and kill are. */
static int wait_for_writer(pid_t child, int seconds)
{
    struct timespec pause = {0, 20 * 1000 * 1000};
    for (int waited = 0; waited < seconds * 50; waited++) {
        int r = recovery_write_poll(child, 0);
        if (r != 0) return r == 1;
        nanosleep(&pause, nullptr);
    }
    kill(child, SIGKILL);
    recovery_write_poll(child, 1);
    return 0;
}

int recovery_write_now(int kind, const char *model_file, int seconds)
{
    pid_t child = recovery_write_begin(kind, model_file);
    if (child < 0) return 0;
    return wait_for_writer(child, seconds);
}

/* ---- the last moments ---- */

/* The emergency file's name, worked out beforehand: a signal handler can
 * not allocate. */
static char emergency_path[4096];

void recovery_prepare(void)
{
    snprintf(emergency_path, sizeof emergency_path, "%s", recovery_file_path(RECOVERY_EMERGENCY).c_str());
}

int recovery_emergency_save(void)
{
    if (!emergency_path[0] || !unsaved_changes) return 0;
    /* _Fork runs no fork handlers, so it can't wait on a lock that the
     * interrupted code holds; the child may still, and is then stopped
     * when its time is up. */
    pid_t child = _Fork();
    if (child < 0) return 0;
    if (child == 0) child_writes(emergency_path, current_file_name);
    return wait_for_writer(child, 10);
}

/* ---- finding them again ---- */

static void remove_pair(const std::string &path)
{
    unlink(path.c_str());
    unlink(note_path(path).c_str());
}

void recovery_remove(const RecoveryFile &file)
{
    remove_pair(file.path);
}

void recovery_discard_own(void)
{
    remove_pair(recovery_file_path(RECOVERY_AUTOSAVE));
    remove_pair(recovery_file_path(RECOVERY_EMERGENCY));
}

/* The kind and process id in a recovery file's name; 0 when the name is
 * not one. */
static int parse_name(const char *name, int *kind, long *pid)
{
    for (int k = 0; k < 2; k++) {
        std::string prefix = std::string("vesk-") + kind_names[k] + "-";
        if (strncmp(name, prefix.c_str(), prefix.size()) != 0) continue;
        char *end = nullptr;
        long n = strtol(name + prefix.size(), &end, 10);
        if (end == name + prefix.size() || n <= 0 || strcmp(end, ".vk") != 0) return 0;
        *kind = k;
        *pid = n;
        return 1;
    }
    return 0;
}

static int process_alive(long pid)
{
    return kill((pid_t)pid, 0) == 0 || errno == EPERM;
}

/* The model file named by a recovery file's note; 0 when the note is
 * missing or not one of ours. */
static int read_note(const std::string &path, std::string *model_file)
{
    FILE *f = fopen(note_path(path).c_str(), "rb");
    if (!f) return 0;
    char buffer[8192];
    size_t n = fread(buffer, 1, sizeof buffer - 1, f);
    fclose(f);
    buffer[n] = '\0';
    size_t header = sizeof note_header - 1;
    if (n < header || memcmp(buffer, note_header, header) != 0) return 0;
    std::string name(buffer + header, n - header);
    if (!name.empty() && name.back() == '\n') name.pop_back();
    *model_file = name;
    return 1;
}

/* Whether the model's own file was written after the recovery file, so
 * that the recovery file holds nothing newer. */
static int saved_since(const RecoveryFile &file)
{
    if (file.model_file.empty()) return 0;
    struct stat model, recovery;
    if (stat(file.model_file.c_str(), &model) != 0 || stat(file.path.c_str(), &recovery) != 0) return 0;
    if (model.st_mtim.tv_sec != recovery.st_mtim.tv_sec) return model.st_mtim.tv_sec > recovery.st_mtim.tv_sec;
    return model.st_mtim.tv_nsec > recovery.st_mtim.tv_nsec;
}

std::vector<RecoveryFile> recovery_files_found(void)
{
    std::vector<RecoveryFile> found;
    std::string dir = recovery_dir();
    DIR *d = opendir(dir.c_str());
    if (!d) return found;
    while (struct dirent *e = readdir(d)) {
        int kind = 0;
        long pid = 0;
        if (!parse_name(e->d_name, &kind, &pid) || pid == (long)getpid() || process_alive(pid)) continue;
        RecoveryFile file;
        file.path = dir + "/" + e->d_name;
        file.kind = kind;
        struct stat st;
        if (stat(file.path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) continue;
        file.saved = st.st_mtime;
        if (!read_note(file.path, &file.model_file)) continue;
        if (saved_since(file)) {
            recovery_remove(file);
            continue;
        }
        found.push_back(file);
    }
    closedir(d);
    std::sort(found.begin(), found.end(),
              [](const RecoveryFile &a, const RecoveryFile &b) { return a.saved > b.saved; });
    return found;
}

int recovery_adopt(const RecoveryFile &file)
{
    std::string own = recovery_file_path(RECOVERY_AUTOSAVE);
    if (file.path == own) return 1;
    if (rename(file.path.c_str(), own.c_str()) != 0) return 0;
    rename(note_path(file.path).c_str(), note_path(own).c_str());
    return 1;
}
