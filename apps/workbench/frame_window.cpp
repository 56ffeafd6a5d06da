// Menus, keys and bars come from the tables of the workbench. What a window alone can do (tiling,
// printing, leaving) is a small table of its own here.
#include "workbench/frame_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QInputDialog>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMimeData>
#include <QScreen>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolBar>
#include <algorithm>

#include "base/log.h"
#include "base/text.h"
#include "platform/host.h"
#include "qt/text_measure_qt.h"
#include "workbench/diagram_window.h"
#include "workbench/docks.h"
#include "workbench/file_commands.h"
#include "workbench/find_dock.h"
#include "workbench/help_window.h"
#include "workbench/look.h"
#include "workbench/printing.h"
#include "workbench/recovery.h"
#include "workbench/run_pane.h"
#include "workbench/shortcuts.h"
#include "workbench/start_page.h"

namespace photrak {
namespace {

constexpr int paletteWidth = 122, pollInterval = 100, keepInterval = 2000;  // ms

std::string NameOf(const Command& command) {
    return Concat(command.menu, " ", command.entry);
}

bool IsTopology(const QUrl& url) {
    return url.isLocalFile() && url.toLocalFile().endsWith(QStringLiteral(".top"));
}

}  // namespace

FrameWindow::FrameWindow(Workbench& workbench, WindowDesktop& desktop)
    : workbench_(workbench), desktop_(desktop) {
    setObjectName(QStringLiteral("Frame"));
    setWindowTitle(QStringLiteral("Photrak"));
    setAcceptDrops(true);
    area_ = new QMdiArea(this);
    area_->setAccessibleName(QStringLiteral("Diagrams"));
    area_->setBackground(palette().brush(QPalette::Dark));
    start_ = new StartPage(workbench, {[this](std::string_view name) { RunCommand(name); },
                                       [this](const QString& file) { OpenFiles({file}); },
                                       [this](const QString& file) { OpenCopy(file); }});
    pages_ = new QStackedWidget(this);
    pages_->addWidget(start_);
    pages_->addWidget(area_);
    setCentralWidget(pages_);
    BuildMenus();
    BuildOwnEntries();
    BuildBars();
    BuildDocks();
    BuildStatus();
    PlaceFrame();
    if (const QByteArray docks = memory_.Docks(); !docks.isEmpty()) restoreState(docks);
    desktop_.SetReveal([this](const Component& component) {
        if (DiagramWindow* front = FrontWindow()) {
            front->ScrollTo(component);
            front->Refresh();
        }
    });
    desktop_.SetHelp([this](std::int32_t topic) {
        if (!help_) help_ = new HelpWindow(ToQString(workbench_.installDirectory + "help"), this);
        help_->ShowTopic(topic);
    });
    connect(area_, &QMdiArea::subWindowActivated, this, &FrameWindow::Activated);
    connect(&poll_, &QTimer::timeout, this, &FrameWindow::Poll);
    connect(&keep_, &QTimer::timeout, this, [this] { KeepPendingCopies(workbench_); });
    poll_.start(pollInterval);
    keep_.start(keepInterval);
    Sync();
}

FrameWindow::~FrameWindow() {
    // What the parts still say while they go is nobody's business.
    disconnect(area_, nullptr, this, nullptr);
    for (auto& [view, child] : children_) child.frame->removeEventFilter(this);
    for (auto& [view, child] : children_) child.canvas->Detach();
    for (Dialog& dialog : dialogs_) dialog.window->Detach();
}

QAction* FrameWindow::AddCommand(QMenu& menu, const Command& command) {
    const std::string name = NameOf(command);
    QAction* action = menu.addAction(ToQString(command.entry));
    action->setObjectName(QString::fromStdString(name));
    QList<QKeySequence> keys;
    for (const std::string_view key : command.keys) keys << QKeySequence(ToQString(key));
    action->setShortcuts(keys);
    action->setToolTip(ToQString(InterpretPercent(command.status)));
    connect(action, &QAction::triggered, this, [this, name] { RunCommand(name); });
    connect(action, &QAction::hovered, this, [this, name] {
        Highlight(workbench_, name);
        SyncStatus();
    });
    return action;
}

void FrameWindow::BuildMenus() {
    std::map<std::string_view, QMenu*> menus;
    for (const Command& command : Commands()) {
        QMenu*& menu = menus[command.menu];
        if (!menu) {
            menu = menuBar()->addMenu(QStringLiteral("&") + ToQString(command.menu));
            menu->setToolTipsVisible(false);
            connect(menu, &QMenu::aboutToHide, this, [this] {
                Highlight(workbench_, {});
                SyncStatus();
            });
        }
        if (command.entry.empty()) {
            menu->addSeparator();
        } else {
            AddCommand(*menu, command);
        }
    }
}

QMenu& FrameWindow::MenuOf(const QString& title) {
    for (QAction* entry : menuBar()->actions()) {
        if (entry->menu() && entry->text() == title) return *entry->menu();
    }
    return *menuBar()->addMenu(title);
}

/// What a window alone has, after the entries of the table.
void FrameWindow::BuildOwnEntries() {
    QMenu& file = MenuOf(QStringLiteral("&File"));
    file.addSeparator();
    recent_ = file.addMenu(QStringLiteral("Recent"));
    recent_->setObjectName(QStringLiteral("Recent"));
    const auto add = [this](const QString& menu, const QString& entry, auto act) {
        QAction* action = MenuOf(menu).addAction(entry);
        action->setObjectName(entry);
        connect(action, &QAction::triggered, this, act);
    };
    add(QStringLiteral("&Options"), QStringLiteral("Window Preferences"),
        [this] { EditOwnPreferences(); });
    add(QStringLiteral("&Help"), QStringLiteral("Keyboard Shortcuts"),
        [this] { ShowShortcuts(this); });
}

void FrameWindow::SyncRecent() {
    bool changed = recent_->isEmpty() && recent_->isEnabled();
    for (auto& [view, child] : children_) {
        if (view->IsUntitled() || child.fileName == view->fileName) continue;
        child.fileName = view->fileName;
        memory_.AddRecent(ToQString(view->fileName));
        changed = true;
    }
    if (!changed) return;
    recent_->clear();
    const QStringList files = memory_.Recent();
    for (const QString& file : files) {
        QAction* action =
            recent_->addAction(QString(file).replace(QLatin1Char('&'), QStringLiteral("&&")));
        connect(action, &QAction::triggered, this, [this, file] { OpenFiles({file}); });
    }
    recent_->setEnabled(!files.isEmpty());
    start_->ShowRecent(files);
}

void FrameWindow::EditOwnPreferences() {
    WindowPreferences preferences = memory_.Preferences();
    if (!EditPreferences(preferences, this)) return;
    memory_.Store(preferences);
    SetShownTheme(ApplyTheme(*qApp, preferences.theme));
    SetShownLinePatterns(preferences.linePatterns);
    if (!workbench_.run.active) ApplyToEnvironment(preferences);
    Sync();
}

void FrameWindow::BuildBars() {
    const auto pushed = [this](const BarButton& button) {
        Act([&] {
            if (button.command.empty() || !DoInWindow(button.command)) {
                PushBarButton(workbench_, button);
            }
        });
        if (DiagramWindow* front = FrontWindow(); front && button.latches) front->setFocus();
    };
    const auto icon = [this](const BarButton& button) { return ButtonIcon(workbench_, button); };
    tools_ = new ButtonBar(
        QStringLiteral("Tool bar"), [this] { return ToolBar(workbench_); }, icon, pushed);
    QToolBar* top = addToolBar(QStringLiteral("Tools"));
    top->setObjectName(QStringLiteral("Tools"));
    top->setMovable(false);
    top->addWidget(tools_);
    palette_ = new ButtonBar(
        QStringLiteral("Palette"), [this] { return Palette(workbench_); }, icon, pushed);
    palette_->setMinimumWidth(paletteWidth);
    auto* left = new QToolBar(QStringLiteral("Palette"));
    left->setObjectName(QStringLiteral("PaletteBar"));
    left->setMovable(false);
    left->addWidget(palette_);
    addToolBar(Qt::LeftToolBarArea, left);
}

void FrameWindow::BuildDocks() {
    const auto add = [this](QDockWidget* dock, Qt::DockWidgetArea place) {
        // A dock of its own on the screen would have a place to remember.
        dock->setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable);
        addDockWidget(place, dock);
        menuBar()->findChild<QMenu*>(QStringLiteral("Docks"))->addAction(dock->toggleViewAction());
    };
    QMenu& menu = MenuOf(QStringLiteral("&Window"));
    menu.addSeparator();
    QMenu* docks = menu.addMenu(QStringLiteral("Docks"));
    docks->setObjectName(QStringLiteral("Docks"));
    docks->setParent(menuBar(), docks->windowFlags());
    results_ = new ResultsDock(workbench_, this);
    log_ = new LogDock(this);
    log_->SetSelect(
        [this](const std::string& name) { Act([&] { SelectByName(workbench_, name); }); });
    history_ = new HistoryDock(this);
    history_->SetGoTo([this](std::size_t step) { Act([&] { GoToStep(workbench_, step); }); });
    add(results_, Qt::RightDockWidgetArea);
    add(log_, Qt::BottomDockWidgetArea);
    find_ = new FindDock(workbench_, this);
    find_->SetSelect([this](Component& component) {
        Act([&] {
            DiagramView& view = *workbench_.Active();
            view.ClearSelection();
            view.Select(&component);
            desktop_.Reveal(view, component);
        });
    });
    add(history_, Qt::RightDockWidgetArea);
    add(find_, Qt::RightDockWidgetArea);
    tabifyDockWidget(results_, history_);
    tabifyDockWidget(history_, find_);
    find_->hide();
    results_->raise();
    log_->hide();
}

void FrameWindow::BuildStatus() {
    const auto label = [this](const QString& name, int width) {
        auto* made = new QLabel(this);
        made->setTextFormat(Qt::PlainText);
        made->setObjectName(name);
        made->setAccessibleName(name);
        made->setMinimumWidth(width);
        return made;
    };
    message_ = label(QStringLiteral("Message"), 0);
    cell_ = label(QStringLiteral("Cell"), 90);
    zoom_ = label(QStringLiteral("Zoom"), 90);
    run_ = new RunPane([this] { RunCommand("Run Stop Simulation"); }, this);
    statusBar()->addWidget(message_, 1);
    for (QWidget* pane : {static_cast<QWidget*>(cell_), static_cast<QWidget*>(zoom_),
                          static_cast<QWidget*>(run_)}) {
        statusBar()->addPermanentWidget(pane);
    }
}

void FrameWindow::PlaceFrame() {
    const FramePlace& place = workbench_.frame;
    const QRect asked(place.left, place.top, place.width, place.height);
    const QScreen* screen = QGuiApplication::screenAt(asked.center());
    if (!screen) screen = QGuiApplication::primaryScreen();
    const QRect seen = screen->availableGeometry();
    const QSize size = asked.size().expandedTo({400, 300}).boundedTo(seen.size());
    resize(size);
    move(std::clamp(asked.x(), seen.left(), std::max(seen.left(), seen.right() - size.width())),
         std::clamp(asked.y(), seen.top(), std::max(seen.top(), seen.bottom() - size.height())));
    // A frame of the usual size has no room for docks until there is something in them.
    constexpr int leastForDocks = 900;
    if (size.width() < leastForDocks) {
        results_->hide();
        history_->hide();
    }
}

void FrameWindow::StoreFrame() {
    const QRect frame = isMaximized() ? normalGeometry() : geometry();
    workbench_.frame = {frame.x(), frame.y(), frame.width(), frame.height()};
    memory_.StoreDocks(saveState());
    KeepFrame(workbench_, QGuiApplication::platformName() != QStringLiteral("wayland"));
}

void FrameWindow::Act(const std::function<void()>& action) {
    action();
    Sync();
}

bool FrameWindow::DoInWindow(std::string_view name) {
    struct Row {
        std::string_view name;
        void (*act)(FrameWindow& window);
    };
    static constexpr Row rows[] = {
        {"File Exit", [](FrameWindow& window) { window.close(); }},
        {"File Print",
         [](FrameWindow& window) {
             if (DiagramView* view = window.workbench_.Active()) {
                 PrintDiagram(window.workbench_, *view, window);
             }
         }},
        {"File Printer Setup", [](FrameWindow& window) { SetUpPrinter(window); }},
        {"Window Tile", [](FrameWindow& window) { window.area_->tileSubWindows(); }},
        {"Window Cascade", [](FrameWindow& window) { window.area_->cascadeSubWindows(); }},
        {"Window Arrange Icons", [](FrameWindow& window) { window.area_->cascadeSubWindows(); }},
    };
    const auto row = std::ranges::find(rows, name, &Row::name);
    if (row == std::end(rows)) return false;
    if (DiagramView* view = workbench_.Active()) view->DropDrag();
    row->act(*this);
    return true;
}

void FrameWindow::RunCommand(std::string_view name) {
    Highlight(workbench_, {});
    Act([&] {
        if (DoInWindow(name)) return;
        if (const Command* command = FindCommand(name)) photrak::RunCommand(workbench_, *command);
        if (name != "View Full") return;
        Sync();
        if (DiagramWindow* front = FrontWindow()) front->ScrollToStart();
    });
}

void FrameWindow::OpenFiles(const QStringList& files) {
    Act([&] {
        for (const QString& file : files)
            OpenDiagram(workbench_, file.toStdString(), OpenAgain::NewView);
    });
}

void FrameWindow::Begin(const QStringList& files) {
    OpenFiles(files);
    // Without a diagram the start page says it.
    const std::size_t copies = files.isEmpty() ? 0 : RecoveryCopies(workbench_).size();
    if (copies == 0) return;
    workbench_.pane = Concat(copies, copies == 1 ? " diagram was" : " diagrams were",
                             " not saved: File, Recover opens ", copies == 1 ? "it" : "them");
    SyncStatus();
}

void FrameWindow::OpenCopy(const QString& example) {
    Act([&] { OpenExample(workbench_, example.toStdString()); });
}

DiagramWindow* FrameWindow::AddWindow(DiagramView& view) {
    DiagramWindow::Calls calls;
    calls.changed = [this] { Sync(); };
    calls.pointedAt = [this](const QString& text) { cell_->setText(text); };
    calls.typed = [this](const QString& letter) { return PickModel(letter); };
    auto* canvas = new DiagramWindow(workbench_, view, calls);
    auto* child = area_->addSubWindow(canvas);
    child->setAttribute(Qt::WA_DeleteOnClose, false);
    child->installEventFilter(this);
    child->resize(640, 460);
    children_[&view] = {child, canvas};
    const bool alone = children_.size() == 1;
    alone ? child->showMaximized() : child->show();
    return canvas;
}

void FrameWindow::SyncViews() {
    for (auto it = children_.begin(); it != children_.end();) {
        const bool lives = std::ranges::any_of(
            workbench_.views, [&](const auto& view) { return view.get() == it->first; });
        if (lives) {
            ++it;
            continue;
        }
        it->second.canvas->Detach();
        area_->removeSubWindow(it->second.canvas);
        it->second.canvas->deleteLater();
        it->second.frame->deleteLater();
        it = children_.erase(it);
    }
    for (const auto& view : workbench_.views) {
        if (!children_.contains(view.get())) AddWindow(*view);
    }
    QWidget* page = children_.empty() ? static_cast<QWidget*>(start_) : area_;
    if (page == start_ && pages_->currentWidget() != start_) start_->Offer();
    pages_->setCurrentWidget(page);
}

void FrameWindow::SyncFront() {
    for (auto& [view, child] : children_) {
        const QString title =
            ToQString(view->title) + (view->Differs() ? QStringLiteral(" *") : QString());
        if (child.frame->windowTitle() != title) child.frame->setWindowTitle(title);
        child.canvas->Refresh();
    }
    DiagramView* front = workbench_.Active();
    if (!front) return;
    QMdiSubWindow* window = children_.at(front).frame;
    if (area_->activeSubWindow() != window) area_->setActiveSubWindow(window);
}

void FrameWindow::SyncForms() {
    const auto isOpen = [this](const Dialog& dialog) {
        return std::ranges::any_of(workbench_.forms,
                                   [&](const auto& form) { return form.get() == dialog.form; });
    };
    for (Dialog& dialog : dialogs_) {
        if (isOpen(dialog)) continue;
        dialog.window->Detach();
        dialog.window->hide();
        dialog.window->deleteLater();
        dialog.window = nullptr;
    }
    std::erase_if(dialogs_, [](const Dialog& dialog) { return !dialog.window; });
    for (const auto& form : workbench_.forms) {
        const auto known = std::ranges::find(dialogs_, form.get(), &Dialog::form);
        if (known != dialogs_.end()) {
            known->window->Refresh();
            continue;
        }
        QWidget* over = dialogs_.empty() ? static_cast<QWidget*>(this) : dialogs_.back().window;
        const auto push = [this](const std::string& label) {
            Act([&] { workbench_.Push(label); });
        };
        auto* window = new FormDialog(*form, push, over);
        dialogs_.push_back({form.get(), window});
        window->open();
    }
}

void FrameWindow::SyncStatus() {
    const bool highlights = !workbench_.highlighted.empty();
    message_->setText(ToQString(highlights ? workbench_.highlighted : workbench_.pane));
    for (QLabel* pane : {cell_, zoom_}) pane->setVisible(!highlights);
    run_->setVisible(!highlights);
    zoom_->setText(QStringLiteral("zoom %1%").arg(qRound(100.0 * workbench_.scale.zoom)));
    run_->Show(workbench_);
}

void FrameWindow::Sync() {
    if (syncing_) return;
    syncing_ = true;
    SyncViews();
    SyncFront();
    SyncForms();
    SyncStatus();
    tools_->Refresh();
    palette_->Refresh();
    const DiagramView* front = workbench_.Active();
    history_->Show(front ? &front->history : nullptr);
    log_->Follow(front ? front->directory : std::string());
    results_->Show(front);
    find_->Follow();
    SyncRecent();
    syncing_ = false;
}

void FrameWindow::Poll() {
    if (desktop_.Asks()) return;
    const bool running = workbench_.run.active;
    if (running) PollRun(workbench_);
    if (running || wasRunning_) Sync();
    // A short run may begin and end between two looks.
    const bool ended = (running || wasRunning_) && !workbench_.run.active;
    if (ended && results_->RunEnded()) results_->show();
    wasRunning_ = workbench_.run.active;
}

DiagramWindow* FrameWindow::FrontWindow() const {
    const auto found = children_.find(workbench_.Active());
    return found == children_.end() ? nullptr : found->second.canvas;
}

void FrameWindow::Activated(QMdiSubWindow* window) {
    if (syncing_ || !window) return;
    for (auto& [view, child] : children_) {
        if (child.frame != window || view == workbench_.Active()) continue;
        Act([&, front = view] { Activate(workbench_, *front); });
        return;
    }
}

void FrameWindow::CloseView(DiagramView& view) {
    Act([&] {
        Activate(workbench_, view);
        CloseDiagram(workbench_, view);
    });
}

bool FrameWindow::PickModel(const QString& letter) {
    QStringList names;
    std::map<QString, BarButton> buttons;
    for (const BarButton& button : Palette(workbench_)) {
        const QString name = QString::fromStdString(button.tooltip);
        if (button.modelIndex == 0 || !button.isOn) continue;
        names << name;
        buttons[name] = button;
    }
    names.sort(Qt::CaseInsensitive);
    const auto first = std::ranges::find_if(
        names, [&](const QString& name) { return name.startsWith(letter, Qt::CaseInsensitive); });
    const int start = first == names.end() ? 0 : static_cast<int>(first - names.begin());
    bool chosen = false;
    const QString name =
        QInputDialog::getItem(this, QStringLiteral("Place a Block"), QStringLiteral("Model:"),
                              names, start, false, &chosen);
    if (chosen) Act([&] { PushBarButton(workbench_, buttons.at(name)); });
    return true;
}

bool FrameWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::Close) return QMainWindow::eventFilter(watched, event);
    for (const auto& [view, child] : children_) {
        if (child.frame != watched) continue;
        event->ignore();  // the frame takes the window away when the diagram has closed
        CloseView(*view);
        return true;
    }
    return QMainWindow::eventFilter(watched, event);
}

void FrameWindow::closeEvent(QCloseEvent* event) {
    const bool closed = CloseAll(workbench_);
    Sync();
    if (!closed) {
        event->ignore();
        return;
    }
    StoreFrame();
    event->accept();
}

void FrameWindow::dragEnterEvent(QDragEnterEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    if (std::ranges::any_of(urls, IsTopology)) event->acceptProposedAction();
}

void FrameWindow::dropEvent(QDropEvent* event) {
    QStringList files;
    for (const QUrl& url : event->mimeData()->urls()) {
        if (IsTopology(url)) files << url.toLocalFile();
    }
    OpenFiles(files);
}

void FrameWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::PaletteChange || !tools_) return;
    tools_->RefreshIcons();
    palette_->RefreshIcons();
}

}  // namespace photrak
