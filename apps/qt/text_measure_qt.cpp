#include "qt/text_measure_qt.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <algorithm>
#include <cmath>
#include <string>
#include <unordered_map>

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
    // A picture asks for the same few texts each time it is drawn, and Qt shapes them anew.
    struct Known {
        QFont font;
        std::unordered_map<std::string, double> widths;
    };
    thread_local Known known;
    constexpr std::size_t most = 50'000;
    const QFont now = QGuiApplication::font();
    if (known.font != now || known.widths.size() > most) known = {now, {}};
    const QFont font = DrawingFont(size, weight);
    std::string key(text);
    key += (font.bold() ? "\nb" : "\nr") + std::to_string(font.pixelSize());
    const auto [place, isNew] = known.widths.try_emplace(std::move(key), 0.0);
    if (isNew) place->second = QFontMetricsF(font).horizontalAdvance(ToQString(text));
    return place->second;
}

}  // namespace photrak
