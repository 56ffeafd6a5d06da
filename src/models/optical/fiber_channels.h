// The working record of each channel while it is in a fiber, and the fields that the fiber works
// on.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "kernel/signals.h"
#include "models/optical/fiber.h"
#include "numeric/transfer.h"

namespace photrak {

/// Stands in the channel's lock field (fos), so that the signal cannot be freed meanwhile; the end
/// of the record clears it. The signal outlives the record.
struct FiberChannel {
    explicit FiberChannel(OpSig& channel) : signal(channel) { signal.fos = this; }
    ~FiberChannel() { signal.fos = nullptr; }
    FiberChannel(const FiberChannel&) = delete;
    FiberChannel& operator=(const FiberChannel&) = delete;

    OpSig& signal;
    double gamma = 0;                      // nonlinear coefficient, 1/(W m)
    double omega0 = 0;                     // carrier, rad/s
    double vg = 0;                         // group velocity, m/s
    double groupIndex = 0;                 // c/vg
    double delay = 0;                      // 1/vg against the first channel, s/m
    long shift = 0;                        // samples by which the channel lags the first at present
    double rotation = 0, retardation = 0;  // of the step's polarization rotation, rad
    std::optional<SplitField> workEx, workEy;  // N' samples; y only with two polarizations
    std::vector<double> ramanRow;  // rate against each channel, 1/(W m); empty without Raman

    /// workEy, or null.
    SplitField* Y() { return workEy ? &*workEy : nullptr; }
};

struct FiberChannelDeleter {
    void operator()(FiberChannel* channel) const;
};
using FiberChannels = std::vector<std::unique_ptr<FiberChannel, FiberChannelDeleter>>;

/// N' samples of the work fields, of which count = N from `first` on (zero-based) are the signal.
struct FiberWindow {
    long points = 0;
    long first = 0;
    long count = 0;
};
/// A doubled window has a quarter of flat padding on each side, so that the circular transforms do
/// not fold the ends of a pulse together. A single sample has no ends.
FiberWindow MakeFiberWindow(long n, bool doubled);

/// One record per channel, in the order of the list, with carrier and velocity.
Status MakeFiberChannels(OpSig* list, const DispersionCurve& curve, FiberChannels& channels,
                         const ModelReport& report);
/// Rows of Raman rates; the diagonal is 0.
void MakeRamanRows(FiberChannels& channels, double effectiveArea);

/// Work fields with the signal in the window and its end samples in the padding.
void LoadWorkFields(FiberChannels& channels, const FiberWindow& window);
/// The padding anew from the ends of the window. The field must be settled.
void RenewPadding(SplitField& field, const FiberWindow& window);
/// The window back into the signals.
void StoreWorkFields(FiberChannels& channels, const FiberWindow& window);

/// Samples by which a channel that starts at `startTime` must be turned toward higher index to
/// stand in the time frame of the first; between -points and points.
long WalkOffShift(double startTime, double firstStartTime, double tStep, long points);

}  // namespace photrak
