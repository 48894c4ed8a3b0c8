/*
 * fileio/rib_writer.cpp - the RenderMan RIB exporter.  With the
 * output_rib_header preference on, a whole frame: the picture file, its
 * size, a perspective projection with the 3D view's field of view, the
 * view's camera, the model's lights (or one from the eye) and the world;
 * with it off, only the objects, for including in another RIB.  Each
 * object is an attribute block holding one PointsPolygons per palette
 * material it uses (concave polygons split into triangles, since
 * PointsPolygons wants convex ones) and its lines as linear Curves.
 */
#include "fileio/scene_writers.h"
#include "app/prefs.h"
#include "core/lights.h"
#include "fileio/scene_out.h"
#include "texture/texture_table.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <string>

namespace {

struct RibScene {
    const char *filename;
    SceneCamera camera;
    double size;   /* the diagonal of the model's box (1 when empty) */
};

/* "[a b c]" */
void put_array3(TextOut *out, const float *v) { scene_put_bracketed(out, v, '[', " ", ']'); }
void put_darray3(TextOut *out, const double *v) { scene_put_bracketed(out, v, '[', " ", ']'); }

void put_array1(TextOut *out, double value)
{
    text_out_char(out, '[');
    scene_put_number(out, value);
    text_out_char(out, ']');
}

/* The picture's name: the RIB file's own name with ".tif". */
std::string picture_name(const char *filename)
{
    const char *slash = strrchr(filename, '/');
    std::string base = slash ? slash + 1 : filename;
    size_t dot = base.rfind('.');
    if (dot != std::string::npos && dot > 0) base.erase(dot);
    if (base.empty()) base = "vesk";
    return base + ".tif";
}

/* ---- header ---- */

void write_camera(TextOut *out, const RibScene &scene)
{
    const SceneCamera &c = scene.camera;
    /* RenderMan's field of view spans the picture's shorter side. */
    double fov = c.fovy;
    if (c.aspect < 1.0) fov = 2.0 * std::atan(std::tan(c.fovy * M_PI / 360.0) * c.aspect) * 180.0 / M_PI;
    text_out_string(out, "Format ");
    text_out_int(out, c.width);
    text_out_char(out, ' ');
    text_out_int(out, c.height);
    text_out_string(out, " 1\nProjection \"perspective\" \"fov\" ");
    put_array1(out, fov);
    /* The view's camera; RenderMan's camera looks down +z where
     * OpenGL's looks down -z. */
    text_out_string(out, "\nScale 1 1 -1\nConcatTransform [");
    for (int i = 0; i < 16; i++) {
        if (i) text_out_char(out, ' ');
        scene_put_number(out, c.modelview[i]);
    }
    text_out_string(out, "]\n");
}

void put_light_start(TextOut *out, const char *shader, int id)
{
    text_out_string(out, "LightSource ");
    scene_put_quoted(out, shader);
    text_out_char(out, ' ');
    text_out_int(out, id);
}

void put_light_colour(TextOut *out, const Light *light)
{
    text_out_string(out, " \"lightcolor\" ");
    put_array3(out, light->diffuse);
    text_out_char(out, '\n');
}

/* One light; 0 when it was not written (hidden). */
int write_light(TextOut *out, const Light *light, int id, const RibScene &scene)
{
    if (!light->object.visible) return 0;
    const float *c = light->object.centre;
    /* Point and spot lights fall off with the square of the distance:
     * strong enough to light a model of this size. */
    double intensity = std::max(1.0, scene.size * scene.size);
    text_out_string(out, "# light ");
    scene_put_one_line(out, light->object.name);
    text_out_char(out, '\n');
    if (light->light_type == LIGHT_INFINITE) {
        put_light_start(out, "distantlight", id);
        text_out_string(out, " \"from\" ");
        put_array3(out, light->direction);
        text_out_string(out, " \"to\" [0 0 0] \"intensity\" [1]");
        put_light_colour(out, light);
        return 1;
    }
    if (light->light_type == LIGHT_SPOT && light->spot_cutoff > 0.0f && light->spot_cutoff < 90.0f) {
        float to[3] = {c[0] + light->direction[0], c[1] + light->direction[1], c[2] + light->direction[2]};
        put_light_start(out, "spotlight", id);
        text_out_string(out, " \"from\" ");
        put_array3(out, c);
        text_out_string(out, " \"to\" ");
        put_array3(out, to);
        text_out_string(out, " \"coneangle\" ");
        put_array1(out, light->spot_cutoff * M_PI / 180.0);
        text_out_string(out, " \"intensity\" ");
        put_array1(out, intensity);
        put_light_colour(out, light);
        return 1;
    }
    put_light_start(out, "pointlight", id);
    text_out_string(out, " \"from\" ");
    put_array3(out, c);
    text_out_string(out, " \"intensity\" ");
    put_array1(out, intensity);
    put_light_colour(out, light);
    return 1;
}

void write_lights(TextOut *out, const RibScene &scene)
{
    text_out_string(out, "LightSource \"ambientlight\" 1 \"intensity\" [0.3]\n");
    int id = 2, written = 0;
    for (List *l = scan_lights(); l; l = l->next) {
        if (write_light(out, (const Light *)l->item, id, scene)) {
            id++;
            written++;
        }
    }
    if (written) return;
    const SceneCamera &c = scene.camera;
    double to[3] = {c.eye[0] + c.forward[0], c.eye[1] + c.forward[1], c.eye[2] + c.forward[2]};
    text_out_string(out, "# the model has no lights: one shining from the eye\n");
    put_light_start(out, "distantlight", id);
    text_out_string(out, " \"from\" ");
    put_darray3(out, c.eye);
    text_out_string(out, " \"to\" ");
    put_darray3(out, to);
    text_out_string(out, " \"intensity\" [1]\n");
}

/* ---- objects ---- */

double average3(const float *v)
{
    return ((double)v[0] + v[1] + v[2]) / 3.0;
}

void write_shading(TextOut *out, int mat, const char *texture)
{
    const Material *m = index_to_material(mat);
    float opacity = 1.0f - std::min(1.0f, std::max(0.0f, m->transparency));
    const float o3[3] = {opacity, opacity, opacity};
    text_out_string(out, "  Color ");
    put_array3(out, m->rgb);
    text_out_string(out, "\n  Opacity ");
    put_array3(out, o3);
    text_out_string(out, texture ? "\n  Surface \"paintedplastic\"" : "\n  Surface \"plastic\"");
    text_out_string(out, " \"Ka\" ");
    put_array1(out, average3(m->ambient));
    text_out_string(out, " \"Kd\" [0.8] \"Ks\" ");
    put_array1(out, std::min(1.0, std::max(0.0, average3(m->specular))));
    text_out_string(out, " \"roughness\" ");
    put_array1(out, 1.0 / std::min(128.0, std::max(1.0, (double)m->shininess)));
    if (texture) {
        text_out_string(out, " \"texturename\" ");
        scene_put_quoted(out, texture);
    }
    text_out_char(out, '\n');
}

/* The texture map's name for an object's texture: the image's name with
 * ".tex", the form renderers read (made from the image with txmake). */
std::string texture_map_name(Object *o)
{
    if (!prefs.rib_textures || !o->texture) return std::string();
    const char *name = texture_id_to_name(o->texture);
    if (!name || !name[0]) return std::string();
    std::string map = name;
    size_t dot = map.rfind('.');
    size_t slash = map.rfind('/');
    if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) map.erase(dot);
    return map + ".tex";
}

struct Group {
    std::vector<std::vector<SVertex *>> faces;
    std::vector<Surface *> owners;   /* the surface of each face */
};

void write_points_polygons(TextOut *out, Object *o, const VrmlObjectLists &lists, const Group &g, const char *texture)
{
    std::vector<long> local(lists.vertices.size(), -1);
    std::vector<Vertex *> used;
    int smooth = 0;
    for (size_t f = 0; f < g.faces.size(); f++) {
        smooth |= g.owners[f]->shading != 0;
        for (SVertex *ref : g.faces[f]) {
            long &slot = local[ref->vertex->mark];
            if (slot < 0) {
                slot = (long)used.size();
                used.push_back(ref->vertex);
            }
        }
    }
    text_out_string(out, "  PointsPolygons [");
    for (size_t f = 0; f < g.faces.size(); f++) {
        if (f) text_out_char(out, ' ');
        text_out_int(out, (long long)g.faces[f].size());
    }
    text_out_string(out, "]\n    [");
    int first = 1;
    for (const auto &face : g.faces) {
        for (SVertex *ref : face) {
            if (!first) text_out_char(out, ' ');
            first = 0;
            text_out_int(out, local[ref->vertex->mark]);
        }
    }
    text_out_string(out, "]\n    \"P\" [");
    for (size_t i = 0; i < used.size(); i++) {
        if (i) text_out_char(out, ' ');
        scene_put_triple(out, used[i]->point, " ");
    }
    text_out_string(out, "]\n");
    if (smooth) {
        /* One normal per corner: the vertex's where the polygon is
         * smooth, the polygon's where it is flat. */
        text_out_string(out, "    \"facevarying normal N\" [");
        first = 1;
        for (size_t f = 0; f < g.faces.size(); f++) {
            for (SVertex *ref : g.faces[f]) {
                if (!first) text_out_char(out, ' ');
                first = 0;
                const float *n = g.owners[f]->shading ? ref->vertex->normal : g.owners[f]->normal;
                scene_put_triple(out, n, " ");
            }
        }
        text_out_string(out, "]\n");
    }
    if (texture) {
        /* RenderMan's t runs down the picture, the model's v up it. */
        text_out_string(out, "    \"facevarying float[2] st\" [");
        first = 1;
        for (const auto &face : g.faces) {
            for (SVertex *ref : face) {
                if (!first) text_out_char(out, ' ');
                first = 0;
                scene_put_number(out, (double)ref->u * o->texture_repeat_x);
                text_out_char(out, ' ');
                scene_put_number(out, 1.0 - (double)ref->v * o->texture_repeat_y);
            }
        }
        text_out_string(out, "]\n");
    }
}

/* A line surface as one linear curve; closed lines wrap round. */
void write_curve(TextOut *out, const VrmlObjectLists &lists, Surface *s, double width)
{
    std::vector<SVertex *> refs;
    scene_surface_refs(&lists, s, &refs);
    int closed = s->surface_kind == SURFACE_CLOSED_LINE && refs.size() >= 3;
    if (refs.size() < 2) {
        scene_notes.lines_skipped++;
        return;
    }
    write_shading(out, scene_material(s), nullptr);
    text_out_string(out, "  Curves \"linear\" [");
    text_out_int(out, (long long)refs.size());
    text_out_string(out, closed ? "] \"periodic\" \"P\" [" : "] \"nonperiodic\" \"P\" [");
    for (size_t i = 0; i < refs.size(); i++) {
        if (i) text_out_char(out, ' ');
        scene_put_triple(out, refs[i]->vertex->point, " ");
    }
    text_out_string(out, "] \"constantwidth\" ");
    put_array1(out, width);
    text_out_char(out, '\n');
}

void write_object(TextOut *out, Object *o, const RibScene &scene)
{
    VrmlObjectLists lists;
    vrml_lists_make(&lists, o);
    text_out_string(out, "AttributeBegin\n");
    if (o->name && o->name[0]) {
        text_out_string(out, "  Attribute \"identifier\" \"name\" [");
        scene_put_quoted(out, o->name);
        text_out_string(out, "]\n");
    }
    if (prefs.rib_use_object_data && o->data && o->data[0]) {
        text_out_string(out, "# the object's data text, included as it stands\n");
        text_out_string(out, o->data);
        text_out_char(out, '\n');
    }
    std::string texture = texture_map_name(o);
    if (!texture.empty()) {
        text_out_string(out, "  # texture map made from ");
        scene_put_one_line(out, texture_id_to_name(o->texture));
        text_out_string(out, " with txmake\n");
    }
    std::map<int, Group> groups;
    SceneTriangles scratch;
    std::vector<std::vector<SVertex *>> faces;
    for (Surface *s : lists.polygons) {
        if (!scene_convex_faces(&lists, s, &scratch, &faces)) {
            scene_notes.polygons_skipped++;
            continue;
        }
        Group &g = groups[scene_material(s)];
        for (auto &f : faces) {
            g.faces.push_back(f);
            g.owners.push_back(s);
        }
    }
    for (const auto &entry : groups) {
        write_shading(out, entry.first, texture.empty() ? nullptr : texture.c_str());
        write_points_polygons(out, o, lists, entry.second, texture.empty() ? nullptr : texture.c_str());
    }
    scene_triangles_clear(&scratch);
    for (Surface *s : lists.lines) write_curve(out, lists, s, std::max(1e-4, scene.size * 0.004));
    text_out_string(out, "AttributeEnd\n");
}

void write_body(TextOut *out, void *data)
{
    RibScene &scene = *(RibScene *)data;
    scene_camera(&scene.camera);
    float min[3], max[3];
    scene.size = 1.0;
    if (scene_extent(min, max)) {
        double d[3] = {(double)max[0] - min[0], (double)max[1] - min[1], (double)max[2] - min[2]};
        double size = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        if (std::isfinite(size) && size > 0) scene.size = size;
    }
    text_out_string(out, "##RenderMan RIB\n# written by VESK\nversion 3.03\n");
    int header = prefs.output_rib_header;
    if (header) {
        text_out_string(out, "Display ");
        scene_put_quoted(out, picture_name(scene.filename).c_str());
        text_out_string(out, " \"file\" \"rgba\"\n");
        write_camera(out, scene);
        text_out_string(out, "WorldBegin\n");
        write_lights(out, scene);
        text_out_string(out, "Sides 2\n");
    }
    std::vector<Object *> objects;
    scene_objects(&objects);
    for (Object *o : objects) {
        if (!object_is_light(o)) write_object(out, o, scene);
    }
    if (header) text_out_string(out, "WorldEnd\n");
}

} // namespace

int write_rib_file(const char *filename)
{
    scene_notes = SceneNotes{0, 0, 0};
    RibScene scene;
    scene.filename = filename ? filename : "";
    return scene_write_file(filename, "RenderMan", write_body, &scene);
}
