/*
 * app/frontend.h - what the core asks of the front end it runs in.  The
 * headless shell leaves the hooks unset; the graphical modeller installs
 * them when its windows exist.
 */
#ifndef VESK_APP_FRONTEND_H
#define VESK_APP_FRONTEND_H

struct FrontEnd {
    /* Stores x, y, width, height of a view (0-3) or of the main window (4)
     * in rect; returns 0 when there is no such window. */
    int (*window_geometry)(int view, int rect[4]);
    /* Asks for a redisplay of a view (0-3). */
    void (*request_redisplay)(int view);
    /* 1 when Tk is running and message boxes can be shown. */
    int has_tk;
};

extern FrontEnd frontend;

int frontend_window_geometry(int view, int rect[4]);

#endif
