#include "qt/text_measure_qt.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <algorithm>
#include <cmath>

namespace photrak {

QFont DrawingFont(double size, Weight weight) {
    QFont font = QGuiApplication::font();
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(size))));
    font.setBold(weight == Weight::Bold);
    // Widths must be the same at every scale of the screen.
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

double QtTextMeasure::Width(std::string_view text, double size, Weight weight) const {
    return QFontMetricsF(DrawingFont(size, weight)).horizontalAdvance(ToQString(text));
}

}  // namespace photrak
