#include "plotting/view.h"

#include <algorithm>
#include <cmath>

namespace photrak {
namespace {

constexpr AxisId allAxes[] = {AxisId::X, AxisId::Y, AxisId::Second};

std::size_t Index(AxisId axis) {
    return static_cast<std::size_t>(axis);
}

/// A range so narrow that doubles cannot tell its pixels apart shows nothing.
bool IsUsable(const ValueRange& range, ScaleKind kind) {
    if (range.IsEmpty() || !std::isfinite(range.least) || !std::isfinite(range.greatest))
        return false;
    if (kind != ScaleKind::Linear)
        return range.least > 0.0 && range.greatest / range.least > 1.0 + 1e-9;
    const double size = std::max(std::fabs(range.least), std::fabs(range.greatest));
    return range.Span() > 1e-11 * size && range.Span() < 1e300;
}

}  // namespace

PlotView::PlotView(const Plot& plot)
    : now_(FullOf(plot, AskedScale(plot, AxisId::Y))), full_(now_) {}

ViewState PlotView::FullOf(const Plot& plot, ScaleKind kind) const {
    ViewState state;
    state.yKind = kind;
    state.secondKind = AskedScale(plot, AxisId::Second);
    for (const AxisId axis : allAxes) {
        state.ranges[Index(axis)] = FullRange(plot, axis, state.KindOf(axis));
    }
    return state;
}

AxisScale PlotView::ScaleOf(AxisId axis) const {
    return {now_.KindOf(axis), now_.ranges[Index(axis)]};
}

void PlotView::Remember(Step step) {
    forward_.clear();
    if (step == Step::Same && !back_.empty()) return;
    if (!back_.empty() && back_.back() == now_) return;
    back_.push_back(now_);
    if (back_.size() > mostSteps) back_.pop_front();
}

void PlotView::SetAxis(AxisId axis, double from, double to) {
    if (IsLocked(axis)) return;
    const AxisScale scale = ScaleOf(axis);
    const ValueRange range{scale.Value(from), scale.Value(to)};
    if (IsUsable(range, scale.Kind()))
        now_.ranges[Index(axis)] = AxisScale(scale.Kind(), range).Range();
}

void PlotView::StretchAxis(AxisId axis, double place, double factor, Step step) {
    if (!(factor > 0.0) || !std::isfinite(factor)) return;
    Remember(step);
    SetAxis(axis, place - factor * place, place + factor * (1.0 - place));
}

void PlotView::ShiftAxis(AxisId axis, double by, Step step) {
    Remember(step);
    SetAxis(axis, -by, 1.0 - by);
}

void PlotView::ZoomAt(Point place, double factor, AxisChoice axes, Step step) {
    Remember(step);
    if (axes.x) StretchAxis(AxisId::X, place.x, factor, Step::Same);
    if (!axes.y) return;
    StretchAxis(AxisId::Y, place.y, factor, Step::Same);
    StretchAxis(AxisId::Second, place.y, factor, Step::Same);
}

void PlotView::ZoomTo(Point one, Point other, AxisChoice axes) {
    constexpr double least = 1e-3;
    const auto [left, right] = std::minmax(one.x, other.x);
    const auto [low, high] = std::minmax(one.y, other.y);
    Remember(Step::New);
    if (axes.x && right - left > least) SetAxis(AxisId::X, left, right);
    if (!axes.y || high - low <= least) return;
    SetAxis(AxisId::Y, low, high);
    SetAxis(AxisId::Second, low, high);
}

void PlotView::Pan(Point by, Step step) {
    Remember(step);
    if (by.x != 0.0) SetAxis(AxisId::X, -by.x, 1.0 - by.x);
    if (by.y == 0.0) return;
    SetAxis(AxisId::Y, -by.y, 1.0 - by.y);
    SetAxis(AxisId::Second, -by.y, 1.0 - by.y);
}

void PlotView::SetRange(AxisId axis, ValueRange range) {
    const ScaleKind kind = ScaleOf(axis).Kind();
    if (!IsUsable(range, kind)) return;
    Remember(Step::New);
    now_.ranges[Index(axis)] = AxisScale(kind, range).Range();
}

void PlotView::Fit() {
    Remember(Step::New);
    for (const AxisId axis : allAxes) {
        if (!IsLocked(axis)) now_.ranges[Index(axis)] = full_.ranges[Index(axis)];
    }
}

bool PlotView::Back() {
    if (back_.empty()) return false;
    forward_.push_back(now_);
    now_ = back_.back();
    back_.pop_back();
    return true;
}

bool PlotView::Forward() {
    if (forward_.empty()) return false;
    back_.push_back(now_);
    now_ = forward_.back();
    forward_.pop_back();
    return true;
}

void PlotView::SetYScale(const Plot& plot, ScaleKind kind) {
    if (kind == now_.yKind) return;
    Remember(Step::New);
    full_ = FullOf(plot, kind);
    now_.yKind = kind;
    now_.ranges[Index(AxisId::Y)] = full_.ranges[Index(AxisId::Y)];
}

void PlotView::Toggle(const Curve& curve) {
    if (!hidden_.insert(curve.key).second) hidden_.erase(curve.key);
}

void PlotView::ShowAlone(const Plot& plot, const Curve& curve) {
    std::set<std::string> others;
    for (const Curve& other : plot.curves) {
        if (other.key != curve.key) others.insert(other.key);
    }
    if (hidden_ == others) others.clear();
    hidden_ = std::move(others);
}

void PlotView::Follow(const Plot& plot) {
    const ViewState before = full_;
    full_ = FullOf(plot, now_.yKind);
    for (const AxisId axis : allAxes) {
        ValueRange& range = now_.ranges[Index(axis)];
        if (range == before.ranges[Index(axis)] && !IsLocked(axis))
            range = full_.ranges[Index(axis)];
    }
}

}  // namespace photrak
