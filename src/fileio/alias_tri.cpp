/*
 * fileio/alias_tri.cpp - reading Alias object-separated triangle files
 * (see alias_tri.h).  The records go into a buffer of MAXTRIANGLES
 * triangles allocated once per file; reaching it refuses the file.  Each
 * triangle gets its own three vertices, wound C, B, A (the reverse of the
 * file's), and the palette colour of corner A.
 */
#include "fileio/alias_tri.h"
#include "edit/primitive_append.h"
#include "edit/selection.h"
#include "view/redraw.h"
#include "vesk.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

static const float OBJECT_START = 99999.0f;
static const float OBJECT_END = -99999.0f;
/* Longer names are read to their NUL but only this much is kept. */
static const size_t NAME_KEEP = 1024;

struct AliasReader {
    FILE *file;
    float *buffer;        /* MAXTRIANGLES records, or null before allocation */
    int count;            /* records in the buffer */
};

static int read_word(FILE *file, uint32_t *out)
{
    unsigned char b[4];
    if (fread(b, 1, 4, file) != 4) return 0;
    *out = (uint32_t)b[0] << 24 | (uint32_t)b[1] << 16 | (uint32_t)b[2] << 8 | (uint32_t)b[3];
    return 1;
}

static float word_float(uint32_t word)
{
    float f;
    memcpy(&f, &word, sizeof f);
    return f;
}

/* A NUL-terminated name; 0 when the file ends first. */
static int read_name(FILE *file, std::string *name)
{
    name->clear();
    for (;;) {
        int c = getc(file);
        if (c == EOF) return 0;
        if (c == 0) return 1;
        if (name->size() < NAME_KEEP) name->push_back((char)c);
    }
}

/* Reads one record into the buffer, its first word already read when
 * first is given.  0 when the file ends inside it. */
static int read_record(AliasReader *r, const uint32_t *first)
{
    float *record = r->buffer + (size_t)r->count * ALIAS_TRI_RECORD_FLOATS;
    for (int i = 0; i < ALIAS_TRI_RECORD_FLOATS; i++) {
        uint32_t word;
        if (i == 0 && first) {
            word = *first;
        } else if (!read_word(r->file, &word)) {
            console_printf("the file ends inside triangle %d; %d triangles were read\n", r->count + 1, r->count);
            return 0;
        }
        record[i] = word_float(word);
    }
    r->count++;
    return 1;
}

/* The object-start marker's fields: the current count; -1 when the
 * count is negative (the file is refused), -2 when the file ends inside
 * them (what was read is kept). */
static long read_object_start(AliasReader *r, const char *filename)
{
    std::string name, texture;
    uint32_t count;
    if (!read_name(r->file, &name) || !read_word(r->file, &count)) {
        console_printf("the file ends inside the start of an object; %d triangles were read\n", r->count);
        return -2;
    }
    debugf("OBJECT START: %s\n", name.c_str());
    debugf("NUMBER OF TRIANGLES: %d\n", (int)count);
    if ((int32_t)count < 0) {
        windows_message_dialog("%s: object '%s' has a negative number of triangles (%d); the file is damaged.",
                               filename, name.c_str(), (int)count);
        return -1;
    }
    if (count && read_name(r->file, &texture)) debugf("  Object texture name: '%s'\n", texture.c_str());
    return (long)count;
}

/* Reads every record; returns the number read, 0 after a failure. */
static int read_records(AliasReader *r, const char *filename)
{
    r->file = fopen(filename, "rb");
    if (!r->file) {
        windows_message_dialog("reader: could not open file '%s'", filename);
        return 0;
    }
    uint32_t magic = 0;
    if (!read_word(r->file, &magic) || magic != ALIAS_TRI_MAGIC) {
        windows_message_dialog("%s is not a Alias object separated triangle file, magic number is wrong.", filename);
        fclose(r->file);
        return 0;
    }
    r->buffer = (float *)malloc(sizeof(float) * ALIAS_TRI_RECORD_FLOATS * MAXTRIANGLES);
    if (!r->buffer) {
        windows_message_dialog("reader: no memory for the triangles of '%s'", filename);
        fclose(r->file);
        return 0;
    }
    long current = 0;
    uint32_t word;
    int ok = 1;
    while (ok && read_word(r->file, &word)) {
        float marker = word_float(word);
        const uint32_t *first = &word;
        if (marker == OBJECT_START) {
            current = read_object_start(r, filename);
            if (current == -2) current = 0;
            if (current <= 0 && feof(r->file)) break;
            if (current < 0) break;
            first = nullptr;
        } else if (marker == OBJECT_END) {
            std::string name;
            if (!read_name(r->file, &name)) break;
            debugf("OBJECT END: %s\n", name.c_str());
            continue;
        }
        /* Any other word starts the previous object's triangles again. */
        for (long i = 0; i < current; i++) {
            if (!read_record(r, i == 0 ? first : nullptr)) break;
            if (r->count >= MAXTRIANGLES) {
                windows_message_dialog("Error: too many triangles; increase MAXTRIANGLES\n");
                ok = 0;
                break;
            }
        }
        if (feof(r->file)) break;
    }
    fclose(r->file);
    if (!ok || current < 0) return 0;
    return r->count;
}

static void add_triangle(ObjectAppender *append, const float *record)
{
    const float *corner[3] = {record, record + ALIAS_TRI_CORNER_FLOATS, record + 2 * ALIAS_TRI_CORNER_FLOATS};
    Surface *s = new_surface();
    float normal[3];
    for (int k = 0; k < 3; k++) normal[k] = (corner[0][k] + corner[1][k] + corner[2][k]) * 0.33333334f;
    vk_surface_set_normal(s, normal);
    s->mat = (uint16_t)rgb_to_index(rgb_float255v_to_long(corner[0] + 6));
    RefAppender refs = ref_appender_start(s);
    for (int c = 2; c >= 0; c--) {
        const float *p = corner[c];
        Vertex *v = appender_new_vertex(append, p[3], p[4], p[5]);
        memcpy(v->normal, p, sizeof v->normal);
        ref_append(&refs, v, p[9], p[10]);
    }
    appender_add_surface(append, s);
}

void load_alias_tri_file(const char *filename)
{
    AliasReader r = {nullptr, nullptr, 0};
    int count = read_records(&r, filename);
    Object *o = new_object(OBJECT_NORMAL);
    ObjectAppender append;
    appender_start(&append, o);
    for (int i = 0; i < count; i++) add_triangle(&append, r.buffer + (size_t)i * ALIAS_TRI_RECORD_FLOATS);
    object_add_child(world, o);
    select_object(o);
    fit_selected_all();
    if (r.buffer) free(r.buffer);
}
