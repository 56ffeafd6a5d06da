// Curves: the command file of the BER curve line by line, a single curve, the room of their axes.
#include "results/ber_curve.h"

#include <gtest/gtest.h>

#include "results/curve_file.h"
#include "results/plot_fixture.h"
#include "support/holds.h"

namespace photrak {
namespace {

/// BER by outer, then by inner value; `lines` stand between the title and the last.
void ExpectScript(const std::vector<double>& inner, const std::vector<double>& outer,
                  const std::vector<double>& BER, const std::string& lines) {
    BerCurve curve("rx_power", inner, outer.size() > 1 ? "fiber_length" : "", outer);
    for (std::size_t k = 0; k < BER.size(); ++k) {
        curve.Set(k % inner.size(), k / inner.size(), BER[k]);
    }
    const std::string legend =
        outer.size() > 1 ? "/lt\"fiber length = 5\"\n/lt\"fiber length = 6\"\n" : "";
    EXPECT_EQ(curve.Script("F"), "/tt\"BER Graph\"\n" + lines + "F\n" + legend + "/nx1\n");
}

TEST(BerCurve, OptionsFollowPointsCurvesAndLimits) {
    const std::string single = "/xl\"Single BER Result\"\n/yl\"BER\"\n";
    const std::string swept = "/xl\"rx power\"\n/yl\"BER\"\n";
    // A lone point is given room; a lone 0 has no logarithm.
    ExpectScript({0}, {0}, {3e-9},
                 single + "/lc2\n/ls1\n/st7\n/w,,1e-10,1e-07\n/ly2 1e-10,1e-07\n");
    ExpectScript({0}, {0}, {0}, single + "/lc2\n/ls1\n/st7\n/w,,-10,10\n");
    // Rates far apart show as they are, those close together get room.
    ExpectScript({1, 2, 3}, {0}, {3e-9, 1e-6, -1}, swept + "/lc2\n/ls1\n/st\n/ly2 1e-09,1e-06\n");
    ExpectScript({1, 2}, {0}, {3e-9, 5e-9},
                 swept + "/lc2\n/ls1\n/st\n/w1,2,1e-10,1e-07\n/ly2 1e-10,1e-07\n");
    // A 0 among points stays out of the limits.
    ExpectScript({1, 2, 3}, {0}, {0, 3e-9, 1e-4},
                 swept + "/lc2\n/ls1\n/st\n/w1,3,1e-09,0.0001\n/ly2 1e-09,0.0001\n");
    // One point for each curve; several curves.
    ExpectScript({0}, {5, 6}, {1e-3, 1e-12},
                 single + "/l\n/st7\n/w-1,1,1e-12,0.001\n/ly 1e-12,0.001\n");
    ExpectScript({1, 2}, {5, 6}, {1e-3, 1e-5, 1e-4, 1e-12}, swept + "/l\n/st\n/ly 1e-12,0.001\n");
}

TEST(BerCurve, OneLineForEachInnerValue) {
    BerCurve curve("a", {1, 2}, "b", {3, 4, 5});
    const std::vector<std::string> none = {"1 . . . \n", "2 . . . \n"};
    EXPECT_EQ(curve.Lines(), none);
    curve.Set(1, 0, 0.25);
    curve.Set(1, 2, 0.0);
    EXPECT_EQ(curve.Lines()[0], none[0]);
    EXPECT_EQ(curve.Lines()[1], "2 0.25 . 0\n");
}

using Values = std::vector<double>;

TEST_F(PlotTest, CurveFilesHoldPointsAndTexts) {
    const std::vector<double> current = {0.0, 0.01, 0.02}, power = {0.0, 1e-3, 2.5e-3};
    std::string text;
    const CurvePlot plot{"li",  "Laser_L-I \"Curve\"", "Current_(A)", "Power (W)", current,
                         power, PlotMode::Display};
    EXPECT_EQ(WriteCurve(plot, text), Status::Success);
    EXPECT_EQ(text, "");
    EXPECT_EQ(dir.Read("li.lic"), "0 0\n0.01 0.001\n0.02 0.0025\n");
    EXPECT_EQ(dir.Read("li.pcl"),
              "/xl\"Current (A)\"\n/yl\"Power (W)\"\n/tt\"Laser L-I 'Curve'\"\n"
              "/lcm2,1,3,4,5,6,7,8,9,10,11,12,13,14\n/ls1\nli.lic\n/nx1\n");
    EXPECT_EQ(host.commands.size(), 1u);
}

TEST_F(PlotTest, FlatCurvesGetRoom) {
    std::string text;
    const auto write = [&](const char* name, const Values& x, const Values& y) {
        return WriteCurve({name, "t", "x", "y", x, y, PlotMode::Files}, text);
    };
    const auto expectLines = [&](const Values& x, const Values& y, const std::string& lines) {
        EXPECT_EQ(write("c", x, y), Status::Success);
        EXPECT_TRUE(Holds(dir.Read("c.pcl"), "/ls1\n" + lines + "c.lic\n"));
    };
    expectLines({1, 2}, {3, 3}, "/w1,2,1.5,6\n");
    expectLines({4}, {0}, "/st7\n/w2,8,-1,1\n");
    EXPECT_EQ(write("/c", {1}, {1}), Status::Error);
    EXPECT_EQ(dir.Files(), (std::vector<std::string>{"c.lic", "c.pcl"}));
}

}  // namespace
}  // namespace photrak
