// Topics of the help by model type, and the way into it.
#pragma once

#include "workbench/workbench.h"

namespace photrak {

/// Opens the help at a topic. With topic 0 (a user's model) it asks whether to open its contents.
void ShowHelp(Workbench& workbench, std::int32_t topic);

}  // namespace photrak
