// Gestures over a plot: what wheel, drags and clicks do to view, cursors and curves.
#include <cmath>
#include <gtest/gtest.h>

#include "plotting/decibels.h"
#include "plotting/measures.h"
#include "plotting/plot_pane.h"

namespace photrak {
namespace {

Curve MakeCurve(std::string name, std::vector<double> x, std::vector<double> y, int place) {
    Curve curve;
    curve.name = curve.key = std::move(name);
    curve.named = true;
    curve.place = place;
    curve.x = std::make_shared<const Column>(std::move(x));
    curve.y = std::make_shared<const Column>(std::move(y));
    return curve;
}

/// A pane of a plot with two curves over 0 to 10 ns, samples 1 ns apart.
class PlotPaneTest : public testing::Test {
  protected:
    PlotPaneTest() {
        Plot plot;
        plot.name = "two.pcs";
        plot.spec.xLabel = "Time (s)";
        plot.spec.yLabel = "Power (W)";
        std::vector<double> x, up, down;
        for (int i = 0; i <= 10; ++i) {
            x.push_back(i * 1e-9);
            up.push_back(i * 1e-3);
            down.push_back((10 - i) * 1e-3);
        }
        plot.curves = {MakeCurve("up", x, up, 0), MakeCurve("down", x, down, 1)};
        open_.plot = plot;
        open_.view = PlotView(plot);
        pane_.Show(std::make_shared<const Plot>(plot));
        Draw();
    }

    void Draw() { pane_.Take(pane_.MakeJob({800, 500}, TableMeasure()).Draw()); }
    Point At(double x, double y) const {  // parts of the pane, from the lower left
        const Rect& pane = pane_.Layout().pane;
        return {pane.x + x * pane.width, pane.Bottom() - y * pane.height};
    }
    Point Legend(int row) {
        return FindMark(pane_.Picture().marks, "legend:" + std::to_string(row))->area.Center();
    }
    Change Send(PointerAction action, Point at, PointerButton button = PointerButton::Left,
                Modifiers keys = {}) {
        return pane_.Pointer({action, at, button, keys});
    }
    Change Click(Point at, Modifiers keys = {}) {
        Send(PointerAction::Press, at, PointerButton::Left, keys);
        return Send(PointerAction::Release, at, PointerButton::Left, keys);
    }
    void Drag(Point from, Point to, PointerButton button = PointerButton::Left,
              Modifiers keys = {}) {
        Send(PointerAction::Press, from, button, keys);
        Send(PointerAction::Move, {0.5 * (from.x + to.x), 0.5 * (from.y + to.y)}, button, keys);
        Send(PointerAction::Move, to, button, keys);
        Send(PointerAction::Release, to, button, keys);
    }
    void DoubleClick(Point at) {
        Click(at);
        Send(PointerAction::DoubleClick, at);
        Send(PointerAction::Release, at);
    }
    ValueRange Range(AxisId axis) const { return open_.view.ScaleOf(axis).Range(); }
    /// Axis ranges in ns and mW.
    void ExpectRange(AxisId axis, double least, double greatest) const {
        const double unit = axis == AxisId::X ? 1e-9 : 1e-3;
        EXPECT_NEAR(Range(axis).least / unit, least, 1e-6);
        EXPECT_NEAR(Range(axis).greatest / unit, greatest, 1e-6);
    }

    OpenPlot open_;
    PlotPane pane_{open_};
};

TEST_F(PlotPaneTest, BoxesZoomBothAxesAndFlatOnesOnlyOne) {
    const ValueRange y = Range(AxisId::Y);
    Drag(At(0.2, 0.25), At(0.7, 0.75));
    ExpectRange(AxisId::X, 2, 7);
    EXPECT_NEAR(Range(AxisId::Y).least, y.least + 0.25 * y.Span(), 1e-12);
    EXPECT_TRUE(open_.view.Back());
    EXPECT_TRUE(open_.view.ShowsAll());
    EXPECT_FALSE(open_.cursors.x[0]) << "a drag is no click";

    // Five pixels high: the whole height is meant.
    Drag(At(0.5, 0.5), {At(0.9, 0.5).x, At(0.9, 0.5).y + 5.0});
    ExpectRange(AxisId::X, 5, 9);
    EXPECT_EQ(Range(AxisId::Y), y);
    open_.view.Back();
    Drag(At(0.5, 0.1), {At(0.5, 0.5).x - 5.0, At(0.5, 0.5).y});
    ExpectRange(AxisId::X, 0, 10);
    EXPECT_NEAR(Range(AxisId::Y).Span(), 0.4 * y.Span(), 1e-12);

    // Esc in the middle of a drag leaves everything as it was.
    const ViewState before = open_.view.Now();
    Send(PointerAction::Press, At(0.1, 0.1));
    Send(PointerAction::Move, At(0.9, 0.9));
    pane_.Escape();
    Send(PointerAction::Release, At(0.9, 0.9));
    EXPECT_EQ(open_.view.Now(), before);
    EXPECT_FALSE(open_.cursors.x[0]);
}

TEST_F(PlotPaneTest, WheelsZoomAtThePointerAndCountAsOneStep) {
    const Point at = At(0.3, 0.6);
    const auto under = [&] {
        return std::pair(open_.view.ScaleOf(AxisId::X).Value(0.3),
                         open_.view.ScaleOf(AxisId::Y).Value(0.6));
    };
    const auto before = under();
    for (int i = 0; i < 5; ++i) EXPECT_EQ(pane_.Wheel({at, 1.0, 0.0, {}}), Change::View);
    EXPECT_NEAR(under().first, before.first, 1e-18);
    EXPECT_NEAR(under().second, before.second, 1e-12);
    EXPECT_NEAR(Range(AxisId::X).Span(), 10e-9 * std::pow(0.8, 5), 1e-18);
    EXPECT_TRUE(open_.view.Back());
    EXPECT_TRUE(open_.view.ShowsAll());

    struct Row {
        const char* name;
        Point at;
        Modifiers keys;
        bool x, y;
    };
    const Rect& pane = pane_.Layout().pane;
    const Row rows[] = {{"Shift", at, {true, false, false}, true, false},
                        {"Alt", at, {false, false, true}, false, true},
                        {"Ctrl", at, {false, true, false}, true, true},
                        {"x axis", {at.x, pane.Bottom() + 10}, {}, true, false},
                        {"y axis", {pane.x - 10, at.y}, {}, false, true},
                        {"corner", {2, 498}, {}, false, false}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const ViewState all = open_.view.Now();
        pane_.Wheel({row.at, -1.0, 0.0, row.keys});
        EXPECT_EQ(Range(AxisId::X) == all.ranges[0], !row.x);
        EXPECT_EQ(Range(AxisId::Y) == all.ranges[1], !row.y);
        open_.view.Fit();
    }
}

TEST_F(PlotPaneTest, DragsMoveThePlotAndItsAxes) {
    Drag(At(0.5, 0.5), At(0.7, 0.5), PointerButton::Middle);
    ExpectRange(AxisId::X, -2, 8);
    open_.view.Back();
    EXPECT_TRUE(open_.view.ShowsAll()) << "one drag is one step";
    Drag(At(0.5, 0.5), At(0.7, 0.5), PointerButton::Left, {true, false, false});
    ExpectRange(AxisId::X, -2, 8);
    const ValueRange y = Range(AxisId::Y);
    const Point below = {At(0.5, 0).x, At(0, 0).y + 10};
    Drag(below, {At(0.4, 0).x, below.y + 30});
    ExpectRange(AxisId::X, -1, 9);
    EXPECT_EQ(Range(AxisId::Y), y);
    DoubleClick(below);
    ExpectRange(AxisId::X, 0, 10);
    open_.view.Lock(AxisId::X, true);
    Drag(At(0.5, 0.5), At(0.7, 0.5), PointerButton::Middle);
    ExpectRange(AxisId::X, 0, 10);
}

TEST_F(PlotPaneTest, ClicksPutCursorsOnSamples) {
    EXPECT_EQ(Click(At(0.31, 0.5)), Change::Overlay);
    Click(At(0.88, 0.5), {false, true, false});
    EXPECT_NEAR(open_.cursors.x[0].value_or(0), 3e-9, 1e-20);
    EXPECT_NEAR(open_.cursors.x[1].value_or(0), 9e-9, 1e-20);
    // Dragged along, and stepped with the keys.
    Drag(At(0.3, 0.2), At(0.52, 0.4));
    EXPECT_NEAR(open_.cursors.x[0].value_or(0), 5e-9, 1e-20);
    EXPECT_TRUE(open_.view.ShowsAll());
    pane_.Step(-2);
    EXPECT_NEAR(open_.cursors.x[0].value_or(0), 3e-9, 1e-20);
    EXPECT_NE(FindMark(pane_.Picture().marks, "cursor:xB"), nullptr);
    pane_.ToggleLevelCursors();
    Drag(At(0.9, 2.0 / 3.0), At(0.1, 0.5));
    EXPECT_NEAR(open_.cursors.y[0].value_or(0), open_.view.ScaleOf(AxisId::Y).Value(0.5), 1e-12);
    // A double click shows all and leaves the cursors where they were.
    open_.view.ZoomTo({0, 0}, {0.5, 1});
    DoubleClick(At(0.9, 0.9));
    ExpectRange(AxisId::X, 0, 10);
    EXPECT_NEAR(open_.cursors.x[0].value_or(0), 3e-9, 1e-20);
    pane_.Escape();
    EXPECT_FALSE(open_.cursors.x[0] || open_.cursors.y[1]);
}

TEST(PlotPanePeaks, AreSteppedThroughInOrder) {
    Plot plot;
    std::vector<double> x, y;
    for (int i = 0; i <= 400; ++i) {
        x.push_back(i);
        // Peaks of rising height at 50, 150, 250, 350, with ripples far below them.
        y.push_back((1.0 + 0.001 * i) * std::pow(std::cos(M_PI * (i - 50) / 100.0), 2) +
                    1e-5 * (i % 2));
    }
    plot.curves = {MakeCurve("comb", x, y, 0)};
    OpenPlot open;
    open.view = PlotView(plot);
    PlotPane pane(open);
    pane.Show(std::make_shared<const Plot>(plot));
    pane.Take(pane.MakeJob({800, 500}, TableMeasure()).Draw());
    for (const double at : {50.0, 150.0, 250.0, 350.0}) {
        EXPECT_EQ(pane.StepPeak(1), Change::Overlay);
        EXPECT_NEAR(open.cursors.x[0].value_or(0), at, 1.0);
    }
    EXPECT_EQ(pane.StepPeak(1), Change::Nothing);
    pane.StepPeak(-1);
    EXPECT_NEAR(open.cursors.x[0].value_or(0), 250.0, 1.0);
}

TEST_F(PlotPaneTest, TheLegendHidesAndIsolates) {
    const Plot& plot = pane_.Shown();
    const Point up = Legend(0), down = Legend(1);
    EXPECT_EQ(Send(PointerAction::Move, up, PointerButton::None), Change::Overlay);
    EXPECT_FALSE(pane_.Picture().overlay.empty()) << "thick while pointed at";
    EXPECT_EQ(Click(up), Change::View);
    EXPECT_TRUE(open_.view.IsHidden(plot.curves[0]));
    Click(up);
    EXPECT_FALSE(open_.view.IsHidden(plot.curves[0]));
    for (int i = 0; i < 2; ++i) {
        DoubleClick(down);
        EXPECT_EQ(open_.view.IsHidden(plot.curves[0]), i == 0) << "the second one shows all again";
        EXPECT_FALSE(open_.view.IsHidden(plot.curves[1]));
    }
    EXPECT_FALSE(open_.cursors.x[0]);
}

TEST(Decibels, TurnLevelsAndBack) {
    Plot plot;
    plot.spec.xLabel = "Time (s)";
    plot.spec.yLabel = "Power (W)";
    plot.spec.secondLabel = "Voltage (V)";
    plot.spec.y = {0.0, 1.0};
    plot.curves = {MakeCurve("p", {0, 1, 2}, {1e-3, 2.0, 0.0}, 0),
                   MakeCurve("v", {0, 1, 2}, {0.1, -1.0, 10.0}, 1)};
    plot.curves[1].second = true;
    ASSERT_TRUE(TurnsToDecibels(plot));
    TurnDecibels(plot);
    EXPECT_EQ(plot.spec.yLabel, "Power (dBm)");
    EXPECT_EQ(plot.spec.secondLabel, "Voltage (dBV)");
    EXPECT_FALSE(plot.spec.y.greatest);
    const Column& p = *plot.curves[0].y;
    EXPECT_DOUBLE_EQ(p[0], 0.0);
    EXPECT_DOUBLE_EQ(p[1], 33.010299956639813);  // 10 lg 2000
    EXPECT_TRUE(std::isnan(p[2]));
    EXPECT_DOUBLE_EQ((*plot.curves[1].y)[0], -20.0);
    EXPECT_TRUE(std::isnan((*plot.curves[1].y)[1]));
    TurnDecibels(plot);
    EXPECT_EQ(plot.spec.yLabel, "Power (W)");
    EXPECT_NEAR((*plot.curves[0].y)[1], 2.0, 1e-14);
    plot.spec.yLabel = plot.spec.secondLabel = "Phase (rad)";
    EXPECT_FALSE(TurnsToDecibels(plot));
}

TEST(Measures, NameCrossingsAndPeaks) {
    Plot plot;
    plot.spec.logarithmic = true;
    plot.spec.xLabel = "Received (dBm)";
    plot.spec.yLabel = "BER";
    // Straight over the logarithm: 1e-9 lies in the middle.
    plot.curves = {MakeCurve("a", {-20, -18}, {1e-8, 1e-10}, 0),
                   MakeCurve("b", {-19, -17}, {1e-8, 1e-10}, 1)};
    const auto rates = MeasureLines(plot, PlotView(plot));
    ASSERT_EQ(rates.size(), 3u);
    EXPECT_EQ(rates[1],
              "   \xE2\x88\x92"
              "19 dBm  a");
    EXPECT_EQ(rates[2],
              "   \xE2\x88\x92"
              "18 dBm  b, penalty 1 dB");

    plot.spec.logarithmic = false;
    plot.spec.xLabel = "Wavelength (m)";
    plot.spec.yLabel = "Power (dBm)";
    plot.curves = {MakeCurve("s", {1.549e-6, 1.55e-6, 1.551e-6}, {-40, -3, -40}, 0)};
    const auto peaks = MeasureLines(plot, PlotView(plot));
    ASSERT_EQ(peaks.size(), 2u);
    EXPECT_EQ(peaks[1],
              "   1550 nm  193.4145 THz  \xE2\x88\x92"
              "3 dBm");
}

}  // namespace
}  // namespace photrak
