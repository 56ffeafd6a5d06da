// Stimulated Raman scattering between the channels of a fiber: the longer wavelength gains what the
// shorter loses, photon for photon.
#pragma once

namespace photrak {

/// Relative gain of fused silica at a shift of `shift` 1/cm (not below 0), the curves for parallel
/// and orthogonal polarizations summed. Nothing beyond the last measured shift of 1395 1/cm.
double RamanGain(double shift);

/// Rate in 1/(W m) at which the field of a channel of wavelength `lambda` grows (above 0) or fades
/// (below 0) for each watt in a channel of wavelength `otherLambda`.
/// \param isEarlier  whether the channel stands before the other in the list
/// \param effectiveArea  m^2
double RamanCoefficient(double lambda, double otherLambda, bool isEarlier, double effectiveArea);

}  // namespace photrak
