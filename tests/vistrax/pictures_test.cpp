// Pictures without a window: PNG of the asked size, PDF with the same bytes, roles as painted.
#include <QImage>
#include <QPainter>
#include <QPrinter>
#include <QProcess>

#include "qt/export_image.h"
#include "qt/painter.h"
#include "qt/theme.h"
#include "support/paths.h"
#include "vistrax/options.h"
#include "vistrax/viewer_file_commands.h"
#include "vistrax/window_fixture.h"

namespace photrak {
namespace {

/// Runs the program; its exit status, with what it said in `said`.
int RunViewer(const QStringList& arguments, std::string& said) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(QString::fromLatin1(name));
    process.setProcessEnvironment(environment);
    process.start(ToQString(BinaryDir() + "/bin/vistrax"), arguments);
    EXPECT_TRUE(process.waitForFinished(30'000));
    said = process.readAllStandardError().toStdString();
    return process.exitCode();
}

TEST_F(ViewerTest, ExportsWithoutADisplay) {
    const QString plot = WritePlot("run", 1e-3, 1e-5);
    const QString base = ToQString(dir_.Path());
    std::string said;
    const auto make = [&](const char* name, QStringList more = {}) {
        const QStringList arguments =
            QStringList{QStringLiteral("@") + plot, QStringLiteral("--export"),
                        base + QString::fromLatin1(name)} +
            more;
        EXPECT_EQ(RunViewer(arguments, said), 0) << said;
        EXPECT_EQ(said, "");
        return dir_.Read(name);
    };
    make("a.png", {QStringLiteral("--size"), QStringLiteral("640x400"), QStringLiteral("--scale"),
                   QStringLiteral("2"), QStringLiteral("--dark")});
    const QImage image(base + QStringLiteral("a.png"));
    EXPECT_EQ(image.size(), QSize(1280, 800));
    EXPECT_EQ(image.pixelColor(3, 3), ColorFor(Role::Paper, Theme::Dark));

    const std::string first = make("a.pdf");
    QTest::qWait(1100);  // another second on the clock
    EXPECT_EQ(make("b.pdf"), first);
    EXPECT_EQ(first.rfind("%PDF-", 0), 0u);
    EXPECT_EQ(first.find("Date"), std::string::npos);
    EXPECT_NE(make("a.svg").find("</svg>"), std::string::npos);
    EXPECT_EQ(make("a.csv").rfind("Time (s),line", 0), 0u) << dir_.Read("a.csv").substr(0, 80);

    // From the window, with what is seen.
    Open(plot);
    EXPECT_TRUE(window_.ExportTo(base + QStringLiteral("c.png")));
    EXPECT_EQ(QImage(base + QStringLiteral("c.png")).size(),
              window_.Current()->Display().size() * 2);
    EXPECT_FALSE(window_.ExportTo(base + QStringLiteral("no/such/folder/c.png")));
    EXPECT_FALSE(window_.ExportTo(base + QStringLiteral("c.jpeg")));

    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(base + QStringLiteral("printed.pdf"));
    FileCommands::PrintOn(window_, printer);
    EXPECT_GT(dir_.Read("printed.pdf").size(), 5000u);

    EXPECT_EQ(RunViewer({base + QStringLiteral("none.pcs"), QStringLiteral("--export"),
                         base + QStringLiteral("n.png")},
                        said),
              1);
    EXPECT_NE(said.find("No such file"), std::string::npos);
    EXPECT_EQ(RunViewer({plot}, said), 2);
    EXPECT_NE(said.find("no display"), std::string::npos);
}

TEST(ViewerOptions, ReadFilesAsTheyAreCalled) {
    ViewerOptions options;
    EXPECT_EQ(ReadViewerOptions({"/v", "@a.pcs", "b.pcf", "--dark", "--", "--c.pcb"}, options), "");
    EXPECT_EQ(options.files, (std::vector<std::string>{"a.pcs", "b.pcf", "--c.pcb"}));
    EXPECT_TRUE(options.dark);
    const std::vector<std::string> refused[] = {{"--export"},
                                                {"--export", "x.jpg", "a.pcs"},
                                                {"--size", "10x10"},
                                                {"--size", "800"},
                                                {"--export=x.png", "a.pcs", "b.pcs"},
                                                {"--nothing"},
                                                {"--scale", "100"},
                                                {"--eye", "blue"},
                                                {"--export", "x.png"}};
    for (const auto& arguments : refused) {
        ViewerOptions ignored;
        EXPECT_NE(ReadViewerOptions(arguments, ignored), "") << arguments.back();
    }
}

TEST(Painter, PaintsRolesWhereTheListSaysAtEveryScale) {
    Drawing drawing;
    drawing.size = {100, 100};
    drawing.Add(
        Box{{10, 10, 20, 20}, true, Role::Optical, 1.0, true, {Role::Ink, 2.0, Dash::Solid, 1.0}});
    drawing.Add(ClipBegin{{50, 0, 10, 100}});
    drawing.Add(Polyline{{{40, 50}, {90, 50}}, {Role::Curve1, 4.0, Dash::Solid, 1.0}});
    drawing.Add(ClipEnd{});
    drawing.Add(Symbols{{{80, 20}}, Marker::Circle, 10.0, Role::Fault, 1.0});
    drawing.Add(DensityImage{{60, 70, 20, 20}, 2, 1, {0, 255}});
    drawing.Add(Segments{{{0, 95}, {100, 95}}, {Role::Curve2, 4.0, Dash::Dashed, 1.0}});
    drawing.AddOver(
        Polygon{{{5, 60}, {25, 60}, {25, 80}, {5, 80}}, Role::Selected, 1.0, false, {}});
    for (const double scale : {1.0, 1.5, 2.0}) {
        for (const Theme theme : {Theme::Light, Theme::Dark}) {
            QImage image;
            ASSERT_TRUE(image.loadFromData(PngOf(drawing, theme, scale)));
            ASSERT_EQ(image.width(), static_cast<int>(100 * scale));
            const auto at = [&](double x, double y) {
                return image.pixelColor(static_cast<int>(x * scale), static_cast<int>(y * scale));
            };
            EXPECT_EQ(at(20, 20), ColorFor(Role::Optical, theme));
            EXPECT_EQ(at(20, 10), ColorFor(Role::Ink, theme));
            EXPECT_EQ(at(55, 50), ColorFor(Role::Curve1, theme));
            EXPECT_EQ(at(45, 50), ColorFor(Role::Paper, theme)) << "cut off";
            EXPECT_EQ(at(80, 20), ColorFor(Role::Fault, theme));
            EXPECT_EQ(at(65, 80), ColorFor(Role::Paper, theme)) << "nothing counted here";
            const Color most = RampColor(255, theme);
            EXPECT_EQ(at(75, 80), QColor(most.red, most.green, most.blue));
            EXPECT_EQ(at(15, 70), ColorFor(Role::Selected, theme));
            int on = 0;
            for (int x = 0; x < image.width(); ++x)
                on += image.pixelColor(x, static_cast<int>(95 * scale)) !=
                      ColorFor(Role::Paper, theme);
            EXPECT_GT(on, 0.3 * image.width());
            EXPECT_LT(on, 0.9 * image.width()) << "dashes have gaps";
        }
    }
}

}  // namespace
}  // namespace photrak
