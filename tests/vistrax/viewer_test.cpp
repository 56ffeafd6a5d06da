// The viewer's window as a user meets it: opening, zoom, cursors, legend, overlay, keys, names.
#include <QAccessible>
#include <QClipboard>
#include <QMenu>
#include <QMimeData>
#include <QStatusBar>
#include <set>

#include "qt/accessible_marks.h"
#include "vistrax/viewer_commands.h"
#include "vistrax/window_fixture.h"

namespace photrak {
namespace {

TEST_F(ViewerTest, OpensAndPaintsAFile) {
    PlotWidget& widget = Open(WritePlot("ramp", 1e-3, 1e-5));
    EXPECT_NE(window_.windowTitle().indexOf(QStringLiteral("ramp")), -1);
    EXPECT_TRUE(widget.Banner().isHidden());
    const Marks& marks = widget.Display().ShownMarks();
    ASSERT_NE(FindMark(marks, "axis:x"), nullptr);
    EXPECT_EQ(FindMark(marks, "axis:x")->name, "Time (ns)");
    // The middle of the pane lies on the curve, the ground beside it is paper.
    const QImage image = widget.Display().grab().toImage();
    const double scale = image.devicePixelRatio();
    const auto color = [&](QPoint p) { return image.pixelColor(p * scale); };
    const Color paper = ColorOf(Role::Paper, Theme::Light);
    EXPECT_EQ(color(At(widget, 0.47, 0.9)), QColor(paper.red, paper.green, paper.blue));
    bool hit = false;
    const double y = widget.Pane().Layout().Map(false).At(50e-9, 1.5e-3).y;
    for (int off = -2; off <= 2; ++off) {
        const QColor found = color({At(widget, 0.5, 0).x(), static_cast<int>(y) + off});
        hit |= found.blue() > found.red() + 60;
    }
    EXPECT_TRUE(hit) << "the first curve is blue";
    EXPECT_EQ(image.size(), widget.Display().size() * scale);
}

TEST_F(ViewerTest, ZoomsAndStepsBackByMouseAndKeys) {
    PlotWidget& widget = Open(WritePlot("ramp", 1e-3, 1e-5));
    const ValueRange all = Range(widget);
    const QPoint at = At(widget, 0.25, 0.5);
    Wheel(widget, at, 3);
    EXPECT_NEAR(Range(widget).Span(), all.Span() * std::pow(0.8, 3), 1e-15);
    EXPECT_NEAR(Range(widget).least + 0.25 * Range(widget).Span(), 25e-9, 0.3e-9);
    Key(widget, Qt::Key_Backspace);
    EXPECT_EQ(Range(widget), all);
    Drag(widget, At(widget, 0.2, 0.2), At(widget, 0.6, 0.8));
    EXPECT_NEAR(Range(widget).least, 20e-9, 0.3e-9);
    EXPECT_NEAR(Range(widget).greatest, 60e-9, 0.3e-9);
    Settle(widget);
    Drag(widget, At(widget, 0.5, 0.5), At(widget, 0.75, 0.5), Qt::MiddleButton);
    EXPECT_NEAR(Range(widget).least, 10e-9, 0.5e-9);
    Key(widget, Qt::Key_Home);
    EXPECT_EQ(Range(widget), all);
    Key(widget, Qt::Key_Plus);
    EXPECT_NEAR(Range(widget).Span(), 0.8 * all.Span(), 1e-15);
    Key(widget, Qt::Key_L);
    EXPECT_EQ(widget.Open().view.ScaleOf(AxisId::Y).Kind(), ScaleKind::Logarithmic);
    EXPECT_TRUE(window_.Actions().At("logarithmic").isChecked());
    Key(widget, Qt::Key_D);  // decibels have no logarithm
    EXPECT_EQ(widget.Open().view.ScaleOf(AxisId::Y).Kind(), ScaleKind::Linear);
    EXPECT_EQ(widget.Pane().Shown().spec.yLabel, "Power (dBm)");
}

TEST_F(ViewerTest, CursorsReadAndCopyValues) {
    PlotWidget& widget = Open(WritePlot("ramp", 1e-3, 1e-5));
    QTest::mouseClick(&widget.Display(), Qt::LeftButton, {}, At(widget, 0.2, 0.5));
    QTest::mouseClick(&widget.Display(), Qt::LeftButton, Qt::ControlModifier, At(widget, 0.7, 0.5));
    Key(widget, Qt::Key_Right);  // the one touched last
    ASSERT_TRUE(widget.Open().cursors.x[0] && widget.Open().cursors.x[1]);
    EXPECT_NEAR(*widget.Open().cursors.x[0], 20e-9, 1e-18);
    EXPECT_NEAR(*widget.Open().cursors.x[1], 71e-9, 1e-18);
    Key(widget, Qt::Key_C, Qt::ControlModifier);
    const QString copied = QApplication::clipboard()->text();
    EXPECT_NE(copied.indexOf(QStringLiteral("51 ns")), -1) << copied.toStdString();
    EXPECT_NE(copied.indexOf(QStringLiteral("19.6078 MHz")), -1) << copied.toStdString();
    EXPECT_NE(copied.indexOf(QStringLiteral("510 \u00B5W")), -1) << copied.toStdString();
    const auto* table = widget.TheReadout().findChild<QTableWidget*>();
    ASSERT_EQ(table->rowCount(), 2);
    EXPECT_EQ(table->item(1, 1)->text(), QStringLiteral("1.2 mW"));
}

TEST_F(ViewerTest, LaysOnePlotOverAnother) {
    const QString first = WritePlot("one", 1e-3, 1e-5), second = WritePlot("two", 3e-3, 0);
    dir_.Write("other.sig", "1 2\n2 3\n");
    const QString other =
        ToQString(dir_.Write("other.pcs", "/xl\"Wavelength (m)\"\n/yl\"Power (W)\"\nother.sig\n"));
    PlotWidget& lower = Open(first);
    Open(second);
    Open(other);
    window_.OpenFiles({first}, {});  // brings the open one to the front
    ASSERT_EQ(window_.Current(), &lower);
    ASSERT_EQ(window_.Session().Count(), 3u);
    window_.ToggleOverlay(second);
    ASSERT_EQ(lower.Pane().Shown().curves.size(), 2u);
    EXPECT_GT(Range(lower, AxisId::Y).greatest, 3e-3);
    window_.ToggleOverlay(other);
    EXPECT_EQ(lower.Pane().Shown().curves.size(), 2u);
    EXPECT_NE(window_.statusBar()->currentMessage().indexOf(QStringLiteral("Wavelength")), -1);
    // The upper plot is rewritten, then closed: the lower one follows.
    WriteData("two.sig", 5e-3, 0, 101);
    EXPECT_TRUE(WaitFor([&] { return Range(lower, AxisId::Y).greatest > 5e-3; }));
    window_.OpenFiles({second}, {});
    window_.Do("close");
    EXPECT_EQ(lower.Pane().Shown().curves.size(), 1u);

    window_.Do("tile");
    window_.Do("other-side");
    window_.Do("tile");
    while (window_.Current()) window_.Do("close");
    window_.Do("fit");
    EXPECT_EQ(window_.Session().Count(), 0u);
}

TEST_F(ViewerTest, ListsThePlotsOfAScan) {
    QStringList paths;
    for (int i = 0; i < 10; ++i)
        paths.append(WritePlot("turn" + std::to_string(i), 1e-3 * i, 0, 3));
    window_.OpenFiles(paths, {});
    auto* list = window_.findChild<QListWidget*>();
    ASSERT_EQ(list->count(), 10);
    EXPECT_FALSE(window_.findChild<QDockWidget*>()->isHidden()) << "tabs alone are too many";
    EXPECT_EQ(list->currentRow(), 9);
    Q_EMIT list->itemClicked(list->item(3));
    EXPECT_EQ(window_.Current(), window_.Find(paths[3]));
    Key(*window_.Current(), Qt::Key_PageDown);
    EXPECT_EQ(window_.Current(), window_.Find(paths[4]));
    ASSERT_TRUE(WaitFor([&] { return window_.Current()->Pane().HasPlot(); }));
    EXPECT_EQ(list->currentRow(), 4);
    // The list has its own arrows and letters.
    const ViewState before = window_.Current()->Open().view.Now();
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_L);
    EXPECT_EQ(list->currentRow(), 5);
    EXPECT_EQ(window_.Current()->Open().view.Now(), before);
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(window_.Current(), window_.Find(paths[5]));
    window_.Do("close");
    EXPECT_EQ(list->count(), 9);
}

TEST_F(ViewerTest, TakesDroppedFilesAndRemembersThem) {
    const QString path = WritePlot("a & b", 1e-3, 0);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path), QUrl(QStringLiteral("https://example.org/x.pcs"))});
    QDragEnterEvent enter({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window_, &enter);
    ASSERT_TRUE(enter.isAccepted());
    QDropEvent drop({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window_, &drop);
    ASSERT_NE(window_.Find(path), nullptr);
    EXPECT_EQ(window_.Session().Count(), 1u);
    EXPECT_EQ(window_.Group(0).tabText(0), QStringLiteral("a && b.pcs"));
    const QList<QAction*> recent = window_.Actions().Menu("&Recent").actions();
    ASSERT_FALSE(recent.isEmpty());
    window_.Do("close");
    recent[0]->trigger();
    EXPECT_NE(window_.Find(path), nullptr);
}

TEST_F(ViewerTest, EveryActionHasAKeyOfItsOwnATipAndAMenu) {
    std::set<QString> keys, ids;
    for (const ActionRow& row : ViewerActionRows()) {
        if (row.text.empty()) continue;
        SCOPED_TRACE(std::string(row.id));
        EXPECT_FALSE(row.tip.empty());
        EXPECT_TRUE(ids.insert(ToQString(row.id)).second);
        const QList<QKeySequence> own = KeysOf(row);
        EXPECT_FALSE(own.isEmpty());
        for (const QKeySequence& key : own) {
            EXPECT_FALSE(key.isEmpty());
            EXPECT_TRUE(keys.insert(key.toString()).second) << key.toString().toStdString();
        }
        EXPECT_TRUE(
            window_.Actions().Menu(row.menu).actions().contains(&window_.Actions().At(row.id)));
    }
}

/// All accessible items below one, with those that a user acts on and that have no name.
void FindNameless(QAccessibleInterface* item, QStringList& nameless, int depth = 0) {
    if (!item || depth > 12 || item->state().invisible) return;
    static const std::set<QAccessible::Role> acting{
        QAccessible::Button, QAccessible::CheckBox, QAccessible::Table, QAccessible::Canvas,
        QAccessible::Slider, QAccessible::PageTab,  QAccessible::Chart, QAccessible::MenuItem};
    if (acting.count(item->role()) && item->text(QAccessible::Name).isEmpty())
        nameless.append(
            QStringLiteral("role %1 in %2")
                .arg(item->role())
                .arg(item->object() ? QString::fromLatin1(item->object()->metaObject()->className())
                                    : QString()));
    for (int i = 0; i < item->childCount(); ++i) FindNameless(item->child(i), nameless, depth + 1);
}

TEST_F(ViewerTest, ScreenReadersFindMarksAndNames) {
    PlotWidget& widget = Open(WritePlot("ramp", 1e-3, 1e-5));
    QStringList nameless;
    FindNameless(QAccessible::queryAccessibleInterface(&window_), nameless);
    EXPECT_TRUE(nameless.isEmpty()) << nameless.join(QStringLiteral(", ")).toStdString();

    QAccessibleInterface* display = QAccessible::queryAccessibleInterface(&widget.Display());
    ASSERT_NE(display, nullptr);
    EXPECT_NE(display->text(QAccessible::Name).indexOf(QStringLiteral("ramp")), -1);
    QAccessibleInterface* row = nullptr;
    for (int i = 0; i < display->childCount(); ++i) {
        if (display->child(i)->role() == QAccessible::CheckBox) row = display->child(i);
    }
    ASSERT_NE(row, nullptr) << "the row of the legend";
    EXPECT_TRUE(row->state().checked);
    const QPoint middle = row->rect().center();
    EXPECT_EQ(display->childAt(middle.x(), middle.y()), row);
    row->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(widget.Open().view.IsHidden(widget.Pane().Shown().curves[0]));
}

}  // namespace
}  // namespace photrak
