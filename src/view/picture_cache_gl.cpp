/*
 * view/picture_cache_gl.cpp - a view's last picture kept in memory (see
 * picture_cache_gl.h).  Pixels go out and back as BGRA bytes with no
 * pixel transfer, so a restored picture is the stored one bit for bit.
 */
#define GL_GLEXT_PROTOTYPES 1
#include "view/picture_cache_gl.h"

#include <GL/gl.h>
#include <GL/glext.h>

unsigned long picture_key_start(void) { return 1469598103934665603UL; }

unsigned long picture_key_mix(unsigned long key, const void *data, size_t n)
{
    const unsigned char *p = (const unsigned char *)data;
    for (size_t i = 0; i < n; i++) key = (key ^ p[i]) * 1099511628211UL;
    return key;
}

int picture_restore(const PictureCache &cache, unsigned long key, int width, int height)
{
    if (!cache.valid || cache.key != key || cache.width != width || cache.height != height) return 0;
    /* Pixels drawn must reach the window unchanged: no depth test,
     * blending or texturing on the way. */
    glPushAttrib(GL_ENABLE_BIT);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_COLOR_LOGIC_OP);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glWindowPos2i(0, 0);
    glDrawPixels(width, height, GL_BGRA, GL_UNSIGNED_BYTE, cache.pixels.data());
    glPopAttrib();
    return 1;
}

void picture_store(PictureCache &cache, unsigned long key, int width, int height, int double_buffered)
{
    cache.pixels.resize((size_t)width * height * 4);
    glReadBuffer(double_buffered ? GL_BACK : GL_FRONT);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_BGRA, GL_UNSIGNED_BYTE, cache.pixels.data());
    cache.key = key;
    cache.width = width;
    cache.height = height;
    cache.valid = 1;
}
