// The sum over bits and trials. Draws come first, bit by bit, then the values of every pair at the
// drawn times, then the tails: what the trials of a bit share is found once.
#include "models/detection/ber_computation.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>
#include <vector>

#include "base/text.h"
#include "kernel/result_names.h"
#include "numeric/random.h"
#include "numeric/roots.h"
#include "numeric/uniform_grid.h"
#include "platform/progress.h"
#include "results/ber_files.h"
#include "results/signal_plot.h"

namespace photrak {
namespace {

constexpr std::size_t trialCount = 256;
constexpr double shareOfTrial = 0.00390625;
constexpr double squareRootOf2 = std::numbers::sqrt2;
constexpr int firstJitterSeed = 1;  // the same for every pass

using PerTrial = std::array<double, trialCount>;

/// 0.5 erfc(z / sqrt 2): the part of a Gaussian that lies beyond z deviations. The library's
/// function agrees with our own to 5e-13 and takes a tenth of the time.
double Tail(double z) {
    return 0.5 * std::erfc(z / squareRootOf2);
}

/// The jittered decisions of one bit.
struct Trials {
    std::array<GridPlace, trialCount> place;
    PerTrial level;            // V
    std::size_t distinct = 0;  // of them; without jitter all are alike and one stands for all
    std::size_t Weight() const { return trialCount / distinct; }
};

/// Distance from the level in deviations. Without noise only its sign counts; a value right on the
/// level is as likely wrong as right.
double Deviations(double value, double level, double sigma) {
    if (sigma != 0.0) return (value - level) / sigma;
    if (value == level) return 0.0;
    return std::copysign(std::numeric_limits<double>::infinity(), value - level);
}

/// Counts of the whole pattern and the working arrays of one bit.
class ErrorSum {
  public:
    ErrorSum(const BerParams& params, const EyeResult& eye, BerPairs& set)
        : params_(params),
          set_(set),
          grid_(set.noPoints, set.tStep),
          level_(DecisionLevel(params, eye)),
          above_(set.pairs.size(), 0) {
        const bool hasJitter = params.timingJitter != 0.0 || params.decisionLevelJitter != 0.0;
        trials_.distinct = hasJitter ? trialCount : 1;
        if (params.bitsPerLine > 0) {
            streams_.assign(set.pairs.size(), BitStreamText(params.bitsPerLine));
        }
    }

    /// The first bit and the last two stay out. NaN when a decision fell where nothing is defined,
    /// and when the stop word was set, which `stopped` tells.
    double Run(const std::atomic<std::int16_t>& stop, bool& stopped) {
        for (std::int32_t bit = 2; bit <= set_.patternLength - 3; ++bit) {
            stopped = stop.load(std::memory_order_relaxed) != 0;
            if (stopped) return std::numeric_limits<double>::quiet_NaN();
            NoteProgress(static_cast<double>(bit) / set_.patternLength);
            Draw(bit);
            worstSpace_.fill(0.0);
            worstMark_.fill(0.0);
            for (std::size_t i = 0; i < set_.pairs.size(); ++i) {
                Decide(i);
                Count(set_.pairs[i], bit);
            }
            AddWorst();
            AppendStreams();
        }
        ReduceVotes();
        if (!defined_) return std::numeric_limits<double>::quiet_NaN();
        return (spaceTotal_ + markTotal_) / (set_.patternLength - 4) * shareOfTrial;
    }

    std::vector<BitStreamText>& Streams() { return streams_; }

  private:
    /// The order of draws is part of the results: time, level, trial by trial.
    void Draw(std::int32_t bit) {
        const double s = set_.samplesPerBit;
        const double center =
            (params_.decisionPointShift * s + static_cast<double>(std::int64_t{bit} - 1) * s) *
            set_.tStep;
        if (trials_.distinct == 1) {
            SkipClippedGaussians(&seed_, 2 * static_cast<long>(trialCount));
            trials_.place[0] = grid_.Locate(center);
            trials_.level[0] = level_;
            return;
        }
        for (std::size_t t = 0; t < trialCount; ++t) {
            const double dt = ClippedGaussianRandom(&seed_) * params_.timingJitter;
            const double dv = ClippedGaussianRandom(&seed_) * params_.decisionLevelJitter;
            trials_.place[t] = grid_.Locate(center + dt);
            trials_.level[t] = level_ + dv;
        }
    }

    void Decide(std::size_t index) {
        const BerPair& pair = set_.pairs[index];
        const auto weight = static_cast<std::int64_t>(trials_.Weight());
        const double *voltage = pair.voltage.get(), *sigma = pair.sigma.get();
        for (std::size_t t = 0; t < trials_.distinct; ++t) {
            const GridPlace& place = trials_.place[t];
            const double value = place.Value(voltage);
            z_[t] = Deviations(value, trials_.level[t], place.Value(sigma));
            if (std::isnan(z_[t])) defined_ = false;
            if (value > trials_.level[t]) above_[index] += weight;
        }
    }

    void Count(BerPair& pair, std::int32_t bit) {
        if (!pair.sent) {
            CountBySign(pair.bits.get()[bit]);
            return;
        }
        const bool mark = pair.bits.get()[bit] != 0;
        PerTrial& worst = mark ? worstMark_ : worstSpace_;
        for (std::size_t t = 0; t < trials_.distinct; ++t) {
            worst[t] = std::max(worst[t], Tail(mark ? z_[t] : -z_[t]));
        }
    }

    /// Each trial decides by itself which bit it saw, and votes for it.
    void CountBySign(std::int16_t& vote) {
        using Limits = std::numeric_limits<std::int16_t>;
        for (std::size_t t = 0; t < trials_.distinct; ++t) {
            const bool space = z_[t] <= 0.0;
            PerTrial& worst = space ? worstSpace_ : worstMark_;
            worst[t] = std::max(worst[t], Tail(std::fabs(z_[t])));
            for (std::size_t k = 0; k < trials_.Weight(); ++k) {
                if (space && vote > Limits::min()) --vote;
                if (!space && vote < Limits::max()) ++vote;
            }
        }
    }

    /// Trial by trial, however many are alike: a product would round once where sums round often.
    void AddWorst() {
        for (std::size_t t = 0; t < trials_.distinct; ++t) {
            for (std::size_t k = 0; k < trials_.Weight(); ++k) {
                spaceTotal_ += worstSpace_[t];
                markTotal_ += worstMark_[t];
            }
        }
    }

    /// By design: the counts are never set back, so that a bit's character tells of all
    /// bits so far.
    void AppendStreams() {
        for (std::size_t i = 0; i < streams_.size(); ++i) {
            const double bits = static_cast<double>(above_[i]) * shareOfTrial;
            streams_[i].Append(std::trunc(bits + 0.5) == 1.0);
        }
    }

    void ReduceVotes() {
        for (BerPair& pair : set_.pairs) {
            if (pair.sent) continue;
            std::int16_t* bits = pair.bits.get();
            for (std::int32_t b = 1; b <= set_.patternLength; ++b) {
                bits[b] = bits[b] > 0 ? 1 : 0;
            }
        }
    }

    const BerParams& params_;
    BerPairs& set_;
    UniformGrid grid_;
    double level_;                     // V
    std::vector<std::int64_t> above_;  // by pair: trials above the level, all bits so far
    std::vector<BitStreamText> streams_;
    int seed_ = firstJitterSeed;
    Trials trials_;
    PerTrial z_{}, worstSpace_{}, worstMark_{};
    double spaceTotal_ = 0.0, markTotal_ = 0.0;
    bool defined_ = true;
};

Status WriteStreams(const std::string& root, std::vector<BitStreamText>& streams,
                    const ModelReport& report) {
    int number = 0;
    for (BitStreamText& stream : streams) {
        const std::string name = Concat(root, "_bitstream_", ++number);
        if (WritePlotFile(name, stream.Finish(), report.errorText) == FileResult::Refused) {
            return Status::Error;
        }
    }
    return Status::Success;
}

/// The waveform of a pair and its bits, without noise. The plot changes neither.
Status PlotPair(const SimOptions& options, const BerParams& params, std::size_t index,
                const BerPairs& set, const ModelReport& report) {
    const BerPair& pair = set.pairs[index];
    BinSig bits{};
    bits.noPoints = set.patternLength;
    bits.bitSequence = pair.bits.get();
    bits.bitRate = pair.wave->bitRate;
    bits.startTime = pair.sent ? pair.sent->startTime : pair.wave->startTime;
    Nodelist bitCell{nullptr, BinSigType, &bits};
    const Nodelist waveCell{&bitCell, ElecSigType, const_cast<ElecSig*>(pair.wave)};
    SignalPlotJob job{};
    job.signals = &waveCell;
    job.flags = plotFlag::defaultForm;
    job.mode = ViewerMode(options, params.saveOrDisplay);
    job.name = Concat(params.root, "_signalpair_", index + 1, ResultTags(options));
    return WriteSignalPlot(job, report);
}

Status PlotPairs(const SimOptions& options, const BerParams& params, const BerPairs& set,
                 const ModelReport& report) {
    // Without the tags of its loops a file would be written over at every pass.
    if (!PlotFileRoot(options, report.owner, params.root)) return Status::Success;
    Status status = Status::Success;
    for (std::size_t i = 0; i < set.pairs.size() && status != Status::Error; ++i) {
        MergeStatus(status, PlotPair(options, params, i, set, report));
    }
    return status;
}

/// Q = sqrt 2 x, with x the root of erfc(x) = 2 BER.
Status FindQ(EyeResult& eye, const ModelReport& report) {
    constexpr double least = 1e-05, greatest = 1000, tolerance = 1e-07;
    Status status = Status::Success;
    const double x =
        QFactorRoot(2.0 * eye.BER, least, greatest, tolerance, status, report.errorText);
    eye.erfcArgument = -x;
    eye.Q = x * squareRootOf2;
    return status;
}

}  // namespace

Status ComputeBER(const SimOptions& options, const Nodelist* inputs, const BerParams& params,
                  EyeResult& eye, const ModelReport& report) {
    BerPairs set;
    Status status = ReadBerPairs(inputs, set, report);
    if (status != Status::Success) return status;
    if (FillBerPairs(set, report) != Status::Success) return Status::Error;

    int plotEyeLids = params.plotEyeLids ? 1 : 0;
    if (plotEyeLids != 0 && params.saveOrDisplay == 2) plotEyeLids = 2;
    status = DoEyeDiagram({options, params.root, plotEyeLids}, set, eye, report);
    if (status == Status::Error) {
        return report.Fail("Error in ComputeBER -- DoEyeDiagram\n");
    }
    if (status == Status::Warning && eye.eyeArea == 0.0) {
        return report.Warn("WARNING in ComputeBER -- DoEyeDiagram, can not calculate BER\n");
    }

    // Without an open eye in the worst case bits are decided at their start.
    const double sample = status == Status::Success ? eye.decisionIndex - 1.0 : 0.0;
    eye.decisionTime = (sample + params.decisionPointShift * set.samplesPerBit) * set.tStep;
    ErrorSum sum(params, eye, set);
    eye.BER = sum.Run(options.stop, eye.stopped);
    if (eye.stopped) return status;
    const bool doubtful = status != Status::Success;
    if (options.PLOTTING != DoNotPlot && (doubtful || params.plotSignals)) {
        MergeStatus(status, PlotPairs(options, params, set, report));
    }
    MergeStatus(status, WriteStreams(params.root, sum.Streams(), report));
    if (std::isnan(eye.BER)) {
        return report.Refuse("decisions fall too far from the pattern");
    }
    MergeStatus(status, FindQ(eye, report));
    return status;
}

}  // namespace photrak
