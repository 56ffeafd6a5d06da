// The models that have a test, and the steps around it.
#include "models/block_tests.h"

#include <algorithm>
#include <exception>

#include "base/escape.h"
#include "base/text.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "kernel/symbols.h"
#include "models/optical/filter_display.h"
#include "models/sources/direct_laser.h"

namespace photrak {
namespace {

constexpr BlockTest blockTests[] = {
    {"OpticalFilter", DrawOpticalFilter},
    {"DirectModulatedLaserModel", LDDirectModTest},
};

const BlockTest* FindBlockTest(std::string_view type) {
    const auto row = std::ranges::find(blockTests, type, &BlockTest::type);
    return row != std::end(blockTests) ? row : nullptr;
}

Status RunTest(const Component& component, const Workspace& workspace,
               const UserModelTable& userModels, std::string& errorText) {
    if (const BlockTest* test = FindBlockTest(component.type)) {
        return test->run({{component.name, errorText},
                          component,
                          BlockPlotMode(*workspace.options, PlotMode::Display)});
    }
    return userModels.Test(component.type, component.parameters, errorText);
}

}  // namespace

std::span<const BlockTest> BuiltInBlockTests() {
    return blockTests;
}

bool HasBlockTest(std::string_view type, const UserModelTable& userModels) {
    return FindBlockTest(type) || userModels.HasTest(type);
}

Status TestComponent(Component& component, Workspace& workspace, const UserModelTable& userModels,
                     std::string& errorText) {
    Status status = Status::Success;
    const EscapeLevel level(/*armed=*/true);
    try {
        if (level.Refused()) {
            errorText += "ERROR: the test is nested too deep\n";
            return Status::Error;
        }
        MergeStatus(status, BuildSymbolTable(workspace, errorText));
        MergeStatus(status, EvalComponentParams(component, &workspace, errorText));
        MergeStatus(status, CheckPorts(component, errorText));
        MergeStatus(status, RunTest(component, workspace, userModels, errorText));
    } catch (const Escape& escape) {
        errorText += Concat("ERROR: ", escape.message, "\n");
        status = Status::Error;
    } catch (const std::exception& failure) {
        errorText += Concat("ERROR: the test was given up: ", failure.what(), "\n");
        status = Status::Error;
    }
    FreeSymbolTable(workspace);
    return status;
}

}  // namespace photrak
