// The command file of the curve, line by line, over the cases that set its limits.
#include "results/ber_curve.h"

#include <gtest/gtest.h>

namespace photrak {
namespace {

TEST(BerCurve, OptionsFollowPointsCurvesAndLimits) {
    const std::string single = "/xl\"Single BER Result\"\n/yl\"BER\"\n";
    const std::string swept = "/xl\"rx power\"\n/yl\"BER\"\n";
    const struct {
        const char* what;
        std::vector<double> inner, outer;
        std::vector<double> BER;  // by outer, then by inner value
        std::string lines;        // between the title and the last
    } rows[] = {
        {"a lone point is given room",
         {0},
         {0},
         {3e-9},
         single + "/lc2\n/ls1\n/st7\n/w,,1e-10,1e-07\n/ly2 1e-10,1e-07\nF\n"},
        {"a lone 0 has no logarithm", {0}, {0}, {0}, single + "/lc2\n/ls1\n/st7\n/w,,-10,10\nF\n"},
        {"rates far apart show as they are",
         {1, 2, 3},
         {0},
         {3e-9, 1e-6, -1},
         swept + "/lc2\n/ls1\n/st\n/ly2 1e-09,1e-06\nF\n"},
        {"rates close together",
         {1, 2},
         {0},
         {3e-9, 5e-9},
         swept + "/lc2\n/ls1\n/st\n/w1,2,1e-10,1e-07\n/ly2 1e-10,1e-07\nF\n"},
        {"a 0 among points stays out of the limits",
         {1, 2, 3},
         {0},
         {0, 3e-9, 1e-4},
         swept + "/lc2\n/ls1\n/st\n/w1,3,1e-09,0.0001\n/ly2 1e-09,0.0001\nF\n"},
        {"nothing but 0", {1, 2}, {0}, {0, -1}, swept + "/lc2\n/ls1\n/st\n/w1,2,-10,10\nF\n"},
        {"one point for each curve",
         {4},
         {5, 6},
         {1e-3, 1e-12},
         single + "/l\n/st7\n/w2,8,1e-12,0.001\n/ly 1e-12,0.001\nF\n"
                  "/lt\"fiber length = 5\"\n/lt\"fiber length = 6\"\n"},
        {"one point for each curve at 0",
         {0},
         {5, 6},
         {1e-3, 1e-12},
         single + "/l\n/st7\n/w-1,1,1e-12,0.001\n/ly 1e-12,0.001\nF\n"
                  "/lt\"fiber length = 5\"\n/lt\"fiber length = 6\"\n"},
        {"a 0 for one of them",
         {4},
         {5, 6},
         {0, 3e-3},
         single + "/l\n/st7\n/w,,0.0001,0.1\nF\n"
                  "/lt\"fiber length = 5\"\n/lt\"fiber length = 6\"\n"},
        {"several curves",
         {1, 2},
         {5, 6},
         {1e-3, 1e-5, 1e-4, 1e-12},
         swept + "/l\n/st\n/ly 1e-12,0.001\nF\n"
                 "/lt\"fiber length = 5\"\n/lt\"fiber length = 6\"\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        BerCurve curve("rx_power", row.inner, row.outer.size() > 1 ? "fiber_length" : "",
                       row.outer);
        for (std::size_t k = 0; k < row.BER.size(); ++k) {
            curve.Set(k % row.inner.size(), k / row.inner.size(), row.BER[k]);
        }
        EXPECT_EQ(curve.Script("F"), "/tt\"BER Graph\"\n" + row.lines + "/nx1\n");
    }
}

TEST(BerCurve, DecadesOfTheLeastRateAreNumbers) {
    BerCurve curve("", {0}, "", {0});
    curve.Set(0, 0, 5e-324);
    EXPECT_EQ(curve.Script("F").find("inf"), std::string::npos);
    EXPECT_NE(curve.Script("F").find("/ly2 9.88131e-324,"), std::string::npos) << curve.Script("F");
}

TEST(BerCurve, OneLineForEachInnerValue) {
    BerCurve curve("a", {1, 2}, "b", {3, 4, 5});
    const std::vector<std::string> none = {"1 . . . \n", "2 . . . \n"};
    EXPECT_EQ(curve.Lines(), none);
    curve.Set(1, 0, 0.25);
    curve.Set(1, 2, 0.0);
    EXPECT_EQ(curve.Lines()[0], none[0]);
    EXPECT_EQ(curve.Lines()[1], "2 0.25 . 0\n");
    curve.Set(1, 1, 1e-12);
    curve.Set(1, 2, -1.0);
    EXPECT_EQ(curve.Lines()[1], "2 0.25 1e-12 . \n");
}

}  // namespace
}  // namespace photrak
