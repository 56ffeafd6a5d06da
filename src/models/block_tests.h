// Tests of blocks: what a model can show of one block without a run, say the response of a filter.
// A model's test is one row of the table in block_tests.cpp; a user model brings its own entry.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "base/status.h"
#include "files/user_models.h"
#include "kernel/workspace.h"
#include "models/common/block_test.h"

namespace photrak {

struct BlockTest {
    std::string_view type;
    Status (*run)(const BlockTestCall& call);
};
std::span<const BlockTest> BuiltInBlockTests();

/// Whether blocks of the type can be tested.
bool HasBlockTest(std::string_view type, const UserModelTable& userModels);

/// Evaluates the block's parameters against the workspace's symbols, checks its ports and runs the
/// test of its model. A fault of evaluation or ports is told and the test goes on. Result files
/// land in the working directory. Nothing is thrown past it, and the symbol table is freed.
Status TestComponent(Component& component, Workspace& workspace, const UserModelTable& userModels,
                     std::string& errorText);

/// The same, each stage that had something to tell by itself: evaluation, ports, the test.
std::vector<TestFinding> TestByStages(Component& component, Workspace& workspace,
                                      const UserModelTable& userModels);

}  // namespace photrak
