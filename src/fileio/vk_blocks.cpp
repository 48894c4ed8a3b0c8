/*
 * fileio/vk_blocks.cpp - the block reader of the model file: MATERIAL
 * lines, object blocks with their keyword lines, vertices and surfaces,
 * and the placing of each object in its parent's frame at its "kids" line.
 *
 * Object blocks nest ("kids" n is followed by n child blocks).  The nesting
 * is kept on an explicit stack of runs rather than on the C stack, and is
 * limited to VK_MAX_NESTING levels.  Every list is appended to through a
 * remembered tail and vertex references are resolved through an array, so
 * reading is linear in the size of the file.  Counts in the file are never
 * trusted for allocation: lists grow as lines arrive and stop at the end of
 * the file.
 */
#include "fileio/vk_file.h"
#include "fileio/number_scan.h"
#include "fileio/vk_placement.h"
#include "fileio/vk_reader_internal.h"
#include "app/prefs.h"
#include "core/lights.h"
#include "edit/primitives.h"
#include "edit/transform.h"
#include "texture/texture_table.h"

#include <cstdarg>
#include <cstddef>
#include <cstdlib>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <string>

enum { MAX_FILE_MESSAGES = 200 };

/* What a keyword handler tells the block reader. */
enum { READ_ON, READ_STOP };

static const float identity3[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

void vk_read_init(VkRead *r, const char *filename, Object *parent)
{
    r->filename = filename;
    r->parent = parent;
    r->old_format = 0;
    r->detached = 0;
    r->complete = 0;
    r->file_materials.clear();
    r->loaded = r->loaded_tail = nullptr;
    r->objects_made = 0;
    r->stack.clear();
    r->top_kids_tail = nullptr;
    r->lights_tail = nullptr;
    r->owner = nullptr;
    r->vertices.clear();
    r->vertex_tail = r->surface_tail = nullptr;
    r->progress_shown = 0.0;
    r->last_long_line = 0;
    r->messages_shown = 0;
    r->messages_hidden = 0;
    r->stop_reason = nullptr;
}

void vk_file_message(VkRead *r, const char *format, ...)
{
    if (r->messages_shown >= MAX_FILE_MESSAGES) {
        r->messages_hidden++;
        return;
    }
    r->messages_shown++;
    char buffer[2048];
    va_list ap;
    va_start(ap, format);
    vsnprintf(buffer, sizeof buffer, format, ap);
    va_end(ap);
    console_printf("%s", buffer);
}

static int line_no(VkRead *r) { return (int)r->in.line_number; }

/* Appends item to the list at slot.  *tail remembers the last node; it
 * catches up with nodes appended through another tail, so it is never
 * stale (several runs can append to one object's children). */
static void append_fast(List **slot, List **tail, void *item)
{
    List *last = *tail ? *tail : *slot;
    if (last) {
        while (last->next) last = last->next;
    }
    *tail = list_add_item_fast(slot, last, item);
}

/* Takes the next line, reporting a cut line once and moving the progress
 * bar every fifth line when the fraction read has grown by 0.1. */
static int next_line(VkRead *r)
{
    if (!line_reader_next(&r->in)) return 0;
    if (r->in.line_too_long && r->in.line_number != r->last_long_line) {
        r->last_long_line = r->in.line_number;
        vk_file_message(r, "line %d is longer than %d characters - the rest of it is ignored\n", line_no(r),
                        LINE_LIMIT);
    }
    if (r->in.line_number % 5 == 0 && r->in.file_size > 0) {
        double fraction = (double)line_reader_position(&r->in) / (double)r->in.file_size;
        if (fraction - r->progress_shown > 0.1) {
            set_progress_bar((int)(fraction * 100.0));
            r->progress_shown = fraction;
        }
    }
    return 1;
}

/* Copies the first word of line into word (room for LINE_LIMIT + 1) and
 * returns what follows it. */
static const char *first_word(const char *line, char *word)
{
    const char *p = line;
    while (*p == ' ' || *p == '\t' || *p == '\r') p++;
    size_t n = 0;
    while (p[n] && p[n] != ' ' && p[n] != '\t' && p[n] != '\r' && p[n] != '\n' && n < LINE_LIMIT) {
        word[n] = p[n];
        n++;
    }
    word[n] = '\0';
    return p + n;
}

static int is_blank(const char *p)
{
    while (*p == ' ' || *p == '\t' || *p == '\r') p++;
    return *p == '\0';
}

/* ---- the current object's vertices ---- */

/* Until its object is placed, a vertex holds its coordinates as read, in
 * double, in the bytes of its point and normal (24 bytes: three doubles).
 * Nothing else sees the vertex before then, and it saves a second copy of
 * every coordinate of the largest object while the file is read. */
static_assert(offsetof(Vertex, normal) == 3 * sizeof(float) && sizeof(Vertex) >= 3 * sizeof(double),
              "a vertex must have room for three doubles in its point and normal");

static void hold_local(Vertex *v, const double *local)
{
    memcpy((char *)v, local, 3 * sizeof(double));
}

static void held_local(const Vertex *v, double *local)
{
    memcpy(local, (const char *)v, 3 * sizeof(double));
}

/* Stores the held vertices of the owner at p = R * local + t. */
static void place_vertices(VkRead *r, const VkPlacement *placement)
{
    for (Vertex *v : r->vertices) {
        double local[3];
        held_local(v, local);
        vk_place_point(placement, local, v->point);
        v->normal[0] = 0.0f;
        v->normal[1] = 1.0f;
        v->normal[2] = 0.0f;
    }
    r->vertices.clear();
    r->owner = nullptr;
}

void vk_read_finish_vertices(VkRead *r)
{
    VkPlacement as_written;
    const float zero[3] = {0, 0, 0};
    vk_placement_set(&as_written, identity3, zero);
    place_vertices(r, &as_written);
}

/* Makes object the one whose vertices and surfaces are being read. */
static void take_object(VkRead *r, Object *object)
{
    if (r->owner == object) return;
    vk_read_finish_vertices(r);
    r->owner = object;
    r->vertex_tail = nullptr;
    r->surface_tail = nullptr;
}

static void add_vertex(VkRead *r, const double *xyz)
{
    Vertex *v = new_vertex();
    hold_local(v, xyz);
    append_fast(&r->owner->vertices, &r->vertex_tail, v);
    r->owner->num_vert++;
    r->vertices.push_back(v);
}

/* ---- objects ---- */

static VkFrame new_frame(Object *parent)
{
    VkFrame f;
    f.parent = parent;
    f.current = nullptr;
    f.kids_tail = nullptr;
    f.kids_left = 0;
    memcpy(f.rotation, identity3, sizeof identity3);
    f.location[0] = f.location[1] = f.location[2] = 0.0;
    return f;
}

/* The remembered tail of the children of the top run's parent. */
static List **parent_kids_tail(VkRead *r)
{
    size_t n = r->stack.size();
    return n >= 2 ? &r->stack[n - 2].kids_tail : &r->top_kids_tail;
}

static int start_object(VkRead *r, const char *rest)
{
    char type_name[LINE_LIMIT + 1];
    first_word(rest, type_name);
    int type = object_type_from_name(type_name);
    VkFrame &f = r->stack.back();
    f.kids_tail = nullptr;
    memcpy(f.rotation, identity3, sizeof identity3);
    f.location[0] = f.location[1] = f.location[2] = 0.0;
    if (type == OBJECT_WORLD) {
        /* A loaded world merges into the parent. */
        f.current = f.parent;
        return READ_ON;
    }
    Object *o = new_object(type);
    if (!o) {
        r->stop_reason = "out of memory";
        return READ_STOP;
    }
    append_fast(&f.parent->kids, parent_kids_tail(r), o);
    o->parent = f.parent;
    f.parent->num_kids++;
    if (type == OBJECT_LIGHT && !r->detached) append_fast(&lights_list, &r->lights_tail, o);
    if (f.parent == r->parent) append_fast(&r->loaded, &r->loaded_tail, o);
    r->objects_made++;
    f.current = o;
    return READ_ON;
}

/* Places the current object in its parent's frame: its rotation becomes
 * the parent's rotation times the one read, its location (given in the
 * parent's frame) becomes global, and its vertices go from its own frame
 * to global coordinates.  The vertices are still held as read, so they
 * are rotated and moved in one step with one rounding; the object has no
 * children yet, so moving it means moving its location and vertices. */
static void place_object(VkRead *r, VkFrame &f)
{
    Object *o = f.current;
    if (o == f.parent) {
        if (r->owner == o) vk_read_finish_vertices(r);
        return;
    }
    Object *parent = o->parent;
    matrix_multiply(parent->rotation, f.rotation, o->rotation);
    float translation[3];
    object_translation_local_to_global(parent, f.location, translation);
    if (r->owner == o) {
        VkPlacement placement;
        vk_placement_set(&placement, o->rotation, translation);
        place_vertices(r, &placement);
    }
    for (int i = 0; i < 3; i++) o->centre[i] += translation[i];
}

/* Ends the top run; the run below it starts its next child or ends too. */
static void end_run(VkRead *r)
{
    r->stack.pop_back();
    while (!r->stack.empty()) {
        VkFrame &below = r->stack.back();
        if (--below.kids_left > 0) {
            Object *parent = below.current;
            r->stack.push_back(new_frame(parent));
            return;
        }
        r->stack.pop_back();
    }
}

static int read_kids(VkRead *r, const char *rest)
{
    long long n = 0;
    if (!scan_long(rest, &n)) vk_file_message(r, "expected 'kids <number>' at line %d\n", line_no(r));
    VkFrame &f = r->stack.back();
    if (!f.current) {
        vk_file_message(r, "line %d: 'kids' before any OBJECT - its children go to the parent\n", line_no(r));
        f.current = f.parent;
    }
    place_object(r, f);
    if (n <= 0) {
        end_run(r);
        return READ_ON;
    }
    if (r->stack.size() >= VK_MAX_NESTING) {
        vk_file_message(r, "line %d: objects are nested more than %d deep - the rest of the file is not read\n",
                        line_no(r), VK_MAX_NESTING);
        r->stop_reason = "objects nested too deeply";
        return READ_STOP;
    }
    f.kids_left = n;
    Object *parent = f.current;
    r->stack.push_back(new_frame(parent));
    return READ_ON;
}

/* ---- materials ---- */

static float token_float(const char *text)
{
    float value = 0.0f;
    scan_float(text, &value);
    return value;
}

static void read_colour(VkRead *r, int first, float *colour)
{
    for (int i = 0; i < 3; i++) colour[i] = token_float(r->tokens.token[first + i]);
    colour[3] = 1.0f;
}

/* 1 when a keyword line gave all the numbers or words it needs; otherwise the
 * line is reported (message takes the line number) and ignored. */
static int scanned_all(VkRead *r, int got, int wanted, const char *message)
{
    if (got == wanted) return 1;
    vk_file_message(r, message, line_no(r));
    return 0;
}

static void read_material(VkRead *r, const char *line)
{
    if (!scanned_all(r, get_tokens(line, &r->tokens), 22, "expected 21 params after \"MATERIAL\" - line %d\n")) return;
    Material m;
    read_colour(r, 3, m.rgb);
    read_colour(r, 7, m.ambient);
    read_colour(r, 11, m.emissive);
    read_colour(r, 15, m.specular);
    m.shininess = token_float(r->tokens.token[19]);
    m.transparency = token_float(r->tokens.token[21]);
    int index = find_material(&m);
    if (index < 0) index = append_material(&m);
    r->file_materials.push_back(index);
    debugf("line %d new material (number %d in file, global id is %d)\n", line_no(r),
           (int)r->file_materials.size() - 1, index);
}

/* The palette index for material i of the file, or -1 (with the message)
 * when i is past the file's materials.  Files older than version 11 name
 * palette entries directly. */
static int map_material(VkRead *r, long long i, const char *what)
{
    int last = r->old_format ? num_palette - 1 : (int)r->file_materials.size() - 1;
    if (i > last || (r->old_format && i < 0)) {
        vk_file_message(r, "line %d %s material index (%d) out of range [palette is 0->%d]\n", line_no(r), what,
                        clamp_to_int(i), last);
        return -1;
    }
    if (r->old_format) return (int)i;
    /* A negative index is not refused: it names palette entry 0. */
    return i < 0 ? 0 : r->file_materials[(size_t)i];
}

/* ---- surfaces ---- */

enum { SURFACE_DONE, SURFACE_EOF, SURFACE_ABANDONED };

/* The one argument after the keyword (rest), as get_tokens would split
 * it; null when there is not exactly one.  Quoted words take the
 * tokeniser; plain ones (every line the writer makes) are found here. */
static const char *only_argument(VkRead *r, const char *line, const char *rest, char *word)
{
    if (strchr(line, '"')) return get_tokens(line, &r->tokens) == 2 ? r->tokens.token[1] : nullptr;
    const char *p = rest + strspn(rest, " \t\r");
    size_t n = strcspn(p, " \t\r");
    if (n == 0 || p[n + strspn(p + n, " \t\r")] != '\0') return nullptr;
    memcpy(word, p, n);
    word[n] = '\0';
    return word;
}

static void set_surface_flags(VkRead *r, Surface *s, const char *line, const char *rest)
{
    char word[LINE_LIMIT + 1];
    const char *argument = only_argument(r, line, rest, word);
    if (!argument) {
        vk_file_message(r, "SURF should be followed by one flags argument\n");
        return;
    }
    long flags = strtol(argument, nullptr, 0);
    s->surface_kind = (uint8_t)(flags & 15);
    s->shading = (flags & 16) ? 1 : 0;
    s->twosided = (flags & 32) ? 1 : 0;
}

static void set_surface_material(VkRead *r, Surface *s, const char *rest)
{
    long long i = 0;
    if (!scan_long(rest, &i)) {
        vk_file_message(r, "expected 'mat <number>' at line %d\n", line_no(r));
        return;
    }
    int index = map_material(r, i, "Surface");
    if (index >= 0) s->mat = (uint16_t)index;
}

/* Reads n reference lines "index u v" into s. */
static int read_refs(VkRead *r, Surface *s, const char *rest)
{
    long long n = 0;
    if (!scan_long(rest, &n)) vk_file_message(r, "expected 'refs <number>' at line %d\n", line_no(r));
    List *tail = nullptr;
    for (long long k = 0; k < n;) {
        if (!next_line(r)) return SURFACE_EOF;
        const char *line = r->in.line;
        if (is_blank(line)) continue;
        long long index;
        const char *p = scan_long(line, &index);
        if (!p) {
            vk_file_message(r, "line %d: expected a vertex reference 'index u v' (%lld more were due)\n",
                            line_no(r), n - k);
            line_reader_push_back(&r->in);
            return SURFACE_DONE;
        }
        k++;
        float uv[2] = {0.0f, 0.0f};
        scan_floats(p, uv, 2);
        if (index < 0 || (unsigned long long)index >= r->vertices.size()) {
            vk_file_message(r, "ERROR in file line %d - surface's vertex index invalid (%d)\n", line_no(r),
                            clamp_to_int(index));
            continue;
        }
        append_fast(&s->vertrefs, &tail, new_svertex(r->vertices[(size_t)index], uv[0], uv[1]));
        s->num_vertrefs++;
    }
    return SURFACE_DONE;
}

/* Drops the surface being read when the file ended before any of its
 * references: an empty surface is no use to anything. */
static void drop_empty_surface(VkRead *r, Surface *s)
{
    if (s->vertrefs) return;
    object_remove_surface(r->owner, s);
    surface_free(s);
    r->surface_tail = nullptr;
}

static int read_surface(VkRead *r)
{
    Surface *s = new_surface();
    append_fast(&r->owner->surfaces, &r->surface_tail, s);
    r->owner->num_surf++;
    char word[LINE_LIMIT + 1];
    while (next_line(r)) {
        const char *rest = first_word(r->in.line, word);
        if (!word[0]) continue;
        if (strcmp(word, "SURF") == 0) {
            set_surface_flags(r, s, r->in.line, rest);
        } else if (strcmp(word, "mat") == 0) {
            set_surface_material(r, s, rest);
        } else if (strcmp(word, "refs") == 0) {
            int status = read_refs(r, s, rest);
            if (status == SURFACE_EOF) drop_empty_surface(r, s);
            return status;
        } else if (strcmp(word, "kids") == 0 || strcmp(word, "OBJECT") == 0) {
            vk_file_message(r,
                            "didn't expect '%s' before a surface had finished!\nIt looks like things may have gone a "
                            "bit wrong here - giving up reading a surface\nand going back to toplevel parsing.\n",
                            word);
            return SURFACE_ABANDONED;
        } else {
            vk_file_message(r, "ignoring %s\n", word);
        }
    }
    drop_empty_surface(r, s);
    return SURFACE_EOF;
}

static int read_surfaces(VkRead *r, Object *object, const char *rest)
{
    long long n = 0;
    if (!scan_long(rest, &n)) vk_file_message(r, "expected 'numsurf <number>' at line %d\n", line_no(r));
    take_object(r, object);
    for (long long i = 0; i < n; i++) {
        int status = read_surface(r);
        if (status == SURFACE_ABANDONED) break;
        if (status == SURFACE_EOF) {
            r->stop_reason = "the file ended inside a surface";
            return READ_STOP;
        }
    }
    return READ_ON;
}

/* ---- vertices ---- */

/* A coordinate that is not a finite single-precision number (nan, inf,
 * 1e39) would poison every later comparison of positions: it is reported
 * and read as 0. */
static void make_finite(VkRead *r, double *xyz, const char *what)
{
    for (int k = 0; k < 3; k++) {
        if (std::isfinite(xyz[k]) && std::fabs(xyz[k]) <= FLT_MAX) continue;
        vk_file_message(r, "line %d: %s coordinate %g is not a finite number - read as 0\n", line_no(r), what,
                        xyz[k]);
        xyz[k] = 0.0;
    }
}

static void read_vertices(VkRead *r, Object *object, const char *rest)
{
    long long n = 0;
    if (!scan_long(rest, &n)) vk_file_message(r, "expected 'numvert <number>' at line %d\n", line_no(r));
    if (object) take_object(r, object);
    for (long long i = 0; i < n;) {
        if (!next_line(r)) return;
        const char *line = r->in.line;
        if (is_blank(line)) continue;
        double xyz[3] = {0.0, 0.0, 0.0};
        int got = scan_doubles(line, xyz, 3);
        if (got == 0) {
            vk_file_message(r, "line %d: expected a vertex 'x y z' (%lld more were due)\n", line_no(r), n - i);
            line_reader_push_back(&r->in);
            return;
        }
        if (got < 3) vk_file_message(r, "line %d: a vertex needs three numbers\n", line_no(r));
        make_finite(r, xyz, "vertex");
        i++;
        if (object) add_vertex(r, xyz);
    }
}

/* ---- object keyword lines ---- */

static void read_data(VkRead *r, Object *object, const char *line)
{
    if (!scanned_all(r, get_tokens(line, &r->tokens), 2, "expected 'data <number>' at line %d\n")) return;
    long long n = 0;
    scan_long(r->tokens.token[1], &n);
    if (n <= 0) return;
    std::string bytes;
    line_reader_read_bytes(&r->in, (size_t)n, &bytes);
    line_reader_skip_blanks(&r->in);
    console_printf("STRING %d, string \"%s\" \n", (int)bytes.size(), bytes.c_str());
    if (object) object_set_userdata(object, bytes.c_str());
}

static void read_name(VkRead *r, Object *object, const char *line)
{
    if (!scanned_all(r, get_tokens(line, &r->tokens), 2, "expected quoted name at line %d\n")) return;
    object_set_name(object, r->tokens.token[1]);
}

static void read_url(VkRead *r, Object *object, const char *line)
{
    int count = get_tokens(line, &r->tokens);
    if (count != 2) {
        vk_file_message(r, "expected one arg to url at line %d (got %d)\n", line_no(r), count);
        return;
    }
    object_set_url(object, r->tokens.token[1]);
}

static void read_texture(VkRead *r, Object *object, const char *line)
{
    if (!scanned_all(r, get_tokens(line, &r->tokens), 2, "expected quoted texture name at line %d\n")) return;
    object_set_init_texture(object, r->tokens.token[1]);
}

static void read_texrep(VkRead *r, Object *object, const char *line)
{
    if (!scanned_all(r, get_tokens(line, &r->tokens), 3, "expected 'texrep <float> <float>' at line %d\n")) return;
    object_set_texture_repeat(object, token_float(r->tokens.token[1]), token_float(r->tokens.token[2]));
}

static void read_rotation(VkRead *r, VkFrame &f, const char *rest)
{
    float m[9];
    if (!scanned_all(r, scan_floats(rest, m, 9), 9, "expected 'rot' and nine numbers at line %d\n")) return;
    memcpy(f.rotation, m, sizeof m);
}

static void read_location(VkRead *r, VkFrame &f, const char *rest)
{
    double l[3];
    if (!scanned_all(r, scan_doubles(rest, l, 3), 3, "expected 'loc' and three numbers at line %d\n")) return;
    make_finite(r, l, "location");
    memcpy(f.location, l, sizeof l);
}

/* "scale" x y z: the object's location, scale and vertices read so far
 * are multiplied per axis (its children come later). */
static void read_scale(VkRead *r, VkFrame &f, const char *line)
{
    if (!scanned_all(r, get_tokens(line, &r->tokens), 4, "expected 'scale <float> <float> <float>' at line %d\n"))
        return;
    float s[3];
    for (int i = 0; i < 3; i++) s[i] = token_float(r->tokens.token[i + 1]);
    for (int i = 0; i < 3; i++) {
        f.location[i] *= s[i];
        f.current->scale[i] *= s[i];
    }
    if (r->owner != f.current) return;
    for (Vertex *v : r->vertices) {
        double local[3];
        held_local(v, local);
        for (int i = 0; i < 3; i++) local[i] *= s[i];
        hold_local(v, local);
    }
}

/* Object-level "mat": every surface of the object gets the material. */
static void read_object_material(VkRead *r, Object *object, const char *rest)
{
    long long i = 0;
    if (!scan_long(rest, &i)) {
        vk_file_message(r, "expected 'mat <number>' at line %d\n", line_no(r));
        return;
    }
    int index = map_material(r, i, "object");
    if (index >= 0) object_set_col_index(object, index);
}

/* Moves the vertices and surfaces of a freshly built shape into the
 * object being read.  The vertices join the held ones, so that the block's
 * "scale" and its placement at "kids" apply to them like to read ones and
 * later references by index count them. */
static void take_shape(VkRead *r, Object *object, Object *shape)
{
    take_object(r, object);
    for (List *node = shape->vertices; node; node = node->next) {
        Vertex *v = (Vertex *)node->item;
        const double local[3] = {v->point[0], v->point[1], v->point[2]};
        hold_local(v, local);
        append_fast(&object->vertices, &r->vertex_tail, v);
        object->num_vert++;
        r->vertices.push_back(v);
    }
    for (List *node = shape->surfaces; node; node = node->next) {
        append_fast(&object->surfaces, &r->surface_tail, node->item);
        object->num_surf++;
    }
    list_free(&shape->vertices);
    list_free(&shape->surfaces);
    shape->num_vert = 0;
    shape->num_surf = 0;
    object_free(shape);
}

/* Builds the shape of a legacy primitive line around the origin, or
 * returns null when its numbers are wrong. */
static Object *legacy_shape(const char *word, const TokenLine &t)
{
    float a = token_float(t.token[1]);
    if (strcmp(word, "sphere") == 0) {
        if (!(a > 0.0f)) return nullptr;
        Object *shape = new_object(0);
        object_add_sphere_view(shape, a);
        return shape;
    }
    if (strcmp(word, "ellipse") == 0) return new_circle(0, a, token_float(t.token[2]), prefs.rot_segments);
    if (strcmp(word, "cube") == 0) {
        Object *shape = new_object(0);
        object_add_cube_view(shape, a, token_float(t.token[2]), token_float(t.token[3]));
        return shape;
    }
    Object *shape = new_object(0);
    object_add_cylinder_view(shape, 0, a, atoi(t.token[2]) != 0, atoi(t.token[3]) != 0);
    return shape;
}

/* "sphere" r, "cube" x y z, "ellipse" a b, "cylinder" ratio top bottom:
 * older files name shapes that are built here and added to the object. */
static void read_legacy_primitive(VkRead *r, Object *object, const char *word, const char *line)
{
    static const struct {
        const char *word;
        int tokens;
        const char *usage;
    } primitives[] = {
        {"sphere", 2, "expected 'sphere <float>' at line %d\n"},
        {"cube", 4, "expected 'cube <float> <float> <float>' at line %d\n"},
        {"ellipse", 3, "expected 'ellipse <float> <float>' at line %d\n"},
        {"cylinder", 4, "expected 'cylinder <float ratio> <bool top(1 = true, 0 = false)> <bool bottom>' at line %d\n"},
    };
    for (const auto &p : primitives) {
        if (strcmp(word, p.word) != 0) continue;
        if (!scanned_all(r, get_tokens(line, &r->tokens), p.tokens, p.usage)) return;
        Object *shape = legacy_shape(word, r->tokens);
        if (!shape) {
            vk_file_message(r, p.usage, line_no(r));
            return;
        }
        take_shape(r, object, shape);
        return;
    }
}

static int is_legacy_primitive(const char *word)
{
    return strcmp(word, "sphere") == 0 || strcmp(word, "cube") == 0 || strcmp(word, "ellipse") == 0 ||
           strcmp(word, "cylinder") == 0;
}

/* A keyword line of the current object. */
static int read_object_line(VkRead *r, const char *word, const char *rest)
{
    const char *line = r->in.line;
    VkFrame &f = r->stack.back();
    Object *o = f.current;
    if (strcmp(word, "data") == 0) {
        /* The data bytes are taken even without an object, so that they
         * are not read as lines. */
        read_data(r, o, line);
        return READ_ON;
    }
    if (strcmp(word, "numvert") == 0) {
        read_vertices(r, o, rest);
        return READ_ON;
    }
    if (!o) {
        vk_file_message(r, "ignoring %s\n", word);
        return READ_ON;
    }
    if (strcmp(word, "numsurf") == 0) return read_surfaces(r, o, rest);
    if (strcmp(word, "name") == 0) read_name(r, o, line);
    else if (strcmp(word, "url") == 0) read_url(r, o, line);
    else if (strcmp(word, "texture") == 0) read_texture(r, o, line);
    else if (strcmp(word, "texrep") == 0) read_texrep(r, o, line);
    else if (strcmp(word, "rot") == 0) read_rotation(r, f, rest);
    else if (strcmp(word, "loc") == 0) read_location(r, f, rest);
    else if (strcmp(word, "scale") == 0) read_scale(r, f, line);
    else if (strcmp(word, "mat") == 0) read_object_material(r, o, rest);
    else if (is_legacy_primitive(word)) read_legacy_primitive(r, o, word, line);
    else vk_file_message(r, "ignoring %s\n", word);
    return READ_ON;
}

static int read_line(VkRead *r)
{
    char word[LINE_LIMIT + 1];
    const char *rest = first_word(r->in.line, word);
    if (!word[0]) return READ_ON;
    if (strcmp(word, "MATERIAL") == 0 && !r->old_format) {
        read_material(r, r->in.line);
        return READ_ON;
    }
    if (strcmp(word, "OBJECT") == 0) return start_object(r, rest);
    if (strcmp(word, "kids") == 0) return read_kids(r, rest);
    if (strcmp(word, "LIGHT") == 0) {
        console_printf("Light\n");
        return READ_ON;
    }
    return read_object_line(r, word, rest);
}

/* The model ends with the top block; anything after it is not read, and
 * is worth a word when it is more than blank lines. */
static void report_trailing_lines(VkRead *r)
{
    long last = r->in.line_number;
    while (line_reader_next(&r->in)) {
        if (is_blank(r->in.line)) continue;
        vk_file_message(r, "the model ended at line %ld - the rest of the file (from line %ld) is not read\n", last,
                        r->in.line_number);
        return;
    }
}

int vk_read_body(VkRead *r)
{
    r->stack.push_back(new_frame(r->parent));
    while (!r->stack.empty()) {
        if (!next_line(r)) return 1;
        if (read_line(r) == READ_STOP) return 0;
    }
    r->complete = 1;
    report_trailing_lines(r);
    return 1;
}
