// The application behind the window: open diagrams, the drawing scale that they share, the palette,
// the clipboard, the dialog in front, the run in progress. Events and commands come in; what a
// window shows is read from the records.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "files/user_models.h"
#include "kernel/driver.h"
#include "models/common/block_test.h"
#include "workbench/desktop.h"
#include "workbench/diagram_view.h"
#include "workbench/form.h"
#include "workbench/icon_store.h"
#include "workbench/model_table.h"
#include "workbench/run_control.h"

namespace photrak {

/// Model tables and block tests come from the floor of the models, handed down by the program.
struct ModelServices {
    std::span<const ModelEntry> builtInModels;
    bool (*hasTest)(std::string_view type, const UserModelTable& userModels);
    std::vector<TestFinding> (*test)(Component& component, Workspace& workspace,
                                     const UserModelTable& userModels);
};

/// Where the frame stands on the screen and how large it is, pixels.
struct FramePlace {
    std::int32_t left = 2, top = 1, width = 600, height = 562;
};

struct Workbench {
    Desktop& desktop;
    ModelServices services;
    std::string installDirectory;  // with the last separator
    std::string startDirectory;    // absolute, no last separator
    Catalogue catalogue = {};
    UserModelTable userModels = {};
    PaletteModels palette = {};
    Scale scale = {};
    std::shared_ptr<IconStore> icons = std::make_shared<IconStore>();
    std::unique_ptr<Workspace> clipboard = {};
    std::string clipboardDirectory = {};  // of the diagram that it was copied from
    std::int32_t unnamedCounter = 0;
    bool multiThread = true;
    FramePlace frame = {};
    std::vector<std::unique_ptr<DiagramView>> views = {};  // in order of opening
    std::vector<DiagramView*> recent = {};                 // the active one last
    std::vector<std::unique_ptr<Form>> forms = {};         // the last opened in front
    std::string pane = {};                                 // the message pane
    std::string highlighted = {};                          // status text of a menu entry, or empty
    RunControl run = {};
    std::string superBlockDirectory = {};  // of the last successful choice
    std::shared_ptr<void> messages = {};   // TakeMessages, from the start on

    DiagramView* Active() const { return recent.empty() ? nullptr : recent.back(); }
    void ErrorBox(std::string_view text);
    void InfoBox(std::string_view text);
    void Open(std::unique_ptr<Form> form);
    /// Presses a button of the form in front, which may close it. False: no such button, or off.
    bool Push(std::string_view label);
};

/// Reads the catalogue beside the executable and binds the user models. False after a box: no
/// workbench can be shown.
bool StartWorkbench(Workbench& workbench);

/// Takes over what the profile says now.
void ReadProfile(Workbench& workbench);
/// Writes the frame's place into the profile, unless it stands left of the screen or far to the
/// right; `withPosition` is false where a window does not know its own.
void KeepFrame(const Workbench& workbench, bool withPosition = true);

/// The text of the mode in the message pane.
std::string ModeText(const Workbench& workbench, const DiagramView& view);
/// Sets a mode of the view in front; a model's index goes with Icon mode.
void SetMode(Workbench& workbench, Mode mode, std::int32_t modelIndex = 0);
/// Brings a view to the front.
void Activate(Workbench& workbench, DiagramView& view);

/// Ends a gesture or a command that may have changed the diagram: adds a step of that name to the
/// history if it did. Nothing but what is `touched` can have changed; null: anything.
void EndChange(Workbench& workbench, DiagramView& view, std::string_view name,
               const Touched* touched = nullptr);

}  // namespace photrak
