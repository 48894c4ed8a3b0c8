/*
 * app/shared_state.cpp - see shared_state.h.  Linked string variables are
 * allocated with Tcl's allocator because Tcl frees and replaces them when
 * a script writes to them.
 */
#include "app/shared_state.h"
#include "edit/redo.h"
#include "app/linked_vars.h"

#include <tcl.h>

#include <cstring>

char *vesk_home = nullptr;
char *viewsetting = nullptr;
int unsaved_changes = 0;
char *current_file_name = nullptr;
int undo_count = 0;
int view_3d_textures = 1;
int person_walk_vehicle = 0;
char *vesk_version_string = nullptr;
double vesk_version_number = 2.0;

void shared_set_string(char **slot, const char *text)
{
    size_t n = strlen(text) + 1;
    char *copy = Tcl_Alloc((unsigned int)n);
    memcpy(copy, text, n);
    if (*slot) Tcl_Free(*slot);
    *slot = copy;
}

void set_current_file_name(const char *path)
{
    shared_set_string(&current_file_name, path ? path : "");
    ui_update_linked_var(&current_file_name);
}

void set_unsaved_changes(int value)
{
    /* A change made without an undo record still makes redo stale. */
    if (value) redo_new_edit();
    unsaved_changes = value ? 1 : 0;
    ui_update_linked_var(&unsaved_changes);
}

void shared_state_init(void)
{
    if (!current_file_name) shared_set_string(&current_file_name, "");
    if (!viewsetting) shared_set_string(&viewsetting, "all");
    if (!vesk_version_string) shared_set_string(&vesk_version_string, "VESK v2.0");
}

int window_is_visible(int view)
{
    const char *s = viewsetting ? viewsetting : "";
    if (strcmp(s, "all") == 0) return view >= 0 && view <= 3;
    if (strcmp(s, "xy") == 0) return view == 0;
    if (strcmp(s, "zy") == 0) return view == 1;
    if (strcmp(s, "xz") == 0) return view == 2;
    if (strcmp(s, "xyz") == 0) return view == 3;
    return 0;
}

