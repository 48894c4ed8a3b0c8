/*
 * view/picking_gl.cpp - picking with the OpenGL selection buffer: the
 * view is drawn in GL_SELECT mode through a pick matrix around the mouse,
 * each object (or, in vertex mode, each surface) under a name, and the
 * hits are turned into a selection.  Names are indices into a table of
 * the records drawn in this pick, so they are 32-bit on any machine and
 * map back only to records that exist.
 *
 * A query (query_3d) draws the same way with every surface under its own
 * name and reports the nearest object, surface and vertex without
 * touching the selection: the 3D view's menu is built from it.
 *
 * Only what picking needs is drawn: no lighting, materials or vertex
 * markers, and nothing whose projected bounds lie wholly outside the
 * pick region (it could not be hit, so the hits are unchanged).
 */
#include "view/render_gl.h"
#include "app/prefs.h"
#include "core/internal.h"
#include "edit/selection.h"
#include "view/redraw.h"
#include "view/view_state.h"

#include <GL/glu.h>

#include <vector>

static GLuint *select_buffer = nullptr;
static int select_buffer_size = 64;
static std::vector<void *> pick_names;   /* name i + 1 stands for entry i */
static std::vector<Object *> pick_owners; /* the object drawn under each name */
static int naming_surfaces = 0;           /* a query: every surface has a name */
static GLfloat clip_matrix[16];           /* projection x modelview */

/* ---- culling against the pick region ---- */

static void load_clip_matrix(void)
{
    GLfloat p[16], m[16];
    glGetFloatv(GL_PROJECTION_MATRIX, p);
    glGetFloatv(GL_MODELVIEW_MATRIX, m);
    for (int c = 0; c < 4; c++) {
        for (int r = 0; r < 4; r++) {
            float sum = 0;
            for (int k = 0; k < 4; k++) sum += p[k * 4 + r] * m[c * 4 + k];
            clip_matrix[c * 4 + r] = sum;
        }
    }
}

/* Which of the six clip planes a point lies outside (one bit each). */
static unsigned outcode(const float *pt)
{
    const GLfloat *m = clip_matrix;
    float c[4];
    for (int r = 0; r < 4; r++) c[r] = m[r] * pt[0] + m[4 + r] * pt[1] + m[8 + r] * pt[2] + m[12 + r];
    unsigned code = 0;
    if (c[0] < -c[3]) code |= 1;
    if (c[0] > c[3]) code |= 2;
    if (c[1] < -c[3]) code |= 4;
    if (c[1] > c[3]) code |= 8;
    if (c[2] < -c[3]) code |= 16;
    if (c[2] > c[3]) code |= 32;
    return code;
}

/* Outcodes of an object's vertices, indexed through their mark. */
static std::vector<unsigned char> vertex_codes;

static unsigned object_codes(Object *o)
{
    vertex_codes.clear();
    unsigned all = 63;
    uint32_t i = 0;
    for (List *v = o->vertices; v; v = v->next, i++) {
        Vertex *vx = (Vertex *)v->item;
        vx->mark = i;
        unsigned code = outcode(vx->point);
        vertex_codes.push_back((unsigned char)code);
        all &= code;
    }
    return all;
}

static int surface_outside(const Surface *s)
{
    unsigned all = 63;
    for (List *r = s->vertrefs; r && all; r = r->next) {
        uint32_t i = ((SVertex *)r->item)->vertex->mark;
        all &= i < vertex_codes.size() ? vertex_codes[i] : 0;
    }
    return all != 0;
}

/* ---- the pick drawing ---- */

static GLuint name_for(void *record, Object *owner)
{
    pick_names.push_back(record);
    pick_owners.push_back(owner);
    return (GLuint)pick_names.size();
}

static void pick_draw_surface(const Surface *s)
{
    if (!s->vertrefs) return;
    if (polygon_too_many_corners(s, 1)) return;
    if (render_state.orth_drawing) draw_surface_outline(s);
    else draw_surface_direct_3d(s);
}

static void pick_walk(Object *o, int view)
{
    int draw = render_state.orth_drawing ? o->visible : !(prefs.hide_objects_in_3d && !o->visible);
    if (draw && o->vertices && object_codes(o) == 0) {
        int by_surface = naming_surfaces || selection.select_mode == SELECT_VERTEX;
        if (!by_surface) glLoadName(name_for(o, o));
        for (List *l = o->surfaces; l; l = l->next) {
            Surface *s = (Surface *)l->item;
            if (surface_outside(s)) continue;
            if (by_surface) glLoadName(name_for(s, o));
            pick_draw_surface(s);
        }
    }
    for (List *k = o->kids; k; k = k->next) pick_walk((Object *)k->item, view);
}

static void pick_draw(int view, int width, int height)
{
    glViewport(0, 0, width, height);
    glDisable(GL_LIGHTING);
    glDisable(GL_CULL_FACE);
    if (view == 3) {
        setup_projection_3d(width, height);
        glEnable(GL_DEPTH_TEST);
        camera_transform(1);
        render_state.orth_drawing = 0;
    } else {
        orth_model_projection(view, width, height);
        render_state.orth_drawing = 1;
    }
    load_clip_matrix();
    pick_names.clear();
    pick_owners.clear();
    if (world) pick_walk(world, view);
    render_state.orth_drawing = 0;
}

/* Draws the view in selection mode until the buffer holds every hit;
 * returns the number of hit records. */
static int pick_hits(int view, int x, int y, int width, int height, int win_w, int win_h)
{
    for (;;) {
        if (!select_buffer) select_buffer = (GLuint *)myalloc((unsigned)select_buffer_size * sizeof(GLuint));
        if (!select_buffer) return 0;
        glGetIntegerv(GL_VIEWPORT, pick_params.viewport);
        pick_params.viewport[0] = 0;
        pick_params.viewport[1] = 0;
        pick_params.viewport[2] = win_w;
        pick_params.viewport[3] = win_h;
        pick_params.x = x;
        pick_params.y = win_h - y;
        pick_params.width = width;
        pick_params.height = height;
        glSelectBuffer(select_buffer_size, select_buffer);
        glRenderMode(GL_SELECT);
        render_state.render_mode = GL_SELECT;
        glInitNames();
        glPushName(0xFFFFFFFF);
        pick_draw(view, win_w, win_h);
        glFlush();
        render_state.render_mode = GL_RENDER;
        int hits = glRenderMode(GL_RENDER);
        debugf("hits %d\n", hits);
        if (hits >= 0) return hits;
        select_buffer_size *= 2;
        debugf("doubling select buffer to %d\n", select_buffer_size);
        myfree(select_buffer);
        select_buffer = nullptr;
    }
}

static void *record_of(GLuint name)
{
    if (name == 0 || name > pick_names.size()) return nullptr;
    return pick_names[name - 1];
}

static void process_hits(int hits, int add, int remove, int nearest_only)
{
    List *hit_list = nullptr;
    void *nearest = nullptr;
    GLuint best = 0;
    GLuint *p = select_buffer;
    for (int h = 0; h < hits; h++) {
        GLuint n = *p++, z1 = *p++, z2 = *p++;
        debugf(" number of items for hit = %d\n", (int)n);
        debugf("  z1 is %u, z2 is %u\n", z1, z2);
        for (GLuint i = 0; i < n; i++, p++) {
            void *record = record_of(*p);
            if (!record) continue;
            list_add_item(&hit_list, record);
            /* Of equal depths the later record wins. */
            if (h == 0 || z1 <= best) {
                best = z1;
                nearest = record;
            }
        }
    }
    int vertex_mode = selection.select_mode == SELECT_VERTEX;
    if (nearest_only && nearest) {
        if (!vertex_mode) {
            Object *o = (Object *)nearest;
            debugf("nearest object %lx name %s\n", (unsigned long)(uintptr_t)o, o->name ? o->name : "");
            if (remove) unselect_object(o);
            else {
                if (!add) clear_selection();
                select_object(o);
            }
        } else {
            if (!add && !remove) clear_selection();
            select_surface((Surface *)nearest);
        }
        redraw_all();
    } else if (!hit_list) {
        clear_selection();
        redraw_all();
    } else if (!vertex_mode) {
        if (!add && !remove) clear_selection();
        if (remove) unselect_objectlist(hit_list);
        else select_objectlist(hit_list);
        redraw_all();
    } else {
        console_printf("HITLIST != NULL - vertex mode\n");
    }
    display_status();
    list_free(&hit_list);
}

static void select_in_view(int view, int x, int y, int width, int height, int add, int remove)
{
    int win_w = views[view].width, win_h = views[view].height;
    if (win_w < 1 || win_h < 1) return;
    int hits = pick_hits(view, x, y, width < 1 ? 1 : width, height < 1 ? 1 : height, win_w, win_h);
    process_hits(hits, add, remove, view == 3);
}

void select_3d(int x, int y, int width, int height, int add, int remove)
{
    select_in_view(3, x, y, width, height, add, remove);
}

void select_orth(int x, int y, int width, int height, int view, int add, int remove)
{
    debugf("select_orth %d %d %d %d\n", x, y, width, height);
    select_in_view(view, x, y, width, height, add, remove);
}

/* ---- asking what is under the pointer ---- */

/* The name of the nearest hit (the rules of process_hits), or 0. */
static GLuint nearest_name(int hits)
{
    GLuint nearest = 0, best = 0;
    GLuint *p = select_buffer;
    for (int h = 0; h < hits; h++) {
        GLuint n = *p++, z1 = *p++;
        p++;
        for (GLuint i = 0; i < n; i++, p++) {
            if (!record_of(*p)) continue;
            if (h == 0 || z1 <= best) {
                best = z1;
                nearest = *p;
            }
        }
    }
    return nearest;
}

/* The vertex of the surface nearest the centre of the pick region, among
 * those inside it: through the pick matrix the region is the square from
 * -1 to 1. */
static int vertex_under(Object *o, const Surface *s)
{
    const GLfloat *m = clip_matrix;
    const Vertex *best = nullptr;
    float best_d = 0;
    for (List *r = s->vertrefs; r; r = r->next) {
        const Vertex *v = ((SVertex *)r->item)->vertex;
        float c[4];
        for (int i = 0; i < 4; i++) c[i] = m[i] * v->point[0] + m[4 + i] * v->point[1] + m[8 + i] * v->point[2] + m[12 + i];
        if (c[3] <= 0) continue;
        float x = c[0] / c[3], y = c[1] / c[3];
        if (x < -1 || x > 1 || y < -1 || y > 1) continue;
        float d = x * x + y * y;
        if (!best || d < best_d) best = v, best_d = d;
    }
    if (!best) return -1;
    int i = 0;
    for (List *v = o->vertices; v; v = v->next, i++) {
        if (v->item == best) return i;
    }
    return -1;
}

int query_3d(int x, int y, int width, int height, PickHit *hit)
{
    *hit = PickHit();
    int win_w = views[3].width, win_h = views[3].height;
    if (win_w < 1 || win_h < 1) return 0;
    naming_surfaces = 1;
    int hits = pick_hits(3, x, y, width < 1 ? 1 : width, height < 1 ? 1 : height, win_w, win_h);
    naming_surfaces = 0;
    GLuint name = nearest_name(hits);
    if (!name) return 0;
    Object *o = pick_owners[name - 1];
    Surface *s = (Surface *)pick_names[name - 1];
    hit->object = o;
    hit->surface = s;
    unsigned int at = list_index(o->surfaces, s);
    hit->surface_index = at == LIST_NOT_FOUND ? -1 : (int)at;
    hit->vertex_index = vertex_under(o, s);
    return 1;
}
