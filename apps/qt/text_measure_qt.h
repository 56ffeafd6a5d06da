// Widths of text in the application's own font.
#pragma once

#include <QFont>
#include <QString>

#include "drawing/text_measure.h"

namespace photrak {

inline QString ToQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// The font in which drawings are painted, at a size in pixels.
QFont DrawingFont(double size, Weight weight);

class QtTextMeasure : public TextMeasure {
  public:
    double Width(std::string_view text, double size, Weight weight) const override;
};

}  // namespace photrak
