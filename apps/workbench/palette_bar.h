// Palette and tool bar: the buttons of the workbench's tables at their places.
#pragma once

#include <QWidget>
#include <functional>
#include <vector>

#include "workbench/commands.h"

class QToolButton;

namespace photrak {

class ButtonBar : public QWidget {
  public:
    using Table = std::function<std::vector<BarButton>()>;
    using Pushed = std::function<void(const BarButton&)>;
    using IconOf = std::function<QIcon(const BarButton&)>;

    ButtonBar(const QString& name, Table table, IconOf icon, Pushed pushed);

    /// Latches and enables the buttons as the table says now.
    void Refresh();
    /// New pictures, after a change of theme.
    void RefreshIcons();

  private:
    Table table_;
    IconOf icon_;
    Pushed pushed_;
    std::vector<BarButton> buttons_;
    std::vector<QToolButton*> widgets_;
};

}  // namespace photrak
