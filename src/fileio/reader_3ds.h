/*
 * fileio/reader_3ds.h - the 3D Studio reader: a parse of the chunk tree
 * (from a file or from a block of memory) into raw records, then their
 * conversion into objects under the world.  Only meshes, their face
 * materials (as colours) and texture points are taken.
 */
#ifndef VESK_FILEIO_READER_3DS_H
#define VESK_FILEIO_READER_3DS_H

#include "vesk.h"

#include <cstdio>
#include <string>
#include <vector>

struct Raw3dsFace {
    uint16_t a, b, c;
    uint16_t flags;
    int32_t material;          /* position among the materials, -1 none */
};

struct Raw3dsObject {
    int num_faces;
    int num_vertices;
    int num_texture_points;
    int has_matrix;
    /* One face more than num_faces: a face-material list may name the
     * face one past the last, and that entry lands here unused. */
    std::vector<Raw3dsFace> faces;
    std::vector<float> vertices;        /* x, z, y of the file: Y and Z swapped */
    std::vector<float> texture_points;  /* u, v */
    std::string name;
};

struct Raw3dsMaterial {
    std::string name;
    unsigned char rgb[3];
    int has_colour;             /* 2 from a colour chunk, 1 from a linear one, 0 none */
    std::string texture;
};

struct Raw3dsModel {
    std::vector<Raw3dsObject> objects;
    std::vector<Raw3dsMaterial> materials;
};

/* The five operations the parse reads through, over a file or memory. */
struct Source3ds {
    FILE *file;
    const unsigned char *data;
    long size;
    long position;            /* memory source */
    int failed;               /* sticky: the parse ends at the first error */
    int (*read16)(Source3ds *s, uint16_t *out);
    int (*read32)(Source3ds *s, uint32_t *out);
    int (*read_bytes)(Source3ds *s, void *out, long n);
    long (*get_position)(Source3ds *s);
    int (*set_position)(Source3ds *s, long position);
};

void source_3ds_file(Source3ds *s, FILE *file, long size);
void source_3ds_memory(Source3ds *s, const unsigned char *data, long size);

/* Parses the whole chunk tree.  1 on success; 0 after an error, which
 * was printed on the console. */
int parse_3ds(Source3ds *source, Raw3dsModel *model);
/* Turns the raw records into objects named "rawobj" under the world and
 * selects them; texture file names are looked for in directory (may be
 * null).  Returns the number of objects made. */
int convert_3ds(const Raw3dsModel *model, const char *directory);

/* Reads a 3DS file into the model, selects the new objects and fits the
 * views to them: 0 on success, 1 on failure (the model is unchanged). */
int import_3ds_file(const char *filename);
/* Reads 3DS data from memory into the model (as the command does, with
 * no views to fit and no texture directory); 0 on success, 1 on failure. */
int import_3ds_memory(const unsigned char *data, long size);

#endif
