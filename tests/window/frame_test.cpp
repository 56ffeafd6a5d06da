// The workbench's window without a display: menus, keys, mouse, dialogs, a run, closing.
#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QListWidget>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <set>

#include "base/text.h"
#include "models/block_tests.h"
#include "models/dispatch.h"
#include "platform/file_system.h"
#include "qt/text_measure_qt.h"
#include "support/paths.h"
#include "support/temp_dir.h"
#include "workbench/diagram_window.h"
#include "workbench/frame_window.h"
#include "workbench/look.h"

namespace photrak {
namespace {

/// Boxes and file dialogs answer themselves and are written down.
struct QuietDesktop : WindowDesktop {
    void Box(BoxKind, std::string_view, std::string_view text) override {
        boxes.emplace_back(text);
    }
    Answer Query(std::string_view, std::string_view text) override {
        boxes.emplace_back(text);
        return Answer::Yes;
    }
    std::optional<std::string> ChooseFile(const FileRequest&) override { return file; }
    bool StartViewer(const std::string& name, const std::string&) override {
        viewed.push_back(name);
        return true;
    }
    std::vector<std::string> boxes, viewed;
    std::optional<std::string> file;
};

class FrameTest : public testing::Test {
  protected:
    FrameTest() {
        EXPECT_TRUE(StartWorkbench(workbench_));
        frame_ = std::make_unique<FrameWindow>(workbench_, desktop_);
        frame_->resize(1000, 700);
        frame_->show();
    }
    ~FrameTest() override {
        while (workbench_.run.active) QTest::qWait(10);
        frame_.reset();
    }

    std::string PathOf(const std::string& name) const { return dir_.Path() + name; }
    static bool WaitFor(const std::function<bool()>& holds) {
        QElapsedTimer clock;
        clock.start();
        while (!holds()) {
            if (clock.elapsed() > 20'000) return false;
            QTest::qWait(10);
        }
        return true;
    }
    /// Opens a copy of an example.
    DiagramView& Open(const std::string& name) {
        const std::string from = SourceDir() + "/examples/" + name;
        EXPECT_TRUE(CopyWholeFile(from, PathOf(name)));
        frame_->OpenFiles({ToQString(PathOf(name))});
        return *workbench_.Active();
    }
    DiagramWindow& Canvas() {
        const auto all = frame_->findChildren<QMdiSubWindow*>();
        for (QMdiSubWindow* child : all) {
            auto* canvas = dynamic_cast<DiagramWindow*>(child->widget());
            if (canvas && &canvas->View() == workbench_.Active()) return *canvas;
        }
        throw std::runtime_error("no canvas in front");
    }
    void Trigger(const char* name) {
        auto* action = frame_->findChild<QAction*>(QString::fromLatin1(name));
        ASSERT_NE(action, nullptr) << name;
        action->trigger();
    }
    void Push(const char* tip) {
        auto* button = frame_->findChild<QToolButton*>(QString::fromLatin1(tip));
        ASSERT_NE(button, nullptr) << tip;
        button->click();
    }
    void Click(int x, int y, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mouseClick(Canvas().viewport(), button, {}, {x, y});
    }
    void Drag(QPoint from, QPoint to) {
        QWidget* target = Canvas().viewport();
        QTest::mousePress(target, Qt::LeftButton, {}, from);
        for (const QPoint at : {(from + to) / 2, to}) {
            QMouseEvent move(QEvent::MouseMove, at, target->mapToGlobal(at), Qt::NoButton,
                             Qt::LeftButton, {});
            QApplication::sendEvent(target, &move);
        }
        QTest::mouseRelease(target, Qt::LeftButton, {}, to);
    }
    FormDialog* Dialog(const char* kind) {
        return frame_->findChild<FormDialog*>(QString::fromLatin1(kind));
    }
    static void PushIn(FormDialog& dialog, const char* label) {
        auto* button = dialog.findChild<QPushButton*>(QString::fromLatin1(label));
        ASSERT_NE(button, nullptr) << label;
        button->click();
    }

    TempDir dir_;
    QuietDesktop desktop_;
    Workbench workbench_{desktop_,
                         {BuiltInModels(), HasBlockTest, TestByStages},
                         BinaryDir() + "/bin/",
                         std::filesystem::current_path().string()};
    std::unique_ptr<FrameWindow> frame_;
};

TEST_F(FrameTest, EveryCommandIsInAMenuAndNoKeyStandsTwice) {
    std::multiset<QString> keys;
    for (const Command& command : Commands()) {
        if (command.entry.empty()) continue;
        const std::string name = Concat(command.menu, " ", command.entry);
        const auto* action = frame_->findChild<QAction*>(QString::fromStdString(name));
        ASSERT_NE(action, nullptr) << name;
        EXPECT_EQ(action->text().remove(QLatin1Char('&')), ToQString(command.entry));
        EXPECT_EQ(static_cast<std::size_t>(action->shortcuts().size()), command.keys.size())
            << name;
        for (const QKeySequence& key : action->shortcuts()) {
            EXPECT_FALSE(key.isEmpty()) << name;
            keys.insert(key.toString());
        }
    }
    for (const QString& key : keys) EXPECT_EQ(keys.count(key), 1u) << key.toStdString();
    for (const auto* button : frame_->findChildren<QToolButton*>()) {
        if (button->parentWidget() && dynamic_cast<ButtonBar*>(button->parentWidget())) {
            EXPECT_FALSE(button->accessibleName().isEmpty());
            EXPECT_FALSE(button->icon().isNull()) << button->toolTip().toStdString();
        }
    }
}

TEST_F(FrameTest, ALinkIsDrawnByClicksAndDrags) {
    Trigger("File New");
    Push("PRBS Generator");
    Click(100, 100);
    Push("Plot Signal");
    Click(145, 100);
    Push("Connect Mode");
    // Ports stand 3 pixels beside the icons, at half their height.
    Drag({122, 106}, {134, 104});
    DiagramView& view = *workbench_.Active();
    ASSERT_EQ(view.workspace->components.size(), 2u);
    const Component& source = *view.workspace->components.front();
    ASSERT_NE(source.outputs.at(0).node, nullptr);
    EXPECT_EQ(source.outputs[0].node->readers.size(), 1u) << workbench_.pane;
    EXPECT_TRUE(view.Differs());
    EXPECT_TRUE(frame_->findChild<QMdiSubWindow*>()->windowTitle().endsWith(QStringLiteral("*")));
    QTest::keyClick(Canvas().viewport(), Qt::Key_Left, Qt::AltModifier);
    Trigger("Edit Step Back");
    EXPECT_TRUE(source.outputs.empty() || view.history.Place() < view.history.Steps());
}

TEST_F(FrameTest, ADialogShowsItsRecordAndReturnsWhatIsTyped) {
    const DiagramView& view = Open("first-bits.top");
    const CanvasPoint at = IconAt(*view.workspace->components.front(), workbench_.scale);
    Click(at.x + 15, at.y + 15, Qt::RightButton);
    FormDialog* dialog = Dialog("properties");
    ASSERT_NE(dialog, nullptr);
    const FormTable& table = workbench_.forms.back()->tables.front();
    auto* rate = dialog->findChild<QLineEdit*>(QStringLiteral("bitRate, Value"));
    ASSERT_NE(rate, nullptr);
    rate->setFocus();
    rate->selectAll();
    QTest::keyClicks(rate, QStringLiteral("2*nothing"));
    const auto row = std::ranges::find(table.rows, "bitRate", &FormRow::name);
    ASSERT_NE(row, table.rows.end());
    EXPECT_EQ(row->value, "2*nothing");
    EXPECT_FALSE(row->fault.empty());
    EXPECT_FALSE(rate->styleSheet().isEmpty()) << "a fault has a frame";
    PushIn(*dialog, "Cancel");
    EXPECT_TRUE(workbench_.forms.empty());
    QTest::qWait(0);
    EXPECT_EQ(Dialog("properties"), nullptr);
    EXPECT_FALSE(view.Differs());
}

TEST_F(FrameTest, ARunGivesTheFilesOfTheCommandLine) {
    DiagramView& view = Open("nrz-link.top");
    Push("Simulate Link");
    FormDialog* dialog = Dialog("simulation");
    ASSERT_NE(dialog, nullptr);
    PushIn(*dialog, "OK");
    EXPECT_TRUE(workbench_.run.active);
    // While it runs, closing is refused and the diagram stays.
    Trigger("File Close");
    EXPECT_EQ(workbench_.views.size(), 1u);
    ASSERT_TRUE(WaitFor([&] { return !workbench_.run.active; }));
    EXPECT_EQ(workbench_.pane, "Simulation Completed");
    auto* results = frame_->findChild<QListWidget*>();
    for (auto* list : frame_->findChildren<QListWidget*>()) {
        if (list->accessibleName().startsWith(QStringLiteral("Results"))) results = list;
    }
    ASSERT_TRUE(WaitFor([&] { return results->count() == 3; }));
    EXPECT_TRUE(WaitFor([&] { return results->isVisible(); })) << "hidden until there are plots";
    EXPECT_TRUE(WaitFor([&] { return !results->item(0)->icon().isNull(); }));
    Q_EMIT results->itemActivated(results->item(0));
    EXPECT_EQ(desktop_.viewed, std::vector<std::string>{"nrz-arrived.pcs"});

    const std::filesystem::path other = PathOf("other");
    std::filesystem::create_directory(other);
    std::filesystem::copy(PathOf("nrz-link.top"), other);
    const std::string command =
        Concat("'", BinaryDir(), "/bin/photrak' run --quiet '", other.string(), "/nrz-link.top'");
    ASSERT_EQ(std::system(command.c_str()), 0);
    int compared = 0;
    for (const auto& entry : std::filesystem::directory_iterator(other)) {
        const std::string name = entry.path().filename().string();
        if (name == "log.txt") continue;
        std::string ours, theirs, error;
        EXPECT_TRUE(ReadWholeFile(view.directory + "/" + name, ours, error)) << name;
        EXPECT_TRUE(ReadWholeFile(entry.path().string(), theirs, error)) << name;
        EXPECT_TRUE(ours == theirs) << name;
        ++compared;
    }
    EXPECT_GE(compared, 7);
}

TEST_F(FrameTest, ClosingKeepsTheWorkAndDropsOpenFiles) {
    Open("first-bits.top");
    Open("soliton.top");
    EXPECT_EQ(workbench_.views.size(), 2u);
    Trigger("Window Tile");
    auto* area = frame_->findChild<QMdiArea*>();
    ASSERT_EQ(area->subWindowList().size(), 2);
    area->setActiveSubWindow(area->subWindowList().front());
    EXPECT_EQ(workbench_.Active()->fileName, PathOf("first-bits.top"));
    area->subWindowList().front()->close();
    EXPECT_EQ(workbench_.views.size(), 1u);
    EXPECT_TRUE(frame_->close());
    EXPECT_TRUE(workbench_.views.empty());
}

}  // namespace
}  // namespace photrak
