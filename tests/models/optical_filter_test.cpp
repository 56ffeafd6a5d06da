// Optical filters against closed forms: responses in frequency, channels and noise through them,
// and the block with its dropping.
#include "models/optical/optical_filter.h"

#include <functional>

#include "base/text.h"
#include "models/block_run.h"
#include "models/optical_fixture.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

constexpr double c = 299792458.0;
constexpr double lambda = 1.55e-6, nu0 = c / lambda;
constexpr double rounding = 1e-9;  // of frequencies near 2e14 Hz seen at a scale of 1e11 Hz

OpticalFilterRecord Record(std::string_view type, double BW = 1e-9) {
    OpticalFilterRecord record;
    record.type = type;
    record.wavelength = lambda;
    record.BW = BW;
    return record;
}

/// A resonator of the free range 5 nm, so narrow that the window of the tests sees it.
OpticalFilterRecord Resonator(double BW) {
    OpticalFilterRecord record = Record("FabryPerot", BW);
    record.FSR = 5e-9;
    return record;
}

FilterResponse Prepared(OpticalFilterRecord record, Inversion inversion = Inversion::None) {
    record.inversion = inversion;
    FilterResponse response;
    std::string errorText;
    EXPECT_EQ(PrepareFilterResponse(record, response, {"box", errorText}), Status::Success)
        << errorText;
    return response;
}

double Width(double BW) {
    return c / (lambda - BW / 2) - c / (lambda + BW / 2);
}

// --- Responses ---

TEST(FilterResponse, GaussianAndTrapezoidFallAsTheyShould) {
    const double width = Width(1e-9), flat = Width(0.4e-9);
    for (const std::int32_t order : {1, 4}) {
        OpticalFilterRecord record = Record("Gaussian");
        record.order = order;
        const FilterResponse G = Prepared(record);
        for (const double x : {0.0, 1.0, -1.0, 1.5})  // in half widths
            EXPECT_NEAR(SquaredMagnitude(G(nu0 + x * width / 2)),
                        std::exp2(-std::pow(x, 2 * order)), rounding);
    }
    OpticalFilterRecord trapezoid = Record("Trapezoidal");
    trapezoid.BW0dB = 0.4e-9;
    trapezoid.loss = 6.0;
    const FilterResponse T = Prepared(trapezoid);
    const double slope = 3.0 / (width - flat);  // dB/Hz, to half power
    for (const double offset : {-0.9, -0.19, 0.19, 0.5}) {
        const double beyond = std::max(0.0, std::fabs(offset * width) - flat / 2);
        EXPECT_NEAR(20.0 * std::log10(Magnitude(T(nu0 + offset * width))),
                    -6.0 - 2.0 * slope * beyond, 1e-6);
    }
}

TEST(FilterResponse, GaussianGoesOutWhereTheExponentialDoes) {
    const double width = Width(1e-9), halfPower = std::log(2.0) / 2;
    for (const std::int32_t order : {1, 2, 7, 1000}) {
        SCOPED_TRACE(order);
        OpticalFilterRecord record = Record("Gaussian");
        record.order = order;
        const FilterResponse G = Prepared(record), inverted = Prepared(record, Inversion::Power);
        // exp(-700) is 1e-304; below exp(-745.2) nothing is left.
        for (const double exponent : {700.0, 744.0, 747.0, 800.0, 1e6}) {
            const double x = std::pow(exponent / halfPower, 0.5 / order);
            const double value = G(nu0 + x * width / 2).re;
            EXPECT_EQ(value > 0.0, exponent < 745.0) << exponent;
            EXPECT_EQ(inverted(nu0 + x * width / 2).re, 1.0);
        }
    }
}

TEST(FilterResponse, IdealKeepsAFloorAndItsEdgesPassEitherWay) {
    const FilterResponse pass = Prepared(Record("Ideal"));
    EXPECT_NEAR(pass.high - pass.low, Width(1e-9), 1.0);
    const FilterResponse stop = Prepared(Record("Ideal"), Inversion::Power);
    for (const double edge : {pass.low, pass.high}) {
        const double inside = std::nextafter(edge, nu0), outside = edge + (edge - inside);
        EXPECT_EQ(Value(pass(inside)), 1.0);
        EXPECT_EQ(Value(pass(edge)), 1.0);
        EXPECT_EQ(Value(pass(outside)), 1e-32);
        EXPECT_EQ(Value(stop(inside)), 1e-32);
        EXPECT_EQ(Value(stop(edge)), 1.0);
        EXPECT_EQ(Value(stop(outside)), 1.0);
    }
}

// In closed form: with u = pi dnu / F and R + 1/R = 2 + u^2, R = exp(-2 asinh(u/2)); all widths
// without differences, in 64 bits of mantissa.
TEST(FilterResponse, ResonatorIsExactAtAnyFinesse) {
    using Long = long double;
    const auto width = [](Long w) {
        return 299792458.0L * w / (lambda * Long{lambda} - w * w / 4);
    };
    for (const double finesse : {2.0, 30.0, 1e3, 1e6, 1e9}) {
        SCOPED_TRACE(finesse);
        const OpticalFilterRecord record = Resonator(5e-9 / finesse);
        const FilterResponse H = Prepared(record);
        const Long tau = std::numbers::pi_v<Long> / width(record.FSR);
        const Long a = std::asinh(tau * width(record.BW) / 2);
        const Long R = std::exp(-2 * a), T = -std::expm1(-2 * a);
        for (const double halfWidths : {0.5, -1.0, 20.0}) {
            const double f = H.nu0 + halfWidths * H.dnu / 2;
            const Long phi = (Long{f} - H.nu0) * tau;
            const std::complex<Long> inverse =
                std::polar(1.0L, -phi) - std::complex<Long>(0, 2 * R / T * std::sin(phi));
            EXPECT_NEAR(std::abs(std::complex<Long>(Value(H(f))) * inverse - 1.0L), 0.0L, 1e-12L);
        }
        EXPECT_NEAR(Magnitude(H(H.nu0 - 3.0 * Width(record.FSR))), 1.0, 1e-11 * finesse);
    }
    OpticalFilterRecord record = Resonator(0.1e-9);
    record.reflectivity = 0.99;  // the width alone counts; sin x taken as x
    const double edge = nu0 + Width(record.BW) / 2;
    EXPECT_NEAR(SquaredMagnitude(Prepared(record)(edge)), 0.5, 1e-4);
}

TEST(FilterResponse, ComplementsSumToOne) {
    for (const std::string_view type : {"Gaussian", "Trapezoidal"}) {
        OpticalFilterRecord record = Record(type, 3e-9);
        record.order = 3;
        const FilterResponse H = Prepared(record), power = Prepared(record, Inversion::Power),
                             amplitude = Prepared(record, Inversion::Amplitude);
        for (double x = -2.0; x <= 2.0; x += 0.125) {
            const double f = nu0 + x * Width(record.BW);
            EXPECT_NEAR(SquaredMagnitude(H(f)) + SquaredMagnitude(power(f)), 1.0, 1e-14);
            EXPECT_NEAR(H(f).re + amplitude(f).re, 1.0, 1e-14);
        }
    }
}

TEST(FilterResponse, ResonatorComplementIsThatOfTheSquaredField) {  // By design
    OpticalFilterRecord record = Record("FabryPerot", 0.5e-9);
    record.reflectivity = 0.6;
    const FilterResponse A = Prepared(record), power = Prepared(record, Inversion::Power),
                         amplitude = Prepared(record, Inversion::Amplitude);
    EXPECT_EQ(Magnitude(power(nu0)), 0.0);
    // Between two resonances A is j (1 - R) / (1 + R).
    const double between = nu0 + std::numbers::pi / 2.0 / A.tau;
    EXPECT_NEAR(SquaredMagnitude(power(between)), 1.0 + 0.25 * 0.25, rounding);
    const double f = nu0 - 0.7 * Width(record.BW);
    ExpectField(amplitude(f), 1.0 - Value(A(f)), 1e-14);
}

// A ramp from 0 to 1 over 1500 to 1510 nm in element (2, 1), zeros elsewhere.
constexpr std::string_view ramp =
    "TransferMatrixFormat1 REAL LIN\n2 1 3 1500e-9 1510e-9\n0 0 0 0 0 0\n0 0\n0 0.5\n0 1\n";

TEST(FilterResponse, CustomTypesReadTheFileOnTheirOwnScale) {
    const TempDir directory;
    OpticalFilterRecord record = Record("", 2e-9);
    record.filename = directory.Write("ramp.txt", ramp);
    record.row = 2;
    const auto expectRamp = [&](double wavelength, double value) {
        EXPECT_NEAR(Magnitude(Prepared(record)(c / wavelength)), value, 1e-8) << record.type;
    };
    record.type = "Custom1";
    expectRamp(1503e-9, 0.3);
    expectRamp(1499e-9, 0.0);
    record.type = "Custom3";  // 1549..1551 nm
    expectRamp(1549.5e-9, 0.25);
    expectRamp(1551.1e-9, 0.0);
    // Half the file's width, with its middle moved by an offset.
    record.type = "Custom2";
    record.BW = 0.5;
    for (const double offset : {3e-9, 0.0, -4e-9}) {
        record.wavelength = offset;
        expectRamp(1503.5e-9 + offset, 0.2);
    }
    // A file that counts from its own center stands at the filter's.
    record.filename = directory.Write(
        "centered.txt",
        "TransferMatrixFormat1 REAL LIN\n2 1 3 -5e-9 5e-9\n0 0 0 0 0 0\n0 0\n0 0.5\n0 1\n");
    record.wavelength = 1550e-9;
    expectRamp(1551e-9, 0.7);
}

TEST(FilterResponse, RefusesWhatMakesNoFilter) {
    const TempDir directory;
    directory.Write("ramp.txt", ramp);
    directory.Write("other.txt", "1 2 3\n");
    using R = OpticalFilterRecord;
    const struct {
        std::string_view type;
        std::function<void(R&)> change;
        std::string_view complaint;
    } rows[] = {
        {"Gaussian", [](R& r) { r.order = 0; }, "'order' is 0; it must be at least 1\n"},
        {"Ideal", [](R& r) { r.BW = 4e-6; }, "4e-06 m does not fit the wavelength 1.55e-06 m\n"},
        {"Gaussian", [](R& r) { r.wavelength = NAN; }, "'wavelength' is nan"},
        {"FabryPerot", [](R& r) { r.reflectivity = 1.0; }, "must be at least 0 and below 1\n"},
        {"Custom3", [](R& r) { r.wavelength = -1e-9; }, "'wavelength' is -1e-09"},
        {"Custom2", [](R& r) { r.wavelength = 0.0, r.shiftCarrier = true; }, "'wavelength' is 0"},
        {"Custom1", [](R& r) { r.column = 2; }, "2 rows and 1 columns, no element (1, 2)\n"},
        {"Custom1", [](R& r) { r.filename = "other.txt"; }, "'other.txt' is no transfer matrix f"},
        {"Custom2", [](R& r) { r.filename = "none"; }, "ERROR: can't open custom filter file.\n"}};
    for (const auto& row : rows) {
        R record = Record(row.type);
        record.filename = "ramp.txt";
        row.change(record);
        FilterResponse response;
        std::string errorText;
        EXPECT_EQ(PrepareFilterResponse(record, response, {"box", errorText}), Status::Error);
        EXPECT_NE(errorText.find("ERROR: component 'box': "), std::string::npos) << errorText;
        EXPECT_NE(errorText.find(row.complaint), std::string::npos) << errorText;
    }
}

// --- Channels and noise ---

void ExpectPassed(const OpticalFilterRecord& record, OpSig* channel, OpSigASE* noise = nullptr) {
    std::string errorText;
    EXPECT_EQ(ApplyOpticalFilter(record, channel, noise, {"box", errorText}), Status::Success)
        << errorText;
}

// A steady field fills the doubled window evenly, so its spectrum is one bin, half as wide.
TEST(OpticalFilter, ShiftedCarriersStandWhereTheyAreOnTheFiltersScale) {
    constexpr std::int32_t n = 128;  // more than one run of turns
    constexpr double df = 1.0 / (2 * n * 1e-12);
    OpticalFilterRecord record = Record("Gaussian", 1e-9);
    record.shiftCarrier = true;
    for (const double bins : {2.7, -1.6, 3.0 - 2 * n}) {  // to the nearest bin, round the window
        SCOPED_TRACE(bins);
        const int nearest = bins == -1.6 ? -2 : 3;
        const Owned<OpSignal> tone = Tone(n, 0, c / (nu0 + bins * df));
        const OpSig& channel = *tone->channels;
        ExpectPassed(record, tone->channels);
        EXPECT_EQ(channel.wavelength, lambda);
        const double factor = Prepared(record)(nu0 + nearest * df).re;
        for (std::int32_t j = 1; j <= n; ++j) {
            const double turns = 1.0 * nearest * (j - 1 + n / 2) / (2 * n);
            const Field expected = std::polar(factor, -2.0 * std::numbers::pi * turns);
            ExpectField(channel.Ex_samples[j], expected, 1e-8);
            ExpectField(channel.Ey_samples[j], 0.5 * expected, 1e-8);
        }
    }
}

TEST(OpticalFilter, WeighsEachBinAndPaddingHoldsTheEndsInTwiceTheWindow) {
    constexpr std::int32_t n = 16;
    OpticalFilterRecord record = Resonator(0.8e-9);
    record.loss = -20.0 * std::log10(0.9);
    record.usePadding = false;
    const Owned<OpSignal> before = Tone(n, 3, lambda), after = Tone(n, 3, lambda);
    ExpectPassed(record, after->channels);
    const Field factor = Value(Prepared(record)(nu0 + 3 / (n * 1e-12)));
    const Owned<OpSig> ends = RampChannel(n, 1e-12, Polarized::Yes),
                       padded = RampChannel(2 * n, 1e-12, Polarized::Yes);
    for (const auto field : {&OpSig::Ex_samples, &OpSig::Ey_samples}) {
        for (std::int32_t j = 1; j <= n; ++j) {
            const Field entered = Value((before->channels->*field)[j]);
            ExpectField((after->channels->*field)[j], factor * entered, 1e-8);
        }
        for (std::int32_t j = 1; j <= 2 * n; ++j) {
            (padded.get()->*field)[j] = (ends.get()->*field)[std::clamp(j - n / 2, 1, n)];
        }
    }
    ExpectPassed(record, padded.get());
    record.usePadding = true;
    ExpectPassed(record, ends.get());
    for (std::int32_t j = 1; j <= n; ++j) {
        ExpectField(ends->Ex_samples[j], Value(padded->Ex_samples[j + n / 2]), 1e-12);
        ExpectField(ends->Ey_samples[j], Value(padded->Ey_samples[j + n / 2]), 1e-12);
    }
}

TEST(OpticalFilter, LevelsAndNoiseAreFilteredWhereTheyAreAndNeverShifted) {
    OpticalFilterRecord record = Record("Gaussian");
    record.shiftCarrier = true;
    record.loss = 3.0;
    const double wavelength = c / (nu0 + 0.5 * Width(record.BW));
    const Owned<OpSignal> level = Level(4.0, wavelength);
    const Owned<OpSigASE> noise = RampSpectrum(9);
    noise->fstep = Width(record.BW) / 4.0;
    noise->fstart = nu0 - 4.0 * noise->fstep;
    ExpectPassed(record, level->channels, noise.get());
    EXPECT_NEAR(PeakPower(*level->channels), 2.0 * std::pow(10.0, -0.3), rounding);
    EXPECT_EQ(level->channels->wavelength, wavelength);
    for (std::int32_t i = 1; i <= 9; ++i) {
        const double x = (i - 5) / 2.0;  // 1 at half power
        EXPECT_NEAR(noise->powerSamples[i], i * std::pow(10.0, -0.3) * std::exp2(-x * x), 1e-9);
    }
}

TEST(OpticalFilter, ChannelsThatHaveNoSpectrumAreRefused) {
    const auto refusal = [](std::int32_t n, double tStep) {
        std::string text;
        EXPECT_EQ(ApplyOpticalFilter(Record("Ideal"), RampChannel(n, tStep).get(), nullptr,
                                     {"box", text}),
                  Status::Error);
        return text;
    };
    EXPECT_TRUE(StartsWith(refusal(12, 1e-12), "ERROR: component 'box': a channel has 12 samples"));
    EXPECT_TRUE(StartsWith(refusal(8, 0.0), "ERROR: component 'box': a channel has the time step"));
}

// --- The block ---

ModelBlock& Fill(ModelBlock& block, std::string_view type, double dropThreshold) {
    block.Word("type", type).Number("wavelength", lambda).Number("BW", 1e-9);
    return block.Number("loss", 10.0).Number("dropThreshold", dropThreshold);
}

TEST(OpticalFilterBlock, TakesWhatItLacksAsDocumented) {
    const OpticalFilterRecord record = ReadOpticalFilterRecord(nullptr);
    EXPECT_EQ(record.wavelength, 1.0);
    EXPECT_EQ(record.BW, 1.0);
    EXPECT_EQ(record.BW0dB, 1e-9);
}

// An unknown type passes light without loss and still drops.
TEST(OpticalFilterBlock, DropsWhatComesOutTooWeak) {
    // 1.25 W at the center, 1 W far off, 0.5 W at the center again; with noise.
    const Owned<OpSignal> light = Level(1.0, lambda), none;
    ASSERT_EQ(AddEySamples(light->channels), 0);
    light->channels->Ey_samples[1] = {0.0, 0.5};
    AppendChannel(*light, Level(1.0, 1.5e-6));
    AppendChannel(*light, Level(0.5, lambda));
    light->noise = RampSpectrum(3).release();
    const std::pair<std::string_view, double> rows[] = {{"Ideal", 0.1}, {"Bessel", 1.0}};
    for (const auto& [type, transmission] : rows) {
        ModelBlock block("box");
        const BlockRun run(RunOpticalFilter, Fill(block, type, 1.1 * transmission), {none, light},
                           2);
        EXPECT_TRUE(run.IsEmpty(0));
        EXPECT_NEAR(PeakPower(run.Channel(1)), 1.25 * transmission, 1e-12);
        EXPECT_EQ(run.Channel(1).next, nullptr);
        EXPECT_EQ(run.Light(1).noise->powerSamples[3] == 3.0, type == "Bessel");
        EXPECT_EQ(PeakPower(*light->channels), 1.25) << "the input was changed";
    }
}

TEST(OpticalFilterTest, HasAFloorWhereNothingPasses) {
    const TempDir directory;
    directory.Write("half.txt", "TransferMatrixFormat1 REAL LIN\n1 1 2 1 2\n0 0.5\n0 0.5\n");
    ModelBlock custom("box");
    FilterTest test;
    std::string errorText;
    Fill(custom, "Custom3", 0.0).Word("filename", "half.txt");
    ASSERT_EQ(TestOpticalFilter(custom.component, test, {"box", errorText}), Status::Success)
        << errorText;
    EXPECT_NEAR(test.frequency[499], nu0, 1.0);
    EXPECT_NEAR(test.power[499], -10.0 + 20.0 * std::log10(0.5), 1e-9);
    EXPECT_NEAR(test.power[0], test.power[499] - 100.0, 1e-9);
}

}  // namespace
}  // namespace photrak
