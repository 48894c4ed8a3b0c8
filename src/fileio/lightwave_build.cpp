/*
 * fileio/lightwave_build.cpp - turning a read LightWave object (LwModel)
 * into model objects: one object per layer under a group named after the
 * file, points placed by a transformation and mirrored from LightWave's
 * left-handed space (z negated), polygons reversed so that their fronts
 * stay in front, texture coordinates per corner, and surface colours
 * recorded for the palette.
 */
#include "fileio/lightwave.h"
#include "edit/primitive_append.h"

#include <map>

LwTransform lw_identity(void)
{
    return {{1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0}, {1, 0, 0, 0, 1, 0, 0, 0, 1}};
}

static void place_point(const LwTransform &place, const float *p, float *out)
{
    for (int i = 0; i < 3; i++) {
        out[i] = (float)(place.m[i * 3] * p[0] + place.m[i * 3 + 1] * p[1] + place.m[i * 3 + 2] * p[2] + place.t[i]) + 0.0f;
    }
    out[2] = 0.0f - out[2];   /* no negative zeros */
}

void lw_place_object(Object *object, const LwTransform &place, const float *pivot)
{
    place_point(place, pivot, object->centre);
    /* The mirror on both sides: F r F with F = diag(1, 1, -1).  Matrix3
     * keeps columns: element (row, column) at column * 3 + row. */
    static const double f[3] = {1, 1, -1};
    for (int row = 0; row < 3; row++) {
        for (int col = 0; col < 3; col++) {
            object->rotation[col * 3 + row] = (float)(f[row] * f[col] * place.r[row * 3 + col]) + 0.0f;
        }
    }
}

static double determinant(const double *m)
{
    return m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) +
           m[2] * (m[3] * m[7] - m[4] * m[6]);
}

static long polygon_colour(const LwModel &model, int surface)
{
    if (surface < 0 || (size_t)surface >= model.surface_colours.size()) return (long)LW_DEFAULT_COLOUR;
    long colour = model.surface_colours[surface];
    return colour >= 0 ? colour : (long)LW_DEFAULT_COLOUR;
}

static Object *build_layer(const LwModel &model, const LwLayer &l, const LwTransform &place,
                           std::vector<LwColouring> *colours)
{
    Object *object = new_object(OBJECT_NORMAL);
    std::string name = l.name.empty() ? "layer " + std::to_string(l.number + 1) : l.name;
    object_set_name(object, name.c_str());
    lw_place_object(object, place, l.pivot);
    ObjectAppender append;
    appender_start(&append, object);
    std::vector<Vertex *> made(l.points.size() / 3, nullptr);
    /* The mirror reverses the sense of every polygon; a placement that
     * mirrors too (a negative scale) reverses it back. */
    bool reverse = determinant(place.m) >= 0;
    bool overrides = l.corner_has_uv.size() == l.corners.size();
    for (const LwPolygon &p : l.polygons) {
        if (p.kind < 0) continue;
        Surface *s = new_surface();
        s->surface_kind = (uint8_t)p.kind;
        RefAppender refs = ref_appender_start(s);
        for (uint32_t k = 0; k < p.count; k++) {
            uint32_t corner = p.first + (reverse ? p.count - 1 - k : k);
            uint32_t point = l.corners[corner];
            if (!made[point]) {
                float at[3];
                place_point(place, &l.points[point * 3], at);
                made[point] = appender_new_vertex(&append, at[0], at[1], at[2]);
            }
            const float *uv = overrides && l.corner_has_uv[corner] ? &l.corner_uv[corner * 2] : &l.point_uv[point * 2];
            ref_append(&refs, made[point], uv[0], uv[1]);
        }
        appender_add_surface(&append, s);
        colours->push_back({s, polygon_colour(model, p.surface)});
    }
    return object;
}

Object *lw_build_model(const LwModel &model, const char *name, const LwTransform &place, int only_layer,
                       std::vector<LwColouring> *colours)
{
    Object *root = new_group();
    object_set_name(root, name);
    static const float origin[3] = {0, 0, 0};
    lw_place_object(root, place, origin);
    std::vector<Object *> objects;
    std::map<int, size_t> by_number;   /* layer number -> first object made for it */
    for (const LwLayer &l : model.layers) {
        if (only_layer >= 0 && l.number != only_layer) continue;
        Object *object = build_layer(model, l, place, colours);
        Object *parent = root;
        auto found = by_number.find(l.parent);
        /* A parent must come earlier in the file, which also rules out
         * cycles. */
        if (only_layer < 0 && l.parent >= 0 && found != by_number.end()) parent = objects[found->second];
        object_add_child(parent, object);
        by_number.emplace(l.number, objects.size());
        objects.push_back(object);
        if (only_layer >= 0) break;
    }
    /* Layers without polygons go, children before their parents. */
    for (size_t i = objects.size(); i-- > 0;) {
        Object *object = objects[i];
        if (object->num_surf > 0 || object->num_kids > 0) continue;
        object_remove_child_nocleanup(object->parent, object);
        object_free(object);
    }
    if (root->num_kids == 0) {
        object_free(root);
        return nullptr;
    }
    object_calc_normals_force(root);
    return root;
}

void lw_apply_colours(const std::vector<LwColouring> &colours)
{
    std::map<long, int> index;
    for (const LwColouring &c : colours) {
        auto found = index.find(c.colour);
        if (found == index.end()) found = index.emplace(c.colour, rgb_to_index(c.colour)).first;
        c.surface->mat = (uint16_t)found->second;
    }
}

long lw_count_surfaces(Object *object, long *objects)
{
    long count = 0;
    std::vector<Object *> stack = {object};
    while (!stack.empty()) {
        Object *o = stack.back();
        stack.pop_back();
        count += o->num_surf;
        if (o->num_surf > 0) (*objects)++;
        for (List *k = o->kids; k; k = k->next) stack.push_back((Object *)k->item);
    }
    return count;
}
