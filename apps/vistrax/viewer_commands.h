// All actions of the viewer as one table: menu, text, keys, tip, and what they do.
#pragma once

#include <span>

#include "qt/actions.h"

namespace photrak {

std::span<const ActionRow> ViewerActionRows();

}  // namespace photrak
