#include "plotting/plot_pane.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "base/text.h"
#include "drawing/number_text.h"
#include "plotting/axis_label.h"

namespace photrak {
namespace {

constexpr double dragStart = 4.0, flatBox = 12.0, cursorReach = 5.0;  // pixels
constexpr double zoomOfNotch = 0.8;

double Apart(Point a, Point b) {
    return std::hypot(a.x - b.x, a.y - b.y);
}

/// The number after the colon of an id.
std::optional<std::size_t> NumberOf(std::string_view id, std::string_view kind) {
    if (!id.starts_with(kind)) return std::nullopt;
    std::size_t number = 0;
    const char* end = id.data() + id.size();
    const auto result = std::from_chars(id.data() + kind.size(), end, number);
    return result.ec == std::errc() && result.ptr == end ? std::optional(number) : std::nullopt;
}

}  // namespace

void PlotPane::Show(std::shared_ptr<const Plot> plot) {
    plot_ = std::move(plot);
    hovered_.reset();
}

PlotPane::Job PlotPane::MakeJob(PageSize size, const TextMeasure& measure) const {
    PlotOptions options;
    options.size = size;
    options.measure = &measure;
    options.eye = eyeStyle;
    options.saturation = saturation;
    if (hasPicture_) {
        for (std::size_t i = 0; i < options.exponents.size(); ++i)
            options.exponents[i] = picture_.layout.exponents[i];
    }
    return {plot_, open_.view, options};
}

bool PlotPane::IsHeavy() const {
    // A segment that is painted takes up to 10 microseconds, one that is counted 0.1; crowded
    // curves are painted as a bar in each column.
    constexpr std::size_t mostPainted = 8000, mostCounted = 400'000;
    const auto columns = static_cast<std::size_t>(std::max(400.0, picture_.layout.pane.width));
    std::size_t points = 0, painted = 0;
    for (const Curve& curve : plot_->curves) {
        if (open_.view.IsHidden(curve)) continue;
        points += curve.x->Size();
        painted += curve.x->Size() > 4 * columns ? columns : curve.x->Size();
    }
    const bool density =
        plot_->kind == PlotKind::Eye && StyleOf(*plot_, eyeStyle) == EyeStyle::Density;
    return density ? points > mostCounted : painted > mostPainted;
}

void PlotPane::Take(PlotPicture picture) {
    picture_ = std::move(picture);
    baseMarks_ = picture_.drawing.marks.size();
    hasPicture_ = true;
}

const Drawing& PlotPane::Picture() {
    picture_.drawing.overlay.clear();
    picture_.drawing.marks.resize(baseMarks_);
    if (hasPicture_ && plot_) DrawOver();
    return picture_.drawing;
}

void PlotPane::DrawOver() {
    Drawing& drawing = picture_.drawing;
    if (hovered_) {
        // The same lines again, thicker, between the marks of their group.
        constexpr double thick = 3.0;
        const std::string id = Concat("curve:", *hovered_);
        bool inside = false;
        for (const DrawItem& item : drawing.items) {
            if (const auto* group = std::get_if<GroupBegin>(&item)) inside = group->id == id;
            const auto* line = std::get_if<Polyline>(&item);
            if (!inside || !line) continue;
            Polyline copy = *line;
            copy.pen.width = thick;
            drawing.AddOver(ClipBegin{picture_.layout.pane});
            drawing.AddOver(std::move(copy));
            drawing.AddOver(ClipEnd{});
        }
    }
    DrawCursors(picture_, *plot_, open_.view, open_.cursors);
    if (drag_ != Drag::Box) return;
    drawing.AddOver(Box{
        RubberBox(), true, Role::Selected, 0.12, true, {Role::Selected, 1.0, Dash::Solid, 1.0}});
}

/// A flat box stands for the whole height or width.
Rect PlotPane::RubberBox() const {
    const Rect& pane = picture_.layout.pane;
    const auto [left, right] = std::minmax(std::clamp(pressed_.at.x, pane.x, pane.Right()),
                                           std::clamp(last_.x, pane.x, pane.Right()));
    const auto [top, bottom] = std::minmax(std::clamp(pressed_.at.y, pane.y, pane.Bottom()),
                                           std::clamp(last_.y, pane.y, pane.Bottom()));
    Rect box{left, top, right - left, bottom - top};
    if (box.height < flatBox && box.width >= flatBox) {
        box.y = pane.y;
        box.height = pane.height;
    } else if (box.width < flatBox && box.height >= flatBox) {
        box.x = pane.x;
        box.width = pane.width;
    }
    return box;
}

const Mark* PlotPane::MarkUnder(Point at) const {
    return MarkAt(picture_.drawing.marks, at);
}

std::optional<std::size_t> PlotPane::LegendAt(Point at) const {
    const Mark* mark = MarkUnder(at);
    const auto row = mark ? NumberOf(mark->id, "legend:") : std::nullopt;
    return row && *row < plot_->curves.size() ? row : std::nullopt;
}

std::optional<AxisId> PlotPane::AxisAt(Point at) const {
    static constexpr std::pair<std::string_view, AxisId> axes[] = {
        {"axis:x", AxisId::X}, {"axis:y", AxisId::Y}, {"axis:second", AxisId::Second}};
    if (picture_.layout.pane.Contains(at)) return std::nullopt;
    const Mark* mark = MarkUnder(at);
    for (const auto& [id, axis] : axes) {
        if (mark && mark->id == id) return axis;
    }
    return std::nullopt;
}

std::optional<PlotPane::CursorRef> PlotPane::CursorAt(Point at) const {
    const Rect& pane = picture_.layout.pane;
    const PixelMap map = picture_.layout.Map(false);
    if (!pane.Grown(cursorReach).Contains(at)) return std::nullopt;
    for (const CursorId id : {CursorId::A, CursorId::B}) {
        const auto& x = open_.cursors.x[static_cast<std::size_t>(id)];
        if (x && std::fabs(map.At(*x, 1.0).x - at.x) <= cursorReach) return CursorRef{false, id};
        const auto& y = open_.cursors.y[static_cast<std::size_t>(id)];
        if (y && std::fabs(map.At(map.x.Range().least, *y).y - at.y) <= cursorReach)
            return CursorRef{true, id};
    }
    return std::nullopt;
}

Change PlotPane::Pointer(const PointerInput& input) {
    if (!hasPicture_ || !plot_) return Change::Nothing;
    if (input.action == PointerAction::Press || input.action == PointerAction::DoubleClick)
        wheel_.reset();
    switch (input.action) {
        case PointerAction::Press:
            return Press(input);
        case PointerAction::Move:
            return drag_ == Drag::None ? Hover(input.at) : Drags(input);
        case PointerAction::Release:
            return Release(input);
        case PointerAction::DoubleClick:
            return DoubleClick(input);
        case PointerAction::Leave:
            break;
    }
    return Hover(input.at);
}

Change PlotPane::Hover(Point at) {
    std::optional<std::size_t> over = LegendAt(at);
    if (over && open_.view.IsHidden(plot_->curves[*over])) over.reset();
    if (over == hovered_) return Change::Nothing;
    hovered_ = over;
    return Change::Overlay;
}

Change PlotPane::Press(const PointerInput& input) {
    if (drag_ != Drag::None) return Change::Nothing;  // a second button
    pressed_ = input;
    last_ = input.at;
    moved_ = false;
    const auto axis = AxisAt(input.at);
    if (input.button == PointerButton::Right || LegendAt(input.at)) return Change::Nothing;
    if (axis) {
        drag_ = Drag::Axis;
        axis_ = *axis;
    } else if (!picture_.layout.pane.Contains(input.at)) {
        return Change::Nothing;
    } else if (input.button == PointerButton::Middle || input.modifiers.shift) {
        drag_ = Drag::Plot;
    } else if (const auto cursor = CursorAt(input.at)) {
        drag_ = Drag::Cursor;
        cursor_ = *cursor;
    } else {
        drag_ = Drag::Pending;
    }
    return Change::Nothing;
}

Change PlotPane::Drags(const PointerInput& input) {
    if (drag_ == Drag::Pending && Apart(input.at, pressed_.at) >= dragStart) drag_ = Drag::Box;
    if (drag_ == Drag::Pending) return Change::Nothing;
    const Rect& pane = picture_.layout.pane;
    const Point by{(input.at.x - last_.x) / pane.width, (last_.y - input.at.y) / pane.height};
    last_ = input.at;
    const auto step = moved_ ? PlotView::Step::Same : PlotView::Step::New;
    switch (drag_) {
        case Drag::Plot:
            open_.view.Pan(by, step);
            moved_ = true;
            return Change::View;
        case Drag::Axis:
            open_.view.ShiftAxis(axis_, axis_ == AxisId::X ? by.x : by.y, step);
            moved_ = true;
            return Change::View;
        case Drag::Cursor:
            MoveCursor(input.at);
            return Change::Overlay;
        default:
            return Change::Overlay;
    }
}

void PlotPane::MoveCursor(Point at) {
    const Rect& pane = picture_.layout.pane;
    const PixelMap map = picture_.layout.Map(false);
    if (cursor_.level) {
        open_.cursors.Y(cursor_.id) = map.YAt(std::clamp(at.y, pane.y, pane.Bottom()));
        return;
    }
    open_.cursors.X(cursor_.id) = CursorPlace(*plot_, open_.view, open_.cursors,
                                              map.XAt(std::clamp(at.x, pane.x, pane.Right())));
}

Change PlotPane::Release(const PointerInput& input) {
    const Drag drag = drag_;
    drag_ = Drag::None;
    if (drag == Drag::Box) {
        last_ = input.at;
        const Rect box = RubberBox();
        open_.view.ZoomTo(picture_.layout.PlaceOf({box.x, box.Bottom()}),
                          picture_.layout.PlaceOf({box.Right(), box.y}));
        return Change::View;
    }
    const bool click = drag == Drag::None || drag == Drag::Pending;
    return click && Apart(input.at, pressed_.at) < dragStart ? Click(input) : Change::Nothing;
}

Change PlotPane::Click(const PointerInput& input) {
    if (input.button != PointerButton::Left) return Change::Nothing;
    before_ = open_.cursors;
    if (const auto row = LegendAt(input.at)) {
        open_.view.Toggle(plot_->curves[*row]);
        hovered_.reset();
        return Change::View;
    }
    if (!picture_.layout.pane.Contains(input.at)) return Change::Nothing;
    cursor_ = {false, input.modifiers.control ? CursorId::B : CursorId::A};
    MoveCursor(input.at);
    return Change::Overlay;
}

Change PlotPane::DoubleClick(const PointerInput& input) {
    drag_ = Drag::None;
    pressed_.at = {-1e6, -1e6};  // the release that follows is no click
    if (input.button != PointerButton::Left) return Change::Nothing;
    if (const auto row = LegendAt(input.at)) {
        const Curve& curve = plot_->curves[*row];
        open_.view.Toggle(curve);  // takes back what the first click did
        open_.view.ShowAlone(*plot_, curve);
        return Change::View;
    }
    if (const auto axis = AxisAt(input.at)) return FitAxis(*axis);
    if (!picture_.layout.pane.Contains(input.at)) return Change::Nothing;
    open_.cursors = before_;
    open_.view.Fit();
    return Change::View;
}

Change PlotPane::Wheel(const WheelInput& input) {
    if (!hasPicture_ || !plot_ || drag_ != Drag::None) return Change::Nothing;
    if (input.steps == 0.0) {
        if (input.sideways == 0.0) return Change::Nothing;
        return Move({0.1 * input.sideways, 0.0});
    }
    // Turning on at one place is one step of the way back.
    constexpr double samePlace = 30.0;
    const bool goesOn = wheel_ && Apart(wheel_->at, input.at) < samePlace &&
                        (wheel_->steps > 0.0) == (input.steps > 0.0);
    wheel_ = input;
    const double factor = std::pow(zoomOfNotch, std::clamp(input.steps, -20.0, 20.0));
    const Point place = picture_.layout.PlaceOf(input.at);
    const auto step = goesOn ? PlotView::Step::Same : PlotView::Step::New;
    const AxisChoice axes{!input.modifiers.alt, !input.modifiers.shift};
    if (const auto axis = AxisAt(input.at)) {
        open_.view.StretchAxis(*axis, *axis == AxisId::X ? place.x : place.y, factor, step);
    } else if (picture_.layout.pane.Contains(input.at)) {
        open_.view.ZoomAt(place, factor, axes, step);
    } else {
        return Change::Nothing;
    }
    return Change::View;
}

PointerShape PlotPane::Shape(Point at) const {
    if (!hasPicture_ || !plot_) return PointerShape::Arrow;
    if (drag_ == Drag::Plot) return PointerShape::Grab;
    if (LegendAt(at)) return PointerShape::Hand;
    if (const auto axis = AxisAt(at))
        return *axis == AxisId::X ? PointerShape::SizeAcross : PointerShape::SizeUpDown;
    if (drag_ == Drag::None || drag_ == Drag::Cursor) {
        if (const auto cursor = CursorAt(at))
            return cursor->level ? PointerShape::SizeUpDown : PointerShape::SizeAcross;
    }
    return picture_.layout.pane.Contains(at) ? PointerShape::Cross : PointerShape::Arrow;
}

std::string PlotPane::PlaceText(Point at) const {
    if (!hasPicture_ || !plot_ || !picture_.layout.pane.Contains(at)) return {};
    const PlotSpec& spec = plot_->spec;
    const auto text = [](double value, const std::string& label) {
        return EngineeringText(value, SplitLabel(label).unit, 5);
    };
    const PixelMap map = picture_.layout.Map(false);
    std::string place =
        Concat(text(map.XAt(at.x), spec.xLabel), ",  ", text(map.YAt(at.y), spec.yLabel));
    if (HasSecondAxis(*plot_))
        place += ",  " + text(picture_.layout.Map(true).YAt(at.y), spec.secondLabel);
    return place;
}

}  // namespace photrak
