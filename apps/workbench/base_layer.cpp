#include "workbench/base_layer.h"

#include <QPainter>
#include <cmath>

#include "qt/painter.h"
#include "qt/theme.h"

namespace photrak {

QRegion BaseLayer::Move(QSize window, double ratio, QPoint offset, Theme theme) {
    const QRect whole(QPoint(0, 0), window);
    const QPointF by = QPointF(offset_ - offset) * ratio;
    const QPoint pixels = by.toPoint();
    // Between pixels nothing can be moved.
    const bool fits = !kept_.isNull() && theme_ == theme && kept_.devicePixelRatio() == ratio &&
                      kept_.size() == window * ratio && by == QPointF(pixels);
    const QPoint moved = offset_ - offset;
    offset_ = offset;
    theme_ = theme;
    if (!fits) {
        kept_ = QPixmap(window * ratio);
        kept_.setDevicePixelRatio(ratio);
        return whole;
    }
    if (moved.isNull()) return {};
    kept_.scroll(pixels.x(), pixels.y(), kept_.rect());
    return QRegion(whole) - whole.translated(moved);
}

void BaseLayer::Paint(QPainter& painter, QSize window, QPoint offset, Theme theme,
                      const std::vector<DrawItem>& items) {
    const double ratio = painter.device()->devicePixelRatioF();
    for (const QRect& part : Move(window, ratio, offset, theme)) {
        QPainter inside(&kept_);
        inside.setClipRect(part);
        inside.fillRect(part, ColorFor(Role::Paper, theme));
        inside.translate(-offset);
        PaintItems(inside, items, theme);
    }
    painter.drawPixmap(0, 0, kept_);
}

}  // namespace photrak
