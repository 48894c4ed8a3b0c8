/*
 * file_test_support.h - scratch directories and whole-file reads and
 * writes for the unit tests of file readers and writers.
 */
#ifndef VESK_TESTS_FILE_TEST_SUPPORT_H
#define VESK_TESTS_FILE_TEST_SUPPORT_H

#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fstream>
#include <sstream>
#include <string>

/* A fresh directory under /tmp, removed with everything in it. */
class TempDir {
public:
    std::string path;
    TempDir()
    {
        char name[] = "/tmp/vk_test_XXXXXX";
        path = mkdtemp(name);
    }
    ~TempDir() { std::system(("rm -rf '" + path + "'").c_str()); }
    std::string file(const std::string &name) const { return path + "/" + name; }
};

static inline void write_file(const std::string &path, const std::string &text)
{
    std::ofstream f(path, std::ios::binary);
    f << text;
}

static inline std::string read_file(const std::string &path)
{
    std::ifstream f(path, std::ios::binary);
    std::stringstream s;
    s << f.rdbuf();
    return s.str();
}

/* Entries of a directory, hidden ones (such as temporary files)
 * included. */
static inline int count_entries(const std::string &dir)
{
    int n = 0;
    DIR *d = opendir(dir.c_str());
    if (!d) return -1;
    while (dirent *e = readdir(d)) n += strcmp(e->d_name, ".") != 0 && strcmp(e->d_name, "..") != 0;
    closedir(d);
    return n;
}

#endif
