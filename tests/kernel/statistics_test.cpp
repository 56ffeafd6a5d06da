// The draws of a statistical run: how many, in which order, of which distribution.
#include "kernel/statistics.h"

#include <cmath>

#include "base/escape.h"
#include "kernel/symbols.h"
#include "numeric/random.h"
#include "support/small_link.h"

namespace photrak {
namespace {

/// Blocks in the order in which a run would take them.
class Statistics : public ::testing::Test, public SmallLink {
  protected:
    Statistics() { LoopModels(); }

    void OpenLoop(const char* reps) {
        order.push_back(&Add("LoopBeginBlock", "begin"));
        SetText(&order.back()->parameters->value, reps);
    }
    void CloseLoop() { order.push_back(&Add("LoopEndBlock", "end")); }
    Parameter& AddRandom(std::int32_t distribution, const char* deviation,
                         const char* block = "fiber") {
        order.push_back(&Add("Step", block));
        Parameter& parameter = GiveNumber(*order.back(), "loss", "10");
        SetText(&parameter.STDDEV, deviation);
        parameter.PROBDIST = distribution;
        return parameter;
    }
    void Draw(std::int32_t runs) {
        workspace->options->NUMRUNSTODO = runs;
        EXPECT_EQ(BuildSymbolTable(*workspace, errorText), Status::Success);
        DrawStatistics(order, *workspace);
    }
    static std::vector<Complex> Deviates(const Parameter& parameter) {
        std::vector<Complex> all;
        for (const ParameterDraw* draw = parameter.draws; draw; draw = draw->next) {
            all.push_back({draw->re, draw->im});
        }
        return all;
    }

    RunOrder order;
};

long double Mean(const std::vector<Complex>& deviates) {
    long double sum = 0;
    for (const Complex& d : deviates) sum += d.re;
    return sum / static_cast<long double>(deviates.size());
}
long double Variance(std::vector<Complex> deviates) {
    const long double mean = Mean(deviates);
    for (Complex& d : deviates) d.re = double((d.re - mean) * (d.re - mean));
    return Mean(deviates);
}

TEST_F(Statistics, DeviatesHaveTheMomentsOfTheirDistribution) {
    constexpr std::int32_t runs = 40000;
    const Parameter& uniform = AddRandom(UniformProbDist, "0.1");
    const Parameter& limited = AddRandom(TwoSigmaGausProbDist, "0.1");
    Draw(runs);
    // Five standard errors: sqrt(1/n) for a mean, sqrt((kurtosis - 1)/n) for a variance.
    const double meanError = 5.0 / std::sqrt(runs), varianceError = 5.0 * std::sqrt(2.0 / runs);
    const std::vector<Complex> u = Deviates(uniform), t = Deviates(limited);
    EXPECT_NEAR(Mean(u), 0.0, meanError);
    EXPECT_NEAR(Variance(u), 1.0, varianceError);
    // Limited, not drawn again: P(2) - 4 phi(2) + 4 (1 - P(2)), with P(2) the part inside.
    const double inside = std::erf(std::sqrt(2.0));
    const double density = std::exp(-2.0) / std::sqrt(2.0 * 3.14159265358979323846);
    EXPECT_NEAR(Mean(t), 0.0, meanError);
    EXPECT_NEAR(Variance(t), inside - 4.0 * density + 4.0 * (1.0 - inside), varianceError);
    for (const Complex& d : u) ASSERT_LE(std::fabs(d.re), std::sqrt(3.0));
}

TEST_F(Statistics, DrawsOncePerEvaluationOfEachRun) {
    const Parameter& outside = AddRandom(GausProbDist, "1");
    OpenLoop("2");
    const Parameter& once = AddRandom(GausProbDist, "1");
    OpenLoop("2+3");
    const Parameter& inner = AddRandom(GausProbDist, "1");
    CloseLoop();
    OpenLoop("5000");  // moved to the limit 1000
    const Parameter& limited = AddRandom(GausProbDist, "1");
    CloseLoop();
    CloseLoop();
    const Parameter& after = AddRandom(GausProbDist, "1");
    Draw(3);
    const std::pair<const Parameter&, std::size_t> expected[] = {
        {outside, 3}, {once, 6}, {inner, 30}, {limited, 6000}, {after, 3}};
    for (const auto& [parameter, draws] : expected) {
        EXPECT_EQ(Deviates(parameter).size(), draws) << draws;
    }
    FreeDraws(order);
    EXPECT_EQ(inner.draws, nullptr);
}

TEST_F(Statistics, RepeatsTheSequenceWithTheLatestDrawInFront) {
    const Parameter& gaussian = AddRandom(GausProbDist, "1");
    int foreignSeed = -99;
    static_cast<void>(GaussianRandom(&foreignSeed));  // leaves a spare behind
    Draw(3);

    int seed = -1;
    ForgetSpareGaussian();
    static_cast<void>(UniformRandom(&seed));
    std::vector<double> expected;
    for (int i = 0; i < 3; ++i) expected.push_back(GaussianRandom(&seed));
    for (int repeat = 0; repeat < 2; ++repeat) {
        const std::vector<Complex> g = Deviates(gaussian);
        ASSERT_EQ(g.size(), expected.size());
        for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(g[i].re, expected[2 - i]);
        Draw(3);
    }
}

TEST_F(Statistics, ByDesignUniformImaginaryPartStaysRawAndMovesTheRealPart) {
    Parameter& pair = AddRandom(UniformProbDist, "0");
    pair.type = ComplexType;
    SetText(&pair.value, "1 2");
    pair.IPROBDIST = UniformProbDist;
    pair.stddev = NewBlock(0.5);
    pair.istddev = NewBlock(0.5);
    Draw(20);

    int seed = -1;
    static_cast<void>(UniformRandom(&seed));
    const std::vector<Complex> deviates = Deviates(pair);
    ASSERT_EQ(deviates.size(), 20u);
    for (std::size_t i = deviates.size(); i-- > 0;) {
        const double once = (UniformRandom(&seed) - 0.5) * std::sqrt(3.0) * 2.0;
        EXPECT_EQ(deviates[i].re, (once - 0.5) * std::sqrt(3.0) * 2.0);
        EXPECT_EQ(deviates[i].im, UniformRandom(&seed));
    }
}

TEST_F(Statistics, RefusesMoreDrawsThanARunMayHold) {
    const EscapeLevel level(/*armed=*/true);
    const Parameter& before = AddRandom(GausProbDist, "1");
    for (int i = 0; i < 30; ++i) OpenLoop("1000");  // the product would overflow 64 bits
    AddRandom(GausProbDist, "1", "deep %n");
    for (const std::int32_t runs : {2, 2000000000}) {
        host.boxes.clear();
        EXPECT_THROW(Draw(runs), Escape);
        EXPECT_EQ(host.Errors(), Concat("ERROR: too many draws of parameter 'loss' of component '",
                                        runs == 2 ? "deep %n" : "fiber", "'"));
        EXPECT_EQ(before.draws, nullptr);
    }
}

}  // namespace
}  // namespace photrak
