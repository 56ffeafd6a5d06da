// Port counts for the next blocks of the picked model live as long as the process.
#include "workbench/small_forms.h"

#include <algorithm>

#include "base/text.h"
#include "kernel/symbols.h"

namespace photrak {
namespace {

class PreferencesForm : public Form {
  public:
    explicit PreferencesForm(Workbench& workbench) : workbench_(workbench) {
        kind = "preferences";
        title = "Preferences";
        const DiagramView* view = workbench.Active();
        model_ = view ? view->modelIndex : 0;
        fields = {Count("Active Icon Inputs:", workbench.palette.activeInputs[model_]),
                  Count("Active Icon Outputs:", workbench.palette.activeOutputs[model_])};
        buttons = {{"OK", true}, {"Cancel", true}};
    }

  private:
    static FormField Count(std::string_view label, std::int32_t value) {
        FormField field;
        field.label = label;
        field.kind = FieldKind::Integer;
        field.text = Concat(value);
        field.hint = "0: as the model has it";
        return field;
    }
    static std::int32_t ValueOf(const FormField& field) {
        double value = 0.0;
        static_cast<void>(IsNumber(field.text, &value));
        return std::max(SaturateToInt(value), 0);
    }
    void Edited(FormField& field) override {
        field.fault = IsNumber(field.text) ? "" : "not a number";
    }
    FormResult Pressed(std::string_view label) override {
        if (label == "Cancel") return FormResult::Closes;
        if (std::ranges::any_of(fields, [](const FormField& f) { return !f.fault.empty(); })) {
            workbench_.ErrorBox("User error in a data entry field.\nUnable to store data");
            return FormResult::Stays;
        }
        if (model_ != 0) {
            workbench_.palette.activeInputs[model_] = ValueOf(fields[0]);
            workbench_.palette.activeOutputs[model_] = ValueOf(fields[1]);
        }
        return FormResult::Closes;
    }

    Workbench& workbench_;
    std::int32_t model_ = 0;
};

class AboutForm : public Form {
  public:
    AboutForm() {
        kind = "about";
        title = "About Photrak";
        note = "Photrak\nA CAD Program for\nDesign and Simulation of\nFiber Optical Links";
        buttons = {{"OK", true}};
    }

  private:
    FormResult Pressed(std::string_view) override { return FormResult::Closes; }
};

}  // namespace

void OpenPreferencesForm(Workbench& workbench) {
    workbench.Open(std::make_unique<PreferencesForm>(workbench));
}

void OpenAboutForm(Workbench& workbench) {
    workbench.Open(std::make_unique<AboutForm>());
}

}  // namespace photrak
