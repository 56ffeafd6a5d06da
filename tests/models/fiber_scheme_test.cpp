// The fast passes of the fiber against the scheme written down plainly, and what must not change a
// result: the number of threads, a run before, the way of cutting a fiber.
#include "models/fiber_plain.h"

namespace photrak {
namespace {

constexpr double ps = 1e-12;

std::vector<ChannelSpec> OneChannel() {
    return {{Gauss(20e-3, 20 * ps), {}}};
}

/// Three channels, far enough apart to walk off by several samples; the second has one polarization
/// only and starts earlier.
std::vector<ChannelSpec> MixedChannels() {
    return {{Gauss(20e-3, 20 * ps), Gauss(8e-3, 15 * ps, 1.0), 1.550e-6, 0},
            {Gauss(15e-3, 25 * ps), {}, 1.556e-6, -7 * ps},
            {Gauss(10e-3, 18 * ps), Gauss(12e-3, 30 * ps), 1.561e-6, 3 * ps}};
}

FiberParams StandardFiber() {
    FiberParams params = BareFiber();
    params.distance = 20300;  // the last step is shorter
    params.zStepSize = 1000;
    params.loss = 0.2;
    params.curve.beta2 = -2.17e-26;
    params.curve.beta3 = 1.3e-40;
    params.n2 = 2.6e-20;
    return params;
}

void Adapt(FiberParams& params) {
    params.zStepSize = -1;
    params.zStepFac = 0.05;
    params.n2 = 2.6e-19;  // so that the nonlinear length is the shortest
}

void TurnCoarsely(FiberParams& params) {
    params.pmdMethod = PmdMethod::CoarseStep;
    params.pmdCoefficient = 3e-14;
}

void Merge(FiberParams& params) {
    params.optimizationLevel |= 1;
}

void Pad(FiberParams& params) {
    params.optimizationLevel &= ~2;
}

void Amplify(FiberParams& params) {
    params.hasRaman = true;
}

void FollowCurve(FiberParams& params) {
    params.dataType = "defined";
    params.curve.lambda0 = 1.31e-6;
    params.curve.S0 = 92;
    params.curve.D0 = -1e-6;
}

using Changes = std::vector<void (*)(FiberParams&)>;

FiberParams ChangedFiber(const Changes& changes) {
    FiberParams params = StandardFiber();
    for (const auto change : changes) change(params);
    return params;
}

const struct {
    std::vector<ChannelSpec> channels;
    Changes changes;
} schemeCases[] = {{{MixedChannels()[0]}, {}},
                   {OneChannel(), {Adapt, Pad}},
                   {MixedChannels(), {Adapt, Merge}},
                   {MixedChannels(), {Pad}},
                   {MixedChannels(), {Amplify, FollowCurve}},
                   {OneChannel(), {TurnCoarsely, Pad}},
                   {MixedChannels(), {TurnCoarsely, Merge}},
                   {OneChannel(), {TurnCoarsely, Merge, Adapt}}};

/// Largest difference of two signals over the largest field of the second.
double Deviation(const OpSig* a, const OpSig* b) {
    double worst = 0, peak = 0;
    for (; b; a = a->next, b = b->next) {
        EXPECT_NE(a, nullptr);
        for (const auto samples : {&OpSig::Ex_samples, &OpSig::Ey_samples}) {
            for (int i = 1; b->*samples && i <= b->noPoints; ++i) {
                worst = std::max(worst, Magnitude((a->*samples)[i] - (b->*samples)[i]));
                peak = std::max(peak, Magnitude((b->*samples)[i]));
            }
        }
    }
    return worst / peak;
}

// Both do the same arithmetic in another order: what parts them is rounding, some 1e-16 per
// transform, of which there are some hundreds here.
TEST(FiberScheme, FollowsThePlainScheme) {
    for (const auto& row : schemeCases) {
        SCOPED_TRACE(&row - schemeCases);
        const Owned<OpSignal> input = MakeSignal(row.channels, 256, 2 * ps);
        const FiberParams params = ChangedFiber(row.changes);
        const FiberResult fast = RunThrough(input, params);
        ASSERT_TRUE(fast.signal);

        Owned<OpSignal> plain;
        ASSERT_EQ(Make(plain, CopyOpSignal, input.get()), 0);
        PlainFiber scheme(*plain, fast.params);
        scheme.Run();
        EXPECT_GE(scheme.steps, 15);
        EXPECT_LE(Deviation(fast.signal->channels, plain->channels), 1e-11);
        for (const OpSig *a = fast.signal->channels, *b = plain->channels; b;
             a = a->next, b = b->next) {
            EXPECT_NEAR(a->startTime, b->startTime, 1e-15 * std::fabs(b->startTime) * 30);
        }
        // The fiber did something worth comparing.
        EXPECT_GT(Deviation(fast.signal->channels, input->channels), 0.01);
    }
}

/// Deviation in time of the power in both polarizations, s.
double WidthOf(const OpSig& sig) {
    const Moments x = MomentsOf(sig), y = MomentsOf(sig, &OpSig::Ey_samples);
    const double part = y.energy / (x.energy + y.energy), apart = y.mean - x.mean;
    return std::sqrt((1 - part) * x.variance + part * y.variance +
                     part * (1 - part) * apart * apart);
}

// Fifty steps and a rest. A meter more is one turn more, which mixes the polarizations and leaves
// their sum alone. What rounding may leave of the fiber is no step at all. A half step that is
// carried over is the half step that it was; with adaptive steps the nonlinear ones see another
// power for it, which is of the order of the step.
TEST(FiberScheme, TurnsAlikeWhateverTheLastStepIs) {
    FiberParams params = ChangedFiber({TurnCoarsely});
    params.n2 = 2.6e-21;
    const double LD = 1e-20 / 2.17e-26;
    const Owned<OpSignal> input = MakeSignal({{Gauss(1e-3, 5 * ps), {}}}, 512, ps);
    for (const bool adapts : {false, true}) {
        SCOPED_TRACE(adapts);
        params.zStepSize = adapts ? -1 : 1000;
        params.zStepFac = adapts ? 1000 / LD : -1;
        const auto run = [&](double rest, bool merges) {
            params.distance = 50000 + rest;
            params.optimizationLevel = merges ? 3 : 2;
            return RunThrough(input, params);
        };
        const FiberResult whole = run(0, true), longer = run(1, true);
        EXPECT_LE(Deviation(run(3e-10, true).signal->channels, whole.signal->channels), 1e-12);
        EXPECT_GT(Deviation(longer.signal->channels, whole.signal->channels), 0.1);
        EXPECT_NEAR(WidthOf(longer.Channel()) / WidthOf(whole.Channel()), 1, 0.01);
        for (const FiberResult* merged : {&whole, &longer}) {
            const FiberResult apart = run(merged == &longer ? 1 : 0, false);
            EXPECT_LE(Deviation(merged->signal->channels, apart.signal->channels),
                      adapts ? 1e-3 : 1e-11);
        }
    }
}

// Sums over the channels are made in fixed groups, so that no number depends on who adds them up.
TEST(FiberScheme, GivesTheSameFieldsOnAnyNumberOfThreadsAndInEveryRun) {
    std::vector<ChannelSpec> channels;
    for (int c = 0; c < 9; ++c)
        channels.push_back({Gauss(5e-3, (20 + c) * ps),
                            c % 3 ? Gauss(3e-3, (30 - c) * ps) : Waveform{}, 1.55e-6 + c * 1.6e-9});
    const Owned<OpSignal> input = MakeSignal(channels, 2048, 1 * ps);
    for (const Changes& changes :
         {Changes{}, {Amplify}, {Adapt}, {FollowCurve, TurnCoarsely, Pad}}) {
        FiberParams params = ChangedFiber(changes);
        params.distance = 3000;
        const FiberResult alone = RunThrough(input, params, "1");
        const FiberResult team = RunThrough(input, params, "3");
        EXPECT_EQ(Deviation(alone.signal->channels, team.signal->channels), 0);
    }
}

/// Sets the stop word when a number of steps have been announced.
struct StopAfter : RecordingHost {
    explicit StopAfter(std::size_t count) : steps(count) {}
    void ShowStatusText(std::string_view text) override {
        RecordingHost::ShowStatusText(text);
        if (statusTexts.size() >= steps) stop = 1;
    }
    std::size_t steps;
    std::atomic<std::int16_t> stop{0};
};

FiberResult RunWatched(const OpSignal& input, FiberParams params, StopAfter& host,
                       std::string_view owner = "Fib") {
    params.showStatus = true;
    return RunFor(input, params, host.stop, owner);
}

TEST(FiberScheme, StopsAtAWholeStepWithTheNoiseOfTheWholeLength) {
    const TempDir directory;
    Owned<OpSignal> input = MakeSignal(MixedChannels(), 256, 2 * ps);
    input->noise = RampSpectrum(3).release();
    for (const Changes& changes : {Changes{}, {Merge}, {Pad}}) {
        FiberParams params = ChangedFiber(changes);
        StopAfter host(3);
        const FiberResult stopped = RunWatched(*input, params, host);
        ASSERT_EQ(stopped.status, Status::Success);
        EXPECT_EQ(host.statusTexts.back(), "Z=3000 and dZ=1000 in NLFiber Fib");
        const double transmission = std::pow(10, -0.02 * 20.3);
        EXPECT_NEAR(stopped.signal->noise->powerSamples[2], 2 * transmission, 1e-12);

        params.distance = 3000;
        const FiberResult whole = RunThrough(input, params);
        EXPECT_LE(Deviation(stopped.signal->channels, whole.signal->channels), 1e-12);
    }
}

// A fixed step goes before an adaptive one; a fiber of no length is told as such.
TEST(FiberScheme, TellsEveryStepAndTheTimeItTook) {
    const TempDir directory;
    const Owned<OpSignal> input = MakeSignal(OneChannel(), 64, 2 * ps);
    FiberParams params = StandardFiber();
    params.zStepFac = 1e-3;
    StopAfter host(100);
    for (const double distance : {1500.0, 0.0}) {
        params.distance = distance;
        ASSERT_EQ(RunWatched(*input, params, host, "50%s").status, Status::Success);
    }
    std::string expected;
    for (const char* step : {"Z=0 and dZ=1000", "Z=1000 and dZ=500", "Z=1500 and dZ=1000"})
        expected += step + std::string(" in NLFiber 50%s\n");
    EXPECT_EQ(host.statusTexts.back(), "Z=0 and dZ=0 in NLFiber 50%s");
    const std::string log = directory.Read("log.txt");
    EXPECT_TRUE(log.starts_with(expected + "NLFiber calculation time = ")) << log;
    EXPECT_NE(log.find(" sec for distance = 1500 meters\n"), std::string::npos);
}

}  // namespace
}  // namespace photrak
