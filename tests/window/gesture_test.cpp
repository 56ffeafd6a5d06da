// What a hand does beside menus: dropping files, pasting, double clicks, stopping and closing
// during a run; and that no event holds up the window.
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QUrl>

#include "drawing/roles.h"
#include "qt/theme.h"
#include "window/frame_fixture.h"
#include "window/loop_watch.h"
#include "workbench/canvas_geometry.h"
#include "workbench/file_commands.h"
#include "workbench/recovery.h"

namespace photrak {
namespace {

class GestureTest : public FrameTest {
  protected:
    Component& Block(const std::string& name) {
        for (const auto& block : workbench_.Active()->workspace->components) {
            if (block->name == name) return *block;
        }
        throw std::runtime_error("no block " + name);
    }
    QPoint MiddleOf(const Component& block) const {
        const CanvasPoint at = IconAt(block, workbench_.scale);
        return {at.x + 15, at.y + 15};
    }
    void DoubleClick(QPoint at) {
        QTest::mouseClick(Canvas().viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(Canvas().viewport(), Qt::LeftButton, {}, at);
    }
    template <class Widget>
    Widget& Named(const QString& accessibleName) {
        const auto all = frame_->findChildren<Widget*>();
        for (Widget* widget : all) {
            if (widget->accessibleName() == accessibleName) return *widget;
        }
        throw std::runtime_error("no " + accessibleName.toStdString());
    }
    /// Drops addresses where the pointer stands: on the widget or what is behind it. False:
    /// refused.
    static bool DropOn(QWidget* target, const QList<QUrl>& urls) {
        while (target && !target->acceptDrops()) target = target->parentWidget();
        if (!target) return false;
        QMimeData data;
        data.setUrls(urls);
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
        enter.ignore();
        QApplication::sendEvent(target, &enter);
        if (!enter.isAccepted()) return false;
        QDropEvent drop({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(target, &drop);
        return true;
    }
    void StartScan(const char* runs) {
        Push("Perform Parameter Scan");
        FormDialog* dialog = Dialog("scan");
        ASSERT_NE(dialog, nullptr);
        auto* line = dialog->findChild<QLineEdit*>(
            QStringLiteral("STATISTICAL ITERATION: Number of Statistical Runs:"));
        ASSERT_NE(line, nullptr);
        line->selectAll();
        QTest::keyClicks(line, QString::fromLatin1(runs));
        PushIn(*dialog, "OK");
    }
};

TEST_F(GestureTest, DroppedDiagramsOpen) {
    for (const char* name : {"first-bits.top", "soliton.top"}) {
        ASSERT_TRUE(CopyWholeFile(SourceDir() + "/examples/" + name, PathOf(name)));
    }
    ASSERT_TRUE(WriteWholeFile(PathOf("notes.txt"), "no diagram"));
    const auto local = [&](const char* name) {
        return QUrl::fromLocalFile(ToQString(PathOf(name)));
    };
    QWidget* start = frame_->centralWidget();
    EXPECT_FALSE(DropOn(start, {local("notes.txt")}));
    EXPECT_FALSE(DropOn(start, {QUrl(QStringLiteral("http://photrak.example/a.top"))}));
    EXPECT_TRUE(DropOn(start, {local("first-bits.top"), local("notes.txt")}));
    ASSERT_EQ(workbench_.views.size(), 1u);
    EXPECT_TRUE(DropOn(Canvas().viewport(), {local("soliton.top")}));
    ASSERT_EQ(workbench_.views.size(), 2u);
    EXPECT_EQ(workbench_.Active()->fileName, PathOf("soliton.top"));
}

TEST_F(GestureTest, BlocksGoFromOneDiagramToAnother) {
    Open("first-bits.top");
    Click(MiddleOf(Block("Pattern")).x(), MiddleOf(Block("Pattern")).y());
    Press(QKeySequence(QStringLiteral("Ctrl+C")));
    Trigger("File New");
    const DiagramView& view = *workbench_.Active();
    Click(200, 150);
    Press(QKeySequence(QStringLiteral("Ctrl+V")));
    ASSERT_EQ(view.workspace->components.size(), 1u);
    EXPECT_EQ(DrawnAt(*view.workspace->components[0]), workbench_.scale.ToCell({200, 150}));
}

TEST_F(GestureTest, DoubleClicksOpen) {
    // A plot of a block, the inside of a SuperBlock, a change of the history, an example.
    frame_->findChild<QDockWidget*>(QStringLiteral("History"))->show();
    Open("nrz-link.top");
    Block("Sent").plots = {"nrz-sent.pcs"};
    DoubleClick(MiddleOf(Block("Sent")));
    EXPECT_EQ(desktop_.viewed, std::vector<std::string>{"nrz-sent.pcs"});
    Press(QKeySequence(QStringLiteral("Down")));
    ASSERT_EQ(workbench_.Active()->history.Place(), 1u);
    auto& steps = Named<QListWidget>(QStringLiteral("Changes of the diagram"));
    Q_EMIT steps.itemActivated(steps.item(0));
    EXPECT_EQ(workbench_.Active()->history.Place(), 0u);

    for (const char* file : {"five-spans.top", "five-spans.dts"}) {
        ASSERT_TRUE(CopyWholeFile(SourceDir() + "/examples/" + file, PathOf(file)));
    }
    Open("superblock-line.top");
    DoubleClick(MiddleOf(Block("Line")));
    EXPECT_EQ(workbench_.Active()->fileName, PathOf("five-spans.top"));
    EXPECT_TRUE(desktop_.boxes.empty()) << desktop_.boxes.front();

    CloseAll(workbench_);
    frame_->Sync();
    auto& examples = Named<QListWidget>(QStringLiteral("Examples"));
    ASSERT_TRUE(WaitFor([&] { return examples.count() > 10; }));
    const auto found = examples.findItems(QStringLiteral("eye-10g"), Qt::MatchStartsWith);
    ASSERT_EQ(found.size(), 1);
    examples.scrollToItem(found[0]);
    QTest::mouseClick(examples.viewport(), Qt::LeftButton, {},
                      examples.visualItemRect(found[0]).center());
    ASSERT_EQ(workbench_.views.size(), 1u);
    EXPECT_NE(workbench_.Active()->directory, SourceDir() + "/examples") << "a copy opens";
}

TEST_F(GestureTest, ALineOfTheLogSelectsItsBlock) {
    ASSERT_TRUE(WriteWholeFile(PathOf("log.txt"), "Starting\nWARNING: Fiber: too long\n"));
    Open("nrz-link.top");
    auto& text = Named<QPlainTextEdit>(QStringLiteral("Log"));
    text.window()->findChild<QDockWidget*>(QStringLiteral("Log"))->show();
    ASSERT_TRUE(WaitFor([&] { return text.blockCount() >= 2; }));
    const QTextCursor line(text.document()->findBlockByNumber(1));
    QTest::mouseDClick(text.viewport(), Qt::LeftButton, {}, text.cursorRect(line).center());
    ASSERT_EQ(workbench_.Active()->selection.size(), 1u);
    EXPECT_EQ(workbench_.Active()->selection[0]->name, "Fiber");
}

/// What is painted stands where the mouse hits, whatever the ratio of the screen.
TEST_F(GestureTest, ThePictureIsWhereTheMouseHits) {
    Open("nrz-link.top");
    const QImage image = Canvas().viewport()->grab().toImage();
    const double ratio = image.devicePixelRatio();
    EXPECT_EQ(image.width(), qRound(Canvas().viewport()->width() * ratio));
    const QRgb paper = ColorFor(Role::Paper, Theme::Light).rgb();
    const auto inked = [&](QRect area) {
        int count = 0;
        const QRect pixels(qRound(area.x() * ratio), qRound(area.y() * ratio),
                           qRound(area.width() * ratio), qRound(area.height() * ratio));
        for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
            for (int x = pixels.left(); x <= pixels.right(); ++x) {
                if (image.pixel(x, y) != paper) ++count;
            }
        }
        return count / (ratio * ratio);
    };
    for (const auto& block : workbench_.Active()->workspace->components) {
        const CanvasPoint at = IconAt(*block, workbench_.scale);
        EXPECT_GT(inked({at.x, at.y, 30, 30}), 60) << block->name;
        Click(at.x + 25, at.y + 25);
        ASSERT_EQ(workbench_.Active()->selection.size(), 1u) << block->name;
        EXPECT_EQ(workbench_.Active()->selection[0], block.get());
    }
    EXPECT_EQ(inked({300, 350, 60, 40}), 0);
}

/// What was painted before is moved by scrolling and shown under a drag; it must be what a fresh
/// painting gives, and a change must be seen.
TEST_F(GestureTest, KeptPixelsAreThoseOfAFreshPainting) {
    Open("wdm8.top");
    const auto picture = [&] { return Canvas().viewport()->grab().toImage(); };
    const auto fresh = [&] {
        Canvas().Refresh();
        return picture();
    };
    picture();
    for (const QPoint to :
         {QPoint(37, 0), QPoint(37, 120), QPoint(5, 60), QPoint(2000, 60), QPoint()}) {
        Canvas().horizontalScrollBar()->setValue(to.x());
        Canvas().verticalScrollBar()->setValue(to.y());
        const QImage moved = picture();
        EXPECT_TRUE(moved == fresh()) << to.x() << ", " << to.y();
    }
    const QImage before = picture();
    const QPoint from = MiddleOf(Block("Bits1"));
    QTest::mousePress(Canvas().viewport(), Qt::LeftButton, {}, from);
    QMouseEvent move(QEvent::MouseMove, QPointF(from.x(), 300), QPointF(), Qt::NoButton,
                     Qt::LeftButton, {});
    QApplication::sendEvent(Canvas().viewport(), &move);
    const QImage dragged = picture();
    EXPECT_TRUE(dragged == fresh());
    EXPECT_FALSE(dragged == before) << "the block hangs on the pointer";
    QTest::mouseRelease(Canvas().viewport(), Qt::LeftButton, {}, {from.x(), 300});
    Press(QKeySequence(QStringLiteral("Alt+Left")));
    workbench_.Active()->ClearSelection();
    EXPECT_TRUE(fresh() == before);
}

TEST_F(GestureTest, ARunIsStoppedAndNothingClosesBefore) {
    const DiagramView& view = Open("statistical.top");
    StartScan("1000000");
    ASSERT_TRUE(workbench_.run.active);
    EXPECT_EQ(Named<QLabel>(QStringLiteral("Run")).text(), QStringLiteral("Running"));
    const std::string refusal = "Cannot close topology while simulation in process";
    for (const auto& close : {std::function<void()>([&] { Trigger("File Close"); }),
                              {[&] { Trigger("File Exit"); }},
                              {[&] { Canvas().parentWidget()->close(); }},
                              {[&] { frame_->close(); }}}) {
        desktop_.boxes.clear();
        close();
        EXPECT_EQ(desktop_.boxes, std::vector<std::string>{refusal});
        ASSERT_EQ(workbench_.views.size(), 1u);
        EXPECT_TRUE(frame_->isVisible());
    }
    // A block can be selected and looked at while it runs.
    Click(MiddleOf(*view.workspace->components[0]).x(),
          MiddleOf(*view.workspace->components[0]).y());
    EXPECT_EQ(view.selection.size(), 1u);
    // What is done meanwhile is kept as ever: the run's own workspace is not asked.
    for (int i = 0; i < 20; ++i) Press(QKeySequence(QStringLiteral("Down")));
    EXPECT_LT(view.unkept, 20);
    KeepPendingCopies(workbench_);
    EXPECT_EQ(view.unkept, 0);
    std::string copy, reason;
    ASSERT_TRUE(ReadWholeFile(view.recoveryPath, copy, reason)) << reason;
    desktop_.answer = Answer::No;
    Push("Stop Simulation");
    EXPECT_FALSE(workbench_.run.stopAsked);
    desktop_.answer = Answer::Yes;
    Push("Stop Simulation");
    EXPECT_EQ(Named<QLabel>(QStringLiteral("Run")).text(), QStringLiteral("Stopping"));
    ASSERT_TRUE(WaitFor([&] { return !workbench_.run.active; }));
    EXPECT_EQ(Named<QLabel>(QStringLiteral("Message")).text(),
              QStringLiteral("Parameter Scan stopped"));
    EXPECT_TRUE(copy.ends_with("\n" + TextOf(*view.workspace)));
    EXPECT_TRUE(frame_->close());
}

TEST_F(GestureTest, NothingHoldsUpTheWindow) {
    const auto rest = [](int ms = 60) { QTest::qWait(ms); };
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"a new diagram", [&] { Trigger("File New"); }},
        {"a large example", [&] { Open("wdm8.top"); }},
        {"all of it at once", [&] { Trigger("View Full"); }},
        {"its run with pictures of the results",
         [&] {
             Push("Simulate Link");
             PushIn(*Dialog("simulation"), "OK");
             ASSERT_TRUE(WaitFor([&] { return !workbench_.run.active; }));
             rest(600);
         }},
        {"the help and its search",
         [&] {
             desktop_.WindowDesktop::ShowHelp(0);
             rest();
             auto* help = frame_->findChild<QMainWindow*>();
             ASSERT_NE(help, nullptr);
             QTest::keyClicks(help->findChild<QLineEdit*>(), QStringLiteral("dispersion"));
             rest();
             help->close();
         }},
        {"a step back over all blocks",
         [&] {
             Trigger("Edit Select All");
             Trigger("Edit Delete");
             Trigger("Edit Step Back");
         }},
        {"the start page", [&] { Trigger("File Close All"); }},
        {"another window",
         [&] {
             frame_ = std::make_unique<FrameWindow>(workbench_, desktop_);
             frame_->show();
         }},
    };
    for (const auto& [name, act] : rows) {
        LoopWatch watch;
        act();
        rest();
        EXPECT_LT(watch.Longest(), LoopWatch::Limit()) << name;
    }
}

}  // namespace
}  // namespace photrak
