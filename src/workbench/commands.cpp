// The table in the order of the menus.
#include "workbench/commands.h"

#include <algorithm>

#include "base/log.h"
#include "base/text.h"
#include "files/catalogue.h"
#include "workbench/diagram_check.h"
#include "workbench/edit_commands.h"
#include "workbench/file_commands.h"
#include "workbench/find_form.h"
#include "workbench/help_topics.h"
#include "workbench/mouse.h"
#include "workbench/recovery_form.h"
#include "workbench/run_consent.h"
#include "workbench/run_forms.h"
#include "workbench/small_forms.h"
#include "workbench/symbols_form.h"
#include "workbench/view_commands.h"

namespace photrak {
namespace {

template <auto action>
void OnActive(Workbench& workbench) {
    DiagramView* view = workbench.Active();
    if (!view) return;
    view->DropDrag();
    static_cast<void>(action(workbench, *view));
}

void FileNew(Workbench& workbench) {
    NewDiagram(workbench);
}

void FileCloseAll(Workbench& workbench) {
    static_cast<void>(CloseAll(workbench));
}

void FileExit(Workbench& workbench) {
    if (CloseAll(workbench)) KeepFrame(workbench);
}

void GraphView(Workbench& workbench) {
    static constexpr FileFilter plots{"All Vistr Graphs (*.p*)", "*.p*"};
    static constexpr FileFilter all{"All Files (*.*)", "*.*"};
    const DiagramView* view = workbench.Active();
    const std::string& start = view ? view->directory : workbench.startDirectory;
    const auto chosen = workbench.desktop.ChooseFile({false, "Open Plot", {plots, all}, start});
    if (!chosen || chosen->empty() || chosen->back() == '/') return;
    const std::size_t slash = chosen->rfind('/');
    const std::string folder = slash == std::string::npos ? start : chosen->substr(0, slash);
    const std::string name = slash == std::string::npos ? *chosen : chosen->substr(slash + 1);
    if (!workbench.desktop.StartViewer(name, folder)) {
        workbench.ErrorBox(Concat("Cannot start '", name, "'"));
    }
}

/// The entry stays in the menu with nothing behind it.
void Nothing(Workbench&) {}

/// What the platform does by itself: windows, printers.
void ByPlatform(Workbench& workbench) {
    if (DiagramView* view = workbench.Active()) view->DropDrag();
}

void HelpContents(Workbench& workbench) {
    workbench.desktop.ShowHelp(0);
}

const Command commands[] = {
    {"File", "New", "Create New Topology Layout", {}, FileNew},
    {"File", "Open", "Open Existing Topology Layout", {}, ChooseAndOpen},
    {"File",
     "Save",
     "Save Active Topology under Current File Name",
     {"Ctrl+S"},
     OnActive<SaveDiagram>},
    {"File",
     "Save As",
     "Save Active Topology under Different File Name",
     {},
     OnActive<SaveDiagramAs>},
    {"File", "Close", "Close Active Topology", {}, OnActive<CloseDiagram>},
    {"File", "Close All", "Close All Topologies", {}, FileCloseAll},
    {"File", "Print", "Print Active Topology Layout", {}, ByPlatform},
    {"File", "Printer Setup", "Printer Setup for Windows Printer Driver", {}, ByPlatform},
    {"File", "Exit", "Exit Photrak", {}, FileExit},
    {"File", "Recover", "Open What Was Not Saved", {}, OpenRecoveryForm},
    {"Edit", "Undo", "Undo Previous CAD Operation", {"Alt+Backspace", "Ctrl+Z"}, EditUndo},
    {"Edit", "Cut", "Delete Selection and Copy to Clipboard", {"Shift+Delete", "Ctrl+X"}, EditCut},
    {"Edit", "Copy", "Copy Selection to Clipboard", {"Ctrl+Insert", "Ctrl+C"}, EditCopy},
    {"Edit",
     "Paste",
     "Insert Clipboard Contents into Topology",
     {"Shift+Insert", "Ctrl+V"},
     EditPaste},
    {"Edit", "Delete", "Delete Selection", {"Delete"}, EditDelete},
    {"Edit", "Duplicate", "Duplicate Selection", {}, EditDuplicate},
    {"Edit", "Select All", "Select All Components in Topology", {}, EditSelectAll},
    {"Edit", "Step Back", "Go Back by One Change", {"Alt+Left"}, StepBack},
    {"Edit", "Step Forward", "Go Forward by One Change", {"Alt+Right"}, StepForward},
    {"Edit",
     "Find",
     "Find a Component by Name, Type or Parameter",
     {"Ctrl+F"},
     OnActive<OpenFindForm>},
    {"View", "Normal", "View Normal (Unity Scale)", {}, ViewNormal},
    {"View", "Full", "View Full Topology", {}, ViewFull},
    {"View", "In", "Zoom In By 40%%", {}, ViewIn},
    {"View", "Out", "Zoom Out By 40%%", {}, ViewOut},
    {"View", "Last", "Return to Last View", {}, ViewLast},
    {"View", "ReDraw", "Redraw Topology", {}, ViewRedraw},
    {"Options", "Preferences", "Set CAD/Simulation Preferences", {}, OpenPreferencesForm},
    {"Options", "Allowed Programs", "List What Diagrams May Start", {}, ShowConsents},
    {"Run", "Go", "Compute and Display Link Performance", {}, OnActive<OpenSimulationForm>},
    {"Run",
     "Scan Variable",
     "Automatically Perform a Series of Computations",
     {},
     OnActive<OpenScanForm>},
    {"Run", "Stop Simulation", "Stop Simulation in Process", {}, StopRun},
    {"Run", "Check", "List Faults without a Simulation", {}, OnActive<CheckDiagram>},
    {"Graph", "View", "Display Saved Simulation Results", {}, GraphView},
    {"Utility", "Statistics", "Compute and Display Additional Link Statistics", {}, Nothing},
    {"Window", "Tile", "Arrange Windows in Tiled View", {}, ByPlatform},
    {"Window", "Cascade", "Arrange Windows in Cascaded View", {}, ByPlatform},
    {"Window", "Arrange Icons", "Arrange Minimized Window Icons", {}, ByPlatform},
    {"Help", "Online Help", "Online Help for Photrak", {}, HelpContents},
    {"Help", "About", "Display Version Information for Photrak", {}, OpenAboutForm},
};

struct ArrowKey {
    std::string_view key;
    std::int32_t columns, rows;
};
constexpr ArrowKey arrows[] = {{"Left", -1, 0}, {"Right", 1, 0}, {"Up", 0, -1}, {"Down", 0, 1}};

struct BarRow {
    std::int32_t x;
    std::string_view tooltip, command;
};
constexpr BarRow toolRows[] = {{0, "New Topology", "File New"},
                               {30, "Open Topology", "File Open"},
                               {60, "Save Topology", "File Save"},
                               {105, "Undo Last Change", "Edit Undo"},
                               {150, "Cut Selection", "Edit Cut"},
                               {180, "Copy Selection", "Edit Copy"},
                               {210, "Paste Clipboard Contents", "Edit Paste"},
                               {255, "Duplicate Selection", "Edit Duplicate"},
                               {300, "Redraw Topology", "View ReDraw"},
                               {345, "View Graphs", "Graph View"},
                               {390, "Online Help", "Help Online Help"}};
constexpr std::string_view editSymbols = "Edit Symbols";
constexpr BarRow runRows[] = {{0, "Simulate Link", "Run Go"},
                              {30, "Stop Simulation", "Run Stop Simulation"},
                              {60, "Perform Parameter Scan", "Run Scan Variable"},
                              {90, editSymbols, editSymbols}};

BarButton Latch(const Workbench& workbench, std::int32_t x, std::int32_t y,
                std::string_view tooltip, Mode mode, std::int32_t modelIndex) {
    const DiagramView* view = workbench.Active();
    BarButton button{x, y, std::string(tooltip), true};
    button.isDown = view && view->mode == mode && view->modelIndex == modelIndex;
    button.mode = mode;
    button.modelIndex = modelIndex;
    return button;
}

BarButton PushButton(const BarRow& row, std::int32_t y) {
    BarButton button{row.x, y, std::string(row.tooltip)};
    button.command = row.command;
    return button;
}

}  // namespace

std::span<const Command> Commands() {
    return commands;
}

const Command* FindCommand(std::string_view name) {
    const auto found = std::ranges::find_if(commands, [&](const Command& command) {
        return Concat(command.menu, " ", command.entry) == name;
    });
    return found == std::end(commands) ? nullptr : &*found;
}

void RunCommand(Workbench& workbench, const Command& command) {
    if (DiagramView* view = workbench.Active()) view->DropDrag();
    command.run(workbench);
}

bool PressKey(Workbench& workbench, std::string_view key) {
    if (key == "Escape") {
        if (DiagramView* view = workbench.Active()) view->DropDrag();
        return true;
    }
    for (const ArrowKey& arrow : arrows) {
        if (arrow.key != key) continue;
        Nudge(workbench, arrow.columns, arrow.rows);
        return true;
    }
    for (const Command& command : commands) {
        if (std::ranges::find(command.keys, key) == command.keys.end()) continue;
        RunCommand(workbench, command);
        return true;
    }
    return false;
}

void Highlight(Workbench& workbench, std::string_view menuAndEntry) {
    const Command* command = FindCommand(menuAndEntry);
    workbench.highlighted = command ? InterpretPercent(command->status) : std::string();
}

std::vector<BarButton> ToolBar(const Workbench&) {
    std::vector<BarButton> buttons;
    for (const BarRow& row : toolRows) buttons.push_back(PushButton(row, 0));
    return buttons;
}

std::vector<BarButton> Palette(const Workbench& workbench) {
    constexpr std::int32_t side = 30, gap = 15, perRow = 4;
    const PaletteModels& models = workbench.palette;
    std::vector<BarButton> buttons = {
        Latch(workbench, 0, 0, "Select Mode", Mode::Select, 0),
        Latch(workbench, side, 0, "Zoom Mode", Mode::Zoom, 0),
        Latch(workbench, 2 * side, 0, "Connect Mode", Mode::Connect, 0)};
    std::int32_t y = side + gap;
    for (std::int32_t index = 1; index <= models.Last(); ++index) {
        const std::int32_t column = (index - 1) % perRow;
        const bool beginsRow = column == 0 && index > 1;
        if (beginsRow) y += models.Row(index).tip == blankTip ? gap : side;
        if (!models.HasButton(index)) continue;
        BarButton button =
            Latch(workbench, column * side, y, models.Row(index).tooltip, Mode::Icon, index);
        button.isOn = FindModel(workbench.catalogue, models.Row(index).name) != nullptr;
        buttons.push_back(std::move(button));
    }
    for (const BarRow& row : runRows) buttons.push_back(PushButton(row, y + side + gap));
    return buttons;
}

void PushBarButton(Workbench& workbench, const BarButton& button) {
    DiagramView* view = workbench.Active();
    if (!button.isOn) return;
    if (button.latches) {
        if (view) SetMode(workbench, button.mode, button.modelIndex);
    } else if (button.command == editSymbols) {
        if (view) OpenSymbolsForm(workbench, *view);
    } else if (const Command* command = FindCommand(button.command)) {
        RunCommand(workbench, *command);
    }
}

}  // namespace photrak
