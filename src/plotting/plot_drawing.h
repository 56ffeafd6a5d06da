// A plot with a view as a display list: axes, grid, curves, legend, texts, and marks for all that
// can be pointed at. The same list goes to a picture file and to a window.
#pragma once

#include <array>
#include <optional>

#include "drawing/display_list.h"
#include "plotting/reduction.h"
#include "plotting/view.h"

namespace photrak {

enum class EyeStyle { Auto, Traces, Density };

struct PlotOptions {
    PageSize size{800.0, 500.0};
    EyeStyle eye = EyeStyle::Auto;  // Auto: density from 200 traces up
    const TextMeasure* measure = &TableMeasure();
    bool fileName = true;
    double saturation = 1.0;  // of a density: above 1 rare traces show more
    std::array<std::optional<int>, 3>
        exponents;                       // of the labels in use, so that they do not flicker
    std::optional<std::size_t> hovered;  // a curve to thicken
};

/// What gestures and cursors need to know of a drawn plot.
struct PlotLayout {
    Rect pane;
    std::array<AxisScale, 3> scales;  // by AxisId
    std::array<int, 3> exponents{};   // labels show value / 10^exponent

    PixelMap Map(bool second) const { return {scales[0], scales[second ? 2 : 1], pane}; }
    /// A point of the page as parts of the pane, for PlotView.
    Point PlaceOf(Point pixel) const {
        return {(pixel.x - pane.x) / pane.width, (pane.Bottom() - pixel.y) / pane.height};
    }
};

struct PlotPicture {
    Drawing drawing;
    PlotLayout layout;
};

inline constexpr double leastPlotWidth = 200.0, leastPlotHeight = 150.0,
                        greatestPlotSide = 20'000.0;

/// Sizes outside of the limits are brought to them.
PlotPicture DrawPlot(const Plot& plot, const PlotView& view, const PlotOptions& options = {});

/// The style that Auto stands for.
EyeStyle StyleOf(const Plot& plot, EyeStyle asked);

}  // namespace photrak
