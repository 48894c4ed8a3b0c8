/*
 * fileio/dxf_reader.cpp - the DXF reader (see dxf_reader.h).  The text is
 * split into group code / value pairs (dxf_groups.cpp) and handed to
 * libdxflib's group reader one by one; its callbacks record the
 * entities as points and faces (dxf_drawing.h), which dxf_build.cpp turns
 * into objects at the end.  Only the groups of entities we read reach the
 * library: the rest of the file (header, objects, texts, hatches...) is
 * never parsed by it, which keeps its fixed tables and counts out of
 * reach of a damaged file.  A binary DXF file is first turned into the
 * same text (dxf_binary.cpp).
 */
#include "fileio/dxf_reader.h"
#include "fileio/dxf_binary.h"
#include "fileio/dxf_drawing.h"
#include "fileio/dxf_groups.h"

#ifdef VESK_HAVE_DXFLIB

#include "app/prefs.h"

#include <dl_creationadapter.h>
#include <dl_dxf.h>

#include <cassert>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <set>
#include <sstream>

namespace {

int segments_full_circle(void)
{
    int n = prefs.rot_segments;
    if (n < 8) n = 8;
    if (n > 720) n = 720;
    return n;
}

/* The arbitrary axis algorithm: the object coordinate system of a 2D
 * entity from its extrusion direction. */
struct Ocs {
    DxfPoint ax, ay, az;
    bool identity;
};

DxfPoint normalised(DxfPoint p)
{
    double l = std::sqrt(p.x * p.x + p.y * p.y + p.z * p.z);
    if (!(l > 1e-12) || !std::isfinite(l)) return {0, 0, 1};
    return {p.x / l, p.y / l, p.z / l};
}

DxfPoint cross(DxfPoint a, DxfPoint b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

Ocs ocs_of(DxfPoint extrusion)
{
    Ocs o;
    o.az = normalised(extrusion);
    o.identity = o.az.x == 0 && o.az.y == 0 && o.az.z > 0;
    if (std::fabs(o.az.x) < 1.0 / 64 && std::fabs(o.az.y) < 1.0 / 64) o.ax = normalised(cross({0, 1, 0}, o.az));
    else o.ax = normalised(cross({0, 0, 1}, o.az));
    o.ay = normalised(cross(o.az, o.ax));
    return o;
}

DxfPoint ocs_to_world(const Ocs &o, DxfPoint p)
{
    if (o.identity) return p;
    return {p.x * o.ax.x + p.y * o.ay.x + p.z * o.az.x, p.x * o.ax.y + p.y * o.ay.y + p.z * o.az.y,
            p.x * o.ax.z + p.y * o.ay.z + p.z * o.az.z};
}

struct PolyVertex {
    DxfPoint p;
    double bulge;
};

struct PendingPolyline {
    bool open = false;
    bool lw = false;
    bool paper_space = false;
    int flags = 0;
    int m = 0, n = 0;
    double elevation = 0;
    DxfEntity entity;
    Ocs ocs;
    std::vector<PolyVertex> vertices;
    std::vector<std::vector<int>> faces;   /* polyface records, 1-based */
};

class Recorder : public DL_CreationAdapter {
public:
    DxfDrawing drawing;
    DL_Dxf *dxf = nullptr;
    PendingPolyline poly;
    std::string dispatching;           /* the kind of entity the library is handing over */
    std::string current_block;
    bool in_block = false;
    bool skip_block = false;           /* the block's entities are not wanted (paper space) */
    long recorded = 0;                 /* points of the entities kept */
    bool too_big = false;              /* more of them than a drawing may have */

    void addLayer(const DL_LayerData &data) override
    {
        DxfLayer layer;
        DL_Attributes a = getAttributes();
        layer.aci = a.getColor();
        if (layer.aci < 0) layer.aci = -layer.aci;
        layer.rgb = a.getColor24() >= 0 ? (long)(a.getColor24() & 0xFFFFFF) : -1;
        drawing.layers[data.name] = layer;
    }
    void addBlock(const DL_BlockData &data) override
    {
        finish_polyline();
        current_block = data.name;
        in_block = true;
        skip_block = strncasecmp(data.name.c_str(), "*Paper_Space", 12) == 0;
        DxfBlock &b = drawing.blocks[data.name];
        b.entities.clear();
        b.base = {data.bpx, data.bpy, data.bpz};
    }
    void endBlock() override
    {
        finish_polyline();
        in_block = false;
        skip_block = false;
    }
    void addLine(const DL_LineData &d) override
    {
        DxfEntity e = start_entity();
        e.points = {{d.x1, d.y1, d.z1}, {d.x2, d.y2, d.z2}};
        e.faces.push_back({SURFACE_LINE, {0, 1}});
        store(e);
    }
    void addCircle(const DL_CircleData &d) override
    {
        DxfEntity e = start_entity();
        add_arc(&e, {d.cx, d.cy, d.cz}, d.radius, 0, 2 * M_PI, true);
        store(e);
    }
    void addArc(const DL_ArcData &d) override
    {
        DxfEntity e = start_entity();
        double a1 = d.angle1 * M_PI / 180, a2 = d.angle2 * M_PI / 180;
        if (!std::isfinite(a1) || !std::isfinite(a2)) return skip();
        a1 = std::fmod(a1, 2 * M_PI);
        a2 = std::fmod(a2, 2 * M_PI);
        if (a2 <= a1) a2 += 2 * M_PI;
        add_arc(&e, {d.cx, d.cy, d.cz}, d.radius, a1, a2, false);
        store(e);
    }
    void addEllipse(const DL_EllipseData &d) override
    {
        DxfEntity e = start_entity();
        DxfPoint major = {d.mx, d.my, d.mz};
        DxfPoint n = normalised(extrusion_of());
        DxfPoint minor = cross(n, major);
        minor = {minor.x * d.ratio, minor.y * d.ratio, minor.z * d.ratio};
        double t1 = d.angle1, t2 = d.angle2;
        if (!std::isfinite(t1) || !std::isfinite(t2)) return skip();
        bool full = std::fabs(std::fabs(t2 - t1) - 2 * M_PI) < 1e-9 || t1 == t2;
        if (full) {
            t1 = 0;
            t2 = 2 * M_PI;
        } else {
            t1 = std::fmod(t1, 2 * M_PI);
            t2 = std::fmod(t2, 2 * M_PI);
            if (t2 <= t1) t2 += 2 * M_PI;
        }
        int segments = segments_for(t2 - t1);
        int count = full ? segments : segments + 1;
        DxfFace face = {full ? SURFACE_CLOSED_LINE : SURFACE_LINE, {}};
        for (int i = 0; i < count; i++) {
            double t = t1 + (t2 - t1) * i / segments, c = std::cos(t), s = std::sin(t);
            face.points.push_back((int)e.points.size());
            e.points.push_back({d.cx + major.x * c + minor.x * s, d.cy + major.y * c + minor.y * s,
                                d.cz + major.z * c + minor.z * s});
        }
        e.faces.push_back(face);
        store(e);
    }
    void add3dFace(const DL_3dFaceData &d) override
    {
        DxfEntity e = start_entity();
        static const int order[4] = {0, 1, 2, 3};
        add_corners(&e, d, order, false);
    }
    void addSolid(const DL_SolidData &d) override { add_solid_like(d); }
    void addTrace(const DL_TraceData &d) override { add_solid_like(d); }
    void addInsert(const DL_InsertData &d) override
    {
        DxfEntity e = start_entity();
        e.is_insert = true;
        e.insert.block = d.name;
        e.insert.at = ocs_to_world(ocs_of(extrusion_of()), {d.ipx, d.ipy, d.ipz});
        e.insert.scale = {d.sx, d.sy, d.sz};
        e.insert.angle = d.angle;
        e.insert.extrusion = extrusion_of();
        e.insert.cols = d.cols < 1 ? 1 : d.cols;
        e.insert.rows = d.rows < 1 ? 1 : d.rows;
        e.insert.col_spacing = d.colSp;
        e.insert.row_spacing = d.rowSp;
        store(e);
    }
    void addPolyline(const DL_PolylineData &d) override
    {
        DxfEntity e = start_entity();
        poly = PendingPolyline();
        poly.entity = e;
        poly.open = true;
        poly.paper_space = getAttributes().isInPaperSpace();
        poly.lw = dispatching == "LWPOLYLINE";
        poly.flags = d.flags;
        poly.m = dxf->getIntValue(71, 0);
        poly.n = dxf->getIntValue(72, 0);
        poly.elevation = poly.lw ? dxf->getRealValue(38, 0.0) : d.elevation;
        poly.ocs = ocs_of(extrusion_of());
    }
    void addVertex(const DL_VertexData &d) override
    {
        if (!poly.open) return skip();
        /* Spline frame control points are not on the curve. */
        if (!poly.lw && (dxf->getIntValue(70, 0) & 16)) return;
        if ((long)poly.vertices.size() >= dxf_point_limit) return;
        poly.vertices.push_back({{d.x, d.y, d.z}, d.bulge});
    }

    /* A polyface record (the library skips these): 1-based indices, the
     * sign marking an invisible edge. */
    void add_polyface_record(const std::vector<int> &indices)
    {
        if (!poly.open || (long)poly.faces.size() >= dxf_point_limit) return;
        poly.faces.push_back(indices);
    }

    void finish_polyline()
    {
        if (!poly.open) return;
        poly.open = false;
        DxfEntity &e = poly.entity;
        if (poly.flags & 64) polyface(&e);
        else if (poly.flags & 16) polygon_mesh(&e);
        else polyline(&e);
        poly.vertices.clear();
        poly.faces.clear();
        if (e.faces.empty()) return skip();
        /* The library has moved on to the next entity's attributes. */
        store(e, poly.paper_space);
    }

    bool polyline_open() const { return poly.open; }
    bool polyline_is_lw() const { return poly.lw; }

private:
    DxfPoint extrusion_of()
    {
        DL_Extrusion *x = getExtrusion();
        if (!x) return {0, 0, 1};
        const double *d = x->getDirection();
        return {d[0], d[1], d[2]};
    }

    DxfEntity start_entity()
    {
        finish_polyline();
        DxfEntity e;
        DL_Attributes a = getAttributes();
        e.layer = a.getLayer();
        e.aci = a.getColor();
        e.rgb = a.getColor24() >= 0 ? (long)(a.getColor24() & 0xFFFFFF) : -1;
        return e;
    }

    void skip() { drawing.skipped++; }

    void store(DxfEntity &e) { store(e, getAttributes().isInPaperSpace()); }

    void store(DxfEntity &e, bool paper_space)
    {
        if (in_block && skip_block) return;
        if (!in_block && paper_space) return;
        for (const DxfPoint &p : e.points) {
            if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) return skip();
        }
        recorded += (long)e.points.size();
        if (recorded > dxf_point_limit) {
            too_big = true;
            return;
        }
        if (in_block) drawing.blocks[current_block].entities.push_back(std::move(e));
        else drawing.model.push_back(std::move(e));
    }

    int segments_for(double sweep)
    {
        int full = segments_full_circle();
        double n = std::ceil(full * std::fabs(sweep) / (2 * M_PI) - 1e-9);
        if (!(n >= 1)) return 1;
        if (n > full) return full;
        return (int)n;
    }

    /* A circle or an arc in the entity's object coordinate system,
     * counter-clockwise from a1 to a2 (radians). */
    void add_arc(DxfEntity *e, DxfPoint centre, double radius, double a1, double a2, bool full)
    {
        Ocs o = ocs_of(extrusion_of());
        int segments = segments_for(a2 - a1);
        int count = full ? segments : segments + 1;
        DxfFace face = {full ? SURFACE_CLOSED_LINE : SURFACE_LINE, {}};
        for (int i = 0; i < count; i++) {
            double a = a1 + (a2 - a1) * i / segments;
            face.points.push_back((int)e->points.size());
            e->points.push_back(
                ocs_to_world(o, {centre.x + radius * std::cos(a), centre.y + radius * std::sin(a), centre.z}));
        }
        e->faces.push_back(face);
    }

    static bool same(DxfPoint a, DxfPoint b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

    /* Four corners in the given order, repeated corners dropped; three or
     * four left make a polygon. */
    void add_corners(DxfEntity *e, const DL_TraceData &d, const int order[4], bool ocs)
    {
        Ocs o = ocs_of(extrusion_of());
        DxfFace face = {SURFACE_POLYGON, {}};
        for (int k = 0; k < 4; k++) {
            int i = order[k];
            DxfPoint p = {d.x[i], d.y[i], d.z[i]};
            if (ocs) p = ocs_to_world(o, p);
            if (!e->points.empty() && (same(p, e->points.back()) || same(p, e->points.front()))) continue;
            face.points.push_back((int)e->points.size());
            e->points.push_back(p);
        }
        if (face.points.size() < 3) return skip();
        e->faces.push_back(face);
        store(*e);
    }

    void add_solid_like(const DL_TraceData &d)
    {
        DxfEntity e = start_entity();
        /* The corners of a solid or a trace go 1-2-4-3 around it. */
        static const int order[4] = {0, 1, 3, 2};
        add_corners(&e, d, order, true);
    }

    /* One bulged segment from a to b (not including b), flattened. */
    void add_bulge(DxfEntity *e, DxfFace *face, DxfPoint a, DxfPoint b, double bulge)
    {
        face->points.push_back((int)e->points.size());
        e->points.push_back(a);
        double dx = b.x - a.x, dy = b.y - a.y, chord = std::sqrt(dx * dx + dy * dy);
        if (!std::isfinite(bulge) || std::fabs(bulge) < 1e-9 || !(chord > 0)) return;
        double theta = 4 * std::atan(bulge);
        double h = chord / 2 / std::tan(theta / 2);
        double cx = (a.x + b.x) / 2 - dy / chord * h, cy = (a.y + b.y) / 2 + dx / chord * h;
        double r = std::hypot(a.x - cx, a.y - cy), start = std::atan2(a.y - cy, a.x - cx);
        int segments = segments_for(theta);
        for (int i = 1; i < segments; i++) {
            double t = start + theta * i / segments;
            face->points.push_back((int)e->points.size());
            e->points.push_back({cx + r * std::cos(t), cy + r * std::sin(t), a.z});
        }
    }

    void polyline(DxfEntity *e)
    {
        bool three_d = !poly.lw && (poly.flags & 8);
        bool closed = poly.flags & 1;
        size_t n = poly.vertices.size();
        if (n < 2) return;
        DxfFace face = {closed && n >= 3 ? SURFACE_CLOSED_LINE : SURFACE_LINE, {}};
        std::vector<DxfPoint> plane;
        for (PolyVertex &v : poly.vertices) {
            if (!three_d) v.p.z = poly.elevation;
        }
        for (size_t i = 0; i < n; i++) {
            bool last = i + 1 == n;
            const PolyVertex &v = poly.vertices[i];
            if (last && !closed) {
                face.points.push_back((int)e->points.size());
                e->points.push_back(v.p);
                break;
            }
            const PolyVertex &next = poly.vertices[last ? 0 : i + 1];
            add_bulge(e, &face, v.p, next.p, three_d ? 0 : v.bulge);
        }
        if (closed && n == 2) {
            face.points.push_back((int)e->points.size());
            e->points.push_back(poly.vertices[1].p);
        }
        if (!three_d) {
            for (DxfPoint &p : e->points) p = ocs_to_world(poly.ocs, p);
        }
        e->faces.push_back(face);
    }

    void polyface(DxfEntity *e)
    {
        long count = (long)poly.vertices.size();
        for (const PolyVertex &v : poly.vertices) e->points.push_back(v.p);
        for (const std::vector<int> &f : poly.faces) {
            DxfFace face = {SURFACE_POLYGON, {}};
            for (int i : f) {
                long k = i < 0 ? -(long)i : i;
                if (k < 1 || k > count) continue;
                face.points.push_back((int)(k - 1));
            }
            if (face.points.size() >= 3) e->faces.push_back(face);
            else skip();
        }
    }

    void polygon_mesh(DxfEntity *e)
    {
        long m = poly.m, n = poly.n, count = (long)poly.vertices.size();
        if (m < 2 || n < 2 || m > count || n > count || m * n > count) return;
        for (const PolyVertex &v : poly.vertices) e->points.push_back(v.p);
        bool closed_m = poly.flags & 1, closed_n = poly.flags & 32;
        long rows = closed_m ? m : m - 1, cols = closed_n ? n : n - 1;
        for (long i = 0; i < rows; i++) {
            for (long j = 0; j < cols; j++) {
                long i2 = (i + 1) % m, j2 = (j + 1) % n;
                e->faces.push_back({SURFACE_POLYGON,
                                    {(int)(i * n + j), (int)(i * n + j2), (int)(i2 * n + j2), (int)(i2 * n + j)}});
            }
        }
    }
};

/* The entity kinds whose groups go to the library. */
bool is_read_kind(const std::string &kind)
{
    static const std::set<std::string> kinds = {"SECTION", "ENDSEC", "EOF",   "TABLE",      "ENDTAB",   "LAYER",
                                                 "BLOCK",   "ENDBLK", "3DFACE", "LINE",      "LWPOLYLINE", "POLYLINE",
                                                 "VERTEX",  "SEQEND", "CIRCLE", "ARC",       "ELLIPSE",  "SOLID",
                                                 "TRACE",   "INSERT"};
    return kinds.count(kind) != 0;
}

bool is_bookkeeping(const std::string &kind)
{
    return kind == "SECTION" || kind == "ENDSEC" || kind == "EOF" || kind == "TABLE" || kind == "ENDTAB" ||
           kind == "BLOCK" || kind == "ENDBLK" || kind == "SEQEND" || kind == "LAYER";
}

long int_value(const std::string &s)
{
    long v = strtol(s.c_str(), nullptr, 10);
    if (v > 1000000000L) v = 1000000000L;
    if (v < -1000000000L) v = -1000000000L;
    return v;
}

/* Hands one group to the library the way it reads them from a file: its
 * handlers of multi-point entities look at the group it read last. */
void pass_group(DL_Dxf *dxf, Recorder *rec, int code, const std::string &value)
{
    /* The library reads lines of up to 1024 characters. */
    std::istringstream stream(std::to_string(code) + "\n" + value.substr(0, 1000) + "\n");
    dxf->readDxfGroups(stream, rec);
}

/* Feeds the groups to the library, keeping back what it should not see. */
void feed(const std::vector<DxfGroup> &groups, DL_Dxf *dxf, Recorder *rec)
{
    std::string section, kind;
    bool passing = false;
    int vertex_flags = 0;
    long lw_points = 0;
    std::vector<int> face(4, 0);
    for (size_t i = 0; i < groups.size(); i++) {
        const DxfGroup &g = groups[i];
        if (rec->too_big) return;
        if (g.code == 999) continue;
        if (g.code != 0) {
            if (kind == "SECTION" && g.code == 2) section = g.value;
            if (!passing) continue;
            std::string value = g.value;
            if (kind == "VERTEX" && g.code == 70) vertex_flags = (int)int_value(value);
            if (kind == "VERTEX" && g.code >= 71 && g.code <= 74) face[g.code - 71] = (int)int_value(value);
            /* The library makes room for the stated count: state only the
             * points the entity really has. */
            if (kind == "LWPOLYLINE" && g.code == 90) value = std::to_string(lw_points);
            /* Negative codes belong to programs, not files. */
            if (g.code < 0) continue;
            pass_group(dxf, rec, g.code, value);
            continue;
        }
        /* A polyface record ends here. */
        if (passing && kind == "VERTEX" && (vertex_flags & 128) && !(vertex_flags & 64)) {
            std::vector<int> indices;
            for (int f : face) {
                if (f) indices.push_back(f);
            }
            rec->add_polyface_record(indices);
        }
        bool in_tables = section == "TABLES", in_drawing = section == "ENTITIES" || section == "BLOCKS";
        passing = is_read_kind(g.value) && (is_bookkeeping(g.value) ? g.value != "LAYER" || in_tables : in_drawing);
        if (g.value == "SECTION") section.clear();
        if (!passing && in_drawing && !is_bookkeeping(g.value)) rec->drawing.skipped++;
        rec->dispatching = kind;
        /* Something the library does not know ends the entity before it
         * without starting one. */
        pass_group(dxf, rec, 0, passing ? g.value : std::string("VESK_SKIPPED"));
        if (rec->polyline_open() && (rec->polyline_is_lw() || g.value != "VERTEX")) rec->finish_polyline();
        kind = g.value;
        if (kind == "LWPOLYLINE") {
            lw_points = 0;
            for (size_t k = i + 1; k < groups.size() && groups[k].code != 0; k++) lw_points += groups[k].code == 10;
        }
        vertex_flags = 0;
        face.assign(4, 0);
    }
    rec->finish_polyline();
}

} // namespace

int dxf_reader_available(void)
{
    return 1;
}

void read_dxf_text(const char *text, size_t size, const char *name, DxfResult *result)
{
    assert(text[size] == '\0');
    if (dxf_is_binary(text, size)) {
        std::string ascii;
        if (!dxf_binary_to_text(text, size, &ascii, &result->error)) return;
        /* The text starts with its SECTION group, never with the sentinel. */
        read_dxf_text(ascii.c_str(), ascii.size(), name, result);
        return;
    }
    std::vector<DxfGroup> groups;
    if (!dxf_split_groups(text, size, &groups, &result->error)) return;
    Recorder rec;
    DL_Dxf dxf;
    rec.dxf = &dxf;
    try {
        feed(groups, &dxf, &rec);
    } catch (const std::exception &e) {
        result->error = std::string("the DXF library could not read the file: ") + e.what();
        return;
    } catch (...) {
        result->error = "the DXF library could not read the file";
        return;
    }
    if (rec.too_big) {
        result->error = "the drawing has more than " + std::to_string(dxf_point_limit) + " points";
        return;
    }
    groups.clear();
    groups.shrink_to_fit();
    long skipped = rec.drawing.skipped;
    result->drawing = dxf_build_objects(rec.drawing, name, &result->entities, &skipped, &result->error);
    result->skipped = skipped;
}

#else

int dxf_reader_available(void)
{
    return 0;
}

void read_dxf_text(const char *, size_t, const char *, DxfResult *result)
{
    result->error = "this VESK was built without libdxflib (Debian package libdxflib-dev)";
}

#endif
