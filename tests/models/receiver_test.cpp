#include "models/detection/receiver.h"

#include <cmath>
#include <limits>
#include <numbers>

#include "base/memory.h"
#include "models/detection_fixture.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

constexpr double tStep = 1e-11;                    // s: 50 GHz on either side
constexpr double wavelength = 1.55e-6;             // m
constexpr double carrier = 299792458.0 / 1.55e-6;  // Hz
constexpr double q2 = 3.20436e-19;                 // A s

struct Light {
    Owned<OpSignal> signal;

    Light() { EXPECT_EQ(Make(signal, CreateOpSignal), 0); }
    /// A channel behind those that there are; power(i) of its samples in W, any phase.
    template <class Power>
    OpSig& Add(std::int32_t n, double step, Power power, double lambda = wavelength) {
        OpSig** tail = &signal->channels;
        OpSig* last = nullptr;
        for (; *tail; tail = &(*tail)->next) last = *tail;
        EXPECT_EQ(CreateOpSig(tail, n), 0);
        OpSig& channel = **tail;
        channel.prev = last;
        channel.tStep = step;
        channel.wavelength = lambda;
        for (std::int32_t i = 1; i <= n; ++i) {
            channel.Ex_samples[i] = std::sqrt(power(i)) * Exp({0.0, 1.7 * i + n});
        }
        return channel;
    }
    OpSig& AddSteady(double watts, std::int32_t n = 64) {
        return Add(n, tStep, [watts](std::int32_t) { return watts; });
    }
    /// density(f) in W/Hz over `width` around the carrier, shifted by `shift`.
    template <class Density>
    void AddNoise(double width, double shift, Density density) {
        OpSigASE** tail = &signal->noise;
        while (*tail) tail = &(*tail)->next;
        EXPECT_EQ(CreateOpSigASE(tail, 21), 0);
        OpSigASE& spectrum = **tail;
        spectrum.fstep = width / 20;
        spectrum.fstart = carrier + shift - width / 2;
        for (int i = 1; i <= 21; ++i) {
            spectrum.powerSamples[i] = density(spectrum.fstart + (i - 1) * spectrum.fstep);
        }
    }
};

void UseTable(FrontEndParams& frontEnd, std::string_view table) {
    frontEnd.modelType = "custom";
    std::string reason;
    EXPECT_EQ(ReadFrontEndTable(table, frontEnd, reason), Status::Success) << reason;
}

constexpr double flatZ = 500.0;  // V/A

/// 1 A/W, no detector response, 500 V/A at all frequencies, no filter, no noise of its own.
ReceiverParams Params() {
    ReceiverParams params;
    params.owner = "rx";
    params.detector.quantumEff = 1.0 / (wavelength * 806543.9341951312);
    UseTable(params.frontEnd, "1\n0 500 0\n");
    return params;
}

struct Received {
    Status status = Status::Success;
    std::string text;
    Owned<ElecSig> signal;
};

Received Detect(const Light& light, const ReceiverParams& params) {
    Received received;
    Nodelist input{nullptr, OpSigType, light.signal.get()}, output{nullptr, ElecSigType, nullptr};
    received.status = Receiver(&input, params, &output, received.text);
    received.signal.reset(static_cast<ElecSig*>(output.sig));
    return received;
}

/// Sigma of every sample, which must be the same throughout.
double SteadySigma(const Light& light, const ReceiverParams& params) {
    const Received received = Detect(light, params);
    EXPECT_EQ(received.status, Status::Success) << received.text;
    if (!received.signal) return 0.0;
    const Complex* sigma = received.signal->sigmaSamples;
    for (std::int32_t i = 1; i <= received.signal->noPoints; ++i) {
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
    struct Row {
        const char* what;
        double power, dark, thermal, RIN, ase, M, k, density;  // density at the input, A^2/Hz
    };
    const Row rows[] = {
        {"thermal", 0.0, 0.0, 1e-22, 1e-14, 0.0, 1, 1, 1e-22},
        {"dark", 0.0, 1e-6, 0.0, 0.0, 0.0, 1, 1, q2 * 1e-6},
        {"unit gain has no excess noise", watts, 0.0, 0.0, 0.0, 0.0, 1, 0.3, q2 * watts},
        {"intensity", watts, 0.0, 0.0, 1e-14, 0.0, 1, 1, 1e-14 * watts * watts + q2 * watts},
        {"all", watts, 1e-6, 1e-22, 1e-14, 1e-17, 1, 1,
         1e-14 * watts * watts + (4e-17 + q2) * watts + q2 * 1e-6 + 1e-22},
        // The avalanche multiplies current and noise; the current seen is F M R P.
        {"avalanche, intensity and beat", watts, 0.0, 0.0, 1e-14, 1e-17, 8, 0.4,
         1e-14 * std::pow(excess * watts, 2) + (4 * excess * 1e-17 + q2) * excess * watts},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Light light;
        light.AddSteady(row.power).RIN = row.RIN;
        if (row.ase > 0.0) {
            light.AddNoise(1e12, 0.0, [&](double) { return row.ase; });
            light.AddNoise(1e12, 0.0, [](double) { return 1.0; });  // only the first one counts
        }
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
    Light light;
    light.AddSteady(0.0, 4096);
    ReceiverParams params = Params();
    params.noise = {1e-22, 3e-44, 5e-66, 7e-88};
    const double b = flatBandwidth, b3 = b * b * b;
    const double variance = 1e-22 * b + 1e-44 * b3 + 1e-66 * b3 * b * b + 1e-88 * b3 * b3 * b;
    // The weights integrate to the fourth order of 1/2048 of the range.
    EXPECT_NEAR(SteadySigma(light, params), flatZ * std::sqrt(variance), 1e-9 * flatZ * 1e-3);
}

// The noise bandwidth of a Butterworth low-pass of order n is B (pi / 2n) / sin(pi / 2n).
TEST(Receiver, LimitsItsNoiseByTheFilter) {
    for (const int order : {2, 4, 6}) {
        Light light;
        light.AddSteady(0.0, 4096);
        ReceiverParams params = Params();
        params.noise.a0 = 1e-22;
        params.filter.type = "LPbutterworth";
        params.filter.bandwidth = 2e9;
        params.filter.order = static_cast<std::int16_t>(order);
        const double x = std::numbers::pi / (2 * order);
        // What lies beyond the sampled range: (B / 50 GHz)^(2n - 1) of the whole, below 1e-4.
        EXPECT_NEAR(SteadySigma(light, params) / (flatZ * std::sqrt(1e-22 * 2e9 * x / std::sin(x))),
                    1.0, 1e-4);
    }
}

TEST(Receiver, WeighsOpticalNoiseAroundTheCarrierOnly) {
    const auto density = [](const Light& light) {
        const double sigma = SteadySigma(light, Params());
        return (sigma * sigma / (flatZ * flatZ * flatBandwidth * 1e-3) - q2) / 4.0;
    };
    const auto flat = [](double) { return 1e-17; };
    Light narrow, above, aside, slope;
    for (Light* light : {&narrow, &above, &aside, &slope}) light->AddSteady(1e-3, 1024);
    narrow.AddNoise(40e9, 0.0, flat);
    EXPECT_NEAR(density(narrow), 0.4 * 1e-17, 2e-20) << "40 of 100 GHz";
    above.AddNoise(1e12, 0.5e12, flat);
    EXPECT_NEAR(density(above), 0.5 * 1e-17, 2e-20) << "the upper side alone";
    aside.AddNoise(1e12, 1e12, flat);
    EXPECT_NEAR(density(aside), 0.0, 1e-25);
    // Between its points the spectrum is linear: a slope averages to its value at the carrier.
    slope.AddNoise(1e12, 0.0, [](double f) { return 1e-17 * (1.0 + (f - carrier) / 1e12); });
    EXPECT_NEAR(density(slope), 1e-17, 2e-20);
}

// Powers by hand at the nearest sample of each channel, round its period; phases play no part.
TEST(Receiver, AddsChannelsAsPowersOnTheGridOfTheStrongest) {
    const auto ramp = [](std::int32_t i) { return 1e-4 * i; };
    Light light;
    light.Add(16, 3e-11, ramp, 1.30e-6).startTime = 2.1e-10;
    OpSig& strong = light.Add(64, tStep, [](std::int32_t i) { return 1e-3 * (2 + i % 3); });
    strong.startTime = -4e-11;
    strong.patternLength = 6;
    light.Add(
        1, 0.0, [](std::int32_t) { return 5e-4; }, 1.31e-6);  // a continuous channel
    // 1 V/A, since the last element of the spectrum takes the transfer twice.
    ReceiverParams params = Params();
    UseTable(params.frontEnd, "1\n0 1 0\n");
    const Received received = Detect(light, params);
    ASSERT_EQ(received.status, Status::Success) << received.text;
    const ElecSig& signal = *received.signal;
    ASSERT_EQ(signal.noPoints, 64);
    for (std::int32_t i = 1; i <= 64; ++i) {
        // 10 ps (i - 1) - 40 ps - 210 ps, in steps of 30 ps. The text's rounding is a cut behind
        // + 0.5, toward zero: a time before the other's start goes up to the later sample.
        const std::int32_t tenths = 10 * (i - 1) - 250;
        const auto nearest = static_cast<std::int32_t>((tenths + 15) / 30);
        const double other = 1e-4 * ((nearest % 16 + 16) % 16 + 1);
        EXPECT_NEAR(signal.elecSamples[i].re, 1e-3 * (2 + i % 3) + other + 5e-4, 1e-15) << i;
        EXPECT_NEAR(signal.elecSamples[i].im, 0.0, 1e-15);
    }
    EXPECT_EQ(signal.startTime, -4e-11);
    EXPECT_EQ(signal.patternLength, 6);
    EXPECT_EQ(signal.UnitType, VoltageUnit);
    EXPECT_EQ(signal.domain, TimeDomain);
}

TEST(Receiver, SeesASecondPolarizationOnlyWithTheStrongest) {
    Light light;
    OpSig& first = light.AddSteady(2e-3);
    OpSig& second = light.AddSteady(1e-3);
    ASSERT_EQ(AddEySamples(&second), 0);
    for (int i = 1; i <= 64; ++i) second.Ey_samples[i] = {0.0, 0.02};
    EXPECT_NEAR(Detect(light, Params()).signal->elecSamples[5].re, flatZ * 3e-3, 1e-12);
    ASSERT_EQ(AddEySamples(&first), 0);
    EXPECT_NEAR(Detect(light, Params()).signal->elecSamples[5].re, flatZ * 3.4e-3, 1e-12);
}

TEST(Receiver, TakesTheFirstOfEquallyStrongChannels) {
    Light light;
    light.AddSteady(1e-3).RIN = 1e-14;
    light.AddSteady(1e-3).wavelength = 1.3e-6;
    const double shot = q2 * 2e-3, intensity = 1e-14 * 4e-6;
    EXPECT_NEAR(SteadySigma(light, Params()), flatZ * std::sqrt((shot + intensity) * flatBandwidth),
                1e-12);
    OpSig& second = *light.signal->channels->next;
    for (int i = 1; i <= 64; ++i) second.Ex_samples[i] = 1.1 * second.Ex_samples[i];
    EXPECT_NEAR(Detect(light, Params()).signal->elecSamples[1].re, flatZ * 2.21e-3 * 1.3 / 1.55,
                1e-12);
}

// The bin at half the sampling rate is its own partner: it holds the conjugate of the front end's
// (3 + 4j) 100 V/A, and takes it twice.
TEST(Receiver, MultipliesTheLastElementTwice) {
    Light light;
    light.Add(8, tStep, [](std::int32_t i) { return i % 2 == 0 ? 3e-3 : 1e-3; });
    ReceiverParams params = Params();
    UseTable(params.frontEnd, "1\n0 300 400\n");
    const Received received = Detect(light, params);
    const std::complex<double> twice = std::pow(std::complex<double>(300.0, -400.0), 2);
    for (int i = 1; i <= 8; ++i) {
        const std::complex<double> expected = 500.0 * 2e-3 + (i % 2 == 0 ? 1e-3 : -1e-3) * twice;
        EXPECT_NEAR(std::abs(Value(received.signal->elecSamples[i]) - expected), 0.0, 1e-10);
    }
}

TEST(Receiver, NeedsSomethingToDetectAndAPlaceForIt) {
    Light dark, light;
    dark.AddNoise(1e12, 0.0, [](double) { return 1e-17; });  // noise alone is nothing to detect
    light.AddSteady(1e-3);
    const char* none = "Receiver has no input signal.\n\n";
    const struct {
        OpSignal* signal;
        std::int32_t inputType, outputType;
        Status status;
        const char* text;
    } rows[] = {
        {light.signal.get(), ElecSigType, ElecSigType, Status::Error,
         "Input signal type incorrect for the receiver.\nInput signal type must be OPSIG.\n\n"},
        {nullptr, OpSigType, ElecSigType, Status::Warning, none},
        {dark.signal.get(), OpSigType, BinSigType, Status::Warning, none},
        {light.signal.get(), OpSigType, BinSigType, Status::Error,
         "Output signal type incorrect for the receiver.\nOutput signal type must be ELECSIG.\n\n"},
    };
    for (const auto& row : rows) {
        const BlockResult result =
            RunBlock(ReceiverModel, ParameterList(), row.signal, row.inputType, row.outputType);
        EXPECT_EQ(result.status, row.status);
        EXPECT_EQ(result.text, row.text);
        EXPECT_EQ(result.output, nullptr);
    }
}

TEST(Receiver, RefusesSignalsThatCannotBeTransformed) {
    const std::pair<std::int32_t, double> grids[] = {{1, 0.0}, {24, tStep}, {8, 0.0}};
    for (const auto& [n, step] : grids) {
        Light light;
        light.Add(n, step, [](std::int32_t) { return 1e-3; });
        EXPECT_TRUE(Detect(light, Params()).text.starts_with("ERROR: component 'rx': a signal "));
    }
    Light weak;
    weak.AddSteady(1e-3);
    weak.Add(2, 1e-300, [](std::int32_t) { return 1e-9; });
    EXPECT_EQ(
        Detect(weak, Params()).text,
        "ERROR: component 'rx': a channel with the time step 1e-300 s and the start time 0 s\n");
}

TEST(Receiver, TellsWhichStageFailed) {
    Light light, broken;
    light.AddSteady(1e-3);
    broken.AddSteady(1e-3).Ex_samples[3].im = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char* text;
        void (*spoil)(ReceiverParams& params);
    } rows[] = {
        {"Error model type for the Photodetector.\n"
         "Allowed model types are: empirical and intrinsic.\n"
         "Error in detecting signal in Receiver().\n",
         [](ReceiverParams& params) { params.detector.detect = true; }},
        {"Error in FrontEnd amplifier type.\nError in FrontEndAmp() in Receiver().\n",
         [](ReceiverParams& params) { params.frontEnd.modelType = "flat"; }},
        {"ERROR: component 'rx': filter order 0 is not in 1..64\n"
         "Error in DoEleFilter() in Receiver().\n",
         [](ReceiverParams& params) {
             params.filter.owner = "rx";
             params.filter.type = "LPbessel";
         }},
        {"ERROR: component 'rx': front end and filter pass nothing\n",
         [](ReceiverParams& params) { UseTable(params.frontEnd, "1\n0 0 0\n"); }},
        {"ERROR: component 'rx': a voltage or its noise is not a finite number\n",
         [](ReceiverParams& params) { params.noise.a0 = -1.0; }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        ReceiverParams params = Params();
        row.spoil(params);
        const Received received = Detect(light, params);
        EXPECT_EQ(received.status, Status::Error);
        EXPECT_EQ(received.text, row.text);
        EXPECT_EQ(received.signal, nullptr);
    }
    EXPECT_EQ(Detect(broken, Params()).text,
              "ERROR: component 'rx': a voltage or its noise is not a finite number\n");
}

TEST(Receiver, SurvivesEveryRefusedAllocation) {
    Light light;
    light.AddSteady(1e-3);
    ReceiverParams params = Params();
    params.filter.type = "LPbessel";
    params.filter.order = 4;
    params.filter.bandwidth = 7.5e9;
    ASSERT_EQ(Detect(light, params).status, Status::Success);  // tables of this length are kept
    std::vector<std::string> texts;
    for (std::int64_t n = 1;; ++n) {
        RefuseAllocationsFrom(n);
        const Received received = Detect(light, params);
        RefuseAllocationsFrom(-1);
        if (received.status == Status::Success) break;
        EXPECT_EQ(received.signal, nullptr);
        if (texts.empty() || texts.back() != received.text) texts.push_back(received.text);
    }
    const std::string noMemory = "Insufficient memory for dynamic allocation to ";
    EXPECT_EQ(texts, (std::vector<std::string>{
                         "Error in creating esout in Receiver().\n",
                         noMemory + "Receiver()-- receiver\n", noMemory + "Receiver() -- Is\n",
                         "Error in copying optical signal - receiver().\n",
                         noMemory + "Bessel -- coeff\nError in DoEleFilter() in Receiver().\n"}));
}

TEST(ReceiverBlock, ReadsItsParametersByName) {
    const TempDir dir;
    ParameterList parameters;
    parameters.Text("pd_modeltype", "empirical").Text("pd_detect", "true");
    parameters.Text("pd_QEmethod", "Computed").Double("pd_quantumEff", 0.25);
    parameters.Double("pd_absorptionCoeff", 1e6).Double("pd_layerThickness", 1e-6);
    parameters.Double("pd_reflectivity", 0.5).Double("pd_lossGain", 20.0);
    parameters.Double("pd_respfp", 1e15).Double("pd_respfo", 1e15).Double("pd_respg", 1.0);
    parameters.Text("fe_modeltype", "custom").Text("fe_filename", "z.txt");
    parameters.Text("flt_type", "LPbessel").Double("flt_bandwidth", 1e15).Int("flt_order", 4);
    parameters.Double("flt_lossGain", -20.0).Double("n_a0", 1e-22);
    Light light;
    light.AddSteady(1e-3);
    const auto run = [&] {
        return RunBlock(ReceiverModel, parameters, light.signal.get(), OpSigType);
    };
    const std::string badTable =
        "Error reading receiver front end custom data file 'z.txt'\n"
        "ERROR: component 'block': ";
    EXPECT_EQ(run().text, badTable + "a custom front end without a table\n\n") << "no such file";
    dir.Write("z.txt", "2\n0 200 0\n1e9,1 1");
    EXPECT_EQ(run().text, badTable + "front end table: line 3 does not hold three numbers\n");
    dir.Write("z.txt", "1\n0 200 0\n");
    const BlockResult result = run();
    ASSERT_EQ(result.status, Status::Success) << result.text;
    EXPECT_EQ(result.text, "");
    // 1 mW, half of it reflected, 1 - 1/e absorbed; +20 dB in the detector, -20 dB in the filter.
    const double current = 1e-3 * 0.5 * (1.0 - std::exp(-1.0)) * wavelength * 806543.9341951312;
    EXPECT_NEAR(result.output->elecSamples[9].re, current * 200.0, 1e-9);
    // 20 V/A with the filter, 2 V/A in the last element, which takes the filter twice. The
    // detector's gain raises the current that makes shot noise.
    const double bandwidth = (31.625 * 400.0 + 0.375 * 4.0) / (64 * tStep);
    EXPECT_NEAR(result.output->sigmaSamples[9].re,
                std::sqrt((1e-22 + q2 * 10.0 * current) * bandwidth), 1e-10);
}

}  // namespace
}  // namespace photrak
