// From the four texts of a sweep to its points, and a point to its symbol and back.
#include "kernel/sweep_settings.h"

#include <cmath>

#include "base/text.h"
#include "kernel/expression.h"

namespace photrak {
namespace {

struct Limit {
    std::string_view word;
    std::string SimOptions::*SweepFields::*text;
    double Sweep::*value;
};
constexpr Limit limits[] = {{"start", &SweepFields::start, &Sweep::start},
                            {"stop", &SweepFields::stop, &Sweep::stop},
                            {"step", &SweepFields::step, &Sweep::step}};

bool IsComplete(const SimOptions& options, const SweepFields& fields) {
    return !(options.*fields.variable).empty() && !(options.*fields.start).empty() &&
           !(options.*fields.stop).empty() && !(options.*fields.step).empty();
}

void AskForSweep(SimOptions& options, const SweepFields& fields) {
    const bool complete = IsComplete(options, fields);
    options.*fields.count = complete ? 1 : 0;
    const int mode = complete ? options.mode | fields.modeBit : options.mode & ~fields.modeBit;
    options.mode = static_cast<std::int16_t>(mode);
}

/// The number of points, 0 for settings that make no sweep. By design: no tolerance. A span
/// that is a whole number of steps but for rounding gets one point more, which Value puts on the
/// stop.
std::int32_t CountPoints(const Sweep& sweep) {
    const double points = std::ceil((sweep.stop - sweep.start) / sweep.step) + 1.0;
    const bool finite = std::isfinite(points) && std::isfinite(sweep.start) &&
                        std::isfinite(sweep.stop) && std::isfinite(sweep.step);
    if (sweep.step == 0.0 || !finite || points < 1.0 || points > maxSweepPoints) return 0;
    return static_cast<std::int32_t>(points);
}

bool CanBeASymbol(std::string_view name) {
    return name.size() < symbolNameCapacity && name.find('\0') == std::string_view::npos;
}

}  // namespace

void AskForSimulation(SimOptions& options) {
    options.mode = 0;
    options.innerCount = 0;
    options.outerCount = 0;
}

void AskForScan(SimOptions& options) {
    AskForSweep(options, innerSweepFields);
    AskForSweep(options, outerSweepFields);
    if (options.NUMRUNSTODO < 1) options.NUMRUNSTODO = 0;
    const int mode = options.NUMRUNSTODO > 0 ? options.mode | simMode::statistical
                                             : options.mode & ~simMode::statistical;
    options.mode = static_cast<std::int16_t>(mode);
}

double Sweep::Value(std::int32_t point) const {
    const double value = (point - 1) * step + start;
    const bool beyond = stop < start ? value < stop : value > stop;
    return beyond ? stop : value;
}

Status ReadSweep(const SweepFields& fields, Workspace& workspace, Sweep& sweep,
                 std::string& errorText) {
    SimOptions& options = *workspace.options;
    std::int32_t& count = options.*fields.count;
    const std::string& name = options.*fields.variable;
    if (count < 1 || name.empty()) {
        count = 0;
        return Status::Success;
    }
    Status status = Status::Success;
    sweep.name = name;
    SymbolLookup(workspace.symbols, name, &sweep.before);
    for (const Limit& limit : limits) {
        ExprError error = ExprError::None;
        sweep.*limit.value =
            EvalNumberText(workspace.symbols, options.*(fields.*limit.text), error);
        if (error == ExprError::None) continue;
        errorText += Concat("ERROR in ", fields.word, " sweep ", limit.word, " settings\n");
        status = Status::Error;
    }
    sweep.points = CanBeASymbol(name) ? CountPoints(sweep) : 0;
    if (sweep.points < 1) {
        errorText += Concat("ERROR in ", fields.word, " sweep settings\n");
        status = Status::Error;
        sweep.points = 1;
    }
    if (status == Status::Success && !CanNameASymbol(name)) {
        errorText += Concat("WARNING: the ", fields.word, " sweep of '", name,
                            "' changes nothing: expressions read no symbol of that name\n");
        status = Status::Warning;
    }
    count = sweep.points;
    return status;
}

void SetSweepPoint(const Sweep& sweep, std::int32_t point, SymbolTable& symbols) {
    if (sweep.IsAsked()) SymbolSetValue(symbols, sweep.name, sweep.Value(point));
}

void RestoreSymbol(const Sweep& sweep, SymbolTable& symbols) {
    if (!sweep.IsAsked()) return;
    SymbolInsert(symbols, sweep.name, sweep.before.value, sweep.before.text);
}

}  // namespace photrak
