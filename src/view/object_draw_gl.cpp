/*
 * view/object_draw_gl.cpp - the object walk shared by the orthographic
 * views and the 3D view: visibility and selection inheritance, the
 * primitive chosen for each surface, materials with a cache, smooth and
 * flat shading, the tessellator for polygons other than triangles and
 * quads (a failed tessellation shows as a red outline), vertices and
 * object centres.
 */
#include "view/render_gl.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "edit/selection.h"
#include "texture/texture_gl.h"
#include "view/redraw.h"
#include "view/view_state.h"

#include <GL/glu.h>

RenderState render_state = {GL_RENDER, 0, -1, 0, 1, 0, 1, {1, 1}};
PickParams pick_params;

void apply_pick_matrix(void)
{
    if (render_state.render_mode != GL_SELECT) return;
    gluPickMatrix(pick_params.x, pick_params.y, pick_params.width, pick_params.height,
                  pick_params.viewport);
}

void set_col(int index)
{
    static const int *const colours[] = {
        &prefs.col_foreground, &prefs.col_background, &prefs.col_line,   &prefs.col_selline,
        &prefs.col_vert,       &prefs.col_selvert,    &prefs.col_box,    &prefs.col_grid,
        &prefs.col_axis,       &prefs.col_3dgrid,     &prefs.col_3dbackground,
    };
    if (index < 0 || index > 10) return;
    unsigned c = (unsigned)*colours[index];
    glColor3ub((GLubyte)(c >> 16), (GLubyte)(c >> 8), (GLubyte)c);
}

static void set_material(int index)
{
    const Material *m = index_to_material(index);
    float alpha = 1.0f - m->transparency;
    float diffuse[4] = {m->rgb[0], m->rgb[1], m->rgb[2], alpha};
    float ambient[4] = {m->ambient[0], m->ambient[1], m->ambient[2], alpha};
    glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, diffuse);
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, ambient);
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, m->emissive);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, m->specular);
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, m->shininess);
}

/* What one surface is drawn with. */
struct SurfaceStyle {
    GLenum primitive;
    int texturing;
    int vertex_normals;
};

static void send_vertex(const SVertex *ref, const SurfaceStyle *style)
{
    if (style->texturing) {
        glTexCoord2f(ref->u * render_state.texture_repeat[0], ref->v * render_state.texture_repeat[1]);
    }
    if (style->vertex_normals) glNormal3fv(ref->vertex->normal);
    glVertex3fv(ref->vertex->point);
}

/* ---- tessellation ---- */

static int tess_failed;
static const SurfaceStyle *tess_style;

static void GLAPIENTRY tess_begin(GLenum type) { glBegin(type); }
static void GLAPIENTRY tess_end(void) { glEnd(); }
static void GLAPIENTRY tess_vertex(void *data) { send_vertex((const SVertex *)data, tess_style); }
static void GLAPIENTRY tess_error(GLenum) { tess_failed = 1; }

static void draw_outline_red(const Surface *s)
{
    glDisable(GL_LIGHTING);
    glColor3ub(255, 0, 0);
    glBegin(GL_LINE_STRIP);
    for (List *r = s->vertrefs; r; r = r->next) glVertex3fv(((SVertex *)r->item)->vertex->point);
    glVertex3fv(((SVertex *)s->vertrefs->item)->vertex->point);
    glEnd();
    render_state.cached_material = -1;
}

static void draw_tessellated(const Surface *s, const SurfaceStyle *style)
{
    GLUtesselator *tess = gluNewTess();
    if (!tess) return;
    typedef void(GLAPIENTRY * TessCallback)();
    gluTessCallback(tess, GLU_TESS_BEGIN, (TessCallback)tess_begin);
    gluTessCallback(tess, GLU_TESS_END, (TessCallback)tess_end);
    gluTessCallback(tess, GLU_TESS_VERTEX, (TessCallback)tess_vertex);
    gluTessCallback(tess, GLU_TESS_ERROR, (TessCallback)tess_error);
    tess_failed = 0;
    tess_style = style;
    /* GLU keeps the coordinate pointers until the polygon ends, so each
     * corner gets its own slot. */
    GLdouble coords[256][3];
    int n = 0;
    gluTessBeginPolygon(tess, nullptr);
    gluTessBeginContour(tess);
    for (List *r = s->vertrefs; r && n < 256; r = r->next, n++) {
        const float *p = ((SVertex *)r->item)->vertex->point;
        coords[n][0] = p[0];
        coords[n][1] = p[1];
        coords[n][2] = p[2];
        gluTessVertex(tess, coords[n], r->item);
        if (tess_failed) break;
    }
    if (!tess_failed) {
        gluTessEndContour(tess);
        gluTessEndPolygon(tess);
    }
    gluDeleteTess(tess);
    if (tess_failed) draw_outline_red(s);
}

/* ---- one surface ---- */

/* The primitive of a surface in the 3D view; keeps the previous one for
 * an unknown view_3d_mode, as the drawing always has. */
static GLenum primitive_3d(const Surface *s, GLenum previous, int *tessellate)
{
    int m = prefs.view_3d_mode;
    unsigned n = s->num_vertrefs;
    *tessellate = 0;
    if (n == 2) return GL_LINE_STRIP;
    if (s->surface_kind == SURFACE_LINE) return GL_LINE_STRIP;
    if (s->surface_kind == SURFACE_CLOSED_LINE || m == 1) return GL_LINE_LOOP;
    if (m == 2 || n == 1) return GL_POINT; /* not a glBegin mode: draws nothing */
    if (m == 0) {
        if (n == 3 || n == 4) return GL_TRIANGLE_STRIP;
        *tessellate = 1;
        return GL_POLYGON;
    }
    return previous;
}

static void draw_surface_3d(const Surface *s, SurfaceStyle *style, GLenum *previous)
{
    int tessellate;
    GLenum prim = primitive_3d(s, *previous, &tessellate);
    *previous = prim;
    if (prim == GL_POINT) return; /* the point style draws nothing */
    if (s->twosided) glDisable(GL_CULL_FACE);
    else glEnable(GL_CULL_FACE);
    glShadeModel(s->shading ? GL_SMOOTH : GL_FLAT);
    int is_line = prim == GL_LINE_STRIP || prim == GL_LINE_LOOP;
    if (is_line) {
        glDisable(GL_LIGHTING);
        glColor3fv(index_to_material(s->mat)->rgb);
        render_state.cached_material = -1;
    } else {
        glEnable(GL_LIGHTING);
        if (s->mat != render_state.cached_material) {
            set_material(s->mat);
            render_state.cached_material = s->mat;
        }
    }
    style->vertex_normals = s->shading != 0;
    if (prefs.view_3d_mode == 0 && !s->shading && !is_line) glNormal3fv(s->normal);
    if (tessellate) {
        draw_tessellated(s, style);
        return;
    }
    glBegin(prim);
    if (prim == GL_TRIANGLE_STRIP && s->num_vertrefs == 4) {
        /* A quad as a strip: first, second, fourth, third. */
        List *r = s->vertrefs;
        const SVertex *v[4];
        for (int i = 0; i < 4; i++, r = r->next) v[i] = (const SVertex *)r->item;
        send_vertex(v[0], style);
        send_vertex(v[1], style);
        send_vertex(v[3], style);
        send_vertex(v[2], style);
    } else {
        for (List *r = s->vertrefs; r; r = r->next) send_vertex((const SVertex *)r->item, style);
    }
    glEnd();
}

void draw_surface_outline(const Surface *s)
{
    glBegin(s->surface_kind == SURFACE_LINE ? GL_LINE_STRIP : GL_LINE_LOOP);
    for (List *r = s->vertrefs; r; r = r->next) glVertex3fv(((SVertex *)r->item)->vertex->point);
    glEnd();
}

static void draw_vertices(Object *o, int selected)
{
    glDisable(GL_LIGHTING);
    if (prefs.handles_hollow) glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    set_col(selected ? 5 : 4);
    glPointSize((float)prefs.vert_size);
    glBegin(GL_POINTS);
    for (List *v = o->vertices; v; v = v->next) glVertex3fv(((Vertex *)v->item)->point);
    glEnd();
}

static void draw_centre_mark(Object *o, int selected, int view)
{
    if (o == world) return;
    if (selection.select_mode == SELECT_TREE && o->type != OBJECT_GROUP && o->parent != world) return;
    set_col(selected ? 5 : 4);
    float half = (float)prefs.object_centre_size / views[view].scale;
    const float *c = o->centre;
    glBegin(GL_LINES);
    for (int axis = 0; axis < 3; axis++) {
        float a[3] = {c[0], c[1], c[2]}, b[3] = {c[0], c[1], c[2]};
        a[axis] -= half;
        b[axis] += half;
        glVertex3fv(a);
        glVertex3fv(b);
    }
    glEnd();
}

static void draw_object_surfaces(Object *o, int selected, int view)
{
    SurfaceStyle style = {GL_LINE_LOOP, 0, 0};
    if (!render_state.orth_drawing && view_3d_textures && o->texture && texture_bind(o->texture)) {
        style.texturing = 1;
        render_state.texture_repeat[0] = o->texture_repeat_x;
        render_state.texture_repeat[1] = o->texture_repeat_y;
    }
    if (render_state.orth_drawing) {
        set_col(selected ? 3 : 2);
        glDisable(GL_LIGHTING);
    }
    GLenum previous = GL_LINE_LOOP;
    for (List *l = o->surfaces; l; l = l->next) {
        const Surface *s = (const Surface *)l->item;
        if (!s->vertrefs) continue;
        if (polygon_too_many_corners(s, 0)) continue;
        if (render_state.orth_drawing) draw_surface_outline(s);
        else draw_surface_3d(s, &style, &previous);
    }
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    if (style.texturing) glDisable(GL_TEXTURE_2D);
    int show = render_state.orth_drawing ? prefs.show_vertices : prefs.show_vertices_3d;
    if (show && o->vertices) draw_vertices(o, selected);
    if (render_state.orth_drawing && prefs.show_object_centres) draw_centre_mark(o, selected, view);
    glShadeModel(GL_FLAT);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

void draw_object_tree(Object *object, int selected, int view)
{
    int effective = selected;
    int draw = 1;
    if (render_state.orth_drawing) {
        draw = object->visible;
        if (!effective && object_is_selected(object)) effective = 1;
    } else {
        if (prefs.hide_objects_in_3d && !object->visible) draw = 0;
        if (!effective && prefs.show_vertices_3d && object_is_selected(object)) effective = 1;
    }
    if (draw) draw_object_surfaces(object, effective, view);
    for (List *k = object->kids; k; k = k->next) draw_object_tree((Object *)k->item, effective, view);
}

void draw_model(int view)
{
    if (!world) return;
    if (draw_model_batched(view)) return;
    draw_object_tree(world, 0, view);
}

void set_material_cached(int index)
{
    if (index == render_state.cached_material) return;
    set_material(index);
    render_state.cached_material = index;
}

void draw_surface_direct_3d(const Surface *s)
{
    SurfaceStyle style = {GL_LINE_LOOP, 0, 0};
    GLenum previous = GL_LINE_LOOP;
    draw_surface_3d(s, &style, &previous);
}

void draw_object_direct(Object *o, int selected, int view)
{
    draw_object_surfaces(o, selected, view);
}

void draw_object_centre(Object *o, int selected, int view)
{
    draw_centre_mark(o, selected, view);
}
