#include "photrak/report_settings.h"

#include "base/text.h"
#include "files/catalogue.h"
#include "kernel/parameters.h"
#include "kernel/sweep_settings.h"

namespace photrak {
namespace {

constexpr std::size_t mostRows = 1000;

std::string_view TextOf(const char* text) {
    return text ? text : "";
}

void AddRow(ReportTable& table, std::vector<std::string> row) {
    if (table.rows.size() < mostRows) {
        table.rows.push_back(std::move(row));
    } else {
        ++table.left;
    }
}

void AddSweep(ReportTable& table, const SimOptions& options, const SweepFields& fields) {
    const std::string& name = options.*fields.variable;
    if (name.empty()) return;
    AddRow(table, {name, Concat("from ", options.*fields.start, " to ", options.*fields.stop,
                                " by ", options.*fields.step, " (", fields.word, " sweep)")});
}

ReportTable SymbolTableOf(const Workspace& workspace) {
    ReportTable table;
    table.caption = "Symbols and sweeps";
    table.header = {"Symbol", "Value"};
    table.textColumns = 2;
    for (const Variable& variable : workspace.variables)
        AddRow(table, {variable.name, variable.value});
    const SimOptions& options = *workspace.options;
    AddSweep(table, options, innerSweepFields);
    AddSweep(table, options, outerSweepFields);
    if (options.NUMRUNSTODO > 0) AddRow(table, {"statistical runs", Concat(options.NUMRUNSTODO)});
    return table;
}

/// Arrays have no text that a table could show.
bool IsShown(const Parameter& parameter, const Component* model) {
    if (!parameter.name || !parameter.value) return false;
    return !model || GetParamText(model->parameters, parameter.name, "") != parameter.value;
}

ReportTable ParameterTable(const Workspace& workspace, const Catalogue& catalogue) {
    ReportTable table;
    table.header = {"Block", "Model", "Parameter", "Value", "Unit"};
    table.textColumns = table.header.size();
    for (const auto& component : workspace.components) {
        const Component* model = FindModel(catalogue, component->type);
        for (const Parameter* p = component->parameters; p; p = p->next) {
            if (!IsShown(*p, model)) continue;
            const bool isChoice = p->type == EnumType;  // whose units are its words
            AddRow(table, {component->name, component->type, p->name, p->value,
                           std::string(isChoice ? "" : TextOf(p->UNITS))});
        }
    }
    table.caption = Concat("Parameters that differ from their models' defaults: ",
                           table.rows.size() + table.left);
    return table;
}

}  // namespace

std::vector<ReportTable> SettingTables(const Workspace& workspace, const Catalogue& catalogue) {
    std::vector<ReportTable> tables;
    for (ReportTable table : {SymbolTableOf(workspace), ParameterTable(workspace, catalogue)}) {
        table.folded = true;
        if (!table.rows.empty()) tables.push_back(std::move(table));
    }
    return tables;
}

}  // namespace photrak
