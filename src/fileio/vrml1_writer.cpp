/*
 * fileio/vrml1_writer.cpp - the VRML 1.0 and Inventor 2.1 exporter (one
 * writer, two header lines): the lights, the whole palette as one
 * Material node bound per face by index, and each object as a Separator
 * nested in its parent's, its polygons as an IndexedFaceSet and its lines
 * as an IndexedLineSet whose faces and lines index the palette.
 *
 * One closing brace ends an object's shapes.  An object with both
 * polygons and lines therefore leaves its IndexedFaceSet open, and one
 * with vertices but no surfaces closes its Separator early; files read by
 * other programs have always had this layout, so it is kept.
 */
#include "fileio/vrml_writer.h"
#include "app/prefs.h"
#include "core/lights.h"
#include "fileio/vrml_lists.h"

static void write_light(FILE *file, Object *light)
{
    fputs("PointLight\n{\non TRUE\n", file);
    fputs("intensity 1\n", file);
    fputs("color 1 1 1\n", file);
    fprintf(file, "location %g %g %g\n", light->centre[0], light->centre[1], light->centre[2]);
    fputs("}\n\n", file);
}

static void write_colour_list(FILE *file, const char *opening, size_t offset)
{
    fputs(opening, file);
    for (int i = 0; i < num_palette; i++) {
        const float *c = (const float *)((const char *)index_to_material(i) + offset);
        if (i) fputs(",", file);
        fprintf(file, "%g %g %g", c[0], c[1], c[2]);
    }
    fputs("]\n", file);
}

static void write_palette(FILE *file)
{
    fputs("Material {\n", file);
    write_colour_list(file, "diffuseColor [", offsetof(Material, rgb));
    write_colour_list(file, "ambientColor [", offsetof(Material, ambient));
    write_colour_list(file, "specularColor [", offsetof(Material, specular));
    write_colour_list(file, "emissiveColor [", offsetof(Material, emissive));
    fputs("shininess [", file);
    for (int i = 0; i < num_palette; i++) {
        if (i) fputs(",", file);
        fprintf(file, "%g", index_to_material(i)->shininess * 0.0078125f);
    }
    fputs("]\n", file);
    fputs("transparency [", file);
    for (int i = 0; i < num_palette; i++) {
        if (i) fputs(",", file);
        fprintf(file, "%g", index_to_material(i)->transparency);
    }
    fputs("]\n", file);
    fputs("}\n", file);
    fputs("MaterialBinding {value PER_FACE_INDEXED }\n", file);
}

static void write_material_index(FILE *file, const std::vector<Surface *> &surfaces)
{
    debugf("outputing VRML materialIndex\n");
    fputs("\n    materialIndex [ ", file);
    for (size_t i = 0; i < surfaces.size(); i++) {
        if (i) fputs(", ", file);
        fprintf(file, "%d", surfaces[i]->mat);
    }
    fputs("]\n", file);
}

static void write_faces(FILE *file, const VrmlObjectLists *lists, const char *texture)
{
    Object *o = lists->object;
    int normals = prefs.vrml_output_normals;
    if (texture) {
        debugf("outputing VRML TextureCoordinate2\n");
        fputs("\nTextureCoordinate2 {", file);
        fputs("\n    point [ \n", file);
        vrml_write_texture_points(file, lists->polygons, o->texture_repeat_x, o->texture_repeat_y);
        fputs("\n]\n}\n", file);
    }
    if (normals) {
        debugf("outputing VRML Normal\n");
        fputs("\nNormalBinding { value PER_VERTEX_INDEXED }\n", file);
        fputs("\nNormal {", file);
        fputs("\n    vector [ \n", file);
        int n = vrml_write_normals(file, lists->polygons);
        fputs("\n]\n}\n", file);
        debugf("number of normals output = %d\n", n);
        debugf("number of vertices in list of polys was %ld\n", vrml_count_references(lists->polygons));
    }
    debugf("outputing VRML IndexedFaceSet\n");
    fputs("IndexedFaceSet {\n ", file);
    vrml_write_coord_index(file, lists, lists->polygons, "\n    coordIndex [ ", "]");
    if (normals) {
        debugf("outputing VRML normalIndex\n");
        int n = vrml_write_running_index(file, lists->polygons, "\n    normalIndex [ ", "]\n");
        debugf("normal indices output = %d\n", n);
    }
    if (texture) {
        debugf("outputing VRML textureCoordIndex\n");
        vrml_write_running_index(file, lists->polygons, "\n    textureCoordIndex [ ", "]\n");
    }
    write_material_index(file, lists->polygons);
}

static void write_lines(FILE *file, const VrmlObjectLists *lists)
{
    debugf("outputing VRML IndexedLineSe\n");
    fputs("IndexedLineSet {\n ", file);
    vrml_write_coord_index(file, lists, lists->lines, "\n    coordIndex [ ", "]");
    write_material_index(file, lists->lines);
}

/* The object's own part: comment, anchor, Separator and its shapes. */
static void write_object_start(FILE *file, Object *o, VrmlObjectLists *lists)
{
    if (vrml_text_present(o->name)) fprintf(file, "# Object %s\n", o->name);
    if (vrml_text_present(o->url)) fprintf(file, "WWWAnchor { name \"%s\" description \"\"  map NONE\n", o->url);
    fputs("Separator {\n", file);
    if (!o->num_vert) return;
    vrml_lists_make(lists, o);
    if (!lists->polygons.empty() && !lists->lines.empty()) export_notes.mixed_objects++;
    fputs("Coordinate3 { \npoint [\n", file);
    vrml_write_points(file, lists);
    fputs("]\n}\n", file);
    const char *texture = vrml_texture_name(o, prefs.vrml_output_textures);
    if (texture) fprintf(file, "Texture2 { filename \"file://%s\" }\n\n", texture);
    if (!lists->polygons.empty()) write_faces(file, lists, texture);
    if (!lists->lines.empty()) write_lines(file, lists);
    fputs("}\n", file);
}

/* An object with its children inside its Separator.  An explicit stack:
 * trees may be deeper than the C stack. */
static void write_tree(FILE *file, Object *root)
{
    struct Step {
        Object *object;
        bool close;
    };
    std::vector<Step> stack(1, Step{root, false});
    VrmlObjectLists lists;
    std::vector<Object *> kids;
    while (!stack.empty()) {
        Step step = stack.back();
        stack.pop_back();
        Object *o = step.object;
        if (step.close) {
            fputs("}\n", file);
            if (vrml_text_present(o->url)) fputs("}\n", file);
            continue;
        }
        write_object_start(file, o, &lists);
        stack.push_back(Step{o, true});
        kids.clear();
        for (List *k = o->kids; k; k = k->next) kids.push_back((Object *)k->item);
        for (size_t i = kids.size(); i-- > 0;) stack.push_back(Step{kids[i], false});
    }
}

static void write_body(FILE *file, void *data)
{
    int inventor = *(int *)data;
    fputs(inventor ? "#Inventor V2.1 ascii\n\n" : "#VRML V1.0 ascii\n\n", file);
    fputs("Separator {\n", file);
    fputs("ShapeHints {\nvertexOrdering  COUNTERCLOCKWISE\n}\n\n", file);
    fputs("\n", file);
    for (List *l = scan_lights(); l; l = l->next) write_light(file, (Object *)l->item);
    write_palette(file);
    for (List *k = world ? world->kids : nullptr; k; k = k->next) write_tree(file, (Object *)k->item);
    fputs("}\n", file);
}

int write_vrml1_or_inventor(const char *filename, int inventor)
{
    export_notes = ExportNotes{0, 0, 0};
    return vrml_write_file(filename, write_body, &inventor);
}

int write_vrml1(const char *filename)
{
    return write_vrml1_or_inventor(filename, 0);
}

int write_inventor(const char *filename)
{
    return write_vrml1_or_inventor(filename, 1);
}
