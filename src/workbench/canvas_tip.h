// What stands under the pointer, told in a few lines: a block with what is set on it, a port, a
// wire with the signal that it carried last.
#pragma once

#include <optional>
#include <string>

#include "workbench/workbench.h"

namespace photrak {

/// The wire nearest to the point of those within so many pixels; nothing without one.
std::optional<Wire> WireNear(const Workspace& workspace, CanvasPoint point, const Scale& scale,
                             double tolerance);

/// "Laser output 1 to Modulator input 2, optical, node 3", and after a run a line for what the node
/// carried last; empty without a wire near.
std::string WireTip(const Workbench& workbench, const DiagramView& view, CanvasPoint point);

/// The tip for a point of the canvas in pixels, plain text of some lines: a port, else a block with
/// its type, note, findings of the latest check and the parameters that differ from the model's
/// defaults, else a wire. Empty over nothing.
std::string CanvasTip(Workbench& workbench, const DiagramView& view, CanvasPoint point);

}  // namespace photrak
