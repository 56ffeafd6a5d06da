// A run on its worker while the interface goes on in another diagram, and how a run ends.
#include <gtest/gtest.h>

#include "support/holds.h"
#include "support/paths.h"
#include "support/test_workbench.h"
#include "workbench/commands.h"
#include "workbench/file_commands.h"
#include "workbench/property_form.h"
#include "workbench/run_control.h"

namespace photrak {
namespace {

class Runs : public testing::Test {
  protected:
    Runs() {
        test_.workbench->run.holds = false;
        for (const char* name : {"nrz-link.top", "soliton.top"}) {
            EXPECT_TRUE(
                CopyWholeFile(SourceDir() + "/examples/" + name, test_.folder.Path() + name));
        }
    }
    DiagramView& Open(const char* name) {
        return OpenDiagram(*test_.workbench, name, OpenAgain::NewView);
    }
    std::string Text(const std::string& name) {
        std::string text, reason;
        EXPECT_TRUE(ReadWholeFile(test_.folder.Path() + name, text, reason)) << reason;
        return text;
    }

    TestWorkbench test_;
};

TEST_F(Runs, OtherDiagramsAreOpenedEditedAndSavedMeanwhile) {
    Workbench& workbench = *test_.workbench;
    StartRun(workbench, Open("nrz-link.top"), false);
    DiagramView& running = *workbench.Active();
    ASSERT_TRUE(workbench.run.active);
    int rounds = 0;
    while (!workbench.run.ended) {
        DiagramView& other = Open("soliton.top");
        // The form evaluates each value for its hint.
        OpenPropertyForm(workbench, other, *other.workspace->components.front());
        EXPECT_TRUE(workbench.Push("Cancel"));
        other.workspace->NOTE = Concat("round ", ++rounds);
        EXPECT_TRUE(SaveDiagram(workbench, other));
        EXPECT_TRUE(Holds(Text("soliton.top"), Concat("round ", rounds)));
        EXPECT_TRUE(CloseDiagram(workbench, other));
        EXPECT_FALSE(workbench.run.active && CloseDiagram(workbench, running));
    }
    FinishRun(workbench);
    EXPECT_EQ(running.running, 0);
    EXPECT_EQ(workbench.run.status, Status::Success);
    EXPECT_GT(rounds, 0);
    // The results lie in the diagram's folder, whatever the interface did.
    EXPECT_FALSE(Text("nrz-received_real.sig").empty());
    EXPECT_TRUE(Holds(Text("log.txt"), "Simulation Completed"));
}

TEST_F(Runs, TellHowTheyEnded) {
    Workbench& workbench = *test_.workbench;
    DiagramView& view = Open("nrz-link.top");
    StartRun(workbench, view, false);
    StartRun(workbench, view, false);
    ASSERT_FALSE(test_.desktop.boxes.empty());
    EXPECT_TRUE(Holds(test_.desktop.boxes.back(), "Simulation already in progress."));
    FinishRun(workbench);
    EXPECT_EQ(workbench.pane, "Simulation Completed");
    EXPECT_FALSE(workbench.run.active);
    // A block that refuses fails the run; the workbench lives on.
    view.workspace->variables.clear();
    for (const auto& component : view.workspace->components) {
        if (component->type == "ReceiverModel") component->NUMINPUTS = 5;
    }
    test_.desktop.boxes.clear();
    StartRun(workbench, view, true);
    FinishRun(workbench);
    EXPECT_EQ(workbench.pane, "Parameter Scan failed");
    EXPECT_EQ(view.running, 0);
}

}  // namespace
}  // namespace photrak
