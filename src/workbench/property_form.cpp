// Rows for numbers, texts and enumerations, marked while typing; the buttons around them.
#include "workbench/property_form.h"

#include <algorithm>
#include <filesystem>

#include "base/text.h"
#include "files/param_file.h"
#include "files/topology_words.h"
#include "kernel/expression.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "kernel/symbols.h"
#include "platform/file_system.h"
#include "workbench/block_copy.h"
#include "workbench/help_topics.h"
#include "workbench/symbols_form.h"
#include "workbench/value_text.h"

namespace photrak {
namespace {

constexpr std::size_t mostRows = 200;  // with the row of the name
constexpr std::int32_t rowsShown = 12;
constexpr const char* refusedText = "User error in a data entry field.\nUnable to store data";
constexpr std::string_view nameRow = "ComponentName";

bool HasRow(const Parameter& parameter) {
    return parameter.type == DoubleType || parameter.type == IntType ||
           parameter.type == StringType || parameter.type == EnumType;
}

/// A limit as the table shows it; empty for a type without.
std::string LimitText(const Parameter& parameter, const void* limit) {
    if (!limit) return {};
    if (parameter.type == DoubleType) return FormatDefault(*static_cast<const double*>(limit));
    if (parameter.type == IntType) return Concat(*static_cast<const std::int32_t*>(limit));
    return {};
}

std::vector<std::string> WordsOf(const char* list) {
    std::vector<std::string> words;
    std::string_view rest = list ? list : "";
    constexpr std::string_view separators = " ,:\t\n";
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find_first_of(separators), rest.size());
        if (end > 0) words.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return words;
}

FormRow RowOf(const Parameter& parameter) {
    FormRow row;
    row.name = parameter.name;
    row.value = parameter.value ? parameter.value : "";
    row.hint = parameter.DESC ? parameter.DESC : "";
    row.least = LimitText(parameter, parameter.min);
    row.greatest = LimitText(parameter, parameter.max);
    if (parameter.type == EnumType) {
        row.isChoice = true;
        row.choices = WordsOf(parameter.UNITS);
        if (std::ranges::find(row.choices, row.value) == row.choices.end()) {
            row.choices.insert(row.choices.begin(), row.value);
            row.fault = "not among the choices";
        }
        return row;
    }
    if (parameter.type != StringType) row.units = parameter.UNITS ? parameter.UNITS : "";
    if (parameter.type == DoubleType) {
        row.hasDeviation = true;
        row.deviation = parameter.STDDEV ? parameter.STDDEV : "";
        row.distribution = DistributionWord(parameter.PROBDIST);
    }
    return row;
}

/// Blanks and what would split the name in a file become underscores.
std::string CleanedName(std::string name, const std::string& type) {
    for (char& c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == ' ' || c == ':' || byte < ' ' || byte == 127) c = '_';
    }
    return name.empty() ? type : name;
}

/// What a parameter file cannot bring back: it writes both parts of a complex element as one word.
std::string LostValuesText(const Component& component) {
    std::string names;
    for (const Parameter& parameter : Items(component.parameters)) {
        if (parameter.type != ComplexArrayType) continue;
        names += Concat(names.empty() ? "'" : ", '", parameter.name, "'");
    }
    return names.empty() ? names : Concat("A load does not bring back complex arrays: ", names);
}

class PropertyForm : public Form {
  public:
    PropertyForm(Workbench& workbench, DiagramView& view, Component& component)
        : workbench_(workbench), view_(view), component_(component) {
        kind = "properties";
        const bool isSuperBlock = component.type == "SuperBlock";
        title = Concat("Properties for Component ", component.name, " of Type ", component.type,
                       isSuperBlock ? ":" : "", isSuperBlock ? component.superBlockFile : "");
        helpTopic = HelpTopicOf(component.type);
        for (const char* label :
             {"OK", "Cancel", "Help", "Test", "Load...", "Save...", "Symbols..."}) {
            buttons.push_back({label, true});
        }
        Fill();
        Guard();
    }

  private:
    void Fill();
    void Guard();
    void Mark(FormRow& row);
    void RowEdited(FormRow& row) override { Mark(row); }
    void Uncovered() override {
        for (FormRow& row : tables.front().rows) Mark(row);
    }
    FormResult Pressed(std::string_view label) override;
    bool CanStore();
    bool Store();
    void StoreName(const FormRow& row);
    void Test();
    void Load();
    void Save();
    void ShowStatus(Status status, const std::string& text);
    std::string FromDiagram(const std::string& file) const {
        return (std::filesystem::path(view_.directory) / file).string();
    }
    Parameter* ParameterOf(const FormRow& row) {
        return &row == &tables.front().rows.front()
                   ? nullptr
                   : FindParameter(row.name, component_.parameters);
    }

    Workbench& workbench_;
    DiagramView& view_;
    Component& component_;
};

void PropertyForm::Fill() {
    FormTable table;
    table.rowsShown = rowsShown;
    FormRow name;
    name.name = nameRow;
    name.value = component_.name;
    table.rows.push_back(std::move(name));
    std::size_t hidden = 0;
    for (const Parameter& parameter : Items(component_.parameters)) {
        if (HasRow(parameter) && table.rows.size() < mostRows) {
            table.rows.push_back(RowOf(parameter));
        } else {
            ++hidden;
        }
    }
    tables = {std::move(table)};
    note = hidden == 0 ? std::string()
                       : Concat(hidden, hidden == 1 ? " parameter is" : " parameters are",
                                " set through files only");
    for (FormRow& row : tables.front().rows) Mark(row);
}

/// While the view runs, nothing may change under it; a test needs the evaluator for itself.
void PropertyForm::Guard() {
    const bool running = view_.running != 0;
    Enable("OK", !running);
    Enable("Load...", !running);
    Enable("Test", !workbench_.run.active &&
                       workbench_.services.hasTest(component_.type, workbench_.userModels));
}

/// What is wrong with a cell, and what its text evaluates to, in the row's hint.
void PropertyForm::Mark(FormRow& row) {
    row.fault.clear();
    const Parameter* parameter = ParameterOf(row);
    if (!parameter) {
        row.hint = row.value.find('"') == std::string::npos ? "" : quoteInValueText;
        return;
    }
    row.hint = parameter->DESC ? parameter->DESC : "";
    const auto add = [&](std::string_view more) {
        if (!more.empty()) row.hint += Concat(row.hint.empty() ? "" : "; ", more);
    };
    row.deviationFault.clear();
    if (row.isChoice) {
        const std::vector<std::string> known = WordsOf(parameter->UNITS);
        if (std::ranges::find(known, row.value) == known.end()) row.fault = "not among the choices";
        return;
    }
    if (parameter->type == StringType) {
        if (row.value.find('"') != std::string::npos) add(quoteInValueText);
        return;
    }
    const auto inside = component_.innerTexts.find(row.name);
    if (inside != component_.innerTexts.end() && inside->second == row.value) {
        add("follows the values inside the SuperBlock");
        return;
    }
    if (view_.running) return;
    const ValueCheck value = CheckValue(*view_.workspace, *parameter, row.value);
    row.fault = value.fault;
    add(value.shown);
    if (row.hasDeviation) {
        row.deviationFault = CheckExpression(*view_.workspace, row.deviation).fault;
    }
}

/// An empty value of a number, a character or an enumeration is the one text that cannot be stored.
bool PropertyForm::CanStore() {
    for (FormRow& row : tables.front().rows) {
        const Parameter* parameter = ParameterOf(row);
        if (!parameter || parameter->type == StringType || !row.value.empty()) continue;
        row.fault = "a value must be given";
        workbench_.ErrorBox(refusedText);
        return false;
    }
    return true;
}

void PropertyForm::StoreName(const FormRow& row) {
    const std::string name = CleanedName(row.value, component_.type);
    if (name == component_.name) return;
    ComponentList& list = view_.workspace->components;
    std::unique_ptr<Component> owned = TakeOut(component_, list);
    if (!owned) return;
    owned->name = name;
    InsertByName(std::move(owned), list);
}

bool PropertyForm::Store() {
    if (!CanStore()) return false;
    for (FormRow& row : tables.front().rows) {
        Parameter* parameter = ParameterOf(row);
        if (!parameter) {
            StoreName(row);
            continue;
        }
        bool stored = true;
        if (row.valueEdited) stored = SetText(&parameter->value, OneLine(row.value));
        if (row.deviationEdited) {
            stored = SetText(&parameter->STDDEV, OneLine(row.deviation)) && stored;
        }
        if (row.distributionEdited) parameter->PROBDIST = DistributionCode(row.distribution);
        if (!stored) {
            workbench_.ErrorBox("Out of memory: not all cells were stored");
            return false;
        }
        row.valueEdited = row.deviationEdited = row.distributionEdited = false;
    }
    EndChange(workbench_, view_, Concat("Properties of ", component_.name));
    return true;
}

void PropertyForm::ShowStatus(Status status, const std::string& text) {
    if (status == Status::Error) workbench_.ErrorBox(text);
    if (status == Status::Warning) workbench_.InfoBox(text);
}

void PropertyForm::Test() {
    if (!Store()) return;
    const WorkingDirectory there(view_.directory);
    for (const TestFinding& finding :
         workbench_.services.test(component_, *view_.workspace, workbench_.userModels)) {
        ShowStatus(finding.status, finding.text);
    }
}

constexpr FileFilter parameterFiles{"Parameter Files (*.prm)", "*.prm"};
constexpr FileFilter allFiles{"All Files (*.*)", "*.*"};

void PropertyForm::Load() {
    if (!Store()) return;
    const auto chosen = workbench_.desktop.ChooseFile(
        {false, "Load Parameters", {parameterFiles, allFiles}, view_.directory});
    if (!chosen) return;
    std::string text;
    const Status status = LoadParamFile(component_, *view_.workspace, FromDiagram(*chosen), text);
    ShowStatus(status, text);
    Fill();
    EndChange(workbench_, view_, Concat("Load parameters of ", component_.name));
}

void PropertyForm::Save() {
    if (view_.running) {
        workbench_.ErrorBox("Simulation already in progress.");
        return;
    }
    if (!Store()) return;
    std::string text;
    ShowStatus(EvaluateForParamFile(component_, *view_.workspace, text), text);
    text.clear();
    const auto chosen = workbench_.desktop.ChooseFile(
        {true, "Save Parameters As", {parameterFiles, allFiles}, view_.directory});
    if (!chosen || chosen->empty() || chosen->back() == '/') return;
    // The dot rule looks at the whole path, as that of a diagram's file does.
    const bool hasDot = chosen->find('.') != std::string::npos;
    const std::string file = FromDiagram(hasDot ? *chosen : *chosen + ".prm");
    const Status saved = SaveParamFile(component_, file, text);
    ShowStatus(saved, text);
    const std::string lost = LostValuesText(component_);
    if (saved != Status::Error && !lost.empty()) workbench_.InfoBox(lost);
}

FormResult PropertyForm::Pressed(std::string_view label) {
    if (label == "Cancel") return FormResult::Closes;
    if (label == "OK") {
        if (!Store()) return FormResult::Stays;
        view_.undo.modified = true;
        return FormResult::Closes;
    }
    if (label == "Help") ShowHelp(workbench_, helpTopic);
    if (label == "Test") Test();
    if (label == "Load...") Load();
    if (label == "Save...") Save();
    if (label == "Symbols...") OpenSymbolsForm(workbench_, view_);
    return FormResult::Stays;
}

}  // namespace

void OpenPropertyForm(Workbench& workbench, DiagramView& view, Component& component) {
    workbench.Open(std::make_unique<PropertyForm>(workbench, view, component));
}

}  // namespace photrak
