/*
 * app/added_commands.h - registering the commands this program adds
 * beyond the built-in table (see added_commands.cpp).
 */
#ifndef VESK_APP_ADDED_COMMANDS_H
#define VESK_APP_ADDED_COMMANDS_H

/* Registers them once; later calls do nothing. */
void register_added_commands(void);
/* How many there are. */
int num_added_builtin_commands(void);

#endif
