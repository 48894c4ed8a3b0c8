/*
 * fileio/vrml2_writer.cpp - the VRML 2.0 exporter: one Group holding the
 * lights as white point lights and every object's polygons as a Shape
 * with an IndexedFaceSet, objects with a url inside an Anchor.  Lines and
 * closed lines have no place in this output and are left out; children
 * follow their parent at the same level, without transforms.
 */
#include "fileio/vrml_writer.h"
#include "app/prefs.h"
#include "core/lights.h"
#include "fileio/vrml_lists.h"

static void write_light(FILE *file, Object *light)
{
    fprintf(file, "# Light %s\n", light->name ? light->name : "");
    fputs("Transform {\n", file);
    fprintf(file, "\ttranslation %g %g %g\n", light->centre[0], light->centre[1], light->centre[2]);
    fputs("\tchildren [\n", file);
    fputs("\t\tPointLight\n\t\t{\n\t\ton TRUE\n", file);
    fputs("\t\tintensity 1\n", file);
    fputs("\t\tcolor 1 1 1\n", file);
    fputs("\t\t}\n", file);
    fputs("\t\t]\n", file);
    fputs("}\n\n", file);
}

static void write_normals(FILE *file, const VrmlObjectLists *lists)
{
    debugf("outputing VRML Normals\n");
    fputs("\nnormal Normal {", file);
    fputs("\n    vector [ \n", file);
    int n = vrml_write_normals(file, lists->polygons);
    fputs("\n]\n}\n", file);
    debugf("number of normals output = %d\n", n);
    debugf("number of vertices in list of polys was %ld\n", vrml_count_references(lists->polygons));
    debugf("outputing VRML normalIndex\n");
    n = vrml_write_running_index(file, lists->polygons, "\n    normalIndex [ ", "]\n");
    debugf("normal indices output = %d\n", n);
}

static void write_texture_coordinates(FILE *file, const VrmlObjectLists *lists)
{
    debugf("outputing VRML TextureCoordinate\n");
    fputs("\n texCoord TextureCoordinate {", file);
    fputs("\n    point [ \n", file);
    /* The repeats are carried by the TextureTransform. */
    vrml_write_texture_points(file, lists->polygons, 1.0f, 1.0f);
    fputs("\n]\n}\n", file);
    debugf("outputing VRML textureCoordIndex\n");
    vrml_write_running_index(file, lists->polygons, "\n    texCoordIndex [ ", "]\n");
}

static void write_colours(FILE *file, const VrmlObjectLists *lists)
{
    debugf("outputing VRML colour\n");
    fputs("\n    color Color { ", file);
    fputs("\n    color [ ", file);
    for (size_t i = 0; i < lists->polygons.size(); i++) {
        const float *rgb = index_to_material(lists->polygons[i]->mat)->rgb;
        if (i) fputs(",\n", file);
        fprintf(file, "%g %g %g", rgb[0], rgb[1], rgb[2]);
    }
    fputs("]\n", file);
    fputs("}\n", file);
    fputs("colorPerVertex FALSE\n", file);
}

static void write_shape(FILE *file, const VrmlObjectLists *lists)
{
    Object *o = lists->object;
    int normals = prefs.vrml_output_normals;
    const char *texture = vrml_texture_name(o, prefs.vrml_output_textures);
    fputs("Shape {\n", file);
    fputs("appearance Appearance { \n", file);
    if (texture) fprintf(file, "texture ImageTexture { url \"file://%s\" }\n", texture);
    if (o->texture_repeat_x != 1.0f || o->texture_repeat_y != 1.0f) {
        fprintf(file, "textureTransform TextureTransform { scale %f %f } \n", o->texture_repeat_x,
                o->texture_repeat_y);
    }
    fputs(" material Material {  }\n", file);
    fputs(" }\n", file);
    debugf("outputing VRML IndexedFaceSet\n");
    fputs("geometry IndexedFaceSet {\n", file);
    fputs("solid FALSE\n", file);
    fputs("creaseAngle 0.5\n", file);
    if (normals) fputs("\nnormalPerVertex TRUE\n", file);
    fputs("coord Coordinate { \npoint [\n", file);
    vrml_write_points(file, lists);
    fputs("]\n}\n", file);
    vrml_write_coord_index(file, lists, lists->polygons, "\n    coordIndex [ ", "]");
    if (normals) write_normals(file, lists);
    if (texture) write_texture_coordinates(file, lists);
    write_colours(file, lists);
    fputs("}\n", file);
    fputs("}\n", file);
}

/* An object and, after it at the same level, its children.  An explicit
 * stack: trees may be deeper than the C stack.  A url's Anchor closes
 * after the object's whole subtree. */
static void write_tree(FILE *file, Object *root)
{
    struct Step {
        Object *object;
        bool close_anchor;
    };
    std::vector<Step> stack(1, Step{root, false});
    VrmlObjectLists lists;
    while (!stack.empty()) {
        Step step = stack.back();
        stack.pop_back();
        if (step.close_anchor) {
            fputs("]}\n", file);
            continue;
        }
        Object *o = step.object;
        if (vrml_text_present(o->url)) {
            fprintf(file, "Anchor { url \"%s\"\nchildren [\n", o->url);
            stack.push_back(Step{o, true});
        }
        if (vrml_text_present(o->name)) fprintf(file, "# Object \"%s\" \n", o->name);
        vrml_lists_make(&lists, o);
        export_notes.line_surfaces_left_out += (long)lists.lines.size();
        if (!lists.polygons.empty()) write_shape(file, &lists);
        std::vector<Object *> kids;
        for (List *k = o->kids; k; k = k->next) kids.push_back((Object *)k->item);
        for (size_t i = kids.size(); i-- > 0;) stack.push_back(Step{kids[i], false});
    }
}

static void write_body(FILE *file, void *)
{
    fputs("#VRML V2.0 utf8\n\n", file);
    fputs("Group {\n", file);
    fputs("children [\n", file);
    for (List *l = scan_lights(); l; l = l->next) write_light(file, (Object *)l->item);
    for (List *k = world ? world->kids : nullptr; k; k = k->next) {
        Object *o = (Object *)k->item;
        if (!object_is_light(o)) write_tree(file, o);
    }
    fputs("]\n", file);
    fputs("}\n", file);
}

int write_vrml2(const char *filename)
{
    export_notes = ExportNotes{0, 0, 0};
    return vrml_write_file(filename, write_body, nullptr);
}
