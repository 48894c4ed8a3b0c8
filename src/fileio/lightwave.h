/*
 * fileio/lightwave.h - reading LightWave objects (LWOB and LWO2) and
 * scenes (LWSC).  An object file is first read into an LwModel (points,
 * polygons, texture coordinates and surface colours per layer, in
 * LightWave's own coordinates), which is then built into model objects
 * under a transformation; a scene builds each object file it loads that
 * way, placed by its first frame and parented as the scene says.
 *
 * LightWave's space is left-handed (x right, y up, z away from the
 * viewer of the front view) and its polygons run clockwise seen from
 * their front; the builder mirrors z and reverses each polygon so that
 * the model shows the same picture with faces facing the same way.
 */
#ifndef VESK_FILEIO_LIGHTWAVE_H
#define VESK_FILEIO_LIGHTWAVE_H

#include "vesk.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/* Files larger than this are refused. */
enum { LW_MAX_FILE_BYTES = 256 * 1024 * 1024 };
/* Layers one object file may have. */
enum { LW_MAX_LAYERS = 4096 };
/* Objects (object files and nulls) one scene may load. */
enum { LW_MAX_SCENE_ITEMS = 2000 };
/* The points one scene may place (an object loaded many times counts
 * each time). */
enum { LW_MAX_SCENE_POINTS = 20000000 };
/* The bytes of all object files one scene may read together. */
enum { LW_MAX_SCENE_BYTES = 512 * 1024 * 1024 };

/* The limit on one file in force: LW_MAX_FILE_BYTES unless lowered (the
 * fuzz target lowers it). */
extern long lw_file_limit;

/* The colour of polygons whose surface is unknown or has no colour. */
enum { LW_DEFAULT_COLOUR = 0xC8C8C8 };

struct LwPolygon {
    int kind;               /* SURFACE_POLYGON or SURFACE_LINE */
    int surface;            /* index into LwModel::surface_names, or -1 */
    uint32_t first, count;  /* the polygon's corners in LwLayer::corners */
};

struct LwLayer {
    int number = 0;                 /* as the file numbers it */
    int parent = -1;                /* a parent layer's number, or -1 */
    std::string name;
    float pivot[3] = {0, 0, 0};
    std::vector<float> points;      /* x, y, z per point */
    std::vector<float> point_uv;    /* u, v per point (first TXUV map) */
    std::vector<uint8_t> point_has_uv;
    std::vector<LwPolygon> polygons;
    std::vector<uint32_t> corners;  /* point indices, per polygon corner */
    std::vector<float> corner_uv;   /* u, v per corner, where overridden */
    std::vector<uint8_t> corner_has_uv;
    std::string uv_map;             /* the name of the texture map used */
    bool uv_map_chosen = false;
};

struct LwModel {
    bool lwo2 = false;
    std::vector<LwLayer> layers;
    std::vector<std::string> surface_names;   /* TAGS (LWO2) or SRFS (LWOB) */
    std::vector<long> surface_colours;        /* per name, or -1 for none */
    long polygons = 0;                        /* polygons and lines read */
    long skipped = 0;                         /* polygons of kinds not read */
};

/* Reads an LWOB or LWO2 file held in bytes[size].  Returns 1 with *model
 * filled, or 0 with *error saying why. */
int lw_parse_object(const uint8_t *bytes, size_t size, LwModel *model, std::string *error);

/* An affine transformation in LightWave's space: p' = m p + t (m row
 * major), with the rotation part alone (no scale) kept beside it. */
struct LwTransform {
    double m[9];
    double t[3];
    double r[9];
};

LwTransform lw_identity(void);

/* A colour waiting for its palette index until the whole import is known
 * to succeed. */
struct LwColouring {
    Surface *surface;
    long colour;
};

/* Builds the layers of a model (all of them, or only the one numbered
 * only_layer when that is not -1) as a new group named name holding one
 * object per layer (or a tree, as the layers' parents say), placed by the
 * transformation.  The colours are recorded, not yet put in the palette.
 * Returns null (nothing made) when no layer has a polygon or line. */
Object *lw_build_model(const LwModel &model, const char *name, const LwTransform &place, int only_layer,
                       std::vector<LwColouring> *colours);

/* Gives each recorded surface its palette index (adding palette entries
 * as needed). */
void lw_apply_colours(const std::vector<LwColouring> &colours);

/* Sets an object's centre and rotation from a placement in LightWave's
 * space and a point of the object's own space (its pivot). */
void lw_place_object(Object *object, const LwTransform &place, const float *pivot);

/* The surfaces of an object and all its descendants; *objects grows by
 * the number of those objects that have surfaces. */
long lw_count_surfaces(Object *object, long *objects);

struct LwResult {
    Object *root = nullptr;      /* detached; the caller attaches or frees it */
    long objects = 0;            /* objects made that hold polygons or lines */
    long polygons = 0;           /* polygons and lines made */
    long skipped = 0;            /* polygons of kinds not read */
    std::vector<std::string> warnings;   /* e.g. object files of a scene not found */
    std::string error;           /* why nothing was read */
};

/* Reads a scene held in text[size]; object files are looked for next to
 * scene_path (the scene file's own path).  On success result->root is a
 * group named name, colours are in the palette. */
void lw_read_scene(const char *text, size_t size, const char *scene_path, const char *name, LwResult *result);

/* Reads an object or a scene, telling them apart by their first bytes. */
void lw_read_bytes(const uint8_t *bytes, size_t size, const char *path, const char *name, LwResult *result);

/* "import_lightwave": reads a LightWave object or scene and adds it to
 * the world as one undoable step; "1" or "0" as the command result. */
int command_import_lightwave(char *filename);

#endif
