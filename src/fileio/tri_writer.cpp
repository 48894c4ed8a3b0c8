/*
 * fileio/tri_writer.cpp - writing triangle files: every surface of the
 * tree as triangles in its reference order, larger ones split by the
 * surface triangulation, with the packed colour of the surface's
 * material.  Surface kinds are not looked at.  Hierarchy, names and
 * texture coordinates have no place in the format.
 */
#include "edit/surface_ops.h"
#include "fileio/tri_file.h"
#include "fileio/vrml_lists.h"
#include "fileio/vrml_writer.h"
#include "platform/safe_file.h"

#include <cerrno>
#include <cstring>
#include <vector>

static void write_triangle(FILE *file, Surface *triangle, long colour)
{
    const float *p[3];
    int i = 0;
    for (List *r = triangle->vertrefs; r && i < 3; r = r->next) {
        Vertex *v = ((SVertex *)r->item)->vertex;
        if (!v) return;
        p[i++] = v->point;
    }
    if (i < 3) return;
    /* "%g %g %g  %g %g %g  %g %g %g  0x%X\n" */
    for (int c = 0; c < 3; c++) {
        vrml_put_triple(file, p[c]);
        fputs("  ", file);
    }
    fprintf(file, "0x%lX\n", colour);
}

static void write_surface(FILE *file, Surface *s)
{
    int n = (int)s->num_vertrefs;
    long colour = index_to_rgb(s->mat);
    if (n < 3) {
        console_printf("ignoring surface with %d vertices\n", n);
        export_notes.surfaces_ignored++;
        return;
    }
    if (n == 3) {
        write_triangle(file, s, colour);
        return;
    }
    List *triangles = surface_get_triangulations(s);
    if (!triangles) {
        console_printf("triangulation of poly with %d vertices failed\n", n);
        export_notes.surfaces_ignored++;
        return;
    }
    for (List *t = triangles; t; t = t->next) {
        write_triangle(file, (Surface *)t->item, colour);
        surface_free((Surface *)t->item);
    }
    list_free(&triangles);
    console_printf("poly with %d vertices triangulated\n", n);
}

/* Depth first with an explicit stack: trees may be deeper than the C
 * stack. */
void write_tri_object(FILE *file, Object *object)
{
    std::vector<Object *> stack(1, object);
    std::vector<Object *> kids;
    while (!stack.empty()) {
        Object *o = stack.back();
        stack.pop_back();
        for (List *l = o->surfaces; l; l = l->next) write_surface(file, (Surface *)l->item);
        kids.clear();
        for (List *k = o->kids; k; k = k->next) kids.push_back((Object *)k->item);
        for (size_t i = kids.size(); i-- > 0;) stack.push_back(kids[i]);
    }
}

int write_tri_file(const char *filename)
{
    export_notes = ExportNotes{0, 0, 0};
    SafeFile sf;
    FILE *file = filename && world ? safe_file_open(&sf, filename) : nullptr;
    if (!file) {
        console_printf("can't open file for writing\n");
        return 0;
    }
    write_tri_object(file, world);
    if (!safe_file_commit(&sf)) {
        console_printf("can't write file %s: %s\n", filename, strerror(errno));
        return 0;
    }
    console_printf("written file %s\n", filename);
    return 1;
}
