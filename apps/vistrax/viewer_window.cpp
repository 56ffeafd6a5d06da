#include "vistrax/viewer_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QStatusBar>
#include <QTabBar>
#include <QToolButton>

#include "qt/text_measure_qt.h"
#include "vistrax/viewer_commands.h"

namespace photrak {
namespace {

constexpr int mostRecent = 12;
const char recentKey[] = "recent", geometryKey[] = "geometry", themeKey[] = "theme";

}  // namespace

ViewerWindow::ViewerWindow(ThemeChoice choice, QWidget* parent)
    : QMainWindow(parent),
      settings_(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("photrak"),
                QStringLiteral("vistrax")),
      choice_(choice),
      directory_(QDir::currentPath()) {
    splitter_ = new QSplitter;
    splitter_->setChildrenCollapsible(false);
    setCentralWidget(splitter_);
    for (QTabWidget*& group : groups_) group = MakeGroup();
    groups_[1]->hide();
    MakePlotsDock();
    actions_.Make(*this, ViewerActionRows(), [this](std::string_view id) { Do(id); });
    setAcceptDrops(true);
    resize(1000, 720);
    restoreGeometry(settings_.value(QLatin1String(geometryKey)).toByteArray());
    if (choice == ThemeChoice::System)
        choice = static_cast<ThemeChoice>(
            std::clamp(settings_.value(QLatin1String(themeKey)).toInt(), 0, 2));
    place_ = new QLabel;
    place_->setTextFormat(Qt::PlainText);
    place_->setAccessibleName(tr("Place of the pointer"));
    statusBar()->addPermanentWidget(place_);
    connect(&loader_, &Loader::Done, this, &ViewerWindow::TakeLoaded);
    connect(&watch_, &FileWatch::Changed, this, &ViewerWindow::Check);
    settle_.setInterval(50);
    connect(&settle_, &QTimer::timeout, this, &ViewerWindow::CheckSettling);
    ApplyChoice(choice);
    FillRecent();
    Retitle();
}

ViewerWindow::~ViewerWindow() {
    // The widgets borrow from the session.
    for (QTabWidget* group : groups_) delete group;
}

QTabWidget* ViewerWindow::MakeGroup() {
    auto* group = new QTabWidget;
    group->setMovable(true);
    group->setDocumentMode(true);
    group->setElideMode(Qt::ElideNone);
    group->tabBar()->setExpanding(false);
    group->setAccessibleName(tr("Open plots"));
    connect(group, &QTabWidget::currentChanged, this, [this, group](int index) {
        if (auto* widget = static_cast<PlotWidget*>(group->widget(index))) {
            current_ = widget;
            widget->Display().setFocus();
        }
        Retitle();
    });
    splitter_->addWidget(group);
    return group;
}

void ViewerWindow::MakePlotsDock() {
    plots_ = new QListWidget;
    plots_->setAccessibleName(tr("Open plots"));
    plots_->setTextElideMode(Qt::ElideMiddle);
    plotsDock_ = new QDockWidget(tr("Plots"));
    plotsDock_->setObjectName(QStringLiteral("plots"));
    plotsDock_->setWidget(plots_);
    plotsDock_->hide();
    addDockWidget(Qt::LeftDockWidgetArea, plotsDock_);
    connect(plots_, &QListWidget::itemClicked, this, [this](const QListWidgetItem* item) {
        if (PlotWidget* widget = Find(item->data(Qt::UserRole).toString())) Activate(widget);
    });
    connect(plots_, &QListWidget::itemActivated, plots_, &QListWidget::itemClicked);
}

void ViewerWindow::FillPlots() {
    constexpr std::size_t readable = 8;
    const bool grew = static_cast<std::size_t>(plots_->count()) < session_.Count();
    plots_->clear();
    for (std::size_t i = 0; i < session_.Count(); ++i) {
        const OpenPlot& open = session_.At(i);
        const QString path = ToQString(open.path);
        auto* item = new QListWidgetItem(QFileInfo(path).fileName(), plots_);
        item->setData(Qt::UserRole, path);
        item->setToolTip(path.toHtmlEscaped());
        if (current_ && &current_->Open() == &open) plots_->setCurrentItem(item);
    }
    if (grew && session_.Count() == readable) plotsDock_->show();
}

PlotWidget* ViewerWindow::Current() const {
    return current_;
}

PlotWidget* ViewerWindow::Find(const QString& path) const {
    for (const QTabWidget* group : groups_) {
        for (int i = 0; i < group->count(); ++i) {
            auto* widget = static_cast<PlotWidget*>(group->widget(i));
            if (ToQString(widget->Open().path) == path) return widget;
        }
    }
    return nullptr;
}

QTabWidget* ViewerWindow::GroupOf(PlotWidget* widget) const {
    return groups_[1]->indexOf(widget) >= 0 ? groups_[1] : groups_[0];
}

void ViewerWindow::Activate(PlotWidget* widget) {
    GroupOf(widget)->setCurrentWidget(widget);
    current_ = widget;
    widget->Display().setFocus();
    Retitle();
}

void ViewerWindow::OpenFiles(const QStringList& files, const QString& directory) {
    for (const QString& file : files)
        OpenOne(QDir::cleanPath(QDir(directory).absoluteFilePath(file)));
}

void ViewerWindow::Welcome(const QStringList& files, const QString& directory) {
    OpenFiles(files, directory);
    if (isMinimized()) showNormal();
    show();
    raise();
    activateWindow();
}

void ViewerWindow::OpenOne(const QString& path) {
    const std::string name = path.toStdString();
    if (PlotWidget* open = Find(path)) {
        Activate(open);
        Check(path);
        return;
    }
    const std::size_t index = session_.OpenFailed(name, {}, {});  // until it is read
    auto* widget = new PlotWidget(session_.At(index), theme_);
    connect(widget, &PlotWidget::Changed, this, [this, widget] {
        if (widget == current_) UpdateActions();
    });
    actions_.AddTo(widget->Display());
    connect(widget, &PlotWidget::Pointed, place_, &QLabel::setText);
    connect(widget, &PlotWidget::ContextMenuWanted, this,
            [this](const QPoint& at) { actions_.Menu("&View").popup(at); });
    QTabWidget* group = current_ ? GroupOf(current_) : groups_[0];
    const int tab = group->addTab(
        widget, QFileInfo(path).fileName().replace(QLatin1Char('&'), QStringLiteral("&&")));
    group->setTabToolTip(tab, path.toHtmlEscaped());
    AddCloseButton(*group, tab, *widget);
    directory_ = QFileInfo(path).absolutePath();
    Activate(widget);
    Remember(path);
    loading_.insert(name);
    loader_.Load(name, {});
}

void ViewerWindow::AddCloseButton(QTabWidget& group, int tab, PlotWidget& widget) {
    auto* button = new QToolButton;
    button->setText(QStringLiteral("\u00D7"));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setToolTip(tr("Closes this plot (Ctrl+W)"));
    button->setAccessibleName(tr("Close %1").arg(group.tabText(tab)));
    connect(button, &QToolButton::clicked, this, [this, shown = &widget] {
        QTabWidget* holder = GroupOf(shown);
        CloseTab(holder, holder->indexOf(shown));
    });
    group.tabBar()->setTabButton(tab, QTabBar::RightSide, button);
}

void ViewerWindow::CloseTab(QTabWidget* group, int index) {
    auto* widget = static_cast<PlotWidget*>(group->widget(index));
    if (!widget) return;
    const std::string path = widget->Open().path;
    if (current_ == widget) current_ = nullptr;
    group->removeTab(index);
    delete widget;
    watch_.Forget(ToQString(path));
    files_.erase(path);
    std::vector<std::string> below;
    for (const std::size_t over : session_.ShownOn(path)) below.push_back(session_.At(over).path);
    if (const auto found = session_.Find(path)) session_.Close(*found);
    for (const std::string& shown : below) ShowAgain(shown);
    CloseGap();
    if (!current_) {
        QTabWidget* other = group->count() > 0 ? group : groups_[0];
        current_ = static_cast<PlotWidget*>(other->currentWidget());
    }
    Retitle();
}

void ViewerWindow::MoveTab(PlotWidget* widget, QTabWidget* to) {
    QTabWidget* from = GroupOf(widget);
    const int index = from->indexOf(widget);
    const QString text = from->tabText(index), tip = from->tabToolTip(index);
    from->removeTab(index);
    to->show();
    const int tab = to->addTab(widget, text);
    to->setTabToolTip(tab, tip);
    AddCloseButton(*to, tab, *widget);
}

/// The left half is never the empty one.
void ViewerWindow::CloseGap() {
    while (groups_[0]->count() == 0 && groups_[1]->count() > 0)
        MoveTab(static_cast<PlotWidget*>(groups_[1]->widget(0)), groups_[0]);
    if (groups_[1]->count() == 0) groups_[1]->hide();
}

void ViewerWindow::Retitle() {
    const QString name = current_ ? ToQString(current_->Name()) : QString();
    setWindowTitle(name.isEmpty() ? QStringLiteral("vistrax")
                                  : name + QStringLiteral(" \u2013 vistrax"));
    FillPlots();
    UpdateActions();
}

void ViewerWindow::Remember(const QString& path) {
    QStringList recent = settings_.value(QLatin1String(recentKey)).toStringList();
    recent.removeAll(path);
    recent.prepend(path);
    settings_.setValue(QLatin1String(recentKey), QStringList(recent.mid(0, mostRecent)));
    FillRecent();
}

void ViewerWindow::FillRecent() {
    QMenu& menu = actions_.Menu("&Recent");
    menu.clear();
    const QStringList recent = settings_.value(QLatin1String(recentKey)).toStringList();
    for (const QString& path : recent) {
        QString text = path;
        QAction* action = menu.addAction(text.replace(QLatin1Char('&'), QStringLiteral("&&")));
        connect(action, &QAction::triggered, this, [this, path] { OpenFiles({path}, {}); });
    }
    menu.setEnabled(!recent.isEmpty());
}

void ViewerWindow::ApplyChoice(ThemeChoice choice) {
    choice_ = choice;
    theme_ = ApplyTheme(*qApp, choice);
    for (const QTabWidget* group : groups_) {
        for (int i = 0; i < group->count(); ++i)
            static_cast<PlotWidget*>(group->widget(i))->SetTheme(theme_);
    }
    UpdateActions();
}

/// What the command line asks for is not remembered, what is chosen in the menu is.
void ViewerWindow::RememberChoice() {
    settings_.setValue(QLatin1String(themeKey), static_cast<int>(choice_));
}

void ViewerWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void ViewerWindow::dropEvent(QDropEvent* event) {
    QStringList files;
    const QList<QUrl> urls = event->mimeData()->urls();
    for (const QUrl& url : urls) {
        if (url.isLocalFile()) files.append(url.toLocalFile());
    }
    OpenFiles(files, {});
    event->acceptProposedAction();
}

void ViewerWindow::closeEvent(QCloseEvent* event) {
    settings_.setValue(QLatin1String(geometryKey), saveGeometry());
    event->accept();
}

}  // namespace photrak
