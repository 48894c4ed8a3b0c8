/*
 * exchange_scene.cpp - the model as an assimp scene for the exporters: a
 * root node for the world, one node per object (named after it, under its
 * parent's node; a flat list of nodes for 3MF, whose exporter writes only
 * the root's children), one mesh per palette material used by an object,
 * the vertices as they stand (the model has no transforms of its own),
 * polygons as polygons, lines as two-point segments where the format has
 * them, the references' u and v, and one material per palette entry and
 * texture used.
 */
#include "exchange.h"

#include <assimp/scene.h>

#include <cstring>
#include <map>
#include <unordered_map>
#include <vector>

struct SceneBuilder {
    std::vector<aiMesh *> meshes;
    std::vector<aiMaterial *> materials;
    std::map<std::pair<int, int>, unsigned int> material_of;   /* (palette index, texture) -> material */
    bool triangles_only;
    std::string directory;   /* of the file written, for relative texture names */
    ExportCounts *counts;
    unsigned long unnamed = 0;
};

static aiColor4D colour_of(const float *c)
{
    return aiColor4D(c[0], c[1], c[2], 1.0f);
}

/* A texture file name as the written file should name it: relative when
 * it lies in the same directory. */
static std::string texture_reference(const SceneBuilder *b, const char *path)
{
    std::string name = path;
    std::string prefix = b->directory + "/";
    if (!b->directory.empty() && name.rfind(prefix, 0) == 0) return name.substr(prefix.size());
    return name;
}

static unsigned int material_index(SceneBuilder *b, int mat, int texture)
{
    auto key = std::make_pair(mat, texture);
    auto found = b->material_of.find(key);
    if (found != b->material_of.end()) return found->second;
    aiMaterial *m = new aiMaterial();
    aiString name(std::string("vesk_") + std::to_string(mat));
    m->AddProperty(&name, AI_MATKEY_NAME);
    Material *entry = vk_material_get(mat);
    if (entry) {
        aiColor4D diffuse = colour_of(entry->rgb), ambient = colour_of(entry->ambient);
        aiColor4D specular = colour_of(entry->specular), emissive = colour_of(entry->emissive);
        float opacity = 1.0f - entry->transparency, shininess = entry->shininess;
        m->AddProperty(&diffuse, 1, AI_MATKEY_COLOR_DIFFUSE);
        m->AddProperty(&ambient, 1, AI_MATKEY_COLOR_AMBIENT);
        m->AddProperty(&specular, 1, AI_MATKEY_COLOR_SPECULAR);
        m->AddProperty(&emissive, 1, AI_MATKEY_COLOR_EMISSIVE);
        m->AddProperty(&opacity, 1, AI_MATKEY_OPACITY);
        m->AddProperty(&shininess, 1, AI_MATKEY_SHININESS);
    }
    const char *file = texture ? texture_id_to_name(texture) : nullptr;
    if (file && *file) {
        aiString reference(texture_reference(b, file));
        m->AddProperty(&reference, AI_MATKEY_TEXTURE_DIFFUSE(0));
    }
    unsigned int index = (unsigned int)b->materials.size();
    b->materials.push_back(m);
    b->material_of[key] = index;
    return index;
}

/* One assimp vertex per distinct (vertex, u, v) of a mesh. */
struct CornerKey {
    const Vertex *vertex;
    float u, v;
    bool operator==(const CornerKey &o) const { return vertex == o.vertex && u == o.u && v == o.v; }
};

struct CornerHash {
    size_t operator()(const CornerKey &k) const
    {
        size_t h = std::hash<const void *>()(k.vertex);
        uint32_t u, v;
        memcpy(&u, &k.u, 4);
        memcpy(&v, &k.v, 4);
        return h ^ ((size_t)u * 0x9E3779B1u) ^ ((size_t)v << 7);
    }
};

/* A mesh being collected: corners, faces as index lists. */
struct MeshParts {
    std::unordered_map<CornerKey, unsigned int, CornerHash> index_of;
    std::vector<CornerKey> corners;
    std::vector<std::vector<unsigned int>> faces;
    bool has_uv = false;
    bool lines = false;
};

static unsigned int corner_index(MeshParts *parts, const SVertex *ref)
{
    CornerKey key = {ref->vertex, ref->u, ref->v};
    auto found = parts->index_of.find(key);
    if (found != parts->index_of.end()) return found->second;
    unsigned int index = (unsigned int)parts->corners.size();
    parts->corners.push_back(key);
    parts->index_of.emplace(key, index);
    if (ref->u != 0.0f || ref->v != 0.0f) parts->has_uv = true;
    return index;
}

/* A surface's corners as mesh indices, in boundary order. */
static std::vector<unsigned int> surface_indices(MeshParts *parts, const Surface *s)
{
    std::vector<unsigned int> indices;
    indices.reserve(s->num_vertrefs);
    for (List *r = s->vertrefs; r; r = r->next) {
        const SVertex *ref = (const SVertex *)r->item;
        if (ref && ref->vertex) indices.push_back(corner_index(parts, ref));
    }
    return indices;
}

static void add_surface(MeshParts *polygons, MeshParts *lines, const Surface *s, bool triangles_only)
{
    bool is_line = s->surface_kind != SURFACE_POLYGON || s->num_vertrefs < 3;
    if (!is_line) {
        polygons->faces.push_back(surface_indices(polygons, s));
        return;
    }
    /* Formats of triangles alone have no lines to write them as. */
    if (triangles_only) return;
    std::vector<unsigned int> corners = surface_indices(lines, s);
    if (corners.size() < 2) return;
    if (s->surface_kind == SURFACE_CLOSED_LINE && corners.size() > 2) corners.push_back(corners[0]);
    for (size_t i = 0; i + 1 < corners.size(); i++) lines->faces.push_back({corners[i], corners[i + 1]});
    lines->lines = true;
}

static aiMesh *make_mesh(SceneBuilder *b, const MeshParts &parts, const std::string &name, unsigned int material)
{
    aiMesh *mesh = new aiMesh();
    mesh->mName = aiString(name);
    mesh->mMaterialIndex = material;
    mesh->mNumVertices = (unsigned int)parts.corners.size();
    mesh->mVertices = new aiVector3D[mesh->mNumVertices];
    if (parts.has_uv) {
        mesh->mTextureCoords[0] = new aiVector3D[mesh->mNumVertices];
        mesh->mNumUVComponents[0] = 2;
    }
    for (unsigned int i = 0; i < mesh->mNumVertices; i++) {
        const float *p = parts.corners[i].vertex->point;
        mesh->mVertices[i] = aiVector3D(p[0], p[1], p[2]);
        if (parts.has_uv) mesh->mTextureCoords[0][i] = aiVector3D(parts.corners[i].u, parts.corners[i].v, 0.0f);
    }
    mesh->mNumFaces = (unsigned int)parts.faces.size();
    mesh->mFaces = new aiFace[mesh->mNumFaces];
    for (unsigned int f = 0; f < mesh->mNumFaces; f++) {
        const std::vector<unsigned int> &indices = parts.faces[f];
        aiFace &face = mesh->mFaces[f];
        face.mNumIndices = (unsigned int)indices.size();
        face.mIndices = new unsigned int[face.mNumIndices];
        memcpy(face.mIndices, indices.data(), indices.size() * sizeof(unsigned int));
        mesh->mPrimitiveTypes |= face.mNumIndices == 2   ? aiPrimitiveType_LINE
                                 : face.mNumIndices == 3 ? aiPrimitiveType_TRIANGLE
                                                         : aiPrimitiveType_POLYGON;
    }
    b->counts->meshes++;
    b->counts->vertices += mesh->mNumVertices;
    b->counts->faces += mesh->mNumFaces;
    return mesh;
}

/* The meshes of one object: its surfaces grouped by material, polygons
 * and lines apart.  Returns the indices of the meshes made. */
static std::vector<unsigned int> object_meshes(SceneBuilder *b, Object *o, const std::string &name)
{
    std::map<uint16_t, std::pair<MeshParts, MeshParts>> by_material;
    for (List *l = o->surfaces; l; l = l->next) {
        const Surface *s = (const Surface *)l->item;
        if (!s) continue;
        auto &parts = by_material[s->mat];
        add_surface(&parts.first, &parts.second, s, b->triangles_only);
    }
    std::vector<unsigned int> made;
    for (auto &entry : by_material) {
        unsigned int material = material_index(b, entry.first, o->texture);
        for (const MeshParts *parts : {&entry.second.first, &entry.second.second}) {
            if (parts->faces.empty()) continue;
            std::string mesh_name = made.empty() ? name : name + "_" + std::to_string(made.size());
            made.push_back((unsigned int)b->meshes.size());
            b->meshes.push_back(make_mesh(b, *parts, mesh_name, material));
        }
    }
    return made;
}

static aiNode *mesh_node(SceneBuilder *b, Object *o, aiNode *parent)
{
    std::string name = o->name && *o->name ? o->name : "object_" + std::to_string(++b->unnamed);
    aiNode *node = new aiNode(name);
    node->mParent = parent;
    b->counts->nodes++;
    std::vector<unsigned int> meshes = object_meshes(b, o, name);
    if (!meshes.empty()) {
        node->mNumMeshes = (unsigned int)meshes.size();
        node->mMeshes = new unsigned int[node->mNumMeshes];
        memcpy(node->mMeshes, meshes.data(), meshes.size() * sizeof(unsigned int));
    }
    return node;
}

/* A flat scene, for exporters that write only the root's children: one
 * node for each object that has surfaces, whatever its depth. */
static void flat_nodes(SceneBuilder *b, Object *o, aiNode *root, std::vector<aiNode *> *out)
{
    if (o->type == OBJECT_LIGHT) return;
    if (o->surfaces) {
        aiNode *node = mesh_node(b, o, root);
        if (node->mNumMeshes) out->push_back(node);
        else delete node;
    }
    for (List *k = o->kids; k; k = k->next) {
        if (k->item) flat_nodes(b, (Object *)k->item, root, out);
    }
}

static aiNode *object_node(SceneBuilder *b, Object *o, aiNode *parent)
{
    aiNode *node = mesh_node(b, o, parent);
    std::vector<aiNode *> kids;
    for (List *k = o->kids; k; k = k->next) {
        Object *kid = (Object *)k->item;
        if (kid && kid->type != OBJECT_LIGHT) kids.push_back(object_node(b, kid, node));
    }
    if (!kids.empty()) {
        node->mNumChildren = (unsigned int)kids.size();
        node->mChildren = new aiNode *[node->mNumChildren];
        memcpy(node->mChildren, kids.data(), kids.size() * sizeof(aiNode *));
    }
    return node;
}

static std::string directory_of(const char *filename)
{
    std::string name = filename ? filename : "";
    size_t slash = name.rfind('/');
    if (slash == std::string::npos) return "";
    return slash == 0 ? "/" : name.substr(0, slash);
}

aiScene *exchange_build_scene(Object *root, const char *format, const char *filename, ExportCounts *counts)
{
    ExportCounts ignored;
    if (!counts) counts = &ignored;
    *counts = ExportCounts();
    SceneBuilder b;
    b.triangles_only = exchange_format_needs_triangles(format) != 0;
    b.directory = directory_of(filename);
    b.counts = counts;
    aiScene *scene = new aiScene();
    /* The root stands for the world: its children are the top objects,
     * which is what the reader takes from a root without geometry. */
    scene->mRootNode = new aiNode(root && root->type != OBJECT_WORLD && root->name ? root->name : "world");
    std::vector<aiNode *> tops;
    /* The 3MF exporter writes the meshes of the root's children only. */
    bool flat = format && strcmp(format, "3mf") == 0;
    for (List *k = root ? root->kids : nullptr; k; k = k->next) {
        Object *kid = (Object *)k->item;
        if (!kid || kid->type == OBJECT_LIGHT) continue;
        if (flat) flat_nodes(&b, kid, scene->mRootNode, &tops);
        else tops.push_back(object_node(&b, kid, scene->mRootNode));
    }
    if (!tops.empty()) {
        scene->mRootNode->mNumChildren = (unsigned int)tops.size();
        scene->mRootNode->mChildren = new aiNode *[tops.size()];
        memcpy(scene->mRootNode->mChildren, tops.data(), tops.size() * sizeof(aiNode *));
    }
    scene->mNumMeshes = (unsigned int)b.meshes.size();
    if (scene->mNumMeshes) {
        scene->mMeshes = new aiMesh *[scene->mNumMeshes];
        memcpy(scene->mMeshes, b.meshes.data(), b.meshes.size() * sizeof(aiMesh *));
    }
    scene->mNumMaterials = (unsigned int)b.materials.size();
    if (scene->mNumMaterials) {
        scene->mMaterials = new aiMaterial *[scene->mNumMaterials];
        memcpy(scene->mMaterials, b.materials.data(), b.materials.size() * sizeof(aiMaterial *));
    }
    return scene;
}
