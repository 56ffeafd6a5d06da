// Colors of windows and drawings from one table of roles: light, dark, or as the system has it.
#pragma once

#include <QColor>
#include <QPalette>

#include "drawing/roles.h"

class QApplication;

namespace photrak {

enum class ThemeChoice { System, Light, Dark };

QColor ColorFor(Role role, Theme theme);

/// What the system's own palette looks like. Asked before the first ApplyTheme.
Theme SystemTheme();
/// Gives the application the palette of a choice and returns which theme that is.
Theme ApplyTheme(QApplication& application, ThemeChoice choice);

}  // namespace photrak
