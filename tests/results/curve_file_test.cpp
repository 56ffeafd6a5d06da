// A single curve, and the room that its axes get.
#include "results/curve_file.h"

#include "results/plot_fixture.h"
#include "support/holds.h"

namespace photrak {
namespace {

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
