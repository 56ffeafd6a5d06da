// Where each sample of a waveform stands in the eye, and what the viewer is told.
#include "results/eye_plot.h"

#include "numeric/random.h"
#include "results/plot_fixture.h"
#include "support/holds.h"

namespace photrak {
namespace {

using EyeDiagram = PlotModelTest;

/// Samples 1, 2, 3, ...: the value of a sample is its number.
std::vector<Complex> Numbered(int n) {
    std::vector<Complex> samples;
    for (int i = 1; i <= n; ++i) samples.push_back({static_cast<double>(i), 0.0});
    return samples;
}

TEST_F(EyeDiagram, FoldsEverySampleToItsPlace) {
    constexpr int bits = 8, perBit = 4, n = bits * perBit;
    const struct {
        const char* manchester;
        double Toffset;  // steps
        std::vector<int> traces;
        int rows, offset;
    } rows[] = {
        {"FALSE", 0.0, {2, 3, 4}, perBit, 0},   {"FALSE", 1.5, {2, 3, 4}, perBit, 1},
        {"FALSE", 14.0, {2, 3, 4}, perBit, 14},  // the last trace runs past the end
        {"FALSE", -3.0, {2, 3, 4}, perBit, 0},  {"TRUE", 2.0, {2, 4}, 2 * perBit, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.Toffset);
        ClearInputs();
        AddElectrical(Numbered(n)).patternLength = bits;
        ElecSig& late = AddElectrical(Numbered(n));  // ahead of the first by three samples
        late.startTime = -3e-12;
        AddBits({0, 1, 0, 1, 0, 1, 0, 1});  // never takes part
        ParameterList parameters;
        parameters.Double("Toffset", row.Toffset * 1e-12)
            .Text("ManchesterEncoded", row.manchester, EnumType)
            .Text("ShowNoise", "FALSE", EnumType);
        ASSERT_EQ(Run(RunEyeDiagram, parameters), Status::Success) << text;
        const auto found = Rows("phtmpplot.eye");
        const std::size_t traces = row.traces.size();
        ASSERT_EQ(found.size(), static_cast<std::size_t>(row.rows));
        for (int k = 0; k < row.rows; ++k) {
            const auto& values = found[static_cast<std::size_t>(k)];
            ASSERT_EQ(values.size(), 1 + 2 * traces);
            EXPECT_NEAR(values[0], k * 1e-12, 1e-17);
            for (std::size_t j = 0; j < traces; ++j) {
                const int position = row.traces[j] * perBit + row.offset + k;
                if (position >= n) {
                    EXPECT_TRUE(std::isnan(values[1 + j]) && std::isnan(values[1 + traces + j]));
                    continue;
                }
                EXPECT_EQ(values[1 + j], position + 1);
                EXPECT_EQ(values[1 + traces + j], (position + 3) % n + 1);
            }
        }
        EXPECT_EQ(dir.Read("phtmpplot.pce"),
                  "/xl\"Time (s)\"\n/yl\"Signal (V)\"\n/tt\"plot Eye Diagram\"\n/lc2\n/ls1\n"
                  "phtmpplot.eye\n/nx1 /ny" +
                      std::to_string(2 * traces) + "\n");
    }
}

TEST_F(EyeDiagram, ShowsPowersOfTheirPolarization) {
    // Two samples per bit: 10 mW in x, once 2 mW and once darkness, and 5 mW in y; the weakest
    // light of x, 0.1 mW, lies outside of the eye.
    std::vector<Complex> ex(16, {0.1, 0.0}), ey(16, {0.0, std::sqrt(0.005)});
    ex[0] = {0.01, 0.0};
    ex[5] = {};
    ex[7] = {0.0, std::sqrt(2e-3)};
    AddChannel(AddOptical(), ex, ey).patternLength = 8;
    AddElectrical(Numbered(16));  // of another kind
    ParameterList x, y;
    x.Text("PowerUnits", "dBm", EnumType).Text("Polarization", "x_only", EnumType);
    ASSERT_EQ(Run(RunEyeDiagram, x.Double("Toffset", 1e-12)), Status::Success) << text;
    EXPECT_EQ(dir.Read("phtmpplot.eye"), "0 -110 3.0103 10\n1e-12 10 10 10\n");
    EXPECT_TRUE(Holds(dir.Read("phtmpplot.pce"),
                      "/yl\"Signal (dBm)\"\n/tt\"plot Eye Diagram\"\n/lc2\n/ls1\n"
                      "/tb\"x polarization\"\nphtmpplot.eye\n/nx1 /ny3\n"));
    ASSERT_EQ(Run(RunEyeDiagram), Status::Success) << text;
    EXPECT_EQ(dir.Read("phtmpplot.eye"), "0 0.015 0.015 0.015\n1e-12 0.005 0.007 0.015\n");
    ASSERT_EQ(Run(RunEyeDiagram, y.Text("Polarization", "y_only", EnumType)), Status::Success);
    EXPECT_TRUE(Holds(dir.Read("phtmpplot.pce"),
                      "/ls1\n/tb\"y polarization\"\n/w0,1e-12,0.0025,0.01\nphtmpplot.eye\n"));
}

// One draw for every sample of a signal before it is folded, signal after signal.
TEST_F(EyeDiagram, DrawsItsOwnNoise) {
    constexpr std::size_t perBit = 4, traces = 3, n = 8 * perBit;
    for (int signal = 0; signal < 2; ++signal) {
        ElecSig& wave = AddElectrical(std::vector<Complex>(n, {-3.0, 4.0}));
        wave.patternLength = 8;
        for (std::size_t i = 1; i <= n; ++i) wave.sigmaSamples[i].re = 0.1 * double(i);
    }
    ResetRandomState();
    ParameterList magnitude;
    magnitude.Text("Representation", "Magnitude", EnumType);
    ASSERT_EQ(Run(RunEyeDiagram, magnitude), Status::Success) << text;

    ResetRandomState();
    int seed = -10;
    std::vector<double> draws;
    for (std::size_t i = 0; i < 2 * n; ++i) draws.push_back(GaussianRandom(&seed));
    const auto rows = Rows("phtmpplot.eye");
    ASSERT_EQ(rows.size(), perBit);
    for (std::size_t k = 0; k < perBit; ++k) {
        for (std::size_t column = 0; column < 2 * traces; ++column) {
            const std::size_t sample = (2 + column % traces) * perBit + k;  // from 0
            const double draw = draws[column / traces * n + sample];
            EXPECT_NEAR(rows[k][1 + column], 5.0 + 0.1 * double(sample + 1) * draw, 1e-4);
        }
    }
}

TEST_F(EyeDiagram, SaysWhenThereIsNoEye) {
    EXPECT_EQ(Run(RunEyeDiagram), Status::Error);
    EXPECT_EQ(text, "ERROR plotting eye diagram: no input signals\n");
    ElecSig& wave = AddElectrical(Numbered(16));
    const struct {
        int bits;
        Status status;
        const char *words, *eye;
    } rows[] = {
        {5, Status::Warning, "the pattern has 5 bits; an eye needs at least 6.", ""},
        {0, Status::Warning, "the pattern has 1 bit; an eye", ""},
        {17, Status::Warning, "the pattern has 17 bits in 16 samples.", ""},
        {7, Status::Warning, "folded at 2 samples per bit", "0 5 7\n1e-12 6 8\n"},
        {16, Status::Success, "", "0 3 4 5 6 7 8 9 10 11 12 13\n"},
    };
    for (const auto& row : rows) {
        wave.patternLength = row.bits;
        EXPECT_EQ(Run(RunEyeDiagram), row.status);
        EXPECT_TRUE(Holds(text, row.words));
        EXPECT_EQ(dir.Read("phtmpplot.eye"), row.eye);
    }
    EXPECT_TRUE(Holds(dir.Read("phtmpplot.pce"), "/ls1\n/st7\nphtmpplot.eye\n/nx1 /ny11\n"));
}

}  // namespace
}  // namespace photrak
