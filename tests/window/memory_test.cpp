// What the window remembers: files opened last, preferences and what they do, keys as a list; and
// how far a run is.
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QProgressBar>
#include <QSpinBox>
#include <QTimer>
#include <cstdlib>

#include "window/frame_fixture.h"
#include "workbench/look.h"
#include "workbench/shortcuts.h"

namespace photrak {
namespace {

using MemoryTest = FrameTest;

/// Fills in the page that opens next and presses a button of it.
template <class Fill>
void AnswerPreferences(Fill fill, bool accept) {
    QTimer::singleShot(0, qApp, [fill, accept] {
        auto* page = dynamic_cast<QDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(page, nullptr);
        fill(*page);
        accept ? page->accept() : page->reject();
    });
}

TEST_F(MemoryTest, FilesOpenedLastComeFirstAndLostOnesGo) {
    auto* menu = frame_->findChild<QMenu*>(QStringLiteral("Recent"));
    auto* list = frame_->findChild<QWidget*>(QStringLiteral("Start"))->findChild<QListWidget*>();
    ASSERT_TRUE(menu && list);
    EXPECT_FALSE(menu->isEnabled());
    Open("first-bits.top");
    Open("gaussian.top");
    Trigger("File New");
    ASSERT_EQ(menu->actions().size(), 2);
    EXPECT_EQ(menu->actions()[0]->text(), ToQString(PathOf("gaussian.top")));
    std::filesystem::remove(PathOf("first-bits.top"));
    EXPECT_EQ(WindowMemory().Recent(), QStringList{ToQString(PathOf("gaussian.top"))});
    menu->actions()[0]->trigger();
    EXPECT_EQ(workbench_.Active()->fileName, PathOf("gaussian.top"));
}

TEST_F(MemoryTest, PreferencesAreKeptAndTakenBack) {
    ::setenv("EDITOR", "mine", 1);
    ::unsetenv("PHOTRAK_THREADS");
    const auto edit = [](int threads, const char* editor) {
        return [threads, editor](QDialog& page) {
            page.findChild<QSpinBox*>()->setValue(threads);
            page.findChild<QLineEdit*>()->setText(QString::fromLatin1(editor));
        };
    };
    AnswerPreferences(edit(3, "theirs"), false);
    frame_->findChild<QAction*>(QStringLiteral("Window Preferences"))->trigger();
    EXPECT_EQ(WindowMemory().Preferences(), WindowPreferences{});
    WindowPreferences asked;
    asked.threads = 3;
    asked.linePatterns = true;
    WindowMemory().Store(asked);
    EXPECT_EQ(WindowMemory().Preferences(), asked);
    ApplyToEnvironment(asked);
    EXPECT_STREQ(std::getenv("PHOTRAK_THREADS"), "3");
    EXPECT_STREQ(std::getenv("EDITOR"), "mine");
    asked.editor = QStringLiteral("theirs");
    ApplyToEnvironment(asked);
    EXPECT_STREQ(std::getenv("EDITOR"), "theirs");
    ApplyToEnvironment({});
    EXPECT_STREQ(std::getenv("EDITOR"), "mine");
    EXPECT_EQ(std::getenv("PHOTRAK_THREADS"), nullptr);
}

TEST_F(MemoryTest, EveryBoundKeyIsInTheList) {
    std::size_t bound = 0;
    for (const Command& command : Commands()) bound += !command.keys.empty();
    const auto rows = ShortcutRows();
    EXPECT_GT(rows.size(), bound);
    EXPECT_TRUE(std::ranges::any_of(
        rows, [](const auto& row) { return row.second == QStringLiteral("Edit Undo"); }));
}

TEST_F(MemoryTest, ARunTellsHowFarItIs) {
    auto* pane = frame_->findChild<QWidget*>(QStringLiteral("RunPane"));
    auto* bar = pane->findChild<QProgressBar*>();
    EXPECT_FALSE(bar->isVisible());
    Open("ber-power-length.top");
    Trigger("Run Scan Variable");
    FormDialog* dialog = Dialog("scan");
    ASSERT_NE(dialog, nullptr);
    PushIn(*dialog, "OK");
    frame_->Sync();
    EXPECT_TRUE(bar->isVisible());
    ASSERT_TRUE(WaitFor([&] { return !workbench_.run.active; }));
    EXPECT_EQ(workbench_.run.share.points, 15);
    EXPECT_EQ(workbench_.run.share.point, 15);
    ASSERT_TRUE(WaitFor([&] { return !bar->isVisible(); }));
    const auto labels = frame_->findChildren<QLabel*>();
    EXPECT_TRUE(std::ranges::any_of(labels, [](const QLabel* label) {
        return label->text().startsWith(QStringLiteral("Tester: BER "));
    }));
}

}  // namespace
}  // namespace photrak
