// A scanner of tags and attributes, a table of elements, and path data; whatever is not in the
// tables is refused, so that no icon shows less than its file says.
#include "drawing/icon_picture.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <map>
#include <numbers>

#include "base/text.h"

namespace photrak {
namespace {

constexpr std::size_t mostBytes = 1 << 16, mostPoints = 20'000, mostDepth = 16;
constexpr int curvePieces = 12;   // straight pieces of a quarter turn
constexpr double farthest = 1e4;  // a coordinate beyond is a mistake

using Attributes = std::map<std::string, std::string, std::less<>>;

/// What a file lacks, thrown to the one place that reports it.
struct IconFault {
    std::string text;
};
[[noreturn]] void Refuse(std::string text) {
    throw IconFault{std::move(text)};
}

// --- Numbers and colors ---

/// Reads numbers of path data, which blanks, commas or signs separate.
class Numbers {
  public:
    explicit Numbers(std::string_view text) : rest_(text) {}

    bool AtEnd() {
        const std::size_t at = rest_.find_first_not_of(" ,\t\r\n");
        rest_.remove_prefix(std::min(at, rest_.size()));
        return rest_.empty();
    }
    bool AtLetter() { return !AtEnd() && std::isalpha(static_cast<unsigned char>(rest_[0])); }
    char Letter() {
        const char letter = rest_[0];
        rest_.remove_prefix(1);
        return letter;
    }
    double Next() {
        if (AtEnd()) Refuse("a number is missing");
        double value = 0.0;
        const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
        if (error != std::errc() || !(std::fabs(value) <= farthest)) {
            Refuse(Concat("'", rest_.substr(0, 12), "' is no number"));
        }
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
        return value;
    }

  private:
    std::string_view rest_;
};

double NumberOf(const Attributes& attributes, std::string_view name, double fallback) {
    const auto found = attributes.find(name);
    if (found == attributes.end()) return fallback;
    Numbers numbers(found->second);
    const double value = numbers.Next();
    if (!numbers.AtEnd()) Refuse(Concat("'", found->second, "' is no number"));
    return value;
}

std::optional<Role> RoleOf(const std::string& color) {
    if (color == "none") return std::nullopt;
    for (int i = 0; i <= static_cast<int>(Role::Fault); ++i) {
        const Role role = static_cast<Role>(i);
        if (HexText(ColorOf(role, Theme::Light)) == color) return role;
    }
    Refuse(Concat("'", color, "' is the color of no role"));
}

// --- Outlines ---

class Outlines {
  public:
    Outlines(const Attributes& attributes, IconPicture& icon) : icon_(icon) {
        const auto of = [&](std::string_view name, std::string_view fallback) {
            const auto found = attributes.find(name);
            return RoleOf(found == attributes.end() ? std::string(fallback) : found->second);
        };
        style_.stroke = of("stroke", "none");
        style_.fill = of("fill", "none");
        style_.width = NumberOf(attributes, "stroke-width", 2.0);
        if (style_.width != 1.0 && style_.width != 2.0) Refuse("a stroke is 1 or 2 wide");
        if (!style_.stroke && !style_.fill) Refuse("a shape has neither stroke nor fill");
    }

    void MoveTo(Point to) {
        Finish(false);
        current_.push_back(to);
    }
    void LineTo(Point to) {
        if (current_.empty()) Refuse("a path begins with M");
        if (++points_ > mostPoints) Refuse("a shape has too many points");
        current_.push_back(to);
    }
    void CurveTo(Point a, Point b, Point to) {
        const Point from = Last();
        for (int i = 1; i <= curvePieces; ++i) {
            const double t = static_cast<double>(i) / curvePieces, u = 1.0 - t;
            const double w[] = {u * u * u, 3 * u * u * t, 3 * u * t * t, t * t * t};
            LineTo({w[0] * from.x + w[1] * a.x + w[2] * b.x + w[3] * to.x,
                    w[0] * from.y + w[1] * a.y + w[2] * b.y + w[3] * to.y});
        }
    }
    /// Part of an ellipse with upright axes. Source: SVG 1.1, appendix F.6.5.
    void ArcTo(Point radii, bool large, bool sweep, Point to) {
        const Point from = Last();
        if (radii.x <= 0.0 || radii.y <= 0.0 || from == to) Refuse("an arc has no extent");
        const double dx = (from.x - to.x) / 2 / radii.x, dy = (from.y - to.y) / 2 / radii.y;
        const double distance = dx * dx + dy * dy;
        const double grow = std::sqrt(std::max(1.0, distance));  // too small radii are enlarged
        const double x = dx / grow, y = dy / grow, square = x * x + y * y;
        const double factor =
            (large == sweep ? -1.0 : 1.0) * std::sqrt(std::max(0.0, 1.0 / square - 1.0));
        const Point center{factor * y, -factor * x};  // of the unit circle
        const double start = std::atan2(y - center.y, x - center.x);
        double turn = std::atan2(-y - center.y, -x - center.x) - start;
        if (sweep && turn < 0.0) turn += 2 * std::numbers::pi;
        if (!sweep && turn > 0.0) turn -= 2 * std::numbers::pi;
        const Point middle{(from.x + to.x) / 2 + center.x * radii.x * grow,
                           (from.y + to.y) / 2 + center.y * radii.y * grow};
        Turn(middle, {radii.x * grow, radii.y * grow}, start, turn);
    }
    void Ellipse(Point center, Point radii) {
        MoveTo({center.x + radii.x, center.y});
        Turn(center, radii, 0.0, 2 * std::numbers::pi);
        current_.pop_back();
        Finish(true);
    }
    void Finish(bool closed) {
        if (current_.size() >= 2) {
            IconShape shape = style_;
            shape.closed = closed;
            shape.points = std::move(current_);
            icon_.shapes.push_back(std::move(shape));
        }
        current_.clear();
    }
    Point Last() const {
        if (current_.empty()) Refuse("a path begins with M");
        return current_.back();
    }
    Point First() const { return current_.empty() ? Point{} : current_.front(); }

  private:
    void Turn(Point center, Point radii, double start, double turn) {
        const int pieces = std::max(
            2, static_cast<int>(std::ceil(std::fabs(turn) / (std::numbers::pi / 2) * curvePieces)));
        for (int i = 1; i <= pieces; ++i) {
            const double angle = start + turn * i / pieces;
            LineTo({center.x + radii.x * std::cos(angle), center.y + radii.y * std::sin(angle)});
        }
    }

    IconPicture& icon_;
    IconShape style_;
    std::vector<Point> current_;
    std::size_t points_ = 0;
};

void ReadPath(const Attributes& attributes, Outlines& outlines) {
    const auto data = attributes.find("d");
    if (data == attributes.end()) Refuse("a path has no d");
    Numbers numbers(data->second);
    Point at, start;
    char command = 0;
    while (!numbers.AtEnd()) {
        if (numbers.AtLetter()) command = numbers.Letter();
        const bool relative = std::islower(static_cast<unsigned char>(command)) != 0;
        const Point origin = relative ? at : Point{};
        const auto x = [&] { return origin.x + numbers.Next(); };
        const auto y = [&] { return origin.y + numbers.Next(); };
        const auto point = [&] {
            const double px = x();
            return Point{px, y()};
        };
        switch (std::toupper(static_cast<unsigned char>(command))) {
            case 'M':
                outlines.MoveTo(start = at = point());
                command = relative ? 'l' : 'L';
                break;
            case 'L':
                outlines.LineTo(at = point());
                break;
            case 'H':
                outlines.LineTo(at = {x(), at.y});
                break;
            case 'V':
                outlines.LineTo(at = {at.x, y()});
                break;
            case 'C': {
                const Point a = point(), b = point();
                outlines.CurveTo(a, b, at = point());
                break;
            }
            case 'A': {
                const double rx = numbers.Next(), ry = numbers.Next();
                static_cast<void>(numbers.Next());  // axes stand upright
                const bool large = numbers.Next() != 0.0, sweep = numbers.Next() != 0.0;
                outlines.ArcTo({rx, ry}, large, sweep, at = point());
                break;
            }
            case 'Z':
                outlines.Finish(true);
                at = start;
                command = 0;
                break;
            default:
                Refuse(Concat("path data has no '", std::string(1, command ? command : '?'), "'"));
        }
    }
    outlines.Finish(false);
}

void ReadPoints(const Attributes& attributes, Outlines& outlines, bool closed) {
    const auto found = attributes.find("points");
    if (found == attributes.end()) Refuse("points are missing");
    Numbers numbers(found->second);
    for (bool first = true; !numbers.AtEnd(); first = false) {
        const double x = numbers.Next();
        const Point point{x, numbers.Next()};
        first ? outlines.MoveTo(point) : outlines.LineTo(point);
    }
    outlines.Finish(closed);
}

void ReadPolyline(const Attributes& attributes, Outlines& outlines) {
    ReadPoints(attributes, outlines, false);
}
void ReadPolygon(const Attributes& attributes, Outlines& outlines) {
    ReadPoints(attributes, outlines, true);
}
void ReadLine(const Attributes& attributes, Outlines& outlines) {
    outlines.MoveTo({NumberOf(attributes, "x1", 0.0), NumberOf(attributes, "y1", 0.0)});
    outlines.LineTo({NumberOf(attributes, "x2", 0.0), NumberOf(attributes, "y2", 0.0)});
    outlines.Finish(false);
}
void ReadRect(const Attributes& attributes, Outlines& outlines) {
    const double x = NumberOf(attributes, "x", 0.0), y = NumberOf(attributes, "y", 0.0);
    const double width = NumberOf(attributes, "width", 0.0);
    const double height = NumberOf(attributes, "height", 0.0);
    outlines.MoveTo({x, y});
    outlines.LineTo({x + width, y});
    outlines.LineTo({x + width, y + height});
    outlines.LineTo({x, y + height});
    outlines.Finish(true);
}
void ReadCircle(const Attributes& attributes, Outlines& outlines) {
    const double radius = NumberOf(attributes, "r", 0.0);
    outlines.Ellipse({NumberOf(attributes, "cx", 0.0), NumberOf(attributes, "cy", 0.0)},
                     {radius, radius});
}
void ReadEllipse(const Attributes& attributes, Outlines& outlines) {
    outlines.Ellipse({NumberOf(attributes, "cx", 0.0), NumberOf(attributes, "cy", 0.0)},
                     {NumberOf(attributes, "rx", 0.0), NumberOf(attributes, "ry", 0.0)});
}

struct Element {
    std::string_view name;
    void (*read)(const Attributes& attributes, Outlines& outlines);
};
constexpr Element elements[] = {{"path", ReadPath},         {"line", ReadLine},
                                {"polyline", ReadPolyline}, {"polygon", ReadPolygon},
                                {"rect", ReadRect},         {"circle", ReadCircle},
                                {"ellipse", ReadEllipse}};

// --- Tags ---

class IconReader {
  public:
    IconReader(std::string_view text, IconPicture& icon) : rest_(text), icon_(icon) {}

    void Read() {
        if (rest_.size() > mostBytes) Refuse("an icon holds at most 64 KiB");
        while (FindTag()) Tag();
        if (!complete_ || !groups_.empty()) Refuse("the file ends early");
    }

  private:
    bool FindTag() {
        const std::size_t at = rest_.find_first_not_of(" \t\r\n");
        if (at == std::string_view::npos) return false;
        rest_.remove_prefix(at);
        if (rest_[0] != '<') Refuse("text stands outside of the tags");
        rest_.remove_prefix(1);
        return true;
    }
    bool Take(std::string_view word) {
        if (!rest_.starts_with(word)) return false;
        rest_.remove_prefix(word.size());
        return true;
    }
    void SkipBlanks() {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size()));
    }
    std::string_view Name() {
        const std::size_t end = std::min(rest_.find_first_of(" \t\r\n=/><\"'"), rest_.size());
        const std::string_view name = rest_.substr(0, end);
        rest_.remove_prefix(end);
        if (name.empty()) Refuse("a name is missing");
        return name;
    }
    void SkipTo(std::string_view end) {
        const std::size_t at = rest_.find(end);
        if (at == std::string_view::npos) Refuse("the file ends early");
        rest_.remove_prefix(at + end.size());
    }

    void Tag() {
        if (Take("!--")) return SkipTo("-->");
        if (Take("?xml")) return SkipTo("?>");
        if (Take("/")) return Close();
        const std::string_view name = Name();
        Attributes attributes = groups_.empty() ? Attributes{} : groups_.back();
        const bool empty = ReadAttributes(attributes);
        if (name == "svg" || name == "g") {
            if ((name == "svg") != groups_.empty() || complete_) Refuse("an icon is one svg");
            if (name == "svg") CheckGrid(attributes);
            if (groups_.size() >= mostDepth) Refuse("groups are nested too deep");
            if (!empty) groups_.push_back(std::move(attributes));
            return;
        }
        const auto element = std::ranges::find(elements, name, &Element::name);
        if (element == std::end(elements) || groups_.empty() || !empty) {
            Refuse(Concat("an icon has no <", name, ">"));
        }
        Outlines outlines(attributes, icon_);
        element->read(attributes, outlines);
    }
    void Close() {
        static_cast<void>(Name());
        SkipTo(">");
        if (groups_.empty()) Refuse("a tag closes that none opened");
        groups_.pop_back();
        complete_ = groups_.empty();
    }
    /// True for a tag that closes itself.
    bool ReadAttributes(Attributes& attributes) {
        for (;;) {
            SkipBlanks();
            if (Take("/>")) return true;
            if (Take(">")) return false;
            const std::string name(Name());
            if (!Take("=\"")) Refuse(Concat("attribute '", name, "' has no value"));
            const std::size_t end = rest_.find('"');
            if (end == std::string_view::npos) Refuse("the file ends early");
            attributes[name] = std::string(rest_.substr(0, end));
            rest_.remove_prefix(end + 1);
        }
    }
    static void CheckGrid(Attributes& attributes) {
        if (attributes["viewBox"] != "0 0 30 30") Refuse("an icon's viewBox is 0 0 30 30");
    }

    std::string_view rest_;
    IconPicture& icon_;
    std::vector<Attributes> groups_;
    bool complete_ = false;
};

}  // namespace

bool ReadIcon(std::string_view text, const std::string& name, IconPicture& icon,
              std::string& error) {
    icon.shapes.clear();
    try {
        IconReader(text, icon).Read();
        return true;
    } catch (const IconFault& fault) {
        error = Concat(name, ": ", fault.text);
        icon.shapes.clear();
        return false;
    }
}

std::vector<DrawItem> ItemsOf(const IconItem& item) {
    std::vector<DrawItem> items;
    const Rect& square = item.square;
    const double scale = square.width / iconGrid;
    for (const IconShape& shape : item.icon->shapes) {
        std::vector<Point> points;
        points.reserve(shape.points.size() + 1);
        for (const Point& p : shape.points) {
            points.push_back({square.x + p.x * scale, square.y + p.y * scale});
        }
        if (shape.fill) items.emplace_back(Polygon{points, *shape.fill, 1.0, false, {}});
        if (!shape.stroke) continue;
        if (shape.closed) points.push_back(points.front());
        items.emplace_back(Polyline{std::move(points), {*shape.stroke, shape.width * scale}});
    }
    return items;
}

}  // namespace photrak
