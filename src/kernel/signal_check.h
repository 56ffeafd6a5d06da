// Whether a signal holds numbers that results can be made of.
#pragma once

#include <cstdint>

namespace photrak {

/// True if each sample of the signal has a finite square (a power, a variance), and the values of
/// noise spectra and all axes are finite. `sig` by its type code as in CopySignal; a null sig, bits
/// and other codes pass. One pass over the samples.
bool HasFiniteValues(const void* sig, std::int32_t sigType);

}  // namespace photrak
