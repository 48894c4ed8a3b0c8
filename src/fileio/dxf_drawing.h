/*
 * fileio/dxf_drawing.h - a DXF drawing as the reader records it before
 * anything joins the model: the layers and their colours, the blocks and
 * the entities of model space, every entity already flattened into
 * points (world coordinates of its own block) and faces over them.
 */
#ifndef VESK_FILEIO_DXF_DRAWING_H
#define VESK_FILEIO_DXF_DRAWING_H

#include "fileio/dxf_reader.h"

#include <map>
#include <string>
#include <vector>

struct DxfPoint {
    double x, y, z;
};

struct DxfFace {
    int kind;                     /* SURFACE_POLYGON, _CLOSED_LINE or _LINE */
    std::vector<int> points;      /* indices into the entity's points */
};

struct DxfInsert {
    std::string block;
    DxfPoint at, scale;
    double angle;                 /* degrees */
    DxfPoint extrusion;
    int cols, rows;
    double col_spacing, row_spacing;
};

struct DxfEntity {
    std::string layer;
    int aci = 256;                /* 256 by layer, 0 by block */
    long rgb = -1;                /* a true colour, or -1 */
    std::vector<DxfPoint> points;
    std::vector<DxfFace> faces;
    bool is_insert = false;
    DxfInsert insert;
};

struct DxfLayer {
    int aci = 7;
    long rgb = -1;
};

struct DxfBlock {
    DxfPoint base = {0, 0, 0};
    std::vector<DxfEntity> entities;
};

struct DxfDrawing {
    std::map<std::string, DxfLayer> layers;
    std::map<std::string, DxfBlock> blocks;
    std::vector<DxfEntity> model;
    long skipped = 0;
};

/* Builds the objects of a recorded drawing under a new group named name.
 * Returns it, or null with *error set (nothing in the palette changed). */
Object *dxf_build_objects(const DxfDrawing &drawing, const char *name, long *drawn, long *skipped,
                          std::string *error);

#endif
