// Walks a display list with a QPainter. Curves are painted as separate lines: an antialiased
// polyline wider than a device pixel takes Qt seconds, the same lines by themselves milliseconds.
// Their ends are flat, or square where that closes a corner; round ends are slow again.
#pragma once

#include <vector>

#include "drawing/display_list.h"

class QPainter;

namespace photrak {

enum class Surface {
    Pixels,  // a window or an image: thin lines are put onto whole pixels
    Page,    // a printer or a PDF: joined lines stay joined
};

/// Paints in the units of the list; the painter's transform may scale.
void PaintItems(QPainter& painter, const std::vector<DrawItem>& items, Theme theme,
                Surface surface = Surface::Pixels);
/// Paper, base layer and overlay.
void PaintDrawing(QPainter& painter, const Drawing& drawing, Theme theme,
                  Surface surface = Surface::Pixels);

}  // namespace photrak
