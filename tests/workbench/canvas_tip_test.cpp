// What the pointer rests on: wires with their last signal, ports, blocks with what is set.
#include "workbench/canvas_tip.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "drawing/number_text.h"
#include "kernel/graph.h"
#include "kernel/parameter_records.h"
#include "kernel/parameters.h"
#include "kernel/signal_summary.h"
#include "support/test_workbench.h"
#include "workbench/file_commands.h"

namespace photrak {
namespace {

TEST(CanvasTips, NameTheNearestWireAlongItsWholeWay) {
    TestWorkbench test;
    Workbench& workbench = *test.workbench;
    DiagramView& view = NewDiagram(workbench);
    Component* blocks[3] = {};
    int i = 0;
    for (const CanvasPoint at : {CanvasPoint{0, 0}, CanvasPoint{45, 0}, CanvasPoint{180, 45}}) {
        blocks[i] =
            AddComponent(*view.workspace, "NonlinearFiberModel",
                         std::string(1, static_cast<char>('A' + i)), 0, 0, workbench.catalogue);
        blocks[i]->x = at.x;
        blocks[i++]->y = at.y;
    }
    std::string text;
    for (int to : {1, 2}) {
        ASSERT_EQ(ConnectComponents(*view.workspace, *blocks[0], 1, *blocks[to], 1, text),
                  Status::Success);
    }
    // A to B runs straight from (33, 15) to (42, 15); A to C through the gap at height 0 - 7 + 45.
    EXPECT_EQ(WireTip(workbench, view, {38, 17}), "A output 1 to B input 1, optical, node 2");
    EXPECT_EQ(WireTip(workbench, view, {100, 40}), "A output 1 to C input 1, optical, node 2");
    EXPECT_EQ(WireTip(workbench, view, {174, 49}), "A output 1 to C input 1, optical, node 2");
    EXPECT_EQ(WireTip(workbench, view, {100, 42}), "");
    EXPECT_EQ(WireTip(workbench, view, {38, 60}), "");
}

/// Signals put on the node by hand, as a run leaves their records.
TEST(CanvasTips, TellWhatAWireCarriedLast) {
    TestWorkbench test;
    Workbench& workbench = *test.workbench;
    DiagramView& view = NewDiagram(workbench);
    Component* from =
        AddComponent(*view.workspace, "CWLaserModel", "Laser", 0, 0, workbench.catalogue);
    Component* to =
        AddComponent(*view.workspace, "NonlinearFiberModel", "Fiber", 0, 0, workbench.catalogue);
    from->x = from->y = to->y = 0;
    to->x = 45;
    view.ForgetIndex();
    std::string text;
    ASSERT_EQ(ConnectComponents(*view.workspace, *from, 1, *to, 1, text), Status::Success);
    const std::string wire = "Laser output 1 to Fiber input 1, optical, node 1";
    EXPECT_EQ(CanvasTip(workbench, view, {38, 15}), wire);
    Node& node = *from->outputs[0].node;
    SignalSummary channel;
    channel.sigType = OpSigType;
    channel.average = 1e-3;
    channel.wavelength = 1550.12e-9;
    node.summaries = {channel, channel};
    node.summaries.back().average = 0.5e-3;
    node.summaries.push_back(channel);
    node.summaries.back().RUN = 7;  // an older one
    EXPECT_EQ(CanvasTip(workbench, view, {38, 15}),
              Concat(wire, "\n1550.12 nm: 0.00 dBm (1 mW)\n1550.12 nm: ", minusSign,
                     "3.01 dBm (500 \xC2\xB5W)"));
    for (int more = 0; more < 10; ++more) node.summaries.push_front(channel);
    EXPECT_TRUE(CanvasTip(workbench, view, {38, 15}).ends_with("\n... and 4 more"));
    view.running = 1;
    EXPECT_EQ(CanvasTip(workbench, view, {38, 15}), wire);
    view.running = 0;
    EXPECT_EQ(CanvasTip(workbench, view, {43, 15}), "Fiber input 1, optical");
}

TEST(CanvasTips, TellWhatIsSetOnABlock) {
    TestWorkbench test;
    Workbench& workbench = *test.workbench;
    DiagramView& view = NewDiagram(workbench);
    Component* block =
        AddComponent(*view.workspace, "NonlinearFiberModel", "Fiber", 0, 0, workbench.catalogue);
    block->x = block->y = 0;
    view.ForgetIndex();
    block->NOTE = "<b>80</b> km of 100%\nfiber";
    const std::string head = "Fiber\nNonlinearFiberModel\n<b>80</b> km of 100% fiber";
    EXPECT_EQ(CanvasTip(workbench, view, {15, 15}), head);
    Parameter& distance = *FindParameter("distance", block->parameters);
    ASSERT_TRUE(SetText(&distance.value, "2*40e3"));
    EXPECT_EQ(CanvasTip(workbench, view, {15, 15}), head + "\ndistance = 2*40e3 = 80000 m");
    ASSERT_TRUE(SetText(&distance.value, "5000"));
    view.findings["Fiber"] = "the input is open";
    EXPECT_EQ(CanvasTip(workbench, view, {15, 15}),
              head + "\nthe input is open\ndistance = 5000 m");
    EXPECT_EQ(CanvasTip(workbench, view, {200, 200}), "");
}

}  // namespace
}  // namespace photrak