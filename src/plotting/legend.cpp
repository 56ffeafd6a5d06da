#include "plotting/legend.h"

#include <algorithm>

#include "base/text.h"

namespace photrak {
namespace {

constexpr double rowHeight = 17.0, margin = 8.0, sampleWidth = 26.0, gapToText = 7.0,
                 widestText = 210.0;

bool Touches(const Rect& box, const std::vector<std::vector<Point>>& parts) {
    for (const auto& part : parts) {
        if (part.size() == 1 && box.Contains(part[0])) return true;
        for (std::size_t i = 1; i < part.size(); ++i) {
            Point a = part[i - 1], b = part[i];
            if (ClipSegment(box, a, b)) return true;
        }
    }
    return false;
}

double CellWidth(const LegendRow& row) {
    return 2.0 * margin + sampleWidth + gapToText + row.width;
}

std::string MoreText(std::size_t left) {
    return Concat("and ", left, " more");
}

void DrawRow(Drawing& drawing, const Plot& plot, const LegendRow& row, const Rect& area) {
    const Curve& curve = plot.curves[row.curve];
    const double opacity = row.hidden ? 0.35 : curve.held ? 0.5 : 1.0;
    const double middle = area.Center().y, start = area.x + margin;
    const Role role = CurveRole(curve.place);
    drawing.Add(Segments{{{start, middle}, {start + sampleWidth, middle}},
                         {role, 2.0, CurveDash(curve.place), opacity}});
    if (plot.spec.symbols != CurveSymbols::None) {
        drawing.Add(Symbols{
            {{start + 0.5 * sampleWidth, middle}}, CurveMarker(curve.place), 7.0, role, opacity});
    }
    drawing.Add(TextItem{{start + sampleWidth + gapToText, middle + 0.36 * legendTextSize},
                         row.text,
                         legendTextSize,
                         row.hidden ? Role::Dim : Role::Ink,
                         Anchor::Start,
                         Weight::Regular,
                         false});
    drawing.marks.push_back({Concat("legend:", row.curve), area,
                             row.hidden ? curve.name + ", hidden" : curve.name,
                             "Click hides or shows it, double click shows it alone"});
}

}  // namespace

Legend MakeLegend(const Plot& plot, const PlotView& view, double height,
                  const TextMeasure& measure) {
    Legend legend;
    const bool named =
        std::any_of(plot.curves.begin(), plot.curves.end(), [](const Curve& c) { return c.named; });
    if (!named) return legend;
    const auto room = static_cast<std::size_t>(std::max(1.0, (height - 3.0 * margin) / rowHeight));
    const std::size_t count = plot.curves.size();
    const std::size_t shown = count <= room ? count : std::max<std::size_t>(room, 2) - 1;
    double width = 0.0;
    for (std::size_t i = 0; i < shown; ++i) {
        LegendRow row;
        row.text = Elided(plot.curves[i].name, widestText, legendTextSize, measure);
        row.curve = i;
        row.width = measure.Width(row.text, legendTextSize, Weight::Regular);
        row.hidden = view.IsHidden(plot.curves[i]);
        width = std::max(width, row.width);
        legend.rows.push_back(std::move(row));
    }
    legend.left = count - shown;
    if (legend.left > 0)
        width =
            std::max(width, measure.Width(MoreText(legend.left), legendTextSize, Weight::Regular));
    const double rows = static_cast<double>(shown + (legend.left > 0 ? 1 : 0));
    legend.size = {2.0 * margin + sampleWidth + gapToText + width, margin + rows * rowHeight};
    return legend;
}

bool MakeStrip(Legend& legend, double width) {
    constexpr std::size_t mostRows = 4;
    double needed = 0.0;
    for (const LegendRow& row : legend.rows) needed += CellWidth(row);
    if (legend.rows.size() > mostRows || legend.left > 0 || needed > width) return false;
    legend.strip = true;
    legend.size = {needed, rowHeight};
    return true;
}

std::optional<Rect> FreePlace(const Rect& pane, PageSize size,
                              const std::vector<std::vector<Point>>& parts) {
    constexpr double inset = 10.0;
    const double left = pane.x + inset, right = pane.Right() - inset - size.width;
    const double top = pane.y + inset, bottom = pane.Bottom() - inset - size.height;
    if (right < left || bottom < top) return {};
    const double middle = 0.5 * (left + right);
    const Point places[] = {{right, top},   {left, top},   {right, bottom},
                            {left, bottom}, {middle, top}, {middle, bottom}};
    for (const Point place : places) {
        const Rect box{place.x, place.y, size.width, size.height};
        if (!Touches(box.Grown(3.0), parts)) return box;
    }
    return {};
}

void DrawLegend(Drawing& drawing, const Plot& plot, const Legend& legend, const Rect& box) {
    drawing.Add(GroupBegin{"legend", "Legend"});
    drawing.Add(Box{box, true, Role::Paper, 0.88, true, {Role::Grid, 1.0, Dash::Solid, 1.0}});
    double x = box.x, y = box.y + (legend.strip ? 0.0 : 0.5 * margin);
    for (const LegendRow& row : legend.rows) {
        const double width = legend.strip ? CellWidth(row) : box.width;
        DrawRow(drawing, plot, row, {x, y, width, rowHeight});
        (legend.strip ? x : y) += legend.strip ? width : rowHeight;
    }
    if (legend.left > 0) {
        drawing.Add(TextItem{
            {box.x + margin + sampleWidth + gapToText, y + 0.5 * rowHeight + 0.36 * legendTextSize},
            MoreText(legend.left),
            legendTextSize,
            Role::Dim,
            Anchor::Start,
            Weight::Regular,
            false});
    }
    drawing.Add(GroupEnd{});
}

}  // namespace photrak
