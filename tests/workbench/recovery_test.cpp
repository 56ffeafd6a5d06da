// Recovery copies are whole whenever the process dies, and what may start programs is asked once.
#include "workbench/recovery.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/holds.h"
#include "support/test_workbench.h"
#include "workbench/file_commands.h"
#include "workbench/mouse.h"
#include "workbench/run_consent.h"

namespace photrak {
namespace {

std::string Text(const std::string& path) {
    std::string text, reason;
    EXPECT_TRUE(ReadWholeFile(path, text, reason)) << reason;
    return text;
}

/// Writes the copy in a child that dies at its n-th entry into or return from the system. False
/// when it came to its end before; `traced` is false where tracing is not allowed.
bool DiesAtCall(Workbench& workbench, DiagramView& view, int n, bool& traced) {
    const pid_t child = ::fork();
    if (child == 0) {
        if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) ::_exit(99);
        ::raise(SIGSTOP);
        KeepRecoveryCopy(workbench, view);
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    traced = WIFSTOPPED(status);
    for (int i = 0; i < n && WIFSTOPPED(status); ++i) {
        ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        ::waitpid(child, &status, 0);
    }
    if (!WIFSTOPPED(status)) return false;
    ::kill(child, SIGKILL);
    ::waitpid(child, &status, 0);
    return true;
}

TEST(Recovery, ACopyIsWholeAtWhicheverCallTheProcessDies) {
    TestWorkbench test;
    ASSERT_TRUE(test.started);
    DiagramView& view = NewDiagram(*test.workbench);
    view.workspace->NOTE = "old";
    KeepRecoveryCopy(*test.workbench, view);
    const std::string path = view.recoveryPath, old = Text(path);
    view.workspace->NOTE = std::string(20'000, 'n');
    bool traced = true, sawOld = false, sawNew = false;
    int calls = 0;
    while (traced && DiesAtCall(*test.workbench, view, ++calls, traced) && calls < 2000) {
        const std::string now = Text(path);
        const bool isOld = now == old;
        EXPECT_TRUE(isOld || (now.size() > 20'000 && now.ends_with(TextOf(*view.workspace))))
            << "torn at call " << calls;
        (isOld ? sawOld : sawNew) = true;
        ASSERT_TRUE(WriteWholeFile(path, old));
    }
    if (!traced) GTEST_SKIP() << "this system lets no process trace another";
    EXPECT_GT(calls, 10);
    EXPECT_TRUE(sawOld && sawNew);
}

TEST(Recovery, KeepsACopyUntilItsSuperBlockIsFoundAgain) {
    TestWorkbench test;
    Workbench& workbench = *test.workbench;
    const std::filesystem::path folder = test.folder.Path() + "link";
    std::filesystem::create_directory(folder);
    const std::string definition =
        "SuperBlock span\nICON x 0 0\nNOTE \nMININPUTS 1\nMAXINPUTS 1\nMINOUTPUTS "
        "1\nMAXOUTPUTS 1\nNUMINEQNUMOUTNODES FALSE\nNUMINPUTS 1\nNUMOUTPUTS 1\nINSIGTYPES "
        "OpSigType\nOUTSIGTYPES OpSigType\nENDCOMPONENT\n";
    ASSERT_TRUE(WriteWholeFile(folder / "span.dts", definition));
    DiagramView* view = &NewDiagram(workbench);
    test.desktop.files.emplace_back("link/outer");
    ASSERT_TRUE(SaveDiagram(workbench, *view));
    SetMode(workbench, Mode::Icon, workbench.palette.IndexOf("SuperBlock"));
    test.desktop.files.emplace_back("link/span.dts");
    MousePress(workbench, *view, {{100, 100}});
    const std::string text = TextOf(*view->workspace);
    ASSERT_TRUE(Holds(text, "SuperBlock span"));
    // Recovered, closed and recovered again it still is a diagram of its folder.
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(CloseDiagram(workbench, *view));
        const std::vector<RecoveryCopy> copies = RecoveryCopies(workbench);
        ASSERT_EQ(copies.size(), 1u);
        EXPECT_EQ(copies[0].fileName, folder / "outer.top");
        view = OpenRecoveryCopy(workbench, copies[0]);
        EXPECT_EQ(view->title, "outer.top (recovered)");
        EXPECT_EQ(TextOf(*view->workspace), text);
        EXPECT_TRUE(view->Differs());
    }
    // While its SuperBlock is away the copy does not load, and nothing takes its place.
    ASSERT_TRUE(CloseDiagram(workbench, *view));
    std::filesystem::rename(folder / "span.dts", folder / "away");
    view = OpenRecoveryCopy(workbench, RecoveryCopies(workbench).at(0));
    EXPECT_EQ(view->title, "outer.top (not loaded)");
    EXPECT_TRUE(view->workspace->components.empty());
    EXPECT_EQ(test.desktop.boxes.size(), 3u) << "two file dialogs and the reason";
    KeepPendingCopies(workbench);
    ASSERT_TRUE(CloseDiagram(workbench, *view));
    std::filesystem::rename(folder / "away", folder / "span.dts");
    view = OpenRecoveryCopy(workbench, RecoveryCopies(workbench).at(0));
    EXPECT_EQ(TextOf(*view->workspace), text);
}

TEST(Saving, KeepsTheFileOfWhichItLosesLinesAlsoUnderAChosenName) {
    TestWorkbench test;
    ASSERT_TRUE(test.started);
    const std::string newer = "NOTE kept\nKEYWORDOFTOMORROW 1\n";
    for (const bool choosesName : {false, true}) {
        test.folder.Write("newer.top", newer);
        DiagramView& view = OpenDiagram(*test.workbench, "newer.top", OpenAgain::NewView);
        if (choosesName) test.desktop.files.emplace_back("newer.top");
        EXPECT_TRUE(choosesName ? SaveDiagramAs(*test.workbench, view)
                                : SaveDiagram(*test.workbench, view));
        EXPECT_EQ(Text(test.folder.Path() + "newer.top~"), newer);
        EXPECT_FALSE(Holds(Text(test.folder.Path() + "newer.top"), "TOMORROW"));
        EXPECT_TRUE(std::filesystem::remove(test.folder.Path() + "newer.top~"));
        // The second save has nothing to lose any more.
        EXPECT_TRUE(SaveDiagram(*test.workbench, view));
        EXPECT_FALSE(std::filesystem::exists(test.folder.Path() + "newer.top~"));
        EXPECT_TRUE(CloseDiagram(*test.workbench, view));
    }
}

TEST(Consent, IsAskedOnceForEachContentAndCanBeTakenBack) {
    TestWorkbench test;
    ASSERT_TRUE(test.started);
    const std::string device =
        "COMPONENT Device MultiportOpticalDevice\nNOTE \nICON NULL 0 0\nNUMINPUTS 1\nNUMOUTPUTS "
        "1\nINPUTFROM 1\n"
        "OUTPUTTO 2\nPARAM CommandLine StringType\nVALUE echo one\nENDPARAM\nENDCOMPONENT\n";
    const std::string block =
        "COMPONENT Line SuperBlock inner\nNOTE \nICON NULL 0 0\nNUMINPUTS 1\nNUMOUTPUTS "
        "1\nINPUTFROM 1\nOUTPUTTO 2\n"
        "ENDCOMPONENT\n";
    test.folder.Write("inner.top", device);
    test.folder.Write("inner.dts",
                      "SuperBlock inner\nNUMINPUTS 1\nNUMOUTPUTS 1\nMININPUTS 1\nMAXINPUTS 1\n"
                      "MINOUTPUTS 1\nMAXOUTPUTS 1\nINSIGTYPES OpSigType\nOUTSIGTYPES OpSigType\n"
                      "ENDCOMPONENT\n");
    test.folder.Write("outer.top", block);
    DiagramView& view = OpenDiagram(*test.workbench, "outer.top", OpenAgain::NewView);
    ASSERT_TRUE(test.desktop.boxes.empty()) << Text(test.folder.Path() + "log.txt");
    test.desktop.answers = {Answer::No, Answer::Yes};
    EXPECT_FALSE(HasRunConsent(*test.workbench, view));
    EXPECT_TRUE(HasRunConsent(*test.workbench, view));
    EXPECT_TRUE(HasRunConsent(*test.workbench, view)) << "remembered, nothing is asked";
    ASSERT_EQ(test.desktop.boxes.size(), 2u);
    EXPECT_TRUE(Holds(test.desktop.boxes[0], "command line of Line:Device: echo one"));
    // Another command line inside asks anew, and so does taking all back.
    test.folder.Write("inner.top", device.substr(0, device.find("one")) + "two" +
                                       device.substr(device.find("one") + 3));
    test.desktop.answers = {Answer::Yes, Answer::Yes, Answer::No};
    EXPECT_TRUE(HasRunConsent(*test.workbench, view));
    ShowConsents(*test.workbench);
    EXPECT_FALSE(HasRunConsent(*test.workbench, view));
    EXPECT_TRUE(test.desktop.answers.empty());
}

}  // namespace
}  // namespace photrak
