// A picture as a list of primitives in pixels, with roles instead of colors: what a plot or a
// diagram makes, and what an SVG writer or a painter walks. No toolkit here.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "drawing/geometry.h"
#include "drawing/marks.h"
#include "drawing/roles.h"
#include "drawing/text_measure.h"

namespace photrak {

struct IconPicture;

struct Pen {
    Role role = Role::Ink;
    double width = 1.0;  // pixels
    Dash dash = Dash::Solid;
    double opacity = 1.0;  // 0 to 1
};

/// Separate segments: points 0-1, 2-3, ...
struct Segments {
    std::vector<Point> points;
    Pen pen;
};
/// Joined points. A painter may draw them as separate flat-capped lines: much faster in Qt.
struct Polyline {
    std::vector<Point> points;
    Pen pen;
};
/// A filled outline; with `outlined` a line around it too.
struct Polygon {
    std::vector<Point> points;
    Role fill = Role::Ink;
    double opacity = 1.0;
    bool outlined = false;
    Pen pen;
};
struct Box {
    Rect rect;
    bool filled = false;
    Role fill = Role::Paper;
    double opacity = 1.0;
    bool outlined = true;
    Pen pen;
};
/// One sign at each point, `size` pixels wide.
struct Symbols {
    std::vector<Point> points;
    Marker marker = Marker::Circle;
    double size = 6.0;
    Role role = Role::Ink;
    double opacity = 1.0;
};
enum class Anchor : std::uint8_t { Start, Middle, End };
struct TextItem {
    Point at;  // on the baseline
    std::string text;
    double size = 11.0;
    Role role = Role::Ink;
    Anchor anchor = Anchor::Start;
    Weight weight = Weight::Regular;
    bool upright = false;  // turned by 90 degrees, read from below
};
/// A grid of density levels (0 nothing, 255 most) stretched over a box; row by row from the top.
struct DensityImage {
    Rect rect;
    int columns = 0, rows = 0;
    std::vector<std::uint8_t> levels;
};
/// An icon stretched over a square; icon_picture.h takes it apart.
struct IconItem {
    std::shared_ptr<const IconPicture> icon;
    Rect square;
};
/// Pixels stretched over a box, neighbors dropped rather than averaged: red, green, blue, row by
/// row from the top.
struct BitmapImage {
    Rect rect;
    int columns = 0, rows = 0;
    std::vector<std::uint8_t> pixels;
};
/// All items up to the matching ClipEnd are cut to the box. Clips may be nested.
struct ClipBegin {
    Rect rect;
};
struct ClipEnd {};
/// What follows, up to the matching GroupEnd, is one thing with a name: a curve, an axis.
struct GroupBegin {
    std::string id;    // "curve:0"
    std::string name;  // in words
};
struct GroupEnd {};

using DrawItem = std::variant<Segments, Polyline, Polygon, Box, Symbols, TextItem, DensityImage,
                              IconItem, BitmapImage, ClipBegin, ClipEnd, GroupBegin, GroupEnd>;

/// The base layer is kept while cursors move; the overlay is drawn over it.
struct Drawing {
    PageSize size;
    std::vector<DrawItem> items;
    std::vector<DrawItem> overlay;
    Marks marks;

    template <class Item>
    void Add(Item item) {
        items.emplace_back(std::move(item));
    }
    template <class Item>
    void AddOver(Item item) {
        overlay.emplace_back(std::move(item));
    }
};

/// The box that a text covers, by its font size and `measure`.
Rect TextBox(const TextItem& item, const TextMeasure& measure);

/// The outline of one symbol: closed corners, or separate segments for crosses (`strokes`).
struct SymbolShape {
    std::vector<Point> points;
    bool strokes = false;
};
SymbolShape ShapeOf(Marker marker, Point center, double size);

/// Lengths of dashes and gaps for a line of this width, empty when solid.
std::vector<double> DashLengths(Dash dash, double width);

/// One primitive a line, roles by name, coordinates rounded to half pixels: for comparisons in
/// tests.
std::string DumpText(const Drawing& drawing);

}  // namespace photrak
