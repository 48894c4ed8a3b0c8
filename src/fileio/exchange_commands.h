/*
 * fileio/exchange_commands.h - the commands that read and write other
 * programs' formats (export_commands.cpp, import_commands.cpp).  Each
 * takes a file name and leaves "1" or "0" as its command result, except
 * "import_3ds", whose result is 0 on success and 1 on failure.
 */
#ifndef VESK_FILEIO_EXCHANGE_COMMANDS_H
#define VESK_FILEIO_EXCHANGE_COMMANDS_H

int command_write_vrml2(char *filename);
int command_write_vrml(char *filename);
int command_write_inventor(char *filename);
int write_tri(char *filename);

int command_import_tri(char *filename);
int command_import_3ds(char *filename);
int command_import_alias_tri(char *filename);
int import_vrml(char *filename);

#endif
