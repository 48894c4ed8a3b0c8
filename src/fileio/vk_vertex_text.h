/*
 * fileio/vk_vertex_text.h - the text of a vertex line of the model file:
 * for each coordinate the shortest text that the reader turns back into
 * exactly the vertex's position.  For an object whose frame is the
 * identity that is the float's own shortest form; for a moved (unrotated)
 * object, the decimal with the fewest places that survives the reader's
 * translation; otherwise, or when those fail, the exact double of the
 * coordinate in the object's frame.  Every choice is checked by replaying
 * the reader.
 */
#ifndef VESK_FILEIO_VK_VERTEX_TEXT_H
#define VESK_FILEIO_VK_VERTEX_TEXT_H

#include "fileio/vk_write_plan.h"

#include <cstddef>

struct VkVertexText {
    char text[3][64];
    size_t length[3];
};

void vk_vertex_text(const VkObjectPlan *plan, const float *point, VkVertexText *out);

#endif
