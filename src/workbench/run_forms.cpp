// Fields bound to the run options by a table; a field that was not edited keeps its text.
#include "workbench/run_forms.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/text.h"
#include "kernel/symbols.h"
#include "workbench/run_control.h"
#include "workbench/value_text.h"

namespace photrak {
namespace {

constexpr const char* refusedText = "User error in a data entry field.\nUnable to store data";
constexpr const char* defaultPrefix = "phtmp";
constexpr const char* plottingLabel = "Plotting Mode:";
// In the order of the PLOTTING codes.
constexpr const char* plottingWords[] = {"No Save/Display", "Save Only", "Save and Display",
                                         "Use Icon Settings"};

std::string PlottingWord(std::int16_t code) {
    const bool known = code >= DoNotPlot && code <= UsePlotIconSettings;
    return plottingWords[known ? code : UsePlotIconSettings];
}

std::int16_t PlottingCode(std::string_view word) {
    const auto found = std::ranges::find(plottingWords, word);
    return static_cast<std::int16_t>(found - std::begin(plottingWords));
}

FormField Field(std::string_view label, std::string_view column, FieldKind kind, std::string text) {
    FormField field;
    field.label = label;
    field.column = column;
    field.kind = kind;
    field.text = std::move(text);
    return field;
}

FormField PlottingField(std::int16_t code) {
    FormField field = Field(plottingLabel, {}, FieldKind::Choice, PlottingWord(code));
    for (const char* word : plottingWords) field.choices.emplace_back(word);
    return field;
}

/// What both dialogs do: OK stores and starts the run.
class RunForm : public Form {
  public:
    RunForm(Workbench& workbench, DiagramView& view) : workbench_(workbench), view_(view) {
        buttons = {{"OK", !view.running}, {"Cancel", true}};
    }

  protected:
    virtual bool Store() = 0;
    virtual bool IsScan() const = 0;

    FormResult Pressed(std::string_view label) override {
        if (label == "Cancel") return FormResult::Closes;
        if (!Store()) {
            workbench_.ErrorBox(refusedText);
            return FormResult::Stays;
        }
        EndChange(workbench_, view_, IsScan() ? "Scan settings" : "Run settings");
        starts_ = true;
        return FormResult::Closes;
    }
    void Closed() override {
        if (starts_) StartRun(workbench_, view_, IsScan());
    }

    SimOptions& Options() { return *view_.workspace->options; }
    void StorePlotting() {
        const FormField& field = *Find(plottingLabel);
        if (field.edited) Options().PLOTTING = PlottingCode(field.text);
    }

    Workbench& workbench_;
    DiagramView& view_;
    bool starts_ = false;
};

class SimulationForm : public RunForm {
  public:
    SimulationForm(Workbench& workbench, DiagramView& view) : RunForm(workbench, view) {
        kind = "simulation";
        title = "Simulation Parameters";
        fields = {Field("Output Prefix:", {}, FieldKind::Text, Options().OUTPUTPREFIX),
                  PlottingField(Options().PLOTTING)};
        fields.front().hint = "begins the names of the results; not kept in the file";
    }

  private:
    bool Store() override {
        const std::string& prefix = fields.front().text;
        Options().OUTPUTPREFIX = prefix.empty() ? defaultPrefix : prefix;
        StorePlotting();
        return true;
    }
    bool IsScan() const override { return false; }
};

constexpr const char *inner = "INNER ITERATION", *outer = "OUTER ITERATION",
                     *statistical = "STATISTICAL ITERATION";

/// A text option of the scan and how it may look.
struct ScanField {
    const char *label, *column;
    FieldKind kind;
    std::string SimOptions::*text;
};
const ScanField scanFields[] = {
    {"Variable Name:", inner, FieldKind::Text, &SimOptions::INNERSWEEPVARIABLE},
    {"Variable Name:", outer, FieldKind::Text, &SimOptions::OUTERSWEEPVARIABLE},
    {"Starting Value:", inner, FieldKind::Number, &SimOptions::INNERSWEEPSTARTVAL},
    {"Starting Value:", outer, FieldKind::Number, &SimOptions::OUTERSWEEPSTARTVAL},
    {"Ending Value:", inner, FieldKind::Number, &SimOptions::INNERSWEEPSTOPVAL},
    {"Ending Value:", outer, FieldKind::Number, &SimOptions::OUTERSWEEPSTOPVAL},
    {"Increment:", inner, FieldKind::Number, &SimOptions::INNERSWEEPSTEPVAL},
    {"Increment:", outer, FieldKind::Number, &SimOptions::OUTERSWEEPSTEPVAL},
    {"Scan Meta Prefix:", "", FieldKind::Text, &SimOptions::SCANPREFIX},
    {"Iteration Meta Prefix:", inner, FieldKind::Text, &SimOptions::SCANMETA1},
    {"Iteration Meta Prefix:", outer, FieldKind::Text, &SimOptions::SCANMETA2},
    {"Iteration Meta Prefix:", statistical, FieldKind::Text, &SimOptions::RUNMETA},
};
constexpr const char* runsLabel = "Number of Statistical Runs:";
constexpr const char* commandLabels[] = {"Pre-Process Cmd:", "Post-Process Cmd:"};

class ScanForm : public RunForm {
  public:
    ScanForm(Workbench& workbench, DiagramView& view) : RunForm(workbench, view) {
        kind = "scan";
        title = "Scan Variable Simulation Parameters";
        for (const ScanField& row : scanFields) {
            fields.push_back(Field(row.label, row.column, row.kind, Options().*row.text));
        }
        fields.push_back(
            Field(runsLabel, statistical, FieldKind::Number, Concat(Options().NUMRUNSTODO)));
        for (const char* label : commandLabels) {
            for (const char* column : {inner, outer, statistical}) {
                fields.push_back(Field(label, column, FieldKind::Text, {}));
                fields.back().hint = "is not kept, and nothing runs it";
            }
        }
        fields.push_back(PlottingField(Options().PLOTTING));
    }

  private:
    /// A number may be left out; what was not typed here is not judged.
    void Edited(FormField& field) override {
        if (field.kind != FieldKind::Number) return;
        const bool good = field.text.empty() || IsNumber(field.text);
        field.fault = good ? "" : "not a number";
    }

    bool Store() override {
        const bool refused = std::ranges::any_of(
            fields, [](const FormField& field) { return !field.fault.empty(); });
        if (refused) return false;
        for (const ScanField& row : scanFields) {
            const FormField& field = *Find(row.label, row.column);
            if (field.edited) Options().*row.text = Stored(field);
        }
        StoreRuns();
        if (Options().SCANPREFIX.empty()) Options().SCANPREFIX = defaultPrefix;
        StorePlotting();
        return true;
    }
    bool IsScan() const override { return true; }

    static std::string Stored(const FormField& field) {
        std::string text = field.text;
        if (field.kind == FieldKind::Number) {
            double value = 0.0;
            return IsNumber(text, &value) ? ExactNumber(value, 6) : std::string();
        }
        if (field.label == "Variable Name:") {
            std::ranges::replace_if(
                text, [](char c) { return c == ' ' || c == ':' || c == '\t'; }, '_');
        }
        return text;
    }

    void StoreRuns() {
        const FormField& field = *Find(runsLabel, statistical);
        if (!field.edited) return;
        double runs = 0.0;
        static_cast<void>(IsNumber(field.text, &runs));
        Options().NUMRUNSTODO = std::max(SaturateToInt(runs), 0);
    }
};

}  // namespace

void OpenSimulationForm(Workbench& workbench, DiagramView& view) {
    workbench.Open(std::make_unique<SimulationForm>(workbench, view));
}

void OpenScanForm(Workbench& workbench, DiagramView& view) {
    workbench.Open(std::make_unique<ScanForm>(workbench, view));
}

}  // namespace photrak
