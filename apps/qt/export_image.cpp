#include "qt/export_image.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <algorithm>
#include <cmath>

#include "qt/painter.h"
#include "qt/theme.h"

namespace photrak {
namespace {

/// Blanks an entry of the page's dictionary of names, "/CreationDate (...)", without moving what
/// stands after it: the table at the end counts bytes.
void BlankEntry(QByteArray& bytes, const QByteArray& key) {
    for (qsizetype at = bytes.indexOf(key); at >= 0; at = bytes.indexOf(key, at + 1)) {
        const qsizetype end = bytes.indexOf(')', at);
        if (end < 0 || end - at > 80) continue;
        std::fill(bytes.begin() + at, bytes.begin() + end + 1, ' ');
    }
}

}  // namespace

QByteArray PngOf(const Drawing& drawing, Theme theme, double scale) {
    scale = std::clamp(scale, 0.25, 8.0);
    QImage image(static_cast<int>(std::lround(drawing.size.width * scale)),
                 static_cast<int>(std::lround(drawing.size.height * scale)), QImage::Format_RGB32);
    if (image.isNull()) return {};
    image.setDevicePixelRatio(scale);
    QPainter painter(&image);
    PaintDrawing(painter, drawing, theme);
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return image.save(&buffer, "PNG") ? bytes : QByteArray();
}

QByteArray PdfOf(const Drawing& drawing, Theme theme, const QString& title) {
    constexpr double pointsPerPixel = 0.75;
    constexpr int resolution = 960;  // ten dots in a pixel of the drawing
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setTitle(title);
    writer.setCreator(QStringLiteral("Photrak"));
    writer.setResolution(resolution);
    writer.setPageSize(
        QPageSize(QSizeF(drawing.size.width * pointsPerPixel, drawing.size.height * pointsPerPixel),
                  QPageSize::Point, QString(), QPageSize::ExactMatch));
    writer.setPageMargins(QMarginsF(0.0, 0.0, 0.0, 0.0));
    QPainter painter(&writer);
    painter.scale(resolution / 96.0, resolution / 96.0);
    PaintDrawing(painter, drawing, theme, Surface::Page);
    painter.end();
    BlankEntry(bytes, "/CreationDate");
    BlankEntry(bytes, "/ModDate");
    return bytes;
}

}  // namespace photrak
