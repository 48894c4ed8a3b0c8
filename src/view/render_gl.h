/*
 * view/render_gl.h - OpenGL drawing of the views: the object walk shared
 * by the orthographic views and the 3D view, the 3D frame, the
 * orthographic frame, and the per-view GL state they keep.
 */
#ifndef VESK_VIEW_RENDER_GL_H
#define VESK_VIEW_RENDER_GL_H

#include "vesk.h"
#include "app/frontend.h"

#include <GL/gl.h>

struct RenderState {
    GLenum render_mode;       /* GL_RENDER, or GL_SELECT while picking */
    int orth_drawing;         /* 1 while an orthographic view is drawn */
    int cached_material;      /* palette index last given to glMaterial */
    int light_count;
    int use_display_lists_for_textures;
    int texture_object_extension;
    int lighting_enabled;
    float texture_repeat[2];
};

extern RenderState render_state;

/* The region of a pick: centre and size in GL window coordinates, and the
 * viewport; applied with gluPickMatrix while render_mode is GL_SELECT. */
struct PickParams {
    double x, y, width, height;
    GLint viewport[4];
};

extern PickParams pick_params;
/* Multiplies the pick matrix into the projection when picking. */
void apply_pick_matrix(void);

/* Colour table of the orthographic views (indices into colour prefs). */
void set_col(int index);
/* Draws object and its descendants for one view (0-3). */
void draw_object_tree(Object *object, int selected, int view);
/* Draws the whole model for a view: from the view's buffers when they
 * can express it, else surface by surface. */
void draw_model(int view);
int draw_model_batched(int view);
void set_material_cached(int index);
void draw_surface_direct_3d(const Surface *s);
void draw_object_direct(Object *o, int selected, int view);
void draw_object_centre(Object *o, int selected, int view);
void draw_surface_outline(const Surface *s);
/* Sets up an orthographic view's projections (pixel or model). */
void orth_model_projection(int view, int width, int height);

/* Picking (picking_gl.cpp): select what is under a window region of a
 * view; the 3D view takes the nearest hit, the orthographic views every
 * hit. */
void select_3d(int x, int y, int width, int height, int add, int remove);
void select_orth(int x, int y, int width, int height, int view, int add, int remove);
/* What the nearest hit under a region of the 3D view is (object, surface,
 * vertex), leaving the selection alone; 0 when nothing is there. */
int query_3d(int x, int y, int width, int height, PickHit *hit);

void init_3d_gl(int width, int height);
void setup_projection_3d(int width, int height);
void redraw_3d_real(int width, int height, int double_buffered);
void render_clear_lights(void);
/* The 3D view's camera transform (and lights unless picking). */
void camera_transform(int picking);
void render_lights_off(void);

void redraw_orth_real(int view, int width, int height, int double_buffered);
/* XOR drawing of rubber bands in the current orthographic view. */
void xor_mode(int on);
void xor_line(int x1, int y1, int x2, int y2);
void xor_rect(int x, int y, int w, int h);
void xor_ellipse(int x, int y, int w, int h);
void draw_line(int x1, int y1, int x2, int y2);
void draw_rect(int x, int y, int w, int h);
void fill_rect(int x, int y, int w, int h);

/* The drawing code leaves out polygons of more corners than this, as the
 * renderer always has. */
enum { POLYGON_MAX_CORNERS = 255 };

/* 1 when the surface is a polygon the views do not draw; says so on the
 * console when quietly is 0. */
static inline int polygon_too_many_corners(const Surface *s, int quietly)
{
    if (s->surface_kind != SURFACE_POLYGON || s->num_vertrefs <= POLYGON_MAX_CORNERS) return 0;
    if (!quietly) console_printf("surface vertices exceed %d\n", POLYGON_MAX_CORNERS);
    return 1;
}

#endif
