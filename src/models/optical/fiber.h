// Nonlinear fiber: the model NonlinearFiberModel, which carries a list of wavelength channels
// through a length of single-mode fiber. It solves the nonlinear Schroedinger equation by the
// symmetric split-step Fourier method; docs/models/fiber.md has the equations and the scheme.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "kernel/driver.h"
#include "models/optical/fiber_dispersion.h"

namespace photrak {

/// Value of a characteristic length that is infinite and takes no part in the choice of the step.
inline constexpr double infiniteLength = -999.0;

/// Polarization mode dispersion: none, random turns between the steps, or a blur of the output.
enum class PmdMethod { None, CoarseStep, Approximate };

struct FiberParams {
    std::string dataType;   // "custom", "defined", "defined2"
    double distance = 0.0;  // L, m; below 0 in thousandths of a soliton period until it is resolved
    double zStepSize = -1.0;  // fixed step, m
    double zStepFac = -1.0;   // factor of the adaptive step; used without a fixed step
    double diameter = 0.0;    // of the core, m
    double aEff = 1.0;        // effective area in areas of the core
    double loss = 0.0;        // dB/km
    DispersionCurve curve;    // beta2 and beta3 those of the first channel once resolved
    double n2 = 0.0;          // nonlinear index, m^2/W
    double skew = 0.0;        // added to every start time, s
    bool showStatus = false;  // log every step
    std::int32_t optimizationLevel = 0;
    bool hasRaman = false;  // transfer between the channels
    PmdMethod pmdMethod = PmdMethod::None;
    double pmdCoefficient = 0.0;        // s/sqrt(m)
    double pmdCorrelationLength = 0.0;  // m, Approximate

    // Derived in the run.
    double alpha = 0.0;                                                     // power loss, 1/m
    double effectiveArea = 0.0;                                             // m^2
    double LD = infiniteLength, L3 = infiniteLength, LNL = infiniteLength;  // m
    double z0 = infiniteLength;                                             // soliton period, m
    double dz = 0.0;                                                        // present step, m

    bool MergesHalfSteps() const { return (optimizationLevel & 1) != 0; }
    bool DoublesWindow() const { return (optimizationLevel & 2) == 0; }
};

/// The rows of its tables.
std::vector<ParamSpec> FiberParamSpecs();
FiberParams ReadFiberParams(Parameter* parameters);

/// Stores in the output cell a copy of the input that has gone through the fiber. On return
/// params.distance is the length in meters, and the derived values are set. Without a signal on the
/// input nothing is stored. A set stop word ends the run at the z reached.
Status Fiber(const Nodelist* inputPort, FiberParams& params, const std::atomic<std::int16_t>& stop,
             Nodelist* outputPort, const ModelReport& report);

/// The model: reads the parameters, runs the fiber, then skew and approximate dispersion of the
/// polarization modes.
Status RunFiber(const ModelCall& call);

}  // namespace photrak
