/*
 * fileio/svg_path.cpp - SVG path data and the basic shapes as outlines
 * (see svg_geometry.h).  Every command, absolute and relative, is read:
 * moveto, lineto, horizontal and vertical lineto, cubic and quadratic
 * Beziers with their smooth forms, elliptical arcs and closepath.  Curves
 * are cut into equal parameter steps; arcs into steps per quarter turn,
 * so that a small arc is not drawn with as many points as a whole circle.
 * As SVG asks, a bad token ends the path data: what came before it is
 * kept.
 */
#include "fileio/svg_geometry.h"

#include <cctype>
#include <cmath>

namespace {

struct PathState {
    std::vector<SvgOutline> *out;
    SvgOutline current;
    SvgPoint point{0, 0}, start{0, 0};
    SvgPoint control{0, 0};   /* last control point, for S and T */
    char last = 0;            /* last command, upper case */
    int steps;
    size_t total = 0;
};

void add_point(PathState *s, SvgPoint p)
{
    std::vector<SvgPoint> &pts = s->current.points;
    if (!pts.empty() && pts.back().x == p.x && pts.back().y == p.y) return;
    pts.push_back(p);
    s->total++;
}

/* Ends the subpath being built (a lone point draws nothing). */
void flush(PathState *s)
{
    SvgOutline &o = s->current;
    if (o.closed && o.points.size() > 1 && o.points.back().x == o.points.front().x &&
        o.points.back().y == o.points.front().y) {
        o.points.pop_back();
    }
    if (o.points.size() >= 2) s->out->push_back(o);
    o.points.clear();
    o.closed = false;
}

/* A drawing command after closepath starts again at the subpath's start. */
void ensure_started(PathState *s)
{
    if (s->current.points.empty()) add_point(s, s->point);
}

void cubic(PathState *s, SvgPoint p1, SvgPoint p2, SvgPoint p3)
{
    SvgPoint p0 = s->point;
    for (int i = 1; i <= s->steps; i++) {
        double t = (double)i / s->steps, u = 1 - t;
        double a = u * u * u, b = 3 * u * u * t, c = 3 * u * t * t, d = t * t * t;
        add_point(s, {a * p0.x + b * p1.x + c * p2.x + d * p3.x, a * p0.y + b * p1.y + c * p2.y + d * p3.y});
    }
    s->control = p2;
    s->point = p3;
}

void quadratic(PathState *s, SvgPoint p1, SvgPoint p2)
{
    SvgPoint p0 = s->point;
    for (int i = 1; i <= s->steps; i++) {
        double t = (double)i / s->steps, u = 1 - t;
        double a = u * u, b = 2 * u * t, c = t * t;
        add_point(s, {a * p0.x + b * p1.x + c * p2.x, a * p0.y + b * p1.y + c * p2.y});
    }
    s->control = p1;
    s->point = p2;
}

double angle_between(double ux, double uy, double vx, double vy)
{
    return std::atan2(ux * vy - uy * vx, ux * vx + uy * vy);
}

/* The elliptical arc to p by the endpoint-to-centre conversion of the SVG
 * implementation notes, radii scaled up when too small. */
void arc(PathState *s, double rx, double ry, double rotation, bool large, bool sweep, SvgPoint p)
{
    SvgPoint p0 = s->point;
    rx = std::fabs(rx);
    ry = std::fabs(ry);
    if (p0.x == p.x && p0.y == p.y) return;
    if (rx == 0 || ry == 0) {
        add_point(s, p);
        s->point = p;
        return;
    }
    double phi = rotation * M_PI / 180.0, cp = std::cos(phi), sp = std::sin(phi);
    double dx = (p0.x - p.x) / 2, dy = (p0.y - p.y) / 2;
    double x1 = cp * dx + sp * dy, y1 = -sp * dx + cp * dy;
    double lambda = (x1 * x1) / (rx * rx) + (y1 * y1) / (ry * ry);
    if (lambda > 1) {
        rx *= std::sqrt(lambda);
        ry *= std::sqrt(lambda);
    }
    double num = rx * rx * ry * ry - rx * rx * y1 * y1 - ry * ry * x1 * x1;
    double den = rx * rx * y1 * y1 + ry * ry * x1 * x1;
    double k = den > 0 && num > 0 ? std::sqrt(num / den) : 0;
    if (large == sweep) k = -k;
    double cx1 = k * rx * y1 / ry, cy1 = -k * ry * x1 / rx;
    double cx = cp * cx1 - sp * cy1 + (p0.x + p.x) / 2, cy = sp * cx1 + cp * cy1 + (p0.y + p.y) / 2;
    double theta = angle_between(1, 0, (x1 - cx1) / rx, (y1 - cy1) / ry);
    double delta = angle_between((x1 - cx1) / rx, (y1 - cy1) / ry, (-x1 - cx1) / rx, (-y1 - cy1) / ry);
    /* Radii so large that their squares overflow: a straight line. */
    if (!std::isfinite(theta) || !std::isfinite(delta) || !std::isfinite(cx) || !std::isfinite(cy)) {
        add_point(s, p);
        s->point = p;
        return;
    }
    if (!sweep && delta > 0) delta -= 2 * M_PI;
    if (sweep && delta < 0) delta += 2 * M_PI;
    int quarters = (int)std::ceil(std::fabs(delta) / (M_PI / 2) - 1e-9);
    if (quarters < 1) quarters = 1;
    int n = quarters * s->steps;
    for (int i = 1; i < n; i++) {
        double t = theta + delta * i / n;
        double ex = rx * std::cos(t), ey = ry * std::sin(t);
        add_point(s, {cp * ex - sp * ey + cx, sp * ex + cp * ey + cy});
    }
    /* The end point exactly as given, not as computed. */
    add_point(s, p);
    s->point = p;
}

const char *skip_separators(const char *p)
{
    while (*p == ' ' || *p == '\t' || *p == '\n' || *p == '\r' || *p == ',') p++;
    return p;
}

/* An arc flag: a single 0 or 1, which may run into the next number. */
int scan_flag(const char **where, bool *flag)
{
    const char *p = skip_separators(*where);
    if (*p != '0' && *p != '1') return 0;
    *flag = *p == '1';
    *where = p + 1;
    return 1;
}

int argument_count(char command)
{
    switch (toupper((unsigned char)command)) {
    case 'Z': return 0;
    case 'H':
    case 'V': return 1;
    case 'M':
    case 'L':
    case 'T': return 2;
    case 'S':
    case 'Q': return 4;
    case 'C': return 6;
    case 'A': return 7;
    default: return -1;
    }
}

/* Reads one set of arguments for the command; 0 when they are not there. */
int scan_arguments(const char **p, char command, double *v)
{
    int n = argument_count(command);
    for (int i = 0; i < n; i++) {
        if (toupper((unsigned char)command) == 'A' && (i == 3 || i == 4)) {
            bool flag;
            if (!scan_flag(p, &flag)) return 0;
            v[i] = flag ? 1 : 0;
            continue;
        }
        if (!svg_scan_number(p, &v[i])) return 0;
    }
    return 1;
}

void run_command(PathState *s, char command, double *v)
{
    bool relative = islower((unsigned char)command);
    char c = (char)toupper((unsigned char)command);
    double ox = relative ? s->point.x : 0, oy = relative ? s->point.y : 0;
    bool smooth_cubic = s->last == 'C' || s->last == 'S', smooth_quad = s->last == 'Q' || s->last == 'T';
    /* The reflected control point of the smooth forms. */
    SvgPoint reflected{2 * s->point.x - s->control.x, 2 * s->point.y - s->control.y};
    switch (c) {
    case 'M':
        flush(s);
        s->point = s->start = {ox + v[0], oy + v[1]};
        add_point(s, s->point);
        break;
    case 'L':
        ensure_started(s);
        s->point = {ox + v[0], oy + v[1]};
        add_point(s, s->point);
        break;
    case 'H':
        ensure_started(s);
        s->point.x = ox + v[0];
        add_point(s, s->point);
        break;
    case 'V':
        ensure_started(s);
        s->point.y = oy + v[0];
        add_point(s, s->point);
        break;
    case 'C':
        ensure_started(s);
        cubic(s, {ox + v[0], oy + v[1]}, {ox + v[2], oy + v[3]}, {ox + v[4], oy + v[5]});
        break;
    case 'S':
        ensure_started(s);
        cubic(s, smooth_cubic ? reflected : s->point, {ox + v[0], oy + v[1]}, {ox + v[2], oy + v[3]});
        break;
    case 'Q':
        ensure_started(s);
        quadratic(s, {ox + v[0], oy + v[1]}, {ox + v[2], oy + v[3]});
        break;
    case 'T':
        ensure_started(s);
        quadratic(s, smooth_quad ? reflected : s->point, {ox + v[0], oy + v[1]});
        break;
    case 'A':
        ensure_started(s);
        arc(s, v[0], v[1], v[2], v[3] != 0, v[4] != 0, {ox + v[5], oy + v[6]});
        break;
    case 'Z':
        if (!s->current.points.empty()) {
            s->current.closed = true;
            flush(s);
        }
        s->point = s->start;
        break;
    }
    if (c != 'C' && c != 'S' && c != 'Q' && c != 'T') s->control = s->point;
    s->last = c;
}

} // namespace

int svg_parse_path(const char *d, int steps, std::vector<SvgOutline> *out, std::string *error)
{
    PathState s;
    s.out = out;
    s.steps = steps < 1 ? 1 : steps > SVG_MAX_STEPS ? SVG_MAX_STEPS : steps;
    const char *p = skip_separators(d);
    char command = 0;
    bool ok = true;
    while (*p) {
        const char *token = p;
        if (isalpha((unsigned char)*p)) {
            command = *p++;
            if (argument_count(command) < 0 || (!s.last && toupper((unsigned char)command) != 'M')) {
                *error = "path data: unexpected \"" + std::string(token, 1) + "\" at offset " + std::to_string(token - d);
                ok = false;
                break;
            }
        } else if (!command || toupper((unsigned char)command) == 'Z') {
            *error = "path data: a number without a command at offset " + std::to_string(token - d);
            ok = false;
            break;
        }
        double v[7];
        if (!scan_arguments(&p, command, v)) {
            /* p stands after the last number read: the bad token is next. */
            *error = "path data: bad or missing number at offset " + std::to_string(skip_separators(p) - d);
            ok = false;
            break;
        }
        run_command(&s, command, v);
        if (s.total > SVG_MAX_POINTS) {
            *error = "path data: more than " + std::to_string((long)SVG_MAX_POINTS) + " points";
            ok = false;
            break;
        }
        /* Further coordinates after a moveto are linetos. */
        if (command == 'M') command = 'L';
        if (command == 'm') command = 'l';
        p = skip_separators(p);
    }
    flush(&s);
    return ok ? 1 : 0;
}

SvgOutline svg_ellipse(double cx, double cy, double rx, double ry, int steps)
{
    if (steps < 1) steps = 1;
    if (steps > SVG_MAX_STEPS) steps = SVG_MAX_STEPS;
    SvgOutline o;
    o.closed = true;
    int n = 4 * steps;
    for (int i = 0; i < n; i++) {
        double t = 2 * M_PI * i / n;
        o.points.push_back({cx + rx * std::cos(t), cy + ry * std::sin(t)});
    }
    return o;
}

SvgOutline svg_rect(double x, double y, double w, double h, double rx, double ry, int steps)
{
    std::vector<SvgOutline> out;
    std::string error;
    if (rx <= 0 && ry <= 0) {
        SvgOutline o;
        o.closed = true;
        o.points = {{x, y}, {x + w, y}, {x + w, y + h}, {x, y + h}};
        return o;
    }
    /* One radius given stands for both; neither exceeds half the side. */
    if (rx <= 0) rx = ry;
    if (ry <= 0) ry = rx;
    if (rx > w / 2) rx = w / 2;
    if (ry > h / 2) ry = h / 2;
    PathState s;
    s.out = &out;
    s.steps = steps < 1 ? 1 : steps > SVG_MAX_STEPS ? SVG_MAX_STEPS : steps;
    s.point = s.start = {x + rx, y};
    add_point(&s, s.point);
    const SvgPoint corners[4][2] = {{{x + w - rx, y}, {x + w, y + ry}},
                                    {{x + w, y + h - ry}, {x + w - rx, y + h}},
                                    {{x + rx, y + h}, {x, y + h - ry}},
                                    {{x, y + ry}, {x + rx, y}}};
    for (const auto &c : corners) {
        add_point(&s, c[0]);
        s.point = c[0];
        arc(&s, rx, ry, 0, false, true, c[1]);
    }
    s.current.closed = true;
    flush(&s);
    return out.empty() ? SvgOutline() : out[0];
}
