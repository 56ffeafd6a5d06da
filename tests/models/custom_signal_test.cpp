#include "models/sources/custom_signal.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <tuple>

#include "base/text.h"
#include "models/sources/custom_table.h"
#include "support/model_parameters.h"
#include "support/signals.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

constexpr double degree = std::numbers::pi / 180.0;

/// Two bits of four samples, 1 s apart.
CustomSignalParams Params(std::string_view type) {
    CustomSignalParams params;
    params.signalType = type;
    params.filename = "wave.txt";
    params.bitRate = 0.25;
    params.pointsPerBit = 4;
    params.patternLength = 2;
    params.wavelength = 1.55e-6;
    return params;
}

class CustomSignal : public testing::Test {
  protected:
    struct Result : Outcome {
        OutputCell bits{BinSigType};
        Result() : Outcome(UnknownSigType) { output.next = &bits; }
        std::complex<double> At(std::int32_t i) const {
            return output.sigType == ElecSigType ? Value(Made<ElecSig>().elecSamples[i])
                                                 : Value(Made<OpSignal>().channels->Ex_samples[i]);
        }
    };

    std::unique_ptr<Result> Run(const CustomSignalParams& params, std::string_view file) {
        directory.Write("wave.txt", file);
        auto result = std::make_unique<Result>();
        result->status = Signal_Gen_Custom(params, &result->output, {"scope", result->text});
        return result;
    }

    TempDir directory;
};

/// Eight lines at 0 s to 7 s with these columns behind the time.
std::string Lines(std::string_view columns) {
    std::string text;
    for (int i = 0; i < 8; ++i) text += Concat(i, "\t", columns, "\n");
    return text;
}

TEST_F(CustomSignal, UnderstandsItsSignalTypes) {
    const struct {
        std::string_view type, columns;
        std::complex<double> sample;
    } rows[] = {
        {"VOLTAGE", "-1.5 free text 7", {-1.5, 0}},
        {"OPTICALDBM", "3", {std::sqrt(std::pow(10.0, 0.3) * 1e-3), 0}},
        {"OPTICALWATT", "0.25", {0.5, 0}},
        {"OPTICAL_REAL_IMAG", "0.5 -0.25", {0.5, -0.25}},
        {"OPTICAL_AMP_PHASE", "2\t30", std::polar(2.0, 30 * degree)},
        {"OPTICAL_AMP_PHASE_RAD", "2 -1.25", std::polar(2.0, -1.25)},
        {"OPTICAL_POWER_PHASE", "4 120", std::polar(2.0, 120 * degree)},
    };
    for (const auto& [type, columns, sample] : rows) {
        SCOPED_TRACE(type);
        const auto result = Run(Params(type), Lines(columns));
        for (std::int32_t i = 1; i <= 8; ++i) {
            EXPECT_LT(std::abs(result->At(i) - sample), 1e-15) << i;
        }
    }
}

// By design: real parts find the extremes, whose magnitudes set the threshold. In the
// second file the lowest real part has the greatest magnitude, and no sample exceeds half of the
// sum.
TEST_F(CustomSignal, GivesWaveformAndBitsOneGrid) {
    for (const std::string file : {"10 0\n11 0\n12 0\n13 0\n14 0\n15 2\n16 5\n17 5\n18 5\n",
                                   "10 1\n11 1\n12 2\n13 1\n14 -9\n15 -9\n16 -9\n17 -9\n"}) {
        const auto electrical = Run(Params("CURRENT"), file);
        const auto& wave = electrical->output.As<ElecSig>();
        EXPECT_EQ(std::tuple(wave.UnitType, wave.noPoints, wave.tStep, wave.startTime, wave.bitRate,
                             wave.patternLength),
                  std::tuple(CurrentUnit, 8, 1.0, 10.0, 0.25, 2));
        const auto& bits = electrical->bits.As<BinSig>();
        EXPECT_EQ(bits.bitSequence[1], 0) << "of magnitudes 2 and 9, 2 is below the middle";
        EXPECT_EQ(bits.bitSequence[2], 1) << "by sample 7, the middle of the bit";
    }
}

// A cubic goes through four points exactly, between the lines, and beyond the last.
TEST_F(CustomSignal, ResamplesACubicExactly) {
    const auto cubic = [](double t) { return 50.0 + t - 0.5 * t * t + 0.25 * t * t * t; };
    std::string file;
    for (const double t : {0.0, 0.7, 1.1, 2.5, 3.0, 4.9}) {
        file += Concat(t, " ", FormatSignificant(cubic(t), 17), "\n");
    }
    const auto result = Run(Params("VOLTAGE"), file);
    for (std::int32_t i = 1; i <= 8; ++i) {
        EXPECT_NEAR(result->At(i).real(), cubic(i - 1), 1e-11) << i;
    }
}

TEST_F(CustomSignal, PassesOverFreeTextUpToAnAsterisk) {
    const auto result =
        Run(Params("VOLTAGE"), "0 1 V * a remark\n\n  1\t1 * 2 1 * 3 1\r\n4 1* 5 1\n6 1,0 V\n7 1");
    EXPECT_EQ(result->At(8), std::complex<double>(1.0, 0.0));
}

TEST_F(CustomSignal, WarnsOfUncertainSamplesOneByOneOrTogether) {
    // A spike in the middle of zeros: on it the interpolation is sure, beside it it is not.
    const std::string spike = "0 0\n1 0\n2 0\n3 100\n4 0\n5 0\n6 0\n7 0\n";
    CustomSignalParams params = Params("VOLTAGE");
    params.bitRate = 0.5;  // steps of 0.5 s
    const auto few = Run(params, spike);
    // At 0.5 s the cubic through 0, 0, 0, 100 gives 6.25, corrected by as much in its last step.
    EXPECT_TRUE(few->text.starts_with(
        "Warning: Error exceeds 100 percent while interpolate current input!\n"
        "t=5e+11ps, real input = 6.25, imag input = 0, error = 6.25\n"))
        << few->text;
    params.pointsPerBit = 64;
    EXPECT_NE(Run(params, spike)->text.find("component 'scope': this concerns "),
              std::string::npos);
}

TEST_F(CustomSignal, RefusesBadFilesAndParameters) {
    const std::string file = "ERROR: component 'scope': custom signal file 'wave.txt'";
    const std::string good = Lines("1");
    const struct {
        std::string file, complaint;
        void (*change)(CustomSignalParams& params) = [](CustomSignalParams&) {};
    } rows[] = {
        {"", file + " has 0 samples; at least 4"},
        {"0 1\n1 1\n1 2\n2 1\n", file + ", line 3, is not later"},
        {"0 1\n1 1e999\n", file + ", line 2, holds a value beyond"},
        {std::string(maxCustomLines + 2, '\n'), file + " has more than"},
        {good, "ERROR: signal type of component scope invalid\n",
         [](auto& params) { params.signalType = "VOLT"; }},
        {good, "Cannot open file: none%s.txt.\n",
         [](auto& params) { params.filename = "none%s.txt"; }},
        {good, "make no signal",
         [](auto& params) { params.pointsPerBit = params.patternLength = 1 << 20; }},
    };
    for (const auto& row : rows) {
        CustomSignalParams params = Params("VOLTAGE");
        row.change(params);
        Run(params, row.file)->ExpectRefusal(row.complaint);
    }
}

}  // namespace
}  // namespace photrak
