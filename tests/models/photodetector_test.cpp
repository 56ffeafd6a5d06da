#include "models/detection/photodetector.h"

#include <cmath>
#include <complex>
#include <numbers>

#include "models/optical_fixture.h"

namespace photrak {
namespace {

using LongComplex = std::complex<long double>;

constexpr std::int32_t size = 64;
constexpr double df = 1e9;  // Hz

/// A layer with every effect of comparable size.
PhotoDetectorParams IntrinsicDetector() {
    PhotoDetectorParams detector;
    detector.quantumEff = 1.0;
    detector.modelType = "intrinsic";
    detector.detect = true;
    detector.lossGain = FieldRatio(-6.0);
    detector.layerThickness = 2e-6;
    detector.electronVelocity = 6.5e4;
    detector.holeVelocity = 4.8e4;
    detector.absorptionCoeff = 6.8e5;
    detector.loadResistance = 50.0;
    detector.seriesResistance = 10.0;
    detector.deviceCapacitance = 0.2e-12;
    return detector;
}

/// All power in the first sample, so that every element of the ideal spectrum is the same.
Owned<OpSignal> Flash() {
    Owned<OpSignal> light = Carrier(0.0, size);
    light->channels->tStep = 1.0 / (size * df);
    light->channels->Ex_samples[1] = {0.0, 0.03};
    return light;
}

/// Spectrum over that of the bare photocurrent.
std::vector<LongComplex> Response(PhotoDetectorParams detector) {
    std::vector<LongComplex> h(size + 1);
    Owned<ElecSig> es;
    EXPECT_EQ(Make(es, CreateElecSig, size), 0);
    std::string text;
    EXPECT_EQ(DetectPulse(Flash()->channels, es.get(), detector, {"pd", text}), Status::Success)
        << text;
    const long double current = 0.03L * 0.03L * detector.responsivity;
    for (int i = 1; i <= size; ++i) {
        h[i] = LongComplex(es->elecSamples[i].re, es->elecSamples[i].im) / current;
    }
    return h;
}

// q lambda / (h c) with the constants of the SI; the model has fewer digits of it.
TEST(Photodetector, TurnsPowerIntoCurrent) {
    const double perMeter = 1.602176634e-19 / (6.62607015e-34 * 299792458.0);
    const Owned<OpSignal> light = Flash();
    ASSERT_EQ(AddEySamples(light->channels), 0);
    light->channels->Ey_samples[1] = {0.04, 0.0};
    PhotoDetectorParams detector;
    detector.quantumEff = 0.8;
    detector.APD_Multiplier = 10.0;
    Owned<ElecSig> es;
    ASSERT_EQ(Make(es, CreateElecSig, 1), 0) << "the size comes with the light";
    std::string text;
    ASSERT_EQ(DetectPulse(light->channels, es.get(), detector, {"pd", text}), Status::Success);
    EXPECT_NEAR(detector.responsivity / (0.8 * 1.55e-6 * perMeter), 1.0, 2e-5);
    ASSERT_EQ(es->noPoints, size);
    EXPECT_NEAR(es->elecSamples[size].re, 0.0025 * detector.responsivity * 10.0, 1e-16);
}

TEST(Photodetector, FollowsPoleAndResonance) {
    PhotoDetectorParams detector = IntrinsicDetector();
    detector.modelType = "empirical";
    detector.lossGain = 10.0;
    detector.respfp = 8e9;
    detector.respfo = 1e30;
    detector.respg = 0.3;
    const auto pole = Response(detector);
    EXPECT_NEAR(std::abs(pole[9] - std::sqrt(50.0L)), 0.0, 1e-12) << "half power at the pole";
    EXPECT_NEAR(std::abs(pole[size / 2 + 1] - 100.0L / 17.0L), 0.0, 1e-12)
        << "the last element gets the factor of both ends";
    detector.respfp = 1e30;
    detector.respfo = 8e9;
    const auto resonance = Response(detector);
    EXPECT_NEAR(std::abs(resonance[9] - 10.0L / 0.6L), 0.0, 1e-11) << "1 / (2 g) at the resonance";
}

/// The four transit terms in their textbook form, in long double.
LongComplex TransitResponse(const PhotoDetectorParams& p, long double f) {
    const long double w = 2 * std::numbers::pi_v<long double> * f;
    const long double a = static_cast<long double>(p.absorptionCoeff) * p.layerThickness;
    const LongComplex je(0, w * p.layerThickness / p.electronVelocity);
    const LongComplex jh(0, w * p.layerThickness / p.holeVelocity);
    const LongComplex t1 = (1.0L - std::exp(-a) * std::exp(-je)) / (a + je);
    const LongComplex t2 = std::exp(-a) * (std::exp(-je) - 1.0L) / je;
    const LongComplex t3 = (1.0L - std::exp(-jh)) / jh;
    const LongComplex t4 = -std::exp(-a) * (1.0L - std::exp(a) * std::exp(-jh)) / (-a + jh);
    const long double rc = (p.loadResistance + p.seriesResistance) * p.deviceCapacitance;
    return static_cast<long double>(p.lossGain) * (t1 + t2 + t3 + t4) * (1.0L - std::exp(-a)) *
           LongComplex(1.0L, w * rc);
}

// DC stays at 1, one step off what the layer absorbs, squared.
TEST(Photodetector, FollowsTheTransitWithItsStepNextToDcAndTheRisingRC) {
    const PhotoDetectorParams detector = IntrinsicDetector();
    const auto h = Response(detector);
    EXPECT_NEAR(std::abs(h[1] - std::pow(10.0L, -0.3L)), 0.0, 1e-14);
    for (int i = 2; i <= size / 2; ++i) {
        const LongComplex expected = TransitResponse(detector, (i - 1) * df);
        EXPECT_NEAR(std::abs(h[i] - expected), 0.0, 1e-13) << i;
        EXPECT_NEAR(std::abs(h[size + 2 - i] - std::conj(expected)), 0.0, 1e-13) << i;
    }
    const LongComplex last = TransitResponse(detector, size / 2 * df);
    EXPECT_NEAR(std::abs(h[size / 2 + 1] - std::norm(last)), 0.0, 1e-13);
}

TEST(Photodetector, HoldsAtTheLimitsOfItsFormulas) {
    PhotoDetectorParams thick = IntrinsicDetector();
    thick.absorptionCoeff = 1e12;  // all light at the entrance: exp(a) is beyond the range
    for (const LongComplex& h : Response(thick)) EXPECT_TRUE(std::isfinite(std::abs(h)));
    PhotoDetectorParams thin = IntrinsicDetector();
    thin.layerThickness = 0.0;
    EXPECT_EQ(std::abs(Response(thin)[2]), 0.0L) << "no layer absorbs nothing";
}

}  // namespace
}  // namespace photrak
