// A list that follows what is typed.
#include "workbench/find_form.h"

#include <algorithm>
#include <cctype>

#include "base/text.h"
#include "kernel/parameters.h"

namespace photrak {
namespace {

constexpr std::size_t mostFound = 1000;

std::string Lower(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower;
}

bool Holds(std::string_view text, const std::string& lowerWords) {
    return Lower(text).find(lowerWords) != std::string::npos;
}

/// "name = value" of the first parameter that holds the words.
std::string MatchingParameter(const Component& component, const std::string& lowerWords) {
    for (const Parameter& parameter : Items(component.parameters)) {
        const std::string_view value = parameter.value ? parameter.value : "";
        if (Holds(parameter.name, lowerWords) || Holds(value, lowerWords)) {
            return Concat(parameter.name, " = ", value);
        }
    }
    return {};
}

class FindForm : public Form {
  public:
    FindForm(Workbench& workbench, DiagramView& view) : workbench_(workbench), view_(view) {
        kind = "find";
        title = "Find";
        FormField field;
        field.label = "Name, type or parameter:";
        fields = {field};
        focus = field.label;
        lists.emplace_back();
        buttons = {{"OK", true}, {"Cancel", true}};
        former_ = view.selection;
        Fill();
    }

  private:
    void Fill() {
        found_ = FindBlocks(workbench_, *view_.workspace, fields.front().text);
        FormList& list = lists.front();
        list.rows.clear();
        for (const FoundBlock& found : found_) list.rows.push_back(found.text);
        note = found_.empty() ? "nothing of that name" : "";
        Show(found_.empty() ? 0 : 1);
    }

    /// The row's block is the selection, and in sight.
    void Show(std::int32_t row) {
        lists.front().selected = row;
        view_.ClearSelection();
        if (row == 0) return;
        Component* component = found_[static_cast<std::size_t>(row) - 1].component;
        view_.Select(component);
        workbench_.desktop.Reveal(view_, *component);
    }

    void Edited(FormField&) override { Fill(); }
    void Selected(std::int32_t row) override { Show(row); }
    FormResult Pressed(std::string_view label) override {
        if (label == "Cancel") view_.selection = former_;
        return FormResult::Closes;
    }

    Workbench& workbench_;
    DiagramView& view_;
    std::vector<Component*> former_;  // selected before
    std::vector<FoundBlock> found_;
};

}  // namespace

std::vector<FoundBlock> FindBlocks(const Workbench& workbench, const Workspace& workspace,
                                   std::string_view words) {
    const std::string wanted = Lower(words);
    std::vector<FoundBlock> byName, byType, byParameter;
    for (const auto& component : workspace.components) {
        const std::string& tip =
            workbench.palette.Row(workbench.palette.IndexOf(component->type)).tip;
        const std::string text = Concat(component->name, " (", component->type, ")");
        if (Holds(component->name, wanted)) {
            byName.push_back({component.get(), text});
        } else if (Holds(component->type, wanted) || Holds(tip, wanted)) {
            byType.push_back({component.get(), text});
        } else if (const std::string parameter = MatchingParameter(*component, wanted);
                   !parameter.empty()) {
            byParameter.push_back({component.get(), Concat(text, ": ", parameter)});
        }
    }
    for (const auto* more : {&byType, &byParameter}) {
        byName.insert(byName.end(), more->begin(), more->end());
    }
    byName.resize(std::min(byName.size(), mostFound));
    return byName;
}

void OpenFindForm(Workbench& workbench, DiagramView& view) {
    workbench.Open(std::make_unique<FindForm>(workbench, view));
}

}  // namespace photrak
