// Waveforms against the shapes that they are made of, sample by sample over the whole period.
#include "models/sources/signal_generator.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <tuple>
#include <vector>

#include "models/sources/drive_pulses.h"
#include "numeric/random.h"
#include "support/model_parameters.h"
#include "support/signals.h"

namespace photrak {
namespace {

using Bits = std::vector<std::int16_t>;
using Volts = std::vector<double>;

constexpr double T = 100e-12;  // of the bits, s
constexpr double pi = std::numbers::pi;

Owned<BinSig> Pattern(const Bits& bits) {
    Owned<BinSig> sig;
    EXPECT_EQ(Make(sig, CreateBinSig, static_cast<std::int32_t>(bits.size())), 0);
    sig->bitRate = 1.0 / T;
    sig->startTime = 7e-12;
    std::copy(bits.begin(), bits.end(), sig->bitSequence + 1);
    return sig;
}

SignalGeneratorParams Params(std::string driveType, std::int32_t pointsPerBit = 5) {
    SignalGeneratorParams params;
    params.driveType = std::move(driveType);
    params.pointsPerBit = pointsPerBit;
    params.Vmax = 2.5;
    params.Vmin = -0.5;
    params.tr = 30e-12;
    params.tf = 45e-12;
    params.filterType = "None";
    params.modulationType = "NRZ";
    params.bitWidth = T;
    return params;
}

struct Generated : Outcome {
    Generated(const SignalGeneratorParams& params, const Bits& bits) : Outcome(ElecSigType) {
        const Owned<BinSig> pattern = Pattern(bits);
        const Nodelist input{nullptr, BinSigType, pattern.get()};
        status = Signal_Generator(params, &input, &output, {"drive", text});
    }
    const ElecSig& Wave() const { return Made<ElecSig>(); }
};

Volts Generate(const SignalGeneratorParams& params, const Bits& bits) {
    const Generated generated(params, bits);
    const ElecSig& wave = generated.Wave();
    Volts volts;
    for (std::int32_t i = 1; i <= wave.noPoints; ++i) volts.push_back(wave.elecSamples[i].re);
    return volts;
}

/// Patterns that begin and end with every pair of bits, two bits, and one.
const std::vector<Bits> patterns = {
    {0, 1, 0, 0, 1, 1, 1, 0, 1, 0}, {1, 1, 0, 1, 0, 0, 1, 1}, {1, 0}, {1}, {0}};

int BitAt(const Bits& bits, double k) {
    const int n = static_cast<int>(bits.size());
    return bits[(static_cast<int>(k) % n + n) % n];
}

// Heights at x, which like rise and fall counts bits.

/// The levels 0 and 1 with straight edges, centered on the boundaries of the slots.
double Ramp(const Bits& bits, double x, double rise, double fall) {
    const double boundary = std::round(x);
    const int before = BitAt(bits, boundary - 1), after = BitAt(bits, boundary);
    if (before == after) return before;
    const double edge = after ? rise : fall;
    const double done =
        edge > 0.0 ? std::clamp((x - boundary) / edge + 0.5, 0.0, 1.0) : x >= boundary;
    return after ? done : 1.0 - done;
}

/// Only the pulses of two neighbors meet.
double RaisedCosines(const Bits& bits, double x, double, double) {
    const double k = std::floor(x - 0.5), between = std::cos(pi * (x - 0.5 - k));
    return 0.5 * (BitAt(bits, k) * (1.0 + between) + BitAt(bits, k + 1) * (1.0 - between));
}

struct Shape {
    const char* type;
    double rise, fall;
    double (*height)(const Bits& bits, double x, double rise, double fall);
};

// A bit that returns to zero is two bits, the second a 0, in half the time. With Vmax below Vmin
// the same shape comes from 1s and 0s in each other's place.
void ExpectShape(const Shape& shape, const Bits& bits, bool returns, bool mirrored) {
    SCOPED_TRACE(testing::Message() << shape.type << " " << shape.rise << " " << returns << mirrored
                                    << testing::PrintToString(bits));
    SignalGeneratorParams params = Params(shape.type);
    params.tr = shape.rise * T;
    params.tf = shape.fall * T;
    if (mirrored) std::swap(params.Vmin, params.Vmax);
    Bits painted = bits;
    if (returns) {
        params.modulationType = "RZ";
        for (std::size_t k = 1; k < painted.size(); k += 2) painted.insert(painted.begin() + k, 0);
        painted.push_back(0);
    }
    const double speed = returns ? 2.0 : 1.0;
    const Volts volts = Generate(params, bits);
    ASSERT_EQ(volts.size(), 32 * bits.size());
    for (std::size_t i = 0; i < volts.size(); ++i) {
        const double height =
            shape.height(painted, speed * i / 32, speed * shape.rise, speed * shape.fall);
        const double expected = params.Vmin + (params.Vmax - params.Vmin) * height;
        ASSERT_NEAR(volts[i], expected, 1e-12) << "sample " << i;  // rounding of a few volts
    }
}

TEST(SignalGenerator, PaintsItsShapesRoundTheWholePeriod) {
    const Shape shapes[] = {{"on_off_ramp", 0.3, 0.45, Ramp},
                            {"on_off_ramp", 0.0, 0.3, Ramp},
                            {"on_off_ramp", 0.5, 0.5, Ramp},
                            {"raisedCosine", 0.0, 0.0, RaisedCosines}};
    for (const Shape& shape : shapes) {
        for (const Bits& bits : patterns) {
            for (const bool returns : {false, true}) {
                ExpectShape(shape, bits, returns, false);
                if (shape.rise == shape.fall) ExpectShape(shape, bits, returns, true);
            }
        }
    }
}

TEST(SignalGenerator, KeepsTheAxesOfThePattern) {
    SignalGeneratorParams params = Params("raisedCosine");
    params.filterType = "of a raised cosine it is not looked at";
    const Generated generated(params, {1, 0, 1, 1, 0});
    const ElecSig& wave = generated.Wave();
    EXPECT_EQ(std::tuple(wave.bitRate, wave.patternLength, wave.startTime),
              std::tuple(1.0 / T, 5, 7e-12));
    EXPECT_EQ(wave.tStep, 1.0 / (wave.bitRate / 5 * 160)) << "exactly that of a laser";
}

class TimeJitter : public testing::Test {
  protected:
    static constexpr double sigma = 4e-12;
    TimeJitter() { ResetRandomState(); }
    static Volts Jittered(const char* type, const Bits& bits, double jitter = sigma) {
        SignalGeneratorParams params = Params(type, 7);
        params.timeJitter = jitter;
        return Generate(params, bits);
    }
    /// In bits, from a sequence of the generator's own.
    double Draw(double jitter = sigma) { return jitter / T * ClippedGaussianRandom(&seed_); }

    /// Edges are drawn at every turn but the last, start before end, whatever the bit; within a
    /// run of ones there is no start.
    Volts PredictedRectangles(const Bits& bits, double jitter) {
        Volts volts(bits.size() * 128, -0.5);
        for (std::size_t k = 0; k < bits.size(); ++k) {
            double start = k, end = k + 1.0;
            if (k > 0 && k + 1 < bits.size()) {
                start += bits[k - 1] && bits[k] ? 0.0 : Draw(jitter);
                end += Draw(jitter);
            }
            if (k > 0 && bits[k - 1] && bits[k]) start -= 0.5;  // the run is flat up to here
            for (std::size_t i = 0; bits[k] && i < volts.size(); ++i) {
                if (i >= 128 * start - 1e-6 && i < 128 * end - 1e-6) volts[i] = 2.5;
            }
        }
        return volts;
    }

  private:
    int seed_ = 157;
};

TEST_F(TimeJitter, DrawsAnEdgeAtEveryTurnAndRunsOnFromSignalToSignal) {
    const Bits bits = {0, 1, 0, 0, 1, 1, 1, 0, 0, 1, 1, 0};
    const double jitters[] = {sigma, 0.0, sigma};  // without jitter it draws all the same
    std::vector<Volts> signals, predicted;
    for (const double jitter : jitters) signals.push_back(Jittered("on_off_exp", bits, jitter));
    ResetRandomState();
    for (const double jitter : jitters) predicted.push_back(PredictedRectangles(bits, jitter));
    EXPECT_EQ(signals, predicted);
}

TEST_F(TimeJitter, ShiftsARaisedCosineAsAWholeTheFirstOneToo) {
    const Bits bits = {1, 0, 0, 1, 0, 0, 0};
    const Volts volts = Jittered("raisedCosine", bits);
    ResetRandomState();
    for (int k = 0; k < 4; ++k) {
        const double center = k + 0.5 + Draw();
        for (int i = 128 * k; bits[k] && i < 128 * (k + 1); ++i) {
            EXPECT_NEAR(volts[i], -0.5 + 1.5 * (1.0 + std::cos(pi * (i / 128.0 - center))), 1e-9);
        }
    }
}

TEST_F(TimeJitter, LeavesNoNotchInARunOfOnes) {
    const Bits bits = {0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0};
    for (const char* type : {"on_off_ramp", "on_off_exp", "raisedCosine"}) {
        const Volts volts = Jittered(type, bits, 0.1 * T);
        for (std::size_t i = 2 * 128; i < 12 * 128; ++i) ASSERT_EQ(volts[i], 2.5) << type << i;
    }
}

/// Spectrum by the sum itself: X[k] = sum x[i] exp(-2 pi j i k / n).
std::complex<double> Bin(const Volts& volts, std::size_t k) {
    std::complex<double> sum;
    for (std::size_t i = 0; i < volts.size(); ++i) {
        const auto turns = static_cast<double>(i * k % volts.size()) / volts.size();
        sum += volts[i] * std::polar(1.0, -2.0 * pi * turns);
    }
    return sum;
}

TEST(DriveFilter, MultipliesTheSpectrumByItsTransferFunction) {
    const Bits bits = {0, 1, 1, 0, 1, 0, 0, 0};
    SignalGeneratorParams params = Params("on_off_exp", 3);
    const double f0 = params.f0 = 12e9, gamma = params.gamma = 9e9;
    const Volts plain = Generate(params, bits);
    // 1 / ln 9, of which eight digits are in use.
    const double tau = params.tr * 0.45511960861898226;
    for (const std::string filter : {"RCFilter", "RingFilter"}) {
        params.filterType = filter;
        const Volts filtered = Generate(params, bits);
        for (std::size_t k = 0; k <= 32; ++k) {
            const double f = k / (8.0 * T), m = pi * (1.0 + k / 32.0);
            const double taper = 0.42 - 0.5 * std::cos(m) + 0.08 * std::cos(2.0 * m);
            const auto ring = f0 * f0 / std::complex<double>(f0 * f0 - f * f, gamma * f);
            auto h = (filter == "RCFilter" ? taper : ring) /
                     std::complex<double>(1.0, 2.0 * pi * f * tau);
            if (k == 32) h = std::norm(h);  // the bin is its own mirror
            const auto expected = Bin(plain, k) * h;
            EXPECT_LT(std::abs(Bin(filtered, k) - expected), 1e-12) << filter << " bin " << k;
        }
    }
}

TEST(SignalGenerator, RefusesWhatItCannotGenerate) {
    const struct {
        void (*change)(SignalGeneratorParams& params);
        std::string_view text;
        Bits bits = {1, 0};
    } rows[] = {
        {[](auto& p) { p.driveType = "on%s"; },
         "Error drive pattern type for the signal generator: on%s\n"
         "Allowed types are on_off_exp, on_off_ramp and raisedCosine.\n"},
        {[](auto& p) { p.filterType = "off"; },
         "Error filter pattern type for the signal generator: off\n"
         "Allowed types are 'RingFilter', 'RCFilter' and 'none'.\n"},
        {[](auto& p) { p.filterType = "RCFilter"; }, "power of two", {1, 0, 1}},
        {[](auto& p) { p.filterType = "RingFilter", p.f0 = 5e9; },
         "the ring filter has no damping"},
        {[](auto& p) { p.pointsPerBit = 26; }, "2 bits of 67108864 samples"},
        {[](auto& p) { p.tr = NAN; }, "'tr' is nan"},
    };
    for (const auto& [change, text, bits] : rows) {
        SignalGeneratorParams params = Params("on_off_ramp");
        change(params);
        Generated(params, bits).ExpectRefusal(text);
    }
}

}  // namespace
}  // namespace photrak
