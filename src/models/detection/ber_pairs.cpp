// The checks in the order of their messages, then the work arrays.
#include "models/detection/ber_pairs.h"

#include <algorithm>
#include <cmath>

#include "base/arrays.h"
#include "base/text.h"
#include "kernel/sample_arrays.h"
#include "numeric/messages.h"

namespace photrak {
namespace {

Status RefuseType(std::int32_t input, std::string_view type, const ModelReport& report) {
    return report.Fail("Input signal type incorrect for the bit error rate tester.\nThe ", input,
                       " input signal type must be ", type, ".\n");
}

/// A port that is not wired may have lost its type to the ground node.
bool IsBinaryPort(const Nodelist& cell) {
    if (cell.sigType == BinSigType) return true;
    return !cell.sig && (cell.sigType == UnknownSigType || cell.sigType == NoSigType);
}

Status CheckWave(const Nodelist& cell, std::int32_t input, const ModelReport& report) {
    if (cell.sigType != ElecSigType) return RefuseType(input, "ELECSIG", report);
    if (!cell.sig) {
        return report.Warn("No input electrical signal to BER Tester\n");
    }
    if (static_cast<const ElecSig*>(cell.sig)->domain == TimeDomain) return Status::Success;
    return report.Fail(
        "Input signal domain incorrect for the bit error rate tester.\n"
        "Input signal domain must be in time domain.\n");
}

Status CollectPairs(const Nodelist* inputs, BerPairs& set, const ModelReport& report) {
    std::int32_t input = 1;
    for (const Nodelist* cell = inputs; cell; cell = cell->next->next, input += 2) {
        const Status status = CheckWave(*cell, input, report);
        if (status != Status::Success) return status;
        const Nodelist* bits = cell->next;
        if (!bits) {
            return report.Fail(
                "BER tester requires even number of input signals.\n"
                "The odd signals must be ELECSIG and the even must be BINSIG.\n");
        }
        if (!IsBinaryPort(*bits)) return RefuseType(input + 1, "BINSIG", report);
        BerPair& pair = set.pairs.emplace_back();
        pair.wave = static_cast<const ElecSig*>(cell->sig);
        pair.sent = static_cast<const BinSig*>(bits->sig);
        if (pair.sent && (pair.sent->noPoints < 1 || !pair.sent->bitSequence)) pair.sent = nullptr;
    }
    if (!set.pairs.empty()) return Status::Success;
    return report.Fail("BERTester error: missing #1 input electrical signal\n");
}

bool IsAlike(const ElecSig& a, const ElecSig& b) {
    return a.UnitType == b.UnitType && a.domain == b.domain && a.bitRate == b.bitRate &&
           a.tStep == b.tStep && a.noPoints == b.noPoints && a.patternLength == b.patternLength;
}

Status CheckAgreement(const BerPairs& set, const ModelReport& report) {
    const ElecSig& first = *set.pairs.front().wave;
    if (first.UnitType != VoltageUnit) {
        return report.Fail("BERTester error: incorrect input electrical signal type\n");
    }
    for (const BerPair& pair : set.pairs) {
        if (&pair != &set.pairs.front() && !IsAlike(*pair.wave, first)) {
            return report.Fail("BERTester error: incompatible input electrical signals\n");
        }
        if (pair.sent &&
            (pair.sent->bitRate != first.bitRate || pair.sent->noPoints != first.patternLength)) {
            return report.Fail(
                "BERTester error: bitrate or pattern length between electrical and binary signals "
                "incompatible\n");
        }
    }
    return Status::Success;
}

/// What the arithmetic needs beyond agreement.
Status CheckGrid(const BerPairs& set, const ModelReport& report) {
    if (set.patternLength < shortestBerPattern) {
        return report.Refuse("a pattern of ", set.patternLength, " bits is too short, at least ",
                             shortestBerPattern, " are needed");
    }
    if (set.samplesPerBit < 2) {
        return report.Refuse(set.noPoints, " samples for ", set.patternLength,
                             " bits are too few, at least 2 for each bit are needed");
    }
    if (!(set.tStep > 0.0) || !std::isfinite(set.tStep)) {
        return report.Refuse("the time step ", set.tStep, " s is not above 0");
    }
    for (const BerPair& pair : set.pairs) {
        if (std::isfinite(pair.wave->startTime)) continue;
        return report.Refuse("a start time is no finite number");
    }
    return Status::Success;
}

/// Half samples by which a signal is turned to begin at `start`, 0 .. noPoints - 1.
std::int64_t ShiftOf(const ElecSig& wave, double start) {
    const double n = wave.noPoints;
    double shift = std::fmod(std::trunc((start - wave.startTime) / wave.tStep + 0.5), n);
    if (!std::isfinite(shift)) shift = 0.0;  // a step too small to count by
    return static_cast<std::int64_t>(shift < 0.0 ? shift + n : shift);
}

/// By design: the shift counts doubles of the interleaved samples, half a sample each. An
/// odd one pairs the imaginary part of a sample with the real part of the next. Signals normally
/// arrive aligned.
/// False if a magnitude is no finite number.
bool FillMagnitudes(const Complex* samples, std::int32_t n, std::int64_t shift, double* out) {
    const double* doubles = DoubleView(samples) + 1;
    const std::int64_t count = 2 * std::int64_t{n};
    bool finite = true;
    std::int64_t position = shift;
    for (std::int32_t k = 1; k <= n; ++k) {
        const double re = doubles[position];
        const double im = doubles[position + 1 < count ? position + 1 : 0];
        out[k] = std::sqrt(re * re + im * im);
        finite = finite && std::isfinite(out[k]);
        position += 2;
        if (position >= count) position -= count;
    }
    return finite;
}

Status FillBits(BerPair& pair, const BerPairs& set, const ModelReport& report) {
    pair.bits.reset(NewUnclearedSamples<std::int16_t>(set.patternLength));
    if (!pair.bits) {
        ReportNoMemory(report.errorText, "bitSequence");
        return Status::Error;
    }
    if (pair.sent) {
        std::copy_n(pair.sent->bitSequence + 1, set.patternLength, pair.bits.get() + 1);
    } else {
        DeriveBits(pair.voltage.get(), set.noPoints, set.patternLength, pair.bits.get());
    }
    return Status::Success;
}

Status FillPair(BerPair& pair, double start, const BerPairs& set, const ModelReport& report) {
    struct Work {
        const Complex* samples;
        OwnedBlock<double[]>& out;
        std::string_view name;
    } const arrays[] = {
        {pair.wave->elecSamples, pair.voltage, "ComputeBER() -- voltageSamples"},
        {pair.wave->sigmaSamples, pair.sigma, "ComputeBER() -- sigmaSamples"},
    };
    const std::int64_t shift = ShiftOf(*pair.wave, start);
    for (const Work& work : arrays) {
        work.out.reset(NewUnclearedSamples<double>(set.noPoints));
        if (!work.out) {
            ReportNoMemory(report.errorText, work.name);
            return Status::Error;
        }
        if (!work.samples) return report.Refuse("an input signal has no samples");
        if (!FillMagnitudes(work.samples, set.noPoints, shift, work.out.get())) {
            return report.Refuse("a sample or its noise is no finite number");
        }
    }
    return FillBits(pair, set, report);
}

}  // namespace

Status ReadBerPairs(const Nodelist* inputs, BerPairs& set, const ModelReport& report) {
    const Status collected = CollectPairs(inputs, set, report);
    if (collected != Status::Success) return collected;
    if (CheckAgreement(set, report) != Status::Success) return Status::Error;
    const ElecSig& first = *set.pairs.front().wave;
    set.noPoints = first.noPoints;
    set.patternLength = first.patternLength;
    set.tStep = first.tStep;
    set.samplesPerBit = first.patternLength > 0 ? first.noPoints / first.patternLength : 0;
    return CheckGrid(set, report);
}

Status FillBerPairs(BerPairs& set, const ModelReport& report) {
    double start = set.pairs.front().wave->startTime;
    for (const BerPair& pair : set.pairs) start = std::max(start, pair.wave->startTime);
    for (BerPair& pair : set.pairs) {
        const Status status = FillPair(pair, start, set, report);
        if (status != Status::Success) return status;
    }
    return Status::Success;
}

void DeriveBits(const double* voltage, std::int32_t noPoints, std::int32_t patternLength,
                std::int16_t* bits) {
    const auto [least, greatest] = std::minmax_element(voltage + 1, voltage + 1 + noPoints);
    const double threshold = (*least + *greatest) / 2.0;
    const std::int32_t samplesPerBit = noPoints / patternLength;
    for (std::int32_t b = 1; b <= patternLength; ++b) {
        bits[b] = voltage[samplesPerBit * b - 1] > threshold ? 1 : 0;
    }
}

}  // namespace photrak
