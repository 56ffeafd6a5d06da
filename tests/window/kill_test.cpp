// A process that is killed at any moment has lost no more than twenty gestures: another copy of
// this program works in a window until SIGKILL comes, and the next start recovers what it did.
// PHOTRAK_KILLS says how many are killed.
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "base/text.h"
#include "window/frame_fixture.h"
#include "workbench/recovery.h"

namespace photrak {
namespace {

constexpr const char* folderVariable = "PHOTRAK_KILL_FOLDER";
constexpr std::int64_t mostLost = 20;

class KillTest : public FrameTest {
  protected:
    /// Gestures in turn: a block is placed, named by its number; the first one is pushed down or
    /// up.
    void Gesture(std::int64_t i) {
        constexpr int perRow = 40, cell = 9;  // pixels at this zoom
        workbench_.scale.SetZoom(0.2);
        if (i % 2 == 0) {
            const int place = static_cast<int>(i / 2);
            Push("PRBS Generator");
            Click(cell * (place % perRow + 1) + 3, cell * (2 * (place / perRow) + 1) + 3);
            return;
        }
        Push("Select Mode");
        const bool goesDown = i % 4 == 1;
        Click(cell + 3, (goesDown ? cell : 2 * cell) + 3);
        Press(QKeySequence(goesDown ? QStringLiteral("Down") : QStringLiteral("Up")));
    }
    /// Starts the worker on a folder and kills it `after` its first gesture. Gives the number of
    /// gestures that it had ended.
    static std::int64_t WorkAndKill(const std::string& folder, std::chrono::milliseconds after) {
        const std::string countFile = folder + "/count";
        const pid_t child = ::fork();
        if (child == 0) {
            ::setenv(folderVariable, folder.c_str(), 1);
            ::setenv("TMPDIR", folder.c_str(), 1);
            ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO);
            ::execl("/proc/self/exe", "test_window", "--gtest_also_run_disabled_tests",
                    "--gtest_filter=KillTest.DISABLED_Worker", nullptr);
            ::_exit(127);
        }
        const auto count = [&] {
            std::int64_t ended = 0;
            const int file = ::open(countFile.c_str(), O_RDONLY);
            if (file >= 0 && ::pread(file, &ended, sizeof ended, 0) != sizeof ended) ended = 0;
            if (file >= 0) ::close(file);
            return ended;
        };
        EXPECT_TRUE(WaitFor([&] { return count() > 0; })) << "the worker does not start";
        std::this_thread::sleep_for(after);
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        return count();
    }
};

TEST_F(KillTest, DISABLED_Worker) {
    const char* folder = std::getenv(folderVariable);
    if (!folder) GTEST_SKIP() << "for the other test";
    qputenv("XDG_STATE_HOME", folder);
    const int file = ::open((std::string(folder) + "/count").c_str(), O_CREAT | O_WRONLY, 0600);
    ASSERT_GE(file, 0);
    frame_->resize(700, 700);
    Trigger("File New");
    constexpr std::int64_t most = 2400;  // what the rows of the canvas hold
    for (std::int64_t i = 0; i < most; ++i) {
        Gesture(i);
        QApplication::processEvents();
        const std::int64_t ended = i + 1;
        ASSERT_EQ(::pwrite(file, &ended, sizeof ended, 0), static_cast<ssize_t>(sizeof ended));
    }
    for (;;) QTest::qWait(50);  // until the end comes
}

TEST_F(KillTest, TheNextStartOffersTheWork) {
    const char* asked = std::getenv("PHOTRAK_KILLS");
    const int kills = asked ? std::atoi(asked) : 3;
    std::mt19937 random(20261123);
    std::uniform_int_distribution<int> moment(0, 900);
    std::int64_t mostMissing = 0, all = 0;
    ASSERT_TRUE(CopyWholeFile(SourceDir() + "/examples/first-bits.top", PathOf("other.top")));
    for (int i = 0; i < kills; ++i) {
        const std::string folder = PathOf(Concat("kill", i));
        std::filesystem::create_directory(folder);
        const std::int64_t done = WorkAndKill(folder, std::chrono::milliseconds(moment(random)));
        qputenv("XDG_STATE_HOME", folder.c_str());
        desktop_.boxes.clear();
        const std::size_t copies = RecoveryCopies(workbench_).size();
        std::int64_t recovered = 0;
        if (copies > 0) {
            ASSERT_EQ(copies, 1u);
            frame_->Begin({ToQString(PathOf("other.top"))});
            EXPECT_TRUE(workbench_.pane.starts_with("1 diagram was not saved")) << workbench_.pane;
            Trigger("File Close All");
            auto* button = frame_->findChild<QPushButton*>(QStringLiteral("File Recover"));
            EXPECT_EQ(button->text(), QStringLiteral("Recover 1"));
            button->click();
            ASSERT_NE(Dialog("recovery"), nullptr);
            PushIn(*Dialog("recovery"), "Open");
            ASSERT_NE(workbench_.Active(), nullptr);
            EXPECT_TRUE(desktop_.boxes.empty()) << desktop_.boxes.front();
            const DiagramView& view = *workbench_.Active();
            EXPECT_TRUE(view.title.ends_with("(recovered)"));
            EXPECT_TRUE(view.Differs());
            // Every second gesture placed a block.
            recovered = 2 * static_cast<std::int64_t>(view.workspace->components.size()) - 1;
            Trigger("File Close");
        }
        EXPECT_LE(done - recovered, mostLost) << "kill " << i << " after " << done;
        mostMissing = std::max(mostMissing, done - recovered);
        all += done;
        std::filesystem::remove_all(folder);
    }
    if (asked) {
        std::printf("%d kills, %lld gestures, at most %lld lost\n", kills,
                    static_cast<long long>(all), static_cast<long long>(mostMissing));
    }
}

}  // namespace
}  // namespace photrak
