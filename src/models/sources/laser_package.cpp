// A linear filter over the spectrum of the whole period.
#include "models/sources/laser_package.h"

#include "base/units.h"
#include "numeric/fft.h"

namespace photrak {

Complex PackageResponse(const LaserParams& p, double w) {
    const Complex series{p.Rs, w * p.Lb}, shunt{1.0, w * p.Cp * p.Rd};
    return MakeComplex(1.0) / (MakeComplex(p.Rd) + series * shunt);
}

void ApplyPackage(const LaserParams& params, ElecSig& drive) {
    const long n = drive.noPoints;
    Complex* samples = drive.elecSamples;
    if (drive.UnitType == CurrentUnit) {
        for (long i = 1; i <= n; ++i) samples[i] = params.Rs * samples[i];
        drive.UnitType = VoltageUnit;
    }
    DoFFT(drive.fftView, n, -1);
    const double df = 1.0 / (static_cast<double>(n) * drive.tStep);
    for (long i = 1; i <= n / 2 + 1; ++i) {
        const Complex H = PackageResponse(params, twoPi * static_cast<double>(i - 1) * df);
        samples[i] = H * samples[i];
        const long mirrored = n + 2 - i;
        if (mirrored > i && mirrored <= n) samples[mirrored] = Conjugate(H) * samples[mirrored];
    }
    DoFFT(drive.fftView, n, 1);
    for (long i = 1; i <= n; ++i) samples[i] = (1.0 / static_cast<double>(n)) * samples[i];
}

}  // namespace photrak
