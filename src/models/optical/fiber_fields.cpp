// One pass over the fields per step wherever possible: the end of one linear stretch, the nonlinear
// step and the start of the next go together (numeric/split_step.h).
//
// The channels travel at different speeds. None is moved for that: the powers of all are summed in
// the time frame of the first channel, each at its own offset, and each channel reads the sum at
// its own offset again.
#include "models/optical/fiber_fields.h"

#include <algorithm>
#include <cmath>

#include "models/optical/fiber_pmd.h"

namespace photrak {

namespace {

// Channels in a group of powers: small enough that groups can be shared out.
constexpr std::size_t groupSize = 4;
constexpr long samplesPerTask = 4096;

std::size_t GroupCount(std::size_t channels, bool oneEach) {
    if (oneEach) return channels;
    return std::max<std::size_t>(2, (channels + groupSize - 1) / groupSize);
}

bool SharesTable(const FiberParams& params) {
    return params.curve.kind == DispersionKind::Custom;
}

bool MovesRaman(const FiberChannels& channels, const FiberParams& params) {
    return params.hasRaman && channels.size() > 1;
}

AlignedDoubles Samples(const FiberWindow& window) {
    return AlignedDoubles(static_cast<std::size_t>(window.points));
}

}  // namespace

double WorkBytes(const FiberChannels& channels, const FiberWindow& window,
                 const FiberParams& params) {
    double fields = 0;
    for (const auto& channel : channels) fields += channel->signal.Ey_samples ? 2 : 1;
    const auto count = static_cast<double>(channels.size());
    const double perTable = params.pmdMethod == PmdMethod::CoarseStep ? 6 : 3;
    const double tables = (SharesTable(params) ? 1 : count) * perTable;
    const double groups =
        channels.size() < 2
            ? 0
            : 2.0 * static_cast<double>(GroupCount(channels.size(), MovesRaman(channels, params)) +
                                        2);
    // In doubles per sample of the window.
    return (2 * fields + tables + groups) * static_cast<double>(window.points) * sizeof(double);
}

FiberFields::FiberFields(FiberChannels& channels, const FiberWindow& window,
                         const FiberParams& params)
    : channels_(channels),
      window_(window),
      hasRaman_(MovesRaman(channels, params)),
      turnsPolarizations_(params.pmdMethod == PmdMethod::CoarseStep),
      workers_(ThreadsFor(channels.size(), window.points)),
      peaks_(channels.size()) {
    LoadWorkFields(channels, window);
    for (const auto& channel : channels) {
        anyY_ = anyY_ || channel->workEy;
        allY_ = allY_ && channel->workEy;
    }
    MakeTables(params);
    if (channels.size() > 1) MakePowerGroups();
    if (!hasRaman_) return;
    MakeRamanRows(channels, params.effectiveArea);
    for (int worker = 0; worker < workers_.Count(); ++worker) exponents_.push_back(Samples(window));
}

void FiberFields::MakeTables(const FiberParams& params) {
    const double tStep = channels_.front()->signal.tStep;
    const FrequencyGrid grid = {window_.points,
                                twoPi / (static_cast<double>(window_.points) * tStep)};
    const auto stretches = params.zStepFac > 0 ? Stretches::Many : Stretches::Few;
    const std::size_t count = SharesTable(params) ? 1 : channels_.size();
    tables_.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        tables_.emplace_back(grid, params.curve, channels_[i]->omega0, params.alpha,
                             turnsPolarizations_, stretches);
}

void FiberFields::MakePowerGroups() {
    const std::size_t channels = channels_.size(), count = GroupCount(channels, hasRaman_);
    for (std::size_t g = 0; g < count; ++g)
        groups_.push_back({channels * g / count, channels * (g + 1) / count, Samples(window_),
                           anyY_ ? Samples(window_) : AlignedDoubles()});
    totalX_ = Samples(window_);
    if (anyY_) totalY_ = Samples(window_);
    if (anyY_ && !allY_) crossTotal_ = Samples(window_);
}

bool FiberFields::CoversBand() const {
    return std::all_of(tables_.begin(), tables_.end(),
                       [](const LinearTable& table) { return table.CoversBand(); });
}

const LinearTable& FiberFields::TableOf(std::size_t channel) const {
    return tables_[tables_.size() == 1 ? 0 : channel];
}

void FiberFields::Prepare(const LinearStretch& stretch) {
    if (tables_.front().IsFor(stretch)) return;
    workers_.Share(static_cast<long>(tables_.size()), [&](long table, int) {
        tables_[static_cast<std::size_t>(table)].Prepare(stretch);
    });
}

void FiberFields::Linear(const LinearStretch& stretch) {
    Prepare(stretch);
    workers_.Share(static_cast<long>(channels_.size()), [&](long c, int) {
        const auto at = static_cast<std::size_t>(c);
        FiberChannel& channel = *channels_[at];
        ApplyTransferOpen(*channel.workEx, TableOf(at).X());
        if (channel.workEy) ApplyTransferOpen(*channel.workEy, TableOf(at).Y());
    });
}

void FiberFields::Nonlinear(double dz, const LinearStretch& after) {
    const bool hasAfter = after.length > 0;
    if (hasAfter) Prepare(after);
    if (channels_.size() > 1) WalkOff();
    workers_.Share(static_cast<long>(channels_.size()), [&](long c, int worker) {
        const auto at = static_cast<std::size_t>(c);
        Advance(at, dz, hasAfter ? &TableOf(at) : nullptr, worker);
    });
}

/// The powers of all channels, summed in the time frame of the first.
void FiberFields::WalkOff() {
    const long polarizations = anyY_ ? 2 : 1;
    const long tasks = static_cast<long>(groups_.size()) * polarizations;
    workers_.Share(tasks, [&](long task, int) {
        SumUp(groups_[static_cast<std::size_t>(task / polarizations)], task % polarizations != 0);
    });
    const long chunks = (window_.points + samplesPerTask - 1) / samplesPerTask;
    workers_.Share(chunks, [&](long chunk, int) {
        const long from = chunk * samplesPerTask;
        SumGroups(from, std::min(from + samplesPerTask, window_.points));
    });
}

/// Channels without a y field add nothing to the sum of those.
void FiberFields::SumUp(PowerGroup& group, bool ofY) {
    AlignedDoubles& sum = ofY ? group.y : group.x;
    Total state = Total::Begins;
    for (std::size_t c = group.first; c < group.end; ++c) {
        FiberChannel& channel = *channels_[c];
        SplitField* field = ofY ? channel.Y() : &*channel.workEx;
        if (!field) continue;
        if (window_.first > 0) {
            Settle(*field);
            RenewPadding(*field, window_);
        }
        AddPower(*field, sum.Data(), channel.shift, state);
        state = Total::GoesOn;
    }
    if (state == Total::Begins) std::fill_n(sum.Data(), window_.points, 0.0);
}

void FiberFields::SumGroups(long from, long to) {
    const auto sum = [&](AlignedDoubles& total, AlignedDoubles PowerGroup::*part) {
        double* out = total.Data();
        const double *first = (groups_[0].*part).Data(), *second = (groups_[1].*part).Data();
        for (long q = from; q < to; ++q) out[q] = first[q] + second[q];
        for (std::size_t g = 2; g < groups_.size(); ++g) {
            const double* next = (groups_[g].*part).Data();
            for (long q = from; q < to; ++q) out[q] += next[q];
        }
    };
    sum(totalX_, &PowerGroup::x);
    if (!anyY_) return;
    sum(totalY_, &PowerGroup::y);
    if (allY_) return;
    const double *x = totalX_.Data(), *y = totalY_.Data();
    double* cross = crossTotal_.Data();
    for (long q = from; q < to; ++q) cross[q] = x[q] + y[q] * (2.0 / 3);
}

KerrStep FiberFields::StepOf(const FiberChannel& channel, double dz) const {
    KerrStep step;
    step.gamma = channel.gamma * dz;
    if (groups_.empty()) return step;
    step.shift = channel.shift;
    const bool meetsCross = anyY_ && !channel.workEy;
    step.totalX = meetsCross ? crossTotal_.Data() : totalX_.Data();
    if (channel.workEy) step.totalY = totalY_.Data();
    return step;
}

void FiberFields::Advance(std::size_t at, double dz, const LinearTable* after, int worker) {
    FiberChannel& channel = *channels_[at];
    SplitField &x = *channel.workEx, *y = channel.Y();
    const KerrStep step = StepOf(channel, dz);
    if (after && !hasRaman_ && !turnsPolarizations_)
        return KerrThenTransfer(x, y, step, after->X(), y ? &after->Y() : nullptr);
    KerrRotate(x, y, step);
    if (hasRaman_) TransferRaman(channel, dz, exponents_[static_cast<std::size_t>(worker)].Data());
    if (turnsPolarizations_) TurnPolarizations(x, *y, channel.rotation, channel.retardation);
    if (!after) return;
    ApplyTransferOpen(x, after->X());
    if (y) ApplyTransferOpen(*y, after->Y());
}

/// Every group is one channel here, so the groups hold the powers of all at the present instant.
void FiberFields::TransferRaman(FiberChannel& channel, double dz, double* exponent) {
    const long n = window_.points, shift = ((channel.shift % n) + n) % n;
    std::fill_n(exponent, n, 0.0);
    for (std::size_t other = 0; other < groups_.size(); ++other) {
        const double rate = channel.ramanRow[other];
        if (rate == 0.0) continue;
        for (const AlignedDoubles* power : {&groups_[other].x, &groups_[other].y}) {
            const double* p = power->Data();
            if (!p) continue;
            // Sample q of the channel meets sample q + shift of the common frame, on the circle.
            for (long q = 0; q < n - shift; ++q) exponent[q] += rate * p[q + shift];
            for (long q = n - shift; q < n; ++q) exponent[q] += rate * p[q + shift - n];
        }
    }
    Amplify(*channel.workEx, exponent, dz);
    if (channel.workEy) Amplify(*channel.workEy, exponent, dz);
}

double FiberFields::NonlinearAndPeak(double dz, const LinearStretch& after, bool goesOn) {
    const bool hasAfter = after.length > 0;
    if (hasAfter) Prepare(after);
    if (channels_.size() > 1) WalkOff();
    workers_.Share(static_cast<long>(channels_.size()), [&](long c, int worker) {
        const auto at = static_cast<std::size_t>(c);
        peaks_[at] = AdvanceAndPeak(at, dz, hasAfter ? &TableOf(at) : nullptr, goesOn, worker);
    });
    double sum = 0;
    for (const double peak : peaks_) sum += peak;
    return sum;
}

/// The peak is looked for in a pass over the samples that is due anyway: that of the nonlinear
/// step, or the one between two transfers.
double FiberFields::AdvanceAndPeak(std::size_t at, double dz, const LinearTable* after, bool goesOn,
                                   int worker) {
    FiberChannel& channel = *channels_[at];
    SplitField &x = *channel.workEx, *y = channel.Y();
    if (goesOn && !after && !hasRaman_ && !turnsPolarizations_)
        return KerrThenPeak(x, y, StepOf(channel, dz), window_.first, window_.count,
                            TableOf(at).X());
    Advance(at, dz, after, worker);
    if (goesOn) return PeakThenBegin(x, y, window_.first, window_.count, TableOf(at).X());
    Settle(x);
    if (y) Settle(*y);
    return PeakPower(x, y, window_.first, window_.count);
}

void FiberFields::Store() {
    for (const auto& channel : channels_) {
        Settle(*channel->workEx);
        if (channel->workEy) Settle(*channel->workEy);
    }
    StoreWorkFields(channels_, window_);
}

}  // namespace photrak
