// The fiber as a model: what it reads, what it refuses, what passes by, and what it leaves behind.
#include <limits>

#include "base/escape.h"
#include "models/dispatch.h"
#include "models/fiber_fixture.h"
#include "support/catalogue_block.h"

namespace photrak {
namespace {

constexpr double ps = 1e-12;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

Owned<OpSignal> SomeSignal() {
    return MakeSignal({{Gauss(1e-3, 10 * ps), {}}, {Gauss(2e-3, 12 * ps), {}, 1.56e-6}}, 64, ps);
}

TEST(FiberModel, RefusesWhatItCannotCompute) {
    using Change = std::function<void(FiberParams&, OpSig&)>;
    const struct {
        const char* name;
        const char* said;  // part of the text
        Change change;
    } rows[] = {
        {"no step", "neither zStepSize nor zStepFac",
         [](FiberParams& p, OpSig&) { p.zStepSize = p.zStepFac = -1; }},
        {"distance", "distance is nan", [](FiberParams& p, OpSig&) { p.distance = nan; }},
        {"endless", "distance is inf", [](FiberParams& p, OpSig&) { p.distance = infinity; }},
        {"step", "zStepSize is inf", [](FiberParams& p, OpSig&) { p.zStepSize = infinity; }},
        {"loss", "loss is nan", [](FiberParams& p, OpSig&) { p.loss = nan; }},
        {"word", "dataType 'linear'", [](FiberParams& p, OpSig&) { p.dataType = "linear"; }},
        {"area", "effective area", [](FiberParams& p, OpSig&) { p.diameter = 0; }},
        {"n2 below 0", "n2 not below 0",
         [](FiberParams& p, OpSig&) {
             p.zStepSize = -1;
             p.zStepFac = 0.1;
             p.n2 = -1e-20;
         }},
        {"lost step", "does not lead to the end",
         [](FiberParams& p, OpSig&) {
             p.distance = 1e6;
             p.zStepSize = 1e-11;
         }},
        {"adaptive step of 0", "does not lead to the end",
         [](FiberParams& p, OpSig& s) {
             p.zStepSize = -1;
             p.zStepFac = 0.1;
             p.curve.beta2 = -1e-26;
             s.bitRate = infinity;
         }},
        {"sizes", "64 samples every 1e-12 s and of 32",
         [](FiberParams&, OpSig& s) { EXPECT_EQ(ResizeOpSig(s.next, 32), 0); }},
        {"steps of the channels", "cannot go through together",
         [](FiberParams&, OpSig& s) { s.next->tStep *= 2; }},
        {"odd size", "power of two",
         [](FiberParams&, OpSig& s) {
             EXPECT_EQ(ResizeOpSig(&s, 48), 0);
             EXPECT_EQ(ResizeOpSig(s.next, 48), 0);
         }},
        {"no samples", "power of two",
         [](FiberParams&, OpSig& s) { EXPECT_EQ(ResizeOpSig(&s, 0), 0); }},
        {"time step", "time step", [](FiberParams&, OpSig& s) { s.tStep = s.next->tStep = 0; }},
        {"start", "starts at", [](FiberParams&, OpSig& s) { s.next->startTime = nan; }},
        {"wavelength", "wavelength 0", [](FiberParams&, OpSig& s) { s.next->wavelength = 0; }},
        {"velocity", "no group velocity", [](FiberParams& p, OpSig&) { p.curve.lambda0 = 0; }},
        {"power", "power of the signal is nan",
         [](FiberParams&, OpSig& s) { s.next->Ex_samples[7].im = nan; }},
        {"band", "wider than its dispersion curve",
         [](FiberParams& p, OpSig& s) {
             p.dataType = "defined";
             s.tStep = s.next->tStep = 1e-15;
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Owned<OpSignal> input = SomeSignal();
        FiberParams params = BareFiber();
        row.change(params, *input->channels);
        const FiberResult result = RunThrough(input.get(), params);
        EXPECT_EQ(result.status, Status::Error);
        EXPECT_NE(result.text.find("Error in fiber 'Fib': "), std::string::npos) << result.text;
        EXPECT_NE(result.text.find(row.said), std::string::npos) << result.text;
        EXPECT_FALSE(result.signal);
    }
}

TEST(FiberModel, LooksAtItsPortFirst) {
    const std::atomic<std::int16_t> stop{0};
    FiberParams params = BareFiber();
    Nodelist in{}, out{};
    std::string text;
    in.sigType = ElecSigType;
    EXPECT_EQ(Fiber(&in, params, stop, &out, text), Status::Error);
    EXPECT_EQ(text, "Input signal type incorrect for fiber model.\n");
    text.clear();
    in.sigType = OpSigType;
    EXPECT_EQ(Fiber(&in, params, stop, &out, text), Status::Success);
    EXPECT_EQ(out.sig, nullptr);
    EXPECT_EQ(text, "");
}

TEST(FiberModel, AttenuatesNoiseWithAndWithoutChannels) {
    FiberParams params = BareFiber();
    params.distance = 10000;
    params.loss = 0.3;
    const double transmission = std::pow(10, -0.3);
    for (const bool hasChannels : {true, false}) {
        const Owned<OpSignal> input = MakeSignal(
            hasChannels ? std::vector<ChannelSpec>{{Constant(0), {}}} : std::vector<ChannelSpec>{},
            16, ps);
        input->noise = RampSpectrum(4).release();
        input->noise->next = RampSpectrum(2).release();
        const FiberResult out = RunThrough(input, params);
        EXPECT_EQ(!out.signal->channels, !hasChannels);
        EXPECT_NEAR(out.signal->noise->powerSamples[4], 4 * transmission, 1e-14);
        EXPECT_NEAR(out.signal->noise->next->powerSamples[2], 2 * transmission, 1e-14);
    }
}

// A continuous level of one sample has no band and no ends: loss and phase act at the carrier.
TEST(FiberModel, TakesASingleSampleThroughAtTheCarrier) {
    FiberParams params = BareFiber();
    params.doublesWindow = true;
    params.curve.beta2 = -2e-26;
    params.n2 = 2.6e-20;
    params.distance = 20000;
    const Owned<OpSignal> input =
        MakeSignal({{Constant(0.1), {}}, {Constant(0.05), {}, 1.56e-6}}, 1, 0);
    const FiberResult out = RunThrough(input, params);
    const double phase = GammaOf(2.6e-20, 1.55e-6) * 20000 * (0.01 + 2 * 0.0025);
    EXPECT_NEAR(std::abs(out.X(1) - std::polar(0.1, phase)), 0, 1e-13);
}

// At no length nothing changes, padded or not; with a negative one and no dispersion to count
// periods by it is 50 km. A channel without a bit rate counts as 10 Gb/s at its place in the list.
TEST(FiberModel, ResolvesDistanceAndCharacteristicLengths) {
    const Owned<OpSignal> input = SomeSignal();
    FiberParams params = BareFiber();
    params.doublesWindow = true;
    params.distance = 0;
    params.pmdMethod = "Coarse_Step";
    const FiberResult same = RunThrough(input, params);
    ASSERT_NE(same.Channel().Ey_samples, nullptr);
    for (int i = 1; i <= 64; ++i) {
        EXPECT_EQ(same.X(i), Value(input->channels->Ex_samples[i]));
        EXPECT_EQ(same.Y(i), Cplx(0));
    }

    params = BareFiber();
    params.distance = -3000;
    params.zStepSize = 1e4;
    const FiberResult bare = RunThrough(input, params);
    EXPECT_EQ(bare.params.distance, 50000);
    EXPECT_EQ(bare.params.LD, infiniteLength);
    EXPECT_EQ(bare.params.z0, infiniteLength);
    EXPECT_EQ(bare.params.L3, infiniteLength);

    const struct {
        double firstRate, secondRate, T;
    } rows[] = {{0, 1e9, 1e-10}, {1e12, 0, 1e-10}, {2e10, 4e10, 2.5e-11}, {0, 4e10, 2.5e-11}};
    params.curve.beta2 = -2e-26;
    params.curve.beta3 = -1e-40;
    params.distance = 1000;
    for (const auto& row : rows) {
        input->channels->bitRate = row.firstRate;
        input->channels->next->bitRate = row.secondRate;
        const FiberResult out = RunThrough(input, params);
        EXPECT_NEAR(out.params.LD, row.T * row.T / 2e-26, 1e-9 * out.params.LD);
        EXPECT_NEAR(out.params.L3, row.T * row.T * row.T / 1e-40, 1e-9 * out.params.L3);
    }
}

// Whatever allocation fails, the input can be freed afterwards (nothing holds its lock) and nothing
// is stored. Without memory the numeric arrays take the escape; the rest reports.
TEST(FiberModel, SurvivesExhaustedMemory) {
    const Owned<OpSignal> input = SomeSignal();
    input->noise = RampSpectrum(4).release();
    FiberParams params = BareFiber();
    params.pmdMethod = "Coarse_Step";
    params.doublesWindow = true;
    params.hasRaman = true;
    std::vector<std::string> texts;
    bool finished = false;
    for (std::int64_t n = 1; n < 200 && !finished; ++n) {
        RefuseAllocationsFrom(n);
        try {
            const FiberResult result = RunThrough(input.get(), params);
            finished = result.status == Status::Success;
            EXPECT_EQ(!result.signal, !finished);
            if (!finished) texts.push_back(result.text);
        } catch (const Escape&) {
        }
        RefuseAllocationsFrom(-1);
        EXPECT_EQ(input->channels->fos, nullptr);
    }
    EXPECT_TRUE(finished);
    for (const char* expected :
         {"Error in copying OpSig in Fiber().\n", "Error in creating fos in Fiber().\n",
          "Insufficient memory for dynamic allocation to Fiber() - temp arrays\n"})
        EXPECT_NE(std::find(texts.begin(), texts.end(), expected), texts.end()) << expected;
}

/// The model as a topology runs it: the catalogue's defaults, changed by name.
class FiberBlock : public CatalogueBlock {
  public:
    FiberBlock() : CatalogueBlock("NonlinearFiberModel") {}
    FiberParams Read() { return ReadFiberParams("Fib", Evaluated().parameters); }
    Owned<OpSignal> Run(const Owned<OpSignal>& input) {
        Nodelist in{}, out{};
        in.sigType = OpSigType;
        in.sig = input.get();
        std::string text;
        EXPECT_EQ(DispatchModel({BuiltInModels(), nullptr},
                                {*workspace_, Evaluated(), *workspace_->options, &in, &out, text}),
                  Status::Success)
            << text;
        EXPECT_EQ(out.sigType, OpSigType);
        return Owned<OpSignal>(static_cast<OpSignal*>(out.sig));
    }

  private:
    TempDir directory_;
    std::unique_ptr<Workspace> workspace_ = CreateWorkspace();
};

// Every number of the definition arrives under its name, every word is understood.
TEST(FiberModel, ReadsTheParametersOfItsDefinition) {
    using Read = double (*)(const FiberParams&);
    const struct {
        const char *name, *value;
        Read read;
    } rows[] = {
        {"distance", "101", [](const FiberParams& p) { return p.distance; }},
        {"zStepSize", "102", [](const FiberParams& p) { return p.zStepSize; }},
        {"zStepFac", "103", [](const FiberParams& p) { return p.zStepFac; }},
        {"diameter", "104e-8", [](const FiberParams& p) { return p.diameter; }},
        {"aEff", "105", [](const FiberParams& p) { return p.aEff; }},
        {"loss", "106", [](const FiberParams& p) { return p.loss; }},
        {"beta2", "107e-25", [](const FiberParams& p) { return p.curve.beta2; }},
        {"beta3", "108e-37", [](const FiberParams& p) { return p.curve.beta3; }},
        {"n1", "1.09", [](const FiberParams& p) { return p.curve.n1; }},
        {"n2", "110e-20", [](const FiberParams& p) { return p.n2; }},
        {"dispersionLambda0", "111e-8", [](const FiberParams& p) { return p.curve.lambda0; }},
        {"dispersionS0", "112", [](const FiberParams& p) { return p.curve.S0; }},
        {"dispersionOffset", "113e-9", [](const FiberParams& p) { return p.curve.D0; }},
        {"skew", "114e-12", [](const FiberParams& p) { return p.skew; }},
        {"pmd_coef", "115e-15", [](const FiberParams& p) { return p.pmdCoefficient; }},
        {"pmd_corlen", "116", [](const FiberParams& p) { return p.pmdCorrelationLength; }},
    };
    FiberBlock block;
    const FiberParams defaults = block.Read();
    EXPECT_FALSE(defaults.showStatus || defaults.hasRaman || defaults.mergesHalfSteps);
    EXPECT_TRUE(defaults.doublesWindow);
    for (const auto& row : rows) block.Set(row.name, row.value);
    block.Set("dataType", "defined2").Set("showstatus", "Yes").Set("raman_effects", "Gain");
    block.Set("pmd_method", "Coarse_Step").Set("optimizationlevel", "3");
    const FiberParams read = block.Read();
    for (const auto& row : rows) EXPECT_DOUBLE_EQ(row.read(read), std::stod(row.value)) << row.name;
    EXPECT_EQ(read.dataType, "defined2");
    EXPECT_EQ(read.pmdMethod, "Coarse_Step");
    EXPECT_TRUE(read.showStatus && read.hasRaman && read.mergesHalfSteps && !read.doublesWindow);
}

// 80 km of standard fiber: 16 dB and, without power, the textbook's broadening.
TEST(FiberModel, RunsWithTheDefaultsOfTheCatalogue) {
    const auto input = MakeSignal({{Gauss(1e-9, 50 * ps), {}}}, 1024, 2 * ps);
    FiberBlock block;
    const auto out = block.Run(input);
    const double loss = Energy(*out->channels) / Energy(*input->channels);
    EXPECT_NEAR(loss, std::pow(10, -1.6), 1e-9);
    const double a = 2.17e-26 * 80000 / (50 * ps * 50 * ps);
    const double broadening =
        MomentsOf(*out->channels).variance / MomentsOf(*input->channels).variance;
    EXPECT_NEAR(broadening, 1 + a * a, 1e-3);

    // G.652 by its curve: 17.5 ps/(nm km) at 1550 nm in place of 17.
    block.Set("dataType", "defined");
    const auto defined = block.Run(input);
    EXPECT_NEAR(MomentsOf(*defined->channels).variance / MomentsOf(*input->channels).variance,
                1 + a * a * 1.05, 0.05 * a * a);
}

TEST(FiberModel, AddsSkewToTheStartAndBlursTheXPolarization) {
    const double T0 = 20 * ps;
    const auto input = MakeSignal({{Gauss(1e-9, T0), Gauss(1e-9, T0)}}, 512, 2 * ps);
    FiberBlock block;
    block.Set("distance", "10000").Set("loss", "0").Set("beta2", "0").Set("beta3", "0");
    block.Set("n2", "0").Set("n1", "0");
    const auto plain = block.Run(input);
    block.Set("skew", "3e-12").Set("pmd_method", "Approximate");
    block.Set("pmd_coef", "1e-13").Set("pmd_corlen", "100");
    const auto out = block.Run(input);
    EXPECT_DOUBLE_EQ(out->channels->startTime, 3e-12);
    EXPECT_EQ(plain->channels->startTime, 0);

    // exp(-t^2/2T0^2) convolved with a Gaussian of deviation sigma.
    const double sigma = 1e-13 / std::sqrt(10000 / 100.0 + 1) * 10000;
    const double width = T0 * T0 + sigma * sigma;
    for (int i = 1; i <= 512; ++i) {
        const double t = (i - 1 - 256) * 2 * ps;
        const double blurred =
            std::sqrt(1e-9) * T0 / std::sqrt(width) * std::exp(-0.5 * t * t / width);
        ASSERT_NEAR(std::abs(Value(out->channels->Ex_samples[i]) - blurred), 0, 1e-12);
        ASSERT_EQ(Value(out->channels->Ey_samples[i]), Value(plain->channels->Ey_samples[i]));
    }
}

}  // namespace
}  // namespace photrak
