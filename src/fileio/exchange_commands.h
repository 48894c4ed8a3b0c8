/*
 * fileio/exchange_commands.h - the commands that read and write other
 * programs' formats (export_commands.cpp, import_commands.cpp).  Each
 * takes a file name and leaves "1" or "0" as its command result, except
 * "import_3ds", whose result is 0 on success and 1 on failure.
 */
#ifndef VESK_FILEIO_EXCHANGE_COMMANDS_H
#define VESK_FILEIO_EXCHANGE_COMMANDS_H

#include <string>

int command_write_vrml2(char *filename);
int command_write_vrml(char *filename);
int command_write_inventor(char *filename);
int write_tri(char *filename);

/* Runs a writer as an export command: the status line says what is being
 * written, then that it failed (an earlier file unchanged) or that it was
 * written, with what notes(format) says the file left out. */
int run_export_command(char *filename, const char *command, const char *format, int (*writer)(const char *),
                       std::string (*notes)(const char *format));

int command_import_tri(char *filename);
int command_import_3ds(char *filename);
int command_import_alias_tri(char *filename);
int import_vrml(char *filename);
int command_import_vector(char *filename);

#endif
