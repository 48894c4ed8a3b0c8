/*
 * fileio/vk_writer.cpp - writing the model file: the header, the whole
 * palette as MATERIAL lines (file material i is palette entry i), then the
 * world's block and every object's block depth first.  Each object's
 * frame and vertices are planned by vk_write_plan so that the reader gives
 * back the same model.  Vertices are numbered through their scratch field
 * `mark`; numbers are printed in the shortest form that reads back
 * exactly.  Files are saved through a temporary file so that a failed save
 * never harms the previous one.
 */
#include "fileio/vk_file.h"
#include "fileio/line_reader.h"
#include "fileio/text_out.h"
#include "fileio/vk_vertex_text.h"
#include "fileio/vk_write_plan.h"
#include "platform/safe_file.h"
#include "texture/texture_table.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

static const float identity3[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
static const float origin[3] = {0, 0, 0};

struct VkWriter {
    TextOut out;
    std::vector<Vertex *> vertices;   /* the object being written, in order */
    long broken_refs;
    long inexact_objects;
};

/* The texts the last write could not keep as they are, described. */
static std::vector<std::string> altered_texts;

static void note_altered(const char *what, const char *keyword, Object *o)
{
    std::string name = o->name ? o->name : "";
    if (name.size() > 60) name = name.substr(0, 60) + "...";
    if (altered_texts.size() < 1000)
        altered_texts.push_back(std::string("the ") + keyword + " of object \"" + name + "\" " + what);
}

void write_vk_altered_texts(std::vector<std::string> *out)
{
    *out = altered_texts;
}

/* ---- lines ---- */

static void put_floats(VkWriter *w, const float *values, int n)
{
    for (int i = 0; i < n; i++) {
        text_out_char(&w->out, ' ');
        text_out_float(&w->out, values[i]);
    }
    text_out_char(&w->out, '\n');
}

/* A quoted-string line; the reader cuts lines at LINE_LIMIT characters,
 * so a longer one is written whole but reported. */
static void put_quoted_line(VkWriter *w, const char *keyword, const char *text, Object *o)
{
    size_t length = strlen(keyword) + 3 + strlen(text);
    for (const char *p = text; *p; p++) length += *p == '\\' || *p == '"';
    if (length > LINE_LIMIT) {
        console_printf("warning - the %s of object \"%.60s\" is longer than a model file line; it will be cut "
                       "short when the file is read\n",
                       keyword, o->name ? o->name : "");
        note_altered("is longer than a line of a model file and will be cut short when it is read", keyword, o);
    }
    if (strpbrk(text, "\n\r")) note_altered("holds line breaks, which are written as spaces", keyword, o);
    text_out_string(&w->out, keyword);
    text_out_char(&w->out, ' ');
    text_out_quoted(&w->out, text);
    text_out_char(&w->out, '\n');
}

static void put_count(VkWriter *w, const char *keyword, uint64_t n)
{
    text_out_string(&w->out, keyword);
    text_out_char(&w->out, ' ');
    text_out_uint(&w->out, n);
    text_out_char(&w->out, '\n');
}

static void write_materials(VkWriter *w)
{
    for (int i = 0; i < num_palette; i++) {
        Material *m = index_to_material(i);
        text_out_string(&w->out, "MATERIAL \"material ");
        text_out_int(&w->out, i);
        text_out_string(&w->out, "\" rgb");
        const struct {
            const char *word;
            const float *values;
            int n;
        } parts[] = {{nullptr, m->rgb, 3},        {" amb", m->ambient, 3},    {" emis", m->emissive, 3},
                     {" spec", m->specular, 3},   {" shi", &m->shininess, 1}, {" trans", &m->transparency, 1}};
        for (const auto &part : parts) {
            if (part.word) text_out_string(&w->out, part.word);
            for (int k = 0; k < part.n; k++) {
                text_out_char(&w->out, ' ');
                text_out_float(&w->out, part.values[k]);
            }
        }
        text_out_char(&w->out, '\n');
    }
}

/* ---- the lines of one object ---- */

static void write_object_strings(VkWriter *w, Object *o, int is_world)
{
    if (o->name && (o->name[0] || !is_world)) put_quoted_line(w, "name", o->name, o);
    if (o->data && o->data[0]) {
        size_t n = strlen(o->data);
        put_count(w, "data", n);
        text_out_bytes(&w->out, o->data, n);
        text_out_char(&w->out, '\n');
    }
    if (o->url) put_quoted_line(w, "url", o->url, o);
    if (o->texture) {
        const char *name = texture_id_to_name(o->texture);
        if (name) put_quoted_line(w, "texture", name, o);
    }
    if (o->texture_repeat_x != 1.0f || o->texture_repeat_y != 1.0f) {
        text_out_string(&w->out, "texrep");
        const float rep[2] = {o->texture_repeat_x, o->texture_repeat_y};
        put_floats(w, rep, 2);
    }
}

static void write_frame(VkWriter *w, const VkObjectPlan *plan)
{
    if (!matrix_is_identity(plan->rotation_written)) {
        text_out_string(&w->out, "rot");
        put_floats(w, plan->rotation_written, 9);
    }
    const double *l = plan->location_written;
    if (l[0] != 0.0 || l[1] != 0.0 || l[2] != 0.0) {
        text_out_string(&w->out, "loc");
        for (int i = 0; i < 3; i++) {
            text_out_char(&w->out, ' ');
            text_out_double(&w->out, l[i]);
        }
        text_out_char(&w->out, '\n');
    }
}

static void write_vertex(VkWriter *w, const VkObjectPlan *plan, const float *point)
{
    VkVertexText text;
    vk_vertex_text(plan, point, &text);
    for (int i = 0; i < 3; i++) {
        if (i) text_out_char(&w->out, ' ');
        text_out_bytes(&w->out, text.text[i], text.length[i]);
    }
    text_out_char(&w->out, '\n');
}

static void write_vertices(VkWriter *w, Object *o, const VkObjectPlan *plan)
{
    w->vertices.clear();
    for (List *l = o->vertices; l; l = l->next) {
        Vertex *v = (Vertex *)l->item;
        v->mark = (uint32_t)w->vertices.size();
        w->vertices.push_back(v);
    }
    if (w->vertices.empty()) return;
    put_count(w, "numvert", w->vertices.size());
    for (Vertex *v : w->vertices) write_vertex(w, plan, v->point);
}

/* The index of the vertex in the object being written, or -1 when the
 * reference points outside it (a broken reference is not written). */
static long vertex_number(VkWriter *w, Vertex *v)
{
    if (!v || v->mark >= w->vertices.size() || w->vertices[v->mark] != v) return -1;
    return (long)v->mark;
}

static void write_surface(VkWriter *w, Surface *s)
{
    int flags = (s->surface_kind & 15) | (s->shading ? 16 : 0) | (s->twosided ? 32 : 0);
    put_count(w, "SURF", (uint64_t)flags);
    put_count(w, "mat", s->mat);
    uint64_t n = 0;
    for (List *r = s->vertrefs; r; r = r->next) n += vertex_number(w, ((SVertex *)r->item)->vertex) >= 0;
    put_count(w, "refs", n);
    for (List *r = s->vertrefs; r; r = r->next) {
        SVertex *ref = (SVertex *)r->item;
        long index = vertex_number(w, ref->vertex);
        if (index < 0) {
            w->broken_refs++;
            continue;
        }
        text_out_uint(&w->out, (uint64_t)index);
        const float uv[2] = {ref->u, ref->v};
        put_floats(w, uv, 2);
    }
}

static void write_surfaces(VkWriter *w, Object *o)
{
    if (!o->surfaces) return;
    put_count(w, "numsurf", list_count(o->surfaces));
    for (List *l = o->surfaces; l; l = l->next) write_surface(w, (Surface *)l->item);
}

static void write_block(VkWriter *w, Object *o, const VkObjectPlan *plan, uint64_t kids)
{
    int is_world = o->type == OBJECT_WORLD && !plan;
    text_out_string(&w->out, "OBJECT ");
    text_out_string(&w->out, is_world ? "world" : object_type_name(o->type));
    text_out_char(&w->out, '\n');
    write_object_strings(w, o, is_world);
    VkObjectPlan as_written;
    if (!plan) {
        /* The world block is not placed: its vertices are global. */
        memset(&as_written, 0, sizeof as_written);
        matrix_copy(identity3, as_written.rotation_written);
        matrix_copy(identity3, as_written.rotation_as_read);
        vk_placement_set(&as_written.placement, identity3, origin);
        as_written.exact = 1;
        plan = &as_written;
    } else {
        write_frame(w, plan);
    }
    write_vertices(w, o, plan);
    write_surfaces(w, o);
    put_count(w, "kids", kids);
}

/* ---- trees ---- */

/* Writes the objects (with their subtrees) depth first, each placed in
 * the frame its parent will have when read; the first ones in the frame
 * given.  An explicit stack: trees may be deeper than the C stack. */
static void write_trees(VkWriter *w, const std::vector<Object *> &roots, const float *rotation, const float *centre)
{
    std::vector<FramedObject> stack;
    for (size_t i = roots.size(); i-- > 0;) stack.push_back(framed_object(roots[i], rotation, centre));
    std::vector<Object *> kids;
    while (!stack.empty()) {
        FramedObject p = stack.back();
        stack.pop_back();
        VkObjectPlan plan;
        vk_plan_object(p.object, p.parent_rotation, p.parent_centre, &plan);
        if (!plan.exact) w->inexact_objects++;
        write_block(w, p.object, &plan, p.object->num_kids);
        kids.clear();
        for (List *k = p.object->kids; k; k = k->next) kids.push_back((Object *)k->item);
        for (size_t i = kids.size(); i-- > 0;) {
            stack.push_back(framed_object(kids[i], plan.rotation_as_read, plan.centre_as_read));
        }
    }
}

static void report(VkWriter *w)
{
    if (w->broken_refs) {
        console_printf("warning - %ld surface references to vertices of other objects were not saved\n",
                       w->broken_refs);
    }
    if (w->inexact_objects) {
        console_printf("warning - %ld objects could not be placed so that their vertices read back exactly\n",
                       w->inexact_objects);
    }
}

/* Header, materials, a world block holding roots, and the trees. */
static int write_model(FILE *file, Object *world_object, const std::vector<Object *> &roots)
{
    altered_texts.clear();
    VkWriter w;
    w.broken_refs = w.inexact_objects = 0;
    if (!text_out_open(&w.out, file)) {
        errno = w.out.error;
        return 0;
    }
    text_out_string(&w.out, "VESKb\n");
    write_materials(&w);
    if (world_object) {
        write_block(&w, world_object, nullptr, roots.size());
        write_trees(&w, roots, world_object->rotation, world_object->centre);
    } else {
        text_out_string(&w.out, "OBJECT world\n");
        put_count(&w, "kids", roots.size());
        write_trees(&w, roots, world ? world->rotation : identity3, world ? world->centre : origin);
    }
    int ok = text_out_close(&w.out);
    if (!ok) errno = w.out.error;
    report(&w);
    return ok;
}

/* Writes through a temporary file that replaces filename only when
 * everything was written; with backup_error, the replaced file is kept as
 * filename~ and *backup_error says whether that worked. */
static int save_model(const char *filename, Object *world_object, const std::vector<Object *> &roots,
                      int *backup_error = nullptr)
{
    SafeFile sf;
    FILE *file = safe_file_open(&sf, filename);
    if (!file) return 0;
    sf.keep_backup = backup_error != nullptr;
    if (!write_model(file, world_object, roots)) {
        int e = errno;
        safe_file_abort(&sf);
        errno = e;
        return 0;
    }
    int ok = safe_file_commit(&sf);
    if (backup_error) *backup_error = sf.backup_error;
    return ok;
}

static std::vector<Object *> children_of(Object *o)
{
    std::vector<Object *> out;
    for (List *k = o ? o->kids : nullptr; k; k = k->next) out.push_back((Object *)k->item);
    return out;
}

int write_vk(const char *filename)
{
    if (!filename || !world) {
        errno = EINVAL;
        return 0;
    }
    return save_model(filename, world, children_of(world));
}

int write_vk_keeping_backup(const char *filename, int *backup_error)
{
    *backup_error = 0;
    if (!filename || !world) {
        errno = EINVAL;
        return 0;
    }
    return save_model(filename, world, children_of(world), backup_error);
}

int write_vk_objects(const char *filename, List *objects)
{
    if (!filename) {
        errno = EINVAL;
        return 0;
    }
    std::vector<Object *> roots;
    for (List *l = objects; l; l = l->next) roots.push_back((Object *)l->item);
    return save_model(filename, nullptr, roots);
}

int write_vk_object(FILE *file, Object *object)
{
    if (!file || !object) return 0;
    VkWriter w;
    w.broken_refs = w.inexact_objects = 0;
    if (!text_out_open(&w.out, file)) return 0;
    Object *parent = object->parent;
    std::vector<Object *> roots(1, object);
    write_trees(&w, roots, parent ? parent->rotation : identity3, parent ? parent->centre : origin);
    int ok = text_out_close(&w.out);
    report(&w);
    return ok;
}

void output_string(FILE *file, const char *text)
{
    fputc('"', file);
    for (const char *p = text ? text : ""; *p; p++) {
        char c = *p;
        if (c == '\n' || c == '\r') c = ' ';
        if (c == '\\' || c == '"') fputc('\\', file);
        fputc(c, file);
    }
    fputc('"', file);
}
