/*
 * fileio/dxf_reader.h - reading AutoCAD DXF drawings (ASCII and binary,
 * R12 to current) into the model through libdxflib.  The drawing becomes one
 * group object named after the file with one child object per layer
 * (named after the layer); faces, solids and meshes become polygons,
 * closed polylines and circles closed lines, the rest lines.
 */
#ifndef VESK_FILEIO_DXF_READER_H
#define VESK_FILEIO_DXF_READER_H

#include "vesk.h"

#include <cstddef>
#include <string>

/* Block inserts nested deeper than this are refused. */
enum { DXF_MAX_INSERT_DEPTH = 32 };
/* A drawing that expands to more vertices (or block instances) than
 * this is refused. */
enum { DXF_MAX_VERTICES = 4000000 };
/* The limit in force: DXF_MAX_VERTICES unless lowered (the fuzz target
 * lowers it so that each input stays quick). */
extern long dxf_point_limit;

/* The packed 0x00RRGGBB colour of an AutoCAD Colour Index number. */
long dxf_aci_to_rgb(int aci);

/* 1 when this build can read DXF files (libdxflib was found). */
int dxf_reader_available(void);

struct DxfResult {
    Object *drawing = nullptr;   /* detached; the caller attaches or frees it */
    long entities = 0;           /* entities drawn */
    long skipped = 0;            /* entities of kinds not read, or unusable */
    std::string error;           /* why nothing was read */
};

/* Reads a whole DXF file, ASCII or binary (text[size] must be NUL).  On success
 * result->drawing holds the new objects, named name, and the palette has
 * their colours; on failure it is null, result->error says why and
 * nothing was changed. */
void read_dxf_text(const char *text, size_t size, const char *name, DxfResult *result);

/* "import_dxf": reads a DXF file and adds its drawing to the world as one
 * undoable step; "1" or "0" as the command result. */
int command_import_dxf(char *filename);

#endif
