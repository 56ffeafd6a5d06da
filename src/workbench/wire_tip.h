// What a wire says when the pointer rests on it.
#pragma once

#include <optional>
#include <string>

#include "workbench/workbench.h"

namespace photrak {

/// The wire nearest to the point of those within so many pixels; nothing without one.
std::optional<Wire> WireNear(const Workspace& workspace, CanvasPoint point, const Scale& scale,
                             double tolerance);

/// "Laser output 1 to Modulator input 2, optical, node 3"; empty without a wire near.
std::string WireTip(const Workbench& workbench, const DiagramView& view, CanvasPoint point);

}  // namespace photrak
