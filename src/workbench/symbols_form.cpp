// Works on rows of its own; the diagram's variables are rebuilt at OK.
#include "workbench/symbols_form.h"

#include <algorithm>
#include <optional>

#include "base/text.h"
#include "kernel/expression.h"
#include "kernel/graph.h"
#include "kernel/symbols.h"
#include "workbench/value_text.h"

namespace photrak {
namespace {

constexpr std::size_t nameLength = symbolNameCapacity - 1, textLength = symbolTextCapacity - 1;
constexpr std::size_t mostSymbols = symbolTableCapacity;

/// A variable and where it stands in the diagram: the first of equal names is the one that counts.
struct PlacedVariable {
    Variable variable;
    std::ptrdiff_t place = -1;  // a new one stands in front
};

/// An entry in hand. One that was not changed keeps the text and type that its variable has.
struct Entry {
    std::string name;
    double value = 0.0;
    std::string expression;             // empty: the number counts
    std::optional<Variable> untouched;  // as the diagram has it
    std::ptrdiff_t place = -1;
};

std::string WithoutBlanks(std::string text) {
    std::erase(text, ' ');
    return text;
}

Entry EntryOf(const Variable& variable, std::ptrdiff_t place) {
    Entry entry{variable.name, 0.0, {}, variable, place};
    if (!IsNumber(variable.value, &entry.value)) entry.expression = variable.value;
    return entry;
}

/// The value as a file keeps it: ten digits if they read back equal, else the fewest that do.
std::string StoredText(const Entry& entry) {
    return entry.expression.empty() ? ExactNumber(entry.value, 10) : entry.expression;
}
Variable VariableOf(const Entry& entry) {
    if (entry.untouched) return *entry.untouched;
    Variable variable;
    variable.name = entry.name;
    variable.value = StoredText(entry);
    variable.type = IsNumber(variable.value) ? DoubleType : StringType;
    return variable;
}
/// The value as it is shown.
std::string ShownText(const Entry& entry) {
    return entry.expression.empty() ? FormatSignificant(entry.value, 10) : entry.expression;
}

std::string RowText(const Entry& entry) {
    constexpr std::size_t width = 25;
    std::string name = entry.name;
    if (name.size() < width) name.resize(width, ' ');
    return Concat(name, " = ", ShownText(entry));
}

bool IsPlainName(std::string_view name) {
    return name.find_first_of(" \t:\"'+-*/^(),;=") == std::string_view::npos &&
           std::ranges::none_of(name, [](unsigned char c) { return c < ' ' || c == 127; });
}

class SymbolsForm : public Form {
  public:
    SymbolsForm(Workbench& workbench, DiagramView& view) : workbench_(workbench), view_(view) {
        kind = "symbols";
        title = "Symbol Table Editor";
        fields = {{"Name", {}, FieldKind::Text, {}, {}, false, {}, {}, false},
                  {"Expression", {}, FieldKind::Value, {}, {}, false, {}, {}, false},
                  {"Current Value", {}, FieldKind::Number, {}, {}, false, {}, {}, false}};
        for (const char* label :
             {"Accept Symbol", "Reject Symbol", "New Symbol", "Delete Symbol", "OK", "Cancel"}) {
            buttons.push_back({label, true});
        }
        for (const char* label : {"Accept Symbol", "New Symbol", "Delete Symbol", "OK"}) {
            Enable(label, !view.running);
        }
        ReadVariables();
        Show(entries_.empty() ? 0 : 1);
    }

  private:
    void ReadVariables();
    void Show(std::int32_t row);
    void ShowNew();
    void ShowList(std::int32_t row);
    void ShowCurrentValue();
    bool Accept();
    bool AcceptEdit();
    bool AcceptNew();
    std::string NewNameFault(const std::string& name) const;
    void Delete();
    bool RebuildVariables();
    void Selected(std::int32_t row) override;
    FormResult Pressed(std::string_view label) override;

    FormField& Name() { return fields[0]; }
    FormField& Expression() { return fields[1]; }
    Entry& InHand() { return entries_[static_cast<std::size_t>(row_) - 1]; }

    Workbench& workbench_;
    DiagramView& view_;
    std::vector<Entry> entries_;          // ascending by name
    std::vector<PlacedVariable> hidden_;  // that do not fit the table; they stay as they are
    std::int32_t row_ = 0;                // in hand, from 1; 0 without rows
    std::int32_t rowBefore_ = 0;          // in hand before New mode
    bool isNew_ = false;
};

void SymbolsForm::ReadVariables() {
    std::ptrdiff_t place = -1;
    for (const Variable& variable : view_.workspace->variables) {
        ++place;
        const bool repeats = std::ranges::any_of(
            entries_, [&](const Entry& entry) { return entry.name == variable.name; });
        const bool fits = variable.name.size() <= nameLength &&
                          variable.value.size() <= textLength && entries_.size() < mostSymbols;
        if (!fits || repeats) {
            hidden_.push_back({variable, place});
        } else {
            entries_.push_back(EntryOf(variable, place));
        }
    }
    std::ranges::sort(entries_, {}, &Entry::name);
    if (!hidden_.empty()) note = Concat(hidden_.size(), " more stand in the file only");
}

void SymbolsForm::ShowList(std::int32_t row) {
    FormList list;
    for (const Entry& entry : entries_) list.rows.push_back(RowText(entry));
    list.selected = row;
    list.enabled = !isNew_;
    lists = {std::move(list)};
}

/// Edit mode on a row.
void SymbolsForm::Show(std::int32_t row) {
    isNew_ = false;
    row_ = row;
    ShowList(row);
    const bool any = row > 0;
    Name().enabled = Expression().enabled = any;
    Name().text = any ? InHand().name : "";
    Expression().text = any ? ShownText(InHand()) : "";
    Name().edited = Expression().edited = false;
    Name().fault = any && !CanNameASymbol(InHand().name) ? "hidden by the built-in value" : "";
    Expression().fault.clear();
    focus = any ? "Expression" : "";
    ShowCurrentValue();
}

void SymbolsForm::ShowNew() {
    if (!isNew_) rowBefore_ = row_;
    isNew_ = true;
    row_ = 0;
    ShowList(0);
    Name().enabled = Expression().enabled = true;
    Name().fault.clear();
    Name().text.clear();
    Expression().text.clear();
    Name().edited = Expression().edited = false;
    focus = "Name";
    ShowCurrentValue();
}

/// The value of the row in hand over the rows of this form; empty with a fault if it fails.
void SymbolsForm::ShowCurrentValue() {
    FormField& current = fields[2];
    current.text.clear();
    current.fault.clear();
    if (row_ == 0) {
        if (isNew_) current.text = "0";
        return;
    }
    const Entry& entry = InHand();
    if (entry.expression.empty()) {
        current.text = FormatSignificant(entry.value, 10);
        return;
    }
    SymbolTable table;
    if (!AllocateSymbols(table, symbolTableCapacity)) return;
    for (const Entry& other : entries_) {
        static_cast<void>(SymbolInsert(table, other.name, other.value, other.expression));
    }
    ExprError error = ExprError::None;
    const double value = ExprEval(table, entry.expression, error);
    if (error != ExprError::None) {
        current.fault = "cannot be evaluated";
    } else {
        current.text = FormatSignificant(value, 10);
    }
}

bool SymbolsForm::AcceptEdit() {
    if (row_ == 0 || !Expression().edited) return true;
    const std::string text = WithoutBlanks(Expression().text);
    if (text.empty()) return true;
    Entry& entry = InHand();
    double value = 0.0;
    if (IsNumber(Expression().text, &value)) {
        if (!entry.expression.empty() || entry.value != value) entry.untouched.reset();
        entry.value = value;
        entry.expression.clear();
    } else {
        if (text.size() > textLength) {
            workbench_.ErrorBox("Expression length exceeded");
            return false;
        }
        if (entry.expression != text) entry.untouched.reset();
        entry.expression = text;
    }
    Show(row_);
    return true;
}

std::string SymbolsForm::NewNameFault(const std::string& name) const {
    if (name.size() > nameLength) return "Name length exceeded";
    if (name.empty()) return "Name not set";
    if (!IsPlainName(name)) return "Symbol name not valid";
    if (std::ranges::any_of(entries_, [&](const Entry& e) { return e.name == name; })) {
        return Concat("Symbol ", name, " already exists, not set.");
    }
    if (entries_.size() >= mostSymbols) {
        return Concat("Symbol table full, cannot insert ", name);
    }
    return {};
}

bool SymbolsForm::AcceptNew() {
    const std::string name = Name().text, text = WithoutBlanks(Expression().text);
    Entry entry{name, 0.0, {}, std::nullopt};
    if (!text.empty() && !IsNumber(Expression().text, &entry.value)) entry.expression = text;
    std::string fault = NewNameFault(name);
    if (fault.empty() && entry.expression.size() > textLength) {
        fault = "Expression length exceeded";
    }
    if (!fault.empty()) {
        workbench_.ErrorBox(fault);
        focus = "Name";
        return false;
    }
    const auto place = std::ranges::lower_bound(entries_, name, {}, &Entry::name);
    const auto inserted = entries_.insert(place, std::move(entry));
    Show(static_cast<std::int32_t>(inserted - entries_.begin()) + 1);
    return true;
}

bool SymbolsForm::Accept() {
    return isNew_ ? AcceptNew() : AcceptEdit();
}

void SymbolsForm::Selected(std::int32_t row) {
    if (!AcceptEdit()) return;
    if (row != row_) Show(row);
}

void SymbolsForm::Delete() {
    if (isNew_) {
        ShowNew();
        return;
    }
    if (row_ == 0) return;
    entries_.erase(entries_.begin() + (row_ - 1));
    Show(std::min(row_, static_cast<std::int32_t>(entries_.size())));
}

bool SymbolsForm::RebuildVariables() {
    std::vector<PlacedVariable> placed = hidden_;
    for (const Entry& entry : entries_) placed.push_back({VariableOf(entry), entry.place});
    std::ranges::sort(placed, {}, [](const PlacedVariable& one) {
        return std::pair(std::string_view(one.variable.name), one.place);
    });
    std::vector<Variable> variables;
    variables.reserve(placed.size());
    for (PlacedVariable& one : placed) variables.push_back(std::move(one.variable));
    view_.workspace->variables = std::move(variables);
    view_.undo.modified = true;
    EndChange(workbench_, view_, "Symbols");
    return true;
}

FormResult SymbolsForm::Pressed(std::string_view label) {
    if (label == "Cancel") return FormResult::Closes;
    if (label == "Accept Symbol") Accept();
    if (label == "Reject Symbol") Show(isNew_ ? rowBefore_ : row_);
    if (label == "New Symbol" && Accept()) ShowNew();
    if (label == "Delete Symbol") Delete();
    if (label == "OK" && Accept() && RebuildVariables()) return FormResult::Closes;
    return FormResult::Stays;
}

}  // namespace

void OpenSymbolsForm(Workbench& workbench, DiagramView& view) {
    workbench.Open(std::make_unique<SymbolsForm>(workbench, view));
}

}  // namespace photrak
