// Files that change, are broken, come late, and a second start.
#include <QProcess>

#include "qt/single_instance.h"
#include "support/paths.h"
#include "vistrax/window_fixture.h"

namespace photrak {
namespace {

TEST_F(ViewerTest, FollowsRewrittenFilesAndKeepsTheView) {
    PlotWidget& widget = Open(WritePlot("run", 1e-3, 1e-5));
    Drag(widget, At(widget, 0.2, 0.2), At(widget, 0.6, 0.8));
    QTest::mouseClick(&widget.Display(), Qt::LeftButton, {}, At(widget, 0.5, 0.5));
    const ViewState zoomed = widget.Open().view.Now();
    const std::string before = Dump(widget);

    // Half a row: the writer is at work, the old picture stays and says what it waits for.
    dir_.Write("run.sig", "0 0.002\n1e-9 0.00");
    EXPECT_TRUE(WaitFor([&] { return widget.Open().state == ReloadState::Waiting; }));
    EXPECT_TRUE(Dump(widget) == before);
    EXPECT_FALSE(widget.Banner().isHidden());
    EXPECT_NE(widget.Banner().text().indexOf(QStringLiteral("waiting for run.pcs")), -1);

    WriteData("run.sig", 1.2e-3, 1e-5, 101);
    EXPECT_TRUE(WaitFor([&] { return (*widget.Pane().Shown().curves[0].y)[0] == 1.2e-3; }));
    EXPECT_EQ(widget.Open().view.Now(), zoomed);
    EXPECT_TRUE(widget.Banner().isHidden());
    EXPECT_TRUE(widget.Open().cursors.x[0]);
    EXPECT_FALSE(Dump(widget) == before);

    // Replaced by renaming, as careful writers do, and held curves stay beneath.
    window_.Do("hold");
    dir_.Write("new", "0 5\n1e-9 6\n");
    std::filesystem::rename(dir_.Path() + "new", dir_.Path() + "run.sig");
    EXPECT_TRUE(WaitFor([&] {
        return widget.Pane().Shown().curves.size() == 2 &&
               (*widget.Pane().Shown().curves[1].y)[0] == 5.0;
    }));
    EXPECT_TRUE(widget.Pane().Shown().curves[0].held);
}

TEST_F(ViewerTest, SaysWhatIsWrongAndShowsWhatComesLate) {
    struct Row {
        const char *name, *text, *message;
    };
    const Row rows[] = {{"empty.pcs", "", "names no data file"},
                        {"lost.pcs", "nowhere.sig\n", "nowhere.sig"},
                        {"out.pcs", "../../etc/passwd\n", "passwd"},
                        {"noise.pcs", "\x01\xFF\x02 <b>bold</b>\n", "noise.pcs"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        PlotWidget& widget = Open(ToQString(dir_.Write(row.name, row.text)));
        EXPECT_FALSE(widget.Banner().isHidden());
        EXPECT_EQ(widget.Banner().textFormat(), Qt::PlainText);
        EXPECT_NE(widget.Banner().text().indexOf(QLatin1String(row.message)), -1)
            << widget.Banner().text().toStdString();
        EXPECT_FALSE(widget.Picture({400, 300}, TableMeasure()).items.empty()) << "never blank";
        for (const char* id : {"fit", "cursors", "export", "q-axis", "hold", "copy-values"})
            window_.Do(id);
        QTest::mouseClick(&widget.Display(), Qt::LeftButton, {}, {100, 100});
        Wheel(widget, {100, 100}, 1);
    }
    // One of two data files is missing: the other is shown, and the note stands beside it.
    WriteData("there.sig", 1.0, 0.0, 3);
    PlotWidget& half =
        Open(ToQString(dir_.Write("half.pcs", "/xl\"Time (s)\"\nthere.sig\nnowhere.sig\n")));
    EXPECT_EQ(half.Pane().Shown().curves.size(), 1u);
    EXPECT_TRUE(WaitFor([&] {
        const auto labels = half.TheReadout().findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(), [](const QLabel* label) {
            return label->text().indexOf(QStringLiteral("nowhere.sig")) >= 0;
        });
    }));

    // Cut short for good: what is whole of it is shown.
    dir_.Write("short.sig", "0 1\n1 2\n2 3\n3 ");
    PlotWidget& cut = Open(ToQString(dir_.Write("short.pcs", "/xl\"Time (s)\"\nshort.sig\n")));
    ASSERT_TRUE(cut.Pane().HasPlot());
    EXPECT_EQ(cut.Pane().Shown().curves[0].x->Size(), 3u);
    EXPECT_NE(cut.Banner().text().indexOf(QStringLiteral("waiting for short.pcs")), -1);

    PlotWidget& late = Open(ToQString(dir_.Path() + "late.pcs"));
    EXPECT_NE(late.Banner().text().indexOf(QStringLiteral("No such file")), -1);
    WritePlot("late", 1e-3, 1e-5);
    EXPECT_TRUE(WaitFor([&] { return late.Pane().HasPlot(); }));
    EXPECT_TRUE(late.Banner().isHidden());
    EXPECT_NEAR(Range(late).greatest, 100e-9, 1e-15) << "all of it is seen";
}

TEST_F(ViewerTest, DrawsLargeEyesWithoutHoldingTheWindow) {
    // 600 traces of 1000 samples.
    std::string text;
    for (int i = 0; i < 1000; ++i) {
        text += Concat(i * 1e-13);
        for (int k = 0; k < 600; ++k) text += k % 2 ? " 0.001" : " 0.004";
        text += "\n";
    }
    dir_.Write("big.eye", text);
    const QString path = ToQString(
        dir_.Write("big.pce", "/xl\"Time (s)\"\n/yl\"Signal (W)\"\n/lc2\n/nx1 /ny600\nbig.eye\n"));
    window_.OpenFiles({path}, {});
    PlotWidget& widget = *window_.Find(path);
    ASSERT_TRUE(WaitFor([&] { return widget.Pane().HasPlot(); }));
    ASSERT_EQ(widget.Pane().Shown().kind, PlotKind::Eye);
    EXPECT_TRUE(widget.Pane().IsHeavy());
    widget.Display().grab();
    EXPECT_TRUE(WaitFor([&] { return widget.Pane().HasPicture() && !widget.IsDrawing(); }));
    EXPECT_NE(Dump(widget).find("density"), std::string::npos);
    // Gestures while a drawing is under way: only the last one counts.
    for (int i = 0; i < 5; ++i) {
        Wheel(widget, At(widget, 0.5, 0.5), 1);
        widget.Display().grab();
    }
    Settle(widget);
    EXPECT_EQ(widget.Pane().Layout().scales[0].Range(), Range(widget));
}

TEST_F(ViewerTest, ASecondStartHandsItsFilesOver) {
    const QString path = WritePlot("run", 1e-3, 1e-5);
    SingleInstance first(QStringLiteral("vistrax"));
    ASSERT_EQ(first.Start({}), SingleInstance::Outcome::First);
    InstanceRequest got;
    QObject::connect(&first, &SingleInstance::Requested,
                     [&](const InstanceRequest& request) { got = request; });
    QProcess second;
    second.setWorkingDirectory(ToQString(dir_.Path()));
    second.start(ToQString(BinaryDir() + "/bin/vistrax"), {QStringLiteral("@run.pcs")});
    ASSERT_TRUE(WaitFor([&] { return second.state() == QProcess::NotRunning; }));
    EXPECT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();
    ASSERT_EQ(got.files, QStringList{QStringLiteral("run.pcs")});
    window_.Welcome(got.files, got.directory);
    EXPECT_NE(window_.Find(path), nullptr);

    // One that does not answer is not waited for; nor is one whose folder others can enter.
    const std::string folder = qgetenv("XDG_RUNTIME_DIR").toStdString();
    EXPECT_EQ(std::filesystem::status(folder + "/photrak").permissions(),
              std::filesystem::perms::owner_all);
    SingleInstance third(QStringLiteral("vistrax"));
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(third.Start({}, 200), SingleInstance::Outcome::Alone);
    EXPECT_LT(clock.elapsed(), 2000);
    std::filesystem::permissions(folder + "/photrak", std::filesystem::perms::all);
    EXPECT_FALSE(
        SingleInstance::SocketPath(QStringLiteral("vistrax")).startsWith(ToQString(folder)));
    std::filesystem::permissions(folder + "/photrak", std::filesystem::perms::owner_all);
}

}  // namespace
}  // namespace photrak
