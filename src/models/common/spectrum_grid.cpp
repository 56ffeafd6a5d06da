// The checks before a channel is transformed.
#include "models/common/spectrum_grid.h"

#include <cmath>

#include "base/text.h"

namespace photrak {
namespace {

constexpr std::int32_t longestChannel = 1 << 29;  // samples; twice as many still fit 32 bits

std::string Complaint(const OpSig& channel) {
    const double carrier = lightSpeed / channel.wavelength;
    if (!std::isfinite(carrier) || !(carrier > 0.0)) {
        return Concat("a channel has the wavelength ", channel.wavelength, " m");
    }
    if (channel.noPoints <= 1) return {};
    if (!IsPowerOfTwo(channel.noPoints) || channel.noPoints > longestChannel) {
        return Concat("a channel has ", channel.noPoints,
                      " samples; its spectrum needs a power of two up to ", longestChannel);
    }
    const double window = 2.0 * channel.noPoints * channel.tStep;
    if (!(channel.tStep > 0.0) || !std::isfinite(1.0 / channel.tStep) || !std::isfinite(window)) {
        return Concat("a channel has the time step ", channel.tStep,
                      " s; its spectrum needs a finite one above 0");
    }
    return {};
}

}  // namespace

Status CheckSpectrumGrid(const OpSig& channel, const ModelReport& report) {
    const std::string complaint = Complaint(channel);
    return complaint.empty() ? Status::Success : report.Refuse(complaint);
}

}  // namespace photrak
