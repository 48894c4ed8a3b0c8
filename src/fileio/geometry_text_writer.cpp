/*
 * fileio/geometry_text_writer.cpp - the MASSIVE and DVS exporters.  No
 * usable public description of either program's geometry files could be
 * had, so both write one plain, self-describing text that keeps what the
 * model has, headed by the format's name ("VESK-MASSIVE 1", "VESK-DVS 1")
 * so that nobody mistakes it for the original.  Layout, one record per
 * line, "#" starting a comment line:
 *
 *   VESK-MASSIVE 1
 *   materials <count>
 *   material <index> diffuse r g b ambient r g b specular r g b
 *            emissive r g b shininess s transparency t      (one line)
 *   objects <count>
 *   object <number> parent <number, -1 for the world> name "<text>"
 *          vertices <V> polygons <P> lines <L> texture "<file or empty>"
 *   v x y z                                  (V lines, numbered from 0)
 *   p <material> <n> i1 .. in uv u1 v1 .. un vn   (P lines)
 *   l <material> open|closed <n> i1 .. in         (L lines)
 *   ... more objects ...
 *   end
 *
 * Objects come parents first; vertices are in model coordinates; texture
 * coordinates are as stored (the object's repeats are not applied).
 * Lights are objects with no geometry.
 */
#include "fileio/scene_writers.h"
#include "fileio/scene_out.h"
#include "texture/texture_table.h"

#include <unordered_map>

namespace {

void put_colour(TextOut *out, const char *key, const float *rgb)
{
    text_out_char(out, ' ');
    text_out_string(out, key);
    text_out_char(out, ' ');
    scene_put_triple(out, rgb, " ");
}

void write_materials(TextOut *out, const std::vector<Object *> &objects)
{
    std::vector<char> used(PALETTE_CAPACITY, 0);
    int count = 0;
    for (Object *o : objects) {
        for (List *l = o->surfaces; l; l = l->next) {
            char &u = used[scene_material((Surface *)l->item)];
            count += !u;
            u = 1;
        }
    }
    text_out_string(out, "materials ");
    text_out_int(out, count);
    text_out_char(out, '\n');
    for (int i = 0; i < PALETTE_CAPACITY; i++) {
        if (!used[i]) continue;
        const Material *m = index_to_material(i);
        text_out_string(out, "material ");
        text_out_int(out, i);
        put_colour(out, "diffuse", m->rgb);
        put_colour(out, "ambient", m->ambient);
        put_colour(out, "specular", m->specular);
        put_colour(out, "emissive", m->emissive);
        text_out_string(out, " shininess ");
        scene_put_number(out, m->shininess);
        text_out_string(out, " transparency ");
        scene_put_number(out, m->transparency);
        text_out_char(out, '\n');
    }
}

void write_object(TextOut *out, Object *o, long number, long parent)
{
    VrmlObjectLists lists;
    vrml_lists_make(&lists, o);
    std::vector<std::vector<SVertex *>> polygons, lines;
    std::vector<Surface *> polygon_of, line_of;
    std::vector<SVertex *> refs;
    for (Surface *s : lists.polygons) {
        scene_surface_refs(&lists, s, &refs);
        if (refs.size() < 3) {
            scene_notes.polygons_skipped++;
            continue;
        }
        polygons.push_back(refs);
        polygon_of.push_back(s);
    }
    for (Surface *s : lists.lines) {
        scene_surface_refs(&lists, s, &refs);
        if (refs.size() < 2) {
            scene_notes.lines_skipped++;
            continue;
        }
        lines.push_back(refs);
        line_of.push_back(s);
    }
    const char *texture = o->texture ? texture_id_to_name(o->texture) : nullptr;
    text_out_string(out, "object ");
    text_out_int(out, number);
    text_out_string(out, " parent ");
    text_out_int(out, parent);
    text_out_string(out, " name ");
    scene_put_quoted(out, o->name);
    text_out_string(out, " vertices ");
    text_out_int(out, (long long)lists.vertices.size());
    text_out_string(out, " polygons ");
    text_out_int(out, (long long)polygons.size());
    text_out_string(out, " lines ");
    text_out_int(out, (long long)lines.size());
    text_out_string(out, " texture ");
    scene_put_quoted(out, texture);
    text_out_char(out, '\n');
    for (Vertex *v : lists.vertices) {
        text_out_string(out, "v ");
        scene_put_triple(out, v->point, " ");
        text_out_char(out, '\n');
    }
    for (size_t i = 0; i < polygons.size(); i++) {
        text_out_string(out, "p ");
        text_out_int(out, scene_material(polygon_of[i]));
        text_out_char(out, ' ');
        text_out_int(out, (long long)polygons[i].size());
        for (SVertex *r : polygons[i]) {
            text_out_char(out, ' ');
            text_out_int(out, (long long)r->vertex->mark);
        }
        text_out_string(out, " uv");
        for (SVertex *r : polygons[i]) {
            text_out_char(out, ' ');
            scene_put_number(out, r->u);
            text_out_char(out, ' ');
            scene_put_number(out, r->v);
        }
        text_out_char(out, '\n');
    }
    for (size_t i = 0; i < lines.size(); i++) {
        text_out_string(out, "l ");
        text_out_int(out, scene_material(line_of[i]));
        text_out_string(out, line_of[i]->surface_kind == SURFACE_CLOSED_LINE ? " closed " : " open ");
        text_out_int(out, (long long)lines[i].size());
        for (SVertex *r : lines[i]) {
            text_out_char(out, ' ');
            text_out_int(out, (long long)r->vertex->mark);
        }
        text_out_char(out, '\n');
    }
}

void write_body(TextOut *out, void *data)
{
    const char *format = (const char *)data;
    text_out_string(out, "VESK-");
    text_out_string(out, format);
    text_out_string(out, " 1\n# ");
    text_out_string(out, format);
    text_out_string(out, " geometry text written by VESK; the layout is described in its README\n");
    std::vector<Object *> objects;
    scene_objects(&objects);
    write_materials(out, objects);
    text_out_string(out, "objects ");
    text_out_int(out, (long long)objects.size());
    text_out_char(out, '\n');
    std::unordered_map<Object *, long> numbers;
    for (size_t i = 0; i < objects.size(); i++) {
        Object *o = objects[i];
        numbers[o] = (long)i;
        auto parent = numbers.find(o->parent);
        write_object(out, o, (long)i, parent == numbers.end() ? -1 : parent->second);
    }
    text_out_string(out, "end\n");
}

} // namespace

int write_massive_file(const char *filename)
{
    scene_notes = SceneNotes{0, 0, 0};
    return scene_write_file(filename, "MASSIVE", write_body, (void *)"MASSIVE");
}

int write_dvs_file(const char *filename)
{
    scene_notes = SceneNotes{0, 0, 0};
    return scene_write_file(filename, "DVS", write_body, (void *)"DVS");
}
