// Photocurrent in time, then the response of the device over frequency: a measured-looking shape
// with a pole and a resonance, or the transit of electrons and holes through a p-i-n layer.
#include "models/detection/photodetector.h"

#include <cmath>

#include "base/units.h"
#include "models/common/electrical_spectrum.h"
#include "numeric/fft.h"
#include "platform/stop_point.h"

namespace photrak {
namespace {

/// q / (h c), A/W for each meter of wavelength at full efficiency.
constexpr double responsivityPerMeter = 806543.9341951312;

void DeriveFields(PhotoDetectorParams& detector, double wavelength) {
    detector.RC =
        (detector.loadResistance + detector.seriesResistance) * detector.deviceCapacitance;
    detector.electronTransit = detector.layerThickness / detector.electronVelocity;
    detector.holeTransit = detector.layerThickness / detector.holeVelocity;
    detector.opticalDepth = detector.absorptionCoeff * detector.layerThickness;
    if (detector.computesEff || detector.quantumEff < 0.0) {
        detector.quantumEff = -std::expm1(-detector.opticalDepth) * (1.0 - detector.reflectivity);
    }
    detector.darkShotDensity = twiceElementaryCharge * detector.darkCurrent;
    detector.responsivity = wavelength * detector.quantumEff * responsivityPerMeter;
}

void FillPhotocurrent(const OpSig& optical, const PhotoDetectorParams& detector, ElecSig& esOut) {
    for (std::int32_t i = 1; i <= optical.noPoints; ++i) {
        LookForStop(i);
        double power = SquaredMagnitude(optical.Ex_samples[i]);
        if (optical.Ey_samples) power += SquaredMagnitude(optical.Ey_samples[i]);
        esOut.elecSamples[i] = MakeComplex(power * detector.responsivity * detector.APD_Multiplier);
    }
    esOut.tStep = optical.tStep;
    esOut.startTime = optical.startTime;
    esOut.bitRate = optical.bitRate;
    esOut.patternLength = optical.patternLength;
    esOut.UnitType = CurrentUnit;
    esOut.domain = FreqDomain;
}

/// One pole at fp and a second-order resonance at fo with damping g; magnitude alone.
struct EmpiricalResponse {
    double gain, fp, fo, g;

    Complex operator()(double f) const {
        const double pole = 1.0 / std::sqrt(1.0 + f * f / (fp * fp));
        const double ratio = f * f / (fo * fo);
        const double detuning = 1.0 - ratio;
        return MakeComplex(gain * pole / std::sqrt(detuning * detuning + 4.0 * ratio * g * g));
    }
};

/// exp(-j angle) - 1 without loss of digits at small angles.
Complex TurnMinusOne(double angle) {
    const double s = std::sin(0.5 * angle), c = std::cos(0.5 * angle);
    return {-2.0 * s * s, -2.0 * s * c};
}

/// a / b; the limit where both vanish.
Complex Quotient(Complex a, Complex b, double limit) {
    return b == Complex{} ? MakeComplex(limit) : a / b;
}

/// Drift of the electrons and holes that light generates on its way through a layer of the optical
/// depth a. The four terms, with te, th the transit times and w = 2 pi f:
///   (1 - exp(-a) exp(-j w te)) / (a + j w te) + exp(-a) (exp(-j w te) - 1) / (j w te)
/// + (1 - exp(-j w th)) / (j w th) - exp(-a) (1 - exp(a) exp(-j w th)) / (-a + j w th).
/// They are written with exp(-j angle) - 1, so that a vanishing frequency, depth or transit time is
/// no exception, and a thick layer none to exp(a).
struct IntrinsicResponse {
    double gain, depth, electronTransit, holeTransit, RC;

    Complex operator()(double f) const {
        const double w = twoPi * f, electronAngle = w * electronTransit,
                     holeAngle = w * holeTransit;
        const double passed = std::exp(-depth), absorbed = -std::expm1(-depth);
        const Complex electron = TurnMinusOne(electronAngle), hole = TurnMinusOne(holeAngle);
        const Complex t1 = Quotient(absorbed + -passed * electron, {depth, electronAngle}, 1.0);
        const Complex t2 = Quotient(passed * electron, {0.0, electronAngle}, -passed);
        const Complex t3 = Quotient(-1.0 * hole, {0.0, holeAngle}, 1.0);
        const Complex t4 = Quotient(absorbed + hole, {-depth, holeAngle}, -1.0);
        // By design: RC multiplies where a network would divide, and the absorbed fraction
        // counts again though the efficiency holds it; the element next to DC thus differs from DC
        // by (1 - exp(-a))^2.
        return gain * absorbed * ((t1 + t2 + t3 + t4) * Complex{1.0, w * RC});
    }
};

Status ApplyResponse(const PhotoDetectorParams& detector, ElecSig& esOut,
                     const ModelReport& report) {
    const long n = esOut.noPoints;
    const double df = 1.0 / (static_cast<double>(n) * esOut.tStep);
    if (detector.modelType == "empirical") {
        MultiplyPairs(
            esOut.fftView, n, df,
            EmpiricalResponse{detector.lossGain, detector.respfp, detector.respfo, detector.respg});
    } else if (detector.modelType == "intrinsic") {
        MultiplyPairs(
            esOut.fftView, n, df,
            IntrinsicResponse{detector.lossGain, detector.opticalDepth, detector.electronTransit,
                              detector.holeTransit, detector.RC});
    } else {
        return report.Fail(
            "Error model type for the Photodetector.\n"
            "Allowed model types are: empirical and intrinsic.\n");
    }
    MultiplyElement(esOut.fftView, 1, MakeComplex(detector.lossGain));
    return Status::Success;
}

}  // namespace

Status DetectPulse(const OpSig* optical, ElecSig* esOut, PhotoDetectorParams& detector,
                   const ModelReport& report) {
    if (!optical || !esOut || ResizeElecSig(esOut, optical->noPoints)) {
        return report.Fail("Empty input ElecSig in DetectPulse().\n");
    }
    DeriveFields(detector, optical->wavelength);
    FillPhotocurrent(*optical, detector, *esOut);
    DoFFT(esOut->fftView, esOut->noPoints, -1);
    if (!detector.detect) return Status::Success;
    return ApplyResponse(detector, *esOut, report);
}

}  // namespace photrak
