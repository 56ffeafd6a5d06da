// Wires between two components.
#pragma once

#include <string>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// Wires an output to an input; position 0 means any. Error with a text, or success.
Status ConnectComponents(Workspace& workspace, Component& first, std::int32_t output,
                         Component& second, std::int32_t input, std::string& errorText);
/// Takes the second component's input off the node it shares with the first; ports that are left
/// alone get the types of their models back.
Status DisconnectComponents(Workspace& workspace, Component& first, std::int32_t output,
                            Component& second, std::int32_t input, std::string& errorText);

}  // namespace photrak
