// The theme in use, text widths of the window's font, and the pictures of buttons.
#pragma once

#include <QIcon>

#include "drawing/display_list.h"
#include "workbench/commands.h"

namespace photrak {

/// Light or dark, as it was applied last.
Theme ShownTheme();
void SetShownTheme(Theme theme);
/// Whether wires differ by their dashes as well as by color.
bool ShownLinePatterns();
void SetShownLinePatterns(bool shown);

const TextMeasure& WindowMeasure();

/// The vector picture that stands for a bitmap of the model directory; empty if there is none.
QIcon IconOfFile(const Workbench& workbench, const std::string& bitmap);
/// The vector picture of a button, drawn anew at each size and theme.
QIcon ButtonIcon(const Workbench& workbench, const BarButton& button);
/// A drawing as a pixmap, fitted into a size.
QPixmap Thumbnail(const Drawing& drawing, QSize size, double ratio);

}  // namespace photrak
