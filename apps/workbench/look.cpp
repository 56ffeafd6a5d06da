// Buttons of models show the picture that the canvas draws; the others one of their own name.
#include "workbench/look.h"

#include <QPainter>
#include <QPixmap>
#include <algorithm>

#include "qt/painter.h"
#include "qt/text_measure_qt.h"
#include "qt/theme.h"

namespace photrak {
namespace {

Theme& Current() {
    static Theme theme = Theme::Light;
    return theme;
}

}  // namespace

Theme ShownTheme() {
    return Current();
}

void SetShownTheme(Theme theme) {
    Current() = theme;
}

const TextMeasure& WindowMeasure() {
    static const QtTextMeasure measure;
    return measure;
}

QIcon ButtonIcon(const Workbench&, const BarButton& button) {
    QPixmap pixmap(60, 60);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setPen(ColorFor(Role::Ink, ShownTheme()));
    QString letters;
    for (const QChar c : QString::fromStdString(button.tooltip)) {
        if (c.isUpper() && letters.size() < 2) letters += c;
    }
    QFont font = painter.font();
    font.setPixelSize(26);
    painter.setFont(font);
    painter.drawText(pixmap.rect(), Qt::AlignCenter, letters);
    return QIcon(pixmap);
}

QPixmap Thumbnail(const Drawing& drawing, QSize size, double ratio) {
    QPixmap pixmap(size * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(ColorFor(Role::Paper, ShownTheme()));
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const double factor =
        std::min(size.width() / drawing.size.width, size.height() / drawing.size.height);
    painter.scale(factor, factor);
    PaintItems(painter, drawing.items, ShownTheme());
    return pixmap;
}

}  // namespace photrak
