// The real system's processes, libraries, profile and threads.
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "base/text.h"
#include "platform/host.h"
#include "platform/profile.h"
#include "platform/stop_point.h"
#include "platform/workers.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

int Shell(const std::string& script) {
    return SystemHost().processes->RunAndWait({"sh", "-c", script}, WindowState::Normal);
}

TEST(SystemProcesses, ReportTheExitStatusOrThatNothingStarted) {
    EXPECT_EQ(Shell("exit 7"), 7);
    EXPECT_EQ(Shell("kill -TERM $$"), 128 + SIGTERM);
    Processes& processes = *SystemHost().processes;
    EXPECT_EQ(processes.RunAndWait({"no-such-program-of-ours"}, WindowState::Hidden), -1);
    EXPECT_EQ(processes.Start({"no-such-program-of-ours"}), -1);
    EXPECT_EQ(processes.Start({}), -1);
    EXPECT_EQ(processes.Start({std::string("sh\0x", 4)}), -1);
}

// The first shell and the sleep that it started leave at the request; the second one has to be
// made.
TEST(SystemProcesses, EndWithAllTheyStartedWhenTheRunIsStopped) {
    const TempDir directory;
    StopWord stop{0};
    for (const bool stubborn : {false, true}) {
        stop = 0;
        const std::string trap = stubborn ? "trap '' TERM; " : "";
        std::thread user([&] {
            while (directory.Read("pid").empty()) std::this_thread::yield();
            stop = 1;
        });
        const int status = SystemHost().processes->RunAndWait(
            {"sh", "-c", trap + "sleep 60 & echo $! > pid.new; mv pid.new pid; wait; wait"},
            WindowState::Normal, &stop);
        user.join();
        EXPECT_EQ(status, 128 + (stubborn ? SIGKILL : SIGTERM));
        const pid_t sleeper = std::stoi(directory.Read("pid"));
        const auto isGone = [&] {
            const std::string stat = "/proc/" + std::to_string(sleeper) + "/stat";
            std::string text, error;
            return !ReadWholeFile(stat, text, error) || text.find(") Z ") != std::string::npos;
        };
        for (int i = 0; i < 2000 && !isGone(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_TRUE(isGone());
        std::filesystem::remove("pid");
    }
}

TEST(SystemProcesses, GiveChildrenNoFileButTheUsualThree) {
    const TempDir directory;
    const int open = ::open("kept", O_CREAT | O_RDWR, 0600);  // without O_CLOEXEC
    ASSERT_GE(open, 0);
    EXPECT_EQ(Shell(Concat("test ! -e /proc/self/fd/", open)), 0);
    ::close(open);
}

TEST(SystemProcesses, PassArgumentsUntouchedAndNothingToRead) {
    const TempDir directory;
    const std::vector<std::string> arguments = {"sh", "-c", "cat; echo \"$1\" > out", "sh",
                                                "a b; $(rm x) '\"*"};
    EXPECT_EQ(SystemHost().processes->RunAndWait(arguments, WindowState::Normal), 0);
    EXPECT_EQ(directory.Read("out"), "a b; $(rm x) '\"*\n");
}

TEST(SystemProcesses, GiveChildrenTheUsualSignals) {
    // The program ignores SIGPIPE and blocks SIGTERM here; its children must not inherit either.
    const auto former = std::signal(SIGPIPE, SIG_IGN);
    sigset_t blocked, before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    EXPECT_EQ(Shell("kill -PIPE $$"), 128 + SIGPIPE);
    EXPECT_EQ(Shell("kill -TERM $$"), 128 + SIGTERM);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    std::signal(SIGPIPE, former);
}

/// True if some child of this process has ended and nobody has asked for it.
bool HasZombie() {
    siginfo_t info{};
    return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid != 0;
}

TEST(SystemProcesses, ReapFinishedChildrenAtTheNextStart) {
    Processes& processes = *SystemHost().processes;
    ASSERT_EQ(processes.Start({"true"}), 0);
    siginfo_t info{};
    ASSERT_EQ(::waitid(P_ALL, 0, &info, WEXITED | WNOWAIT), 0);
    ASSERT_EQ(processes.Start({"sleep", "0.05"}), 0);
    EXPECT_FALSE(HasZombie());
    ASSERT_EQ(::waitid(P_ALL, 0, &info, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(processes.Start({"no-such-program-of-ours"}), -1);
    EXPECT_FALSE(HasZombie());
}

TEST(SystemLibraries, TellWhyALibraryWillNotLoad) {
    Libraries& libraries = *SystemHost().libraries;
    std::string error;
    EXPECT_EQ(libraries.Load("/no/such/library.so", error), nullptr);
    EXPECT_NE(error.find("/no/such/library.so"), std::string::npos);
    void* library = libraries.Load("libm.so.6", error);
    ASSERT_NE(library, nullptr) << error;
    EXPECT_NE(libraries.Find(library, "cos"), nullptr);
    EXPECT_EQ(libraries.Find(library, "no_such_symbol_of_ours"), nullptr);
    EXPECT_EQ(libraries.Find(nullptr, "cos"), nullptr);
}

TEST(Profile, FindsKeysInTheirSectionAndKeepsEveryOtherLine) {
    constexpr std::string_view text =
        "MultiThread=9\n[Other]\nMultiThread=8\n; MultiThread=7\n[photrak]\r\n"
        " multithread = 1 \r\nBad=x\n[Tail]\nFrameXPos=5\n";
    EXPECT_EQ(FindProfileInt(text, "PHOTRAK", "MultiThread"), 1);
    EXPECT_EQ(FindProfileInt(text, "PHOTRAK", "Bad"), std::nullopt);
    EXPECT_EQ(FindProfileInt(text, "PHOTRAK", "FrameXPos"), std::nullopt);
    EXPECT_EQ(FindProfileInt("[PHOTRAK", "PHOTRAK", "x"), std::nullopt);
    EXPECT_EQ(WithProfileInt("", "P", "a", 1), "[P]\na=1\n");
    EXPECT_EQ(WithProfileInt("[P]\n; note\na = 1\nb=2", "P", "A", -3), "[P]\n; note\nA=-3\nb=2");
    EXPECT_EQ(WithProfileInt("[P]\nb=2\n\n[Q]\na=1\n", "P", "a", 1), "[P]\nb=2\na=1\n\n[Q]\na=1\n");
    EXPECT_EQ(WithProfileInt("[Q]\na=1", "P", "a", 2), "[Q]\na=1\n[P]\na=2\n");
}

TEST(Profile, LiesInTheHomeDirectory) {
    const TempDir directory;
    const char* home = std::getenv("HOME");
    const std::string former = home ? home : "";
    ::setenv("HOME", directory.Path().c_str(), 1);
    Profile& profile = *SystemHost().profile;
    EXPECT_EQ(profile.ReadInt("PHOTRAK", "MultiThread", 4), 4);
    profile.WriteInt("PHOTRAK", "MultiThread", 0);
    EXPECT_EQ(profile.ReadInt("PHOTRAK", "MultiThread", 4), 0);
    EXPECT_EQ(directory.Read(".config/photrak/PHOTRAK.INI"), "[PHOTRAK]\nMultiThread=0\n");
    ::unsetenv("HOME");
    profile.WriteInt("PHOTRAK", "MultiThread", 1);
    EXPECT_EQ(directory.Read("PHOTRAK.INI"), "[PHOTRAK]\nMultiThread=1\n");
    if (home) ::setenv("HOME", former.c_str(), 1);
    EXPECT_FALSE(SystemHost().messages->QueryBox("Nobody answers", queryTitle));
}

// Many short loops of changing length: a thread that is late for one must neither be missed nor do
// a task of the next.
TEST(Workers, DoEveryTaskOnceInEveryLoop) {
    for (const int threads : {1, 2, 5}) {
        Workers workers(threads);
        EXPECT_LE(workers.Count(), threads);
        std::vector<std::atomic<bool>> busy(static_cast<std::size_t>(threads));
        for (long loop = 0; loop < 300; ++loop) {
            std::vector<std::atomic<int>> done(static_cast<std::size_t>(loop % 17));
            workers.Share(loop % 17, [&](long task, int worker) {
                std::atomic<bool>& mine = busy[static_cast<std::size_t>(worker)];
                EXPECT_FALSE(mine.exchange(true));
                ++done[static_cast<std::size_t>(task)];
                mine = false;
            });
            for (const auto& times : done) ASSERT_EQ(times, 1) << threads << " " << loop;
        }
    }
}

TEST(Workers, ThrowOnWhatATaskThrew) {
    Workers workers(3);
    const auto fail = [](long task, int) {
        if (task == 4) throw std::runtime_error("task 4");
    };
    EXPECT_THROW(workers.Share(6, fail), std::runtime_error);
    int count = 0;
    workers.Share(1, [&](long, int) { ++count; });
    EXPECT_EQ(count, 1);
}

// Tasks of hours on every thread end a moment after the stop word of the caller is set.
TEST(Workers, LookAtTheStopWordOfWhoCallsThem) {
    std::atomic<std::int16_t> word = 0;
    const StopScope scope(&word);
    Workers workers(3);
    std::atomic<long> begun = 0;
    const auto work = [&](long, int) {
        ++begun;
        for (;;) {
            word = 1;
            StopPoint();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    };
    EXPECT_THROW(workers.Share(1000, work), StopAsked);
    EXPECT_LE(begun, workers.Count());
    word = 0;
    workers.Share(10, [&](long, int) { StopPoint(); });
}

TEST(Workers, TakeTheirNumberFromTheEnvironment) {
    RecordingHost host;
    const int processors = ThreadBudget();
    EXPECT_GE(processors, 1);
    const struct {
        const char* text;
        int threads;  // 0: as without
    } rows[] = {{"3", 3}, {"256", 256}, {"257", 0}, {"0", 0}, {"-2", 0}, {"2x", 0}, {"", 0}};
    for (const auto& row : rows) {
        host.environment["PHOTRAK_THREADS"] = row.text;
        EXPECT_EQ(ThreadBudget(), row.threads ? row.threads : processors) << row.text;
    }
}

}  // namespace
}  // namespace photrak
