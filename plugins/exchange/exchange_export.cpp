/*
 * exchange_export.cpp - writing the model with libassimp's exporters.
 * Every file an exporter writes (an OBJ's .mtl, a glTF's .bin) goes to a
 * temporary file beside it; all of them are renamed into place only when
 * every one was written whole, so a failed export leaves the earlier
 * files as they were.  Polygons are split into triangles (by assimp) only
 * for the formats that hold nothing else.
 */
#include "exchange.h"

#include <assimp/DefaultIOSystem.h>
#include <assimp/Exporter.hpp>
#include <assimp/IOStream.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <cerrno>
#include <cstring>
#include <unistd.h>
#include <vector>

/* ---- writing through temporary files ---- */

/* A hidden name beside the target that no other process writes. */
static std::string temporary_name(const std::string &target)
{
    size_t slash = target.rfind('/');
    std::string dir = slash == std::string::npos ? "" : target.substr(0, slash + 1);
    std::string base = slash == std::string::npos ? target : target.substr(slash + 1);
    return dir + "." + base + ".vesk-part-" + std::to_string((long)getpid());
}

/* The state of one export's files: which temporaries stand for which
 * targets, and the first error met. */
struct WriteLog {
    std::vector<std::pair<std::string, std::string>> files;   /* temporary, target */
    std::string error;
};

static void note_error(WriteLog *log, const std::string &what)
{
    if (log->error.empty()) log->error = what;
}

/* A file being written: stdio underneath, with every failure noted in the
 * log, including the last one on closing. */
class LoggedStream : public Assimp::IOStream {
public:
    LoggedStream(FILE *file, WriteLog *log, std::string target) : file_(file), log_(log), target_(std::move(target)) {}
    ~LoggedStream() override
    {
        if (fflush(file_) != 0 || ferror(file_) || fsync(fileno(file_)) != 0) note(errno);
        if (fclose(file_) != 0) note(errno);
    }
    size_t Read(void *buffer, size_t size, size_t count) override { return fread(buffer, size, count, file_); }
    size_t Write(const void *buffer, size_t size, size_t count) override
    {
        size_t written = fwrite(buffer, size, count, file_);
        if (written != count) note(errno);
        return written;
    }
    aiReturn Seek(size_t offset, aiOrigin origin) override
    {
        int whence = origin == aiOrigin_SET ? SEEK_SET : origin == aiOrigin_CUR ? SEEK_CUR : SEEK_END;
        return fseek(file_, (long)offset, whence) == 0 ? aiReturn_SUCCESS : aiReturn_FAILURE;
    }
    size_t Tell() const override { return (size_t)ftell(file_); }
    size_t FileSize() const override
    {
        long here = ftell(file_);
        fseek(file_, 0, SEEK_END);
        long size = ftell(file_);
        fseek(file_, here, SEEK_SET);
        return size < 0 ? 0 : (size_t)size;
    }
    void Flush() override { fflush(file_); }

private:
    void note(int error) { note_error(log_, "can't write " + target_ + ": " + strerror(error ? error : EIO)); }
    FILE *file_;
    WriteLog *log_;
    std::string target_;
};

/* Files opened for writing are made as temporaries beside their targets;
 * reading goes to the files themselves. */
class TemporaryIOSystem : public Assimp::DefaultIOSystem {
public:
    explicit TemporaryIOSystem(WriteLog *log) : log_(log) {}
    Assimp::IOStream *Open(const char *file, const char *mode = "rb") override
    {
        if (!file || !mode || (!strchr(mode, 'w') && !strchr(mode, 'a'))) return DefaultIOSystem::Open(file, mode);
        std::string target = file;
        std::string temp = temporary_name(target);
        FILE *f = fopen(temp.c_str(), strchr(mode, 'b') ? "wb" : "w");
        if (!f) {
            note_error(log_, "can't write " + target + ": " + strerror(errno));
            return nullptr;
        }
        log_->files.emplace_back(temp, target);
        return new LoggedStream(f, log_, target);
    }

private:
    WriteLog *log_;
};

static void remove_temporaries(const WriteLog &log)
{
    for (const auto &f : log.files) unlink(f.first.c_str());
}

/* Renames the temporaries over their targets, the main file last so that
 * it never names a side file that is not there yet. */
static int put_in_place(WriteLog *log, const std::string &main_target)
{
    std::vector<std::pair<std::string, std::string>> order;
    for (const auto &f : log->files) {
        if (f.second != main_target) order.push_back(f);
    }
    for (const auto &f : log->files) {
        if (f.second == main_target) order.push_back(f);
    }
    for (size_t i = 0; i < order.size(); i++) {
        if (rename(order[i].first.c_str(), order[i].second.c_str()) != 0) {
            note_error(log, "can't write " + order[i].second + ": " + strerror(errno));
            for (size_t j = i; j < order.size(); j++) unlink(order[j].first.c_str());
            return 0;
        }
    }
    return 1;
}

int exchange_write_file(Object *root, const char *filename, const char *format, ExportCounts *counts,
                        std::string *error)
{
    if (!filename || !*filename) {
        *error = "can't export: no file name given";
        return 0;
    }
    if (!exchange_format_known(format)) {
        *error = std::string("can't export ") + filename + ": unknown format '" + (format ? format : "") +
                 "' (known: " + exchange_format_list() + ")";
        return 0;
    }
    aiScene *scene = exchange_build_scene(root, format, filename, counts);
    if (scene->mNumMeshes == 0) {
        delete scene;
        *error = std::string("can't export ") + filename + ": the model has no surfaces to write";
        return 0;
    }
    WriteLog log;
    /* The 3MF exporter writes its archive itself, not through the I/O
     * handler: it is given the temporary name (the archive never names
     * its own file). */
    std::string path = filename;
    if (strcmp(format, "3mf") == 0) {
        path = temporary_name(filename);
        log.files.emplace_back(path, filename);
    }
    unsigned int steps = exchange_format_needs_triangles(format) ? (unsigned int)aiProcess_Triangulate : 0u;
    aiReturn result;
    std::string assimp_error;
    {
        Assimp::Exporter exporter;
        exporter.SetIOHandler(new TemporaryIOSystem(&log));   /* the exporter owns it */
        result = exporter.Export(scene, format, path.c_str(), steps);
        if (result != aiReturn_SUCCESS) assimp_error = exporter.GetErrorString();
    }
    delete scene;
    if (result != aiReturn_SUCCESS || !log.error.empty() || log.files.empty()) {
        remove_temporaries(log);
        if (!log.error.empty()) *error = log.error;
        else *error = std::string("can't export ") + filename + ": " + (assimp_error.empty() ? "assimp's exporter gave up without saying why" : assimp_error);
        *error += " - any earlier file is left as it was";
        return 0;
    }
    if (!put_in_place(&log, filename)) {
        *error = log.error + " - any earlier file is left as it was";
        return 0;
    }
    return 1;
}
