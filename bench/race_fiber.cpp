// The fiber's entry in the race against other programs: translates the race's arrays into channels
// and calls the product's own steps. Velocities and nonlinear coefficients are given per channel
// there, so the records are made here; everything from the fields on is the product's.
#include "race_fiber.h"

#include <algorithm>
#include <atomic>

#include "models/optical/fiber_steps.h"

namespace {

using namespace photrak;

FiberParams ParamsOf(const bench_fiber& job) {
    FiberParams params;
    params.distance = job.dz * job.steps;
    params.zStepSize = job.dz;
    params.optimizationLevel = 2;
    params.alpha = job.alpha;
    params.curve.beta2 = job.beta2;
    params.curve.beta3 = job.beta3;
    return params;
}

Owned<OpSig> SignalOf(double* const* fields, const bench_fiber& job) {
    Owned<OpSig> sig;
    if (Make(sig, CreateOpSig, static_cast<std::int32_t>(job.n))) return nullptr;
    if (job.npol > 1 && AddEySamples(sig.get())) return nullptr;
    sig->tStep = job.dt;
    sig->wavelength = 1.55e-6;
    std::copy_n(fields[0], 2 * job.n, &sig->Ex_samples[1].re);
    if (job.npol > 1) std::copy_n(fields[1], 2 * job.n, &sig->Ey_samples[1].re);
    return sig;
}

}  // namespace

int RunRaceFiber(double** fields, const bench_fiber* job) {
    Owned<OpSignal> signal;
    if (Make(signal, CreateOpSignal)) return 1;
    OpSig** place = &signal->channels;
    for (int c = 0; c < job->nch; ++c) {
        *place = SignalOf(fields + c * job->npol, *job).release();
        if (!*place) return 1;
        place = &(*place)->next;
    }
    FiberParams params = ParamsOf(*job);
    std::string errorText;
    const ModelReport report{"race", errorText};
    {
        FiberChannels channels;
        if (MakeFiberChannels(signal->channels, params.curve, channels, report) != Status::Success)
            return 1;
        for (int c = 0; c < job->nch; ++c) {
            FiberChannel& channel = *channels[static_cast<std::size_t>(c)];
            channel.gamma = job->gamma[c];
            channel.vg = job->walkoff ? 1 / job->delay[c] : 1 / job->delay[0];
        }
        const std::atomic<std::int16_t> stop{0};
        if (PropagateSteps(channels, params, 0, stop, report) != Status::Success) return 1;
    }
    int c = 0;
    for (const OpSig& sig : Items(signal->channels)) {
        std::copy_n(&sig.Ex_samples[1].re, 2 * job->n, fields[c++]);
        if (job->npol > 1) std::copy_n(&sig.Ey_samples[1].re, 2 * job->n, fields[c++]);
    }
    return 0;
}
