/*
 * fileio/vk_recovery.h - the recovery files that keep a user's work alive
 * through a crash: autosaves written by a forked child from a
 * copy-on-write snapshot of the model, so the interface never waits for
 * them; the emergency save written when the program is about to die; and
 * finding both again at the next start.
 *
 * They live beside the preferences file, one pair per process:
 * "vesk-autosave-PID.vk" (or "vesk-emergency-PID.vk") holds the model,
 * and the same name with ".info" after it names the model's own file
 * (empty for a model that was never saved).
 */
#ifndef VESK_FILEIO_VK_RECOVERY_H
#define VESK_FILEIO_VK_RECOVERY_H

#include <ctime>
#include <string>
#include <sys/types.h>
#include <vector>

enum { RECOVERY_AUTOSAVE, RECOVERY_EMERGENCY };

/* The file the model would be autosaved to (kind RECOVERY_AUTOSAVE) or
 * saved to in an emergency, for this process. */
std::string recovery_file_path(int kind);

/* Starts writing the model and model_file's name to this process's
 * recovery file of the given kind in a forked child.  Returns the child's
 * process id, or -1 with errno when no child could be started. */
pid_t recovery_write_begin(int kind, const char *model_file);
/* Whether the child has finished: 1 when it wrote the file, -1 when it
 * failed, 0 while it runs (with wait set, waits for it). */
int recovery_write_poll(pid_t child, int wait);
/* Writes a recovery file and waits at most seconds for it (for the last
 * moments of the program, and for scripts).  Returns 1 when written. */
int recovery_write_now(int kind, const char *model_file, int seconds);

/* Works out the emergency file's name; call once at start-up. */
void recovery_prepare(void);
/* Writes the emergency file when the model has unsaved changes; safe to
 * call from a signal handler (the writing happens in a child, which gets
 * ten seconds).  Returns 1 when written. */
int recovery_emergency_save(void);

/* Removes this process's recovery files (after a save, or when the model
 * they hold is given up). */
void recovery_discard_own(void);

/* A recovery file left by a process that is gone. */
struct RecoveryFile {
    std::string path;        /* the recovery file */
    std::string model_file;  /* the model's own file, "" for none */
    time_t saved;            /* when it was written */
    int kind;
};

/* The recovery files of processes that are gone and that hold work newer
 * than their model's file (or of a model never saved), newest first.
 * Ones older than their model's file were saved since: they are removed. */
std::vector<RecoveryFile> recovery_files_found(void);
/* Removes a recovery file and its note. */
void recovery_remove(const RecoveryFile &file);
/* Makes a found recovery file this process's autosave, so that it stays
 * until the recovered work is saved. */
int recovery_adopt(const RecoveryFile &file);

#endif
