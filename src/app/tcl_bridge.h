/*
 * app/tcl_bridge.h - the scripting bridge: the one interpreter, the `vesk`
 * Tcl command, and the calls by which the core sends messages, status and
 * read-outs to the scripts.
 */
#ifndef VESK_APP_TCL_BRIDGE_H
#define VESK_APP_TCL_BRIDGE_H

#include <tcl.h>

#include "vesk.h"

extern Tcl_Interp *tcl_interp;

void tcl_trace_error(const char *where);
/* Like windows_message_dialog, with the information icon instead of the
 * error icon: for messages that report success. */
int windows_info_dialog(const char *format, ...) VK_PRINTF(1, 2);
const char *tcl_eval_file(const char *path);
void popup_3d_menu(int x, int y);
void tcl_update(void);
void handle_tcl_events(void);
void display_coor_data(const char *coors, const char *size);
void show_coors(const float *p);
void show_coors_and_point(const float *p, const float *q);
void show_coors_and_dim(const float *p, const float *a, const float *b);
void show_size(const float *a, const float *b);
void show_coors_and_len(const float *p, const float *a, const float *b);
void show_coors_and_bb(const float *p, const float *r);
void show_angle(float degrees);

/* Registers the `vesk` command in interp. */
void create_vesk_command(Tcl_Interp *interp);

/* Runs the core's start-up after the interpreter exists: the `vesk`
 * command, the linked variables.  Returns 0 on failure. */
int vesk_bind_interpreter(Tcl_Interp *interp);

#endif
