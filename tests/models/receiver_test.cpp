#include "models/detection/receiver.h"

#include <cmath>
#include <numbers>

#include "models/block_run.h"
#include "models/optical_fixture.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

constexpr double tStep = 1e-11;                    // s: 50 GHz on either side
constexpr double wavelength = 1.55e-6;             // m
constexpr double carrier = 299792458.0 / 1.55e-6;  // Hz
constexpr double q2 = 3.20436e-19;                 // A s

/// A channel with power(i) in its samples, W, in any phase.
template <class Power>
Owned<OpSignal> Channel(std::int32_t n, double step, Power power, double lambda = wavelength) {
    Owned<OpSignal> light = Carrier(1.0, n, lambda);
    light->channels->tStep = step;
    for (std::int32_t i = 1; i <= n; ++i) {
        light->channels->Ex_samples[i] = std::sqrt(power(i)) * Exp({0.0, 1.7 * i + n});
    }
    return light;
}
Owned<OpSignal> Steady(double watts, std::int32_t n = 64) {
    return Channel(n, tStep, [watts](std::int32_t) { return watts; });
}
/// Densities in W/Hz at both ends of a span around the carrier.
void AddSpan(const Owned<OpSignal>& light, double width, double shift, double first, double last) {
    AddNoise(*light, carrier + shift - width / 2, width, {first, last});
}

constexpr double flatZ = 500.0;  // V/A

/// 1 A/W, no detector response, the same transfer at all frequencies, no filter, no noise of its
/// own.
ReceiverParams Params(std::string_view table = "1\n0 500 0\n") {
    ReceiverParams params;
    params.detector.quantumEff = 1.0 / (wavelength * 806543.9341951312);
    params.frontEnd.modelType = "custom";
    std::string reason;
    EXPECT_EQ(ReadFrontEndTable(table, params.frontEnd, reason), Status::Success) << reason;
    return params;
}

struct Received : Outcome {
    Received(const Owned<OpSignal>& light, const ReceiverParams& params) : Outcome(ElecSigType) {
        const Nodelist input{nullptr, OpSigType, light.get()};
        status = Receiver(&input, params, &output, {"rx", text});
    }
    const ElecSig& Signal() const { return Made<ElecSig>(); }
};

/// Sigma of every sample, which must be the same throughout.
double SteadySigma(const Owned<OpSignal>& light, const ReceiverParams& params) {
    const Received received(light, params);
    const ElecSig& signal = received.Signal();
    const Complex* sigma = signal.sigmaSamples;
    for (std::int32_t i = 1; i <= signal.noPoints; ++i) {
        EXPECT_NEAR(sigma[i].re, sigma[1].re, 1e-12 * sigma[1].re);
        EXPECT_EQ(sigma[i].im, 0.0);
    }
    return sigma[1].re;
}

// A flat receiver integrates from 0 to half the sampling rate; the end weights sum to the number of
// intervals, so that the bandwidth 1 / (2 tStep) is exact.
constexpr double flatBandwidth = 1.0 / (2.0 * tStep);

TEST(Receiver, AddsItsNoiseTermsAsPowers) {
    const double watts = 1e-3, excess = (0.4 * 8 + 0.6 * (2 - 1.0 / 8)) * 64;
    const struct {
        const char* what;
        double power, dark, thermal, RIN, ase, M, k, density;  // density at the input, A^2/Hz
    } rows[] = {
        {"all", watts, 1e-6, 1e-22, 1e-14, 1e-17, 1, 1,
         1e-14 * watts * watts + (4e-17 + q2) * watts + q2 * 1e-6 + 1e-22},
        // The avalanche multiplies current and noise; the current seen is F M R P.
        {"avalanche, intensity and beat", watts, 0.0, 0.0, 1e-14, 1e-17, 8, 0.4,
         1e-14 * std::pow(excess * watts, 2) + (4 * excess * 1e-17 + q2) * excess * watts},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const Owned<OpSignal> light = Steady(row.power);
        light->channels->RIN = row.RIN;
        AddSpan(light, 1e12, 0.0, row.ase, row.ase);
        AddSpan(light, 1e12, 0.0, 1.0, 1.0);  // only the first one counts
        ReceiverParams params = Params();
        params.detector.darkCurrent = row.dark;
        params.detector.APD_Multiplier = row.M;
        params.detector.ionizationCoef = row.k;
        params.noise.a0 = row.thermal;
        const double expected = flatZ * std::sqrt(row.density * flatBandwidth);
        EXPECT_NEAR(SteadySigma(light, params), expected, 1e-11 * expected);
    }
}

TEST(Receiver, IntegratesItsOwnNoiseOverFrequency) {
    ReceiverParams params = Params();
    params.noise = {1e-22, 3e-44, 5e-66, 7e-88};
    const double b = flatBandwidth, b3 = b * b * b;
    const double variance = 1e-22 * b + 1e-44 * b3 + 1e-66 * b3 * b * b + 1e-88 * b3 * b3 * b;
    // The weights integrate to the fourth order of 1/2048 of the range.
    EXPECT_NEAR(SteadySigma(Steady(0.0, 4096), params), flatZ * std::sqrt(variance), 5e-10);
}

// The noise bandwidth of a Butterworth low-pass of order n is B (pi / 2n) / sin(pi / 2n).
TEST(Receiver, LimitsItsNoiseByTheFilter) {
    for (const std::int16_t order : {2, 6}) {
        ReceiverParams params = Params();
        params.noise.a0 = 1e-22;
        params.filter.type = "LPbutterworth";
        params.filter.bandwidth = 2e9;
        params.filter.order = order;
        const double x = std::numbers::pi / (2 * order);
        // What lies beyond the sampled range: (B / 50 GHz)^(2n - 1) of the whole, below 1e-4.
        const double sigma = flatZ * std::sqrt(1e-22 * 2e9 * x / std::sin(x));
        EXPECT_NEAR(SteadySigma(Steady(0.0, 4096), params) / sigma, 1.0, 1e-4);
    }
}

TEST(Receiver, WeighsOpticalNoiseAroundTheCarrierOnly) {
    const struct {
        const char* what;
        double width, shift, first, last, density;
    } rows[] = {
        {"40 of 100 GHz", 40e9, 0.0, 1e-17, 1e-17, 0.4e-17},
        {"aside", 1e12, 1e12, 1e-17, 1e-17, 0.0},
        {"a slope averages to its value at the carrier", 1e12, 0.0, 0.5e-17, 1.5e-17, 1e-17},
    };
    for (const auto& row : rows) {
        const Owned<OpSignal> light = Steady(1e-3, 1024);
        AddSpan(light, row.width, row.shift, row.first, row.last);
        const double relative = SteadySigma(light, Params()) / flatZ;
        const double density = (relative * relative / (flatBandwidth * 1e-3) - q2) / 4.0;
        EXPECT_NEAR(density, row.density, 2e-3 * row.density + 1e-25) << row.what;
    }
}

// Powers by hand at the nearest sample of each channel, round its period; phases play no part.
TEST(Receiver, AddsChannelsAsPowersOnTheGridOfTheStrongest) {
    const Owned<OpSignal> light = Channel(
        16, 3e-11, [](std::int32_t i) { return 1e-4 * i; }, 1.30e-6);
    light->channels->startTime = 2.1e-10;
    OpSig& strong = AppendChannel(
        *light, Channel(64, tStep, [](std::int32_t i) { return 1e-3 * (2 + i % 3); }));
    strong.startTime = -4e-11;
    // A continuous channel.
    AppendChannel(*light, Channel(
                              1, 0.0, [](std::int32_t) { return 5e-4; }, 1.31e-6));
    // 1 V/A, since the last element of the spectrum takes the transfer twice.
    const Received received(light, Params("1\n0 1 0\n"));
    const ElecSig& signal = received.Signal();
    ASSERT_EQ(signal.noPoints, 64);
    for (std::int32_t i = 1; i <= 64; ++i) {
        // 10 ps (i - 1) - 40 ps - 210 ps, in steps of 30 ps. The text's rounding is a cut behind
        // + 0.5, toward zero: a time before the other's start goes up to the later sample.
        const std::int32_t tenths = 10 * (i - 1) - 250;
        const auto nearest = static_cast<std::int32_t>((tenths + 15) / 30);
        const double other = 1e-4 * ((nearest % 16 + 16) % 16 + 1);
        EXPECT_NEAR(signal.elecSamples[i].re, 1e-3 * (2 + i % 3) + other + 5e-4, 1e-15) << i;
    }
    EXPECT_EQ(signal.startTime, -4e-11);
}

TEST(Receiver, SeesASecondPolarizationOnlyWithTheStrongestChannel) {
    const Owned<OpSignal> light = Steady(1e-3);
    OpSig& first = *light->channels;
    OpSig& second = AppendChannel(*light, Steady(1e-3));
    second.wavelength = 1.3e-6;
    // A second polarization is not seen unless the strongest channel has one, too.
    ASSERT_EQ(AddEySamples(&first), 0);
    for (int i = 1; i <= 64; ++i) first.Ey_samples[i] = {0.0, 0.02};
    for (int i = 1; i <= 64; ++i) second.Ex_samples[i] = 1.5 * second.Ex_samples[i];
    const auto volts = [&] { return Received(light, Params()).Signal().elecSamples[5].re; };
    EXPECT_NEAR(volts(), flatZ * 3.25e-3 * 1.3 / 1.55, 1e-12);
    ASSERT_EQ(AddEySamples(&second), 0);
    EXPECT_NEAR(volts(), flatZ * 3.65e-3 * 1.3 / 1.55, 1e-12);
}

// The bin at half the sampling rate is its own partner: it holds the conjugate of the front end's
// (3 + 4j) 100 V/A, and takes it twice.
TEST(Receiver, MultipliesTheLastElementTwice) {
    const Received received(
        Channel(8, tStep, [](std::int32_t i) { return i % 2 == 0 ? 3e-3 : 1e-3; }),
        Params("1\n0 300 400\n"));
    const std::complex<double> twice = std::pow(std::complex<double>(300.0, -400.0), 2);
    for (int i = 1; i <= 8; ++i) {
        const std::complex<double> expected = 500.0 * 2e-3 + (i % 2 == 0 ? 1e-3 : -1e-3) * twice;
        EXPECT_NEAR(std::abs(Value(received.Signal().elecSamples[i]) - expected), 0.0, 1e-10);
    }
}

TEST(Receiver, NeedsSomethingToDetect) {
    const Owned<OpSignal> dark = Steady(0.0);
    FreeOpSigList(&dark->channels);
    AddSpan(dark, 1e12, 0.0, 1e-17, 1e-17);  // noise alone is nothing to detect
    ModelBlock block;
    const BlockRun run(ReceiverModel, block, {dark}, 1, ElecSigType);
    EXPECT_EQ(run.status, Status::Warning);
    EXPECT_EQ(run.text, "Receiver has no input signal.\n\n");
}

TEST(Receiver, TellsWhatItCannotDetect) {
    const std::string own = "ERROR: component 'rx': ";
    const struct {
        std::string text;  // or its beginning
        void (*spoil)(ReceiverParams& params, OpSignal& light);
    } rows[] = {
        {own + "a signal of 24 ", [](auto&, OpSignal& l) { l.channels->noPoints = 24; }},
        {own + "a channel with the time step 1e-300 s and the start time 0 s\n",
         [](auto&, OpSignal& l) {
             AppendChannel(l, Channel(2, 1e-300, [](std::int32_t) { return 1e-9; }));
         }},
        {"Error model type for the Photodetector.\n"
         "Allowed model types are: empirical and intrinsic.\n"
         "Error in detecting signal in Receiver().\n",
         [](auto& params, auto&) { params.detector.detect = true; }},
        {own + "front end and filter pass nothing\n",
         [](auto& params, auto&) { params = Params("1\n0 0 0\n"); }},
        {own + "a voltage or its noise is not a finite number\n",
         [](auto&, OpSignal& l) { l.channels->Ex_samples[3].im = NAN; }},
    };
    for (const auto& row : rows) {
        ReceiverParams params = Params();
        const Owned<OpSignal> light = Steady(1e-3);
        row.spoil(params, *light);
        Received(light, params).ExpectRefusal(row.text);
    }
}

TEST(ReceiverBlock, ReadsItsParametersByName) {
    const TempDir dir;
    ModelBlock block;
    block.Word("pd_modeltype", "empirical").Word("pd_detect", "true");
    block.Word("pd_QEmethod", "Computed").Number("pd_quantumEff", 0.25);
    block.Number("pd_absorptionCoeff", 1e6).Number("pd_layerThickness", 1e-6);
    block.Number("pd_reflectivity", 0.5).Number("pd_lossGain", 20.0);
    block.Number("pd_respfp", 1e15).Number("pd_respfo", 1e15).Number("pd_respg", 1.0);
    block.Word("fe_modeltype", "custom").Word("fe_filename", "z.txt");
    block.Word("flt_type", "LPbessel").Number("flt_bandwidth", 1e15).Whole("flt_order", 4);
    block.Number("flt_lossGain", -20.0).Number("n_a0", 1e-22);
    const Owned<OpSignal> light = Steady(1e-3);
    dir.Write("z.txt", "2\n0 200 0\n1e9,1 1");
    EXPECT_EQ(BlockRun(ReceiverModel, block, {light}, 1, ElecSigType).text,
              "Error reading receiver front end custom data file 'z.txt'\n"
              "ERROR: component 'block': front end table: line 3 does not hold three numbers\n");
    dir.Write("z.txt", "1\n0 200 0\n");
    const BlockRun run(ReceiverModel, block, {light}, 1, ElecSigType);
    EXPECT_EQ(run.text, "");
    // 1 mW, half of it reflected, 1 - 1/e absorbed; +20 dB in the detector, -20 dB in the filter.
    const double current = 1e-3 * 0.5 * (1.0 - std::exp(-1.0)) * wavelength * 806543.9341951312;
    EXPECT_NEAR(run.Wave().elecSamples[9].re, current * 200.0, 1e-9);
    // 20 V/A with the filter, 2 V/A in the last element, which takes the filter twice. The
    // detector's gain raises the current that makes shot noise.
    const double bandwidth = (31.625 * 400.0 + 0.375 * 4.0) / (64 * tStep);
    EXPECT_NEAR(run.Wave().sigmaSamples[9].re, std::sqrt((1e-22 + q2 * 10.0 * current) * bandwidth),
                1e-10);
}

}  // namespace
}  // namespace photrak
