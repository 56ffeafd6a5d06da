// Symmetric split steps: half a linear step, the nonlinear one, half a linear step. Two linear
// halves that follow each other with nothing between are one stretch, which saves half of the
// transforms; an adaptive step has the peak power between them, so there they stay apart.
#include "models/optical/fiber_steps.h"

#include <algorithm>
#include <cmath>

#include "base/log.h"
#include "base/text.h"
#include "models/optical/fiber_fields.h"
#include "models/optical/fiber_pmd.h"
#include "numeric/messages.h"
#include "platform/host.h"
#include "platform/progress.h"
#include "platform/stop_point.h"

namespace photrak {

double NonlinearLength(double gamma0, double peakPower) {
    return gamma0 == 0 ? infiniteLength : 1.0 / (gamma0 * peakPower);
}

double NextStep(FiberParams& params, double gamma0, double z, double peakPower) {
    double dz = params.zStepSize;
    if (params.zStepFac > 0) {
        params.LNL = NonlinearLength(gamma0, peakPower);
        dz = params.distance - z;
        for (const double length : {params.LD, params.L3, params.LNL}) {
            if (length != infiniteLength) dz = std::min(dz, params.zStepFac * length);
        }
    }
    if (z + dz > params.distance && z < params.distance) dz = params.distance - z;
    return dz;
}

namespace {

constexpr std::string_view workArrays = "Fiber() - temp arrays";
// With turns between the steps, what rounding left of the fiber may not become a step: it would
// turn the polarizations once more. Below this part of a step the end is reached.
constexpr double leastRest = 1e-9;

class FiberRun {
  public:
    FiberRun(FiberChannels& channels, FiberFields& fields, FiberParams& params,
             const std::atomic<std::int16_t>& stop, const ModelReport& report)
        : channels_(channels),
          fields_(fields),
          params_(params),
          stop_(stop),
          report_(report),
          gamma0_(channels.front()->gamma),
          needsPeak_(params.zStepFac > 0 && gamma0_ != 0) {}

    Status Run(double peakPower);

  private:
    bool IsStopped() const;
    bool Moves() const;
    bool Arrives() const;
    void Announce() const;
    void PrepareStep();
    LinearStretch Half() const;
    LinearStretch SecondHalf();
    void GoOn(double peakPower);
    bool Step();

    FiberChannels& channels_;
    FiberFields& fields_;
    FiberParams& params_;
    const std::atomic<std::int16_t>& stop_;
    const ModelReport& report_;
    double gamma0_;
    bool needsPeak_;  // adaptive steps follow the field's power
    double z_ = 0;
    LinearStretch carry_;  // half still due from the step before, merged
    RotationSource rotations_;
};

/// A step that is lost against the length of the fiber would never arrive there. The last one may
/// be as short as it is.
bool FiberRun::Moves() const {
    const double dz = params_.dz, L = params_.distance;
    return z_ + dz > z_ && (L + dz > L || z_ + dz >= L);
}

/// Whether the present step ends at the end of the fiber.
bool FiberRun::Arrives() const {
    const double rest = params_.distance - (z_ + params_.dz);
    return rest <= 0 || (fields_.TurnsPolarizations() && rest < leastRest * params_.dz);
}

void FiberRun::Announce() const {
    if (!params_.showStatus) return;
    const std::string text =
        Concat("Z=", z_, " and dZ=", params_.dz, " in NLFiber ", report_.owner);
    LogText(text + "\n");
    CurrentHost().messages->ShowStatusText(text);
}

void FiberRun::PrepareStep() {
    const OpSig& first = channels_.front()->signal;
    for (const auto& channel : channels_) {
        channel->shift = WalkOffShift(channel->signal.startTime, first.startTime, first.tStep,
                                      channel->workEx->Size());
        if (fields_.TurnsPolarizations()) rotations_.Draw(*channel);
    }
}

/// Half of the present step. The modes part like a random walk: by pmdCoefficient * sqrt(dz) in a
/// step of dz. A half that is carried over keeps the delay of the step that left it, however short
/// the next one is.
LinearStretch FiberRun::Half() const {
    const double half = params_.dz / 2;
    if (!fields_.TurnsPolarizations()) return {half, 0};
    return {half, params_.pmdCoefficient / std::sqrt(params_.dz) * half};
}

/// What is due at the end of the present step; nothing where it is carried over.
LinearStretch FiberRun::SecondHalf() {
    carry_ = {};
    if (!params_.MergesHalfSteps() || Arrives()) return Half();
    carry_ = Half();
    return {};
}

void FiberRun::GoOn(double peakPower) {
    for (const auto& channel : channels_) channel->signal.startTime += params_.dz / channel->vg;
    const double reached = z_ + params_.dz;
    z_ = Arrives() ? std::max(reached, params_.distance) : reached;
    params_.dz = NextStep(params_, gamma0_, z_, peakPower);
    NoteProgress(z_ / params_.distance);
}

bool FiberRun::IsStopped() const {
    return stop_.load(std::memory_order_relaxed) != 0;
}

/// The nonlinear step with what is linear around it, up to the end of this step or, where the next
/// one can be foreseen, up to its middle. A stop finishes the half that is due.
bool FiberRun::Step() {
    Announce();
    PrepareStep();
    const double dz = params_.dz;
    const LinearStretch due = SecondHalf();
    const bool goes = !Arrives() && !IsStopped();
    const double peakPower = needsPeak_ ? fields_.NonlinearAndPeak(dz, due, goes) : 0;
    GoOn(peakPower);
    const LinearStretch next = goes ? carry_ + Half() : carry_;
    if (!needsPeak_)
        fields_.Nonlinear(dz, due + next);
    else if (next.length > 0)
        fields_.Linear(next);
    return goes;
}

Status FiberRun::Run(double peakPower) {
    // Not beyond the end, which for a fiber of no length is a step of 0.
    params_.dz = std::min(NextStep(params_, gamma0_, 0, peakPower), params_.distance);
    bool goes = z_ < params_.distance && !IsStopped();
    if (goes && Moves()) fields_.Linear(Half());
    while (goes) {
        if (!Moves())
            return report_.Refuse("a step of ", params_.dz, " m at z = ", z_,
                                  " m does not lead to the end at ", params_.distance, " m");
        goes = Step();
    }
    Announce();
    return Status::Success;
}

Status AddSecondPolarization(const FiberChannels& channels, const ModelReport& report) {
    for (const auto& channel : channels) {
        if (AddEySamples(&channel->signal) == 0) continue;
        ReportNoMemory(report.errorText, workArrays);
        return Status::Error;
    }
    return Status::Success;
}

/// All at once, so that a run that does not fit is refused before it begins.
Status CheckMemory(double bytes, const ModelReport& report) {
    if (bytes < static_cast<double>(PTRDIFF_MAX)) {
        const OwnedBlock<void> all(Allocate(static_cast<std::size_t>(bytes)));
        if (all) return Status::Success;
    }
    ReportNoMemory(report.errorText, workArrays);
    return Status::Error;
}

/// Tells before the first step of a walk that will take very long how many steps it has and about
/// how long they take, at the pace of their transforms on an ordinary processor.
void TellLongWalk(const FiberChannels& channels, const FiberWindow& window,
                  const FiberParams& params, double firstStep, const ModelReport& report) {
    constexpr double manySteps = 1e8, day = 86400.0, secondsPerPoint = 1e-9;
    if (!(firstStep > 0.0)) return;  // leads nowhere, and is refused
    const double steps = std::ceil(params.distance / firstStep);
    const auto n = static_cast<double>(window.points);
    const double estimate = steps * static_cast<double>(channels.size()) * n *
                            std::max(std::log2(n), 1.0) * secondsPerPoint;
    if (steps <= manySteps && estimate <= day) return;
    const std::string text =
        Concat("WARNING: component '", report.path, report.owner, "': the fiber takes ",
               params.zStepFac > 0 ? "steps that begin with " : "", firstStep, " m",
               params.zStepFac > 0 ? "" : " a step", ", about ", FormatSignificant(steps, 2),
               " steps and ", FormatSignificant(estimate / day, 2), " days\n");
    LogText(text);
    CurrentHost().messages->ShowWarnings(Concat(report.path, report.owner), text);
}

}  // namespace

Status PropagateSteps(FiberChannels& channels, FiberParams& params, double peakPower,
                      const std::atomic<std::int16_t>& stop, const ModelReport& report) {
    // The turns mix the polarizations, so that both must be there.
    if (params.pmdMethod == PmdMethod::CoarseStep &&
        AddSecondPolarization(channels, report) != Status::Success)
        return Status::Error;
    const FiberWindow window =
        MakeFiberWindow(channels.front()->signal.noPoints, params.DoublesWindow());
    if (CheckMemory(WorkBytes(channels, window, params), report) != Status::Success)
        return Status::Error;
    FiberFields fields(channels, window, params);
    if (!fields.CoversBand())
        return report.Refuse("the band of the signal is wider than its dispersion curve");
    TellLongWalk(channels, window, params, NextStep(params, channels.front()->gamma, 0, peakPower),
                 report);
    const StopScope unbroken(nullptr);  // a stop ends it after a step, with what has been reached
    FiberRun run(channels, fields, params, stop, report);
    if (run.Run(peakPower) != Status::Success) return Status::Error;
    fields.Store();
    return Status::Success;
}

}  // namespace photrak
