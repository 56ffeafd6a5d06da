// What no script can play: a start without a catalogue, folders that go away, help without a page.
#include <filesystem>
#include <gtest/gtest.h>

#include "support/holds.h"
#include "support/paths.h"
#include "support/test_workbench.h"
#include "workbench/file_commands.h"
#include "workbench/help_topics.h"
#include "workbench/property_form.h"
#include "workbench/run_control.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

TEST(Start, EndsWithABoxWithoutAWholeCatalogue) {
    const TempDir install;
    const fs::path models = fs::path(install.Path()) / "models";
    const auto start = [&] {
        ScriptDesktop desktop(install.Path());
        Workbench workbench{
            desktop, {BuiltInModels(), HasBlockTest, TestByStages}, install.Path(), install.Path()};
        const bool started = StartWorkbench(workbench);
        EXPECT_EQ(desktop.boxes.size(), started ? 0u : 1u);
        return started ? std::string("started") : desktop.boxes.front();
    };
    const std::string box =
        "box error \"Photrak Error\" \"ERROR in initializing models. Please check to be sure that "
        "ALL\\nthe model files are in the MODELS directory below the executable,\\nthey are all "
        "current, and they are all consistent with one another.\"";
    EXPECT_EQ(start(), box) << "no folder of models";
    fs::copy(ExecutableDirectory() + "models", models, fs::copy_options::recursive);
    EXPECT_EQ(start(), "started");
    for (const char* file : {"trans.lis", "user.lis", "CWLaserModel.def"}) {
        fs::rename(models / file, models / "away");
        EXPECT_EQ(start(), box) << file;
        fs::rename(models / "away", models / file);
    }
}

TEST(Run, NeedsTheFolderOfItsDiagram) {
    TestWorkbench test;
    Workbench& workbench = *test.workbench;
    const fs::path folder = fs::path(test.folder.Path()) / "gone";
    fs::create_directory(folder);
    fs::copy(SourceDir() + "/examples/nrz-link.top", folder / "link.top");
    DiagramView& view = OpenDiagram(workbench, "gone/link.top", OpenAgain::NewView);
    fs::remove_all(folder);
    StartRun(workbench, view, false);
    ASSERT_EQ(test.desktop.boxes.size(), 1u);
    EXPECT_TRUE(Holds(test.desktop.boxes[0], "Cannot enter the directory 'gone'"));
    EXPECT_FALSE(workbench.run.active);

    // It may also go while the run waits for its thread.
    fs::create_directory(folder);
    StartRun(workbench, view, false);
    ASSERT_TRUE(workbench.run.active);
    fs::remove_all(folder);
    FinishRun(workbench);
    EXPECT_EQ(test.desktop.boxes.size(), 2u);
    EXPECT_EQ(workbench.pane, "Simulation failed");
    EXPECT_FALSE(fs::exists("log.txt")) << "where the program stands";
}

TEST(Help, AsksForTheContentsWithoutAPageOfTheModel) {
    TestWorkbench test;
    EXPECT_EQ(HelpTopicOf("PseudoRandomBinarySequenceGener"), 13) << "as far as a symbol's name";
    EXPECT_EQ(HelpTopicOf("SomeUserModel"), 0);
    for (const Answer answer : {Answer::No, Answer::Cancel, Answer::Yes}) {
        test.desktop.answers.push_back(answer);
        ShowHelp(*test.workbench, 0);
        EXPECT_EQ(test.desktop.started.size(), answer == Answer::Yes ? 1u : 0u);
    }
    EXPECT_TRUE(Holds(test.desktop.boxes[0], "No help for this model.  Display general help?"));
    EXPECT_EQ(test.desktop.started[0], "help contents");
}

}  // namespace
}  // namespace photrak
