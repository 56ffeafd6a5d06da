// The diagram as a display list: what a window paints, a printer prints and a picture file shows.
// The base layer is the diagram; what follows the pointer or marks blocks lies over it.
#pragma once

#include <optional>
#include <string>

#include "drawing/display_list.h"
#include "workbench/workbench.h"

namespace photrak {

struct CanvasLook {
    std::optional<Rect> seen = {};  // only what touches it is drawn, canvas pixels; none: all
    const TextMeasure* measure = &TableMeasure();
    bool linePatterns = false;  // wires differ by their dashes too
    double unit = 1.0;  // pixels in which widths of wires and sizes of names count: many on a page
};

/// Icons with ticks and names, wires, then selection, ghost and rubber band over them; a mark for
/// each block and port large enough to point at. The size is that of the whole canvas.
Drawing DrawCanvas(const Workbench& workbench, const DiagramView& view,
                   const CanvasLook& look = {});

/// A diagram by itself: cut to its blocks with a margin of half a cell, nothing selected.
Drawing DrawDiagram(const Workbench& workbench, const DiagramView& view,
                    const CanvasLook& look = {});

/// The diagram of a topology file at the workbench's zoom. Nothing, with the reader's text, if it
/// does not load; warnings stand in the text too.
std::optional<Drawing> DrawTopologyFile(const Workbench& workbench, const std::string& path,
                                        const CanvasLook& look, std::string& errorText);

}  // namespace photrak
