/*
 * fileio/svg_reader.cpp - the SVG reader (see svg_reader.h).  libxml2
 * parses the XML with network access and external entities off: no DTD
 * is loaded, entities are not substituted, an entity loader that refuses
 * everything stands in for the default one, and libxml2's own limits on
 * entity expansion and nesting refuse the known attacks.  The element
 * tree is then walked with the inherited style and transformation, and
 * everything is built under a detached group: the caller attaches it
 * (or frees it when something failed, leaving the model unchanged).
 */
#include "fileio/svg_reader.h"
#include "core/internal.h"
#include "edit/primitive_append.h"
#include "fileio/svg_geometry.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>

namespace {

const char *const SVG_NAMESPACE = "http://www.w3.org/2000/svg";
/* Coordinates beyond this (after all transformations) are refused:
 * they would not survive as floats in later arithmetic. */
const double SVG_MAX_COORDINATE = 1e15;

struct Style {
    SvgPaint fill{false, 0x000000};
    SvgPaint stroke;
};

/* The object shapes are added to, with its appenders. */
struct Target {
    Object *object;
    ObjectAppender append;
    List *kid_tail = nullptr;
};

struct PendingColour {
    Surface *surface;
    long rgb;
};

struct Reader {
    int steps;
    std::vector<std::string> *warnings;
    std::string error;
    std::vector<PendingColour> colours;
    size_t points = 0;
    std::map<std::string, int> skipped;
};

xmlParserInputPtr refuse_external_entity(const char *, const char *, xmlParserCtxtPtr)
{
    return nullptr;
}

std::string attribute(xmlNode *node, const char *name, bool *present = nullptr)
{
    xmlChar *value = xmlGetNoNsProp(node, (const xmlChar *)name);
    if (present) *present = value != nullptr;
    if (!value) return "";
    std::string text((const char *)value);
    xmlFree(value);
    return text;
}

bool has_attribute(xmlNode *node, const char *name)
{
    return xmlHasNsProp(node, (const xmlChar *)name, nullptr) != nullptr;
}

std::string element_label(xmlNode *node)
{
    std::string label = "<" + std::string((const char *)node->name);
    std::string id = attribute(node, "id");
    if (!id.empty()) label += " id=\"" + id.substr(0, 60) + "\"";
    return label + "> (line " + std::to_string(xmlGetLineNo(node)) + ")";
}

void warn(Reader *r, xmlNode *node, const std::string &text)
{
    r->warnings->push_back(element_label(node) + ": " + text);
}

/* A length: a number with an optional absolute unit, in user units.
 * Returns 0 for a missing or unreadable value (percentages included). */
int parse_length(const std::string &text, double *out)
{
    const char *p = text.c_str();
    double v;
    if (!svg_scan_number(&p, &v)) return 0;
    while (*p == ' ') p++;
    static const struct {
        const char *unit;
        double scale;
    } units[] = {{"", 1}, {"px", 1}, {"in", 96}, {"cm", 96 / 2.54}, {"mm", 96 / 25.4}, {"pt", 96.0 / 72}, {"pc", 16}};
    std::string unit(p);
    while (!unit.empty() && isspace((unsigned char)unit.back())) unit.pop_back();
    for (const auto &u : units) {
        if (unit == u.unit) {
            *out = v * u.scale;
            return std::isfinite(*out);
        }
    }
    return 0;
}

/* A length attribute, fallback when absent; 0 after a warning when bad. */
int length_attribute(Reader *r, xmlNode *node, const char *name, double fallback, double *out)
{
    bool present;
    std::string text = attribute(node, name, &present);
    if (!present) {
        *out = fallback;
        return 1;
    }
    if (parse_length(text, out)) return 1;
    warn(r, node, std::string("the ") + name + " \"" + text.substr(0, 40) + "\" cannot be read; the element is skipped");
    return 0;
}

void set_paint(Reader *r, xmlNode *node, const char *property, const std::string &value, Style *style)
{
    SvgPaint paint;
    if (value == "inherit") return;
    if (!svg_parse_paint(value.c_str(), &paint)) {
        warn(r, node, std::string("the ") + property + " \"" + value.substr(0, 40) + "\" is not a colour; it is inherited");
        return;
    }
    if (!strcmp(property, "fill")) style->fill = paint;
    else style->stroke = paint;
}

std::string trimmed(const std::string &s)
{
    size_t a = s.find_first_not_of(" \t\r\n"), b = s.find_last_not_of(" \t\r\n");
    return a == std::string::npos ? "" : s.substr(a, b - a + 1);
}

/* The element's style from its parent's: presentation attributes first,
 * then the declarations of its style attribute.  0 when display is none. */
int element_style(Reader *r, xmlNode *node, Style *style)
{
    bool hidden = trimmed(attribute(node, "display")) == "none";
    for (const char *property : {"fill", "stroke"}) {
        bool present;
        std::string value = attribute(node, property, &present);
        if (present) set_paint(r, node, property, value, style);
    }
    std::string declarations = attribute(node, "style");
    size_t at = 0;
    while (at < declarations.size()) {
        size_t end = declarations.find(';', at);
        if (end == std::string::npos) end = declarations.size();
        std::string item = declarations.substr(at, end - at);
        at = end + 1;
        size_t colon = item.find(':');
        if (colon == std::string::npos) continue;
        std::string name = trimmed(item.substr(0, colon)), value = trimmed(item.substr(colon + 1));
        size_t important = value.find("!important");
        if (important != std::string::npos) value = trimmed(value.substr(0, important));
        if (name == "fill" || name == "stroke") set_paint(r, node, name.c_str(), value, style);
        if (name == "display") hidden = value == "none";
    }
    return hidden ? 0 : 1;
}

bool is_svg_element(xmlNode *node)
{
    if (node->type != XML_ELEMENT_NODE) return false;
    return !node->ns || !node->ns->href || !strcmp((const char *)node->ns->href, SVG_NAMESPACE);
}

bool named(xmlNode *node, const char *name)
{
    return !strcmp((const char *)node->name, name);
}

/* ---- outlines of the shapes ---- */

int points_attribute(Reader *r, xmlNode *node, bool closed, std::vector<SvgOutline> *out)
{
    std::string text = attribute(node, "points");
    const char *p = text.c_str();
    SvgOutline o;
    o.closed = closed;
    double x, y;
    while (svg_scan_number(&p, &x)) {
        if (!svg_scan_number(&p, &y)) break;
        o.points.push_back({x, y});
    }
    while (*p == ' ' || *p == '\t' || *p == '\n' || *p == '\r' || *p == ',') p++;
    /* As with path data, a bad point ends the list; the points before it
     * are kept. */
    if (*p) warn(r, node, "the points stop being numbers at offset " + std::to_string(p - text.c_str()));
    if (o.points.size() >= 2) out->push_back(o);
    return 1;
}

int shape_outlines(Reader *r, xmlNode *node, std::vector<SvgOutline> *out)
{
    double v[6];
    if (named(node, "path")) {
        std::string error;
        if (!svg_parse_path(attribute(node, "d").c_str(), r->steps, out, &error)) {
            warn(r, node, error + "; the rest of the path is dropped");
        }
        return 1;
    }
    if (named(node, "rect")) {
        const char *names[] = {"x", "y", "width", "height", "rx", "ry"};
        for (int i = 0; i < 6; i++) {
            if (!length_attribute(r, node, names[i], 0, &v[i])) return 0;
        }
        if (!(v[2] > 0 && v[3] > 0)) return 1;
        out->push_back(svg_rect(v[0], v[1], v[2], v[3], v[4], v[5], r->steps));
        return 1;
    }
    if (named(node, "circle") || named(node, "ellipse")) {
        bool circle = named(node, "circle");
        const char *names[] = {"cx", "cy", circle ? "r" : "rx", circle ? "r" : "ry"};
        for (int i = 0; i < 4; i++) {
            if (!length_attribute(r, node, names[i], 0, &v[i])) return 0;
        }
        if (!(v[2] > 0 && v[3] > 0)) return 1;
        out->push_back(svg_ellipse(v[0], v[1], v[2], v[3], r->steps));
        return 1;
    }
    if (named(node, "line")) {
        const char *names[] = {"x1", "y1", "x2", "y2"};
        for (int i = 0; i < 4; i++) {
            if (!length_attribute(r, node, names[i], 0, &v[i])) return 0;
        }
        SvgOutline o;
        o.points = {{v[0], v[1]}, {v[2], v[3]}};
        out->push_back(o);
        return 1;
    }
    if (named(node, "polyline")) return points_attribute(r, node, false, out);
    if (named(node, "polygon")) return points_attribute(r, node, true, out);
    return 0;
}

bool is_shape(xmlNode *node)
{
    for (const char *name : {"path", "rect", "circle", "ellipse", "line", "polyline", "polygon"}) {
        if (named(node, name)) return true;
    }
    return false;
}

/* ---- surfaces ---- */

double signed_area(const std::vector<SvgPoint> &p)
{
    double area = 0;
    for (size_t i = 0; i < p.size(); i++) {
        const SvgPoint &a = p[i], &b = p[(i + 1) % p.size()];
        area += a.x * b.y - b.x * a.y;
    }
    return area / 2;
}

/* Adds one outline, mapped into the model, as a surface of the kind. */
int add_outline(Reader *r, Target *t, const SvgMatrix &m, const SvgOutline &o, int kind, long rgb)
{
    std::vector<SvgPoint> p;
    p.reserve(o.points.size());
    for (const SvgPoint &q : o.points) {
        SvgPoint mapped = svg_apply(m, q);
        if (!(std::fabs(mapped.x) <= SVG_MAX_COORDINATE && std::fabs(mapped.y) <= SVG_MAX_COORDINATE)) {
            r->error = "coordinates out of range";
            return 0;
        }
        p.push_back(mapped);
    }
    r->points += p.size();
    if (r->points > SVG_MAX_POINTS) {
        r->error = "more than " + std::to_string((long)SVG_MAX_POINTS) + " points in the drawing";
        return 0;
    }
    /* Polygons face the viewer of the Front view (counter-clockwise),
     * whatever way the drawing ran. */
    if (kind == SURFACE_POLYGON && signed_area(p) < 0) std::reverse(p.begin(), p.end());
    Surface *s = new_surface_styled(kind, 0, 0);
    RefAppender refs = ref_appender_start(s);
    for (const SvgPoint &q : p) ref_append(&refs, appender_new_vertex(&t->append, (float)q.x, (float)q.y, 0.0f), 0, 0);
    appender_add_surface(&t->append, s);
    r->colours.push_back({s, rgb});
    return 1;
}

/* Filled outlines become polygons (an open one is closed, as filling
 * does), the rest lines in the stroke colour when there is a stroke. */
int add_shape(Reader *r, Target *t, xmlNode *node, const SvgMatrix &m, const Style &style)
{
    std::vector<SvgOutline> outlines;
    if (!shape_outlines(r, node, &outlines)) return 1;
    bool fillable = !named(node, "line") && !style.fill.none;
    for (const SvgOutline &o : outlines) {
        int ok = 1;
        if (fillable && o.points.size() >= 3) {
            ok = add_outline(r, t, m, o, SURFACE_POLYGON, style.fill.rgb);
        } else if (!style.stroke.none) {
            int kind = o.closed && o.points.size() >= 3 ? SURFACE_CLOSED_LINE : SURFACE_LINE;
            ok = add_outline(r, t, m, o, kind, style.stroke.rgb);
        }
        if (!ok) {
            r->error = element_label(node) + ": " + r->error;
            return 0;
        }
    }
    return 1;
}

/* ---- the element tree ---- */

Object *new_child(Target *parent, const std::string &name)
{
    Object *o = new_object(OBJECT_NORMAL);
    if (!name.empty()) object_set_name(o, name.c_str());
    parent->kid_tail = list_add_item_fast(&parent->object->kids, parent->kid_tail, o);
    o->parent = parent->object;
    parent->object->num_kids++;
    return o;
}

int walk_children(Reader *r, xmlNode *node, Target *t, const SvgMatrix &m, const Style &style, int depth);

int walk_element(Reader *r, xmlNode *node, Target *t, const SvgMatrix &parent_matrix, const Style &parent_style,
                 int depth)
{
    if (depth > SVG_MAX_DEPTH) {
        r->error = "elements nested deeper than " + std::to_string((int)SVG_MAX_DEPTH);
        return 0;
    }
    bool group = named(node, "g") || named(node, "a") || named(node, "switch") || named(node, "svg");
    if (!group && !is_shape(node)) {
        static const char *const quiet[] = {"defs", "title", "desc", "metadata", "style", "linearGradient",
                                            "radialGradient", "clipPath", "mask", "pattern", "marker", "symbol",
                                            "filter", "script"};
        bool known = false;
        for (const char *name : quiet) known |= named(node, name);
        if (!known) r->skipped[(const char *)node->name]++;
        return 1;
    }
    Style style = parent_style;
    if (!element_style(r, node, &style)) return 1;
    SvgMatrix m = parent_matrix;
    if (has_attribute(node, "transform")) {
        SvgMatrix own;
        std::string error;
        if (!svg_parse_transform(attribute(node, "transform").c_str(), &own, &error)) {
            warn(r, node, error + "; the element is skipped");
            return 1;
        }
        m = svg_multiply(parent_matrix, own);
    }
    if (!group) return add_shape(r, t, node, m, style);
    /* A g (and a link or switch) is a child object named by its id. */
    Target child;
    child.object = new_child(t, attribute(node, "id"));
    appender_start(&child.append, child.object);
    return walk_children(r, node, &child, m, style, depth + 1);
}

int walk_children(Reader *r, xmlNode *node, Target *t, const SvgMatrix &m, const Style &style, int depth)
{
    for (xmlNode *kid = node->children; kid; kid = kid->next) {
        if (!is_svg_element(kid)) continue;
        if (!walk_element(r, kid, t, m, style, depth)) return 0;
    }
    return 1;
}

/* The viewBox mapping of the outermost svg element, y turned upward. */
int root_matrix(Reader *r, xmlNode *svg, SvgMatrix *out)
{
    double width = 0, height = 0;
    bool has_width = parse_length(attribute(svg, "width"), &width) && width > 0;
    bool has_height = parse_length(attribute(svg, "height"), &height) && height > 0;
    SvgMatrix viewport = svg_identity();
    bool present;
    std::string box = attribute(svg, "viewBox", &present);
    if (present) {
        double v[4];
        const char *p = box.c_str();
        int n = 0;
        while (n < 4 && svg_scan_number(&p, &v[n])) n++;
        if (n == 4 && v[2] > 0 && v[3] > 0) {
            if (!has_width) width = has_height ? height * v[2] / v[3] : v[2];
            if (!has_height) height = has_width ? width * v[3] / v[2] : v[3];
            double sx = width / v[2], sy = height / v[3];
            std::string aspect = trimmed(attribute(svg, "preserveAspectRatio"));
            if (aspect.compare(0, 4, "none") != 0) {
                /* xMidYMid meet, the default, for every other setting. */
                double s = sx < sy ? sx : sy;
                viewport = SvgMatrix{s, 0, 0, s, -v[0] * s + (width - v[2] * s) / 2, -v[1] * s + (height - v[3] * s) / 2};
            } else {
                viewport = SvgMatrix{sx, 0, 0, sy, -v[0] * sx, -v[1] * sy};
            }
        } else {
            warn(r, svg, "the viewBox \"" + box.substr(0, 60) + "\" cannot be read; it is ignored");
        }
    }
    SvgMatrix flip{1, 0, 0, -1, 0, 0};
    *out = svg_multiply(flip, viewport);
    if (has_attribute(svg, "transform")) {
        SvgMatrix own;
        std::string error;
        if (!svg_parse_transform(attribute(svg, "transform").c_str(), &own, &error)) {
            r->error = "the svg element's transform cannot be read: " + error;
            return 0;
        }
        *out = svg_multiply(*out, own);
    }
    return 1;
}

bool object_is_empty(Object *o)
{
    return !o->surfaces && !o->kids;
}

/* Drops objects left without surfaces or children, deepest first. */
void prune_empty(Object *o)
{
    for (List *k = o->kids; k; k = k->next) prune_empty((Object *)k->item);
    object_free_children_where(o, object_is_empty);
}

void calc_normals(Object *o)
{
    object_calc_normals_force(o);
    for (List *k = o->kids; k; k = k->next) calc_normals((Object *)k->item);
}

std::string xml_error_text(xmlParserCtxtPtr context)
{
    xmlErrorPtr e = xmlCtxtGetLastError(context);
    if (!e || !e->message) return "the XML cannot be read";
    std::string message = trimmed(e->message);
    return "XML error at line " + std::to_string(e->line) + ": " + message;
}

/* The parsed document, or null with the reason in *error. */
xmlDocPtr parse_xml(const char *text, size_t size, std::string *error)
{
    static bool initialised = false;
    if (!initialised) {
        xmlInitParser();
        xmlSetExternalEntityLoader(refuse_external_entity);
        initialised = true;
    }
    if (size > SVG_MAX_BYTES) {
        *error = "the file is larger than " + std::to_string(SVG_MAX_BYTES / (1024 * 1024)) + " MB";
        return nullptr;
    }
    xmlParserCtxtPtr context = xmlNewParserCtxt();
    if (!context) {
        *error = "out of memory";
        return nullptr;
    }
    /* No XML_PARSE_NOENT (entities stay unexpanded), no DTD loading, no
     * network; errors are collected rather than printed. */
    int options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
    xmlDocPtr doc = xmlCtxtReadMemory(context, text, (int)size, "drawing.svg", nullptr, options);
    if (!doc || !context->wellFormed) {
        *error = xml_error_text(context);
        if (doc) xmlFreeDoc(doc);
        doc = nullptr;
    }
    xmlFreeParserCtxt(context);
    return doc;
}

void report_skipped(Reader *r)
{
    for (auto &kind : r->skipped) {
        r->warnings->push_back(std::to_string(kind.second) + " <" + kind.first + "> element" +
                               (kind.second == 1 ? " was" : "s were") + " not read");
    }
}

} // namespace

Object *read_svg_text(const char *text, size_t size, const char *name, int steps, std::vector<std::string> *warnings,
                      std::string *error)
{
    xmlDocPtr doc = parse_xml(text, size, error);
    if (!doc) return nullptr;
    xmlNode *svg = xmlDocGetRootElement(doc);
    if (!svg || !is_svg_element(svg) || !named(svg, "svg")) {
        *error = std::string("the file is not an SVG drawing (its root element is <") +
                 (svg ? (const char *)svg->name : "none") + ">)";
        xmlFreeDoc(doc);
        return nullptr;
    }
    Reader r;
    r.steps = steps < 1 ? 1 : steps > SVG_MAX_STEPS ? SVG_MAX_STEPS : steps;
    r.warnings = warnings;
    Object *holder = new_group();
    Target top;
    top.object = holder;
    std::string id = attribute(svg, "id");
    Target drawing;
    drawing.object = new_child(&top, id.empty() ? std::string(name ? name : "svg") : id);
    appender_start(&drawing.append, drawing.object);
    SvgMatrix m;
    Style style;
    bool ok = root_matrix(&r, svg, &m) && element_style(&r, svg, &style) &&
              walk_children(&r, svg, &drawing, m, style, 1);
    xmlFreeDoc(doc);
    if (ok) {
        prune_empty(holder);
        if (!holder->kids) {
            r.error = "the drawing holds no shapes that could be read";
            ok = false;
        }
    }
    if (!ok) {
        *error = r.error.empty() ? "nothing to show" : r.error;
        object_free(holder);
        return nullptr;
    }
    report_skipped(&r);
    /* Colours join the palette only now that the read succeeded. */
    std::map<long, int> index;
    for (const PendingColour &c : r.colours) {
        auto found = index.find(c.rgb);
        if (found == index.end()) found = index.emplace(c.rgb, rgb_to_index(c.rgb)).first;
        c.surface->mat = (uint16_t)found->second;
    }
    calc_normals(holder);
    return holder;
}

Object *read_svg_file(const char *filename, int steps, std::vector<std::string> *warnings, std::string *error)
{
    FILE *file = filename ? fopen(filename, "rb") : nullptr;
    if (!file) {
        *error = std::string("can't open ") + (filename ? filename : "") + " for reading";
        return nullptr;
    }
    std::string text;
    char buffer[65536];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, file)) > 0) {
        text.append(buffer, n);
        if (text.size() > SVG_MAX_BYTES) break;
    }
    bool failed = ferror(file);
    fclose(file);
    if (failed) {
        *error = std::string("error reading ") + filename;
        return nullptr;
    }
    /* The drawing's object is named after the file, without its folder
     * and suffix. */
    std::string name = filename;
    size_t slash = name.find_last_of('/');
    if (slash != std::string::npos) name = name.substr(slash + 1);
    size_t dot = name.find_last_of('.');
    if (dot != std::string::npos && dot > 0) name = name.substr(0, dot);
    return read_svg_text(text.data(), text.size(), name.c_str(), steps, warnings, error);
}
