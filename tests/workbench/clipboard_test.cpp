// What Undo must bring back byte for byte, and the refusals of copy and paste.
#include "workbench/clipboard.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "files/topology.h"
#include "kernel/graph.h"
#include "support/test_workbench.h"
#include "workbench/block_copy.h"
#include "workbench/edit_commands.h"
#include "workbench/file_commands.h"

namespace photrak {
namespace {

std::string Block(const char* name, const char* type, const char* from, const char* to) {
    return Concat("COMPONENT ", name, " ", type,
                  "\nNOTE n\nICON x 7 9\nNUMINPUTS 1\nNUMOUTPUTS 1\n", "INPUTFROM ", from,
                  "\nOUTPUTTO ", to, "\nENDCOMPONENT\n");
}

/// Marks on nodes, a line record, a node that nothing stands on, twins, a source on a marked node.
std::string MarkedTopology() {
    return "NOTE kept\nLOCKED YES\nBEGINVARIABLES\nb DoubleType 2\na StringType x y\nENDVARIABLES\n"
           "SIMOPTIONS\nNUMRUNSTODO 3\nPLOTTING DoNotPlot\nENDSIMOPTIONS\n"
           "BEGINNODES 7 3\nENDNODES 9\n"
           "NODEBEGIN 3 OpSigType\nSIGNALSAVEMODE SaveDiskIntermediate\nLINE 1 2 3 4 some "
           "text\nENDNODE\n"
           "NODEBEGIN 12 ElecSigType\nENDNODE\n" +
           Block("Fiber", "NonlinearFiberModel", "3", "7") +
           Block("Fiber", "NonlinearFiberModel", "7", "9") +
           Block("Laser", "CWLaserModel", "0", "3");
}

TEST(UndoOfDelete, BringsBackMarksLinesAndEmptyNodes) {
    TestWorkbench test;
    Workbench& workbench = *test.workbench;
    test.folder.Write("marked.top", MarkedTopology());
    DiagramView& view = OpenDiagram(workbench, "marked.top", OpenAgain::NewView);
    ASSERT_EQ(view.workspace->components.size(), 3u) << view.workspace->errorText;
    const std::string before = TextOf(*view.workspace);
    ASSERT_NE(before.find("BEGINNODES 7 3"), std::string::npos) << before;
    ASSERT_NE(before.find("LINE 1 2 3 4 some text"), std::string::npos);
    for (const auto command : {EditDelete, EditCut}) {
        for (std::size_t i = 0; i < 3; ++i) {
            view.Select(view.workspace->components[i].get());
            command(workbench);
            EXPECT_EQ(view.workspace->components.size(), 2u);
            EXPECT_TRUE(view.Differs());
            EditUndo(workbench);
            EXPECT_EQ(TextOf(*view.workspace), before) << i;
            EXPECT_FALSE(view.Differs());
        }
    }
    // A prefix typed for a run is no change of the diagram: a step back does not take it away.
    view.workspace->options->OUTPUTPREFIX = "mine";
    StepBack(workbench);
    EXPECT_EQ(view.workspace->options->OUTPUTPREFIX, "mine");
}

TEST(Clipboard, RefusesWhatItCannotHold) {
    TestWorkbench test;
    Workbench& workbench = *test.workbench;
    std::string text;
    EXPECT_EQ(PasteIntoWorkspace(nullptr, workbench.clipboard.get(), nullptr, text), Status::Error);
    EXPECT_EQ(text, "PasteIntoWorkspace error: NULL parameter\n");
    text.clear();
    std::unique_ptr<Component> copy;
    EXPECT_EQ(CopyComponent(nullptr, copy, text), Status::Error);
    EXPECT_EQ(text, "Error in calling Copy Component\n");

    DiagramView& view = NewDiagram(workbench);
    Workspace& workspace = *view.workspace;
    Component* laser = AddComponent(workspace, "CWLaserModel", "L", 0, 0, workbench.catalogue);
    Component* drive =
        AddComponent(workspace, "ElectricalSignalGenerator", "D", 0, 0, workbench.catalogue);
    // A file may wire what does not fit: the copy is refused, and nothing is cut.
    AttachInput(*drive, 1, laser->outputs.front().node->number, workspace);
    EndChange(workbench, view, "by a file");
    view.Select(laser);
    view.Select(drive);
    EditCut(workbench);
    EXPECT_EQ(workspace.components.size(), 2u);
    EXPECT_TRUE(workbench.clipboard->components.empty());
    EXPECT_FALSE(view.undo.valid || view.undo.modified);
    ASSERT_EQ(test.desktop.boxes.size(), 1u);
    EXPECT_NE(test.desktop.boxes.front().find("box error"), std::string::npos);

    view.ClearSelection();
    view.Select(laser);
    EditCopy(workbench);
    FindOrCreateNode(2147483647, workspace);
    EditPaste(workbench);
    EXPECT_EQ(workspace.components.size(), 2u) << "no number is left for its node";
    EXPECT_EQ(test.desktop.boxes.size(), 2u);
}

}  // namespace
}  // namespace photrak
