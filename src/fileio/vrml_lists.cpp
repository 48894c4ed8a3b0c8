/*
 * fileio/vrml_lists.cpp - the lists the VRML and Inventor writers share
 * (see vrml_lists.h).  References to vertices of other objects cannot be
 * numbered and are left out of coordinate indices; references without a
 * vertex are left out of every list.
 */
#include "fileio/vrml_lists.h"
#include "texture/texture_table.h"

#include <cassert>
#include <charconv>

void vrml_put_number(FILE *file, float value)
{
    /* to_chars in the general form with a precision is printf's "%g". */
    char buffer[48];
    std::to_chars_result r = std::to_chars(buffer, buffer + sizeof buffer, (double)value, std::chars_format::general, 6);
    fwrite_unlocked(buffer, 1, (size_t)(r.ptr - buffer), file);
}

void vrml_put_triple(FILE *file, const float *values)
{
    vrml_put_number(file, values[0]);
    putc_unlocked(' ', file);
    vrml_put_number(file, values[1]);
    putc_unlocked(' ', file);
    vrml_put_number(file, values[2]);
}

/* An index-list entry, "%d, ". */
static void put_entry(FILE *file, long value)
{
    char buffer[32];
    std::to_chars_result r = std::to_chars(buffer, buffer + sizeof buffer - 2, value);
    r.ptr[0] = ',';
    r.ptr[1] = ' ';
    fwrite_unlocked(buffer, 1, (size_t)(r.ptr + 2 - buffer), file);
}

void vrml_lists_make(VrmlObjectLists *lists, Object *object)
{
    assert(lists && object);
    lists->object = object;
    lists->vertices.clear();
    lists->polygons.clear();
    lists->lines.clear();
    for (List *l = object->vertices; l; l = l->next) {
        Vertex *v = (Vertex *)l->item;
        v->mark = (uint32_t)lists->vertices.size();
        lists->vertices.push_back(v);
    }
    for (List *l = object->surfaces; l; l = l->next) {
        Surface *s = (Surface *)l->item;
        if (s->surface_kind == SURFACE_POLYGON) {
            lists->polygons.push_back(s);
        } else {
            lists->lines.push_back(s);
        }
    }
}

long vrml_vertex_number(const VrmlObjectLists *lists, Vertex *vertex)
{
    if (!vertex || vertex->mark >= lists->vertices.size() || lists->vertices[vertex->mark] != vertex) return -1;
    return (long)vertex->mark;
}

void vrml_write_points(FILE *file, const VrmlObjectLists *lists)
{
    for (size_t i = 0; i < lists->vertices.size(); i++) {
        if (i) fputs(",\n", file);
        vrml_put_triple(file, lists->vertices[i]->point);
    }
}

void vrml_write_coord_index(FILE *file, const VrmlObjectLists *lists, const std::vector<Surface *> &surfaces,
                            const char *opening, const char *closing)
{
    fputs(opening, file);
    for (size_t i = 0; i < surfaces.size(); i++) {
        Surface *s = surfaces[i];
        long first = -1;
        for (List *r = s->vertrefs; r; r = r->next) {
            long n = vrml_vertex_number(lists, ((SVertex *)r->item)->vertex);
            if (n < 0) continue;
            if (first < 0) first = n;
            put_entry(file, n);
        }
        if (s->surface_kind == SURFACE_CLOSED_LINE && first >= 0) put_entry(file, first);
        fputs("-1", file);
        if (i + 1 < surfaces.size()) fputs(",\n", file);
    }
    fputs(closing, file);
}

/* The polygons' references that can be written, polygon by polygon. */
template <typename F> static void for_each_reference(const std::vector<Surface *> &polygons, F visit)
{
    for (size_t i = 0; i < polygons.size(); i++) {
        for (List *r = polygons[i]->vertrefs; r; r = r->next) visit(i, (SVertex *)r->item, r->next == nullptr);
    }
}

int vrml_write_running_index(FILE *file, const std::vector<Surface *> &polygons, const char *opening,
                             const char *closing)
{
    int counter = 0;
    fputs(opening, file);
    for (size_t i = 0; i < polygons.size(); i++) {
        for (List *r = polygons[i]->vertrefs; r; r = r->next) {
            if (!((SVertex *)r->item)->vertex) continue;
            put_entry(file, counter++);
        }
        fputs("-1", file);
        if (i + 1 < polygons.size()) fputs(",\n", file);
    }
    fputs(closing, file);
    return counter;
}

int vrml_write_normals(FILE *file, const std::vector<Surface *> &polygons)
{
    int written = 0;
    for (size_t i = 0; i < polygons.size(); i++) {
        Surface *s = polygons[i];
        int first = 1;
        if (i) fputs(",\n", file);
        for (List *r = s->vertrefs; r; r = r->next) {
            Vertex *v = ((SVertex *)r->item)->vertex;
            if (!v) continue;
            const float *n = s->shading ? v->normal : s->normal;
            if (!first) fputs(", ", file);
            vrml_put_triple(file, n);
            first = 0;
            written++;
        }
    }
    return written;
}

void vrml_write_texture_points(FILE *file, const std::vector<Surface *> &polygons, float scale_u, float scale_v)
{
    /* The very last point of the object is the last written reference of
     * the last polygon that has one. */
    const SVertex *last = nullptr;
    for_each_reference(polygons, [&](size_t, SVertex *ref, bool) {
        if (ref->vertex) last = ref;
    });
    for_each_reference(polygons, [&](size_t, SVertex *ref, bool end_of_polygon) {
        if (ref->vertex) {
            vrml_put_number(file, ref->u * scale_u);
            putc_unlocked(' ', file);
            vrml_put_number(file, ref->v * scale_v);
            if (ref != last) fputs(", ", file);
        }
        if (end_of_polygon) fputs("\n", file);
    });
}

const char *vrml_texture_name(Object *object, int with_textures)
{
    if (!with_textures || !object->texture) return nullptr;
    return texture_id_to_name(object->texture);
}

int vrml_text_present(const char *text)
{
    return text && text[0];
}

long vrml_count_references(const std::vector<Surface *> &polygons)
{
    long n = 0;
    for (Surface *s : polygons) n += s->num_vertrefs;
    return n;
}
