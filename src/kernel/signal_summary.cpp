// One record for each channel, waveform or bit sequence, measured before the signal goes.
#include "kernel/signal_summary.h"

#include <algorithm>
#include <new>

#include "kernel/workspace.h"
#include "numeric/samples.h"

namespace photrak {
namespace {

SignalSummary Begin(const SigRecord& record, std::int16_t mode) {
    SignalSummary summary;
    summary.SET = record.SET;
    summary.INNERSWEEP = record.INNERSWEEP;
    summary.OUTERSWEEP = record.OUTERSWEEP;
    summary.RUN = record.RUN;
    summary.LOOP = record.LOOP;
    summary.BIN = record.BIN;
    summary.mode = mode;
    summary.sigType = record.sigType;
    summary.NAME = record.NAME;
    return summary;
}

/// What channels and electrical signals have in common.
template <class Signal>
void FillTimes(SignalSummary& summary, const Signal& signal) {
    summary.bitRate = signal.bitRate;
    summary.startTime = signal.startTime;
    summary.duration = signal.noPoints * signal.tStep;
    summary.tStep = signal.tStep;
    summary.patternLength = signal.patternLength;
}

double PeakNoiseDensity(const OpSigASE* noise) {
    if (!noise || !noise->powerSamples || noise->noPoints < 1) return 0.0;
    return *std::max_element(noise->powerSamples + 1, noise->powerSamples + noise->noPoints + 1);
}

void FillChannel(SignalSummary& summary, const OpSig& channel, double power,
                 double peakNoiseDensity) {
    FillTimes(summary, channel);
    summary.average = power;
    summary.noiseFigure = peakNoiseDensity;
    summary.wavelength = channel.wavelength;
}

double MeanMagnitude(const double* view, std::int32_t samples) {
    return view && samples > 0 ? IntegrateMagnitude(view, 2L * samples) : 0.0;
}

void FillElectrical(SignalSummary& summary, const ElecSig& signal) {
    FillTimes(summary, signal);
    summary.unit = signal.UnitType == VoltageUnit ? "V" : "A";
    summary.average = MeanMagnitude(signal.fftView, signal.noPoints);
    summary.noiseFigure = MeanMagnitude(signal.sigmaFftView, signal.noPoints);
}

void FillBits(SignalSummary& summary, const BinSig& bits) {
    summary.bitRate = bits.bitRate;
    summary.startTime = bits.startTime;
    summary.patternLength = bits.noPoints;
    if (bits.noPoints < 1) return;
    std::int64_t ones = 0;
    for (std::int32_t i = 1; i <= bits.noPoints; ++i) ones += bits.bitSequence[i];
    summary.average = static_cast<double>(ones) / bits.noPoints;
    if (bits.bitRate > 0.0) summary.duration = bits.noPoints / bits.bitRate;
}

SignalSummaries Summarize(const SigRecord& record, std::int16_t mode) {
    SignalSummaries made;
    if (record.sigType == OpSigType) {
        const auto& signal = *static_cast<const OpSignal*>(record.sig);
        const double peakNoiseDensity = PeakNoiseDensity(signal.noise);
        TakeAveragePowers(signal.channels, [&](const OpSig& channel, double power) {
            FillChannel(made.emplace_back(Begin(record, mode)), channel, power, peakNoiseDensity);
        });
    } else if (record.sigType == ElecSigType) {
        FillElectrical(made.emplace_back(Begin(record, mode)),
                       *static_cast<const ElecSig*>(record.sig));
    } else if (record.sigType == BinSigType) {
        FillBits(made.emplace_back(Begin(record, mode)), *static_cast<const BinSig*>(record.sig));
    }
    return made;
}

}  // namespace

Status SummarizeSignal(const SigRecord& record, std::int16_t mode, SignalSummaries& made,
                       std::string& errorText) {
    if (!record.sig) return Status::Success;
    try {
        made = Summarize(record, mode);
    } catch (const std::bad_alloc&) {
        errorText += "ERROR: insufficient memory for a signal summary\n";
        return Status::Error;
    }
    return Status::Success;
}

void KeepSummaries(SignalSummaries made, Node& node) {
    const std::size_t bound = std::max(maxSummariesOnNode, made.size());
    node.summaries.splice(node.summaries.begin(), made);
    while (node.summaries.size() > bound) node.summaries.pop_back();
}

}  // namespace photrak
