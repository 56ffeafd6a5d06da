#include "vistrax/viewer_commands.h"

#include <QApplication>
#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>
#include <QStatusBar>
#include <QTextBrowser>
#include <QTime>
#include <QVBoxLayout>
#include <cmath>

#include "drawing/number_text.h"
#include "plotting/axis_label.h"
#include "plotting/decibels.h"
#include "qt/text_measure_qt.h"
#include "vistrax/viewer_file_commands.h"
#include "vistrax/viewer_window.h"

namespace photrak {

/// The functions behind the rows. Those on a plot are called only when there is one.
struct ViewerCommands {
    using Window = ViewerWindow;

    // What the pane does by itself.
    static void Fit(Window& w) {
        w.current_->Open().view.Fit();
        w.current_->Update(Change::View);
    }
    static void Back(Window& w) {
        if (w.current_->Open().view.Back()) w.current_->Update(Change::View);
    }
    static void Forward(Window& w) {
        if (w.current_->Open().view.Forward()) w.current_->Update(Change::View);
    }
    template <int Percent>
    static void Zoom(Window& w) {
        w.current_->Update(w.current_->Pane().Zoom(Percent / 100.0));
    }
    template <int X, int Y>
    static void Move(Window& w) {
        w.current_->Update(w.current_->Pane().Move({0.1 * X, 0.1 * Y}));
    }
    template <AxisId Axis>
    static void FitAxis(Window& w) {
        w.current_->Update(w.current_->Pane().FitAxis(Axis));
        if (Axis == AxisId::Y) w.current_->Update(w.current_->Pane().FitAxis(AxisId::Second));
    }
    template <AxisId Axis>
    static void Lock(Window& w) {
        PlotView& view = w.current_->Open().view;
        view.Lock(Axis, !view.IsLocked(Axis));
        if (Axis == AxisId::Y) view.Lock(AxisId::Second, view.IsLocked(Axis));
        w.UpdateActions();
    }
    template <ScaleKind Kind>
    static void SetScale(Window& w) {
        if (Kind != ScaleKind::Linear && w.current_->Open().decibels) Decibels(w);
        const bool has = w.current_->Open().view.ScaleOf(AxisId::Y).Kind() == Kind;
        const ScaleKind without = Kind == ScaleKind::Logarithmic
                                      ? ScaleKind::Linear
                                      : AskedScale(w.current_->Pane().Shown(), AxisId::Y);
        w.current_->Update(w.current_->Pane().SetScale(has ? without : Kind));
    }
    static void Decibels(Window& w) {
        const auto index = w.session_.Find(w.current_->Open().path);
        w.session_.SetDecibels(*index, !w.session_.At(*index).decibels);
        w.ShowAgain(w.current_->Open().path);
    }

    static void ShowAll(Window& w) {
        w.current_->Open().view.ShowAllCurves();
        w.current_->Update(Change::View);
    }
    /// Rows of the legend for which there may be no room beside the plot.
    static void ListCurves(Window& w) {
        constexpr std::size_t most = 500;
        QMenu menu;
        const Plot& plot = w.current_->Pane().Shown();
        for (std::size_t i = 0; i < std::min(most, plot.curves.size()); ++i) {
            const Curve& curve = plot.curves[i];
            QAction* action = menu.addAction(
                ToQString(curve.name).replace(QLatin1Char('&'), QStringLiteral("&&")));
            action->setCheckable(true);
            action->setChecked(!w.current_->Open().view.IsHidden(curve));
            QObject::connect(action, &QAction::triggered, &w, [&w, i] {
                w.current_->Open().view.Toggle(w.current_->Pane().Shown().curves[i]);
                w.current_->Update(Change::View);
            });
        }
        menu.exec(w.current_->Display().mapToGlobal(QPoint(40, 40)));
    }
    static void Hold(Window& w) {
        const std::string& path = w.current_->Open().path;
        w.session_.Hold(*w.session_.Find(path),
                        QTime::currentTime().toString(QStringLiteral("HH:mm:ss")).toStdString());
        w.ShowAgain(path);
    }
    static void DropHeld(Window& w) {
        const std::string& path = w.current_->Open().path;
        w.session_.DropHeld(*w.session_.Find(path));
        w.ShowAgain(path);
    }
    static void Overlay(Window& w) {
        QMenu menu;
        const auto& overlaid = w.current_->Open().overlaid;
        for (std::size_t i = 0; i < w.session_.Count(); ++i) {
            const OpenPlot& open = w.session_.At(i);
            if (&open == &w.current_->Open()) continue;
            const QString path = ToQString(open.path);
            QAction* action = menu.addAction(
                ToQString(open.plot.name).replace(QLatin1Char('&'), QStringLiteral("&&")));
            action->setCheckable(true);
            action->setChecked(std::find(overlaid.begin(), overlaid.end(), open.path) !=
                               overlaid.end());
            QObject::connect(action, &QAction::triggered, &w,
                             [&w, path] { w.ToggleOverlay(path); });
        }
        if (menu.isEmpty())
            menu.addAction(Window::tr("Open another plot first"))->setEnabled(false);
        menu.exec(w.current_->Display().mapToGlobal(QPoint(40, 40)));
    }
    static void Density(Window& w) {
        PlotPane& pane = w.current_->Pane();
        const bool density = StyleOf(pane.Shown(), pane.eyeStyle) == EyeStyle::Density;
        pane.eyeStyle = density ? EyeStyle::Traces : EyeStyle::Density;
        w.current_->Update(Change::View);
    }
    template <int Percent>
    static void Saturate(Window& w) {
        double& saturation = w.current_->Pane().saturation;
        saturation = std::clamp(saturation * Percent / 100.0, 0.1, 1000.0);
        w.current_->Update(Change::View);
    }

    static void ToggleCursors(Window& w) { w.current_->Update(w.current_->Pane().ToggleCursors()); }
    static void LevelCursors(Window& w) {
        w.current_->Update(w.current_->Pane().ToggleLevelCursors());
    }
    static void Snap(Window& w) {
        bool& snaps = w.current_->Open().cursors.snaps;
        snaps = !snaps;
        w.current_->Update(Change::Overlay);
    }
    template <int Steps>
    static void Step(Window& w) {
        w.current_->Update(w.current_->Pane().Step(Steps));
    }
    template <int Direction>
    static void StepPeak(Window& w) {
        w.current_->Update(w.current_->Pane().StepPeak(Direction));
    }
    static void Escape(Window& w) { w.current_->Update(w.current_->Pane().Escape()); }
    template <CursorId Id>
    static void GoTo(Window& w) {
        PlotPane& pane = w.current_->Pane();
        const AxisLabel label = SplitLabel(pane.Shown().spec.xLabel);
        const int exponent = pane.Layout().exponents[0];
        const double unit = PowerOfTen(exponent);
        const std::optional<double> at = pane.Open().cursors.X(Id);
        bool chosen = false;
        const double value = QInputDialog::getDouble(
            &w, Id == CursorId::A ? Window::tr("Cursor A") : Window::tr("Cursor B"),
            ToQString(AxisText(label, exponent)), at.value_or(0.0) / unit, -1e15, 1e15, 9, &chosen);
        if (!chosen) return;
        pane.Open().cursors.X(Id) =
            CursorPlace(pane.Shown(), pane.Open().view, pane.Open().cursors, value * unit);
        w.current_->Update(Change::Overlay);
    }

    template <int By>
    static void NextTab(Window& w) {
        QTabWidget* group = w.GroupOf(w.current_);
        const int count = group->count();
        group->setCurrentIndex((group->currentIndex() + By + count) % count);
    }
    static void Tile(Window& w) {
        PlotWidget* widget = w.current_;
        QTabWidget* from = w.GroupOf(widget);
        QTabWidget* to = w.groups_[from == w.groups_[0] ? 1 : 0];
        if (from == w.groups_[0] && from->count() < 2) return;  // the left half stays in use
        w.MoveTab(widget, to);
        w.CloseGap();
        const int half = w.splitter_->width() / 2;
        w.splitter_->setSizes({half, half});
        w.Activate(widget);
    }
    static void OtherSide(Window& w) {
        QTabWidget* other = w.groups_[w.GroupOf(w.current_) == w.groups_[0] ? 1 : 0];
        if (auto* widget = static_cast<PlotWidget*>(other->currentWidget())) w.Activate(widget);
    }
    static void TogglePlots(Window& w) { w.plotsDock_->setVisible(w.plotsDock_->isHidden()); }
    static void ToggleReadout(Window& w) {
        ReadoutView& readout = w.current_->TheReadout();
        readout.setVisible(readout.isHidden());
    }
    static void FullScreen(Window& w) { w.setWindowState(w.windowState() ^ Qt::WindowFullScreen); }
    template <ThemeChoice Choice>
    static void SetTheme(Window& w) {
        w.ApplyChoice(Choice);
        w.RememberChoice();
    }

    static void Keys(Window& w);
    static void About(Window& w) {
        QMessageBox::about(&w, Window::tr("About vistrax"),
                           QStringLiteral("<b>vistrax %1</b><br>Shows the results of Photrak.")
                               .arg(QStringLiteral(PHOTRAK_VERSION)));
    }
};

namespace {

using C = ViewerCommands;
constexpr bool plain = false, checkable = true;

struct CommandRow {
    ActionRow row;
    bool needsPlot;
    void (*run)(ViewerWindow& window);
};

// clang-format off
constexpr ActionRow Line(std::string_view menu) { return {{}, menu, {}, {}, {}, false}; }
constexpr CommandRow commands[] = {
    {{"open", "&File", "&Open…", "Ctrl+O", "Opens plot command files", plain}, false, FileCommands::Open},
    {{"reload", "&File", "&Reload", "F5; Ctrl+R", "Reads the files again, keeping the view", plain}, true, FileCommands::Reload},
    {Line("&File"), false, nullptr},
    {{"export", "&File", "&Export…", "Ctrl+E; Ctrl+S", "Writes what is seen as SVG, PDF, PNG or CSV", plain}, true, FileCommands::Export},
    {{"print", "&File", "&Print…", "Ctrl+P", "Prints what is seen on one page", plain}, true, FileCommands::Print},
    {Line("&File"), false, nullptr},
    {{"close", "&File", "&Close", "Ctrl+W", "Closes this plot", plain}, true, FileCommands::Close},
    {{"quit", "&File", "&Quit", "Ctrl+Q", "Closes the window", plain}, false, FileCommands::Quit},
    {Line("&Recent"), false, nullptr},
    {{"copy-values", "&Edit", "Copy &Values", "Ctrl+C", "Copies the table of cursors and values", plain}, true, FileCommands::CopyValues},
    {{"copy-picture", "&Edit", "Copy &Picture", "Ctrl+Shift+C", "Copies the plot as an image", plain}, true, FileCommands::CopyPicture},
    {{"fit", "&View", "Show &All", "Home; F", "Shows all of the plot; double click does too", plain}, true, C::Fit},
    {{"fit-x", "&View", "Show All of x", "Shift+X", "Shows the whole x axis", plain}, true, C::FitAxis<AxisId::X>},
    {{"fit-y", "&View", "Show All of y", "Shift+Y", "Shows the whole y axes", plain}, true, C::FitAxis<AxisId::Y>},
    {{"zoom-in", "&View", "Zoom &In", "+; =; Ctrl++; Ctrl+=", "Shows less, larger; the wheel zooms at the pointer", plain}, true, C::Zoom<80>},
    {{"zoom-out", "&View", "Zoom &Out", "-; Ctrl+-", "Shows more, smaller", plain}, true, C::Zoom<125>},
    {{"back", "&View", "Step &Back", "Backspace; Alt+Left", "Goes back to what was seen before", plain}, true, C::Back},
    {{"forward", "&View", "Step &Forward", "Shift+Backspace; Alt+Right", "Undoes a step back", plain}, true, C::Forward},
    {{"left", "&View", "Move Left", "Shift+Left", "Shows what lies further left", plain}, true, C::Move<1, 0>},
    {{"right", "&View", "Move Right", "Shift+Right", "Shows what lies further right", plain}, true, C::Move<-1, 0>},
    {{"up", "&View", "Move Up", "Up; Shift+Up", "Shows what lies further up", plain}, true, C::Move<0, -1>},
    {{"down", "&View", "Move Down", "Down; Shift+Down", "Shows what lies further down", plain}, true, C::Move<0, 1>},
    {Line("&View"), false, nullptr},
    {{"lock-x", "&View", "Lock &x", "X", "Keeps the x axis as it is", checkable}, true, C::Lock<AxisId::X>},
    {{"lock-y", "&View", "Lock &y", "Y", "Keeps the y axes as they are", checkable}, true, C::Lock<AxisId::Y>},
    {Line("&View"), false, nullptr},
    {{"theme-system", "&View", "Colors of the System", "Ctrl+Alt+0", "Light or dark as the system has it", checkable}, false, C::SetTheme<ThemeChoice::System>},
    {{"theme-light", "&View", "Light", "Ctrl+Alt+1", "Dark curves on light ground", checkable}, false, C::SetTheme<ThemeChoice::Light>},
    {{"theme-dark", "&View", "Dark", "Ctrl+Alt+2", "Light curves on dark ground", checkable}, false, C::SetTheme<ThemeChoice::Dark>},
    {{"logarithmic", "&Axes", "&Logarithmic", "L", "Decades on the y axis", checkable}, true, C::SetScale<ScaleKind::Logarithmic>},
    {{"q-axis", "&Axes", "&Q (Probability)", "Q", "Error rates at their Q: Gaussian noise is a straight line", checkable}, true, C::SetScale<ScaleKind::Probability>},
    {{"decibels", "&Axes", "&Decibels", "D", "Levels in dB, or dB as levels", checkable}, true, C::Decibels},
    {{"show-curves", "&Curves", "Show &All", "A", "Shows hidden curves again", plain}, true, C::ShowAll},
    {{"curves", "&Curves", "&List…", "B", "Lists all curves to hide and show them", plain}, true, C::ListCurves},
    {{"overlay", "&Curves", "&Overlay…", "O", "Lays the curves of another open plot over these axes", plain}, true, C::Overlay},
    {{"hold", "&Curves", "&Hold", "H", "Keeps the present curves, faint, under those of later runs", plain}, true, C::Hold},
    {{"drop-held", "&Curves", "&Drop Held", "Shift+H", "Forgets the curves of earlier runs", plain}, true, C::DropHeld},
    {Line("&Curves"), false, nullptr},
    {{"density", "&Curves", "Eye as D&ensity", "E", "Draws an eye as density or as traces", checkable}, true, C::Density},
    {{"more-rare", "&Curves", "&More of Rare Traces", ".", "Raises what few traces pass", plain}, true, C::Saturate<200>},
    {{"less-rare", "&Curves", "&Less of Rare Traces", ",", "Lowers what few traces pass", plain}, true, C::Saturate<50>},
    {{"cursors", "C&ursors", "&Cursors A and B", "C", "Shows or removes both cursors; click puts A, Ctrl+click B", checkable}, true, C::ToggleCursors},
    {{"level-cursors", "C&ursors", "&Level Cursors", "V", "Two cursors on the y axis", checkable}, true, C::LevelCursors},
    {{"snap", "C&ursors", "&Snap to Samples", "S", "Cursors stand on samples, or between them", checkable}, true, C::Snap},
    {{"step-left", "C&ursors", "One Sample Left", "Left", "Moves the cursor touched last", plain}, true, C::Step<-1>},
    {{"step-right", "C&ursors", "One Sample Right", "Right", "Moves the cursor touched last", plain}, true, C::Step<1>},
    {{"leap-left", "C&ursors", "Ten Samples Left", "Ctrl+Left", "Moves the cursor touched last", plain}, true, C::Step<-10>},
    {{"leap-right", "C&ursors", "Ten Samples Right", "Ctrl+Right", "Moves the cursor touched last", plain}, true, C::Step<10>},
    {{"next-peak", "C&ursors", "Next &Peak", "P", "Moves the cursor touched last to the next peak on the right", plain}, true, C::StepPeak<1>},
    {{"previous-peak", "C&ursors", "Previous Peak", "Shift+P", "Moves the cursor touched last to the next peak on the left", plain}, true, C::StepPeak<-1>},
    {{"go-a", "C&ursors", "Put &A at…", "G", "Puts cursor A at a place to type in", plain}, true, C::GoTo<CursorId::A>},
    {{"go-b", "C&ursors", "Put &B at…", "Shift+G", "Puts cursor B at a place to type in", plain}, true, C::GoTo<CursorId::B>},
    {{"escape", "C&ursors", "&Remove", "Esc", "Drops a drag, or takes all cursors off", plain}, true, C::Escape},
    {{"next", "&Window", "&Next Plot", "Ctrl+PgDown; PgDown", "Goes to the plot on the right", plain}, true, C::NextTab<1>},
    {{"previous", "&Window", "&Previous Plot", "Ctrl+PgUp; PgUp", "Goes to the plot on the left", plain}, true, C::NextTab<-1>},
    {{"tile", "&Window", "&Other Half", "Ctrl+T", "Moves this plot to the other half of the window", plain}, true, C::Tile},
    {{"other-side", "&Window", "Go to Other &Half", "F6", "Goes to the plot in the other half", plain}, true, C::OtherSide},
    {{"plots", "&Window", "&List of Plots", "F3", "Shows or removes the list of open plots", plain}, false, C::TogglePlots},
    {{"readout", "&Window", "&Readout", "F4", "Shows or removes the table below the plot", plain}, true, C::ToggleReadout},
    {{"full-screen", "&Window", "&Full Screen", "F11", "Fills the screen", plain}, false, C::FullScreen},
    {{"keys", "&Help", "&Keys", "F1", "Lists all keys and gestures", plain}, false, C::Keys},
    {{"about", "&Help", "&About", "Shift+F1", "Name and version", plain}, false, C::About},
};
// clang-format on

const char gestures[] =
    "<h3>Pointer</h3><table cellpadding=\"3\">"
    "<tr><td>Wheel</td><td>zooms at the pointer; with Shift x alone, with Alt y alone; over an "
    "axis that axis</td></tr>"
    "<tr><td>Drag</td><td>zooms to a box; a flat box zooms one axis; on an axis it moves "
    "it</td></tr>"
    "<tr><td>Middle drag, Shift+drag</td><td>moves the plot</td></tr>"
    "<tr><td>Click</td><td>puts cursor A, with Ctrl cursor B; a drag on a cursor moves it</td></tr>"
    "<tr><td>Double click</td><td>shows all; on an axis all of that axis</td></tr>"
    "<tr><td>Legend</td><td>a click hides a curve, a double click shows it alone</td></tr>"
    "</table><h3>Keys</h3>";

}  // namespace

std::span<const ActionRow> ViewerActionRows() {
    static const std::vector<ActionRow> rows = [] {
        std::vector<ActionRow> list;
        for (const CommandRow& command : commands) list.push_back(command.row);
        return list;
    }();
    return rows;
}

void ViewerCommands::Keys(Window& w) {
    auto* dialog = new QDialog(&w);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(Window::tr("Keys"));
    auto* text = new QTextBrowser;
    text->setAccessibleName(Window::tr("Keys and gestures"));
    text->setHtml(QString::fromUtf8(gestures) + KeyListHtml(ViewerActionRows()));
    auto* layout = new QVBoxLayout(dialog);
    layout->addWidget(text);
    dialog->resize(640, 640);
    dialog->show();
}

namespace {

/// Moving about and closing work on a plot that is not read yet, all else wants its curves.
bool IsPossible(const CommandRow& command, const PlotWidget* current) {
    if (!command.needsPlot) return true;
    if (!current) return false;
    const ActionRow& row = command.row;
    return current->Pane().HasPlot() || row.menu == "&Window" || row.id == "close" ||
           row.id == "reload";
}

}  // namespace

void ViewerWindow::Do(std::string_view id) {
    for (const CommandRow& command : commands) {
        if (command.row.id != id || !command.run) continue;
        if (IsPossible(command, current_)) command.run(*this);
        UpdateActions();
        return;
    }
}

void ViewerWindow::UpdateActions() {
    const bool ready = current_ && current_->Pane().HasPlot();
    for (const CommandRow& command : commands) {
        if (command.run) actions_.At(command.row.id).setEnabled(IsPossible(command, current_));
    }
    const auto check = [this](std::string_view id, bool on) { actions_.At(id).setChecked(on); };
    check("theme-system", choice_ == ThemeChoice::System);
    check("theme-light", choice_ == ThemeChoice::Light);
    check("theme-dark", choice_ == ThemeChoice::Dark);
    if (!ready) return;
    const OpenPlot& open = current_->Open();
    const PlotPane& pane = current_->Pane();
    const Plot& plot = pane.Shown();
    const ScaleKind kind = open.view.ScaleOf(AxisId::Y).Kind();
    check("lock-x", open.view.IsLocked(AxisId::X));
    check("lock-y", open.view.IsLocked(AxisId::Y));
    check("logarithmic", kind == ScaleKind::Logarithmic);
    check("q-axis", kind == ScaleKind::Probability);
    check("decibels", open.decibels);
    check("density", StyleOf(plot, pane.eyeStyle) == EyeStyle::Density);
    check("cursors", open.cursors.x[0] || open.cursors.x[1]);
    check("level-cursors", open.cursors.y[0] || open.cursors.y[1]);
    check("snap", open.cursors.snaps);
    const bool eye = plot.kind == PlotKind::Eye;
    for (const std::string_view id : {"density", "more-rare", "less-rare"})
        actions_.At(id).setEnabled(eye);
    actions_.At("decibels").setEnabled(TurnsToDecibels(plot));
    actions_.At("overlay").setEnabled(!eye);
    actions_.At("drop-held").setEnabled(!open.held.empty());
}

void ViewerWindow::ToggleOverlay(const QString& other) {
    const auto index = session_.Find(current_->Open().path);
    const auto laid = session_.Find(other.toStdString());
    if (!index || !laid) return;
    std::string error;
    if (session_.ToggleOverlay(*index, *laid, error)) {
        ShowAgain(current_->Open().path);
    } else {
        statusBar()->showMessage(ToQString(error), 8000);
    }
}

}  // namespace photrak
