// What the frame shows while no diagram is open: new, open, recover, and the examples as drawings.
#pragma once

#include <QWidget>
#include <functional>
#include <string_view>

#include "workbench/workbench.h"

class QListWidget;
class QPushButton;

namespace photrak {

class StartPage : public QWidget {
  public:
    struct Calls {
        std::function<void(std::string_view command)> run;
        std::function<void(const QString& file)> open;
        std::function<void(const QString& example)> openExample;
    };
    StartPage(Workbench& workbench, Calls calls);
    /// Says how many diagrams can be recovered.
    void Offer();

  private:
    void AddExamples(QListWidget& list);

    Workbench& workbench_;
    Calls calls_;
    QPushButton* recover_ = nullptr;
};

/// Copies an example, with the files of its folder that it needs, into a folder of the user's and
/// opens the copy.
void OpenExample(Workbench& workbench, const std::string& file);

}  // namespace photrak
