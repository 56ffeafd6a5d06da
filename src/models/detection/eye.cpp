// Lids, the measures between them, and the course from the worst case to the average eye.
#include "models/detection/eye.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/text.h"
#include "base/units.h"
#include "kernel/result_names.h"
#include "kernel/sample_arrays.h"
#include "numeric/messages.h"
#include "numeric/random.h"
#include "numeric/samples.h"
#include "results/ber_files.h"
#include "results/plot_files.h"

namespace photrak {
namespace {

constexpr double noLid = 1e+32;  // V

/// The window over bits b and b + 1, one-based. It never runs past the end: b + 1 is at most the
/// last bit.
const double* Window(const double* samples, std::int32_t b, std::int32_t samplesPerBit) {
    return samples + (std::int64_t{b} - 1) * samplesPerBit;
}

void AddWorst(const double* window, bool mark, std::int32_t length, EyeLids& lids) {
    double* lid = mark ? lids.upper.get() : lids.lower.get();
    for (std::int32_t i = 1; i <= length; ++i) {
        lid[i] = mark ? std::min(lid[i], window[i]) : std::max(lid[i], window[i]);
    }
}

/// By design: the divisor is the length of the window and not the number of bits. The sums
/// of marks and spaces compare with each other, which is all that the decision needs.
void AddAverage(const double* window, bool mark, std::int32_t length, EyeLids& lids) {
    double* lid = mark ? lids.upper.get() : lids.lower.get();
    for (std::int32_t i = 1; i <= length; ++i) lid[i] += window[i] / length;
}

/// A piecewise linear curve through samples first..last of a lid, searched from its end.
class LidTail {
  public:
    LidTail(const double* lid, std::int32_t first, std::int32_t last) : lid_(lid), last_(last) {
        for (std::int32_t m = last; m >= first; --m) {
            const double least = extremes_.empty() ? lid[m] : extremes_.back().first;
            const double greatest = extremes_.empty() ? lid[m] : extremes_.back().second;
            extremes_.emplace_back(std::min(least, lid[m]), std::max(greatest, lid[m]));
        }
    }
    /// The last place at which the curve has this level; 0 where it never has.
    double LastMeeting(double level) const {
        const auto within = [level](const std::pair<double, double>& span) {
            return span.first <= level && level <= span.second;
        };
        const auto found = std::partition_point(extremes_.begin(), extremes_.end(),
                                                [&](const auto& span) { return !within(span); });
        if (found == extremes_.end()) return 0.0;
        const auto m = static_cast<std::int32_t>(last_ - (found - extremes_.begin()));
        if (m == last_) return last_;
        return m + (level - lid_[m]) / (lid_[m + 1] - lid_[m]);
    }

  private:
    const double* lid_;
    std::int32_t last_;
    std::vector<std::pair<double, double>> extremes_;  // of last..last, then last - 1..last, ...
};

/// The widest level line across the eye, in samples: from a lid's sample left of the decision to
/// where that lid, or else the other one, is on the same level again, at the last right of it.
double LongestLevelLine(const EyeLids& lids, const EyeResult& eye) {
    const auto decision = static_cast<std::int32_t>(eye.decisionIndex);
    const auto end = static_cast<std::int32_t>(eye.eyeEnd);
    const double* sides[] = {lids.upper.get(), lids.lower.get()};
    const LidTail tails[] = {{sides[0], decision, end}, {sides[1], decision, end}};
    double longest = 0.0;
    for (auto j = static_cast<std::int32_t>(eye.eyeStart); j < decision; ++j) {
        for (int side = 0; side < 2; ++side) {
            double meeting = tails[side].LastMeeting(sides[side][j]);
            if (meeting == 0.0) meeting = tails[1 - side].LastMeeting(sides[side][j]);
            longest = std::max(longest, meeting - j);
        }
    }
    return longest;
}

/// A lid over the open span, integrated in units of the sample step.
double LidArea(const double* lid, const EyeResult& eye) {
    const double* beforeSpan = lid + eye.eyeStart - 1;
    return WeightedSum(long{eye.eyeEnd} - long{eye.eyeStart} + 1,
                       [beforeSpan](long i) { return beforeSpan[i]; });
}

/// By design: the right end counts lids that touch, the left end does not.
void FindSpan(const EyeLids& lids, std::int32_t widest, EyeResult& eye) {
    const double *lower = lids.lower.get(), *upper = lids.upper.get();
    std::int32_t start = widest, end = widest;
    while (start > 1 && upper[start - 1] > lower[start - 1]) --start;
    while (end < eye.lidLength && upper[end + 1] >= lower[end + 1]) ++end;
    eye.eyeStart = static_cast<std::uint32_t>(start);
    eye.eyeEnd = static_cast<std::uint32_t>(end);
}

/// The lid sample with the greatest opening, 0 if there is none.
std::int32_t WidestOpening(const EyeLids& lids, std::int32_t lidLength) {
    const double *upper = lids.upper.get(), *lower = lids.lower.get();
    std::int32_t widest = 0;
    double most = 0.0;
    for (std::int32_t i = 1; i <= lidLength; ++i) {
        const double opening = upper[i] - lower[i];
        if (opening <= most) continue;
        most = opening;
        widest = i;
    }
    return widest;
}

void Measure(const BerPairs& set, EyeMode mode, EyeLids& lids, EyeResult& eye) {
    BuildEyeLids(set, mode, lids);
    MeasureEye(lids, eye);
}

/// Each sample of each window with a draw of its noise. The windows of neighboring bits overlap,
/// and each has draws of its own.
Status FillEyeData(const BerPairs& set, EyeResult& eye, const ModelReport& report) {
    const std::uint64_t traces =
        set.pairs.size() * (static_cast<std::uint64_t>(set.patternLength) - 1);
    const std::uint64_t samples = traces * static_cast<std::uint64_t>(eye.lidLength);
    eye.eyeData.reset(static_cast<double*>(Allocate((samples + 1) * sizeof(double))));
    if (!eye.eyeData) {
        ReportNoMemory(report.errorText, "eye->eyeData");
        return Status::Error;
    }
    double* next = eye.eyeData.get();
    *next = 0.0;
    for (const BerPair& pair : set.pairs) {
        for (std::int32_t b = 1; b < set.patternLength; ++b) {
            const double* voltage = Window(pair.voltage.get(), b, eye.samplesPerBit);
            const double* sigma = Window(pair.sigma.get(), b, eye.samplesPerBit);
            for (std::int32_t i = 1; i <= eye.lidLength; ++i) {
                *++next = voltage[i] + GaussianRandom(&ProcessSeeds().eyeData) * sigma[i];
            }
        }
    }
    return Status::Success;
}

Status WriteLids(const EyeJob& job, const BerPairs& set, const EyeLids& lids, const EyeResult& eye,
                 EyeMode mode, const ModelReport& report) {
    // Without the tags of its loops a file would be written over at every pass.
    if (!PlotFileRoot(job.options, report.owner, job.root)) return Status::Success;
    NoteNoise(1.0);  // the rate itself knows none of the noise that the traces show
    EyeLidPlot plot;
    plot.lidLength = eye.lidLength;
    plot.lower = lids.lower.get();
    plot.upper = lids.upper.get();
    plot.tStep = set.tStep;
    plot.decisionIndex = eye.decisionIndex;
    plot.decisionLevel = eye.decisionLevel;
    plot.eyeData = eye.eyeData.get();
    plot.traces = static_cast<std::int64_t>(set.pairs.size()) * (set.patternLength - 1);
    plot.averageEye = mode == EyeMode::Average;
    plot.mode = ViewerMode(job.options, job.plotEyeLids);
    return WriteEyeLidFiles(Concat(job.root, "_Eyelids", ResultTags(job.options)), plot,
                            report.errorText);
}

}  // namespace

bool AllocateLids(std::int32_t lidLength, EyeLids& lids, const ModelReport& report) {
    lids.lower.reset(NewUnclearedSamples<double>(lidLength));
    if (!lids.lower) ReportNoMemory(report.errorText, "lowerEyeLid");
    if (!lids.lower) return false;
    lids.upper.reset(NewUnclearedSamples<double>(lidLength));
    if (!lids.upper) ReportNoMemory(report.errorText, "upperEyeLid");
    return lids.upper != nullptr;
}

void BuildEyeLids(const BerPairs& set, EyeMode mode, EyeLids& lids) {
    const std::int32_t length = 2 * set.samplesPerBit;
    const bool worstCase = mode == EyeMode::WorstCase;
    std::fill_n(lids.lower.get() + 1, length, worstCase ? -noLid : 0.0);
    std::fill_n(lids.upper.get() + 1, length, worstCase ? noLid : 0.0);
    const auto add = worstCase ? AddWorst : AddAverage;
    for (const BerPair& pair : set.pairs) {
        for (std::int32_t b = 1; b < set.patternLength; ++b) {
            const double* window = Window(pair.voltage.get(), b, set.samplesPerBit);
            add(window, pair.bits.get()[b] != 0, length, lids);
        }
    }
}

void MeasureEye(const EyeLids& lids, EyeResult& eye) {
    eye.eyeOpening = eye.eyeWidth = eye.eyeArea = 0.0;
    eye.eyeStart = eye.eyeEnd = 0;
    const std::int32_t widest = WidestOpening(lids, eye.lidLength);
    if (widest == 0) return;
    FindSpan(lids, widest, eye);
    const double *lower = lids.lower.get(), *upper = lids.upper.get();
    double sum = 0.0, moment = 0.0;
    for (std::uint32_t i = eye.eyeStart; i <= eye.eyeEnd; ++i) {
        sum += upper[i] - lower[i];
        moment += i * (upper[i] - lower[i]);
    }
    eye.decisionIndex = static_cast<std::uint32_t>(std::lround(moment / sum));  // centroid
    const std::uint32_t at = eye.decisionIndex;
    eye.eyeOpening = upper[at] - lower[at];
    eye.decisionLevel = (upper[at] + lower[at]) / 2.0;
    eye.eyeWidth = LongestLevelLine(lids, eye) / eye.samplesPerBit;
    eye.eyeArea = pi * (LidArea(upper, eye) - LidArea(lower, eye)) / (2.0 * eye.samplesPerBit);
}

void RotateToDecisionPoint(double* samples, std::int32_t n, std::uint32_t index) {
    std::rotate(samples + 1, samples + index, samples + 1 + n);
}

Status DoEyeDiagram(const EyeJob& job, BerPairs& set, EyeResult& eye, const ModelReport& report) {
    eye.samplesPerBit = set.samplesPerBit;
    eye.lidLength = 2 * set.samplesPerBit;
    EyeLids lids;
    if (!AllocateLids(eye.lidLength, lids, report)) return Status::Error;

    Status status = Status::Success;
    EyeMode mode = EyeMode::WorstCase;
    Measure(set, mode, lids, eye);
    if (eye.eyeArea <= 0.0) {
        status = Status::Warning;
        mode = EyeMode::Average;
        Measure(set, mode, lids, eye);
        if (eye.eyeArea <= 0.0) report.errorText += "No open eye was found. \n";
        report.errorText += "NOTICE: Used Average Eye Method to set BER decision time.\n";
    }
    if (FillEyeData(set, eye, report) != Status::Success) return Status::Error;
    const bool asked = job.plotEyeLids != 0 || status != Status::Success;
    if (job.options.PLOTTING != DoNotPlot && asked) {
        MergeStatus(status, WriteLids(job, set, lids, eye, mode, report));
    }
    if (status != Status::Success) return status;
    for (BerPair& pair : set.pairs) {
        RotateToDecisionPoint(pair.voltage.get(), set.noPoints, eye.decisionIndex);
        RotateToDecisionPoint(pair.sigma.get(), set.noPoints, eye.decisionIndex);
    }
    return Status::Success;
}

}  // namespace photrak
