/*
 * fileio/vk_reader.cpp - loading a model file: opening it, the header and
 * version rules with their messages, then (after the block reader of
 * vk_blocks.cpp has read the objects) selecting what was loaded,
 * computing its normals and fitting the views.
 */
#include "view/camera_fit.h"
#include "fileio/vk_file.h"
#include "fileio/vk_reader_internal.h"
#include "app/prefs.h"
#include "core/internal.h"
#include "edit/selection.h"
#include "view/redraw.h"

#include <cassert>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sys/stat.h>
#include <vector>

enum { HEADER_OK, HEADER_NOT_VESK };

/* Reads the first word of the file: "VESK" and the version in hexadecimal.
 * What follows the word on its line is left to be read as a line. */
static int read_header(VkRead *r, long *version)
{
    LineReader *in = &r->in;
    const char *p = nullptr;
    while (line_reader_next(in)) {
        p = in->line + strspn(in->line, " \t\r");
        if (*p) break;
        p = nullptr;
    }
    if (!p || strncmp(p, "VESK", 4) != 0) return HEADER_NOT_VESK;
    char digits[LINE_LIMIT + 1];
    size_t n = strcspn(p + 4, " \t\r");
    memcpy(digits, p + 4, n);
    digits[n] = '\0';
    errno = 0;
    long v = strtol(digits, nullptr, 16);
    *version = errno == ERANGE && v > 0 ? VK_FILE_VERSION + 1 : v;
    /* The rest of the header line is read as the first line of the body. */
    const char *rest = p + 4 + n;
    memmove(in->line, rest, strlen(rest) + 1);
    in->line_length = strlen(in->line);
    line_reader_push_back(in);
    return HEADER_OK;
}

static void show_not_vesk(const char *filename)
{
    windows_message_dialog("Load VESK file:\nThe file '%s' is not a valid VESK file.", filename);
}

static void show_newer(const char *filename)
{
    windows_message_dialog("Load VESK file:\n\nThe VESK file '%s' cannot be loaded because it is from a newer "
                           "version of VESK.\nSee 'about' for details on how to get the latest version.",
                           filename);
}

/* Checks the header after the file was opened: 1 to go on with the body,
 * 0 when the file was refused (and the message shown). */
static int check_header(VkRead *r, long *version)
{
    if (read_header(r, version) != HEADER_OK) {
        show_not_vesk(r->filename);
        return 0;
    }
    if (*version > VK_FILE_VERSION) {
        show_newer(r->filename);
        return 0;
    }
    return 1;
}

static void start_body(int select)
{
    if (!select) return;
    clear_selection();
    set_new_select_mode(SELECT_TREE);
}

/* The end of reading: the held vertices are stored and what went wrong
 * is summed up on the console. */
static void close_load(VkRead *r)
{
    vk_read_finish_vertices(r);
    /* The reading buffers go before the normals need their memory. */
    std::vector<Vertex *>().swap(r->vertices);
    if (r->in.read_error) {
        console_printf("Load VESK file: error reading %s: %s\n", r->filename, strerror(r->in.read_error));
    }
    if (r->stop_reason) {
        console_printf("Load VESK file: stopped at line %ld of %s: %s\n", r->in.line_number, r->filename,
                       r->stop_reason);
    }
    if (r->messages_hidden > 0) {
        console_printf("Load VESK file: %ld more problems in %s were not shown\n", r->messages_hidden, r->filename);
    }
    line_reader_close(&r->in);
}

static void calc_loaded_normals(VkRead *r)
{
    if (!r->loaded) return;
    display_message("calculating normals...");
    for (List *l = r->loaded; l; l = l->next) object_calc_normals_force((Object *)l->item);
    display_message("Done.");
    set_progress_bar(0);
}

/* What follows reading the objects: what was loaded is selected and gets
 * its normals, and the views follow.  A detached load is left as read:
 * its objects are not part of the model yet. */
static void finish_load(VkRead *r, int select, int fit)
{
    close_load(r);
    if (r->detached) {
        list_free(&r->loaded);
        r->file_materials.clear();
        return;
    }
    if (select && r->loaded) select_objectlist(r->loaded);
    if (select) find_bounding_box();
    calc_loaded_normals(r);
    if (fit) {
        fit_selected_all();
        fit_3d_view();
        redraw_3d();
    } else {
        redraw_all();
    }
    list_free(&r->loaded);
    r->file_materials.clear();
}

/* Opens the file; 0 (with errno) when it can't be read. */
static int open_file(VkRead *r)
{
    /* A device, a pipe or a socket would be read forever or block: only
     * files are loaded. */
    struct stat st;
    if (stat(r->filename, &st) == 0 && !S_ISREG(st.st_mode)) {
        console_printf("%s: %s, not a file - only files can be loaded\n", r->filename,
                       S_ISDIR(st.st_mode) ? "a directory" : "a device, pipe or socket");
        errno = S_ISDIR(st.st_mode) ? EISDIR : ENODEV;
        return 0;
    }
    if (line_reader_open(&r->in, r->filename)) return 1;
    int e = errno;
    console_printf("%s: %s\n", r->filename, strerror(e));
    errno = e;
    return 0;
}

/* Model records take about two and a half times the bytes of their text;
 * the allocator faults that memory in ahead of the reader. */
static int read_body_prefaulted(VkRead *r)
{
    memory_prefault_begin((size_t)(r->in.file_size / 2 * 5));
    int ok = vk_read_body(r);
    memory_prefault_end();
    return ok;
}

/* What the last load found, for the commands that report it. */
static VkLoadReport last_report;

static void fill_report(const VkRead *r, VkLoadReport *report, int refused)
{
    if (!report) report = &last_report;
    report->refused = refused;
    report->complete = !refused && r->complete && !r->stop_reason && !r->in.read_error;
    report->lines = r->in.line_number;
    report->problems = r->messages_shown + r->messages_hidden;
    last_report = *report;
}

void readfile_vk_last_report(VkLoadReport *report)
{
    *report = last_report;
}

static int read_old_format(const char *filename, Object *parent, int select, int detached, VkLoadReport *report);

/* Reads a model file of the current version under parent; files of older
 * versions go to their own reader. */
static int read_current_format(const char *filename, Object *parent, int select, int detached,
                               VkLoadReport *report)
{
    std::unique_ptr<VkRead> r(new VkRead());
    vk_read_init(r.get(), filename, parent);
    r->detached = detached;
    if (!open_file(r.get())) {
        windows_message_dialog("Load VESK file:\n\ncan't open file %s for reading\n", filename);
        fill_report(r.get(), report, 1);
        return 0;
    }
    long version = 0;
    if (!check_header(r.get(), &version)) {
        line_reader_close(&r->in);
        fill_report(r.get(), report, 1);
        return 0;
    }
    if (version < VK_FILE_VERSION) {
        line_reader_close(&r->in);
        return read_old_format(filename, parent, select, detached, report);
    }
    display_message("Loading VESK file...");
    start_body(select);
    int ok = read_body_prefaulted(r.get());
    finish_load(r.get(), select, select && prefs.fit_view_after_load);
    fill_report(r.get(), report, 0);
    return ok && !r->in.read_error;
}

static int read_old_format(const char *filename, Object *parent, int select, int detached, VkLoadReport *report)
{
    std::unique_ptr<VkRead> r(new VkRead());
    vk_read_init(r.get(), filename, parent);
    r->old_format = 1;
    r->detached = detached;
    if (!open_file(r.get())) {
        console_printf("can't open file for readiing\n");
        fill_report(r.get(), report, 1);
        return 0;
    }
    long version = 0;
    if (!check_header(r.get(), &version)) {
        line_reader_close(&r->in);
        fill_report(r.get(), report, 1);
        return 0;
    }
    display_message("Loading VESK file");
    start_body(select);
    int ok = read_body_prefaulted(r.get()) && !r->in.read_error;
    long made = r->objects_made;
    finish_load(r.get(), select, !detached && prefs.fit_view_after_load);
    fill_report(r.get(), report, 0);
    if (!ok) {
        console_printf("Error whilst reading file %s\n", filename);
        return 0;
    }
    if (made == 0) {
        console_printf("no object loaded\n");
        return 0;
    }
    console_printf("read file %s OK\n", filename);
    return 1;
}

int readfile_vk(const char *filename, Object *parent, int select)
{
    if (!filename) return 0;
    return read_current_format(filename, parent ? parent : world, select, 0, nullptr);
}

int readfile_vk_old(const char *filename, Object *parent, int select)
{
    if (!filename) return 0;
    return read_old_format(filename, parent ? parent : world, select, 0, nullptr);
}

int readfile_vk_detached(const char *filename, Object *holder, VkLoadReport *report)
{
    assert(holder && holder != world && !holder->parent);
    VkLoadReport local;
    if (!report) report = &local;
    memset(report, 0, sizeof *report);
    if (!filename) {
        report->refused = 1;
        return 0;
    }
    read_current_format(filename, holder, 0, 1, report);
    if (report->refused || !report->complete) return 0;
    if (holder->kids) {
        display_message("calculating normals...");
        for (List *l = holder->kids; l; l = l->next) object_calc_normals_force((Object *)l->item);
        display_message("Done.");
    }
    set_progress_bar(0);
    return 1;
}
