// Start-up, modes, and the end of every change.
#include "workbench/workbench.h"

#include <algorithm>

#include "base/text.h"
#include "files/catalogue.h"
#include "kernel/graph.h"
#include "platform/host.h"
#include "workbench/interface_messages.h"
#include "workbench/recovery.h"

namespace photrak {

void Workbench::ErrorBox(std::string_view text) {
    desktop.Box(BoxKind::Error, errorTitle, text);
}

void Workbench::InfoBox(std::string_view text) {
    desktop.Box(BoxKind::Information, informationTitle, text);
}

void Workbench::Open(std::unique_ptr<Form> form) {
    if (DiagramView* view = Active()) view->DropDrag();
    forms.push_back(std::move(form));
}

bool Workbench::Push(std::string_view label) {
    if (forms.empty()) return false;
    Form* front = forms.back().get();
    FormResult result = FormResult::Stays;
    if (!front->Press(label, result)) return false;
    // Whatever a dialog stored stands in the history from here on.
    const auto sync = [this] {
        if (DiagramView* view = Active()) EndChange(*this, *view, "Edit");
    };
    if (result == FormResult::Stays) {
        sync();
        return true;
    }
    const auto place = std::ranges::find(forms, front, &std::unique_ptr<Form>::get);
    const std::unique_ptr<Form> closing = std::move(*place);
    forms.erase(place);
    if (!forms.empty()) forms.back()->Uncovered();
    closing->Closed();
    sync();
    return true;
}

bool StartWorkbench(Workbench& workbench) {
    workbench.clipboard = CreateWorkspace();
    workbench.messages = TakeMessages(workbench);
    std::string text;
    if (InitializeModels(workbench.installDirectory, workbench.catalogue, text) == Status::Error) {
        workbench.ErrorBox(catalogueFailureText);
        return false;
    }
    workbench.userModels.LoadUserModels(workbench.catalogue, text);
    bool fits = true;
    for (const UserModelEntry& entry : workbench.userModels.Entries()) {
        const bool isComment = entry.type == "*";
        fits = workbench.palette.AddUserModel(isComment ? "" : entry.type, entry.bitmap) && fits;
    }
    if (!fits) text += "user.lis: the palette holds 17 user models; the rest is left out\n";
    if (!text.empty()) workbench.InfoBox(text);
    ReadProfile(workbench);
    return true;
}

namespace {

constexpr std::string_view profileSection = "PHOTRAK";

struct FrameKey {
    std::string_view key;
    std::int32_t FramePlace::*value;
    bool isPosition;
};
constexpr FrameKey frameKeys[] = {{"FrameXPos", &FramePlace::left, true},
                                  {"FrameYPos", &FramePlace::top, true},
                                  {"FrameXSize", &FramePlace::width, false},
                                  {"FrameYSize", &FramePlace::height, false}};

}  // namespace

void ReadProfile(Workbench& workbench) {
    Profile& profile = *CurrentHost().profile;
    for (const FrameKey& row : frameKeys) {
        workbench.frame.*row.value =
            profile.ReadInt(profileSection, row.key, FramePlace{}.*row.value);
    }
    workbench.multiThread = profile.ReadInt(profileSection, "MultiThread", 1) != 0;
}

void KeepFrame(const Workbench& workbench, bool withPosition) {
    constexpr std::int32_t farthest = 2000;
    if (workbench.frame.left < 0 || workbench.frame.left > farthest) return;
    for (const FrameKey& row : frameKeys) {
        if (row.isPosition && !withPosition) continue;
        CurrentHost().profile->WriteInt(profileSection, row.key, workbench.frame.*row.value);
    }
}

std::string ModeText(const Workbench& workbench, const DiagramView& view) {
    switch (view.mode) {
        case Mode::Select:
            return "Select Mode";
        case Mode::Zoom:
            return "Zoom Mode";
        case Mode::Connect:
            return "Connect Mode";
        case Mode::Icon:
            break;
    }
    return Concat("Icon Mode: ", workbench.palette.Row(view.modelIndex).tip);
}

void SetMode(Workbench& workbench, Mode mode, std::int32_t modelIndex) {
    DiagramView* view = workbench.Active();
    if (!view) return;
    view->DropDrag();
    view->current = nullptr;
    view->mode = mode;
    view->modelIndex = mode == Mode::Icon ? modelIndex : 0;
    view->ghost = {};
    view->ghost.exists = view->modelIndex != 0;
    if (mode != Mode::Select) view->ClearSelection();
    workbench.pane = ModeText(workbench, *view);
}

void Activate(Workbench& workbench, DiagramView& view) {
    if (DiagramView* former = workbench.Active()) former->DropDrag();
    std::erase(workbench.recent, &view);
    workbench.recent.push_back(&view);
    workbench.pane = ModeText(workbench, view);
}

void EndChange(Workbench& workbench, DiagramView& view, std::string_view name,
               const Touched* touched) {
    view.ForgetIndex();
    if (view.running && !touched) return;  // what may change during a run says so
    Touched beside;
    if (view.running) {
        beside = *touched;
        beside.KeepHeader();
        touched = &beside;
    }
    std::string text;
    DiagramState state;
    const DiagramState* former = view.history.Empty() ? nullptr : &view.history.Present();
    if (TakeState(*view.workspace, former, touched, view.ids, state, text) == Status::Error) {
        workbench.pane = "Out of memory: this change is no step of the history";
        return;
    }
    if (view.history.Commit(std::move(state), name)) NoteForRecovery(workbench, view);
}

}  // namespace photrak
