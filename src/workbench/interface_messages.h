// What saves, loads and tests tell and ask on the interface thread goes to the boxes and the
// message pane of the workbench.
#pragma once

#include <memory>

namespace photrak {

struct Workbench;

/// In force until it is destroyed, on the calling thread.
std::shared_ptr<void> TakeMessages(Workbench& workbench);

}  // namespace photrak
