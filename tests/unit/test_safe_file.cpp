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
#include <sys/stat.h>

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
