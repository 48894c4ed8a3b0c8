/*
 * app/autosave.h - autosaving unsaved work, the emergency save when the
 * program is stopped or faults beyond repair, and recovering such work at
 * the next start (see autosave.cpp).
 */
#ifndef VESK_APP_AUTOSAVE_H
#define VESK_APP_AUTOSAVE_H

/* Installs the emergency save (SIGTERM, SIGHUP, unrecoverable faults) and
 * the removal of this process's recovery files at a normal exit; with
 * with_timer, also the timer that autosaves (needs an event loop). */
void autosave_init(int with_timer);
/* Offers to recover the newest work a stopped program left unsaved
 * (through the script procedure ::vesk::ops::offer_recovery).  Returns 1
 * when a model was opened (the recovered work or its original file). */
int startup_offer_recovery(void);

/* The added commands (each leaves "1" or "0", recovery_files a list of
 * {path model_file seconds kind}). */
int command_autosave_now(void);
int command_recovery_files(void);
int command_recover_file(char *path);
int command_discard_recovery_file(char *path);

#endif
