// Which parameters say how long a pattern is, one row for each.
#include "photrak/short_patterns.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <string>

#include "base/memory.h"
#include "base/text.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "kernel/symbols.h"

namespace photrak {
namespace {

enum class Says { Exponent, Count };
constexpr struct Length {
    std::string_view type, parameter;
    Says says;
} lengths[] = {
    {"PseudoRandomBinarySequenceGenerator", "patternLength", Says::Exponent},
    {"ModeLockedLaserModel", "patternLength", Says::Exponent},
    {"AnalogSineGenerator", "noPeriods", Says::Exponent},
    {"AnalogSineGenerator", "noSamples", Says::Exponent},
    {"CWLaserModel", "noSamples", Says::Exponent},
    {"CustomSignalGenerator", "patternLength", Says::Count},
};
/// Blocks want some bits to measure by.
constexpr int leastExponent = 4;

/// Calls work(parameter, length) for each parameter that says how long a pattern is.
template <class Work>
void ForLengths(Workspace& workspace, const Work& work) {
    for (const auto& component : workspace.components) {
        for (const Length& length : lengths) {
            if (component->type != length.type) continue;
            Parameter* parameter = FindParameter(length.parameter, component->parameters);
            if (parameter && parameter->value) work(*parameter, length);
        }
    }
}

int ExponentOf(const Parameter& parameter, const Length& length) {
    if (!parameter.valactual) return 0;
    const auto value = std::max(*static_cast<const std::int32_t*>(parameter.valactual), 0);
    return length.says == Says::Exponent ? value : std::countr_zero(static_cast<unsigned>(value));
}

}  // namespace

int MostHalvings(Workspace& workspace) {
    std::string text;
    int least = INT_MAX;
    if (BuildSymbolTable(workspace, text) == Status::Error) return 0;
    ForLengths(workspace, [&](Parameter& parameter, const Length& length) {
        const bool isKnown = EvalParam(&parameter, &workspace, text) != Status::Error;
        least = std::min(least, isKnown ? ExponentOf(parameter, length) : 0);
    });
    FreeSymbolTable(workspace);
    return least == INT_MAX ? 0 : std::max(least - leastExponent, 0);
}

void HalvePatterns(Workspace& workspace, int times) {
    ForLengths(workspace, [&](Parameter& parameter, const Length& length) {
        const std::string change = length.says == Says::Exponent
                                       ? Concat("(", parameter.value, ")-", times)
                                       : Concat("(", parameter.value, ")/", std::exp2(times));
        char* text = CopyText(change);
        if (!text) return;
        Release(parameter.value);
        parameter.value = text;
    });
}

}  // namespace photrak
