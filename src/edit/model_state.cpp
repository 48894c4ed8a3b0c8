/*
 * edit/model_state.cpp - the selection and the geometry of the model
 * captured by position instead of by pointer (see model_state.h), and put
 * back.  A position survives the model being replaced by an exact copy,
 * which a pointer does not.
 */
#include "edit/model_state.h"
#include "edit/pointer_table.h"
#include "edit/selection.h"
#include "edit/selection_internal.h"

#include <cassert>
#include <cstring>

std::vector<Object *> model_walk(Object *root)
{
    std::vector<Object *> order;
    if (!root) return order;
    std::vector<Object *> stack{root};
    while (!stack.empty()) {
        Object *o = stack.back();
        stack.pop_back();
        order.push_back(o);
        /* Children pushed in reverse so that they come out in list order. */
        size_t first = stack.size();
        for (List *k = o->kids; k; k = k->next) stack.push_back((Object *)k->item);
        for (size_t i = first, j = stack.size(); i + 1 < j; i++, j--) std::swap(stack[i], stack[j - 1]);
    }
    return order;
}

/* ---- selection ---- */

SelectionState selection_state_capture(void)
{
    SelectionState s;
    s.select_mode = selection.select_mode;
    std::vector<Object *> order = model_walk(world);
    PointerTable object_at;
    for (size_t i = 0; i < order.size(); i++) ptable_set(&object_at, order[i], i);
    uintptr_t at;
    for (List *l = selection.selected_objects; l; l = l->next) {
        if (ptable_get(&object_at, l->item, &at)) s.objects.push_back((uint32_t)at);
    }
    for (List *l = selection.part_selected_objects; l; l = l->next) {
        if (ptable_get(&object_at, l->item, &at)) s.part_objects.push_back((uint32_t)at);
    }
    if (!selection.selected_vertices) return s;
    PointerTable vertex_at;
    for (size_t i = 0; i < order.size(); i++) {
        uint64_t j = 0;
        for (List *v = order[i]->vertices; v; v = v->next, j++) {
            ptable_set_if_absent(&vertex_at, v->item, (uintptr_t)((uint64_t)i << 32 | j));
        }
    }
    for (List *l = selection.selected_vertices; l; l = l->next) {
        if (ptable_get(&vertex_at, l->item, &at)) s.vertices.push_back((uint64_t)at);
    }
    return s;
}

/* The vertex at a position, or null when the position is beyond the
 * model.  Each object's vertices are put in an array once, when first
 * asked for. */
struct VertexFinder {
    const std::vector<Object *> *order;
    std::vector<std::vector<Vertex *>> vertices;
};

static Vertex *find_vertex(VertexFinder *f, uint64_t position)
{
    size_t o = (size_t)(position >> 32), v = (size_t)(position & 0xffffffffu);
    if (o >= f->order->size()) return nullptr;
    if (f->vertices.empty()) f->vertices.resize(f->order->size());
    std::vector<Vertex *> &list = f->vertices[o];
    if (list.empty()) {
        for (List *l = (*f->order)[o]->vertices; l; l = l->next) list.push_back((Vertex *)l->item);
    }
    return v < list.size() ? list[v] : nullptr;
}

int selection_state_restore(const SelectionState &state)
{
    std::vector<Object *> order = model_walk(world);
    for (uint32_t p : state.objects) if (p >= order.size()) return 0;
    for (uint32_t p : state.part_objects) if (p >= order.size()) return 0;
    VertexFinder finder{&order, {}};
    std::vector<Vertex *> vertices;
    for (uint64_t p : state.vertices) {
        Vertex *v = find_vertex(&finder, p);
        if (!v) return 0;
        vertices.push_back(v);
    }
    clear_selection();
    selection.select_mode = state.select_mode;
    List *vlist = nullptr, *vtail = nullptr, *olist = nullptr, *otail = nullptr;
    for (Vertex *v : vertices) vtail = list_add_item_fast(&vlist, vtail, v);
    for (uint32_t p : state.objects) otail = list_add_item_fast(&olist, otail, order[p]);
    selection_adopt_lists(vlist, olist);
    for (uint32_t p : state.part_objects) add_part_selected_object(order[p]);
    update_current_object();
    find_bounding_box();
    set_new_select_mode_ui(selection.select_mode);
    selection_publish_counts();
    return 1;
}

/* ---- geometry ---- */

static const int OBJECT_NUMBERS = 3 + 9 + 3;

static void push3(std::vector<float> *out, const float *p)
{
    out->insert(out->end(), p, p + 3);
}

GeometryState geometry_state_capture(void)
{
    GeometryState g;
    for (Object *o : model_walk(world)) {
        g.shape.push_back(o->type);
        g.shape.push_back(list_count(o->vertices));
        g.shape.push_back(list_count(o->surfaces));
        g.shape.push_back(list_count(o->kids));
        push3(&g.numbers, o->centre);
        g.numbers.insert(g.numbers.end(), o->rotation, o->rotation + 9);
        push3(&g.numbers, o->scale);
        for (List *v = o->vertices; v; v = v->next) {
            push3(&g.numbers, ((Vertex *)v->item)->point);
            push3(&g.numbers, ((Vertex *)v->item)->normal);
        }
        for (List *s = o->surfaces; s; s = s->next) push3(&g.numbers, ((Surface *)s->item)->normal);
    }
    return g;
}

int geometry_state_fits(const GeometryState &state)
{
    std::vector<Object *> order = model_walk(world);
    if (order.size() * 4 != state.shape.size()) return 0;
    size_t numbers = 0;
    for (size_t i = 0; i < order.size(); i++) {
        const Object *o = order[i];
        const uint32_t *s = &state.shape[i * 4];
        /* The lists themselves, not the counts kept beside them: apply
         * walks the lists. */
        if (s[0] != o->type || s[1] != list_count(o->vertices) || s[2] != list_count(o->surfaces) ||
            s[3] != list_count(o->kids))
            return 0;
        numbers += OBJECT_NUMBERS + 6 * (size_t)s[1] + 3 * (size_t)s[2];
    }
    return numbers == state.numbers.size();
}

void geometry_state_apply(const GeometryState &state)
{
    assert(geometry_state_fits(state));
    const float *n = state.numbers.data();
    for (Object *o : model_walk(world)) {
        memcpy(o->centre, n, sizeof o->centre);
        memcpy(o->rotation, n + 3, sizeof o->rotation);
        memcpy(o->scale, n + 12, sizeof o->scale);
        n += OBJECT_NUMBERS;
        for (List *v = o->vertices; v; v = v->next, n += 6) {
            memcpy(((Vertex *)v->item)->point, n, 3 * sizeof(float));
            memcpy(((Vertex *)v->item)->normal, n + 3, 3 * sizeof(float));
        }
        for (List *s = o->surfaces; s; s = s->next, n += 3) memcpy(((Surface *)s->item)->normal, n, 3 * sizeof(float));
    }
}
