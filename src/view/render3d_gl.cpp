/*
 * view/render3d_gl.cpp - the perspective 3D view: projection from fov_3d,
 * OpenGL initialisation, the frame (camera, headlight and model lights,
 * the model, selected vertices, selection box, axes, grid).
 */
#include "view/render_gl.h"
#include "app/prefs.h"
#include "app/shared_state.h"
#include "core/internal.h"
#include "core/lights.h"
#include "edit/selection.h"
#include "view/camera.h"
#include "view/picture_cache_gl.h"
#include "view/redraw.h"

#include <GL/glu.h>

#include <cstring>
#include <ctime>

enum { MAX_MODEL_LIGHTS = 7 };

void setup_projection_3d(int width, int height)
{
    if (width < 1) width = 1;
    if (height < 1) height = 1;
    glViewport(0, 0, width, height);
    float aspect = (float)width / (float)height;
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    apply_pick_matrix();
    /* fov_3d divided by the aspect, truncated to a tenth of a degree. */
    double fovy = (double)(long)((float)prefs.fov_3d / aspect * 10.0f) * 0.1;
    gluPerspective(fovy, aspect, 0.1, 1000.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

static int has_extension(const char *extensions, const char *name)
{
    if (!extensions) return 0;
    size_t n = strlen(name);
    for (const char *p = extensions; *p;) {
        while (*p == ' ') p++;
        const char *end = strchr(p, ' ');
        size_t len = end ? (size_t)(end - p) : strlen(p);
        if (len == n && strncmp(p, name, n) == 0) return 1;
        p += len;
    }
    return 0;
}

void init_3d_gl(int width, int height)
{
    setup_projection_3d(width, height);
    glEnable(GL_DEPTH_TEST);
    glDisable(GL_COLOR_MATERIAL);
    glEnable(GL_NORMALIZE);
    glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_BLEND);
    render_state.texture_object_extension =
        has_extension((const char *)glGetString(GL_EXTENSIONS), "GL_EXT_texture_object");
    const char *version = (const char *)glGetString(GL_VERSION);
    const char *vendor = (const char *)glGetString(GL_VENDOR);
    render_state.use_display_lists_for_textures = version && strncmp(version, "1.0", 3) == 0;
    console_printf("OpenGL %s %s\n", version ? version : "?", vendor ? vendor : "?");
}

void render_clear_lights(void)
{
    for (int i = 0; i < 8; i++) glDisable(GL_LIGHT0 + i);
}

void render_lights_off(void)
{
    console_printf("render lights off\n");
}

static void headlight(void)
{
    if (!render_state.lighting_enabled) return;
    if (!prefs.headlighton) {
        glDisable(GL_LIGHT0);
        return;
    }
    const Person *p = get_person();
    float pos[4] = {p->location[0], p->location[1], p->location[2], 1.0f};
    glLightfv(GL_LIGHT0, GL_POSITION, pos);
    glEnable(GL_LIGHT0);
}

static void model_lights(void)
{
    if (!render_state.lighting_enabled) return;
    for (List *l = vk_get_lights_list(); l; l = l->next) {
        Light *light = (Light *)l->item;
        if (!light->object.visible) continue;
        if (render_state.light_count >= MAX_MODEL_LIGHTS) {
            console_printf("VESK renderer: too many lights (%d)\n", render_state.light_count);
            continue;
        }
        GLenum id = GL_LIGHT1 + render_state.light_count;
        glLightfv(id, GL_DIFFUSE, light->diffuse);
        glLightfv(id, GL_SPECULAR, light->specular);
        const float *c = light->object.centre;
        float at[4] = {c[0], c[1], c[2], 1.0f};
        switch (light->light_type) {
        case LIGHT_INFINITE: {
            /* direction followed by spot_exponent: the exponent is the w. */
            float pos[4] = {light->direction[0], light->direction[1], light->direction[2],
                            light->spot_exponent};
            glLightfv(id, GL_POSITION, pos);
            break;
        }
        case LIGHT_POINT:
            glLightfv(id, GL_POSITION, at);
            break;
        case LIGHT_SPOT:
            glLightfv(id, GL_POSITION, at);
            glLightfv(id, GL_SPOT_DIRECTION, light->direction);
            glLightf(id, GL_SPOT_EXPONENT, light->spot_exponent);
            glLightf(id, GL_SPOT_CUTOFF, light->spot_cutoff);
            break;
        default:
            console_printf("WARNING - unknown light type %d for light %d object %lx\n",
                           light->light_type, render_state.light_count,
                           (unsigned long)(uintptr_t)light);
            break;
        }
        glEnable(id);
        render_state.light_count++;
    }
}

void camera_transform(int picking)
{
    const Person *p = get_person();
    float s = p->scale;
    if (p->walk) {
        render_clear_lights();
        glScalef(s, s, s);
        glRotatef(p->pitch, 1, 0, 0);
        glRotatef(p->yaw, 0, 1, 0);
        glRotatef(p->roll, 0, 0, 1);
        glTranslated(-p->location[0], -p->location[1], -p->location[2]);
        if (!picking) {
            model_lights();
            headlight();
        }
        return;
    }
    if (!picking) {
        render_clear_lights();
        headlight();
    }
    glTranslated(-p->location[0], -p->location[1], -p->location[2]);
    glScalef(s, s, s);
    glRotatef(p->rotation[0], 1, 0, 0);
    glRotatef(p->rotation[1], 0, 1, 0);
    glTranslated(-p->offset[0], -p->offset[1], -p->offset[2]);
    if (!picking) model_lights();
}

static void draw_selected_vertices_3d(void)
{
    if (selection.num_selected_vertices <= 0) return;
    if (!prefs.show_vertices_3d && !prefs.show_selected_vertices_3d) return;
    glDepthFunc(GL_LEQUAL);
    glDisable(GL_LIGHTING);
    set_col(5);
    glPointSize((float)prefs.vert_size);
    glBegin(GL_POINTS);
    for (List *v = selection.selected_vertices; v; v = v->next) glVertex3fv(((Vertex *)v->item)->point);
    glEnd();
    glDepthFunc(GL_LESS);
}

static void draw_selection_box_3d(void)
{
    if (!selection.selection_has_extent) return;
    glDisable(GL_LIGHTING);
    glColor3ub(0, 255, 0);
    const float *a = selection.box_min, *b = selection.box_max;
    float c[8][3];
    for (int i = 0; i < 8; i++) {
        c[i][0] = (i & 1) ? b[0] : a[0];
        c[i][1] = (i & 2) ? b[1] : a[1];
        c[i][2] = (i & 4) ? b[2] : a[2];
    }
    static const int edges[12][2] = {{0, 1}, {2, 3}, {4, 5}, {6, 7}, {0, 2}, {1, 3},
                                     {4, 6}, {5, 7}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};
    glBegin(GL_LINES);
    for (const auto &e : edges) {
        glVertex3fv(c[e[0]]);
        glVertex3fv(c[e[1]]);
    }
    glEnd();
    glEnable(GL_LIGHTING);
}

static void line(float x1, float y1, float z1, float x2, float y2, float z2)
{
    glVertex3f(x1, y1, z1);
    glVertex3f(x2, y2, z2);
}

static void draw_axes(void)
{
    glDisable(GL_LIGHTING);
    glColor3f(1.0f, 0.3f, 0.3f);
    glBegin(GL_LINES);
    line(0, 0, 0, 1, 0, 0);
    line(1, 0.2f, 0, 1.2f, -0.2f, 0);
    line(1, -0.2f, 0, 1.2f, 0.2f, 0);
    line(0, 0, 0, 0, 1, 0);
    line(0, 1.01f, 0, 0, 1.2f, 0);
    line(0.2f, 1.4f, 0, 0, 1.2f, 0);
    line(-0.2f, 1.4f, 0, 0, 1.2f, 0);
    line(0, 0, 0, 0, 0, 1);
    line(0, 0.2f, 1.4f, 0, 0.2f, 1);
    line(0, -0.2f, 1, 0, 0.2f, 1.4f);
    line(0, -0.2f, 1.4f, 0, -0.2f, 1);
    glEnd();
    glEnable(GL_LIGHTING);
}

static void draw_grid_3d(void)
{
    glDisable(GL_LIGHTING);
    set_col(9);
    float h = (float)prefs.grid3d_size * 0.5f;
    float q = (float)prefs.grid3d_square;
    /* Positions are t*q while the lines are +-h long: the grid's
     * established scaling. */
    if (q > 0.0f && h / q < 100000.0f) {
        for (float t = -h; t <= h; t += q) {
            glBegin(GL_LINE_STRIP);
            glVertex3f(-h, 0, t * q);
            glVertex3f(h, 0, t * q);
            glEnd();
            glBegin(GL_LINE_STRIP);
            glVertex3f(t * q, 0, -h);
            glVertex3f(t * q, 0, h);
            glEnd();
        }
    }
    glEnable(GL_LIGHTING);
}

static void redraw_3d_all(int double_buffered)
{
    int picking = render_state.render_mode == GL_SELECT;
    render_state.cached_material = -1;
    render_state.orth_drawing = 0;
    render_state.light_count = 0;
    if (!picking) {
        float bg[3];
        long_rgb_to_floats(prefs.col_3dbackground, &bg[0], &bg[1], &bg[2]);
        glClearColor(bg[0], bg[1], bg[2], 0.0f);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        float s = get_person()->scale;
        float light0[4] = {(float)prefs.lightx * s, (float)prefs.lighty * s, (float)prefs.lightz * s,
                           (float)prefs.lightw};
        glLightfv(GL_LIGHT0, GL_POSITION, light0);
    }
    camera_transform(picking);
    clock_t start = debug_flag ? clock() : 0;
    draw_model(3);
    if (debug_flag) console_printf("3D time %d\n", (int)((clock() - start) * 1000 / CLOCKS_PER_SEC));
    if (picking) return;
    draw_selected_vertices_3d();
    draw_selection_box_3d();
    if (prefs.show_3d_axis) draw_axes();
    if (prefs.grid3d_show) draw_grid_3d();
    if (!double_buffered) glFlush();
}

/* ---- the picture cache ----
 *
 * A frame of the 3D view is drawn from the model, the camera, the settings,
 * the selection and the window size alone.  Redraws where none of these
 * changed (the window uncovered by a menu or a dialog, a redraw of all
 * views after a change to the orthographic views only) put the last
 * frame's pixels back instead of drawing the model again. */

static PictureCache picture_3d;

/* Everything of the selection the frame may show: the box, which objects
 * are selected and, when their markers are drawn, the selected vertices. */
static unsigned long mix_selection(unsigned long h)
{
    const int counts[] = {selection.selection_has_extent, selection.select_mode, selection.num_selected_vertices,
                          selection.num_selected_objects};
    h = picture_key_mix(h, counts, sizeof counts);
    h = picture_key_mix(h, selection.box_min, sizeof selection.box_min);
    h = picture_key_mix(h, selection.box_max, sizeof selection.box_max);
    for (List *o = selection.selected_objects; o; o = o->next) h = picture_key_mix(h, &o->item, sizeof o->item);
    if (!prefs.show_vertices_3d && !prefs.show_selected_vertices_3d) return h;
    for (List *v = selection.selected_vertices; v; v = v->next) {
        h = picture_key_mix(h, ((Vertex *)v->item)->point, sizeof(float[3]));
    }
    return h;
}

static unsigned long picture_key_3d(int width, int height)
{
    unsigned long h = picture_key_start();
    const int ints[] = {width, height, view_3d_textures, render_state.lighting_enabled};
    h = picture_key_mix(h, ints, sizeof ints);
    h = picture_key_mix(h, &model_generation, sizeof model_generation);
    /* All of the settings and the camera, byte for byte: any change draws
     * the frame afresh. */
    h = picture_key_mix(h, &prefs, sizeof prefs);
    h = picture_key_mix(h, get_person(), sizeof(Person));
    h = picture_key_mix(h, render_state.texture_repeat, sizeof render_state.texture_repeat);
    return mix_selection(h);
}

void redraw_3d_real(int width, int height, int double_buffered)
{
    setup_projection_3d(width, height);
    if (render_state.render_mode != GL_RENDER || width < 1 || height < 1) {
        redraw_3d_all(double_buffered);
        return;
    }
    unsigned long key = picture_key_3d(width, height);
    if (picture_restore(picture_3d, key, width, height)) {
        if (!double_buffered) glFlush();
        return;
    }
    redraw_3d_all(double_buffered);
    picture_store(picture_3d, key, width, height, double_buffered);
}
