// photrak measure: runs a topology once and prints what instruments would show at some of its
// nodes. Signals are measured as blocks store them, before the run reclaims them.

#include <algorithm>
#include <cmath>

#include "base/nearest.h"
#include "base/text.h"
#include "base/units.h"
#include "drawing/number_text.h"
#include "kernel/graph.h"
#include "kernel/sweep_settings.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/memory_limit.h"
#include "photrak/outcome.h"
#include "photrak/simulation.h"
#include "results/result_table.h"
#include "results/signal_measures.h"
#include "results/signal_summary_file.h"

namespace photrak {
namespace {

/// A node that was asked for, and what passed on it last.
struct Place {
    std::string name;         // "Laser", "Mux:2", "node 12"
    const Node* node;         // borrowed from the workspace
    std::string summaryFile;  // .sum
    std::vector<SignalMeasures> measures;
};

struct MeasureColumn {
    const char* name;
    double SignalMeasures::*value;
};
constexpr MeasureColumn measureColumns[] = {
    {"wavelength", &SignalMeasures::wavelength},
    {"frequency", &SignalMeasures::frequency},
    {"average", &SignalMeasures::average},
    {"peak", &SignalMeasures::peak},
    {"noise", &SignalMeasures::noise},
    {"OSNR", &SignalMeasures::osnr},
    {"level0", &SignalMeasures::level0},
    {"level1", &SignalMeasures::level1},
    {"extinctionRatio", &SignalMeasures::extinctionRatio},
    {"eyeOpening", &SignalMeasures::eyeOpening},
    {"eyeTime", &SignalMeasures::eyeTime},
    {"bitRate", &SignalMeasures::bitRate},
};

std::string_view KindOf(const SignalMeasures& measures) {
    if (measures.sigType == OpSigType) return "optical";
    return measures.sigType == ElecSigType ? "electrical" : "binary";
}

std::vector<std::string> ColumnNames() {
    std::vector<std::string> names = {"place", "node", "kind", "unit", "channel"};
    for (const MeasureColumn& column : measureColumns) names.emplace_back(column.name);
    return names;
}

TableRow RowOf(const Place& place, const SignalMeasures& measures) {
    TableRow row = {place.name, std::int64_t{place.node->number}, std::string(KindOf(measures)),
                    std::string(measures.unit), std::int64_t{measures.channel}};
    for (const MeasureColumn& column : measureColumns) row.emplace_back(measures.*column.value);
    return row;
}

std::string PowerText(double watts) {
    constexpr int digits = 5;
    return Concat("power ", EngineeringText(watts, "W", digits), " (",
                  FormatSignificant(DbmFromWatts(watts), digits), " dBm)");
}

/// "power 1 mW (0 dBm), OSNR 30.01 dB, ..." of what applies.
std::string MeasureLine(const SignalMeasures& measures) {
    constexpr int digits = 5;
    const auto decibels = [](double value) { return FormatSignificant(value, digits); };
    const bool isLight = measures.sigType == OpSigType;
    std::string line;
    const auto add = [&](const std::string& text) { line += (line.empty() ? "" : ", ") + text; };
    const auto level = [&](std::string_view name, double value) {
        if (!std::isnan(value)) {
            add(Concat(name, " ", EngineeringText(value, measures.unit, digits)));
        }
    };
    if (isLight) {
        add(Concat(FormatSignificant(nanometersPerMeter * measures.wavelength, 8), " nm, ",
                   PowerText(measures.average)));
    } else if (measures.sigType == BinSigType) {
        add(Concat(FormatSignificant(100.0 * measures.average, digits), " % ones"));
    } else {
        level("average", measures.average);
        level("noise", measures.noise);
    }
    level("peak", measures.peak);
    if (!std::isnan(measures.osnr)) add(Concat("OSNR ", decibels(measures.osnr), " dB"));
    if (!std::isnan(measures.extinctionRatio)) {
        add(Concat("extinction ratio ", decibels(measures.extinctionRatio), " dB"));
    }
    level("0 at", measures.level0);
    level("1 at", measures.level1);
    level("eye opening", measures.eyeOpening);
    return line;
}

/// Channels so far below the strongest are left out of the text: what a filter has stopped.
constexpr double weakest = 1e-5;

/// A line for each channel, after one for all of them together.
void TellPlace(const Place& place) {
    double total = 0.0, strongest = 0.0;
    for (const SignalMeasures& measures : place.measures) {
        if (measures.sigType != OpSigType) continue;
        total += measures.average;
        strongest = std::max(strongest, measures.average);
    }
    if (place.measures.size() > 1) {
        WriteOut(
            Concat(place.name, ": ", place.measures.size(), " channels, ", PowerText(total), "\n"));
    }
    std::size_t weak = 0;
    for (const SignalMeasures& measures : place.measures) {
        if (measures.sigType == OpSigType && measures.average < weakest * strongest) {
            ++weak;
        } else {
            WriteOut(Concat(place.name, ": ", MeasureLine(measures), "\n"));
        }
    }
    if (weak > 0) {
        WriteOut(Concat(place.name, ": ", weak, weak == 1 ? " channel" : " channels",
                        " more than 50 dB below the strongest\n"));
    }
}

/// The nodes of a measurement while it runs.
class Measurement : public RunGuest {
  public:
    explicit Measurement(const CommandOptions& options) : options_(options) {}

    bool Begin(const Session& session) override {
        for (const std::string& name : options_.files) {
            if (!AddPlaces(*session.workspace, name)) return false;
        }
        return true;
    }
    void PointDone(const Workspace&, Status) override {}
    void SignalStored(const Workspace&, const Node& node, const SigRecord& record) override {
        for (Place& place : places_) {
            if (place.node == &node) place.measures = MeasureSignal(record);
        }
    }
    bool End() override;
    void Tell() const override;

  private:
    bool AddPlaces(const Workspace& workspace, const std::string& name);
    bool AddNode(const Workspace& workspace, const std::string& name);
    bool AddPorts(const Component& component, std::string_view port, const std::string& name,
                  const SimOptions& simOptions);
    void Add(std::string name, const Node& node, std::string summaryFile) {
        places_.push_back({std::move(name), &node, std::move(summaryFile), {}});
    }
    bool Refuse(const std::string& text) const {
        Report("error", Concat(options_.file, ": ", text));
        return false;
    }

    const CommandOptions& options_;
    std::vector<Place> places_;
};

bool Measurement::AddNode(const Workspace& workspace, const std::string& name) {
    const auto number = WholeInt(name);
    const Node* node = number && *number > 0 ? FindNode(*number, workspace) : nullptr;
    if (!node) return Refuse(Concat("no node ", name));
    Add(Concat("node ", node->number), *node, SummaryFileName(*workspace.options, *node));
    return true;
}

/// The port that was named, or all outputs, or, of a block without any, all inputs.
bool Measurement::AddPorts(const Component& component, std::string_view port,
                           const std::string& name, const SimOptions& simOptions) {
    bool isInput = component.outputs.empty();
    if (port.starts_with("in") || port.starts_with("out")) {
        isInput = port.starts_with("in");
        port.remove_prefix(isInput ? 2 : 3);
    }
    const std::vector<Port>& ports = isInput ? component.inputs : component.outputs;
    const auto count = static_cast<std::int32_t>(ports.size());
    const std::int32_t asked = port.empty() ? 0 : WholeInt(port).value_or(-1);
    if (asked < 0 || asked > count || count == 0 || (asked == 0 && !port.empty())) {
        return Refuse(Concat("component '", component.name, "' has ", count,
                             isInput ? " inputs" : " outputs", ", and no port '", name, "'"));
    }
    bool isWired = false;
    for (std::int32_t i = asked > 0 ? asked : 1; i <= (asked > 0 ? asked : count); ++i) {
        const Node* node = ports[static_cast<std::size_t>(i) - 1].node;
        if (!node || node->number == 0) continue;
        isWired = true;
        const bool isNumbered = asked > 0 || count > 1;
        Add(isNumbered
                ? Concat(component.name, ":", isInput && !component.outputs.empty() ? "in" : "", i)
                : component.name,
            *node, SummaryFileName(simOptions, component.name, isNumbered ? i : 0));
    }
    return isWired || Refuse(Concat("nothing is wired to '", name, "'"));
}

bool Measurement::AddPlaces(const Workspace& workspace, const std::string& name) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const SimOptions& simOptions = *workspace.options;
    if (const Component* whole = FindComponent(name, workspace.components)) {
        return AddPorts(*whole, {}, name, simOptions);
    }
    if (std::all_of(name.begin(), name.end(), isDigit)) return AddNode(workspace, name);
    const std::size_t colon = name.rfind(':');
    const std::string block = name.substr(0, colon);
    if (const Component* component = FindComponent(block, workspace.components)) {
        const std::string port = colon == std::string::npos ? "" : name.substr(colon + 1);
        return AddPorts(*component, port.empty() ? "0" : port, name, simOptions);
    }
    return Refuse(Concat("no component '", block, "'",
                         DidYouMean(NearestOf(block, workspace.components,
                                              [](const auto& one) { return one->name; }))));
}

bool Measurement::End() {
    bool isWhole = true;
    std::string faults;
    for (const Place& place : places_) {
        if (place.measures.empty()) {
            isWhole = false;
            faults += Concat("no signal came to ", place.name,
                             ": only what leads to a plot, a tester or another last block runs\n");
        } else if (WriteSummaryFile(place.summaryFile, place.node->summaries, faults) ==
                   Status::Error) {
            isWhole = false;
        }
    }
    Report("error", faults);
    if (options_.table.empty()) return isWhole;
    TableFile table(options_.tablePath, ColumnNames());
    for (const Place& place : places_) {
        for (const SignalMeasures& measures : place.measures) table.Add(RowOf(place, measures));
    }
    CurrentOutcome().SetTable(options_.table);
    if (table.Failure().empty()) return isWhole;
    Report("error", Concat("could not write '", options_.table, "': ", table.Failure()));
    return false;
}

void Measurement::Tell() const {
    if (!options_.table.empty()) WriteOut(options_.table + "\n");
    const std::vector<std::string> names = ColumnNames();
    std::vector<std::string> rows;
    for (const Place& place : places_) {
        for (const SignalMeasures& measures : place.measures) {
            rows.push_back(TableLine(names, RowOf(place, measures), TableFormat::Json));
        }
        TellPlace(place);
    }
    CurrentOutcome().AddMember("measures", JsonArray(rows));
}

void PrepareMeasure(SimOptions& simOptions, const CommandOptions& options) {
    AskForSimulation(simOptions);
    if (options.prefix) simOptions.OUTPUTPREFIX = *options.prefix;
}

}  // namespace

int MeasureCommand(const CommandOptions& options) {
    if (options.files.empty()) {
        Report("error", "'measure' wants a topology file and what to measure: nodes or components");
        return exitStatus::usage;
    }
    Measurement measurement(options);
    const SimulationKind kind{"Simulation", PrepareMeasure};
    if (const auto refused = RefuseByMemory(options, kind)) return *refused;
    return SimulateTopology(options, kind, &measurement);
}

}  // namespace photrak
