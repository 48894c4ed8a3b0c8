/*
 * app/commands.h - the command registry and dispatcher, and the command
 * functions that live in the application shell.
 */
#ifndef VESK_APP_COMMANDS_H
#define VESK_APP_COMMANDS_H

#include "vesk.h"

extern Command builtin_commands[];
extern int num_builtin_commands;
extern List *added_commands;
/* Name of the command being run, for the stubs' message. */
extern const char *command_running_name;

Command *find_command(const char *name);

/* Stubs for commands whose operation this build does not have yet. */
int not_available_none(void);
int not_available_d(int);
int not_available_f(float);
int not_available_s(char *);
int not_available_sd(char *, int);
int not_available_ff(float, float);
int not_available_fff(float, float, float);
int not_available_ffffff(float, float, float, float, float, float);

/* Commands answered from the model (model_commands.cpp). */
int tcl_get_world(void);
int tcl_object_get_children(int id);
int tcl_object_get_name(int id);
int command_object_get_surfaces(int id);
int command_object_get_vertices(int id);
int command_object_get_centre(int id);
int command_object_get_url(int id);
int command_object_get_data(int id);
int command_object_is_hidden(int id);
int command_object_hide(int id);
int command_object_unhide(int id);
int set_current_object_name(char *text);
int set_current_object_url(char *text);
int set_current_object_data(char *text);
int command_get_info(void);
int command_list(void);
int system_execute(char *command);
int command_new_palette_entry(int index);

/* Looks up an object handle given by a script; prints a console message
 * naming the command and returns null when it names no live object. */
Object *object_from_script_id(int id);

#endif
