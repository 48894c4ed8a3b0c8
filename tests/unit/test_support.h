/*
 * test_support.h - helpers shared by the unit tests: capturing what the
 * core writes to stdout (console) and stderr (message boxes without Tk,
 * preference getters), switching the allocator's guarding for a scope,
 * and the process set-up every test relies on (defaults, world, palette).
 */
#ifndef VESK_TESTS_TEST_SUPPORT_H
#define VESK_TESTS_TEST_SUPPORT_H

#include "vesk.h"
#include "app/prefs.h"
#include "core/internal.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

/* Redirects fds 1 and 2 into temporary files for its lifetime (or until
 * stop()); the texts are then in out and err. */
class OutputCapture {
public:
    std::string out, err;

    OutputCapture() { start(); }
    ~OutputCapture() { stop(); }

    void stop()
    {
        if (!active_) return;
        active_ = false;
        fflush(stdout);
        fflush(stderr);
        out = restore(1, saved_out_, file_out_);
        err = restore(2, saved_err_, file_err_);
    }

private:
    bool active_ = false;
    int saved_out_ = -1, saved_err_ = -1;
    FILE *file_out_ = nullptr, *file_err_ = nullptr;

    static FILE *redirect(int fd, int *saved)
    {
        FILE *f = tmpfile();
        *saved = dup(fd);
        dup2(fileno(f), fd);
        return f;
    }

    static std::string restore(int fd, int saved, FILE *f)
    {
        dup2(saved, fd);
        close(saved);
        std::string text;
        rewind(f);
        char buffer[4096];
        size_t n;
        while ((n = fread(buffer, 1, sizeof buffer, f)) > 0) text.append(buffer, n);
        fclose(f);
        return text;
    }

    void start()
    {
        fflush(stdout);
        fflush(stderr);
        file_out_ = redirect(1, &saved_out_);
        file_err_ = redirect(2, &saved_err_);
        active_ = true;
    }

public:
    OutputCapture(const OutputCapture &) = delete;
    OutputCapture &operator=(const OutputCapture &) = delete;
};

struct Captured {
    std::string out, err;
};

/* Runs body with stdout and stderr captured. */
template <typename F> static inline Captured capture(F body)
{
    OutputCapture c;
    body();
    c.stop();
    return Captured{c.out, c.err};
}

/* Sets the allocator's guarding for a scope: blocks allocated inside must
 * be freed inside, because guarded and plain blocks differ in layout. */
class GuardingScope {
public:
    explicit GuardingScope(bool on, bool debug = false)
        : saved_debug_(debug_flag), saved_checks_(prefs.memory_checks)
    {
        debug_flag = debug ? 1 : 0;
        prefs.memory_checks = on ? 1 : 0;
    }
    ~GuardingScope()
    {
        debug_flag = saved_debug_;
        prefs.memory_checks = saved_checks_;
    }

private:
    int saved_debug_, saved_checks_;
};

static inline int count_lines(const std::string &text)
{
    int n = 0;
    for (char c : text) n += c == '\n';
    return n;
}

static inline bool contains(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

/* The state the program has after start-up, before the interpreter: the
 * preference defaults (which switch the allocator's checks on before the
 * first model allocation), the world and the standard palette. */
class VeskTestEnvironment : public ::testing::Environment {
public:
    void SetUp() override
    {
        prefs_set_defaults();
        if (!world) world = new_world();
        create_palette();
    }
};

inline ::testing::Environment *const vesk_test_environment =
    ::testing::AddGlobalTestEnvironment(new VeskTestEnvironment);

/* Deletes every child of the world, leaving an empty model. */
static inline void clear_world_children(void)
{
    while (world && world->kids) object_delete((Object *)world->kids->item);
}

#endif
