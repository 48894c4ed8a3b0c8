/*
 * app/linked_vars.h - the table of Tcl variables linked to core storage.
 */
#ifndef VESK_APP_LINKED_VARS_H
#define VESK_APP_LINKED_VARS_H

#include <tcl.h>

struct LinkedVar {
    const char *name;
    void *address;
    int type;
};

/* Links every variable of the table; returns 0 when Tcl refused one. */
int link_tcl_variables(Tcl_Interp *interp);
void ui_update_linked_var(void *address);
void ui_update_linked_vars(void);

#endif
