/*
 * fileio/lightwave_object.cpp - the LightWave object files, LWOB and
 * LWO2: big-endian IFF, "FORM" <size> "LWOB"|"LWO2" followed by chunks
 * (four-letter id, 32-bit size, padded to even length).  Points,
 * polygons, surface names and colours, layers and texture maps are read
 * into an LwModel; every other chunk is skipped.  Every read is checked
 * against the end of its chunk, and every index against what it names.
 */
#include "fileio/lightwave.h"

#include <cmath>
#include <cstring>
#include <map>
#include <unordered_map>

namespace {

/* A bounded big-endian reader over one chunk. */
struct Cursor {
    const uint8_t *p;
    size_t left;
};

bool take(Cursor *c, size_t n)
{
    if (c->left < n) return false;
    c->p += n;
    c->left -= n;
    return true;
}

bool read_u1(Cursor *c, uint32_t *v)
{
    if (c->left < 1) return false;
    *v = c->p[0];
    return take(c, 1);
}

bool read_u2(Cursor *c, uint32_t *v)
{
    if (c->left < 2) return false;
    *v = (uint32_t)c->p[0] << 8 | c->p[1];
    return take(c, 2);
}

bool read_u4(Cursor *c, uint32_t *v)
{
    if (c->left < 4) return false;
    *v = (uint32_t)c->p[0] << 24 | (uint32_t)c->p[1] << 16 | (uint32_t)c->p[2] << 8 | c->p[3];
    return take(c, 4);
}

bool read_f4(Cursor *c, float *f)
{
    uint32_t bits;
    if (!read_u4(c, &bits)) return false;
    memcpy(f, &bits, sizeof *f);
    return true;
}

/* A variable-length index: two bytes, or four (the first 0xFF, dropped)
 * for indices of 0xFF00 and above. */
bool read_vx(Cursor *c, uint32_t *v)
{
    if (c->left >= 1 && c->p[0] == 0xFF) {
        if (!read_u4(c, v)) return false;
        *v &= 0x00FFFFFF;
        return true;
    }
    return read_u2(c, v);
}

/* A NUL-terminated string padded to even length. */
bool read_s0(Cursor *c, std::string *s)
{
    const void *nul = memchr(c->p, 0, c->left);
    if (!nul) return false;
    size_t n = (const uint8_t *)nul - c->p;
    s->assign((const char *)c->p, n);
    size_t used = n + 1;
    if (used & 1) used++;
    if (used > c->left) used = c->left;
    return take(c, used);
}

bool id_is(const uint8_t *id, const char *name)
{
    return memcmp(id, name, 4) == 0;
}

std::string id_text(const uint8_t *id)
{
    std::string s;
    for (int i = 0; i < 4; i++) s += id[i] >= 32 && id[i] < 127 ? (char)id[i] : '?';
    return s;
}

long float_colour(float r, float g, float b)
{
    auto byte = [](float f) -> long {
        if (!(f > 0)) return 0;   /* NaN too */
        if (f >= 1) return 255;
        return std::lround(f * 255.0);
    };
    return byte(r) << 16 | byte(g) << 8 | byte(b);
}

struct Parser {
    LwModel *model;
    std::string error;
    std::map<std::string, long> colours;   /* surface name -> colour */
    size_t pols_base = 0;                  /* first polygon of the last POLS */
    bool pols_kept = false;                /* the last POLS was read */

    bool fail(const std::string &why)
    {
        if (error.empty()) error = why;
        return false;
    }

    LwLayer &layer()
    {
        if (model->layers.empty()) model->layers.emplace_back();
        return model->layers.back();
    }
};

bool read_points(Parser *ps, Cursor c, const char *chunk)
{
    LwLayer &l = ps->layer();
    if (!l.points.empty()) return ps->fail(std::string("a second ") + chunk + " chunk in one layer");
    if (c.left % 12 != 0) return ps->fail("a PNTS chunk whose size is not a multiple of 12");
    size_t n = c.left / 12;
    l.points.resize(n * 3);
    for (size_t i = 0; i < n * 3; i++) {
        float f;
        read_f4(&c, &f);
        if (!std::isfinite(f) || std::fabs(f) > 1e30f) return ps->fail("a point with a coordinate out of range");
        l.points[i] = f;
    }
    l.point_uv.assign(n * 2, 0.0f);
    l.point_has_uv.assign(n, 0);
    return true;
}

bool point_index_ok(Parser *ps, uint32_t index)
{
    if (index < ps->layer().points.size() / 3) return true;
    return ps->fail("a polygon or map names point " + std::to_string(index) + " of " +
                    std::to_string(ps->layer().points.size() / 3));
}

/* Adds one polygon of n corners read by read_index; 1-point polygons are
 * read and dropped. */
template <typename ReadIndex>
bool read_polygon(Parser *ps, Cursor *c, uint32_t n, int surface, ReadIndex read_index)
{
    LwLayer &l = ps->layer();
    uint32_t first = (uint32_t)l.corners.size();
    for (uint32_t i = 0; i < n; i++) {
        uint32_t index;
        if (!read_index(c, &index)) return ps->fail("a POLS chunk ends inside a polygon");
        if (!point_index_ok(ps, index)) return false;
        l.corners.push_back(index);
    }
    /* Every polygon keeps its place (tags and maps count polygons), even
     * those that will make no surface. */
    int kind = n >= 3 ? SURFACE_POLYGON : SURFACE_LINE;
    if (n < 2) kind = -1;
    l.polygons.push_back({kind, surface, first, n});
    return true;
}

/* LWOB polygons: count, indices, surface (1-based; negative means detail
 * polygons follow, with their own count, which are read as polygons). */
bool read_lwob_polygons(Parser *ps, Cursor c)
{
    LwLayer &l = ps->layer();
    ps->pols_base = l.polygons.size();
    ps->pols_kept = true;
    long details = 0;
    while (c.left > 0) {
        uint32_t n, surface_raw;
        if (!read_u2(&c, &n)) return ps->fail("a POLS chunk ends inside a polygon");
        if (!read_polygon(ps, &c, n, -1, read_u2)) return false;
        if (!read_u2(&c, &surface_raw)) return ps->fail("a POLS chunk ends inside a polygon");
        int surface = (int16_t)surface_raw;
        if (details > 0) details--;
        if (surface < 0) {
            surface = -surface;
            uint32_t count;
            if (!read_u2(&c, &count)) return ps->fail("a POLS chunk ends before its detail polygon count");
            details += count;
        }
        l.polygons.back().surface = surface - 1;
    }
    if (details > 0) return ps->fail("a POLS chunk ends before its detail polygons");
    return true;
}

bool read_lwo2_polygons(Parser *ps, Cursor c)
{
    LwLayer &l = ps->layer();
    if (c.left < 4) return ps->fail("a POLS chunk without its type");
    const uint8_t *type = c.p;
    take(&c, 4);
    ps->pols_base = l.polygons.size();
    ps->pols_kept = id_is(type, "FACE") || id_is(type, "PTCH");
    if (!ps->pols_kept) {
        /* Curves, splines, bones, metaballs...: not read. */
        ps->model->skipped++;
        return true;
    }
    while (c.left > 0) {
        uint32_t n;
        if (!read_u2(&c, &n)) return ps->fail("a POLS chunk ends inside a polygon");
        if (!read_polygon(ps, &c, n & 0x3FF, -1, read_vx)) return false;
    }
    return true;
}

/* A list of NUL-terminated names (SRFS, TAGS). */
bool read_names(Parser *ps, Cursor c)
{
    if (!ps->model->surface_names.empty()) return true;   /* the first list counts */
    while (c.left > 0) {
        std::string name;
        if (!read_s0(&c, &name)) return ps->fail("a name list whose last name is not ended");
        ps->model->surface_names.push_back(name);
    }
    return true;
}

bool read_tags(Parser *ps, Cursor c)
{
    if (c.left < 4) return ps->fail("a PTAG chunk without its type");
    bool surf = id_is(c.p, "SURF");
    take(&c, 4);
    if (!surf || !ps->pols_kept) return true;
    LwLayer &l = ps->layer();
    size_t count = l.polygons.size() - ps->pols_base;
    while (c.left > 0) {
        uint32_t poly, tag;
        if (!read_vx(&c, &poly) || !read_u2(&c, &tag)) return ps->fail("a PTAG chunk ends inside an entry");
        if (poly >= count) {
            return ps->fail("a PTAG chunk names polygon " + std::to_string(poly) + " of " + std::to_string(count));
        }
        l.polygons[ps->pols_base + poly].surface = (int)tag;
    }
    return true;
}

/* The header shared by VMAP and VMAD: type, dimension, name.  Returns
 * false when the map is not a texture map this reader uses. */
bool read_map_header(Parser *ps, Cursor *c, uint32_t *dimension, bool *use)
{
    *use = false;
    if (c->left < 6) return ps->fail("a texture map chunk too short for its header");
    bool txuv = id_is(c->p, "TXUV");
    take(c, 4);
    std::string name;
    if (!read_u2(c, dimension) || !read_s0(c, &name)) return ps->fail("a texture map chunk without its name");
    if (!txuv || *dimension < 2) return true;
    LwLayer &l = ps->layer();
    if (!l.uv_map_chosen) {
        l.uv_map = name;
        l.uv_map_chosen = true;
    }
    *use = name == l.uv_map;
    return true;
}

bool read_values(Cursor *c, uint32_t dimension, float *u, float *v)
{
    if (!read_f4(c, u) || !read_f4(c, v)) return false;
    if (!std::isfinite(*u) || !std::isfinite(*v)) *u = *v = 0;
    return take(c, (size_t)(dimension - 2) * 4);
}

bool read_vmap(Parser *ps, Cursor c)
{
    uint32_t dimension;
    bool use;
    if (!read_map_header(ps, &c, &dimension, &use)) return false;
    if (!use) return true;
    LwLayer &l = ps->layer();
    while (c.left > 0) {
        uint32_t point;
        float u, v;
        if (!read_vx(&c, &point) || !read_values(&c, dimension, &u, &v)) {
            return ps->fail("a VMAP chunk ends inside an entry");
        }
        if (!point_index_ok(ps, point)) return false;
        l.point_uv[point * 2] = u;
        l.point_uv[point * 2 + 1] = v;
        l.point_has_uv[point] = 1;
    }
    return true;
}

bool read_vmad(Parser *ps, Cursor c)
{
    uint32_t dimension;
    bool use;
    if (!read_map_header(ps, &c, &dimension, &use)) return false;
    if (!use || !ps->pols_kept) return true;
    LwLayer &l = ps->layer();
    size_t count = l.polygons.size() - ps->pols_base;
    if (l.corner_uv.size() != l.corners.size() * 2) {
        l.corner_uv.assign(l.corners.size() * 2, 0.0f);
        l.corner_has_uv.assign(l.corners.size(), 0);
    }
    /* Where each point stands in each polygon, so that an entry costs the
     * same however many corners its polygon has. */
    std::unordered_map<uint64_t, uint32_t> corner_of;
    for (size_t i = 0; i < count; i++) {
        const LwPolygon &p = l.polygons[ps->pols_base + i];
        for (uint32_t k = 0; k < p.count; k++) corner_of.emplace((uint64_t)i << 32 | l.corners[p.first + k], p.first + k);
    }
    while (c.left > 0) {
        uint32_t point, poly;
        float u, v;
        if (!read_vx(&c, &point) || !read_vx(&c, &poly) || !read_values(&c, dimension, &u, &v)) {
            return ps->fail("a VMAD chunk ends inside an entry");
        }
        if (!point_index_ok(ps, point)) return false;
        if (poly >= count) {
            return ps->fail("a VMAD chunk names polygon " + std::to_string(poly) + " of " + std::to_string(count));
        }
        auto found = corner_of.find((uint64_t)poly << 32 | point);
        if (found == corner_of.end()) continue;   /* the polygon has no such corner */
        l.corner_uv[found->second * 2] = u;
        l.corner_uv[found->second * 2 + 1] = v;
        l.corner_has_uv[found->second] = 1;
    }
    return true;
}

bool read_layer(Parser *ps, Cursor c)
{
    if (ps->model->layers.size() >= LW_MAX_LAYERS) {
        return ps->fail("more than " + std::to_string((int)LW_MAX_LAYERS) + " layers");
    }
    LwLayer l;
    uint32_t number, flags;
    if (!read_u2(&c, &number) || !read_u2(&c, &flags) || !read_f4(&c, &l.pivot[0]) || !read_f4(&c, &l.pivot[1]) ||
        !read_f4(&c, &l.pivot[2]) || !read_s0(&c, &l.name)) {
        return ps->fail("a LAYR chunk too short");
    }
    for (float &f : l.pivot) {
        if (!std::isfinite(f) || std::fabs(f) > 1e30f) f = 0;
    }
    l.number = (int)number;
    uint32_t parent;
    if (read_u2(&c, &parent) && parent != 0xFFFF) l.parent = (int)parent;
    ps->model->layers.push_back(std::move(l));
    ps->pols_kept = false;
    return true;
}

/* One surface's colour, from its COLR subchunk (subchunks have 16-bit
 * sizes: LWOB's COLR is three bytes and a pad, LWO2's three floats). */
bool read_surface(Parser *ps, Cursor c)
{
    std::string name, source;
    if (!read_s0(&c, &name)) return ps->fail("a SURF chunk without its name");
    if (ps->model->lwo2 && !read_s0(&c, &source)) return ps->fail("a SURF chunk without its source name");
    while (c.left >= 6) {
        const uint8_t *id = c.p;
        take(&c, 4);
        uint32_t size;
        read_u2(&c, &size);
        if (size > c.left) return ps->fail("a SURF subchunk " + id_text(id) + " runs past its chunk");
        Cursor sub = {c.p, size};
        take(&c, size + (size & 1) <= c.left ? size + (size & 1) : c.left);
        if (!id_is(id, "COLR")) continue;
        if (ps->model->lwo2) {
            float r, g, b;
            if (!read_f4(&sub, &r) || !read_f4(&sub, &g) || !read_f4(&sub, &b)) {
                return ps->fail("a COLR subchunk too short");
            }
            ps->colours[name] = float_colour(r, g, b);
        } else {
            uint32_t r, g, b;
            if (!read_u1(&sub, &r) || !read_u1(&sub, &g) || !read_u1(&sub, &b)) {
                return ps->fail("a COLR subchunk too short");
            }
            ps->colours[name] = (long)(r << 16 | g << 8 | b);
        }
    }
    return true;
}

bool read_chunk(Parser *ps, const uint8_t *id, Cursor c)
{
    bool lwo2 = ps->model->lwo2;
    if (id_is(id, "PNTS")) return read_points(ps, c, "PNTS");
    if (id_is(id, "POLS")) return lwo2 ? read_lwo2_polygons(ps, c) : read_lwob_polygons(ps, c);
    if (id_is(id, "SRFS") && !lwo2) return read_names(ps, c);
    if (id_is(id, "TAGS") && lwo2) return read_names(ps, c);
    if (id_is(id, "SURF")) return read_surface(ps, c);
    if (!lwo2) return true;
    if (id_is(id, "LAYR")) return read_layer(ps, c);
    if (id_is(id, "PTAG")) return read_tags(ps, c);
    if (id_is(id, "VMAP")) return read_vmap(ps, c);
    if (id_is(id, "VMAD")) return read_vmad(ps, c);
    return true;   /* CLIP, ENVL, BBOX, VMPA, DESC, TEXT, ICON...: not needed */
}

} // namespace

int lw_parse_object(const uint8_t *bytes, size_t size, LwModel *model, std::string *error)
{
    *model = LwModel();
    if (size < 12 || memcmp(bytes, "FORM", 4) != 0) {
        *error = "not an IFF file (no FORM header)";
        return 0;
    }
    if (memcmp(bytes + 8, "LWO2", 4) == 0) {
        model->lwo2 = true;
    } else if (memcmp(bytes + 8, "LWOB", 4) != 0) {
        *error = "an IFF file of type " + id_text(bytes + 8) + ", not a LightWave object (LWOB or LWO2)";
        return 0;
    }
    Cursor header = {bytes + 4, 4};
    uint32_t form_size;
    read_u4(&header, &form_size);
    if (form_size < 4 || form_size > size - 8) {
        *error = "the FORM size (" + std::to_string(form_size) + ") runs past the end of the file (" +
                 std::to_string(size) + " bytes): truncated?";
        return 0;
    }
    Parser ps;
    ps.model = model;
    Cursor c = {bytes + 12, (size_t)form_size - 4};
    while (c.left > 0) {
        if (c.left < 8) {
            *error = "the file ends inside a chunk header";
            return 0;
        }
        const uint8_t *id = c.p;
        take(&c, 4);
        uint32_t chunk_size;
        read_u4(&c, &chunk_size);
        if (chunk_size > c.left) {
            *error = "the " + id_text(id) + " chunk (" + std::to_string(chunk_size) + " bytes) runs past the end of the file";
            return 0;
        }
        Cursor chunk = {c.p, chunk_size};
        take(&c, chunk_size);
        if ((chunk_size & 1) && c.left > 0) take(&c, 1);
        if (!read_chunk(&ps, id, chunk)) {
            *error = ps.error;
            return 0;
        }
    }
    /* Colours by surface name, for the names the polygons use. */
    for (const std::string &name : model->surface_names) {
        auto found = ps.colours.find(name);
        model->surface_colours.push_back(found == ps.colours.end() ? -1 : found->second);
    }
    for (const LwLayer &l : model->layers) {
        for (const LwPolygon &p : l.polygons) {
            if (p.kind >= 0) model->polygons++;
        }
    }
    return 1;
}
