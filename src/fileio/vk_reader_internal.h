/*
 * fileio/vk_reader_internal.h - the state of one model file load, shared
 * by the entry points (vk_reader.cpp) and the block reader (vk_blocks.cpp).
 */
#ifndef VESK_FILEIO_VK_READER_INTERNAL_H
#define VESK_FILEIO_VK_READER_INTERNAL_H

#include "fileio/line_reader.h"
#include "fileio/tokens.h"
#include "vesk.h"

#include <vector>

/* One run of the block reader: it reads the lines of one object block
 * (its current object) up to "kids", then that many child runs. */
struct VkFrame {
    Object *parent;          /* where objects created by this run go */
    Object *current;         /* the object the keyword lines apply to */
    List *kids_tail;         /* last node of current's children, or null */
    long long kids_left;     /* child runs still to come after "kids" */
    float rotation[9];       /* "rot" as read */
    double location[3];      /* "loc" as read */
};

struct VkRead {
    LineReader in;
    const char *filename;
    Object *parent;          /* the file's top-level objects go here */
    int old_format;          /* before version 11: no MATERIAL lines, and
                                "mat" names a palette entry directly */
    int detached;            /* parent is not part of the model: lights are
                                not registered, nothing is selected or drawn */
    int complete;            /* the top block and all its children ended */
    std::vector<int> file_materials;   /* file material -> palette index */
    List *loaded;            /* top-level objects made by this load */
    List *loaded_tail;
    long objects_made;
    std::vector<VkFrame> stack;
    List *top_kids_tail;     /* last node of parent's children */
    List *lights_tail;

    /* The object whose vertices are being read and its vertices in file
     * order (for references by index).  Until the object is placed at its
     * "kids" line they hold their coordinates as written (in double). */
    Object *owner;
    std::vector<Vertex *> vertices;
    List *vertex_tail;
    List *surface_tail;

    double progress_shown;
    long last_long_line;     /* last line reported as too long */
    int messages_shown;
    long messages_hidden;
    const char *stop_reason; /* why the body reader stopped, or null */
    TokenLine tokens;
};

void vk_read_init(VkRead *r, const char *filename, Object *parent);
/* Reads the object blocks that follow the header.  Returns 1 when the top
 * block ended (or the file did), 0 when reading had to stop. */
int vk_read_body(VkRead *r);
/* Stores the vertices still held as read (of a block that never reached
 * its "kids" line) at their coordinates as written. */
void vk_read_finish_vertices(VkRead *r);
/* A problem in the file, on the console; after a few hundred of them the
 * rest are only counted. */
void vk_file_message(VkRead *r, const char *format, ...) VK_PRINTF(2, 3);

#endif
