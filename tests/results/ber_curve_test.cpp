// The command file of the curve, line by line, over the cases that set its limits.
#include "results/ber_curve.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace photrak
