// What keys and menus do to a plot under a pointer; the gestures are in plot_pane.cpp.

#include <algorithm>
#include <cmath>

#include "plotting/peaks.h"
#include "plotting/plot_pane.h"

namespace photrak {
namespace {

/// Ripples of a hundredth of the curve's height are no peaks.
double LeastProminence(const Curve& curve) {
    return 0.01 * curve.y->Limits().Span();
}

}  // namespace

Change PlotPane::Zoom(double factor) {
    open_.view.ZoomAt({0.5, 0.5}, factor);
    return Change::View;
}

Change PlotPane::Move(Point by) {
    open_.view.Pan(by);
    return Change::View;
}

Change PlotPane::FitAxis(AxisId axis) {
    open_.view.SetRange(axis, FullRange(*plot_, axis, open_.view.ScaleOf(axis).Kind()));
    return Change::View;
}

Change PlotPane::SetScale(ScaleKind kind) {
    open_.view.SetYScale(*plot_, kind);
    return Change::View;
}

Change PlotPane::ToggleCursors() {
    auto& x = open_.cursors.x;
    if (x[0] || x[1]) {
        x = {};
        return Change::Overlay;
    }
    const AxisScale scale = open_.view.ScaleOf(AxisId::X);
    for (const CursorId id : {CursorId::A, CursorId::B}) {
        const double place = id == CursorId::A ? 1.0 / 3.0 : 2.0 / 3.0;
        open_.cursors.X(id) = CursorPlace(*plot_, open_.view, open_.cursors, scale.Value(place));
    }
    cursor_ = {};
    return Change::Overlay;
}

Change PlotPane::ToggleLevelCursors() {
    auto& y = open_.cursors.y;
    const bool any = y[0] || y[1];
    const AxisScale scale = open_.view.ScaleOf(AxisId::Y);
    y = {};
    if (!any) y = {scale.Value(2.0 / 3.0), scale.Value(1.0 / 3.0)};
    return Change::Overlay;
}

Change PlotPane::Step(int steps) {
    if (!open_.cursors.X(cursor_.id)) cursor_.id = open_.cursors.x[0] ? CursorId::A : CursorId::B;
    if (!open_.cursors.X(cursor_.id)) return Move({-0.1 * (steps > 0 ? 1 : -1), 0.0});
    StepCursor(*plot_, open_.view, open_.cursors, cursor_.id, steps);
    return Change::Overlay;
}

Change PlotPane::StepPeak(int direction) {
    const auto visible = std::find_if(plot_->curves.begin(), plot_->curves.end(),
                                      [&](const Curve& c) { return !open_.view.IsHidden(c); });
    if (visible == plot_->curves.end() || plot_->kind == PlotKind::Eye) return Change::Nothing;
    std::optional<double>& cursor = open_.cursors.X(cursor_.id);
    const ValueRange range = open_.view.ScaleOf(AxisId::X).Range();
    const double from = cursor ? *cursor : direction > 0 ? range.least : range.greatest;
    std::optional<double> next;
    for (const Peak& peak : FindPeaks(*visible->x, *visible->y, LeastProminence(*visible))) {
        const bool ahead = direction > 0 ? peak.x > from : peak.x < from;
        if (ahead && (!next || std::fabs(peak.x - from) < std::fabs(*next - from))) next = peak.x;
    }
    if (!next) return Change::Nothing;
    cursor = next;
    return Change::Overlay;
}

Change PlotPane::Escape() {
    if (drag_ != Drag::None) {
        drag_ = Drag::None;
        pressed_.at = {-1e6, -1e6};
        return Change::Overlay;
    }
    open_.cursors.x = open_.cursors.y = {};
    return Change::Overlay;
}

}  // namespace photrak
