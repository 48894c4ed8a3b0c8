/*
 * view/overlay.cpp - the rubber-band state of the orthographic views (see
 * overlay.h).
 */
#include "view/overlay.h"
#include "view/redraw.h"

#include <cstring>

Overlay overlays[3];

void overlay_clear(int view)
{
    if (view < 0 || view > 2) return;
    memset(&overlays[view], 0, sizeof overlays[view]);
    request_redisplay(view);
}

void overlay_clear_all(void)
{
    for (int v = 0; v < 3; v++) overlay_clear(v);
}
