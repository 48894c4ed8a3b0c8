/*
 * app/frontend.h - what the core asks of the front end it runs in.  The
 * headless shell leaves the hooks unset; the graphical modeller installs
 * them when its windows exist.
 */
#ifndef VESK_APP_FRONTEND_H
#define VESK_APP_FRONTEND_H

/* What lies under a point of the 3D view (see pick_query). */
struct PickHit {
    struct Object *object = nullptr;
    struct Surface *surface = nullptr;
    int surface_index = -1;   /* in the object's surface list */
    int vertex_index = -1;    /* of the surface's vertex nearest the point, in the object's list; -1 none */
};

struct FrontEnd {
    /* Stores x, y, width, height of a view (0-3) or of the main window (4)
     * in rect; returns 0 when there is no such window. */
    int (*window_geometry)(int view, int rect[4]);
    /* Asks for a redisplay of a view (0-3). */
    void (*request_redisplay)(int view);
    /* Picks in a view at window pixel (x, y) with a region of width x
     * height pixels, selecting what is hit (add/remove as Shift says). */
    void (*pick)(int view, int x, int y, int width, int height, int add, int remove);
    /* Sets the cursor of a view's window (a Tk cursor name, "" default). */
    void (*set_cursor)(int view, const char *cursor);
    /* 1 when Tk is running and message boxes can be shown. */
    int has_tk;
    /* Fills hit with the nearest thing under a region of view 3 without
     * changing the selection; 0 when nothing is there. */
    int (*pick_query)(int x, int y, int width, int height, PickHit *hit);
};

extern FrontEnd frontend;

int frontend_window_geometry(int view, int rect[4]);
void frontend_pick(int view, int x, int y, int width, int height, int add, int remove);
void frontend_set_cursor(int view, const char *cursor);
/* frontend.pick_query when there is one, else 0 (headless: nothing is
 * ever under the pointer). */
int frontend_pick_query(int x, int y, int width, int height, PickHit *hit);

#endif
