// Tests of blocks: what a model can show of one block without a run, say the response of a filter.
// A model's test is one row of the table in model_tests.cpp; a user model brings its own entry.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "base/status.h"
#include "files/user_models.h"
#include "kernel/workspace.h"
#include "results/plot_files.h"

namespace photrak {

struct ModelTestCall {
    const Component& component;  // parameters evaluated and within their limits
    PlotMode plotMode;           // the files are written in any mode
    std::string& errorText;
};

struct ModelTest {
    std::string_view type;
    Status (*run)(const ModelTestCall& call);
};
std::span<const ModelTest> BuiltInModelTests();

/// Whether blocks of the type can be tested.
bool HasModelTest(std::string_view type, const UserModelTable& userModels);

/// Evaluates the block's parameters against the workspace's symbols, checks its ports and runs the
/// test of its model. A fault of evaluation or ports is told and the test goes on. Result files
/// land in the working directory. Nothing is thrown past it, and the symbol table is freed.
Status TestComponent(Component& component, Workspace& workspace, const UserModelTable& userModels,
                     std::string& errorText);

}  // namespace photrak
