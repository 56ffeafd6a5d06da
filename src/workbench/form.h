// A dialog as data: fields, a table or a list, buttons. A toolkit shows the record, hands back
// edits and presses, and shows it again; all rules are in the forms that derive from it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace photrak {

enum class FieldKind { Text, Number, Value, Integer, Choice };

struct FormField {
    std::string label;
    std::string column;  // of a form with columns, else empty
    FieldKind kind = FieldKind::Text;
    std::string text;                  // as shown; of a Choice one of the choices
    std::vector<std::string> choices;  // of a Choice
    bool enabled = true;
    std::string fault;  // why the text will not do; empty: it will
    std::string hint;   // range, default, evaluated value; for the line of the field in focus
    bool edited = false;
};

/// The choices of a distribution, in their order.
inline constexpr std::string_view distributionChoices[] = {"None", "Uniform", "Gaussian",
                                                           "TwoSigma"};

/// A row of the property table. Empty cells are not for editing, but for the value.
struct FormRow {
    std::string name;
    bool isChoice = false;  // the value is one of the choices
    std::string value, least, greatest;
    bool hasDeviation = false;
    std::string deviation, distribution;
    std::string units;
    std::vector<std::string> choices;  // of the value
    std::string fault, hint;           // of the value
    std::string deviationFault;        // of the deviation
    bool valueEdited = false, deviationEdited = false, distributionEdited = false;
};

struct FormTable {
    std::vector<FormRow> rows;
    std::int32_t rowsShown = 0;
    /// Steps of four rows that the scroll bar has.
    std::int32_t Steps() const {
        const auto count = static_cast<std::int32_t>(rows.size());
        return count <= rowsShown ? 0 : (count - rowsShown + 3) / 4;
    }
};

struct FormList {
    std::vector<std::string> rows;
    std::int32_t selected = 0;  // from 1; 0: none
    bool enabled = true;
};

struct FormButton {
    std::string label;
    bool enabled = true;
};

enum class FormResult { Stays, Closes };

class Form {
  public:
    virtual ~Form() = default;

    std::string kind;  // properties, symbols, simulation, scan, preferences, plots, about, find
    std::string title;
    std::vector<FormField> fields;
    std::vector<FormTable> tables;  // none or one
    std::vector<FormList> lists;    // none or one
    std::string note;               // a line below the table; empty: none
    std::string focus;              // label of the field that has it, where the form rules it
    std::vector<FormButton> buttons;
    std::int32_t helpTopic = 0;

    /// Types over a field. A Choice takes one of its choices; false for anything else, for a field
    /// that is off and for an unknown one.
    bool Edit(std::string_view label, std::string_view column, std::string_view text);
    /// Types over a cell of the table; column "Value", "Std. Dev." or "Distribution".
    bool EditRow(std::string_view row, std::string_view column, std::string_view text);
    /// Selects a row of the list, from 1.
    bool Select(std::int32_t row);
    /// Presses a button; false if there is none of that label or it is off. `result` tells whether
    /// the form closes.
    bool Press(std::string_view label, FormResult& result);

    /// Called once, after the form has left the screen.
    virtual void Closed() {}
    /// Called when a form in front of this one has closed: what it shows may have changed.
    virtual void Uncovered() {}

  protected:
    virtual void Edited(FormField&) {}
    virtual void RowEdited(FormRow&) {}
    virtual void Selected(std::int32_t) {}
    virtual FormResult Pressed(std::string_view label) = 0;

    FormField* Find(std::string_view label, std::string_view column = {});
    void Enable(std::string_view button, bool enabled);
};

}  // namespace photrak
