/*
 * fileio/dive_writer.cpp - the DIVE world exporter (the ".vr" files of
 * SICS's Distributed Interactive Virtual Environment): a world block
 * starting the visitor at the 3D view's eye, then the object tree as
 * nested objects.  Each object lists the palette materials it uses as its
 * material vector and its texture file, then one view per surface:
 * N_POLY for a convex polygon (concave ones as several triangles, since
 * DIVE wants N_POLY convex), with texture coordinates when the object has
 * a texture, and N_LINE for lines.  Light objects become objects holding
 * a light.  Vertices are written in model coordinates and no object
 * carries a transform.
 */
#include "fileio/scene_writers.h"
#include "core/lights.h"
#include "fileio/scene_out.h"
#include "texture/texture_table.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace {

void put_string(TextOut *out, const char *text)
{
    text_out_char(out, '"');
    for (const char *p = text ? text : ""; *p; p++) {
        /* DIVE strings have no escapes: a double quote becomes a single
         * one. */
        char c = *p == '"' ? '\'' : *p;
        text_out_char(out, (unsigned char)c < 32 ? ' ' : c);
    }
    text_out_char(out, '"');
}

void put_v(TextOut *out, const float *p)
{
    text_out_string(out, "v ");
    scene_put_triple(out, p, " ");
}

void indent(TextOut *out, int depth)
{
    for (int i = 0; i < depth; i++) text_out_string(out, "  ");
}

void write_material(TextOut *out, int mat, int depth)
{
    const Material *m = index_to_material(mat);
    indent(out, depth);
    text_out_string(out, "material {\n");
    const struct {
        const char *key;
        const float *rgb;
    } colours[] = {{"ambient", m->ambient}, {"diffuse", m->rgb}, {"specular", m->specular}, {"emission", m->emissive}};
    for (const auto &c : colours) {
        indent(out, depth + 1);
        text_out_string(out, c.key);
        text_out_char(out, ' ');
        float clamped[3];
        for (int i = 0; i < 3; i++) clamped[i] = std::min(1.0f, std::max(0.0f, c.rgb[i]));
        scene_put_triple(out, clamped, " ");
        text_out_char(out, '\n');
    }
    indent(out, depth + 1);
    text_out_string(out, "spec_power ");
    scene_put_number(out, m->shininess);
    text_out_char(out, '\n');
    indent(out, depth + 1);
    text_out_string(out, "transparency ");
    scene_put_number(out, std::min(1.0f, std::max(0.0f, m->transparency)));
    text_out_char(out, '\n');
    indent(out, depth);
    text_out_string(out, "}\n");
}

/* The light of a light object: DIVE lights sit at their object's origin
 * and shine along its +z, so the object is moved and, for directed
 * lights, turned. */
void write_light(TextOut *out, const Light *light, int depth)
{
    const float *c = light->object.centre;
    double d[3] = {light->direction[0], light->direction[1], light->direction[2]};
    double length = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
    int directed = (light->light_type == LIGHT_INFINITE || light->light_type == LIGHT_SPOT) && std::isfinite(length) &&
                   length > 0;
    if (directed) {
        /* Rows of the rotation: x and y across the direction, z along
         * it. */
        double z[3] = {d[0] / length, d[1] / length, d[2] / length};
        double helper[3] = {0, 1, 0};
        if (std::fabs(z[1]) > 0.9) helper[1] = 0, helper[0] = 1;
        double x[3] = {helper[1] * z[2] - helper[2] * z[1], helper[2] * z[0] - helper[0] * z[2],
                       helper[0] * z[1] - helper[1] * z[0]};
        double lx = std::sqrt(x[0] * x[0] + x[1] * x[1] + x[2] * x[2]);
        for (double &v : x) v /= lx;
        double y[3] = {z[1] * x[2] - z[2] * x[1], z[2] * x[0] - z[0] * x[2], z[0] * x[1] - z[1] * x[0]};
        indent(out, depth);
        text_out_string(out, "rotation");
        for (const double *row : {x, y, z}) {
            const float f[3] = {(float)row[0], (float)row[1], (float)row[2]};
            text_out_char(out, ' ');
            put_v(out, f);
        }
        text_out_char(out, '\n');
    }
    if (light->light_type != LIGHT_INFINITE) {
        indent(out, depth);
        text_out_string(out, "translation ");
        put_v(out, c);
        text_out_char(out, '\n');
    }
    indent(out, depth);
    const char *kind = light->light_type == LIGHT_INFINITE && directed ? "DLIGHT"
                       : light->light_type == LIGHT_SPOT && directed ? "SLIGHT"
                                                                     : "PLIGHT";
    text_out_string(out, "light { ");
    text_out_string(out, kind);
    text_out_string(out, " ambient ");
    scene_put_triple(out, light->ambient, " ");
    text_out_string(out, " color ");
    scene_put_triple(out, light->diffuse, " ");
    if (kind[0] == 'S') {
        text_out_string(out, " exponent ");
        scene_put_number(out, std::min(128.0f, std::max(0.0f, light->spot_exponent)));
        text_out_string(out, " spread ");
        scene_put_number(out, std::min(90.0f, std::max(0.0f, light->spot_cutoff)) * M_PI / 180.0);
    }
    text_out_string(out, " }\n");
}

void write_poly_view(TextOut *out, const std::vector<SVertex *> &face, int slot, Surface *s, int textured, int depth)
{
    indent(out, depth);
    text_out_string(out, "view { material_index ");
    text_out_int(out, slot);
    if (textured) text_out_string(out, " texture_index 0");
    if (s->shading) text_out_string(out, " FLAG gouraud on");
    text_out_string(out, "\n");
    indent(out, depth + 1);
    text_out_string(out, "N_POLY ");
    text_out_int(out, (long long)face.size());
    text_out_char(out, '\n');
    for (SVertex *ref : face) {
        indent(out, depth + 2);
        put_v(out, ref->vertex->point);
        if (textured) {
            text_out_string(out, " t ");
            scene_put_number(out, ref->u);
            text_out_char(out, ' ');
            scene_put_number(out, ref->v);
        }
        text_out_char(out, '\n');
    }
    indent(out, depth);
    text_out_string(out, "}\n");
}

void write_line_view(TextOut *out, const std::vector<SVertex *> &refs, int slot, int closed, int depth)
{
    indent(out, depth);
    text_out_string(out, "view { material_index ");
    text_out_int(out, slot);
    text_out_string(out, " N_LINE ");
    text_out_int(out, (long long)refs.size() + (closed ? 1 : 0));
    text_out_char(out, '\n');
    for (size_t i = 0; i < refs.size() + (closed ? 1 : 0); i++) {
        indent(out, depth + 1);
        put_v(out, refs[i % refs.size()]->vertex->point);
        text_out_char(out, '\n');
    }
    indent(out, depth);
    text_out_string(out, "}\n");
}

void write_geometry(TextOut *out, Object *o, int depth)
{
    VrmlObjectLists lists;
    vrml_lists_make(&lists, o);
    std::map<int, int> slots;
    std::vector<int> order;
    for (List *l = o->surfaces; l; l = l->next) {
        int m = scene_material((Surface *)l->item);
        if (!slots.count(m)) {
            slots[m] = (int)order.size();
            order.push_back(m);
        }
    }
    for (int m : order) write_material(out, m, depth);
    const char *texture = o->texture ? texture_id_to_name(o->texture) : nullptr;
    if (texture) {
        indent(out, depth);
        text_out_string(out, "texture ");
        put_string(out, texture);
        text_out_char(out, '\n');
    }
    SceneTriangles scratch;
    std::vector<std::vector<SVertex *>> faces;
    for (Surface *s : lists.polygons) {
        if (!scene_convex_faces(&lists, s, &scratch, &faces)) {
            scene_notes.polygons_skipped++;
            continue;
        }
        for (const auto &f : faces) write_poly_view(out, f, slots[scene_material(s)], s, texture != nullptr, depth);
    }
    scene_triangles_clear(&scratch);
    std::vector<SVertex *> refs;
    for (Surface *s : lists.lines) {
        scene_surface_refs(&lists, s, &refs);
        if (refs.size() < 2) {
            scene_notes.lines_skipped++;
            continue;
        }
        int closed = s->surface_kind == SURFACE_CLOSED_LINE && refs.size() >= 3;
        write_line_view(out, refs, slots[scene_material(s)], closed, depth);
    }
}

/* An object and its children, nested: DIVE wants an object's children
 * after everything else in it.  An explicit stack, as trees may be
 * deeper than the C stack. */
void write_tree(TextOut *out, Object *root)
{
    struct Step {
        Object *object;
        int depth;
        bool close;
    };
    std::vector<Step> stack(1, Step{root, 0, false});
    std::vector<Object *> kids;
    while (!stack.empty()) {
        Step step = stack.back();
        stack.pop_back();
        if (step.close) {
            indent(out, step.depth);
            text_out_string(out, "}\n");
            continue;
        }
        Object *o = step.object;
        indent(out, step.depth);
        text_out_string(out, "object {\n");
        if (o->name && o->name[0]) {
            indent(out, step.depth + 1);
            text_out_string(out, "name ");
            put_string(out, o->name);
            text_out_char(out, '\n');
        }
        if (object_is_light(o)) {
            write_light(out, (const Light *)o, step.depth + 1);
        } else {
            write_geometry(out, o, step.depth + 1);
        }
        stack.push_back(Step{o, step.depth, true});
        kids.clear();
        for (List *k = o->kids; k; k = k->next) kids.push_back((Object *)k->item);
        for (size_t i = kids.size(); i-- > 0;) stack.push_back(Step{kids[i], step.depth + 1, false});
    }
}

void write_body(TextOut *out, void *)
{
    SceneCamera camera;
    scene_camera(&camera);
    const float eye[3] = {(float)camera.eye[0], (float)camera.eye[1], (float)camera.eye[2]};
    text_out_string(out, "/* DIVE world written by VESK */\n\nworld \"vesk\" {\n  start ");
    put_v(out, eye);
    text_out_string(out, "\n}\n\n");
    for (List *k = world ? world->kids : nullptr; k; k = k->next) write_tree(out, (Object *)k->item);
}

} // namespace

int write_dive_file(const char *filename)
{
    scene_notes = SceneNotes{0, 0, 0};
    return scene_write_file(filename, "DIVE", write_body, nullptr);
}
