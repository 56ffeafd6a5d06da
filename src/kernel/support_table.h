// The table of operations for user model libraries.
#pragma once

#include <optional>
#include <string>

#include "photrak/user_model.h"

namespace photrak {

/// Filled on first use; its order is a binary contract. No entry throws: a library's frames may not
/// be able to unwind. A transform that fails returns 0 and is remembered.
const PhotrakSupport& SupportTable();

/// The message of the first transform that failed since the last call, or nothing. Whoever runs a
/// library asks when it has returned, and ends the run.
std::optional<std::string> TakeSupportFailure();

}  // namespace photrak
