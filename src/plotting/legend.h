// The legend of a plot: its rows, how large it is, and a corner of the pane that no curve enters.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "drawing/display_list.h"
#include "plotting/view.h"

namespace photrak {

struct LegendRow {
    std::string text;  // already cut to the width of the legend
    std::size_t curve = 0;
    double width = 0.0;  // of the text, pixels
    bool hidden = false;
};

struct Legend {
    std::vector<LegendRow> rows;
    std::size_t left = 0;  // curves for which there was no room
    PageSize size;         // pixels, margins included
    bool strip = false;    // rows side by side
};

inline constexpr double legendTextSize = 11.0;

/// One row for each curve, as many as fit a pane of this height; none for plots whose curves have
/// no legends.
Legend MakeLegend(const Plot& plot, const PlotView& view, double height,
                  const TextMeasure& measure);

/// Puts the rows of a short legend side by side, if that is at most `width` wide.
bool MakeStrip(Legend& legend, double width);

/// A place for a box of this size inside the pane that no line of `parts` touches: corners first,
/// then the middles of the upper and the lower edge.
std::optional<Rect> FreePlace(const Rect& pane, PageSize size,
                              const std::vector<std::vector<Point>>& parts);

/// Draws the rows into `box` and adds a mark "legend:N" for each.
void DrawLegend(Drawing& drawing, const Plot& plot, const Legend& legend, const Rect& box);

}  // namespace photrak
