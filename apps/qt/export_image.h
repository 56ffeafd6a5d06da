// Drawings as PNG and PDF bytes. The same drawing gives the same bytes: no date, no random names.
#pragma once

#include <QByteArray>
#include <QString>

#include "drawing/display_list.h"

namespace photrak {

/// \param scale device pixels in a pixel of the drawing, 0.25 to 8
/// Empty when an image of that size cannot be made.
QByteArray PngOf(const Drawing& drawing, Theme theme, double scale);
/// One page as large as the drawing, a pixel being 1/96 inch; lines and texts stay what they are.
QByteArray PdfOf(const Drawing& drawing, Theme theme, const QString& title);

}  // namespace photrak
