// What stands around the diagrams: results of the last run, the log, the history.
#pragma once

#include <QDockWidget>
#include <QIcon>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "workbench/workbench.h"

class QLabel;
class QListWidget;
class QPlainTextEdit;
class QTimer;

namespace photrak {

/// A picture of every plot of the last run of the diagram in front; a double click opens it.
class ResultsDock : public QDockWidget {
  public:
    ResultsDock(Workbench& workbench, QWidget* parent);
    ~ResultsDock() override { ++*round_; }  // pictures that come later find nobody
    void Show(const DiagramView* view);
    /// The files are whole now: draws them anew. True if there are any.
    bool RunEnded();

  private:
    void Fill();
    void Draw(int row, const std::string& path);

    Workbench& workbench_;
    QListWidget* list_ = nullptr;
    QLabel* readings_ = nullptr;
    std::string directory_;
    std::vector<std::string> files_;
    std::shared_ptr<int> round_ =
        std::make_shared<int>(0);  // of drawing: late pictures are dropped
};

/// The end of log.txt in the folder of the diagram in front. A double click on a line that names a
/// block selects it.
class LogDock : public QDockWidget {
  public:
    explicit LogDock(QWidget* parent);
    void Follow(const std::string& directory);
    void SetSelect(std::function<void(const std::string&)> select) { select_ = std::move(select); }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void Read();

    QPlainTextEdit* text_ = nullptr;
    QTimer* timer_ = nullptr;
    std::string directory_;
    qint64 shown_ = -1;  // size and time of what is shown
    qint64 time_ = 0;
    std::function<void(const std::string&)> select_;
};

/// The steps of the diagram in front; a click goes to one.
class HistoryDock : public QDockWidget {
  public:
    explicit HistoryDock(QWidget* parent);
    void Show(const History* history);
    void SetGoTo(std::function<void(std::size_t)> goTo) { goTo_ = std::move(goTo); }

  private:
    QListWidget* list_ = nullptr;
    std::function<void(std::size_t)> goTo_;
};

/// Goes back or forward through the history of the diagram in front to the state after a step.
void GoToStep(Workbench& workbench, std::size_t step);
/// Selects the first block that a text names, the longest name first. Nothing without one.
void SelectByName(Workbench& workbench, const std::string& text);

}  // namespace photrak
