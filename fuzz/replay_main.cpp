/*
 * replay_main.cpp - a fuzz target as a plain program: each file named on
 * the command line (a directory stands for the files in it) is handed to
 * the target once.  The normal test run replays the seed inputs and every
 * input that once made a target fail (fuzz/regressions/TARGET), so a
 * fault the fuzzer found can't come back unseen.
 */
#include <cstdint>
#include <cstdio>
#include <dirent.h>
#include <string>
#include <sys/stat.h>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

static int replay_file(const std::string &path)
{
    FILE *f = fopen(path.c_str(), "rb");
    if (!f) {
        fprintf(stderr, "replay: can't read %s\n", path.c_str());
        return 0;
    }
    std::vector<uint8_t> bytes;
    uint8_t buffer[65536];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, f)) > 0) bytes.insert(bytes.end(), buffer, buffer + n);
    fclose(f);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    return 1;
}

static int replay(const std::string &path)
{
    struct stat st;
    if (stat(path.c_str(), &st) != 0) {
        fprintf(stderr, "replay: no %s\n", path.c_str());
        return 0;
    }
    if (!S_ISDIR(st.st_mode)) return replay_file(path);
    DIR *d = opendir(path.c_str());
    if (!d) return 0;
    int count = 0;
    while (struct dirent *e = readdir(d)) {
        if (e->d_name[0] == '.') continue;
        count += replay_file(path + "/" + e->d_name);
    }
    closedir(d);
    return count;
}

int main(int argc, char **argv)
{
    int count = 0;
    for (int i = 1; i < argc; i++) count += replay(argv[i]);
    /* stdout may have been sent to /dev/null by the target. */
    fprintf(stderr, "replayed %d inputs\n", count);
    return 0;
}
