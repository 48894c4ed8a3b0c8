/*
 * view/picture_cache_gl.h - a view's last picture kept in memory: the
 * pixels of a finished layer of a view, stored under a key that sums up
 * everything the layer was drawn from, and put back instead of drawing
 * the layer again while the key stays the same.
 */
#ifndef VESK_VIEW_PICTURE_CACHE_GL_H
#define VESK_VIEW_PICTURE_CACHE_GL_H

#include <cstddef>
#include <vector>

struct PictureCache {
    unsigned long key;
    int width, height, valid;
    std::vector<unsigned char> pixels;
};

/* Starting value of a key, and a key with the bytes of data mixed in. */
unsigned long picture_key_start(void);
unsigned long picture_key_mix(unsigned long key, const void *data, size_t n);

/* Draws the stored pixels over the whole window when the cache holds a
 * picture of this key and size; returns 0, drawing nothing, otherwise. */
int picture_restore(const PictureCache &cache, unsigned long key, int width, int height);
/* Reads the window's pixels (the back buffer when double buffered) into
 * the cache under key. */
void picture_store(PictureCache &cache, unsigned long key, int width, int height, int double_buffered);

#endif
