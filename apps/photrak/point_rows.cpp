// Sweep values come from their symbols and draws from the evaluated parameters: what counted in the
// point, also for blocks that did not run again.
#include "photrak/point_rows.h"

#include <algorithm>
#include <limits>

#include "base/text.h"
#include "kernel/parameters.h"
#include "kernel/run_progress.h"
#include "kernel/signals.h"
#include "kernel/sweep_settings.h"
#include "kernel/symbols.h"

namespace photrak {
namespace {

constexpr double missing = std::numeric_limits<double>::quiet_NaN();

double SymbolValue(const Workspace& workspace, const std::string& name) {
    Symbol symbol;
    return SymbolLookup(workspace.symbols, name, &symbol) ? symbol.value : missing;
}

double DrawnValue(const Parameter& parameter, bool imaginary) {
    if (!parameter.valactual) return missing;
    if (parameter.type != ComplexType) return *static_cast<const double*>(parameter.valactual);
    const auto& value = *static_cast<const Complex*>(parameter.valactual);
    return imaginary ? value.im : value.re;
}

void AddNew(std::vector<std::string>& names, const std::string& name) {
    if (std::ranges::find(names, name) == names.end()) names.push_back(name);
}

void AppendReading(TableRow& row, const BerReading& reading, Status point) {
    const auto value = [&](double number) { return reading.found ? number : missing; };
    row.emplace_back(reading.component);
    row.emplace_back(std::int64_t{reading.loop});
    row.emplace_back(value(reading.BER));
    row.emplace_back(value(reading.Q));
    row.emplace_back(value(reading.level));
    row.emplace_back(value(reading.offset));
    row.emplace_back(std::string(StatusWord(reading, point)));
}

/// What a tester has to say of a point: what it measured in it, or, if nothing that it depends on
/// changed, before.
std::vector<BerReading> ReadingsOf(const std::string& tester, Status point) {
    std::vector<BerReading> readings;
    const auto take = [&](const std::vector<BerReading>& from) {
        std::ranges::copy_if(from, std::back_inserter(readings), [&](const BerReading& reading) {
            return reading.component == tester;
        });
    };
    take(CurrentRun().ofPoint);
    if (readings.empty() && point != Status::Error) take(CurrentRun().readings);
    if (readings.empty()) {
        BerReading none;
        none.component = tester;
        none.found = false;
        readings.push_back(none);
    }
    return readings;
}

}  // namespace

std::string_view StatusWord(const BerReading& reading, Status point) {
    if (point == Status::Error || reading.status == Status::Error) return "error";
    if (!reading.found && !reading.component.empty()) return "no-result";
    const bool isFine = point == Status::Success && reading.status == Status::Success;
    return isFine ? "ok" : "warning";
}

PointColumns::PointColumns(const Workspace& workspace) {
    const SimOptions& options = *workspace.options;
    for (const SweepFields& fields : {outerSweepFields, innerSweepFields}) {
        const bool isAsked = (options.mode & fields.modeBit) && options.*fields.count > 0;
        if (isAsked && !(options.*fields.variable).empty()) {
            sweeps_.push_back(options.*fields.variable);
        }
    }
    for (const auto& component : workspace.components) {
        for (const Parameter& parameter : Items<const Parameter>(component->parameters)) {
            if (!parameter.drawCursor) continue;
            if (parameter.type != DoubleType && parameter.type != ComplexType) continue;
            drawn_.push_back({component.get(), &parameter, false});
            if (parameter.type == ComplexType)
                drawn_.push_back({component.get(), &parameter, true});
        }
    }
}

std::vector<std::string> PointColumns::Names() const {
    // The fixed names come first in the search for a free one: a symbol of the user's steps aside.
    std::vector<std::string> names = {"point", "run",   "tester", "loop",  "BER",
                                      "Q",     "level", "offset", "status"};
    const std::size_t fixed = names.size();
    names.insert(names.end(), sweeps_.begin(), sweeps_.end());
    for (const Drawn& drawn : drawn_) {
        const bool isComplex = drawn.parameter->type == ComplexType;
        const std::string_view part = !isComplex ? "" : drawn.imaginary ? ".im" : ".re";
        names.push_back(Concat(drawn.component->name, ".", drawn.parameter->name, part));
    }
    names = UniqueNames(std::move(names));
    const auto begin = names.begin();
    const auto sweeps = begin + static_cast<std::ptrdiff_t>(fixed);
    const auto draws = sweeps + static_cast<std::ptrdiff_t>(sweeps_.size());
    // point, sweeps, run, draws, tester and what it found
    std::rotate(begin + 1, sweeps, draws);
    std::rotate(begin + 2 + static_cast<std::ptrdiff_t>(sweeps_.size()), draws, names.end());
    return names;
}

TableRow PointColumns::Start(const Workspace& workspace) const {
    TableRow row;
    row.emplace_back(PositionOf(*workspace.options).point);
    for (const std::string& name : sweeps_) row.emplace_back(SymbolValue(workspace, name));
    row.emplace_back(std::int64_t{std::max(workspace.options->runIndex, 1)});
    for (const Drawn& drawn : drawn_) {
        row.emplace_back(DrawnValue(*drawn.parameter, drawn.imaginary));
    }
    return row;
}

std::vector<TableRow> PointColumns::Rows(const Workspace& workspace, Status point,
                                         std::vector<std::string>& testers) const {
    for (const BerReading& reading : CurrentRun().ofPoint) AddNew(testers, reading.component);
    for (const auto& component : workspace.components) {
        if (component->type == "BERTester") AddNew(testers, component->name);
    }
    const TableRow start = Start(workspace);
    std::vector<TableRow> rows;
    const auto add = [&](const BerReading& reading) {
        rows.push_back(start);
        AppendReading(rows.back(), reading, point);
    };
    for (const std::string& tester : testers) {
        for (const BerReading& reading : ReadingsOf(tester, point)) add(reading);
    }
    if (testers.empty()) {
        BerReading none;
        none.found = false;
        add(none);
    }
    return rows;
}

PointTable::PointTable(std::string path, const Workspace& workspace)
    : path_(std::move(path)),
      columns_(workspace),
      file_(std::make_unique<TableFile>(path_, columns_.Names())) {}

void PointTable::PointDone(const Workspace& workspace, Status point) {
    if (!started_ && Failure().empty()) {
        started_ = true;
        columns_ = PointColumns(workspace);
        if (columns_.HasDraws()) file_ = std::make_unique<TableFile>(path_, columns_.Names());
    }
    for (const TableRow& row : columns_.Rows(workspace, point, testers_)) file_->Add(row);
}

}  // namespace photrak
