/*
 * edit/text.cpp - text from a vector font (see text.h).
 *
 * The font is read with the model file reader into a group that is never
 * part of the model, and freed after use.  A glyph's width is the x extent
 * of all its vertices: the font marks each glyph's bearings with two
 * vertices that no surface uses, so the extent includes the space on
 * either side.  Only the vertices that the glyph's surfaces use are copied
 * into the text.
 */
#include "edit/text.h"
#include "edit/primitive_append.h"
#include "edit/primitives.h"
#include "edit/selection.h"
#include "edit/surface_ops.h"
#include "edit/undo.h"
#include "edit/pointer_table.h"
#include "fileio/vk_file.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "core/internal.h"
#include "view/redraw.h"

#include <cstdlib>
#include <unistd.h>

#ifndef VESK_DATA_DIR
#define VESK_DATA_DIR "/usr/local/share/vesk"
#endif

std::string find_font_file(const char *fontpath)
{
    if (!fontpath || !*fontpath) return std::string();
    if (fontpath[0] == '/') return access(fontpath, R_OK) == 0 ? std::string(fontpath) : std::string();
    const char *home = vesk_home && *vesk_home ? vesk_home : getenv("VESK_HOME");
    std::string candidates[3] = {fontpath, home && *home ? std::string(home) + "/" + fontpath : std::string(),
                                 std::string(VESK_DATA_DIR) + "/" + fontpath};
    for (const std::string &path : candidates) {
        if (!path.empty() && access(path.c_str(), R_OK) == 0) return path;
    }
    return std::string();
}

/* The font's glyphs as children of a new group, or none. */
static Object *load_font(void)
{
    const char *fontpath = prefs.fontpath ? prefs.fontpath : "";
    std::string path = find_font_file(fontpath);
    if (path.empty()) {
        windows_message_dialog("Add text:\ncan't find the font file '%s'\n(looked in the working directory, "
                               "VESK_HOME and %s)",
                               fontpath, VESK_DATA_DIR);
        return nullptr;
    }
    Object *font = new_group();
    if (!readfile_vk(path.c_str(), font, 0) || !font->kids) {
        windows_message_dialog("Add text:\nthe font file '%s' could not be read", path.c_str());
        object_free(font);
        return nullptr;
    }
    return font;
}

/* The glyph of each character: the first object named by it. */
static void index_glyphs(Object *font, Object *glyphs[256])
{
    for (int c = 0; c < 256; c++) glyphs[c] = nullptr;
    for (List *k = font->kids; k; k = k->next) {
        Object *g = (Object *)k->item;
        if (!g->name || !g->name[0] || g->name[1]) continue;
        unsigned char c = (unsigned char)g->name[0];
        if (!glyphs[c]) glyphs[c] = g;
    }
}

/* The x range of the glyph's vertices; 0 and 0 when it has none. */
static void glyph_extent(Object *glyph, float *min_x, float *max_x)
{
    *min_x = *max_x = 0.0f;
    int first = 1;
    for (List *v = glyph->vertices; v; v = v->next) {
        float x = ((Vertex *)v->item)->point[0];
        if (first || x < *min_x) *min_x = x;
        if (first || x > *max_x) *max_x = x;
        first = 0;
    }
}

/* Copies the glyph's surfaces, and the vertices they use, moved by dx. */
static void place_glyph(ObjectAppender *append, Object *glyph, float dx)
{
    PointerTable copies;
    for (List *s = glyph->surfaces; s; s = s->next) {
        Surface *source = (Surface *)s->item;
        Surface *copy = new_surface();
        surface_copy_properties(source, copy);
        RefAppender refs = ref_appender_start(copy);
        for (List *r = source->vertrefs; r; r = r->next) {
            SVertex *ref = (SVertex *)r->item;
            if (!ref->vertex) continue;
            Vertex *v = (Vertex *)ptable_value(&copies, ref->vertex);
            if (!v) {
                const float *p = ref->vertex->point;
                v = appender_new_vertex(append, p[0] + dx, p[1], p[2]);
                ptable_set(&copies, ref->vertex, (uintptr_t)v);
            }
            ref_append(&refs, v, ref->u, ref->v);
        }
        appender_add_surface(append, copy);
    }
}

static void report_missing(unsigned char c)
{
    if (c >= 32 && c < 127) console_printf("add text: there is no '%c' in the font - skipped\n", c);
    else console_printf("add text: there is no character %d in the font - skipped\n", c);
}

Object *text_object(const char *text)
{
    if (!text || !*text) {
        display_message("add text - no text given");
        return nullptr;
    }
    Object *font = load_font();
    if (!font) return nullptr;
    Object *glyphs[256];
    index_glyphs(font, glyphs);
    Object *o = new_object(OBJECT_NORMAL);
    object_set_name(o, text);
    ObjectAppender append;
    appender_start(&append, o);
    float pen = 0.0f, gap = (float)prefs.font_char_offset;
    for (const char *p = text; *p; p++) {
        Object *g = glyphs[(unsigned char)*p];
        if (!g) {
            report_missing((unsigned char)*p);
            continue;
        }
        float min_x, max_x;
        glyph_extent(g, &min_x, &max_x);
        place_glyph(&append, g, pen - min_x);
        pen += max_x - min_x + gap;
    }
    object_free(font);
    if (!o->vertices) {
        display_message("add text - none of the characters are in the font");
        object_free(o);
        return nullptr;
    }
    object_calc_normals_force(o);
    object_calculate_centre(o);
    return o;
}

int add_text(char *text)
{
    Object *o = text_object(text);
    if (!o) return 0;
    add_new_object_selected(o, "add text");
    display_message("add text done");
    return 1;
}
