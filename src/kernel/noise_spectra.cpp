// Spectra of amplified spontaneous emission (OpSigASE) and their lists.
#include "kernel/noise_spectra.h"

#include <algorithm>

#include "kernel/sample_arrays.h"
#include "kernel/signals.h"

namespace photrak {

std::int32_t CreateOpSigASE(OpSigASE** place, std::int32_t n) {
    if (!place) return 1;
    *place = nullptr;
    Owned<OpSigASE> spectrum(NewRecord<OpSigASE>());
    if (!spectrum) return 1;
    if (n >= 1) {
        spectrum->powerSamples = NewSamples<double>(n);
        if (!spectrum->powerSamples) return 1;
        spectrum->noPoints = n;
    }
    *place = spectrum.release();
    return 0;
}

std::int32_t FreeOpSigASE(OpSigASE** place) {
    if (!place) return 1;
    OpSigASE* head = *place;
    if (!head) return 0;
    *place = head->next;
    Release(head->powerSamples);
    Release(head);
    return 0;
}

std::int32_t CopyOpSigASE(OpSigASE** place, const OpSigASE* source) {
    if (!place) return 1;
    *place = nullptr;
    if (!source) return 1;
    Owned<OpSigASE> copy(NewRecord<OpSigASE>());
    if (!copy || !CopySamples(copy->powerSamples, source->powerSamples, source->noPoints)) return 1;
    copy->noPoints = source->noPoints;
    copy->fstep = source->fstep;
    copy->fstart = source->fstart;
    *place = copy.release();
    return 0;
}

std::int32_t FreeOpSigASEList(OpSigASE** place) {
    if (!place) return 1;
    while (*place) FreeOpSigASE(place);
    return 0;
}

std::int32_t CopyOpSigASEList(OpSigASE** place, const OpSigASE* source) {
    return CopyList(place, source, CopyOpSigASE);
}

double NoiseDensity(const OpSigASE& spectrum, double nu) {
    constexpr double tolerance = 1e-6;  // steps
    const std::int32_t n = spectrum.noPoints;
    const double position = (nu - spectrum.fstart) / spectrum.fstep;
    if (!(position >= -tolerance && position <= n - 1 + tolerance)) return 0.0;
    const auto interval = static_cast<std::int32_t>(position);
    const std::int32_t below = std::min(interval + 1, n), above = std::min(interval + 2, n);
    const double u = std::max(position - interval, 0.0);
    const double* power = spectrum.powerSamples;
    return power[below] + u * (power[above] - power[below]);
}

}  // namespace photrak
