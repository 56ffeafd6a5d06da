// Which wire the pointer rests on.
#include "workbench/wire_tip.h"

#include <gtest/gtest.h>

#include "kernel/graph.h"
#include "support/test_workbench.h"
#include "workbench/file_commands.h"

namespace photrak {
namespace {

TEST(WireTips, NameTheNearestWireAlongItsWholeWay) {
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

}  // namespace
}  // namespace photrak
