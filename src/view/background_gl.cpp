/*
 * view/background_gl.cpp - drawing the background image of an
 * orthographic view, first after clearing: with glDrawPixels, or as a
 * textured quad when use_textures_for_background_images is set.  Both
 * fill the same window rectangle (background.h places it).  Each view has
 * its own GL context, so each keeps its own texture.
 */
#define GL_GLEXT_PROTOTYPES 1
#include "view/background.h"
#include "app/prefs.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glu.h>

struct BackgroundTexture {
    GLuint name;
    unsigned serial;  /* of the image it was built from */
};

static BackgroundTexture textures[3];

static GLenum pixel_format(int depth)
{
    static const GLenum formats[] = {GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RGB, GL_RGBA};
    return formats[depth - 1];
}

/* The view's texture, rebuilt when the image has changed. */
static GLuint view_texture(int view, const BackgroundImage &b)
{
    BackgroundTexture &t = textures[view];
    if (t.name && t.serial == b.serial) return t.name;
    if (t.name) glDeleteTextures(1, &t.name);
    t.name = 0;
    glGenTextures(1, &t.name);
    if (!t.name) return 0;
    t.serial = b.serial;
    glBindTexture(GL_TEXTURE_2D, t.name);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    const vkimage *image = b.image;
    gluBuild2DMipmaps(GL_TEXTURE_2D, image->depth, image->width, image->height, pixel_format(image->depth),
                      GL_UNSIGNED_BYTE, image->data);
    return t.name;
}

static void draw_as_texture(int view, const BackgroundImage &b, const float *r)
{
    GLuint name = view_texture(view, b);
    if (!name) return;
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, name);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
    /* Rows are stored from the bottom up: t = 0 is the bottom edge. */
    glBegin(GL_QUADS);
    glTexCoord2f(0, 1);
    glVertex2f(r[0], r[1]);
    glTexCoord2f(1, 1);
    glVertex2f(r[2], r[1]);
    glTexCoord2f(1, 0);
    glVertex2f(r[2], r[3]);
    glTexCoord2f(0, 0);
    glVertex2f(r[0], r[3]);
    glEnd();
    glDisable(GL_TEXTURE_2D);
}

static void draw_as_pixels(const BackgroundImage &b, const float *r, int height)
{
    const vkimage *image = b.image;
    /* The window position of the bottom-left corner, y up; it may lie
     * outside the window. */
    glWindowPos2f(r[0], (float)height - r[3]);
    glPixelZoom((r[2] - r[0]) / image->width, (r[3] - r[1]) / image->height);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glDrawPixels(image->width, image->height, pixel_format(image->depth), GL_UNSIGNED_BYTE, image->data);
    glPixelZoom(1, 1);
}

void draw_background_image(int view, int width, int height)
{
    float r[4];
    if (!background_window_rect(view, r)) {
        /* A cleared image's texture goes with the next drawing. */
        if (view >= 0 && view <= 2 && textures[view].name) {
            glDeleteTextures(1, &textures[view].name);
            textures[view].name = 0;
        }
        return;
    }
    const BackgroundImage &b = background_images[view];
    if (r[2] < 0 || r[0] > width || r[3] < 0 || r[1] > height) return;
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    gluOrtho2D(0, width, height, 0);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    int alpha = b.image->depth == 2 || b.image->depth == 4;
    if (alpha) {
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    }
    if (prefs.use_textures_for_background_images) draw_as_texture(view, b, r);
    else draw_as_pixels(b, r, height);
    if (alpha) glDisable(GL_BLEND);
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
}
