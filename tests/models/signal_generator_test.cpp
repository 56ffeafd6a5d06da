// Waveforms against the shapes that they are made of, sample by sample over the whole period.
#include "models/sources/signal_generator.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <vector>

#include "models/sources/drive_pulses.h"
#include "numeric/random.h"
#include "support/model_parameters.h"
#include "support/signals.h"

namespace photrak {
namespace {

using Bits = std::vector<int>;
using Volts = std::vector<double>;

constexpr double T = 100e-12;  // of the bits, s
constexpr double pi = std::numbers::pi;

Owned<BinSig> Pattern(const Bits& bits) {
    Owned<BinSig> sig;
    EXPECT_EQ(Make(sig, CreateBinSig, static_cast<std::int32_t>(bits.size())), 0);
    sig->bitRate = 1.0 / T;
    sig->startTime = 7e-12;
    for (std::size_t k = 0; k < bits.size(); ++k) {
        sig->bitSequence[k + 1] = static_cast<std::int16_t>(bits[k]);
    }
    return sig;
}

SignalGeneratorParams Params(std::string driveType, std::int32_t pointsPerBit = 5) {
    SignalGeneratorParams params;
    params.owner = "drive";
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

struct Generated {
    OutputCell output{ElecSigType};
    Status status = Status::Success;
    std::string text;

    Generated(const SignalGeneratorParams& params, const Bits& bits) {
        const Owned<BinSig> pattern = Pattern(bits);
        const Nodelist input{nullptr, BinSigType, pattern.get()};
        status = Signal_Generator(params, &input, &output, text);
    }
    const ElecSig& Wave() const { return output.As<ElecSig>(); }
};

Volts Generate(const SignalGeneratorParams& params, const Bits& bits) {
    const Generated generated(params, bits);
    EXPECT_EQ(generated.status, Status::Success) << generated.text;
    Volts volts;
    if (generated.status != Status::Success) return volts;
    for (std::int32_t i = 1; i <= generated.Wave().noPoints; ++i) {
        volts.push_back(generated.Wave().elecSamples[i].re);
        EXPECT_EQ(generated.Wave().elecSamples[i].im, 0.0);
    }
    return volts;
}

/// Patterns that begin and end with every pair of bits, one bit, and two.
const std::vector<Bits> patterns = {{0, 1, 0, 0, 1, 1, 1, 0, 1, 0},
                                    {1, 1, 0, 1, 0, 0, 1, 1},
                                    {0, 0, 1, 1},
                                    {1, 0, 1, 1, 0, 0},
                                    {1, 1, 1, 1},
                                    {0, 0, 0},
                                    {1, 0},
                                    {0, 1},
                                    {1},
                                    {0}};

int BitAt(const Bits& bits, long k) {
    const auto n = static_cast<long>(bits.size());
    return bits[static_cast<std::size_t>((k % n + n) % n)];
}

/// The levels 0 and 1 with straight edges, centered on the boundaries of the slots.
double Ramp(const Bits& bits, double t, double tr, double tf) {
    const long boundary = std::lround(t / T);
    const int before = BitAt(bits, boundary - 1), after = BitAt(bits, boundary);
    const double fromBoundary = t - static_cast<double>(boundary) * T;
    if (before == after) return before;
    const double edge = after ? tr : tf;
    const double done = edge > 0.0 ? std::clamp(fromBoundary / edge + 0.5, 0.0, 1.0)
                                   : (fromBoundary > -1e-6 * T ? 1.0 : 0.0);
    return after ? done : 1.0 - done;
}

double RaisedCosines(const Bits& bits, double t) {
    double sum = 0.0;
    for (long k = std::lround(t / T) - 3; k <= std::lround(t / T) + 3; ++k) {
        const double fromCenter = t / T - static_cast<double>(k) - 0.5;
        if (std::fabs(fromCenter) < 1.0 && BitAt(bits, k)) {
            sum += 0.5 * (1.0 + std::cos(pi * fromCenter));
        }
    }
    return sum;
}

/// Expects Vmin + (Vmax - Vmin) height(t) at t = 0, tStep, ...
void ExpectShape(const SignalGeneratorParams& params, const Bits& bits,
                 const std::function<double(double t)>& height) {
    SCOPED_TRACE(testing::Message() << params.driveType << " " << testing::PrintToString(bits));
    const Volts volts = Generate(params, bits);
    const double step = T * static_cast<double>(bits.size()) / static_cast<double>(volts.size());
    for (std::size_t i = 0; i < volts.size(); ++i) {
        const double expected =
            params.Vmin + (params.Vmax - params.Vmin) * height(static_cast<double>(i) * step);
        ASSERT_NEAR(volts[i], expected, 1e-12) << "sample " << i;  // rounding of a few volts
    }
}

TEST(SignalGenerator, RampsBetweenLevelsRoundTheWholePeriod) {
    for (const Bits& bits : patterns) {
        for (const auto& [tr, tf] :
             {std::pair{30e-12, 45e-12}, {45e-12, 30e-12}, {0.0, 0.0}, {0.0, 30e-12}, {T, T}}) {
            SignalGeneratorParams params = Params("on_off_ramp");
            params.tr = tr;
            params.tf = tf;
            ExpectShape(params, bits,
                        [&](double t) { return Ramp(bits, t, params.tr, params.tf); });
        }
    }
}

TEST(SignalGenerator, AddsRaisedCosinesUnfiltered) {
    SignalGeneratorParams params = Params("raisedCosine");
    params.filterType = "no filter of this name";
    for (const Bits& bits : patterns) {
        ExpectShape(params, bits, [&](double t) { return RaisedCosines(bits, t); });
    }
}

TEST(SignalGenerator, DrawsRectanglesExactlyOneBitWide) {
    for (const std::int32_t exponent : {0, 1, 3, 5}) {
        for (const Bits& bits : patterns) {
            ExpectShape(Params("on_off_exp", exponent), bits, [&](double t) {
                return BitAt(bits, static_cast<long>(std::floor(t / T + 1e-6)));
            });
        }
    }
}

TEST(SignalGenerator, KeepsTheAxesOfThePattern) {
    for (const std::string modulation : {"NRZ", "RZ"}) {
        SignalGeneratorParams params = Params("on_off_ramp");
        params.modulationType = modulation;
        const Generated generated(params, {1, 0, 1, 1, 0});
        ASSERT_EQ(generated.status, Status::Success);
        const ElecSig& wave = generated.Wave();
        EXPECT_EQ(wave.bitRate, 1.0 / T);
        EXPECT_EQ(wave.patternLength, 5);
        EXPECT_EQ(wave.startTime, 7e-12);
        EXPECT_EQ(wave.tStep, 1.0 / (wave.bitRate / 5 * 160)) << "exactly that of a laser";
    }
}

TEST(SignalGenerator, ReturnsToZeroInTheSecondHalfOfABit) {
    const Bits bits = {1, 0, 1, 1};
    Bits halves;
    for (const int bit : bits) halves.insert(halves.end(), {bit, 0});
    SignalGeneratorParams params = Params("on_off_ramp", 6);
    params.modulationType = "RZ";
    params.tr = params.tf = 10e-12;
    ExpectShape(params, bits,
                [&](double t) { return Ramp(halves, 2.0 * t, 2.0 * params.tr, 2.0 * params.tf); });
}

TEST(SignalGenerator, MirrorsTheWaveformWhenVmaxIsBelowVmin) {
    for (const std::string type : {"on_off_ramp", "on_off_exp", "raisedCosine"}) {
        for (const std::string modulation : {"NRZ", "RZ"}) {
            for (const Bits& bits : patterns) {
                SignalGeneratorParams params = Params(type);
                params.modulationType = modulation;
                params.tf = params.tr;
                const Volts upright = Generate(params, bits);
                std::swap(params.Vmax, params.Vmin);
                const Volts mirrored = Generate(params, bits);
                for (std::size_t i = 0; i < upright.size(); ++i) {
                    ASSERT_NEAR(upright[i] + mirrored[i], params.Vmax + params.Vmin, 1e-12);
                }
            }
        }
    }
}

class TimeJitter : public testing::Test {
  protected:
    TimeJitter() {
        ResetRandomState();
        ResetTimeJitter();
    }
    static constexpr double sigma = 4e-12;
    static SignalGeneratorParams JitteredParams(const std::string& type) {
        SignalGeneratorParams params = Params(type, 7);
        params.timeJitter = sigma;
        return params;
    }
};

/// Draws of a generator's own, from the start.
class Draws {
  public:
    Draws() { ResetRandomState(); }
    double Next() { return ClippedGaussianRandom(&seed_); }

  private:
    int seed_ = 157;
};

/// Edges are drawn at every turn but the last, start before end, whatever the bit; within a run of
/// ones there is no start.
Volts PredictedRectangles(const Bits& bits, double sigma, Draws& draws) {
    const std::size_t samplesPerBit = 128;
    const double step = T / static_cast<double>(samplesPerBit);
    Volts heights(bits.size() * samplesPerBit);
    const auto paint = [&](double start, double end) {
        for (std::size_t i = 0; i < heights.size(); ++i) {
            const double t = static_cast<double>(i) * step;
            if (t >= start - 1e-6 * step && t < end - 1e-6 * step) heights[i] = 1.0;
        }
    };
    for (std::size_t k = 0; k < bits.size(); ++k) {
        double start = static_cast<double>(k) * T, end = start + T;
        if (k > 0 && k + 1 < bits.size()) {
            const bool run = bits[k - 1] && bits[k];
            start += run ? -T / 2 : sigma * draws.Next();  // the run is flat up to here
            end += sigma * draws.Next();
        }
        if (bits[k]) paint(start, end);
    }
    return heights;
}

TEST_F(TimeJitter, DrawsAnEdgeAtEveryTurnAndRunsOnFromSignalToSignal) {
    const Bits bits = {0, 1, 0, 0, 1, 1, 1, 0, 0, 1, 1, 0};
    SignalGeneratorParams params = JitteredParams("on_off_exp");
    params.Vmax = 1.0;
    params.Vmin = 0.0;
    const Volts first = Generate(params, bits);
    params.timeJitter = 0.0;
    Generate(params, bits);  // draws all the same
    params.timeJitter = sigma;
    const Volts third = Generate(params, bits);

    Draws draws;
    EXPECT_EQ(first, PredictedRectangles(bits, sigma, draws));
    PredictedRectangles(bits, 0.0, draws);
    EXPECT_EQ(third, PredictedRectangles(bits, sigma, draws));
    EXPECT_NE(first, third);
}

TEST_F(TimeJitter, ShiftsARaisedCosineAsAWholeTheFirstOneToo) {
    const Bits bits = {1, 0, 0, 1, 0, 0, 0};
    const Volts volts = Generate(JitteredParams("raisedCosine"), bits);
    Draws draws;
    double shifts[7] = {};
    for (int k = 0; k < 6; ++k) shifts[k] = sigma * draws.Next();
    for (const int k : {0, 3}) {
        const double center = (k + 0.5) * T + shifts[k];
        for (std::size_t i = 0; i < volts.size(); ++i) {
            const double fromCenter = static_cast<double>(i) / 128.0 - center / T;
            if (std::fabs(fromCenter) > 0.6) continue;
            EXPECT_NEAR(volts[i], -0.5 + 1.5 * (1.0 + std::cos(pi * fromCenter)), 1e-9);
        }
    }
}

TEST_F(TimeJitter, LeavesNoNotchInARunOfOnes) {
    const Bits bits = {0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0};
    for (const std::string type : {"on_off_ramp", "on_off_exp", "raisedCosine"}) {
        for (int repeat = 0; repeat < 20; ++repeat) {
            SignalGeneratorParams params = JitteredParams(type);
            params.timeJitter = 0.1 * T;
            const Volts volts = Generate(params, bits);
            for (std::size_t i = 2 * 128; i < 12 * 128; ++i) {
                ASSERT_EQ(volts[i], params.Vmax) << type << " sample " << i;
            }
            EXPECT_GE(*std::min_element(volts.begin(), volts.end()), params.Vmin);
            EXPECT_LE(*std::max_element(volts.begin(), volts.end()), params.Vmax);
        }
    }
}

/// Spectrum by the sum itself: X[k] = sum x[i] exp(-2 pi j i k / n).
std::complex<long double> Bin(const Volts& volts, std::size_t k) {
    std::complex<long double> sum = 0.0L;
    const auto n = static_cast<long double>(volts.size());
    for (std::size_t i = 0; i < volts.size(); ++i) {
        const long double angle = 2.0L * std::numbers::pi_v<long double> *
                                  static_cast<long double>(i * k % volts.size()) / n;
        sum += static_cast<long double>(volts[i]) * std::polar(1.0L, -angle);
    }
    return sum;
}

TEST(DriveFilter, MultipliesTheSpectrumByItsTransferFunction) {
    const Bits bits = {0, 1, 1, 0, 1, 0, 0, 0};
    SignalGeneratorParams params = Params("on_off_exp", 3);
    params.f0 = 12e9;
    params.gamma = 9e9;
    const Volts plain = Generate(params, bits);
    const double perRiseTime = 0.45511960861898226;
    EXPECT_NEAR(perRiseTime, 1.0 / std::log(9.0), 1e-8) << "eight digits of it are in use";
    const double tau = params.tr * perRiseTime;
    const std::size_t n = plain.size();
    const auto lowPass = [&](double f) {
        return 1.0 / std::complex<double>(1.0, 2.0 * pi * f * tau);
    };
    const auto taper = [&](std::size_t k) {
        const double m = static_cast<double>(n + 2 * k) / static_cast<double>(n);
        return 0.42 - 0.5 * std::cos(pi * m) + 0.08 * std::cos(2.0 * pi * m);
    };
    const auto ring = [&](double f) {
        return params.f0 * params.f0 /
               std::complex<double>(params.f0 * params.f0 - f * f, params.gamma * f);
    };
    for (const std::string filter : {"RCFilter", "RingFilter"}) {
        params.filterType = filter;
        const Volts filtered = Generate(params, bits);
        for (std::size_t k = 0; k <= n / 2; ++k) {
            const double f = static_cast<double>(k) / (8.0 * T);
            std::complex<double> h = lowPass(f) * (filter == "RCFilter" ? taper(k) : ring(f));
            if (k == n / 2) h = std::norm(h);  // the bin is its own mirror
            const auto expected = Bin(plain, k) * std::complex<long double>(h);
            EXPECT_LT(std::abs(Bin(filtered, k) - expected), 1e-12) << filter << " bin " << k;
        }
    }
}

TEST(SignalGenerator, RefusesWhatItCannotGenerate) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    using Change = std::function<void(SignalGeneratorParams&)>;
    const struct {
        Change change;
        std::string_view text;
        Bits bits = {1, 0};
    } rows[] = {
        {[](auto& p) { p.driveType = "on%s"; },
         "Error drive pattern type for the signal generator: on%s\n"
         "Allowed types are on_off_exp, on_off_ramp and raisedCosine.\n"},
        {[](auto& p) { p.filterType = "off"; },
         "Error filter pattern type for the signal generator: off\n"
         "Allowed types are 'RingFilter', 'RCFilter' and 'none'.\n"},
        {[](auto& p) { p.modulationType = "RZ", p.pointsPerBit = 0; }, "two samples for each bit"},
        {[](auto& p) { p.filterType = "RingFilter"; }, "power of two", {1, 0, 1}},
        {[](auto& p) { p.filterType = "RingFilter"; }, "parameter 'f0' is 0"},
        {[](auto& p) { p.filterType = "RingFilter", p.f0 = 5e9; },
         "the ring filter has no damping"},
        {[](auto& p) { p.pointsPerBit = -1; }, "'pointsPerBit' is -1"},
        {[](auto& p) { p.pointsPerBit = 26; }, "2 bits of 67108864 samples"},
        {[](auto& p) { p.tr = nan; }, "'tr' is nan"},
        {[](auto& p) { p.tf = 1e300; }, "'tf' is 1e+300"},
        {[](auto& p) { p.timeJitter = 1.0; }, "'timeJitter' is 1;"},
    };
    for (const auto& [change, text, bits] : rows) {
        SCOPED_TRACE(text);
        SignalGeneratorParams params = Params("on_off_ramp");
        change(params);
        const Generated generated(params, bits);
        EXPECT_EQ(generated.status, Status::Error);
        EXPECT_NE(generated.text.find(text), std::string::npos) << generated.text;
        EXPECT_EQ(generated.output.sig, nullptr);
    }
}

TEST(SignalGenerator, RefusesInputsThatAreNoPattern) {
    const auto tell = [](const Nodelist& input) {
        OutputCell output(ElecSigType);
        std::string text;
        EXPECT_EQ(Signal_Generator(Params("on_off_ramp"), &input, &output, text), Status::Error);
        return text;
    };
    const Owned<ElecSig> wave = RampWaveform(4, 1e-12);
    EXPECT_EQ(tell({nullptr, ElecSigType, wave.get()}),
              "Input signal type incorrect for the signal generator.\n"
              "Input signal type must be 'BinSigType'.\n");
    EXPECT_EQ(tell({nullptr, BinSigType, nullptr}),
              "Error in copying binary signal in Signal_Generator().\n");
    const Owned<BinSig> bits = Pattern({1, 0});
    for (const double rate : {0.0, HUGE_VAL, 1e-310}) {
        bits->bitRate = rate;
        EXPECT_NE(tell({nullptr, BinSigType, bits.get()}).find("bit rate"), std::string::npos);
    }
    EXPECT_NE(tell({nullptr, BinSigType, Pattern({}).get()}).find("empty"), std::string::npos);
}

}  // namespace
}  // namespace photrak
