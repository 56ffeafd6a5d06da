// Making, loading and storing the channels of a fiber.
#include "models/optical/fiber_channels.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "base/memory.h"
#include "models/optical/fiber_raman.h"

namespace photrak {

void FiberChannelDeleter::operator()(FiberChannel* channel) const {
    channel->~FiberChannel();
    Release(channel);
}

FiberWindow MakeFiberWindow(long n, bool doubled) {
    if (!doubled || n < 2) return {n, 0, n};
    return {2 * n, n / 2, n};
}

Status MakeFiberChannels(OpSig* list, const DispersionCurve& curve, FiberChannels& channels,
                         const ModelReport& report) {
    for (OpSig& signal : Items(list)) {
        void* block = Allocate(sizeof(FiberChannel));
        if (!block) return report.Fail("Error in creating fos in Fiber().\n");
        channels.emplace_back(new (block) FiberChannel(signal));
        FiberChannel& channel = *channels.back();
        channel.omega0 = twoPiC / signal.wavelength;
        const double groupDelay = curve.GroupDelay(signal.wavelength);
        channel.vg = 1.0 / groupDelay;
        channel.groupIndex = lightSpeed / channel.vg;
        channel.delay = groupDelay - curve.GroupDelay(list->wavelength);
    }
    return Status::Success;
}

void MakeRamanRows(FiberChannels& channels, double effectiveArea) {
    for (std::size_t i = 0; i < channels.size(); ++i) {
        std::vector<double>& row = channels[i]->ramanRow;
        row.resize(channels.size());
        for (std::size_t j = 0; j < channels.size(); ++j) {
            if (i == j) continue;
            row[j] = RamanCoefficient(channels[i]->signal.wavelength,
                                      channels[j]->signal.wavelength, i < j, effectiveArea);
        }
    }
}

void RenewPadding(SplitField& field, const FiberWindow& window) {
    const long end = window.first + window.count;
    for (double* part : {field.Re(), field.Im()}) {
        std::fill(part, part + window.first, part[window.first]);
        std::fill(part + end, part + window.points, part[end - 1]);
    }
}

namespace {

void LoadField(std::optional<SplitField>& field, const Complex* samples,
               const FiberWindow& window) {
    if (!samples) return;
    field.emplace(window.points);
    field->CopyFrom(samples, window.first, window.count);
    RenewPadding(*field, window);
}

}  // namespace

void LoadWorkFields(FiberChannels& channels, const FiberWindow& window) {
    for (const auto& channel : channels) {
        LoadField(channel->workEx, channel->signal.Ex_samples, window);
        LoadField(channel->workEy, channel->signal.Ey_samples, window);
    }
}

void StoreWorkFields(FiberChannels& channels, const FiberWindow& window) {
    for (const auto& channel : channels) {
        channel->workEx->CopyTo(channel->signal.Ex_samples, window.first, window.count);
        if (channel->workEy)
            channel->workEy->CopyTo(channel->signal.Ey_samples, window.first, window.count);
    }
}

long WalkOffShift(double startTime, double firstStartTime, double tStep, long points) {
    if (points < 2) return 0;
    const double steps = std::fabs((startTime - firstStartTime) / tStep);
    const double n = static_cast<double>(points);
    const double turned = steps - n * std::floor(steps / n);
    if (!std::isfinite(turned)) return 0;
    const long shift = std::lround(turned);
    return startTime < firstStartTime ? -shift : shift;
}

}  // namespace photrak
