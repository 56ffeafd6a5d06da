// The window of the viewer: open plots as tabs in one or two groups side by side, menus, recent
// files, and the watch that draws again what is rewritten.
#pragma once

#include <QDockWidget>
#include <QListWidget>
#include <QMainWindow>
#include <QSettings>
#include <QSplitter>
#include <QTabWidget>
#include <QTimer>
#include <map>
#include <set>

#include "qt/actions.h"
#include "qt/file_watch.h"
#include "qt/theme.h"
#include "vistrax/loader.h"
#include "vistrax/plot_widget.h"

namespace photrak {

class ViewerWindow : public QMainWindow {
    Q_OBJECT

  public:
    ViewerWindow(ThemeChoice choice, QWidget* parent = nullptr);
    ~ViewerWindow() override;

    /// Opens or brings to the front; relative paths count from `directory`.
    void OpenFiles(const QStringList& files, const QString& directory);
    /// As a second start asks.
    void Welcome(const QStringList& files, const QString& directory);
    /// Does what the action of this id does.
    void Do(std::string_view id);

    PlotWidget* Current() const;
    PlotWidget* Find(const QString& path) const;
    PlotSession& Session() { return session_; }
    const ActionSet& Actions() const { return actions_; }
    /// Lays the plot of `other` over the current one, or takes it off.
    void ToggleOverlay(const QString& other);
    /// Writes what the current plot shows; the suffix says how.
    bool ExportTo(const QString& path);
    QTabWidget& Group(int number) { return *groups_[number]; }

  Q_SIGNALS:
    void Loaded(const QString& path);

  protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    friend struct FileCommands;
    friend struct ViewerCommands;

    QTabWidget* MakeGroup();
    void OpenOne(const QString& path);
    void MakePlotsDock();
    void AddCloseButton(QTabWidget& group, int tab, PlotWidget& widget);
    void CloseTab(QTabWidget* group, int index);
    void MoveTab(PlotWidget* widget, QTabWidget* to);
    void CloseGap();
    void Retitle();
    /// The list of open plots, which takes over where tabs get too many to read.
    void FillPlots();
    void Remember(const QString& path);
    void FillRecent();
    void UpdateActions();
    void ApplyChoice(ThemeChoice choice);
    void RememberChoice();
    QTabWidget* GroupOf(PlotWidget* widget) const;
    void Activate(PlotWidget* widget);

    // Following files: viewer_reload.cpp.
    void Check(const QString& path);
    void CheckSettling();
    void TakeLoaded(const std::shared_ptr<LoadResult>& result);
    void ShowAgain(const std::string& path);

    PlotSession session_;
    Loader loader_;
    FileWatch watch_;
    QTimer settle_;
    std::map<std::string, std::vector<std::string>> files_;  // data files by plot
    std::set<std::string> loading_;

    QSplitter* splitter_ = nullptr;
    QTabWidget* groups_[2] = {};
    PlotWidget* current_ = nullptr;
    QDockWidget* plotsDock_ = nullptr;
    QListWidget* plots_ = nullptr;
    QLabel* place_ = nullptr;  // values under the pointer
    ActionSet actions_;
    QSettings settings_;
    ThemeChoice choice_;
    Theme theme_ = Theme::Light;
    QString directory_;  // where file dialogs start
};

}  // namespace photrak
