/*
 * app/shared_state.h - status values that the core shares with the
 * scripts through linked variables and that no other module owns.
 */
#ifndef VESK_APP_SHARED_STATE_H
#define VESK_APP_SHARED_STATE_H

extern char *vesk_home;              /* VESK_HOME, or the working directory */
extern char *viewsetting;            /* "all", "xy", "zy", "xz" or "xyz" */
extern int unsaved_changes;          /* set by every edit, cleared by load and save */
extern char *current_file_name;      /* the model's file, "" until it has one */
extern int undo_count;
extern int view_3d_textures;
extern int person_walk_vehicle;
extern char *vesk_version_string;    /* "VESK v2.0" */
extern double vesk_version_number;   /* 2.0 */

/* Stores a Tcl-allocated copy of text in a linked string variable. */
void shared_set_string(char **slot, const char *text);
/* Names the model's file (null or "" for none) and tells the scripts. */
void set_current_file_name(const char *path);
/* Sets or clears the unsaved-changes flag and tells the scripts. */
void set_unsaved_changes(int value);
/* Initial values; the strings are allocated for Tcl. */
void shared_state_init(void);
int window_is_visible(int view);

#endif
