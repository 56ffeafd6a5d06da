// What no script can play: a start without a catalogue, folders that go away, help without a page.
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

#include "base/text.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "support/holds.h"
#include "support/paths.h"
#include "support/test_workbench.h"
#include "workbench/commands.h"
#include "workbench/file_commands.h"
#include "workbench/help_topics.h"
#include "workbench/mouse.h"
#include "workbench/property_form.h"
#include "workbench/run_control.h"
#include "workbench/symbols_form.h"

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

TEST(Forms, ShowWhatTheirTablesHoldAndKeepTheRest) {
    TestWorkbench test;
    Workbench& workbench = *test.workbench;
    DiagramView& view = NewDiagram(workbench);
    for (int i = 0; i < 514; ++i) {
        AddVariable(*view.workspace, Concat("v", 1000 + i), DoubleType, "1");
    }
    OpenSymbolsForm(workbench, view);
    EXPECT_EQ(workbench.forms[0]->lists[0].rows.size(), 512u);
    EXPECT_EQ(workbench.forms[0]->note, "2 more stand in the file only");
    EXPECT_TRUE(workbench.Push("New Symbol"));
    EXPECT_TRUE(workbench.forms[0]->Edit("Name", "", "more"));
    EXPECT_TRUE(workbench.Push("Accept Symbol"));
    EXPECT_TRUE(Holds(test.desktop.boxes.back(), "Symbol table full, cannot insert more"));
    EXPECT_TRUE(workbench.Push("Reject Symbol") && workbench.Push("Delete Symbol"));
    EXPECT_TRUE(workbench.Push("OK"));
    EXPECT_EQ(view.workspace->variables.size(), 513u);

    Component& block =
        *AddComponent(*view.workspace, "CWLaserModel", "L", 0, 0, workbench.catalogue);
    Parameter** end = &block.parameters;
    while (*end) end = &(*end)->next;
    for (int i = 0; i < 300; ++i, end = &(*end)->next) {
        *end = CreateParameter(Concat("x", 1000 + i), DoubleType);
    }
    OpenPropertyForm(workbench, view, block);
    EXPECT_EQ(workbench.forms[0]->tables[0].rows.size(), 200u) << "with the row of the name";
    EXPECT_EQ(workbench.forms[0]->tables[0].Steps(), 47);
    EXPECT_EQ(workbench.forms[0]->note, "110 parameters are set through files only");
}

/// A model of the user's own whose library is not there: it is drawn and set all the same.
TEST(UserModels, HaveAButtonAndADialog) {
    const TempDir install;
    const fs::path models = fs::path(install.Path()) / "models";
    fs::copy(ExecutableDirectory() + "models", models, fs::copy_options::recursive);
    ASSERT_TRUE(WriteWholeFile(models / "user.lis",
                               "* those of the laboratory\n"
                               "Table table.def table.bmp nowhere.so run test\n"
                               "Gone gone.def gone.bmp nowhere.so run test\n"));
    ASSERT_TRUE(WriteWholeFile(
        models / "table.def",
        "COMPONENT Table\nMININPUTS 1\nMAXINPUTS 1\nMINOUTPUTS 1\nMAXOUTPUTS 1\nNUMINPUTS 1\n"
        "NUMOUTPUTS 1\nINSIGTYPES OpSigType\nOUTSIGTYPES OpSigType\n"
        "PARAM gain DoubleType\nVALUE 1\nENDPARAM\n"
        "PARAM shape ComplexArrayType\nROWS 1\nCOLS 1\nDATA\n1 2\nENDPARAM\nENDCOMPONENT\n"));
    ScriptDesktop desktop(install.Path());
    Workbench workbench{
        desktop, {BuiltInModels(), HasBlockTest, TestByStages}, install.Path(), install.Path()};
    ASSERT_TRUE(StartWorkbench(workbench));
    ASSERT_EQ(desktop.boxes.size(), 1u) << "the libraries, and a definition that is left out";
    DiagramView& view = NewDiagram(workbench);
    const std::vector<BarButton> buttons = Palette(workbench);
    const auto button = std::ranges::find(buttons, "User Model 2", &BarButton::tooltip);
    ASSERT_NE(button, buttons.end());
    EXPECT_EQ(button->x, 30) << "the comment keeps its place in the row";
    EXPECT_EQ(button->y, 375);
    PushBarButton(workbench, *button);
    EXPECT_EQ(workbench.pane, "Icon Mode: Table");
    MousePress(workbench, view, {{100, 100}});
    MousePress(workbench, view, {{100, 100}, true});
    ASSERT_EQ(workbench.forms.size(), 1u);
    EXPECT_EQ(workbench.forms[0]->note, "1 parameter is set through files only");
    EXPECT_FALSE(workbench.Push("Test"));
    desktop.answers.push_back(Answer::Yes);
    EXPECT_TRUE(workbench.Push("Help"));
    EXPECT_EQ(desktop.started, std::vector<std::string>{"help contents"});
    desktop.files.emplace_back("table");
    EXPECT_TRUE(workbench.Push("Save..."));
    EXPECT_TRUE(Holds(desktop.boxes.back(), "does not bring back complex arrays: 'shape'"));
    EXPECT_TRUE(fs::exists(fs::path(install.Path()) / "table.prm"));
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
