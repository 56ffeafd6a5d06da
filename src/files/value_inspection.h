// The values of a topology under inspection: what evaluates, over which symbols, and what nothing
// reads.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "files/topology_inspection.h"

namespace photrak {

/// A sweep as typed; `place` is "--inner" or a line of the file.
struct TypedSweep {
    enum class Loop { Inner, Outer };
    Loop loop = Loop::Inner;
    std::string place, name, start, stop, step;
    std::string startPlace = {}, stopPlace = {}, stepPlace = {};  // empty: as `place`
};

/// What a command line adds to the file.
struct GivenSymbols {
    std::vector<std::pair<std::string, std::string>> symbols;  // --set
    std::vector<TypedSweep> sweeps;                            // of a scan, asked for
};

enum class Thoroughness {
    ForRun,    // what changes a number
    ForCheck,  // also values beyond limits and files that are missing
};

/// Adds the findings about values, variables and symbols. Files are looked for from the working
/// directory.
void InspectValues(Inspection& inspection, const GivenSymbols& given, Thoroughness thoroughness);

/// The sweeps of the options of the file, with all four texts; a finding for one that lacks some.
std::vector<TypedSweep> SweepsOfFile(Inspection& inspection);

}  // namespace photrak
