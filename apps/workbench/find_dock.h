// Blocks of the diagram in front by name, type or parameter, beside it: a row selects its block.
#pragma once

#include <QDockWidget>
#include <functional>
#include <vector>

#include "workbench/workbench.h"

class QLineEdit;
class QListWidget;

namespace photrak {

class FindDock : public QDockWidget {
  public:
    FindDock(Workbench& workbench, QWidget* parent);
    /// Called with a block of the diagram in front.
    void SetSelect(std::function<void(Component&)> select) { select_ = std::move(select); }
    /// The diagram may have changed.
    void Follow();

  private:
    void Choose(int row);

    Workbench& workbench_;
    QLineEdit* words_ = nullptr;
    QListWidget* list_ = nullptr;
    std::vector<std::string> shown_;
    std::function<void(Component&)> select_;
};

}  // namespace photrak
