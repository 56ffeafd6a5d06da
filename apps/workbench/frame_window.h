// The frame: menus, tool bar, palette, diagrams, docks and status line around the workbench. After
// each event it is brought to what the records say (Sync); it keeps no state of the work itself.
#pragma once

#include <QMainWindow>
#include <QTimer>
#include <map>
#include <memory>
#include <vector>

#include "workbench/form_dialog.h"
#include "workbench/palette_bar.h"
#include "workbench/preferences.h"
#include "workbench/window_desktop.h"

class QLabel;
class QMdiArea;
class QMdiSubWindow;
class QStackedWidget;

namespace photrak {

class DiagramWindow;
class FindDock;
class HelpWindow;
class HistoryDock;
class LogDock;
class ResultsDock;
class RunPane;
class StartPage;
struct DiagramView;

class FrameWindow : public QMainWindow {
  public:
    FrameWindow(Workbench& workbench, WindowDesktop& desktop);
    ~FrameWindow() override;

    /// Opens the files that the program was started with, and says what can be recovered.
    void Begin(const QStringList& files);
    /// Opens files one after the other; the last is in front.
    void OpenFiles(const QStringList& files);
    /// Does what a menu entry does, as "File New".
    void RunCommand(std::string_view name);
    /// Brings everything on the screen to what the workbench says.
    void Sync();

  protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void changeEvent(QEvent* event) override;
    /// A diagram's own close button closes the diagram.
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void BuildMenus();
    void BuildBars();
    void BuildOwnEntries();
    void BuildDocks();
    void BuildStatus();
    void PlaceFrame();
    void StoreFrame();
    QAction* AddCommand(QMenu& menu, const Command& command);
    void Act(const std::function<void()>& action);
    bool DoInWindow(std::string_view name);
    void SyncViews();
    void SyncFront();
    void SyncForms();
    void SyncStatus();
    void Poll();
    DiagramWindow* AddWindow(DiagramView& view);
    DiagramWindow* FrontWindow() const;
    void CloseView(DiagramView& view);
    void Activated(QMdiSubWindow* window);
    bool PickModel(const QString& letter);
    /// Keeps the files of the open diagrams among those opened last, and lists them.
    void SyncRecent();
    void EditOwnPreferences();
    QMenu& MenuOf(const QString& title);
    void OpenCopy(const QString& example);

    struct Child {
        QMdiSubWindow* frame = nullptr;
        DiagramWindow* canvas = nullptr;
        std::string fileName = {};  // as it was last among those opened
    };
    struct Dialog {
        Form* form = nullptr;
        FormDialog* window = nullptr;
    };

    Workbench& workbench_;
    WindowDesktop& desktop_;
    WindowMemory memory_;
    QMenu* recent_ = nullptr;
    QStackedWidget* pages_ = nullptr;
    StartPage* start_ = nullptr;
    QMdiArea* area_ = nullptr;
    ButtonBar *tools_ = nullptr, *palette_ = nullptr;
    ResultsDock* results_ = nullptr;
    LogDock* log_ = nullptr;
    HistoryDock* history_ = nullptr;
    FindDock* find_ = nullptr;
    HelpWindow* help_ = nullptr;
    QLabel *message_ = nullptr, *cell_ = nullptr, *zoom_ = nullptr;
    RunPane* run_ = nullptr;
    std::map<DiagramView*, Child> children_;
    std::vector<Dialog> dialogs_;
    QTimer poll_, keep_;
    bool syncing_ = false, wasRunning_ = false;
};

}  // namespace photrak
