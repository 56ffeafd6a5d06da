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

std::vector<TestFinding> TestByStages(Component& component, Workspace& workspace,
                                      const UserModelTable& userModels) {
    std::vector<TestFinding> findings;
    std::string text;
    const auto tell = [&](Status status) {
        if (status != Status::Success || !text.empty()) findings.push_back({status, text});
        text.clear();
    };
    const EscapeLevel level(/*armed=*/true);
    try {
        if (level.Refused()) return {{Status::Error, "ERROR: the test is nested too deep\n"}};
        Status evaluated = BuildSymbolTable(workspace, text);
        MergeStatus(evaluated, EvalComponentParams(component, &workspace, text));
        tell(evaluated);
        tell(CheckPorts(component, text));
        tell(RunTest(component, workspace, userModels, text));
    } catch (const Escape& escape) {
        text += Concat("ERROR: ", escape.message, "\n");
        tell(Status::Error);
    } catch (const std::exception& failure) {
        text += Concat("ERROR: the test was given up: ", failure.what(), "\n");
        tell(Status::Error);
    }
    FreeSymbolTable(workspace);
    return findings;
}

Status TestComponent(Component& component, Workspace& workspace, const UserModelTable& userModels,
                     std::string& errorText) {
    Status status = Status::Success;
    for (const TestFinding& finding : TestByStages(component, workspace, userModels)) {
        MergeStatus(status, finding.status);
        errorText += finding.text;
    }
    return status;
}

}  // namespace photrak
