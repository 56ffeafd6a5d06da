// What the frame shows while no diagram is open: new, open, recover, and the examples as drawings.
#pragma once

#include <QWidget>
#include <functional>
#include <string_view>

#include "workbench/workbench.h"

class QBoxLayout;
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
    /// Files opened last, the latest first; none: nothing is shown of them.
    void ShowRecent(const QStringList& files);

  private:
    void AddTitle(QBoxLayout& layout);
    void AddButtons(QBoxLayout& layout);
    void AddRecent(QBoxLayout& layout);
    void AddExamples(QBoxLayout& layout);
    /// Draws the example of a row, then the next one in a turn of its own: opening a window does
    /// not wait for its pictures.
    void DrawExample(int row);

    Workbench& workbench_;
    Calls calls_;
    QPushButton* recover_ = nullptr;
    QListWidget *examples_ = nullptr, *recent_ = nullptr;
    QWidget* recentPart_ = nullptr;
};

/// Copies an example, with the files of its folder that it needs, into a folder of the user's and
/// opens the copy.
void OpenExample(Workbench& workbench, const std::string& file);

}  // namespace photrak
