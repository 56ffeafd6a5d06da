#include "qt/kept_icons.h"

#include <QPainter>
#include <cmath>

namespace photrak {
namespace {

constexpr double largest = 128.0;           // side in device pixels
constexpr std::size_t most = 400;           // images: 44 icons in some sizes and places
constexpr double phases = 16.0, air = 2.0;  // parts of a pixel told apart; pixels around an icon

/// Where in its pixel a coordinate is; the pixel itself is taken off it.
double PhaseOf(double& device) {
    const double whole = std::floor(device + 0.5 / phases);
    const double phase = std::max(0.0, std::round((device - whole) * phases) / phases);
    device = whole;
    return phase;
}

}  // namespace

bool KeptIcons::Draw(QPainter& painter, const IconItem& item, Theme theme, double scale,
                     QPointF offset, const Paint& paint) {
    const double side = item.square.width * scale;
    if (!(side <= largest)) return false;
    double x = item.square.x * scale + offset.x(), y = item.square.y * scale + offset.y();
    const double xPhase = PhaseOf(x), yPhase = PhaseOf(y);
    const Key key{item.icon.get(), theme, scale, side, xPhase, yPhase};
    auto found = kept_.find(key);
    if (found == kept_.end()) {
        if (kept_.size() >= most) kept_.clear();
        const int pixels = static_cast<int>(std::ceil(side + 2.0 * air)) + 1;
        QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter inside(&image);
        inside.setRenderHint(QPainter::Antialiasing);
        inside.translate(air + xPhase, air + yPhase);
        inside.scale(scale, scale);
        paint(inside);
        inside.end();
        image.setDevicePixelRatio(scale);
        found = kept_.emplace(key, Kept{item.icon, std::move(image)}).first;
    }
    painter.drawImage(QPointF((x - air - offset.x()) / scale, (y - air - offset.y()) / scale),
                      found->second.image);
    return true;
}

KeptIcons& KeptIcons::OfThread() {
    thread_local KeptIcons icons;
    return icons;
}

}  // namespace photrak
