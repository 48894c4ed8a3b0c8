/*
 * view/interaction.h - mouse and key events of the views, routed by view
 * number (0-2 orthographic, 3 the 3D view, -1 no view), and the current
 * draw mode and drag submode.
 */
#ifndef VESK_VIEW_INTERACTION_H
#define VESK_VIEW_INTERACTION_H

/* Modifier bits of the core's event state. */
enum { QUALIFIER_SHIFT = 1, QUALIFIER_CONTROL = 4, QUALIFIER_ALT = 16 };
/* Key codes of the special keys. */
enum { KEY_LEFT = 37, KEY_UP = 38, KEY_RIGHT = 39, KEY_DOWN = 40, KEY_BACKSPACE = 8, KEY_DELETE = 127,
       KEY_ESCAPE = 27 };

extern int interaction_mode;   /* 0 select, 1..13 draw modes, 50 zoom, 100.. drags */
extern int move_submode;       /* 100 move, 101 resize, 102 rotate, 103 extrude */
/* 1: a draw tool stays chosen after each shape instead of going back to
 * Select (linked as keep_draw_tool). */
extern int keep_draw_tool;

/* Escape in a view: drops the line or polygon being drawn (nothing of it
 * stays, no undo record), else leaves a draw tool for Select.  Returns 1
 * when it did either. */
int cancel_drawing(void);

int set_new_draw_mode(int mode);
int set_new_move_mode(int submode);
void win_set_handle_cursor(int view, int handle);
void resize_bounding_box(const float *p, int view, int control, int handle);
void set_av_depth_box(int view, const float *a, const float *b, float *min_depth, float *max_depth);

void handle_mouse_down(int view, int x, int y, int button, int state);
void handle_mouse_move(int view, int x, int y);
void handle_mouse_up(int view, int x, int y, int button);
void handle_key_press(int view, int character, int state);
void handle_special_key_press(int view, int keycode, int state);

/* The 3D view (camera_input.cpp). */
void handle_mouse_down_3d(int x, int y, int button, int state);
void handle_mouse_move_3d(int x, int y, unsigned long time);
void handle_mouse_up_3d(int x, int y, int button, unsigned long time, int state);
void handle_enter_3d(void);
void handle_leave_3d(void);
int handle_key_press_3d(int character, int state);
int handle_special_key_press_3d(int keycode, int state);

#endif
