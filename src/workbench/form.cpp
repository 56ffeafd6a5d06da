// What all forms share: finding fields, cells and buttons by their labels.
#include "workbench/form.h"

#include <algorithm>

namespace photrak {
namespace {

bool IsChoiceOf(const std::vector<std::string>& choices, std::string_view text) {
    return std::ranges::find(choices, text) != choices.end();
}

}  // namespace

FormField* Form::Find(std::string_view label, std::string_view column) {
    const auto field = std::ranges::find_if(
        fields, [&](const FormField& f) { return f.label == label && f.column == column; });
    return field == fields.end() ? nullptr : &*field;
}

void Form::Enable(std::string_view button, bool enabled) {
    const auto found = std::ranges::find(buttons, button, &FormButton::label);
    if (found != buttons.end()) found->enabled = enabled;
}

bool Form::Edit(std::string_view label, std::string_view column, std::string_view text) {
    FormField* field = Find(label, column);
    if (!field || !field->enabled) return false;
    if (field->kind == FieldKind::Choice && !IsChoiceOf(field->choices, text)) return false;
    field->text = text;
    field->edited = true;
    Edited(*field);
    return true;
}

bool Form::EditRow(std::string_view row, std::string_view column, std::string_view text) {
    if (tables.empty()) return false;
    const auto found = std::ranges::find(tables.front().rows, row, &FormRow::name);
    if (found == tables.front().rows.end()) return false;
    if (column == "Value") {
        if (found->isChoice && !IsChoiceOf(found->choices, text)) return false;
        found->value = text;
        found->valueEdited = true;
    } else if (column == "Std. Dev." && found->hasDeviation) {
        found->deviation = text;
        found->deviationEdited = true;
    } else if (column == "Distribution" && found->hasDeviation) {
        if (std::ranges::find(distributionChoices, text) == std::end(distributionChoices))
            return false;
        found->distribution = text;
        found->distributionEdited = true;
    } else {
        return false;
    }
    RowEdited(*found);
    return true;
}

bool Form::Select(std::int32_t row) {
    if (lists.empty() || !lists.front().enabled) return false;
    if (row < 1 || row > static_cast<std::int32_t>(lists.front().rows.size())) return false;
    Selected(row);
    return true;
}

bool Form::Press(std::string_view label, FormResult& result) {
    const auto button = std::ranges::find(buttons, label, &FormButton::label);
    if (button == buttons.end() || !button->enabled) return false;
    result = Pressed(label);
    return true;
}

}  // namespace photrak
