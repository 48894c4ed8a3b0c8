/*
 * edit/text.h - text made of line surfaces from a vector font.  The font
 * is a model file (the preference fontpath, "font.vk" by default) whose
 * objects are the glyphs, each named by its character.
 */
#ifndef VESK_EDIT_TEXT_H
#define VESK_EDIT_TEXT_H

#include "vesk.h"

#include <string>

/* Where the font file is: fontpath as given when it is absolute, else the
 * first of the working directory, VESK_HOME and the installed data
 * directory that holds it.  Empty when none does. */
std::string find_font_file(const char *fontpath);
/* The string spelt in the font's glyphs, starting at the origin on the
 * baseline in the XY plane; each glyph is advanced by its width plus the
 * preference font_char_offset.  Characters the font lacks are skipped
 * with a console message.  Returns a new object in no tree, or none with
 * a message when the font cannot be read or nothing could be spelt. */
Object *text_object(const char *text);
/* Commands "add_text" and "create_text": the text as a new selected
 * object. */
int add_text(char *text);

#endif
