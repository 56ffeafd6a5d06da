// The workbench's window without a display: menus, keys, mouse, dialogs, a run, closing.
#include <QLineEdit>
#include <QListWidget>
#include <QMdiArea>
#include <QMenuBar>
#include <map>
#include <set>

#include "base/text.h"
#include "window/frame_fixture.h"
#include "workbench/look.h"

namespace photrak {
namespace {

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
