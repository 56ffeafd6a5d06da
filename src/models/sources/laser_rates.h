// The rate equations of a single-mode laser diode: carrier density, photon density and phase, with
// a gain that is logarithmic in the carriers and compressed by the light. Lengths are in cm.
// Source: G. P. Agrawal and N. K. Dutta, Semiconductor Lasers, ch. 6.
#pragma once

#include <string>

#include "kernel/param_table.h"
#include "numeric/stiff.h"

namespace photrak {

struct LaserParams {
    std::string PlotLI;                         // "TRUE": the test draws the L-I curve
    double Io = 0.0, Po = 0.0;                  // bias: current in A (0: searched), power in W
    double To = 0.0;                            // settling time, s
    double A = 0.0, B = 0.0, C = 0.0;           // 1/s, cm^3/s, cm^6/s
    double effint = 0.0;                        // injection efficiency
    double Ns = 0.0, Ntr = 0.0;                 // gain offset and transparency densities, 1/cm^3
    double indx = 0.0;                          // group index
    double Go = 0.0;                            // gain coefficient, 1/cm
    double e = 0.0;                             // gain compression, cm^3
    double K = 0.0;                             // confinement
    double a = 0.0;                             // linewidth enhancement
    double b = 0.0;                             // spontaneous emission into the mode
    double Lcav = 0.0, Lstp = 0.0, Lact = 0.0;  // cm
    double Aint = 0.0, Amir = 0.0;              // internal and mirror loss, 1/cm
    double Lb = 0.0, Cp = 0.0;                  // H, F
    double Rd = 0.0, Rs = 0.0;                  // ohm
    double RIN = 0.0;                           // 1/Hz, linear
    double F = 0.0;                             // part of the mirrors' output that is collected
    double wavelength = 0.0;                    // m

    // Derived by DeriveLaser.
    double vg = 0.0;    // cm/s
    double G = 0.0;     // Go vg, 1/s
    double V = 0.0;     // active volume, cm^3
    double taup = 0.0;  // photon lifetime, s
    double conv = 0.0;  // W for a photon density of 1/cm^3
    // At the bias point.
    double tn = 0.0;  // carrier lifetime, s
};

/// The rows of its table, the record read from them, and what follows from it.
std::vector<ParamSpec> LaserParamSpecs();
LaserParams ReadLaserParams(Parameter* parameters);
/// Refuses by name what makes no laser.
Status CheckLaser(const LaserParams& params, const ModelReport& report);
void DeriveLaser(LaserParams& params);

inline constexpr double elementaryCharge = 1.60218e-19;  // C

/// Densities in 1/cm^3, phase in rad.
struct LaserState {
    double N = 0.0, S = 0.0, phi = 0.0;
};

/// The equations at a current and a slope that are constant over a call of the integrator.
class LaserRates : public StiffSystem {
  public:
    explicit LaserRates(const LaserParams& params) : params_(params) {}
    void SetDrive(double current, double slope) {
        current_ = current;
        slope_ = slope;
    }
    void Rates(const double* y, double* dydx) const override;
    void Jacobian(const double* y, double* dfdx, double (*dfdy)[stiffVariables]) const override;

  private:
    double Gain(double N, double S) const;

    const LaserParams& params_;
    double current_ = 0.0;  // A
    double slope_ = 0.0;    // A/s
};

/// Moves the state on by `time` from t. Carriers that start below -Ns, where there is no gain to
/// speak of, are lifted above it, which `lifted` tells.
Status Integrate(LaserRates& rates, const LaserParams& params, LaserState& state, double t,
                 double time, bool& lifted, std::string& errorText, const OdeLimits& limits = {},
                 OdeCount* count = nullptr);

/// The state from which every search of a bias point starts.
LaserState DarkState(const LaserParams& params);

}  // namespace photrak
