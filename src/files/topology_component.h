// The reader of a COMPONENT block.
#pragma once

#include "base/status.h"

namespace photrak {

struct TopologyContext;

/// As the readers of topology_blocks.h.
Status ReadComponentBlock(TopologyContext& context);

}  // namespace photrak
