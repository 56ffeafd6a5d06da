// The example links against the closed forms that their notes name.
#include "link/example_run.h"

namespace photrak::test {
namespace {

class Links : public ExampleRun {};

/// Root mean square width of a power trace, in samples.
double Width(const std::vector<double>& power) {
    double sum = 0, first = 0, second = 0;
    for (std::size_t i = 0; i < power.size(); ++i) {
        sum += power[i];
        first += double(i) * power[i];
        second += double(i) * double(i) * power[i];
    }
    return std::sqrt(second / sum - first / sum * (first / sum));
}

/// 80 km at 0.2 dB/km take 16 dB, whatever dispersion and the Kerr effect do to the shape.
TEST_F(Links, NrzLinkLosesSixteenDecibels) {
    Run("run nrz-link.top");
    const auto sent = Column("nrz-sent_mag.sig", 1), arrived = Column("nrz-arrived_mag.sig", 1);
    ASSERT_EQ(sent.size(), 4096u);
    ASSERT_EQ(arrived.size(), 4096u);
    EXPECT_NEAR(10 * std::log10(Mean(sent) / Mean(arrived)), 16.0, 0.01);
}

/// With 2^12 bits the fiber would go on for minutes; what was written before the stop is whole.
TEST_F(Links, AStopRequestEndsTheRunAndKeepsWhatWasWritten) {
    std::string link = FileText("nrz-link.top");
    const std::string length = "PARAM patternLength IntType\nVALUE ";
    link.replace(link.find(length), length.size() + 1, length + "12");
    WriteText("long.top", link);
    const ProgramResult result =
        RunProgram("timeout --preserve-status --signal=INT 3 " PHOTRAK_BINARY_DIR
                   "/bin/photrak run --no-commands --quiet --set length=1e8 long.top");
    EXPECT_EQ(result.status, 130) << result.error;
    EXPECT_NE(result.error.find("stopped on request"), std::string::npos) << result.error;
    EXPECT_EQ(Table("nrz-sent_mag.sig").size(), 131072u);
    EXPECT_NE(FileText("log.txt").find("Simulation Completed"), std::string::npos);
}

/// A fundamental soliton of the scheme's own coefficients keeps its shape; fifty meters of step in
/// a dispersion length of five kilometers leave errors of the second order, below a thousandth.
TEST_F(Links, SolitonComesOutAsItWentIn) {
    Run("run soliton.top");
    const auto before = Column("soliton-before_mag.sig", 1),
               after = Column("soliton-after_mag.sig", 1);
    ASSERT_EQ(before.size(), after.size());
    const double peak = Peak(before);
    EXPECT_NEAR(Peak(after), peak, 2e-3 * peak);
    EXPECT_NEAR(Width(after), Width(before), 5e-3 * Width(before));
}

/// Behind z a Gaussian is sqrt(1 + (z / L)^2) times as wide: twice at z = sqrt(3) L.
TEST_F(Links, GaussianDoublesItsWidth) {
    Run("run gaussian.top");
    const auto before = Column("gaussian-before_mag.sig", 1),
               after = Column("gaussian-after_mag.sig", 1);
    EXPECT_NEAR(Width(after) / Width(before), 2.0, 2e-3);
    EXPECT_NEAR(Peak(before) / Peak(after), 2.0, 2e-3);
}

/// The receiver cannot tell stored light from the light itself.
TEST_F(Links, ASavedSignalLoadsBackInEveryDigit) {
    Run("run save-signal.top");
    Run("run load-signal.top");
    const std::string received = FileText("save-received_real.sig");
    EXPECT_EQ(std::count(received.begin(), received.end(), '\n'), 4096);
    EXPECT_TRUE(FileText("load-received_real.sig") == received);
}

}  // namespace
}  // namespace photrak::test
