/*
 * core/object_check.cpp - the model's invariants checked as a whole (see
 * check.h): used by the shells' vesk_check_tree command, after every
 * command in checking builds, and by the fuzz targets.
 */
#include "core/check.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <unordered_set>
#include <vector>

void vk_assert_failed(const char *file, int line, const char *condition)
{
    fprintf(stderr, "VESK: internal check failed at %s:%d: %s - tell Orlo\n", file, line, condition);
    fflush(stderr);
    abort();
}

namespace {

struct TreeCheck {
    char *report;
    size_t size;
    size_t used;
    long problems;
};

void problem(TreeCheck *c, const char *format, ...)
{
    c->problems++;
    if (!c->report || c->used + 1 >= c->size) return;
    va_list ap;
    va_start(ap, format);
    int n = vsnprintf(c->report + c->used, c->size - c->used, format, ap);
    va_end(ap);
    if (n < 0) return;
    c->used += (size_t)n;
    if (c->used >= c->size) c->used = c->size - 1;
}

const char *name_of(const Object *o)
{
    return o->name ? o->name : "(no name)";
}

/* Length of a list, stopping at limit + 1 so that a cycle in the list
 * itself can't hang the check. */
unsigned long long list_length(List *l, unsigned long long limit)
{
    unsigned long long n = 0;
    for (; l && n <= limit; l = l->next) n++;
    return n;
}

void check_counts(TreeCheck *c, Object *o)
{
    const unsigned long long limit = 1ull << 33;
    if (list_length(o->vertices, limit) != o->num_vert)
        problem(c, "object \"%s\": num_vert %u but %llu vertices\n", name_of(o), o->num_vert,
                list_length(o->vertices, limit));
    if (list_length(o->surfaces, limit) != o->num_surf)
        problem(c, "object \"%s\": num_surf %u but %llu surfaces\n", name_of(o), o->num_surf,
                list_length(o->surfaces, limit));
    if (list_length(o->kids, limit) != o->num_kids)
        problem(c, "object \"%s\": num_kids %u but %llu children\n", name_of(o), o->num_kids,
                list_length(o->kids, limit));
}

void check_surfaces(TreeCheck *c, Object *o)
{
    std::unordered_set<const Vertex *> own;
    own.reserve(o->num_vert);
    for (List *v = o->vertices; v; v = v->next) {
        if (!v->item) problem(c, "object \"%s\": a null vertex\n", name_of(o));
        own.insert((const Vertex *)v->item);
    }
    long index = 0;
    for (List *s = o->surfaces; s; s = s->next, index++) {
        Surface *surface = (Surface *)s->item;
        if (!surface) {
            problem(c, "object \"%s\": surface %ld is null\n", name_of(o), index);
            continue;
        }
        if (list_length(surface->vertrefs, 1u << 30) != surface->num_vertrefs)
            problem(c, "object \"%s\": surface %ld counts %u references but has %llu\n", name_of(o), index,
                    surface->num_vertrefs, list_length(surface->vertrefs, 1u << 30));
        if (surface->mat >= num_palette)
            problem(c, "object \"%s\": surface %ld has material %d past the palette (%d entries)\n", name_of(o),
                    index, surface->mat, num_palette);
        for (List *r = surface->vertrefs; r; r = r->next) {
            SVertex *ref = (SVertex *)r->item;
            if (!ref || !own.count(ref->vertex))
                problem(c, "object \"%s\": surface %ld refers to a vertex not of its object\n", name_of(o), index);
        }
    }
}

void check_object(TreeCheck *c, Object *o)
{
    if (o->deleted) problem(c, "object \"%s\": deleted but still in the tree\n", name_of(o));
    check_counts(c, o);
    check_surfaces(c, o);
}

} // namespace

long object_check_tree(Object *root, char *report, size_t size)
{
    TreeCheck c = {report, size, 0, 0};
    if (report && size) report[0] = '\0';
    if (!root) return 0;
    std::unordered_set<const Object *> seen;
    std::vector<Object *> pending(1, root);
    while (!pending.empty()) {
        Object *o = pending.back();
        pending.pop_back();
        if (!seen.insert(o).second) {
            problem(&c, "object \"%s\" is reached twice (a cycle or a shared child)\n", name_of(o));
            continue;
        }
        check_object(&c, o);
        for (List *k = o->kids; k; k = k->next) {
            Object *kid = (Object *)k->item;
            if (!kid) {
                problem(&c, "object \"%s\": a null child\n", name_of(o));
                continue;
            }
            if (kid->parent != o)
                problem(&c, "object \"%s\": child \"%s\" names another parent\n", name_of(o), name_of(kid));
            pending.push_back(kid);
        }
    }
    return c.problems;
}
