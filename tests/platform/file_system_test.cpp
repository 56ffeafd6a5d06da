// Whole files: what is refused, what a replacement leaves behind.
#include "platform/file_system.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/temp_dir.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

TEST(FileSystem, ReadsBackWhatItWrote) {
    const TempDir directory;
    const std::string text("a\0b\r\n%s", 7);
    ASSERT_TRUE(WriteWholeFile("x", "longer than what follows"));
    ASSERT_TRUE(WriteWholeFile("x", text));
    ASSERT_TRUE(AppendToFile("x", "!"));
    ASSERT_TRUE(CopyWholeFile("x", "y"));
    EXPECT_EQ(directory.Read("y"), text + "!");
    EXPECT_TRUE(FileExists("y"));
    EXPECT_FALSE(FileExists("."));
    EXPECT_FALSE(WriteWholeFile("no/such/directory", text));
    EXPECT_FALSE(WriteWholeFile("/dev/full", text));
}

TEST(FileSystem, RefusesWhatIsNoRegularFileWithoutHanging) {
    const TempDir directory;
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);
    ASSERT_TRUE(WriteWholeFile("big", std::string(100, 'x')));
    struct Row {
        std::string path, reason;
    };
    const Row rows[] = {
        {"fifo", "is not a regular file"},
        {".", "is not a regular file"},
        {"/dev/zero", "is not a regular file"},
        {"big", "is larger than 99 bytes"},
        {"absent", "No such file or directory"},
        {std::string("big\0x", 5), "No such file or directory"},
        {"", "No such file or directory"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.path);
        std::string text = "old", error;
        EXPECT_FALSE(ReadWholeFile(row.path, text, error, 99));
        EXPECT_EQ(error, row.reason);
        EXPECT_EQ(text, "");
    }
}

TEST(FileSystem, ReadsFilesThatClaimToBeEmpty) {
    std::string text, error;
    EXPECT_TRUE(ReadWholeFile("/proc/self/status", text, error));
    EXPECT_TRUE(text.starts_with("Name:"));
    EXPECT_FALSE(ReadWholeFile("/proc/self/status", text, error, 10));
    EXPECT_EQ(error, "is larger than 10 bytes");
}

TEST(ReplaceFile, KeepsTheModeAndLeavesNoTemporary) {
    const TempDir directory;
    ASSERT_TRUE(ReplaceFile("new.top", "first"));
    ASSERT_EQ(::chmod("new.top", 0640), 0);
    ASSERT_TRUE(ReplaceFile("new.top", "second"));
    EXPECT_EQ(directory.Read("new.top"), "second");
    EXPECT_EQ(fs::status("new.top").permissions(), fs::perms(0640));
    EXPECT_EQ(directory.Files(), Names{"new.top"});
}

TEST(ReplaceFile, FollowsLinksToTheirTarget) {
    const TempDir directory;
    directory.Write("data/real.top", "old");
    fs::create_symlink("data/hop", "link");
    fs::create_symlink("real.top", "data/hop");
    ASSERT_TRUE(ReplaceFile("link", "new"));
    EXPECT_TRUE(fs::is_symlink("link"));
    EXPECT_EQ(directory.Read("data/real.top"), "new");

    fs::create_symlink("dangling-target", "dangling");
    ASSERT_TRUE(ReplaceFile("dangling", "made"));
    EXPECT_EQ(directory.Read("dangling-target"), "made");

    fs::create_symlink("cycle", "cycle");
    EXPECT_FALSE(ReplaceFile("cycle", "never"));
}

TEST(ReplaceFile, LeavesTheOldFileWholeOnFailure) {
    const TempDir directory;
    fs::create_directory("folder");
    EXPECT_FALSE(ReplaceFile("folder", "text"));
    EXPECT_FALSE(ReplaceFile("absent/x", "text"));
    EXPECT_FALSE(ReplaceFile("/dev/null", "text"));
    EXPECT_TRUE(directory.Files().empty());
    if (::geteuid() == 0) return;  // write protection does not bind the superuser
    directory.Write("protected", "old");
    ASSERT_EQ(::chmod("protected", 0444), 0);
    EXPECT_FALSE(ReplaceFile("protected", "new"));
    EXPECT_EQ(directory.Read("protected"), "old");
}

TEST(WorkingDirectory, LastsAsLongAsItsScope) {
    const TempDir directory;
    directory.Write("inner/file", "x");
    {
        const WorkingDirectory inner("inner");
        EXPECT_FALSE(inner.Failed());
        EXPECT_TRUE(FileExists("file"));
        const WorkingDirectory failed("absent");
        EXPECT_TRUE(failed.Failed());
        const WorkingDirectory same("");
        EXPECT_FALSE(same.Failed());
    }
    EXPECT_TRUE(FileExists("inner/file"));
    EXPECT_TRUE(FileExists(ExecutableDirectory() + "test_platform"));
}

}  // namespace
}  // namespace photrak
