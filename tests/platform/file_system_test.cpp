// Whole files: what is refused, what a replacement leaves behind.
#include "platform/file_system.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "support/temp_dir.h"

namespace {

/// What the program asked of the system, in order: "fsync INODE" and "rename".
std::vector<std::string> systemCalls;

}  // namespace

// These take the place of the system's functions in the whole test program.
extern "C" int fsync(int file) {
    struct stat info {};
    ::fstat(file, &info);
    systemCalls.push_back("fsync " + std::to_string(info.st_ino));
    return static_cast<int>(::syscall(SYS_fsync, file));
}
extern "C" int rename(const char* from, const char* to) noexcept {
    systemCalls.emplace_back("rename");
    return ::renameat(AT_FDCWD, from, AT_FDCWD, to);
}

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
    const std::pair<std::string, std::string> rows[] = {
        {"fifo", "is not a regular file"},
        {".", "is not a regular file"},
        {"/dev/zero", "is not a regular file"},
        {"big", "is larger than 99 bytes"},
        {"/proc/self/status", "is larger than 99 bytes"},  // its size is given as 0
        {std::string("big\0x", 5), "No such file or directory"},
        {"", "No such file or directory"},
    };
    std::string text, error;
    for (const auto& [path, reason] : rows) {
        text = "old";
        EXPECT_FALSE(ReadWholeFile(path, text, error, 99)) << path;
        EXPECT_EQ(error, reason) << path;
        EXPECT_EQ(text, "");
    }
    EXPECT_TRUE(ReadWholeFile("/proc/self/status", text, error));
    EXPECT_TRUE(text.starts_with("Name:"));
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

TEST(ReplaceFile, KeepsTheModeAndLeavesNoTemporary) {
    const TempDir directory;
    ASSERT_TRUE(ReplaceFile("new.top", "first"));
    ASSERT_EQ(::chmod("new.top", 0440), 0);
    // Write protection does not bind the superuser.
    const bool replaced = ReplaceFile("new.top", "second");
    EXPECT_EQ(replaced, ::geteuid() == 0);
    EXPECT_EQ(directory.Read("new.top"), replaced ? "second" : "first");
    EXPECT_EQ(fs::status("new.top").permissions(), fs::perms(0440));
    fs::create_directory("folder");
    for (const char* path : {"folder", "absent/x", "/dev/null"}) {
        EXPECT_FALSE(ReplaceFile(path, "text")) << path;
    }
    EXPECT_EQ(directory.Files(), Names{"new.top"});
}

// A rename may reach the disk before the data does: after a crash the target would be empty.
TEST(ReplaceFile, FlushesTheNewFileBeforeItTakesTheName) {
    const TempDir directory;
    ASSERT_TRUE(WriteWholeFile("a.top", "first"));
    systemCalls.clear();
    ASSERT_TRUE(ReplaceFile("a.top", "second"));
    const auto flushed = [](const char* path) {
        struct stat info {};
        ::stat(path, &info);
        return "fsync " + std::to_string(info.st_ino);
    };
    EXPECT_EQ(systemCalls, (Names{flushed("a.top"), "rename", flushed(".")}));
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
