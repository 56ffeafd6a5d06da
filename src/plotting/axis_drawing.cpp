#include "plotting/axis_drawing.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"

namespace photrak {
namespace {

constexpr double air = 8.0;       // between labels
constexpr double labelGap = 6.0;  // between pane and labels
constexpr double labelGapBelow =
    8.0;                          // more, so that the lowest label of y stays clear of that of x
constexpr double titleGap = 7.0;  // between labels and title
constexpr double majorTick = 6.0, minorTick = 3.0;

bool IsUpright(const AxisPicture& axis) {
    return axis.id != AxisId::X;
}

double WidestLabel(const AxisPicture& axis, const TextMeasure& measure) {
    double width = 0.0;
    for (const Tick& tick : axis.ticks) {
        width = std::max(width, measure.Width(tick.label, labelSize, Weight::Regular));
    }
    return width;
}

/// Four to eight labels, fewer on short axes: their distance grows with the root of the length.
double UsualSpacing(double pixels, bool upright) {
    const double count = std::round(std::clamp(0.4 * std::sqrt(pixels), 2.0, 10.0));
    return std::max(pixels / count, upright ? 24.0 : 40.0);
}

double PixelOf(const AxisPicture& axis, const Rect& pane, double value) {
    const double place = axis.scale.Place(value);
    return IsUpright(axis) ? pane.Bottom() - place * pane.height : pane.x + place * pane.width;
}

TextItem LabelItem(const AxisPicture& axis, const Rect& pane, const Tick& tick,
                   const TextMeasure& measure) {
    TextItem item;
    item.text = tick.label;
    item.size = labelSize;
    item.role = axis.role;
    const double pixel = PixelOf(axis, pane, tick.value);
    if (axis.id == AxisId::X) {
        item.anchor = Anchor::Middle;
        item.at = {pixel, pane.Bottom() + labelGapBelow + measure.Ascent() * labelSize};
    } else {
        const bool left = axis.id == AxisId::Y;
        item.anchor = left ? Anchor::End : Anchor::Start;
        item.at = {left ? pane.x - labelGap : pane.Right() + labelGap, pixel + 0.36 * labelSize};
    }
    return item;
}

void AddTick(Segments& lines, const AxisPicture& axis, const Rect& pane, const Tick& tick) {
    const double length = tick.major ? majorTick : minorTick;
    const double pixel = PixelOf(axis, pane, tick.value);
    switch (axis.id) {
        case AxisId::X:
            lines.points.insert(lines.points.end(),
                                {{pixel, pane.Bottom()}, {pixel, pane.Bottom() - length}});
            break;
        case AxisId::Y:
            lines.points.insert(lines.points.end(), {{pane.x, pixel}, {pane.x + length, pixel}});
            break;
        case AxisId::Second:
            lines.points.insert(lines.points.end(),
                                {{pane.Right(), pixel}, {pane.Right() - length, pixel}});
            break;
    }
}

void AddTitle(Drawing& drawing, const AxisPicture& axis, const Rect& pane,
              const TextMeasure& measure) {
    if (axis.title.empty()) return;
    TextItem item;
    item.size = axisTitleSize;
    item.role = axis.role;
    item.anchor = Anchor::Middle;
    item.upright = IsUpright(axis);
    const double ascent = measure.Ascent() * axisTitleSize,
                 descent = measure.Descent() * axisTitleSize;
    if (axis.id == AxisId::X) {
        item.text = Elided(axis.title, drawing.size.width - 2.0 * air, axisTitleSize, measure);
        const double width = measure.Width(item.text, axisTitleSize, Weight::Regular);
        const double half = 0.5 * width + air;
        item.at = {std::clamp(pane.Center().x, half, std::max(half, drawing.size.width - half)),
                   pane.Bottom() + labelGapBelow + labelSize + titleGap + ascent};
    } else {
        item.text = Elided(axis.title, pane.height, axisTitleSize, measure);
        const double half = 0.5 * measure.Width(item.text, axisTitleSize, Weight::Regular) + air;
        const double out = labelGap + axis.labelWidth + titleGap;
        item.at = {axis.id == AxisId::Y ? pane.x - out - descent : pane.Right() + out + ascent,
                   std::clamp(pane.Center().y, half, std::max(half, drawing.size.height - half))};
    }
    drawing.Add(std::move(item));
}

Rect MarkArea(const AxisPicture& axis, const Rect& pane) {
    switch (axis.id) {
        case AxisId::X:
            return {pane.x, pane.Bottom(), pane.width,
                    labelGapBelow + labelSize + titleGap + axisTitleSize + 3.0};
        case AxisId::Y:
            return {pane.x - AxisRoom(axis), pane.y, AxisRoom(axis), pane.height};
        case AxisId::Second:
            break;
    }
    return {pane.Right(), pane.y, AxisRoom(axis), pane.height};
}

}  // namespace

void MakeAxisTicks(AxisPicture& axis, double pixels, const TextMeasure& measure) {
    double spacing = UsualSpacing(pixels, IsUpright(axis));
    // Labels wider than their distance: fewer of them. Twice is enough, as digits no longer grow.
    for (int tries = 0; tries < 3; ++tries) {
        axis.ticks = axis.ofQ ? MakeQTicks(axis.scale, pixels, spacing)
                              : MakeTicks(axis.scale, pixels, spacing, axis.exponent);
        axis.labelWidth = WidestLabel(axis, measure);
        const double needed = IsUpright(axis) ? labelSize + air : axis.labelWidth + air;
        if (spacing >= needed) return;
        spacing = needed;
    }
}

double AxisRoom(const AxisPicture& axis) {
    const double title = axis.title.empty() ? 0.0 : titleGap + axisTitleSize;
    return labelGap + axis.labelWidth + title;
}

void DrawGrid(Drawing& drawing, const AxisPicture& axis, const Rect& pane) {
    Segments lines;
    lines.pen = {Role::Grid, 1.0, Dash::Solid, 1.0};
    for (const Tick& tick : axis.ticks) {
        if (!tick.major) continue;
        const double pixel = PixelOf(axis, pane, tick.value);
        if (IsUpright(axis)) {
            lines.points.insert(lines.points.end(), {{pane.x, pixel}, {pane.Right(), pixel}});
        } else {
            lines.points.insert(lines.points.end(), {{pixel, pane.y}, {pixel, pane.Bottom()}});
        }
    }
    if (!lines.points.empty()) drawing.Add(std::move(lines));
}

void DrawAxis(Drawing& drawing, const AxisPicture& axis, const Rect& pane,
              const TextMeasure& measure) {
    static constexpr std::string_view names[] = {"x", "y", "second"};
    const std::string id =
        axis.ofQ ? "axis:q" : Concat("axis:", names[static_cast<std::size_t>(axis.id)]);
    drawing.Add(GroupBegin{id, axis.title});
    Segments lines;
    lines.pen = {Role::Frame, 1.0, Dash::Solid, 1.0};
    const Rect page{0.0, 0.0, drawing.size.width, drawing.size.height};
    Rect before;
    for (const Tick& tick : axis.ticks) {
        AddTick(lines, axis, pane, tick);
        if (tick.label.empty()) continue;
        TextItem item = LabelItem(axis, pane, tick, measure);
        const Rect box = TextBox(item, measure);
        const bool inside = box.x >= page.x && box.y >= page.y && box.Right() <= page.Right() &&
                            box.Bottom() <= page.Bottom();
        if (!inside || box.Grown(1.0).Overlaps(before)) continue;
        before = box;
        drawing.Add(std::move(item));
    }
    drawing.Add(std::move(lines));
    AddTitle(drawing, axis, pane, measure);
    drawing.Add(GroupEnd{});
    if (axis.ofQ) return;  // nothing to move: it follows the rates
    drawing.marks.push_back({id, MarkArea(axis, pane), axis.title,
                             "Wheel zooms this axis, double click shows all of it"});
}

}  // namespace photrak
