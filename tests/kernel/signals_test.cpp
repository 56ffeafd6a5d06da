// Records of signals: sizes at the edges, what is taken over and what is not, who owns what.
#include "kernel/signals.h"

#include <limits>
#include <tuple>

#include "support/signals.h"

namespace photrak {
namespace {

TEST(Signals, SizesAtTheEdges) {
    for (std::int32_t n : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
        SCOPED_TRACE(n);
        Owned<OpSig> channel, copy;
        ASSERT_EQ(Make(channel, CreateOpSig, n), 0);
        EXPECT_EQ(channel->noPoints, n);
        EXPECT_EQ(channel->fftView, nullptr);
        EXPECT_EQ(AddEySamples(channel.get()), 0);
        EXPECT_EQ(Make(copy, CopyOpSig, channel.get()), 0);
        Owned<OpSigASE> spectrum;
        ASSERT_EQ(Make(spectrum, CreateOpSigASE, n), 0);
        EXPECT_EQ(spectrum->noPoints, 0);
        EXPECT_EQ(spectrum->powerSamples, nullptr);
        Owned<ElecSig> waveform;
        EXPECT_EQ(Make(waveform, CreateElecSig, n), n < 0 ? 1 : 0);
        Owned<BinSig> bits;
        EXPECT_EQ(Make(bits, CreateBinSig, n), n < 0 ? 1 : 0);
        if (n < 0) continue;
        EXPECT_EQ(Value(waveform->elecSamples[0]), 0.0);  // one element, readable
        bits->bitSequence[0] = 1;
    }
    BinSig manyBits{};
    manyBits.noPoints = 70000;
    Owned<OpSig> channel;
    EXPECT_EQ(Make(channel, CreateOpSigFromBin, &manyBits, 70000), 1);
    Owned<ElecSig> waveform;
    EXPECT_EQ(Make(waveform, CreateElecSigFromBin, &manyBits, 70000), 1);
}

TEST(Signals, ResizeGivesZerosAndNewViewsOnlyIfTheSizeChanges) {
    const Owned<OpSig> channel = RampChannel(3, 1.0, Polarized::Yes);
    ASSERT_EQ(ResizeOpSig(channel.get(), 3), 0);
    EXPECT_EQ(channel->fftView[6], -3.0);
    EXPECT_EQ(channel->Ey_samples[3].re, 103.0);
    ASSERT_EQ(ResizeOpSig(channel.get(), 5), 0);
    channel->fftView[9] = 7.0;
    EXPECT_EQ(Value(channel->Ex_samples[5]), std::complex(7.0));
    EXPECT_EQ(Value(channel->Ex_samples[1]), 0.0);
    EXPECT_EQ(Value(channel->Ey_samples[5]), 0.0);
    EXPECT_EQ(channel->wavelength, 1.55e-6);
    ASSERT_EQ(ResizeOpSig(channel.get(), 0), 0);
    EXPECT_EQ(channel->Ex_samples, nullptr);
    EXPECT_EQ(channel->Ey_samples, nullptr);

    const Owned<ElecSig> waveform = RampWaveform(3, 1.0);
    ASSERT_EQ(ResizeElecSig(waveform.get(), 2), 0);
    waveform->fftView[3] = 7.0;
    waveform->sigmaFftView[4] = 8.0;
    EXPECT_EQ(Value(waveform->elecSamples[2]), std::complex(7.0));
    EXPECT_EQ(Value(waveform->sigmaSamples[2]), std::complex(0.0, 8.0));
}

/// What a waveform says of time, comparable.
template <class Waveform>
auto TimeAxis(const Waveform& sig) {
    return std::tuple(sig.noPoints, sig.tStep, sig.startTime, sig.bitRate, sig.patternLength,
                      sig.spareCount, sig.domain);
}

TEST(Signals, SignalsMadeFromOthersTakeTheTimeAxis) {
    const Owned<BinSig> bits = AlternatingBits(8);
    Owned<OpSig> channel;
    ASSERT_EQ(Make(channel, CreateOpSigFromBin, bits.get(), 16), 0);
    EXPECT_EQ(channel->noPoints, 128);
    EXPECT_EQ(channel->patternLength, 8);
    EXPECT_DOUBLE_EQ(channel->tStep, 6.25e-12);  // a bit of 100 ps in 16 samples
    EXPECT_EQ(channel->startTime, 5e-12);
    EXPECT_EQ(channel->spareCount, 1);

    channel->spareCount = 4;
    channel->domain = FreqDomain;
    channel->wavelength = 1e-6;
    Owned<ElecSig> waveform;
    ASSERT_EQ(Make(waveform, CreateElecSigFromOp, channel.get()), 0);
    EXPECT_EQ(TimeAxis(*waveform), TimeAxis(*channel));
    Owned<OpSignal> pair;
    ASSERT_EQ(Make(pair, CreateOpSignalFromElec, waveform.get()), 0);
    EXPECT_EQ(TimeAxis(*pair->channels), TimeAxis(*channel));
    EXPECT_EQ(pair->channels->wavelength, 0.0);

    Owned<BinSig> received;
    ASSERT_EQ(Make(received, CreateBinSigFromElec, waveform.get()), 0);
    EXPECT_EQ(received->noPoints, 8);
    EXPECT_EQ(received->bitRate, 1e10);
    EXPECT_EQ(received->startTime, 5e-12);
}

TEST(Signals, CopiesAreDeepAndLeaveLinksAndWorkArraysBehind) {
    const Owned<OpSignal> source = Multiplex(4, 2.0);
    int fiberRecord = 0;
    OpSig& first = *source->channels;
    first.fos = &fiberRecord;
    first.auxSamples = static_cast<Complex*>(AllocateZeroed(5, sizeof(Complex)));
    Owned<OpSignal> copy;
    ASSERT_EQ(Make(copy, CopyOpSignal, source.get()), 0);
    first.fos = nullptr;

    const OpSig& channel = *copy->channels;
    EXPECT_EQ(channel.fos, nullptr);
    EXPECT_EQ(channel.auxSamples, nullptr);
    EXPECT_EQ(channel.Ey_samples, nullptr);
    EXPECT_EQ(channel.prev, nullptr);
    first.Ex_samples[4] = {};
    EXPECT_EQ(Value(channel.Ex_samples[4]), std::complex(4.0, -4.0));
    EXPECT_EQ(TimeAxis(channel), TimeAxis(first));
    EXPECT_EQ(std::pair(channel.RIN, channel.wavelength), std::pair(1e-15, 1.55e-6));
    ASSERT_NE(channel.next, nullptr);
    EXPECT_EQ(channel.next->prev, &channel);
    EXPECT_EQ(channel.next->Ey_samples[4].re, 104.0);
    EXPECT_EQ(channel.next->next, nullptr);
    ASSERT_NE(copy->noise->next, nullptr);
    EXPECT_EQ(copy->noise->next->powerSamples[5], 5.0);
    EXPECT_EQ(copy->noise->fstart, 193e12);

    const Owned<ElecSig> waveform = RampWaveform(4, 2.0);
    Owned<ElecSig> waveformCopy;
    ASSERT_EQ(Make(waveformCopy, CopyElecSig, waveform.get()), 0);
    EXPECT_EQ(waveformCopy->UnitType, CurrentUnit);
    EXPECT_EQ(TimeAxis(*waveformCopy), TimeAxis(*waveform));
    EXPECT_EQ(waveformCopy->sigmaFftView[8], -1004.0);
    const Owned<BinSig> bits = AlternatingBits(3);
    Owned<BinSig> bitsCopy;
    ASSERT_EQ(Make(bitsCopy, CopyBinSig, bits.get()), 0);
    EXPECT_EQ(bitsCopy->bitSequence[3], 1);
}

TEST(Signals, ChannelInPropagationRefusesToBeFreed) {
    Owned<OpSignal> pair = Multiplex(4, 1.0);
    int fiberRecord = 0;
    OpSig* head = pair->channels;
    OpSig* second = head->next;
    second->fos = &fiberRecord;
    EXPECT_EQ(FreeOpSig(&second), 1);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(FreeOpSigList(&pair->channels), 1);
    EXPECT_EQ(pair->channels, head);
    EXPECT_EQ(head->next, second);  // the head still owns a whole list

    // A node that drops the signal leaves pair and channels to the fiber.
    auto* record = new SigRecord;
    record->sigType = OpSigType;
    record->sig = pair.get();
    FreeSigRecord(&record);
    EXPECT_EQ(record, nullptr);
    EXPECT_EQ(pair->channels, head);
    EXPECT_NE(pair->noise, nullptr);

    second->fos = nullptr;
    OpSignal* reference = pair.get();
    EXPECT_EQ(FreeOpSignal(&reference), 0);
    EXPECT_EQ(reference, pair.get());  // the pair stays, emptied
    EXPECT_EQ(pair->channels, nullptr);
    EXPECT_EQ(pair->noise, nullptr);
}

TEST(Signals, FreesMoveOnOrLeaveTheReference) {
    OpSigASE* spectra = RampSpectrum(2).release();
    OpSigASE* second = spectra->next = RampSpectrum(3).release();
    EXPECT_EQ(FreeOpSigASE(&spectra), 0);
    EXPECT_EQ(spectra, second);
    EXPECT_EQ(FreeOpSigASEList(&spectra), 0);
    EXPECT_EQ(spectra, nullptr);

    BinSig* bits = AlternatingBits(2).release();
    EXPECT_EQ(FreeBinSig(&bits), 0);
    EXPECT_NE(bits, nullptr);  // the caller clears this one
}

}  // namespace
}  // namespace photrak
