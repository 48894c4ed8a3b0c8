/*
 * fileio/pov_writer.cpp - the POV-Ray 3.7 exporter: the user's header
 * text, the 3D view's camera, the model's lights (or one at the eye when
 * there are none), one texture per palette material used, and every
 * object as a mesh2 of triangles in model coordinates (vertices are kept
 * in model space, so no transforms are needed), its lines as thin
 * cylinders.  Textures POV-Ray can read become uv-mapped image maps.
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
#include <strings.h>

SceneNotes scene_notes;

namespace {

struct PovScene {
    SceneCamera camera;
    float min[3], max[3];
    int has_extent;
    double size;          /* the diagonal of the model's box (1 when empty) */
};

void put_vector(TextOut *out, const float *v) { scene_put_bracketed(out, v, '<', ", ", '>'); }
void put_dvector(TextOut *out, const double *v) { scene_put_bracketed(out, v, '<', ", ", '>'); }

void put_rgb(TextOut *out, long colour)
{
    float c[4];   /* the conversion fills in an alpha too */
    long_rgb_to_floatv(colour, c);
    text_out_string(out, "rgb ");
    put_vector(out, c);
}

/* A string literal: POV-Ray reads backslash escapes in strings. */
double average3(const float *v)
{
    return ((double)v[0] + v[1] + v[2]) / 3.0;
}

/* ---- header, camera and lights ---- */

void write_header(TextOut *out)
{
    const char *header = prefs.pov_file_header;
    if (header && header[0]) {
        text_out_string(out, header);
        if (header[strlen(header) - 1] != '\n') text_out_char(out, '\n');
    }
    text_out_string(out, "// POV-Ray 3.7 scene written by VESK\n");
    text_out_string(out, "#version 3.7;\n\n");
    /* The 3D view shows the palette's numbers as they are; a gamma of
     * 2.2 makes POV-Ray do the same. */
    text_out_string(out, "global_settings { assumed_gamma 2.2 ambient_light rgb <1, 1, 1> }\n\n");
    text_out_string(out, "background { color ");
    put_rgb(out, prefs.col_3dbackground);
    text_out_string(out, " }\n\n");
}

/* The camera as explicit vectors: the length of right over up is the
 * view's aspect and the length of direction gives its vertical field of
 * view, so that the picture frames what the 3D view frames. */
void write_camera(TextOut *out, const SceneCamera &c)
{
    double half = std::tan(c.fovy * M_PI / 360.0);
    double distance = 0.5 / half;
    double direction[3], right[3], look_at[3];
    for (int i = 0; i < 3; i++) {
        direction[i] = c.forward[i] * distance;
        right[i] = c.right[i] * c.aspect;
        look_at[i] = c.eye[i] + c.forward[i];
    }
    double angle = 2.0 * std::atan(half * c.aspect) * 180.0 / M_PI;
    text_out_string(out, "// the 3D view's camera: looking at ");
    put_dvector(out, look_at);
    text_out_string(out, ", up ");
    put_dvector(out, c.up);
    text_out_string(out, ", horizontal angle ");
    scene_put_number(out, angle);
    text_out_string(out, " degrees\ncamera {\n  perspective\n  location ");
    put_dvector(out, c.eye);
    text_out_string(out, "\n  right ");
    put_dvector(out, right);
    text_out_string(out, "\n  up ");
    put_dvector(out, c.up);
    text_out_string(out, "\n  direction ");
    put_dvector(out, direction);
    text_out_string(out, "\n}\n\n");
}

void write_light_colour(TextOut *out, const Light *light)
{
    text_out_string(out, " color rgb ");
    put_vector(out, light->diffuse);
}

/* One light object; 0 when it was not written (hidden, or a direction
 * of zero). */
int write_light(TextOut *out, const Light *light, const PovScene &scene)
{
    if (!light->object.visible) return 0;
    const float *c = light->object.centre;
    text_out_string(out, "// light ");
    scene_put_one_line(out, light->object.name);
    text_out_string(out, "\nlight_source {\n  ");
    switch (light->light_type) {
    case LIGHT_INFINITE: {
        /* A light at infinity: placed far out along its direction, its
         * rays parallel. */
        double d[3] = {light->direction[0], light->direction[1], light->direction[2]};
        double length = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        if (!std::isfinite(length) || length == 0.0) {
            text_out_string(out, "<0, 0, 0> color rgb 0\n}\n\n");
            return 1;
        }
        double far = 100.0 * scene.size + 1000.0;
        double at[3];
        for (int i = 0; i < 3; i++) at[i] = d[i] / length * far;
        put_dvector(out, at);
        write_light_colour(out, light);
        text_out_string(out, "\n  parallel point_at <0, 0, 0>\n}\n\n");
        return 1;
    }
    case LIGHT_SPOT:
        put_vector(out, c);
        write_light_colour(out, light);
        if (light->spot_cutoff > 0.0f && light->spot_cutoff < 90.0f) {
            float at[3] = {c[0] + light->direction[0], c[1] + light->direction[1], c[2] + light->direction[2]};
            text_out_string(out, "\n  spotlight point_at ");
            put_vector(out, at);
            text_out_string(out, " radius ");
            scene_put_number(out, light->spot_cutoff * 0.75);
            text_out_string(out, " falloff ");
            scene_put_number(out, light->spot_cutoff);
            text_out_string(out, " tightness ");
            scene_put_number(out, std::min(100.0f, std::max(0.0f, light->spot_exponent)));
        }
        text_out_string(out, "\n}\n\n");
        return 1;
    default:
        put_vector(out, c);
        write_light_colour(out, light);
        text_out_string(out, "\n}\n\n");
        return 1;
    }
}

void write_lights(TextOut *out, const PovScene &scene)
{
    int written = 0;
    for (List *l = scan_lights(); l; l = l->next) written += write_light(out, (const Light *)l->item, scene);
    if (written) return;
    text_out_string(out, "// the model has no lights: one at the eye, as the 3D view's headlight\nlight_source { ");
    put_dvector(out, scene.camera.eye);
    text_out_string(out, " color rgb <1, 1, 1> }\n\n");
}

/* ---- materials ---- */

void write_material(TextOut *out, int index)
{
    const Material *m = index_to_material(index);
    text_out_string(out, "#declare VESK_Finish_");
    text_out_int(out, index);
    text_out_string(out, " = finish {\n  ambient rgb ");
    put_vector(out, m->ambient);
    text_out_string(out, "\n  diffuse 0.8\n  emission rgb ");
    put_vector(out, m->emissive);
    double specular = std::min(1.0, std::max(0.0, average3(m->specular)));
    double shininess = std::min(128.0, std::max(1.0, (double)m->shininess));
    /* OpenGL's specular term is POV-Ray's phong highlight. */
    text_out_string(out, "\n  phong ");
    scene_put_number(out, specular);
    text_out_string(out, " phong_size ");
    scene_put_number(out, shininess);
    text_out_string(out, "\n}\n#declare VESK_Material_");
    text_out_int(out, index);
    text_out_string(out, " = texture {\n  pigment { rgbf <");
    scene_put_triple(out, m->rgb, ", ");
    text_out_string(out, ", ");
    scene_put_number(out, std::min(1.0f, std::max(0.0f, m->transparency)));
    text_out_string(out, "> }\n  finish { VESK_Finish_");
    text_out_int(out, index);
    text_out_string(out, " }\n}\n");
}

void write_materials(TextOut *out, const std::vector<Object *> &objects)
{
    std::vector<char> used(PALETTE_CAPACITY, 0);
    for (Object *o : objects) {
        for (List *l = o->surfaces; l; l = l->next) used[scene_material((Surface *)l->item)] = 1;
    }
    text_out_string(out, "// the palette's materials used by the model\n");
    for (int i = 0; i < PALETTE_CAPACITY; i++) {
        if (used[i]) write_material(out, i);
    }
    text_out_char(out, '\n');
}

/* The image_map keyword for a texture file POV-Ray can read, or null. */
const char *image_map_type(const char *filename)
{
    static const char *const types[][2] = {
        {".png", "png"}, {".jpg", "jpeg"}, {".jpeg", "jpeg"}, {".gif", "gif"}, {".bmp", "bmp"},
        {".tga", "tga"}, {".ppm", "ppm"},  {".pgm", "pgm"},   {".tif", "tiff"}, {".tiff", "tiff"},
    };
    const char *dot = filename ? strrchr(filename, '.') : nullptr;
    if (!dot) return nullptr;
    for (const auto &t : types) {
        if (strcasecmp(dot, t[0]) == 0) return t[1];
    }
    return nullptr;
}

/* The object's texture when POV-Ray can read it: a known image type of a
 * file that is there.  A missing image would stop the render. */
const char *usable_texture(Object *o, const char **type)
{
    if (!o->texture) return nullptr;
    const char *name = texture_id_to_name(o->texture);
    *type = image_map_type(name);
    FILE *f = *type ? fopen(name, "rb") : nullptr;
    if (!f) return nullptr;
    fclose(f);
    return name;
}

/* ---- objects ---- */

struct MeshPlan {
    VrmlObjectLists lists;
    SceneTriangles t;
    std::vector<int> materials;          /* texture_list entries: palette indices */
    std::map<int, int> material_slot;    /* palette index -> entry */
    int smooth = 0;
};

int is_smooth(const Surface *s) { return s->shading != 0; }


void write_vertex_vectors(TextOut *out, const MeshPlan &p)
{
    text_out_string(out, "  vertex_vectors {\n    ");
    text_out_int(out, (long long)p.lists.vertices.size());
    for (Vertex *v : p.lists.vertices) {
        text_out_string(out, ",\n    ");
        put_vector(out, v->point);
    }
    text_out_string(out, "\n  }\n");
}

/* A usable normal: finite and not zero, else the fallback. */
void pick_normal(const float *n, const float *fallback, float *out)
{
    double length = std::sqrt((double)n[0] * n[0] + (double)n[1] * n[1] + (double)n[2] * n[2]);
    const float *use = std::isfinite(length) && length > 1e-12 ? n : fallback;
    for (int i = 0; i < 3; i++) out[i] = use[i];
    double l2 = std::sqrt((double)out[0] * out[0] + (double)out[1] * out[1] + (double)out[2] * out[2]);
    if (!std::isfinite(l2) || l2 <= 1e-12) {
        out[0] = out[2] = 0.0f;
        out[1] = 1.0f;
    }
}

/* Smooth triangles take their vertices' normals (numbered as the
 * vertices), flat ones their surface's normal (numbered after them). */
void write_normals(TextOut *out, const MeshPlan &p)
{
    const float up[3] = {0, 1, 0};
    size_t flat = 0;
    for (const SceneTriangle &t : p.t.triangles) flat += !is_smooth(t.surface);
    text_out_string(out, "  normal_vectors {\n    ");
    text_out_int(out, (long long)(p.lists.vertices.size() + flat));
    float n[3];
    for (Vertex *v : p.lists.vertices) {
        text_out_string(out, ",\n    ");
        pick_normal(v->normal, up, n);
        put_vector(out, n);
    }
    for (const SceneTriangle &t : p.t.triangles) {
        if (is_smooth(t.surface)) continue;
        text_out_string(out, ",\n    ");
        pick_normal(t.surface->normal, up, n);
        put_vector(out, n);
    }
    text_out_string(out, "\n  }\n");
}

void write_uv_vectors(TextOut *out, const MeshPlan &p)
{
    Object *o = p.lists.object;
    text_out_string(out, "  uv_vectors {\n    ");
    text_out_int(out, (long long)p.t.triangles.size() * 3);
    for (const SceneTriangle &t : p.t.triangles) {
        for (SVertex *ref : t.ref) {
            text_out_string(out, ",\n    <");
            scene_put_number(out, (double)ref->u * o->texture_repeat_x);
            text_out_string(out, ", ");
            scene_put_number(out, (double)ref->v * o->texture_repeat_y);
            text_out_char(out, '>');
        }
    }
    text_out_string(out, "\n  }\n");
}

void write_texture_list(TextOut *out, const MeshPlan &p, const char *image, const char *type)
{
    text_out_string(out, "  texture_list {\n    ");
    text_out_int(out, (long long)p.materials.size());
    for (int m : p.materials) {
        text_out_string(out, ",\n    ");
        if (!image) {
            text_out_string(out, "texture { VESK_Material_");
            text_out_int(out, m);
            text_out_string(out, " }");
            continue;
        }
        text_out_string(out, "texture { uv_mapping pigment { image_map { ");
        text_out_string(out, type);
        text_out_char(out, ' ');
        scene_put_quoted(out, image);
        text_out_string(out, " interpolate 2 } } finish { VESK_Finish_");
        text_out_int(out, m);
        text_out_string(out, " } }");
    }
    text_out_string(out, "\n  }\n");
}

void put_index_triple(TextOut *out, long a, long b, long c)
{
    text_out_char(out, '<');
    text_out_int(out, a);
    text_out_string(out, ", ");
    text_out_int(out, b);
    text_out_string(out, ", ");
    text_out_int(out, c);
    text_out_char(out, '>');
}

void write_indices(TextOut *out, const MeshPlan &p, int with_uv)
{
    const std::vector<SceneTriangle> &tris = p.t.triangles;
    text_out_string(out, "  face_indices {\n    ");
    text_out_int(out, (long long)tris.size());
    for (const SceneTriangle &t : tris) {
        text_out_string(out, ",\n    ");
        put_index_triple(out, (long)t.ref[0]->vertex->mark, (long)t.ref[1]->vertex->mark, (long)t.ref[2]->vertex->mark);
        text_out_string(out, ", ");
        text_out_int(out, p.material_slot.at(scene_material(t.surface)));
    }
    text_out_string(out, "\n  }\n");
    if (p.smooth) {
        text_out_string(out, "  normal_indices {\n    ");
        text_out_int(out, (long long)tris.size());
        long flat = (long)p.lists.vertices.size();
        for (const SceneTriangle &t : tris) {
            text_out_string(out, ",\n    ");
            if (is_smooth(t.surface)) {
                put_index_triple(out, (long)t.ref[0]->vertex->mark, (long)t.ref[1]->vertex->mark,
                                 (long)t.ref[2]->vertex->mark);
            } else {
                put_index_triple(out, flat, flat, flat);
                flat++;
            }
        }
        text_out_string(out, "\n  }\n");
    }
    if (with_uv) {
        text_out_string(out, "  uv_indices {\n    ");
        text_out_int(out, (long long)tris.size());
        for (size_t i = 0; i < tris.size(); i++) {
            text_out_string(out, ",\n    ");
            put_index_triple(out, (long)(3 * i), (long)(3 * i + 1), (long)(3 * i + 2));
        }
        text_out_string(out, "\n  }\n");
    }
}

void write_mesh(TextOut *out, MeshPlan &p)
{
    for (const SceneTriangle &t : p.t.triangles) {
        int m = scene_material(t.surface);
        if (!p.material_slot.count(m)) {
            p.material_slot[m] = (int)p.materials.size();
            p.materials.push_back(m);
        }
        p.smooth |= is_smooth(t.surface);
    }
    const char *type = nullptr;
    const char *image = usable_texture(p.lists.object, &type);
    if (p.lists.object->texture && !image) {
        const char *name = texture_id_to_name(p.lists.object->texture);
        text_out_string(out, "// texture ");
        scene_put_one_line(out, name ? name : "(no image)");
        text_out_string(out, " left out: POV-Ray can't read it or it is not there\n");
        scene_notes.textures_skipped++;
    }
    text_out_string(out, "mesh2 {\n");
    write_vertex_vectors(out, p);
    if (p.smooth) write_normals(out, p);
    if (image) write_uv_vectors(out, p);
    write_texture_list(out, p, image, type);
    write_indices(out, p, image != nullptr);
    text_out_string(out, "}\n");
}

/* The line surfaces as cylinders of a radius fitting the model's size;
 * segments of zero length are left out (POV-Ray refuses them). */
void write_lines(TextOut *out, const VrmlObjectLists &lists, double radius)
{
    struct Segment {
        const float *a, *b;
        int mat;
    };
    std::vector<Segment> segments;
    std::vector<SVertex *> refs;
    for (Surface *s : lists.lines) {
        scene_surface_refs(&lists, s, &refs);
        size_t n = refs.size();
        size_t count = s->surface_kind == SURFACE_CLOSED_LINE && n > 2 ? n : (n ? n - 1 : 0);
        for (size_t i = 0; i < count; i++) {
            const float *a = refs[i]->vertex->point, *b = refs[(i + 1) % n]->vertex->point;
            if (a[0] == b[0] && a[1] == b[1] && a[2] == b[2]) continue;
            segments.push_back(Segment{a, b, scene_material(s)});
        }
    }
    if (segments.empty()) return;
    if (segments.size() > 1) text_out_string(out, "union {\n");
    for (const Segment &g : segments) {
        text_out_string(out, "  cylinder { ");
        put_vector(out, g.a);
        text_out_string(out, ", ");
        put_vector(out, g.b);
        text_out_string(out, ", ");
        scene_put_number(out, radius);
        text_out_string(out, " texture { VESK_Material_");
        text_out_int(out, g.mat);
        text_out_string(out, " } }\n");
    }
    if (segments.size() > 1) text_out_string(out, "}\n");
}

/* The object's data text: as POV-Ray input when the preference says so,
 * else (by the other preference) as comment lines. */
void write_object_data(TextOut *out, Object *o)
{
    if (!o->data || !o->data[0]) return;
    if (prefs.pov_use_object_data) {
        text_out_string(out, "// the object's data text, included as it stands\n");
        text_out_string(out, o->data);
        text_out_char(out, '\n');
        return;
    }
    if (!prefs.pov_object_data) return;
    text_out_string(out, "// the object's data text:\n// ");
    for (const char *p = o->data; *p; p++) {
        if (*p == '\n') {
            text_out_string(out, "\n// ");
        } else if (*p != '\r') {
            text_out_char(out, *p);
        }
    }
    text_out_char(out, '\n');
}

void write_object(TextOut *out, Object *o, const PovScene &scene)
{
    MeshPlan p;
    vrml_lists_make(&p.lists, o);
    text_out_string(out, "// object");
    if (o->name && o->name[0]) {
        text_out_string(out, " \"");
        scene_put_one_line(out, o->name);
        text_out_char(out, '"');
    }
    text_out_char(out, '\n');
    scene_triangulate(&p.lists, &p.t);
    scene_notes.polygons_skipped += p.t.skipped;
    if (!p.t.triangles.empty()) write_mesh(out, p);
    scene_triangles_clear(&p.t);
    write_lines(out, p.lists, std::max(1e-4, scene.size * 0.002));
    write_object_data(out, o);
    text_out_char(out, '\n');
}

void write_body(TextOut *out, void *)
{
    PovScene scene;
    scene_camera(&scene.camera);
    scene.has_extent = scene_extent(scene.min, scene.max);
    scene.size = 1.0;
    if (scene.has_extent) {
        double d[3];
        for (int i = 0; i < 3; i++) d[i] = (double)scene.max[i] - scene.min[i];
        double size = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        if (std::isfinite(size) && size > 0) scene.size = size;
    }
    std::vector<Object *> objects;
    scene_objects(&objects);
    write_header(out);
    write_camera(out, scene.camera);
    write_lights(out, scene);
    write_materials(out, objects);
    for (Object *o : objects) {
        if (!object_is_light(o)) write_object(out, o, scene);
    }
}

} // namespace

int write_pov_file(const char *filename)
{
    scene_notes = SceneNotes{0, 0, 0};
    return scene_write_file(filename, "POV-Ray", write_body, nullptr);
}
