// What is wrong with a topology as its author typed it, one record for each cause. The load goes on
// with some other number where it can; a command may refuse to.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace photrak {

struct LoadFinding {
    const char* code = "";      // "P1201", a row of files/diagnostics.h
    std::string place;          // "link.top:34", or "--set"
    std::string text;           // what is wrong, with what was typed
    std::string typed;          // the text itself as it stands there
    std::string counts;         // what counts instead in a lenient run, as words; may be empty
    std::string nearest;        // the known name that was probably meant; may be empty
    bool changesNumber = true;  // false: worth knowing, and no reason to refuse a run
};

using LoadFindings = std::vector<LoadFinding>;

/// What one inspection tells at most.
inline constexpr std::size_t mostLoadFindings = 200;

/// "link.top:34: P1201: text; counts; did you mean 'nearest'?"
std::string FindingLine(const LoadFinding& finding);

}  // namespace photrak
