/*
 * fuzz_vk_reader.cpp - libFuzzer target for the model file reader: each
 * input is handed to readfile_vk as a file (an in-memory file named
 * through /proc/self/fd) and read twice: merged into a fresh group, and
 * read aside into a holder as opening a file does; each must hold a whole
 * tree afterwards, and both are deleted again with everything loaded into
 * them.  The reader's console messages go to
 * /dev/null.
 */
#include "vesk.h"
#include "app/prefs.h"
#include "core/check.h"
#include "fileio/vk_file.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

static void start_once(void)
{
    static bool started = false;
    if (started) return;
    started = true;
    prefs_set_defaults();
    prefs.fit_view_after_load = 0;
    world = new_world();
    create_palette();
    int null_fd = open("/dev/null", O_WRONLY);
    if (null_fd >= 0) {
        fflush(stdout);
        dup2(null_fd, 1);
        close(null_fd);
    }
}

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
    start_once();
    int fd = memfd_create("fuzz.vk", 0);
    if (fd < 0) return 0;
    size_t done = 0;
    while (done < size) {
        ssize_t n = write(fd, data + done, size - done);
        if (n <= 0) break;
        done += (size_t)n;
    }
    char path[64];
    snprintf(path, sizeof path, "/proc/self/fd/%d", fd);
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
