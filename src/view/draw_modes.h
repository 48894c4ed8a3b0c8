/*
 * view/draw_modes.h - what a press in an orthographic view does: the draw
 * modes the tool panel chooses (the numbers of the "set_draw_mode"
 * command), zoom, and the drag modes of a selection; and the handles of
 * the selection box.  The interface's tool list comes from here too: the
 * core publishes the modes and their labels as the Tcl list
 * ::vesk_draw_modes.
 */
#ifndef VESK_VIEW_DRAW_MODES_H
#define VESK_VIEW_DRAW_MODES_H

enum DrawMode {
    DRAW_SELECT = 0,
    DRAW_LINE = 1,
    DRAW_CLOSED_LINE = 2,
    DRAW_POLYGON = 3,
    DRAW_RECTANGLE = 4,
    DRAW_ELLIPSE = 5,
    DRAW_DISK = 6,
    DRAW_BOX = 7,
    DRAW_SPHERE = 8,
    DRAW_CYLINDER = 9,
    DRAW_MESH = 10,
    DRAW_GRID = 11,
    DRAW_ICOSAHEDRON = 12,
    DRAW_LIGHT = 13,
    DRAW_MODE_COUNT = 14,
};

/* Modes that are not draw tools: zooming to a dragged rectangle, and the
 * drags of a selection (the drag submodes). */
enum { MODE_ZOOM = 50 };
enum { MODE_MOVE = 100, MODE_RESIZE = 101, MODE_ROTATE = 102, MODE_EXTRUDE = 103 };

/* A selection-box handle is the sum of the edges it lies on; HANDLE_SIDE
 * marks the handle in the middle of an edge rather than at a corner. */
enum { HANDLE_TOP = 1, HANDLE_BOTTOM = 2, HANDLE_LEFT = 4, HANDLE_RIGHT = 8, HANDLE_SIDE = 16 };

/* The core's name of a draw mode ("closed line"), "zoom" for zooming,
 * "select" for anything else. */
const char *draw_mode_name(int mode);

/* Line, closed line and polygon: points added click by click. */
static inline int draw_mode_adds_points(int mode) { return mode >= DRAW_LINE && mode <= DRAW_POLYGON; }
/* The shapes dragged out in one gesture, rectangle to icosahedron. */
static inline int draw_mode_drags_shape(int mode) { return mode >= DRAW_RECTANGLE && mode <= DRAW_ICOSAHEDRON; }
/* Every draw tool (not Select). */
static inline int draw_mode_is_tool(int mode) { return mode >= DRAW_LINE && mode <= DRAW_LIGHT; }

/* Sets ::vesk_draw_modes to {number label ...} in mode order, the labels
 * the names with a capital first letter. */
void publish_draw_modes(void);

#endif
