// The two nested sweeps of a run: from the texts of the run options to points, and the symbol that
// follows them. Also the words by which a command asks for sweeps.
#pragma once

#include <string>
#include <string_view>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// Where the options keep one of the two sweeps.
struct SweepFields {
    std::string_view word;  // in messages
    std::string SimOptions::*variable;
    std::string SimOptions::*start;
    std::string SimOptions::*stop;
    std::string SimOptions::*step;
    std::int32_t SimOptions::*count;
    std::int32_t SimOptions::*index;
    std::int16_t modeBit;
};
inline constexpr SweepFields outerSweepFields = {
    "outer",
    &SimOptions::OUTERSWEEPVARIABLE,
    &SimOptions::OUTERSWEEPSTARTVAL,
    &SimOptions::OUTERSWEEPSTOPVAL,
    &SimOptions::OUTERSWEEPSTEPVAL,
    &SimOptions::outerCount,
    &SimOptions::outerIndex,
    simMode::outerSweep,
};
inline constexpr SweepFields innerSweepFields = {
    "inner",
    &SimOptions::INNERSWEEPVARIABLE,
    &SimOptions::INNERSWEEPSTARTVAL,
    &SimOptions::INNERSWEEPSTOPVAL,
    &SimOptions::INNERSWEEPSTEPVAL,
    &SimOptions::innerCount,
    &SimOptions::innerIndex,
    simMode::innerSweep,
};

/// The mode and counts of one simulation with what the values are.
void AskForSimulation(SimOptions& options);
/// The mode and counts of a parameter scan: the sweeps of which all four texts are given, and
/// statistical runs if there is at least one.
void AskForScan(SimOptions& options);

inline constexpr double maxSweepPoints = 1e9;

/// A sweep under way.
struct Sweep {
    std::string name;  // of the symbol; empty without a sweep
    double start = 0.0, stop = 0.0, step = 0.0;
    std::int32_t points = 1;
    Symbol before;  // what the symbol was, all zeros if there was none

    bool IsAsked() const { return !name.empty(); }
    /// At a point, from 1. The last one lies at `stop` even when the step overshoots.
    double Value(std::int32_t point) const;
};

/// Reads a sweep that the count in the options asks for; the count becomes the number of points.
/// Every faulty text is reported, and then the sweep has one point. A warning if no expression can
/// read the symbol, as with predefined names.
Status ReadSweep(const SweepFields& fields, Workspace& workspace, Sweep& sweep,
                 std::string& errorText);
/// Gives the symbol its value at a point.
void SetSweepPoint(const Sweep& sweep, std::int32_t point, SymbolTable& symbols);
/// The symbol as it was; one that did not exist stays as an empty entry.
void RestoreSymbol(const Sweep& sweep, SymbolTable& symbols);

}  // namespace photrak
