/*
 * app/model_commands.cpp - commands that let scripts read and name parts
 * of the model.  Objects are named by handles (see core/handles.cpp);
 * an unknown or stale handle gives a console message and an empty result.
 *
 * Result texts (all proper Tcl lists):
 *   get_world, object_get_children   object handles
 *   object_get_vertices              {x y z} per vertex, in list order
 *   object_get_surfaces              {kind mat shading twosided {i u v} ...}
 *                                    per surface, i indexing the vertices
 *   object_get_centre                x y z
 *   get_info                         a dictionary of model counts
 * Numbers are printed with nine significant digits, which reproduces
 * every float exactly.
 */
#include "app/commands.h"
#include "app/linked_vars.h"
#include "app/shared_state.h"
#include "edit/selection.h"
#include "view/redraw.h"

#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

Object *object_from_script_id(int id)
{
    Object *o = object_from_handle((uint32_t)id);
    if (!o) console_printf("%s: no object with id %u\n", command_running_name, (unsigned)id);
    return o;
}

int tcl_get_world(void)
{
    command_result_appendf("%u", object_handle(world));
    return 1;
}

int tcl_object_get_children(int id)
{
    Object *o = object_from_script_id(id);
    if (!o) return 0;
    const char *sep = "";
    for (List *k = o->kids; k; k = k->next, sep = " ") {
        command_result_appendf("%s%u", sep, object_handle((Object *)k->item));
    }
    return 1;
}

int tcl_object_get_name(int id)
{
    Object *o = object_from_script_id(id);
    if (o) command_result_set(o->name ? o->name : "");
    return o != nullptr;
}

int command_object_get_vertices(int id)
{
    Object *o = object_from_script_id(id);
    if (!o) return 0;
    const char *sep = "";
    for (List *v = o->vertices; v; v = v->next, sep = " ") {
        const float *p = ((Vertex *)v->item)->point;
        command_result_appendf("%s{%.9g %.9g %.9g}", sep, p[0], p[1], p[2]);
    }
    return 1;
}

int command_object_get_surfaces(int id)
{
    Object *o = object_from_script_id(id);
    if (!o) return 0;
    uint32_t n = 0;
    for (List *v = o->vertices; v; v = v->next) ((Vertex *)v->item)->mark = n++;
    const char *sep = "";
    for (List *s = o->surfaces; s; s = s->next, sep = " ") {
        Surface *sf = (Surface *)s->item;
        command_result_appendf("%s{%d %d %d %d", sep, sf->surface_kind, sf->mat, sf->shading,
                               sf->twosided);
        for (List *r = sf->vertrefs; r; r = r->next) {
            SVertex *ref = (SVertex *)r->item;
            command_result_appendf(" {%u %.9g %.9g}", ref->vertex->mark, ref->u, ref->v);
        }
        command_result_append_string("}");
    }
    return 1;
}

int command_object_get_centre(int id)
{
    Object *o = object_from_script_id(id);
    if (o) command_result_appendf("%.9g %.9g %.9g", o->centre[0], o->centre[1], o->centre[2]);
    return o != nullptr;
}

int command_object_get_url(int id)
{
    Object *o = object_from_script_id(id);
    if (o) command_result_set(o->url ? o->url : "");
    return o != nullptr;
}

int command_object_get_data(int id)
{
    Object *o = object_from_script_id(id);
    if (o) command_result_set(o->data ? o->data : "");
    return o != nullptr;
}

int command_object_is_hidden(int id)
{
    Object *o = object_from_script_id(id);
    if (o) command_result_append_int(o->visible ? 0 : 1);
    return o != nullptr;
}

static int set_object_visibility(int id, int visible)
{
    Object *o = object_from_script_id(id);
    if (!o) return 0;
    object_set_visible(o, visible);
    ui_update_linked_var(&objects_are_hidden);
    unsaved_changes = 1;
    redraw_all();
    return 1;
}

int command_object_hide(int id) { return set_object_visibility(id, 0); }
int command_object_unhide(int id) { return set_object_visibility(id, 1); }

static int set_current_string(void (*set)(Object *, const char *), const char *text)
{
    Object *o = get_current_object();
    if (!o) return 0;
    set(o, text);
    unsaved_changes = 1;
    return 1;
}

int set_current_object_name(char *text) { return set_current_string(object_set_name, text); }
int set_current_object_url(char *text) { return set_current_string(object_set_url, text); }
int set_current_object_data(char *text) { return set_current_string(object_set_userdata, text); }

struct ModelCounts {
    int objects, surfaces, vertices;
};

static void count_model(Object *o, ModelCounts *c)
{
    c->objects++;
    c->surfaces += (int)o->num_surf;
    c->vertices += (int)o->num_vert;
    for (List *k = o->kids; k; k = k->next) count_model((Object *)k->item, c);
}

int command_get_info(void)
{
    ModelCounts c = {0, 0, 0};
    for (List *k = world ? world->kids : nullptr; k; k = k->next) count_model((Object *)k->item, &c);
    command_result_appendf("objects %d surfaces %d vertices %d selected_objects %d "
                           "selected_vertices %d select_mode %d palette %d",
                           c.objects, c.surfaces, c.vertices, selection.num_selected_objects,
                           selection.num_selected_vertices, selection.select_mode, num_palette);
    display_message("objects: %d  surfaces: %d  vertices: %d", c.objects, c.surfaces, c.vertices);
    return 1;
}

int command_new_palette_entry(int index)
{
    /* The command answers the new palette size. */
    command_result_append_int(new_palette_entry(index));
    return 1;
}

int command_set_palette_entry(int index, float r, float g, float b, float ar, float ag, float ab,
                              float er, float eg, float eb, float sr, float sg, float sb,
                              float shininess, float transparency)
{
    int ok = set_palette_entry(index, r, g, b, ar, ag, ab, er, eg, eb, sr, sg, sb, shininess,
                               transparency);
    /* Surfaces of that colour must be drawn again. */
    if (ok) redraw_all();
    return ok;
}

int system_execute(char *command)
{
    console_printf("executing '%s'\n", command);
    /* Run in the background through the shell, detached twice so that
     * no zombie is left and the interface never waits for it. */
    pid_t child = fork();
    if (child < 0) {
        display_message("can't run the command: out of processes");
        return 0;
    }
    if (child == 0) {
        setsid();
        if (fork() == 0) {
            execl("/bin/sh", "sh", "-c", command, (char *)nullptr);
            _exit(127);
        }
        _exit(0);
    }
    int status;
    waitpid(child, &status, 0);
    return 1;
}
