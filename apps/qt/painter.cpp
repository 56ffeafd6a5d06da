#include "qt/painter.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <cmath>

#include "drawing/dashes.h"
#include "drawing/dense_line.h"
#include "drawing/icon_picture.h"
#include "qt/kept_icons.h"
#include "qt/text_measure_qt.h"
#include "qt/theme.h"

namespace photrak {
namespace {

QPointF ToQt(Point p) {
    return {p.x, p.y};
}
QRectF ToQt(const Rect& r) {
    return {r.x, r.y, r.width, r.height};
}

class ItemPainter {
  public:
    ItemPainter(QPainter& painter, Theme theme, Surface surface)
        : painter_(painter), theme_(theme), surface_(surface) {
        const QTransform& transform = painter.deviceTransform();
        scale_ = std::hypot(transform.m11(), transform.m12());
        if (!(scale_ > 0.0)) scale_ = 1.0;
        offset_ = {transform.dx(), transform.dy()};
        isPlain_ = transform.m12() == 0.0 && transform.m11() > 0.0 &&
                   transform.m11() == transform.m22() && transform.isAffine();
    }

    void operator()(const Segments& item) {
        SetPen(item.pen);
        const std::vector<double> dashes = DashLengths(item.pen.dash, item.pen.width);
        std::vector<Point> points;
        points.reserve(item.points.size());
        for (std::size_t i = 0; i + 1 < item.points.size(); i += 2) {
            const auto [a, b] = Crisp(item.points[i], item.points[i + 1], item.pen.width);
            if (dashes.empty()) {
                points.push_back(a);
                points.push_back(b);
                continue;
            }
            const std::vector<Point> parts = DashedSegments({a, b}, dashes);
            points.insert(points.end(), parts.begin(), parts.end());
        }
        DrawSegments(points);
    }
    void operator()(const Polyline& item) {
        if (item.points.size() < 2) return;
        SetPen(item.pen);
        const std::vector<double> dashes = DashLengths(item.pen.dash, item.pen.width);
        // A short line costs nothing and has corners that close.
        constexpr std::size_t shortLine = 64;
        const bool pixels = surface_ == Surface::Pixels, opaque = item.pen.opacity == 1.0;
        if (pixels && dashes.empty() && opaque && item.points.size() > shortLine) {
            DrawSolid(item);
            return;
        }
        if ((pixels && !opaque) || !dashes.empty()) {
            DrawSegments(DashedSegments(item.points, dashes));
            return;
        }
        QPen pen = painter_.pen();
        pen.setJoinStyle(Qt::RoundJoin);
        painter_.setPen(pen);
        painter_.drawPolyline(Outline(item.points));
    }
    void operator()(const Polygon& item) {
        if (item.outlined) {
            SetPen(item.pen);
        } else {
            painter_.setPen(Qt::NoPen);
        }
        painter_.setBrush(Fill(item.fill, item.opacity));
        painter_.drawPolygon(Outline(item.points));
        painter_.setBrush(Qt::NoBrush);
    }
    void operator()(const Box& item) {
        if (item.filled) painter_.fillRect(ToQt(item.rect), Fill(item.fill, item.opacity));
        if (!item.outlined) return;
        const Rect& r = item.rect;
        const Point corners[] = {
            {r.x, r.y}, {r.Right(), r.y}, {r.Right(), r.Bottom()}, {r.x, r.Bottom()}};
        Segments sides{{}, item.pen};
        sides.points.reserve(8);
        for (std::size_t i = 0; i < 4; ++i) {
            // The sides overlap in the corners, so that flat ends leave none open.
            Point a = corners[i], b = corners[(i + 1) % 4];
            const double half = 0.5 * item.pen.width;
            if (a.y == b.y) {
                a.x += a.x < b.x ? -half : half;
                b.x += a.x < b.x ? half : -half;
            }
            sides.points.push_back(a);
            sides.points.push_back(b);
        }
        (*this)(sides);
    }
    void operator()(const Symbols& item) {
        for (const Point p : item.points) {
            if (item.marker == Marker::Circle) {
                painter_.setPen(Qt::NoPen);
                painter_.setBrush(Fill(item.role, item.opacity));
                painter_.drawEllipse(ToQt(p), 0.5 * item.size, 0.5 * item.size);
                painter_.setBrush(Qt::NoBrush);
                continue;
            }
            SymbolShape shape = ShapeOf(item.marker, p, item.size);
            if (shape.strokes) {
                SetPen({item.role, 1.5, Dash::Solid, item.opacity});
                DrawSegments(shape.points);
            } else {
                (*this)(Polygon{std::move(shape.points), item.role, item.opacity, false, {}});
            }
        }
    }
    void operator()(const TextItem& item) {
        const std::string drawable = DrawableText(item.text);
        const QString text = ToQString(drawable);
        const QFont font = DrawingFont(item.size, item.weight);
        const double width = QtTextMeasure().Width(drawable, item.size, item.weight);
        const double shift = item.anchor == Anchor::Start    ? 0.0
                             : item.anchor == Anchor::Middle ? -0.5 * width
                                                             : -width;
        painter_.setFont(font);
        painter_.setPen(ColorFor(item.role, theme_));
        if (!item.upright) {
            painter_.drawText(QPointF(item.at.x + shift, item.at.y), text);
            return;
        }
        painter_.save();
        painter_.translate(ToQt(item.at));
        painter_.rotate(-90.0);
        painter_.drawText(QPointF(shift, 0.0), text);
        painter_.restore();
    }
    void operator()(const DensityImage& item) {
        const auto cells =
            static_cast<std::size_t>(item.columns) * static_cast<std::size_t>(item.rows);
        if (item.columns <= 0 || item.rows <= 0 || item.levels.size() < cells) return;
        QImage image(item.levels.data(), item.columns, item.rows, item.columns,
                     QImage::Format_Indexed8);
        QList<QRgb> ramp;
        for (int level = 0; level < 256; ++level) {
            const Color c = RampColor(level, theme_);
            ramp.append(qRgba(c.red, c.green, c.blue, level == 0 ? 0 : 255));
        }
        image.setColorTable(ramp);
        painter_.drawImage(ToQt(item.rect), image);
    }
    void operator()(const IconItem& item) {
        const auto paint = [&](QPainter& inside) {
            ItemPainter walker(inside, theme_, surface_);
            const IconItem moved{item.icon, {0.0, 0.0, item.square.width, item.square.height}};
            for (const DrawItem& part : ItemsOf(moved)) std::visit(walker, part);
        };
        if (surface_ == Surface::Pixels && isPlain_ &&
            KeptIcons::OfThread().Draw(painter_, item, theme_, scale_, offset_, paint)) {
            return;
        }
        for (const DrawItem& part : ItemsOf(item)) std::visit(*this, part);
    }
    void operator()(const BitmapImage& item) {
        const auto bytes =
            3 * static_cast<std::size_t>(item.columns) * static_cast<std::size_t>(item.rows);
        if (item.columns <= 0 || item.rows <= 0 || item.pixels.size() < bytes) return;
        const QImage image(item.pixels.data(), item.columns, item.rows, 3 * item.columns,
                           QImage::Format_RGB888);
        painter_.drawImage(ToQt(item.rect), image);
    }
    void operator()(const ClipBegin& item) {
        painter_.save();
        painter_.setClipRect(ToQt(item.rect), Qt::IntersectClip);
        ++clips_;
    }
    void operator()(const ClipEnd&) {
        if (clips_ == 0) return;
        painter_.restore();
        --clips_;
    }
    void operator()(const GroupBegin&) {}
    void operator()(const GroupEnd&) {}

    void CloseClips() {
        while (clips_ > 0) (*this)(ClipEnd{});
    }

  private:
    QBrush Fill(Role role, double opacity) const {
        QColor color = ColorFor(role, theme_);
        color.setAlphaF(static_cast<float>(opacity));
        return color;
    }
    void SetPen(const Pen& pen) {
        QColor color = ColorFor(pen.role, theme_);
        color.setAlphaF(static_cast<float>(pen.opacity));
        painter_.setPen(QPen(color, CrispWidth(pen.width), Qt::SolidLine, Qt::FlatCap));
    }
    double CrispWidth(double width) const {
        if (surface_ == Surface::Page || width > 1.0) return width;
        return std::max(1.0, std::round(width * scale_)) / scale_;
    }
    /// A level or upright line with its middle moved so that it fills whole device pixels.
    std::pair<Point, Point> Crisp(Point a, Point b, double width) const {
        if (surface_ == Surface::Page || (a.x != b.x && a.y != b.y)) return {a, b};
        const long pixels = std::max(1L, std::lround(CrispWidth(width) * scale_));
        const auto snap = [&](double value, double offset) {
            const double device = value * scale_ + offset;
            const double whole = pixels % 2 != 0 ? std::floor(device) + 0.5 : std::round(device);
            return (whole - offset) / scale_;
        };
        if (a.y == b.y) a.y = b.y = snap(a.y, offset_.y());
        if (a.x == b.x) a.x = b.x = snap(a.x, offset_.x());
        return {a, b};
    }
    /// Square ends reach over each other at corners, where flat ones leave notches. Where points
    /// crowd the line is a row of bars.
    void DrawSolid(const Polyline& item) {
        const DenseLine split = SplitDense(item.points, 1.0);
        QPen pen = painter_.pen();
        pen.setCapStyle(Qt::SquareCap);
        painter_.setPen(pen);
        DrawSegments(split.segments);
        painter_.setRenderHint(QPainter::Antialiasing, false);
        const double half = 0.5 * item.pen.width;
        for (const Rect& bar : split.bars)
            painter_.fillRect(QRectF(bar.x, bar.y - half, bar.width, bar.height + 2.0 * half),
                              pen.color());
        painter_.setRenderHint(QPainter::Antialiasing);
    }
    static QPolygonF Outline(const std::vector<Point>& points) {
        QPolygonF outline;
        outline.reserve(static_cast<qsizetype>(points.size()));
        for (const Point p : points) outline.append(ToQt(p));
        return outline;
    }
    void DrawSegments(const std::vector<Point>& points) {
        QList<QLineF> lines;
        lines.reserve(static_cast<qsizetype>(points.size() / 2));
        for (std::size_t i = 0; i + 1 < points.size(); i += 2)
            lines.append({ToQt(points[i]), ToQt(points[i + 1])});
        // The steps of so many lines at twice the resolution are finer than a smoothed edge at the
        // usual one, and smoothing them takes twice as long.
        constexpr qsizetype crowd = 8000;
        const bool rough = lines.size() > crowd && scale_ >= 2.0;
        if (rough) painter_.setRenderHint(QPainter::Antialiasing, false);
        painter_.drawLines(lines);
        if (rough) painter_.setRenderHint(QPainter::Antialiasing);
    }

    QPainter& painter_;
    Theme theme_;
    Surface surface_;
    double scale_ = 1.0;
    QPointF offset_;
    bool isPlain_ = false;  // the painter scales and moves, and does nothing else
    int clips_ = 0;
};

}  // namespace

void PaintItems(QPainter& painter, const std::vector<DrawItem>& items, Theme theme,
                Surface surface) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    ItemPainter walker(painter, theme, surface);
    for (const DrawItem& item : items) std::visit(walker, item);
    walker.CloseClips();
    painter.restore();
}

void PaintDrawing(QPainter& painter, const Drawing& drawing, Theme theme, Surface surface) {
    painter.fillRect(QRectF(0.0, 0.0, drawing.size.width, drawing.size.height),
                     ColorFor(Role::Paper, theme));
    PaintItems(painter, drawing.items, theme, surface);
    PaintItems(painter, drawing.overlay, theme, surface);
}

}  // namespace photrak
