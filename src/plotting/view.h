// What part of a plot is looked at: ranges, the kind of the y scale, hidden curves, locks, and the
// way back. Changing it changes no data and no plot.
#pragma once

#include <array>
#include <deque>
#include <set>
#include <string>

#include "drawing/geometry.h"
#include "plotting/plot.h"

namespace photrak {

struct ViewState {
    std::array<ValueRange, 3> ranges;  // by AxisId
    ScaleKind yKind = ScaleKind::Linear, secondKind = ScaleKind::Linear;

    ScaleKind KindOf(AxisId axis) const {
        return axis == AxisId::Y ? yKind : axis == AxisId::Second ? secondKind : ScaleKind::Linear;
    }
    bool operator==(const ViewState&) const = default;
};

/// Which axes a gesture moves.
struct AxisChoice {
    bool x = true, y = true;  // y stands for both y axes
};

class PlotView {
  public:
    PlotView() = default;
    /// All of the plot, on the scales it asks for.
    explicit PlotView(const Plot& plot);

    const ViewState& Now() const { return now_; }
    AxisScale ScaleOf(AxisId axis) const;
    bool ShowsAll() const { return now_ == full_; }

    // Places are parts of the pane: 0 at the left or lower edge, 1 at the other. A step is
    // remembered for Back; gestures made of many small ones pass Step::Same after the first.
    enum class Step { New, Same };
    /// Scales the ranges by `factor` (below 1: closer) around a place that stays where it is.
    void ZoomAt(Point place, double factor, AxisChoice axes = {}, Step step = Step::New);
    /// Shows the part between two places; a side below a thousandth of the pane is left as it is.
    void ZoomTo(Point one, Point other, AxisChoice axes = {});
    /// Moves what is shown by parts of the pane: what lay at the place p lies at p + by.
    void Pan(Point by, Step step = Step::New);
    void SetRange(AxisId axis, ValueRange range);
    /// The same for one axis alone.
    void StretchAxis(AxisId axis, double place, double factor, Step step = Step::New);
    void ShiftAxis(AxisId axis, double by, Step step = Step::New);
    /// Shows all of the plot again; locked axes stay.
    void Fit();
    bool Back();
    bool Forward();

    void Lock(AxisId axis, bool locked) { locked_[static_cast<std::size_t>(axis)] = locked; }
    bool IsLocked(AxisId axis) const { return locked_[static_cast<std::size_t>(axis)]; }
    /// Another kind of y scale, with all of the data on it.
    void SetYScale(const Plot& plot, ScaleKind kind);

    bool IsHidden(const Curve& curve) const { return hidden_.count(curve.key) > 0; }
    void Toggle(const Curve& curve);
    /// Hides all others; when they are all hidden already, shows them again.
    void ShowAlone(const Plot& plot, const Curve& curve);
    void ShowAllCurves() { hidden_.clear(); }

    /// The plot was read again: what showed all of it shows all of it again, what was zoomed stays.
    void Follow(const Plot& plot);

  private:
    void Remember(Step step);
    void SetAxis(AxisId axis, double from, double to);
    ViewState FullOf(const Plot& plot, ScaleKind kind) const;

    static constexpr std::size_t mostSteps = 100;
    ViewState now_, full_;
    std::deque<ViewState> back_, forward_;
    std::array<bool, 3> locked_{};
    std::set<std::string> hidden_;
};

}  // namespace photrak
