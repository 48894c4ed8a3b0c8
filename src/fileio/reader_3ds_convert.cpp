/*
 * fileio/reader_3ds_convert.cpp - turning the raw 3DS records into the
 * model: one object named "rawobj" per mesh, polygons wound c, b, a (the
 * reverse of the file's), materials through the palette by colour, and
 * the file reader that parses a file and converts it.
 */
#include "core/internal.h"
#include "edit/primitive_append.h"
#include "edit/selection.h"
#include "fileio/reader_3ds.h"
#include "texture/texture_table.h"
#include "view/redraw.h"

#include <sys/stat.h>

static std::vector<int> palette_indices(const Raw3dsModel *model)
{
    std::vector<int> indices;
    for (const Raw3dsMaterial &m : model->materials) {
        indices.push_back(rgb_to_index((long)m.rgb[0] << 16 | (long)m.rgb[1] << 8 | (long)m.rgb[2]));
    }
    return indices;
}

/* The texture of the first face whose material names one, when that
 * file stands beside the model. */
static int object_texture(const Raw3dsObject &raw, const Raw3dsModel *model, const char *directory)
{
    if (!directory) return 0;
    for (int i = 0; i < raw.num_faces; i++) {
        int m = raw.faces[i].material;
        if (m < 0 || model->materials[m].texture.empty()) continue;
        std::string path = std::string(directory) + "/" + model->materials[m].texture;
        struct stat st;
        if (stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return 0;
        return texture_register_name(path.c_str());
    }
    return 0;
}

static Object *convert_object(const Raw3dsObject &raw, const std::vector<int> &palette)
{
    Object *o = new_object(OBJECT_NORMAL);
    object_set_name(o, "rawobj");
    ObjectAppender append;
    appender_start(&append, o);
    std::vector<Vertex *> vertices((size_t)raw.num_vertices);
    for (int i = 0; i < raw.num_vertices; i++) {
        const float *p = &raw.vertices[(size_t)i * 3];
        vertices[i] = appender_new_vertex(&append, p[0], p[1], p[2]);
    }
    for (int i = 0; i < raw.num_faces; i++) {
        const Raw3dsFace &f = raw.faces[i];
        Surface *s = new_surface();
        if (f.material != -1) s->mat = (uint16_t)palette[f.material];
        RefAppender refs = ref_appender_start(s);
        for (uint16_t index : {f.c, f.b, f.a}) {
            if (index >= raw.num_vertices) continue;   /* names no vertex */
            float u = 0, v = 0;
            if (index < raw.num_texture_points) {
                u = raw.texture_points[(size_t)index * 2];
                v = raw.texture_points[(size_t)index * 2 + 1];
            }
            ref_append(&refs, vertices[index], u, v);
        }
        appender_add_surface(&append, s);
    }
    return o;
}

static int convert_objects(const Raw3dsModel *model, const char *directory)
{
    std::vector<int> palette = palette_indices(model);
    clear_selection();
    int made = 0;
    List *made_list = nullptr, *tail = nullptr;
    /* The world's last child, found once: files may hold many meshes. */
    List *world_tail = world->kids ? list_end(world->kids) : nullptr;
    for (const Raw3dsObject &raw : model->objects) {
        Object *o = convert_object(raw, palette);
        o->texture = (uint8_t)object_texture(raw, model, directory);
        object_calc_normals_force(o);
        world_tail = list_add_item_fast(&world->kids, world_tail, o);
        o->parent = world;
        world->num_kids++;
        tail = list_add_item_fast(&made_list, tail, o);
        made++;
    }
    /* Selected together: the selection box is found once. */
    select_objectlist(made_list);
    list_free(&made_list);
    return made;
}

/* About what the model records of the raw records take, so that the
 * allocator can fault that memory in ahead of the conversion. */
static size_t expected_bytes(const Raw3dsModel *model)
{
    size_t bytes = 0;
    for (const Raw3dsObject &raw : model->objects) bytes += (size_t)raw.num_vertices * 80 + (size_t)raw.num_faces * 200;
    return bytes;
}

int convert_3ds(const Raw3dsModel *model, const char *directory)
{
    memory_prefault_begin(expected_bytes(model));
    int made = convert_objects(model, directory);
    memory_prefault_end();
    return made;
}

/* The directory part of a file name ("." when it has none). */
static std::string directory_of(const char *filename)
{
    std::string name(filename);
    size_t slash = name.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : name.substr(0, slash);
}

int import_3ds_file(const char *filename)
{
    FILE *file = filename && *filename ? fopen(filename, "rb") : nullptr;
    if (!file) {
        fprintf(stderr, "Failed to open %s\n", filename ? filename : "");
        return 1;
    }
    long size = -1;
    if (fseek(file, 0, SEEK_END) == 0) size = ftell(file);
    if (size < 0) {
        fprintf(stderr, "Error seeking %s\n", filename);
        fclose(file);
        return 1;
    }
    rewind(file);
    debugf("3ds file size is %d bytes\n", (int)size);
    Source3ds source;
    source_3ds_file(&source, file, size);
    Raw3dsModel model;
    if (!parse_3ds(&source, &model)) {
        fprintf(stderr, "Failed to load %s\n", filename);
        fclose(file);
        return 1;
    }
    fclose(file);
    console_printf("3DS file parsed - converting\n");
    convert_3ds(&model, directory_of(filename).c_str());
    fit_selected_all();
    return 0;
}

int import_3ds_memory(const unsigned char *data, long size)
{
    Source3ds source;
    source_3ds_memory(&source, data, size);
    Raw3dsModel model;
    if (!parse_3ds(&source, &model)) return 1;
    console_printf("3DS file parsed - converting\n");
    convert_3ds(&model, nullptr);
    return 0;
}
