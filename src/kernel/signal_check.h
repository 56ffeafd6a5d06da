// Whether a signal holds numbers that results can be made of.
#pragma once

#include <cstdint>

#include "kernel/signal_summary.h"

namespace photrak {

/// True if each sample of the signal has a finite square (a power, a variance), and the values of
/// noise spectra and all axes are finite. `sig` by its type code as in CopySignal; a null sig, bits
/// and other codes pass. `measured` are its summaries, or none: a finite mean power says all about
/// the samples of a channel, which are then not looked at again.
bool HasFiniteValues(const void* sig, std::int32_t sigType, const SignalSummaries& measured = {});

}  // namespace photrak
