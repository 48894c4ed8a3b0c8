/*
 * view/redraw.cpp - redraw requests (see redraw.h).
 */
#include "view/redraw.h"
#include "app/frontend.h"

void request_redisplay(int view)
{
    if (view < 0 || view > 3) return;
    if (frontend.request_redisplay) frontend.request_redisplay(view);
}

int redraw_orth(void)
{
    for (int view = 0; view < 3; view++) request_redisplay(view);
    return 1;
}

int redraw_3d(void)
{
    request_redisplay(3);
    return 1;
}

int redraw_all(void)
{
    redraw_orth();
    redraw_3d();
    return 1;
}

int fit_selected_all(void)
{
    /* The views fit themselves when they exist; headless, only redraw. */
    redraw_all();
    return 1;
}
