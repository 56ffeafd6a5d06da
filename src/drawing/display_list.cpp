#include "drawing/display_list.h"

#include <cmath>
#include <numbers>

#include "base/text.h"

namespace photrak {
namespace {

double HalfPixels(double value) {
    const double rounded = std::round(2.0 * value) / 2.0;
    return rounded == 0.0 ? 0.0 : rounded;
}
std::string PointText(Point p) {
    return Concat(" ", FormatSignificant(HalfPixels(p.x), 9), ",",
                  FormatSignificant(HalfPixels(p.y), 9));
}
std::string PointTexts(const std::vector<Point>& points) {
    std::string text;
    for (const Point p : points) text += PointText(p);
    return text;
}
std::string RectText(const Rect& r) {
    return PointText({r.x, r.y}) + PointText({r.Right(), r.Bottom()});
}

struct Dumper {
    std::string operator()(const Segments& i) {
        return Concat("segments ", RoleName(i.pen.role), PointTexts(i.points));
    }
    std::string operator()(const Polyline& i) {
        return Concat("polyline ", RoleName(i.pen.role), PointTexts(i.points));
    }
    std::string operator()(const Polygon& i) {
        return Concat("polygon ", RoleName(i.fill), PointTexts(i.points));
    }
    std::string operator()(const Box& i) {
        return Concat("box ", i.filled ? RoleName(i.fill) : "-", " ",
                      i.outlined ? RoleName(i.pen.role) : "-", RectText(i.rect));
    }
    std::string operator()(const Symbols& i) {
        return Concat("symbols ", RoleName(i.role), " ", static_cast<int>(i.marker),
                      PointTexts(i.points));
    }
    std::string operator()(const TextItem& i) {
        return Concat("text ", RoleName(i.role), PointText(i.at), " ", static_cast<int>(i.anchor),
                      i.upright ? " upright '" : " '", i.text, "'");
    }
    std::string operator()(const DensityImage& i) {
        return Concat("density ", i.columns, "x", i.rows, RectText(i.rect));
    }
    std::string operator()(const IconItem& i) { return "icon" + RectText(i.square); }
    std::string operator()(const BitmapImage& i) {
        return Concat("bitmap ", i.columns, "x", i.rows, RectText(i.rect));
    }
    std::string operator()(const ClipBegin& i) { return Concat("clip", RectText(i.rect)); }
    std::string operator()(const ClipEnd&) { return "clip end"; }
    std::string operator()(const GroupBegin& i) {
        return Concat("group ", i.id, " '", i.name, "'");
    }
    std::string operator()(const GroupEnd&) { return "group end"; }
};

SymbolShape Corners(std::initializer_list<Point> offsets, Point center, double half, bool strokes) {
    SymbolShape shape;
    shape.strokes = strokes;
    for (const Point o : offsets)
        shape.points.push_back({center.x + o.x * half, center.y + o.y * half});
    return shape;
}

SymbolShape Circle(Point center, double half) {
    constexpr int corners = 16;
    SymbolShape shape;
    for (int i = 0; i < corners; ++i) {
        const double angle = 2.0 * std::numbers::pi * i / corners;
        shape.points.push_back(
            {center.x + half * std::cos(angle), center.y + half * std::sin(angle)});
    }
    return shape;
}

}  // namespace

Rect TextBox(const TextItem& item, const TextMeasure& measure) {
    const double width = measure.Width(item.text, item.size, item.weight);
    const double start = item.anchor == Anchor::Start    ? 0.0
                         : item.anchor == Anchor::Middle ? 0.5
                                                         : 1.0;
    const double ascent = measure.Ascent() * item.size,
                 height = ascent + measure.Descent() * item.size;
    if (item.upright) {
        return {item.at.x - ascent, item.at.y - (1.0 - start) * width, height, width};
    }
    return {item.at.x - start * width, item.at.y - ascent, width, height};
}

SymbolShape ShapeOf(Marker marker, Point center, double size) {
    const double half = 0.5 * size;
    switch (marker) {
        case Marker::Square:
            return Corners({{-0.9, -0.9}, {0.9, -0.9}, {0.9, 0.9}, {-0.9, 0.9}}, center, half,
                           false);
        case Marker::Diamond:
            return Corners({{0, -1.2}, {1.2, 0}, {0, 1.2}, {-1.2, 0}}, center, half, false);
        case Marker::Triangle:
            return Corners({{0, -1.1}, {1.1, 0.9}, {-1.1, 0.9}}, center, half, false);
        case Marker::TriangleDown:
            return Corners({{0, 1.1}, {1.1, -0.9}, {-1.1, -0.9}}, center, half, false);
        case Marker::Cross:
            return Corners({{-1, -1}, {1, 1}, {-1, 1}, {1, -1}}, center, half, true);
        case Marker::Plus:
            return Corners({{-1.2, 0}, {1.2, 0}, {0, -1.2}, {0, 1.2}}, center, half, true);
        case Marker::Circle:
            break;
    }
    return Circle(center, half);
}

std::vector<double> DashLengths(Dash dash, double width) {
    switch (dash) {
        case Dash::Dashed:
            return {5.0 * width, 3.0 * width};
        case Dash::Dotted:
            return {1.2 * width, 2.2 * width};
        case Dash::DashDot:
            return {5.0 * width, 2.5 * width, 1.2 * width, 2.5 * width};
        case Dash::Solid:
            break;
    }
    return {};
}

std::string DumpText(const Drawing& drawing) {
    std::string text = Concat("page ", drawing.size.width, "x", drawing.size.height, "\n");
    for (const DrawItem& item : drawing.items) text += std::visit(Dumper{}, item) + "\n";
    if (!drawing.overlay.empty()) text += "overlay\n";
    for (const DrawItem& item : drawing.overlay) text += std::visit(Dumper{}, item) + "\n";
    return text;
}

}  // namespace photrak
