/*
 * bench_support.h - what the benchmark programs share: a clock in seconds
 * and the size of a file in MB.
 */
#ifndef VESK_BENCH_SUPPORT_H
#define VESK_BENCH_SUPPORT_H

#include <chrono>
#include <string>
#include <sys/stat.h>

static inline double now(void)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/* 0 when the file cannot be examined. */
static inline double file_mb(const std::string &path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0 ? st.st_size / 1048576.0 : 0.0;
}

#endif
