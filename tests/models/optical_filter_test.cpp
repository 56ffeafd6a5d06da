// Optical filters against closed forms: responses in frequency, channels and noise through them,
// and the block with its dropping.
#include "models/optical/optical_filter.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

#include "base/escape.h"
#include "base/text.h"
#include "support/catalogue_block.h"
#include "support/model_parameters.h"
#include "support/signals.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

using Field = std::complex<double>;
using LongField = std::complex<long double>;

constexpr double c = 299792458.0;
constexpr double lambda = 1.55e-6, nu0 = c / lambda;
constexpr double rounding = 1e-9;  // of frequencies near 2e14 Hz seen at a scale of 1e11 Hz

OpticalFilterRecord Record(std::string_view type, double BW = 1e-9) {
    OpticalFilterRecord record;
    record.owner = "box";
    record.type = type;
    record.wavelength = lambda;
    record.BW = BW;
    return record;
}

FilterResponse Prepared(const OpticalFilterRecord& record) {
    FilterResponse response;
    std::string errorText;
    EXPECT_EQ(PrepareFilterResponse(record, response, errorText), Status::Success) << errorText;
    return response;
}

double Width(double BW) {
    return c / (lambda - BW / 2) - c / (lambda + BW / 2);
}

// --- Responses ---

TEST(FilterResponse, IsAtHalfPowerAtTheEdgesOfItsBand) {
    OpticalFilterRecord second = Record("Gaussian"), tenth = Record("Gaussian");
    OpticalFilterRecord resonator = Record("FabryPerot", 0.05e-9), mirrors = resonator;
    OpticalFilterRecord trapezoid = Record("Trapezoidal");
    trapezoid.BW0dB = 0.3e-9;
    second.order = 2;
    tenth.order = 10;
    resonator.FSR = 5e-9;
    mirrors.reflectivity = 0.99;
    const struct {
        OpticalFilterRecord record;
        double tolerance;
    } rows[] = {{Record("Gaussian"), 1e-9},
                {second, 1e-9},
                {tenth, 1e-8},
                {trapezoid, 0.0015},  // falls by 3 dB, a half is 3.01 dB
                {resonator, 1e-3},    // sin x taken as x
                {mirrors, 1e-4}};
    for (const auto& row : rows) {
        SCOPED_TRACE(Concat(row.record.type, " ", row.record.order));
        const FilterResponse H = Prepared(row.record);
        const double half = Width(row.record.BW) / 2;
        EXPECT_NEAR(SquaredMagnitude(H(nu0)), 1.0, 1e-12);
        EXPECT_NEAR(SquaredMagnitude(H(nu0 + half)), 0.5, row.tolerance);
        EXPECT_NEAR(SquaredMagnitude(H(nu0 - half)), 0.5, row.tolerance);
    }
}

TEST(FilterResponse, GaussianAndTrapezoidFallAsTheyShould) {
    OpticalFilterRecord fourth = Record("Gaussian"), trapezoid = Record("Trapezoidal");
    fourth.order = 4;
    trapezoid.BW0dB = 0.4e-9;
    trapezoid.L = LossFactor(6.0);
    const FilterResponse G = Prepared(fourth), T = Prepared(trapezoid);
    // At 3/4 of the width the fourth order has 2^-(1.5^8) of the power.
    EXPECT_NEAR(SquaredMagnitude(G(nu0 + 0.75 * Width(1e-9))), std::exp2(-std::pow(1.5, 8)), 1e-14);
    const double flat = Width(0.4e-9), slope = 3.0 / (Width(1e-9) - flat);  // dB/Hz of half power
    for (const double offset : {-0.9, -0.3, -0.19, 0.0, 0.19, 0.45, 1.2}) {
        const double f = offset * Width(1e-9);
        const double beyond = std::max(0.0, std::fabs(f) - flat / 2);
        EXPECT_NEAR(20.0 * std::log10(Magnitude(T(nu0 + f))), -6.0 - 2.0 * slope * beyond, 1e-6);
    }
    trapezoid.BW0dB = 3e-9;  // a flat top wider than the band is cut to it
    const FilterResponse box = Prepared(trapezoid);
    EXPECT_NEAR(Magnitude(box(nu0 + 0.499 * Width(1e-9))), trapezoid.L, 1e-15);
    EXPECT_EQ(Magnitude(box(nu0 + 0.501 * Width(1e-9))), 0.0);
}

TEST(FilterResponse, IdealKeepsAFloorAndItsEdgesPassEitherWay) {
    OpticalFilterRecord record = Record("Ideal");
    const FilterResponse pass = Prepared(record);
    record.inversion = Inversion::Power;
    const FilterResponse stop = Prepared(record);
    record.inversion = Inversion::Amplitude;
    const FilterResponse other = Prepared(record);
    for (const double edge : {pass.low, pass.high}) {
        EXPECT_EQ(pass(edge).re, 1.0);
        EXPECT_EQ(stop(edge).re, 1.0);
        const double inside = std::nextafter(edge, nu0);
        const double outside = edge + (edge - inside);
        EXPECT_EQ(pass(inside).re, 1.0);
        EXPECT_EQ(stop(inside).re, 1e-32);
        EXPECT_EQ(pass(outside).re, 1e-32);
        EXPECT_EQ(stop(outside).re, 1.0);
        EXPECT_EQ(other(inside).re, 1e-32);
    }
    EXPECT_NEAR(pass.high - pass.low, Width(1e-9), 1.0);
}

TEST(FilterResponse, ResonatorHasItsFreeRangeAndFinesse) {
    OpticalFilterRecord record = Record("FabryPerot", 0.1e-9);
    record.FSR = 2e-9;
    const FilterResponse H = Prepared(record);
    const double F = Width(record.FSR), finesse = F / Width(record.BW);
    EXPECT_NEAR(std::numbers::pi * std::sqrt(H.R) / (1.0 - H.R), finesse, 1e-9);
    EXPECT_NEAR(Magnitude(H(nu0 + F)), 1.0, rounding);
    EXPECT_NEAR(Magnitude(H(nu0 - 3.0 * F)), 1.0, rounding);
    EXPECT_NEAR(Magnitude(H(nu0 + 0.5 * F)), (1.0 - H.R) / (1.0 + H.R), rounding);
    // The exact half-power points of an Airy function, 2 asin((1 - R) / 2 sqrt R) apart in phase.
    const double phase = std::asin((1.0 - H.R) / (2.0 * std::sqrt(H.R)));
    EXPECT_NEAR(SquaredMagnitude(H(nu0 + phase / std::numbers::pi * F)), 0.5, rounding);
    // A single pass delays by half a round trip: next to the resonance the phase is that of (1 + R)
    // / (1 - R) passes.
    const double small = 1e-4 * Width(record.BW);
    EXPECT_NEAR(Phase(H(nu0 + small)) / (small * std::numbers::pi / F), (1.0 + H.R) / (1.0 - H.R),
                1e-3);

    record.FSR = 4e-6;  // wider than the center allows on both sides
    const FilterResponse wide = Prepared(record);
    EXPECT_NEAR(std::numbers::pi / wide.tau, c / lambda - c / (lambda + 4e-6), 1.0);
}

TEST(FilterResponse, ComplementsSumToOne) {
    OpticalFilterRecord steep = Record("Gaussian");
    steep.order = 3;
    for (OpticalFilterRecord record : {Record("Gaussian"), steep, Record("Trapezoidal", 3e-9)}) {
        SCOPED_TRACE(record.type);
        const FilterResponse H = Prepared(record);
        record.inversion = Inversion::Power;
        const FilterResponse power = Prepared(record);
        record.inversion = Inversion::Amplitude;
        const FilterResponse amplitude = Prepared(record);
        for (double x = -2.0; x <= 2.0; x += 0.125) {
            const double f = nu0 + x * Width(record.BW);
            EXPECT_NEAR(SquaredMagnitude(H(f)) + SquaredMagnitude(power(f)), 1.0, 1e-14);
            EXPECT_NEAR(H(f).re + amplitude(f).re, 1.0, 1e-14);
        }
    }
}

TEST(FilterResponse, ResonatorComplementIsThatOfTheSquaredField) {
    OpticalFilterRecord record = Record("FabryPerot", 0.5e-9);
    record.reflectivity = 0.6;
    const FilterResponse A = Prepared(record);
    record.inversion = Inversion::Power;
    const FilterResponse power = Prepared(record);
    record.inversion = Inversion::Amplitude;
    const FilterResponse amplitude = Prepared(record);
    EXPECT_EQ(Magnitude(power(nu0)), 0.0);
    // Between two resonances A is j (1 - R) / (1 + R).
    const double between = nu0 + std::numbers::pi / 2.0 / A.tau;
    EXPECT_NEAR(SquaredMagnitude(power(between)), 1.0 + 0.25 * 0.25, rounding);
    for (const double x : {-0.7, 0.2, 1.1}) {
        const double f = nu0 + x * Width(record.BW);
        EXPECT_NEAR(std::abs(Value(amplitude(f)) + Value(A(f)) - 1.0), 0.0, 1e-14);
    }
}

// A ramp from 0 to 1 over 1500 to 1510 nm in element (2, 1), zeros elsewhere.
constexpr std::string_view ramp =
    "TransferMatrixFormat1 REAL LIN\n2 1 3 1500e-9 1510e-9\n0 0 0 0 0 0\n0 0\n0 0.5\n0 1\n";

TEST(FilterResponse, CustomTypesReadTheFileOnTheirOwnScale) {
    const TempDir directory;
    directory.Write("ramp.txt", ramp);
    OpticalFilterRecord record = Record("Custom1", 0.0);
    record.filename = "ramp.txt";
    record.row = 2;
    const auto ExpectRamp = [&](double wavelength, double value) {
        EXPECT_NEAR(Magnitude(Prepared(record)(c / wavelength)), value, 1e-8);
    };
    ExpectRamp(1503e-9, 0.3);
    ExpectRamp(1499e-9, 0.0);
    ExpectRamp(1511e-9, 0.0);

    record.type = "Custom3";  // 1549..1551 nm
    record.BW = 2e-9;
    ExpectRamp(1549.5e-9, 0.25);
    ExpectRamp(1550.8e-9, 0.9);
    ExpectRamp(1551.1e-9, 0.0);

    // Half the file's width from its middle less 2.5 nm, plus the center, on: an offset from there.
    record.type = "Custom2";
    record.BW = 0.5;
    record.wavelength = 3e-9;
    ExpectRamp(1505.5e-9 + 1e-9, 0.2);
    ExpectRamp(1505.5e-9 + 4e-9, 0.8);
    ExpectRamp(1505.5e-9 + 5.1e-9, 0.0);
}

TEST(FilterResponse, RefusesWhatMakesNoFilter) {
    const TempDir directory;
    directory.Write("ramp.txt", ramp);
    directory.Write("other.txt", "1 2 3\n");
    directory.Write("short.txt", "TransferMatrixFormat1 REAL LIN\n1 1 2 1 2\n0 1\n");
    using Change = void (*)(OpticalFilterRecord&);
    const struct {
        std::string_view type;
        Change change;
        std::string_view complaint;
    } rows[] = {
        {"Gaussian", [](OpticalFilterRecord& r) { r.order = 0; },
         "parameter 'order' is 0; it must be at least 1\n"},
        {"Ideal", [](OpticalFilterRecord& r) { r.BW = 0.0; },
         "parameter 'BW' is 0; it must be finite and above 0\n"},
        {"Ideal", [](OpticalFilterRecord& r) { r.BW = 4e-6; },
         "the bandwidth 4e-06 m does not fit the wavelength 1.55e-06 m\n"},
        {"Gaussian", [](OpticalFilterRecord& r) { r.BW = 1e-40; },
         "the bandwidth 1e-40 m does not fit the wavelength 1.55e-06 m\n"},
        {"Gaussian", [](OpticalFilterRecord& r) { r.wavelength = NAN; },
         "parameter 'wavelength' is nan; it must be finite and above 0\n"},
        {"Trapezoidal", [](OpticalFilterRecord& r) { r.BW0dB = -1.0; },
         "parameter 'BW0dB' is -1; it must be finite and at least 0\n"},
        {"Trapezoidal", [](OpticalFilterRecord& r) { r.L = INFINITY; },
         "parameter 'loss' is inf; it must be a finite number\n"},
        {"FabryPerot", [](OpticalFilterRecord& r) { r.reflectivity = 1.0; },
         "parameter 'reflectivity' is 1; it must be at least 0 and below 1\n"},
        {"FabryPerot", [](OpticalFilterRecord& r) { r.FSR = 0.0; },
         "parameter 'FSR' is 0; it must be finite and above 0\n"},
        {"Custom3", [](OpticalFilterRecord& r) { r.BW = -1.0; },
         "parameter 'BW' is -1; it must be finite and above 0\n"},
        {"Custom1", [](OpticalFilterRecord& r) { r.column = 2; },
         "'ramp.txt' has 2 rows and 1 columns, no element (1, 2)\n"},
        {"Custom1", [](OpticalFilterRecord& r) { r.filename = "other.txt"; },
         "'other.txt' is no transfer matrix file\n"},
        {"Custom1", [](OpticalFilterRecord& r) { r.filename = "short.txt"; },
         "short.txt:2: the counts ask for 4 numbers, more than the file has\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.complaint);
        OpticalFilterRecord record = Record(row.type);
        record.filename = "ramp.txt";
        row.change(record);
        FilterResponse response;
        std::string errorText;
        EXPECT_EQ(PrepareFilterResponse(record, response, errorText), Status::Error);
        EXPECT_EQ(errorText, Concat("ERROR: component 'box': ", row.complaint));
    }
    OpticalFilterRecord record = Record("Custom2");
    FilterResponse response;
    std::string errorText;
    EXPECT_EQ(PrepareFilterResponse(record, response, errorText), Status::Error);
    EXPECT_TRUE(StartsWith(errorText, "ERROR: can't open custom filter file.\n")) << errorText;
}

// --- Channels and noise ---

/// A tone `bin` bins of its own window above the carrier in both polarizations, the second of half
/// the field.
Owned<OpSig> Tone(std::int32_t n, double tStep, int bin, double wavelength = lambda) {
    Owned<OpSig> channel = RampChannel(n, tStep, Polarized::Yes);
    channel->wavelength = wavelength;
    for (std::int32_t j = 1; j <= n; ++j) {
        const Field sample = std::polar(1.0, -2.0 * std::numbers::pi * bin * (j - 1) / n);
        channel->Ex_samples[j] = {sample.real(), sample.imag()};
        channel->Ey_samples[j] = 0.5 * channel->Ex_samples[j];
    }
    return channel;
}

void ExpectPassed(const OpticalFilterRecord& record, OpSig* channel, OpSigASE* noise = nullptr) {
    std::string errorText;
    EXPECT_EQ(ApplyOpticalFilter(record, channel, noise, errorText), Status::Success) << errorText;
}

TEST(OpticalFilter, TonesArePassedByTheResponseAtTheirFrequency) {
    constexpr std::int32_t n = 32;
    const double tStep = 1e-12, df = 1.0 / (n * tStep);
    OpticalFilterRecord record = Record("FabryPerot", 0.8e-9);
    record.FSR = 5e-9;
    record.L = 0.9;
    record.usePadding = false;
    const FilterResponse H = Prepared(record);
    for (const int bin : {0, 3, -5}) {
        SCOPED_TRACE(bin);
        const Owned<OpSig> before = Tone(n, tStep, bin), after = Tone(n, tStep, bin);
        ExpectPassed(record, after.get());
        const Field factor = Value(H(nu0 + bin * df));
        for (std::int32_t j = 1; j <= n; ++j) {
            const Field expected = factor * Value(before->Ex_samples[j]);
            EXPECT_NEAR(std::abs(Value(after->Ex_samples[j]) - expected), 0.0, 1e-9);
            EXPECT_NEAR(std::abs(Value(after->Ey_samples[j]) - 0.5 * expected), 0.0, 1e-9);
        }
        EXPECT_EQ(after->wavelength, lambda);
    }
}

/// The plain sum over a window with flat ends, in long double.
std::vector<Field> PaddedByHand(const OpSig& channel, const FilterResponse& H) {
    const std::int32_t n = channel.noPoints, N = 2 * n;
    const long double turn = 2.0L * std::numbers::pi_v<long double> / N;
    std::vector<LongField> window, spectrum(N);
    for (std::int32_t j = 0; j < N; ++j) {
        const Complex value = channel.Ex_samples[std::clamp(j - n / 2 + 1, 1, n)];
        window.emplace_back(value.re, value.im);
    }
    for (std::int32_t k = 0; k < N; ++k) {
        for (std::int32_t j = 0; j < N; ++j) {
            spectrum[k] += window[j] * std::polar(1.0L, turn * (k * j % N));
        }
        const int m = k > n ? k - N : k;
        const Field factor = Value(H(c / channel.wavelength + m / (N * channel.tStep)));
        spectrum[k] *= LongField(factor);
    }
    std::vector<Field> field(1);
    for (std::int32_t j = n / 2; j < n / 2 + n; ++j) {
        LongField sum = 0;
        for (std::int32_t k = 0; k < N; ++k) {
            sum += spectrum[k] * std::polar(1.0L, -turn * (k * j % N));
        }
        field.emplace_back(sum / static_cast<long double>(N));
    }
    return field;
}

TEST(OpticalFilter, PaddingHoldsTheEndsInTwiceTheWindow) {
    OpticalFilterRecord record = Record("FabryPerot", 0.8e-9);
    record.FSR = 5e-9;
    for (const std::int32_t n : {2, 4, 16}) {
        const Owned<OpSig> channel = RampChannel(n, 1e-12);
        const std::vector<Field> expected = PaddedByHand(*channel, Prepared(record));
        ExpectPassed(record, channel.get());
        for (std::int32_t j = 1; j <= n; ++j) {
            EXPECT_NEAR(std::abs(Value(channel->Ex_samples[j]) - expected[j]), 0.0, 1e-8);
        }
    }
}

TEST(OpticalFilter, ShiftedCarriersStandWhereTheyAreOnTheFiltersScale) {
    constexpr std::int32_t n = 32;
    const double tStep = 1e-12, df = 1.0 / (n * tStep);
    OpticalFilterRecord record = Record("Gaussian", 1e-9);
    record.usePadding = false;
    record.shiftCarrier = true;
    for (const double bins : {2.0, 2.4, -1.6, 2.0 - n}) {  // to the nearest bin, round the window
        SCOPED_TRACE(bins);
        const int nearest = bins == -1.6 ? -2 : 2;
        const Owned<OpSig> channel = Tone(n, tStep, 1, c / (nu0 + bins * df));
        const Owned<OpSig> expected = Tone(n, tStep, 1 + nearest);
        ExpectPassed(record, channel.get());
        EXPECT_EQ(channel->wavelength, lambda);
        const double factor = Prepared(record)(nu0 + (1 + nearest) * df).re;
        for (std::int32_t j = 1; j <= n; ++j) {
            const Field field = factor * Value(expected->Ex_samples[j]);
            EXPECT_NEAR(std::abs(Value(channel->Ex_samples[j]) - field), 0.0, 1e-8);
        }
    }
}

// A steady field fills the doubled window evenly, so its spectrum is one bin, half as wide.
TEST(OpticalFilter, PaddedCarriersMoveByBinsOfTheDoubledWindow) {
    constexpr std::int32_t n = 128;  // more than one run of turns
    const double tStep = 1e-12, df = 1.0 / (2 * n * tStep);
    OpticalFilterRecord record = Record("Gaussian", 1e-9);
    record.shiftCarrier = true;
    const Owned<OpSig> channel = Tone(n, tStep, 0, c / (nu0 + 2.7 * df));
    ExpectPassed(record, channel.get());
    const double factor = Prepared(record)(nu0 + 3 * df).re;
    for (std::int32_t j = 1; j <= n; ++j) {
        const double turns = 3.0 * (j - 1 + n / 2) / (2 * n);
        const Field expected = std::polar(factor, -2.0 * std::numbers::pi * turns);
        EXPECT_NEAR(std::abs(Value(channel->Ex_samples[j]) - expected), 0.0, 1e-8);
        EXPECT_NEAR(std::abs(Value(channel->Ey_samples[j]) - 0.5 * expected), 0.0, 1e-8);
    }
}

TEST(OpticalFilter, LevelsInOneSampleAreFilteredAtTheirOwnFrequency) {
    for (const bool shift : {false, true}) {
        OpticalFilterRecord record = Record("Gaussian");
        record.shiftCarrier = shift;
        const double f = nu0 + 0.5 * Width(record.BW);
        const Owned<OpSig> level = Tone(1, 0.0, 0, c / f);
        ExpectPassed(record, level.get());
        EXPECT_NEAR(level->Ex_samples[1].re, std::sqrt(0.5), rounding);
        EXPECT_NEAR(level->Ey_samples[1].re, 0.5 * std::sqrt(0.5), rounding);
        EXPECT_EQ(level->wavelength, c / f);
    }
}

TEST(OpticalFilter, NoiseIsScaledByPowerAndNeverShifted) {
    OpticalFilterRecord record = Record("Gaussian");
    record.shiftCarrier = true;
    record.L = LossFactor(3.0);
    const Owned<OpSigASE> noise = RampSpectrum(9);
    noise->fstep = Width(record.BW) / 4.0;
    noise->fstart = nu0 - 4.0 * noise->fstep;
    ExpectPassed(record, nullptr, noise.get());
    for (std::int32_t i = 1; i <= 9; ++i) {
        const double x = (i - 5) / 2.0;  // 1 at half power
        EXPECT_NEAR(noise->powerSamples[i], i * std::pow(10.0, -0.3) * std::exp2(-x * x), 1e-9);
    }
}

TEST(OpticalFilter, ChannelsThatHaveNoSpectrumAreRefused) {
    constexpr std::string_view step = "; its spectrum needs a finite one above 0";
    const struct {
        std::int32_t n;
        double tStep, wavelength;
        std::string complaint;
    } rows[] = {
        {12, 1e-12, lambda, "12 samples; its spectrum needs a power of two up to 536870912"},
        {8, 0.0, lambda, Concat("the time step 0 s", step)},
        {8, 1e308, lambda, Concat("the time step 1e+308 s", step)},
        {8, 1e-12, 1e-310, "the wavelength 1e-310 m"}};
    for (const auto& row : rows) {
        const Owned<OpSig> channel = RampChannel(row.n, row.tStep);
        channel->wavelength = row.wavelength;
        std::string text;
        EXPECT_EQ(ApplyOpticalFilter(Record("Ideal"), channel.get(), nullptr, text), Status::Error);
        EXPECT_EQ(text, Concat("ERROR: component 'box': a channel has ", row.complaint, "\n"));
    }
}

// --- The block ---

/// Two ports; the light goes to the second, the first holds no data.
struct BlockRun {
    OutputCell output{OpSigType}, first{OpSigType};
    Status status;
    std::string text;

    BlockRun(ModelBlock& block, OpSignal* light, std::int32_t inputType = OpSigType) {
        Workspace workspace;
        SimOptions options;
        Nodelist input{nullptr, inputType, light}, empty{&input, OpSigType, nullptr};
        first.next = &output;
        status = RunOpticalFilter({workspace, block.component, options, &empty, &first, text});
        EXPECT_EQ(first.sig, nullptr);
    }
};

ModelBlock& Fill(ModelBlock& block, std::string_view type, double dropThreshold) {
    block.Word("type", type).Number("wavelength", lambda).Number("BW", 1e-9);
    block.Number("loss", 10.0).Number("dropThreshold", dropThreshold);
    return block;
}

/// Three levels: at the center, far off, at the center again with the power `last`.
Owned<OpSignal> ThreeLevels(double last) {
    Owned<OpSignal> light;
    EXPECT_EQ(Make(light, CreateOpSignal), 0);
    OpSig** end = &light->channels;
    for (const double wavelength : {lambda, 1.5e-6, lambda}) {
        *end = Tone(1, 0.0, 0, wavelength).release();
        end = &(*end)->next;
    }
    OpSig* third = light->channels->next->next;
    third->Ex_samples[1] = {std::sqrt(last), 0.0};
    third->Ey_samples[1] = {};
    light->noise = RampSpectrum(3).release();
    return light;
}

TEST(OpticalFilterBlock, ReadsTheParametersOfTheCatalogue) {
    CatalogueBlock block("OpticalFilter");
    block.Set("type", "FabryPerot").Set("order", "3").Set("usepadding", "No");
    block.Set("shiftcarrier", "Yes").Set("wavelength", "1.3e-6").Set("BW", "2e-9");
    block.Set("inversion", "Amplitude").Set("loss", "20").Set("BW0dB", "3e-10");
    block.Set("FSR", "4e-9").Set("reflectivity", "0.5").Set("filename", "f.txt");
    const OpticalFilterRecord record = ReadOpticalFilterRecord(block.Evaluated());
    EXPECT_EQ(record.type, "FabryPerot");
    EXPECT_EQ(record.order, 3);
    EXPECT_FALSE(record.usePadding);
    EXPECT_TRUE(record.shiftCarrier);
    EXPECT_EQ(record.wavelength, 1.3e-6);
    EXPECT_EQ(record.BW, 2e-9);
    EXPECT_EQ(record.inversion, Inversion::Amplitude);
    EXPECT_NEAR(record.L, 0.1, 1e-15);
    EXPECT_EQ(record.BW0dB, 3e-10);
    EXPECT_EQ(record.FSR, 4e-9);
    EXPECT_EQ(record.reflectivity, 0.5);
    EXPECT_EQ(record.filename, "f.txt");
}

TEST(OpticalFilterBlock, DropsWhatComesOutTooWeak) {
    ModelBlock block("box");
    Fill(block, "Ideal", 0.1);
    const Owned<OpSignal> light = ThreeLevels(0.5);
    const BlockRun run(block, light.get());
    ASSERT_EQ(run.status, Status::Success) << run.text;
    const OpSig* kept = run.output.As<OpSignal>().channels;  // 1.25 W by 10 dB
    ASSERT_NE(kept, nullptr);
    EXPECT_NEAR(PeakPower(*kept), 0.125, 1e-12);
    EXPECT_EQ(kept->next, nullptr);
    EXPECT_NE(run.output.As<OpSignal>().noise, nullptr);
    EXPECT_NEAR(PeakPower(*light->channels), 1.25, 1e-12) << "the input was changed";

    ModelBlock keeping("box");
    const BlockRun all(Fill(keeping, "Ideal", 0.0), light.get());
    EXPECT_NE(all.output.As<OpSignal>().channels->next->next, nullptr);
}

TEST(OpticalFilterBlock, UnknownTypePassesLightWithoutLossButStillDrops) {
    ModelBlock block("box");
    const Owned<OpSignal> light = ThreeLevels(1.0);
    const BlockRun run(Fill(block, "Bessel", 1.1), light.get());
    ASSERT_EQ(run.status, Status::Success) << run.text;
    const OpSignal& out = run.output.As<OpSignal>();
    EXPECT_EQ(PeakPower(*out.channels), 1.25);
    EXPECT_EQ(PeakPower(*out.channels->next), 1.25);
    EXPECT_EQ(out.channels->next->prev, out.channels);
    EXPECT_EQ(out.channels->next->next, nullptr);
    EXPECT_EQ(out.noise->powerSamples[3], 3.0);
}

TEST(OpticalFilterBlock, RefusesOtherSignalsAndSurvivesRefusedMemory) {
    ModelBlock block("box");
    Fill(block, "Gaussian", 0.0);
    const Owned<OpSignal> light = Multiplex(8, 1e-12);
    EXPECT_EQ(BlockRun(block, light.get(), ElecSigType).text, "Invalid signal in user model.");
    EXPECT_EQ(BlockRun(block, nullptr).status, Status::Success);
    bool passed = false, copyFailed = false;
    for (int n = 1; n < 40 && !passed; ++n) {
        RefuseAllocationsFrom(n);
        try {  // the arrays of the transform take the escape
            const BlockRun run(block, light.get());
            passed = run.status == Status::Success;
            copyFailed = copyFailed || run.text == "Can't copy optical signal.";
            EXPECT_EQ(run.text.empty(), passed);
            EXPECT_EQ(run.output.sig != nullptr, passed);
        } catch (const Escape&) {
        }
        RefuseAllocationsFrom(-1);
    }
    EXPECT_TRUE(passed);
    EXPECT_TRUE(copyFailed);
}

TEST(OpticalFilterTest, DrawsLossAndAFloorWhereNothingPasses) {
    const TempDir directory;
    ModelBlock block("box");
    Fill(block, "Gaussian", 0.0);
    FilterTest test;
    std::string errorText;
    ASSERT_EQ(TestOpticalFilter(block.component, test, errorText), Status::Success) << errorText;
    ASSERT_EQ(test.power.size(), 1000U);
    EXPECT_NEAR(test.frequency[499], nu0, 1.0);
    EXPECT_NEAR(test.power[499], -10.0, 1e-9);
    EXPECT_NEAR(test.power[549], -10.0 - 10.0 * std::log10(2.0), 1e-9);
    EXPECT_NEAR(test.wavelength[549], c / (nu0 + 0.5 * Width(1e-9)), 1e-20);

    ModelBlock custom("box");
    directory.Write("half.txt", "TransferMatrixFormat1 REAL LIN\n1 1 2 1 2\n0 0.5\n0 0.5\n");
    Fill(custom, "Custom3", 0.0).Word("filename", "half.txt");
    ASSERT_EQ(TestOpticalFilter(custom.component, test, errorText), Status::Success) << errorText;
    EXPECT_NEAR(test.power[499], -10.0 + 20.0 * std::log10(0.5), 1e-9);
    EXPECT_NEAR(test.power[0], test.power[499] - 100.0, 1e-9);

    ModelBlock endless("box");
    endless.Word("type", "Custom1").Word("filename", "half.txt").Number("BW", 2 * lambda);
    endless.Number("wavelength", lambda);
    EXPECT_EQ(TestOpticalFilter(endless.component, test, errorText), Status::Error);
}

}  // namespace
}  // namespace photrak
