// What a node remembers of the signals that passed: the numbers, their order and their bound.
#include "kernel/signal_summary.h"

#include "support/signals.h"
#include "support/sweep_link.h"

namespace photrak {
namespace {

TEST(SignalSummary, OutlivesTheSignalWithItsCoordinates) {
    SweepLink link;
    link.Draw("Source source > Step step > Sink sink");
    link.GiveNumber(link["step"], "number", "x");
    link.Inner("x", "1", "1000", "1");
    ASSERT_EQ(link.Scan(), Status::Success) << link.Text();
    EXPECT_EQ(link.Behind("source").summaries.size(), 1u);
    const Node& node = link.Behind("step");
    EXPECT_EQ(node.signals, nullptr);
    EXPECT_EQ(node.summaries.size(), maxSummariesOnNode);
    std::int32_t point = 1000;  // the newest are kept, and stand first
    for (const SignalSummary& summary : node.summaries) {
        EXPECT_EQ(summary.SET, 1);
        EXPECT_EQ(summary.INNERSWEEP, point);
        EXPECT_EQ(summary.OUTERSWEEP, 1);
        EXPECT_EQ(summary.mode, simMode::innerSweep);
        EXPECT_EQ(summary.bitRate, 1 + point);  // source 1, x = point
        --point;
    }
}

/// A stored signal, freed at the end of a scope.
struct Stored {
    Node node;
    SigRecord& record = *new SigRecord;
    std::string text;

    Stored(void* sig, std::int32_t sigType) {
        record.sig = sig;
        record.sigType = sigType;
        node.signals = &record;
    }
    const SignalSummaries& Keep() {
        SignalSummaries made;
        EXPECT_EQ(SummarizeSignal(record, 0, made, text), Status::Success) << text;
        KeepSummaries(std::move(made), node);
        return node.summaries;
    }
};

OpSig* AddChannel(OpSignal& signal, double wavelength, std::int32_t n, Complex field) {
    OpSig* channel = RampChannel(n, 2e-12).release();
    std::fill_n(channel->Ex_samples + 1, n, field);
    channel->wavelength = wavelength;
    channel->next = signal.channels;
    return signal.channels = channel;
}

TEST(SignalSummary, HoldsARecordForEachChannel) {
    OpSignal* signal = nullptr;
    ASSERT_EQ(CreateOpSignal(&signal), 0);
    OpSig* both = AddChannel(*signal, 1.55e-6, 8, {0.1, 0});
    ASSERT_EQ(AddEySamples(both), 0);
    std::fill_n(both->Ey_samples + 1, 8, Complex{0, 0.1});
    AddChannel(*signal, 1.54e-6, 8, {0.03, 0.04});
    signal->noise = RampSpectrum(8).release();  // peaks at 8
    signal->noise->next = RampSpectrum(3).release();

    Stored stored(signal, OpSigType);
    const SignalSummaries& kept = stored.Keep();
    ASSERT_EQ(kept.size(), 2u);
    const SignalSummary &first = kept.front(), &second = kept.back();
    EXPECT_EQ(first.wavelength, 1.54e-6);
    EXPECT_DOUBLE_EQ(first.average, 0.0025);
    EXPECT_EQ(second.wavelength, 1.55e-6);
    EXPECT_DOUBLE_EQ(second.average, 0.02);
    EXPECT_EQ(second.noiseFigure, 8.0);
    EXPECT_EQ(second.tStep, 2e-12);
    EXPECT_EQ(second.startTime, 3e-12);
}

TEST(SignalSummary, MeasuresWaveformsAndBits) {
    ElecSig* wave = RampWaveform(64, 1e-12).release();
    std::fill_n(wave->elecSamples + 1, 64, Complex{-0.5, 0});
    std::fill_n(wave->sigmaSamples + 1, 64, Complex{0.01, 0});
    Stored current(wave, ElecSigType);
    const SignalSummary& electrical = current.Keep().front();
    EXPECT_EQ(electrical.unit, "A");
    // An integral over 63 steps, taken for 64.
    EXPECT_NEAR(electrical.average, 0.5 * 63 / 64, 1e-12);
    EXPECT_NEAR(electrical.noiseFigure, 0.01 * 63 / 64, 1e-12);
    EXPECT_DOUBLE_EQ(electrical.duration, 64e-12);

    Stored bits(AlternatingBits(9).release(), BinSigType);  // five of them are set
    const SignalSummary& binary = bits.Keep().front();
    EXPECT_DOUBLE_EQ(binary.average, 5.0 / 9);
    EXPECT_EQ(binary.patternLength, 9);
    EXPECT_DOUBLE_EQ(binary.duration, 0.9e-9);
}

}  // namespace
}  // namespace photrak
