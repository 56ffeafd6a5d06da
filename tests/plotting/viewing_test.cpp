// What a viewer does with a plot, without a window: zoom and back, hide, cursors, reload, overlay.
#include <cmath>
#include <gtest/gtest.h>
#include <random>

#include "base/text.h"
#include "drawing/svg_writer.h"
#include "plotting/ber_readout.h"
#include "plotting/peaks.h"
#include "plotting/session.h"
#include "plotting/table_writer.h"
#include "support/holds.h"
#include "support/svg_reader.h"

namespace photrak {
namespace {

constexpr double gap = std::numeric_limits<double>::quiet_NaN();

Curve MakeCurve(std::string name, std::vector<double> x, std::vector<double> y) {
    Curve curve;
    curve.name = curve.key = std::move(name);
    curve.named = true;
    curve.x = std::make_shared<const Column>(std::move(x));
    curve.y = std::make_shared<const Column>(std::move(y));
    return curve;
}

/// Two curves over 0 to 10 ns.
Plot TwoCurves(std::string name = "two.pcs") {
    Plot plot;
    plot.name = std::move(name);
    plot.spec.title = "Two";
    plot.spec.xLabel = "Time (s)";
    plot.spec.yLabel = "Signal Magnitude (W)";
    plot.curves.push_back(MakeCurve("a", {0, 2.5e-9, 5e-9, 10e-9}, {1e-3, 2e-3, 4e-3, 0}));
    plot.curves.push_back(MakeCurve("b", {0, 5e-9, 10e-9}, {2e-3, gap, 1e-3}));
    plot.curves[1].place = 1;
    return plot;
}

TEST(PlotView, ZoomsAtThePointerAndFindsTheWayBack) {
    const Plot plot = TwoCurves();
    PlotView view(plot);
    const ViewState all = view.Now();
    std::mt19937 random(2);
    std::vector<ViewState> steps;
    for (int i = 0; i < 60; ++i) {
        const Point place{static_cast<double>(random() % 101) / 100.0,
                          static_cast<double>(random() % 101) / 100.0};
        const double before = view.ScaleOf(AxisId::X).Value(place.x);
        steps.push_back(view.Now());
        if (i % 3 == 2) {
            view.Pan({place.x - 0.5, place.y - 0.5});
        } else {
            view.ZoomAt(place, i % 2 ? 0.8 : 1.2);
            EXPECT_NEAR(view.ScaleOf(AxisId::X).Value(place.x), before, 1e-9 * 10e-9);
        }
    }
    for (; !steps.empty(); steps.pop_back()) {
        if (steps.back() == view.Now()) continue;
        ASSERT_TRUE(view.Back());
        EXPECT_EQ(view.Now(), steps.back());
    }
    EXPECT_EQ(view.Now(), all);
    EXPECT_FALSE(view.Back());
    EXPECT_TRUE(view.Forward());
    // The steps of one gesture are one step back.
    view = PlotView(plot);
    view.ZoomAt({0.5, 0.5}, 0.9);
    for (int i = 0; i < 5; ++i) view.ZoomAt({0.5, 0.5}, 0.9, {}, PlotView::Step::Same);
    EXPECT_TRUE(view.Back());
    EXPECT_EQ(view.Now(), all);
}

TEST(PlotView, LocksBoundsAndBoxes) {
    const Plot plot = TwoCurves();
    PlotView view(plot);
    view.Lock(AxisId::Y, true);
    const ValueRange y = view.ScaleOf(AxisId::Y).Range();
    view.ZoomTo({0.75, 0.9}, {0.25, 0.1});
    EXPECT_EQ(view.ScaleOf(AxisId::Y).Range(), y);
    EXPECT_NEAR(view.ScaleOf(AxisId::X).Range().least, 2.5e-9, 1e-18);
    EXPECT_NEAR(view.ScaleOf(AxisId::X).Range().greatest, 7.5e-9, 1e-18);
    // Closer and closer ends before the doubles do; farther and farther too.
    for (int i = 0; i < 500; ++i) view.ZoomAt({0.5, 0.5}, 0.1);
    EXPECT_GT(view.ScaleOf(AxisId::X).Range().Span(), 0.0);
    for (int i = 0; i < 2000; ++i) view.ZoomAt({0.5, 0.5}, 10.0);
    EXPECT_TRUE(std::isfinite(view.ScaleOf(AxisId::X).Range().Span()));
    const ViewState now = view.Now();
    view.ZoomAt({0.5, 0.5}, NAN);
    view.SetRange(AxisId::X, {2.0, 1.0});
    EXPECT_EQ(view.Now(), now);
    view.SetYScale(plot, ScaleKind::Logarithmic);
    EXPECT_EQ(view.ScaleOf(AxisId::Y).Range(), (ValueRange{1e-3, 1e-2}));
    EXPECT_TRUE(view.Back());
    EXPECT_EQ(view.Now().yKind, ScaleKind::Linear);
}

TEST(PlotView, HidesIsolatesAndFollowsAReload) {
    Plot plot = TwoCurves();
    PlotView view(plot);
    view.ShowAlone(plot, plot.curves[1]);
    EXPECT_TRUE(view.IsHidden(plot.curves[0]) && !view.IsHidden(plot.curves[1]));
    view.ShowAlone(plot, plot.curves[1]);
    EXPECT_FALSE(view.IsHidden(plot.curves[0]));
    view.Toggle(plot.curves[0]);
    plot.curves[0] = MakeCurve("a", {0, 20e-9}, {0, 8e-3});
    view.Follow(plot);
    EXPECT_TRUE(view.IsHidden(plot.curves[0]));
    EXPECT_EQ(view.ScaleOf(AxisId::X).Range().greatest, 20e-9);
    view.ZoomAt({0.5, 0.5}, 0.5);
    const ViewState zoomed = view.Now();
    plot.curves[0] = MakeCurve("a", {0, 40e-9}, {0, 9e-3});
    view.Follow(plot);
    EXPECT_EQ(view.Now(), zoomed);
}

TEST(Cursors, ReadTheDataAndNotThePicture) {
    const Plot plot = TwoCurves();
    const PlotView view(plot);
    Cursors cursors;
    cursors.X(CursorId::A) = CursorPlace(plot, view, cursors, 2.1e-9);
    cursors.X(CursorId::B) = CursorPlace(plot, view, cursors, 5.9e-9);
    EXPECT_EQ(cursors.x[0], 2.5e-9);
    EXPECT_EQ(cursors.x[1], 5e-9);
    Readout readout = MakeReadout(plot, view, cursors);
    EXPECT_EQ(readout.xDifference, "2.5 ns");
    EXPECT_EQ(readout.xInverse, "400 MHz");
    EXPECT_EQ(readout.rows[0].a, "2 mW");
    EXPECT_EQ(readout.rows[0].difference, "2 mW");
    EXPECT_EQ(readout.rows[0].slope, "800 \xC2\xB5W/ns");
    EXPECT_EQ(readout.rows[1].b, "");  // a gap
    cursors.snaps = false;
    cursors.X(CursorId::A) = 1.25e-9;
    EXPECT_EQ(MakeReadout(plot, view, cursors).rows[0].a, "1.5 mW");
    EXPECT_EQ(ValueAt(plot.curves[0], 11e-9, true), std::nullopt);
    cursors.snaps = true;
    StepCursor(plot, view, cursors, CursorId::B, -7);
    EXPECT_EQ(cursors.x[1], 0.0);
    // Two wavelengths 0.8 nm apart around 1550 nm: c / 1549.6 nm - c / 1550.4 nm.
    Plot spectrum = TwoCurves();
    spectrum.spec.xLabel = "Wavelength (m)";
    cursors = {{1549.6e-9, 1550.4e-9}, {}, false};
    EXPECT_EQ(MakeReadout(spectrum, view, cursors).xInverse, "99.8268 GHz");
    EXPECT_TRUE(Holds(ReadoutText(MakeReadout(spectrum, view, cursors)),
                      "x\t1549.6 nm\t1550.4 nm\t800 pm\t99.8268 GHz\n"));
}

TEST(FindPeaks, MeasuresProminenceAgainstTheSaddles) {
    const Column x({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
    const Column y({0, 5, 3, 4, 1, 9, 9, 9, 2, 6, gap, 7});
    const auto peaks = FindPeaks(x, y, 1.0);
    ASSERT_EQ(peaks.size(), 4u);
    EXPECT_EQ(peaks[0].x, 6.0);  // the middle of the flat top
    EXPECT_EQ(peaks[0].prominence, 7.0);
    EXPECT_EQ(peaks[1].y, 6.0);
    EXPECT_EQ(peaks[1].prominence, 4.0);
    EXPECT_EQ(peaks[2].prominence, 4.0);
    EXPECT_EQ(peaks[3].prominence, 1.0);
    EXPECT_EQ(FindPeaks(x, y, 3.9, 2).size(), 2u);
}

TEST(RateCrossings, StandWhereTheLogarithmsMeet) {
    Plot plot;
    plot.curves.push_back(MakeCurve("r", {-24, -22, -20}, {1e-4, 1e-8, 1e-12}));
    plot.curves.push_back(MakeCurve("s", {-24, -22, -20}, {1e-3, 1e-7, 0.0}));
    const auto at = CrossingsAt(plot, 1e-6);
    EXPECT_NEAR(*at[0].x, -23.0, 1e-12);
    EXPECT_NEAR(*at[1].penalty, 0.5, 1e-12);
    EXPECT_FALSE(CrossingOf(plot.curves[1], 1e-9));  // a rate of 0 has no logarithm to meet
    EXPECT_EQ(CrossingOf(plot.curves[0], 1e-8), -22.0);
}

TEST(TableText, HoldsWhatIsSeen) {
    Plot plot = TwoCurves();
    plot.curves[0].name = "=2,\"x\"";
    PlotView view(plot);
    view.SetRange(AxisId::X, {1e-9, 6e-9});
    EXPECT_EQ(TableText(plot, view),
              "Time (s),\"'=2,\"\"x\"\"\",Time (s),b\n"
              "2.5e-09,0.002,5e-09,\n"
              "5e-09,0.004,,\n");
    view.Toggle(plot.curves[0]);
    EXPECT_EQ(TableText(plot, view), "Time (s),b\n5e-09,\n");
}

TEST(PlotSession, RedrawsAFileOnlyWhenItRestsAndIsWhole) {
    PlotSession session;
    const FileStamp first{100, 1}, second{150, 2}, third{200, 3};
    EXPECT_EQ(session.Open("d/two.pcs", TwoCurves(), first), 0u);
    EXPECT_EQ(session.Noticed(0, first, 0), ReloadState::Current);
    EXPECT_EQ(session.Noticed(0, second, 10), ReloadState::Settling);
    EXPECT_EQ(session.Noticed(0, second, 100), ReloadState::Settling);
    EXPECT_EQ(session.Noticed(0, third, 140), ReloadState::Settling);
    EXPECT_EQ(session.Noticed(0, third, 250), ReloadState::Settling);
    EXPECT_EQ(session.Noticed(0, third, 140 + PlotSession::restTime), ReloadState::Ready);
    Plot half = TwoCurves();
    half.incomplete = true;
    half.curves.pop_back();
    session.Loaded(0, half, third);
    EXPECT_EQ(session.At(0).plot.curves.size(), 2u);
    EXPECT_EQ(session.At(0).message, "waiting for two.pcs");
    EXPECT_EQ(session.Noticed(0, {0, 0, false}, 400), ReloadState::Waiting);
    EXPECT_EQ(session.Noticed(0, first, 500), ReloadState::Settling);
    EXPECT_EQ(session.Noticed(0, first, 700), ReloadState::Ready);
    session.LoadFailed(0, "two_mag.sig:1: 'x' is no number", first);
    EXPECT_EQ(session.At(0).plot.curves.size(), 2u);
    EXPECT_EQ(session.Open("d/two.pcs", TwoCurves(), second), 0u);
    EXPECT_EQ(session.At(0).state, ReloadState::Current);
    EXPECT_EQ(session.At(0).message, "");
    EXPECT_EQ(session.Count(), 1u);
}

TEST(PlotSession, HoldsAndOverlays) {
    PlotSession session;
    session.Open("two.pcs", TwoCurves(), {});
    session.Hold(0, "12:00");
    EXPECT_EQ(session.Shown(0).curves.size(), 4u);
    EXPECT_TRUE(session.Shown(0).curves[0].held);
    EXPECT_EQ(session.Shown(0).curves[0].name, "12:00: a");
    Plot other = TwoCurves("other.pcs");
    session.Open("other.pcs", other, {});
    other.spec.yLabel = "Phase";
    session.Open("phase.pcs", other, {});
    other.spec.yLabel = "Frequency Chirp (Hz)";
    session.Open("chirp.pcs", other, {});
    other.spec.xLabel = "Wavelength (m)";
    session.Open("spectrum.pcf", other, {});
    std::string error;
    EXPECT_TRUE(session.ToggleOverlay(0, 1, error));
    EXPECT_TRUE(session.ToggleOverlay(0, 2, error));
    EXPECT_EQ(session.Shown(0).curves.size(), 8u);
    EXPECT_EQ(session.Shown(0).curves[2].name, "two.pcs: a");
    EXPECT_EQ(session.Shown(0).curves[4].name, "other.pcs: a");
    EXPECT_EQ(session.Shown(0).spec.secondLabel, "Phase");
    EXPECT_FALSE(session.ToggleOverlay(0, 3, error));
    EXPECT_TRUE(Holds(error, "both y axes"));
    EXPECT_FALSE(session.ToggleOverlay(0, 4, error));
    EXPECT_FALSE(session.ToggleOverlay(0, 0, error));
    EXPECT_TRUE(session.ToggleOverlay(0, 2, error));
    EXPECT_FALSE(HasSecondAxis(session.Shown(0)));
    session.Close(1);
    EXPECT_EQ(session.Shown(0).curves.size(), 4u);
}

/// Long names, many curves, two axes, small and large pages: texts stay apart and on the page, and
/// the picture stays a small one.
TEST(DrawPlot, LaysOutAnyPlot) {
    for (const int curves : {0, 1, 2, 14, 60}) {
        for (const PageSize size : {PageSize{200, 150}, {320, 200}, {800, 500}, {2400, 1500}}) {
            SCOPED_TRACE(Concat(curves, " curves on ", size.width));
            Plot plot = TwoCurves(std::string(300, 'n') + ".pcs");
            plot.curves.clear();
            plot.spec.title = std::string(400, 'W');
            plot.spec.textBoxes = {"x polarization", std::string(200, '<')};
            plot.spec.secondLabel = "Phase (rad)";
            for (int i = 0; i < curves; ++i) {
                std::vector<double> x, y;
                for (int k = 0; k < 50; ++k)
                    x.push_back(k * 1e-10), y.push_back(std::sin(k * 0.3 + i) * 1e-13 * (i + 1));
                plot.curves.push_back(
                    MakeCurve(Concat("a curve with a long name & number ", i), x, y));
                plot.curves.back().place = i;
                plot.curves.back().second = i % 5 == 4;
            }
            PlotView view(plot);
            PlotOptions options;
            options.size = size;
            PlotPicture picture = DrawPlot(plot, view, options);
            Cursors cursors;
            cursors.x = {1e-9, 2e-9};
            DrawCursors(picture, plot, view, cursors);
            EXPECT_GE(picture.layout.pane.width, 20.0);
            for (const Mark& mark : picture.drawing.marks)
                EXPECT_FALSE(mark.name.empty()) << mark.id;
            picture.drawing.overlay.clear();
            ExpectTextsApart(ReadSvg(SvgText(picture.drawing, Theme::Light, "t")));
            EXPECT_EQ(FindMark(picture.drawing.marks, "cursor:xA") != nullptr, true);
        }
    }
}

TEST(DrawPlot, SaysWhenItLeavesCurvesOut) {
    Plot plot = TwoCurves();
    const Curve curve = plot.curves[0];
    plot.curves.assign(30'000, curve);
    for (std::size_t i = 0; i < plot.curves.size(); ++i) plot.curves[i].key += std::to_string(i);
    PlotView view(plot);
    EXPECT_TRUE(Holds(DumpText(DrawPlot(plot, view).drawing), "'the first 20000 of 30000 curves'"));
    view.ShowAlone(plot, plot.curves[25'000]);
    EXPECT_EQ(DumpText(DrawPlot(plot, view).drawing).find("the first"), std::string::npos);
}

/// Carriers are no curve: signs without a line, none either between two of them. Where signs would
/// cover one another, the line serves.
TEST(DrawPlot, JoinsNoLevelsThatStandByThemselves) {
    Plot plot = TwoCurves("lasers.pcf");
    plot.spec.symbols = CurveSymbols::Points;
    plot.curves = {MakeCurve("l", {1, 2, 3, 4}, {1, 2, 1, 2})};
    std::string dump = DumpText(DrawPlot(plot, PlotView(plot)).drawing);
    EXPECT_TRUE(Holds(dump, "symbols curve-1 "));
    EXPECT_EQ(dump.find("polyline"), std::string::npos) << dump;
    plot.spec.x = {2.2, 2.8};
    dump = DumpText(DrawPlot(plot, PlotView(plot)).drawing);
    EXPECT_EQ(dump.find("polyline"), std::string::npos) << dump;
    std::vector<double> x, y;
    for (int k = 0; k < 500; ++k) x.push_back(k), y.push_back(k % 7);
    plot.spec.x = {};
    plot.curves = {MakeCurve("l", x, y)};
    EXPECT_TRUE(Holds(DumpText(DrawPlot(plot, PlotView(plot)).drawing), "polyline"));
}

TEST(DrawPlot, ZerosPointDownOnALogarithmicAxis) {
    Plot plot = TwoCurves("r.pcb");
    plot.spec.logarithmic = true;
    plot.curves = {MakeCurve("r", {1, 2, 3, 4}, {1e-3, 1e-9, 0.0, gap})};
    const PlotPicture picture = DrawPlot(plot, PlotView(plot));
    const std::string dump = DumpText(picture.drawing);
    EXPECT_TRUE(Holds(dump, Concat("symbols curve-1 ", static_cast<int>(Marker::TriangleDown))));
    Plot empty = TwoCurves();
    empty.curves = {MakeCurve("e", {}, {})};
    EXPECT_TRUE(Holds(DumpText(DrawPlot(empty, PlotView(empty)).drawing), "'no data'"));
}

}  // namespace
}  // namespace photrak
