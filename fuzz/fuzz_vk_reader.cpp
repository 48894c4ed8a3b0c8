/*
 * fuzz_vk_reader.cpp - libFuzzer target for the model file reader: each
 * input is handed to readfile_vk as a file and read twice: merged into a
 * fresh group, and read aside into a holder as opening a file does; each
 * must hold a whole tree afterwards, and both are deleted again with
 * everything loaded into them.
 */
#include "fuzz_support.h"
#include "core/check.h"
#include "fileio/vk_file.h"

#include <cstdlib>

/* Whatever the input, what was read must be a whole tree. */
static void check_tree(Object *root)
{
    char report[1024];
    if (object_check_tree(root, report, sizeof report) == 0) return;
    fprintf(stderr, "the reader left a broken tree:\n%s", report);
    abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_start_once();
    char path[64];
    int fd = fuzz_input_file(data, size, path, sizeof path);
    if (fd < 0) return 0;
    Object *parent = new_group();
    readfile_vk(path, parent, 0);
    check_tree(parent);
    object_free(parent);
    Object *holder = new_group();
    VkLoadReport report;
    readfile_vk_detached(path, holder, &report);
    check_tree(holder);
    object_free(holder);
    close(fd);
    return 0;
}
