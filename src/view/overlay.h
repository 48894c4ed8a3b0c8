/*
 * view/overlay.h - the rubber-band shapes of the orthographic views: the
 * selection rectangle, the outline of a box being drawn, the dragged
 * selection box, a measuring line, an ellipse.  The interaction sets them;
 * each redraw of the view draws them inverted (XOR) over the picture.
 */
#ifndef VESK_VIEW_OVERLAY_H
#define VESK_VIEW_OVERLAY_H

enum { OVERLAY_NONE = 0, OVERLAY_RECT = 1, OVERLAY_ELLIPSE = 2 };

struct Overlay {
    int shape;                 /* OVERLAY_NONE, _RECT or _ELLIPSE, window pixels */
    int x0, y0, x1, y1;
    int line;                  /* a measuring line from (lx0, ly0) to (lx1, ly1) */
    int lx0, ly0, lx1, ly1;
    int box;                   /* the dragged selection box, model coordinates */
    float box_min[3], box_max[3];
    float box_angle;           /* rotation of the box outline, degrees, about box_centre */
    float box_centre[3];
};

extern Overlay overlays[3];

void overlay_clear(int view);
void overlay_clear_all(void);

#endif
