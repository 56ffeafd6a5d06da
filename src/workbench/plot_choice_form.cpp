// One row per command file, without directory.
#include "workbench/plot_choice_form.h"

#include "workbench/block_opening.h"

namespace photrak {
namespace {

class PlotChoiceForm : public Form {
  public:
    PlotChoiceForm(Workbench& workbench, DiagramView& view, std::vector<std::string> plots)
        : workbench_(workbench), view_(view) {
        kind = "plots";
        title = "Plot Selection";
        lists = {{std::move(plots), 1, true}};
        buttons = {{"OK", true}, {"Cancel", true}};
    }

  private:
    void Selected(std::int32_t row) override { lists.front().selected = row; }
    FormResult Pressed(std::string_view label) override {
        const FormList& list = lists.front();
        if (label == "OK") {
            ShowPlot(workbench_, view_, list.rows[static_cast<std::size_t>(list.selected) - 1]);
        }
        return FormResult::Closes;
    }

    Workbench& workbench_;
    DiagramView& view_;
};

}  // namespace

void OpenPlotChoiceForm(Workbench& workbench, DiagramView& view, const Component& component) {
    workbench.Open(std::make_unique<PlotChoiceForm>(workbench, view, component.plots));
}

}  // namespace photrak
