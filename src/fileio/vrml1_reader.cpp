/*
 * fileio/vrml1_reader.cpp - the VRML 1.0 / Inventor ASCII reader (see
 * vrml1_reader.h).  The text is split into tokens and walked once with an
 * explicit stack of open group nodes, so deep nesting costs no C stack.
 * The traversal state (coordinates, material and its binding, texture,
 * texture points, transformation, vertex ordering) is saved and restored
 * by Separators; property nodes change it and shapes use it.
 *
 * Everything is built under a detached group and joins the world only
 * when the whole file was read: a damaged file changes nothing.  For the
 * same reason materials and texture names are collected while reading
 * and go into the palette and the texture table at the end.
 *
 * Nodes that describe geometry are read; lights become light objects;
 * Info, Normal, NormalBinding and nodes this reader does not know are
 * skipped by their braces.  DEF names a node and USE reads it again where
 * it is used.
 */
#include "fileio/vrml1_reader.h"
#include "core/internal.h"
#include "core/lights.h"
#include "edit/selection.h"
#include "fileio/vrml1_lexer.h"
#include "fileio/vrml1_shapes.h"
#include "texture/texture_table.h"
#include "view/redraw.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <unordered_map>

namespace {

enum Binding { BIND_OVERALL, BIND_PER_PART, BIND_PER_PART_INDEXED, BIND_PER_FACE, BIND_PER_FACE_INDEXED,
               BIND_PER_VERTEX, BIND_PER_VERTEX_INDEXED };

struct CoordNode {
    std::vector<float> points;
    Object *owner = nullptr;          /* the object the vertices below belong to */
    std::vector<Vertex *> made;
};

struct MaterialNode {
    std::vector<float> diffuse, ambient, specular, emissive, shininess, transparency;
    std::vector<int> pending;         /* per entry: index into the collected materials, -1 not yet */
};

struct State {
    std::shared_ptr<CoordNode> coords;
    std::shared_ptr<MaterialNode> material;
    int binding = BIND_OVERALL;
    std::shared_ptr<std::vector<float>> texture_points;
    std::shared_ptr<std::string> texture;
    Matrix4 matrix = matrix4_identity();
    bool clockwise = false;
};

enum FrameKind { FRAME_SEPARATOR, FRAME_ANCHOR, FRAME_GROUP, FRAME_TRANSFORM_SEPARATOR, FRAME_SWITCH, FRAME_SKIP };

struct Frame {
    FrameKind kind;
    State saved;
    Object *object_before;
    Object *object;                   /* made by this Separator, or null */
    bool skip;
    long which_child;
    long children;
    std::string def;
    size_t start;
    uint32_t line;
};

struct Field {
    std::string name;
    size_t lo, hi;                    /* its value's tokens */
};

struct Reader {
    const char *text;
    std::vector<Vrml1Token> tokens;
    State state;
    Object *root;
    Object *current;                  /* where shapes go; root at the top level */
    Object *top_level_shapes = nullptr;
    std::vector<Material> collected;
    std::map<std::vector<float>, int> collected_index;
    std::vector<std::pair<Surface *, int>> surface_materials;
    std::vector<std::pair<Object *, std::string>> object_textures;
    std::unordered_map<std::string, std::pair<size_t, size_t>> defs;
    std::string pending_name, pending_url;
    long bad_indices = 0;
    long depth = 0;
    int use_depth = 0;
    long work = 0, work_limit = 0;
    bool failed = false;
    bool in_own_separator = false;    /* the node read stands right inside its object's Separator */
    /* Every vertex and surface is appended through these: walking an
     * object's lists to their ends for each would cost n squared. */
    std::unordered_map<Object *, ObjectAppender> appenders;
    std::unordered_map<Object *, List *> kid_tails;   /* last node of each parent's kids */
};

void fail(Reader *r, const char *format, long a = 0, long b = 0)
{
    if (!r->failed) {
        char buffer[512];
        snprintf(buffer, sizeof buffer, format, a, b);
        console_printf("VRML reader: %s\n", buffer);
    }
    r->failed = true;
}

std::string word(const Reader *r, size_t i)
{
    return vrml1_token_text(r->text, r->tokens[i]);
}

bool is_kind(const Reader *r, size_t i, size_t hi, int kind)
{
    return i < hi && r->tokens[i].kind == kind;
}

bool is_number(const Reader *r, size_t i)
{
    if (r->tokens[i].kind != VRML_WORD) return false;
    char c = r->text[r->tokens[i].offset];
    return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.';
}

/* The index after the bracket, brace or parenthesis closing the one at i. */
size_t matching(Reader *r, size_t i, size_t hi)
{
    int open = r->tokens[i].kind, close = open + 1;
    long level = 0;
    for (size_t k = i; k < hi; k++) {
        if (r->tokens[k].kind == open) level++;
        if (r->tokens[k].kind == close && --level == 0) return k + 1;
    }
    fail(r, "a node or list opened on line %ld is not closed", (long)r->tokens[i].line);
    return hi;
}

/* The end of a field's value starting at i: a list, a bit mask, a string,
 * a run of numbers or one word. */
size_t value_end(Reader *r, size_t i, size_t hi)
{
    if (i >= hi) return hi;
    int kind = r->tokens[i].kind;
    if (kind == VRML_OPEN_BRACKET || kind == VRML_OPEN_PAREN) return matching(r, i, hi);
    if (kind == VRML_STRING) return i + 1;
    if (kind != VRML_WORD) return i;
    if (!is_number(r, i)) {
        if (is_kind(r, i + 1, hi, VRML_OPEN_BRACE)) return matching(r, i + 1, hi);   /* a node as value */
        return i + 1;
    }
    while (i < hi && is_number(r, i)) i++;
    return i;
}

/* The fields of a node's body (tokens lo to hi); nodes inside are skipped. */
std::vector<Field> fields_of(Reader *r, size_t lo, size_t hi)
{
    std::vector<Field> fields;
    size_t i = lo;
    while (i < hi && !r->failed) {
        const Vrml1Token &t = r->tokens[i];
        if (t.kind == VRML_OBJECT_COMMENT) {
            i++;
            continue;
        }
        if (t.kind != VRML_WORD) {
            fail(r, "unexpected text on line %ld", (long)t.line);
            break;
        }
        if (is_kind(r, i + 1, hi, VRML_OPEN_BRACE)) {
            i = matching(r, i + 1, hi);
            continue;
        }
        size_t end = value_end(r, i + 1, hi);
        fields.push_back({word(r, i), i + 1, end});
        i = end > i + 1 ? end : i + 1;
    }
    return fields;
}

const Field *field(const std::vector<Field> &fields, const char *name)
{
    for (const Field &f : fields) {
        if (f.name == name) return &f;
    }
    return nullptr;
}

/* The numbers of a value, finite ones only. */
std::vector<float> floats_of(Reader *r, const Field *f)
{
    std::vector<float> values;
    if (!f) return values;
    for (size_t i = f->lo; i < f->hi && !r->failed; i++) {
        const Vrml1Token &t = r->tokens[i];
        if (t.kind != VRML_WORD) continue;
        const char *p = r->text + t.offset;
        char *end;
        float v = strtof(p, &end);
        if (end != p + t.length || !std::isfinite(v)) {
            fail(r, "a number on line %ld can't be read or is too large", (long)t.line);
            break;
        }
        values.push_back(v);
    }
    return values;
}

std::vector<long> ints_of(Reader *r, const Field *f)
{
    std::vector<long> values;
    if (!f) return values;
    for (size_t i = f->lo; i < f->hi && !r->failed; i++) {
        const Vrml1Token &t = r->tokens[i];
        if (t.kind != VRML_WORD) continue;
        const char *p = r->text + t.offset;
        char *end;
        errno = 0;
        long v = strtol(p, &end, 10);
        if (end != p + t.length || errno || v > INT32_MAX || v < INT32_MIN) {
            fail(r, "an index on line %ld can't be read", (long)t.line);
            break;
        }
        values.push_back(v);
    }
    return values;
}

std::string word_of(Reader *r, const Field *f)
{
    if (!f || f->lo >= f->hi) return "";
    return word(r, f->lo);
}

float float_of(Reader *r, const Field *f, float fallback)
{
    std::vector<float> v = floats_of(r, f);
    return v.empty() ? fallback : v[0];
}

/* ---- objects ---- */

/* object_add_child without the walk to the end of the parent's kids. */
void add_child(Reader *r, Object *parent, Object *child)
{
    auto found = r->kid_tails.find(parent);
    List *tail = found != r->kid_tails.end() ? found->second : (parent->kids ? list_end(parent->kids) : nullptr);
    r->kid_tails[parent] = list_add_item_fast(&parent->kids, tail, child);
    child->parent = parent;
    parent->num_kids++;
}

ObjectAppender *appender_of(Reader *r, Object *o)
{
    auto found = r->appenders.find(o);
    if (found == r->appenders.end()) {
        found = r->appenders.emplace(o, ObjectAppender()).first;
        appender_start(&found->second, o);
    }
    return &found->second;
}

Object *shape_object(Reader *r)
{
    if (r->current != r->root) return r->current;
    /* Shapes outside every Separator: one object for them all. */
    if (!r->top_level_shapes) {
        r->top_level_shapes = new_object(OBJECT_NORMAL);
        add_child(r, r->root, r->top_level_shapes);
    }
    return r->top_level_shapes;
}

Vertex *coordinate_vertex(Reader *r, Object *o, long index)
{
    CoordNode *c = r->state.coords.get();
    if (!c || index < 0 || (size_t)index * 3 >= c->points.size()) {
        r->bad_indices++;
        return nullptr;
    }
    if (c->owner != o) {
        c->owner = o;
        c->made.assign(c->points.size() / 3, nullptr);
    }
    Vertex *&v = c->made[index];
    if (!v) {
        float p[3];
        matrix4_apply(r->state.matrix, &c->points[index * 3], p);
        v = new_vertex_set(p[0], p[1], p[2]);
        appender_add_vertex(appender_of(r, o), v);
    }
    return v;
}

float entry(const std::vector<float> &list, long i, int width, int k, float fallback)
{
    long n = (long)list.size() / width;
    if (n == 0) return fallback;
    if (i >= n) i = n - 1;
    return list[i * width + k];
}

/* The collected material for entry i of the current Material node, or -1
 * when there is none (the surface keeps its default). */
int material_for(Reader *r, long i)
{
    MaterialNode *m = r->state.material.get();
    if (!m) return -1;
    if (i < 0) i = 0;
    long entries = (long)std::max({m->diffuse.size() / 3, m->ambient.size() / 3, m->specular.size() / 3,
                                   m->emissive.size() / 3, m->shininess.size(), m->transparency.size(), (size_t)1});
    if (i >= entries) i = entries - 1;
    if ((long)m->pending.size() < entries) m->pending.assign(entries, -1);
    if (m->pending[i] >= 0) return m->pending[i];
    Material mat;
    memset(&mat, 0, sizeof mat);
    for (int k = 0; k < 3; k++) {
        mat.rgb[k] = entry(m->diffuse, i, 3, k, 0.8f);
        mat.ambient[k] = entry(m->ambient, i, 3, k, 0.2f);
        mat.specular[k] = entry(m->specular, i, 3, k, 0.0f);
        mat.emissive[k] = entry(m->emissive, i, 3, k, 0.0f);
    }
    mat.rgb[3] = mat.ambient[3] = mat.specular[3] = mat.emissive[3] = 1.0f;
    mat.shininess = entry(m->shininess, i, 1, 0, 0.2f) * 128.0f;
    mat.transparency = entry(m->transparency, i, 1, 0, 0.0f);
    std::vector<float> key((const float *)&mat, (const float *)&mat + sizeof mat / sizeof(float));
    auto found = r->collected_index.find(key);
    int index;
    if (found != r->collected_index.end()) {
        index = found->second;
    } else {
        index = (int)r->collected.size();
        r->collected.push_back(mat);
        r->collected_index.emplace(key, index);
    }
    m->pending[i] = index;
    return index;
}

long binding_index(int binding, long face, long position, const std::vector<long> &indices)
{
    switch (binding) {
    case BIND_PER_PART:
    case BIND_PER_FACE: return face;
    case BIND_PER_PART_INDEXED:
    case BIND_PER_FACE_INDEXED: return indices.empty() ? face : indices[std::min((size_t)face, indices.size() - 1)];
    case BIND_PER_VERTEX: return position;
    case BIND_PER_VERTEX_INDEXED:
        return indices.empty() ? 0 : indices[std::min((size_t)position, indices.size() - 1)];
    default: return 0;
    }
}

int material_for_face(Reader *r, long face, long position, const std::vector<long> &materials)
{
    if (!r->state.material) return -1;
    return material_for(r, binding_index(r->state.binding, face, position, materials));
}

void finish_surface(Reader *r, Object *o, Surface *s, int material)
{
    if (!s->vertrefs) {
        surface_free(s);
        return;
    }
    if (r->state.clockwise) list_reverse(&s->vertrefs);
    if (material >= 0) r->surface_materials.emplace_back(s, material);
    appender_add_surface(appender_of(r, o), s);
}

/* Splits an index list into runs ended by -1 (or any negative index). */
std::vector<std::pair<size_t, size_t>> runs_of(const std::vector<long> &indices)
{
    std::vector<std::pair<size_t, size_t>> runs;
    size_t start = 0;
    for (size_t i = 0; i <= indices.size(); i++) {
        if (i == indices.size() || indices[i] < 0) {
            if (i > start) runs.emplace_back(start, i);
            start = i + 1;
        }
    }
    return runs;
}

void read_face_set(Reader *r, const std::vector<Field> &fields)
{
    std::vector<long> coords = ints_of(r, field(fields, "coordIndex"));
    std::vector<long> materials = ints_of(r, field(fields, "materialIndex"));
    std::vector<long> textures = ints_of(r, field(fields, "textureCoordIndex"));
    if (r->failed) return;
    Object *o = shape_object(r);
    const std::vector<float> *uv = r->state.texture_points.get();
    auto runs = runs_of(coords);
    long face = 0;
    for (auto &run : runs) {
        Surface *s = new_surface();
        int material = material_for_face(r, face, (long)run.first, materials);
        for (size_t k = run.first; k < run.second; k++) {
            Vertex *v = coordinate_vertex(r, o, coords[k]);
            if (!v) continue;
            float u = 0, w = 0;
            long t = textures.empty() ? coords[k] : (k < textures.size() ? textures[k] : -1);
            if (uv && t >= 0 && (size_t)t * 2 + 1 < uv->size()) {
                u = (*uv)[t * 2];
                w = (*uv)[t * 2 + 1];
            }
            surface_add_vertref(s, new_svertex(v, u, w));
        }
        finish_surface(r, o, s, material);
        face++;
    }
}

void read_line_set(Reader *r, const std::vector<Field> &fields)
{
    std::vector<long> coords = ints_of(r, field(fields, "coordIndex"));
    std::vector<long> materials = ints_of(r, field(fields, "materialIndex"));
    if (r->failed) return;
    Object *o = shape_object(r);
    long line = 0;
    for (auto &run : runs_of(coords)) {
        size_t end = run.second;
        bool closed = end - run.first > 3 && coords[run.first] == coords[end - 1];
        if (closed) end--;
        Surface *s = new_surface();
        s->surface_kind = closed ? SURFACE_CLOSED_LINE : SURFACE_LINE;
        int material = material_for_face(r, line, (long)run.first, materials);
        for (size_t k = run.first; k < end; k++) {
            Vertex *v = coordinate_vertex(r, o, coords[k]);
            if (v) surface_add_vertref(s, new_svertex(v, 0, 0));
        }
        finish_surface(r, o, s, material);
        line++;
    }
}

/* A primitive shape: its surfaces take material 0 of the Material node. */
template <typename F> void read_primitive(Reader *r, F build)
{
    Object *o = shape_object(r);
    ObjectAppender *append = appender_of(r, o);
    List *last = append->surface_tail;
    build(append);
    int material = material_for(r, 0);
    if (material < 0) return;
    for (List *l = last ? last->next : o->surfaces; l; l = l->next) {
        r->surface_materials.emplace_back((Surface *)l->item, material);
    }
}

void read_coordinates(Reader *r, const std::vector<Field> &fields)
{
    auto c = std::make_shared<CoordNode>();
    c->points = floats_of(r, field(fields, "point"));
    c->points.resize(c->points.size() / 3 * 3);
    r->state.coords = c;
    if (!r->in_own_separator || r->failed) return;
    /* Points right inside a Separator are all its object's vertices, used
     * or not, in order (as the writers put them). */
    for (size_t i = 0; i < c->points.size() / 3; i++) coordinate_vertex(r, r->current, (long)i);
}

void read_material(Reader *r, const std::vector<Field> &fields)
{
    auto m = std::make_shared<MaterialNode>();
    m->diffuse = floats_of(r, field(fields, "diffuseColor"));
    m->ambient = floats_of(r, field(fields, "ambientColor"));
    m->specular = floats_of(r, field(fields, "specularColor"));
    m->emissive = floats_of(r, field(fields, "emissiveColor"));
    m->shininess = floats_of(r, field(fields, "shininess"));
    m->transparency = floats_of(r, field(fields, "transparency"));
    r->state.material = m;
}

void read_binding(Reader *r, const std::vector<Field> &fields)
{
    static const char *const names[] = {"OVERALL", "PER_PART", "PER_PART_INDEXED", "PER_FACE", "PER_FACE_INDEXED",
                                        "PER_VERTEX", "PER_VERTEX_INDEXED"};
    std::string value = word_of(r, field(fields, "value"));
    r->state.binding = BIND_OVERALL;
    for (int i = 0; i < 7; i++) {
        if (value == names[i]) r->state.binding = i;
    }
}

void read_transform(Reader *r, const std::string &type, const std::vector<Field> &fields)
{
    Matrix4 m = matrix4_identity();
    auto vec = [&](const char *name, float x, float y, float z) {
        std::vector<float> v = floats_of(r, field(fields, name));
        if (v.size() >= 3) return std::vector<float>(v.begin(), v.begin() + 3);
        return std::vector<float>{x, y, z};
    };
    auto rotation = [&](const char *name) {
        std::vector<float> v = floats_of(r, field(fields, name));
        return v.size() >= 4 ? matrix4_rotation(v[0], v[1], v[2], v[3]) : matrix4_identity();
    };
    if (type == "Translation") {
        auto t = vec("translation", 0, 0, 0);
        m = matrix4_translation(t[0], t[1], t[2]);
    } else if (type == "Rotation") {
        m = rotation("rotation");
    } else if (type == "Scale") {
        auto s = vec("scaleFactor", 1, 1, 1);
        m = matrix4_scale(s[0], s[1], s[2]);
    } else if (type == "MatrixTransform") {
        std::vector<float> v = floats_of(r, field(fields, "matrix"));
        /* The file's matrix acts on row vectors: ours is its transpose. */
        if (v.size() >= 16) {
            for (int i = 0; i < 4; i++)
                for (int j = 0; j < 4; j++) m.m[i * 4 + j] = v[j * 4 + i];
        }
    } else {
        auto t = vec("translation", 0, 0, 0), s = vec("scaleFactor", 1, 1, 1), c = vec("center", 0, 0, 0);
        Matrix4 so = rotation("scaleOrientation");
        Matrix4 so_inverse = so;
        for (int i = 0; i < 3; i++)
            for (int j = 0; j < 3; j++) so_inverse.m[i * 4 + j] = so.m[j * 4 + i];
        m = matrix4_translation(t[0], t[1], t[2]);
        m = matrix4_multiply(m, matrix4_translation(c[0], c[1], c[2]));
        m = matrix4_multiply(m, rotation("rotation"));
        m = matrix4_multiply(m, so);
        m = matrix4_multiply(m, matrix4_scale(s[0], s[1], s[2]));
        m = matrix4_multiply(m, so_inverse);
        m = matrix4_multiply(m, matrix4_translation(-c[0], -c[1], -c[2]));
    }
    r->state.matrix = matrix4_multiply(r->state.matrix, m);
}

void read_light(Reader *r, const std::vector<Field> &fields)
{
    std::vector<float> at = floats_of(r, field(fields, "location"));
    float local[3] = {0, 0, 1};
    if (at.size() >= 3) memcpy(local, at.data(), sizeof local);
    Object *light = new_light();
    matrix4_apply(r->state.matrix, local, light->centre);
    add_child(r, r->current, light);
}

std::string texture_name(const std::string &filename)
{
    static const char prefix[] = "file://";
    if (!filename.compare(0, sizeof prefix - 1, prefix)) return filename.substr(sizeof prefix - 1);
    return filename;
}

/* A node that is not a group: its fields change the state or add shapes. */
void read_node(Reader *r, const std::string &type, size_t lo, size_t hi)
{
    std::vector<Field> fields = fields_of(r, lo, hi);
    if (r->failed) return;
    if (type == "Coordinate3") {
        read_coordinates(r, fields);
    } else if (type == "Material") {
        read_material(r, fields);
    } else if (type == "MaterialBinding") {
        read_binding(r, fields);
    } else if (type == "ShapeHints") {
        std::string order = word_of(r, field(fields, "vertexOrdering"));
        r->state.clockwise = order == "CLOCKWISE";
    } else if (type == "Texture2") {
        const Field *f = field(fields, "filename");
        std::string name = f && f->lo < f->hi ? texture_name(word(r, f->lo)) : "";
        r->state.texture = name.empty() ? nullptr : std::make_shared<std::string>(name);
        if (!name.empty() && r->current != r->root) r->object_textures.emplace_back(r->current, name);
    } else if (type == "TextureCoordinate2") {
        r->state.texture_points = std::make_shared<std::vector<float>>(floats_of(r, field(fields, "point")));
    } else if (type == "Transform" || type == "Translation" || type == "Rotation" || type == "Scale" ||
               type == "MatrixTransform") {
        read_transform(r, type, fields);
    } else if (type == "IndexedFaceSet") {
        read_face_set(r, fields);
    } else if (type == "IndexedLineSet") {
        read_line_set(r, fields);
    } else if (type == "PointLight") {
        read_light(r, fields);
    } else if (type == "Cube") {
        float w = float_of(r, field(fields, "width"), 2), h = float_of(r, field(fields, "height"), 2);
        float d = float_of(r, field(fields, "depth"), 2);
        read_primitive(r, [&](ObjectAppender *a) { vrml1_add_cube(a, r->state.matrix, w, h, d, 1); });
    } else if (type == "Sphere") {
        float radius = float_of(r, field(fields, "radius"), 1);
        read_primitive(r, [&](ObjectAppender *a) { vrml1_add_sphere(a, r->state.matrix, radius, 1); });
    } else if (type == "Cylinder") {
        float radius = float_of(r, field(fields, "radius"), 1), h = float_of(r, field(fields, "height"), 2);
        read_primitive(r, [&](ObjectAppender *a) { vrml1_add_cylinder(a, r->state.matrix, radius, h, 1); });
    } else if (type == "Cone") {
        float radius = float_of(r, field(fields, "bottomRadius"), 1), h = float_of(r, field(fields, "height"), 2);
        read_primitive(r, [&](ObjectAppender *a) { vrml1_add_cone(a, r->state.matrix, radius, h, 1); });
    }
    /* Info, Normal, NormalBinding and unknown nodes: nothing to take. */
}

/* ---- groups ---- */

FrameKind group_kind(const std::string &type)
{
    if (type == "Separator") return FRAME_SEPARATOR;
    if (type == "WWWAnchor") return FRAME_ANCHOR;
    if (type == "TransformSeparator") return FRAME_TRANSFORM_SEPARATOR;
    if (type == "Switch" || type == "LOD") return FRAME_SWITCH;
    return FRAME_GROUP;
}

bool is_group(const std::string &type)
{
    return type == "Separator" || type == "TransformSeparator" || type == "WWWAnchor" || type == "Group" ||
           type == "Switch" || type == "LOD";
}

/* Whether the next child of the innermost frame is read. */
bool child_is_read(std::vector<Frame> &stack)
{
    if (stack.empty()) return true;
    Frame &f = stack.back();
    long index = f.children++;
    if (f.skip) return false;
    if (f.kind == FRAME_SWITCH) return f.which_child == -3 || f.which_child == index;
    return true;
}

void open_group(Reader *r, std::vector<Frame> &stack, const std::string &type, bool read, const std::string &def,
                size_t start)
{
    Frame f;
    f.kind = group_kind(type);
    f.saved = r->state;
    f.object_before = r->current;
    f.object = nullptr;
    f.skip = !read;
    f.which_child = type == "LOD" ? 0 : -1;   /* a LOD's first, most detailed level */
    f.children = 0;
    f.def = def;
    f.start = start;
    f.line = r->tokens[start].line;
    if (read && f.kind == FRAME_SEPARATOR) {
        Object *o = new_object(OBJECT_NORMAL);
        std::string name = !r->pending_name.empty() ? r->pending_name : def;
        if (!name.empty()) object_set_name(o, name.c_str());
        if (!r->pending_url.empty()) object_set_url(o, r->pending_url.c_str());
        r->pending_name.clear();
        r->pending_url.clear();
        add_child(r, r->current, o);
        f.object = o;
        r->current = o;
    }
    stack.push_back(f);
}

bool object_is_empty(Object *o)
{
    return o->type != OBJECT_LIGHT && !o->vertices && !o->surfaces && !o->kids && !(o->url && o->url[0]);
}

void close_group(Reader *r, Frame &f, size_t end)
{
    if (!f.def.empty()) r->defs[f.def] = {f.start, end};
    if (f.skip) return;
    if (f.kind == FRAME_SEPARATOR || f.kind == FRAME_ANCHOR || f.kind == FRAME_TRANSFORM_SEPARATOR) {
        State saved = f.saved;
        if (f.kind == FRAME_TRANSFORM_SEPARATOR) {
            Matrix4 m = saved.matrix;
            saved = r->state;
            saved.matrix = m;
        }
        r->state = saved;
    }
    if (f.kind == FRAME_ANCHOR) r->pending_url.clear();
    if (f.object) r->current = f.object_before;
}

void group_field(Reader *r, Frame &f, const std::string &name, size_t lo, size_t hi)
{
    if (f.skip || lo >= hi) return;
    if (f.kind == FRAME_ANCHOR && name == "name") r->pending_url = word(r, lo);
    if (f.kind == FRAME_SWITCH && name == "whichChild") f.which_child = strtol(word(r, lo).c_str(), nullptr, 10);
}

void parse_range(Reader *r, size_t lo, size_t hi);

void use_node(Reader *r, const std::string &name, uint32_t line)
{
    auto found = r->defs.find(name);
    if (found == r->defs.end()) {
        fail(r, "USE on line %ld names no node defined before it", (long)line);
        return;
    }
    if (r->use_depth >= 64) {
        fail(r, "USE on line %ld nests more than 64 levels deep", (long)line);
        return;
    }
    r->use_depth++;
    std::string saved_name = r->pending_name;
    parse_range(r, found->second.first, found->second.second);
    r->pending_name = saved_name;
    r->use_depth--;
}

void parse_range(Reader *r, size_t lo, size_t hi)
{
    std::vector<Frame> stack;
    size_t i = lo;
    while (i < hi && !r->failed) {
        if (++r->work > r->work_limit) {
            fail(r, "the file uses its DEF nodes too many times (more than %ld steps)", r->work_limit);
            break;
        }
        const Vrml1Token &t = r->tokens[i];
        if (t.kind == VRML_OBJECT_COMMENT) {
            r->pending_name = word(r, i++);
            continue;
        }
        if (t.kind == VRML_CLOSE_BRACE) {
            if (stack.empty()) {
                fail(r, "the closing brace on line %ld has no opening brace", (long)t.line);
                break;
            }
            close_group(r, stack.back(), i + 1);
            stack.pop_back();
            r->depth--;
            i++;
            continue;
        }
        if (t.kind != VRML_WORD) {
            fail(r, "unexpected text on line %ld", (long)t.line);
            break;
        }
        size_t start = i;
        std::string type = word(r, i), def;
        if (type == "DEF" && is_kind(r, i + 2, hi, VRML_WORD)) {
            def = word(r, i + 1);
            i += 2;
            type = word(r, i);
        } else if (type == "USE" && i + 1 < hi) {
            if (child_is_read(stack)) use_node(r, word(r, i + 1), t.line);
            i += 2;
            continue;
        }
        if (!is_kind(r, i + 1, hi, VRML_OPEN_BRACE)) {
            if (stack.empty()) {
                fail(r, "a node is expected on line %ld", (long)t.line);
                break;
            }
            size_t end = value_end(r, i + 1, hi);
            group_field(r, stack.back(), type, i + 1, end);
            i = end > i + 1 ? end : i + 1;
            continue;
        }
        bool read = child_is_read(stack);
        if (is_group(type)) {
            if (++r->depth > VRML1_MAX_DEPTH) {
                fail(r, "nodes nest more than %ld levels deep (line %ld)", VRML1_MAX_DEPTH, (long)t.line);
                break;
            }
            open_group(r, stack, type, read, def, start);
            i += 2;
            continue;
        }
        size_t end = matching(r, i + 1, hi);
        if (r->failed) break;
        if (type != "WWWAnchor" && type != "Separator") r->pending_name.clear();
        r->in_own_separator = !stack.empty() && stack.back().object && stack.back().object == r->current;
        if (read) read_node(r, type, i + 2, end - 1);
        if (!def.empty()) r->defs[def] = {start, end};
        i = end;
    }
    if (!r->failed && !stack.empty()) {
        fail(r, "the file ends inside a node opened on line %ld (a closing brace is missing)", (long)stack.back().line);
    }
}

/* ---- the end of a read ---- */

void collect_objects(Object *o, std::vector<Object *> *out)
{
    std::vector<Object *> stack(1, o);
    while (!stack.empty()) {
        Object *p = stack.back();
        stack.pop_back();
        out->push_back(p);
        for (List *k = p->kids; k; k = k->next) stack.push_back((Object *)k->item);
    }
}

/* Drops the objects of Separators that turned out empty (no points, no
 * surfaces, no url, no children left), deepest first, each parent's
 * children rebuilt once. */
void prune_empty(Object *root)
{
    std::vector<std::pair<Object *, bool>> stack(1, {root, false});
    while (!stack.empty()) {
        auto [o, visited] = stack.back();
        stack.pop_back();
        if (!visited) {
            stack.push_back({o, true});
            for (List *k = o->kids; k; k = k->next) stack.push_back({(Object *)k->item, false});
            continue;
        }
        object_free_children_where(o, object_is_empty);
    }
}

/* Moves every child of from to the end of to's children. */
void move_children(Object *from, Object *to)
{
    List *tail = to->kids ? list_end(to->kids) : nullptr;
    for (List *k = from->kids; k; k = k->next) {
        Object *kid = (Object *)k->item;
        tail = list_add_item_fast(&to->kids, tail, kid);
        kid->parent = to;
        to->num_kids++;
    }
    list_free(&from->kids);
    from->num_kids = 0;
}

long commit(Reader *r)
{
    std::vector<int> palette_index;
    for (Material &m : r->collected) palette_index.push_back(material_get_index(&m));
    for (auto &sm : r->surface_materials) sm.first->mat = (uint16_t)palette_index[sm.second];
    for (auto &ot : r->object_textures) ot.first->texture = (uint8_t)texture_register_name(ot.second.c_str());
    prune_empty(r->root);
    /* One Separator around everything, as the writers put it, holds the
     * file's objects rather than being one. */
    if (r->root->num_kids == 1) {
        Object *only = (Object *)r->root->kids->item;
        if (!only->vertices && !only->surfaces && !(only->url && only->url[0]) && only->kids) {
            list_free(&r->root->kids);
            r->root->num_kids = 0;
            move_children(only, r->root);
            object_free(only);
        }
    }
    std::vector<Object *> all;
    for (List *k = r->root->kids; k; k = k->next) collect_objects((Object *)k->item, &all);
    for (Object *o : all) object_calc_normals_force(o);
    clear_selection();
    long added = (long)r->root->num_kids;
    List *made = list_clone(r->root->kids);
    move_children(r->root, world);
    select_objectlist(made);
    list_free(&made);
    scan_lights();
    if (r->bad_indices) {
        console_printf("VRML reader: %ld indices named no point and were left out\n", r->bad_indices);
    }
    return added;
}

} // namespace

long read_vrml1_text(const char *text, size_t size)
{
    /* Numbers are converted in place: the text must end in a NUL. */
    assert(text[size] == '\0');
    static const char *const headers[] = {"#VRML V1.0 ascii", "#Inventor V2.1 ascii", "#Inventor V2.0 ascii",
                                          "#Inventor V1.0 ascii"};
    bool known = false;
    for (const char *h : headers) known |= size >= strlen(h) && !memcmp(text, h, strlen(h));
    if (!known) {
        if (size >= 10 && !memcmp(text, "#VRML V2.0", 10)) {
            console_printf("VRML reader: this is a VRML 2.0 file; only VRML 1.0 and Inventor files can be read\n");
        } else {
            console_printf("VRML reader: the file does not start with \"#VRML V1.0 ascii\" or \"#Inventor V2.1 "
                           "ascii\"\n");
        }
        return -1;
    }
    Reader r;
    r.text = text;
    std::string error;
    size_t header_end = 0;
    while (header_end < size && text[header_end] != '\n') header_end++;
    if (!vrml1_tokenize(text + header_end, size - header_end, &r.tokens, &error)) {
        console_printf("VRML reader: %s\n", error.c_str());
        return -1;
    }
    for (Vrml1Token &t : r.tokens) t.offset += header_end;
    r.root = new_group();
    r.current = r.root;
    r.work_limit = 16 * (long)r.tokens.size() + 1000000;
    parse_range(&r, 0, r.tokens.size());
    if (r.failed) {
        object_free(r.root);
        return -1;
    }
    long added = commit(&r);
    object_free(r.root);
    return added;
}

long read_vrml1_file(const char *filename)
{
    FILE *file = filename ? fopen(filename, "rb") : nullptr;
    if (!file) {
        console_printf("can't open file for reading\n");
        return -1;
    }
    std::string text;
    char buffer[65536];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, file)) > 0) text.append(buffer, n);
    bool error = ferror(file);
    fclose(file);
    if (error) {
        console_printf("VRML reader: error reading %s\n", filename);
        return -1;
    }
    return read_vrml1_text(text.c_str(), text.size());
}
