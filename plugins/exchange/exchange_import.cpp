/*
 * exchange_import.cpp - reading a model with libassimp into detached
 * objects: one object per node (named after it, a child of its parent's
 * object), vertices placed by the node's transform and its ancestors',
 * polygons kept as polygons in assimp's winding (anticlockwise seen from
 * the front, as the program's own), two-point primitives as lines, the
 * first texture coordinates as the references' u and v, diffuse colours
 * through the palette and diffuse texture files through the texture
 * table.
 */
#include "exchange.h"

#include <assimp/Importer.hpp>
#include <assimp/material.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <unordered_map>
#include <sys/stat.h>
#include <vector>

/* Everything is taken as the file has it; validation keeps damaged index
 * lists away from the conversion.  Vertices are not joined by assimp
 * (aiProcess_JoinIdenticalVertices): the conversion shares them by exact
 * position, which also joins the corners assimp keeps apart for their
 * normals or texture coordinates, and joining twice made an import of a
 * million triangles nearly three times as slow. */
static const unsigned int import_flags = aiProcess_ValidateDataStructure;

/* Nodes nested deeper than this are taken as damage, not as a model. */
enum { MAX_NODE_DEPTH = 1000 };

/* An exact position as a key: the object's vertices are shared by
 * position, as the program matches vertices everywhere (assimp keeps
 * corners apart that differ only in normal or texture coordinates, which
 * here belong to the surfaces' references).  -0 is taken as 0. */
struct PositionKey {
    uint32_t bits[3];
    bool operator==(const PositionKey &o) const
    {
        return bits[0] == o.bits[0] && bits[1] == o.bits[1] && bits[2] == o.bits[2];
    }
};

struct PositionHash {
    size_t operator()(const PositionKey &k) const
    {
        return (size_t)k.bits[0] * 0x9E3779B1u ^ (size_t)k.bits[1] * 0x85EBCA77u ^ (size_t)k.bits[2] * 0xC2B2AE3Du;
    }
};

static PositionKey position_key(const float *p)
{
    PositionKey k;
    for (int i = 0; i < 3; i++) {
        float f = p[i] == 0.0f ? 0.0f : p[i];
        memcpy(&k.bits[i], &f, 4);
    }
    return k;
}

typedef std::unordered_map<PositionKey, Vertex *, PositionHash> VertexIndex;

struct Converter {
    const aiScene *scene;
    std::string directory;
    std::vector<int> palette;   /* per assimp material: palette index, -1 not yet known */
    std::vector<int> textures;  /* per assimp material: texture id, -1 not yet known */
    ImportCounts *counts;
};

static int clamp_255(float component)
{
    if (!(component > 0.0f)) return 0;   /* also NaN */
    if (component >= 1.0f) return 255;
    return (int)std::lround(component * 255.0f);
}

/* The palette index of an assimp material's diffuse colour (the default
 * material when it has none). */
static int material_palette_index(Converter *c, unsigned int index)
{
    if (index >= c->scene->mNumMaterials) return 1;
    if (c->palette[index] >= 0) return c->palette[index];
    aiColor4D colour;
    int result = 1;
    if (aiGetMaterialColor(c->scene->mMaterials[index], AI_MATKEY_COLOR_DIFFUSE, &colour) == AI_SUCCESS) {
        long packed = (long)clamp_255(colour.r) << 16 | (long)clamp_255(colour.g) << 8 | (long)clamp_255(colour.b);
        result = rgb_to_index(packed);
    }
    c->palette[index] = result;
    return result;
}

static int is_regular_file(const std::string &path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

/* The texture id of an assimp material's diffuse texture file, when that
 * file exists (beside the model for a relative name); 0 for none.
 * Textures embedded in the file are not taken. */
static int material_texture(Converter *c, unsigned int index)
{
    if (index >= c->scene->mNumMaterials || c->directory.empty()) return 0;
    if (c->textures[index] >= 0) return c->textures[index];
    c->textures[index] = 0;
    aiString name;
    if (aiGetMaterialTexture(c->scene->mMaterials[index], aiTextureType_DIFFUSE, 0, &name) != AI_SUCCESS) return 0;
    std::string file = name.C_Str();
    if (file.empty() || file[0] == '*') return 0;
    for (char &ch : file) {
        if (ch == '\\') ch = '/';
    }
    std::string path = file[0] == '/' ? file : c->directory + "/" + file;
    if (!is_regular_file(path)) {
        console_printf("texture %s of the model was not found - left out\n", path.c_str());
        return 0;
    }
    /* A file no loader reads is kept by name, so the model still names it. */
    int id = add_new_texture(path.c_str());
    if (id == 0) id = texture_register_name(path.c_str());
    c->textures[index] = id;
    return id;
}

/* Appends to a list whose last node the caller keeps. */
struct Tail {
    List **slot;
    List *last;
};

static void tail_add(Tail *t, void *item)
{
    t->last = list_add_item_fast(t->slot, t->last, item);
}

static void transform_point(const aiMatrix4x4 &m, const aiVector3D &p, float *out)
{
    aiVector3D q = m * p;
    out[0] = q.x;
    out[1] = q.y;
    out[2] = q.z;
}

/* One face as a surface of the object: polygons and lines; single points
 * have no surface of their own and are only counted. */
static Surface *convert_face(const aiMesh *mesh, const aiFace &face, const std::vector<Vertex *> &vertices,
                             int mat, bool mirrored)
{
    if (face.mNumIndices < 2) return nullptr;
    Surface *s = new_surface();
    if (!s) return nullptr;
    s->mat = (uint16_t)mat;
    s->surface_kind = face.mNumIndices == 2 ? SURFACE_LINE : SURFACE_POLYGON;
    const aiVector3D *uv = mesh->HasTextureCoords(0) ? mesh->mTextureCoords[0] : nullptr;
    List *last = nullptr;
    for (unsigned int k = 0; k < face.mNumIndices; k++) {
        /* A mirroring transform turns the winding over; reading the
         * corners backwards keeps the faces facing out. */
        bool reverse = mirrored && face.mNumIndices >= 3;   /* lines face no way */
        unsigned int i = face.mIndices[reverse ? face.mNumIndices - 1 - k : k];
        if (i >= vertices.size()) continue;   /* validation keeps these out; never trusted */
        SVertex *ref = new_svertex(vertices[i], uv ? uv[i].x : 0.0f, uv ? uv[i].y : 0.0f);
        last = list_add_item_fast(&s->vertrefs, last, ref);
        s->num_vertrefs++;
    }
    return s;
}

/* Formats and assimp hand over a polyline as its segments one by one;
 * segments that follow on from each other become one line again, and a
 * line that comes back to its start a closed line. */
struct PolylineJoin {
    Surface *line = nullptr;   /* the open line being extended, or null */
    List *last_ref = nullptr;
    Vertex *first = nullptr;
};

static void start_polyline(PolylineJoin *join, Surface *s)
{
    join->line = nullptr;
    if (s->surface_kind != SURFACE_LINE || s->num_vertrefs != 2) return;
    join->line = s;
    join->last_ref = s->vertrefs->next;
    join->first = ((SVertex *)s->vertrefs->item)->vertex;
}

/* 1 when the face was taken into the line being joined. */
static int extend_polyline(PolylineJoin *join, const aiMesh *mesh, const aiFace &face,
                           const std::vector<Vertex *> &vertices)
{
    if (!join->line || face.mNumIndices != 2) return 0;
    unsigned int a = face.mIndices[0], b = face.mIndices[1];
    if (a >= vertices.size() || b >= vertices.size()) return 0;
    if (vertices[a] != ((SVertex *)join->last_ref->item)->vertex) return 0;
    if (vertices[b] == join->first) {
        join->line->surface_kind = SURFACE_CLOSED_LINE;
        join->line = nullptr;
        return 1;
    }
    const aiVector3D *uv = mesh->HasTextureCoords(0) ? mesh->mTextureCoords[0] : nullptr;
    SVertex *ref = new_svertex(vertices[b], uv ? uv[b].x : 0.0f, uv ? uv[b].y : 0.0f);
    join->last_ref = list_add_item_fast(&join->line->vertrefs, join->last_ref, ref);
    join->line->num_vertrefs++;
    return 1;
}

static void convert_mesh(Converter *c, const aiMesh *mesh, const aiMatrix4x4 &to_world, bool mirrored,
                         Object *o, VertexIndex *shared, Tail *vertex_tail, Tail *surface_tail)
{
    std::vector<Vertex *> vertices(mesh->mNumVertices);
    for (unsigned int i = 0; i < mesh->mNumVertices; i++) {
        float p[3];
        transform_point(to_world, mesh->mVertices[i], p);
        Vertex *&v = (*shared)[position_key(p)];
        if (!v) {
            v = new_vertex_set(p[0], p[1], p[2]);
            tail_add(vertex_tail, v);
            o->num_vert++;
            c->counts->vertices++;
        }
        vertices[i] = v;
    }
    int mat = material_palette_index(c, mesh->mMaterialIndex);
    int texture = material_texture(c, mesh->mMaterialIndex);
    if (texture && !o->texture && texture < 256) o->texture = (uint8_t)texture;
    PolylineJoin join;
    for (unsigned int f = 0; f < mesh->mNumFaces; f++) {
        if (extend_polyline(&join, mesh, mesh->mFaces[f], vertices)) continue;
        Surface *s = convert_face(mesh, mesh->mFaces[f], vertices, mat, mirrored);
        if (!s) {
            c->counts->skipped_points++;
            continue;
        }
        tail_add(surface_tail, s);
        o->num_surf++;
        c->counts->surfaces++;
        start_polyline(&join, s);
    }
}

static Object *convert_node(Converter *c, const aiNode *node, const aiMatrix4x4 &parent, int depth)
{
    Object *o = node->mNumMeshes ? new_object(OBJECT_NORMAL) : new_group();
    if (!o) return nullptr;
    c->counts->objects++;
    if (node->mName.length) object_set_name(o, node->mName.C_Str());
    aiMatrix4x4 to_world = parent * node->mTransformation;
    bool mirrored = to_world.Determinant() < 0;
    Tail vertex_tail = {&o->vertices, nullptr};
    Tail surface_tail = {&o->surfaces, nullptr};
    VertexIndex shared;
    size_t corners = 0;
    for (unsigned int m = 0; m < node->mNumMeshes; m++) {
        if (node->mMeshes[m] < c->scene->mNumMeshes) corners += c->scene->mMeshes[node->mMeshes[m]]->mNumVertices;
    }
    shared.reserve(corners);
    for (unsigned int m = 0; m < node->mNumMeshes; m++) {
        unsigned int index = node->mMeshes[m];
        if (index >= c->scene->mNumMeshes) continue;
        convert_mesh(c, c->scene->mMeshes[index], to_world, mirrored, o, &shared, &vertex_tail, &surface_tail);
    }
    if (depth >= MAX_NODE_DEPTH) {
        console_printf("model nodes nested more than %d deep - the deeper ones are left out\n", MAX_NODE_DEPTH);
        return o;
    }
    Tail kid_tail = {&o->kids, nullptr};
    for (unsigned int k = 0; k < node->mNumChildren; k++) {
        Object *kid = convert_node(c, node->mChildren[k], to_world, depth + 1);
        if (!kid) continue;
        kid->parent = o;
        tail_add(&kid_tail, kid);
        o->num_kids++;
    }
    /* Empty nodes (the markers of some formats, cameras, groups left with
     * nothing) have nothing to show in the model. */
    if (!o->vertices && !o->kids) {
        object_free(o);
        c->counts->objects--;
        return nullptr;
    }
    return o;
}

Object *exchange_convert_scene(const aiScene *scene, const char *directory, ImportCounts *counts)
{
    ImportCounts ignored;
    if (!counts) counts = &ignored;
    *counts = ImportCounts();
    Object *holder = new_group();
    if (!holder || !scene || !scene->mRootNode) return holder;
    Converter c = {scene, directory ? directory : "", std::vector<int>(scene->mNumMaterials, -1),
                   std::vector<int>(scene->mNumMaterials, -1), counts};
    const aiNode *root = scene->mRootNode;
    /* The root only holds the model's parts when it has no geometry
     * (named after the file for OBJ, made up by assimp as "<3DSRoot>",
     * a Collada file's scene, the world of our own exports): its children
     * become the top objects, placed by its transform.  (A glTF file with
     * one top node has that node as the root: its name is not kept.) */
    if (root->mNumMeshes) {
        Object *o = convert_node(&c, root, aiMatrix4x4(), 0);
        if (o) object_add_child(holder, o);
    } else {
        Tail kid_tail = {&holder->kids, nullptr};
        for (unsigned int k = 0; k < root->mNumChildren; k++) {
            Object *o = convert_node(&c, root->mChildren[k], root->mTransformation, 1);
            if (!o) continue;
            o->parent = holder;
            tail_add(&kid_tail, o);
            holder->num_kids++;
        }
    }
    object_calc_normals_force(holder);
    return holder;
}

/* The part of text after the first occurrence of marker, up to the next
 * double quote; "" when marker is not there. */
static std::string quoted_after(const std::string &text, const char *marker)
{
    size_t at = text.find(marker);
    if (at == std::string::npos) return "";
    size_t start = at + strlen(marker);
    size_t end = text.find('"', start);
    return text.substr(start, end == std::string::npos ? std::string::npos : end - start);
}

/* assimp's complaint, made into a sentence about the file: the common
 * cases in plain words, the rest with assimp's own detail. */
static std::string describe_failure(const char *what, const char *assimp_error)
{
    std::string text = std::string("can't import ") + what + ": ";
    std::string reason = assimp_error ? assimp_error : "";
    while (!reason.empty() && (reason.back() == '\n' || reason.back() == ' ' || reason.back() == '.')) reason.pop_back();
    std::string missing = quoted_after(reason, "could not open referenced file \"");
    if (!missing.empty()) return text + "it needs the file " + missing + ", which is missing (" + reason + ")";
    if (reason.empty() || reason.find("No suitable reader found") != std::string::npos)
        return text + "it is not a model in a format that can be imported, or it is damaged";
    if (reason.rfind("Validation failed: ", 0) == 0)
        return text + "the file is damaged (" + reason.substr(strlen("Validation failed: ")) + ")";
    return text + "the file is damaged or not what its name says (" + reason + ")";
}

static std::string directory_of(const char *filename)
{
    std::string name(filename);
    size_t slash = name.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : name.substr(0, slash);
}

/* A scene that has nothing to show is refused with its own message. */
static Object *finish_read(const aiScene *scene, const char *what, const char *directory, ImportCounts *counts,
                           std::string *error)
{
    if (!scene->mRootNode || scene->mNumMeshes == 0) {
        *error = std::string("can't import ") + what + ": it holds no meshes";
        return nullptr;
    }
    return exchange_convert_scene(scene, directory, counts);
}

Object *exchange_read_file(const char *filename, ImportCounts *counts, std::string *error)
{
    if (!filename || !*filename) {
        *error = "can't import: no file name given";
        return nullptr;
    }
    struct stat st;
    if (stat(filename, &st) != 0 || !S_ISREG(st.st_mode)) {
        *error = std::string("can't import ") + filename + ": no such file";
        return nullptr;
    }
    std::vector<char> start(EXCHANGE_HEADER_LIMIT);
    FILE *file = fopen(filename, "rb");
    if (!file) {
        *error = std::string("can't import ") + filename + ": " + strerror(errno);
        return nullptr;
    }
    size_t got = fread(start.data(), 1, start.size(), file);
    fclose(file);
    const char *refusal = exchange_refused_input(start.data(), got, (unsigned long long)st.st_size, got < start.size());
    if (refusal) {
        *error = std::string("can't import ") + filename + ": " + refusal;
        return nullptr;
    }
    Assimp::Importer importer;
    const aiScene *scene = importer.ReadFile(filename, import_flags);
    if (!scene) {
        *error = describe_failure(filename, importer.GetErrorString());
        return nullptr;
    }
    Object *holder = finish_read(scene, filename, directory_of(filename).c_str(), counts, error);
    /* Formats without names (STL, PLY) give objects the file's name. */
    std::string base = filename;
    base = base.substr(base.rfind('/') == std::string::npos ? 0 : base.rfind('/') + 1);
    for (List *k = holder ? holder->kids : nullptr; k; k = k->next) {
        Object *o = (Object *)k->item;
        if (!o->name || !*o->name) object_set_name(o, base.c_str());
    }
    return holder;
}

Object *exchange_read_memory(const void *data, size_t size, const char *hint, ImportCounts *counts, std::string *error)
{
    if (!data || size == 0) {
        *error = "can't import: the data is empty";
        return nullptr;
    }
    const char *refusal = exchange_refused_input((const char *)data, size, size, true);
    if (refusal) {
        *error = std::string("can't import the data: ") + refusal;
        return nullptr;
    }
    Assimp::Importer importer;
    const aiScene *scene = importer.ReadFileFromMemory(data, size, import_flags, hint ? hint : "");
    if (!scene) {
        *error = describe_failure("the data", importer.GetErrorString());
        return nullptr;
    }
    return finish_read(scene, "the data", nullptr, counts, error);
}
