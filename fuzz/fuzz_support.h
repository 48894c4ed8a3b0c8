/*
 * fuzz_support.h - what the readers' fuzz targets share: the state the
 * program has after start-up (without views), console output sent to
 * /dev/null, inputs handed over as files (in-memory files named through
 * /proc/self/fd), and the model emptied after each input.
 */
#ifndef VESK_FUZZ_SUPPORT_H
#define VESK_FUZZ_SUPPORT_H

#include "vesk.h"
#include "app/prefs.h"
#include "edit/selection.h"

#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

static inline void fuzz_start_once(void)
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

/* An in-memory file holding the input; its descriptor (close it), or -1.
 * path receives its name. */
static inline int fuzz_input_file(const uint8_t *data, size_t size, char *path, size_t room)
{
    int fd = memfd_create("fuzz.input", 0);
    if (fd < 0) return -1;
    size_t done = 0;
    while (done < size) {
        ssize_t n = write(fd, data + done, size - done);
        if (n <= 0) break;
        done += (size_t)n;
    }
    snprintf(path, room, "/proc/self/fd/%d", fd);
    return fd;
}

static inline void fuzz_empty_model(void)
{
    clear_selection();
    while (world->kids) object_delete((Object *)world->kids->item);
}

#endif
