/*
 * edit/selection_mode.cpp - changing the select mode.  The selection made
 * in the old mode is turned into a list of objects that the new mode's
 * rule selects again, so that the user keeps what they had:
 *
 *   object -> vertex   the selected objects (all their vertices)
 *   tree   -> object   each selected tree's objects that hold vertices
 *   tree   -> vertex     and its leaves
 *   object -> tree     the trees of the selected objects, made visible
 *   vertex -> object   the owners of the selected vertices
 *   vertex -> tree     the trees of those owners, made visible
 */
#include "edit/selection_internal.h"
#include "edit/undo.h"

static const char *const select_mode_words[] = {"tree", "object", "vertex"};

void set_new_select_mode_ui(int mode)
{
    if (mode < SELECT_TREE || mode > SELECT_VERTEX) return;
    tcl_command("set_select_mode_ui %s", select_mode_words[mode]);
}

/* The descendants of o that tree mode's objects turn into: a child with
 * children is added itself when it holds vertices and then descended
 * into; a leaf is added whatever it holds.  No uniqueness test. */
static void add_tree_members(Object *o, List **list, List **tail)
{
    for (List *k = o->kids; k; k = k->next) {
        Object *child = (Object *)k->item;
        if (!child->kids) {
            *tail = list_add_item_fast(list, *tail, child);
            continue;
        }
        if (child->vertices) *tail = list_add_item_fast(list, *tail, child);
        add_tree_members(child, list, tail);
    }
}

static List *objects_of_selected_trees(void)
{
    List *list = nullptr, *tail = nullptr;
    for (List *l = selection.selected_objects; l; l = l->next) {
        Object *top = (Object *)l->item;
        if (top->vertices && top != world) tail = list_add_item_fast(&list, tail, top);
        add_tree_members(top, &list, &tail);
    }
    return list;
}

/* The top ancestors of the given objects, each once, each made visible
 * again with everything below it so that tree mode can select it. */
static List *visible_trees_of(List *objects)
{
    List *trees = nullptr;
    ListIndex index;
    for (List *l = objects; l; l = l->next) {
        Object *top = tree_top((Object *)l->item);
        if (top && ilist_add_unique(&trees, &index, top)) object_show(top);
    }
    return trees;
}

static List *objects_to_reselect(int from, int to)
{
    if (from == SELECT_OBJECT && to == SELECT_VERTEX) return list_clone(selection.selected_objects);
    if (from == SELECT_TREE) return objects_of_selected_trees();
    if (from == SELECT_OBJECT) return visible_trees_of(selection.selected_objects);
    List *owners = selected_vertex_owners();
    if (to == SELECT_OBJECT) return owners;
    List *trees = visible_trees_of(owners);
    list_free(&owners);
    return trees;
}

int set_new_select_mode(int mode)
{
    if (mode < SELECT_TREE || mode > SELECT_VERTEX) {
        console_printf("set_select_mode: %d is not a select mode (0 tree, 1 object, 2 vertex)\n", mode);
        return 0;
    }
    if (mode == selection.select_mode) {
        set_new_select_mode_ui(mode);
        return 1;
    }
    List *reselect = objects_to_reselect(selection.select_mode, mode);
    /* The mode change is undoable: the record takes the old selection
     * over, which also leaves the selection empty. */
    new_undo(UNDO_SELECTION, "selection");
    set_undo_selection(selection.selected_vertices, selection.selected_objects, 1);
    clear_selection();
    selection.select_mode = mode;
    select_objectlist(reselect);
    list_free(&reselect);
    set_new_select_mode_ui(mode);
    selection_publish_counts();
    return 1;
}
