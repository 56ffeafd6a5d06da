// Every entry of the menus, every key and every button of the window does what the workbench does
// when it is asked without a window. The tables of the workbench are walked; each row is played
// twice from the same state, and the records must be equal afterwards.
#include <QLabel>
#include <QStatusBar>
#include <QTimer>
#include <set>

#include "base/text.h"
#include "kernel/graph.h"
#include "window/frame_fixture.h"
#include "workbench/edit_commands.h"
#include "workbench/file_commands.h"
#include "workbench/view_commands.h"

namespace photrak {
namespace {

std::string Lines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
}

std::string FormText(const Form& form) {
    std::string text = Concat(form.kind, " '", form.title, "' ", form.note, "\n");
    for (const FormField& field : form.fields) text += Concat(field.label, "=", field.text, "\n");
    for (const FormTable& table : form.tables) {
        for (const FormRow& row : table.rows) text += Concat(row.name, "=", row.value, "\n");
    }
    for (const FormList& list : form.lists) text += Lines(list.rows);
    return text;
}

std::string ViewText(const DiagramView& view) {
    std::string text = Concat(view.title, " mode ", static_cast<int>(view.mode), " model ",
                              view.modelIndex, " step ", view.history.Place(), " of ",
                              view.history.Steps(), view.Differs() ? " differs\n" : "\n");
    for (const Component* block : view.selection) text += Concat("selected ", block->name, "\n");
    return text + TextOf(*view.workspace);
}

/// The first line that is not the same; empty: all are.
std::string Difference(const std::string& found, const std::string& expected) {
    const auto [here, there] = std::ranges::mismatch(found, expected);
    if (here == found.end() && there == expected.end()) return {};
    const auto line = [](const std::string& text, auto at) {
        const auto place = static_cast<std::size_t>(at - text.begin());
        const std::size_t start = place == 0 ? 0 : text.rfind('\n', place - 1) + 1;
        return text.substr(start, text.find('\n', place) - start);
    };
    return Concat("'", line(found, here), "' for '", line(expected, there), "'");
}

class WiringTest : public FrameTest {
  protected:
    /// Two diagrams, two blocks deleted and on the clipboard, a zoom to return to; and either two
    /// blocks selected or a step to go forward to.
    void Reset(bool steppedBack) {
        while (!workbench_.forms.empty()) Close(*workbench_.forms.back());
        desktop_.answer = Answer::No;
        CloseAll(workbench_);
        desktop_.answer = Answer::Yes;
        desktop_.boxes.clear();
        desktop_.viewed.clear();
        desktop_.file = PathOf("soliton.top");
        for (const char* name : {"first-bits.top", "nrz-link.top", "soliton.top"}) {
            std::filesystem::copy(SourceDir() + "/examples/" + name, dir_.Path(),
                                  std::filesystem::copy_options::overwrite_existing);
        }
        std::filesystem::remove_all(qgetenv("XDG_STATE_HOME").toStdString() + "/photrak");
        workbench_.clipboard = CreateWorkspace();
        workbench_.unnamedCounter = 0;
        workbench_.scale = {};
        for (const char* name : {"first-bits.top", "nrz-link.top"}) {
            OpenDiagram(workbench_, PathOf(name), OpenAgain::NewView);
        }
        DiagramView& view = *workbench_.Active();
        for (const std::size_t i : {1u, 2u}) view.Select(view.workspace->components.at(i).get());
        EditCopy(workbench_);
        EditDelete(workbench_);
        view.Select(view.workspace->components.at(0).get());
        view.Select(view.workspace->components.at(2).get());
        if (steppedBack) {
            Nudge(workbench_, 0, 3);
            StepBack(workbench_);
        }
        for (const double zoom : {1.5, 0.75}) workbench_.scale.SetZoom(zoom);
        view.lastClick = {900, 450};
        workbench_.pane = "as it was";
        Highlight(workbench_, {});
        frame_->Sync();
        QApplication::setActiveWindow(frame_.get());
        Canvas().setFocus();
    }
    void Close(Form& form) {
        const bool cancels = std::ranges::any_of(
            form.buttons, [](const FormButton& b) { return b.label == "Cancel"; });
        workbench_.Push(cancels ? "Cancel" : "OK");
    }
    /// All that a command may change.
    std::string State() const {
        std::string text =
            Concat("pane ", workbench_.pane, "\nhighlighted ", workbench_.highlighted, "\nzoom ",
                   workbench_.scale.zoom, " ", workbench_.scale.previousZoom, "\n");
        for (const auto& view : workbench_.views) text += ViewText(*view);
        if (const DiagramView* front = workbench_.Active()) text += "front " + front->title + "\n";
        for (const auto& form : workbench_.forms) text += FormText(*form);
        text += "clipboard " + TextOf(*workbench_.clipboard);
        return text + Lines(desktop_.boxes) + Lines(desktop_.viewed);
    }
    /// Plays one row with the window and without, from a state where it does something if there is
    /// one. Whatever came, the window shows it.
    void Compare(const std::string& name, const std::function<void()>& without,
                 const std::function<void()>& with) {
        SCOPED_TRACE(name);
        std::string before, expected;
        bool steppedBack = true;
        do {
            steppedBack = !steppedBack;
            Reset(steppedBack);
            before = State();
            without();
            expected = State();
        } while (expected == before && !steppedBack);
        Reset(steppedBack);
        ASSERT_EQ(Difference(State(), before), "") << "the test starts from one state";
        with();
        EXPECT_EQ(Difference(State(), expected), "");
        if (expected == before) unchanged_.insert(name);
        ExpectShown();
    }
    void ExpectShown() {
        const auto all = frame_->findChildren<FormDialog*>();
        const auto open = std::ranges::count_if(all, [](const auto* d) { return d->isVisible(); });
        EXPECT_EQ(static_cast<std::size_t>(open), workbench_.forms.size());
        EXPECT_EQ(frame_->findChild<QLabel*>(QStringLiteral("Message"))->text().toStdString(),
                  workbench_.pane);
        if (!workbench_.Active()) return;
        EXPECT_TRUE(Canvas().isVisible());
        const std::string title = Canvas().parentWidget()->windowTitle().toStdString();
        EXPECT_TRUE(title.starts_with(workbench_.Active()->title)) << title;
    }
    std::set<std::string> unchanged_;  // rows that leave all records as they were
};

/// Closes boxes and dialogs of the toolkit as they come and notes their kinds.
class ModalCloser {
  public:
    ModalCloser() {
        QObject::connect(&timer_, &QTimer::timeout, [this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (!modal || dynamic_cast<FormDialog*>(modal)) return;
            kinds.emplace_back(modal->metaObject()->className());
            modal->close();
        });
        timer_.start(10);
    }
    std::vector<std::string> kinds;

  private:
    QTimer timer_;
};

/// What only a window does: the commands of the workbench are empty, or end the program.
bool IsOfWindow(const std::string& name) {
    return name.starts_with("Window ") || name.starts_with("File Print") || name == "File Exit";
}

TEST_F(WiringTest, EntriesAndTheirKeysDoWhatTheirCommandsDo) {
    std::size_t entries = 0, keys = 0;
    for (const Command& command : Commands()) {
        const std::string name = Concat(command.menu, " ", command.entry);
        if (command.entry.empty() || IsOfWindow(name)) continue;
        const auto without = [&] { RunCommand(workbench_, command); };
        Compare(name, without, [&] { Trigger(name.c_str()); });
        ++entries;
        for (const std::string_view key : command.keys) {
            const QKeySequence pressed(ToQString(key));
            Compare(Concat(name, " by ", key), without, [&] { Press(pressed); });
            ++keys;
        }
    }
    EXPECT_GE(entries, 30u);
    EXPECT_GE(keys, 13u);
    const std::set<std::string> idle = {"Run Stop Simulation", "Utility Statistics", "View ReDraw"};
    EXPECT_EQ(unchanged_, idle) << "the others must be seen to do something";
}

TEST_F(WiringTest, TheCanvasHasKeysOfItsOwn) {
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"Left", [&] { Nudge(workbench_, -1, 0); }}, {"Right", [&] { Nudge(workbench_, 1, 0); }},
        {"Up", [&] { Nudge(workbench_, 0, -1); }},   {"Down", [&] { Nudge(workbench_, 0, 1); }},
        {"Home", [&] { ViewFit(workbench_); }},      {"Ctrl+0", [&] { ViewNormal(workbench_); }},
        {"Ctrl++", [&] { ViewIn(workbench_); }},     {"Ctrl+-", [&] { ViewOut(workbench_); }},
    };
    for (const auto& [key, without] : rows) {
        Compare(key, without, [&, k = key] { Press(QKeySequence(QString::fromLatin1(k))); });
    }
    EXPECT_TRUE(unchanged_.empty()) << *unchanged_.begin();
}

TEST_F(WiringTest, ButtonsDoWhatTheirRowsDo) {
    const auto walk = [&](const char* bar, const std::vector<BarButton>& rows) {
        auto* widget = frame_->findChild<ButtonBar*>(QString::fromLatin1(bar));
        ASSERT_NE(widget, nullptr);
        const auto buttons =
            widget->findChildren<QToolButton*>(QString(), Qt::FindDirectChildrenOnly);
        ASSERT_EQ(static_cast<std::size_t>(buttons.size()), rows.size());
        for (std::size_t i = 0; i < rows.size(); ++i) {
            QToolButton* button = buttons[static_cast<qsizetype>(i)];
            EXPECT_EQ(button->toolTip().toStdString(), rows[i].tooltip);
            Compare(
                Concat(bar, ": ", rows[i].tooltip), [&] { PushBarButton(workbench_, rows[i]); },
                [&] { QTest::mouseClick(button, Qt::LeftButton); });
            EXPECT_TRUE(!rows[i].latches || !rows[i].isOn || button->isChecked());
        }
    };
    Reset(false);
    walk("Tool bar", ToolBar(workbench_));
    walk("Palette", Palette(workbench_));
    const std::set<std::string> idle = {"Palette: Stop Simulation", "Tool bar: Redraw Topology"};
    EXPECT_EQ(unchanged_, idle);
}

TEST_F(WiringTest, WhatOnlyAWindowDoes) {
    ModalCloser closer;
    Reset(false);
    Trigger("File Print");
    Trigger("File Printer Setup");
    EXPECT_EQ(closer.kinds.size(), 2u);
    const auto windows = frame_->findChildren<QMdiSubWindow*>();
    ASSERT_EQ(windows.size(), 2);
    Trigger("Window Tile");
    EXPECT_FALSE(windows[0]->geometry().intersects(windows[1]->geometry()));
    Trigger("Window Cascade");
    EXPECT_TRUE(windows[0]->geometry().intersects(windows[1]->geometry()));
    Trigger("File Exit");
    EXPECT_FALSE(frame_->isVisible());
    EXPECT_TRUE(workbench_.views.empty());
}

}  // namespace
}  // namespace photrak
