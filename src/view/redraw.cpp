/*
 * view/redraw.cpp - redraw requests (see redraw.h).
 */
#include "view/redraw.h"
#include "app/frontend.h"

unsigned long model_generation = 1;

void request_redisplay(int view)
{
    if (view < 0 || view > 3) return;
    if (frontend.request_redisplay) frontend.request_redisplay(view);
}

int redraw_orth(void)
{
    model_generation++;
    for (int view = 0; view < 3; view++) request_redisplay(view);
    return 1;
}

int redraw_3d(void)
{
    model_generation++;
    request_redisplay(3);
    return 1;
}

int redraw_all(void)
{
    redraw_orth();
    redraw_3d();
    return 1;
}

void redisplay_orth(void)
{
    for (int view = 0; view < 3; view++) request_redisplay(view);
}

void redisplay_all(void)
{
    for (int view = 0; view < 4; view++) request_redisplay(view);
}
