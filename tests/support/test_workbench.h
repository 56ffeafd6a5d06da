// A workbench without a window in a scratch folder, which is its home: a profile of the user who
// runs the tests decides nothing.
#pragma once

#include <cstdlib>
#include <memory>

#include "models/block_tests.h"
#include "models/dispatch.h"
#include "platform/file_system.h"
#include "support/temp_dir.h"
#include "workbench/script_player.h"

namespace photrak {

struct TestWorkbench {
    TestWorkbench() {
        for (const char* home : {"HOME", "XDG_STATE_HOME"}) {
            ::setenv(home, folder.Path().c_str(), 1);
        }
        workbench.reset(new Workbench{desktop,
                                      {BuiltInModels(), HasBlockTest, TestByStages},
                                      ExecutableDirectory(),
                                      folder.Path()});
        workbench->run.holds = true;
        started = StartWorkbench(*workbench);
    }

    TempDir folder;
    ScriptDesktop desktop{folder.Path()};
    std::unique_ptr<Workbench> workbench;
    bool started = false;
};

}  // namespace photrak
