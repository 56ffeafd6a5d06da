// The example links against the closed forms that their notes name.
#include <functional>

#include "link/example_run.h"
#include "support/paths.h"

namespace photrak::test {
namespace {

class Links : public ExampleRun {};

double MeanOf(const std::string& trace) {
    return Mean(Column(trace + "_mag.sig", 1));
}
double PeakOf(const std::string& trace) {
    return Peak(Column(trace + "_mag.sig", 1));
}

TEST_F(Links, ShowTheClosedFormsOfTheirNotes) {
    const double gamma = 2 * M_PI * 2.6e-20 / (1548.4e-9 * 80e-12);
    const struct {
        const char* example;
        std::function<double()> measured;
        double expected, tolerance;
    } rows[] = {
        // 80 km at 0.2 dB/km, whatever dispersion and the Kerr effect do to the shape.
        {"nrz-link", [] { return 10 * std::log10(MeanOf("nrz-sent") / MeanOf("nrz-arrived")); }, 16,
         0.01},
        // A fundamental soliton of the scheme's own coefficients keeps its shape; fifty meters of
        // step in a dispersion length of five kilometers leave errors of the second order, below a
        // thousandth.
        {"soliton", [] { return PeakOf("soliton-after") / PeakOf("soliton-before"); }, 1, 2e-3},
        // A Gaussian is sqrt(1 + (z / L)^2) times as wide behind z: twice at z = sqrt(3) L.
        {"gaussian", [] { return PeakOf("gaussian-before") / PeakOf("gaussian-after"); }, 2, 2e-3},
        // Three pulses turn the phase of a probe, each twice as far as it turns its own.
        {"cross-phase",
         [] {
             const auto phase = Column("xpm-probe_xphase.sig", 1);
             return Peak(phase) - Least(phase);
         },
         3 * 2 * gamma * 10e-3 * 10e3, 1e-5},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.example);
        Run(std::string("run ") + row.example + ".top");
        EXPECT_NEAR(row.measured(), row.expected, row.tolerance);
    }
    EXPECT_NEAR(MeanOf("soliton-after") / MeanOf("soliton-before"), 1.0, 1e-6);
    EXPECT_NEAR(MeanOf("gaussian-after") / MeanOf("gaussian-before"), 1.0, 1e-6);
}

struct Eye {
    double opening = 0.0;  // widest over the bit, of the distance between the mean levels
    double mean = 0.0;     // of all values
};

Eye EyeOf(const std::string& file) {
    Eye eye;
    const auto rows = Table(file);
    for (const auto& row : rows) {
        const std::vector<double> values(row.begin() + 1, row.end());
        const double middle = 0.5 * (Peak(values) + Least(values));
        std::vector<double> ones, zeros;
        for (const double value : values) (value > middle ? ones : zeros).push_back(value);
        const double opening = (Least(ones) - Peak(zeros)) / (Mean(ones) - Mean(zeros));
        eye.opening = std::max(eye.opening, opening);
        eye.mean += Mean(values) / double(rows.size());
    }
    return eye;
}

/// Loss alone would leave the opening as it is; dispersion and the Kerr effect do not.
TEST_F(Links, AnEyeClosesAlongTheFiber) {
    Run("run eye-10g.top");
    const Eye sent = EyeOf("eye-sent.eye"), arrived = EyeOf("eye-arrived.eye");
    const auto rows = Table("eye-sent.eye");
    EXPECT_EQ(rows.size(), 32u);
    EXPECT_EQ(rows.at(0).size(), 1u + 128 - 5);
    EXPECT_GT(sent.opening, 0.99);
    EXPECT_LT(arrived.opening, 0.9);
    EXPECT_GT(EyeOf("eye-received.eye").opening, 0.5);
    EXPECT_NEAR(10 * std::log10(sent.mean / arrived.mean), 16.0, 0.02);
    Run("run --set length=0 eye-10g.top");
    EXPECT_NEAR(EyeOf("eye-arrived.eye").opening, sent.opening, 1e-4);
}

/// With 2^12 bits the fiber would go on for minutes; what was written before the stop is whole.
TEST_F(Links, AStopRequestEndsTheRunAndKeepsWhatWasWritten) {
    std::string link = FileText("nrz-link.top");
    const std::string length = "PARAM patternLength IntType\nVALUE ";
    link.replace(link.find(length), length.size() + 1, length + "12");
    WriteText("long.top", link);
    const ProgramResult result =
        RunProgram("timeout --preserve-status --signal=INT 3 " + BinaryDir() +
                   "/bin/photrak run --no-commands --quiet --set length=1e8 long.top");
    EXPECT_EQ(result.status, 130) << result.error;
    EXPECT_NE(result.error.find("stopped on request"), std::string::npos) << result.error;
    EXPECT_EQ(Table("nrz-sent_mag.sig").size(), 131072u);
    EXPECT_TRUE(FileText("log.txt").ends_with(
        "Simulation Completed\nThe run was stopped before its end\n"));
}

/// A command line is told before it starts, and a stop ends it with all that it started.
TEST_F(Links, AStopRequestEndsTheCommandLineOfABlock) {
    std::string link = FileText("nrz-link.top");
    const std::size_t fiber = link.find("COMPONENT Fiber ");
    const std::size_t end = link.find("ENDCOMPONENT", fiber);
    link.replace(fiber, end - fiber,
                 "COMPONENT Box MultiportOpticalDevice\nNOTE \nICON multporu 225 45\nNUMINPUTS 1\n"
                 "NUMOUTPUTS 1\nINPUTFROM 4\nOUTPUTTO 5\n\nPARAM CommandLine StringType\n"
                 "VALUE sleep 300 & echo $! > b; mv b begun; wait\nENDPARAM\n");
    WriteText("command.top", link);
    const ProgramResult result =
        InterruptedPhotrak({"run", "--quiet", "command.top"}, SIGTERM, "begun");
    EXPECT_EQ(result.status, 128 + SIGTERM) << result.error;
    EXPECT_NE(result.error.find("component 'Box' runs its command line: sleep 300 & echo"),
              std::string::npos)
        << result.error;
    const std::string isAlive = "grep -q ') [^Z]' /proc/$(cat begun)/stat";
    EXPECT_EQ(RunProgram("for i in 1 2 3 4 5 6 7 8 9; do " + isAlive +
                         " || exit 0; sleep 0.1; done; exit 1")
                  .status,
              0);
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
