// The table of operations for user model libraries.
#pragma once

#include "photrak/user_model.h"

namespace photrak {

/// Filled on first use; its order is a binary contract.
const PhotrakSupport& SupportTable();

}  // namespace photrak
