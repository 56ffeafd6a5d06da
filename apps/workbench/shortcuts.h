// The keys of the window, from the tables that bind them.
#pragma once

#include <QString>
#include <utility>
#include <vector>

class QWidget;

namespace photrak {

/// What each key or gesture does, in the order of the menus, then those of the canvas.
std::vector<std::pair<QString, QString>> ShortcutRows();
void ShowShortcuts(QWidget* parent);

}  // namespace photrak
