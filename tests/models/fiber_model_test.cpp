// The fiber as a model: what it reads, what it refuses, what passes by, and what it leaves behind.
#include "models/block_run.h"
#include "models/fiber_fixture.h"
#include "support/catalogue_block.h"
#include "support/refused_memory.h"

namespace photrak {
namespace {

constexpr double ps = 1e-12;

using P = FiberParams;
using S = OpSig;

Owned<OpSignal> SomeSignal() {
    return MakeSignal({{Gauss(1e-3, 10 * ps), {}}, {Gauss(2e-3, 12 * ps), {}, 1.56e-6}}, 64, ps);
}

TEST(FiberModel, RefusesWhatItCannotCompute) {
    const struct {
        const char* said;  // part of the text
        std::function<void(P&, S&)> change;
    } rows[] = {
        {"neither zStepSize nor zStepFac", [](P& p, S&) { p.zStepSize = p.zStepFac = -1; }},
        {"'distance' is nan", [](P& p, S&) { p.distance = NAN; }},
        {"'dataType' is 'linear'", [](P& p, S&) { p.dataType = "linear"; }},
        {"'diameter' is 0", [](P& p, S&) { p.diameter = 0; }},
        {"effective area", [](P& p, S&) { p.diameter = 1e-200; }},
        {"does not lead to the end",
         [](P& p, S&) {
             p.distance = 1e6;
             p.zStepSize = 1e-11;
         }},
        {"64 samples every 1e-12 s and of 32",
         [](P&, S& s) { EXPECT_EQ(ResizeOpSig(s.next, 32), 0); }},
        {"power of two", [](P&, S& s) { s.noPoints = s.next->noPoints = 48; }},
        {"time step", [](P&, S& s) { s.tStep = s.next->tStep = 0; }},
        {"no group velocity", [](P& p, S&) { p.curve.lambda0 = 0; }},
        {"power of the signal is nan", [](P&, S& s) { s.next->Ex_samples[7].im = NAN; }},
        {"wider than its dispersion curve",
         [](P& p, S& s) {
             p.dataType = "defined";
             s.tStep = s.next->tStep = 1e-15;
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.said);
        const Owned<OpSignal> input = SomeSignal();
        FiberParams params = BareFiber();
        row.change(params, *input->channels);
        const FiberResult result = RunThrough(*input, params);
        EXPECT_EQ(result.status, Status::Error);
        EXPECT_NE(result.text.find("ERROR: component 'Fib': "), std::string::npos) << result.text;
        EXPECT_NE(result.text.find(row.said), std::string::npos) << result.text;
        EXPECT_FALSE(result.signal);
    }
    ModelBlock block;
    EXPECT_EQ(BlockRun(RunFiber, block, {Owned<ElecSig>()}).text,
              "Input signal type incorrect for fiber model.\n");
    // A block that lacks the factor of the adaptive step has none.
    EXPECT_EQ(BlockRun(RunFiber, block, {SomeSignal()}).text,
              "ERROR: component 'block': neither zStepSize nor zStepFac is above 0\n");
}

TEST(FiberModel, AttenuatesNoiseWithAndWithoutChannels) {
    FiberParams params = BareFiber();
    params.distance = 10000;
    params.loss = 0.3;
    const double transmission = std::pow(10, -0.3);
    for (const bool hasChannels : {true, false}) {
        const Owned<OpSignal> input = Multiplex(16, ps);
        if (!hasChannels) FreeOpSigList(&input->channels);
        const FiberResult out = RunThrough(input, params);
        EXPECT_EQ(!out.signal->channels, !hasChannels);
        EXPECT_NEAR(out.signal->noise->powerSamples[4], 4 * transmission, 1e-14);
        EXPECT_NEAR(out.signal->noise->next->powerSamples[2], 2 * transmission, 1e-14);
    }
}

// A continuous level of one sample has no band and no ends: loss and phase act at the carrier.
TEST(FiberModel, TakesASingleSampleThroughAtTheCarrier) {
    FiberParams params = BareFiber();
    params.optimizationLevel = 0;
    params.curve.beta2 = -2e-26;
    params.n2 = 2.6e-20;
    params.distance = 20000;
    const Owned<OpSignal> input =
        MakeSignal({{Constant(0.1), {}}, {Constant(0.05), {}, 1.56e-6}}, 1, 0);
    const FiberResult out = RunThrough(input, params);
    const double phase = GammaOf(2.6e-20, 1.55e-6) * 20000 * (0.01 + 2 * 0.0025);
    EXPECT_NEAR(std::abs(out.X(1) - std::polar(0.1, phase)), 0, 1e-13);
}

// A negative distance counts thousandths of soliton periods pi/2 LD; without dispersion it is 50
// km. A channel without a bit rate counts as 10 Gb/s at its place in the list.
TEST(FiberModel, ResolvesDistanceAndCharacteristicLengths) {
    const Owned<OpSignal> input = SomeSignal();
    FiberParams params = BareFiber();
    params.distance = -3000;
    params.zStepSize = 1e4;
    const FiberResult bare = RunThrough(input, params);
    EXPECT_EQ(bare.params.distance, 50000);
    for (const double length : {bare.params.LD, bare.params.z0, bare.params.L3}) {
        EXPECT_EQ(length, infiniteLength);
    }

    const struct {
        double firstRate, secondRate, T;
    } rows[] = {{1e12, 0, 1e-10}, {0, 4e10, 2.5e-11}};
    params.curve.beta2 = -2e-26;
    params.curve.beta3 = -1e-40;
    for (const auto& row : rows) {
        input->channels->bitRate = row.firstRate;
        input->channels->next->bitRate = row.secondRate;
        const FiberResult out = RunThrough(input, params);
        EXPECT_NEAR(out.params.distance, 3 * M_PI / 2 * out.params.LD, 1e-9 * out.params.LD);
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
    params.pmdMethod = PmdMethod::CoarseStep;
    params.optimizationLevel = 0;
    params.hasRaman = true;
    const std::string texts = RefuseMemoryInTurn([&](std::string& text) {
        const FiberResult result = RunThrough(*input, params);
        EXPECT_EQ(!result.signal, result.status != Status::Success);
        EXPECT_EQ(input->channels->fos, nullptr);
        text = result.text;
        return result.status;
    });
    EXPECT_NE(texts.find("allocation to Fiber() - temp arrays\n"), std::string::npos) << texts;
}

TEST(FiberModel, AddsSkewToTheStartAndBlursTheXPolarization) {
    const double T0 = 20 * ps;
    const auto input = MakeSignal({{Gauss(1e-9, T0), Gauss(1e-9, T0)}}, 512, 2 * ps);
    CatalogueBlock block("NonlinearFiberModel");
    block.Set("distance", "10000").Set("loss", "0").Set("beta2", "0").Set("beta3", "0");
    block.Set("n2", "0").Set("n1", "0");
    const BlockRun plain(RunFiber, block.Evaluated(), {input});
    block.Set("skew", "3e-12").Set("pmd_method", "Approximate");
    block.Set("pmd_coef", "1e-13").Set("pmd_corlen", "100");
    const BlockRun out(RunFiber, block.Evaluated(), {input});
    EXPECT_DOUBLE_EQ(out.Channel().startTime, 3e-12);

    // exp(-t^2/2T0^2) convolved with a Gaussian of deviation sigma.
    const double sigma = 1e-13 / std::sqrt(10000 / 100.0 + 1) * 10000;
    const double width = T0 * T0 + sigma * sigma, peak = std::sqrt(1e-9) * T0 / std::sqrt(width);
    for (int i = 1; i <= 512; ++i) {
        const double t = (i - 1 - 256) * 2 * ps;
        const double blurred = peak * std::exp(-0.5 * t * t / width);
        ASSERT_NEAR(std::abs(Value(out.Channel().Ex_samples[i]) - blurred), 0, 1e-12);
        ASSERT_EQ(Value(out.Channel().Ey_samples[i]), Value(plain.Channel().Ey_samples[i]));
    }
}

}  // namespace
}  // namespace photrak
