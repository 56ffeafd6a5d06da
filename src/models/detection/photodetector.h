// The photodetector: optical power to photocurrent, and the detector's frequency response. Its
// noise is the receiver's business (receiver_noise.h).
#pragma once

#include <string>

#include "kernel/driver.h"

namespace photrak {

/// 2 q, A s: twice the elementary charge, the one-sided shot noise density of 1 A.
inline constexpr double twiceElementaryCharge = 3.20436e-19;

struct PhotoDetectorParams {
    std::string modelType;           // "empirical" or "intrinsic"
    double loadResistance = 0.0;     // ohm
    double seriesResistance = 0.0;   // ohm
    double deviceCapacitance = 0.0;  // F
    double layerThickness = 0.0;     // of the absorbing layer, m
    double electronVelocity = 0.0;   // m/s
    double holeVelocity = 0.0;       // m/s
    double absorptionCoeff = 0.0;    // 1/m
    double reflectivity = 0.0;       // of the surface, fraction of the power
    double quantumEff = 0.0;         // fraction; negative: computed
    bool computesEff = false;        // from absorption and reflection, whatever quantumEff says
    double lossGain = 1.0;           // factor of the amplitude
    double darkCurrent = 0.0;        // A
    double respfp = 0.0;             // pole of the empirical response, Hz
    double respfo = 0.0;             // its resonance, Hz
    double respg = 0.0;              // its damping
    double APD_Multiplier = 1.0;     // avalanche gain M
    double ionizationCoef = 1.0;     // ionization ratio k
    bool detect = false;             // apply the frequency response

    // Derived by DetectPulse.
    double RC = 0.0;               // s
    double electronTransit = 0.0;  // s
    double holeTransit = 0.0;      // s
    double opticalDepth = 0.0;     // absorption times thickness
    double responsivity = 0.0;     // A/W, without avalanche gain
    double darkShotDensity = 0.0;  // A^2/Hz
};

inline constexpr ParamRow<PhotoDetectorParams> photoDetectorRows[] = {
    {"pd_modeltype", &PhotoDetectorParams::modelType, "empirical", Words{"empirical intrinsic"}},
    {"pd_detect",
     [](PhotoDetectorParams& params, std::string_view word) { params.detect = word == "true"; },
     "true", Words{"true false"}},
    {"pd_QEmethod",
     [](PhotoDetectorParams& params, std::string_view word) {
         params.computesEff = word == "Computed";
     },
     "Defined", Words{"Defined Computed"}},
    {"pd_quantumEff", &PhotoDetectorParams::quantumEff, 0.75},
    {"pd_APD_Multiplier", &PhotoDetectorParams::APD_Multiplier, 1.0, Range::NotZero},
    {"pd_ionizationCoef", &PhotoDetectorParams::ionizationCoef, 1.0},
    {"pd_darkCurrent", &PhotoDetectorParams::darkCurrent, 5e-9},
    {"pd_lossGain", &PhotoDetectorParams::lossGain, 0.0, Range::Finite, ParamUnit::FieldDecibels},
    {"pd_respfp", &PhotoDetectorParams::respfp, 20e9},
    {"pd_respfo", &PhotoDetectorParams::respfo, 30e9},
    {"pd_respg", &PhotoDetectorParams::respg, 0.7},
    {"pd_layerThickness", &PhotoDetectorParams::layerThickness, 1.5e-6},
    {"pd_absorptionCoeff", &PhotoDetectorParams::absorptionCoeff, 6.8e5},
    {"pd_reflectivity", &PhotoDetectorParams::reflectivity, 0.02},
    {"pd_electronVelocity", &PhotoDetectorParams::electronVelocity, 6.5e4},
    {"pd_holeVelocity", &PhotoDetectorParams::holeVelocity, 4.8e4},
    {"pd_loadResistance", &PhotoDetectorParams::loadResistance, 50.0},
    {"pd_seriesResistance", &PhotoDetectorParams::seriesResistance, 10.0},
    {"pd_deviceCapacitance", &PhotoDetectorParams::deviceCapacitance, 0.1e-12}};

/// Fills the derived fields and the photocurrent's spectrum in esOut (CURRENT, frequency domain).
/// \param optical  time domain; the squared magnitude of its samples is power, W. Their number must
///                 be a power of two.
Status DetectPulse(const OpSig* optical, ElecSig* esOut, PhotoDetectorParams& detector,
                   const ModelReport& report);

}  // namespace photrak
