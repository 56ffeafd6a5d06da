#include "drawing/svg_writer.h"

#include <charconv>
#include <cmath>
#include <optional>

#include "base/text.h"
#include "drawing/icon_picture.h"
#include "drawing/png_image.h"

namespace photrak {
namespace {

constexpr std::string_view fontFamily =
    "'Inter','Segoe UI','Helvetica Neue','Liberation Sans','DejaVu Sans',sans-serif";

/// A coordinate with at most two decimals, without trailing zeros.
std::string Number(double value) {
    if (!std::isfinite(value)) return "0";
    char buffer[400];
    const auto end =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 2).ptr;
    std::string text(buffer, end);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text == "-0" ? "0" : text;
}

std::string Attribute(std::string_view name, double value) {
    return Concat(" ", name, "=\"", Number(value), "\"");
}
std::string Attribute(std::string_view name, std::string_view value) {
    return Concat(" ", name, "=\"", XmlEscaped(value), "\"");
}
std::string RectAttributes(const Rect& r) {
    return Attribute("x", r.x) + Attribute("y", r.y) + Attribute("width", r.width) +
           Attribute("height", r.height);
}

/// The colors of a theme, or names for those that the page around the picture gives.
struct SvgPaint {
    std::optional<Theme> theme;
    std::string idPrefix;  // pictures of one page tell their parts apart

    std::string Of(Role role) const {
        return theme ? HexText(ColorOf(role, *theme)) : Concat("var(--", RoleName(role), ")");
    }
};

class SvgWriter {
  public:
    explicit SvgWriter(SvgPaint paint) : paint_(std::move(paint)) {}

    void operator()(const Segments& item) {
        std::string path;
        for (std::size_t i = 0; i + 1 < item.points.size(); i += 2) {
            path += Concat("M", Pair(item.points[i]), "L", Pair(item.points[i + 1]));
        }
        if (!path.empty()) text_ += Concat("<path", Attribute("d", path), Stroke(item.pen), "/>\n");
    }
    void operator()(const Polyline& item) {
        if (item.points.empty()) return;
        text_ += Concat("<polyline", Points(item.points), Stroke(item.pen),
                        Attribute("stroke-linejoin", "round"), "/>\n");
    }
    void operator()(const Polygon& item) {
        text_ += Concat("<polygon", Points(item.points), Fill(item.fill, item.opacity),
                        item.outlined ? Stroke(item.pen, /*withFill=*/false) : "", "/>\n");
    }
    void operator()(const Box& item) {
        text_ += Concat("<rect", RectAttributes(item.rect),
                        item.filled ? Fill(item.fill, item.opacity) : Attribute("fill", "none"),
                        item.outlined ? Stroke(item.pen, /*withFill=*/false) : "", "/>\n");
    }
    void operator()(const Symbols& item) {
        for (const Point p : item.points) {
            if (item.marker == Marker::Circle) {
                text_ +=
                    Concat("<circle", Attribute("cx", p.x), Attribute("cy", p.y),
                           Attribute("r", 0.5 * item.size), Fill(item.role, item.opacity), "/>\n");
                continue;
            }
            SymbolShape shape = ShapeOf(item.marker, p, item.size);
            if (shape.strokes) {
                (*this)(
                    Segments{std::move(shape.points), {item.role, 1.5, Dash::Solid, item.opacity}});
            } else {
                (*this)(Polygon{std::move(shape.points), item.role, item.opacity, false, {}});
            }
        }
    }
    void operator()(const TextItem& item) {
        static constexpr std::string_view anchors[] = {"start", "middle", "end"};
        text_ += Concat("<text", Attribute("x", item.at.x), Attribute("y", item.at.y),
                        Attribute("font-size", item.size), Fill(item.role, 1.0));
        if (item.anchor != Anchor::Start)
            text_ += Attribute("text-anchor", anchors[static_cast<int>(item.anchor)]);
        if (item.weight == Weight::Bold) text_ += Attribute("font-weight", "bold");
        if (item.upright) {
            text_ += Attribute(
                "transform", Concat("rotate(-90 ", Number(item.at.x), " ", Number(item.at.y), ")"));
        }
        text_ += Concat(">", XmlEscaped(item.text), "</text>\n");
    }
    void operator()(const DensityImage& item) {
        if (item.columns <= 0 || item.rows <= 0) return;
        if (paint_.theme) return AddImage(item, *paint_.theme, "");
        AddImage(item, Theme::Light, " class=\"on-light\"");
        AddImage(item, Theme::Dark, " class=\"on-dark\"");
    }
    void operator()(const IconItem& item) {
        for (const DrawItem& part : ItemsOf(item)) std::visit(*this, part);
    }
    void operator()(const BitmapImage& item) {
        if (item.columns <= 0 || item.rows <= 0) return;
        text_ +=
            Concat("<image", RectAttributes(item.rect), Attribute("preserveAspectRatio", "none"),
                   " style=\"image-rendering:pixelated\" href=\"data:image/png;base64,",
                   Base64(PngBytes(item)), "\"/>\n");
    }
    void operator()(const ClipBegin& item) {
        const std::string id = Concat(paint_.idPrefix, "clip", ++clips_);
        text_ += Concat("<clipPath", Attribute("id", id), "><rect", RectAttributes(item.rect),
                        "/></clipPath>\n<g clip-path=\"url(#", id, ")\">\n");
    }
    void operator()(const ClipEnd&) { text_ += "</g>\n"; }
    void operator()(const GroupBegin& item) {
        text_ += Concat("<g", Attribute("data-mark", item.id),
                        item.name.empty() ? "" : Attribute("aria-label", item.name), ">\n");
    }
    void operator()(const GroupEnd&) { text_ += "</g>\n"; }

    std::string Take() { return std::move(text_); }

  private:
    static std::string Pair(Point p) { return Concat(Number(p.x), " ", Number(p.y)); }
    static std::string Points(const std::vector<Point>& points) {
        std::string list;
        for (const Point p : points) {
            if (!list.empty()) list += ' ';
            list += Concat(Number(p.x), ",", Number(p.y));
        }
        return Attribute("points", list);
    }
    void AddImage(const DensityImage& item, Theme theme, std::string_view classOf) {
        text_ += Concat("<image", classOf, RectAttributes(item.rect),
                        Attribute("preserveAspectRatio", "none"), " href=\"data:image/png;base64,",
                        Base64(PngBytes(item, theme)), "\"/>\n");
    }
    std::string Fill(Role role, double opacity) const {
        return Attribute("fill", paint_.Of(role)) +
               (opacity < 1.0 ? Attribute("fill-opacity", opacity) : "");
    }
    std::string Stroke(const Pen& pen, bool withFill = true) const {
        std::string text = withFill ? Attribute("fill", "none") : "";
        text += Attribute("stroke", paint_.Of(pen.role)) + Attribute("stroke-width", pen.width);
        if (pen.opacity < 1.0) text += Attribute("stroke-opacity", pen.opacity);
        std::string lengths;
        for (const double length : DashLengths(pen.dash, pen.width)) {
            lengths += Concat(lengths.empty() ? "" : " ", Number(length));
        }
        return lengths.empty() ? text : text + Attribute("stroke-dasharray", lengths);
    }

    SvgPaint paint_;
    std::string text_;
    int clips_ = 0;
};

}  // namespace

std::string XmlEscaped(std::string_view text) {
    std::string out;
    for (const char c : DrawableText(text)) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

namespace {

std::string WriteSvg(const Drawing& drawing, const SvgPaint& paint, std::string_view title) {
    SvgWriter writer(paint);
    for (const DrawItem& item : drawing.items) std::visit(writer, item);
    for (const DrawItem& item : drawing.overlay) std::visit(writer, item);
    const std::string width = Number(drawing.size.width), height = Number(drawing.size.height);
    return Concat("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"", width, "\" height=\"",
                  height, "\" viewBox=\"0 0 ", width, " ", height, "\" role=\"img\" font-family=\"",
                  fontFamily, "\" style=\"font-variant-numeric:tabular-nums\">\n<title>",
                  XmlEscaped(title), "</title>\n", "<rect width=\"100%\" height=\"100%\" fill=\"",
                  paint.Of(Role::Paper), "\"/>\n", writer.Take(), "</svg>\n");
}

}  // namespace

std::string SvgText(const Drawing& drawing, Theme theme, std::string_view title) {
    return WriteSvg(drawing, {theme, {}}, title);
}

std::string InlineSvgText(const Drawing& drawing, std::string_view title, std::string_view id) {
    return WriteSvg(drawing, {{}, Concat(id, "-")}, title);
}

std::string SvgPalette(Theme theme) {
    std::string text;
    for (int i = 0; i < roleCount; ++i) {
        const Role role = static_cast<Role>(i);
        text += Concat("--", RoleName(role), ":", HexText(ColorOf(role, theme)), ";");
    }
    return text;
}

}  // namespace photrak
