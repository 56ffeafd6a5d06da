// Placing goes on with numbered names that the diagram does not hold yet.
#include "workbench/placing.h"

#include <algorithm>
#include <filesystem>

#include "base/text.h"
#include "files/catalogue.h"
#include "files/model_definition.h"
#include "kernel/graph.h"
#include "workbench/clipboard.h"
#include "workbench/superblock_paths.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

bool IsCellTaken(const DiagramView& view, CanvasPoint cell) {
    return AnyHolds(view.Index(), cell, [](const Component*) { return true; });
}

std::string NextName(Workbench& workbench, const Workspace& workspace) {
    std::string name;
    do {
        name = Concat("unnamed", ++workbench.unnamedCounter);
    } while (FindComponent(name, workspace.components));
    return name;
}

/// Port counts asked for with the model in hand. One count serves both sides where they must agree.
Component* AddModel(Workbench& workbench, DiagramView& view) {
    const std::string& type = workbench.palette.Row(view.modelIndex).name;
    const Component* prototype = FindModel(workbench.catalogue, type);
    if (!prototype) return nullptr;
    std::int32_t inputs = workbench.palette.activeInputs[view.modelIndex];
    std::int32_t outputs = workbench.palette.activeOutputs[view.modelIndex];
    if (prototype->NUMINEQNUMOUTNODES != 0) inputs = outputs = std::max(inputs, outputs);
    return AddComponent(*view.workspace, type, NextName(workbench, *view.workspace), inputs,
                        outputs, workbench.catalogue);
}

/// The definition of what was chosen: NAME.top stands for NAME.dts beside it.
fs::path DefinitionOf(const fs::path& chosen) {
    return chosen.extension() == ".top" ? fs::path(chosen).replace_extension(".dts") : chosen;
}

std::unique_ptr<Component> ReadSuperBlock(Workbench& workbench, const fs::path& definition,
                                          const std::string& name) {
    auto prototype = std::make_unique<Component>();
    prototype->name = prototype->type = "SuperBlock";
    std::string text;
    if (ReadModelDefinition(*prototype, definition.string(), text) == Status::Error) {
        workbench.ErrorBox(text);
        return nullptr;
    }
    prototype->superBlockFile = name;
    return prototype;
}

Component* AddSuperBlock(const Component& prototype, Workspace& workspace) {
    Component* made = CreateComponentFrom(prototype, "SuperBlock", 0, 0, workspace.components);
    if (made) GiveFreshNodes(*made, workspace);
    return made;
}

/// The chosen definition, if a topology can refer to it; a box tells why not.
std::optional<std::string> ChosenName(Workbench& workbench, const DiagramView& view,
                                      const std::string& chosen, const fs::path& definition) {
    std::error_code error;
    if (definition != chosen && !fs::exists(definition, error)) {
        workbench.ErrorBox(Concat("'", chosen, "' has no In or Out block: it is no SuperBlock"));
        return std::nullopt;
    }
    if (definition.extension() != ".dts") {
        workbench.ErrorBox(Concat("'", chosen, "' is no SuperBlock: its name must end in .dts"));
        return std::nullopt;
    }
    const std::string name =
        SuperBlockNameOf(definition.string(), view.directory, workbench.catalogue);
    if (IsSuperBlockName(name)) return name;
    workbench.ErrorBox(
        Concat("'", name, "': a SuperBlock's file has no blank or colon in its path"));
    return std::nullopt;
}

}  // namespace

void PlaceBlock(Workbench& workbench, DiagramView& view, CanvasPoint at) {
    const CanvasPoint cell = workbench.scale.ToCell(at);
    if (view.modelIndex == 0 || IsCellTaken(view, cell)) return;
    const bool isSuperBlock = workbench.palette.Row(view.modelIndex).name == "SuperBlock";
    if (isSuperBlock) ++workbench.unnamedCounter;
    Component* made = isSuperBlock ? ChooseSuperBlock(workbench, view) : AddModel(workbench, view);
    if (!made) return;
    made->x = cell.x;
    made->y = cell.y;
    view.undo.modified = true;
    Touched touched;
    touched.Add(*made);
    EndChange(workbench, view, "Place", &touched);
}

Component* ChooseSuperBlock(Workbench& workbench, DiagramView& view) {
    static constexpr FileFilter definitions{"SuperBlock Data Files (*.dts)", "*.dts"};
    static constexpr FileFilter topologies{"SuperBlock Topology Files (*.top)", "*.top"};
    static constexpr FileFilter all{"All Files (*.*)", "*.*"};
    const std::string& start =
        workbench.superBlockDirectory.empty() ? view.directory : workbench.superBlockDirectory;
    const auto chosen = workbench.desktop.ChooseFile(
        {false, "Choose SuperBlock", {definitions, topologies, all}, start});
    if (!chosen) return nullptr;
    const std::string file = (fs::path(view.directory) / *chosen).string();
    const fs::path definition = DefinitionOf(file);
    const auto name = ChosenName(workbench, view, file, definition);
    if (!name) return nullptr;
    const std::unique_ptr<Component> prototype = ReadSuperBlock(workbench, definition, *name);
    if (!prototype) return nullptr;
    workbench.superBlockDirectory = definition.parent_path().string();
    return AddSuperBlock(*prototype, *view.workspace);
}

}  // namespace photrak
