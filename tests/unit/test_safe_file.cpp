/*
 * test_safe_file.cpp - replacing a file safely and keeping the replaced
 * one as a backup: the backup holds the old bytes, is replaced only by a
 * complete new one, and a backup that can't be kept does not stop the
 * save.
 */
#include "file_test_support.h"
#include "platform/safe_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <sys/resource.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/* Replaces path with text through a safe file; the commit's result. */
int save_text(const std::string &path, const std::string &text, int keep_backup, int *backup_error = nullptr)
{
    SafeFile sf;
    FILE *f = safe_file_open(&sf, path.c_str());
    if (!f) return 0;
    sf.keep_backup = keep_backup;
    fputs(text.c_str(), f);
    int ok = safe_file_commit(&sf);
    if (backup_error) *backup_error = sf.backup_error;
    return ok;
}

/* Runs body with every write past limit bytes failing, as on a full disk. */
template <typename F> void with_file_size_limit(rlim_t limit, F body)
{
    struct rlimit saved;
    getrlimit(RLIMIT_FSIZE, &saved);
    struct rlimit small = saved;
    small.rlim_cur = limit;
    void (*old_handler)(int) = signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    body();
    setrlimit(RLIMIT_FSIZE, &saved);
    signal(SIGXFSZ, old_handler);
}

} // namespace

TEST(SafeFileBackup, EachSaveKeepsThePreviousVersion)
{
    TempDir dir;
    std::string path = dir.file("m.vk");
    ASSERT_EQ(save_text(path, "first\n", 1), 1);
    EXPECT_EQ(count_entries(dir.path), 1) << "a new file has nothing to keep";
    ASSERT_EQ(save_text(path, "second\n", 1), 1);
    EXPECT_EQ(read_file(path), "second\n");
    EXPECT_EQ(read_file(path + "~"), "first\n");
    ASSERT_EQ(save_text(path, "third\n", 1), 1);
    EXPECT_EQ(read_file(path + "~"), "second\n");
    ASSERT_EQ(save_text(path, "fourth\n", 0), 1);
    EXPECT_EQ(read_file(path + "~"), "second\n") << "no backup asked for, none replaced";
    EXPECT_EQ(count_entries(dir.path), 2);
}

TEST(SafeFileBackup, CopiedBackupHasTheBytesAndTheMode)
{
    TempDir dir;
    std::string path = dir.file("m.vk"), backup = path + "~";
    std::string big(200000, 'x');
    big += "end\n";
    write_file(path, big);
    chmod(path.c_str(), 0640);
    ASSERT_EQ(safe_file_keep_backup_by_copy(path.c_str(), backup.c_str()), 1);
    EXPECT_EQ(read_file(backup), big);
    struct stat st;
    ASSERT_EQ(stat(backup.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0640u);
    /* Not a link: changing the original in place leaves the copy. */
    write_file(path, "changed\n");
    EXPECT_EQ(read_file(backup), big);
}

TEST(SafeFileBackup, NothingToKeep)
{
    TempDir dir;
    std::string missing = dir.file("none.vk");
    EXPECT_EQ(safe_file_keep_backup(missing.c_str(), (missing + "~").c_str()), 2);
    EXPECT_EQ(safe_file_keep_backup(dir.path.c_str(), (dir.path + "~").c_str()), 2) << "a directory is not kept";
    EXPECT_EQ(count_entries(dir.path), 0);
}

TEST(SafeFileBackup, FullDiskKeepsTheEarlierBackup)
{
    TempDir dir;
    std::string path = dir.file("m.vk"), backup = path + "~";
    write_file(backup, "earlier backup\n");
    write_file(path, std::string(8192, 'y'));
    int r = 1, e = 0;
    with_file_size_limit(1024, [&] {
        r = safe_file_keep_backup_by_copy(path.c_str(), backup.c_str());
        e = errno;
    });
    EXPECT_EQ(r, 0);
    EXPECT_EQ(e, EFBIG);
    EXPECT_EQ(read_file(backup), "earlier backup\n");
    EXPECT_EQ(count_entries(dir.path), 2) << "temporary file left behind";
}

TEST(SafeFileBackup, BlockedBackupDoesNotStopTheSave)
{
    TempDir dir;
    std::string path = dir.file("m.vk"), backup = path + "~";
    write_file(path, "old\n");
    /* A non-empty directory where the backup would go can't be replaced. */
    ASSERT_EQ(mkdir(backup.c_str(), 0755), 0);
    write_file(backup + "/inside", "x");
    int backup_error = 0;
    EXPECT_EQ(save_text(path, "new\n", 1, &backup_error), 1);
    EXPECT_NE(backup_error, 0);
    EXPECT_EQ(read_file(path), "new\n");
    EXPECT_EQ(read_file(backup + "/inside"), "x");
    EXPECT_EQ(count_entries(dir.path), 2) << "temporary file left behind";
}

TEST(SafeFileBackup, FailedSaveLeavesFileAndBackup)
{
    TempDir dir;
    std::string path = dir.file("m.vk");
    write_file(path, "old\n");
    write_file(path + "~", "older\n");
    int r = 1;
    with_file_size_limit(1024, [&] { r = save_text(path, std::string(8192, 'z'), 1); });
    EXPECT_EQ(r, 0);
    EXPECT_EQ(read_file(path), "old\n");
    EXPECT_EQ(read_file(path + "~"), "older\n");
    EXPECT_EQ(count_entries(dir.path), 2);
}

TEST(SafeFile, SavingThroughALinkReplacesTheFileItNames)
{
    TempDir dir;
    ASSERT_EQ(mkdir(dir.file("real").c_str(), 0755), 0);
    std::string real = dir.file("real/m.vk"), link_path = dir.file("m.vk");
    write_file(real, "old\n");
    ASSERT_EQ(symlink("real/m.vk", link_path.c_str()), 0);
    ASSERT_EQ(save_text(link_path, "new\n", 1), 1);
    struct stat st;
    ASSERT_EQ(lstat(link_path.c_str(), &st), 0);
    EXPECT_TRUE(S_ISLNK(st.st_mode)) << "the link is kept";
    EXPECT_EQ(read_file(real), "new\n");
    EXPECT_EQ(read_file(real + "~"), "old\n") << "the backup sits beside the real file";
    /* A link to a file not there yet creates it. */
    ASSERT_EQ(symlink("real/later.vk", dir.file("later.vk").c_str()), 0);
    ASSERT_EQ(save_text(dir.file("later.vk"), "made\n", 0), 1);
    EXPECT_EQ(read_file(dir.file("real/later.vk")), "made\n");
    /* Links that loop are refused. */
    ASSERT_EQ(symlink("loop2", dir.file("loop1").c_str()), 0);
    ASSERT_EQ(symlink("loop1", dir.file("loop2").c_str()), 0);
    EXPECT_EQ(save_text(dir.file("loop1"), "x\n", 0), 0);
    EXPECT_EQ(errno, ELOOP);
}

TEST(SafeFile, LongestNameSaves)
{
    TempDir dir;
    std::string path = dir.file(std::string(252, 'n') + ".vk");
    ASSERT_EQ(save_text(path, "first\n", 1), 1);
    int backup_error = 0;
    ASSERT_EQ(save_text(path, "second\n", 1, &backup_error), 1);
    EXPECT_EQ(read_file(path), "second\n");
    EXPECT_EQ(backup_error, ENAMETOOLONG) << "name~ can't exist; the save went ahead";
    EXPECT_EQ(count_entries(dir.path), 1);
}

TEST(SafeFile, LeftoversOfDeadProcessesAreRemoved)
{
    TempDir dir;
    pid_t child = fork();
    if (child == 0) _exit(0);
    waitpid(child, nullptr, 0);
    std::string dead_old = dir.file(".vesk-" + std::to_string(child) + "-abcdef");
    std::string dead_new = dir.file(".vesk-" + std::to_string(child) + "-ghijkl");
    std::string alive = dir.file(".vesk-1-mnopqr");
    std::string other = dir.file(".vesk-notours");
    for (const std::string &p : {dead_old, dead_new, alive, other}) write_file(p, "partial");
    struct timespec old_times[2] = {{time(nullptr) - 3600, 0}, {time(nullptr) - 3600, 0}};
    for (const std::string &p : {dead_old, alive, other}) utimensat(AT_FDCWD, p.c_str(), old_times, 0);
    ASSERT_EQ(save_text(dir.file("m.vk"), "saved\n", 0), 1);
    EXPECT_NE(access(dead_old.c_str(), F_OK), 0) << "an old leftover of a dead process goes";
    EXPECT_EQ(access(dead_new.c_str(), F_OK), 0) << "a file written a moment ago stays";
    EXPECT_EQ(access(alive.c_str(), F_OK), 0) << "a live process's file stays";
    EXPECT_EQ(access(other.c_str(), F_OK), 0) << "names not of our pattern stay";
}
