/*
 * app/togl_bind.h - binding the scripts' Togl widgets to the core's views.
 */
#ifndef VESK_APP_TOGL_BIND_H
#define VESK_APP_TOGL_BIND_H

#include <tcl.h>
#include <tk.h>

/* View number of the drawing window under the pointer, -1 for none. */
extern int pointer_window;

/* Registers vesk_togl_create, vesk_togl_reshape and vesk_togl_display,
 * which the scripts name as the widgets' callbacks. */
void register_togl_callbacks(Tcl_Interp *interp);
void bind_key_handler(Tk_Window window);
/* Binds one view's widget; returns 0 when it has no Togl widget. */
int make_tcl_window(Tcl_Interp *interp, int view);
/* Binds all four views and installs the front-end hooks. */
int create_ui(Tcl_Interp *interp);
void init_3d_view_gl(void);

#endif
