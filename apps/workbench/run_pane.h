// The run in progress at the end of the status line: how far it is, the time taken and left, Stop.
#pragma once

#include <QWidget>
#include <functional>

class QLabel;
class QProgressBar;

namespace photrak {

struct Workbench;

class RunPane : public QWidget {
  public:
    RunPane(const std::function<void()>& stop, QWidget* parent);
    void Show(const Workbench& workbench);

  private:
    QLabel *state_ = nullptr, *text_ = nullptr;
    QProgressBar* bar_ = nullptr;
    QWidget* stop_ = nullptr;
};

}  // namespace photrak
