// The reader of a COMPONENT block.
#pragma once

#include <string_view>

#include "base/status.h"

namespace photrak {

struct TopologyContext;

/// As the readers of topology_blocks.h.
Status ReadComponentBlock(TopologyContext& context);

/// The model that a file's word for a block stands for: most words name it themselves.
std::string_view ModelOfWord(std::string_view word);

}  // namespace photrak
