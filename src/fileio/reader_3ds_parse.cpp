/*
 * fileio/reader_3ds_parse.cpp - the walk over a 3D Studio file's chunks
 * (a 16-bit id and a 32-bit length each, lengths counting the 6-byte
 * header) into raw records.  Every level loops while the position is
 * below the end of its parent, handles the ids it knows and skips the
 * others by their length.
 *
 * Lengths are not trusted: a chunk reaching past its parent (a file cut
 * short) or one shorter than its own header ends the parse, and every
 * count is checked against the bytes its chunk holds before anything is
 * allocated for it.  The tree's depth is fixed by the ids, so nesting
 * cannot run deep.
 */
#include "fileio/reader_3ds.h"

#include <cstring>

enum {
    CHUNK_MAIN = 0x4D4D,
    CHUNK_EDITOR = 0x3D3D,
    CHUNK_OBJECT = 0x4000,
    CHUNK_TRIMESH = 0x4100,
    CHUNK_VERTICES = 0x4110,
    CHUNK_FACES = 0x4120,
    CHUNK_FACE_MATERIAL = 0x4130,
    CHUNK_TEXTURE_POINTS = 0x4140,
    CHUNK_MATRIX = 0x4160,
    CHUNK_MATERIAL = 0xAFFF,
    CHUNK_MATERIAL_NAME = 0xA000,
    CHUNK_DIFFUSE = 0xA020,
    CHUNK_TEXTURE_MAP = 0xA200,
    CHUNK_MAP_FILE = 0xA300,
    CHUNK_COLOUR_FLOAT = 0x0010,
    CHUNK_COLOUR_24 = 0x0011,
    CHUNK_LINEAR_COLOUR_24 = 0x0012,
    CHUNK_LINEAR_COLOUR_FLOAT = 0x0013,
};

enum { CHUNK_HEADER = 6 };

struct Chunk {
    uint16_t id;
    long start, end;
};

struct Parse3ds {
    Source3ds *s;
    Raw3dsModel *model;
};

static int failed(Parse3ds *p)
{
    return p->s->failed;
}

static int parse_error(Parse3ds *p, const char *message, long offset)
{
    if (!p->s->failed) console_printf(message, (int)offset);
    p->s->failed = 1;
    return 0;
}

/* Reads the header of the chunk at the current position inside parent
 * (which ends at parent_end).  Returns 0 at an error. */
static int read_chunk(Parse3ds *p, long parent_end, Chunk *chunk)
{
    chunk->start = p->s->get_position(p->s);
    /* Fewer bytes than a header before the parent's end: padding. */
    if (parent_end - chunk->start < CHUNK_HEADER) return 0;
    uint32_t length = 0;
    if (!p->s->read16(p->s, &chunk->id) || !p->s->read32(p->s, &length)) return 0;
    debugf("id 0x%X len %d  pc %d  p %d\n", chunk->id, (int)length, (int)parent_end, (int)chunk->start);
    if (length < CHUNK_HEADER) {
        return parse_error(p, "Error reading file: chunk at offset %d is shorter than its header\n", chunk->start);
    }
    if ((long)length > parent_end - chunk->start) {
        return parse_error(p, "Error reading file: chunk at offset %d runs past the end of its parent (the file is cut short or damaged)\n", chunk->start);
    }
    chunk->end = chunk->start + (long)length;
    return 1;
}

static int skip_to_end(Parse3ds *p, const Chunk *chunk)
{
    return p->s->set_position(p->s, chunk->end);
}

static long bytes_left(Parse3ds *p, const Chunk *chunk)
{
    return chunk->end - p->s->get_position(p->s);
}

/* A zero-terminated string inside the chunk. */
static int read_string(Parse3ds *p, const Chunk *chunk, std::string *out)
{
    out->clear();
    for (;;) {
        if (bytes_left(p, chunk) <= 0) return parse_error(p, "Error reading file: a name has no end (offset %d)\n", chunk->start);
        char c;
        if (!p->s->read_bytes(p->s, &c, 1)) return 0;
        if (!c) return 1;
        out->push_back(c);
    }
}

/* A count read at the current position whose items of item_size bytes
 * must fit in what is left of the chunk. */
static int read_count(Parse3ds *p, const Chunk *chunk, long item_size, int *count)
{
    uint16_t n;
    if (!p->s->read16(p->s, &n)) return 0;
    if ((long)n * item_size > bytes_left(p, chunk)) {
        return parse_error(p, "Error reading file: a count is larger than its chunk (offset %d)\n", chunk->start);
    }
    *count = n;
    return 1;
}

static int read_float(Parse3ds *p, float *out)
{
    uint32_t bits;
    if (!p->s->read32(p->s, &bits)) return 0;
    memcpy(out, &bits, sizeof *out);
    return 1;
}

/* ---- meshes ---- */

static void read_vertex_list(Parse3ds *p, const Chunk *chunk, Raw3dsObject *o)
{
    debugf("ReadVertList\n");
    int n;
    if (!read_count(p, chunk, 12, &n)) return;
    o->vertices.assign((size_t)n * 3, 0.0f);
    o->num_vertices = n;
    for (int i = 0; i < n && !failed(p); i++) {
        float x, y, z;
        if (!read_float(p, &x) || !read_float(p, &y) || !read_float(p, &z)) return;
        o->vertices[i * 3] = x;
        o->vertices[i * 3 + 1] = z;   /* the file's Y and Z change places */
        o->vertices[i * 3 + 2] = y;
    }
}

static void read_face_material(Parse3ds *p, const Chunk *chunk, Raw3dsObject *o)
{
    debugf("ReadFaceMat\n");
    std::string name;
    int n;
    if (!read_string(p, chunk, &name) || !read_count(p, chunk, 2, &n)) return;
    int material = -1;
    const std::vector<Raw3dsMaterial> &materials = p->model->materials;
    for (size_t i = 0; i < materials.size(); i++) {
        if (materials[i].name == name) {
            material = (int)i;
            break;
        }
    }
    for (int i = 0; i < n && !failed(p); i++) {
        uint16_t face;
        if (!p->s->read16(p->s, &face)) return;
        /* A face number equal to the count lands in the spare entry. */
        if (face <= o->num_faces) o->faces[face].material = material;
    }
}

static void read_face_list(Parse3ds *p, const Chunk *chunk, Raw3dsObject *o)
{
    debugf("ReadFaceList\n");
    int n;
    if (!read_count(p, chunk, 8, &n)) return;
    o->faces.assign((size_t)n + 1, Raw3dsFace{0, 0, 0, 0, -1});
    o->num_faces = n;
    for (int i = 0; i < n && !failed(p); i++) {
        Raw3dsFace &f = o->faces[i];
        if (!p->s->read16(p->s, &f.a) || !p->s->read16(p->s, &f.b) || !p->s->read16(p->s, &f.c) ||
            !p->s->read16(p->s, &f.flags)) {
            return;
        }
    }
    /* Sub-chunks after the faces: the face materials. */
    while (!failed(p) && p->s->get_position(p->s) < chunk->end) {
        Chunk sub;
        if (!read_chunk(p, chunk->end, &sub)) return;
        if (sub.id == CHUNK_FACE_MATERIAL) read_face_material(p, &sub, o);
        skip_to_end(p, &sub);
    }
}

static void read_texture_points(Parse3ds *p, const Chunk *chunk, Raw3dsObject *o)
{
    int n;
    if (!read_count(p, chunk, 8, &n)) return;
    o->texture_points.assign((size_t)n * 2, 0.0f);
    o->num_texture_points = n;
    for (int i = 0; i < n * 2 && !failed(p); i++) read_float(p, &o->texture_points[i]);
}

static void read_matrix(Parse3ds *p, Raw3dsObject *o)
{
    debugf("ReadTraMatrix\n");
    for (int i = 0; i < 12 && !failed(p); i++) {
        float unused;
        read_float(p, &unused);
    }
    o->has_matrix = 1;
}

static void read_trimesh(Parse3ds *p, const Chunk *chunk, const std::string &name)
{
    debugf("ReadTriMeshBlocks\n");
    p->model->objects.emplace_back();
    Raw3dsObject *o = &p->model->objects.back();
    o->num_faces = o->num_vertices = o->num_texture_points = o->has_matrix = 0;
    o->faces.assign(1, Raw3dsFace{0, 0, 0, 0, -1});
    o->name = name;
    while (!failed(p) && p->s->get_position(p->s) < chunk->end) {
        Chunk sub;
        if (!read_chunk(p, chunk->end, &sub)) return;
        switch (sub.id) {
        case CHUNK_VERTICES: read_vertex_list(p, &sub, o); break;
        case CHUNK_FACES: read_face_list(p, &sub, o); break;
        case CHUNK_FACE_MATERIAL: read_face_material(p, &sub, o); break;
        case CHUNK_TEXTURE_POINTS: read_texture_points(p, &sub, o); break;
        case CHUNK_MATRIX: read_matrix(p, o); break;
        default: break;
        }
        skip_to_end(p, &sub);
    }
}

static void read_named_object(Parse3ds *p, const Chunk *chunk)
{
    debugf("ReadObjBlocks\n");
    std::string name;
    if (!read_string(p, chunk, &name)) return;
    while (!failed(p) && p->s->get_position(p->s) < chunk->end) {
        Chunk sub;
        if (!read_chunk(p, chunk->end, &sub)) return;
        if (sub.id == CHUNK_TRIMESH) read_trimesh(p, &sub, name);
        skip_to_end(p, &sub);
    }
}

/* ---- materials ---- */

static unsigned char colour_byte(float value)
{
    if (!(value > 0.0f)) return 0;   /* NaN too */
    if (value >= 1.0f) return 255;
    return (unsigned char)(value * 255.0f + 0.5f);
}

/* The colour chunks inside a colour property: bytes or floats, plain or
 * linear (gamma corrected).  A plain colour wins over a linear one. */
static void read_colour(Parse3ds *p, const Chunk *chunk, Raw3dsMaterial *m)
{
    while (!failed(p) && p->s->get_position(p->s) < chunk->end) {
        Chunk sub;
        if (!read_chunk(p, chunk->end, &sub)) return;
        int rank = sub.id == CHUNK_COLOUR_24 || sub.id == CHUNK_COLOUR_FLOAT ? 2
                   : sub.id == CHUNK_LINEAR_COLOUR_24 || sub.id == CHUNK_LINEAR_COLOUR_FLOAT ? 1 : 0;
        if (rank && rank >= m->has_colour) {
            unsigned char rgb[3];
            if (sub.id == CHUNK_COLOUR_24 || sub.id == CHUNK_LINEAR_COLOUR_24) {
                if (bytes_left(p, &sub) < 3 || !p->s->read_bytes(p->s, rgb, 3)) rank = 0;
            } else {
                for (int i = 0; i < 3; i++) {
                    float f = 0;
                    if (bytes_left(p, &sub) < 4 || !read_float(p, &f)) rank = 0;
                    rgb[i] = colour_byte(f);
                }
            }
            if (rank && !failed(p)) {
                memcpy(m->rgb, rgb, 3);
                m->has_colour = rank;
            }
        }
        skip_to_end(p, &sub);
    }
}

static void read_texture_map(Parse3ds *p, const Chunk *chunk, Raw3dsMaterial *m)
{
    debugf("ReadTextureChunk\n");
    while (!failed(p) && p->s->get_position(p->s) < chunk->end) {
        Chunk sub;
        if (!read_chunk(p, chunk->end, &sub)) return;
        if (sub.id == CHUNK_MAP_FILE && read_string(p, &sub, &m->texture)) {
            debugf("texture file name '%s'\n", m->texture.c_str());
        }
        skip_to_end(p, &sub);
    }
}

static void read_material(Parse3ds *p, const Chunk *chunk)
{
    p->model->materials.emplace_back();
    Raw3dsMaterial *m = &p->model->materials.back();
    m->rgb[0] = m->rgb[1] = m->rgb[2] = 0;
    m->has_colour = 0;
    while (!failed(p) && p->s->get_position(p->s) < chunk->end) {
        Chunk sub;
        if (!read_chunk(p, chunk->end, &sub)) return;
        switch (sub.id) {
        case CHUNK_MATERIAL_NAME: read_string(p, &sub, &m->name); break;
        case CHUNK_DIFFUSE: read_colour(p, &sub, m); break;
        case CHUNK_TEXTURE_MAP: read_texture_map(p, &sub, m); break;
        default: break;
        }
        skip_to_end(p, &sub);
    }
}

/* ---- the top levels ---- */

static void read_editor(Parse3ds *p, const Chunk *chunk)
{
    debugf("ReadObjMeshBlocks\n");
    while (!failed(p) && p->s->get_position(p->s) < chunk->end) {
        Chunk sub;
        if (!read_chunk(p, chunk->end, &sub)) return;
        if (sub.id == CHUNK_OBJECT) read_named_object(p, &sub);
        if (sub.id == CHUNK_MATERIAL) read_material(p, &sub);
        skip_to_end(p, &sub);
    }
}

static void read_main(Parse3ds *p, const Chunk *chunk)
{
    debugf("ReadMainBlocks pos %d\n", (int)p->s->get_position(p->s));
    while (!failed(p) && p->s->get_position(p->s) < chunk->end) {
        Chunk sub;
        if (!read_chunk(p, chunk->end, &sub)) return;
        debugf("id 0x%X len %d\n", sub.id, (int)(sub.end - sub.start));
        if (sub.id == CHUNK_EDITOR) read_editor(p, &sub);
        skip_to_end(p, &sub);
    }
}

int parse_3ds(Source3ds *source, Raw3dsModel *model)
{
    Parse3ds p = {source, model};
    uint16_t magic = 0;
    if (!source->read16(source, &magic) || magic != CHUNK_MAIN) {
        if (!source->failed) console_printf("Not 3ds data\n");
        source->failed = 1;
        return 0;
    }
    if (!source->set_position(source, 0)) return 0;
    debugf("about to call ReadMainBlocks\n");
    Chunk main_chunk;
    if (!read_chunk(&p, source->size, &main_chunk)) {
        parse_error(&p, "Error reading file: the file ends inside the first chunk header (offset %d)\n", 0);
        return 0;
    }
    read_main(&p, &main_chunk);
    return !source->failed;
}
