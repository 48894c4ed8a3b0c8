/*
 * fileio/dxf_build.cpp - turning a recorded DXF drawing (dxf_drawing.h)
 * into objects: model space is walked with block inserts expanded in
 * place (position, scale, rotation, extrusion, column and row arrays),
 * every entity goes to the object of its layer, and colours are resolved
 * (by layer, by block, index or true colour) and put in the palette only
 * once the whole drawing was built.
 */
#include "fileio/dxf_drawing.h"
#include "edit/primitive_append.h"

#include <cmath>
#include <set>
#include <unordered_map>

long dxf_point_limit = DXF_MAX_VERTICES;

namespace {

/* An affine transformation: p' = m * p + t, m row major. */
struct Affine {
    double m[9];
    double t[3];
};

Affine affine_identity(void)
{
    return {{1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0}};
}

/* a after b: p -> a(b(p)) */
Affine affine_compose(const Affine &a, const Affine &b)
{
    Affine r;
    for (int i = 0; i < 3; i++) {
        for (int j = 0; j < 3; j++) {
            r.m[i * 3 + j] = a.m[i * 3] * b.m[j] + a.m[i * 3 + 1] * b.m[3 + j] + a.m[i * 3 + 2] * b.m[6 + j];
        }
        r.t[i] = a.m[i * 3] * b.t[0] + a.m[i * 3 + 1] * b.t[1] + a.m[i * 3 + 2] * b.t[2] + a.t[i];
    }
    return r;
}

DxfPoint affine_apply(const Affine &a, DxfPoint p)
{
    return {a.m[0] * p.x + a.m[1] * p.y + a.m[2] * p.z + a.t[0], a.m[3] * p.x + a.m[4] * p.y + a.m[5] * p.z + a.t[1],
            a.m[6] * p.x + a.m[7] * p.y + a.m[8] * p.z + a.t[2]};
}

Affine affine_translation(double x, double y, double z)
{
    Affine a = affine_identity();
    a.t[0] = x;
    a.t[1] = y;
    a.t[2] = z;
    return a;
}

/* The object coordinate system of an extrusion direction (the arbitrary
 * axis algorithm) as the transformation from it to world coordinates. */
Affine affine_ocs(DxfPoint n)
{
    double l = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
    if (!(l > 1e-12) || !std::isfinite(l)) return affine_identity();
    n = {n.x / l, n.y / l, n.z / l};
    if (n.x == 0 && n.y == 0 && n.z > 0) return affine_identity();
    DxfPoint ax = std::fabs(n.x) < 1.0 / 64 && std::fabs(n.y) < 1.0 / 64 ? DxfPoint{n.z, 0, -n.x}
                                                                          : DxfPoint{-n.y, n.x, 0};
    double la = std::sqrt(ax.x * ax.x + ax.y * ax.y + ax.z * ax.z);
    ax = {ax.x / la, ax.y / la, ax.z / la};
    DxfPoint ay = {n.y * ax.z - n.z * ax.y, n.z * ax.x - n.x * ax.z, n.x * ax.y - n.y * ax.x};
    return {{ax.x, ay.x, n.x, ax.y, ay.y, n.y, ax.z, ay.z, n.z}, {0, 0, 0}};
}

struct Builder {
    const DxfDrawing *drawing;
    Object *root;
    std::vector<std::pair<std::string, Object *>> layer_objects;
    std::unordered_map<std::string, ObjectAppender> appenders;
    std::vector<std::pair<Surface *, long>> colours;
    std::vector<const std::string *> active;   /* the blocks being inserted, outermost first */
    std::set<std::string> missing;             /* blocks inserted but not defined, told once */
    long vertices = 0;                        /* points placed so far */
    long inserts = 0;
    long drawn = 0;
    long skipped = 0;
    std::string error;
};

Object *layer_object(Builder *b, const std::string &layer, ObjectAppender **append)
{
    auto found = b->appenders.find(layer);
    if (found == b->appenders.end()) {
        Object *o = new_object(OBJECT_NORMAL);
        object_set_name(o, layer.empty() ? "0" : layer.c_str());
        b->layer_objects.emplace_back(layer, o);
        found = b->appenders.emplace(layer, ObjectAppender()).first;
        appender_start(&found->second, o);
    }
    *append = &found->second;
    return found->second.object;
}

long layer_colour(const Builder *b, const std::string &layer)
{
    auto found = b->drawing->layers.find(layer);
    if (found == b->drawing->layers.end()) return dxf_aci_to_rgb(7);
    if (found->second.rgb >= 0) return found->second.rgb;
    return dxf_aci_to_rgb(found->second.aci);
}

/* The colour of an entity placed on layer, inside an insert whose own
 * colour is block_colour. */
long entity_colour(const Builder *b, const DxfEntity &e, const std::string &layer, long block_colour)
{
    if (e.rgb >= 0) return e.rgb;
    if (e.aci == 256) return layer_colour(b, layer);
    if (e.aci == 0) return block_colour;
    return dxf_aci_to_rgb(e.aci);
}

bool add_shapes(Builder *b, const DxfEntity &e, const Affine &a, const std::string &layer, long colour)
{
    if (b->vertices + (long)e.points.size() > dxf_point_limit) {
        b->error = "the drawing expands to more than " + std::to_string(dxf_point_limit) +
                   " points (block inserts nested too often?)";
        return false;
    }
    /* Every point placed counts, used or not: the work of placing them
     * is what the limit bounds. */
    b->vertices += (long)e.points.size();
    std::vector<DxfPoint> placed;
    placed.reserve(e.points.size());
    for (const DxfPoint &p : e.points) {
        DxfPoint q = affine_apply(a, p);
        if (!std::isfinite(q.x) || !std::isfinite(q.y) || !std::isfinite(q.z) || std::fabs(q.x) > 3e38 ||
            std::fabs(q.y) > 3e38 || std::fabs(q.z) > 3e38) {
            b->skipped++;
            return true;
        }
        placed.push_back(q);
    }
    ObjectAppender *append;
    layer_object(b, layer, &append);
    std::vector<Vertex *> made(placed.size(), nullptr);
    for (const DxfFace &f : e.faces) {
        Surface *s = new_surface();
        s->surface_kind = (uint8_t)f.kind;
        RefAppender refs = ref_appender_start(s);
        for (int i : f.points) {
            if (!made[i]) {
                made[i] = appender_new_vertex(append, (float)placed[i].x, (float)placed[i].y, (float)placed[i].z);
            }
            ref_append(&refs, made[i], 0, 0);
        }
        appender_add_surface(append, s);
        b->colours.emplace_back(s, colour);
    }
    b->drawn++;
    return true;
}

bool add_entities(Builder *b, const std::vector<DxfEntity> &entities, const Affine &a, const std::string *block_layer,
                  long block_colour);

/* The transformation of one instance of an insert (column c, row r). */
Affine insert_affine(const DxfInsert &in, const DxfPoint &base, long c, long r)
{
    double angle = in.angle * M_PI / 180, cs = std::cos(angle), sn = std::sin(angle);
    Affine scale = {{in.scale.x, 0, 0, 0, in.scale.y, 0, 0, 0, in.scale.z}, {0, 0, 0}};
    Affine rotate = {{cs, -sn, 0, sn, cs, 0, 0, 0, 1}, {0, 0, 0}};
    Affine a = affine_compose(scale, affine_translation(-base.x, -base.y, -base.z));
    a = affine_compose(affine_translation(c * in.col_spacing, r * in.row_spacing, 0), a);
    a = affine_compose(rotate, a);
    a = affine_compose(affine_ocs(in.extrusion), a);
    return affine_compose(affine_translation(in.at.x, in.at.y, in.at.z), a);
}

bool too_many_inserts(Builder *b)
{
    b->error = "the drawing inserts blocks more than " + std::to_string(dxf_point_limit) + " times";
    return false;
}

bool add_insert(Builder *b, const DxfEntity &e, const Affine &a, const std::string &layer, long colour)
{
    const DxfInsert &in = e.insert;
    /* Inserts of missing blocks count too: a block of many of them,
     * inserted many times, is work all the same. */
    if (++b->inserts > dxf_point_limit) return too_many_inserts(b);
    auto found = b->drawing->blocks.find(in.block);
    if (found == b->drawing->blocks.end()) {
        if (b->missing.insert(in.block).second) {
            console_printf("DXF reader: an insert names the block \"%s\", which the file does not define\n",
                           in.block.c_str());
        }
        b->skipped++;
        return true;
    }
    for (const std::string *name : b->active) {
        if (*name == in.block) {
            b->error = "the block \"" + in.block + "\" inserts itself";
            return false;
        }
    }
    if (b->active.size() >= DXF_MAX_INSERT_DEPTH) {
        b->error = "block inserts are nested more than " + std::to_string((int)DXF_MAX_INSERT_DEPTH) + " deep";
        return false;
    }
    b->active.push_back(&found->first);
    for (long r = 0; r < in.rows; r++) {
        for (long c = 0; c < in.cols; c++) {
            if (++b->inserts > dxf_point_limit) return too_many_inserts(b);
            Affine placed = affine_compose(a, insert_affine(in, found->second.base, c, r));
            if (!add_entities(b, found->second.entities, placed, &layer, colour)) return false;
        }
    }
    b->active.pop_back();
    b->drawn++;
    return true;
}

bool add_entities(Builder *b, const std::vector<DxfEntity> &entities, const Affine &a, const std::string *block_layer,
                  long block_colour)
{
    for (const DxfEntity &e : entities) {
        /* Inside a block, layer "0" and by-block colours take the insert's. */
        const std::string &layer = block_layer && e.layer == "0" ? *block_layer : e.layer;
        long colour = entity_colour(b, e, layer, block_colour);
        bool ok = e.is_insert ? add_insert(b, e, a, layer, colour) : add_shapes(b, e, a, layer, colour);
        if (!ok) return false;
    }
    return true;
}

} // namespace

Object *dxf_build_objects(const DxfDrawing &drawing, const char *name, long *drawn, long *skipped,
                          std::string *error)
{
    Builder b;
    b.drawing = &drawing;
    b.skipped = *skipped;
    b.root = new_group();
    bool ok = add_entities(&b, drawing.model, affine_identity(), nullptr, dxf_aci_to_rgb(7));
    if (ok && b.layer_objects.empty()) {
        b.error = "the drawing holds nothing that can be read (no faces, lines, polylines, circles, arcs or "
                  "ellipses in model space)";
        ok = false;
    }
    List *tail = nullptr;
    for (auto &lo : b.layer_objects) {
        tail = list_add_item_fast(&b.root->kids, tail, lo.second);
        lo.second->parent = b.root;
        b.root->num_kids++;
    }
    if (!ok) {
        object_free(b.root);
        *error = b.error;
        return nullptr;
    }
    object_set_name(b.root, name);
    /* Now that nothing can fail, the colours join the palette. */
    std::unordered_map<long, int> index;
    for (auto &sc : b.colours) {
        auto found = index.find(sc.second);
        if (found == index.end()) found = index.emplace(sc.second, rgb_to_index(sc.second)).first;
        sc.first->mat = (uint16_t)found->second;
    }
    for (auto &lo : b.layer_objects) object_calc_normals_force(lo.second);
    *drawn = b.drawn;
    *skipped = b.skipped;
    return b.root;
}
