/*
 * edit/model_check.cpp - the whole model's invariants: the tree's (see
 * core/check.h) and the selection's, whose lists must name live objects
 * of the tree and vertices of those objects, with counts that match.
 */
#include "edit/model_check.h"
#include "core/check.h"
#include "edit/selection.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <unordered_set>
#include <vector>

namespace {

struct Report {
    char *text;
    size_t size;
    long problems;
};

void add_problem(Report *r, const char *format, ...)
{
    r->problems++;
    if (!r->text || r->size == 0) return;
    size_t used = strlen(r->text);
    if (used + 1 >= r->size) return;
    va_list ap;
    va_start(ap, format);
    vsnprintf(r->text + used, r->size - used, format, ap);
    va_end(ap);
}

void collect_tree(std::unordered_set<const Object *> *objects, std::unordered_set<const Vertex *> *vertices)
{
    std::vector<Object *> pending(1, world);
    while (!pending.empty()) {
        Object *o = pending.back();
        pending.pop_back();
        if (!objects->insert(o).second) continue;
        for (List *v = o->vertices; v; v = v->next) vertices->insert((const Vertex *)v->item);
        for (List *k = o->kids; k; k = k->next) pending.push_back((Object *)k->item);
    }
}

void check_object_list(Report *r, List *list, int count, const char *what,
                       const std::unordered_set<const Object *> &tree)
{
    long n = 0;
    for (List *l = list; l; l = l->next, n++) {
        if (!tree.count((const Object *)l->item)) add_problem(r, "the %s list names an object not in the model\n", what);
    }
    if (n != count) add_problem(r, "the %s list holds %ld objects but counts %d\n", what, n, count);
}

} // namespace

long model_check(char *report, size_t size)
{
    long problems = object_check_tree(world, report, size);
    Report r = {report, size, 0};
    std::unordered_set<const Object *> objects;
    std::unordered_set<const Vertex *> vertices;
    collect_tree(&objects, &vertices);
    check_object_list(&r, selection.selected_objects, selection.num_selected_objects, "selected objects", objects);
    check_object_list(&r, selection.part_selected_objects, selection.num_part_selected_objects,
                      "part-selected objects", objects);
    long n = 0;
    for (List *l = selection.selected_vertices; l; l = l->next, n++) {
        if (!vertices.count((const Vertex *)l->item)) add_problem(&r, "a selected vertex is not in the model\n");
    }
    if (n != selection.num_selected_vertices)
        add_problem(&r, "the selected vertices list holds %ld but counts %d\n", n, selection.num_selected_vertices);
    if (selection.current_object && !objects.count(selection.current_object))
        add_problem(&r, "the current object is not in the model\n");
    return problems + r.problems;
}
