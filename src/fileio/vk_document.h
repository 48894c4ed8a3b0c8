/*
 * fileio/vk_document.h - the model as a document: opening a file in
 * place of the model, merging one into it, a new empty model, reverting
 * to the saved file and opening its backup.  A file is read whole before
 * anything of the model changes; see vk_document.cpp.
 */
#ifndef VESK_FILEIO_VK_DOCUMENT_H
#define VESK_FILEIO_VK_DOCUMENT_H

#include <string>

/* The name a save keeps the replaced file under: the file path names
 * (through any symbolic links) followed by "~". */
std::string backup_file_name(const char *path);

/* The added commands; each leaves "1" (done) or "0" (not done). */
int command_open_vk(char *filename);
int command_merge_vk(char *filename);
int command_new_model(void);
int command_revert_vk(void);
int command_open_backup_vk(void);

/* Opens a recovery file in place of the model as the unsaved work of
 * model_file ("" for an untitled model); 0 when it was not read whole. */
int open_recovered(const char *path, const char *model_file);

/* Opens a model file in place of the model, once it has been read whole,
 * as its file with nothing unsaved ("open_vk", the model named on the
 * command line); 0, after telling the user, when it was not read whole
 * and the model is unchanged. */
int open_model_file(const char *filename);

#endif
