// Axes of a plot: the room they need and their drawing (grid, ticks, labels, titles).
#pragma once

#include <string>
#include <vector>

#include "drawing/display_list.h"
#include "plotting/plot.h"
#include "plotting/ticks.h"

namespace photrak {

inline constexpr double labelSize = 11.0, axisTitleSize = 12.0;

struct AxisPicture {
    AxisId id = AxisId::X;
    AxisScale scale;
    int exponent = 0;
    std::string title;
    std::vector<Tick> ticks;
    Role role = Role::Ink;    // of the labels
    double labelWidth = 0.0;  // of the widest label
    bool ofQ = false;         // tells the Q of the rates on `scale`, beside their own axis
};

/// Ticks for an axis of this length whose labels leave 8 pixels of air.
void MakeAxisTicks(AxisPicture& axis, double pixels, const TextMeasure& measure);

/// Pixels that labels and title of a y axis take beside the pane.
double AxisRoom(const AxisPicture& axis);

void DrawGrid(Drawing& drawing, const AxisPicture& axis, const Rect& pane);
/// Ticks, labels, title and the mark "axis:x", "axis:y" or "axis:second". Labels that would leave
/// the page are left out.
void DrawAxis(Drawing& drawing, const AxisPicture& axis, const Rect& pane,
              const TextMeasure& measure);

}  // namespace photrak
